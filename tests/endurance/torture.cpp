// Every operation, with each thing that can fail in it failing in turn: once, and once from there on.

#include <FileLogger.h>
#include <VornAudioIn.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <iostream>
#include <new>
#include <optional>
#include <system_error>

#include "support/faults.h"
#include "support/rows.h"
#include "support/watchdog.h"

namespace {

using namespace fault;
using VornDeviceAbstractionLayer::FileLogger;

constexpr char kTrace[] = "/tmp/xAppLog.txt";

/// What a neighbour throws. Known again by its number.
struct Refused {
  int number;
};
constexpr int kNumber = 4711;

enum class Logger { kAbsent, kOff, kOn };

std::vector<std::string> trace() {
  std::vector<std::string> lines;
  std::ifstream file(kTrace);
  for (std::string line; std::getline(file, line);) lines.push_back(line + (file.eof() ? " (torn)" : ""));
  return lines;
}

/// What came out of one run.
enum class Outcome { kReturned, kBadAlloc, kSystemError, kRefused, kOther };

template <class Action>
Outcome run(Action& action, std::size_t failing, bool lasting) {
  Outcome outcome = Outcome::kReturned;
  faults::arm(failing, lasting);
  try {
    action();
  } catch (const std::bad_alloc&) {
    outcome = Outcome::kBadAlloc;
  } catch (const std::system_error&) {
    outcome = Outcome::kSystemError;
  } catch (const Refused& refused) {
    outcome = refused.number == kNumber ? Outcome::kRefused : Outcome::kOther;
  } catch (...) {
    outcome = Outcome::kOther;
  }
  faults::disarm();
  return outcome;
}

/// The first failure that the contract lets through decides. Files that fail cost the line and nothing else.
Outcome expected(bool swallowsAllocations = false) {
  bool lockFailed = false;
  for (const faults::Kind kind : faults::failed()) {
    // The text of a std::system_error needs memory: without, it becomes a std::bad_alloc.
    if (kind == faults::kAllocation && (lockFailed || !swallowsAllocations)) return Outcome::kBadAlloc;
    if (lockFailed) break;
    lockFailed = kind == faults::kLock;
    if (kind == faults::kCall) return Outcome::kRefused;
  }
  if (lockFailed) return Outcome::kSystemError;
  return Outcome::kReturned;
}

void expectLocksFree() {
  EXPECT_EQ(faults::held(), 0) << "a lock is still held";
  EXPECT_TRUE(faults::othersGetThem()) << "another thread does not get every lock";
}

void setLogger(Logger logger) {
  FileLogger::Shutdown();
  if (logger != Logger::kAbsent) FileLogger::CreateInstance(logger == Logger::kOn);
}

std::size_t g_tried[faults::kKinds];

/// What was tried, for the record and as a floor: a change that fails fewer points has lost some.
class Floor : public testing::Environment {
  static constexpr std::size_t kFloor = _GLIBCXX_USE_CXX11_ABI ? 16000 : 13000;

  void TearDown() override {
    std::size_t all = 0;
    for (int kind = 0; kind < faults::kKinds; ++kind) {
      std::cout << "torture," << faults::kNames[kind] << "," << g_tried[kind] << "\n";
      all += g_tried[kind];
    }
    std::cout << "torture,all," << all << "\n";
    const testing::UnitTest& program = *testing::UnitTest::GetInstance();
    if (program.test_to_run_count() == program.total_test_count()) {
      EXPECT_GE(all, kFloor);
    }
  }
};

const testing::Environment* const g_floor = testing::AddGlobalTestEnvironment(new Floor);

void count(int runs) {
  for (int kind = 0; kind < faults::kKinds; ++kind)
    g_tried[kind] += static_cast<std::size_t>(runs) * faults::points(static_cast<faults::Kind>(kind));
}

/// The audio path keeps its counter and its object for the life of the process: each try has one of its own.
/// This suite comes first, while this process has delivered nothing.
class TorturedAudio : public testing::Test {
 protected:
  enum Verdict { kAsPromised, kWrong, kNothingFailed };

  /// Delivers one buffer with a failure, then one without; in a child.
  static Verdict deliver(bool assistantReady, std::size_t failing, bool lasting) {
    World world;
    vorn_testing::FakeAssistant assistant(world.recorder);
    if (!assistantReady) assistant.remove(vorn_testing::FakeAssistant::kAudioIn);
    FileLogger::CreateInstance(true);
    VornDeviceAbstractionLayer::VornAudioIn adapter(world.host);
    world.recorder->onCall([](const vorn_testing::Call&) {
      if (faults::point(faults::kCall)) throw Refused{kNumber};
    });
    std::vector<short> samples(480);
    auto send = [&] { adapter.sendAudioData(samples); };
    const Outcome outcome = run(send, failing, lasting);
    if (faults::failed().empty()) return kNothingFailed;
    bool right = outcome == expected() && faults::held() == 0 && faults::othersGetThem();

    // The number in the next line tells whether the first buffer was counted.
    const std::string number = outcome == Outcome::kReturned ? "2" : "1";
    send();
    const std::string last = assistantReady ? "calling xApp API count=" + number : "dalInstance is NULL";
    const std::string search = "calling AudioInHelper getInstance " + number;
    const std::vector<std::string> lines = trace();
    const auto endsWith = [](const std::string& line, const std::string& end) {
      return line.size() > end.size() && line.compare(line.size() - end.size(), end.size(), end) == 0;
    };
    right = right && !lines.empty() && endsWith(lines.back(), last);
    // A search that could not be traced has not been made: the next call makes it.
    if (assistantReady && failing <= 3)
      right = right && std::any_of(lines.begin(), lines.end(),
                                   [&](const std::string& line) { return endsWith(line, search); });
    if (!assistantReady) right = right && lines.size() >= 2 && endsWith(lines[lines.size() - 2], search);
    return right ? kAsPromised : kWrong;
  }

  static Verdict inChild(bool assistantReady, std::size_t failing, bool lasting) {
    unlink(kTrace);
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) _exit(deliver(assistantReady, failing, lasting));
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? static_cast<Verdict>(WEXITSTATUS(status)) : kWrong;
  }
};

TEST_F(TorturedAudio, CountsABufferExactlyWhenTheCallReturned) {
  for (const bool assistantReady : {true, false}) {
    for (const bool lasting : {false, true}) {
      for (std::size_t failing = 1;; ++failing) {
        const Verdict verdict = inChild(assistantReady, failing, lasting);
        if (verdict == kNothingFailed) {
          EXPECT_GT(failing, 10U);
          break;
        }
        EXPECT_EQ(verdict, kAsPromised)
            << "assistant " << assistantReady << ", point " << failing << ", from there on " << lasting;
        ++g_tried[faults::kCall];
      }
    }
  }
  unlink(kTrace);
}

class Torture : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    watchdog::feed();
    settleAudio();
    faults::othersGetThem();  // Makes the other thread now, or it would count as a leak.
  }

  /// Tries `action` with every point failing; `after` looks at the state after each.
  template <class Prepare, class After>
  void tryEveryPoint(Prepare prepare, After after) {
    auto counted = prepare();
    ASSERT_EQ(run(*counted, 0, false), Outcome::kReturned);
    counted.reset();
    const std::size_t points = faults::points();
    count(2);
    for (const bool lasting : {false, true}) {
      for (std::size_t failing = 1; failing <= points; ++failing) {
        SCOPED_TRACE("point " + std::to_string(failing) + " of " + std::to_string(points) +
                     (lasting ? ", from there on" : ", once"));
        auto action = prepare();
        const Outcome outcome = run(*action, failing, lasting);
        expectLocksFree();
        after(*action, outcome);
      }
    }
  }
};

struct Call {
  std::unique_ptr<Invocation> invocation;
  void operator()() { invocation->invoke(); }
};

class TorturedOperation : public Torture {
 protected:
  TorturedOperation() : m_assistant(m_world.recorder) {}

  void torture(const Row& row, bool live, Logger logger) {
    const Adapter& life = adapter(row.adapter);
    const std::shared_ptr<void> object =
        live && row.adapter != std::string("FileLogger") ? life.create(m_world) : life.bare(m_world);
    m_world.recorder->onCall([](const vorn_testing::Call&) {
      if (faults::point(faults::kCall)) throw Refused{kNumber};
    });
    setLogger(logger);
    once(row, object)->invocation->invoke();  // What is made on first use, and kept, is made now.

    const long references = object.use_count();
    long living = 0;
    const std::string answer = live || row.seesLive.empty() ? row.answer : row.fallback;
    const std::vector<std::string> sees = row.sees(live);
    const std::vector<std::string> lines =
        logger == Logger::kOn ? row.lines(live) : std::vector<std::string>{};

    const auto settle = [&] {
      if (logger == Logger::kAbsent) FileLogger::Shutdown();
      unlink(kTrace);
      m_world.recorder->clear();
    };
    if (std::mutex* const mutex = mutexOf(row)) {
      const auto call = once(row, object);
      run(*call, 0, false);
      EXPECT_EQ(faults::firstAsked(), mutex->native_handle()) << "the lock does not come first";
    }

    tryEveryPoint(
        [&] {
          settle();
          auto call = std::make_unique<Call>();
          living = faults::living();
          call->invocation = row.prepare(object.get(), m_world);
          return call;
        },
        [&](Call& call, Outcome outcome) {
          EXPECT_EQ(outcome, expected());
          if (outcome == Outcome::kReturned) {
            EXPECT_EQ(call.invocation->result(), answer);
            EXPECT_EQ(seen(*m_world.recorder), sees);
          }
          call.invocation.reset();
          for (const std::string& line : trace()) EXPECT_EQ(line, lines.empty() ? "(none)" : lines.front());
          settle();
          EXPECT_EQ(faults::living(), living) << "leaked";
          EXPECT_EQ(object.use_count(), references);

          const auto again = once(row, object);
          (*again)();
          EXPECT_EQ(again->invocation->result(), answer);
          EXPECT_EQ(seen(*m_world.recorder), sees);
          EXPECT_EQ(trace(), lines);
        });
    setLogger(Logger::kAbsent);
    unlink(kTrace);
    life.shutdown();
  }

  std::unique_ptr<Call> once(const Row& row, const std::shared_ptr<void>& object) {
    return std::make_unique<Call>(Call{row.prepare(object.get(), m_world)});
  }

  World m_world;
  vorn_testing::FakeAssistant m_assistant;
};

TEST_F(TorturedOperation, ComesOutOfEveryFailureAsPromised) {
  for (const Row& row : rows()) {
    for (const bool live : {true, false}) {
      for (const Logger logger : {Logger::kAbsent, Logger::kOff, Logger::kOn}) {
        SCOPED_TRACE(row.name() + (live ? ", live" : ", not live") + ", logger " +
                     std::to_string(static_cast<int>(logger)));
        torture(row, live, logger);
      }
    }
    if (HasFailure()) return;
  }
}

/// Keeps what is written to standard error, without an allocation.
class Errors final : public std::streambuf {
 public:
  Errors() : m_before(std::cerr.rdbuf(this)) {}
  ~Errors() override { std::cerr.rdbuf(m_before); }
  std::string text() const { return {m_bytes, m_size}; }

 private:
  int_type overflow(int_type byte) override {
    if (m_size < sizeof m_bytes) m_bytes[m_size++] = static_cast<char>(byte);
    return byte;
  }

  std::streambuf* const m_before;
  char m_bytes[256];
  std::size_t m_size = 0;
};

class TorturedKit : public Torture {
 protected:
  struct Use {
    std::function<void()> use;
    void operator()() { use(); }
  };

  void torture(
      std::function<void()> use, std::function<void()> settle = [] {}) {
    use();
    settle();
    long living = 0;
    tryEveryPoint(
        [&] {
          settle();
          auto action = std::make_unique<Use>(Use{use});
          living = faults::living();
          return action;
        },
        [&](Use&, Outcome outcome) {
          EXPECT_EQ(outcome, expected());
          settle();
          EXPECT_EQ(faults::living(), living) << "leaked";
          use();
          settle();
        });
  }

  World m_world;
};

TEST_F(TorturedKit, RecordsAndForgetsWithoutLosingALockOrAByte) {
  m_world.host.setAnimation({"a name that has to be copied", "and another one"});
  const std::shared_ptr<vorn_testing::Recorder> recorder = m_world.recorder;
  torture([&] { recorder->calls(); });
  torture([&] { recorder->signatures(); });
  torture([&] { recorder->count("the operation that nobody calls"); });
  torture([&] { recorder->clear(); });
  torture(
      [&] {
        recorder->onReturn([weight = std::array<long, 8>{}](const vorn_testing::Call&) { (void)weight; });
      },
      [&] { recorder->onReturn(nullptr); });
}

TEST_F(TorturedKit, TheAssistantComesAndGoesWhole) {
  std::optional<vorn_testing::FakeAssistant> made;
  torture([&] { made.emplace(); },
          [&] {
            made.reset();
            vorn_testing::FakeAssistant();  // Takes away what could not be taken without a lock.
          });
  vorn_testing::FakeAssistant assistant(m_world.recorder);
  for (int area = 0; area < vorn_testing::FakeAssistant::kAreas; ++area)
    torture([&] { assistant.create(static_cast<vorn_testing::FakeAssistant::Area>(area)); });
}

class TorturedLife : public Torture {
 protected:
  struct Creation {
    const Adapter& life;
    World& world;
    std::shared_ptr<void> made;
    void operator()() { made = life.create(world); }
  };

  World m_world;
};

/// An operation reaches its host exactly while there is an instance.
void expectLive(const Adapter& life, bool live) {
  World world;
  const std::shared_ptr<void> object = life.bare(world);
  for (const Row& row : rows()) {
    if (row.adapter != std::string(life.name) || row.seesLive.empty() || !row.seesAlways.empty()) continue;
    row.prepare(object.get(), world)->invoke();
    EXPECT_EQ(!world.recorder->calls().empty(), live) << row.name() << ", after a failure, has it wrong";
    return;
  }
}

TEST_F(TorturedLife, CreationLeavesNothingBehindWhenItFails) {
  for (const Adapter& life : adapters()) {
    const bool isLogger = life.name == std::string("FileLogger");
    for (const Logger logger : {Logger::kAbsent, Logger::kOff, Logger::kOn}) {
      if (life.name == std::string("VornAttachmentReaderContainerFactory")) continue;  // Made once for all.
      if (isLogger && logger != Logger::kAbsent) continue;
      SCOPED_TRACE(life.name + std::string(", logger ") + std::to_string(static_cast<int>(logger)));
      setLogger(logger);
      life.create(m_world).reset();
      life.shutdown();
      if (logger == Logger::kAbsent) FileLogger::Shutdown();
      long living = 0;
      const auto settle = [&] {
        life.shutdown();
        if (logger == Logger::kAbsent) FileLogger::Shutdown();
      };
      const Errors errors;
      bool told = false;
      tryEveryPoint(
          [&] {
            settle();
            auto creation = std::make_unique<Creation>(Creation{life, m_world, nullptr});
            living = faults::living();
            return creation;
          },
          [&](Creation& creation, Outcome outcome) {
            EXPECT_EQ(outcome, expected(isLogger));
            const bool made = creation.made != nullptr;
            const bool mayBeEmpty = outcome != Outcome::kReturned || (isLogger && !faults::failed().empty());
            EXPECT_TRUE(made || mayBeEmpty);
            if (outcome != Outcome::kReturned) expectLive(life, false);
            told = told || (isLogger && outcome == Outcome::kReturned && !made);
            creation.made.reset();
            settle();
            EXPECT_EQ(faults::living(), living) << "leaked";
            EXPECT_NE(life.create(m_world), nullptr);
          });
      if (isLogger) {
        EXPECT_TRUE(told);
        EXPECT_EQ(errors.text().substr(0, 56), "FileLogger initialization failed due to an exception.\nFi");
      }
      settle();
    }
  }
  FileLogger::Shutdown();
  unlink(kTrace);
}

TEST_F(TorturedLife, TakesTheMutexOfItsClassOnceForEachStep) {
  FileLogger::CreateInstance(false);
  for (const Adapter& life : adapters()) {
    SCOPED_TRACE(life.name);
    void* const mutex = mutexOf(life.name).native_handle();
    const bool isFactory = life.name == std::string("VornMediaPlayerFactory");  // Created, then fetched.
    const bool isLogger = life.name == std::string("FileLogger");
    const bool hasNoEnd = life.name == std::string("VornAttachmentReaderContainerFactory");
    life.shutdown();
    faults::arm();
    const std::shared_ptr<void> made = life.create(m_world);
    faults::disarm();
    EXPECT_EQ(faults::asked(mutex), isFactory ? 2U : 1U);
    // The object, and its count; the logger's lines have texts as well.
    if (isLogger) {
      EXPECT_EQ(faults::points(faults::kAllocation), 2U);
    }
    faults::arm();
    life.get();
    faults::disarm();
    EXPECT_EQ(faults::asked(mutex), 1U);
    faults::arm();
    life.shutdown();
    faults::disarm();
    EXPECT_EQ(faults::asked(mutex), hasNoEnd ? 0U : 1U);
  }
  FileLogger::Shutdown();
  unlink("/tmp/xAppLog.txt");
}

TEST_F(TorturedLife, ThatFailsToBeginOrEndLeavesTheInstanceAsItWas) {
  struct Shutdown {
    const Adapter& life;
    void operator()() { life.shutdown(); }
  };
  struct Fetch {
    const Adapter& life;
    void operator()() { life.get(); }
  };
  FileLogger::CreateInstance(true);
  for (const Adapter& life : adapters()) {
    SCOPED_TRACE(life.name);
    tryEveryPoint(
        [&] {
          life.create(m_world);
          return std::make_unique<Fetch>(Fetch{life});
        },
        [&](Fetch&, Outcome outcome) {
          EXPECT_EQ(outcome, expected());
          EXPECT_NE(life.get(), nullptr);
        });
    tryEveryPoint(
        [&] {
          life.create(m_world);
          return std::make_unique<Shutdown>(Shutdown{life});
        },
        [&](Shutdown&, Outcome outcome) {
          EXPECT_EQ(outcome, expected());
          EXPECT_NE(outcome, Outcome::kReturned) << "a lock that failed went unnoticed";
          EXPECT_NE(life.get(), nullptr) << "a Shutdown() that threw took the instance";
          expectLive(life, true);
        });
    life.shutdown();
  }
  FileLogger::Shutdown();
  unlink(kTrace);
}

}  // namespace
