// A whole firmware host on one page: implement, create, run, notify, shut down. Copy it and fill in your device.

#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <FileLogger.h>
#include <VornAlexaState.h>
#include <VornDALImplIF.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterIF.h>

#include <atomic>
#include <iostream>

using namespace VornDeviceAbstractionLayer;
using Text = std::string;
using Texts = std::vector<Text>;
using Entries = std::map<Text, Text>;
using Result = std::pair<bool, Text>;
using Duration = std::chrono::milliseconds;
using CommsState = DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo;

// 1. Implement: every operation, here with the plainest answer. Unlocked ones come from any thread: guard your state.

struct MyPlayer : VornEMPAdapterIF {
  bool login(const Text&, const Text&, bool, Duration, Text) override { return false; }
  bool logout(Text) override { return false; }
  bool launchAndPlay(Text, Duration, Text) override { return false; }
  bool nextTrack(Text) override { return false; }
  bool previousTrack(Text) override { return false; }
  bool restartCurrentTrack(Text) override { return false; }
  bool setShuffleOn(Text) override { return false; }
  bool setShuffleOff(Text) override { return false; }
  bool resume(Text) override { return false; }
  bool pause(Text) override { return false; }
  bool stop(Text) override { return false; }
  bool skipForward(Duration, Text) override { return false; }
  bool setRepeatAll(Text) override { return false; }
  bool setRepeatNone(Text) override { return false; }
  bool setRepeatOne(Text) override { return false; }
  Text getPlaybackState(Text) override { return {}; }
};

struct MyHost : VornDALImplIF {
  void alexaStateChanged(Text state) override { std::cout << "assistant: " << state << "\n"; }
  void dialogUXStateChanged(Text) override {}
  void notifyMainAppInitialized() override {}
  bool requestAudioFocus() override { return false; }
  bool releaseAudioFocus() override { return false; }
  bool startStreamingAudioData() override { return false; }
  void stopStreamingAudioData() override {}
  bool isMicrophoneAvailable() override { return false; }
  void setAlexaHandsFreeState(bool) override {}
  void notifyAlexaInvocationDetected(Text) override {}
  int getVolume() override { return m_volume; }
  bool getMuteStatus() override { return false; }
  Text getTimezone() override { return {}; }
  Text getDeviceLocale() override { return {}; }
  void changeAlexaLocale(Text) override {}
  Entries getDeviceInformation() override { return {}; }
  bool getNetworkConnectionStatus() override { return false; }
  void updateInternetConnectionStatus(bool) override {}
  Text getConfigData(Text) override { return {}; }
  bool getSystemSetting(Text, Text&) override { return false; }
  bool setSystemSetting(Text, Text) override { return false; }
  Text getVSKCapabilities() override { return "[]"; }
  bool open() override { return false; }
  Entries readKeyValue(const Text&) override { return {}; }
  bool writeKeyValue(Entries) override { return false; }
  bool removeKeyValue(const Texts&) override { return false; }
  bool clear() override { return false; }
  void onLogEmitted(const Text&, const Text&) override {}
  void sendCBLInfo(Text&, Text&, std::int64_t&) override {}
  void alexaAuthStatusChanged(Text) override {}
  VornEMPAdapterIF* getEMPAdapter() override { return &m_player; }
  void sendAppMessage(Text, Text, Text) override {}
  int setAnimation(Texts) override { return 0; }
  Result onChangeChannel(Text) override { return {true, ""}; }
  bool onInputChange(const Text&) override { return false; }
  Result onSkipChannel(int) override { return {true, ""}; }
  Result onSendKeystroke(Text) override { return {true, ""}; }
  Result onChangePlaybackPlay(Text) override { return {true, ""}; }
  Result onChangePlaybackPause(Text) override { return {true, ""}; }
  Result onChangePlaybackStop(Text) override { return {true, ""}; }
  Result onChangePlaybackStartOver(Text) override { return {true, ""}; }
  Result onChangePlaybackPrevious(Text) override { return {true, ""}; }
  Result onChangePlaybackNext(Text) override { return {true, ""}; }
  Result onChangePlaybackRewind(Text) override { return {true, ""}; }
  Result onChangePlaybackFastForward(Text) override { return {true, ""}; }
  Result onSearchAndPlay(Text) override { return {true, ""}; }
  Result onSearchAndDisplayResults(Text) override { return {true, ""}; }
  Result onSetMode(Text, Text) override { return {true, ""}; }
  Result onAdjustMode(Text, int) override { return {true, ""}; }
  Result onSetPowerState(bool) override { return {true, ""}; }
  Result onSetPowerState(bool, Text) override { return {true, ""}; }
  Result onSetRangeValue(double) override { return {true, ""}; }
  Result onAdjustRangeValue(double) override { return {true, ""}; }
  Result onSetToggleState(Text, Text) override { return {true, ""}; }
  Result onLaunchTarget(Text) override { return {true, ""}; }
  Result onStartRecording() override { return {true, ""}; }
  Result onStopRecording() override { return {true, ""}; }
  Result onAdjustSeekPosition(int) override { return {true, ""}; }
  Result onSetVolume(int volume) override {
    m_volume = volume;
    return {true, ""};
  }
  Result onAdjustVolume(int) override { return {true, ""}; }
  Result onMute(bool) override { return {true, ""}; }
  bool clearGUICard() override { return false; }
  bool renderGUICard(const Text&) override { return false; }
  void onCommsStateChanged(const CommsState&) override {}

  std::atomic<int> m_volume{30};
  MyPlayer m_player;
};

int main() {
  // 2. Create: the host first, then a trace if wanted, then the adapters (all sixteen in a product).
  MyHost host;
  FileLogger::CreateInstance(false);
  VornAlexaState::CreateInstance(host);
  const auto info = VornDeviceInfo::CreateInstance(host);
  VornDeviceCapabilities::CreateInstance(host);

  // 3. Run: in a product the assistant client makes these calls, on its own threads.
  VornAlexaState::getInstance()->alexaStateChanged("IDLE");
  VornDeviceCapabilities::getInstance()->onSetVolume(40);
  std::cout << "volume: " << VornDeviceInfo::getInstance()->getVolume() << "\n";

  // 4. Notify: the user turned the knob; dropped while there is no assistant.
  info->notifyVolumeChanged(host.m_volume);

  // 5. Shut down: adapters first, the host last.
  VornDeviceCapabilities::Shutdown();
  VornDeviceInfo::Shutdown();
  VornAlexaState::Shutdown();
}
