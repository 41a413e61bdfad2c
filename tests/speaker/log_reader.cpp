// vorn-log: the reader of the trace, as a program and line by line.

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <vorn_testing/TraceLine.h>

namespace {

using vorn_testing::TraceLine;

const std::string kLogin =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, "
    "std::chrono::milliseconds, std::string): accessToken: secret, userName: x, userName: me, forceLogin: 1, "
    "refreshInterval: 1ms, playerId: kitchen";
const std::string kBuffer =
    "void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData(std::vector<short int>&) calling xApp API count=";

TEST(TraceLine, NamesClassAndOperationWhateverTheResultType) {
  EXPECT_EQ(TraceLine::parse("static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> "
                             "VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()")
                .operation,
            "getInstance");
  EXPECT_EQ(TraceLine::parse(kLogin).adapter, "VornEMPAdapterControl");
  EXPECT_EQ(TraceLine::parse("receiveAppMessage(a,b,c)").operation, "SendMessageToxApp");
}

TEST(TraceLine, SaysWhenALineIsNotTheLibrarys) { EXPECT_EQ(TraceLine::parse("hello").adapter, "?"); }

TEST(TraceLine, MasksATokenToItsVeryEnd) {
  EXPECT_EQ(TraceLine::masked(kLogin).find("secret"), std::string::npos);
  EXPECT_NE(TraceLine::masked(kLogin).find("accessToken: ********, userName: me"), std::string::npos);
}

/// Runs the program on a trace of its own and keeps what it says.
class LogReader : public testing::Test {
 protected:
  void SetUp() override { std::remove("/tmp/trace"); }

  std::string run(const std::string& options) {
    std::string output;
    FILE* const pipe = popen((VORN_LOG_PROGRAM " " + options + " 2>&1").c_str(), "r");
    char part[256];
    while (std::fgets(part, sizeof part, pipe)) output += part;
    m_status = WEXITSTATUS(pclose(pipe));
    return output;
  }

  void write(const std::string& line) {
    std::ofstream("/tmp/trace", std::ios::app) << " Time: " << line << "\n";
  }

  int m_status = -1;
};

TEST_F(LogReader, CollapsesBuffersThatDifferInTheirNumber) {
  for (int i = 1; i <= 5; ++i) write(kBuffer + std::to_string(i));
  const std::string output = run("/tmp/trace");
  EXPECT_NE(output.find("count=1\n    and 4 more like it"), std::string::npos) << output;
  EXPECT_EQ(m_status, 0);
}

TEST_F(LogReader, CountsByClassAndOperation) {
  write(kBuffer + "1");
  write(kBuffer + "2");
  write("receiveAppMessage(a\nb,c,)");
  EXPECT_EQ(run("--count /tmp/trace"),
            "VornAppMessaging  1\n  SendMessageToxApp  1\nVornAudioIn  2\n  sendAudioData  2\n");
}

TEST_F(LogReader, ShowsTheLinesOfOneClassOnly) {
  write(kBuffer + "1");
  write(kLogin);
  const std::string output = run("-a VornEMPAdapterControl --explain /tmp/trace");
  EXPECT_EQ(output.find("sendAudioData"), std::string::npos);
  EXPECT_NE(output.find("a command for the external player arrived"), std::string::npos);
}

TEST_F(LogReader, FollowsAGrowingFileUntilTheTextComes) {
  write(kBuffer + "1");
  const std::string output = run(
      "--follow --until 'receiveAppMessage(end' /tmp/trace & reader=$!; echo ' Time: receiveAppMessage(end,,)' >> "
      "/tmp/trace; wait $reader");
  EXPECT_NE(output.find("receiveAppMessage(end,,)"), std::string::npos);
  EXPECT_EQ(m_status, 0);
}

TEST_F(LogReader, NamesAFileThatIsNotThereAndTheRemedy) {
  const std::string output = run("/tmp/nowhere");
  EXPECT_NE(output.find("/tmp/nowhere cannot be read; is the trace on"), std::string::npos);
  EXPECT_EQ(m_status, 2);
}

}  // namespace
