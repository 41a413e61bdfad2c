#pragma once

#include <chrono>
#include <future>
#include <mutex>
#include <thread>

/// A time that no healthy run needs.
constexpr std::chrono::seconds kBound(60);

/// Waits until `condition()` holds. False when it does not within the bound.
template <class Condition>
bool eventually(Condition condition) {
  const auto bound = std::chrono::steady_clock::now() + kBound;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > bound) return false;
    std::this_thread::yield();
  }
  return true;
}

/// Whether `action`, on a thread of its own, ends although the mutex is taken.
template <class Action>
bool passes(std::mutex& taken, Action action) {
  std::unique_lock<std::mutex> lock(taken);
  auto running = std::async(std::launch::async, action);
  const bool ended = running.wait_for(kBound) == std::future_status::ready;
  lock.unlock();
  running.get();
  return ended;
}
