#include "SpeakerHost.h"

#include <vorn_testing/Text.h>

#include <utility>

#include "Adapters.h"

namespace vorn_speaker {

using VornDeviceAbstractionLayer::VornAppMessaging;

SpeakerHost::SpeakerHost(const DeviceFile& device, const std::string& storeFile, Microphone& microphone,
                         Face face)
    : m_device(device),
      m_state(device),
      m_store(storeFile),
      m_microphone(microphone),
      m_face(std::move(face)),
      m_networkConnected(device.networkConnected) {}

// ---- Assistant state and audio focus -----------------------------------------------------------------------

void SpeakerHost::alexaStateChanged(std::string state) { m_state.note("assistant", state); }

void SpeakerHost::dialogUXStateChanged(std::string state) { m_state.note("dialog", state); }

void SpeakerHost::notifyMainAppInitialized() { m_state.note("assistant", "INITIALIZED"); }

bool SpeakerHost::requestAudioFocus() { return !m_focus.exchange(true); }

bool SpeakerHost::releaseAudioFocus() { return m_focus.exchange(false); }

// ---- Voice input -------------------------------------------------------------------------------------------

bool SpeakerHost::startStreamingAudioData() { return m_device.microphoneAvailable && m_microphone.start(); }

void SpeakerHost::stopStreamingAudioData() { m_microphone.stop(); }

bool SpeakerHost::isMicrophoneAvailable() { return m_device.microphoneAvailable; }

void SpeakerHost::setAlexaHandsFreeState(bool enabled) { m_state.note("hands-free", enabled ? "ON" : "OFF"); }

void SpeakerHost::notifyAlexaInvocationDetected(std::string invocationType) {
  m_state.note("invocation", invocationType);
}

// ---- Device information and settings -----------------------------------------------------------------------

int SpeakerHost::getVolume() { return m_state.volume(); }

bool SpeakerHost::getMuteStatus() { return m_state.muted(); }

std::string SpeakerHost::getTimezone() { return m_device.timezone; }

std::string SpeakerHost::getDeviceLocale() { return m_state.locale(); }

void SpeakerHost::changeAlexaLocale(std::string locale) { m_state.setLocale(locale); }

std::map<std::string, std::string> SpeakerHost::getDeviceInformation() { return m_state.information(); }

bool SpeakerHost::getNetworkConnectionStatus() { return m_networkConnected; }

void SpeakerHost::updateInternetConnectionStatus(bool connected) { m_networkConnected = connected; }

std::string SpeakerHost::getConfigData(std::string key) {
  const auto found = m_device.config.find(key);
  return found == m_device.config.end() ? std::string() : found->second;
}

bool SpeakerHost::getSystemSetting(std::string key, std::string& value) {
  return m_state.setting(key, value) || m_state.state(key, value);
}

bool SpeakerHost::setSystemSetting(std::string key, std::string value) {
  return m_state.setSetting(key, value);
}

std::string SpeakerHost::getVSKCapabilities() { return m_device.capabilities; }

// ---- Storage -----------------------------------------------------------------------------------------------

bool SpeakerHost::stored(bool done) {
  if (!done) m_face.say(m_store.problem());
  return done;
}

bool SpeakerHost::open() { return stored(m_store.open()); }

std::map<std::string, std::string> SpeakerHost::readKeyValue(const std::string& key) {
  auto found = m_store.read(key);
  if (found.empty() && !m_store.problem().empty()) m_face.say(m_store.problem());
  return found;
}

bool SpeakerHost::writeKeyValue(std::map<std::string, std::string> entries) {
  return stored(m_store.write(entries));
}

bool SpeakerHost::removeKeyValue(const std::vector<std::string>& keys) {
  return stored(m_store.remove(keys));
}

bool SpeakerHost::clear() { return stored(m_store.clear()); }

// ---- Setup, messages, display, calls -----------------------------------------------------------------------

void SpeakerHost::onLogEmitted(const std::string& first, const std::string& second) {
  m_face.say("log " + vorn_testing::harmless(first) + ": " + vorn_testing::harmless(second));
}

void SpeakerHost::sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) {
  m_face.draw([&](Display& display) { display.linking(first, second, number); });
}

void SpeakerHost::alexaAuthStatusChanged(std::string status) {
  m_state.note("authorization", status);
  m_face.draw([&](Display& display) { display.authorization(status); });
}

VornDeviceAbstractionLayer::VornEMPAdapterIF* SpeakerHost::getEMPAdapter() { return &m_playlist; }

void SpeakerHost::sendAppMessage(std::string first, std::string second, std::string third) {
  // Answered from inside the handler: each direction has a mutex of its own.
  if (const auto messages = m_adapters->held<VornAppMessaging>())
    messages->SendMessageToxApp(first, "received " + second, third);
}

int SpeakerHost::setAnimation(std::vector<std::string> animations) {
  m_face.draw([&](Display& display) { display.ring(animations); });
  return static_cast<int>(animations.size());
}

bool SpeakerHost::clearGUICard() {
  bool shown = false;
  m_face.draw([&](Display& display) { shown = display.clear(); });
  return shown;
}

bool SpeakerHost::renderGUICard(const std::string& card) {
  m_face.draw([&](Display& display) { display.card(card); });
  return true;
}

void SpeakerHost::onCommsStateChanged(
    const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) {
  m_face.draw([&](Display& display) { display.call(info.state); });
}

}  // namespace vorn_speaker
