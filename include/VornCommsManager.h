#pragma once

#include <DeviceAbstractionLayer/CommsControllerInterface.h>
#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <memory>
#include <mutex>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// Calls: the user's actions go up, the state of calls and messaging comes down.
///
/// Down  onCommsStateChanged() is one call of VornDALImplIF::onCommsStateChanged().
/// Up    notifyCallAction() is one call of DeviceAbstractionLayer::CommsManager, fetched anew, whether or
///       not this class has an instance.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornCommsManager {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornCommsManager> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornCommsManager> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornCommsManager(VornDALImplIF& host);

  VornCommsManager(const VornCommsManager&) = delete;
  VornCommsManager& operator=(const VornCommsManager&) = delete;

  /// Tells the assistant side what the user did with a call.
  ///
  /// @ifabsent   The action is dropped, and no line.
  /// @logs       The signature, before the assistant side is called. Never the action.
  /// @unlocked
  void notifyCallAction(DeviceAbstractionLayer::CommsControllerInterface::CallAction action);

  /// Tells the host the new state, by the caller's own reference.
  ///
  /// @ifnotlive  Nothing, and no line.
  /// @logs       The signature, under the lock, before the host is called. Never the state.
  /// @locked
  void onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornCommsManager> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
