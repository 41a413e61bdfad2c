// Every operation, in five states of life, beside four kinds of other side, with the trace absent, off and on.

#include <FileLogger.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <set>
#include <thread>

#include "support/everything.h"
#include "support/watchdog.h"

namespace {

using namespace operations;
using VornDeviceAbstractionLayer::FileLogger;

enum class State { kNeverCreated, kLive, kLiveOnASecondHost, kShutDown, kUnloading };
enum class OtherSide { kReturns, kThrowsException, kThrowsInt, kBlocks };
enum class Logger { kAbsent, kOff, kOn };

constexpr State kStates[] = {State::kNeverCreated, State::kLive, State::kLiveOnASecondHost, State::kShutDown,
                             State::kUnloading};
constexpr OtherSide kOtherSides[] = {OtherSide::kReturns, OtherSide::kThrowsException, OtherSide::kThrowsInt,
                                     OtherSide::kBlocks};
constexpr Logger kLoggers[] = {Logger::kAbsent, Logger::kOff, Logger::kOn};
constexpr const char* kStateNames[] = {"never created", "live", "live on a second host", "shut down",
                                       "unloading"};

/// Opens once, for whoever waits.
class Gate {
 public:
  void open() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_changed.notify_all();
  }

  bool wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(60), [this] { return m_open; });
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_open = false;
};

/// One state of life, in a process of its own.
class Life {
 public:
  explicit Life(State state) : m_state(state), m_recorder(m_first.recorder), m_assistant(m_recorder) {
    settleAudio();
    for (const Adapter* const each : classes()) {
      if (each->name == "FileLogger") continue;
      std::shared_ptr<void>& object = m_objects[each];
      if (state == State::kNeverCreated) {
        object = each->construct(m_first);
        continue;
      }
      object = each->create(m_first);
      if (state == State::kLive || state == State::kUnloading) continue;
      each->shutdown();
      if (state == State::kLiveOnASecondHost) m_anew.push_back(each->create(m_second));
    }
  }

  /// All cases; how many there were.
  std::size_t play() {
    std::size_t cases = 0;
    for (const Row& row : m_rows) {
      if (testing::Test::HasFailure()) break;  // One operation's failures are enough to read.
      for (const Logger logger : kLoggers) {
        for (const OtherSide otherSide : kOtherSides) {
          SCOPED_TRACE(row.name() + ", " + kStateNames[static_cast<int>(m_state)] + ", other side " +
                       std::to_string(static_cast<int>(otherSide)) + ", logger " +
                       std::to_string(static_cast<int>(logger)));
          play(row, otherSide, logger);
          ++cases;
        }
      }
    }
    return cases;
  }

 private:
  bool live() const {
    return m_state == State::kLive || m_state == State::kLiveOnASecondHost || m_state == State::kUnloading;
  }

  void play(const Row& row, OtherSide otherSide, Logger logger) {
    const std::unique_ptr<Invocation> call = row.with(Sample::kUsual);
    m_object = m_objects[row.adapter].get();
    m_first.recorder->clear();
    m_second.recorder->clear();
    FileLogger::Shutdown();
    unlink(trace_file::kPath);
    if (logger != Logger::kAbsent) FileLogger::CreateInstance(logger == Logger::kOn);

    const std::vector<std::string> expected = row.reaches(call->outcome.given, live());
    const std::vector<std::string> lines = row.delivered(live()) ? row.lines : row.lostLines;
    switch (otherSide) {
      case OtherSide::kReturns:
        call->make(m_object);
        break;
      case OtherSide::kThrowsException:
        throws(*call, expected, std::runtime_error("the other side's own"));
        break;
      case OtherSide::kThrowsInt:
        throws(*call, expected, 4711);
        break;
      case OtherSide::kBlocks:
        blocks(row, *call, expected);
        break;
    }
    m_recorder->onCall(nullptr);

    const bool returned =
        expected.empty() || otherSide == OtherSide::kReturns || otherSide == OtherSide::kBlocks;
    if (returned) {
      EXPECT_EQ(Row::told(call->outcome), row.tells(call->outcome, live()));
      EXPECT_EQ(seen(m_recorder->calls()), expected);
      expectReferences(*call);
    } else {
      EXPECT_EQ(seen(m_recorder->calls()), std::vector<std::string>{expected.front()});
    }
    EXPECT_TRUE(m_second.recorder->calls().empty()) << "the second host was called";
    if (std::mutex* const mutex = row.mutex()) {
      EXPECT_FALSE(isHeld(*mutex));
    }
    EXPECT_EQ(trace_file::lines(), logger == Logger::kOn ? lines : std::vector<std::string>{});
  }

  template <class Exception>
  void throws(Invocation& call, const std::vector<std::string>& expected, Exception exception) {
    m_recorder->onCall([exception](const vorn_testing::Call&) { throw exception; });
    if (expected.empty()) return call.make(m_object);
    try {
      call.make(m_object);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const Exception& caught) {
      EXPECT_EQ(what(caught), what(exception));
    }
  }

  static std::string what(const std::exception& exception) { return exception.what(); }
  static std::string what(int number) { return std::to_string(number); }

  /// While the other side holds the call, the mutex is held where the row says so and nowhere else.
  void blocks(const Row& row, Invocation& call, const std::vector<std::string>& expected) {
    if (expected.empty()) return call.make(m_object);
    Gate inside;
    Gate release;
    m_recorder->onCall([&](const vorn_testing::Call&) {
      inside.open();
      release.wait();
    });
    std::thread caller([&] { call.make(m_object); });
    EXPECT_TRUE(inside.wait());
    EXPECT_EQ(isHeld(mutexOf(row.adapter->name)), row.guard == Guard::kMutex);
    if (row.adapter->name == "VornAppMessaging") {
      EXPECT_EQ(isHeld(mutexOf(row.adapter->name, "m_dalMutex")), row.guard == Guard::kDalMutex);
    }
    EXPECT_FALSE(isHeld(mutexOf("FileLogger")));
    release.open();
    caller.join();
  }

  void expectReferences(const Invocation& call) const {
    const Outcome& outcome = call.outcome;
    const std::vector<vorn_testing::Call> calls = m_recorder->calls();
    if (calls.empty()) return;
    const vorn_testing::Call& last = calls.back();
    for (std::size_t i = 0; i < outcome.addresses.size() && i < last.addresses.size(); ++i) {
      if (!outcome.reference[i]) continue;
      EXPECT_EQ(last.addresses[i], outcome.addresses[i]) << "argument " << i << " was copied";
    }
  }

  const State m_state;
  Firmware m_first;
  Firmware m_second;
  const std::vector<Row> m_rows = everyRow(m_first);
  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
  vorn_testing::FakeAssistant m_assistant;
  std::map<const Adapter*, std::shared_ptr<void>> m_objects;
  void* m_object = nullptr;  ///< The one called.
  std::vector<std::shared_ptr<void>> m_anew;
};

Life* g_unloading;
int g_pipe;

void report(std::size_t cases) {
  if (testing::Test::HasFailure()) cases = 0;
  const ssize_t written = write(g_pipe, &cases, sizeof cases);
  std::cout.flush();
  if (written != sizeof cases || cases == 0) _exit(1);
}

/// Plays the state in a child, which never saw another, and returns the number of its cases; 0 for a failure.
std::size_t casesOf(State state) {
  int ends[2];
  if (pipe(ends) != 0) return 0;
  std::cout.flush();
  const pid_t child = fork();
  if (child == 0) {
    watchdog::feed();
    g_pipe = ends[1];
    if (state == State::kUnloading) {
      g_unloading = new Life(state);
      std::atexit([] { report(g_unloading->play()); });
      std::exit(0);
    }
    {
      Life life(state);
      report(life.play());
    }
    _exit(0);
  }
  close(ends[1]);
  std::size_t cases = 0;
  if (read(ends[0], &cases, sizeof cases) != sizeof cases) cases = 0;
  close(ends[0]);
  int status = -1;
  waitpid(child, &status, 0);
  return status == 0 ? cases : 0;
}

TEST(OperationMatrix, HoldsForEveryOperationStateOtherSideAndLogger) {
  Firmware firmware;
  const std::size_t operations = everyRow(firmware).size();
  std::size_t cases = 0;
  for (const State state : kStates) {
    const std::size_t now = casesOf(state);
    ASSERT_EQ(now, operations * std::size(kOtherSides) * std::size(kLoggers))
        << kStateNames[static_cast<int>(state)];
    cases += now;
  }
  std::cout << "operation matrix: " << operations << " operations, " << cases << " cases\n";
  EXPECT_EQ(cases, operations * std::size(kStates) * std::size(kOtherSides) * std::size(kLoggers));
  EXPECT_GE(cases, 6000U);
}

}  // namespace
