#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Speaker.h"

namespace vorn_speaker {

/// How a recording is replayed.
struct Replay {
  Selection selection;     ///< Which calls are played.
  bool keepTimes = false;  ///< Whether each call waits for its time, or follows at once.
  bool keepGoing = false;  ///< Whether it goes on after a difference, and tells all.
};

/// Plays the calls that a recording's assistant client made of the host and its external player, with adapters created
/// and shut down as they were, and stops at the first that is answered differently. Returns whether there was none;
/// says so, with what came before, on `out`.
/// @throws std::runtime_error  A call cannot be made, or there is none: names file and line.
bool replay(const Recorded& recording, const Replay& how, Speaker& speaker, std::ostream& out);

}  // namespace vorn_speaker
