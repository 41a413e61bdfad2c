// vorn-speaker with a host of somebody else, who may throw, crash and hang.

#include "speaker/speaker_program.h"

namespace {

class OwnHost : public SpeakerProgram {
 protected:
  std::string playOnIt(const std::string& lines, const std::string& options = "") {
    return play(lines, "--host " VORN_OWN_HOST " " + options);
  }
};

TEST_F(OwnHost, AnswersInPlaceOfTheSimulatedOne) {
  EXPECT_TRUE(has(playOnIt("assistant VornDeviceInfo.getVolume\nexpect 7\n"), "getVolume() = 7"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(OwnHost, IsDestroyedAfterEverythingElse) {
  const std::string output = playOnIt("assistant VornDeviceInfo.getVolume\n");
  EXPECT_TRUE(matches(output, "Together[^\n]*\nthe own host is destroyed\n$"));
}

TEST_F(OwnHost, MayThrowAndTheScenarioGoesOn) {
  const std::string output = playOnIt(
      "assistant VornDeviceInfo.getTimezone\nexpect threw no clock\n"
      "assistant VornDeviceInfo.getDeviceLocale\nassistant VornDeviceInfo.getVolume\nexpect 7\n");
  EXPECT_EQ(m_status, 0);
  EXPECT_TRUE(has(output, "getTimezone() threw no clock\n"));
  EXPECT_TRUE(has(output, "getDeviceLocale() threw no std::exception\n"));
  EXPECT_TRUE(has(output, "VornDeviceInfo.getDeviceLocale gave threw what is no std::exception"));
}

TEST_F(OwnHost, IsRecordedWithWhatItThrew) {
  const std::string recording = std::string(kFolder) + "/thrown";
  run("record " + recording + " --host " VORN_OWN_HOST " --scenario " +
      file("thrown.scenario",
           "assistant VornDeviceInfo.getTimezone\nassistant VornDeviceInfo.getDeviceLocale\n"
           "assistant VornDeviceInfo.getVolume\n"));
  const std::string text = content(recording);
  EXPECT_TRUE(has(text, "\"exception\":\"no clock\"}"));
  EXPECT_TRUE(has(text, "\"exception\":\"no std::exception\"}"));
  EXPECT_TRUE(has(text, "\"exception\":null}"));
  EXPECT_TRUE(
      has(run("replay " + recording + " --host " VORN_OWN_HOST), "3 calls, all answered as recorded."));
  EXPECT_TRUE(has(run("replay " + recording), "recorded  threw no clock\n"));
  EXPECT_EQ(m_status, 1);
}

TEST_F(OwnHost, ThatCrashesIsNamedWithOperationAndStacks) {
  const std::string output = playOnIt("assistant VornDeviceInfo.getMuteStatus\n");
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(
      has(output, "The host crashed: Aborted\n\nThread assistant, inside VornDeviceInfo.getMuteStatus\n"));
  EXPECT_TRUE(has(output, "Thread firmware"));
  EXPECT_TRUE(has(output, "Thread main"));
}

TEST_F(OwnHost, MaySetALocaleWithADecimalComma) {
  if (std::system(
          "mkdir -p /tmp/locales && localedef -i de_DE -f UTF-8 /tmp/locales/de_DE.UTF-8 2>/dev/null") != 0)
    GTEST_SKIP() << "the package locales is not here";
  setenv("LOCPATH", "/tmp/locales", 1);
  const std::string recording = std::string(kFolder) + "/comma";
  run("record " + recording + " --host " VORN_OWN_HOST " --scenario " +
      file("comma.scenario", "assistant VornDeviceCapabilities.onSetRangeValue 2.5\nexpect true\n"));
  EXPECT_EQ(m_status, 0);
  EXPECT_TRUE(has(content(recording), "\"arguments\":[\"2.5\"]"));
  run("replay " + recording + " --host " VORN_OWN_HOST);
  EXPECT_EQ(m_status, 0);
}

TEST_F(OwnHost, WithoutAnExternalPlayerIsNamed) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer ends the process at the null pointer, before it crashes";
#endif
  EXPECT_TRUE(
      has(playOnIt("assistant VornEMPAdapterControl.nextTrack x\n"), "The host crashed: Segmentation fault"));
  EXPECT_EQ(m_status, 3);
}

TEST_F(OwnHost, ThatDoesNotReturnIsNamedWithOperationAndStacks) {
  const std::string output = playOnIt("assistant VornStorage.open\n", "--watchdog 1");
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(has(output, "No answer on the thread assistant within 1 s."));
  EXPECT_TRUE(has(output, "Thread assistant, inside VornStorage.open\n"));
}

TEST_F(OwnHost, AnswersAReplayDifferently) {
  const std::string recording = std::string(kFolder) + "/recording";
  run("record " + recording + " --scenario " + file("a.scenario", "assistant VornDeviceInfo.getVolume\n"));
  EXPECT_TRUE(has(run("replay " + recording + " --host " VORN_OWN_HOST), "recorded  30\n  now       7\n"));
  EXPECT_EQ(m_status, 1);
}

TEST_F(OwnHost, ThatIsNoneIsRefused) {
  EXPECT_TRUE(has(run("--host /tmp/speaker/none.so"), "/tmp/speaker/none.so cannot be loaded"));
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(has(run("--host " VORN_LIBRARY), "does not define vornCreateHost()"));
}

}  // namespace
