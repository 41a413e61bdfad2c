#pragma once

#include <cstdint>

namespace DeviceAbstractionLayer {

/// Where the assistant side keeps its call action type.
class CommsControllerInterface {
 public:
  /// What the user did with a call on the device. A 32-bit value that the library only passes on; the
  /// enumerators stand in the assistant side's own header.
  enum class CallAction : std::int32_t {};
};

}  // namespace DeviceAbstractionLayer
