#pragma once

#include <DeviceAbstractionLayer/CommsControllerInterface.h>
#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <vorn_testing/Spelling.h>

#include <string>

#include "Tokens.h"

namespace vorn_speaker {

using vorn_testing::spell;

/// A value as it was read.
std::string spell(const Token& token);

/// Spells the argument that a double of the kit found at `address`.
template <class Value>
std::string spellAt(const void* address) {
  return spell(*static_cast<const Value*>(address));
}

// The kit records the number of an action, and the text of a state.
template <>
inline std::string spellAt<DeviceAbstractionLayer::CommsControllerInterface::CallAction>(
    const void* address) {
  return spellAt<int>(address);
}
template <>
inline std::string spellAt<DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo>(
    const void* address) {
  return spellAt<std::string>(address);
}

}  // namespace vorn_speaker
