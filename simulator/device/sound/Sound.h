#pragma once

#include <string>
#include <vector>

namespace vorn_speaker {

/// Decoded audio: signed 16-bit samples, channels interleaved.
struct Sound {
  int rate = 0;      ///< Frames a second.
  int channels = 0;  ///< 1 or 2.
  std::vector<short> samples;

  /// Decodes WAV, FLAC or OGG from a file, or from the bytes of one, which may end early; `name` is for messages. At most
  /// 2^25 samples.
  /// @throws std::runtime_error  Names the source, the reason and the accepted formats.
  static Sound fromFile(const std::string& path);
  static Sound fromBytes(const std::string& name, const std::string& bytes);

  /// The same sound with one channel (the mean of two) at another rate.
  /// @throws std::runtime_error  When the converter fails.
  Sound mono(int newRate) const;
};

}  // namespace vorn_speaker
