// vorn-speaker plays the morning that it ships.

#include <algorithm>
#include <sstream>
#include <vector>

#include "speaker/speaker_program.h"

namespace {

class Morning : public SpeakerProgram {
 protected:
  static std::vector<std::string> sortedLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    return lines;
  }
};

TEST_F(Morning, CallsEveryOperationOfBothSides) {
  const std::string output = run("--strict");
  EXPECT_EQ(m_status, 0) << output;
  EXPECT_FALSE(matches(output, "\nVorn[^\n]* 0\n"));
}

TEST_F(Morning, PrintsDirectionThreadAdapterOperationArgumentsAndResult) {
  const std::string output = run("");
  EXPECT_TRUE(matches(output, "down +assistant +VornStorage +readKeyValue\\(city\\) = \\{city=Oslo\\}"));
  EXPECT_TRUE(matches(output, "up +firmware +VornDeviceInfo +notifyLocaleChange\\(\\[en-GB, nb-NO\\]\\)"));
  EXPECT_TRUE(matches(output, "up +microphone +VornAudioIn +sendAudioData\\(\\[160 samples\\]\\)"));
}

TEST_F(Morning, PrintsACallFromInsideAHandlerInsideIt) {
  EXPECT_TRUE(
      matches(run(""),
              "sendAppMessage\\(phone, ping, 1\\) \\.\\.\\.\n"
              " +up +assistant +VornAppMessaging +SendMessageToxApp\\(phone, received ping, 1\\) = true\n"
              " +down +assistant +VornAppMessaging +\\.\\.\\. sendAppMessage"));
}

TEST_F(Morning, PrintsOneLineForTheBlocksOfASound) {
  EXPECT_TRUE(matches(run(""), "microphone +VornAudioIn +\\.\\.\\. 109 more of sendAudioData"));
  const std::string every = run("--every-block");
  EXPECT_FALSE(has(every, "more of"));
}

TEST_F(Morning, KeepsTheAccessTokenToItself) {
  const std::string output = run("");
  EXPECT_FALSE(has(output, "secret-access-token"));
  EXPECT_TRUE(has(output, "login(********, ada, true, 3600000ms, music)"));
  EXPECT_TRUE(has(run("--secrets"), "login(secret-access-token, ada"));
}

TEST_F(Morning, TracesUnlessToldOtherwise) {
  run("");
  EXPECT_TRUE(has(content("/tmp/xAppLog.txt"), "VornAudioIn::VornAudioIn("));
  std::filesystem::remove("/tmp/xAppLog.txt");
  run(file("quiet.scenario", "assistant VornDeviceInfo.getVolume\n") + " --no-trace");
  EXPECT_FALSE(std::filesystem::exists("/tmp/xAppLog.txt"));
}

TEST_F(Morning, CreatesTheAdaptersInTheLibrarysLoadOrder) {
  run("");
  EXPECT_TRUE(
      matches(content("/tmp/xAppLog.txt"),
              "VornAudioIn::VornAudioIn.*VornMediaPlayerFactory::VornMediaPlayerFactory.*"
              "VornDeviceCapabilities::VornDeviceCapabilities.*VornEMPAdapterControl::CreateInstance"));
}

TEST_F(Morning, PlaysTheAnswerIntoAWavFile) {
  const std::string out = std::string(kFolder) + "/out.wav";
  run("--out " + out);
  const std::string wav = content(out);
  EXPECT_EQ(wav.substr(0, 4), "RIFF");
  const std::size_t samples = wav.find("data");
  ASSERT_NE(samples, std::string::npos);
  EXPECT_NE(wav.find_first_not_of('\0', samples + 8), std::string::npos);
}

TEST_F(Morning, ShowsTheCodeTheCardTheLightsAndTheCall) {
  const std::string output = run("");
  EXPECT_TRUE(has(output, "and enter AB12CD"));
  EXPECT_TRUE(has(output, "Rain until noon"));
  EXPECT_TRUE(has(output, "listening"));
  EXPECT_TRUE(has(output, "Ringing ..."));
}

// Line by line: the microphone's first buffer may come before startStreamingAudioData() returns, or after.
TEST_F(Morning, IsTheSameEveryTime) { EXPECT_EQ(sortedLines(run("")), sortedLines(run(""))); }

}  // namespace
