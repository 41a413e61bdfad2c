// Mistakes that need several threads: state without a guard or behind two, mutexes in two orders, players that go.
#include <VornAlexaState.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <future>
#include <list>
#include <map>
#include <memory>
#include <shared_mutex>
#include <stdexcept>
#include <thread>
#include <unordered_map>

#include "Host.h"

using namespace VornDeviceAbstractionLayer;

namespace hosts {
namespace {

[[noreturn]] void crash() { std::abort(); }

// ---- Without a guard -----------------------------------------------------------------------------

struct StoreUnguarded : Device {
  Entries readKeyValue(const std::string& key) override {
    const auto found = store.find(key);
    return found == store.end() ? Entries() : Entries{*found};
  }
  bool writeKeyValue(Entries entries) override {
    for (auto& entry : entries) store[entry.first] = std::move(entry.second);
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    for (const auto& key : keys) store.erase(key);
    return true;
  }
  bool clear() override {
    store.clear();
    return true;
  }
};
struct ReadUnguarded : Device {
  Entries readKeyValue(const std::string& key) override {
    const auto found = store.find(key);
    return found == store.end() ? Entries() : Entries{*found};
  }
};
struct ClearUnguarded : Device {
  bool clear() override {
    store.clear();
    return true;
  }
};
struct SettingReadUnguarded : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    value = found->second;
    return true;
  }
};
struct StateText : Device {
  std::string last;
  void alexaStateChanged(std::string state) override { last = state; }
};
struct DialogHistory : Device {
  std::vector<std::string> history;
  void dialogUXStateChanged(std::string state) override {
    history.push_back(std::move(state));
    if (history.size() > 50) history.erase(history.begin());
  }
};
struct LogQueue : Device {
  std::list<std::string> lines;
  void onLogEmitted(const std::string& first, const std::string& second) override {
    lines.push_back(first + second);
    if (lines.size() > 20) lines.pop_front();
  }
};
struct KeyCounts : Device {
  std::unordered_map<std::string, int> counts;
  Result onSendKeystroke(std::string key) override {
    ++counts[key + std::to_string(counts.size() % 7)];
    if (counts.size() > 30) counts.clear();
    return {true, ""};
  }
};
struct ChannelText : Device {
  Result onChangeChannel(std::string name) override {
    if (name != "One" && name != "Zwölf") return {false, "no such channel"};
    channel = std::string(40, name[0]) + name;
    return {true, ""};
  }
};
struct InputText : Device {
  bool onInputChange(const std::string& name) override {
    if (name != "HDMI 1" && name != "TUNER") return false;
    input = std::string(30, ' ') + name;
    return true;
  }
};
struct ModesUnguarded : Device {
  Result onSetMode(std::string mode, std::string value) override {
    if (!modes.count(mode)) return {false, "no such mode"};
    modes[mode] = value + std::string(40, '.');
    return {true, ""};
  }
};
struct PayloadShared : Device {
  std::shared_ptr<std::string> current = std::make_shared<std::string>();
  Result onChangePlaybackPlay(std::string payload) override {
    current = std::make_shared<std::string>(std::move(payload));
    return {true, ""};
  }
  Result onChangePlaybackPause(std::string) override { return {true, std::to_string(current->size())}; }
};
struct FocusCounter : Device {
  volatile int holders = 0;
  bool requestAudioFocus() override {
    holders = holders + 1;
    return true;
  }
  bool releaseAudioFocus() override {
    if (holders == 0) return false;
    holders = holders - 1;
    if (holders < 0) crash();
    return true;
  }
};
struct InsideCounter : Device {
  std::atomic<int> inside{0};
  Result onStartRecording() override {
    if (inside++ != 0) crash();
    std::atomic_signal_fence(std::memory_order_seq_cst);
    for (volatile int i = 0; i < 200;) i = i + 1;
    --inside;
    return {true, ""};
  }
};
struct BusyFlag : Device {
  volatile bool busy = false;
  Result onSearchAndPlay(std::string) override {
    if (busy) throw std::logic_error("search runs");
    busy = true;
    for (volatile int i = 0; i < 500;) i = i + 1;
    busy = false;
    return {true, ""};
  }
};
struct BusyThrows : Device {
  Result onSearchAndDisplayResults(std::string) override {
    const std::unique_lock<std::mutex> lock(mutex, std::try_to_lock);
    if (!lock) throw std::runtime_error("busy");
    for (volatile int i = 0; i < 500;) i = i + 1;
    return {true, ""};
  }
};
struct OneBuffer : Device {
  char buffer[64];
  Result onSetToggleState(std::string toggle, std::string) override {
    const std::size_t size = std::min<std::size_t>(toggle.size(), sizeof buffer - 1);
    std::copy_n(toggle.data(), size, buffer);
    buffer[size] = '\0';
    for (volatile int i = 0; i < 300;) i = i + 1;
    if (!std::equal(buffer, buffer + size, toggle.data())) throw std::logic_error("torn");
    return {true, ""};
  }
};
struct PlayersUnguarded : Player {
  std::map<std::string, int> plays;
  bool setShuffleOn(std::string id) override {
    ++plays[id + std::to_string(plays.size() % 9)];
    if (plays.size() > 8) plays.clear();
    return true;
  }
};
struct PlaybackText : Player {
  bool resume(std::string) override {
    playback = "PLAYING, from the position where it was paused";
    return true;
  }
  bool pause(std::string) override {
    playback = "PAUSED, at the position where it was playing";
    return true;
  }
  std::string getPlaybackState(std::string) override { return playback; }
};
struct UserText : Player {
  bool login(const std::string&, const std::string& name, bool, Milliseconds, std::string) override {
    user = name;
    return true;
  }
  bool logout(std::string) override {
    user.clear();
    user.shrink_to_fit();
    return true;
  }
};
struct LocaleBetweenAdapters : Device {
  void changeAlexaLocale(std::string wanted) override { locale = wanted + std::string(30, '.'); }
  void alexaStateChanged(std::string state) override {
    const std::string copy = locale;
    if (copy.find('\0') != std::string::npos && state.empty()) crash();
  }
};
struct VolumeStep : Device {
  std::vector<int> steps = std::vector<int>(64, 1);
  Result onAdjustVolume(int delta) override {
    steps.assign(static_cast<std::size_t>(64 + std::clamp(delta, -60, 60)), delta);
    return Device::onAdjustVolume(delta);
  }
};
struct LazyCapabilities : Device {
  std::string* text = nullptr;
  std::atomic<int> made{0};
  std::string getVSKCapabilities() override {
    if (!text) {
      for (volatile int i = 0; i < 20000;) i = i + 1;
      if (made++ > 0) crash();
      text = new std::string("[]");
    }
    return *text;
  }
};
struct OpensOnce : Device {
  std::unique_ptr<std::string> file;
  bool open() override {
    file.reset(new std::string(100, 'f'));
    return file->size() == 100;
  }
};
VORN_HOST("unguarded", StoreUnguarded, "readKeyValue|writeKeyValue|removeKeyValue|clear")
VORN_HOST("unguarded", ReadUnguarded, "readKeyValue|writeKeyValue|removeKeyValue|clear")
VORN_HOST("unguarded", ClearUnguarded, "readKeyValue|writeKeyValue|removeKeyValue|clear")
VORN_HOST("unguarded", SettingReadUnguarded, "getSystemSetting|setSystemSetting")
VORN_HOST("unguarded", StateText, "alexaStateChanged")
VORN_HOST("unguarded", DialogHistory, "dialogUXStateChanged")
VORN_HOST("unguarded", LogQueue, "onLogEmitted")
VORN_HOST("unguarded", KeyCounts, "onSendKeystroke")
VORN_HOST("unguarded", ChannelText, "onChangeChannel")
VORN_HOST("unguarded", InputText, "onInputChange")
VORN_HOST("unguarded", ModesUnguarded, "onSetMode")
VORN_HOST("unguarded", PayloadShared, "onChangePlaybackPlay|onChangePlaybackPause")
VORN_HOST("unguarded", FocusCounter, "requestAudioFocus|releaseAudioFocus")
VORN_HOST("unguarded", InsideCounter, "onStartRecording")
VORN_HOST("unguarded", BusyFlag, "onSearchAndPlay")
VORN_HOST("unguarded", BusyThrows, "onSearchAndDisplayResults")
VORN_HOST("unguarded", OneBuffer, "onSetToggleState")
VORN_PLAYER("unguarded", PlayersUnguarded, "setShuffleOn")
VORN_PLAYER("unguarded", PlaybackText, "resume|pause|getPlaybackState")
VORN_PLAYER("unguarded", UserText, "login|logout")
VORN_HOST("unguarded", LocaleBetweenAdapters, "changeAlexaLocale|alexaStateChanged")
VORN_HOST("unguarded", VolumeStep, "onAdjustVolume")
VORN_HOST("unguarded", LazyCapabilities, "getVSKCapabilities")
VORN_HOST("unguarded", OpensOnce, "open")

// ---- One state behind two mutexes ----------------------------------------------------------------

struct StoreBehindTwo : Device {
  std::mutex other;
  bool writeKeyValue(Entries entries) override {
    const Lock lock(other);
    for (auto& entry : entries) store[entry.first] = std::move(entry.second);
    return true;
  }
};
struct SettingsBehindTwo : Device {
  std::mutex other;
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(other);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    found->second = value + std::string(value.size() < 30 ? 0 : 1, ' ');
    settings.erase("scratch");
    settings["scratch"] = std::move(value);
    return true;
  }
};
struct CardsBehindTwo : Device {
  std::mutex other;
  std::string shown;
  bool renderGUICard(const std::string& document) override {
    const Lock lock(other);
    shown = document;
    return true;
  }
  Result onSearchAndDisplayResults(std::string payload) override {
    const Lock lock(mutex);
    shown = payload + " results in the living room";
    return {true, ""};
  }
};
struct AnimationsBehindTwo : Device {
  std::mutex other;
  Texts running;
  int setAnimation(Texts animations) override {
    const Lock lock(other);
    running = animations;
    return 0;
  }
  void dialogUXStateChanged(std::string state) override {
    const Lock lock(mutex);
    running.assign(3, state);
  }
};
struct ContentBehindTwo : Player {
  std::mutex other;
  bool launchAndPlay(std::string token, Milliseconds, std::string) override {
    const Lock lock(mutex);
    content = token + " in the living room, from the start";
    return true;
  }
  bool stop(std::string) override {
    const Lock lock(other);
    content.clear();
    content.shrink_to_fit();
    return true;
  }
};
VORN_HOST("two mutexes", StoreBehindTwo, "readKeyValue|writeKeyValue|removeKeyValue|clear")
VORN_HOST("two mutexes", SettingsBehindTwo, "getSystemSetting|setSystemSetting")
VORN_HOST("two mutexes", CardsBehindTwo, "renderGUICard|onSearchAndDisplayResults")
VORN_HOST("two mutexes", AnimationsBehindTwo, "setAnimation|dialogUXStateChanged")
VORN_PLAYER("two mutexes", ContentBehindTwo, "launchAndPlay|stop")

// ---- The same memory at once: what is too short to be asked for anew, or too quick to be met ----------------------

struct ShortState : Device {
  std::string last = "IDLE";
  void alexaStateChanged(std::string state) override { last = state.substr(0, 12); }
};
struct CardsByHour : Device {
  std::map<int, std::string> shown;
  std::mutex other;
  Result onSearchAndDisplayResults(std::string payload) override {
    const Lock lock(mutex);
    shown[static_cast<int>(payload.size() % 24)] = "results";
    return {true, ""};
  }
  Result onSearchAndPlay(std::string target) override {
    const Lock lock(other);
    shown.erase(static_cast<int>(target.size() % 24));
    return {true, ""};
  }
};
struct InputBehindTwo : Device {
  std::mutex other;
  bool onInputChange(const std::string& name) override {
    if (name != "HDMI 1" && name != "TUNER") return false;
    const Lock lock(other);
    input = name;
    return true;
  }
  Result onSendKeystroke(std::string) override {
    const Lock lock(mutex);
    return {true, "on " + input};
  }
};
struct RepeatBehindTwo : Player {
  std::mutex other;
  std::string repeat = "NONE";
  bool setRepeatAll(std::string) override {
    const Lock lock(mutex);
    repeat.assign("ALL");
    return true;
  }
  bool setRepeatOne(std::string) override {
    const Lock lock(other);
    repeat.assign("ONE");
    return true;
  }
};
struct CopiedOutside : Device {
  std::string zone = "America/Vancouver";
  void changeAlexaLocale(std::string wanted) override {
    const Lock lock(mutex);
    zone = wanted == "fr-CA" ? "America/Montreal" : "America/Halifax";
  }
  std::string getVSKCapabilities() override {
    const std::string* current;
    {
      const Lock lock(mutex);
      current = &zone;
    }
    return "[\"" + *current + "\"]";
  }
};
struct BufferOfAll : Device {
  Result onSkipChannel(int count) override {
    static char text[40];
    std::snprintf(text, sizeof text, "%d channels on", count);
    return {true, text};
  }
};
struct TextOfAll : Player {
  std::string getPlaybackState(std::string id) override {
    static std::string text;
    text.clear();
    text += "STOPPED ";
    text += id;
    return text;
  }
};
struct BufferOfTwo : Device {
  static char* buffer() {
    static char text[64];
    return text;
  }
  Result onAdjustSeekPosition(int delta) override {
    std::snprintf(buffer(), 64, "%+d seconds", delta);
    return {true, buffer()};
  }
  Result onStopRecording() override {
    std::strcpy(buffer(), "stopped");
    return {true, buffer()};
  }
};
struct CountsKeystrokes : Device {
  int keystrokes = 0;
  Result onSendKeystroke(std::string) override {
    ++keystrokes;
    return {true, ""};
  }
};
VORN_HOST("same memory", CountsKeystrokes, "onSendKeystroke")
VORN_HOST("same memory", ShortState, "alexaStateChanged")
VORN_HOST("same memory", CardsByHour, "onSearchAndDisplayResults|onSearchAndPlay")
VORN_HOST("same memory", InputBehindTwo, "onInputChange|onSendKeystroke")
VORN_PLAYER("same memory", RepeatBehindTwo, "setRepeatAll|setRepeatOne")
VORN_HOST("same memory", CopiedOutside, "changeAlexaLocale|getVSKCapabilities")
VORN_HOST("same memory", BufferOfAll, "onSkipChannel")
VORN_PLAYER("same memory", TextOfAll, "getPlaybackState")
VORN_HOST("same memory", BufferOfTwo, "onAdjustSeekPosition|onStopRecording")

// ---- Mutexes in two orders, and mutexes that stay locked -----------------------------------------

struct VolumeAndMute : Device {
  std::mutex of_volume, of_mute;
  Result onSetVolume(int wanted) override {
    const Lock first(of_volume);
    const Lock second(of_mute);
    return Device::onSetVolume(wanted);
  }
  Result onMute(bool mute) override {
    const Lock first(of_mute);
    const Lock second(of_volume);
    return Device::onMute(mute);
  }
};
struct StoreAndState : Device {
  std::mutex of_store, of_state;
  bool writeKeyValue(Entries entries) override {
    const Lock first(of_store);
    const Lock second(of_state);
    return Device::writeKeyValue(std::move(entries));
  }
  void alexaStateChanged(std::string) override {
    const Lock first(of_state);
    const Lock second(of_store);
  }
};
struct PlayerAndFocus : Device {
  std::mutex of_player, of_focus;
  bool requestAudioFocus() override {
    const Lock first(of_focus);
    const Lock second(of_player);
    return true;
  }
  VornEMPAdapterIF* getEMPAdapter() override {
    const Lock first(of_player);
    const Lock second(of_focus);
    return &player;
  }
};
struct NotifiesLocked : Device {
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    volume = std::clamp(wanted, 0, 100);
    if (const auto info = VornDeviceInfo::getInstance()) info->notifyVolumeChanged(volume);
    return {true, ""};
  }
};
struct AsksLocked : Device {
  Result onSearchAndDisplayResults(std::string) override {
    const Lock lock(mutex);
    return {VornGUIOutput(*this).clearGUICard(), ""};
  }
  bool clearGUICard() override { return true; }
  bool renderGUICard(const std::string& document) override {
    const Lock lock(mutex);
    card = document;
    return true;
  }
};
struct CommandsLocked : Device {
  Result onChangePlaybackStop(std::string) override {
    const Lock lock(mutex);
    if (const auto info = VornDeviceInfo::getInstance()) info->getNetworkConnectionStatus();
    return {true, ""};
  }
};
struct StaysLockedOnUnknown : Device {
  std::mutex of_settings;
  bool getSystemSetting(std::string key, std::string& value) override {
    of_settings.lock();
    if (!settings.count(key)) return false;
    const bool found = Device::getSystemSetting(key, value);
    of_settings.unlock();
    return found;
  }
};
struct StaysLockedOnRefusal : Device {
  std::mutex of_channel;
  Result onChangeChannel(std::string name) override {
    of_channel.lock();
    const Result result = Device::onChangeChannel(std::move(name));
    if (!result.first) return result;
    of_channel.unlock();
    return result;
  }
};
struct LocksTwice : Device {
  std::string getDeviceLocale() override {
    const Lock lock(mutex);
    return Device::getDeviceLocale();
  }
};
struct LocksTwiceWhenLoud : Device {
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    return wanted > 100 ? Device::onMute(false) : (volume = std::max(wanted, 0), Result(true, ""));
  }
};
struct WaitsForTheOther : Device {
  std::condition_variable stopped;
  bool startStreamingAudioData() override {
    std::unique_lock<std::mutex> lock(mutex);
    stopped.wait(lock, [&] { return !streaming; });
    return streaming = true;
  }
};
struct LostWakeUp : Device {
  std::atomic<int> waiting{0};
  Result onChangePlaybackStartOver(std::string) override {
    ++waiting;
    if (waiting > 1)
      for (const int seen = waiting; waiting == seen;) std::this_thread::yield();
    return {--waiting >= 0, ""};
  }
};
VORN_HOST("lock order", VolumeAndMute, "onSetVolume|onMute")
VORN_HOST("lock order", StoreAndState, "writeKeyValue|alexaStateChanged")
VORN_HOST("lock order", PlayerAndFocus, "requestAudioFocus|getEMPAdapter")
VORN_HOST("holds its mutex", NotifiesLocked, "onSetVolume")
VORN_HOST("holds its mutex", AsksLocked, "onSearchAndDisplayResults|renderGUICard")
VORN_HOST("holds its mutex", CommandsLocked, "onChangePlaybackStop")
VORN_HOST("stays locked", StaysLockedOnUnknown, "getSystemSetting")
VORN_HOST("stays locked", StaysLockedOnRefusal, "onChangeChannel")
VORN_HOST("stays locked", LocksTwice, "getDeviceLocale")
VORN_HOST("stays locked", LocksTwiceWhenLoud, "onSetVolume")
VORN_HOST("stays locked", WaitsForTheOther, "startStreamingAudioData")
VORN_HOST("stays locked", LostWakeUp, "onChangePlaybackStartOver")

// ---- The player ----------------------------------------------------------------------------------

struct NoPlayer : Device {
  VornEMPAdapterIF* getEMPAdapter() override { return nullptr; }
};
struct NoPlayerAfterFifty : Device {
  std::atomic<int> calls{0};
  VornEMPAdapterIF* getEMPAdapter() override { return ++calls > 50 ? nullptr : &player; }
};
struct NoPlayerAfterThousand : Device {
  std::atomic<int> calls{0};
  VornEMPAdapterIF* getEMPAdapter() override { return ++calls > 1000 ? nullptr : &player; }
};
struct NoPlayerElsewhere : Device {
  const std::thread::id made = std::this_thread::get_id();
  VornEMPAdapterIF* getEMPAdapter() override {
    return made == std::this_thread::get_id() ? &player : nullptr;
  }
};
struct NoPlayerAfterLogout : Device {
  struct Leaving : Player {
    std::atomic<bool> left{false};
    bool logout(std::string) override { return left = true; }
  } leaving;
  VornEMPAdapterIF* getEMPAdapter() override { return leaving.left ? nullptr : &leaving; }
};
struct NoPlayerWhileBusy : Device {
  std::atomic<int> busy{0};
  VornEMPAdapterIF* getEMPAdapter() override {
    const bool first = busy++ == 0;
    for (volatile int i = 0; i < 300;) i = i + 1;
    --busy;
    return first ? &player : nullptr;
  }
};
struct NoPlayerBeforeReady : Device {
  std::atomic<bool> ready{false};
  void notifyMainAppInitialized() override { ready = true; }
  VornEMPAdapterIF* getEMPAdapter() override { return ready ? &player : nullptr; }
};
struct NoPlayerWithoutNetwork : Device {
  std::atomic<bool> online{true};
  void updateInternetConnectionStatus(bool connected) override { online = connected; }
  VornEMPAdapterIF* getEMPAdapter() override { return online ? &player : nullptr; }
};
struct GonePlayer : Device {
  VornEMPAdapterIF* getEMPAdapter() override {
    Player* volatile gone = new Player;
    delete gone;
    return gone;
  }
};
struct PlayerPerCall : Device {
  std::unique_ptr<Player> current;
  VornEMPAdapterIF* getEMPAdapter() override {
    const Lock lock(mutex);
    current.reset(new Player);
    return current.get();
  }
};
struct PlayerThrows : Device {
  std::atomic<int> calls{0};
  VornEMPAdapterIF* getEMPAdapter() override {
    return ++calls > 70 ? throw std::runtime_error("service") : &player;
  }
};
VORN_HOST("player", NoPlayer, "getEMPAdapter")
VORN_HOST("player", NoPlayerAfterFifty, "getEMPAdapter")
VORN_HOST("player", NoPlayerAfterThousand, "getEMPAdapter")
VORN_HOST("player", NoPlayerElsewhere, "getEMPAdapter")
VORN_HOST("player", NoPlayerAfterLogout, "getEMPAdapter")
VORN_HOST("player", NoPlayerWhileBusy, "getEMPAdapter")
VORN_HOST("player", NoPlayerBeforeReady, "getEMPAdapter")
VORN_HOST("player", NoPlayerWithoutNetwork, "getEMPAdapter")
VORN_HOST("player", GonePlayer, "getEMPAdapter")
VORN_HOST("player", PlayerPerCall, "getEMPAdapter")
VORN_HOST("player", PlayerThrows, "getEMPAdapter")

struct CardOnOneThread : Device {
  std::thread::id painter;
  bool renderGUICard(const std::string& document) override {
    const Lock lock(mutex);
    if (painter == std::thread::id()) painter = std::this_thread::get_id();
    if (painter != std::this_thread::get_id()) throw std::logic_error("context is current on another thread");
    card = document;
    return true;
  }
};

struct LruUnderSharedLock : Device {
  std::shared_mutex rw;
  std::list<std::string> used;
  Entries readKeyValue(const std::string& key) override {
    const std::shared_lock<std::shared_mutex> lock(rw);
    const auto found = store.find(key);
    if (found == store.end()) return {};
    used.push_front(key);
    if (used.size() > 8) used.pop_back();
    return {*found};
  }
  bool writeKeyValue(Entries entries) override {
    const std::unique_lock<std::shared_mutex> lock(rw);
    return Device::writeKeyValue(std::move(entries));
  }
  bool removeKeyValue(const Texts& keys) override {
    const std::unique_lock<std::shared_mutex> lock(rw);
    return Device::removeKeyValue(keys);
  }
  bool clear() override {
    const std::unique_lock<std::shared_mutex> lock(rw);
    return Device::clear();
  }
};

struct AtomicButInTwoSteps : Device {
  std::atomic<int> level{30};
  int getVolume() override { return level; }
  Result onSetVolume(int wanted) override {
    level = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    level = std::clamp(level + std::clamp(delta, -100, 100), 0, 100);
    return {true, ""};
  }
};

struct CopiedThenReplaced : Device {
  std::shared_ptr<const Entries> now = std::make_shared<Entries>();
  std::shared_ptr<const Entries> current() {
    const Lock lock(mutex);
    return now;
  }
  void replace(Entries next) {
    const auto made = std::make_shared<Entries>(std::move(next));
    const Lock lock(mutex);
    now = made;
  }
  Entries readKeyValue(const std::string& key) override {
    const auto all = current();
    const auto found = all->find(key);
    return found == all->end() ? Entries() : Entries{*found};
  }
  bool writeKeyValue(Entries entries) override {
    Entries next = *current();
    for (auto& entry : entries) next[entry.first] = std::move(entry.second);
    replace(std::move(next));
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    Entries next = *current();
    for (const auto& key : keys) next.erase(key);
    replace(std::move(next));
    return true;
  }
  bool clear() override {
    replace({});
    return true;
  }
};

struct OnceForAllHosts : Device {
  std::unique_ptr<std::string> zone;
  OnceForAllHosts() {
    static std::once_flag once;
    std::call_once(once, [this] { zone = std::make_unique<std::string>("America/Vancouver"); });
  }
  std::string getTimezone() override { return *zone; }
};

VORN_HOST("thread", CardOnOneThread, "renderGUICard")
VORN_HOST("unguarded", LruUnderSharedLock, "readKeyValue")
VORN_HOST("unguarded", AtomicButInTwoSteps, "onAdjustVolume")
VORN_HOST("unguarded", CopiedThenReplaced, "writeKeyValue|removeKeyValue|readKeyValue")
VORN_HOST("hosts", OnceForAllHosts, "destructor")

}  // namespace
}  // namespace hosts
