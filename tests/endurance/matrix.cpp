// Every operation, in five states of life, beside four kinds of neighbour, with the trace absent, off and on.

#include <FileLogger.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <set>
#include <thread>

#include "support/rows.h"
#include "support/watchdog.h"

namespace {

using namespace fault;
using VornDeviceAbstractionLayer::FileLogger;

enum class State { kNeverCreated, kLive, kLiveOnASecondHost, kShutDown, kUnloading };
enum class Neighbour { kReturns, kThrowsException, kThrowsInt, kBlocks };
enum class Logger { kAbsent, kOff, kOn };

constexpr State kStates[] = {State::kNeverCreated, State::kLive, State::kLiveOnASecondHost, State::kShutDown,
                             State::kUnloading};
constexpr Neighbour kNeighbours[] = {Neighbour::kReturns, Neighbour::kThrowsException, Neighbour::kThrowsInt,
                                     Neighbour::kBlocks};
constexpr Logger kLoggers[] = {Logger::kAbsent, Logger::kOff, Logger::kOn};
constexpr const char* kStateNames[] = {"never created", "live", "live on a second host", "shut down",
                                       "unloading"};

constexpr char kTrace[] = "/tmp/xAppLog.txt";

std::vector<std::string> trace() {
  std::vector<std::string> lines;
  std::ifstream file(kTrace);
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

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
    for (const Adapter& each : adapters()) {
      if (each.name == std::string("FileLogger")) continue;
      std::shared_ptr<void>& object = m_objects[each.name];
      if (state == State::kNeverCreated) {
        object = each.bare(m_first);
        continue;
      }
      object = each.create(m_first);
      if (state == State::kLive || state == State::kUnloading) continue;
      each.shutdown();
      if (state == State::kLiveOnASecondHost) m_anew.push_back(each.create(m_second));
    }
  }

  /// All cases; how many there were.
  std::size_t play() {
    std::size_t cases = 0;
    for (const Row& row : rows()) {
      if (testing::Test::HasFailure()) break;  // One operation's failures are enough to read.
      for (const Logger logger : kLoggers) {
        for (const Neighbour neighbour : kNeighbours) {
          SCOPED_TRACE(row.name() + ", " + kStateNames[static_cast<int>(m_state)] + ", neighbour " +
                       std::to_string(static_cast<int>(neighbour)) + ", logger " +
                       std::to_string(static_cast<int>(logger)));
          play(row, neighbour, logger);
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

  void play(const Row& row, Neighbour neighbour, Logger logger) {
    const std::unique_ptr<Invocation> call = row.prepare(m_objects[row.adapter].get(), m_first);
    m_first.recorder->clear();
    m_second.recorder->clear();
    FileLogger::Shutdown();
    unlink(kTrace);
    if (logger != Logger::kAbsent) FileLogger::CreateInstance(logger == Logger::kOn);

    const std::vector<std::string> expected = row.sees(live());
    const std::vector<std::string> lines = row.lines(live());
    switch (neighbour) {
      case Neighbour::kReturns:
        call->invoke();
        break;
      case Neighbour::kThrowsException:
        throws(*call, expected, std::runtime_error("the neighbour's own"));
        break;
      case Neighbour::kThrowsInt:
        throws(*call, expected, 4711);
        break;
      case Neighbour::kBlocks:
        blocks(row, *call, expected);
        break;
    }
    m_recorder->onCall(nullptr);

    const bool returned =
        expected.empty() || neighbour == Neighbour::kReturns || neighbour == Neighbour::kBlocks;
    if (returned) {
      EXPECT_EQ(call->result(), live() || row.seesLive.empty() ? row.answer : row.fallback);
      EXPECT_EQ(seen(*m_recorder), expected);
      expectReferences(*call);
    } else {
      EXPECT_EQ(seen(*m_recorder), std::vector<std::string>{expected.front()});
    }
    EXPECT_TRUE(m_second.recorder->calls().empty()) << "the second host was called";
    if (std::mutex* const mutex = mutexOf(row)) {
      EXPECT_TRUE(free(*mutex));
    }
    EXPECT_EQ(trace(), logger == Logger::kOn ? lines : std::vector<std::string>{});
  }

  template <class Exception>
  void throws(Invocation& call, const std::vector<std::string>& expected, Exception exception) {
    m_recorder->onCall([exception](const vorn_testing::Call&) { throw exception; });
    if (expected.empty()) return call.invoke();
    try {
      call.invoke();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const Exception& caught) {
      EXPECT_EQ(what(caught), what(exception));
    }
  }

  static std::string what(const std::exception& exception) { return exception.what(); }
  static std::string what(int number) { return std::to_string(number); }

  /// While the neighbour holds the call, the mutex is held where the row says so and nowhere else.
  void blocks(const Row& row, Invocation& call, const std::vector<std::string>& expected) {
    if (expected.empty()) return call.invoke();
    Gate inside;
    Gate release;
    m_recorder->onCall([&](const vorn_testing::Call&) {
      inside.open();
      release.wait();
    });
    std::thread caller([&] { call.invoke(); });
    EXPECT_TRUE(inside.wait());
    if (row.adapter != std::string("FileLogger")) {
      EXPECT_EQ(!free(mutexOf(row.adapter)), row.guard == Guard::kLocked);
      if (row.adapter == std::string("VornAppMessaging")) {
        EXPECT_EQ(!free(mutexOf(row.adapter, "m_dalMutex")), row.guard == Guard::kDalMutex);
      }
    }
    EXPECT_TRUE(free(mutexOf("FileLogger")));
    release.open();
    caller.join();
  }

  void expectReferences(const Invocation& call) const {
    const std::vector<const void*> references = call.references();
    const std::vector<vorn_testing::Call> calls = m_recorder->calls();
    if (calls.empty()) return;
    const vorn_testing::Call& last = calls.back();
    for (std::size_t i = 0; i < references.size() && i < last.addresses.size(); ++i) {
      if (!references[i]) continue;
      EXPECT_EQ(last.addresses[i], references[i]) << "argument " << i << " was copied";
    }
  }

  static bool free(std::mutex& mutex) {
    if (!mutex.try_lock()) return false;
    mutex.unlock();
    return true;
  }

  const State m_state;
  World m_first;
  World m_second;
  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
  vorn_testing::FakeAssistant m_assistant;
  std::map<std::string, std::shared_ptr<void>> m_objects;
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

TEST(OperationMatrix, HoldsForEveryOperationStateNeighbourAndLogger) {
  std::size_t cases = 0;
  for (const State state : kStates) {
    const std::size_t now = casesOf(state);
    ASSERT_EQ(now, rows().size() * std::size(kNeighbours) * std::size(kLoggers))
        << kStateNames[static_cast<int>(state)];
    cases += now;
  }
  std::cout << "operation matrix: " << rows().size() << " operations, " << cases << " cases\n";
  EXPECT_EQ(cases, rows().size() * std::size(kStates) * std::size(kNeighbours) * std::size(kLoggers));
  EXPECT_GE(cases, 6000U);
}

TEST(OperationMatrix, ReachesEverySlotOfBothHostInterfaces) {
  std::set<int> host;
  std::set<int> player;
  for (const Row& row : rows())
    for (const std::string& call : row.seesLive)
      (row.adapter == std::string("VornEMPAdapterControl") && std::stoi(call) != 33 ? player : host)
          .insert(std::stoi(call));
  for (int slot = 3; slot <= 66; ++slot) EXPECT_EQ(host.count(slot), 1U) << "host slot " << slot;
  for (int slot = 3; slot <= 18; ++slot) EXPECT_EQ(player.count(slot), 1U) << "player slot " << slot;
}

/// The upward operations once more, without an assistant.
TEST(OperationMatrix, UpwardOperationsDropTheNewsWithoutAnAssistant) {
  World world;
  const std::map<std::string, std::string> fallbacks = {{"SendMessageToxApp", "false"},
                                                        {"notifyPlaybackControllerAction", "false"},
                                                        {"sendAudioData", "|[480 samples]"}};
  const std::string lost =
      " Time: void VornDeviceAbstractionLayer::VornOOBE::notifyOOBEInitiated() dalinstance is Null";
  for (const Row& row : rows()) {
    if (row.seesAlways.empty() || row.adapter == std::string("VornMediaPlayerFactory") ||
        row.adapter == std::string("VornAttachmentReaderContainerFactory"))
      continue;
    SCOPED_TRACE(row.name());
    const std::shared_ptr<void> object = adapter(row.adapter).bare(world);
    const std::unique_ptr<Invocation> call = row.prepare(object.get(), world);
    FileLogger::Shutdown();
    FileLogger::CreateInstance(row.operation != std::string("sendAudioData"));
    unlink(kTrace);
    call->invoke();
    const auto fallback = fallbacks.find(row.operation);
    EXPECT_EQ(call->result(), fallback == fallbacks.end() ? "" : fallback->second);
    EXPECT_EQ(trace(), row.operation == std::string("notifyOOBEInitiated") ? std::vector<std::string>{lost}
                                                                           : std::vector<std::string>{});
  }
  FileLogger::Shutdown();
}

}  // namespace
