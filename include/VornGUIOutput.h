#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// The display: the assistant shows cards, the user's playback actions go back.
///
/// Down  Each operation is one call of the VornDALImplIF operation of the same name.
/// Up    notifyPlaybackControllerAction() is one call of DeviceAbstractionLayer::GUIOutput, fetched anew,
///       whether or not this class has an instance.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornGUIOutput {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornGUIOutput> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornGUIOutput> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornGUIOutput(VornDALImplIF& host);

  VornGUIOutput(const VornGUIOutput&) = delete;
  VornGUIOutput& operator=(const VornGUIOutput&) = delete;

  /// Takes the card off the display.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false
  /// @locked
  bool clearGUICard();

  /// Shows a card. The document is opaque here and reaches the host by the same reference.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false
  /// @locked
  bool renderGUICard(const std::string& card);

  /// Tells the assistant side which playback action the user chose on the display.
  ///
  /// @returns    The assistant side's answer.
  /// @ifabsent   false
  /// @unlocked
  bool notifyPlaybackControllerAction(std::string action);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornGUIOutput> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
