#pragma once

#include <memory>
#include <string>

namespace vorn_speaker {

/// How the process ends when a host crashes, ends it, or does not return.
constexpr int kHostFailed = 3;

/// From now on a crash ends the process with kHostFailed, after telling the operation and every thread's stack.
void tellCrashes();

/// Ends the process with kHostFailed, after telling `what` and every thread's operation and stack.
[[noreturn]] void giveUp(const std::string& what);

/// A stack for the signals of the calling thread while it lives: a thread that used up its own can still tell of it.
class SignalStack {
 public:
  SignalStack();
  ~SignalStack();

  SignalStack(const SignalStack&) = delete;
  SignalStack& operator=(const SignalStack&) = delete;

 private:
  const std::unique_ptr<char[]> m_stack;
};

/// From now on Ctrl-C, a hang-up and a request to end leave time to keep what there is; a second one ends at once.
void endGently();

/// The signal that asked to end, or 0.
int endRequested();

}  // namespace vorn_speaker
