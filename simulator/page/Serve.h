#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace vorn_speaker {

/// What the page is served of.
struct ServeRequest {
  int port = 0;                      ///< 0 for a free one.
  std::string watch;                 ///< A recording to show in place of a speaker, when not empty.
  bool secrets = false;              ///< Whether they are shown.
  std::string morning;               ///< The scenario that ships.
  std::vector<std::string> command;  ///< How this program is started for the speaker itself, its name first.
};

/// Prints the page's address and serves it until a signal asks to end.
/// @returns  0, or the status of a speaker that could not begin.
/// @throws std::runtime_error  Names the port or file, the reason and the remedy.
int serve(const ServeRequest& request, std::ostream& out);

}  // namespace vorn_speaker
