#include "vorn_testing/RecordingHost.h"

#include <utility>

namespace vorn_testing {

RecordingPlayer::RecordingPlayer() : recorder(std::make_shared<Recorder>()), m_inner(m_null) {}

RecordingPlayer::RecordingPlayer(VornDeviceAbstractionLayer::VornEMPAdapterIF& inner)
    : recorder(std::make_shared<Recorder>()), m_inner(inner) {}

bool RecordingPlayer::login(const std::string& accessToken, const std::string& userName, bool forceLogin,
                            std::chrono::milliseconds refreshInterval, std::string playerId) {
  return recorder->run(
      makeCall("VornEMPAdapterIF", "login", 3, this, accessToken, userName, forceLogin, refreshInterval,
               playerId),
      [&] { return m_inner.login(accessToken, userName, forceLogin, refreshInterval, std::move(playerId)); });
}

bool RecordingPlayer::logout(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "logout", 4, this, playerId),
                       [&] { return m_inner.logout(std::move(playerId)); });
}

bool RecordingPlayer::launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                                    std::string playerId) {
  return recorder->run(
      makeCall("VornEMPAdapterIF", "launchAndPlay", 5, this, playContextToken, offset, playerId),
      [&] { return m_inner.launchAndPlay(std::move(playContextToken), offset, std::move(playerId)); });
}

bool RecordingPlayer::nextTrack(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "nextTrack", 6, this, playerId),
                       [&] { return m_inner.nextTrack(std::move(playerId)); });
}

bool RecordingPlayer::previousTrack(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "previousTrack", 7, this, playerId),
                       [&] { return m_inner.previousTrack(std::move(playerId)); });
}

bool RecordingPlayer::restartCurrentTrack(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "restartCurrentTrack", 8, this, playerId),
                       [&] { return m_inner.restartCurrentTrack(std::move(playerId)); });
}

bool RecordingPlayer::setShuffleOn(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "setShuffleOn", 9, this, playerId),
                       [&] { return m_inner.setShuffleOn(std::move(playerId)); });
}

bool RecordingPlayer::setShuffleOff(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "setShuffleOff", 10, this, playerId),
                       [&] { return m_inner.setShuffleOff(std::move(playerId)); });
}

bool RecordingPlayer::resume(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "resume", 11, this, playerId),
                       [&] { return m_inner.resume(std::move(playerId)); });
}

bool RecordingPlayer::pause(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "pause", 12, this, playerId),
                       [&] { return m_inner.pause(std::move(playerId)); });
}

bool RecordingPlayer::stop(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "stop", 13, this, playerId),
                       [&] { return m_inner.stop(std::move(playerId)); });
}

bool RecordingPlayer::skipForward(std::chrono::milliseconds offset, std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "skipForward", 14, this, offset, playerId),
                       [&] { return m_inner.skipForward(offset, std::move(playerId)); });
}

bool RecordingPlayer::setRepeatAll(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "setRepeatAll", 15, this, playerId),
                       [&] { return m_inner.setRepeatAll(std::move(playerId)); });
}

bool RecordingPlayer::setRepeatNone(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "setRepeatNone", 16, this, playerId),
                       [&] { return m_inner.setRepeatNone(std::move(playerId)); });
}

bool RecordingPlayer::setRepeatOne(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "setRepeatOne", 17, this, playerId),
                       [&] { return m_inner.setRepeatOne(std::move(playerId)); });
}

std::string RecordingPlayer::getPlaybackState(std::string playerId) {
  return recorder->run(makeCall("VornEMPAdapterIF", "getPlaybackState", 18, this, playerId),
                       [&] { return m_inner.getPlaybackState(std::move(playerId)); });
}

RecordingHost::RecordingHost() : recorder(std::make_shared<Recorder>()), m_inner(m_null) {}

RecordingHost::RecordingHost(VornDeviceAbstractionLayer::VornDALImplIF& inner)
    : recorder(std::make_shared<Recorder>()), m_inner(inner) {}

VornDeviceAbstractionLayer::VornEMPAdapterIF* RecordingHost::recording(
    VornDeviceAbstractionLayer::VornEMPAdapterIF* inner) {
  if (!inner) return nullptr;
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::unique_ptr<RecordingPlayer>& player = m_players[inner];
  if (!player) {
    player.reset(new RecordingPlayer(*inner));
    player->recorder = recorder;
  }
  return player.get();
}

void RecordingHost::alexaStateChanged(std::string state) {
  recorder->run(makeCall("VornDALImplIF", "alexaStateChanged", 3, this, state),
                [&] { m_inner.alexaStateChanged(std::move(state)); });
}

void RecordingHost::dialogUXStateChanged(std::string state) {
  recorder->run(makeCall("VornDALImplIF", "dialogUXStateChanged", 4, this, state),
                [&] { m_inner.dialogUXStateChanged(std::move(state)); });
}

void RecordingHost::notifyMainAppInitialized() {
  recorder->run(makeCall("VornDALImplIF", "notifyMainAppInitialized", 5, this),
                [&] { m_inner.notifyMainAppInitialized(); });
}

bool RecordingHost::requestAudioFocus() {
  return recorder->run(makeCall("VornDALImplIF", "requestAudioFocus", 6, this),
                       [&] { return m_inner.requestAudioFocus(); });
}

bool RecordingHost::releaseAudioFocus() {
  return recorder->run(makeCall("VornDALImplIF", "releaseAudioFocus", 7, this),
                       [&] { return m_inner.releaseAudioFocus(); });
}

bool RecordingHost::startStreamingAudioData() {
  return recorder->run(makeCall("VornDALImplIF", "startStreamingAudioData", 8, this),
                       [&] { return m_inner.startStreamingAudioData(); });
}

void RecordingHost::stopStreamingAudioData() {
  recorder->run(makeCall("VornDALImplIF", "stopStreamingAudioData", 9, this),
                [&] { m_inner.stopStreamingAudioData(); });
}

bool RecordingHost::isMicrophoneAvailable() {
  return recorder->run(makeCall("VornDALImplIF", "isMicrophoneAvailable", 10, this),
                       [&] { return m_inner.isMicrophoneAvailable(); });
}

void RecordingHost::setAlexaHandsFreeState(bool enabled) {
  recorder->run(makeCall("VornDALImplIF", "setAlexaHandsFreeState", 11, this, enabled),
                [&] { m_inner.setAlexaHandsFreeState(enabled); });
}

void RecordingHost::notifyAlexaInvocationDetected(std::string invocationType) {
  recorder->run(makeCall("VornDALImplIF", "notifyAlexaInvocationDetected", 12, this, invocationType),
                [&] { m_inner.notifyAlexaInvocationDetected(std::move(invocationType)); });
}

int RecordingHost::getVolume() {
  return recorder->run(makeCall("VornDALImplIF", "getVolume", 13, this), [&] { return m_inner.getVolume(); });
}

bool RecordingHost::getMuteStatus() {
  return recorder->run(makeCall("VornDALImplIF", "getMuteStatus", 14, this),
                       [&] { return m_inner.getMuteStatus(); });
}

std::string RecordingHost::getTimezone() {
  return recorder->run(makeCall("VornDALImplIF", "getTimezone", 15, this),
                       [&] { return m_inner.getTimezone(); });
}

std::string RecordingHost::getDeviceLocale() {
  return recorder->run(makeCall("VornDALImplIF", "getDeviceLocale", 16, this),
                       [&] { return m_inner.getDeviceLocale(); });
}

void RecordingHost::changeAlexaLocale(std::string locale) {
  recorder->run(makeCall("VornDALImplIF", "changeAlexaLocale", 17, this, locale),
                [&] { m_inner.changeAlexaLocale(std::move(locale)); });
}

std::map<std::string, std::string> RecordingHost::getDeviceInformation() {
  return recorder->run(makeCall("VornDALImplIF", "getDeviceInformation", 18, this),
                       [&] { return m_inner.getDeviceInformation(); });
}

bool RecordingHost::getNetworkConnectionStatus() {
  return recorder->run(makeCall("VornDALImplIF", "getNetworkConnectionStatus", 19, this),
                       [&] { return m_inner.getNetworkConnectionStatus(); });
}

void RecordingHost::updateInternetConnectionStatus(bool connected) {
  recorder->run(makeCall("VornDALImplIF", "updateInternetConnectionStatus", 20, this, connected),
                [&] { m_inner.updateInternetConnectionStatus(connected); });
}

std::string RecordingHost::getConfigData(std::string key) {
  return recorder->run(makeCall("VornDALImplIF", "getConfigData", 21, this, key),
                       [&] { return m_inner.getConfigData(std::move(key)); });
}

bool RecordingHost::getSystemSetting(std::string key, std::string& value) {
  return recorder->run(makeCall("VornDALImplIF", "getSystemSetting", 22, this, key, value),
                       [&] { return m_inner.getSystemSetting(std::move(key), value); });
}

bool RecordingHost::setSystemSetting(std::string key, std::string value) {
  return recorder->run(makeCall("VornDALImplIF", "setSystemSetting", 23, this, key, value),
                       [&] { return m_inner.setSystemSetting(std::move(key), std::move(value)); });
}

std::string RecordingHost::getVSKCapabilities() {
  return recorder->run(makeCall("VornDALImplIF", "getVSKCapabilities", 24, this),
                       [&] { return m_inner.getVSKCapabilities(); });
}

bool RecordingHost::open() {
  return recorder->run(makeCall("VornDALImplIF", "open", 25, this), [&] { return m_inner.open(); });
}

std::map<std::string, std::string> RecordingHost::readKeyValue(const std::string& key) {
  return recorder->run(makeCall("VornDALImplIF", "readKeyValue", 26, this, key),
                       [&] { return m_inner.readKeyValue(key); });
}

bool RecordingHost::writeKeyValue(std::map<std::string, std::string> entries) {
  return recorder->run(makeCall("VornDALImplIF", "writeKeyValue", 27, this, entries),
                       [&] { return m_inner.writeKeyValue(std::move(entries)); });
}

bool RecordingHost::removeKeyValue(const std::vector<std::string>& keys) {
  return recorder->run(makeCall("VornDALImplIF", "removeKeyValue", 28, this, keys),
                       [&] { return m_inner.removeKeyValue(keys); });
}

bool RecordingHost::clear() {
  return recorder->run(makeCall("VornDALImplIF", "clear", 29, this), [&] { return m_inner.clear(); });
}

void RecordingHost::onLogEmitted(const std::string& first, const std::string& second) {
  recorder->run(makeCall("VornDALImplIF", "onLogEmitted", 30, this, first, second),
                [&] { m_inner.onLogEmitted(first, second); });
}

void RecordingHost::sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) {
  recorder->run(makeCall("VornDALImplIF", "sendCBLInfo", 31, this, first, second, number),
                [&] { m_inner.sendCBLInfo(first, second, number); });
}

void RecordingHost::alexaAuthStatusChanged(std::string status) {
  recorder->run(makeCall("VornDALImplIF", "alexaAuthStatusChanged", 32, this, status),
                [&] { m_inner.alexaAuthStatusChanged(std::move(status)); });
}

VornDeviceAbstractionLayer::VornEMPAdapterIF* RecordingHost::getEMPAdapter() {
  return recorder->run(makeCall("VornDALImplIF", "getEMPAdapter", 33, this),
                       [&] { return recording(m_inner.getEMPAdapter()); });
}

void RecordingHost::sendAppMessage(std::string first, std::string second, std::string third) {
  recorder->run(makeCall("VornDALImplIF", "sendAppMessage", 34, this, first, second, third),
                [&] { m_inner.sendAppMessage(std::move(first), std::move(second), std::move(third)); });
}

int RecordingHost::setAnimation(std::vector<std::string> animations) {
  return recorder->run(makeCall("VornDALImplIF", "setAnimation", 35, this, animations),
                       [&] { return m_inner.setAnimation(std::move(animations)); });
}

std::pair<bool, std::string> RecordingHost::onChangeChannel(std::string channel) {
  return recorder->run(makeCall("VornDALImplIF", "onChangeChannel", 36, this, channel),
                       [&] { return m_inner.onChangeChannel(std::move(channel)); });
}

bool RecordingHost::onInputChange(const std::string& input) {
  return recorder->run(makeCall("VornDALImplIF", "onInputChange", 37, this, input),
                       [&] { return m_inner.onInputChange(input); });
}

std::pair<bool, std::string> RecordingHost::onSkipChannel(int count) {
  return recorder->run(makeCall("VornDALImplIF", "onSkipChannel", 38, this, count),
                       [&] { return m_inner.onSkipChannel(count); });
}

std::pair<bool, std::string> RecordingHost::onSendKeystroke(std::string keystroke) {
  return recorder->run(makeCall("VornDALImplIF", "onSendKeystroke", 39, this, keystroke),
                       [&] { return m_inner.onSendKeystroke(std::move(keystroke)); });
}

std::pair<bool, std::string> RecordingHost::onChangePlaybackPlay(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onChangePlaybackPlay", 40, this, payload),
                       [&] { return m_inner.onChangePlaybackPlay(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onChangePlaybackPause(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onChangePlaybackPause", 41, this, payload),
                       [&] { return m_inner.onChangePlaybackPause(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onChangePlaybackStop(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onChangePlaybackStop", 42, this, payload),
                       [&] { return m_inner.onChangePlaybackStop(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onChangePlaybackStartOver(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onChangePlaybackStartOver", 43, this, payload),
                       [&] { return m_inner.onChangePlaybackStartOver(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onChangePlaybackPrevious(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onChangePlaybackPrevious", 44, this, payload),
                       [&] { return m_inner.onChangePlaybackPrevious(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onChangePlaybackNext(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onChangePlaybackNext", 45, this, payload),
                       [&] { return m_inner.onChangePlaybackNext(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onChangePlaybackRewind(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onChangePlaybackRewind", 46, this, payload),
                       [&] { return m_inner.onChangePlaybackRewind(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onChangePlaybackFastForward(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onChangePlaybackFastForward", 47, this, payload),
                       [&] { return m_inner.onChangePlaybackFastForward(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onSearchAndPlay(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onSearchAndPlay", 48, this, payload),
                       [&] { return m_inner.onSearchAndPlay(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onSearchAndDisplayResults(std::string payload) {
  return recorder->run(makeCall("VornDALImplIF", "onSearchAndDisplayResults", 49, this, payload),
                       [&] { return m_inner.onSearchAndDisplayResults(std::move(payload)); });
}

std::pair<bool, std::string> RecordingHost::onSetMode(std::string mode, std::string value) {
  return recorder->run(makeCall("VornDALImplIF", "onSetMode", 50, this, mode, value),
                       [&] { return m_inner.onSetMode(std::move(mode), std::move(value)); });
}

std::pair<bool, std::string> RecordingHost::onAdjustMode(std::string mode, int delta) {
  return recorder->run(makeCall("VornDALImplIF", "onAdjustMode", 51, this, mode, delta),
                       [&] { return m_inner.onAdjustMode(std::move(mode), delta); });
}

std::pair<bool, std::string> RecordingHost::onSetPowerState(bool on) {
  return recorder->run(makeCall("VornDALImplIF", "onSetPowerState", 52, this, on),
                       [&] { return m_inner.onSetPowerState(on); });
}

std::pair<bool, std::string> RecordingHost::onSetPowerState(bool on, std::string target) {
  return recorder->run(makeCall("VornDALImplIF", "onSetPowerState", 53, this, on, target),
                       [&] { return m_inner.onSetPowerState(on, std::move(target)); });
}

std::pair<bool, std::string> RecordingHost::onSetRangeValue(double value) {
  return recorder->run(makeCall("VornDALImplIF", "onSetRangeValue", 54, this, value),
                       [&] { return m_inner.onSetRangeValue(value); });
}

std::pair<bool, std::string> RecordingHost::onAdjustRangeValue(double delta) {
  return recorder->run(makeCall("VornDALImplIF", "onAdjustRangeValue", 55, this, delta),
                       [&] { return m_inner.onAdjustRangeValue(delta); });
}

std::pair<bool, std::string> RecordingHost::onSetToggleState(std::string toggle, std::string state) {
  return recorder->run(makeCall("VornDALImplIF", "onSetToggleState", 56, this, toggle, state),
                       [&] { return m_inner.onSetToggleState(std::move(toggle), std::move(state)); });
}

std::pair<bool, std::string> RecordingHost::onLaunchTarget(std::string target) {
  return recorder->run(makeCall("VornDALImplIF", "onLaunchTarget", 57, this, target),
                       [&] { return m_inner.onLaunchTarget(std::move(target)); });
}

std::pair<bool, std::string> RecordingHost::onStartRecording() {
  return recorder->run(makeCall("VornDALImplIF", "onStartRecording", 58, this),
                       [&] { return m_inner.onStartRecording(); });
}

std::pair<bool, std::string> RecordingHost::onStopRecording() {
  return recorder->run(makeCall("VornDALImplIF", "onStopRecording", 59, this),
                       [&] { return m_inner.onStopRecording(); });
}

std::pair<bool, std::string> RecordingHost::onAdjustSeekPosition(int delta) {
  return recorder->run(makeCall("VornDALImplIF", "onAdjustSeekPosition", 60, this, delta),
                       [&] { return m_inner.onAdjustSeekPosition(delta); });
}

std::pair<bool, std::string> RecordingHost::onSetVolume(int volume) {
  return recorder->run(makeCall("VornDALImplIF", "onSetVolume", 61, this, volume),
                       [&] { return m_inner.onSetVolume(volume); });
}

std::pair<bool, std::string> RecordingHost::onAdjustVolume(int delta) {
  return recorder->run(makeCall("VornDALImplIF", "onAdjustVolume", 62, this, delta),
                       [&] { return m_inner.onAdjustVolume(delta); });
}

std::pair<bool, std::string> RecordingHost::onMute(bool mute) {
  return recorder->run(makeCall("VornDALImplIF", "onMute", 63, this, mute),
                       [&] { return m_inner.onMute(mute); });
}

bool RecordingHost::clearGUICard() {
  return recorder->run(makeCall("VornDALImplIF", "clearGUICard", 64, this),
                       [&] { return m_inner.clearGUICard(); });
}

bool RecordingHost::renderGUICard(const std::string& card) {
  return recorder->run(makeCall("VornDALImplIF", "renderGUICard", 65, this, card),
                       [&] { return m_inner.renderGUICard(card); });
}

void RecordingHost::onCommsStateChanged(
    const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) {
  recorder->run(makeCall("VornDALImplIF", "onCommsStateChanged", 66, this, info.state),
                [&] { m_inner.onCommsStateChanged(info); });
}

}  // namespace vorn_testing
