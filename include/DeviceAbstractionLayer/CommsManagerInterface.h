#pragma once

#include <string>

namespace DeviceAbstractionLayer {

/// Where the assistant side keeps its communications state type.
class CommsManagerInterface {
 public:
  /// The state of calls and messaging. The library passes references to it and reads nothing; the real
  /// members stand in the assistant side's own header. Here is one, so that a host can be tried.
  struct CommsStateInfo {
    std::string state;
  };
};

}  // namespace DeviceAbstractionLayer
