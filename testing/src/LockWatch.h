#pragma once

#include <string>

#include "Stack.h"

namespace vorn_testing {

/// Stands between the library and its own mutexes, from the first watchLocks() until the process ends.
///
/// `onReentry` is called before a thread would wait for a mutex that it holds: with the mutex's name, such as
/// "VornDeviceInfo::m_mutex", and the stack that took it. The lock then fails instead of waiting. Without one,
/// or while it is empty, locks are left alone.
using OnReentry = void (*)(const std::string& mutex, const Stack& holder);
void watchLocks(OnReentry onReentry);

}  // namespace vorn_testing
