#include "vorn_testing/MemoryHost.h"

#include <algorithm>

namespace vorn_testing {

namespace {

using Lock = std::lock_guard<std::mutex>;

std::string find(const std::map<std::string, std::string>& entries, const std::string& key) {
  const auto found = entries.find(key);
  return found == entries.end() ? std::string() : found->second;
}

int clamped(std::int64_t volume) {
  return static_cast<int>(std::clamp(volume, std::int64_t{0}, std::int64_t{100}));
}

}  // namespace

MemoryPlayer::State MemoryPlayer::state(const std::string& playerId) const {
  const Lock lock(m_mutex);
  const auto found = m_players.find(playerId);
  return found == m_players.end() ? State() : found->second;
}

bool MemoryPlayer::change(const std::string& playerId, const std::function<void(State&)>& how) {
  const Lock lock(m_mutex);
  how(m_players[playerId]);
  return true;
}

bool MemoryPlayer::login(const std::string&, const std::string& userName, bool, std::chrono::milliseconds,
                         std::string playerId) {
  return change(playerId, [&](State& state) {
    state.loggedIn = true;
    state.userName = userName;
  });
}

bool MemoryPlayer::logout(std::string playerId) {
  return change(playerId, [](State& state) { state = State(); });
}

bool MemoryPlayer::launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                                 std::string playerId) {
  return change(playerId, [&](State& state) {
    state.content = playContextToken;
    state.position = offset;
    state.playback = "PLAYING";
  });
}

bool MemoryPlayer::nextTrack(std::string playerId) { return restartCurrentTrack(playerId); }

bool MemoryPlayer::previousTrack(std::string playerId) { return restartCurrentTrack(playerId); }

bool MemoryPlayer::restartCurrentTrack(std::string playerId) {
  return change(playerId, [](State& state) { state.position = std::chrono::milliseconds(0); });
}

bool MemoryPlayer::setShuffleOn(std::string playerId) {
  return change(playerId, [](State& state) { state.shuffle = true; });
}

bool MemoryPlayer::setShuffleOff(std::string playerId) {
  return change(playerId, [](State& state) { state.shuffle = false; });
}

bool MemoryPlayer::resume(std::string playerId) {
  return change(playerId, [](State& state) { state.playback = "PLAYING"; });
}

bool MemoryPlayer::pause(std::string playerId) {
  return change(playerId, [](State& state) { state.playback = "PAUSED"; });
}

bool MemoryPlayer::stop(std::string playerId) {
  return change(playerId, [](State& state) { state.playback = "STOPPED"; });
}

bool MemoryPlayer::skipForward(std::chrono::milliseconds offset, std::string playerId) {
  return change(playerId, [&](State& state) {
    std::int64_t position;
    const bool overflows = __builtin_add_overflow(state.position.count(), offset.count(), &position);
    if (!overflows) state.position = std::chrono::milliseconds(position);
  });
}

bool MemoryPlayer::setRepeatAll(std::string playerId) {
  return change(playerId, [](State& state) { state.repeat = "ALL"; });
}

bool MemoryPlayer::setRepeatNone(std::string playerId) {
  return change(playerId, [](State& state) { state.repeat = "NONE"; });
}

bool MemoryPlayer::setRepeatOne(std::string playerId) {
  return change(playerId, [](State& state) { state.repeat = "ONE"; });
}

std::string MemoryPlayer::getPlaybackState(std::string playerId) { return state(playerId).playback; }

MemoryHost::State MemoryHost::state() const {
  const Lock lock(m_mutex);
  return m_state;
}

void MemoryHost::change(const std::function<void(State&)>& how) {
  const Lock lock(m_mutex);
  how(m_state);
}

bool MemoryHost::requestAudioFocus() {
  const Lock lock(m_mutex);
  return m_state.focused = true;
}

bool MemoryHost::releaseAudioFocus() {
  const Lock lock(m_mutex);
  m_state.focused = false;
  return true;
}

bool MemoryHost::startStreamingAudioData() {
  const Lock lock(m_mutex);
  return m_state.streaming = m_state.microphone;
}

void MemoryHost::stopStreamingAudioData() {
  const Lock lock(m_mutex);
  m_state.streaming = false;
}

bool MemoryHost::isMicrophoneAvailable() {
  const Lock lock(m_mutex);
  return m_state.microphone;
}

void MemoryHost::setAlexaHandsFreeState(bool enabled) {
  const Lock lock(m_mutex);
  m_state.handsFree = enabled;
}

int MemoryHost::getVolume() {
  const Lock lock(m_mutex);
  return m_state.volume;
}

bool MemoryHost::getMuteStatus() {
  const Lock lock(m_mutex);
  return m_state.muted;
}

std::string MemoryHost::getTimezone() {
  const Lock lock(m_mutex);
  return m_state.timezone;
}

std::string MemoryHost::getDeviceLocale() {
  const Lock lock(m_mutex);
  return m_state.locale;
}

void MemoryHost::changeAlexaLocale(std::string locale) {
  const Lock lock(m_mutex);
  m_state.locale = std::move(locale);
}

std::map<std::string, std::string> MemoryHost::getDeviceInformation() {
  const Lock lock(m_mutex);
  return m_state.information;
}

bool MemoryHost::getNetworkConnectionStatus() {
  const Lock lock(m_mutex);
  return m_state.network;
}

void MemoryHost::updateInternetConnectionStatus(bool connected) {
  const Lock lock(m_mutex);
  m_state.internet = connected;
}

std::string MemoryHost::getConfigData(std::string key) {
  const Lock lock(m_mutex);
  return find(m_state.configuration, key);
}

bool MemoryHost::getSystemSetting(std::string key, std::string& value) {
  const Lock lock(m_mutex);
  const auto found = m_state.settings.find(key);
  if (found == m_state.settings.end()) return false;
  value = found->second;
  return true;
}

bool MemoryHost::setSystemSetting(std::string key, std::string value) {
  const Lock lock(m_mutex);
  m_state.settings[std::move(key)] = std::move(value);
  return true;
}

bool MemoryHost::open() { return true; }

std::map<std::string, std::string> MemoryHost::readKeyValue(const std::string& key) {
  const Lock lock(m_mutex);
  const auto found = m_state.store.find(key);
  if (found == m_state.store.end()) return {};
  return {*found};
}

bool MemoryHost::writeKeyValue(std::map<std::string, std::string> entries) {
  const Lock lock(m_mutex);
  for (auto& entry : entries) m_state.store[entry.first] = std::move(entry.second);
  return true;
}

bool MemoryHost::removeKeyValue(const std::vector<std::string>& keys) {
  const Lock lock(m_mutex);
  for (const auto& key : keys) m_state.store.erase(key);
  return true;
}

bool MemoryHost::clear() {
  const Lock lock(m_mutex);
  m_state.store.clear();
  return true;
}

VornDeviceAbstractionLayer::VornEMPAdapterIF* MemoryHost::getEMPAdapter() { return &player; }

int MemoryHost::setAnimation(std::vector<std::string> animations) {
  const Lock lock(m_mutex);
  m_state.animations = std::move(animations);
  return 0;
}

std::pair<bool, std::string> MemoryHost::onSetVolume(int volume) {
  const Lock lock(m_mutex);
  m_state.volume = clamped(volume);
  return {true, ""};
}

std::pair<bool, std::string> MemoryHost::onAdjustVolume(int delta) {
  const Lock lock(m_mutex);
  m_state.volume = clamped(std::int64_t{m_state.volume} + delta);
  return {true, ""};
}

std::pair<bool, std::string> MemoryHost::onMute(bool mute) {
  const Lock lock(m_mutex);
  m_state.muted = mute;
  return {true, ""};
}

bool MemoryHost::clearGUICard() {
  const Lock lock(m_mutex);
  m_state.card.clear();
  return true;
}

bool MemoryHost::renderGUICard(const std::string& card) {
  const Lock lock(m_mutex);
  m_state.card = card;
  return true;
}

}  // namespace vorn_testing
