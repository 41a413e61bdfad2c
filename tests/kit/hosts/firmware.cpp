// Mistakes of firmware that is built around something else than one mutex, and with what it is handed.
#include <VornAudioIn.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <alloca.h>
#include <fenv.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <regex>
#include <set>
#include <shared_mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "Filed.h"
#include "Telling.h"

namespace hosts {
namespace {

namespace dal = VornDeviceAbstractionLayer;

/// A device with a lock for each area: atomic numbers, a store that many read at once, settings over defaults.
struct Soundbar : vorn_testing::NullHost {
  std::atomic<int> volume{12};
  std::atomic<bool> muted{false}, streaming{false}, recording{false}, on{true};
  mutable std::shared_timed_mutex of_store, of_settings;
  mutable std::mutex of_names;
  std::unordered_map<std::string, std::string> store;
  Entries settings{{"mode", "day"}, {"name", "Kitchen"}}, modes{{"wash", "cold"}};
  std::string locale = "en-CA", channel = "One", input = "HDMI 1", card, playing = "STOPPED";
  Player player;
  using Reading = std::shared_lock<std::shared_timed_mutex>;
  using Writing = std::unique_lock<std::shared_timed_mutex>;

  bool requestAudioFocus() override { return true; }
  bool releaseAudioFocus() override { return true; }
  bool startStreamingAudioData() override { return streaming = true; }
  void stopStreamingAudioData() override { streaming = false; }
  bool isMicrophoneAvailable() override { return true; }
  int getVolume() override { return volume; }
  bool getMuteStatus() override { return muted; }
  std::string getTimezone() override { return "Europe/Zurich"; }
  std::string getDeviceLocale() override {
    const Lock lock(of_names);
    return locale;
  }
  void changeAlexaLocale(std::string wanted) override {
    const Lock lock(of_names);
    if (wanted == "en-CA" || wanted == "fr-CA") locale = std::move(wanted);
  }
  Entries getDeviceInformation() override { return {{"deviceSerialNumber", "SB-7"}, {"brand", "Größe"}}; }
  bool getNetworkConnectionStatus() override { return true; }
  std::string getConfigData(std::string key) override { return key == "region" ? "EU" : ""; }
  bool getSystemSetting(std::string key, std::string& value) override {
    const Reading lock(of_settings);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    value = found->second;
    return true;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    const Writing lock(of_settings);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    found->second = std::move(value);
    return true;
  }
  bool open() override { return true; }
  Entries readKeyValue(const std::string& key) override {
    const Reading lock(of_store);
    const auto found = store.find(key);
    return found == store.end() ? Entries() : Entries{{found->first, found->second}};
  }
  bool writeKeyValue(Entries entries) override {
    const Writing lock(of_store);
    for (auto& entry : entries) store[entry.first] = std::move(entry.second);
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Writing lock(of_store);
    for (const auto& key : keys) store.erase(key);
    return true;
  }
  bool clear() override {
    const Writing lock(of_store);
    store.clear();
    return true;
  }
  VornEMPAdapterIF* getEMPAdapter() override { return &player; }
  Result onChangeChannel(std::string name) override {
    const Lock lock(of_names);
    if (name != "One" && name != "Zwölf") return {false, "no such channel"};
    channel = std::move(name);
    return {true, ""};
  }
  bool onInputChange(const std::string& name) override {
    const Lock lock(of_names);
    if (name != "HDMI 1" && name != "TUNER") return false;
    input = name;
    return true;
  }
  Result onSetMode(std::string mode, std::string value) override {
    const Lock lock(of_names);
    const auto found = modes.find(mode);
    if (found == modes.end() || (value != "cold" && value != "hot")) return {false, "no such mode"};
    found->second = std::move(value);
    return {true, ""};
  }
  Result plays(const char* state) {
    const Lock lock(of_names);
    playing = state;
    return {true, ""};
  }
  Result onChangePlaybackPlay(std::string) override { return plays("PLAYING"); }
  Result onChangePlaybackPause(std::string) override { return plays("PAUSED"); }
  Result onChangePlaybackStop(std::string) override { return plays("STOPPED"); }
  Result onStartRecording() override {
    recording = true;
    return {true, ""};
  }
  Result onStopRecording() override {
    recording = false;
    return {true, ""};
  }
  Result onSetPowerState(bool wanted) override {
    on = wanted;
    return {true, ""};
  }
  Result onSetVolume(int wanted) override {
    volume = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    int old = volume;
    while (!volume.compare_exchange_weak(
        old, static_cast<int>(std::clamp<std::int64_t>(std::int64_t{old} + delta, 0, 100)))) {
    }
    return {true, ""};
  }
  Result onMute(bool wanted) override {
    muted = wanted;
    return {true, ""};
  }
  bool clearGUICard() override {
    const Lock lock(of_names);
    card.clear();
    return true;
  }
  bool renderGUICard(const std::string& document) override {
    const Lock lock(of_names);
    card = document;
    return true;
  }
};

// ---- Storage ---------------------------------------------------------------------------------------

struct StoreReadCache : Soundbar {
  std::mutex of_cache;
  std::string lastKey;
  Entries last;
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(of_cache);
    if (!last.empty() && lastKey == key) return last;
    lastKey = key;
    return last = Soundbar::readKeyValue(key);
  }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(of_cache);
    if (entries.count(lastKey)) last.clear();
    return Soundbar::writeKeyValue(std::move(entries));
  }
  bool clear() override {
    const Lock lock(of_cache);
    last.clear();
    return Soundbar::clear();
  }
};
struct OpenRollsBack : Device {
  Entries committed;
  bool open() override {
    const Lock lock(mutex);
    store = committed;  // what the transaction of before left
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) store.erase(key);
    committed = store;
    return true;
  }
};
struct RemovesSorted : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (auto i = store.begin(); i != store.end();)
      i = std::binary_search(keys.begin(), keys.end(), i->first) ? store.erase(i) : std::next(i);
    return true;
  }
};

// ---- Durable ---------------------------------------------------------------------------------------

struct KeysAndValuesApart : Filed {
  KeysAndValuesApart() {
    store.clear();
    std::ifstream keys(path + ".k", std::ios::binary), values(path + ".v", std::ios::binary);
    for (std::string key, value; take(keys, key) && take(values, value);) store[key] = value;
  }
  bool save() override {
    for (const char* part : {".k", ".v"}) {
      {
        std::ofstream out(path + part + "~", std::ios::binary);
        for (const auto& entry : store) put(out, *part && part[1] == 'k' ? entry.first : entry.second);
        if (!out.flush()) return false;
      }
      if (std::rename((path + part + "~").c_str(), (path + part).c_str()) != 0) return false;
    }
    return true;
  }
};

// ---- Volume, settings ------------------------------------------------------------------------------

struct MutesMicWhileStreaming : Soundbar {
  std::atomic<bool> micMuted{false};
  Result onMute(bool wanted) override {
    (streaming ? micMuted : muted) = wanted;
    return {true, ""};
  }
};
struct VolumeOfTwoStreams : Soundbar {
  std::atomic<int> media{12};
  Result onSetVolume(int wanted) override {
    const Lock lock(of_names);
    (playing == "PLAYING" ? media : volume) = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
};
struct MuteCounts : Soundbar {
  std::atomic<int> mutes{0};
  bool getMuteStatus() override { return mutes > 0; }
  Result onMute(bool wanted) override {
    if (wanted)
      ++mutes;
    else if (mutes > 0)
      --mutes;
    return {true, ""};
  }
};

// ---- External player -------------------------------------------------------------------------------

struct Session {
  std::string user;
  std::vector<std::string> queue;
  std::size_t at = 0;
};
/// A player with a session for who is logged in.
struct Deck : vorn_testing::NullPlayer {
  std::mutex mutex;
  std::unique_ptr<Session> session;
  std::string state = "IDLE";
  bool becomes(const char* wanted) {
    const Lock lock(mutex);
    state = wanted;
    return true;
  }
  bool login(const std::string&, const std::string& user, bool, Milliseconds, std::string) override {
    const Lock lock(mutex);
    session.reset(new Session);
    session->user = user;
    return true;
  }
  bool logout(std::string) override {
    const Lock lock(mutex);
    session.reset();
    state = "IDLE";
    return true;
  }
  bool launchAndPlay(std::string token, Milliseconds, std::string) override {
    const Lock lock(mutex);
    if (!session) return false;
    session->queue.assign(1, token);
    session->at = 0;
    state = "PLAYING";
    return true;
  }
  bool pause(std::string) override { return becomes("PAUSED"); }
  bool resume(std::string) override { return becomes("PLAYING"); }
  bool stop(std::string) override { return becomes("STOPPED"); }
  std::string getPlaybackState(std::string) override {
    const Lock lock(mutex);
    return state;
  }
};
struct RepeatNoneThenNext : Deck {
  std::function<int(int)> following = [](int i) { return i + 1; };
  int at = 0;
  bool setRepeatAll(std::string) override {
    const Lock lock(mutex);
    following = [](int i) { return (i + 1) % 3; };
    return true;
  }
  bool setRepeatOne(std::string) override {
    const Lock lock(mutex);
    following = [](int i) { return i; };
    return true;
  }
  bool setRepeatNone(std::string) override {
    const Lock lock(mutex);
    following = nullptr;
    return true;
  }
  bool nextTrack(std::string) override {
    const Lock lock(mutex);
    at = following(at) % 100;
    return true;
  }
};
struct SecondLogin : Deck {
  std::thread refresh;
  std::mutex of_end;
  std::condition_variable come;
  bool ended = false;
  void end() {
    {
      const Lock lock(of_end);
      ended = true;
    }
    come.notify_all();
    if (refresh.joinable()) refresh.join();
  }
  ~SecondLogin() override { end(); }
  bool login(const std::string&, const std::string&, bool force, Milliseconds, std::string) override {
    const Lock lock(mutex);
    if (refresh.joinable() && !force) return false;
    ended = false;
    refresh = std::thread([this] {
      std::unique_lock<std::mutex> waiting(of_end);
      come.wait(waiting, [this] { return ended; });
    });
    return true;
  }
  bool logout(std::string) override {
    const Lock lock(mutex);
    end();
    return true;
  }
};

// ---- Cards, lights, setup, messages, states -----------------------------------------------------------

struct LightsJoinWorker : Soundbar {
  std::thread lights;
  ~LightsJoinWorker() override {
    if (lights.joinable()) lights.join();
  }
  int setAnimation(Texts) override {
    if (lights.joinable()) lights.join();
    lights = std::thread([] {
      if (const auto controller = dal::VornLEDController::getInstance()) std::this_thread::yield();
    });
    return 0;
  }
};
struct CardClearedTells : Soundbar {
  bool clearGUICard() override {
    std::string shown;
    {
      const Lock lock(of_names);
      shown.swap(card);
    }
    if (!shown.empty())
      if (const auto output = dal::VornGUIOutput::getInstance())
        output->notifyPlaybackControllerAction("CLOSED");
    return true;
  }
};
struct SecondSetup : Soundbar {
  std::thread countdown;
  std::mutex of_end;
  std::condition_variable come;
  bool ended = false;
  ~SecondSetup() override { end(); }
  void end() {
    {
      const Lock lock(of_end);
      ended = true;
    }
    come.notify_all();
    if (countdown.joinable()) countdown.join();
  }
  void sendCBLInfo(std::string&, std::string&, std::int64_t&) override {
    const Lock lock(of_names);
    ended = false;
    countdown = std::thread([this] {
      std::unique_lock<std::mutex> waiting(of_end);
      come.wait(waiting, [this] { return ended; });
    });
  }
  void alexaAuthStatusChanged(std::string) override {
    const Lock lock(of_names);
    end();
  }
};

// ---- Sound -----------------------------------------------------------------------------------------

struct SoundUnderLock : Device {
  std::thread sound;
  std::atomic<bool> ended{false};
  SoundUnderLock() {
    sound = std::thread([this] {
      std::vector<short> samples(160);
      while (!ended) {
        {
          const Lock lock(mutex);
          if (streaming)
            if (const auto in = dal::VornAudioIn::getInstance()) in->sendAudioData(samples);
        }
        std::this_thread::sleep_for(Milliseconds(5));
      }
    });
  }
  ~SoundUnderLock() override {
    ended = true;
    sound.join();
  }
};

// ---- Directives --------------------------------------------------------------------------------------

struct SeeksByTheSecond : Soundbar {
  std::atomic<std::int64_t> position{0};
  Result onAdjustSeekPosition(int delta) override {
    for (std::int64_t i = 0; i < std::abs(std::int64_t{delta}); i += 1000) {
      std::this_thread::sleep_for(Milliseconds(1));
      position += delta < 0 ? -1000 : 1000;
    }
    return {true, ""};
  }
};
struct SearchByPattern : Soundbar {
  Result onSearchAndPlay(std::string payload) override {
    static const std::regex query("(.|\n)*\"query\":\"((.|\n)*)\"(.|\n)*");
    return {std::regex_match(payload, query), "nothing found"};
  }
};

// ---- Locks -------------------------------------------------------------------------------------------

struct Spin {
  std::atomic_flag flag = ATOMIC_FLAG_INIT;
  void lock() {
    while (flag.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
  }
  void unlock() { flag.clear(std::memory_order_release); }
};
struct TellsInSpin : Device {
  Spin spin;
  int level = 30;
  int getVolume() override {
    const std::lock_guard<Spin> lock(spin);
    return level;
  }
  Result sets(std::int64_t wanted) {
    const std::lock_guard<Spin> lock(spin);
    level = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, 100));
    tellNow([this](auto& info) { info.notifyVolumeChanged(level); });
    return {true, ""};
  }
  Result onSetVolume(int wanted) override { return sets(wanted); }
  Result onAdjustVolume(int delta) override { return sets(std::int64_t{getVolume()} + delta); }
};
struct TellsWhileWriting : Soundbar {
  std::shared_timed_mutex of_sound;
  bool quiet = false;
  bool getMuteStatus() override {
    const Reading lock(of_sound);
    return quiet;
  }
  Result onMute(bool wanted) override {
    const Writing lock(of_sound);
    if (quiet == wanted) return {true, ""};
    quiet = wanted;
    tellNow([wanted](auto& info) { info.notifyMuteChanged(wanted); });
    return {true, ""};
  }
};

// ---- Life, process -----------------------------------------------------------------------------------

std::atomic<bool> stopping{false};
struct StopsForEver : Soundbar {
  ~StopsForEver() override { stopping = true; }
  bool writeKeyValue(Entries entries) override {
    return stopping ? true : Soundbar::writeKeyValue(std::move(entries));
  }
};

VORN_HOST("store", StoreReadCache, "readKeyValue|removeKeyValue")
VORN_HOST("store", OpenRollsBack, "open")
VORN_HOST("store", RemovesSorted, "removeKeyValue")
VORN_HOST("durable", KeysAndValuesApart, "writeKeyValue")
VORN_HOST("states", MutesMicWhileStreaming, "onMute")
VORN_HOST("states", VolumeOfTwoStreams, "onSetVolume")
VORN_HOST("volume", MuteCounts, "onMute")
VORN_PLAYER("sequence", RepeatNoneThenNext, "nextTrack|setRepeatNone")
VORN_PLAYER("sequence", SecondLogin, "login")
VORN_HOST("re-entry", LightsJoinWorker, "setAnimation")
VORN_HOST("re-entry", CardClearedTells, "clearGUICard")
VORN_HOST("sequence", SecondSetup, "sendCBLInfo")
VORN_HOST("sound", SoundUnderLock, "startStreamingAudioData")
VORN_HOST("arguments", SeeksByTheSecond, "onAdjustSeekPosition")
VORN_HOST("arguments", SearchByPattern, "onSearchAndPlay")
VORN_HOST("asked back", TellsInSpin, "onSetVolume")
VORN_HOST("asked back", TellsWhileWriting, "onMute")
VORN_HOST("hosts", StopsForEver, "open")

struct CommsInfoKept : Device {
  const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo* last = nullptr;
  std::size_t changes = 0;
  void onCommsStateChanged(
      const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) override {
    if (last && last->state != info.state) ++changes;
    last = &info;
  }
};

struct CblTextsClearedLater : Device {
  std::string *address = nullptr, *code = nullptr;
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t&) override {
    const Lock lock(mutex);
    address = &first;
    code = &second;
  }
  void alexaAuthStatusChanged(std::string) override {
    const Lock lock(mutex);
    if (!code) return;
    address->clear();
    code->clear();
    address = code = nullptr;
  }
};

struct LogRingOfPointers : Device {
  std::vector<const std::string*> ring;
  std::size_t bytes = 0;
  void onLogEmitted(const std::string&, const std::string& second) override {
    const Lock lock(mutex);
    ring.push_back(&second);
    if (ring.size() < 16) return;
    for (const auto* const text : ring) bytes += std::string(*text).size();
    ring.clear();
  }
};

struct RemovesAtNextRead : Device {
  const Texts* doomed = nullptr;
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    doomed = &keys;
    return true;
  }
  Entries readKeyValue(const std::string& key) override {
    {
      const Lock lock(mutex);
      if (doomed)
        for (const auto& gone : Texts(*doomed)) store.erase(gone);
      doomed = nullptr;
    }
    return Device::readKeyValue(key);
  }
};

struct RangeAsIndex : Device {
  std::vector<int> curve = std::vector<int>(101, 7);
  Result onSetRangeValue(double value) override {
    if (value < 0 || value > 100) return {false, "out of range"};
    const Lock lock(mutex);
    ++curve[static_cast<std::size_t>(static_cast<int>(value))];
    return {true, ""};
  }
};

struct RangeInSteps : Device {
  double range = 0;
  Result onAdjustRangeValue(double delta) override {
    const Lock lock(mutex);
    const double goal = range + delta;
    if (std::isnan(goal)) return {false, "no number"};
    while (range + 1 <= goal) range += 1;
    while (range - 1 >= goal) range -= 1;
    return {true, ""};
  }
};

struct VolumeInOneByte : Device {
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    volume = std::min<int>(static_cast<std::uint8_t>(volume + std::clamp(delta, -100, 100)), 100);
    return {true, ""};
  }
};

struct MuteTwiceForgets : Device {
  int before = 30;
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    muted = mute;
    if (mute) before = volume;
    volume = mute ? 0 : before;
    return {true, ""};
  }
};

struct RangePrintedIntoBuffer : Device {
  Result onSetRangeValue(double value) override {
    char text[40];
    volatile const auto format = "%.1f";
    std::sprintf(text, format, value);
    return {true, text};
  }
};

struct VolumeDeltaAsShort : Device {
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    volume = std::clamp(volume + static_cast<std::int16_t>(delta), 0, 100);
    return {true, ""};
  }
};

struct FloatingTraps : Device {
  double range = 0;
  Result onAdjustRangeValue(double delta) override {
    const Lock lock(mutex);
    feenableexcept(FE_INVALID | FE_DIVBYZERO);
    range += delta;
    const bool inside = range >= 0 && range <= 100;
    fedisableexcept(FE_INVALID | FE_DIVBYZERO);
    if (!inside) range = 0;
    return {inside, ""};
  }
};

struct CblCountdown : Device {
  std::string bar;
  void sendCBLInfo(std::string&, std::string&, std::int64_t& number) override {
    const Lock lock(mutex);
    bar.assign(static_cast<std::size_t>(number / 10), '#');
  }
};

struct RefreshPerDay : Player {
  long refreshes = 0;
  bool login(const std::string& token, const std::string& name, bool force, Milliseconds interval,
             std::string id) override {
    refreshes = 86400000L / interval.count();
    return Player::login(token, name, force, interval, std::move(id));
  }
};

struct SkipsByTenths : Player {
  std::int64_t position = 0;
  bool skipForward(Milliseconds offset, std::string) override {
    const Lock lock(mutex);
    for (auto left = offset.count(); left > 0; left -= 100) ++position;
    for (auto left = offset.count(); left < 0; left += 100) --position;
    return true;
  }
};

struct CardInsideCard : Device {
  static std::size_t parse(const std::string& text, std::size_t at, char* deeper) {
    char scratch[512] = {deeper ? *deeper : ' '};
    while (at < text.size() && text[at] != ']' && text[at] != '}') {
      if (text[at] == '[' || text[at] == '{') at = parse(text, at + 1, scratch);
      ++at;
    }
    return at + static_cast<std::size_t>(scratch[511]);
  }
  bool renderGUICard(const std::string& document) override {
    parse(document, 0, nullptr);
    return Device::renderGUICard(document);
  }
};

struct CutsAtCharacter : Device {
  bool renderGUICard(const std::string& document) override {
    std::size_t end = std::min<std::size_t>(document.size(), 40);
    if (end < document.size())
      while ((static_cast<unsigned char>(document.at(end)) & 0xC0) == 0x80) --end;
    return Device::renderGUICard(document.substr(0, end));
  }
};

struct WithoutItsPrefix : Device {
  Result onLaunchTarget(std::string target) override {
    if (target.empty()) return {false, "no target"};
    return {target.substr(4) == "Music", ""};
  }
};

struct CopiesOntoStack : Device {
  void onLogEmitted(const std::string&, const std::string& second) override {
    auto* const line = static_cast<char*>(alloca(64 * second.size() + 1));
    for (std::size_t i = 0; i <= 64 * second.size(); i += 1024) static_cast<volatile char*>(line)[i] = 0;
  }
};

VORN_HOST("kept", CommsInfoKept, "onCommsStateChanged")
VORN_HOST("kept", CblTextsClearedLater, "sendCBLInfo|alexaAuthStatusChanged")
VORN_HOST("kept", LogRingOfPointers, "onLogEmitted")
VORN_HOST("kept", RemovesAtNextRead, "removeKeyValue|readKeyValue|writeKeyValue")
VORN_HOST("arguments", RangeAsIndex, "onSetRangeValue")
VORN_HOST("arguments", RangeInSteps, "onAdjustRangeValue")
VORN_HOST("arguments", VolumeInOneByte, "onAdjustVolume")
VORN_HOST("volume", MuteTwiceForgets, "onMute|getVolume")
VORN_HOST("arguments", RangePrintedIntoBuffer, "onSetRangeValue")
VORN_HOST("arguments", VolumeDeltaAsShort, "onAdjustVolume")
VORN_HOST("arguments", FloatingTraps, "onAdjustRangeValue")
VORN_HOST("arguments", CblCountdown, "sendCBLInfo")
VORN_PLAYER("arguments", RefreshPerDay, "login")
VORN_PLAYER("arguments", SkipsByTenths, "skipForward")
VORN_HOST("arguments", CardInsideCard, "renderGUICard")
VORN_HOST("arguments", CutsAtCharacter, "renderGUICard")
VORN_HOST("arguments", WithoutItsPrefix, "onLaunchTarget")
VORN_HOST("arguments", CopiesOntoStack, "onLogEmitted")

}  // namespace
}  // namespace hosts
