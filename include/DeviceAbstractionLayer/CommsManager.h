#pragma once

#include <memory>

#include "../VornDALExport.h"
#include "CommsControllerInterface.h"

namespace DeviceAbstractionLayer {

/// The assistant side of calls, called by VornCommsManager.
///
/// Declared here as far as the library calls it; the object belongs to the assistant client, which must
/// accept calls from any thread. It begins with its operation, not with a destructor.
class VORN_DAL_API CommsManager {
 public:
  /// Finds the live object.
  /// @returns  The object, or an empty pointer when the assistant client has none.
  /// @unlocked
  static std::shared_ptr<CommsManager> getInstance();

  /// Slot 1. The user took a call action on the device.
  virtual void notifyCallAction(CommsControllerInterface::CallAction action) = 0;

 protected:
  /// Not virtual: the first slot belongs to the operation. Objects are owned by shared pointers.
  ~CommsManager() = default;
};

}  // namespace DeviceAbstractionLayer
