#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// The assistant client's log records, handed to the host's own log.
///
/// Independent of FileLogger, the library's own trace.
///
/// Down  Each record is one call of VornDALImplIF::onLogEmitted(): no buffer, no filter, no level.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornLoggerObserver {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornLoggerObserver> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornLoggerObserver> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornLoggerObserver(VornDALImplIF& host);

  VornLoggerObserver(const VornLoggerObserver&) = delete;
  VornLoggerObserver& operator=(const VornLoggerObserver&) = delete;

  /// Hands on one record: two texts in the assistant's order, by reference and never copied.
  ///
  /// @ifnotlive  The record is lost.
  /// @unlocked
  void onLogEmitted(const std::string& first, const std::string& second);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornLoggerObserver> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
