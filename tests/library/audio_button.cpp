// The talk button tells two sides, in a fixed order, and each half works without the other.

#include <VornAudioIn.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

#include <stdexcept>

#include "support/trace_file.h"

namespace {

using namespace VornDeviceAbstractionLayer;
using trace_file::lines;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;
using Lines = std::vector<std::string>;
using std::chrono::milliseconds;

constexpr char kPress[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaButtonPress(std::string, std::chrono::milliseconds) "
    "calling xApp API";
constexpr char kReleased[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaButtonReleased() calling xApp API";
constexpr char kConstructor[] =
    "VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)";

class TalkButton : public trace_file::Traced {
 protected:
  void SetUp() override {
    Traced::SetUp();
    audio = VornAudioIn::CreateInstance(host);
    EXPECT_EQ(lines(), Lines{kConstructor});
    forget();
  }

  void TearDown() override {
    VornAudioIn::Shutdown();
    Traced::TearDown();
  }

  Lines heard() const { return host.recorder->signatures(); }

  vorn_testing::RecordingHost host;
  FakeAssistant assistant{host.recorder};
  std::shared_ptr<VornAudioIn> audio;
};

TEST_F(TalkButton, PressTellsTheAssistantWhatItWasAndThenTheHostTheFixedText) {
  audio->notifyAlexaButtonPress("WakeWordDetected", milliseconds(500));
  EXPECT_EQ(heard(), (Lines{"notifyAlexaButtonPress(WakeWordDetected, 500ms)",
                            "notifyAlexaInvocationDetected(AlexaButtonPress)"}));
  EXPECT_EQ(lines(), Lines{kPress});
}

TEST_F(TalkButton, PressWithoutAnAssistantTellsTheHostWithoutALine) {
  assistant.remove(FakeAssistant::kAudioIn);
  audio->notifyAlexaButtonPress("any", milliseconds(1));
  EXPECT_EQ(heard(), Lines{"notifyAlexaInvocationDetected(AlexaButtonPress)"});
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(TalkButton, PressAfterShutdownTellsTheAssistantOnly) {
  VornAudioIn::Shutdown();
  audio->notifyAlexaButtonPress("any", milliseconds(1));
  EXPECT_EQ(heard(), Lines{"notifyAlexaButtonPress(any, 1ms)"});
  EXPECT_EQ(lines(), Lines{kPress});
}

TEST_F(TalkButton, PressWithNeitherSideIsSilent) {
  VornAudioIn::Shutdown();
  assistant.remove(FakeAssistant::kAudioIn);
  audio->notifyAlexaButtonPress("any", milliseconds(1));
  EXPECT_EQ(heard(), Lines{});
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(TalkButton, PressHandsOnAnyTextAndDuration) {
  audio->notifyAlexaButtonPress("", milliseconds::min());
  EXPECT_EQ(heard().at(0), "notifyAlexaButtonPress(, -9223372036854775808ms)");
  EXPECT_EQ(heard().at(1), "notifyAlexaInvocationDetected(AlexaButtonPress)");
}

TEST_F(TalkButton, PressIsInTheTraceBeforeTheAssistantHearsOfIt) {
  std::vector<Lines> seen;
  host.recorder->onCall([&](const Call&) { seen.push_back(lines()); });
  audio->notifyAlexaButtonPress("any", milliseconds(1));
  EXPECT_EQ(seen, (std::vector<Lines>{{kPress}, {kPress}}));
}

TEST_F(TalkButton, PressThatTheAssistantRefusesByThrowingDoesNotReachTheHost) {
  host.recorder->onCall([](const Call&) { throw std::runtime_error("refused"); });
  EXPECT_THROW(audio->notifyAlexaButtonPress("any", milliseconds(1)), std::runtime_error);
  EXPECT_EQ(heard(), Lines{"notifyAlexaButtonPress(any, 1ms)"});
  EXPECT_EQ(FakeAssistant::references(FakeAssistant::kAudioIn), 0);
}

TEST_F(TalkButton, PressHoldsTheAssistantUntilTheHostHasAnswered) {
  long during = 0;
  host.recorder->onCall([&](const Call& call) {
    if (call.operation == "notifyAlexaInvocationDetected")
      during = FakeAssistant::references(FakeAssistant::kAudioIn);
  });
  audio->notifyAlexaButtonPress("any", milliseconds(1));
  EXPECT_EQ(during, 1);
  EXPECT_EQ(FakeAssistant::references(FakeAssistant::kAudioIn), 0);
}

TEST_F(TalkButton, ReleaseTellsTheAssistantAlsoAfterShutdown) {
  VornAudioIn::Shutdown();
  audio->notifyAlexaButtonReleased();
  EXPECT_EQ(heard(), Lines{"notifyAlexaButtonReleased()"});
  EXPECT_EQ(lines(), Lines{kReleased});
}

TEST_F(TalkButton, ReleaseWithoutAnAssistantIsSilent) {
  assistant.remove(FakeAssistant::kAudioIn);
  audio->notifyAlexaButtonReleased();
  EXPECT_EQ(heard(), Lines{});
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(TalkButton, InvocationsAndHandsFreeStateLeaveLinesOnlyWhenDelivered) {
  audio->notifyAlexaInvocationDetected("anything");
  audio->setAlexaHandsFreeState(true);
  const Lines delivered = lines();
  EXPECT_EQ(
      delivered,
      (Lines{"void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaInvocationDetected(std::string) "
             "calling xApp API",
             "void VornDeviceAbstractionLayer::VornAudioIn::setAlexaHandsFreeState(bool) calling xApp API"}));
  VornAudioIn::Shutdown();
  audio->notifyAlexaInvocationDetected("anything");
  audio->setAlexaHandsFreeState(true);
  EXPECT_EQ(lines(), delivered);
}

}  // namespace
