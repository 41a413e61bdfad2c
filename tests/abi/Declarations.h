#pragma once

// The library's classes as somebody else would declare them: what the linker needs to know, and nothing of the
// product's headers.

#include <memory>

#include "Slots.h"

namespace DeviceAbstractionLayer {

struct CommsManagerInterface {
  struct CommsStateInfo;
};
struct CommsControllerInterface {
  enum class CallAction : int;
};

}  // namespace DeviceAbstractionLayer

namespace VornDeviceAbstractionLayer {

using namespace slots;

class VornDALImplIF;

#define LIFE(Class)                                                  \
  static std::shared_ptr<Class> CreateInstance(VornDALImplIF& host); \
  static void Shutdown();

struct VornAlexaState {
  LIFE(VornAlexaState)
  void alexaStateChanged(Text);
  void dialogUXStateChanged(Text);
  void notifyMainAppInitialized();
};

struct VornAppMessaging {
  LIFE(VornAppMessaging)
  bool sendAppMessage(Text, Text, Text);
  bool SendMessageToxApp(Text, Text, Text);
};

struct VornAudioFocus {
  LIFE(VornAudioFocus)
  bool requestAudioFocus();
  bool releaseAudioFocus();
};

struct VornAudioIn {
  LIFE(VornAudioIn)
  bool startStreamingAudioData();
  void stopStreamingAudioData();
  bool isMicrophoneAvailable();
  void setAlexaHandsFreeState(bool);
  void notifyAlexaInvocationDetected(Text);
  void notifyAlexaButtonPress(Text, Duration);
  void notifyAlexaButtonReleased();
  void sendAudioData(Samples&);
};

struct VornDeviceCapabilities {
  LIFE(VornDeviceCapabilities)
  Result onChangeChannel(Text);
  bool onInputChange(const Text&);
  Result onSkipChannel(int);
  Result onSendKeystroke(Text);
  Result onChangePlaybackPlay(Text);
  Result onChangePlaybackPause(Text);
  Result onChangePlaybackStop(Text);
  Result onChangePlaybackStartOver(Text);
  Result onChangePlaybackPrevious(Text);
  Result onChangePlaybackNext(Text);
  Result onChangePlaybackRewind(Text);
  Result onChangePlaybackFastForward(Text);
  Result onSearchAndPlay(Text);
  Result onSearchAndDisplayResults(Text);
  Result onSetMode(Text, Text);
  Result onAdjustMode(Text, int);
  Result onSetPowerState(bool);
  Result onSetPowerState(bool, Text);
  Result onSetRangeValue(double);
  Result onAdjustRangeValue(double);
  Result onSetToggleState(Text, Text);
  Result onLaunchTarget(Text);
  Result onStartRecording();
  Result onStopRecording();
  Result onAdjustSeekPosition(int);
  Result onSetVolume(int);
  Result onAdjustVolume(int);
  Result onMute(bool);
  void notifyFriendlyNameChange(Text);
  void notifyUpdatedAssociation(Text, Text);
};

struct VornDeviceInfo {
  LIFE(VornDeviceInfo)
  int getVolume();
  bool getMuteStatus();
  Text getTimezone();
  Text getDeviceLocale();
  void changeAlexaLocale(Text);
  Entries getDeviceInformation();
  bool getNetworkConnectionStatus();
  void updateInternetConnectionStatus(bool);
  Text getConfigData(Text);
  bool getSystemSetting(Text, Text&);
  bool setSystemSetting(Text, Text);
  Text getVSKCapabilities();
  void notifyVolumeChanged(int);
  void notifyMuteChanged(bool);
  void notifyHandsfreeStateChanged(bool);
  void notifyMicrophoneAvailabilityChanged(Text);
  void notifySystemSettingChanged(Text, Text);
  void notifyLocaleChange(Text);
  void notifyNetworkConnectionChanged(Text);
  void notifyLocaleChange(Texts);
};

struct VornGUIOutput {
  LIFE(VornGUIOutput)
  bool clearGUICard();
  bool renderGUICard(const Text&);
  bool notifyPlaybackControllerAction(Text);
};

struct VornLEDController {
  LIFE(VornLEDController)
  int setAnimation(Texts);
};

struct VornLoggerObserver {
  LIFE(VornLoggerObserver)
  void onLogEmitted(const Text&, const Text&);
};

struct VornOOBE {
  LIFE(VornOOBE)
  void sendCBLInfo(Text&, Text&, Int64&);
  void alexaAuthStatusChanged(Text);
  void notifyOOBEInitiated();
  void notifyOOBECancelled();
  Text getAlexaAuthStatus();
};

struct VornStorage {
  LIFE(VornStorage)
  bool open();
  Entries readKeyValue(const Text&);
  bool writeKeyValue(Entries);
  bool removeKeyValue(const Texts&);
  bool clear();
};

struct VornEMPAdapterControl {
  LIFE(VornEMPAdapterControl)
  bool login(const Text&, const Text&, bool, Duration, Text);
  bool logout(Text);
  bool launchAndPlay(Text, Duration, Text);
  bool nextTrack(Text);
  bool previousTrack(Text);
  bool restartCurrentTrack(Text);
  bool setShuffleOn(Text);
  bool setShuffleOff(Text);
  bool resume(Text);
  bool pause(Text);
  bool stop(Text);
  bool skipForward(Duration, Text);
  bool setRepeatAll(Text);
  bool setRepeatNone(Text);
  bool setRepeatOne(Text);
  Text getPlaybackState(Text);
};

struct VornCommsManager {
  LIFE(VornCommsManager)
  void onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&);
  void notifyCallAction(DeviceAbstractionLayer::CommsControllerInterface::CallAction);
};

}  // namespace VornDeviceAbstractionLayer
