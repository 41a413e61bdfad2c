#include "Playlist.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vorn_speaker {

using std::chrono::milliseconds;

template <class Change>
bool Playlist::change(Change change) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return !m_user.empty() && change();
}

/// Moves by a number of tracks as shuffle and repeat say; the end of the list stops the player.
bool Playlist::go(int tracks) {
  if (m_state == "STOPPED") return false;
  const int count = static_cast<int>(m_tracks.size());
  // Shuffled, the list is walked two at a time: another order, and the same in every run.
  int track = static_cast<int>(m_track) + (m_repeat == "ONE" ? 0 : m_shuffle ? 2 * tracks : tracks);
  if (m_repeat == "NONE" && !m_shuffle && (track < 0 || track >= count)) {
    if (track >= count) m_state = "STOPPED";
    track = std::clamp(track, 0, count - 1);
  }
  m_track = static_cast<std::size_t>((track % count + count) % count);
  m_position = milliseconds(0);
  return true;
}

bool Playlist::login(const std::string& accessToken, const std::string& userName, bool forceLogin,
                     milliseconds, std::string) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (accessToken.empty() || userName.empty() || (!m_user.empty() && m_user != userName && !forceLogin))
    return false;
  m_user = userName;
  return true;
}

bool Playlist::logout(std::string) {
  return change([&] {
    m_user.clear();
    m_state = "STOPPED";
    return true;
  });
}

bool Playlist::launchAndPlay(std::string playContextToken, milliseconds offset, std::string) {
  return change([&] {
    if (playContextToken.empty() || offset.count() < 0) return false;
    m_track = 0;
    m_position = std::min(offset, m_tracks[m_track].length);
    m_state = "PLAYING";
    return true;
  });
}

bool Playlist::nextTrack(std::string) {
  return change([&] { return go(1); });
}

bool Playlist::previousTrack(std::string) {
  return change([&] { return go(-1); });
}

bool Playlist::restartCurrentTrack(std::string) {
  return change([&] { return go(0); });
}

bool Playlist::setShuffleOn(std::string) {
  return change([&] { return m_shuffle = true; });
}

bool Playlist::setShuffleOff(std::string) {
  return change([&] { return !(m_shuffle = false); });
}

bool Playlist::resume(std::string) {
  return change([&] {
    if (m_state != "PAUSED") return false;
    m_state = "PLAYING";
    return true;
  });
}

bool Playlist::pause(std::string) {
  return change([&] {
    if (m_state != "PLAYING") return false;
    m_state = "PAUSED";
    return true;
  });
}

bool Playlist::stop(std::string) {
  return change([&] {
    m_state = "STOPPED";
    m_position = milliseconds(0);
    return true;
  });
}

bool Playlist::skipForward(milliseconds offset, std::string) {
  return change([&] {
    if (m_state == "STOPPED") return false;
    const milliseconds length = m_tracks[m_track].length;
    // Bounded before it is added: any count may come.
    m_position += std::clamp(offset, -m_position, length - m_position);
    return true;
  });
}

bool Playlist::setRepeatAll(std::string) {
  return change([&] {
    m_repeat = "ALL";
    return true;
  });
}

bool Playlist::setRepeatNone(std::string) {
  return change([&] {
    m_repeat = "NONE";
    return true;
  });
}

bool Playlist::setRepeatOne(std::string) {
  return change([&] {
    m_repeat = "ONE";
    return true;
  });
}

std::string Playlist::getPlaybackState(std::string playerId) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const nlohmann::json state = {{"player", playerId},
                                {"user", m_user},
                                {"state", m_state},
                                {"track", m_track + 1},
                                {"title", m_tracks[m_track].title},
                                {"position", m_position.count()},
                                {"shuffle", m_shuffle},
                                {"repeat", m_repeat}};
  return state.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace vorn_speaker
