#pragma once

#include <VornAlexaState.h>
#include <VornAppMessaging.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAudioFocus.h>
#include <VornAudioIn.h>
#include <VornCommsManager.h>
#include <VornDALImplIF.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornLoggerObserver.h>
#include <VornMediaPlayerFactory.h>
#include <VornOOBE.h>
#include <VornStorage.h>

#include <memory>
#include <string>
#include <tuple>
#include <unordered_map>

namespace vorn_speaker {

using VornDeviceAbstractionLayer::VornDALImplIF;
using Container = VornDeviceAbstractionLayer::VornAttachmentReaderContainerInterfaceImpl;
using MediaPlayer = VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl;
using PlayerTable = std::unordered_map<std::string, std::shared_ptr<MediaPlayer>>;

class Attachments;

/// What a call gives when there is no adapter to call.
constexpr char kNoInstance[] = "no instance";

/// What the firmware holds of the library: the adapters as it created them, kept past their Shutdown().
struct Adapters {
  Adapters(VornDALImplIF& device, PlayerTable& table, Attachments& streams)
      : host(device), players(table), attachments(streams) {}

  /// Creates every adapter in the library's load order.
  void create();

  /// Shuts every adapter down, the last created first.
  void shutdown();

  /// Creates one adapter, or shuts it down; another class's name does nothing.
  void set(const std::string& adapter, bool live);

  /// The adapter as the firmware got it from CreateInstance(); empty before.
  template <class Adapter>
  std::shared_ptr<Adapter>& held() {
    return std::get<std::shared_ptr<Adapter>>(m_held);
  }

  VornDALImplIF& host;
  PlayerTable& players;
  Attachments& attachments;

 private:
  std::tuple<std::shared_ptr<VornDeviceAbstractionLayer::VornAlexaState>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornAppMessaging>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornAudioFocus>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornAudioIn>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceInfo>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornGUIOutput>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornLEDController>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornLoggerObserver>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornOOBE>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornStorage>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl>,
             std::shared_ptr<VornDeviceAbstractionLayer::VornCommsManager>>
      m_held;
};

}  // namespace vorn_speaker
