#pragma once

#include <memory>
#include <string>
#include <vector>

#include "../VornDALExport.h"

namespace DeviceAbstractionLayer {

/// The assistant side's ear for changes of the device, called by VornDeviceInfo.
///
/// Declared here as far as the library calls it; the object belongs to the assistant client, which must
/// accept calls from any thread. Operations are called without a lock of the library unless said otherwise.
class VORN_DAL_API DeviceInfo {
 public:
  /// Finds the live object.
  /// @returns  The object, or an empty pointer when the assistant client has none.
  /// @unlocked
  static std::shared_ptr<DeviceInfo> getInstance();

  /// Slots 1 and 2.
  virtual ~DeviceInfo() = default;

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
  virtual void reserved30() {}
  virtual void reserved31() {}
  virtual void reserved32() {}

  /// Slot 33. A system setting has a new value.
  virtual void notifySystemSettingChanged(std::string key, std::string value) = 0;

  /// Slot 34. The device has one new locale.
  virtual void notifyLocaleChange(std::string locale) = 0;

  /// Slot 35. The device has a new list of locales.
  virtual void notifyLocaleChange(std::vector<std::string> locales) = 0;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved36() {}

  /// Slot 37. The network connection has a new status.
  virtual void notifyNetworkConnectionChanged(std::string status) = 0;

  /// Slot 38. The microphone became available or unavailable.
  virtual void notifyMicrophoneAvailabilityChanged(std::string availability) = 0;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved39() {}
  virtual void reserved40() {}

  /// Slot 41. The speaker has a new volume, on the host's scale.
  virtual void notifyVolumeChanged(int volume) = 0;

  /// Slot 42. The speaker was muted (true) or unmuted.
  virtual void notifyMuteChanged(bool muted) = 0;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved43() {}
  virtual void reserved44() {}
  virtual void reserved45() {}
  virtual void reserved46() {}

  /// Slot 47. Hands-free listening was switched on (true) or off.
  virtual void notifyHandsfreeStateChanged(bool enabled) = 0;
};

}  // namespace DeviceAbstractionLayer
