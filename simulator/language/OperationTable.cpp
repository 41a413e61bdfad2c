// The one table of operations. A new operation is one line here.

#include "Bind.h"
#include "device/Attachments.h"

namespace vorn_speaker {

using namespace VornDeviceAbstractionLayer;

namespace {

using Names = std::vector<const char*>;
using Directive = std::pair<bool, std::string>;

constexpr char kHost[] = "VornDALImplIF";
constexpr char kPlayer[] = "VornEMPAdapterIF";

template <class Member>
Operation down(const char* adapter, const char* name, Member function, int slot, const Names& names = {}) {
  return member(Caller::kAssistant, adapter, name, function, kHost, slot, names);
}

template <class Member>
Operation command(const char* name, Member function, int slot, const Names& names = {"playerId"}) {
  return member(Caller::kAssistant, "VornEMPAdapterControl", name, function, kPlayer, slot, names);
}

template <class Member>
Operation up(const char* adapter, const char* name, Member function, int slot, const Names& names = {}) {
  // The assistant-side class is named as the adapter, without the prefix.
  return member(Caller::kFirmware, adapter, name, function, adapter + 4, slot, names);
}

std::vector<Operation> stateAndVoice() {
  return {
      down("VornAlexaState", "alexaStateChanged", &VornAlexaState::alexaStateChanged, 3, {"state"}),
      down("VornAlexaState", "dialogUXStateChanged", &VornAlexaState::dialogUXStateChanged, 4, {"state"}),
      down("VornAlexaState", "notifyMainAppInitialized", &VornAlexaState::notifyMainAppInitialized, 5),

      down("VornAppMessaging", "sendAppMessage", &VornAppMessaging::sendAppMessage, 34,
           {"first", "second", "third"}),
      up("VornAppMessaging", "SendMessageToxApp", &VornAppMessaging::SendMessageToxApp, 1,
         {"first", "second", "third"}),

      down("VornAudioFocus", "requestAudioFocus", &VornAudioFocus::requestAudioFocus, 6),
      down("VornAudioFocus", "releaseAudioFocus", &VornAudioFocus::releaseAudioFocus, 7),

      down("VornAudioIn", "startStreamingAudioData", &VornAudioIn::startStreamingAudioData, 8),
      down("VornAudioIn", "stopStreamingAudioData", &VornAudioIn::stopStreamingAudioData, 9),
      down("VornAudioIn", "isMicrophoneAvailable", &VornAudioIn::isMicrophoneAvailable, 10),
      down("VornAudioIn", "setAlexaHandsFreeState", &VornAudioIn::setAlexaHandsFreeState, 11, {"enabled"}),
      down("VornAudioIn", "notifyAlexaInvocationDetected", &VornAudioIn::notifyAlexaInvocationDetected, 12,
           {"invocationType"}),
      up("VornAudioIn", "notifyAlexaButtonPress", &VornAudioIn::notifyAlexaButtonPress, 7,
         {"type", "duration"}),
      up("VornAudioIn", "notifyAlexaButtonReleased", &VornAudioIn::notifyAlexaButtonReleased, 8),
      up("VornAudioIn", "sendAudioData", &VornAudioIn::sendAudioData, 11, {"samples"}),
  };
}

std::vector<Operation> capabilities() {
  const auto directive = [](const char* name, auto function, int slot, const Names& names = {"payload"}) {
    return down("VornDeviceCapabilities", name, function, slot, names);
  };
  using Self = VornDeviceCapabilities;
  return {
      directive("onChangeChannel", &Self::onChangeChannel, 36, {"channel"}),
      directive("onInputChange", &Self::onInputChange, 37, {"input"}),
      directive("onSkipChannel", &Self::onSkipChannel, 38, {"count"}),
      directive("onSendKeystroke", &Self::onSendKeystroke, 39, {"keystroke"}),
      directive("onChangePlaybackPlay", &Self::onChangePlaybackPlay, 40),
      directive("onChangePlaybackPause", &Self::onChangePlaybackPause, 41),
      directive("onChangePlaybackStop", &Self::onChangePlaybackStop, 42),
      directive("onChangePlaybackStartOver", &Self::onChangePlaybackStartOver, 43),
      directive("onChangePlaybackPrevious", &Self::onChangePlaybackPrevious, 44),
      directive("onChangePlaybackNext", &Self::onChangePlaybackNext, 45),
      directive("onChangePlaybackRewind", &Self::onChangePlaybackRewind, 46),
      directive("onChangePlaybackFastForward", &Self::onChangePlaybackFastForward, 47),
      directive("onSearchAndPlay", &Self::onSearchAndPlay, 48),
      directive("onSearchAndDisplayResults", &Self::onSearchAndDisplayResults, 49),
      directive("onSetMode", &Self::onSetMode, 50, {"mode", "value"}),
      directive("onAdjustMode", &Self::onAdjustMode, 51, {"mode", "delta"}),
      directive("onSetPowerState", static_cast<Directive (Self::*)(bool)>(&Self::onSetPowerState), 52,
                {"on"}),
      directive("onSetPowerState",
                static_cast<Directive (Self::*)(bool, std::string)>(&Self::onSetPowerState), 53,
                {"on", "target"}),
      directive("onSetRangeValue", &Self::onSetRangeValue, 54, {"value"}),
      directive("onAdjustRangeValue", &Self::onAdjustRangeValue, 55, {"delta"}),
      directive("onSetToggleState", &Self::onSetToggleState, 56, {"toggle", "state"}),
      directive("onLaunchTarget", &Self::onLaunchTarget, 57, {"target"}),
      directive("onStartRecording", &Self::onStartRecording, 58, {}),
      directive("onStopRecording", &Self::onStopRecording, 59, {}),
      directive("onAdjustSeekPosition", &Self::onAdjustSeekPosition, 60, {"delta"}),
      directive("onSetVolume", &Self::onSetVolume, 61, {"volume"}),
      directive("onAdjustVolume", &Self::onAdjustVolume, 62, {"delta"}),
      directive("onMute", &Self::onMute, 63, {"mute"}),
      up("VornDeviceCapabilities", "notifyFriendlyNameChange", &Self::notifyFriendlyNameChange, 39,
         {"friendlyName"}),
      up("VornDeviceCapabilities", "notifyUpdatedAssociation", &Self::notifyUpdatedAssociation, 30,
         {"first", "second"}),
  };
}

std::vector<Operation> deviceInfo() {
  const auto query = [](const char* name, auto function, int slot, const Names& names = {}) {
    return down("VornDeviceInfo", name, function, slot, names);
  };
  const auto news = [](const char* name, auto function, int slot, const Names& names) {
    return up("VornDeviceInfo", name, function, slot, names);
  };
  using Self = VornDeviceInfo;
  return {
      query("getDeviceLocale", &Self::getDeviceLocale, 16),
      query("changeAlexaLocale", &Self::changeAlexaLocale, 17, {"locale"}),
      query("getTimezone", &Self::getTimezone, 15),
      query("getDeviceInformation", &Self::getDeviceInformation, 18),
      query("getNetworkConnectionStatus", &Self::getNetworkConnectionStatus, 19),
      query("updateInternetConnectionStatus", &Self::updateInternetConnectionStatus, 20, {"connected"}),
      query("getConfigData", &Self::getConfigData, 21, {"key"}),
      query("setSystemSetting", &Self::setSystemSetting, 23, {"key", "value"}),
      query("getVolume", &Self::getVolume, 13),
      query("getMuteStatus", &Self::getMuteStatus, 14),
      query("getSystemSetting", &Self::getSystemSetting, 22, {"key", "value"}),
      query("getVSKCapabilities", &Self::getVSKCapabilities, 24),
      news("notifyVolumeChanged", &Self::notifyVolumeChanged, 41, {"volume"}),
      news("notifyMuteChanged", &Self::notifyMuteChanged, 42, {"muted"}),
      news("notifyHandsfreeStateChanged", &Self::notifyHandsfreeStateChanged, 47, {"state"}),
      news("notifyMicrophoneAvailabilityChanged", &Self::notifyMicrophoneAvailabilityChanged, 38,
           {"availability"}),
      news("notifySystemSettingChanged", &Self::notifySystemSettingChanged, 33, {"key", "value"}),
      news("notifyLocaleChange", static_cast<void (Self::*)(std::string)>(&Self::notifyLocaleChange), 34,
           {"locale"}),
      news("notifyNetworkConnectionChanged", &Self::notifyNetworkConnectionChanged, 37, {"status"}),
      news("notifyLocaleChange",
           static_cast<void (Self::*)(std::vector<std::string>)>(&Self::notifyLocaleChange), 35, {"locales"}),
  };
}

std::vector<Operation> screenSetupAndStorage() {
  return {
      down("VornGUIOutput", "clearGUICard", &VornGUIOutput::clearGUICard, 64),
      down("VornGUIOutput", "renderGUICard", &VornGUIOutput::renderGUICard, 65, {"card"}),
      up("VornGUIOutput", "notifyPlaybackControllerAction", &VornGUIOutput::notifyPlaybackControllerAction, 5,
         {"action"}),

      down("VornLEDController", "setAnimation", &VornLEDController::setAnimation, 35, {"animations"}),

      down("VornLoggerObserver", "onLogEmitted", &VornLoggerObserver::onLogEmitted, 30, {"first", "second"}),

      down("VornOOBE", "sendCBLInfo", &VornOOBE::sendCBLInfo, 31, {"first", "second", "number"}),
      down("VornOOBE", "alexaAuthStatusChanged", &VornOOBE::alexaAuthStatusChanged, 32, {"status"}),
      up("VornOOBE", "notifyOOBEInitiated", &VornOOBE::notifyOOBEInitiated, 4),
      up("VornOOBE", "notifyOOBECancelled", &VornOOBE::notifyOOBECancelled, 6),
      up("VornOOBE", "getAlexaAuthStatus", &VornOOBE::getAlexaAuthStatus, 11),

      down("VornStorage", "open", &VornStorage::open, 25),
      down("VornStorage", "readKeyValue", &VornStorage::readKeyValue, 26, {"key"}),
      down("VornStorage", "writeKeyValue", &VornStorage::writeKeyValue, 27, {"entries"}),
      down("VornStorage", "removeKeyValue", &VornStorage::removeKeyValue, 28, {"keys"}),
      down("VornStorage", "clear", &VornStorage::clear, 29),
  };
}

std::vector<Operation> externalPlayerAndCalls() {
  using Self = VornEMPAdapterControl;
  return {
      command("login", &Self::login, 3,
              {"accessToken", "userName", "forceLogin", "refreshInterval", "playerId"}),
      command("logout", &Self::logout, 4),
      command("launchAndPlay", &Self::launchAndPlay, 5, {"playContextToken", "offset", "playerId"}),
      command("nextTrack", &Self::nextTrack, 6),
      command("previousTrack", &Self::previousTrack, 7),
      command("restartCurrentTrack", &Self::restartCurrentTrack, 8),
      command("setShuffleOn", &Self::setShuffleOn, 9),
      command("setShuffleOff", &Self::setShuffleOff, 10),
      command("resume", &Self::resume, 11),
      command("pause", &Self::pause, 12),
      command("stop", &Self::stop, 13),
      command("skipForward", &Self::skipForward, 14, {"offset", "playerId"}),
      command("setRepeatAll", &Self::setRepeatAll, 15),
      command("setRepeatNone", &Self::setRepeatNone, 16),
      command("setRepeatOne", &Self::setRepeatOne, 17),
      command("getPlaybackState", &Self::getPlaybackState, 18),

      up("VornCommsManager", "notifyCallAction", &VornCommsManager::notifyCallAction, 1, {"action"}),
      down("VornCommsManager", "onCommsStateChanged", &VornCommsManager::onCommsStateChanged, 66, {"state"}),
  };
}

}  // namespace

const std::vector<Operation>& operations() {
  static const std::vector<Operation> table = [] {
    std::vector<Operation> all;
    for (const auto& family : {stateAndVoice(), attachmentOperations(), capabilities(), deviceInfo(),
                               screenSetupAndStorage(), externalPlayerAndCalls()}) {
      all.insert(all.end(), family.begin(), family.end());
    }
    return all;
  }();
  return table;
}

}  // namespace vorn_speaker
