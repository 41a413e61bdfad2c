#include "Microphone.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Sound.h"

namespace vorn_speaker {

Microphone::Microphone(Pace pace, std::function<void(std::vector<short>&)> deliver)
    : m_pace(pace), m_deliver(std::move(deliver)) {}

Microphone::~Microphone() {
  stop();
  if (m_thread.joinable()) m_thread.join();
}

void Microphone::hear(const std::string& path) {
  std::vector<short> samples = Sound::fromFile(path).mono(kRate).samples;
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_samples.swap(samples);
}

bool Microphone::start() {
  std::unique_lock<std::mutex> lock(m_mutex);
  if (m_running || m_samples.empty()) return false;
  std::thread ended = std::exchange(m_thread, std::thread());
  m_running = true;
  m_stop = false;
  m_thread = std::thread(&Microphone::run, this, m_samples);
  lock.unlock();
  if (ended.joinable()) ended.join();
  return true;
}

void Microphone::stop() {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_stop = true;
  m_changed.notify_all();
  if (m_thread.get_id() != std::this_thread::get_id()) m_changed.wait(lock, [this] { return !m_running; });
}

bool Microphone::wait(std::chrono::milliseconds atMost) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, atMost, [this] { return !m_running; });
}

void Microphone::run(std::vector<short> samples) {
  auto due = std::chrono::steady_clock::now();
  std::vector<short> buffer;
  for (std::size_t at = 0; at < samples.size(); at += kBuffer) {
    {
      std::unique_lock<std::mutex> lock(m_mutex);
      if (m_pace == Pace::kRealTime) m_changed.wait_until(lock, due, [this] { return m_stop; });
      if (m_stop) break;
    }
    const std::size_t end = std::min(at + kBuffer, samples.size());
    buffer.assign(samples.begin() + static_cast<std::ptrdiff_t>(at),
                  samples.begin() + static_cast<std::ptrdiff_t>(end));
    buffer.resize(kBuffer);
    m_deliver(buffer);
    due += std::chrono::milliseconds(10);
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_running = false;
  m_changed.notify_all();
}

}  // namespace vorn_speaker
