#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// The lights: the assistant names animations, the host plays them.
///
/// Down  setAnimation() is one call of VornDALImplIF::setAnimation().
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornLEDController {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornLEDController> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornLEDController> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornLEDController(VornDALImplIF& host);

  VornLEDController(const VornLEDController&) = delete;
  VornLEDController& operator=(const VornLEDController&) = delete;

  /// Plays animations by name; order and duplicates are kept, an empty list is passed on.
  ///
  /// @returns    The host's status, unread.
  /// @ifnotlive  0
  /// @locked
  int setAnimation(std::vector<std::string> animations);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornLEDController> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
