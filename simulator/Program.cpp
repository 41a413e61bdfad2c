#include "Program.h"

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn_testing/StandardFiles.h>
#include <vorn_testing/Text.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iostream>
#include <sstream>

#include "CommandLine.h"
#include "Morning.h"
#include "device/DataFolder.h"
#include "language/Console.h"
#include "language/Scenario.h"
#include "page/Serve.h"
#include "page/Teller.h"
#include "recordings/Export.h"
#include "recordings/Recording.h"
#include "recordings/Report.h"
#include "run/HostProcess.h"
#include "run/Postmortem.h"
#include "run/Replay.h"
#include "run/Speaker.h"
#include "run/TraceFile.h"
#include "text/Files.h"

namespace vorn_speaker {

namespace {

constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr int kNothingDone = 2;

constexpr int kForeignHostSeconds = 10;  // On the page also for the simulated one: there, somebody waits.
constexpr std::size_t kLargestScenario = std::size_t{16} << 20;

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

using Work = std::function<int(std::ostream&)>;

/// What a task reads is read here; what it makes, when it is called.
Work play(const Request& request) {
  const std::string name = request.scenario.empty() ? "morning" : request.scenario;
  const std::string command = vorn_testing::didYouMean(name, request.commands);
  if (!request.scenario.empty() && !command.empty() && access(name.c_str(), F_OK) != 0)
    throw std::runtime_error(name + ": there is no such scenario" + command);
  const std::vector<Step> steps =
      readScenario(name, request.scenario.empty() ? kMorning : readWhole(name, kLargestScenario));
  return [&request, name, steps](std::ostream& out) {
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
  };
}

int console(const Request& request, std::ostream& out) {
  Speaker speaker(request.settings, out);
  Console console(speaker, request.stateFolder + "/console-history", request.settings.secrets);
  const bool good = console.run(isatty(STDIN_FILENO) == 1, std::cin);
  if (std::ferror(stdin)) throw std::runtime_error("standard input cannot be read");
  return good ? kPassed : kFailed;
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
  teller.run(speaker, settings, std::cin);
  return kPassed;
}

Work replay(Request& request) {
  request.replay.keepGoing = request.settings.keepGoing;
  return [&request, calls = Recording::read(request.recording)](std::ostream& out) {
    std::ostringstream unseen;
    Speaker speaker(request.settings, unseen);
    return replay(calls, request.replay, speaker, out) ? kPassed : kFailed;
  };
}

Work workOf(Request& request) {
  if (request.task == Task::kReplay) return replay(request);
  if (request.task == Task::kPlay || request.task == Task::kRecord) return play(request);
  return [&request](std::ostream& out) {
    return request.task == Task::kConsole ? console(request, out) : below(request, out);
  };
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
  if (!request.otherRecording.empty()) {
    const Recorded other = shown(request, request.otherRecording);
    if (recording.calls.empty() && other.calls.empty())
      throw std::runtime_error("no call was compared: neither recording holds one that was chosen");
    return compare(recording, other, out) ? kPassed : kFailed;
  }
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
      {"the device file", request.device},
      {"the sound of the microphone", request.settings.audio},
      {"the host", request.settings.host},
      {"the recording", request.task == Task::kReplay ? request.recording : ""}};
  for (const auto& [output, path] : written) {
    for (const auto& [input, from] : read) {
      if (sameFile(path, from))
        throw std::runtime_error(path + ": is " + input + ", and " + output +
                                 " would replace it; name another file");
    }
    if (StateFolder::keeps(request.stateFolder, path))
      throw std::runtime_error(path + ": keeps the state; name another file");
  }
  if (written.size() == 2 &&
      (written[0].second == written[1].second || sameFile(written[0].second, written[1].second)))
    throw std::runtime_error(request.recording + ": is named by --out too; name another file");
}

int fulfil(Request& request, std::ostream& out) {
  Settings& settings = request.settings;
  const Work work = workOf(request);
  settings.device = DeviceFile::read(request.device);
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
  int status = work(out);
  if (endRequested() == 0) settings.sink->finish();
  if (!settings.sink->problem().empty()) {
    complain(settings.sink->problem());
    status = kFailed;
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
  } catch (const std::bad_alloc&) {
    out.flush();
    complain("there is not enough memory");
    return kNothingDone;
  } catch (const std::exception& error) {
    out.flush();
    complain(error.what());
    return kNothingDone;
  }
}

/// Colours and width as the terminal has them.
void adapt(Request& request) {
  request.settings.colour = vorn_testing::standardOutputIsColoured(request.colour);
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 4)
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
  if (request.out.empty()) request.out = request.stateFolder + "/answer.wav";
  refuseToOverwriteInputs(request);
  std::error_code none;
  if (request.alsa.empty() && std::filesystem::is_regular_file(request.out, none) &&
      !std::filesystem::is_empty(request.out, none) && !WavSink::made(request.out))
    throw std::runtime_error(request.out +
                             ": was not made by vorn-speaker; move it away, or name another file with --out");
  returnTraceLeftAway();
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

}  // namespace

int program(int argc, char** argv) {
  vorn_testing::prepareStandardFiles();
  int status = kNothingDone;
  CLI::App app(
      "Plays a simulated speaker, firmware and assistant client in one process, and prints every call.");
  try {
    Request request;
    declare(app, request);
    request.serve.command.assign(argv, argv + argc);
    app.parse(argc, argv);
    if (request.list) request.task = Task::kList;
    refuseWithoutEffect(request);
    request.commands = commandNames(app);
    status = run(request);
  } catch (const CLI::Success& asked) {
    status = app.exit(asked);
  } catch (const CLI::ExtrasError&) {
    // What is caught names them from the last to the first.
    complain(CLI::ExtrasError(app.remaining_for_passthrough()).what() + meant(app));
    std::cerr << "Run with --help for more information.\n";
  } catch (const CLI::ParseError& error) {
    complain(error.what());
    std::cerr << "Run with --help for more information.\n";
  } catch (const std::bad_alloc&) {
    std::cout.flush();
    complain("there is not enough memory");
  } catch (const std::exception& error) {
    std::cout.flush();
    complain(error.what());
  }
  return vorn_testing::standardOutputArrived("vorn-speaker") || status != kPassed ? status : kFailed;
}

}  // namespace vorn_speaker
