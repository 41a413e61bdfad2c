#pragma once

#include <vorn_testing/NullHost.h>
#include <vorn_testing/RecordingHost.h>

namespace operations {

/// An external media player whose answers differ from what a command answers without an instance.
class AnsweringPlayer : public vorn_testing::NullPlayer {
 public:
  using Ms = std::chrono::milliseconds;

  bool login(const std::string&, const std::string&, bool, Ms, std::string) override { return true; }
  bool logout(std::string) override { return true; }
  bool launchAndPlay(std::string, Ms, std::string) override { return true; }
  bool nextTrack(std::string) override { return true; }
  bool previousTrack(std::string) override { return true; }
  bool restartCurrentTrack(std::string) override { return true; }
  bool setShuffleOn(std::string) override { return true; }
  bool setShuffleOff(std::string) override { return true; }
  bool resume(std::string) override { return true; }
  bool pause(std::string) override { return true; }
  bool stop(std::string) override { return true; }
  bool skipForward(Ms, std::string) override { return true; }
  bool setRepeatAll(std::string) override { return true; }
  bool setRepeatNone(std::string) override { return true; }
  bool setRepeatOne(std::string) override { return true; }
  std::string getPlaybackState(std::string) override { return "getPlaybackState"; }
};

/// A host whose answers differ from what an adapter answers without an instance: texts are the operation's
/// name, directives fail with it, and references are written to.
class AnsweringHost : public vorn_testing::NullHost {
 public:
  using Map = std::map<std::string, std::string>;
  using Result = std::pair<bool, std::string>;

  bool requestAudioFocus() override { return true; }
  bool releaseAudioFocus() override { return true; }
  bool startStreamingAudioData() override { return true; }
  bool isMicrophoneAvailable() override { return true; }
  int getVolume() override { return 37; }
  bool getMuteStatus() override { return true; }
  std::string getTimezone() override { return "getTimezone"; }
  std::string getDeviceLocale() override { return "getDeviceLocale"; }
  Map getDeviceInformation() override { return {{"brand", "Vorn"}, {"model", "getDeviceInformation"}}; }
  bool getNetworkConnectionStatus() override { return true; }
  std::string getConfigData(std::string) override { return "getConfigData"; }
  bool getSystemSetting(std::string, std::string& value) override {
    value = "getSystemSetting";
    return true;
  }
  bool setSystemSetting(std::string, std::string) override { return true; }
  std::string getVSKCapabilities() override { return "getVSKCapabilities"; }
  bool open() override { return true; }
  Map readKeyValue(const std::string&) override { return {{"key", "readKeyValue"}}; }
  bool writeKeyValue(Map) override { return true; }
  bool removeKeyValue(const std::vector<std::string>&) override { return true; }
  bool clear() override { return true; }
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override {
    first = "sendCBLInfo";
    second = "written";
    number = INT64_MIN;
  }
  VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override { return &m_player; }
  int setAnimation(std::vector<std::string>) override { return -7; }
  Result onChangeChannel(std::string) override { return {false, "onChangeChannel"}; }
  bool onInputChange(const std::string&) override { return false; }
  Result onSkipChannel(int) override { return {false, "onSkipChannel"}; }
  Result onSendKeystroke(std::string) override { return {false, "onSendKeystroke"}; }
  Result onChangePlaybackPlay(std::string) override { return {false, "onChangePlaybackPlay"}; }
  Result onChangePlaybackPause(std::string) override { return {false, "onChangePlaybackPause"}; }
  Result onChangePlaybackStop(std::string) override { return {false, "onChangePlaybackStop"}; }
  Result onChangePlaybackStartOver(std::string) override { return {false, "onChangePlaybackStartOver"}; }
  Result onChangePlaybackPrevious(std::string) override { return {false, "onChangePlaybackPrevious"}; }
  Result onChangePlaybackNext(std::string) override { return {false, "onChangePlaybackNext"}; }
  Result onChangePlaybackRewind(std::string) override { return {false, "onChangePlaybackRewind"}; }
  Result onChangePlaybackFastForward(std::string) override { return {false, "onChangePlaybackFastForward"}; }
  Result onSearchAndPlay(std::string) override { return {false, "onSearchAndPlay"}; }
  Result onSearchAndDisplayResults(std::string) override { return {false, "onSearchAndDisplayResults"}; }
  Result onSetMode(std::string, std::string) override { return {false, "onSetMode"}; }
  Result onAdjustMode(std::string, int) override { return {false, "onAdjustMode"}; }
  Result onSetPowerState(bool) override { return {false, "onSetPowerState"}; }
  Result onSetPowerState(bool, std::string) override { return {false, "onSetPowerState of a target"}; }
  Result onSetRangeValue(double) override { return {false, "onSetRangeValue"}; }
  Result onAdjustRangeValue(double) override { return {false, "onAdjustRangeValue"}; }
  Result onSetToggleState(std::string, std::string) override { return {false, "onSetToggleState"}; }
  Result onLaunchTarget(std::string) override { return {false, "onLaunchTarget"}; }
  Result onStartRecording() override { return {false, "onStartRecording"}; }
  Result onStopRecording() override { return {false, "onStopRecording"}; }
  Result onAdjustSeekPosition(int) override { return {false, "onAdjustSeekPosition"}; }
  Result onSetVolume(int) override { return {false, "onSetVolume"}; }
  Result onAdjustVolume(int) override { return {false, "onAdjustVolume"}; }
  Result onMute(bool) override { return {false, "onMute"}; }
  bool clearGUICard() override { return true; }
  bool renderGUICard(const std::string&) override { return true; }

 private:
  AnsweringPlayer m_player;
};

/// The host that the tables expect: `recording`, handed to CreateInstance(), in front of `answering`.
struct Host {
  AnsweringHost answering;
  vorn_testing::RecordingHost recording{answering};
};

}  // namespace operations
