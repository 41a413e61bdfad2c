#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "../VornDALExport.h"

namespace DeviceAbstractionLayer {

/// The assistant side of voice input, called by VornAudioIn.
///
/// Declared here as far as the library calls it; the object belongs to the assistant client, which must
/// accept calls from any thread. Operations are called without a lock of the library unless said otherwise.
class VORN_DAL_API AudioIn {
 public:
  /// Finds the live object.
  /// @returns  The object, or an empty pointer when the assistant client has none.
  /// @unlocked
  static std::shared_ptr<AudioIn> getInstance();

  /// Slots 1 and 2.
  virtual ~AudioIn() = default;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved3() {}
  virtual void reserved4() {}
  virtual void reserved5() {}
  virtual void reserved6() {}

  /// Slot 7. The talk button was pressed, for as long as `duration` says.
  virtual void notifyAlexaButtonPress(std::string type, std::chrono::milliseconds duration) = 0;

  /// Slot 8. The talk button was released.
  virtual void notifyAlexaButtonReleased() = 0;

  /// Reserved: slots that the library does not call. Their operations stand in the assistant side's headers.
  virtual void reserved9() {}
  virtual void reserved10() {}

  /// Slot 11. One buffer of microphone samples, the firmware's own vector: read it before returning.
  /// @onethread
  virtual void sendAudioData(std::vector<short>& samples) = 0;
};

}  // namespace DeviceAbstractionLayer
