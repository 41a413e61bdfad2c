// The trace file, byte for byte, and the life of the logger that writes it.

#include "support/trace_file.h"

namespace {

using trace_file::bytes;
using trace_file::kPath;
using VornDeviceAbstractionLayer::FileLogger;

class FileLoggerWrites : public trace_file::Traced {
 protected:
  static void log(std::string message) { FileLogger::getInstance()->logMessage(std::move(message)); }

  static void fill(const char* path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }
};

TEST_F(FileLoggerWrites, OneRecordPerMessageInCallOrder) {
  log("first");
  log("second");
  EXPECT_EQ(bytes(), " Time: first\n Time: second\n");
}

TEST_F(FileLoggerWrites, AnEmptyMessageAsPrefixAndBlank) {
  log("");
  EXPECT_EQ(bytes(), " Time: \n");
}

TEST_F(FileLoggerWrites, LineFeedsAndZeroBytesAsTheyAre) {
  const std::string message("one\ntwo\0three\r\xff", 15);
  log(message);
  EXPECT_EQ(bytes(), " Time: " + message + "\n");
}

TEST_F(FileLoggerWrites, AMegabyteToItsLastByte) {
  const std::string message(1 << 20, 'x');
  log(message);
  EXPECT_TRUE(bytes() == " Time: " + message + "\n");
}

TEST_F(FileLoggerWrites, BehindWhatTheFileHeld) {
  fill(kPath, "kept, without a line feed");
  log("next");
  EXPECT_EQ(bytes(), "kept, without a line feed Time: next\n");
}

TEST_F(FileLoggerWrites, IntoANewFileWhenTheOldOneIsTakenAway) {
  log("gone");
  forget();
  log("new");
  EXPECT_EQ(bytes(), " Time: new\n");
}

TEST_F(FileLoggerWrites, NothingWhileADirectoryIsInThePlaceAndAgainAfterwards) {
  std::filesystem::create_directory(kPath);
  EXPECT_NO_THROW(log("lost"));
  forget();
  log("found");
  EXPECT_EQ(bytes(), " Time: found\n");
}

TEST_F(FileLoggerWrites, NothingThroughALinkToAMissingFolder) {
  std::filesystem::create_symlink("/tmp/no-such-folder/trace", kPath);
  EXPECT_NO_THROW(log("lost"));
  EXPECT_FALSE(std::filesystem::exists("/tmp/no-such-folder"));
  EXPECT_TRUE(std::filesystem::is_symlink(kPath));
}

TEST_F(FileLoggerWrites, ThroughADanglingLinkWhoseTargetCanBeMade) {
  std::filesystem::remove("/tmp/trace-elsewhere");
  std::filesystem::create_symlink("/tmp/trace-elsewhere", kPath);
  log("followed");
  EXPECT_TRUE(std::filesystem::is_symlink(kPath));
  EXPECT_EQ(bytes(), " Time: followed\n");
  std::filesystem::remove("/tmp/trace-elsewhere");
}

TEST_F(FileLoggerWrites, NothingOnAFullDiskAndSaysNothing) {
  std::filesystem::create_symlink("/dev/full", kPath);
  testing::internal::CaptureStderr();
  EXPECT_NO_THROW(log(std::string(100000, 'x')));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  forget();
}

TEST_F(FileLoggerWrites, NoFileAtAllWhenSwitchedOff) {
  FileLogger::Shutdown();
  FileLogger::CreateInstance(false);
  log("silent");
  EXPECT_FALSE(std::filesystem::exists(kPath));
}

TEST_F(FileLoggerWrites, NothingIntoAnExistingFileWhenSwitchedOff) {
  FileLogger::Shutdown();
  FileLogger::CreateInstance(false);
  fill(kPath, "kept");
  log("silent");
  EXPECT_EQ(bytes(), "kept");
}

TEST_F(FileLoggerWrites, OnThroughALoggerKeptAcrossShutdown) {
  const auto kept = FileLogger::getInstance();
  FileLogger::Shutdown();
  kept->logMessage("still here");
  log("switched off");
  EXPECT_EQ(bytes(), " Time: still here\n");
}

class FileLoggerLife : public FileLoggerWrites {
 protected:
  void SetUp() override {
    forget();
    FileLogger::Shutdown();
  }
};

TEST_F(FileLoggerLife, BeginsSwitchedOffWhenOnlyFetched) {
  ASSERT_NE(FileLogger::getInstance(), nullptr);
  log("silent");
  EXPECT_FALSE(std::filesystem::exists(kPath));
}

TEST_F(FileLoggerLife, IsDecidedByTheFirstFetchUntilShutdown) {
  const auto first = FileLogger::getInstance();
  EXPECT_EQ(FileLogger::CreateInstance(true), first);
  log("silent");
  EXPECT_FALSE(std::filesystem::exists(kPath));

  FileLogger::Shutdown();
  FileLogger::CreateInstance(true);
  log("heard");
  EXPECT_EQ(bytes(), " Time: heard\n");
}

TEST_F(FileLoggerLife, IsDecidedByTheFirstCreationUntilShutdown) {
  const auto first = FileLogger::CreateInstance(true);
  EXPECT_EQ(FileLogger::CreateInstance(false), first);
  EXPECT_EQ(FileLogger::getInstance(), first);
  log("heard");
  EXPECT_EQ(bytes(), " Time: heard\n");
}

TEST_F(FileLoggerLife, KeepsOneReferenceUntilShutdown) {
  const std::weak_ptr<FileLogger> logger = FileLogger::CreateInstance(false);
  EXPECT_EQ(logger.use_count(), 1);
  FileLogger::Shutdown();
  EXPECT_TRUE(logger.expired());
}

TEST_F(FileLoggerLife, EndsTwiceWithoutHarm) {
  FileLogger::CreateInstance(true);
  FileLogger::Shutdown();
  FileLogger::Shutdown();
  log("silent");
  EXPECT_FALSE(std::filesystem::exists(kPath));
}

TEST_F(FileLoggerLife, FitsInOneByte) { EXPECT_EQ(sizeof(FileLogger), 1U); }

}  // namespace
