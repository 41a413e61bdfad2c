#pragma once

#include <string>

namespace vorn_speaker {

/// How the process ends when a host crashes or does not return.
constexpr int kHostFailed = 3;

/// From now on a crash ends the process with kHostFailed, after telling the operation and every thread's stack.
void tellCrashes();

/// Ends the process with kHostFailed, after telling `what` and every thread's operation and stack.
[[noreturn]] void giveUp(const std::string& what);

}  // namespace vorn_speaker
