#include "vorn_testing/ForwardingHost.h"

#include <utility>

namespace vorn_testing {

ForwardingPlayer::ForwardingPlayer(VornDeviceAbstractionLayer::VornEMPAdapterIF& inner) : m_inner(inner) {}

bool ForwardingPlayer::login(const std::string& accessToken, const std::string& userName, bool forceLogin,
                             std::chrono::milliseconds refreshInterval, std::string playerId) {
  return m_inner.login(accessToken, userName, forceLogin, refreshInterval, std::move(playerId));
}

bool ForwardingPlayer::logout(std::string playerId) { return m_inner.logout(std::move(playerId)); }

bool ForwardingPlayer::launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                                     std::string playerId) {
  return m_inner.launchAndPlay(std::move(playContextToken), offset, std::move(playerId));
}

bool ForwardingPlayer::nextTrack(std::string playerId) { return m_inner.nextTrack(std::move(playerId)); }

bool ForwardingPlayer::previousTrack(std::string playerId) {
  return m_inner.previousTrack(std::move(playerId));
}

bool ForwardingPlayer::restartCurrentTrack(std::string playerId) {
  return m_inner.restartCurrentTrack(std::move(playerId));
}

bool ForwardingPlayer::setShuffleOn(std::string playerId) {
  return m_inner.setShuffleOn(std::move(playerId));
}

bool ForwardingPlayer::setShuffleOff(std::string playerId) {
  return m_inner.setShuffleOff(std::move(playerId));
}

bool ForwardingPlayer::resume(std::string playerId) { return m_inner.resume(std::move(playerId)); }

bool ForwardingPlayer::pause(std::string playerId) { return m_inner.pause(std::move(playerId)); }

bool ForwardingPlayer::stop(std::string playerId) { return m_inner.stop(std::move(playerId)); }

bool ForwardingPlayer::skipForward(std::chrono::milliseconds offset, std::string playerId) {
  return m_inner.skipForward(offset, std::move(playerId));
}

bool ForwardingPlayer::setRepeatAll(std::string playerId) {
  return m_inner.setRepeatAll(std::move(playerId));
}

bool ForwardingPlayer::setRepeatNone(std::string playerId) {
  return m_inner.setRepeatNone(std::move(playerId));
}

bool ForwardingPlayer::setRepeatOne(std::string playerId) {
  return m_inner.setRepeatOne(std::move(playerId));
}

std::string ForwardingPlayer::getPlaybackState(std::string playerId) {
  return m_inner.getPlaybackState(std::move(playerId));
}

ForwardingHost::ForwardingHost(VornDeviceAbstractionLayer::VornDALImplIF& inner) : m_inner(inner) {}

void ForwardingHost::alexaStateChanged(std::string state) { m_inner.alexaStateChanged(std::move(state)); }

void ForwardingHost::dialogUXStateChanged(std::string state) {
  m_inner.dialogUXStateChanged(std::move(state));
}

void ForwardingHost::notifyMainAppInitialized() { m_inner.notifyMainAppInitialized(); }

bool ForwardingHost::requestAudioFocus() { return m_inner.requestAudioFocus(); }

bool ForwardingHost::releaseAudioFocus() { return m_inner.releaseAudioFocus(); }

bool ForwardingHost::startStreamingAudioData() { return m_inner.startStreamingAudioData(); }

void ForwardingHost::stopStreamingAudioData() { m_inner.stopStreamingAudioData(); }

bool ForwardingHost::isMicrophoneAvailable() { return m_inner.isMicrophoneAvailable(); }

void ForwardingHost::setAlexaHandsFreeState(bool enabled) { m_inner.setAlexaHandsFreeState(enabled); }

void ForwardingHost::notifyAlexaInvocationDetected(std::string invocationType) {
  m_inner.notifyAlexaInvocationDetected(std::move(invocationType));
}

int ForwardingHost::getVolume() { return m_inner.getVolume(); }

bool ForwardingHost::getMuteStatus() { return m_inner.getMuteStatus(); }

std::string ForwardingHost::getTimezone() { return m_inner.getTimezone(); }

std::string ForwardingHost::getDeviceLocale() { return m_inner.getDeviceLocale(); }

void ForwardingHost::changeAlexaLocale(std::string locale) { m_inner.changeAlexaLocale(std::move(locale)); }

std::map<std::string, std::string> ForwardingHost::getDeviceInformation() {
  return m_inner.getDeviceInformation();
}

bool ForwardingHost::getNetworkConnectionStatus() { return m_inner.getNetworkConnectionStatus(); }

void ForwardingHost::updateInternetConnectionStatus(bool connected) {
  m_inner.updateInternetConnectionStatus(connected);
}

std::string ForwardingHost::getConfigData(std::string key) { return m_inner.getConfigData(std::move(key)); }

bool ForwardingHost::getSystemSetting(std::string key, std::string& value) {
  return m_inner.getSystemSetting(std::move(key), value);
}

bool ForwardingHost::setSystemSetting(std::string key, std::string value) {
  return m_inner.setSystemSetting(std::move(key), std::move(value));
}

std::string ForwardingHost::getVSKCapabilities() { return m_inner.getVSKCapabilities(); }

bool ForwardingHost::open() { return m_inner.open(); }

std::map<std::string, std::string> ForwardingHost::readKeyValue(const std::string& key) {
  return m_inner.readKeyValue(key);
}

bool ForwardingHost::writeKeyValue(std::map<std::string, std::string> entries) {
  return m_inner.writeKeyValue(std::move(entries));
}

bool ForwardingHost::removeKeyValue(const std::vector<std::string>& keys) {
  return m_inner.removeKeyValue(keys);
}

bool ForwardingHost::clear() { return m_inner.clear(); }

void ForwardingHost::onLogEmitted(const std::string& first, const std::string& second) {
  m_inner.onLogEmitted(first, second);
}

void ForwardingHost::sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) {
  m_inner.sendCBLInfo(first, second, number);
}

void ForwardingHost::alexaAuthStatusChanged(std::string status) {
  m_inner.alexaAuthStatusChanged(std::move(status));
}

VornDeviceAbstractionLayer::VornEMPAdapterIF* ForwardingHost::getEMPAdapter() {
  return m_inner.getEMPAdapter();
}

void ForwardingHost::sendAppMessage(std::string first, std::string second, std::string third) {
  m_inner.sendAppMessage(std::move(first), std::move(second), std::move(third));
}

int ForwardingHost::setAnimation(std::vector<std::string> animations) {
  return m_inner.setAnimation(std::move(animations));
}

std::pair<bool, std::string> ForwardingHost::onChangeChannel(std::string channel) {
  return m_inner.onChangeChannel(std::move(channel));
}

bool ForwardingHost::onInputChange(const std::string& input) { return m_inner.onInputChange(input); }

std::pair<bool, std::string> ForwardingHost::onSkipChannel(int count) { return m_inner.onSkipChannel(count); }

std::pair<bool, std::string> ForwardingHost::onSendKeystroke(std::string keystroke) {
  return m_inner.onSendKeystroke(std::move(keystroke));
}

std::pair<bool, std::string> ForwardingHost::onChangePlaybackPlay(std::string payload) {
  return m_inner.onChangePlaybackPlay(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onChangePlaybackPause(std::string payload) {
  return m_inner.onChangePlaybackPause(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onChangePlaybackStop(std::string payload) {
  return m_inner.onChangePlaybackStop(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onChangePlaybackStartOver(std::string payload) {
  return m_inner.onChangePlaybackStartOver(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onChangePlaybackPrevious(std::string payload) {
  return m_inner.onChangePlaybackPrevious(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onChangePlaybackNext(std::string payload) {
  return m_inner.onChangePlaybackNext(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onChangePlaybackRewind(std::string payload) {
  return m_inner.onChangePlaybackRewind(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onChangePlaybackFastForward(std::string payload) {
  return m_inner.onChangePlaybackFastForward(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onSearchAndPlay(std::string payload) {
  return m_inner.onSearchAndPlay(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onSearchAndDisplayResults(std::string payload) {
  return m_inner.onSearchAndDisplayResults(std::move(payload));
}

std::pair<bool, std::string> ForwardingHost::onSetMode(std::string mode, std::string value) {
  return m_inner.onSetMode(std::move(mode), std::move(value));
}

std::pair<bool, std::string> ForwardingHost::onAdjustMode(std::string mode, int delta) {
  return m_inner.onAdjustMode(std::move(mode), delta);
}

std::pair<bool, std::string> ForwardingHost::onSetPowerState(bool on) { return m_inner.onSetPowerState(on); }

std::pair<bool, std::string> ForwardingHost::onSetPowerState(bool on, std::string target) {
  return m_inner.onSetPowerState(on, std::move(target));
}

std::pair<bool, std::string> ForwardingHost::onSetRangeValue(double value) {
  return m_inner.onSetRangeValue(value);
}

std::pair<bool, std::string> ForwardingHost::onAdjustRangeValue(double delta) {
  return m_inner.onAdjustRangeValue(delta);
}

std::pair<bool, std::string> ForwardingHost::onSetToggleState(std::string toggle, std::string state) {
  return m_inner.onSetToggleState(std::move(toggle), std::move(state));
}

std::pair<bool, std::string> ForwardingHost::onLaunchTarget(std::string target) {
  return m_inner.onLaunchTarget(std::move(target));
}

std::pair<bool, std::string> ForwardingHost::onStartRecording() { return m_inner.onStartRecording(); }

std::pair<bool, std::string> ForwardingHost::onStopRecording() { return m_inner.onStopRecording(); }

std::pair<bool, std::string> ForwardingHost::onAdjustSeekPosition(int delta) {
  return m_inner.onAdjustSeekPosition(delta);
}

std::pair<bool, std::string> ForwardingHost::onSetVolume(int volume) { return m_inner.onSetVolume(volume); }

std::pair<bool, std::string> ForwardingHost::onAdjustVolume(int delta) {
  return m_inner.onAdjustVolume(delta);
}

std::pair<bool, std::string> ForwardingHost::onMute(bool mute) { return m_inner.onMute(mute); }

bool ForwardingHost::clearGUICard() { return m_inner.clearGUICard(); }

bool ForwardingHost::renderGUICard(const std::string& card) { return m_inner.renderGUICard(card); }

void ForwardingHost::onCommsStateChanged(
    const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) {
  m_inner.onCommsStateChanged(info);
}

}  // namespace vorn_testing
