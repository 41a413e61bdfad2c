#pragma once

#include <VornDALImplIF.h>
#include <VornEMPAdapterIF.h>
#include <gmock/gmock.h>

namespace vorn_testing {

/// An external media player of GoogleMock: every operation can be expected.
class GmockPlayer : public VornDeviceAbstractionLayer::VornEMPAdapterIF {
 public:
  MOCK_METHOD(bool, login,
              (const std::string&, const std::string&, bool, std::chrono::milliseconds, std::string),
              (override));
  MOCK_METHOD(bool, logout, (std::string), (override));
  MOCK_METHOD(bool, launchAndPlay, (std::string, std::chrono::milliseconds, std::string), (override));
  MOCK_METHOD(bool, nextTrack, (std::string), (override));
  MOCK_METHOD(bool, previousTrack, (std::string), (override));
  MOCK_METHOD(bool, restartCurrentTrack, (std::string), (override));
  MOCK_METHOD(bool, setShuffleOn, (std::string), (override));
  MOCK_METHOD(bool, setShuffleOff, (std::string), (override));
  MOCK_METHOD(bool, resume, (std::string), (override));
  MOCK_METHOD(bool, pause, (std::string), (override));
  MOCK_METHOD(bool, stop, (std::string), (override));
  MOCK_METHOD(bool, skipForward, (std::chrono::milliseconds, std::string), (override));
  MOCK_METHOD(bool, setRepeatAll, (std::string), (override));
  MOCK_METHOD(bool, setRepeatNone, (std::string), (override));
  MOCK_METHOD(bool, setRepeatOne, (std::string), (override));
  MOCK_METHOD(std::string, getPlaybackState, (std::string), (override));
};

/// A host of GoogleMock: every operation can be expected. getEMPAdapter() hands out `player` unless told otherwise.
///
/// Opt-in: including it is what brings GoogleMock along; it asks for the standard that GoogleMock asks for.
class GmockHost : public VornDeviceAbstractionLayer::VornDALImplIF {
 public:
  GmockHost() { ON_CALL(*this, getEMPAdapter()).WillByDefault(testing::Return(&player)); }

  MOCK_METHOD(void, alexaStateChanged, (std::string), (override));
  MOCK_METHOD(void, dialogUXStateChanged, (std::string), (override));
  MOCK_METHOD(void, notifyMainAppInitialized, (), (override));
  MOCK_METHOD(bool, requestAudioFocus, (), (override));
  MOCK_METHOD(bool, releaseAudioFocus, (), (override));
  MOCK_METHOD(bool, startStreamingAudioData, (), (override));
  MOCK_METHOD(void, stopStreamingAudioData, (), (override));
  MOCK_METHOD(bool, isMicrophoneAvailable, (), (override));
  MOCK_METHOD(void, setAlexaHandsFreeState, (bool), (override));
  MOCK_METHOD(void, notifyAlexaInvocationDetected, (std::string), (override));
  MOCK_METHOD(int, getVolume, (), (override));
  MOCK_METHOD(bool, getMuteStatus, (), (override));
  MOCK_METHOD(std::string, getTimezone, (), (override));
  MOCK_METHOD(std::string, getDeviceLocale, (), (override));
  MOCK_METHOD(void, changeAlexaLocale, (std::string), (override));
  MOCK_METHOD((std::map<std::string, std::string>), getDeviceInformation, (), (override));
  MOCK_METHOD(bool, getNetworkConnectionStatus, (), (override));
  MOCK_METHOD(void, updateInternetConnectionStatus, (bool), (override));
  MOCK_METHOD(std::string, getConfigData, (std::string), (override));
  MOCK_METHOD(bool, getSystemSetting, (std::string, std::string&), (override));
  MOCK_METHOD(bool, setSystemSetting, (std::string, std::string), (override));
  MOCK_METHOD(std::string, getVSKCapabilities, (), (override));
  MOCK_METHOD(bool, open, (), (override));
  MOCK_METHOD((std::map<std::string, std::string>), readKeyValue, (const std::string&), (override));
  MOCK_METHOD(bool, writeKeyValue, ((std::map<std::string, std::string>)), (override));
  MOCK_METHOD(bool, removeKeyValue, (const std::vector<std::string>&), (override));
  MOCK_METHOD(bool, clear, (), (override));
  MOCK_METHOD(void, onLogEmitted, (const std::string&, const std::string&), (override));
  MOCK_METHOD(void, sendCBLInfo, (std::string&, std::string&, std::int64_t&), (override));
  MOCK_METHOD(void, alexaAuthStatusChanged, (std::string), (override));
  MOCK_METHOD(VornDeviceAbstractionLayer::VornEMPAdapterIF*, getEMPAdapter, (), (override));
  MOCK_METHOD(void, sendAppMessage, (std::string, std::string, std::string), (override));
  MOCK_METHOD(int, setAnimation, (std::vector<std::string>), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangeChannel, (std::string), (override));
  MOCK_METHOD(bool, onInputChange, (const std::string&), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSkipChannel, (int), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSendKeystroke, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangePlaybackPlay, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangePlaybackPause, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangePlaybackStop, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangePlaybackStartOver, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangePlaybackPrevious, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangePlaybackNext, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangePlaybackRewind, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onChangePlaybackFastForward, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSearchAndPlay, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSearchAndDisplayResults, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSetMode, (std::string, std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onAdjustMode, (std::string, int), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSetPowerState, (bool), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSetPowerState, (bool, std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSetRangeValue, (double), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onAdjustRangeValue, (double), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSetToggleState, (std::string, std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onLaunchTarget, (std::string), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onStartRecording, (), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onStopRecording, (), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onAdjustSeekPosition, (int), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onSetVolume, (int), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onAdjustVolume, (int), (override));
  MOCK_METHOD((std::pair<bool, std::string>), onMute, (bool), (override));
  MOCK_METHOD(bool, clearGUICard, (), (override));
  MOCK_METHOD(bool, renderGUICard, (const std::string&), (override));
  MOCK_METHOD(void, onCommsStateChanged,
              (const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&), (override));

  testing::NiceMock<GmockPlayer> player;
};

}  // namespace vorn_testing
