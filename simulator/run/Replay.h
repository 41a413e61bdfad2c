#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "Speaker.h"

namespace vorn_speaker {

/// Plays the calls that a recording's assistant client made of the host and its external player, and stops at the
/// first that is answered differently. Returns whether there was none; says so, with what came before, on `out`.
bool replay(const std::vector<Crossing>& recording, Speaker& speaker, std::ostream& out);

/// Prints a recording for people: who called whom, how often, how long it took.
void report(const std::vector<Crossing>& recording, std::ostream& out);

}  // namespace vorn_speaker
