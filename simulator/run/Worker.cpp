#include "Worker.h"

#include <utility>

#include "Postmortem.h"
#include "calls/Crossings.h"

namespace vorn_speaker {

Worker::Worker(const char* name, std::chrono::seconds limit)
    : m_name(name), m_limit(limit), m_thread([this] { work(); }) {}

Worker::~Worker() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stop = true;
  }
  m_wake.notify_one();
  m_thread.join();
}

std::string Worker::run(std::function<std::string()> task) {
  std::packaged_task<std::string()> packaged(std::move(task));
  std::future<std::string> result = packaged.get_future();
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_tasks.push(std::move(packaged));
  }
  m_wake.notify_one();
  if (m_limit.count() > 0 && result.wait_for(m_limit) == std::future_status::timeout) {
    giveUp("No answer on the thread " + m_name + " within " + std::to_string(m_limit.count()) + " s.");
  }
  return result.get();
}

void Worker::work() {
  const SignalStack stack;
  nameThread(m_name.c_str());
  std::unique_lock<std::mutex> lock(m_mutex);
  for (;;) {
    m_wake.wait(lock, [this] { return m_stop || !m_tasks.empty(); });
    if (m_tasks.empty()) return;
    std::packaged_task<std::string()> task = std::move(m_tasks.front());
    m_tasks.pop();
    lock.unlock();
    task();
    lock.lock();
  }
}

}  // namespace vorn_speaker
