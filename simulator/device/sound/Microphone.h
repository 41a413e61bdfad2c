#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace vorn_speaker {

/// A microphone that hears a sound file: 16 kHz mono, in buffers of 10 ms, on a thread of its own.
class Microphone {
 public:
  static constexpr int kRate = 16000;
  static constexpr std::size_t kBuffer = kRate / 100;

  enum class Pace { kRealTime, kFast };

  /// `deliver` gets each buffer, always on the one microphone thread; the last buffer is filled up with silence.
  Microphone(Pace pace, std::function<void(std::vector<short>&)> deliver);

  /// Stops.
  ~Microphone();

  Microphone(const Microphone&) = delete;
  Microphone& operator=(const Microphone&) = delete;

  /// Puts a sound before the microphone: what the next start() hears. WAV, FLAC or OGG at any usual rate.
  /// @throws std::runtime_error  Names file, reason and accepted formats; what was there before stays.
  void hear(const std::string& path);

  /// Starts delivering from the beginning of the sound. Returns false when it is running already or there is
  /// nothing to hear.
  bool start();

  /// Ends the delivery; when it returns no buffer is under way. May be called from inside `deliver`, which is
  /// then the last.
  void stop();

  /// Waits until the sound has been heard to its end, or was stopped. Returns whether that is so.
  bool wait(std::chrono::milliseconds atMost = std::chrono::hours(24));

 private:
  void run(std::vector<short> samples);

  const Pace m_pace;
  const std::function<void(std::vector<short>&)> m_deliver;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::vector<short> m_samples;
  bool m_running = false;
  bool m_stop = false;
  std::thread m_thread;
};

}  // namespace vorn_speaker
