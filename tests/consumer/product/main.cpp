// A host on a product's own assistant side: what goes up must arrive in the right place, what comes down be answered.

#include <DeviceAbstractionLayer/InvocationTypes.h>
#include <VornAlexaState.h>
#include <VornAppMessaging.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAttachmentReaderContainerInterfaceImpl.h>
#include <VornCommsManager.h>
#include <VornDeviceCapabilities.h>
#include <VornGUIOutput.h>
#include <VornOOBE.h>

#include <iostream>

#include "MyHost.h"

using namespace VornDeviceAbstractionLayer;
using DeviceAbstractionLayer::CommsControllerInterface;

class ProductHost : public MyHost {
 public:
  void onCommsStateChanged(const CommsState& state) override {
    std::cout << "host: " << state.calls << " calls with " << state.with << " for " << state.seconds
              << " s\n";
  }
  void notifyAlexaInvocationDetected(std::string type) override {
    std::cout << "host: " << (type == DeviceAbstractionLayer::INVOCATION_TYPE_ALEXA_BUTTON_PRESS) << " "
              << type << "\n";
  }
};

int main() {
  ProductHost host;
  const auto info = VornDeviceInfo::CreateInstance(host);
  info->notifySystemSettingChanged("friendlyName", "Kitchen");
  info->notifyLocaleChange(std::string("en-CA"));
  info->notifyLocaleChange(std::vector<std::string>{"en-CA", "fr-CA"});
  info->notifyNetworkConnectionChanged("CONNECTED");
  info->notifyMicrophoneAvailabilityChanged("AVAILABLE");
  info->notifyVolumeChanged(40);
  info->notifyMuteChanged(true);
  info->notifyHandsfreeStateChanged(true);
  std::cout << "host: volume " << info->getVolume() << ", locale " << info->getDeviceLocale() << "\n";

  const auto capabilities = VornDeviceCapabilities::CreateInstance(host);
  capabilities->notifyUpdatedAssociation("here", "there");
  capabilities->notifyFriendlyNameChange("Kitchen");
  std::cout << "host: " << capabilities->onStartRecording().second << "\n";

  std::cout << "play: " << VornGUIOutput::CreateInstance(host)->notifyPlaybackControllerAction("PLAY")
            << "\n";
  const auto setup = VornOOBE::CreateInstance(host);
  setup->notifyOOBEInitiated();
  setup->notifyOOBECancelled();
  std::cout << "setup: " << setup->getAlexaAuthStatus() << "\n";

  const auto audio = VornAudioIn::CreateInstance(host);
  std::vector<short> samples(160);
  audio->notifyAlexaButtonPress("tap", std::chrono::milliseconds(80));
  audio->notifyAlexaButtonReleased();
  audio->sendAudioData(samples);

  VornAppMessaging::CreateInstance(host)->SendMessageToxApp("a", "b", "c");
  const auto calls = VornCommsManager::CreateInstance(host);
  calls->notifyCallAction(CommsControllerInterface::CallAction::END);
  CommsState state;
  state.calls = 2;
  state.with = "Ann";
  state.seconds = 1.5;
  calls->onCommsStateChanged(state);

  const auto container = VornAttachmentReaderContainerFactory::getInstance()->createAttachmentReaderContainer(
      [](const std::string& why) { std::cout << "closed: " << why << "\n"; });
  container->Subscribe([](void*, std::size_t size) { std::cout << "data: " << size << "\n"; }, {});
  DeviceAbstractionLayer::AttachmentReaderContainerInterface& pipe = *container;
  pipe.sendData(samples.data(), 320);
  container->GetOnCloseCallbackFunction()("end");

  host.stop();
  VornCommsManager::Shutdown();
  VornAppMessaging::Shutdown();
  VornAudioIn::Shutdown();
  VornOOBE::Shutdown();
  VornGUIOutput::Shutdown();
  VornDeviceCapabilities::Shutdown();
  VornDeviceInfo::Shutdown();
}
