#pragma once

#include <vorn_testing/Operations.h>
#include <vorn_testing/Recorder.h>

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "language/Operations.h"
#include "text/Secrets.h"

namespace vorn_speaker {

using vorn_testing::Direction;
using vorn_testing::Guard;

/// Calls deeper inside each other than this are not indented further.
constexpr int kDeepest = 40;

/// Names the calling thread, for people: "assistant", "firmware", "microphone".
void nameThread(const char* name);
const char* threadName();

/// One call that crosses the library, with its secrets masked.
struct Crossing {
  unsigned long number;  ///< In the order in which calls began, from 1.
  Direction direction;   ///< Down to the firmware, up to the assistant side; others stand in captures only.
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
  bool secret;            ///< Whether the answer, or the exception's text, was masked.
  bool masked;            ///< Whether an argument was.
  std::size_t samples;    ///< Of sound, when it goes up to the assistant side.
  int threadNumber;       ///< In the order in which threads were first seen, from 1; 0 when not known.
  std::string thread;     ///< Its name.
  std::chrono::microseconds began;  ///< Since the log was made.
  std::chrono::microseconds took;
  std::optional<std::chrono::microseconds> waited;  ///< For the adapter's lock, where that is known.
  std::optional<std::chrono::microseconds> host;    ///< What the other side took, where that is known.
  std::optional<bool> reached;  ///< Whether it got to the other side, where that is known.
  int depth;                    ///< How many calls of the same thread it runs inside.

  /// Unmasked, to compare with; never to be shown.
  struct Clear {
    std::vector<std::string> spelled;
    std::string answer;
    std::string exception;
  } clear;

  std::string fullName() const { return adapter + "." + operation; }
  /// The operation as statements name it, which may arrive under a name of the interface.
  std::string asked() const {
    const Operation* const known = operationAt(target, slot);
    return known ? known->fullName() : fullName();
  }
  bool isDown() const { return direction == Direction::kDown; }
  std::string signature() const;

  /// The call as a statement would make it: "VornDeviceInfo.setSystemSetting mode on".
  std::string statement() const;

  /// The result, and what was written: "true value=on".
  std::string answer() const;

  /// The same in words: "no result", "threw why".
  std::string outcome() const;
};

/// The innermost call that the calling thread is inside, or null.
const Crossing* openCall();

/// Masks the secrets of calls, and knows them again. May be used from any thread.
class Masker {
 public:
  /// What the arguments hold; before maskAnswer().
  void maskArguments(Crossing& crossing);

  /// What the call answered and wrote, and the exception's text.
  void maskAnswer(Crossing& crossing);

  /// Both.
  void mask(Crossing& crossing) {
    maskArguments(crossing);
    maskAnswer(crossing);
  }

  /// Whether a text holds what was a secret in a call before.
  bool isKnown(const std::string& text) const { return m_known.in(text); }

  /// Whether a text names a secret, or holds a known one.
  bool isSecret(const std::string& text) const { return isSecretText(text) || isKnown(text); }

 private:
  KnownSecrets m_known;
};

/// What a thread asks of an adapter under its lock.
struct Asked {
  std::string operation;                            ///< "VornDeviceInfo.getVolume"
  std::string thread;                               ///< Its name.
  std::chrono::microseconds began;                  ///< Since the log was made.
  std::optional<std::chrono::microseconds> waited;  ///< Until its first call arrived; empty before.
};

/// Turns what the kit's doubles record into crossings and tells its listeners of each, one at a time.
class Crossings {
 public:
  /// While it lives, its thread asks an adapter for an operation. The doubles see a call when the lock is held already: only
  /// so is known how long it was waited for.
  class Asking {
   public:
    Asking(Crossings& crossings, const std::string& operation);
    ~Asking();
    Asking(const Asking&) = delete;
    Asking& operator=(const Asking&) = delete;

   private:
    Crossings& m_crossings;
    std::list<Asked>::iterator m_asked;
  };

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

  /// Runs for every call that began, on its thread and without a lock: it may wait, or throw in the callee's place.
  /// Before the first call.
  void disturb(std::function<void(const Crossing&)> disturbance) { m_disturbance = std::move(disturbance); }

  /// Who has asked for a lock and waits still.
  std::vector<Asked> waiting() const;

  /// Since it was made.
  std::chrono::microseconds now() const;

  bool isKnown(const std::string& text) const { return !m_secrets && m_masker.isKnown(text); }
  bool isSecret(const std::string& text) const { return !m_secrets && m_masker.isSecret(text); }

 private:
  void began(const vorn_testing::Call& call);
  void ended(const vorn_testing::Call& call);
  Crossing describe(const vorn_testing::Call& call);
  static void arrived(Crossing& crossing, std::chrono::microseconds now);

  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
  const bool m_secrets;
  const std::chrono::steady_clock::time_point m_start;
  std::vector<Listener*> m_listeners;
  std::function<void(const Crossing&)> m_disturbance;
  Masker m_masker;
  mutable std::mutex m_mutex;
  std::list<Asked> m_asked;
  unsigned long m_calls = 0;
};

}  // namespace vorn_speaker
