// vorn-speaker: a simulated speaker that plays scenarios and prints every call that crosses the library.

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn_testing/StandardFiles.h>
#include <vorn_testing/Text.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>

#include "Morning.h"
#include "calls/Export.h"
#include "calls/Recording.h"
#include "calls/Report.h"
#include "device/DataFolder.h"
#include "device/parts/DeviceFile.h"
#include "language/Console.h"
#include "language/Scenario.h"
#include "page/Serve.h"
#include "page/Teller.h"
#include "run/HostProcess.h"
#include "run/Postmortem.h"
#include "run/Replay.h"
#include "run/Speaker.h"
#include "text/Files.h"
#include "text/WholeFile.h"

namespace {

using namespace vorn_speaker;

constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr int kNothingDone = 2;

constexpr int kForeignHostSeconds = 10;  // On the page also for the simulated one: there, somebody waits.
constexpr std::size_t kLargestScenario = std::size_t{16} << 20;
constexpr char kTraceFile[] = "/tmp/xAppLog.txt";  // The library's.

enum class Task { kPlay, kConsole, kRecord, kReplay, kReport, kExport, kServe, kList };

/// What the command line asks for.
struct Request {
  Task task = Task::kPlay;
  std::string scenario;  ///< Empty for the morning.
  std::string recording;
  std::string otherRecording;  ///< That it is compared with, when not empty.
  Replay replay;
  const ExportFormat* format = nullptr;
  std::string output;  ///< The file of an export; empty for standard output.
  std::string stateFolder;
  std::string out;   ///< The WAV file that the players play to.
  std::string alsa;  ///< The ALSA device that they play to instead, when not empty.
  std::string colour = "auto";
  Settings settings;
  ServeRequest serve;
  bool below = false;  ///< Whether this is the speaker's own process, below the one that serves.
  bool strict = false;
  bool list = false;
  bool everyOperation = false;  ///< Whether the table at the end counts also what was never called.
  int watchdog = -1;            ///< Negative: as the host needs it.
};

void complain(const std::string& text) {
  std::cerr << "vorn-speaker: " << vorn_testing::harmless(text) << '\n';
}

std::atomic<bool> g_ruleBroken{false};

/// Tells each rule of threading that a foreign host breaks, when it does.
void watch(Settings& settings) {
  settings.onFinding = [](const vorn_testing::Finding& finding) {
    const bool onlySlow = finding.rule == vorn_testing::Finding::kLongWait;
    if (!onlySlow && finding.rule != vorn_testing::Finding::kNotWatching) g_ruleBroken = true;
    complain(describe(finding));
  };
}

int list(std::ostream& out) {
  for (const Caller caller : {Caller::kAssistant, Caller::kFirmware}) {
    out << (caller == Caller::kAssistant ? "assistant\n" : "firmware\n");
    for (const Operation& operation : operations()) {
      if (operation.caller == caller) out << "  " << usage(operation) << '\n' << parameterHelp(operation);
    }
  }
  return kPassed;
}

int play(const Request& request, std::ostream& out) {
  const std::string name = request.scenario.empty() ? "morning" : request.scenario;
  const std::vector<Step> steps =
      readScenario(name, request.scenario.empty() ? kMorning : readWhole(name, kLargestScenario));
  Speaker speaker(request.settings, out);
  std::string problem;
  try {
    speaker.play(name, steps);
    if (request.strict && endRequested() == 0) speaker.expectEveryOperation();
  } catch (const Unmet& unmet) {
    problem = unmet.what();
  }
  speaker.conclude(request.everyOperation);
  if (!problem.empty()) complain(problem);
  speaker.finish();
  return problem.empty() ? kPassed : kFailed;
}

int console(const Request& request, std::ostream& out) {
  Speaker speaker(request.settings, out);
  Console console(speaker, request.stateFolder + "/console-history", request.settings.secrets);
  return console.run(isatty(STDIN_FILENO) == 1, std::cin) ? kPassed : kFailed;
}

/// The speaker's own process; the page is served by the one above.
int below(const Request& request, std::ostream& out) {
  Settings settings = request.settings;
  Teller teller(out, settings.secrets);
  settings.listener = &teller;
  settings.onFinding = [&](const vorn_testing::Finding& finding) {
    if (finding.rule != vorn_testing::Finding::kNotWatching) teller.found(describe(finding));
  };
  std::ostream unseen(nullptr);
  Speaker speaker(settings, unseen);
  teller.run(speaker, DeviceFile::read(settings.device), std::cin);
  return kPassed;
}

int replay(Request& request, std::ostream& out) {
  const Recorded calls = Recording::read(request.recording);
  std::ostringstream unseen;
  Speaker speaker(request.settings, unseen);
  request.replay.keepGoing = request.settings.keepGoing;
  return replay(calls, request.replay, speaker, out) ? kPassed : kFailed;
}

/// A recording as it may be shown.
Recorded shown(const Request& request, const std::string& path) {
  Recorded recording = Recording::read(path);
  recording.keep(request.replay.selection);
  if (!request.settings.secrets) recording.mask();
  return recording;
}

int report(const Request& request, std::ostream& out) {
  const Recorded recording = shown(request, request.recording);
  if (!request.otherRecording.empty())
    return compare(recording, shown(request, request.otherRecording), out) ? kPassed : kFailed;
  report(recording, out);
  return kPassed;
}

/// Standard output as a terminal may see it.
std::string forTerminal(const ExportFormat& format, const Recorded& recording) {
  std::ostringstream text;
  format.write(recording, text);
  return vorn_testing::harmless(text.str());
}

int exportRecording(const Request& request) {
  if (sameFile(request.output, request.recording))
    throw std::runtime_error(request.output +
                             ": is the recording, and the export would replace it; name another file");
  const Recorded recording = shown(request, request.recording);
  for (const std::string& told : recording.leftOut) complain(told);
  if (!request.output.empty()) {
    try {
      exportTo(request.output, *request.format, recording);
    } catch (const NotWritten& error) {
      complain(error.what());
      return kFailed;
    }
  } else if (isatty(STDOUT_FILENO) == 1) {
    std::cout << forTerminal(*request.format, recording);
  } else {
    request.format->write(recording, std::cout);
  }
  return kPassed;
}

/// What would be written over while, or before, it is read.
void refuseToOverwriteInputs(const Request& request) {
  std::vector<std::pair<const char*, std::string>> written;
  if (request.alsa.empty()) written.emplace_back("--out", request.out);
  if (request.task == Task::kRecord) written.emplace_back("the recording", request.recording);
  const std::pair<const char*, std::string> read[] = {
      {"the scenario", request.scenario},
      {"the device file", request.settings.device},
      {"the sound of the microphone", request.settings.audio},
      {"the host", request.settings.host},
      {"the recording", request.task == Task::kReplay ? request.recording : ""}};
  for (const auto& [output, path] : written) {
    for (const auto& [input, from] : read) {
      if (sameFile(path, from))
        throw std::runtime_error(path + ": is " + input + ", and " + output +
                                 " would replace it; name another file");
    }
  }
  if (written.size() == 2 &&
      (written[0].second == written[1].second || sameFile(written[0].second, written[1].second)))
    throw std::runtime_error(request.recording + ": is named by --out too; name another file");
}

/// The library keeps quiet when it cannot write its trace, and waits for the reader of a pipe.
void refuseTraceThatCannotBeWritten() {
  struct stat status {};
  std::string owner;
  if (lstat(kTraceFile, &status) == 0 && status.st_uid != geteuid())
    owner = ", it belongs to user " + std::to_string(status.st_uid);
  const int file = open(kTraceFile, O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0666);
  if (file < 0) {
    throw std::runtime_error(std::string(kTraceFile) +
                             ": the library cannot write its trace: " + std::strerror(errno) + owner +
                             "; have it removed, or leave the trace off with --no-trace");
  }
  close(file);
}

int fulfil(Request& request, std::ostream& out) {
  Settings& settings = request.settings;
  const StateFolder folder(request.stateFolder);
  // A recording and its replay begin with an empty store, so that they can be the same.
  if (request.task == Task::kPlay || request.task == Task::kConsole || request.task == Task::kServe)
    settings.store = request.stateFolder + "/store.sqlite";
  if (request.task == Task::kRecord) settings.recording = request.recording;
  if (request.alsa.empty()) {
    settings.sink = std::make_shared<WavSink>(request.out);
  } else {
    settings.sink = std::make_shared<AlsaSink>(request.alsa);
  }
  int status = request.task == Task::kConsole  ? console(request, out)
               : request.task == Task::kServe  ? below(request, out)
               : request.task == Task::kReplay ? replay(request, out)
                                               : play(request, out);
  if (!settings.sink->problem().empty()) {
    complain(settings.sink->problem());
    status = std::max(status, kFailed);
  }
  if (endRequested() == 0) return status;
  out.flush();
  complain(std::string("ended by a signal: ") + strsignal(endRequested()));
  return 128 + endRequested();
}

int fulfilOrComplain(Request& request, std::ostream& out) {
  endGently();
  try {
    return fulfil(request, out);
  } catch (const NotWritten& error) {
    out.flush();
    complain(error.what());
    return kFailed;
  } catch (const std::exception& error) {
    out.flush();
    complain(error.what());
    return kNothingDone;
  }
}

/// Colours and width as the terminal has them.
void adapt(Request& request) {
  const bool terminal = isatty(STDOUT_FILENO) == 1;
  const char* const plain = std::getenv("NO_COLOR");
  request.settings.colour =
      request.colour == "always" || (request.colour == "auto" && terminal && (!plain || !*plain));
  winsize size{};
  if (terminal && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 4)
    request.settings.width = std::min<std::size_t>(request.settings.width, size.ws_col - 4U);
}

int run(Request& request) {
  if (request.task == Task::kList) return list(std::cout);
  if (request.task == Task::kReport) return report(request, std::cout);
  if (request.task == Task::kExport) return exportRecording(request);
  if (request.task == Task::kServe && !request.below) {
    request.serve.secrets = request.settings.secrets;
    request.serve.morning = kMorning;
    request.serve.command.emplace_back("--below");
    return serve(request.serve, std::cout);
  }
  if (request.out.empty()) {
    request.out = request.stateFolder + "/answer.wav";
    if (request.alsa.empty() && access(request.out.c_str(), F_OK) == 0 && !WavSink::made(request.out))
      throw std::runtime_error(request.out +
                               ": was not made by vorn-speaker; move it away, or name a file with --out");
  }
  refuseToOverwriteInputs(request);
  if (request.settings.trace) refuseTraceThatCannotBeWritten();
  const bool watched =
      request.task == Task::kServe || request.task == Task::kReplay || !request.settings.host.empty();
  if (request.watchdog < 0) request.watchdog = watched ? kForeignHostSeconds : 0;
  request.settings.limit = std::chrono::seconds(request.watchdog);
  if (request.settings.secrets) umask(077);
  adapt(request);
  tellCrashes();
  if (request.settings.host.empty()) return fulfilOrComplain(request, std::cout);
  if (request.task != Task::kServe) watch(request.settings);
  // The console's own words go to standard output by themselves.
  return inHostProcess(request.settings.limit, request.task != Task::kConsole, [&](std::ostream& out) {
    const int status = fulfilOrComplain(request, out);
    return g_ruleBroken ? kHostFailed : status;
  });
}

std::string scenarioHelp() {
  std::string text =
      "A scenario holds one statement a line, values as words, \"texts\", [lists] and {key=value} sets; # begins a comment:\n";
  for (const Statement& statement : statements()) {
    std::string form = std::string("  ") + statement.form;
    form.resize(std::max<std::size_t>(form.size() + 1, 50), ' ');
    text += form + statement.help + "\n";
  }
  return text +
         "Exit status: 0 done, 1 an expectation was not met, an answer differs or an output was lost, 2 nothing was\n"
         "done, 3 the host failed: it crashed, ended the program or did not return; 128 and its number after a signal.";
}

void addOptions(CLI::App& app, Request& request) {
  Settings& settings = request.settings;
  request.stateFolder = userStateFolder();
  settings.device = shipped("device.toml");
  settings.audio = shipped("request.wav");
  app.add_option("--state", request.stateFolder, "The folder of the key-value store")->capture_default_str();
  app.add_option("--device", settings.device, "The device's facts and settings (TOML)")
      ->capture_default_str();
  app.add_option("--audio", settings.audio, "What the microphone hears (WAV, FLAC or OGG)")
      ->capture_default_str();
  app.add_option("--out", request.out,
                 "The WAV file that the players play to; answer.wav in the state folder");
  app.add_option("--alsa", request.alsa, "The ALSA device that the players play to instead, such as default");
  const auto realTime = app.add_flag("--real-time", settings.realTime, "Keep the microphone's real time");
  app.add_flag("--fast", "Go as fast as it goes, as without --real-time")->excludes(realTime);
  app.add_flag_callback(
      "--no-trace", [&settings] { settings.trace = false; }, "Leave the library's trace off");
  app.add_flag("--strict", request.strict, "Fail when an operation was never called");
  app.add_flag("--keep-going", settings.keepGoing,
               "Go on after an expectation that is not met, or a call that is answered differently");
  app.add_flag("--all", request.everyOperation, "Count also the operations that were never called");
  app.add_flag("--every-block", settings.everyBlock, "Print every block of sound, not one line a stream");
  app.add_flag("--secrets", settings.secrets, "Print tokens and secrets in clear");
  app.add_option("--host", settings.host, "A library with a host of your own, in place of the simulated one");
  app.add_option(
         "--watchdog", request.watchdog,
         "Seconds that a call of the host may take, and its loading, making, destroying and unloading each, 0 for\n"
         "ever; 10 with --host, with serve and in replays")
      ->check(CLI::NonNegativeNumber);
  app.add_option("--color", request.colour,
                 "Colours: auto for terminals only, unless NO_COLOR is set; always; never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  app.add_option("--port", request.serve.port,
                 "The port of the page that serve shows; a free one unless given")
      ->check(CLI::Range(1, 65535));
  app.add_option(
      "--watch", request.serve.watch,
      "A recording that serve shows in place of a speaker; what is added to it is shown as it comes");
  app.add_flag("--below", request.below)->group("");
  app.add_flag("--list", request.list, "List the operations with their arguments, and end");
}

/// Which calls of a recording.
void addSelection(CLI::App& command, Request& request) {
  // What a value lacks is told in words that name what was meant.
  const auto tell = [](const auto& take) {
    return [take](const std::string& text) {
      try {
        take(text);
      } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError(error.what());
      }
    };
  };
  command.add_option_function<std::string>(
      "--calls", tell([&request](const std::string& text) { request.replay.selection.setRange(text); }),
      "Only the calls with these numbers: 7, 7-9, 7- or -9");
  command
      .add_option_function<std::vector<std::string>>(
          "-a,--adapter",
          [&request, tell](const std::vector<std::string>& names) {
            for (const std::string& name : names)
              tell([&request](const std::string& one) { request.replay.selection.addAdapter(one); })(name);
          },
          "Only calls of this adapter; may be given again")
      ->allow_extra_args(false);
}

void addExport(CLI::App& command, Request& request) {
  std::string help = "The form:";
  for (const ExportFormat& format : exportFormats())
    help += std::string("\n") + format.name + ", " + format.meaning;
  command
      .add_option_function<std::string>(
          "--format",
          [&request](const std::string& name) {
            std::vector<std::string> names;
            for (const ExportFormat& format : exportFormats()) {
              if (name == format.name) request.format = &format;
              names.push_back(format.name);
            }
            if (request.format) return;
            const std::string meant = nearest(name, names);
            throw CLI::ValidationError("--format: expected trace-event, mermaid or csv, found " + name +
                                       (meant.empty() ? "" : "; did you mean " + meant + "?"));
          },
          help)
      ->required();
  command.add_option("-o,--output", request.output, "The file to write; standard output without one");
  addSelection(command, request);
}

}  // namespace

int main(int argc, char** argv) {
  vorn_testing::prepareStandardFiles();
  int status = kNothingDone;
  CLI::App app(
      "Plays a simulated speaker, firmware and assistant client in one process, and prints every call.");
  try {
    app.name("vorn-speaker");
    app.footer(scenarioHelp());
    app.set_help_all_flag("--help-all", "Print help of all commands");
    app.set_version_flag("--version", VORN_SPEAKER_VERSION);
    app.fallthrough();

    Request request;
    addOptions(app, request);
    app.add_option("SCENARIO,--scenario", request.scenario,
                   "The scenario to play; without one, a whole morning");
    app.add_subcommand("console", "Type statements and see them played")->callback([&] {
      request.task = Task::kConsole;
    });
    const auto recorded = [&](const char* name, Task task, const char* help) {
      CLI::App* const command = app.add_subcommand(name, help);
      command->add_option("RECORDING", request.recording, "The file of the recording")->required();
      command->callback([&request, task] { request.task = task; });
      return command;
    };
    recorded("record", Task::kRecord,
             "Play a scenario (of --scenario, or the morning) and write every call to a file");
    CLI::App& replayed =
        *recorded("replay", Task::kReplay,
                  "Play the calls of a recording and tell the first that is answered differently");
    addSelection(replayed, request);
    replayed.add_flag("--keep-times", request.replay.keepTimes,
                      "Wait before each call as long as was waited then; without it they follow at once");
    CLI::App& reported = *recorded(
        "report", Task::kReport, "Print a recording for people: calls, durations, waits; or how two differ");
    reported.add_option("OTHER", request.otherRecording, "The recording that it is compared with");
    addSelection(reported, request);
    addExport(*recorded("export", Task::kExport, "Write a recording in a form that other programs read"),
              request);
    app.add_subcommand("serve",
                       "Show the speaker on a page in the browser of this machine, and play with it there")
        ->callback([&] { request.task = Task::kServe; });
    request.serve.command.assign(argv, argv + argc);
    app.require_subcommand(0, 1);
    app.parse(argc, argv);
    if (request.list) request.task = Task::kList;
    status = run(request);
  } catch (const CLI::Success& asked) {
    status = app.exit(asked);
  } catch (const CLI::ParseError& error) {
    complain(error.what());
    std::cerr << "Run with --help for more information.\n";
  } catch (const std::exception& error) {
    std::cout.flush();
    complain(error.what());
  }
  return vorn_testing::standardOutputArrived("vorn-speaker") || status != kPassed ? status : kFailed;
}
