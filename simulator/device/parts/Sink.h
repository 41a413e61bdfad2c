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

  /// @throws std::runtime_error  Names the place, the reason and the remedy.
  virtual void play(const Sound& sound) = 0;
};

/// A WAV file, 48 kHz mono, 16 bit, to which every sound is appended.
class WavSink : public Sink {
 public:
  static constexpr int kRate = 48000;

  /// Makes the file, replacing an earlier one.
  /// @throws std::runtime_error  Names the file and the reason.
  explicit WavSink(const std::string& path);
  ~WavSink() override;

  void play(const Sound& sound) override;

 private:
  struct File;
  const std::string m_path;
  std::mutex m_mutex;
  std::unique_ptr<File> m_file;
};

/// An ALSA device, "default" or any name that aplay -L shows.
class AlsaSink : public Sink {
 public:
  explicit AlsaSink(std::string device);

  void play(const Sound& sound) override;

 private:
  const std::string m_device;
  std::mutex m_mutex;
};

}  // namespace vorn_speaker
