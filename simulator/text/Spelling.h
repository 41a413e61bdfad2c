#pragma once

#include <DeviceAbstractionLayer/CommsControllerInterface.h>
#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <vorn_testing/Spelling.h>

#include <map>
#include <string>
#include <vector>

#include "Tokens.h"

namespace vorn_speaker {

using vorn_testing::spell;

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
