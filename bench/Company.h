#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

/// A second thread that sleeps through the run: without one the standard library skips its atomics, and paths with
/// locks and counts look twice as fast as they are in firmware.
class Company {
 public:
  Company()
      : m_thread([this] {
          std::unique_lock<std::mutex> lock(m_mutex);
          m_end.wait(lock, [this] { return m_ended; });
        }) {}

  ~Company() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_ended = true;
    }
    m_end.notify_one();
    m_thread.join();
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_end;
  bool m_ended = false;
  std::thread m_thread;
};
