// What the host sends upward, and an assistant side that asks back from inside, as clients do.

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "../Checks.h"
#include "../told/Kept.h"
#include "Load.h"
#include "vorn_testing/FakeAssistant.h"

namespace vorn_testing::checks {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::vector<Round> ordinaryRounds() {
  std::vector<Round> all;
  for (const Operation& operation : operations()) {
    for (const Given given : {Given::kWord, Given::kPlain}) {
      for (int which = 0; which < operation.samples(given); ++which)
        all.push_back({&operation, operation.prepare(given, which)});
    }
  }
  return all;
}

/// Whether this thread is in a locked operation, or in the assistant side already.
thread_local bool t_underMutex = false, t_asksBack = false;

/// What the assistant side does not ask from inside a locked operation: who sends news there knows that it does not ask
/// the adapter back. Nor does it begin anew, which is when a host fetches its adapters.
bool takesMutex(const Operation& operation) {
  return operation.locked || operation.name == "notifyMainAppInitialized";
}

/// Asks every operation from inside, the first times that something is told.
void askedBack(Trial& trial) {
  constexpr int kTimes = 2;
  const FakeAssistant assistant;
  assistant.recorder->keepCalls(false);
  createAdapters(trial.host());
  const auto all = ordinaryRounds(), inside = ordinaryRounds();
  Kept kept;
  std::mutex mutex;
  std::map<std::string, int> times;
  std::atomic<int> asking{0};
  std::atomic<bool> over{false};
  assistant.recorder->onCall([&](const Call& told) {
    if (t_asksBack || told.operation == "sendAudioData") return;
    ++asking;
    const AtEnd asked([&] { --asking; });
    if (over) return;
    {
      const std::lock_guard<std::mutex> lock(mutex);
      if (++times[told.operation + (t_underMutex ? " locked" : "")] > kTimes) return;
    }
    t_asksBack = true;
    const AtEnd end([] { t_asksBack = false; });
    kept.run([&] {
      for (const Round& round : inside) {
        if (!takesMutex(*round.operation) || !t_underMutex) make(trial, round);
      }
    });
  });
  trial.explain("with an assistant side that asks every operation from inside what it is told");
  for (const Round& round : all) {
    t_underMutex = round.operation->locked;
    make(trial, round);
  }
  t_underMutex = false;
  std::this_thread::sleep_for(milliseconds(200));  // the host's own threads tell when they come to it
  // What it tells while it ends is heard, and no more asked: no call may run when a host is destroyed.
  over = true;
  while (asking > 0) std::this_thread::sleep_for(milliseconds(2));
  trial.destroy();
  assistant.recorder->onCall(nullptr);
  kept.mustBeNone();
  trial.saw(std::to_string(times.size()) + " kinds of news");
}

/// Whether this thread is inside startStreamingAudioData().
thread_local bool t_starting = false;

/// The buffers that come, and from which thread.
class Buffers {
 public:
  void note() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_count;
    m_ofCaller |= t_starting;
    const long thread = syscall(SYS_gettid);  // the library's name for one goes to the next
    if (m_threads.empty() || m_threads.back() != thread) m_threads.push_back(thread);
  }
  long count() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_count;
  }
  void begin() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_threads.clear();
  }
  /// Whether one came from the thread that asked for them.
  bool ofCaller() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_ofCaller;
  }
  /// Whether a thread came, another one, and the first again.
  bool mixed() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (std::size_t i = 2; i < m_threads.size(); ++i) {
      if (std::find(m_threads.begin(), m_threads.begin() + static_cast<long>(i) - 1, m_threads[i]) !=
          m_threads.begin() + static_cast<long>(i) - 1)
        return true;
    }
    return false;
  }
  std::size_t threads() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::set<long>(m_threads.begin(), m_threads.end()).size();
  }
  /// Waits for that many more.
  bool come(long more, milliseconds atMost) const { return reach(count() + more, atMost); }
  bool reach(long enough, milliseconds atMost) const {
    const auto end = Clock::now() + atMost;
    // The host's threads are not to be woken, slowed or kept apart by a lock of ours.
    while (count() < enough && Clock::now() < end) std::this_thread::sleep_for(milliseconds(2));
    return count() >= enough;
  }
  /// Waits until none came for a while.
  bool end(milliseconds atMost) const {
    constexpr milliseconds kStill(300);
    const auto last = Clock::now() + atMost;
    while (Clock::now() < last) {
      if (!come(1, kStill)) return true;
    }
    return false;
  }

 private:
  mutable std::mutex m_mutex;
  long m_count = 0;
  bool m_ofCaller = false;
  std::vector<long> m_threads;
};

constexpr milliseconds kSoon(1000), kLate(8000);
constexpr milliseconds kOnItsWay(300);  // what was recorded before the stop
constexpr long kMany = 30;
constexpr long kOfTheOld = 3;  // buffers that may have been on their way

/// A host that was told to push sound, and an assistant side that hears it.
struct Listening {
  explicit Listening(Trial& of) : trial(of) {
    assistant.recorder->keepCalls(false);
    createAdapters(trial.host());
    assistant.recorder->onCall([this](const Call& told) {
      if (told.operation != "sendAudioData") return;
      buffers.note();
      if (inside) kept.run(inside);
    });
  }
  ~Listening() { assistant.recorder->onCall(nullptr); }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;

  bool start() const {
    bool started = false;
    Host& host = trial.host();
    trial.ask("startStreamingAudioData()", [&] {
      t_starting = true;
      const AtEnd atEnd([] { t_starting = false; });
      started = host.startStreamingAudioData();
    });
    return started;
  }
  void stop() const {
    Host& host = trial.host();
    trial.ask("stopStreamingAudioData()", [&] { host.stopStreamingAudioData(); });
  }
  /// Leaves without a word where no sound comes at all: a device may have nothing to say.
  void presumeSound() const {
    if (!start()) trial.refused("startStreamingAudioData() answered false");
    if (!buffers.reach(3, kSoon)) trial.notAsked("no sound was pushed within a second");
  }

  Trial& trial;
  FakeAssistant assistant;
  Buffers buffers;
  Kept kept;
  std::function<void()> inside;
};

void stopsFromInside(Trial& trial) {
  Listening listening(trial);
  std::atomic<int> turn{0}, done{0};
  listening.inside = [&] {
    if (turn++ != 3) return;
    listening.stop();
    done = 1;
  };
  trial.explain("from inside sendAudioData(), on the thread that pushes sound");
  listening.presumeSound();
  const auto end = Clock::now() + trial.demands.bound;
  while (!done && turn <= 3 && Clock::now() < end) std::this_thread::sleep_for(milliseconds(2));
  while (turn > 3 && !done && Clock::now() < end) {
    std::this_thread::sleep_for(milliseconds(2));
    listening.kept.mustBeNone();
  }
  trial.explain("after it was stopped from inside sendAudioData()");
  trial.destroy();
  listening.kept.mustBeNone();
}

void stopsPushing(Trial& trial) {
  const Listening listening(trial);
  listening.presumeSound();
  listening.start();  // one stop ends what was started twice
  listening.stop();
  std::this_thread::sleep_for(kOnItsWay);
  const long before = listening.buffers.count();
  if (!listening.buffers.end(kLate))
    trial.broken("stopStreamingAudioData() returned, and sound was pushed for " +
                 std::to_string(kLate.count() / 1000) + " s more");
  const long more = listening.buffers.count() - before;
  if (more > kMany)
    trial.broken("stopStreamingAudioData() returned, and " + std::to_string(more) +
                 " buffers were pushed later than " + std::to_string(kOnItsWay.count()) + " ms after that");
}

/// What was asked last holds, however soon it came.
void stopsAtOnce(Trial& trial) {
  Listening listening(trial);
  listening.presumeSound();
  for (int turn = 0; turn < 4; ++turn) {
    listening.stop();
    if (!listening.start()) trial.refused("startStreamingAudioData() answered false");
    if (!listening.buffers.come(kOfTheOld, kLate))
      trial.broken(
          "startStreamingAudioData() answered true right after stopStreamingAudioData(), and no sound came for " +
          std::to_string(kLate.count() / 1000) + " s");
  }
  listening.buffers.begin();
  listening.buffers.come(60, kSoon);
  if (listening.buffers.mixed())
    trial.broken(
        "startStreamingAudioData() came right after stopStreamingAudioData(), and two threads push sound by turns");
  listening.stop();
  listening.buffers.end(kLate);
  for (int turn = 0; turn < 4; ++turn) {
    listening.start();
    listening.stop();
    if (!listening.buffers.end(kLate))
      trial.broken(
          "stopStreamingAudioData() came right after startStreamingAudioData(), and sound was pushed for " +
          std::to_string(kLate.count() / 1000) + " s");
  }
}

void nextHostPushes(Trial& trial) {
  const Listening listening(trial);
  listening.presumeSound();
  listening.stop();
  listening.buffers.end(kLate);
  shutDownAdapters();
  trial.destroy();
  trial.explain("by the next host, after one was destroyed");
  createAdapters(trial.host());
  if (!listening.start()) trial.refused("startStreamingAudioData() answered false");
  if (!listening.buffers.come(1, kLate))
    trial.broken("startStreamingAudioData() answered true, and no sound came for " +
                 std::to_string(kLate.count() / 1000) +
                 " s; it came from the host before, which was destroyed");
}

void startsAgain(Trial& trial) {
  const Listening listening(trial);
  listening.presumeSound();
  for (int turn = 0; turn < 2; ++turn) {
    listening.stop();
    listening.buffers.end(kLate);
    if (!listening.start()) trial.refused("startStreamingAudioData() answered false");
    if (!listening.buffers.come(1, kLate))
      trial.broken(
          "startStreamingAudioData() answered true after stopStreamingAudioData(), and no sound came for " +
          std::to_string(kLate.count() / 1000) + " s");
  }
}

void unaskedIsSilent(Trial& trial) {
  const Listening listening(trial);
  if (listening.buffers.reach(3, kSoon))
    trial.broken("sound is pushed, and startStreamingAudioData() was not called");
  for (const Operation& operation : operations()) {
    if (operation.name == "startStreamingAudioData") continue;
    for (int which = 0; which < operation.samples(Given::kPlain); ++which) {
      const Prepared made = operation.prepare(Given::kPlain, which);
      tryCall(trial, operation, made);
      if (listening.buffers.reach(1, milliseconds(30)))
        trial.broken("sound is pushed after " + made.shown +
                     ", and startStreamingAudioData() was not called");
    }
  }
}

void goesOn(Trial& trial) {
  constexpr long kEnough = 100;
  const Listening listening(trial);
  listening.presumeSound();
  const auto end = Clock::now() + milliseconds(1500);
  while (listening.buffers.count() < kEnough && Clock::now() < end) {
    if (!listening.buffers.come(1, kLate))
      trial.broken(std::to_string(listening.buffers.count()) + " buffers of sound came, and no more for " +
                   std::to_string(kLate.count() / 1000) + " s: stopStreamingAudioData() was not called");
  }
}

/// Power and keys may be how a user asks for silence.
bool mayEndSound(const Operation& operation) {
  for (const char* const name :
       {"startStreamingAudioData", "stopStreamingAudioData", "onSetPowerState", "onSendKeystroke"}) {
    if (operation.name == name) return true;
  }
  return false;
}

/// Each operation once, then each with its next arguments: what one of them ended another could begin again.
void goesOnWhateverIsAsked(Trial& trial) {
  const Listening listening(trial);
  listening.presumeSound();
  const auto goesOn = [&] { return listening.buffers.come(kOfTheOld + 1, kSoon); };
  const auto begins = [&] {
    listening.stop();
    return listening.start() && goesOn();
  };
  const auto goesOnAnew = [&](milliseconds after) {
    if (!begins()) return false;
    std::this_thread::sleep_for(after);
    return goesOn();
  };
  if (!goesOnAnew(milliseconds(500))) trial.notAsked("sound ends by itself");
  for (int which = 0;; ++which) {
    std::vector<const Operation*> all;
    for (const Operation& operation : operations()) {
      if (which < operation.samples(Given::kPlain) && !mayEndSound(operation)) all.push_back(&operation);
    }
    if (all.empty()) return;
    for (const Operation* const operation : all)
      tryCall(trial, *operation, operation->prepare(Given::kPlain, which));
    if (goesOn()) continue;
    for (const Operation* const operation : all) {
      if (!begins()) break;
      const Prepared made = operation->prepare(Given::kPlain, which);
      const auto before = Clock::now();
      tryCall(trial, *operation, made);
      const auto took = std::chrono::duration_cast<milliseconds>(Clock::now() - before);
      if (!listening.buffers.come(kOfTheOld + 1, kLate) && goesOnAnew(took))
        trial.broken("sound ended after " + made.shown + ", and stopStreamingAudioData() was not called");
    }
    if (!begins()) return;  // it ends by itself, or none of them ends it alone
  }
}

void endsWithItsHost(Trial& trial) {
  const Listening listening(trial);
  listening.presumeSound();
  shutDownAdapters();
  trial.destroy();
  createAdapters(trial.host());
  const long before = listening.buffers.count();
  if (listening.buffers.reach(before + 3, kSoon))
    trial.broken("sound is pushed after the host that was asked for it was destroyed");
}

void refusedIsSilent(Trial& trial) {
  const Listening listening(trial);
  if (listening.start()) trial.notAsked("startStreamingAudioData() answers true");
  if (listening.buffers.reach(3, kSoon))
    trial.broken("startStreamingAudioData() answered false, and sound is pushed");
}

void pushesFromOneThread(Trial& trial) {
  constexpr std::size_t kTakenOver = 4;  // a start may begin with a new one
  Listening listening(trial);
  listening.presumeSound();
  listening.start();
  listening.start();
  listening.buffers.begin();
  listening.buffers.come(60, kSoon);
  if (listening.buffers.mixed())
    trial.broken("startStreamingAudioData() was called again, and two threads push sound by turns");
  if (listening.buffers.ofCaller())
    trial.broken("startStreamingAudioData() pushes sound itself, on the thread that calls it");
  if (listening.buffers.threads() > kTakenOver)
    trial.broken("startStreamingAudioData() pushes sound from one thread after the other: " +
                 std::to_string(listening.buffers.threads()) + " in a second");
}

}  // namespace

void addUpwardChecks(Checks& checks) {
  checks.push_back(checkOfHost(
      "asked-back", "The assistant side may ask from inside what it is told.",
      "Let go of your own mutex before you notify, or notify from a thread that holds nothing.", askedBack));
  constexpr int kStart = 8, kStop = 9;
  const auto add = [&](int slot, const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), name, rule, remedy, run));
  };
  add(kStart, "one-thread", "Sound is pushed from one thread, however often it is started.",
      "Push from one thread; answer true at once when sound is on its way.", pushesFromOneThread);
  add(kStart, "unasked", "No sound is pushed before it is asked for.", "Push from the start to the stop.",
      unaskedIsSilent);
  add(kStart, "refused", "No sound is pushed when it answers false.", "Answer true when sound is on its way.",
      refusedIsSilent);
  add(kStart, "goes-on", "Sound is pushed until it is stopped.",
      "Push until the stop, silence where there is no other sound.", goesOn);
  add(kStart, "meanwhile", "Sound is pushed until it is stopped, whatever else is asked.",
      "Let nothing but the stop end what the start began.", goesOnWhateverIsAsked);
  add(kStart, "host-gone", "Sound ends with the host that pushes it.",
      "Stop and join the thread in the destructor, also when nobody has stopped it.", endsWithItsHost);
  add(kStart, "anew", "Sound is pushed again when it is started after a stop.",
      "Begin anew with each start that you answer true to.", startsAgain);
  add(kStart, "next-host", "Sound is pushed by the next host of a process as by the first.",
      "Tie nothing that a host needs to the first of them: no static thread, no flag of once.",
      nextHostPushes);
  add(kStop, "at-once", "What was asked last holds: sound or none.",
      "Let both change one value that one thread looks at, not one each.", stopsAtOnce);
  add(kStop, "from-inside", "It may come on the thread that pushes sound.",
      "Tell the thread to stop and join it when the host ends; hold no mutex while you push.",
      stopsFromInside);
  add(kStop, "ends", "Sound ends when it is stopped.", "Let the thread look whether it is to go on.",
      stopsPushing);
}

}  // namespace vorn_testing::checks
