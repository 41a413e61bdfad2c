#pragma once

#include <functional>
#include <mutex>

#include "NullHost.h"

namespace vorn_testing {

/// An external media player that remembers, for each player, what it was last told.
///
/// Commands succeed. getPlaybackState() answers "IDLE", "PLAYING", "PAUSED" or "STOPPED". Thread-safe.
class MemoryPlayer : public NullPlayer {
 public:
  /// One player, as its commands left it.
  struct State {
    bool loggedIn = false;
    bool shuffle = false;
    std::string userName;
    std::string playback = "IDLE";
    std::string repeat = "NONE";  ///< "NONE", "ONE" or "ALL".
    std::string content;          ///< The last token given to launchAndPlay().
    std::chrono::milliseconds position = std::chrono::milliseconds(0);
  };

  /// The player of that name; a fresh one when it was never told anything.
  State state(const std::string& playerId) const;

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
  std::string getPlaybackState(std::string playerId) override;

 private:
  bool change(const std::string& playerId, const std::function<void(State&)>& how);

  mutable std::mutex m_mutex;
  std::map<std::string, State> m_players;
};

/// A device in memory whose answers fit together: what a setter accepted, the getter reports.
///
/// What it does not override does what NullHost does. Nothing outlives the object. Thread-safe.
class MemoryHost : public NullHost {
 public:
  /// Everything that the host knows.
  struct State {
    int volume = 50;  ///< 0 to 100; directives beyond are clamped.
    bool muted = false;
    bool focused = false;
    bool streaming = false;
    bool microphone = true;
    bool handsFree = true;
    bool network = true;
    bool internet = false;
    std::string timezone = "America/Vancouver";
    std::string locale = "en-US";
    std::string card;  ///< The card on display; empty when none is.
    std::vector<std::string> animations;
    std::map<std::string, std::string> information;
    std::map<std::string, std::string> configuration;
    std::map<std::string, std::string> settings;
    std::map<std::string, std::string> store;
  };

  /// A copy, taken in one go.
  State state() const;

  /// Changes the device in one go. Nothing is told to the assistant side. `how` must not call the host.
  void change(const std::function<void(State&)>& how);

  MemoryPlayer player;

  bool requestAudioFocus() override;
  bool releaseAudioFocus() override;
  bool startStreamingAudioData() override;
  void stopStreamingAudioData() override;
  bool isMicrophoneAvailable() override;
  void setAlexaHandsFreeState(bool enabled) override;
  int getVolume() override;
  bool getMuteStatus() override;
  std::string getTimezone() override;
  std::string getDeviceLocale() override;
  void changeAlexaLocale(std::string locale) override;
  std::map<std::string, std::string> getDeviceInformation() override;
  bool getNetworkConnectionStatus() override;
  void updateInternetConnectionStatus(bool connected) override;
  std::string getConfigData(std::string key) override;
  bool getSystemSetting(std::string key, std::string& value) override;
  bool setSystemSetting(std::string key, std::string value) override;
  bool open() override;
  /// The one entry of that key, or an empty map.
  std::map<std::string, std::string> readKeyValue(const std::string& key) override;
  bool writeKeyValue(std::map<std::string, std::string> entries) override;
  bool removeKeyValue(const std::vector<std::string>& keys) override;
  bool clear() override;
  VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override;
  int setAnimation(std::vector<std::string> animations) override;
  std::pair<bool, std::string> onSetVolume(int volume) override;
  std::pair<bool, std::string> onAdjustVolume(int delta) override;
  std::pair<bool, std::string> onMute(bool mute) override;
  bool clearGUICard() override;
  bool renderGUICard(const std::string& card) override;

 private:
  mutable std::mutex m_mutex;
  State m_state;
};

}  // namespace vorn_testing
