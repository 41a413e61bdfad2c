#pragma once

#include <vorn_testing/HostEntry.h>
#include <vorn_testing/NullHost.h>

#include <algorithm>
#include <functional>
#include <mutex>

/// Hosts with one mistake each, and hosts with none, for the checks to be tried on.
namespace hosts {

using Result = std::pair<bool, std::string>;
using Texts = std::vector<std::string>;
using Entries = std::map<std::string, std::string>;
using Milliseconds = std::chrono::milliseconds;
using Lock = std::lock_guard<std::mutex>;
using VornDeviceAbstractionLayer::VornDALImplIF;
using VornDeviceAbstractionLayer::VornEMPAdapterIF;

/// What a player is told, remembered under one mutex.
struct Player : vorn_testing::NullPlayer {
  std::mutex mutex;
  std::string user, content, playback = "IDLE";

  bool becomes(const char* state) {
    const Lock lock(mutex);
    playback = state;
    return true;
  }
  bool login(const std::string&, const std::string& name, bool, Milliseconds, std::string) override {
    const Lock lock(mutex);
    user = name;
    return true;
  }
  bool logout(std::string) override {
    const Lock lock(mutex);
    user.clear();
    playback = "IDLE";
    return true;
  }
  bool launchAndPlay(std::string token, Milliseconds, std::string) override {
    const Lock lock(mutex);
    content = std::move(token);
    playback = "PLAYING";
    return true;
  }
  bool resume(std::string) override { return becomes("PLAYING"); }
  bool pause(std::string) override { return becomes("PAUSED"); }
  bool stop(std::string) override { return becomes("STOPPED"); }
  std::string getPlaybackState(std::string) override {
    const Lock lock(mutex);
    return playback;
  }
};

/// A device as a team would write it: it takes the settings, channels, inputs and modes that it has, and refuses
/// others by its answer. One mutex for everything.
struct Device : vorn_testing::NullHost {
  mutable std::mutex mutex;
  int volume = 30;
  bool muted = false, streaming = false, recording = false;
  std::string locale = "en-CA", channel = "One", input = "HDMI 1", playback = "STOPPED", card;
  Entries settings{{"mode", "day"}, {"name", "Kitchen"}}, store, modes{{"wash", "cold"}};
  Player player;

  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    return streaming = true;
  }
  void stopStreamingAudioData() override {
    const Lock lock(mutex);
    streaming = false;
  }
  bool requestAudioFocus() override { return true; }
  bool releaseAudioFocus() override { return true; }
  bool isMicrophoneAvailable() override { return true; }
  int getVolume() override {
    const Lock lock(mutex);
    return volume;
  }
  bool getMuteStatus() override {
    const Lock lock(mutex);
    return muted;
  }
  std::string getTimezone() override { return "America/Vancouver"; }
  std::string getDeviceLocale() override {
    const Lock lock(mutex);
    return locale;
  }
  void changeAlexaLocale(std::string wanted) override {
    const Lock lock(mutex);
    if (wanted.size() == 5 && wanted[2] == '-') locale = std::move(wanted);
  }
  Entries getDeviceInformation() override { return {{"deviceType", "SPEAKER"}, {"serial", "0042"}}; }
  bool getNetworkConnectionStatus() override { return true; }
  std::string getConfigData(std::string key) override { return key == "region" ? "Québec" : ""; }
  bool getSystemSetting(std::string key, std::string& value) override {
    const Lock lock(mutex);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    value = found->second;
    return true;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    found->second = std::move(value);
    return true;
  }
  bool open() override { return true; }
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    const auto found = store.find(key);
    return found == store.end() ? Entries() : Entries{*found};
  }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) store[entry.first] = std::move(entry.second);
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) store.erase(key);
    return true;
  }
  bool clear() override {
    const Lock lock(mutex);
    store.clear();
    return true;
  }
  VornEMPAdapterIF* getEMPAdapter() override { return &player; }
  Result onChangeChannel(std::string name) override {
    const Lock lock(mutex);
    if (name != "One" && name != "Zwölf") return {false, "no such channel"};
    channel = std::move(name);
    return {true, ""};
  }
  bool onInputChange(const std::string& name) override {
    const Lock lock(mutex);
    if (name != "HDMI 1" && name != "TUNER") return false;
    input = name;
    return true;
  }
  Result onSetMode(std::string mode, std::string value) override {
    const Lock lock(mutex);
    const auto found = modes.find(mode);
    if (found == modes.end()) return {false, "no such mode"};
    found->second = std::move(value);
    return {true, ""};
  }
  Result onChangePlaybackPlay(std::string) override { return plays("PLAYING"); }
  Result onChangePlaybackPause(std::string) override { return plays("PAUSED"); }
  Result onChangePlaybackStop(std::string) override { return plays("STOPPED"); }
  Result plays(const char* state) {
    const Lock lock(mutex);
    playback = state;
    return {true, ""};
  }
  Result onStartRecording() override {
    const Lock lock(mutex);
    recording = true;
    return {true, ""};
  }
  Result onStopRecording() override {
    const Lock lock(mutex);
    recording = false;
    return {true, ""};
  }
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    volume = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    volume = static_cast<int>(std::clamp<std::int64_t>(std::int64_t{volume} + delta, 0, 100));
    return {true, ""};
  }
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    muted = mute;
    return {true, ""};
  }
  bool clearGUICard() override {
    const Lock lock(mutex);
    card.clear();
    return true;
  }
  bool renderGUICard(const std::string& document) override {
    const Lock lock(mutex);
    card = document;
    return true;
  }
};

/// A device whose player has the mistake.
template <class OfPlayer>
struct WithPlayer : Device {
  OfPlayer faulty;
  VornEMPAdapterIF* getEMPAdapter() override { return &faulty; }
};

/// A device that brings media players.
struct WithPlayers {
  vorn_testing::MediaPlayers players;
  virtual ~WithPlayers() = default;
};

/// One host of the list, which `vornCreateHost()` makes when the environment's VORN_KIT_HOST names it.
struct Row {
  const char* kind;       ///< The kind of mistake; "good" for none.
  const char* name;       ///< The type's.
  const char* operation;  ///< What a broken check must name: one of the words between "|".
  VornDALImplIF* (*make)();
};

std::vector<Row>& rows();

struct Added {
  explicit Added(const Row& row) { rows().push_back(row); }
};

}  // namespace hosts

/// Adds a host to the list.
#define VORN_HOST(kind, type, operation) \
  const Added added##type({kind, #type, operation, [] { return static_cast<VornDALImplIF*>(new type); }});
/// Adds a host around a faulty player.
#define VORN_PLAYER(kind, type, operation) \
  const Added added##type(                 \
      {kind, #type, operation, [] { return static_cast<VornDALImplIF*>(new WithPlayer<type>); }});
