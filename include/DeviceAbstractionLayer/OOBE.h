#pragma once

#include <memory>
#include <string>

#include "../VornDALExport.h"

namespace DeviceAbstractionLayer {

/// The assistant side of out-of-box setup, called by VornOOBE.
///
/// Declared here as far as the library calls it; the object belongs to the assistant client, which must
/// accept calls from any thread. Operations are called without a lock of the library unless said otherwise.
class VORN_DAL_API OOBE {
 public:
  /// Finds the live object.
  /// @returns  The object, or an empty pointer when the assistant client has none.
  /// @unlocked
  static std::shared_ptr<OOBE> getInstance();

  /// Slots 1 and 2.
  virtual ~OOBE() = default;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved3() {}

  /// Slot 4. Setup has begun.
  virtual void notifyOOBEInitiated() = 0;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved5() {}

  /// Slot 6. Setup was cancelled.
  virtual void notifyOOBECancelled() = 0;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved7() {}
  virtual void reserved8() {}
  virtual void reserved9() {}
  virtual void reserved10() {}

  /// Slot 11. Reports the authorisation status; see AuthorizationStates.h.
  virtual std::string getAlexaAuthStatus() = 0;
};

}  // namespace DeviceAbstractionLayer
