#include "vorn_testing/NullHost.h"

namespace vorn_testing {

bool NullPlayer::login(const std::string&, const std::string&, bool, std::chrono::milliseconds, std::string) {
  return false;
}

bool NullPlayer::logout(std::string) { return false; }

bool NullPlayer::launchAndPlay(std::string, std::chrono::milliseconds, std::string) { return false; }

bool NullPlayer::nextTrack(std::string) { return false; }

bool NullPlayer::previousTrack(std::string) { return false; }

bool NullPlayer::restartCurrentTrack(std::string) { return false; }

bool NullPlayer::setShuffleOn(std::string) { return false; }

bool NullPlayer::setShuffleOff(std::string) { return false; }

bool NullPlayer::resume(std::string) { return false; }

bool NullPlayer::pause(std::string) { return false; }

bool NullPlayer::stop(std::string) { return false; }

bool NullPlayer::skipForward(std::chrono::milliseconds, std::string) { return false; }

bool NullPlayer::setRepeatAll(std::string) { return false; }

bool NullPlayer::setRepeatNone(std::string) { return false; }

bool NullPlayer::setRepeatOne(std::string) { return false; }

std::string NullPlayer::getPlaybackState(std::string) { return {}; }

void NullHost::alexaStateChanged(std::string) {}

void NullHost::dialogUXStateChanged(std::string) {}

void NullHost::notifyMainAppInitialized() {}

bool NullHost::requestAudioFocus() { return false; }

bool NullHost::releaseAudioFocus() { return false; }

bool NullHost::startStreamingAudioData() { return false; }

void NullHost::stopStreamingAudioData() {}

bool NullHost::isMicrophoneAvailable() { return false; }

void NullHost::setAlexaHandsFreeState(bool) {}

void NullHost::notifyAlexaInvocationDetected(std::string) {}

int NullHost::getVolume() { return 0; }

bool NullHost::getMuteStatus() { return false; }

std::string NullHost::getTimezone() { return {}; }

std::string NullHost::getDeviceLocale() { return {}; }

void NullHost::changeAlexaLocale(std::string) {}

std::map<std::string, std::string> NullHost::getDeviceInformation() { return {}; }

bool NullHost::getNetworkConnectionStatus() { return false; }

void NullHost::updateInternetConnectionStatus(bool) {}

std::string NullHost::getConfigData(std::string) { return {}; }

bool NullHost::getSystemSetting(std::string, std::string&) { return false; }

bool NullHost::setSystemSetting(std::string, std::string) { return false; }

std::string NullHost::getVSKCapabilities() { return "[]"; }

bool NullHost::open() { return false; }

std::map<std::string, std::string> NullHost::readKeyValue(const std::string&) { return {}; }

bool NullHost::writeKeyValue(std::map<std::string, std::string>) { return false; }

bool NullHost::removeKeyValue(const std::vector<std::string>&) { return false; }

bool NullHost::clear() { return false; }

void NullHost::onLogEmitted(const std::string&, const std::string&) {}

void NullHost::sendCBLInfo(std::string&, std::string&, std::int64_t&) {}

void NullHost::alexaAuthStatusChanged(std::string) {}

VornDeviceAbstractionLayer::VornEMPAdapterIF* NullHost::getEMPAdapter() { return &m_player; }

void NullHost::sendAppMessage(std::string, std::string, std::string) {}

int NullHost::setAnimation(std::vector<std::string>) { return 0; }

std::pair<bool, std::string> NullHost::onChangeChannel(std::string) { return {true, ""}; }

bool NullHost::onInputChange(const std::string&) { return true; }

std::pair<bool, std::string> NullHost::onSkipChannel(int) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSendKeystroke(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onChangePlaybackPlay(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onChangePlaybackPause(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onChangePlaybackStop(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onChangePlaybackStartOver(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onChangePlaybackPrevious(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onChangePlaybackNext(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onChangePlaybackRewind(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onChangePlaybackFastForward(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSearchAndPlay(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSearchAndDisplayResults(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSetMode(std::string, std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onAdjustMode(std::string, int) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSetPowerState(bool) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSetPowerState(bool, std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSetRangeValue(double) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onAdjustRangeValue(double) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSetToggleState(std::string, std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onLaunchTarget(std::string) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onStartRecording() { return {true, ""}; }

std::pair<bool, std::string> NullHost::onStopRecording() { return {true, ""}; }

std::pair<bool, std::string> NullHost::onAdjustSeekPosition(int) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onSetVolume(int) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onAdjustVolume(int) { return {true, ""}; }

std::pair<bool, std::string> NullHost::onMute(bool) { return {true, ""}; }

bool NullHost::clearGUICard() { return false; }

bool NullHost::renderGUICard(const std::string&) { return false; }

void NullHost::onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&) {}

}  // namespace vorn_testing
