#include <VornDeviceInfo.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vorn_testing/GmockHost.h>

TEST(MyClient, ReadsTheVolumeOnce) {
  testing::StrictMock<vorn_testing::GmockHost> host;
  EXPECT_CALL(host, getVolume()).WillOnce(testing::Return(37));
  EXPECT_EQ(VornDeviceAbstractionLayer::VornDeviceInfo::CreateInstance(host)->getVolume(), 37);
  VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown();
}
