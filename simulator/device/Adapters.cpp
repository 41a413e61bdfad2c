#include "Adapters.h"

#include <algorithm>
#include <iterator>

namespace vorn_speaker {

using namespace VornDeviceAbstractionLayer;

namespace {

template <class Adapter>
void createOn(Adapters& adapters) {
  adapters.held<Adapter>() = Adapter::CreateInstance(adapters.host);
}

struct Life {
  const char* adapter;
  void (*create)(Adapters&);
  void (*shutdown)();  ///< Null for one that stays.
};

/// In the library's load order.
const Life kLives[] = {
    {"VornAlexaState", createOn<VornAlexaState>, VornAlexaState::Shutdown},
    {"VornAppMessaging", createOn<VornAppMessaging>, VornAppMessaging::Shutdown},
    {"VornAudioFocus", createOn<VornAudioFocus>, VornAudioFocus::Shutdown},
    {"VornAudioIn", createOn<VornAudioIn>, VornAudioIn::Shutdown},
    {"VornMediaPlayerFactory",
     [](Adapters& adapters) { VornMediaPlayerFactory::CreateInstance(adapters.players); },
     VornMediaPlayerFactory::Shutdown},
    {"VornAttachmentReaderContainerFactory",
     [](Adapters&) { VornAttachmentReaderContainerFactory::getInstance(); }, nullptr},
    {"VornDeviceCapabilities", createOn<VornDeviceCapabilities>, VornDeviceCapabilities::Shutdown},
    {"VornDeviceInfo", createOn<VornDeviceInfo>, VornDeviceInfo::Shutdown},
    {"VornGUIOutput", createOn<VornGUIOutput>, VornGUIOutput::Shutdown},
    {"VornLEDController", createOn<VornLEDController>, VornLEDController::Shutdown},
    {"VornLoggerObserver", createOn<VornLoggerObserver>, VornLoggerObserver::Shutdown},
    {"VornOOBE", createOn<VornOOBE>, VornOOBE::Shutdown},
    {"VornStorage", createOn<VornStorage>, VornStorage::Shutdown},
    {"VornEMPAdapterControl", createOn<VornEMPAdapterControl>, VornEMPAdapterControl::Shutdown},
    {"VornCommsManager", createOn<VornCommsManager>, VornCommsManager::Shutdown}};

}  // namespace

void Adapters::create() {
  for (const Life& life : kLives) life.create(*this);
}

void Adapters::shutdown() {
  for (auto life = std::rbegin(kLives); life != std::rend(kLives); ++life) {
    if (life->shutdown) life->shutdown();
  }
}

void Adapters::set(const std::string& adapter, bool live) {
  const auto life = std::find_if(std::begin(kLives), std::end(kLives),
                                 [&](const Life& one) { return adapter == one.adapter; });
  if (life == std::end(kLives)) return;
  if (live) {
    life->create(*this);
  } else if (life->shutdown) {
    life->shutdown();
  }
}

}  // namespace vorn_speaker
