#pragma once

#include <sys/types.h>

#include <vector>

#include <vorn_testing/Stack.h>

namespace vorn_testing {

/// The threads of this process, seen from one of them.
pid_t thisThread();
std::vector<pid_t> threads();

/// Whether a thread sleeps until another one wakes it, however long that takes. False if the system does not tell.
bool sleepsWithoutBound(pid_t thread);

/// Where a thread is: it is interrupted by SIGURG, which it otherwise does not see, and tells. Empty when it blocks
/// the signal.
Stack stackOf(pid_t thread);

}  // namespace vorn_testing
