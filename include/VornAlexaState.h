#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// The assistant's own state: the assistant reports, the host shows it.
///
/// Down  Each report is one call of the VornDALImplIF operation of the same name; nothing is compared or
///       filtered, so the same state reported twice arrives twice.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornAlexaState {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornAlexaState> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornAlexaState> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornAlexaState(VornDALImplIF& host);

  VornAlexaState(const VornAlexaState&) = delete;
  VornAlexaState& operator=(const VornAlexaState&) = delete;

  /// Reports the assistant's overall state, any text.
  ///
  /// @ifnotlive  Nothing.
  /// @unlocked
  void alexaStateChanged(std::string state);

  /// Reports the assistant's dialog state, any text.
  ///
  /// @ifnotlive  Nothing.
  /// @unlocked
  void dialogUXStateChanged(std::string state);

  /// Reports that the assistant client has finished its start-up.
  ///
  /// @ifnotlive  Nothing.
  /// @unlocked
  void notifyMainAppInitialized();

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornAlexaState> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
