// Recordings of vorn-speaker: written, replayed and reported.

#include <nlohmann/json.hpp>
#include <sstream>

#include "speaker/speaker_program.h"

namespace {

class Recordings : public SpeakerProgram {
 protected:
  /// Records a scenario of these lines.
  std::string record(const std::string& lines, const std::string& options = "") {
    run("record " + m_path + " --scenario " + file("test.scenario", lines) + " " + options);
    return content(m_path);
  }

  std::vector<nlohmann::json> calls() {
    std::vector<nlohmann::json> all;
    std::istringstream lines(content(m_path));
    for (std::string line; std::getline(lines, line);) all.push_back(nlohmann::json::parse(line));
    all.erase(all.begin());
    return all;
  }

  const std::string m_path = std::string(kFolder) + "/recording";
};

TEST_F(Recordings, HoldOneObjectALineUnderAVersion) {
  const std::string text = record("assistant VornDeviceInfo.getVolume\n");
  EXPECT_TRUE(matches(
      text,
      "^[{]\"recording\":\"vorn-speaker\",\"version\":2,\"started\":\"[-0-9]{10}T[:0-9]{8}[.][0-9]{6}Z\","
      "\"writer\":\"vorn-speaker " VORN_VERSION "\"[}]\n[{]\"call\":1,"));
  const nlohmann::json call = calls().at(0);
  EXPECT_EQ(call["operation"], "getVolume");
  EXPECT_EQ(call["result"], "30");
  EXPECT_EQ(call["thread"], "assistant");
}

TEST_F(Recordings, TellWhatTheHostTook) {
  record("assistant VornDeviceInfo.getVolume\n");
  const nlohmann::json call = calls().at(0);
  EXPECT_LE(call["waited"].get<int>() + call["host"].get<int>(), call["duration"]);
  EXPECT_EQ(call["reached"], true);
}

TEST_F(Recordings, TellHowLongTheAdaptersLockWasWaitedFor) {
  record("together 2 VornDeviceInfo.getVolume\nfirmware VornDeviceInfo.notifyVolumeChanged 3\n");
  const std::vector<nlohmann::json> all = calls();
  EXPECT_TRUE(all.at(0)["waited"].is_number() && all.at(1)["waited"].is_number());
  EXPECT_EQ(all.at(2)["waited"], 0);
}

TEST_F(Recordings, NumberThreadsInTheOrderInWhichTheyWereSeen) {
  record(
      "assistant VornDeviceInfo.getVolume\nfirmware VornDeviceInfo.notifyVolumeChanged 3\n"
      "assistant VornDeviceInfo.getVolume\n");
  const std::vector<nlohmann::json> all = calls();
  EXPECT_EQ(all[1]["threadNumber"], all[0]["threadNumber"].get<int>() + 1);
  EXPECT_EQ(all[2]["threadNumber"], all[0]["threadNumber"]);
}

TEST_F(Recordings, TellDirectionPlaceAndNesting) {
  record("assistant VornDeviceCapabilities.onSetVolume 20\n");
  const std::vector<nlohmann::json> all = calls();
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0]["direction"], "up");
  EXPECT_EQ(all[0]["inside"], 1);
  EXPECT_EQ(all[1]["call"], 1);
  EXPECT_EQ(all[1]["slot"], 61);
}

TEST_F(Recordings, OfAMorningAreAnsweredTheSameByTheirOwnHost) {
  run("record " + m_path);
  ASSERT_EQ(m_status, 0);
  EXPECT_TRUE(has(run("replay " + m_path), "87 calls, all answered as recorded."));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Recordings, CarryAwkwardValuesUnharmed) {
  const std::string lines = R"(assistant VornStorage.open
assistant VornStorage.writeKeyValue {"a, b"="c=d", "\x01\"#"="", plain="Grüße\n"}
assistant VornStorage.readKeyValue "a, b"
expect {"a, b"="c=d"}
assistant VornStorage.removeKeyValue ["a, b", "", "]"]
assistant VornStorage.readKeyValue "a, b"
assistant VornStorage.readKeyValue plain
assistant VornDeviceInfo.getSystemSetting friendlyName
)";
  record(lines);
  ASSERT_EQ(m_status, 0);
  EXPECT_EQ(calls().at(1)["arguments"][0], R"({"\x01\"#"="", "a, b"="c=d", plain="Grüße\n"})");
  EXPECT_EQ(calls().at(6)["written"][0], "value=Kitchen");
  run("replay " + m_path);
  EXPECT_EQ(m_status, 0);
}

TEST_F(Recordings, ThatDifferAreToldWithWhatCameBefore) {
  std::string text = record("assistant VornDeviceInfo.getTimezone\nassistant VornDeviceInfo.getVolume\n");
  text.replace(text.find("\"result\":\"30\""), 13, "\"result\":\"31\"");
  const std::string output = run("replay " + file("changed", text));
  EXPECT_EQ(m_status, 1);
  EXPECT_TRUE(
      has(output,
          "Call 2 is answered differently:\n  before    VornDeviceInfo.getTimezone = America/Vancouver\n"
          "  called    VornDeviceInfo.getVolume\n  recorded  31\n  now       30\n"));
}

TEST_F(Recordings, MaskSecretsUnlessAskedOtherwise) {
  const std::string lines =
      "assistant VornEMPAdapterControl.login abc-token ada true 1s x\n"
      "assistant VornStorage.writeKeyValue {apiToken=hidden-value}\n"
      "firmware VornDeviceInfo.notifySystemSettingChanged wifiPassword hidden-value\n";
  const std::string masked = record(lines);
  EXPECT_FALSE(has(masked, "abc-token"));
  EXPECT_FALSE(has(masked, "hidden-value"));
  const std::string clear = record(lines, "--secrets");
  EXPECT_TRUE(has(clear, "abc-token"));
  EXPECT_TRUE(has(clear, "{apiToken=hidden-value}"));
}

TEST_F(Recordings, AreReportedWithCountsAndDurations) {
  record(
      "assistant VornDeviceInfo.getVolume\nfirmware VornDeviceInfo.notifyVolumeChanged 3\nassistant VornDeviceInfo.getVolume\n");
  const std::string output = run("report " + m_path);
  EXPECT_TRUE(has(output, "|----------------->|  VornDeviceInfo.getVolume = 30\n"));
  EXPECT_TRUE(has(output, "|<-----------------|  VornDeviceInfo.notifyVolumeChanged 3\n"));
  EXPECT_TRUE(matches(output, "down  VornDeviceInfo.getVolume +2( +[0-9]+){5}\n"));
}

TEST_F(Recordings, ThatCannotBeReadAreNamedWithTheLine) {
  EXPECT_TRUE(
      has(run("replay " + file("broken", "{\"recording\":\"vorn-speaker\",\"version\":1}\n{\"call\":1}\n")),
          "broken:2: expected a line of a recording"));
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(has(run("report " + file("new", "{\"recording\":\"vorn-speaker\",\"version\":3}\n")),
                  "new:1: expected a recording of version 1 to 2"));
  EXPECT_TRUE(has(run("report /tmp/speaker/none"), "cannot be read: No such file or directory"));
}

TEST_F(Recordings, LeaveTheScenarioAlone) {
  const std::string scenario = file("mine.scenario", "assistant VornDeviceInfo.getVolume\n");
  EXPECT_TRUE(has(run("record " + scenario + " --scenario " + scenario),
                  "is the scenario, and the recording would replace it"));
  EXPECT_EQ(m_status, 2);
  EXPECT_EQ(content(scenario), "assistant VornDeviceInfo.getVolume\n");
}

TEST_F(Recordings, OnAFullDiskAreAFailure) {
  const std::string output =
      run("record /dev/full --scenario " + file("a.scenario", "assistant VornDeviceInfo.getVolume\n"));
  EXPECT_EQ(m_status, 1);
  EXPECT_TRUE(has(output, "/dev/full cannot be written: No space left on device"));
}

TEST_F(Recordings, WithNothingToPlayAreRefused) {
  record("firmware VornDeviceInfo.notifyVolumeChanged 3\n");
  EXPECT_TRUE(has(run("replay " + m_path), "expected calls of the assistant client, found none to play"));
  EXPECT_EQ(m_status, 2);
  run("replay " + file("empty", "{\"recording\":\"vorn-speaker\",\"version\":1}\n"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Recordings, ThatNoHostCanAnswerAreToldWithTheLine) {
  std::string text = record("assistant VornDeviceInfo.getTimezone\nassistant VornDeviceInfo.getVolume\n");
  std::string other = text;
  other.replace(other.find("\"operation\":\"getVolume\""), 23, "\"operation\":\"getVolumn\"");
  EXPECT_TRUE(has(run("replay " + file("other", other)), "other:3: expected an operation of the slot 13"));
  EXPECT_EQ(m_status, 2);
  text.replace(text.rfind("\"arguments\":[]"), 14, "\"arguments\":[\"x\"]");
  EXPECT_TRUE(has(run("replay " + file("more", text)), "more:3: expected the end of the line after"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Recordings, ThatAreCutArePlayedAsFarAsTheyGo) {
  const std::string text =
      record("assistant VornDeviceInfo.getTimezone\nassistant VornDeviceInfo.getVolume\n");
  const std::string output = run("replay " + file("cut", text.substr(0, text.size() - 9)));
  EXPECT_TRUE(has(output, "cut:3: left out, the line is cut\n1 call, all answered as recorded."));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Recordings, AreReportedWhereNothingCanBeWritten) {
  record("assistant VornDeviceInfo.getVolume\n");
  std::filesystem::remove_all(std::string(kFolder) + "/state");
  file("state", "no folder");
  EXPECT_TRUE(has(run("report " + m_path), "VornDeviceInfo.getVolume = 30"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Recordings, ArePlayedWithoutWhatTheHostCalledItself) {
  std::string text = record("assistant VornDeviceInfo.getTimezone\nassistant VornDeviceInfo.getVolume\n");
  text.replace(text.rfind("\"inside\":0"), 10, "\"inside\":1");
  EXPECT_TRUE(has(run("replay " + file("inner", text)), "1 call, all answered as recorded."));
}

TEST_F(Recordings, DifferWithTheirPlace) {
  std::string text = record("assistant VornDeviceInfo.getVolume\n");
  text.replace(text.find("\"result\":\"30\""), 13, "\"result\":\"31\"");
  EXPECT_TRUE(has(run("replay " + file("changed", text)), "changed:2: Call 1 is answered differently:\n"));
}

TEST_F(Recordings, OfBytesThatAreNoTextAreAnsweredTheSame) {
  record(
      "assistant VornStorage.open\nassistant VornStorage.writeKeyValue {a=\"\\xff\"}\n"
      "assistant VornStorage.readKeyValue a\n");
  run("replay " + m_path);
  EXPECT_EQ(m_status, 0);
}

}  // namespace
