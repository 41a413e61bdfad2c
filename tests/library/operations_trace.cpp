// The lines of each operation, byte for byte, and their absence.

#include <locale>

#include "support/operation_test.h"
#include "support/trace_file.h"

namespace {

using namespace operations;
using Lines = std::vector<std::string>;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;
using VornDeviceAbstractionLayer::FileLogger;

class TracedOperations : public OperationTest {
 protected:
  TracedOperations() {
    FileLogger::Shutdown();
    FileLogger::CreateInstance(true);
  }

  ~TracedOperations() override {
    FileLogger::Shutdown();
    std::filesystem::remove(trace_file::kPath);
  }

  /// The lines of one call, and of nothing before it.
  Lines linesOf(const std::shared_ptr<void>& object) {
    std::filesystem::remove(trace_file::kPath);
    row.call(object.get());
    return trace_file::lines();
  }

  void removeAssistant() {
    for (int area = 0; area < FakeAssistant::kAreas; ++area)
      assistant.remove(static_cast<FakeAssistant::Area>(area));
  }
};

TEST_P(TracedOperations, LeaveTheirLinesWhenDelivered) {
  EXPECT_EQ(linesOf(row.adapter->create(firmware.host)), row.lines);
}

TEST_P(TracedOperations, LeaveTheLinesOfALostCallOtherwise) {
  if (row.direction == Direction::kUp) removeAssistant();
  EXPECT_EQ(linesOf(row.adapter->construct(firmware.host)), row.lostLines);
}

TEST_P(TracedOperations, LeaveTheLinesOfALostCallAfterShutdown) {
  if (row.direction == Direction::kUp) removeAssistant();
  const auto kept = row.adapter->create(firmware.host);
  row.adapter->shutdown();
  EXPECT_EQ(linesOf(kept), row.lostLines);
}

TEST_P(TracedOperations, LeaveThemWhetherOrNotTheSideThatIsNotAskedIsThere) {
  const bool up = row.direction == Direction::kUp;
  if (!up) removeAssistant();
  const auto object = up ? row.adapter->construct(firmware.host) : row.adapter->create(firmware.host);
  EXPECT_EQ(linesOf(object), row.lines);
}

TEST_P(TracedOperations, LeaveThemBeforeTheOtherSideIsCalled) {
  const auto object = row.adapter->create(firmware.host);
  Lines before;
  recorder->onCall([&](const Call&) {
    if (recorder->calls().size() == 1) before = trace_file::lines();
  });
  linesOf(object);
  EXPECT_EQ(before, row.lines);
}

TEST_P(TracedOperations, LeaveThemWhenTheOtherSideThrows) {
  const auto object = row.adapter->create(firmware.host);
  recorder->onCall([](const Call&) { throw 42; });
  std::filesystem::remove(trace_file::kPath);
  EXPECT_THROW(row.call(object.get()), int);
  EXPECT_EQ(trace_file::lines(), row.lines);
}

INSTANTIATE_TEST_SUITE_P(Table, TracedOperations, testing::ValuesIn(withoutAudio()), nameOf);

/// 1.000.000 instead of 1000000, and "yes" instead of "true".
struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
  std::string do_truename() const override { return "yes"; }
};

class TracedOperationsInAnotherLocale : public TracedOperations {
 protected:
  ~TracedOperationsInAnotherLocale() override { std::locale::global(m_former); }

 private:
  const std::locale m_former = std::locale::global(std::locale(std::locale::classic(), new Grouping));
};

TEST_P(TracedOperationsInAnotherLocale, LeaveTheSameLines) {
  EXPECT_EQ(linesOf(row.adapter->create(firmware.host)), row.lines);
}

TEST_P(TracedOperationsInAnotherLocale, LeaveTheSameLinesOfALostCall) {
  if (row.direction == Direction::kUp) removeAssistant();
  EXPECT_EQ(linesOf(row.adapter->construct(firmware.host)), row.lostLines);
}

INSTANTIATE_TEST_SUITE_P(Table, TracedOperationsInAnotherLocale, testing::ValuesIn(withoutAudio()), nameOf);

}  // namespace
