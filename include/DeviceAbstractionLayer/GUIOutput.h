#pragma once

#include <memory>
#include <string>

#include "../VornDALExport.h"

namespace DeviceAbstractionLayer {

/// The assistant side's ear for playback controls on the device's display, called by VornGUIOutput.
///
/// Declared here as far as the library calls it; the object belongs to the assistant client, which must
/// accept calls from any thread. Operations are called without a lock of the library unless said otherwise.
class VORN_DAL_API GUIOutput {
 public:
  /// Finds the live object.
  /// @returns  The object, or an empty pointer when the assistant client has none.
  /// @unlocked
  static std::shared_ptr<GUIOutput> getInstance();

  /// Slots 1 and 2.
  virtual ~GUIOutput() = default;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved3() {}
  virtual void reserved4() {}

  /// Slot 5. The user chose a playback action.
  virtual bool notifyPlaybackControllerAction(std::string action) = 0;
};

}  // namespace DeviceAbstractionLayer
