#pragma once

#include <map>
#include <string>

namespace vorn_speaker {

/// What the device is before anything happens, as its TOML file says.
struct DeviceFile {
  std::string locale = "en-US";
  std::string timezone = "America/Vancouver";
  std::string capabilities = "[]";  ///< The VSK capabilities, as one text.
  int volume = 30;                  ///< 0 to 100.
  bool muted = false;
  bool networkConnected = true;
  bool microphoneAvailable = true;
  std::map<std::string, std::string> information;  ///< By field name; see DeviceInfoConstants.h.
  std::map<std::string, std::string> config;       ///< By configuration item.
  std::map<std::string, std::string> settings;     ///< By system setting.

  /// Reads a file. Absent entries keep their default.
  /// @throws std::runtime_error  Names file, line and column, what is wrong and the remedy.
  static DeviceFile read(const std::string& path);
};

}  // namespace vorn_speaker
