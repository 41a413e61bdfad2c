#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

/// Threads that wait for the word to go, and then all do the same work.
class Team {
 public:
  template <class Work>
  Team(int size, Work work) : m_waiting(size) {
    for (int i = 0; i < size; ++i)
      m_threads.emplace_back([this, work] {
        await();
        work();
      });
  }

  /// Gives the word once everybody waits for it. Returns the seconds from there until the last one is through.
  double run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_news.wait(lock, [this] { return m_waiting == 0; });
    const auto begin = std::chrono::steady_clock::now();
    m_going = true;
    lock.unlock();
    m_news.notify_all();
    for (std::thread& thread : m_threads) thread.join();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  }

 private:
  void await() {
    std::unique_lock<std::mutex> lock(m_mutex);
    --m_waiting;
    m_news.notify_all();
    m_news.wait(lock, [this] { return m_going; });
  }

  std::mutex m_mutex;
  std::condition_variable m_news;
  int m_waiting;
  bool m_going = false;
  std::vector<std::thread> m_threads;
};
