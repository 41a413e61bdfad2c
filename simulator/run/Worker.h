#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <queue>
#include <string>
#include <thread>

namespace vorn_speaker {

/// A named thread that does what it is told, one thing after the other.
class Worker {
 public:
  /// With a `limit` above 0, a task that takes longer ends the process: see giveUp().
  Worker(const char* name, std::chrono::seconds limit);

  /// Finishes what it was told.
  ~Worker();

  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Does `task` on the thread and waits for it; exceptions pass to the caller.
  std::string run(std::function<std::string()> task);

 private:
  void work();

  const std::string m_name;
  const std::chrono::seconds m_limit;
  std::mutex m_mutex;
  std::condition_variable m_wake;
  std::queue<std::packaged_task<std::string()>> m_tasks;
  bool m_stop = false;
  std::thread m_thread;
};

}  // namespace vorn_speaker
