#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

/// Stands between the library and the system: a program that links interposed.cpp has its allocations, files and
/// mutexes counted, watched, and failing on demand. All of it is of the calling thread, unless told otherwise.
namespace interposed {

// What a thread has done since it began.

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

/// From now on counts the threads that stand in lock() of this mutex.
void watch(std::mutex& mutex);
int waiting();

// Memory.

/// The `nth` allocation from now on fails, once; 0 lets all succeed.
void failAllocation(std::size_t nth);

/// Allocations of the whole process that have not been freed.
long living();

/// Watches the blocks that this thread allocates from now on, while it lives. One at a time.
class Blocks {
 public:
  Blocks();
  ~Blocks();
  Blocks(const Blocks&) = delete;
  Blocks& operator=(const Blocks&) = delete;

  /// How many are not freed yet, counting those of at least `size` bytes.
  std::size_t live(std::size_t size = 0) const;

  /// The size of the block that begins at this address; 0 when none does.
  std::size_t at(const void* address) const;
};

// Points at which something can fail; counted while armed. Not under the thread sanitizer, which takes the mutex
// functions for itself.

enum Kind { kAllocation, kOpen, kWrite, kClose, kLock, kCall, kKinds };
constexpr const char* kNames[kKinds] = {"allocation", "open", "write", "close", "lock", "call"};

/// From now on counts points; the `failing`th fails (none for 0), and with `lasting` all after it.
void arm(std::size_t failing = 0, bool lasting = false);

/// Ends that.
void disarm();

/// A point of the test's own: whether it shall fail.
bool point(Kind kind);

/// Since arm(): how many points there were, and which failed, in order.
std::size_t points(Kind kind);
std::size_t points();
std::vector<Kind> failed();

/// Mutexes that the calling thread holds.
int held();

/// How often the calling thread asked for the mutex since arm().
std::size_t asked(void* mutex);

/// The mutex asked for first, or null.
void* firstAsked();

/// Whether another thread gets every mutex that was asked for since arm(). Blocks on none.
bool othersGetThem();

}  // namespace interposed
