#pragma once

#include <chrono>
#include <string>

#include <vorn_testing/Stack.h>

namespace vorn_testing {

/// A wait that does not end, or not soon.
struct Wait {
  enum Kind {
    kItself,   ///< For the thread that waits.
    kOthers,   ///< For threads that wait for it, or for nothing that can still come.
    kPatience  ///< For longer than the patience; what the holder does may still end.
  };
  Kind kind;
  std::string message;  ///< Who asks for what, and who holds it.
  Stack here;           ///< Where it asks.
  Stack before;         ///< Where its own thread took the mutex, or where the thread is that it waits for.
};

/// Stands between every module of the process and pthread_mutex_lock(), until it is undone.
///
/// `onWait` runs on the thread that would wait. One circle of waits is told by one of its threads, at once; the lock
/// then fails with EDEADLK instead of waiting: that of a library's mutex, if one is among them. After `patience`, a
/// wait of which no circle is seen is told once, if it is for a mutex of the library or from inside an operation;
/// it fails likewise when no thread of the process can go on without another, and goes on otherwise. Mutexes of one
/// thread that are recursive or check errors themselves are none of these.
///
/// Returns why the library's locks are not watched; empty when they are.
using OnWait = void (*)(const Wait& wait);
std::string watchLocks(OnWait onWait, std::chrono::milliseconds patience);

/// Puts back what watchLocks() changed.
void leaveLocks();

}  // namespace vorn_testing
