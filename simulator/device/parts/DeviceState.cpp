#include "DeviceState.h"

#include <DeviceAbstractionLayer/DeviceInfoConstants.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

namespace vorn_speaker {

namespace {

/// Reads a whole number; false when the text is anything else.
bool number(const std::string& text, long long& value) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  return static_cast<bool>(stream >> value) && stream.peek() == std::istringstream::traits_type::eof();
}

/// The sum, held at the ends of its type.
long long sum(long long value, int delta) {
  using Limits = std::numeric_limits<long long>;
  return delta > 0 ? std::min(value, Limits::max() - delta) + delta
                   : std::max(value, Limits::min() - delta) + delta;
}

std::string shown(double value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << value;
  return stream.str();
}

}  // namespace

DeviceState::DeviceState(const DeviceFile& device)
    : m_volume(device.volume),
      m_muted(device.muted),
      m_locale(device.locale),
      m_information(device.information),
      m_settings(device.settings),
      m_states{{"channel", "1"}, {"input", "WIFI"}, {"power", "ON"}} {}

int DeviceState::volume() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_volume;
}

bool DeviceState::muted() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_muted;
}

std::string DeviceState::locale() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_locale;
}

void DeviceState::setLocale(const std::string& locale) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_locale = locale;
  m_information[DeviceAbstractionLayer::DEVICE_LOCALE_CODE] = locale;
}

bool DeviceState::setting(const std::string& name, std::string& value) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_settings.find(name);
  if (found == m_settings.end()) return false;
  value = found->second;
  return true;
}

bool DeviceState::setSetting(const std::string& name, const std::string& value) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_settings.find(name);
  if (found == m_settings.end()) return false;
  found->second = value;
  const auto& reflected = DeviceAbstractionLayer::SYSTEM_SETTING_TO_DEVICE_INFO_MAP;
  const auto field = reflected.find(name);
  if (field != reflected.end()) m_information[field->second] = value;
  return true;
}

std::map<std::string, std::string> DeviceState::information() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_information;
}

DeviceState::Answer DeviceState::setVolume(int volume) {
  if (volume < 0 || volume > 100) return {false, "volume goes from 0 to 100"};
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_volume = volume;
  return {true, "volume " + std::to_string(m_volume)};
}

DeviceState::Answer DeviceState::adjustVolume(int delta) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_volume += std::clamp(delta, -m_volume, 100 - m_volume);
  return {true, "volume " + std::to_string(m_volume)};
}

DeviceState::Answer DeviceState::mute(bool mute) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_muted = mute;
  return {true, mute ? "muted" : "unmuted"};
}

DeviceState::Answer DeviceState::power(const std::string& target, bool on) {
  return note(target.empty() ? "power" : "power of " + target, on ? "ON" : "OFF");
}

DeviceState::Answer DeviceState::setMode(const std::string& mode, const std::string& value) {
  if (mode.empty()) return {false, "no mode named"};
  return note("mode " + mode, value);
}

DeviceState::Answer DeviceState::adjustMode(const std::string& mode, int delta) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  long long value = 0;
  const auto found = m_states.find("mode " + mode);
  if (found == m_states.end() || !number(found->second, value))
    return {false, "mode " + mode + " has no number"};
  found->second = std::to_string(sum(value, delta));
  return {true, found->first + " " + found->second};
}

DeviceState::Answer DeviceState::setRange(double value) {
  if (!(value >= 0 && value <= 10)) return {false, "range goes from 0 to 10"};
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_range = value;
  return {true, "range " + shown(m_range)};
}

DeviceState::Answer DeviceState::adjustRange(double delta) {
  if (std::isnan(delta)) return {false, "not a number"};
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_range = std::clamp(m_range + delta, 0.0, 10.0);
  return {true, "range " + shown(m_range)};
}

DeviceState::Answer DeviceState::toggle(const std::string& toggle, const std::string& state) {
  if (state != "ON" && state != "OFF") return {false, "a toggle is ON or OFF"};
  return note("toggle " + toggle, state);
}

DeviceState::Answer DeviceState::setChannel(const std::string& channel) {
  if (channel.empty()) return {false, "no channel named"};
  return note("channel", channel);
}

DeviceState::Answer DeviceState::skipChannel(int count) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  long long channel = 0;
  if (!number(m_states["channel"], channel)) return {false, "the channel has no number"};
  m_states["channel"] = std::to_string(std::max(1LL, sum(channel, count)));
  return {true, "channel " + m_states["channel"]};
}

bool DeviceState::setInput(const std::string& input) { return !input.empty() && note("input", input).first; }

DeviceState::Answer DeviceState::record(bool start) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_recording == start) return {false, start ? "recording already" : "not recording"};
  m_recording = start;
  return {true, start ? "recording" : "recording ended"};
}

DeviceState::Answer DeviceState::seek(int delta) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_position = std::max(0LL, sum(m_position, delta));
  return {true, "position " + std::to_string(m_position) + " s"};
}

DeviceState::Answer DeviceState::note(const std::string& what, const std::string& value) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_states[what] = value;
  return {true, what + " " + value};
}

bool DeviceState::state(const std::string& what, std::string& text) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::map<std::string, std::string> states = m_states;
  states["volume"] = std::to_string(m_volume) + (m_muted ? ", muted" : "");
  states["range"] = shown(m_range);
  states["recording"] = m_recording ? "on" : "off";
  states["position"] = std::to_string(m_position) + " s";
  const auto found = states.find(what);
  if (found != states.end()) text = found->second;
  return found != states.end();
}

}  // namespace vorn_speaker
