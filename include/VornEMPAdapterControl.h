#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// The external media player: the assistant commands, the host's player obeys.
///
/// Down  Each command asks the host for its player (VornDALImplIF::getEMPAdapter()) and calls the
///       VornEMPAdapterIF operation of the same name on it, once. `playerId` names the player meant.
///       Every command writes its line first, also without an instance. getEMPAdapter() must not answer
///       with a null pointer: it is used without a test.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornEMPAdapterControl {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @logs   Its signature, on every call, before the lock; then the constructor's, when it creates.
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornEMPAdapterControl> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @logs    Its signature, on every call, before the lock.
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornEMPAdapterControl> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornEMPAdapterControl(VornDALImplIF& host);

  VornEMPAdapterControl(const VornEMPAdapterControl&) = delete;
  VornEMPAdapterControl& operator=(const VornEMPAdapterControl&) = delete;

  /// Logs a user in. The token goes into an enabled trace in clear.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and every argument, the flag as 1 or 0, the interval as a count and "ms".
  /// @unlocked
  bool login(const std::string& accessToken, const std::string& userName, bool forceLogin,
             std::chrono::milliseconds refreshInterval, std::string playerId);

  /// Logs the user out.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool logout(std::string playerId);

  /// Plays the content that the token names, from `offset` on.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and every argument, the offset as a count and "ms".
  /// @unlocked
  bool launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset, std::string playerId);

  /// Goes to the next track.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool nextTrack(std::string playerId);

  /// Goes to the previous track.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool previousTrack(std::string playerId);

  /// Starts the current track over.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool restartCurrentTrack(std::string playerId);

  /// Turns shuffle on.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool setShuffleOn(std::string playerId);

  /// Turns shuffle off.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool setShuffleOff(std::string playerId);

  /// Resumes playback.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool resume(std::string playerId);

  /// Pauses playback.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool pause(std::string playerId);

  /// Stops playback.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool stop(std::string playerId);

  /// Moves the position by `offset`, back when negative.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and every argument, the offset as a count and "ms".
  /// @unlocked
  bool skipForward(std::chrono::milliseconds offset, std::string playerId);

  /// Repeats the whole queue.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool setRepeatAll(std::string playerId);

  /// Repeats nothing.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool setRepeatNone(std::string playerId);

  /// Repeats the current track.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  false, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  bool setRepeatOne(std::string playerId);

  /// Reads the playback state, in a format settled between the two sides.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  Empty text, after the line.
  /// @logs       The signature and `playerId`, first of all.
  /// @unlocked
  std::string getPlaybackState(std::string playerId);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornEMPAdapterControl> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
