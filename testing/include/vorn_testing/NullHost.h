#pragma once

#include <VornDALImplIF.h>
#include <VornEMPAdapterIF.h>

namespace vorn_testing {

/// An external media player that does nothing and answers with false or an empty text.
class NullPlayer : public VornDeviceAbstractionLayer::VornEMPAdapterIF {
 public:
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
};

/// A host that does nothing and answers what an adapter without an instance would: false, 0, empty, "[]", and
/// success for directives. Derive from it and override what your test is about.
class NullHost : public VornDeviceAbstractionLayer::VornDALImplIF {
 public:
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
  NullPlayer m_player;
};

}  // namespace vorn_testing
