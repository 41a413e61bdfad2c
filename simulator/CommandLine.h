#pragma once

#include <string>
#include <vector>

#include "page/Serve.h"
#include "recordings/Export.h"
#include "run/Replay.h"
#include "run/Speaker.h"

namespace CLI {
class App;
}

namespace vorn_speaker {

enum class Task { kPlay, kConsole, kRecord, kReplay, kReport, kExport, kServe, kList };

/// What the command line asks for.
struct Request {
  Task task = Task::kPlay;
  std::string scenario;  ///< Empty for the morning.
  std::string device;    ///< The file.
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
  std::vector<std::string> commands;  ///< The names of all.
  bool below = false;  ///< Whether this is the speaker's own process, below the one that serves.
  bool strict = false;
  bool list = false;
  bool everyOperation = false;  ///< Whether the table at the end counts also what was never called.
  int watchdog = -1;            ///< Negative: as the host needs it.
};

/// Lays out the options and commands whose values become the request.
void declare(CLI::App& app, Request& request);

std::vector<std::string> commandNames(const CLI::App& app);

/// "; did you mean --state?" of an option that is not known, or nothing.
std::string meant(const CLI::App& app);

/// Refuses what the task would pass over in silence. @throws CLI::ValidationError
void refuseWithoutEffect(const Request& request);

}  // namespace vorn_speaker
