#pragma once

#include <string>

#include "Stack.h"

namespace vorn_testing {

/// A wait that would not end.
struct Wait {
  std::string mutex;  ///< What the thread asks for, such as "VornDeviceInfo::m_mutex".
  std::string other;  ///< What the thread that holds it waits for; empty when that is the same thread.
  Stack here;         ///< Where it asks.
  Stack before;       ///< Where its own thread took the mutex, or where the other thread waits.
};

/// Stands between the library and its own mutexes, from the first watchLocks() until the process ends.
///
/// `onWait` is called before a thread would wait for itself, alone or through others that wait for mutexes of the
/// library; and after half a second of waiting for a thread that waits for such a mutex as long: the rest of that
/// circle is out of sight, but the two directions of messages do not meet so otherwise. The lock then fails instead
/// of waiting. Without one, or while it is empty, locks are left alone.
using OnWait = void (*)(const Wait& wait);
void watchLocks(OnWait onWait);

}  // namespace vorn_testing
