#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// Out-of-box setup and authorisation, between the host and the assistant side.
///
/// Down  Each operation is one call of the VornDALImplIF operation of the same name.
/// Up    Each operation is one call of DeviceAbstractionLayer::OOBE, fetched anew, whether or not this
///       class has an instance.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornOOBE {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornOOBE> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornOOBE> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornOOBE(VornDALImplIF& host);

  VornOOBE(const VornOOBE&) = delete;
  VornOOBE& operator=(const VornOOBE&) = delete;

  /// Tells the assistant side that setup has begun.
  ///
  /// @ifabsent   Nothing but the line.
  /// @logs       Only when dropped: the signature and " dalinstance is Null".
  /// @unlocked
  void notifyOOBEInitiated();

  /// Tells the assistant side that setup was cancelled.
  ///
  /// @ifabsent   Nothing, and no line: only a lost start is worth one.
  /// @unlocked
  void notifyOOBECancelled();

  /// Asks the assistant side for the authorisation status; the usual texts stand in AuthorizationStates.h.
  ///
  /// @returns    The assistant side's text.
  /// @ifabsent   Empty text.
  /// @unlocked
  std::string getAlexaAuthStatus();

  /// Hands the host what the user needs to link the device. The three are the caller's own objects, which
  /// the host may write to; order and unit are settled between the two sides.
  ///
  /// @ifnotlive  Nothing but the line.
  /// @logs       Only when dropped: the signature and " m_instance is Null".
  /// @unlocked
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number);

  /// Tells the host the new authorisation status, any text.
  ///
  /// @ifnotlive  Nothing but the line.
  /// @logs       Only when dropped: the signature and " m_instance is Null". Never the status.
  /// @unlocked
  void alexaAuthStatusChanged(std::string status);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornOOBE> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
