#pragma once

#include <vorn_testing/Operations.h>

#include <array>
#include <atomic>
#include <ctime>
#include <exception>

#include "Ring.h"
#include "Values.h"

namespace vorn_capture {

/// One exported function, or a slot of the host that no adapter's function stands for.
struct Function {
  vorn_testing::Operation operation;
  std::array<ParameterName, 8> parameters;
  std::uint32_t index;
  const char* symbol = nullptr;              ///< Null for a slot.
  mutable std::atomic<void*> real{nullptr};  ///< Where the call goes, when that was found.
  std::atomic<bool>* fronted = nullptr;      ///< Whether the adapter's host was seen to be handed over.
};

/// Puts itself in the way of every exported function.
void wrap();

/// All of them, by their index.
const Function& functionAt(std::uint32_t index);

inline std::int64_t now() {
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec;
}

class Frame;

/// What a thread keeps: its ring, and the calls that it is inside.
struct Thread {
  explicit Thread(char* bytes, std::size_t size) : ring(bytes, size) {}

  Ring ring;
  Frame* innermost = nullptr;
  std::size_t owed = 0;  ///< Room in the ring for the ends of calls that began.
  bool writing = false;  ///< Whether a signal's handler must not write now.
  std::uint32_t number = 0;
  int id = 0;
  char name[16] = {};
  std::atomic<std::uint64_t> leftOut{0};
  std::atomic<bool> gone{false};
  Thread* next = nullptr;
  Pending pending;  ///< The writer's alone, as what follows.
  std::uint64_t told = 0;
};

/// What the capture does now.
struct State {
  std::atomic<bool> recording{false};
  std::atomic<bool> keepsSamples{false};
  std::atomic<std::uint64_t> calls{0};
  std::atomic<Thread*> threads{nullptr};
  std::atomic<std::uint32_t> threadCount{0};  ///< Of those that have called, gone ones too.
  std::atomic<std::uint32_t> wake{0};         ///< A futex on which the writer sleeps.
};
extern State state;

inline bool isRecording() { return state.recording.load(std::memory_order_relaxed); }

/// The calling thread's; null when there is no memory for it. Starts the writer at its first use.
Thread* thisThread();

/// Makes the thread that writes, once in a process; what it has to do then stands in the environment.
void startWriter();

/// Gives the memory of a thread back that is gone.
void dropThread(Thread* thread);

/// In a forked child: nothing was recorded so far.
void forgetThreads();

/// Wakes the writer before its time.
void wakeWriter();

/// Leaves a thread to others: what stands for the external player that a host answered.
struct PlayerFront {
  const void* table = nullptr;
  void* inner = nullptr;
  Frame* frame = nullptr;
};

/// One call on the stack of its thread, from its begin to its end.
class Frame {
 public:
  /// `atLibrary`: called by the library, inside the call that is open.
  Frame(const Function& function, bool atLibrary)
      : m_function(function), m_thread(thisThread()), m_time(now()) {
    if (!m_thread) return;
    m_outer = m_thread->innermost;
    m_thread->innermost = this;
    if (m_outer) m_inside = m_outer->m_inside + (atLibrary ? 0 : 1);
  }

  ~Frame() {
    if (!m_thread) return;
    m_thread->innermost = m_outer;
    if (m_kept) m_thread->owed -= kEndRoom;
  }

  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  const Function& function() const { return m_function; }
  std::int64_t time() const { return m_time; }

  /// Takes the place of the call that is open, which comes after it: the player is asked for before it is commanded.
  void changePlaces() { m_before = m_outer; }

  /// Tells of the begin. The values are those that the caller handed in.
  template <class... Values>
  void begin(const Values&... values) {
    if (!m_thread) return;
    m_begun = m_number = state.calls.fetch_add(1, std::memory_order_relaxed) + 1;
    if (m_before) std::swap(m_number, m_before->m_number);
    const std::size_t most = sizeof(Begin) + (std::size_t{0} + ... + room(values));
    Writing writing(*m_thread);
    char* const to = writing.reserve(most, kEndRoom);
    if (!to) return;
    const Begin begin = {{Kind::kBegin, 0}, m_begun,           m_time, m_function.index,
                         m_inside,          sizeof...(values), 0};
    std::memcpy(to, &begin, sizeof begin);
    Pen pen(to + sizeof begin);
    std::size_t i = 0;
    (putArgument(pen, values, m_function.parameters[i++], m_masking), ...);
    writing.commit(to, pen.at());
    m_thread->owed += kEndRoom;
    m_kept = true;
  }

  /// The other side is called.
  void arrive(std::int64_t time) {
    if (!m_arrived) m_arrived = time;
  }
  /// The other side has answered.
  void leave() {
    if (!m_left) m_left = now();
  }
  bool hasArrived() const { return m_arrived != 0; }
  void reach(Reached reached) { m_reached = reached; }

  /// What it asked for with a lock held: when it had it.
  void lock(std::int64_t time) {
    if (!m_locked) m_locked = time;
  }

  void returned() {
    end(nullptr, 0, [](Pen&, bool) { return false; });
  }

  template <class Value>
  void returned(const Value& value, std::size_t most) {
    end(nullptr, most, [&value](Pen& pen, bool secret) {
      putAnswer(pen, value, secret);
      return true;
    });
  }

  void threw(const char* words) {
    end(words, 0, [](Pen&, bool) { return false; });
  }

  /// What the call may write: told again at the end when it has changed by then.
  void watch(std::size_t parameter, const std::string& value) {
    m_watched[m_watchedCount++] = {parameter, &value, nullptr, fingerprint(value)};
  }
  void watch(std::size_t parameter, const std::int64_t& value) {
    m_watched[m_watchedCount++] = {parameter, nullptr, &value, fingerprint(value)};
  }

  PlayerFront& player() { return m_player; }

 private:
  /// Room for the shortest record of an end, wherever in the ring it comes to stand.
  static constexpr std::size_t kEndRoom = 2 * sizeof(End) + 64;

  /// Between reserve() and commit(), during which a signal's handler on this thread writes nothing.
  class Writing {
   public:
    explicit Writing(Thread& thread) : m_thread(thread), m_nested(thread.writing) { thread.writing = true; }
    ~Writing() { m_thread.writing = m_nested; }

    Writing(const Writing&) = delete;
    Writing& operator=(const Writing&) = delete;

    char* reserve(std::size_t most, std::size_t beside) {
      char* const to = m_nested ? nullptr : m_thread.ring.reserve(most, m_thread.owed + beside);
      if (!to) leaveOut();
      return to;
    }

    void leaveOut() {
      m_thread.leftOut.store(m_thread.leftOut.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }

    void commit(char* from, const char* to) {
      const auto size = static_cast<std::uint32_t>(to - from);
      std::memcpy(from + offsetof(Head, size), &size, sizeof size);
      m_thread.ring.commit(size);
      if (m_thread.ring.isHalfFull()) wakeWriter();
    }

   private:
    Thread& m_thread;
    const bool m_nested;
  };

  struct Watched {
    std::size_t parameter;
    const std::string* text;
    const std::int64_t* number;
    std::uint64_t before;

    bool hasChanged() const { return (text ? fingerprint(*text) : fingerprint(*number)) != before; }
  };

  template <class Put>
  void end(const char* exception, std::size_t most, Put put) noexcept {
    if (!m_kept) return;
    const std::int64_t time = now();
    most += sizeof(End);
    if (exception) most += sizeof(ValueHead) + padded(std::strlen(exception));
    for (std::size_t i = 0; i < m_watchedCount; ++i)
      most += 2 * (sizeof(ValueHead) + 8) + (m_watched[i].text ? padded(m_watched[i].text->size()) : 0);
    Writing writing(*m_thread);
    // The room that was kept for the shortest end is not for others.
    char* to = m_thread->ring.reserve(most, m_thread->owed - kEndRoom);
    const bool lost = !to;
    if (lost) {
      writing.leaveOut();
      to = m_thread->ring.reserve(sizeof(End), 0);
      if (!to) return;
    }
    End end = {{Kind::kEnd, 0},      m_begun, m_number, time, m_arrived, m_left, m_locked, 0, m_reached,
               exception != nullptr, false,   lost};
    Pen pen(to + sizeof end);
    if (!lost) {
      const bool secret = m_masking.answer;
      end.answers = put(pen, secret);
      if (exception) putAnswer(pen, std::string_view(exception), secret || m_masking.masked);
      for (std::size_t i = 0; i < m_watchedCount; ++i) {
        if (!m_watched[i].hasChanged()) continue;
        ++end.written;
        pen.put(static_cast<std::int64_t>(m_watched[i].parameter));
        if (m_watched[i].text)
          putAnswer(pen, *m_watched[i].text, secret);
        else
          putAnswer(pen, *m_watched[i].number, secret);
      }
    }
    std::memcpy(to, &end, sizeof end);
    writing.commit(to, pen.at());
  }

  const Function& m_function;
  Thread* const m_thread;
  const std::int64_t m_time;
  Frame* m_outer = nullptr;
  Frame* m_before = nullptr;
  std::uint32_t m_inside = 0;
  bool m_kept = false;
  Reached m_reached = Reached::kUnknown;
  std::uint64_t m_begun = 0;
  std::uint64_t m_number = 0;
  std::int64_t m_arrived = 0;
  std::int64_t m_left = 0;
  std::int64_t m_locked = 0;
  Masking m_masking;
  std::array<Watched, 3> m_watched;
  std::size_t m_watchedCount = 0;
  PlayerFront m_player;
};

/// Tells of audio that is handed up.
void tellSound(const std::vector<short>& samples);

}  // namespace vorn_capture
