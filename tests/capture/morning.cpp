// The speaker's morning: what vorn-capture records of it, and what the speaker records by itself.

#include <algorithm>
#include <map>

#include "capture/capture_program.h"

namespace {

class Morning : public CaptureProgram {
 protected:
  typedef std::map<std::string, std::vector<Json>> ByThread;

  /// Both in one run.
  void SetUp() override {
    CaptureProgram::SetUp();
    run(VORN_CAPTURE_PROGRAM " -o " + m_path + " " VORN_SPEAKER_PROGRAM " --state " + kFolder +
        "/state record " + m_own);
    ASSERT_EQ(m_status, 0);
  }

  /// What reached the other side, call by call; without sound, and without the speaker's own words for players.
  ByThread reached(const std::string& path) {
    static const char* const kInterfaces[] = {"VornDALImplIF", "VornEMPAdapterIF", "AppMessaging",
                                              "AudioIn",       "CommsManager",     "DeviceCapabilities",
                                              "DeviceInfo",    "GUIOutput",        "OOBE"};
    std::vector<Json> all = linesWith(path, "operation");
    std::sort(all.begin(), all.end(),
              [](const Json& left, const Json& right) { return left["call"] < right["call"]; });
    ByThread found;
    for (const Json& call : all) {
      const bool other = std::find(std::begin(kInterfaces), std::end(kInterfaces), call["interface"]) ==
                         std::end(kInterfaces);
      if (other || call["operation"] == "sendAudioData" || call.value("reached", true) == false) continue;
      Json told;
      for (const char* field : {"adapter", "operation", "interface", "slot", "inside", "arguments", "result",
                                "written", "exception", "direction"})
        told[field] = call[field];
      // The host answers nothing there, the adapter that it has sent the message.
      if (told["operation"] == "sendAppMessage") told["result"] = "";
      found[call["thread"]].push_back(told);
    }
    return found;
  }

  const std::string m_own = std::string(kFolder) + "/own";
};

TEST_F(Morning, IsRecordedCallByCallAsTheSpeakerDoes) {
  const ByThread captured = reached(m_path);
  const ByThread own = reached(m_own);
  ASSERT_EQ(captured.size(), own.size());
  for (const auto& [thread, calls] : own) {
    ASSERT_EQ(captured.count(thread), 1U) << thread;
    EXPECT_EQ(captured.at(thread), calls) << thread;
  }
  EXPECT_GT(own.at("assistant").size(), 100U);
}

TEST_F(Morning, TellsForEachSideWhoWasReachedAndWhatWasWaitedFor) {
  long up = 0, players = 0;
  for (const Json& call : linesWith("operation")) {
    const bool isUp = call["direction"] == "up", isPlayers = call["interface"] == "VornEMPAdapterIF";
    up += isUp, players += isPlayers;
    if (isUp || isPlayers) {
      EXPECT_TRUE(call["waited"].is_number() && call["host"].is_number() && call["reached"] == true) << call;
    }
  }
  EXPECT_TRUE(up > 10 && players > 10);
  EXPECT_EQ(calls("createDalMediaPlayer").at(0)["reached"], true);
}

TEST_F(Morning, IsReplayedWithoutADifference) {
  EXPECT_TRUE(has(run(std::string(VORN_SPEAKER_PROGRAM " --state ") + kFolder + "/other replay " + m_path),
                  " calls, all answered as recorded.\n"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Morning, TellsAsManyBlocksOfSoundAsWereDelivered) {
  long blocks = 0;
  for (const Json& line : linesWith("sound")) blocks += line["blocks"].get<long>();
  EXPECT_EQ(static_cast<std::size_t>(blocks), calls(m_own, "sendAudioData").size());
  EXPECT_EQ(calls("sendData").size(), calls(m_own, "sendData").size());
}

}  // namespace
