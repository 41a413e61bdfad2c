#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

/// Stands between the library and what can fail: a program that links faults.cpp has its allocations, files
/// and mutexes fail on demand. Counts and failures are those of the calling thread, while armed.
namespace faults {

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

/// Allocations of the whole process that have not been freed.
long living();

}  // namespace faults
