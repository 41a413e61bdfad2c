// Which calls of setup, calls, capabilities and the external player leave a line, and which leave none.

#include <VornAlexaState.h>
#include <VornCommsManager.h>
#include <VornDeviceCapabilities.h>
#include <VornEMPAdapterControl.h>
#include <VornOOBE.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

#include "support/trace_file.h"

namespace {

using namespace VornDeviceAbstractionLayer;
using trace_file::lines;
using vorn_testing::FakeAssistant;
using Lines = std::vector<std::string>;

class AdapterLines : public trace_file::Traced {
 protected:
  void TearDown() override {
    VornOOBE::Shutdown();
    VornCommsManager::Shutdown();
    VornDeviceCapabilities::Shutdown();
    VornEMPAdapterControl::Shutdown();
    Traced::TearDown();
  }

  vorn_testing::RecordingHost host;
};

constexpr char kInitiatedLost[] =
    "void VornDeviceAbstractionLayer::VornOOBE::notifyOOBEInitiated() dalinstance is Null";
constexpr char kCBLInfoLost[] =
    "void VornDeviceAbstractionLayer::VornOOBE::sendCBLInfo(std::string&, std::string&, int64_t&) m_instance is "
    "Null";
constexpr char kAuthStatusLost[] =
    "void VornDeviceAbstractionLayer::VornOOBE::alexaAuthStatusChanged(std::string) m_instance is Null";

TEST_F(AdapterLines, SetupLeavesNoneWhenEverythingIsDelivered) {
  FakeAssistant assistant;
  const auto oobe = VornOOBE::CreateInstance(host);
  std::string url = "url", code = "code";
  std::int64_t expiry = 600;
  oobe->notifyOOBEInitiated();
  oobe->sendCBLInfo(url, code, expiry);
  oobe->alexaAuthStatusChanged("AUTHORIZED");
  oobe->getAlexaAuthStatus();
  oobe->notifyOOBECancelled();
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(AdapterLines, SetupWithoutAnAssistantTellsOfItsStartOnly) {
  const auto oobe = VornOOBE::CreateInstance(host);
  oobe->notifyOOBECancelled();
  EXPECT_EQ(oobe->getAlexaAuthStatus(), "");
  EXPECT_EQ(lines(), Lines{});
  oobe->notifyOOBEInitiated();
  EXPECT_EQ(lines(), Lines{kInitiatedLost});
}

TEST_F(AdapterLines, SetupAfterShutdownTellsOfEachLostCallButNotItsContents) {
  FakeAssistant assistant;
  const auto oobe = VornOOBE::CreateInstance(host);
  VornOOBE::Shutdown();
  std::string url = "url", code = "code";
  std::int64_t expiry = 600;
  oobe->alexaAuthStatusChanged("AUTHORIZED");
  oobe->sendCBLInfo(url, code, expiry);
  EXPECT_EQ(lines(), (Lines{kAuthStatusLost, kCBLInfoLost}));
  EXPECT_TRUE(host.recorder->calls().empty());
}

TEST_F(AdapterLines, SetupStatusOutsideTheThreeWordsIsDeliveredWithoutOne) {
  VornOOBE::CreateInstance(host)->alexaAuthStatusChanged("SOMETHING_ELSE");
  EXPECT_EQ(host.recorder->signatures(), Lines{"alexaAuthStatusChanged(SOMETHING_ELSE)"});
  EXPECT_EQ(lines(), Lines{});
}

constexpr char kCallAction[] =
    "void VornDeviceAbstractionLayer::VornCommsManager::notifyCallAction(DeviceAbstractionLayer::"
    "CommsControllerInterface::CallAction)";
constexpr char kStateChanged[] =
    "void VornDeviceAbstractionLayer::VornCommsManager::onCommsStateChanged(const DeviceAbstractionLayer::"
    "CommsManagerInterface::CommsStateInfo&)";

TEST_F(AdapterLines, CallsLeaveNoneWhenNothingIsDelivered) {
  const auto comms = VornCommsManager::CreateInstance(host);
  VornCommsManager::Shutdown();
  comms->notifyCallAction({});
  comms->onCommsStateChanged({});
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(AdapterLines, CallActionsLeaveOneAlsoAfterShutdown) {
  FakeAssistant assistant;
  const auto comms = VornCommsManager::CreateInstance(host);
  VornCommsManager::Shutdown();
  comms->notifyCallAction({});
  EXPECT_EQ(lines(), Lines{kCallAction});
  EXPECT_EQ(assistant.recorder->count("notifyCallAction"), 1U);
}

TEST_F(AdapterLines, CallStatesLeaveOneWhenTheHostGetsThem) {
  VornCommsManager::CreateInstance(host)->onCommsStateChanged({});
  EXPECT_EQ(lines(), Lines{kStateChanged});
  EXPECT_EQ(host.recorder->count("onCommsStateChanged"), 1U);
}

TEST_F(AdapterLines, StandInTheTraceWhenTheOtherSideIsCalled) {
  FakeAssistant assistant(host.recorder);
  const auto comms = VornCommsManager::CreateInstance(host);
  std::vector<Lines> seen;
  host.recorder->onCall([&](const vorn_testing::Call&) { seen.push_back(lines()); });
  comms->onCommsStateChanged({});
  comms->notifyCallAction({});
  EXPECT_EQ(seen, (std::vector<Lines>{{kStateChanged}, {kStateChanged, kCallAction}}));
}

constexpr char kCapabilitiesCreate[] =
    "static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::"
    "VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)";
constexpr char kCapabilitiesConstructor[] =
    "VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::"
    "VornDALImplIF&)";

TEST_F(AdapterLines, CapabilitiesCreatedThreeTimesLeaveFour) {
  for (int call = 0; call < 3; ++call) VornDeviceCapabilities::CreateInstance(host);
  EXPECT_EQ(lines(),
            (Lines{kCapabilitiesCreate, kCapabilitiesConstructor, kCapabilitiesCreate, kCapabilitiesCreate}));
}

TEST_F(AdapterLines, CapabilitiesFetchedAndShutDownLeaveNone) {
  VornDeviceCapabilities::getInstance();
  VornDeviceCapabilities::Shutdown();
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(AdapterLines, VolumeAndMuteLeaveOneWithoutAnInstance) {
  VornDeviceCapabilities capabilities(host);
  forget();
  capabilities.onSetVolume(30);
  capabilities.onAdjustVolume(-10);
  capabilities.onMute(false);
  const std::string pair = "std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::";
  EXPECT_EQ(lines(), (Lines{pair + "VornDeviceCapabilities::onSetVolume(int)",
                            pair + "VornDeviceCapabilities::onAdjustVolume(int)",
                            pair + "VornDeviceCapabilities::onMute(bool)"}));
  EXPECT_TRUE(host.recorder->calls().empty());
}

constexpr char kControlGet[] =
    "static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::"
    "VornEMPAdapterControl::getInstance()";
constexpr char kControlCreate[] =
    "static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::"
    "VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)";
constexpr char kControlConstructor[] =
    "VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::"
    "VornDALImplIF&)";

TEST_F(AdapterLines, ExternalPlayerFetchedBeforeCreationLeavesOneAndIsEmpty) {
  EXPECT_EQ(VornEMPAdapterControl::getInstance(), nullptr);
  EXPECT_EQ(lines(), Lines{kControlGet});
}

TEST_F(AdapterLines, ExternalPlayerCreatedTwiceLeavesThree) {
  vorn_testing::RecordingHost other;
  const auto first = VornEMPAdapterControl::CreateInstance(host);
  EXPECT_EQ(VornEMPAdapterControl::CreateInstance(other), first);
  EXPECT_EQ(lines(), (Lines{kControlCreate, kControlConstructor, kControlCreate}));
}

TEST_F(AdapterLines, ExternalPlayerShutDownLeavesNone) {
  VornEMPAdapterControl::Shutdown();
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(AdapterLines, AssistantStateLeavesNone) {
  VornAlexaState::CreateInstance(host)->alexaStateChanged("IDLE");
  VornAlexaState::getInstance()->dialogUXStateChanged("THINKING");
  VornAlexaState::Shutdown();
  EXPECT_FALSE(std::filesystem::exists(trace_file::kPath));
}

TEST_F(AdapterLines, ALoginThatIsNotForcedSaysSo) {
  VornEMPAdapterControl control(host);
  forget();
  control.login("token", "user", false, std::chrono::milliseconds(0), "kitchen");
  EXPECT_EQ(lines(),
            Lines{"bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const "
                  "string&, bool, std::chrono::milliseconds, std::string): accessToken: token, "
                  "userName: user, forceLogin: 0, refreshInterval: 0ms, playerId: kitchen"});
}

}  // namespace
