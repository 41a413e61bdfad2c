#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "DeviceFile.h"

namespace vorn_speaker {

/// What directives change and queries report. May be used from any thread.
///
/// Directives answer with a flag and a text that tells the new state, or why they were refused; a refused one
/// changes nothing.
class DeviceState {
 public:
  using Answer = std::pair<bool, std::string>;

  explicit DeviceState(const DeviceFile& device);

  int volume() const;  ///< 0 to 100.
  bool muted() const;
  std::string locale() const;
  void setLocale(const std::string& locale);

  /// @returns false when there is no such setting.
  bool setting(const std::string& name, std::string& value) const;

  /// Known settings only; a setting that a device information field reflects changes that field too.
  bool setSetting(const std::string& name, const std::string& value);

  std::map<std::string, std::string> information() const;

  Answer setVolume(int volume);    ///< Refused outside 0 to 100.
  Answer adjustVolume(int delta);  ///< Ends at 0 or 100.
  Answer mute(bool mute);
  Answer power(const std::string& target, bool on);  ///< Empty: the device itself.
  Answer setMode(const std::string& mode, const std::string& value);
  Answer adjustMode(const std::string& mode, int delta);  ///< Numbered modes only.
  Answer setRange(double value);                          ///< 0 to 10; not-a-number is refused.
  Answer adjustRange(double delta);
  Answer toggle(const std::string& toggle, const std::string& state);  ///< "ON" or "OFF".
  Answer setChannel(const std::string& channel);
  Answer skipChannel(int count);  ///< Numbered channels only.
  bool setInput(const std::string& input);
  Answer record(bool start);
  Answer seek(int delta);                                          ///< Seconds; never before the beginning.
  Answer note(const std::string& what, const std::string& value);  ///< Keeps a text under a name.

  /// Finds what directives changed by its name: "channel", "mode picture", "volume". False when there is none.
  bool state(const std::string& what, std::string& text) const;

 private:
  mutable std::mutex m_mutex;
  int m_volume;
  bool m_muted;
  std::string m_locale;
  std::map<std::string, std::string> m_information;
  std::map<std::string, std::string> m_settings;
  std::map<std::string, std::string> m_states;
  double m_range = 5;
  bool m_recording = false;
  long long m_position = 0;
};

}  // namespace vorn_speaker
