#pragma once

#include <VornDALImplIF.h>

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "device/parts/DeviceFile.h"
#include "device/parts/DeviceState.h"
#include "device/parts/Display.h"
#include "device/parts/Playlist.h"
#include "device/parts/Store.h"
#include "device/sound/Microphone.h"

namespace vorn_speaker {

struct Adapters;

/// The firmware's side of the speaker: answers every operation of the host interface from state that the
/// operations really change. Safe from any thread; no lock is held while it calls back up.
class SpeakerHost : public VornDeviceAbstractionLayer::VornDALImplIF {
 public:
  /// Draws on the device's display, or prints a line beside it.
  struct Face {
    std::function<void(const std::function<void(Display&)>&)> draw;
    std::function<void(const std::string&)> say;
  };

  SpeakerHost(const DeviceFile& device, const std::string& storeFile, Microphone& microphone, Face face);

  /// The adapters through which the speaker tells its news. Borrowed; before the first call.
  void connect(Adapters& adapters) { m_adapters = &adapters; }

  void alexaStateChanged(std::string state) override;
  void dialogUXStateChanged(std::string state) override;
  void notifyMainAppInitialized() override;
  bool requestAudioFocus() override;
  bool releaseAudioFocus() override;
  bool startStreamingAudioData() override;
  void stopStreamingAudioData() override;
  bool isMicrophoneAvailable() override;
  void setAlexaHandsFreeState(bool enabled) override;
  void notifyAlexaInvocationDetected(std::string invocationType) override;
  int getVolume() override;
  bool getMuteStatus() override;
  std::string getTimezone() override;
  std::string getDeviceLocale() override;
  void changeAlexaLocale(std::string locale) override;
  std::map<std::string, std::string> getDeviceInformation() override;
  bool getNetworkConnectionStatus() override;
  void updateInternetConnectionStatus(bool connected) override;
  std::string getConfigData(std::string key) override;
  bool getSystemSetting(std::string key, std::string& value) override;
  bool setSystemSetting(std::string key, std::string value) override;
  std::string getVSKCapabilities() override;
  bool open() override;
  std::map<std::string, std::string> readKeyValue(const std::string& key) override;
  bool writeKeyValue(std::map<std::string, std::string> entries) override;
  bool removeKeyValue(const std::vector<std::string>& keys) override;
  bool clear() override;
  void onLogEmitted(const std::string& first, const std::string& second) override;
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override;
  void alexaAuthStatusChanged(std::string status) override;
  VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override;
  void sendAppMessage(std::string first, std::string second, std::string third) override;
  int setAnimation(std::vector<std::string> animations) override;
  std::pair<bool, std::string> onChangeChannel(std::string channel) override;
  bool onInputChange(const std::string& input) override;
  std::pair<bool, std::string> onSkipChannel(int count) override;
  std::pair<bool, std::string> onSendKeystroke(std::string keystroke) override;
  std::pair<bool, std::string> onChangePlaybackPlay(std::string payload) override;
  std::pair<bool, std::string> onChangePlaybackPause(std::string payload) override;
  std::pair<bool, std::string> onChangePlaybackStop(std::string payload) override;
  std::pair<bool, std::string> onChangePlaybackStartOver(std::string payload) override;
  std::pair<bool, std::string> onChangePlaybackPrevious(std::string payload) override;
  std::pair<bool, std::string> onChangePlaybackNext(std::string payload) override;
  std::pair<bool, std::string> onChangePlaybackRewind(std::string payload) override;
  std::pair<bool, std::string> onChangePlaybackFastForward(std::string payload) override;
  std::pair<bool, std::string> onSearchAndPlay(std::string payload) override;
  std::pair<bool, std::string> onSearchAndDisplayResults(std::string payload) override;
  std::pair<bool, std::string> onSetMode(std::string mode, std::string value) override;
  std::pair<bool, std::string> onAdjustMode(std::string mode, int delta) override;
  std::pair<bool, std::string> onSetPowerState(bool on) override;
  std::pair<bool, std::string> onSetPowerState(bool on, std::string target) override;
  std::pair<bool, std::string> onSetRangeValue(double value) override;
  std::pair<bool, std::string> onAdjustRangeValue(double delta) override;
  std::pair<bool, std::string> onSetToggleState(std::string toggle, std::string state) override;
  std::pair<bool, std::string> onLaunchTarget(std::string target) override;
  std::pair<bool, std::string> onStartRecording() override;
  std::pair<bool, std::string> onStopRecording() override;
  std::pair<bool, std::string> onAdjustSeekPosition(int delta) override;
  std::pair<bool, std::string> onSetVolume(int volume) override;
  std::pair<bool, std::string> onAdjustVolume(int delta) override;
  std::pair<bool, std::string> onMute(bool mute) override;
  bool clearGUICard() override;
  bool renderGUICard(const std::string& card) override;
  void onCommsStateChanged(
      const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) override;

 private:
  using Directive = std::pair<bool, std::string>;

  /// Tells the assistant side of a volume that changed.
  Directive volumeChanged(const Directive& answer);
  /// Complains on the display when the store refused.
  bool stored(bool done);

  const DeviceFile m_device;
  DeviceState m_state;
  Store m_store;
  Microphone& m_microphone;
  Playlist m_playlist;
  const Face m_face;
  std::atomic<bool> m_networkConnected;
  std::atomic<bool> m_focus{false};
  Adapters* m_adapters = nullptr;
};

}  // namespace vorn_speaker
