// Create, run, notify, shut down: the order that docs/host-guide.md explains.

#include <FileLogger.h>
#include <VornAlexaState.h>
#include <VornAppMessaging.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAudioFocus.h>
#include <VornAudioIn.h>
#include <VornCommsManager.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornLoggerObserver.h>
#include <VornMediaPlayerFactory.h>
#include <VornOOBE.h>
#include <VornStorage.h>

#include <iostream>

#include "MyHost.h"

using namespace vorn;

int main() {
  // 1. Create: the host, a trace if wanted (first of all, or not at all), then the adapters, and last the assistant client.
  MyHost host;
  FileLogger::CreateInstance(false);
  VornAlexaState::CreateInstance(host);
  VornAppMessaging::CreateInstance(host);
  VornAudioFocus::CreateInstance(host);
  VornAudioIn::CreateInstance(host);
  VornCommsManager::CreateInstance(host);
  VornDeviceCapabilities::CreateInstance(host);
  VornDeviceInfo::CreateInstance(host);
  VornEMPAdapterControl::CreateInstance(host);
  VornGUIOutput::CreateInstance(host);
  VornLEDController::CreateInstance(host);
  VornLoggerObserver::CreateInstance(host);
  VornOOBE::CreateInstance(host);
  VornStorage::CreateInstance(host);
  VornMediaPlayerFactory::CreateInstance(host.players);
  VornAttachmentReaderContainerFactory::getInstance();  // the sixteenth: no host, made at its first use

  // 2. Run: in a product the assistant client makes these calls, on its own threads.
  VornAlexaState::getInstance()->alexaStateChanged("IDLE");
  const Result recording = VornDeviceCapabilities::getInstance()->onStartRecording();
  std::cout << "recording: " << (recording.first ? "yes" : "no, " + recording.second) << "\n";
  VornDeviceCapabilities::getInstance()->onSetVolume(40);
  std::cout << "volume: " << VornDeviceInfo::getInstance()->getVolume() << "\n";

  // 3. Notify: from a thread of yours that holds no lock; dropped while there is no assistant.
  VornDeviceInfo::getInstance()->notifyNetworkConnectionChanged("CONNECTED");

  // 4. Shut down: the assistant client, then the host's threads, then the adapters; the host goes last.
  host.stop();
  VornMediaPlayerFactory::Shutdown();
  VornStorage::Shutdown();
  VornOOBE::Shutdown();
  VornLoggerObserver::Shutdown();
  VornLEDController::Shutdown();
  VornGUIOutput::Shutdown();
  VornEMPAdapterControl::Shutdown();
  VornDeviceInfo::Shutdown();
  VornDeviceCapabilities::Shutdown();
  VornCommsManager::Shutdown();
  VornAudioIn::Shutdown();
  VornAudioFocus::Shutdown();
  VornAppMessaging::Shutdown();
  VornAlexaState::Shutdown();
  FileLogger::Shutdown();
}
