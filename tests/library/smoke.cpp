#include <VornAlexaState.h>
#include <gtest/gtest.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

namespace {

using VornDeviceAbstractionLayer::VornAlexaState;

TEST(Smoke, AStateReachesTheHost) {
  vorn_testing::RecordingHost host;
  VornAlexaState::CreateInstance(host)->alexaStateChanged("LISTENING");
  VornAlexaState::Shutdown();
  EXPECT_EQ(host.recorder->signatures(), std::vector<std::string>{"alexaStateChanged(LISTENING)"});
}

}  // namespace
