#include "Adapters.h"

namespace vorn_speaker {

using namespace VornDeviceAbstractionLayer;

void Adapters::create() {
  held<VornAlexaState>() = VornAlexaState::CreateInstance(host);
  held<VornAppMessaging>() = VornAppMessaging::CreateInstance(host);
  held<VornAudioFocus>() = VornAudioFocus::CreateInstance(host);
  held<VornAudioIn>() = VornAudioIn::CreateInstance(host);
  VornMediaPlayerFactory::CreateInstance(players);
  VornAttachmentReaderContainerFactory::getInstance();
  held<VornDeviceCapabilities>() = VornDeviceCapabilities::CreateInstance(host);
  held<VornDeviceInfo>() = VornDeviceInfo::CreateInstance(host);
  held<VornGUIOutput>() = VornGUIOutput::CreateInstance(host);
  held<VornLEDController>() = VornLEDController::CreateInstance(host);
  held<VornLoggerObserver>() = VornLoggerObserver::CreateInstance(host);
  held<VornOOBE>() = VornOOBE::CreateInstance(host);
  held<VornStorage>() = VornStorage::CreateInstance(host);
  held<VornEMPAdapterControl>() = VornEMPAdapterControl::CreateInstance(host);
  held<VornCommsManager>() = VornCommsManager::CreateInstance(host);
}

void Adapters::shutdown() {
  VornCommsManager::Shutdown();
  VornEMPAdapterControl::Shutdown();
  VornStorage::Shutdown();
  VornOOBE::Shutdown();
  VornLoggerObserver::Shutdown();
  VornLEDController::Shutdown();
  VornGUIOutput::Shutdown();
  VornDeviceInfo::Shutdown();
  VornDeviceCapabilities::Shutdown();
  VornMediaPlayerFactory::Shutdown();
  VornAudioIn::Shutdown();
  VornAudioFocus::Shutdown();
  VornAppMessaging::Shutdown();
  VornAlexaState::Shutdown();
}

}  // namespace vorn_speaker
