#include <condition_variable>
#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

#include "../timing.h"
#include "alternatives.h"

using VornDeviceAbstractionLayer::VornDALImplIF;

namespace {

/// A thread that makes the host's calls, and the queue before it.
class Worker {
 public:
  explicit Worker(VornDALImplIF& host) : m_host(host), m_thread([this] { run(); }) {}

  ~Worker() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_ended = true;
    }
    m_news.notify_one();
    m_thread.join();
  }

  bool ask() {
    std::packaged_task<bool()> task([this] { return m_host.isMicrophoneAvailable(); });
    std::future<bool> answer = task.get_future();
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_queue.push_back(std::move(task));
    }
    m_news.notify_one();
    return answer.get();
  }

 private:
  void run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
      m_news.wait(lock, [this] { return m_ended || !m_queue.empty(); });
      if (m_queue.empty()) return;
      std::packaged_task<bool()> task = std::move(m_queue.front());
      m_queue.pop_front();
      lock.unlock();
      task();
      lock.lock();
    }
  }

  VornDALImplIF& m_host;
  std::mutex m_mutex;
  std::condition_variable m_news;
  std::deque<std::packaged_task<bool()>> m_queue;
  bool m_ended = false;
  std::thread m_thread;
};

}  // namespace

void timeWorker(VornDALImplIF& host) {
  const auto worker = std::make_shared<Worker>(host);
  timed("alternative/queue to a worker thread", [worker] {
    benchmark::DoNotOptimize(worker->ask());
  })->UseRealTime();
}
