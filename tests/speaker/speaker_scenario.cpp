// Scenarios of vorn-speaker: what they can say, and what happens when they cannot be read or are disappointed.

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
