#pragma once

#include <chrono>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

/// The host's external media player: reached through VornDALImplIF::getEMPAdapter() for every command.
///
/// Each operation is called by the VornEMPAdapterControl command of the same name, once, with its
/// arguments unchanged; the answer goes back unread, so its meaning is the host's choice. `playerId`
/// names the player meant and may be empty.
///
/// The firmware owns the object; it must be valid whenever getEMPAdapter() hands it out and until the
/// command returns. All operations are @unlocked: they come on any thread and can overlap. Text by
/// value is the callee's own copy; a reference must not be kept. Exceptions reach the assistant
/// client. The order is the virtual table's: never insert, remove or reorder.
class VORN_DAL_API VornEMPAdapterIF {
 public:
  /// Slots 1 and 2. The library never destroys the object.
  virtual ~VornEMPAdapterIF() = default;

  /// Slot 3. Logs a user in. The token is a secret: the library writes it to an enabled trace.
  virtual bool login(const std::string& accessToken, const std::string& userName, bool forceLogin,
                     std::chrono::milliseconds refreshInterval, std::string playerId) = 0;

  /// Slot 4. Logs the user out.
  virtual bool logout(std::string playerId) = 0;

  /// Slot 5. Plays the content that the token names, from `offset` on.
  virtual bool launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                             std::string playerId) = 0;

  /// Slot 6. Goes to the next track.
  virtual bool nextTrack(std::string playerId) = 0;

  /// Slot 7. Goes to the previous track.
  virtual bool previousTrack(std::string playerId) = 0;

  /// Slot 8. Starts the current track over.
  virtual bool restartCurrentTrack(std::string playerId) = 0;

  /// Slot 9. Turns shuffle on.
  virtual bool setShuffleOn(std::string playerId) = 0;

  /// Slot 10. Turns shuffle off.
  virtual bool setShuffleOff(std::string playerId) = 0;

  /// Slot 11. Resumes playback.
  virtual bool resume(std::string playerId) = 0;

  /// Slot 12. Pauses playback.
  virtual bool pause(std::string playerId) = 0;

  /// Slot 13. Stops playback.
  virtual bool stop(std::string playerId) = 0;

  /// Slot 14. Moves the position by `offset`, back when negative.
  virtual bool skipForward(std::chrono::milliseconds offset, std::string playerId) = 0;

  /// Slot 15. Repeats the whole queue.
  virtual bool setRepeatAll(std::string playerId) = 0;

  /// Slot 16. Repeats nothing.
  virtual bool setRepeatNone(std::string playerId) = 0;

  /// Slot 17. Repeats the current track.
  virtual bool setRepeatOne(std::string playerId) = 0;

  /// Slot 18. Reports the playback state, in a format settled with the assistant client.
  virtual std::string getPlaybackState(std::string playerId) = 0;
};

}  // namespace VornDeviceAbstractionLayer
