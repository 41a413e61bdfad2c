#pragma once

#include <memory>
#include <mutex>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// The audio output: the assistant asks for it, the host decides.
///
/// Down  Each request is one call of the VornDALImplIF operation of the same name. No record is kept of who
///       holds the focus: a release without a request is passed on like any other.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornAudioFocus {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornAudioFocus> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornAudioFocus> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornAudioFocus(VornDALImplIF& host);

  VornAudioFocus(const VornAudioFocus&) = delete;
  VornAudioFocus& operator=(const VornAudioFocus&) = delete;

  /// Asks for the audio output, before speaking or playing.
  ///
  /// @returns    true when the host grants it.
  /// @ifnotlive  false
  /// @unlocked
  bool requestAudioFocus();

  /// Hands the audio output back.
  ///
  /// @returns    true when the host accepts the release.
  /// @ifnotlive  false
  /// @unlocked
  bool releaseAudioFocus();

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornAudioFocus> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
