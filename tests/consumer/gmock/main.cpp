#include <VornDeviceInfo.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vorn_testing/GmockHost.h>
#include <vorn_testing/GoldenRecording.h>
#include <vorn_testing/MemoryHost.h>
#include <vorn_testing/RecordingHost.h>

#include <cstdlib>

TEST(MyClient, ReadsTheVolumeOnce) {
  testing::StrictMock<vorn_testing::GmockHost> host;
  EXPECT_CALL(host, getVolume()).WillOnce(testing::Return(37));
  EXPECT_EQ(VornDeviceAbstractionLayer::VornDeviceInfo::CreateInstance(host)->getVolume(), 37);
  VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown();
}

TEST(MyClient, MakesTheCallsOfTheRecording) {
  vorn_testing::MemoryHost mine;
  vorn_testing::RecordingHost host(mine);
  const vorn_testing::RecordedCalls calls(host.recorder);
  VornDeviceAbstractionLayer::VornDeviceInfo::CreateInstance(host)->getVolume();
  VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown();
  EXPECT_FALSE(vorn_testing::matchesRecording(calls, "/tmp/none.jsonl"));
  setenv("VORN_UPDATE_RECORDINGS", "1", 1);
  EXPECT_TRUE(vorn_testing::matchesRecording(calls, "/tmp/golden.jsonl"));
  unsetenv("VORN_UPDATE_RECORDINGS");
  EXPECT_TRUE(vorn_testing::matchesRecording(calls, "/tmp/golden.jsonl"));
}
