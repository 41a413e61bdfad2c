#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornStorage.h>
#include <gtest/gtest.h>
#include <vorn_testing/MemoryHost.h>

#include <climits>
#include <thread>

using namespace VornDeviceAbstractionLayer;
using Entries = std::map<std::string, std::string>;

namespace {

class AMemoryHost : public testing::Test {
 protected:
  ~AMemoryHost() override {
    VornDeviceInfo::Shutdown();
    VornDeviceCapabilities::Shutdown();
    VornStorage::Shutdown();
    VornEMPAdapterControl::Shutdown();
  }

  vorn_testing::MemoryHost host;
  const std::shared_ptr<VornDeviceInfo> info = VornDeviceInfo::CreateInstance(host);
  const std::shared_ptr<VornDeviceCapabilities> capabilities = VornDeviceCapabilities::CreateInstance(host);
  const std::shared_ptr<VornStorage> storage = VornStorage::CreateInstance(host);
  const std::shared_ptr<VornEMPAdapterControl> players = VornEMPAdapterControl::CreateInstance(host);
};

TEST_F(AMemoryHost, ReportsTheVolumeThatADirectiveSet) {
  EXPECT_TRUE(capabilities->onSetVolume(30).first);
  EXPECT_EQ(info->getVolume(), 30);
  capabilities->onAdjustVolume(-10);
  EXPECT_EQ(info->getVolume(), 20);
}

TEST_F(AMemoryHost, ClampsTheVolumeOfAnyDirective) {
  capabilities->onAdjustVolume(INT_MAX);
  EXPECT_EQ(info->getVolume(), 100);
  capabilities->onAdjustVolume(INT_MIN);
  EXPECT_EQ(info->getVolume(), 0);
}

TEST_F(AMemoryHost, ReportsMuteAndLocaleAsTheyWereSet) {
  capabilities->onMute(true);
  info->changeAlexaLocale("de-DE");
  EXPECT_TRUE(info->getMuteStatus());
  EXPECT_EQ(info->getDeviceLocale(), "de-DE");
}

TEST_F(AMemoryHost, KeepsSettingsAndLeavesTheTextAloneForUnknownOnes) {
  std::string value = "untouched";
  EXPECT_FALSE(info->getSystemSetting("mode", value));
  EXPECT_EQ(value, "untouched");
  info->setSystemSetting("mode", "on");
  EXPECT_TRUE(info->getSystemSetting("mode", value) && value == "on");
}

TEST_F(AMemoryHost, StoresReplacesAndRemovesEntries) {
  storage->writeKeyValue({{"a", "1"}, {"b", "2"}});
  storage->writeKeyValue({{"b", "3"}});
  storage->removeKeyValue({"a", "none"});
  EXPECT_TRUE(storage->readKeyValue("a").empty());
  EXPECT_EQ(storage->readKeyValue("b"), (Entries{{"b", "3"}}));
  storage->clear();
  EXPECT_TRUE(host.state().store.empty());
}

TEST_F(AMemoryHost, TakesChangesFromTheTest) {
  host.change([](vorn_testing::MemoryHost::State& state) {
    state.information["brand"] = "Vorn";
    state.microphone = false;
  });
  EXPECT_EQ(info->getDeviceInformation(), (Entries{{"brand", "Vorn"}}));
  EXPECT_FALSE(host.isMicrophoneAvailable() || host.startStreamingAudioData());
}

TEST_F(AMemoryHost, KeepsPlayersApart) {
  players->launchAndPlay("song", std::chrono::milliseconds(5), "kitchen");
  players->pause("kitchen");
  players->setShuffleOn("bath");
  EXPECT_EQ(players->getPlaybackState("kitchen"), "PAUSED");
  EXPECT_EQ(players->getPlaybackState("bath"), "IDLE");
  EXPECT_TRUE(host.player.state("bath").shuffle && !host.player.state("kitchen").shuffle);
}

TEST_F(AMemoryHost, LosesNothingToThreads) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      for (int i = 0; i < 100; ++i) storage->writeKeyValue({{std::to_string(thread * 100 + i), "x"}});
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(host.state().store.size(), 400U);
}

}  // namespace
