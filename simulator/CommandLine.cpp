#include "CommandLine.h"

#include <vorn_testing/Text.h>
#include <CLI/CLI.hpp>

#include <unistd.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <vector>

#include "device/DataFolder.h"
#include "language/Scenario.h"
#include "text/Files.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

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

/// A script's variable that is not set must not pass for a choice.
std::string refuseNothing(const std::string& text) {
  return text.empty() ? "expected a name, found nothing" : "";
}

std::string refuseUnlessDigits(const std::string& text) {
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  return digits && (text.size() == 1 || text[0] != '0') ? ""
                                                        : "expected a whole number, found " + excerpt(text);
}

void addOptions(CLI::App& app, Request& request) {
  Settings& settings = request.settings;
  request.stateFolder = userStateFolder();
  request.device = shipped("device.toml");
  settings.audio = shipped("request.wav");
  app.add_option("--state", request.stateFolder, "The folder of the key-value store")
      ->capture_default_str()
      ->check(refuseNothing);
  app.add_option("--device", request.device, "The device's facts and settings (TOML)")
      ->capture_default_str()
      ->check(refuseNothing);
  app.add_option("--audio", settings.audio, "What the microphone hears (WAV, FLAC or OGG)")
      ->capture_default_str()
      ->check(refuseNothing);
  const auto out = app.add_option("--out", request.out,
                                  "The WAV file that the players play to; answer.wav in the state folder")
                       ->check(refuseNothing);
  app.add_option("--alsa", request.alsa, "The ALSA device that the players play to instead, such as default")
      ->check(refuseNothing)
      ->excludes(out);
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
  app.add_option("--host", settings.host, "A library with a host of your own, in place of the simulated one")
      ->check(refuseNothing);
  app.add_option(
         "--watchdog", request.watchdog,
         "Seconds that a call of the host may take, and its loading, making, destroying and unloading each, 0 for\n"
         "ever; 10 with --host, with serve and in replays")
      ->check(refuseUnlessDigits);
  app.add_option("--color", request.colour,
                 "Colours: auto for terminals only, unless NO_COLOR is set; always; never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  app.add_option("--port", request.serve.port,
                 "The port of the page that serve shows; a free one unless given")
      ->check(refuseUnlessDigits)
      ->check(CLI::Range(1, 65535));
  app.add_option(
         "--watch", request.serve.watch,
         "A recording that serve shows in place of a speaker; what is added to it is shown as it comes")
      ->check(refuseNothing);
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
            throw CLI::ValidationError("--format: expected trace-event, mermaid or csv, found " +
                                       excerpt(name) + vorn_testing::didYouMean(name, names));
          },
          help)
      ->required();
  command.add_option("-o,--output", request.output, "The file to write; standard output without one")
      ->check(refuseNothing);
  addSelection(command, request);
}

}  // namespace

void declare(CLI::App& app, Request& request) {
  app.name("vorn-speaker");
  app.footer(scenarioHelp());
  app.set_help_all_flag("--help-all", "Print help of all commands");
  app.set_version_flag("--version", VORN_SPEAKER_VERSION);
  app.fallthrough();

  addOptions(app, request);
  app.add_option("SCENARIO,--scenario", request.scenario,
                 "The scenario to play; without one, a whole morning")
      ->check(refuseNothing);
  app.add_subcommand("console", "Type statements and see them played")->callback([&] {
    request.task = Task::kConsole;
  });
  const auto recorded = [&](const char* name, Task task, const char* help) {
    CLI::App* const command = app.add_subcommand(name, help);
    command->add_option("RECORDING", request.recording, "The file of the recording")
        ->required()
        ->check(refuseNothing);
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
  CLI::App& reported = *recorded("report", Task::kReport,
                                 "Print a recording for people: calls, durations, waits; or how two differ");
  reported.add_option("OTHER", request.otherRecording, "The recording that it is compared with")
      ->check(refuseNothing);
  addSelection(reported, request);
  addExport(*recorded("export", Task::kExport, "Write a recording in a form that other programs read"),
            request);
  app.add_subcommand("serve",
                     "Show the speaker on a page in the browser of this machine, and play with it there")
      ->callback([&] { request.task = Task::kServe; });
  app.require_subcommand(0, 1);
}

std::vector<std::string> commandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* const command : app.get_subcommands({})) names.push_back(command->get_name());
  return names;
}

std::string meant(const CLI::App& app) {
  const std::vector<CLI::App*> chosen = app.get_subcommands();
  std::vector<std::string> names;
  std::map<std::string, std::string> others;  // Options of commands that were not chosen.
  const auto add = [&](const CLI::App& one, bool known) {
    for (const CLI::Option* const option : one.get_options()) {
      for (const std::string& name : option->get_lnames()) {
        if (known)
          names.push_back("--" + name);
        else
          others.emplace("--" + name, one.get_name());
      }
    }
  };
  add(app, true);
  for (const CLI::App* const command : app.get_subcommands({}))
    add(*command, std::find(chosen.begin(), chosen.end(), command) != chosen.end());
  for (const std::string& word : app.remaining(true)) {
    const std::string name = word.substr(0, word.find('='));
    if (others.count(name) > 0) return "; it is an option of " + others[name];
    const std::string hint = vorn_testing::didYouMean(name, names);
    if (word.compare(0, 2, "--") == 0 && !hint.empty()) return hint;
  }
  for (const std::string& scenario : app["--scenario"]->results()) {
    const std::string hint = vorn_testing::didYouMean(scenario, commandNames(app));
    if (!hint.empty() && access(scenario.c_str(), F_OK) != 0)
      return "; there is no scenario " + oneLine(scenario) + hint;
  }
  return "";
}

void refuseWithoutEffect(const Request& request) {
  const bool plays =
      request.task == Task::kPlay || request.task == Task::kRecord || request.task == Task::kList;
  if (!plays && !request.scenario.empty())
    throw CLI::ValidationError(oneLine(request.scenario) + ": this command plays no scenario");
  const bool serves = request.task == Task::kServe || request.task == Task::kList;
  if (!serves && (request.serve.port != 0 || !request.serve.watch.empty()))
    throw CLI::ValidationError("--port and --watch are for serve");
  if (!plays && (request.strict || request.everyOperation))
    throw CLI::ValidationError("--strict and --all are for what plays a scenario");
  if (!plays && request.task != Task::kReplay && request.settings.keepGoing)
    throw CLI::ValidationError("--keep-going is for what plays a scenario, and for replay");
  const bool reads = request.task == Task::kReport || request.task == Task::kExport;
  if (reads && !request.settings.host.empty()) throw CLI::ValidationError("--host is for what runs a host");
}

}  // namespace vorn_speaker
