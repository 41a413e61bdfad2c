#pragma once

#include <VornDALImplIF.h>
#include <VornEMPAdapterIF.h>

namespace vorn_testing {

/// An external media player that does nothing and answers with false or an empty text.
class NullPlayer : public VornDeviceAbstractionLayer::VornEMPAdapterIF {
 public:
  bool login(const std::string&, const std::string&, bool, std::chrono::milliseconds, std::string) override {
    return false;
  }
  bool logout(std::string) override { return false; }
  bool launchAndPlay(std::string, std::chrono::milliseconds, std::string) override { return false; }
  bool nextTrack(std::string) override { return false; }
  bool previousTrack(std::string) override { return false; }
  bool restartCurrentTrack(std::string) override { return false; }
  bool setShuffleOn(std::string) override { return false; }
  bool setShuffleOff(std::string) override { return false; }
  bool resume(std::string) override { return false; }
  bool pause(std::string) override { return false; }
  bool stop(std::string) override { return false; }
  bool skipForward(std::chrono::milliseconds, std::string) override { return false; }
  bool setRepeatAll(std::string) override { return false; }
  bool setRepeatNone(std::string) override { return false; }
  bool setRepeatOne(std::string) override { return false; }
  std::string getPlaybackState(std::string) override { return {}; }
};

/// A host that does nothing and answers what an adapter without an instance would: false, 0, empty, "[]", and
/// success for directives. Derive from it and override what your test is about.
class NullHost : public VornDeviceAbstractionLayer::VornDALImplIF {
 public:
  void alexaStateChanged(std::string) override {}
  void dialogUXStateChanged(std::string) override {}
  void notifyMainAppInitialized() override {}
  bool requestAudioFocus() override { return false; }
  bool releaseAudioFocus() override { return false; }
  bool startStreamingAudioData() override { return false; }
  void stopStreamingAudioData() override {}
  bool isMicrophoneAvailable() override { return false; }
  void setAlexaHandsFreeState(bool) override {}
  void notifyAlexaInvocationDetected(std::string) override {}
  int getVolume() override { return 0; }
  bool getMuteStatus() override { return false; }
  std::string getTimezone() override { return {}; }
  std::string getDeviceLocale() override { return {}; }
  void changeAlexaLocale(std::string) override {}
  std::map<std::string, std::string> getDeviceInformation() override { return {}; }
  bool getNetworkConnectionStatus() override { return false; }
  void updateInternetConnectionStatus(bool) override {}
  std::string getConfigData(std::string) override { return {}; }
  bool getSystemSetting(std::string, std::string&) override { return false; }
  bool setSystemSetting(std::string, std::string) override { return false; }
  std::string getVSKCapabilities() override { return "[]"; }
  bool open() override { return false; }
  std::map<std::string, std::string> readKeyValue(const std::string&) override { return {}; }
  bool writeKeyValue(std::map<std::string, std::string>) override { return false; }
  bool removeKeyValue(const std::vector<std::string>&) override { return false; }
  bool clear() override { return false; }
  void onLogEmitted(const std::string&, const std::string&) override {}
  void sendCBLInfo(std::string&, std::string&, std::int64_t&) override {}
  void alexaAuthStatusChanged(std::string) override {}
  VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override { return &m_player; }
  void sendAppMessage(std::string, std::string, std::string) override {}
  int setAnimation(std::vector<std::string>) override { return 0; }
  std::pair<bool, std::string> onChangeChannel(std::string) override { return {true, ""}; }
  bool onInputChange(const std::string&) override { return true; }
  std::pair<bool, std::string> onSkipChannel(int) override { return {true, ""}; }
  std::pair<bool, std::string> onSendKeystroke(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onChangePlaybackPlay(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onChangePlaybackPause(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onChangePlaybackStop(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onChangePlaybackStartOver(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onChangePlaybackPrevious(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onChangePlaybackNext(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onChangePlaybackRewind(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onChangePlaybackFastForward(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onSearchAndPlay(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onSearchAndDisplayResults(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onSetMode(std::string, std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onAdjustMode(std::string, int) override { return {true, ""}; }
  std::pair<bool, std::string> onSetPowerState(bool) override { return {true, ""}; }
  std::pair<bool, std::string> onSetPowerState(bool, std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onSetRangeValue(double) override { return {true, ""}; }
  std::pair<bool, std::string> onAdjustRangeValue(double) override { return {true, ""}; }
  std::pair<bool, std::string> onSetToggleState(std::string, std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onLaunchTarget(std::string) override { return {true, ""}; }
  std::pair<bool, std::string> onStartRecording() override { return {true, ""}; }
  std::pair<bool, std::string> onStopRecording() override { return {true, ""}; }
  std::pair<bool, std::string> onAdjustSeekPosition(int) override { return {true, ""}; }
  std::pair<bool, std::string> onSetVolume(int) override { return {true, ""}; }
  std::pair<bool, std::string> onAdjustVolume(int) override { return {true, ""}; }
  std::pair<bool, std::string> onMute(bool) override { return {true, ""}; }
  bool clearGUICard() override { return false; }
  bool renderGUICard(const std::string&) override { return false; }
  void onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&) override {}

 private:
  NullPlayer m_player;
};

}  // namespace vorn_testing
