// How the adapters reach the trace.

#include "internal/Trace.h"

#include "support/trace_file.h"

namespace {

using VornDeviceAbstractionLayer::FileLogger;
using VornDeviceAbstractionLayer::internal::trace;

class Trace : public trace_file::Traced {};

TEST_F(Trace, WritesOneRecordThroughTheLogger) {
  trace("line");
  EXPECT_EQ(trace_file::bytes(), " Time: line\n");
}

TEST_F(Trace, FollowsTheLoggerThatIsThereNow) {
  FileLogger::Shutdown();
  trace("lost: nobody switched it on");
  FileLogger::Shutdown();
  FileLogger::CreateInstance(true);
  trace("heard");
  EXPECT_EQ(trace_file::bytes(), " Time: heard\n");
}

TEST_F(Trace, KeepsNoReferenceToTheLogger) {
  const std::weak_ptr<FileLogger> logger = FileLogger::getInstance();
  trace("line");
  EXPECT_EQ(logger.use_count(), 1);
}

TEST_F(Trace, CreatesASilentLoggerWhenThereIsNone) {
  FileLogger::Shutdown();
  trace("silent");
  EXPECT_FALSE(std::filesystem::exists(trace_file::kPath));
  FileLogger::CreateInstance(true)->logMessage("too late");
  EXPECT_FALSE(std::filesystem::exists(trace_file::kPath));
}

}  // namespace
