#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// Messages of three texts between the assistant app and the firmware, without a meaning here.
///
/// Down  sendAppMessage() is one call of VornDALImplIF::sendAppMessage().
/// Up    SendMessageToxApp() is one call of DeviceAbstractionLayer::AppMessaging, fetched anew, whether or
///       not this class has an instance. The two directions have a mutex each: the host may send up from
///       inside its handler of a message that came down.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornAppMessaging {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornAppMessaging> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornAppMessaging> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornAppMessaging(VornDALImplIF& host);

  VornAppMessaging(const VornAppMessaging&) = delete;
  VornAppMessaging& operator=(const VornAppMessaging&) = delete;

  /// Sends a message down to the host, whose answer is not asked for.
  ///
  /// @returns    true, also when the message was dropped.
  /// @ifnotlive  true; the message is dropped.
  /// @locked
  bool sendAppMessage(std::string first, std::string second, std::string third);

  /// Sends a message up to the assistant app. One at a time: lines and deliveries are in the same order. The
  /// assistant side must not send up again from inside.
  ///
  /// @returns    The app's answer.
  /// @ifabsent   false, and no line.
  /// @logs       "receiveAppMessage(" and the texts as they are, joined by "," and ended by ")", under m_dalMutex,
  ///             before the delivery.
  /// @locked     m_dalMutex, not the mutex of the other operations.
  bool SendMessageToxApp(std::string first, std::string second, std::string third);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornAppMessaging> m_instance;
  static std::mutex m_mutex;
  static std::mutex m_dalMutex;  ///< The upward direction's own.
};

}  // namespace VornDeviceAbstractionLayer
