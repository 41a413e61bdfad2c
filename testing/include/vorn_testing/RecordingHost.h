#pragma once

#include <map>
#include <memory>
#include <mutex>
#include "NullHost.h"
#include "Recorder.h"

namespace vorn_testing {

/// An external media player that records every call and hands it on to another, or to a NullPlayer.
/// Both the recorder and the player behind are the caller's to share; the player is borrowed.
class RecordingPlayer : public VornDeviceAbstractionLayer::VornEMPAdapterIF {
 public:
  RecordingPlayer();
  explicit RecordingPlayer(VornDeviceAbstractionLayer::VornEMPAdapterIF& inner);

  /// Never empty. Replace it before use to share one between doubles.
  std::shared_ptr<Recorder> recorder;

  bool login(const std::string& accessToken, const std::string& userName, bool forceLogin,
             std::chrono::milliseconds refreshInterval, std::string playerId) override;
  bool logout(std::string playerId) override;
  bool launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                     std::string playerId) override;
  bool nextTrack(std::string playerId) override;
  bool previousTrack(std::string playerId) override;
  bool restartCurrentTrack(std::string playerId) override;
  bool setShuffleOn(std::string playerId) override;
  bool setShuffleOff(std::string playerId) override;
  bool resume(std::string playerId) override;
  bool pause(std::string playerId) override;
  bool stop(std::string playerId) override;
  bool skipForward(std::chrono::milliseconds offset, std::string playerId) override;
  bool setRepeatAll(std::string playerId) override;
  bool setRepeatNone(std::string playerId) override;
  bool setRepeatOne(std::string playerId) override;
  std::string getPlaybackState(std::string playerId) override;

 private:
  NullPlayer m_null;
  VornDeviceAbstractionLayer::VornEMPAdapterIF& m_inner;
};

/// A host that records every call, its player's included, and hands it on to another host, or to a NullHost.
/// The host behind is borrowed. Failing, blocking and watching go through recorder->onCall().
class RecordingHost : public VornDeviceAbstractionLayer::VornDALImplIF {
 public:
  RecordingHost();
  explicit RecordingHost(VornDeviceAbstractionLayer::VornDALImplIF& inner);

  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  /// Never empty. Replace it before use to share one between doubles; the player follows.
  std::shared_ptr<Recorder> recorder;

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
  /// Finds or makes the recording player in front of `inner`; a host may have several.
  VornDeviceAbstractionLayer::VornEMPAdapterIF* recording(
      VornDeviceAbstractionLayer::VornEMPAdapterIF* inner);

  NullHost m_null;
  VornDeviceAbstractionLayer::VornDALImplIF& m_inner;
  std::mutex m_mutex;
  std::map<VornDeviceAbstractionLayer::VornEMPAdapterIF*, std::unique_ptr<RecordingPlayer>> m_players;
};

}  // namespace vorn_testing
