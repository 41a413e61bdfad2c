// What a line costs the system, and what happens when the system refuses.

#include "support/eventually.h"
#include "support/interposed.h"
#include "support/mutexes.h"
#include "support/trace_file.h"

namespace {

using interposed::counts;
using interposed::Counts;
using trace_file::bytes;
using VornDeviceAbstractionLayer::FileLogger;

class FileLoggerCosts : public trace_file::Traced {};

TEST_F(FileLoggerCosts, OneWritePerRecordWhateverItsLength) {
  const auto logger = FileLogger::getInstance();
  for (const std::size_t length : {0U, 7U, 1023U, 1024U, 8191U, 8192U, 1U << 20}) {
    std::string message(length, 'x');
    const Counts before = counts();
    logger->logMessage(std::move(message));
    EXPECT_EQ((counts() - before).writes, 1U) << length << " bytes";
  }
}

TEST_F(FileLoggerCosts, OneLockAndOneClockReadPerRecord) {
  const auto logger = FileLogger::getInstance();
  const Counts before = counts();
  logger->logMessage("line");
  const Counts spent = counts() - before;
  EXPECT_EQ(spent.clockReads, 1U);
  EXPECT_GE(spent.locks, 1U);
}

TEST_F(FileLoggerCosts, NothingWhenSwitchedOff) {
  FileLogger off(false);
  std::string message(1000, 'x');
  const Counts before = counts();
  off.logMessage(std::move(message));
  EXPECT_TRUE(counts() - before == Counts{});
}

TEST_F(FileLoggerCosts, NoWaitingWhenSwitchedOff) {
  std::mutex& mutex = operations::mutexOf("FileLogger");
  EXPECT_TRUE(passes(mutex, [] { FileLogger(false).logMessage("any"); }));
}

TEST_F(FileLoggerCosts, AnExceptionButNeverTheLockWhenMemoryEnds) {
  const std::string message(1000, 'x');
  int failures = 0;
  for (std::size_t nth = 1; nth <= 8; ++nth) {
    std::string copy = message;
    const auto logger = FileLogger::getInstance();
    interposed::failAllocation(nth);
    try {
      logger->logMessage(std::move(copy));
    } catch (const std::bad_alloc&) {
      ++failures;
    }
    interposed::failAllocation(0);
  }
  EXPECT_GT(failures, 0);
  forget();
  FileLogger::getInstance()->logMessage("written");
  EXPECT_EQ(bytes(), " Time: written\n");
}

class FileLoggerWithoutMemory : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override { FileLogger::Shutdown(); }
  void TearDown() override { FileLogger::Shutdown(); }
};

TEST_P(FileLoggerWithoutMemory, TellsStandardErrorOnCreationAndAnswersEmpty) {
  testing::internal::CaptureStderr();
  interposed::failAllocation(GetParam());
  const auto logger = FileLogger::CreateInstance(true);
  interposed::failAllocation(0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "FileLogger initialization failed due to an exception.\n");
  EXPECT_EQ(logger, nullptr);
}

TEST_P(FileLoggerWithoutMemory, CanBeCreatedLater) {
  testing::internal::CaptureStderr();
  interposed::failAllocation(GetParam());
  FileLogger::CreateInstance(false);
  interposed::failAllocation(0);
  testing::internal::GetCapturedStderr();

  FileLogger::CreateInstance(true)->logMessage("written");
  EXPECT_EQ(bytes(), " Time: written\n");
  std::filesystem::remove(trace_file::kPath);
}

TEST_P(FileLoggerWithoutMemory, PassesTheFailureOnWhenOnlyFetched) {
  testing::internal::CaptureStderr();
  interposed::failAllocation(GetParam());
  EXPECT_THROW(FileLogger::getInstance(), std::bad_alloc);
  interposed::failAllocation(0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_NE(FileLogger::getInstance(), nullptr);
}

// The object, then the control block.
INSTANTIATE_TEST_SUITE_P(Allocation, FileLoggerWithoutMemory, testing::Values(1U, 2U));

}  // namespace
