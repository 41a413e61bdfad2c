#include "Loudness.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace vorn_speaker {

Loudness loudness(const std::string& spelled) {
  Loudness sound;
  double squares = 0;
  for (const char* at = spelled.c_str(); *at;) {
    char* end = nullptr;
    // Without its sign, which makes nothing louder.
    const long sample = *at >= '0' && *at <= '9' ? std::strtol(at, &end, 10) : 0;
    if (!end || end == at) {
      ++at;
      continue;
    }
    at = end;
    ++sound.samples;
    sound.peak = std::max(sound.peak, static_cast<int>(std::min(sample, 32768L)));
    squares += static_cast<double>(sample) * static_cast<double>(sample);
  }
  if (sound.samples > 0)
    sound.level =
        static_cast<int>(std::min(std::sqrt(squares / static_cast<double>(sound.samples)), 32768.0));
  return sound;
}

bool isSound(const Crossing& call) {
  return call.operation == "sendAudioData" && call.spelled.size() == 1 && !call.spelled[0].empty() &&
         call.spelled[0][0] == '[';
}

}  // namespace vorn_speaker
