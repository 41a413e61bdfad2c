#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Speaker.h"

namespace vorn_speaker {

/// Plays the calls that a recording's assistant client made of the host and its external player, and stops at the
/// first that is answered differently. Returns whether there was none; says so, with what came before, on `out`.
/// @throws std::runtime_error  A call cannot be made, or there is none: names file and line.
bool replay(const Recorded& recording, Speaker& speaker, std::ostream& out);

/// Prints a recording for people: who called whom, how often, how long it took. Secrets are masked unless `secrets`.
void report(const Recorded& recording, std::ostream& out, bool secrets);

}  // namespace vorn_speaker
