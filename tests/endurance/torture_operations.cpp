// Every operation, with each thing that can fail in it failing in turn: once, and once from there on.

#include <iostream>

#include "torture.h"

namespace {

using namespace torture;

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

}  // namespace
