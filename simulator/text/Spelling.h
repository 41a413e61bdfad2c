#pragma once

#include <DeviceAbstractionLayer/CommsControllerInterface.h>
#include <DeviceAbstractionLayer/CommsManagerInterface.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Tokens.h"

namespace vorn_speaker {

/// Values as a scenario holds them: what the reader of scenarios makes of the spelling is the value again.
std::string spell(const std::string& value);
std::string spell(bool value);
std::string spell(int value);
std::string spell(std::int64_t value);
std::string spell(double value);
std::string spell(std::chrono::milliseconds value);
std::string spell(const std::vector<std::string>& values);
std::string spell(const std::vector<short>& samples);

/// A value as it was read.
std::string spell(const Token& token);

/// With telling keys' values hidden unless `secrets`.
std::string spell(const std::map<std::string, std::string>& entries, bool secrets);

/// Spells the argument that a double of the kit found at `address`.
template <class Value>
std::string spellAt(const void* address, bool secrets) {
  if constexpr (std::is_same_v<Value, std::map<std::string, std::string>>) {
    return spell(*static_cast<const Value*>(address), secrets);
  } else {
    return spell(*static_cast<const Value*>(address));
  }
}

// The kit records the number of an action, and the text of a state.
template <>
inline std::string spellAt<DeviceAbstractionLayer::CommsControllerInterface::CallAction>(const void* address,
                                                                                         bool secrets) {
  return spellAt<int>(address, secrets);
}
template <>
inline std::string spellAt<DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo>(const void* address,
                                                                                          bool secrets) {
  return spellAt<std::string>(address, secrets);
}

}  // namespace vorn_speaker
