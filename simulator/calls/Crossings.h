#pragma once

#include <vorn_testing/Recorder.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace vorn_speaker {

/// Names the calling thread, for people: "assistant", "firmware", "microphone".
void nameThread(const char* name);
const char* threadName();

/// One call that crosses the library, with its secrets masked.
struct Crossing {
  unsigned long number;  ///< In the order in which calls began, from 1.
  bool down;             ///< From the assistant client to the firmware.
  std::string adapter;
  std::string operation;
  std::string target;  ///< The interface on which it arrived, and its place there.
  int slot;
  std::vector<std::string> arguments;  ///< As the kit renders them.
  std::vector<std::string> spelled;    ///< As a scenario holds them.
  std::vector<std::string> written;    ///< What the callee wrote through references, "value=on".
  std::string result;
  bool threw;
  std::string exception;  ///< Its text.
  std::string thread;
  std::chrono::microseconds began;  ///< Since the log was made.
  std::chrono::microseconds took;
  int depth;  ///< How many calls of the same thread it runs inside.

  std::string fullName() const { return adapter + "." + operation; }
  std::string signature() const;

  /// The result, and what was written: "true value=on".
  std::string answer() const;
};

/// The innermost call that the calling thread is inside, or null.
const Crossing* openCall();

/// Turns what the kit's doubles record into crossings and tells its listeners of each, one at a time.
class Crossings {
 public:
  struct Listener {
    virtual ~Listener() = default;
    virtual void began(const Crossing& crossing) = 0;
    virtual void ended(const Crossing& crossing) = 0;
  };

  /// Listens to `recorder` until destroyed. With `secrets` nothing is masked.
  Crossings(std::shared_ptr<vorn_testing::Recorder> recorder, bool secrets);
  ~Crossings();

  Crossings(const Crossings&) = delete;
  Crossings& operator=(const Crossings&) = delete;

  /// Borrowed; before the first call.
  void tell(Listener& listener) { m_listeners.push_back(&listener); }

 private:
  void began(const vorn_testing::Call& call);
  void ended(const vorn_testing::Call& call);
  Crossing describe(const vorn_testing::Call& call) const;

  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
  const bool m_secrets;
  const std::chrono::steady_clock::time_point m_start;
  std::vector<Listener*> m_listeners;
  std::mutex m_mutex;
  unsigned long m_calls = 0;
};

}  // namespace vorn_speaker
