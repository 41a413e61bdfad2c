#pragma once

#include <VornEMPAdapterIF.h>

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace vorn_speaker {

/// An external media player with a small playlist and a state that the commands really change.
///
/// Commands before a login are refused with false, and so is what makes no sense, such as pausing what does
/// not play. The player identifier is reported back and otherwise not looked at: there is one player.
class Playlist : public VornDeviceAbstractionLayer::VornEMPAdapterIF {
 public:
  bool login(const std::string& accessToken, const std::string& userName, bool forceLogin,
             std::chrono::milliseconds refreshInterval, std::string playerId) override;
  bool logout(std::string playerId) override;
  bool launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                     std::string playerId) override;
  bool nextTrack(std::string playerId) override;
  bool previousTrack(std::string playerId) override;
  bool restartCurrentTrack(std::string playerId) override;
  bool setShuffleOn(std::string playerId) override;
  bool setShuffleOff(std::string playerId) override;
  bool resume(std::string playerId) override;
  bool pause(std::string playerId) override;
  bool stop(std::string playerId) override;
  bool skipForward(std::chrono::milliseconds offset, std::string playerId) override;
  bool setRepeatAll(std::string playerId) override;
  bool setRepeatNone(std::string playerId) override;
  bool setRepeatOne(std::string playerId) override;

  /// JSON: player, user, state ("STOPPED", "PLAYING", "PAUSED"), track, title, position in ms, shuffle, repeat.
  std::string getPlaybackState(std::string playerId) override;

 private:
  struct Track {
    std::string title;
    std::chrono::milliseconds length;
  };

  /// Runs a change under the lock when somebody is logged in.
  template <class Change>
  bool change(Change change);
  bool go(int tracks);

  const std::vector<Track> m_tracks = {{"Morning Light", std::chrono::minutes(3)},
                                       {"Kettle Song", std::chrono::minutes(2)},
                                       {"Out of the Door", std::chrono::minutes(4)}};
  std::mutex m_mutex;
  std::string m_user;
  std::string m_state = "STOPPED";
  std::size_t m_track = 0;
  std::chrono::milliseconds m_position{0};
  bool m_shuffle = false;
  std::string m_repeat = "NONE";
};

}  // namespace vorn_speaker
