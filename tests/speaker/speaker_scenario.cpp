// Scenarios of vorn-speaker: what they can say, and what happens when they cannot be read or expect what is not.

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>

#include "speaker/speaker_program.h"

namespace {

class Scenario : public SpeakerProgram {};

TEST_F(Scenario, MeetsItsExpectations) {
  EXPECT_TRUE(has(play("assistant VornDeviceInfo.getVolume  # on the device's own scale\nexpect 30\n"),
                  "getVolume() = 30"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, EndsWithStatusOneAndSaysWhatWasSeen) {
  const std::string output =
      play("assistant VornDeviceInfo.getVolume\nexpect 31\nassistant VornDeviceInfo.getMuteStatus\n");
  EXPECT_EQ(m_status, 1);
  EXPECT_TRUE(has(output, "test.scenario:2: expected the result 31, saw 30"));
  EXPECT_FALSE(has(output, "getMuteStatus() ="));
}

TEST_F(Scenario, ComplainsOfACallThatDidNotCome) {
  EXPECT_TRUE(has(
      play(
          "firmware VornDeviceInfo.notifyVolumeChanged 40\nexpect call VornDeviceInfo.notifyVolumeChanged 41\n"),
      "expected the call VornDeviceInfo.notifyVolumeChanged 41, saw VornDeviceInfo.notifyVolumeChanged 40"));
  EXPECT_EQ(m_status, 1);
}

TEST_F(Scenario, DropsNewsWhileTheAssistantSideIsAway) {
  play(
      "remove DeviceInfo\nfirmware VornDeviceInfo.notifyVolumeChanged 40\nexpect no call\n"
      "create DeviceInfo\nfirmware VornDeviceInfo.notifyVolumeChanged 40\nexpect call VornDeviceInfo.notifyVolumeChanged 40\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, FindsNoAdapterAfterTheirShutdown) {
  play(
      "remove adapters\nassistant VornDeviceInfo.getVolume\nexpect \"no instance\"\n"
      "firmware VornDeviceInfo.notifyVolumeChanged 4\nexpect call VornDeviceInfo.notifyVolumeChanged\n"
      "create adapters\nassistant VornDeviceInfo.getVolume\nexpect 30\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, ReadsTheTrace) {
  play(
      "firmware VornAppMessaging.SendMessageToxApp a \"b,c\" \"\"\nexpect trace \"receiveAppMessage(a,b,c,)\"\n");
  EXPECT_EQ(m_status, 0);
  EXPECT_TRUE(has(play("expect trace never\n"), "expected a trace line with never, saw"));
}

TEST_F(Scenario, GoesOnWhileTheTraceCannotBeWrittenAndKeepsWhatWas) {
  play(
      "firmware VornAppMessaging.SendMessageToxApp a b c\nremove trace\n"
      "firmware VornAppMessaging.SendMessageToxApp x y z\nexpect call VornAppMessaging.SendMessageToxApp x y z\n"
      "create trace\nexpect trace \"receiveAppMessage(a,b,c)\"\n");
  EXPECT_EQ(m_status, 0);
  EXPECT_FALSE(has(content("/tmp/xAppLog.txt"), "x,y,z"));
  play("remove trace\n");
  EXPECT_TRUE(has(content("/tmp/xAppLog.txt"), "a,b,c"));
}

/// A run takes the trace away, and its host ends it before the trace is put back.
class TraceLeftAway : public Scenario {
 protected:
  void SetUp() override {
    SpeakerProgram::SetUp();
    std::ofstream(kTrace) << " Time: earlier\n";
    setenv("VORN_BAD", "call abort", 1);
    play("remove trace\nassistant VornDeviceInfo.getVolume\n", "--host " VORN_BAD_HOST);
    unsetenv("VORN_BAD");
    ASSERT_TRUE(has(content(kAside), " Time: earlier\n"));
  }

  void TearDown() override {
    std::filesystem::remove_all(kTrace);
    std::filesystem::remove(kAside);
  }

  static constexpr char kTrace[] = "/tmp/xAppLog.txt";
  static constexpr char kAside[] = "/tmp/xAppLog.txt.aside";
};

TEST_F(TraceLeftAway, IsPutBackByTheNextRun) {
  const std::string output = play("firmware VornAppMessaging.SendMessageToxApp a b c\n");
  EXPECT_TRUE(
      has(output,
          "vorn-speaker: /tmp/xAppLog.txt: put back; an earlier run had taken it away and ended early\n"));
  EXPECT_TRUE(matches(content(kTrace), "^ Time: earlier\n.*receiveAppMessage"));
  EXPECT_FALSE(std::filesystem::exists(kAside));
}

TEST_F(TraceLeftAway, StaysWhereSomethingElseIsInTheWay) {
  std::ofstream(std::string(kTrace) + "/file") << "of somebody else";
  EXPECT_TRUE(has(play("assistant VornDeviceInfo.getVolume\n"),
                  "xAppLog.txt: the library cannot write its trace: Is a directory"));
  EXPECT_EQ(content(std::string(kTrace) + "/file"), "of somebody else");
  EXPECT_TRUE(has(content(kAside), " Time: earlier\n"));
}

TEST_F(TraceLeftAway, IsNoFolder) {
  std::filesystem::remove(kAside);
  std::filesystem::create_directory(kAside);
  play("assistant VornDeviceInfo.getVolume\n");
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(std::filesystem::is_directory(kAside));
}

TEST_F(TraceLeftAway, IsNotAnothersFile) {
  if (chown(kAside, 12345, 12345) != 0) GTEST_SKIP() << "needs another user's file, thus root";
  play("assistant VornDeviceInfo.getVolume\n");
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(has(content(kAside), " Time: earlier\n"));
}

TEST_F(TraceLeftAway, StaysAwayWhileARunNeedsItThere) {
  const int folder = open(kTrace, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  play("assistant VornDeviceInfo.getVolume\n");
  close(folder);
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(has(content(kAside), " Time: earlier\n"));
}

TEST_F(Scenario, TakesOneObjectOfTheAssistantSideAwayAndNoOther) {
  play(
      "remove DeviceInfo\nfirmware VornDeviceInfo.notifyVolumeChanged 40\nexpect no call\n"
      "firmware VornAppMessaging.SendMessageToxApp a b c\nexpect call VornAppMessaging.SendMessageToxApp a b c\n"
      "remove all\ncreate DeviceInfo\nfirmware VornDeviceInfo.notifyVolumeChanged 41\n"
      "expect call VornDeviceInfo.notifyVolumeChanged 41\n"
      "firmware VornAppMessaging.SendMessageToxApp a b c\nexpect no call\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, ReadsEveryKindOfValue) {
  play(R"(firmware VornDeviceInfo.notifySystemSettingChanged "two words" "a \"quote\", \\, \x41"
expect call VornDeviceInfo.notifySystemSettingChanged "two words" "a \"quote\", \\, A"
assistant VornDeviceCapabilities.onSetRangeValue 2.5
expect true range 2.5
assistant VornStorage.open
assistant VornStorage.writeKeyValue { b = 2 , "a key"="x=1, y" }
assistant VornStorage.readKeyValue "a key"
expect {"a key"="x=1, y"}
firmware VornAudioIn.sendAudioData [1, -2, 3]
expect heard 3
firmware VornAudioIn.notifyAlexaButtonPress tap 2s
expect call VornAudioIn.notifyAlexaButtonPress tap 2000ms
)");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, AnswersASettingFromTheStateOfThatNameAlone) {
  // A line feed in a value makes no other state of it, nor another line of what is shown.
  EXPECT_TRUE(has(play(R"(
assistant VornDeviceCapabilities.onSetMode picture "x\nchannel 9"
assistant VornDeviceInfo.getSystemSetting channel ""
expect true value=1
)"),
                  "onSetMode(picture, x\\nchannel 9)"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, SaysWhyNothingCanBeRead) {
  EXPECT_TRUE(has(play("assistant VornStorage.readKeyValue city\n"), "not open; call open() first"));
}

TEST_F(Scenario, KeepsWhatItStoredForTheNextRun) {
  play("assistant VornStorage.open\nassistant VornStorage.writeKeyValue {city=Oslo}\n");
  play("assistant VornStorage.open\nassistant VornStorage.readKeyValue city\nexpect {city=Oslo}\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, FailsWhenStrictAndAnOperationIsMissing) {
  EXPECT_TRUE(has(play("assistant VornDeviceInfo.getVolume\n", "--strict"),
                  "saw none of VornAlexaState.alexaStateChanged"));
  EXPECT_EQ(m_status, 1);
}

TEST_F(Scenario, ComparesEveryArgumentOfAnExpectedCall) {
  const std::string call = "firmware VornDeviceInfo.notifySystemSettingChanged mode \"a, b\"\nexpect call ";
  for (const char* same : {"mode \"a, b\"", ""}) {
    play(call + "VornDeviceInfo.notifySystemSettingChanged " + same + "\n");
    EXPECT_EQ(m_status, 0) << same;
  }
  for (const char* other : {"mode b", "other \"a, b\""}) {
    play(call + "VornDeviceInfo.notifySystemSettingChanged " + other + "\n");
    EXPECT_EQ(m_status, 1) << other;
  }
}

TEST_F(Scenario, ComparesArgumentsAsValues) {
  play(
      "firmware VornAudioIn.notifyAlexaButtonPress tap 2s\nexpect call VornAudioIn.notifyAlexaButtonPress tap 2000\n"
      "firmware VornDeviceInfo.notifyMuteChanged on\nexpect call VornDeviceInfo.notifyMuteChanged true\n"
      "firmware VornAudioIn.sendAudioData [1, 2]\nexpect call VornAudioIn.sendAudioData [1, 2]\n");
  EXPECT_EQ(m_status, 0);
  play("firmware VornAudioIn.sendAudioData [1, 2]\nexpect call VornAudioIn.sendAudioData [1, 3]\n");
  EXPECT_EQ(m_status, 1);
  play(
      "firmware VornDeviceInfo.notifyLocaleChange [a, b]\n"
      "expect call VornDeviceInfo.notifyLocaleChange [\"a, b\"]\n");
  EXPECT_EQ(m_status, 1);
}

TEST_F(Scenario, ComplainsOfACallThatCameThoughNoneShould) {
  const std::string output =
      play("assistant VornDeviceInfo.getVolume\nexpect no call VornDeviceInfo.getVolume\n");
  EXPECT_EQ(m_status, 1);
  EXPECT_TRUE(has(output, "expected no call VornDeviceInfo.getVolume, saw VornDeviceInfo.getVolume"));
  play("assistant VornDeviceInfo.getVolume\nexpect no call VornDeviceInfo.getTimezone\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, ComplainsOfSoundThatWasNotHeard) {
  EXPECT_TRUE(has(play("expect heard some\n"), ":1: expected some samples heard, saw 0"));
  EXPECT_EQ(m_status, 1);
  EXPECT_TRUE(has(play("firmware VornAudioIn.sendAudioData [1, 2]\nexpect heard 3\n"),
                  "expected 3 samples heard, saw 2"));
  play("firmware VornAudioIn.sendAudioData [1, 2]\nfirmware VornAudioIn.sendAudioData [1]\nexpect heard 3\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, ReadsTheTraceOfThisRunOnly) {
  std::ofstream("/tmp/xAppLog.txt") << " Time: receiveAppMessage(earlier,,)\n";
  EXPECT_TRUE(has(play("expect trace earlier\n"), "expected a trace line with earlier, saw"));
  EXPECT_EQ(m_status, 1);
  const std::string output =
      play("firmware VornAppMessaging.SendMessageToxApp now a b\nexpect trace (now,\n");
  EXPECT_EQ(m_status, 0);
  EXPECT_FALSE(has(output, "(earlier,"));
}

TEST_F(Scenario, AnswersByTheFlagThatItWasTold) {
  const std::string ask = "\nfirmware VornAppMessaging.SendMessageToxApp a b c\nexpect ";
  play("answer messageAccepted on" + ask + "true\nanswer messageAccepted off" + ask + "false\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, KeepsGoingWhenToldToAndCountsWhatWasNotMet) {
  const std::string output = play(
      "assistant VornDeviceInfo.getVolume\nexpect 1\nexpect 2\nexpect 30\nassistant VornDeviceInfo.getTimezone\n",
      "--keep-going");
  EXPECT_EQ(m_status, 1);
  EXPECT_TRUE(has(output, "test.scenario:2: expected the result 1, saw 30\n"));
  EXPECT_TRUE(has(output, "test.scenario: expectations that were not met: 2\n"));
  EXPECT_TRUE(has(output, "getTimezone() ="));
}

TEST_F(Scenario, CallsFromSeveralThreadsAtOnce) {
  // None of four answers before all four have arrived, so they overlap.
  const std::string output =
      play("together 4 VornStorage.readKeyValue x\nexpect 5\n", "--host " VORN_OWN_HOST);
  for (const char* thread : {"assistant 1", "assistant 2", "assistant 3", "assistant 4"})
    EXPECT_TRUE(has(output, std::string("down  ") + thread)) << thread;
  EXPECT_TRUE(has(output, "saw {together=4}"));
}

TEST_F(Scenario, TellsResultsThatDifferBetweenThreads) {
  EXPECT_TRUE(matches(play("together 2 VornAudioFocus.requestAudioFocus\nexpect true\n"),
                      "expected the result true, saw (true; false|false; true)"));
}

TEST_F(Scenario, MakesCallsThrowUntilTheyAreRestored) {
  play(
      "fail VornDeviceInfo.getVolume \"no dial\"\nassistant VornDeviceInfo.getVolume\nexpect threw no dial\n"
      "restore VornDeviceInfo.getVolume\nassistant VornDeviceInfo.getVolume\nexpect 30\n"
      "fail VornDeviceInfo.notifyVolumeChanged lost\nfirmware VornDeviceInfo.notifyVolumeChanged 3\n"
      "expect threw lost\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Scenario, DelaysCallsUntilTheyAreRestored) {
  const std::string recording = std::string(kFolder) + "/delayed";
  run("record " + recording + " --scenario " +
      file("delayed.scenario",
           "delay VornDeviceInfo.getVolume 50ms\nassistant VornDeviceInfo.getVolume\nexpect 30\n"));
  const std::string text = content(recording);
  const std::size_t at = text.find("\"duration\":");
  ASSERT_NE(at, std::string::npos);
  EXPECT_GE(std::stol(text.substr(at + 11)), 50000);
  const std::string output =
      play("delay VornDeviceInfo.getVolume 3600s\nassistant VornDeviceInfo.getVolume\n", "--watchdog 1");
  EXPECT_TRUE(has(output, "inside VornDeviceInfo.getVolume"));
  EXPECT_EQ(m_status, 3);
}

TEST_F(Scenario, WaitsForACallFromAThreadOfTheHosts) {
  const std::string output = play(
      "assistant VornDeviceInfo.changeAlexaLocale later\n"
      "expect call VornDeviceInfo.notifyLocaleChange later within 60s\n",
      "--host " VORN_OWN_HOST);
  EXPECT_EQ(m_status, 0) << output;
  EXPECT_TRUE(has(play("assistant VornDeviceInfo.getVolume\n"
                       "expect call VornDeviceInfo.notifyLocaleChange within 1ms\n"),
                  "expected the call VornDeviceInfo.notifyLocaleChange, saw VornDeviceInfo.getVolume"));
}

TEST_F(Scenario, CountsWhatWasCalledAndHowManyWereNot) {
  const std::string output = play("assistant VornDeviceInfo.getVolume\n");
  EXPECT_FALSE(has(output, "VornDeviceInfo.getTimezone  "));
  EXPECT_TRUE(matches(output, "Operations that no call reached \\(--all tells them\\) +[0-9]+\n"));
  EXPECT_TRUE(has(play("assistant VornDeviceInfo.getVolume\n", "--all"), "VornDeviceInfo.getTimezone  "));
}

TEST_F(Scenario, ShowsNoControlCharacters) {
  const std::string output = play(
      "section \"a\\x1b[2Jb\"\nassistant VornDeviceInfo.setSystemSetting \"\\x1b[3J\" \"\\x07\"\n"
      "expect \"\\x1b[4J\"\nexpect trace \"\\x1b[5J\"\nfail VornDeviceInfo.getVolume \"\\x1b[6J\"\n"
      "assistant VornDeviceInfo.getVolume\nexpect 3\n",
      "--keep-going");
  EXPECT_EQ(output.find('\x1b'), std::string::npos) << output;
  EXPECT_TRUE(has(output, "\na\\x1b[2Jb\n"));
}

TEST_F(Scenario, IsReadWithCarriageReturnsAndAByteOrderMark) {
  play(
      "\xef\xbb\xbf"
      "assistant VornDeviceInfo.getVolume\rexpect 30\r\nexpect 30\r");
  EXPECT_EQ(m_status, 0);
}

struct Mistake {
  const char* line;
  const char* says;  ///< After the file's name and the line's number.
};

class Mistakes : public SpeakerProgram, public testing::WithParamInterface<Mistake> {};

TEST_P(Mistakes, AreNamedWithTheirPlaceAndNothingIsPlayed) {
  const std::string output =
      play("assistant VornDeviceInfo.getVolume\n" + std::string(GetParam().line) + "\n");
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(has(output, std::string("test.scenario:2:") + GetParam().says));
  EXPECT_FALSE(has(output, "getVolume() ="));
}

const Mistake kMistakes[] = {
    {"asistant VornDeviceInfo.getVolume", "1: expected one of assistant, firmware, "},
    {"assistant", "10: expected an operation such as VornDeviceInfo.getVolume"},
    {"assistant VornDeviceInfo.getVolum",
     "11: expected an operation of the assistant, found VornDeviceInfo.getVolum; did you mean VornDeviceInfo.getVolume?"},
    {"assistant getvolume",
     "11: expected an operation of the assistant, found getvolume; did you mean VornDeviceInfo.getVolume?"},
    {"firmware VornDeviceInfo.getVolume",
     "10: VornDeviceInfo.getVolume is called by the assistant, not by the firmware"},
    {"assistant VornDeviceInfo.getVolume now",
     "36: expected the end of the line after VornDeviceInfo.getVolume, found now"},
    {"firmware VornDeviceInfo.notifyVolumeChanged loud", "45: expected a whole number, found loud"},
    {"firmware VornDeviceInfo.notifyVolumeChanged 99999999999",
     "45: expected a whole number, found 99999999999"},
    {"firmware VornDeviceInfo.notifyVolumeChanged",
     "44: expected volume, a whole number, in VornDeviceInfo.notifyVolumeChanged volume"},
    {"firmware VornDeviceInfo.notifyMuteChanged maybe", "43: expected true or false, found maybe"},
    {"assistant VornStorage.readKeyValue \"city", "36: expected a closing \""},
    {"assistant VornStorage.removeKeyValue [a, b", "38: expected a closing ]"},
    {"assistant VornStorage.writeKeyValue {a}", "39: expected = between a key and its value"},
    {"assistant VornStorage.removeKeyValue a", "38: expected a list such as"},
    {"assistant VornStorage.readKeyValue \"a\\q\"", "38: expected one of the escapes"},
    {"firmware VornAudioIn.notifyAlexaButtonPress tap 1h",
     "49: expected a duration such as 500ms or 2s, found 1h"},
    {"expect", "7: expected the result, or call"},
    {"expect call VornDeviceInfo.getVolum", "13: expected an operation"},
    {"remove Kitchen", "8: expected one of all, DeviceInfo, "},
    {"wait forever", "6: expected one of microphone, found forever"},
};

INSTANTIATE_TEST_SUITE_P(Speaker, Mistakes, testing::ValuesIn(kMistakes));

TEST_F(Scenario, TellsAllOfItsMistakesAtOnce) {
  const std::string output = play("assistant nothing\nfirmware nothing\n");
  EXPECT_TRUE(has(output, "test.scenario:1:11: "));
  EXPECT_TRUE(has(output, "test.scenario:2:10: "));
}

TEST_F(Scenario, ThatIsNotThereIsNamed) {
  EXPECT_TRUE(has(run("/tmp/speaker/none"), "/tmp/speaker/none: cannot be read"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Scenario, RefusesAnOptionThatItDoesNotKnow) {
  run("--loud");
  EXPECT_EQ(m_status, 2);
}

TEST_F(Scenario, RefusesASoundThatItCannotRead) {
  const std::string output = run("--audio " + file("noise.wav", "no sound at all"));
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(has(output, "noise.wav"));
  EXPECT_FALSE(has(output, "The speaker boots"));
}

TEST_F(Scenario, HelpsAndLists) {
  EXPECT_TRUE(has(run("--help"), "expect call ADAPTER.OPERATION"));
  EXPECT_EQ(m_status, 0);
  EXPECT_TRUE(has(run("--list"), "VornStorage.writeKeyValue entries\n      entries: a set such as"));
}

}  // namespace
