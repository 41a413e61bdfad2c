// vorn-speaker: a simulated speaker that plays scenarios and prints every call that crosses the library.

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "DataFolder.h"
#include "Morning.h"
#include "Scenario.h"
#include "Speaker.h"

namespace {

using namespace vorn_speaker;

constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

void listOperations() {
  const auto side = [](Caller caller, const char* title) {
    std::cout << title << '\n';
    for (const Operation& operation : operations()) {
      if (operation.caller != caller) continue;
      std::cout << "  " << usage(operation) << '\n';
      for (const Parameter& parameter : operation.parameters) {
        std::cout << "      " << parameter.name << ": " << parameter.type << '\n';
      }
    }
  };
  side(Caller::kAssistant, "assistant");
  side(Caller::kFirmware, "firmware");
}

std::string help() {
  std::string text =
      "A scenario holds one statement a line, values as words, \"texts\", [lists] and {key=value} sets; # begins a comment:\n";
  for (const Statement& statement : statements()) {
    std::string form = std::string("  ") + statement.form;
    form.resize(std::max<std::size_t>(form.size() + 1, 50), ' ');
    text += form + statement.help + "\n";
  }
  return text + "Exit status: 0 played, 1 an expectation was not met, 2 nothing was played.";
}

int play(const std::string& file, const std::string& text, const Settings& settings, bool strict) {
  const std::vector<Step> steps = readScenario(file, text);
  Tally tally;
  int status = kPassed;
  {
    Speaker speaker(settings, std::cout);
    try {
      speaker.play(file, steps);
      if (strict) speaker.expectEveryOperation();
    } catch (const Disappointed& disappointed) {
      std::cout.flush();
      std::cerr << disappointed.what() << '\n';
      status = kFailed;
    }
    std::cout << '\n';
    speaker.tally().print(std::cout);
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app(
      "Plays a simulated speaker, firmware and assistant client in one process, and prints every call.");
  app.name("vorn-speaker");
  app.footer(help());
  app.set_version_flag("--version", VORN_SPEAKER_VERSION);

  std::string scenario;
  Settings settings;
  bool fast = false, strict = false, noTrace = false, list = false;
  app.add_option("SCENARIO", scenario, "The scenario to play; without one, a whole morning");
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
  app.add_flag("--fast", fast, "Go as fast as it goes, as without --real-time")->excludes(realTime);
  app.add_flag("--no-trace", noTrace, "Leave the library's trace off");
  app.add_flag("--strict", strict, "Fail when an operation was never called");
  app.add_flag("--every-block", settings.everyBlock, "Print every block of sound, not one line a stream");
  app.add_flag("--secrets", settings.secrets, "Print tokens and secrets in clear");
  app.add_flag("--list", list, "List the operations with their arguments, and end");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kPassed : kUsage;
  }
  settings.trace = !noTrace;
  if (list) {
    listOperations();
    return kPassed;
  }

  try {
    std::filesystem::create_directories(settings.stateFolder);
    if (settings.out.empty()) settings.out = settings.stateFolder + "/answer.wav";
    settings.colour = isatty(STDOUT_FILENO) == 1;
    if (scenario.empty()) return play("morning", kMorning, settings, strict);
    std::ifstream file(scenario);
    if (!file) throw std::runtime_error(scenario + ": cannot be read");
    return play(scenario, {std::istreambuf_iterator<char>(file), {}}, settings, strict);
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return kUsage;
  }
}
