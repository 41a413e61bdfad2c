// The stand-in assistant side: what its objects record, what they answer, and how long they live.

#include <DeviceAbstractionLayer/AppMessaging.h>
#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/CommsManager.h>
#include <DeviceAbstractionLayer/DeviceCapabilities.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/GUIOutput.h>
#include <DeviceAbstractionLayer/OOBE.h>
#include <gtest/gtest.h>
#include <vorn_testing/FakeAssistant.h>

#include <array>

namespace {

using namespace DeviceAbstractionLayer;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;
using Texts = std::vector<std::string>;

/// Whether an area has an object.
std::array<bool, FakeAssistant::kAreas> present() {
  return {DeviceInfo::getInstance() != nullptr,  DeviceCapabilities::getInstance() != nullptr,
          GUIOutput::getInstance() != nullptr,   OOBE::getInstance() != nullptr,
          AudioIn::getInstance() != nullptr,     AppMessaging::getInstance() != nullptr,
          CommsManager::getInstance() != nullptr};
}

/// Keeps an area's object, whatever its class.
std::shared_ptr<void> objectOf(int area) {
  switch (area) {
    case FakeAssistant::kDeviceInfo:
      return DeviceInfo::getInstance();
    case FakeAssistant::kDeviceCapabilities:
      return DeviceCapabilities::getInstance();
    case FakeAssistant::kGUIOutput:
      return GUIOutput::getInstance();
    case FakeAssistant::kOOBE:
      return OOBE::getInstance();
    case FakeAssistant::kAudioIn:
      return AudioIn::getInstance();
    case FakeAssistant::kAppMessaging:
      return AppMessaging::getInstance();
  }
  return CommsManager::getInstance();
}

struct Row {
  FakeAssistant::Area area;
  const char* target;
  int slot;
  const char* signature;
  const char* result;
  std::string (*act)();  ///< Calls it and tells what it answered.
};

std::string nothing() { return ""; }
std::string told(bool answer) { return answer ? "true" : "false"; }

const Row kRows[] = {
    {FakeAssistant::kDeviceInfo, "DeviceInfo", 33, "notifySystemSettingChanged(a, b)", "",
     [] { return DeviceInfo::getInstance()->notifySystemSettingChanged("a", "b"), nothing(); }},
    {FakeAssistant::kDeviceInfo, "DeviceInfo", 34, "notifyLocaleChange(de-DE)", "",
     [] { return DeviceInfo::getInstance()->notifyLocaleChange(std::string("de-DE")), nothing(); }},
    {FakeAssistant::kDeviceInfo, "DeviceInfo", 35, "notifyLocaleChange([de-DE, en-US])", "",
     [] {
       return DeviceInfo::getInstance()->notifyLocaleChange(Texts{"de-DE", "en-US"}), nothing();
     }},
    {FakeAssistant::kDeviceInfo, "DeviceInfo", 37, "notifyNetworkConnectionChanged(up)", "",
     [] { return DeviceInfo::getInstance()->notifyNetworkConnectionChanged("up"), nothing(); }},
    {FakeAssistant::kDeviceInfo, "DeviceInfo", 38, "notifyMicrophoneAvailabilityChanged(on)", "",
     [] { return DeviceInfo::getInstance()->notifyMicrophoneAvailabilityChanged("on"), nothing(); }},
    {FakeAssistant::kDeviceInfo, "DeviceInfo", 41, "notifyVolumeChanged(7)", "",
     [] { return DeviceInfo::getInstance()->notifyVolumeChanged(7), nothing(); }},
    {FakeAssistant::kDeviceInfo, "DeviceInfo", 42, "notifyMuteChanged(true)", "",
     [] { return DeviceInfo::getInstance()->notifyMuteChanged(true), nothing(); }},
    {FakeAssistant::kDeviceInfo, "DeviceInfo", 47, "notifyHandsfreeStateChanged(false)", "",
     [] { return DeviceInfo::getInstance()->notifyHandsfreeStateChanged(false), nothing(); }},
    {FakeAssistant::kDeviceCapabilities, "DeviceCapabilities", 30, "notifyUpdatedAssociation(a, b)", "",
     [] { return DeviceCapabilities::getInstance()->notifyUpdatedAssociation("a", "b"), nothing(); }},
    {FakeAssistant::kDeviceCapabilities, "DeviceCapabilities", 39, "notifyFriendlyNameChange(a)", "",
     [] { return DeviceCapabilities::getInstance()->notifyFriendlyNameChange("a"), nothing(); }},
    {FakeAssistant::kGUIOutput, "GUIOutput", 5, "notifyPlaybackControllerAction(PLAY)", "true",
     [] { return told(GUIOutput::getInstance()->notifyPlaybackControllerAction("PLAY")); }},
    {FakeAssistant::kOOBE, "OOBE", 4, "notifyOOBEInitiated()", "",
     [] { return OOBE::getInstance()->notifyOOBEInitiated(), nothing(); }},
    {FakeAssistant::kOOBE, "OOBE", 6, "notifyOOBECancelled()", "",
     [] { return OOBE::getInstance()->notifyOOBECancelled(), nothing(); }},
    {FakeAssistant::kOOBE, "OOBE", 11, "getAlexaAuthStatus()", "AUTHORIZED",
     [] { return OOBE::getInstance()->getAlexaAuthStatus(); }},
    {FakeAssistant::kAudioIn, "AudioIn", 7, "notifyAlexaButtonPress(TAP, 5ms)", "",
     [] {
       return AudioIn::getInstance()->notifyAlexaButtonPress("TAP", std::chrono::milliseconds(5)), nothing();
     }},
    {FakeAssistant::kAudioIn, "AudioIn", 8, "notifyAlexaButtonReleased()", "",
     [] { return AudioIn::getInstance()->notifyAlexaButtonReleased(), nothing(); }},
    {FakeAssistant::kAudioIn, "AudioIn", 11, "sendAudioData([3 samples])", "",
     [] {
       std::vector<short> samples(3);
       return AudioIn::getInstance()->sendAudioData(samples), nothing();
     }},
    {FakeAssistant::kAppMessaging, "AppMessaging", 1, "SendMessageToxApp(a, b, c)", "true",
     [] { return told(AppMessaging::getInstance()->SendMessageToxApp("a", "b", "c")); }},
    {FakeAssistant::kCommsManager, "CommsManager", 1, "notifyCallAction(2)", "",
     [] {
       CommsManager::getInstance()->notifyCallAction(static_cast<CommsControllerInterface::CallAction>(2));
       return nothing();
     }},
};

class OperationsUp : public testing::TestWithParam<Row> {};

TEST_P(OperationsUp, AreRecordedOnTheirObjectAndAnswered) {
  const Row& row = GetParam();
  const FakeAssistant assistant;
  EXPECT_EQ(row.act(), row.result);
  ASSERT_EQ(assistant.recorder->calls().size(), 1U);
  const Call call = assistant.recorder->calls()[0];
  EXPECT_EQ(call.target + " " + std::to_string(call.slot) + " " + call.signature() + " " + call.result,
            row.target + (" " + std::to_string(row.slot)) + " " + row.signature + " " + row.result);
  EXPECT_EQ(call.object, objectOf(row.area).get());
}

INSTANTIATE_TEST_SUITE_P(Assistant, OperationsUp, testing::ValuesIn(kRows));

TEST(Assistant, AnswersAsItIsTold) {
  const FakeAssistant assistant;
  *assistant.answers = {"LIMITED", false, false};
  EXPECT_EQ(OOBE::getInstance()->getAlexaAuthStatus(), "LIMITED");
  EXPECT_FALSE(AppMessaging::getInstance()->SendMessageToxApp("a", "b", "c"));
  EXPECT_FALSE(GUIOutput::getInstance()->notifyPlaybackControllerAction("a"));
  assistant.answers->messageAccepted = true;
  EXPECT_TRUE(AppMessaging::getInstance()->SendMessageToxApp("a", "b", "c"));
  EXPECT_FALSE(GUIOutput::getInstance()->notifyPlaybackControllerAction("a"));
}

TEST(Assistant, IsThereWhileItLives) {
  const std::array<bool, FakeAssistant::kAreas> none{};
  EXPECT_EQ(present(), none);
  {
    const FakeAssistant assistant;
    for (const bool one : present()) EXPECT_TRUE(one);
  }
  EXPECT_EQ(present(), none);
}

class Areas : public testing::TestWithParam<int> {
 protected:
  const int number = GetParam();
  const FakeAssistant::Area area = static_cast<FakeAssistant::Area>(number);
  FakeAssistant assistant;
};

TEST_P(Areas, AreTakenAwayAndGivenBackAlone) {
  assistant.remove(area);
  for (int other = 0; other < FakeAssistant::kAreas; ++other)
    EXPECT_EQ(present()[static_cast<std::size_t>(other)], other != number) << other;
  assistant.create(area);
  for (const bool one : present()) EXPECT_TRUE(one);
}

TEST_P(Areas, GetAnotherObjectInThePlaceOfTheOldOne) {
  const std::shared_ptr<void> before = objectOf(number);
  assistant.create(area);
  EXPECT_NE(objectOf(number), before);
  EXPECT_EQ(objectOf(number), objectOf(number));
}

TEST_P(Areas, CountWhoHoldsTheirObject) {
  EXPECT_EQ(FakeAssistant::references(area), 0);
  const std::shared_ptr<void> first = objectOf(number), second = first;
  EXPECT_EQ(FakeAssistant::references(area), 2);
  EXPECT_EQ(FakeAssistant::references(static_cast<FakeAssistant::Area>((number + 1) % FakeAssistant::kAreas)),
            0);
  assistant.remove(area);
  EXPECT_EQ(FakeAssistant::references(area), 0);
  EXPECT_EQ(first.use_count(), 2);
}

INSTANTIATE_TEST_SUITE_P(Assistant, Areas, testing::Range(0, FakeAssistant::kAreas));

TEST(Assistant, RecordsWhatIsCalledOnAKeptObject) {
  auto assistant = std::make_unique<FakeAssistant>();
  const auto recorder = assistant->recorder;
  const auto kept = OOBE::getInstance();
  assistant->answers->authStatus = "KEPT";
  assistant.reset();
  EXPECT_EQ(kept->getAlexaAuthStatus(), "KEPT");
  EXPECT_EQ(recorder->signatures(), Texts{"getAlexaAuthStatus()"});
}

TEST(Assistant, MayShareARecorder) {
  const auto recorder = std::make_shared<vorn_testing::Recorder>();
  EXPECT_EQ(FakeAssistant(recorder).recorder, recorder);
}

TEST(Assistant, LetsGoOfAnObjectThatNobodyHolds) {
  FakeAssistant assistant;
  const std::weak_ptr<OOBE> old = OOBE::getInstance();
  assistant.create(FakeAssistant::kOOBE);
  EXPECT_TRUE(old.expired());
}

}  // namespace
