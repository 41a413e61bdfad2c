#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Sound.h"

namespace vorn_speaker {

/// Where players play. play() returns when the sound has been taken; it may be called from any thread.
class Sink {
 public:
  virtual ~Sink() = default;

  /// @throws std::runtime_error  Names the place, the reason and the remedy, which problem() then keeps.
  void play(const Sound& sound);

  /// Why the first sound that was lost could not be played; empty when none was.
  std::string problem() const;

 private:
  virtual void take(const Sound& sound) = 0;

  mutable std::mutex m_mutex;
  std::string m_problem;
};

/// A WAV file, 48 kHz mono, 16 bit, to which every sound is appended.
class WavSink : public Sink {
 public:
  static constexpr int kRate = 48000;

  /// Makes the file aside. It takes the place of an earlier one with the first sound, or at the end, and is whole
  /// after each sound. A device such as /dev/null is written to as it is.
  /// @throws std::runtime_error  Names the file and the reason.
  explicit WavSink(const std::string& path);
  ~WavSink() override;

  /// Whether the file was made by one of these, and not by the user.
  static bool made(const std::string& path);

 private:
  struct File;
  void take(const Sound& sound) override;
  void putInPlace();

  const std::string m_path;
  std::string m_aside;  ///< Its name until it has its own.
  std::unique_ptr<File> m_file;
};

/// An ALSA device, "default" or any name that aplay -L shows.
class AlsaSink : public Sink {
 public:
  explicit AlsaSink(std::string device);

 private:
  void take(const Sound& sound) override;

  const std::string m_device;
};

}  // namespace vorn_speaker
