#pragma once

#include <memory>
#include <string>

#include "../VornDALExport.h"

namespace DeviceAbstractionLayer {

/// The assistant side of app messages, called by VornAppMessaging.
///
/// Declared here as far as the library calls it; the object belongs to the assistant client, which must
/// accept calls from any thread. It begins with its operation, not with a destructor.
class VORN_DAL_API AppMessaging {
 public:
  /// Finds the live object.
  /// @returns  The object, or an empty pointer when the assistant client has none.
  /// @unlocked
  static std::shared_ptr<AppMessaging> getInstance();

  /// Slot 1. A message from the firmware. @returns whatever the app answers.
  /// @locked  VornAppMessaging's m_dalMutex: do not make it send up again from inside.
  virtual bool SendMessageToxApp(std::string first, std::string second, std::string third) = 0;

 protected:
  /// Not virtual: the first slot belongs to the operation. Objects are owned by shared pointers.
  ~AppMessaging() = default;
};

}  // namespace DeviceAbstractionLayer
