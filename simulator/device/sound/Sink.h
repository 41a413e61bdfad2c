#pragma once

#include <functional>
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

  /// No more sounds will come. What goes wrong is kept by problem().
  void finish();

  /// Why the first sound that was lost could not be played; empty when none was.
  std::string problem() const;

 private:
  virtual void take(const Sound& sound) = 0;
  virtual void conclude() {}
  virtual void giveUp() {}  ///< A sound was lost: nothing of it may stay beside.
  void keepProblem(const std::function<void()>& work);

  mutable std::mutex m_mutex;
  std::string m_problem;
};

/// A WAV file, 48 kHz mono, 16 bit, to which every sound is appended.
class WavSink : public Sink {
 public:
  static constexpr int kRate = 48000;

  /// The file takes the place of an earlier one with the first sound, or in finish(), and is whole after each sound;
  /// nothing of it stays when there is neither. A device such as /dev/null is written to as it is.
  /// @throws std::runtime_error  Names the file and the reason.
  explicit WavSink(const std::string& path);
  ~WavSink() override;

  /// Whether the file was made by one of these, and not by the user.
  static bool made(const std::string& path);

 private:
  struct File;
  void take(const Sound& sound) override;
  void conclude() override;
  void giveUp() override;
  [[noreturn]] void refuse(const std::string& reason) const;
  int openAside();
  void write(int file);
  void putInPlace();

  const std::string m_path;
  std::string m_target;  ///< Behind links.
  std::string m_aside;   ///< Its name until it has its own.
  unsigned m_mode = 0;
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
