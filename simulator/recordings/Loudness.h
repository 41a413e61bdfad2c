#pragma once

#include <string>

#include "calls/Crossings.h"

namespace vorn_speaker {

/// How loud a block of sound is.
struct Loudness {
  std::size_t samples = 0;
  int peak = 0;
  int level = 0;  ///< The root of the mean square.
};

/// Of samples as a recording spells them: "[1, -2]".
Loudness loudness(const std::string& spelled);

/// Whether a call brings a block of samples.
bool isSound(const Crossing& call);

}  // namespace vorn_speaker
