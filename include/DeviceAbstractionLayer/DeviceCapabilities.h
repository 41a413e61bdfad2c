#pragma once

#include <memory>
#include <string>

#include "../VornDALExport.h"

namespace DeviceAbstractionLayer {

/// The assistant side's ear for changes of the device's capabilities, called by VornDeviceCapabilities.
///
/// Declared here as far as the library calls it; the object belongs to the assistant client, which must
/// accept calls from any thread. Operations are called without a lock of the library unless said otherwise.
class VORN_DAL_API DeviceCapabilities {
 public:
  /// Finds the live object.
  /// @returns  The object, or an empty pointer when the assistant client has none.
  /// @unlocked
  static std::shared_ptr<DeviceCapabilities> getInstance();

  /// Slots 1 and 2.
  virtual ~DeviceCapabilities() = default;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved3() {}
  virtual void reserved4() {}
  virtual void reserved5() {}
  virtual void reserved6() {}
  virtual void reserved7() {}
  virtual void reserved8() {}
  virtual void reserved9() {}
  virtual void reserved10() {}
  virtual void reserved11() {}
  virtual void reserved12() {}
  virtual void reserved13() {}
  virtual void reserved14() {}
  virtual void reserved15() {}
  virtual void reserved16() {}
  virtual void reserved17() {}
  virtual void reserved18() {}
  virtual void reserved19() {}
  virtual void reserved20() {}
  virtual void reserved21() {}
  virtual void reserved22() {}
  virtual void reserved23() {}
  virtual void reserved24() {}
  virtual void reserved25() {}
  virtual void reserved26() {}
  virtual void reserved27() {}
  virtual void reserved28() {}
  virtual void reserved29() {}

  /// Slot 30. An association was updated.
  virtual void notifyUpdatedAssociation(std::string first, std::string second) = 0;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved31() {}
  virtual void reserved32() {}
  virtual void reserved33() {}
  virtual void reserved34() {}
  virtual void reserved35() {}
  virtual void reserved36() {}
  virtual void reserved37() {}
  virtual void reserved38() {}

  /// Slot 39. The device has a new friendly name.
  virtual void notifyFriendlyNameChange(std::string friendlyName) = 0;
};

}  // namespace DeviceAbstractionLayer
