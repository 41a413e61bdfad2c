// vorn-speaker: a simulated speaker that plays scenarios and prints every call that crosses the library.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "Morning.h"
#include "calls/Recording.h"
#include "device/DataFolder.h"
#include "language/Console.h"
#include "language/Scenario.h"
#include "run/Postmortem.h"
#include "run/Replay.h"
#include "run/Speaker.h"

namespace {

using namespace vorn_speaker;

constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

/// What the command line asks for.
struct Request {
  std::string scenario;  ///< Empty for the morning.
  std::string recording;
  Settings settings;
  bool strict = false;
  bool list = false;
  bool everyOperation = false;  ///< Whether the table at the end counts also what was never called.
  int watchdog = -1;            ///< Negative: as the host needs it.
};

constexpr int kForeignHostSeconds = 10;

std::string read(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file || std::filesystem::is_directory(path)) throw std::runtime_error(path + ": cannot be read");
  return {std::istreambuf_iterator<char>(file), {}};
}

int list() {
  for (const Caller caller : {Caller::kAssistant, Caller::kFirmware}) {
    std::cout << (caller == Caller::kAssistant ? "assistant\n" : "firmware\n");
    for (const Operation& operation : operations()) {
      if (operation.caller == caller)
        std::cout << "  " << usage(operation) << '\n' << parameterHelp(operation);
    }
  }
  return kPassed;
}

int play(const Request& request) {
  const std::string name = request.scenario.empty() ? "morning" : request.scenario;
  const std::vector<Step> steps = readScenario(name, request.scenario.empty() ? kMorning : read(name));
  Speaker speaker(request.settings, std::cout);
  int status = kPassed;
  try {
    speaker.play(name, steps);
    if (request.strict) speaker.expectEveryOperation();
  } catch (const Unmet& unmet) {
    std::cout.flush();
    std::cerr << unmet.what() << '\n';
    status = kFailed;
  }
  std::cout << "\nWhat the library traced meanwhile\n";
  speaker.printTrace(std::cout);
  std::cout << '\n';
  speaker.tally().print(std::cout, request.everyOperation);
  speaker.finish();
  return status;
}

int console(const Request& request) {
  Speaker speaker(request.settings, std::cout);
  Console console(speaker, request.settings.stateFolder + "/console-history", request.settings.secrets);
  return console.run(isatty(STDIN_FILENO) == 1, std::cin) ? kPassed : kFailed;
}

/// A recording and its replay begin with an empty store, so that they can be the same.
void beginAnew(Settings& settings) {
  settings.stateFolder += "/recorded";
  std::filesystem::remove_all(settings.stateFolder);
  std::filesystem::create_directories(settings.stateFolder);
}

int record(Request request) {
  beginAnew(request.settings);
  request.settings.recording = request.recording;
  return play(request);
}

int replay(Request request) {
  const Recorded calls = Recording::read(request.recording);
  beginAnew(request.settings);
  std::ostringstream unseen;
  Speaker speaker(request.settings, unseen);
  return replay(calls, speaker, std::cout) ? kPassed : kFailed;
}

int report(const Request& request) {
  report(Recording::read(request.recording), std::cout, request.settings.secrets);
  return kPassed;
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
         "Exit status: 0 played, 1 an expectation was not met, 2 nothing was played, 3 the host crashed or hung.";
}

void addOptions(CLI::App& app, Request& request) {
  Settings& settings = request.settings;
  settings.stateFolder = userStateFolder();
  settings.device = shipped("device.toml");
  settings.audio = shipped("request.wav");
  app.add_option("--state", settings.stateFolder, "The folder of the key-value store")->capture_default_str();
  app.add_option("--device", settings.device, "The device's facts and settings (TOML)")
      ->capture_default_str();
  app.add_option("--audio", settings.audio, "What the microphone hears (WAV, FLAC or OGG)")
      ->capture_default_str();
  app.add_option("--out", settings.out,
                 "The WAV file that the players play to; answer.wav in the state folder");
  app.add_option("--alsa", settings.alsa,
                 "The ALSA device that the players play to instead, such as default");
  const auto realTime = app.add_flag("--real-time", settings.realTime, "Keep the microphone's real time");
  app.add_flag("--fast", "Go as fast as it goes, as without --real-time")->excludes(realTime);
  app.add_flag_callback(
      "--no-trace", [&settings] { settings.trace = false; }, "Leave the library's trace off");
  app.add_flag("--strict", request.strict, "Fail when an operation was never called");
  app.add_flag("--keep-going", settings.keepGoing, "Go on after an expectation that is not met");
  app.add_flag("--all", request.everyOperation, "Count also the operations that were never called");
  app.add_flag("--every-block", settings.everyBlock, "Print every block of sound, not one line a stream");
  app.add_flag("--secrets", settings.secrets, "Print tokens and secrets in clear");
  app.add_option("--host", settings.host, "A library with a host of your own, in place of the simulated one");
  app.add_option("--watchdog", request.watchdog, "Seconds that a call may take, 0 for ever; 10 with --host")
      ->check(CLI::NonNegativeNumber);
  app.add_flag("--list", request.list, "List the operations with their arguments, and end");
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app(
      "Plays a simulated speaker, firmware and assistant client in one process, and prints every call.");
  app.name("vorn-speaker");
  app.footer(scenarioHelp());
  app.set_version_flag("--version", VORN_SPEAKER_VERSION);
  app.fallthrough();

  Request request;
  addOptions(app, request);
  app.add_option("SCENARIO,--scenario", request.scenario,
                 "The scenario to play; without one, a whole morning");
  const CLI::App* const asConsole = app.add_subcommand("console", "Type statements and see them played");
  const auto recorded = [&](const char* name, const char* help) {
    CLI::App* const command = app.add_subcommand(name, help);
    command->add_option("RECORDING", request.recording, "The file of the recording")->required();
    return command;
  };
  const CLI::App* const asRecord =
      recorded("record", "Play a scenario (of --scenario, or the morning) and write every call to a file");
  const CLI::App* const asReplay =
      recorded("replay", "Play the calls of a recording and tell the first that is answered differently");
  const CLI::App* const asReport =
      recorded("report", "Print a recording for people: calls, counts, durations");
  app.require_subcommand(0, 1);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kPassed : kUsage;
  }

  try {
    if (request.list) return list();
    if (*asReport) return report(request);
    Settings& settings = request.settings;
    std::filesystem::create_directories(settings.stateFolder);
    if (settings.out.empty()) settings.out = settings.stateFolder + "/answer.wav";
    if (request.watchdog < 0) request.watchdog = settings.host.empty() ? 0 : kForeignHostSeconds;
    settings.limit = std::chrono::seconds(request.watchdog);
    tellCrashes();
    const char* const plain = std::getenv("NO_COLOR");
    settings.colour = isatty(STDOUT_FILENO) == 1 && (!plain || !*plain);
    if (*asConsole) return console(request);
    if (*asRecord) return record(request);
    if (*asReplay) return replay(request);
    return play(request);
  } catch (const NotWritten& error) {
    std::cerr << error.what() << '\n';
    return kFailed;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return kUsage;
  }
}
