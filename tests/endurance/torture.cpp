// Every operation, with each thing that can fail in it failing in turn: once, and once from there on.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <functional>
#include <iostream>
#include <new>
#include <optional>
#include <system_error>

#include "support/everything.h"
#include "support/interposed.h"

namespace {

using namespace operations;
using trace_file::kPath;
using Lines = std::vector<std::string>;
using VornDeviceAbstractionLayer::FileLogger;

/// What the other side throws. Known again by its number.
struct Refused {
  int number;
};
constexpr int kNumber = 4711;

enum class Logger { kAbsent, kOff, kOn };

/// What came out of one run.
enum class End { kReturned, kBadAlloc, kSystemError, kRefused, kOther };

template <class Action>
End run(Action& action, std::size_t failing, bool lasting) {
  End end = End::kReturned;
  interposed::arm(failing, lasting);
  try {
    action();
  } catch (const std::bad_alloc&) {
    end = End::kBadAlloc;
  } catch (const std::system_error&) {
    end = End::kSystemError;
  } catch (const Refused& refused) {
    end = refused.number == kNumber ? End::kRefused : End::kOther;
  } catch (...) {
    end = End::kOther;
  }
  interposed::disarm();
  return end;
}

/// The first failure that the contract lets through decides. Files that fail cost the line and nothing else.
End expected(bool swallowsAllocations = false) {
  bool lockFailed = false;
  for (const interposed::Kind kind : interposed::failed()) {
    // The text of a std::system_error needs memory: without, it becomes a std::bad_alloc.
    if (kind == interposed::kAllocation && (lockFailed || !swallowsAllocations)) return End::kBadAlloc;
    if (lockFailed) break;
    lockFailed = kind == interposed::kLock;
    if (kind == interposed::kCall) return End::kRefused;
  }
  if (lockFailed) return End::kSystemError;
  return End::kReturned;
}

void expectLocksFree() {
  EXPECT_EQ(interposed::held(), 0) << "a lock is still held";
  EXPECT_TRUE(interposed::othersGetThem()) << "another thread does not get every lock";
}

void setLogger(Logger logger) {
  FileLogger::Shutdown();
  if (logger != Logger::kAbsent) FileLogger::CreateInstance(logger == Logger::kOn);
}

std::size_t g_tried[interposed::kKinds];

/// What was tried, for the record and as a floor: a change that fails fewer points has lost some.
class Floor : public testing::Environment {
  static constexpr std::size_t kFloor = _GLIBCXX_USE_CXX11_ABI ? 16000 : 13000;

  void TearDown() override {
    std::size_t all = 0;
    for (int kind = 0; kind < interposed::kKinds; ++kind) {
      std::cout << "torture," << interposed::kNames[kind] << "," << g_tried[kind] << "\n";
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
  for (int kind = 0; kind < interposed::kKinds; ++kind)
    g_tried[kind] += static_cast<std::size_t>(runs) * interposed::points(static_cast<interposed::Kind>(kind));
}

/// The audio path keeps its counter and its object for the life of the process: each try has one of its own.
/// This suite comes first, while this process has delivered nothing.
class TorturedAudio : public testing::Test {
 protected:
  enum Verdict { kAsPromised, kWrong, kNothingFailed };

  /// Delivers one buffer with a failure, then one without; in a child.
  static Verdict deliver(bool assistantReady, std::size_t failing, bool lasting) {
    Firmware firmware;
    vorn_testing::FakeAssistant assistant(firmware.recorder);
    if (!assistantReady) assistant.remove(vorn_testing::FakeAssistant::kAudioIn);
    FileLogger::CreateInstance(true);
    VornDeviceAbstractionLayer::VornAudioIn adapter(firmware.host);
    firmware.recorder->onCall([](const vorn_testing::Call&) {
      if (interposed::point(interposed::kCall)) throw Refused{kNumber};
    });
    std::vector<short> samples(480);
    auto send = [&] { adapter.sendAudioData(samples); };
    const End end = run(send, failing, lasting);
    if (interposed::failed().empty()) return kNothingFailed;
    bool right = end == expected() && interposed::held() == 0 && interposed::othersGetThem();

    // The number in the next line tells whether the first buffer was counted.
    const std::string number = end == End::kReturned ? "2" : "1";
    send();
    const std::string last = assistantReady ? "calling xApp API count=" + number : "dalInstance is NULL";
    const std::string search = "calling AudioInHelper getInstance " + number;
    const std::vector<std::string> lines = trace_file::lines();
    const auto endsWith = [](const std::string& line, const std::string& tail) {
      return line.size() > tail.size() && line.compare(line.size() - tail.size(), tail.size(), tail) == 0;
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
    unlink(kPath);
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
        ++g_tried[interposed::kCall];
      }
    }
  }
  unlink(kPath);
}

class Torture : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    watchdog::feed();
    settleAudio();
    interposed::othersGetThem();  // Makes the other thread now, or it would count as a leak.
  }

  /// Tries `action` with every point failing; `after` looks at the state after each.
  template <class Prepare, class After>
  void tryEveryPoint(Prepare prepare, After after) {
    auto counted = prepare();
    ASSERT_EQ(run(*counted, 0, false), End::kReturned);
    counted.reset();
    const std::size_t points = interposed::points();
    count(2);
    for (const bool lasting : {false, true}) {
      for (std::size_t failing = 1; failing <= points; ++failing) {
        SCOPED_TRACE("point " + std::to_string(failing) + " of " + std::to_string(points) +
                     (lasting ? ", from there on" : ", once"));
        auto action = prepare();
        const End end = run(*action, failing, lasting);
        expectLocksFree();
        after(std::move(action), end);
      }
    }
  }
};

/// A call of an operation whose failures end where the operation does.
struct Call {
  Call(const Row& row, void* called) : invocation(row.with(Sample::kUsual)), object(called) {
    invocation->copies = true;
    invocation->returned = interposed::disarm;
  }

  std::unique_ptr<Invocation> invocation;
  void* const object;
  void operator()() { invocation->make(object); }
};

class TorturedOperation : public Torture {
 protected:
  TorturedOperation() : m_assistant(m_firmware.recorder) {}

  void torture(const Row& row, bool live, Logger logger) {
    const Adapter& life = *row.adapter;
    const std::shared_ptr<void> object =
        live && life.name != "FileLogger" ? life.create(m_firmware) : life.construct(m_firmware);
    m_firmware.recorder->onCall([](const vorn_testing::Call&) {
      if (interposed::point(interposed::kCall)) throw Refused{kNumber};
    });
    setLogger(logger);
    Call(row, object.get())();  // What is made on first use, and kept, is made now.

    const long references = object.use_count();
    long living = 0;
    const Lines lines = logger != Logger::kOn ? Lines() : row.delivered(live) ? row.lines : row.lostLines;
    const auto expectAnswer = [&](const Outcome& outcome) {
      EXPECT_EQ(Row::told(outcome), row.tells(outcome, live));
      EXPECT_EQ(seen(m_firmware.recorder->calls()), row.reaches(outcome.given, live));
    };

    const auto settle = [&] {
      if (logger == Logger::kAbsent) FileLogger::Shutdown();
      unlink(kPath);
      m_firmware.recorder->clear();
    };
    if (std::mutex* const mutex = row.mutex()) {
      Call call(row, object.get());
      run(call, 0, false);
      EXPECT_EQ(interposed::firstAsked(), mutex->native_handle()) << "the lock does not come first";
    }

    tryEveryPoint(
        [&] {
          settle();
          living = interposed::living();
          return std::make_unique<Call>(row, object.get());
        },
        [&](std::unique_ptr<Call> call, End end) {
          EXPECT_EQ(end, expected());
          if (end == End::kReturned) expectAnswer(call->invocation->outcome);
          call.reset();
          for (const std::string& line : trace_file::lines())
            EXPECT_EQ(line, lines.empty() ? "(none)" : lines.front());
          settle();
          EXPECT_EQ(interposed::living(), living) << "leaked";
          EXPECT_EQ(object.use_count(), references);

          expectAnswer(row.run(object.get()));
          EXPECT_EQ(trace_file::lines(), lines);
        });
    setLogger(Logger::kAbsent);
    unlink(kPath);
    life.shutdown();
  }

  Firmware m_firmware;
  vorn_testing::FakeAssistant m_assistant;
};

TEST_F(TorturedOperation, ComesOutOfEveryFailureAsPromised) {
  for (const Row& row : everyRow(m_firmware)) {
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
          living = interposed::living();
          return std::make_unique<Use>(Use{use});
        },
        [&](std::unique_ptr<Use> used, End end) {
          EXPECT_EQ(end, expected());
          used.reset();
          settle();
          EXPECT_EQ(interposed::living(), living) << "leaked";
          use();
          settle();
        });
  }

  Firmware m_firmware;
};

TEST_F(TorturedKit, RecordsAndForgetsWithoutLosingALockOrAByte) {
  m_firmware.host.setAnimation({"a name that has to be copied", "and another one"});
  const std::shared_ptr<vorn_testing::Recorder> recorder = m_firmware.recorder;
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
  vorn_testing::FakeAssistant assistant(m_firmware.recorder);
  for (int area = 0; area < vorn_testing::FakeAssistant::kAreas; ++area)
    torture([&] { assistant.create(static_cast<vorn_testing::FakeAssistant::Area>(area)); });
}

class TorturedLife : public Torture {
 protected:
  struct Creation {
    const Adapter& life;
    Firmware& firmware;
    std::shared_ptr<void> made;
    void operator()() { made = life.create(firmware); }
  };

  Firmware m_firmware;
};

/// An operation reaches its host exactly while there is an instance.
void expectLive(const Adapter& life, bool live) {
  Firmware firmware;
  const std::shared_ptr<void> object = life.construct(firmware);
  for (const Row& row : rows()) {
    if (row.adapter != &life || row.direction != Direction::kDown) continue;
    row.run(object.get());
    EXPECT_EQ(!firmware.recorder->calls().empty(), live) << row.name() << ", after a failure, has it wrong";
    return;
  }
}

TEST_F(TorturedLife, CreationLeavesNothingBehindWhenItFails) {
  for (const Adapter* const each : classes()) {
    const Adapter& life = *each;
    const bool isLogger = life.name == "FileLogger";
    for (const Logger logger : {Logger::kAbsent, Logger::kOff, Logger::kOn}) {
      if (life.name == "VornAttachmentReaderContainerFactory") continue;  // Made once for all.
      if (isLogger && logger != Logger::kAbsent) continue;
      SCOPED_TRACE(life.name + std::string(", logger ") + std::to_string(static_cast<int>(logger)));
      setLogger(logger);
      life.create(m_firmware).reset();
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
            auto creation = std::make_unique<Creation>(Creation{life, m_firmware, nullptr});
            living = interposed::living();
            return creation;
          },
          [&](std::unique_ptr<Creation> creation, End end) {
            EXPECT_EQ(end, expected(isLogger));
            const bool made = creation->made != nullptr;
            const bool mayBeEmpty = end != End::kReturned || (isLogger && !interposed::failed().empty());
            EXPECT_TRUE(made || mayBeEmpty);
            if (end != End::kReturned) expectLive(life, false);
            told = told || (isLogger && end == End::kReturned && !made);
            creation->made.reset();
            settle();
            EXPECT_EQ(interposed::living(), living) << "leaked";
            EXPECT_NE(life.create(m_firmware), nullptr);
          });
      if (isLogger) {
        EXPECT_TRUE(told);
        EXPECT_EQ(errors.text().substr(0, 56), "FileLogger initialization failed due to an exception.\nFi");
      }
      settle();
    }
  }
  FileLogger::Shutdown();
  unlink(kPath);
}

TEST_F(TorturedLife, TakesTheMutexOfItsClassOnceForEachStep) {
  FileLogger::CreateInstance(false);
  for (const Adapter* const each : classes()) {
    const Adapter& life = *each;
    SCOPED_TRACE(life.name);
    void* const mutex = mutexOf(life.name).native_handle();
    const bool isFactory = life.name == "VornMediaPlayerFactory";  // Created, then fetched.
    const bool isLogger = life.name == "FileLogger";
    const bool hasNoEnd = life.name == "VornAttachmentReaderContainerFactory";
    life.shutdown();
    interposed::arm();
    const std::shared_ptr<void> made = life.create(m_firmware);
    interposed::disarm();
    EXPECT_EQ(interposed::asked(mutex), isFactory ? 2U : 1U);
    // The object, and its count; the logger's lines have texts as well.
    if (isLogger) {
      EXPECT_EQ(interposed::points(interposed::kAllocation), 2U);
    }
    interposed::arm();
    life.get();
    interposed::disarm();
    EXPECT_EQ(interposed::asked(mutex), 1U);
    interposed::arm();
    life.shutdown();
    interposed::disarm();
    EXPECT_EQ(interposed::asked(mutex), hasNoEnd ? 0U : 1U);
  }
  FileLogger::Shutdown();
  unlink(kPath);
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
  for (const Adapter* const each : classes()) {
    const Adapter& life = *each;
    SCOPED_TRACE(life.name);
    tryEveryPoint(
        [&] {
          life.create(m_firmware);
          return std::make_unique<Fetch>(Fetch{life});
        },
        [&](std::unique_ptr<Fetch>, End end) {
          EXPECT_EQ(end, expected());
          EXPECT_NE(life.get(), nullptr);
        });
    tryEveryPoint(
        [&] {
          life.create(m_firmware);
          return std::make_unique<Shutdown>(Shutdown{life});
        },
        [&](std::unique_ptr<Shutdown>, End end) {
          EXPECT_EQ(end, expected());
          EXPECT_NE(end, End::kReturned) << "a lock that failed went unnoticed";
          EXPECT_NE(life.get(), nullptr) << "a Shutdown() that threw took the instance";
          expectLive(life, true);
        });
    life.shutdown();
  }
  FileLogger::Shutdown();
  unlink(kPath);
}

}  // namespace
