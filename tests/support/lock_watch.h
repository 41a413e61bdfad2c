#pragma once

#include <chrono>
#include <cstddef>
#include <future>
#include <mutex>
#include <thread>

/// What the library asks of the system: the program that links lock_watch.cpp stands between the two.
namespace lock_watch {

/// What the calling thread has done since it began.
struct Counts {
  std::size_t allocations;
  std::size_t locks;
  std::size_t clockReads;
  std::size_t writes;
};

inline Counts operator-(Counts late, Counts early) {
  return {late.allocations - early.allocations, late.locks - early.locks, late.clockReads - early.clockReads,
          late.writes - early.writes};
}

inline bool operator==(Counts a, Counts b) {
  return a.allocations == b.allocations && a.locks == b.locks && a.clockReads == b.clockReads &&
         a.writes == b.writes;
}

Counts counts();

/// The calling thread's `nth` allocation from now on fails, once; 0 lets all succeed.
void failAllocation(std::size_t nth);

/// A mutex of the library, by its mangled name.
std::mutex& mutex(const char* symbol);

/// Whether some thread holds it. Not for one that the calling thread holds.
bool held(std::mutex& mutex);

/// From now on counts the threads that stand in lock() of this mutex.
void watch(std::mutex& mutex);
int waiting();

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

}  // namespace lock_watch
