// Every notification takes the assistant-side object for the length of one call and leaves its reference
// count as it was, whether the call returns or throws. The audio path, which keeps its object, is apart.

#include <VornAppMessaging.h>
#include <VornAudioIn.h>
#include <VornCommsManager.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornOOBE.h>
#include <gtest/gtest.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/NullHost.h>

#include <functional>
#include <ostream>
#include <stdexcept>

namespace {

using namespace VornDeviceAbstractionLayer;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;
using Locales = std::vector<std::string>;

vorn_testing::NullHost g_host;

struct Notification {
  const char* name;
  FakeAssistant::Area area;
  std::function<void()> send;
};

std::ostream& operator<<(std::ostream& stream, const Notification& notification) {
  return stream << notification.name;
}

const Notification kNotifications[] = {
    {"Volume", FakeAssistant::kDeviceInfo, [] { VornDeviceInfo(g_host).notifyVolumeChanged(1); }},
    {"Mute", FakeAssistant::kDeviceInfo, [] { VornDeviceInfo(g_host).notifyMuteChanged(true); }},
    {"HandsFree", FakeAssistant::kDeviceInfo,
     [] { VornDeviceInfo(g_host).notifyHandsfreeStateChanged(true); }},
    {"Microphone", FakeAssistant::kDeviceInfo,
     [] { VornDeviceInfo(g_host).notifyMicrophoneAvailabilityChanged("on"); }},
    {"Setting", FakeAssistant::kDeviceInfo,
     [] { VornDeviceInfo(g_host).notifySystemSettingChanged("key", "value"); }},
    {"Locale", FakeAssistant::kDeviceInfo,
     [] { VornDeviceInfo(g_host).notifyLocaleChange(std::string("en-US")); }},
    {"Locales", FakeAssistant::kDeviceInfo,
     [] {
       VornDeviceInfo(g_host).notifyLocaleChange(Locales{"en-US", "en-US"});
     }},
    {"Network", FakeAssistant::kDeviceInfo,
     [] { VornDeviceInfo(g_host).notifyNetworkConnectionChanged("up"); }},
    {"FriendlyName", FakeAssistant::kDeviceCapabilities,
     [] { VornDeviceCapabilities(g_host).notifyFriendlyNameChange("kitchen"); }},
    {"Association", FakeAssistant::kDeviceCapabilities,
     [] { VornDeviceCapabilities(g_host).notifyUpdatedAssociation("a", "b"); }},
    {"PlaybackAction", FakeAssistant::kGUIOutput,
     [] { VornGUIOutput(g_host).notifyPlaybackControllerAction("PLAY"); }},
    {"SetupBegun", FakeAssistant::kOOBE, [] { VornOOBE(g_host).notifyOOBEInitiated(); }},
    {"SetupCancelled", FakeAssistant::kOOBE, [] { VornOOBE(g_host).notifyOOBECancelled(); }},
    {"AuthStatus", FakeAssistant::kOOBE, [] { VornOOBE(g_host).getAlexaAuthStatus(); }},
    {"ButtonPress", FakeAssistant::kAudioIn,
     [] { VornAudioIn(g_host).notifyAlexaButtonPress("any", std::chrono::milliseconds(1)); }},
    {"ButtonReleased", FakeAssistant::kAudioIn, [] { VornAudioIn(g_host).notifyAlexaButtonReleased(); }},
    {"AppMessage", FakeAssistant::kAppMessaging,
     [] { VornAppMessaging(g_host).SendMessageToxApp("a", "b", "c"); }},
    {"CallAction", FakeAssistant::kCommsManager, [] { VornCommsManager(g_host).notifyCallAction({}); }},
};

class Notifications : public testing::TestWithParam<Notification> {
 protected:
  long references() const { return FakeAssistant::references(GetParam().area); }

  FakeAssistant assistant;
};

TEST_P(Notifications, HoldTheAssistantDuringTheCallOnly) {
  long during = -1;
  assistant.recorder->onCall([&](const Call&) { during = references(); });
  GetParam().send();
  EXPECT_EQ(during, 1);
  EXPECT_EQ(references(), 0);
}

TEST_P(Notifications, LetGoOfTheAssistantWhenItThrows) {
  assistant.recorder->onCall([](const Call&) { throw std::runtime_error("refused"); });
  EXPECT_THROW(GetParam().send(), std::runtime_error);
  EXPECT_EQ(references(), 0);
}

TEST_P(Notifications, KeepTheAssistantAliveWhenItGoesDuringTheCall) {
  assistant.recorder->onCall([&](const Call&) { assistant.remove(GetParam().area); });
  EXPECT_NO_THROW(GetParam().send());
  EXPECT_EQ(assistant.recorder->calls().size(), 1U);
}

TEST_P(Notifications, GoToTheObjectThatIsThereNow) {
  GetParam().send();
  assistant.remove(GetParam().area);
  GetParam().send();
  EXPECT_EQ(assistant.recorder->calls().size(), 1U);
  assistant.create(GetParam().area);
  GetParam().send();
  EXPECT_EQ(assistant.recorder->calls().size(), 2U);
}

TEST_P(Notifications, AreDroppedWithoutAnAssistant) {
  assistant.remove(GetParam().area);
  EXPECT_NO_THROW(GetParam().send());
  EXPECT_TRUE(assistant.recorder->calls().empty());
}

INSTANTIATE_TEST_SUITE_P(, Notifications, testing::ValuesIn(kNotifications),
                         testing::PrintToStringParamName());

}  // namespace
