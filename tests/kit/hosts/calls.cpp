// Mistakes that one thread can meet: calls that fail, sequences, what arrives, what is answered.

#include <VornAppMessaging.h>
#include <VornAudioIn.h>
#include <VornCommsManager.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <future>
#include <limits>
#include <stdexcept>
#include <thread>

#include "Host.h"

using namespace VornDeviceAbstractionLayer;

namespace hosts {
namespace {

[[noreturn]] void crash() { std::abort(); }
[[noreturn]] void hang() {
  for (;;) pause();
}
int* nowhere() {
  int* volatile address = nullptr;
  return address;
}

// ---- Alone: a call that crashes, throws, hangs or ends the process ------------------------------

struct ReadsNull : Device {
  std::string getTimezone() override { return std::to_string(*nowhere()); }
};
struct AbortsOnLocale : Device {
  void changeAlexaLocale(std::string) override { crash(); }
};
struct ThrowsOnSetup : Device {
  void sendCBLInfo(std::string&, std::string&, std::int64_t&) override {
    throw std::runtime_error("display");
  }
};
struct ThrowsNumber : Device {
  void onLogEmitted(const std::string&, const std::string&) override { throw 7; }
};
struct ThrowsOnSecond : Device {
  std::atomic<int> calls{0};
  void notifyMainAppInitialized() override {
    if (++calls == 2) throw std::logic_error("already initialised");
  }
};
struct CrashesOnTwoHundredth : Device {
  std::atomic<int> calls{0};
  int getVolume() override { return ++calls == 200 ? *nowhere() : Device::getVolume(); }
};
struct ThrowsOnTwoHundredth : Device {
  std::atomic<int> calls{0};
  void alexaStateChanged(std::string) override {
    if (++calls >= 200) throw std::length_error("history is full");
  }
};
struct FillsTable : Player {
  std::array<std::string, 150> history;
  std::atomic<std::size_t> count{0};
  bool nextTrack(std::string id) override {
    history.at(count++) = std::move(id);
    return true;
  }
};
struct HangsOnStop : Device {
  void stopStreamingAudioData() override { hang(); }
};
struct HangsOnCapabilities : Device {
  std::string getVSKCapabilities() override { hang(); }
};
struct WaitsForNoOne : Player {
  bool previousTrack(std::string) override {
    std::promise<bool> done;
    return done.get_future().get();
  }
};
struct HangsOnHundredth : Device {
  std::atomic<int> calls{0};
  bool getNetworkConnectionStatus() override {
    if (++calls >= 100) hang();
    return true;
  }
};
struct ExitsOnStatus : Device {
  void alexaAuthStatusChanged(std::string) override { std::exit(0); }
};
struct LeavesOnSearch : Device {
  Result onSearchAndDisplayResults(std::string) override { _exit(0); }
};
struct KillsOnKey : Device {
  Result onSendKeystroke(std::string) override {
    raise(SIGKILL);
    return {};
  }
};
struct StopsOnRecord : Device {
  Result onStartRecording() override {
    raise(SIGSTOP);
    return {true, ""};
  }
};
struct EndsThread : Device {
  Result onSetToggleState(std::string, std::string) override { pthread_exit(nullptr); }
};
struct TerminatesElsewhere : Device {
  int setAnimation(Texts) override {
    std::thread([] { throw std::runtime_error("led"); }).join();
    return 0;
  }
};
struct RecursesForEver : Device {
  int depth(int count) {
    return count == std::numeric_limits<int>::max() ? 0 : depth(count + 1) + (volume & 1);
  }
  Result onSearchAndPlay(std::string) override { return {depth(0) == 0, ""}; }
};
VORN_HOST("alone", ReadsNull, "getTimezone")
VORN_HOST("alone", AbortsOnLocale, "changeAlexaLocale")
VORN_HOST("alone", ThrowsOnSetup, "sendCBLInfo")
VORN_HOST("alone", ThrowsNumber, "onLogEmitted")
VORN_HOST("alone", ThrowsOnSecond, "notifyMainAppInitialized")
VORN_HOST("nth call", CrashesOnTwoHundredth, "getVolume")
VORN_HOST("nth call", ThrowsOnTwoHundredth, "alexaStateChanged")
VORN_PLAYER("nth call", FillsTable, "nextTrack")
VORN_HOST("nth call", HangsOnHundredth, "getNetworkConnectionStatus")
VORN_HOST("hang", HangsOnStop, "stopStreamingAudioData")
VORN_HOST("hang", HangsOnCapabilities, "getVSKCapabilities")
VORN_PLAYER("hang", WaitsForNoOne, "previousTrack")
VORN_HOST("ends process", ExitsOnStatus, "alexaAuthStatusChanged")
VORN_HOST("ends process", LeavesOnSearch, "onSearchAndDisplayResults")
VORN_HOST("ends process", KillsOnKey, "onSendKeystroke")
VORN_HOST("ends process", StopsOnRecord, "onStartRecording")
VORN_HOST("ends process", EndsThread, "onSetToggleState")
VORN_HOST("ends process", TerminatesElsewhere, "setAnimation")
VORN_HOST("ends process", RecursesForEver, "onSearchAndPlay")

// ---- The thread that calls -----------------------------------------------------------------------

struct OnItsThread : Device {
  const std::thread::id made = std::this_thread::get_id();
  void here() const {
    if (std::this_thread::get_id() != made) throw std::logic_error("wrong thread");
  }
};
struct ConfigOnItsThread : OnItsThread {
  std::string getConfigData(std::string key) override {
    here();
    return Device::getConfigData(key);
  }
};
struct SettingPerThread : Device {
  static Entries& own() {
    thread_local Entries settings{{"mode", "day"}, {"name", "Kitchen"}};
    return settings;
  }
  bool getSystemSetting(std::string key, std::string& value) override {
    if (!own().count(key)) return false;
    value = own()[key];
    return true;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    if (!own().count(key)) return false;
    own()[key] = value;
    return true;
  }
};
struct StorePerThread : Device {
  static Entries& own() {
    thread_local Entries entries;
    return entries;
  }
  Entries readKeyValue(const std::string& key) override {
    return own().count(key) ? Entries{*own().find(key)} : Entries();
  }
  bool writeKeyValue(Entries entries) override {
    for (auto& entry : entries) own()[entry.first] = entry.second;
    return true;
  }
};
struct OneCallerOnly : Player {
  std::mutex first;
  std::thread::id caller;
  bool restartCurrentTrack(std::string) override {
    const Lock lock(first);
    if (caller == std::thread::id()) caller = std::this_thread::get_id();
    if (caller != std::this_thread::get_id()) crash();
    return true;
  }
};
struct VolumePerThread : Device {
  static int& own() {
    thread_local int volume = 30;
    return volume;
  }
  int getVolume() override { return own(); }
  Result onSetVolume(int wanted) override {
    own() = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    own() = static_cast<int>(std::clamp<std::int64_t>(std::int64_t{own()} + delta, 0, 100));
    return {true, ""};
  }
};
VORN_HOST("thread", ConfigOnItsThread, "getConfigData")
VORN_HOST("thread", SettingPerThread, "getSystemSetting|setSystemSetting")
VORN_HOST("thread", StorePerThread, "readKeyValue|writeKeyValue")
VORN_PLAYER("thread", OneCallerOnly, "restartCurrentTrack")
VORN_HOST("thread", VolumePerThread, "onSetVolume|getVolume|onAdjustVolume")

// ---- Sequences -----------------------------------------------------------------------------------

struct StopsTwice : Device {
  void stopStreamingAudioData() override {
    const Lock lock(mutex);
    if (!streaming && wasStreaming) crash();
    wasStreaming = wasStreaming || streaming;
    streaming = false;
  }
  bool wasStreaming = false;
};
struct StartsTwice : Device {
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (streaming) throw std::logic_error("already streaming");
    return streaming = true;
  }
};
struct StopAfterStart : Device {
  void stopStreamingAudioData() override {
    const Lock lock(mutex);
    if (streaming) crash();
  }
};
struct PauseWhilePlaying : Device {
  Result onChangePlaybackPause(std::string) override {
    const Lock lock(mutex);
    if (playback == "PLAYING") crash();
    return {true, ""};
  }
};
struct PauseWithoutPlay : Device {
  Result onChangePlaybackPause(std::string) override {
    const Lock lock(mutex);
    if (playback == "STOPPED") throw std::logic_error("nothing plays");
    playback = "PAUSED";
    return {true, ""};
  }
};
struct RewindWhilePaused : Device {
  Result onChangePlaybackRewind(std::string) override {
    const Lock lock(mutex);
    if (playback == "PAUSED") crash();
    return {true, ""};
  }
};
struct StopWhileRecording : Device {
  Result onStopRecording() override {
    const Lock lock(mutex);
    if (recording) throw std::runtime_error("disk");
    return {true, ""};
  }
};
struct RecordsTwice : Device {
  Result onStartRecording() override {
    const Lock lock(mutex);
    if (recording) crash();
    recording = true;
    return {true, ""};
  }
};
struct ReleaseOfGranted : Device {
  std::atomic<bool> focused{false};
  bool requestAudioFocus() override { return focused = true; }
  bool releaseAudioFocus() override {
    if (focused.exchange(false)) throw std::logic_error("focus");
    return true;
  }
};
struct ReleaseWithoutRequest : Device {
  std::atomic<int> held{0};
  bool requestAudioFocus() override { return ++held > 0; }
  bool releaseAudioFocus() override { return --held < 0 ? throw std::logic_error("not held") : true; }
};
struct ResumesWithoutContent : Player {
  bool resume(std::string) override {
    const Lock lock(mutex);
    if (content.empty()) crash();
    return true;
  }
};
struct PauseAfterLaunch : Player {
  bool pause(std::string) override {
    const Lock lock(mutex);
    if (playback == "PLAYING") throw std::runtime_error("decoder");
    return true;
  }
};
struct CommandAfterLogout : Player {
  bool left = false;
  bool logout(std::string) override {
    const Lock lock(mutex);
    return left = true;
  }
  bool nextTrack(std::string) override {
    const Lock lock(mutex);
    if (left) crash();
    return true;
  }
};
struct LogoutOfLoggedIn : Player {
  bool logout(std::string) override {
    const Lock lock(mutex);
    if (!user.empty()) crash();
    return true;
  }
};
struct SkipsAfterStop : Player {
  bool skipForward(Milliseconds, std::string) override {
    const Lock lock(mutex);
    if (playback == "STOPPED") throw std::logic_error("stopped");
    return true;
  }
};
struct LogsInTwice : Player {
  bool login(const std::string&, const std::string& name, bool, Milliseconds, std::string) override {
    const Lock lock(mutex);
    if (!user.empty()) throw std::logic_error("logged in");
    user = name.empty() ? "nobody" : name;
    return true;
  }
};
struct ClearsShownCard : Device {
  bool clearGUICard() override {
    const Lock lock(mutex);
    if (!card.empty()) crash();
    return true;
  }
};
struct SearchAfterPower : Device {
  std::atomic<bool> off{false};
  Result onSetPowerState(bool on) override {
    off = !on;
    return {true, ""};
  }
  Result onSearchAndDisplayResults(std::string) override {
    return off ? (crash(), Result()) : Result(true, "");
  }
};
VORN_HOST("sequence", StopsTwice, "stopStreamingAudioData")
VORN_HOST("sequence", StartsTwice, "startStreamingAudioData")
VORN_HOST("sequence", StopAfterStart, "stopStreamingAudioData")
VORN_HOST("sequence", PauseWhilePlaying, "onChangePlaybackPause")
VORN_HOST("sequence", PauseWithoutPlay, "onChangePlaybackPause")
VORN_HOST("sequence", RewindWhilePaused, "onChangePlaybackRewind")
VORN_HOST("sequence", StopWhileRecording, "onStopRecording")
VORN_HOST("sequence", RecordsTwice, "onStartRecording")
VORN_HOST("sequence", ReleaseOfGranted, "releaseAudioFocus")
VORN_HOST("sequence", ReleaseWithoutRequest, "releaseAudioFocus")
VORN_PLAYER("sequence", ResumesWithoutContent, "resume")
VORN_PLAYER("sequence", PauseAfterLaunch, "pause")
VORN_PLAYER("sequence", CommandAfterLogout, "nextTrack")
VORN_PLAYER("sequence", LogoutOfLoggedIn, "logout")
VORN_PLAYER("sequence", SkipsAfterStop, "skipForward")
VORN_PLAYER("sequence", LogsInTwice, "login")
VORN_HOST("sequence", ClearsShownCard, "clearGUICard")
VORN_HOST("sequence", SearchAfterPower, "onSearchAndDisplayResults")

// ---- What arrives --------------------------------------------------------------------------------

struct LocaleAtZero : Device {
  void changeAlexaLocale(std::string text) override { locale = std::string(1, text.at(0)); }
};
struct FirstAnimation : Device {
  int setAnimation(Texts animations) override { return static_cast<int>(animations.at(0).size()); }
};
struct BufferOfLogs : Device {
  void onLogEmitted(const std::string& first, const std::string&) override {
    if (first.size() >= 1024) crash();
  }
};
struct BufferOfCards : Device {
  bool renderGUICard(const std::string& document) override {
    return document.size() > 65536 ? throw std::length_error("card") : true;
  }
};
struct KeyboardOfAscii : Device {
  Result onSendKeystroke(std::string key) override {
    if (std::any_of(key.begin(), key.end(), [](unsigned char c) { return c > 0x7f; })) crash();
    return {true, ""};
  }
};
struct NoNulInState : Device {
  void dialogUXStateChanged(std::string state) override {
    if (std::strlen(state.c_str()) != state.size()) throw std::invalid_argument("NUL");
  }
};
struct PercentInMessage : Device {
  void sendAppMessage(std::string first, std::string second, std::string third) override {
    for (const auto& text : {first, second, third})
      if (text.find("%s") != std::string::npos) crash();
  }
};
struct QuoteInSearch : Device {
  Result onSearchAndDisplayResults(std::string target) override {
    return target.find('\'') != std::string::npos ? throw std::runtime_error("near \"'\": syntax error")
                                                  : Result(true, "");
  }
};
struct PathInCard : Device {
  bool renderGUICard(const std::string& document) override {
    if (document.find('/') != std::string::npos) crash();
    return true;
  }
};
struct LinesInStatus : Device {
  void alexaAuthStatusChanged(std::string status) override {
    if (status.find('\n') != std::string::npos) throw std::invalid_argument("line");
  }
};
struct DividesByCount : Device {
  Result onSkipChannel(int count) override { return count == 0 ? (crash(), Result()) : Result(true, ""); }
};
struct NegatesSmallest : Device {
  Result onAdjustSeekPosition(int delta) override {
    int back = 0;
    if (__builtin_sub_overflow(0, delta, &back)) crash();
    return {true, ""};
  }
};
struct AddsVolume : Device {
  Result onAdjustVolume(int delta) override {
    int sum = 0;
    if (__builtin_add_overflow(Device::getVolume(), delta, &sum)) throw std::overflow_error("volume");
    return Device::onSetVolume(sum);
  }
};
struct RangeNotNumber : Device {
  Result onSetRangeValue(double value) override {
    return value != value ? (crash(), Result()) : Result(true, "");
  }
};
struct RangeInfinite : Device {
  Result onAdjustRangeValue(double delta) override {
    return std::isinf(delta) ? throw std::range_error("delta") : Result(true, "");
  }
};
struct RangeToInteger : Device {
  Result onSetRangeValue(double value) override {
    if (std::fabs(value) > 2147483647.0) crash();
    return {true, ""};
  }
};
struct NegativeVolume : Device {
  Result onSetVolume(int wanted) override {
    return wanted < 0 ? (crash(), Result()) : Device::onSetVolume(wanted);
  }
};
struct VolumeTable : Device {
  Result onSetVolume(int wanted) override {
    return wanted > 100 ? throw std::out_of_range("curve") : Device::onSetVolume(wanted);
  }
};
struct LongestOffset : Player {
  bool launchAndPlay(std::string, Milliseconds offset, std::string) override {
    if (offset == Milliseconds::max()) crash();
    return true;
  }
};
struct BackwardOffset : Player {
  bool skipForward(Milliseconds offset, std::string) override {
    return offset.count() < 0 ? throw std::invalid_argument("offset") : true;
  }
};
struct RefreshZero : Player {
  bool login(const std::string&, const std::string&, bool, Milliseconds interval, std::string) override {
    if (interval.count() == 0) crash();
    return true;
  }
};
struct PlayerNamed : Player {
  bool setShuffleOff(std::string id) override {
    if (id.empty()) crash();
    return true;
  }
};
struct ModeDelta : Device {
  Result onAdjustMode(std::string, int delta) override {
    static const std::array<int, 3> kValues{{1, 2, 3}};
    return {kValues.at(static_cast<std::size_t>(std::clamp(delta, -1, 2))) > 0, ""};
  }
};
struct ManyAnimations : Device {
  int setAnimation(Texts animations) override {
    return animations.size() > 255 ? throw std::length_error("many") : 0;
  }
};
struct RepeatedAnimations : Device {
  int setAnimation(Texts animations) override {
    std::sort(animations.begin(), animations.end());
    if (std::adjacent_find(animations.begin(), animations.end()) != animations.end()) crash();
    return 0;
  }
};
struct EmptyBatch : Device {
  bool writeKeyValue(Entries entries) override {
    if (entries.empty()) crash();
    return Device::writeKeyValue(entries);
  }
};
struct EmptyKeys : Device {
  bool removeKeyValue(const Texts& keys) override {
    return keys.empty() ? throw std::invalid_argument("keys") : Device::removeKeyValue(keys);
  }
};
struct LargeSetupNumber : Device {
  void sendCBLInfo(std::string&, std::string&, std::int64_t& number) override {
    if (number > std::numeric_limits<int>::max()) throw std::out_of_range("number");
  }
};
struct EmptyToken : Player {
  bool launchAndPlay(std::string token, Milliseconds, std::string) override {
    return token.at(0) != '\0' || token.size() > 1;
  }
};
struct LongSetting : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    if (value.size() > 4095) crash();
    return Device::setSystemSetting(key, value);
  }
};
struct LongUser : Player {
  bool login(const std::string&, const std::string& name, bool, Milliseconds, std::string) override {
    if (name.size() > 64) crash();
    return true;
  }
};
VORN_HOST("arguments", LocaleAtZero, "changeAlexaLocale")
VORN_HOST("arguments", FirstAnimation, "setAnimation")
VORN_HOST("arguments", BufferOfLogs, "onLogEmitted")
VORN_HOST("arguments", BufferOfCards, "renderGUICard")
VORN_HOST("arguments", KeyboardOfAscii, "onSendKeystroke")
VORN_HOST("arguments", NoNulInState, "dialogUXStateChanged")
VORN_HOST("arguments", PercentInMessage, "sendAppMessage")
VORN_HOST("arguments", QuoteInSearch, "onSearchAndDisplayResults")
VORN_HOST("arguments", PathInCard, "renderGUICard")
VORN_HOST("arguments", LinesInStatus, "alexaAuthStatusChanged")
VORN_HOST("arguments", DividesByCount, "onSkipChannel")
VORN_HOST("arguments", NegatesSmallest, "onAdjustSeekPosition")
VORN_HOST("arguments", AddsVolume, "onAdjustVolume")
VORN_HOST("arguments", RangeNotNumber, "onSetRangeValue")
VORN_HOST("arguments", RangeInfinite, "onAdjustRangeValue")
VORN_HOST("arguments", RangeToInteger, "onSetRangeValue")
VORN_HOST("arguments", NegativeVolume, "onSetVolume")
VORN_HOST("arguments", VolumeTable, "onSetVolume")
VORN_PLAYER("arguments", LongestOffset, "launchAndPlay")
VORN_PLAYER("arguments", BackwardOffset, "skipForward")
VORN_PLAYER("arguments", RefreshZero, "login")
VORN_PLAYER("arguments", PlayerNamed, "setShuffleOff")
VORN_HOST("arguments", ModeDelta, "onAdjustMode")
VORN_HOST("arguments", ManyAnimations, "setAnimation")
VORN_HOST("arguments", RepeatedAnimations, "setAnimation")
VORN_HOST("arguments", EmptyBatch, "writeKeyValue")
VORN_HOST("arguments", EmptyKeys, "removeKeyValue")
VORN_HOST("arguments", LargeSetupNumber, "sendCBLInfo")
VORN_PLAYER("arguments", EmptyToken, "launchAndPlay")
VORN_HOST("arguments", LongSetting, "setSystemSetting")
VORN_PLAYER("arguments", LongUser, "login")
struct ProgressBar : Player {
  Milliseconds position{0};
  bool launchAndPlay(std::string, Milliseconds offset, std::string) override {
    const Lock lock(mutex);
    position = std::clamp(offset, Milliseconds(0), Milliseconds(200000));
    return true;
  }
  bool skipForward(Milliseconds offset, std::string) override {
    const Lock lock(mutex);
    position = std::min(position + std::clamp(offset, Milliseconds(-60000), Milliseconds(60000)),
                        Milliseconds(200000));
    return true;
  }
  std::string getPlaybackState(std::string) override {
    const Lock lock(mutex);
    return "[" + std::string(static_cast<std::size_t>(position.count() / 10000), '#') + "]";
  }
};
VORN_PLAYER("arguments", ProgressBar, "getPlaybackState|skipForward")

// ---- Values that the device accepts --------------------------------------------------------------

struct AcceptedChannelCrashes : Device {
  Result onChangeChannel(std::string name) override {
    const Result result = Device::onChangeChannel(name);
    if (result.first) crash();
    return result;
  }
};
struct AcceptedInputThrows : Device {
  bool onInputChange(const std::string& name) override {
    return Device::onInputChange(name) ? throw std::runtime_error("switch") : false;
  }
};
struct AcceptedModeCrashes : Device {
  Result onSetMode(std::string mode, std::string value) override {
    if (Device::onSetMode(mode, value).first) crash();
    return {false, ""};
  }
};
struct AcceptedLocaleCrashes : Device {
  void changeAlexaLocale(std::string wanted) override {
    if (wanted == "fr-CA") crash();
  }
};
struct AcceptedSettingReenters : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    if (!Device::setSystemSetting(key, value)) return false;
    return VornDeviceInfo(*this).getVolume() >= 0 && VornDeviceInfo::getInstance() != nullptr;
  }
};
struct SecondSettingReenters : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    if (key == "name") VornDeviceInfo::getInstance();
    return Device::setSystemSetting(key, value);
  }
};
struct AcceptedSettingThrows : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    return Device::setSystemSetting(key, value) ? throw std::runtime_error("flash") : false;
  }
};
struct AcceptedInputKept : Device {
  const std::string* last = nullptr;
  bool onInputChange(const std::string& name) override {
    const Lock lock(mutex);
    if (name != "HDMI 1" && name != "TUNER") return false;
    if (last && *last != name) input = *last;
    last = &name;
    return true;
  }
};
struct AdjustsAcceptedMode : Device {
  Result onAdjustMode(std::string mode, int) override {
    return modes.count(mode) ? (crash(), Result()) : Result();
  }
};
struct ReadsAcceptedSetting : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    return Device::getSystemSetting(key, value) ? throw std::logic_error("type") : false;
  }
};
VORN_HOST("accepted values", AcceptedChannelCrashes, "onChangeChannel")
VORN_HOST("accepted values", AcceptedInputThrows, "onInputChange")
VORN_HOST("accepted values", AcceptedModeCrashes, "onSetMode")
VORN_HOST("accepted values", AcceptedLocaleCrashes, "changeAlexaLocale")
VORN_HOST("accepted values", AcceptedSettingReenters, "setSystemSetting")
VORN_HOST("accepted values", SecondSettingReenters, "setSystemSetting")
VORN_HOST("accepted values", AcceptedSettingThrows, "setSystemSetting")
VORN_HOST("accepted values", AcceptedInputKept, "onInputChange")
VORN_HOST("accepted values", AdjustsAcceptedMode, "onAdjustMode")
VORN_HOST("accepted values", ReadsAcceptedSetting, "getSystemSetting")

// ---- Arguments are the caller's ------------------------------------------------------------------

struct KeepsLogText : Device {
  const std::string* last = nullptr;
  std::size_t repeated = 0;
  void onLogEmitted(const std::string& first, const std::string&) override {
    const Lock lock(mutex);
    if (last && *last == first) ++repeated;
    last = &first;
  }
};
struct KeepsCard : Device {
  const std::string* shown = nullptr;
  bool renderGUICard(const std::string& document) override {
    if (shown && *shown == document) return true;
    shown = &document;
    return true;
  }
};
struct KeepsCardForClearing : Device {
  const char* shown = nullptr;
  bool renderGUICard(const std::string& document) override {
    shown = document.c_str();
    return true;
  }
  bool clearGUICard() override { return !shown || std::strlen(shown) < 1u << 30; }
};
struct KeepsKey : Device {
  const std::string* last = nullptr;
  Entries readKeyValue(const std::string& key) override {
    {
      const Lock lock(mutex);
      if (last && *last == key) card = key;
      last = &key;
    }
    return Device::readKeyValue(key);
  }
};
struct KeepsKeys : Device {
  const Texts* last = nullptr;
  bool removeKeyValue(const Texts& keys) override {
    {
      const Lock lock(mutex);
      if (last && !last->empty()) card = last->front();
      last = &keys;
    }
    return Device::removeKeyValue(keys);
  }
};
struct KeepsUser : Player {
  const std::string* name = nullptr;
  bool login(const std::string&, const std::string& userName, bool, Milliseconds, std::string) override {
    const Lock lock(mutex);
    name = &userName;
    return true;
  }
  bool logout(std::string) override {
    const Lock lock(mutex);
    if (name) user = *name;
    return true;
  }
};
struct KeepsSetupTexts : Device {
  std::string* address = nullptr;
  void sendCBLInfo(std::string& first, std::string&, std::int64_t&) override {
    const Lock lock(mutex);
    address = &first;
  }
  void alexaAuthStatusChanged(std::string) override {
    const Lock lock(mutex);
    if (address) address->clear();
  }
};
struct KeepsSetupNumber : Device {
  std::int64_t* seconds = nullptr;
  void sendCBLInfo(std::string&, std::string&, std::int64_t& number) override {
    const Lock lock(mutex);
    if (seconds) --*seconds;
    seconds = &number;
  }
};
struct KeepsAnswer : Device {
  std::string* last = nullptr;
  bool getSystemSetting(std::string key, std::string& value) override {
    const bool found = Device::getSystemSetting(key, value);
    const Lock lock(mutex);
    if (found) last = &value;
    return found;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    {
      const Lock lock(mutex);
      if (last) *last = value;
    }
    return Device::setSystemSetting(key, value);
  }
};
struct KeepsCalls : Device {
  const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo* last = nullptr;
  void onCommsStateChanged(
      const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) override {
    if (last) static_cast<void>(*reinterpret_cast<const volatile char*>(last));
    last = &info;
  }
};
struct WorksLater : Device {
  std::vector<std::thread> workers;
  ~WorksLater() override {
    for (auto& worker : workers) worker.join();
  }
  void onLogEmitted(const std::string& first, const std::string&) override {
    const Lock lock(mutex);
    if (workers.size() > 16) return;
    workers.emplace_back([this, &first] {
      std::this_thread::sleep_for(Milliseconds(20));
      const Lock inner(mutex);
      card = first;
    });
  }
};
struct PrintsLater : Device {
  std::vector<std::thread> workers;
  ~PrintsLater() override {
    for (auto& worker : workers) worker.join();
  }
  bool renderGUICard(const std::string& document) override {
    if (workers.size() > 16) return true;
    const char* const text = document.c_str();
    workers.emplace_back([text] {
      std::this_thread::sleep_for(Milliseconds(10));
      static_cast<void>(*static_cast<const volatile char*>(text));
    });
    return true;
  }
};
struct SwitchesLater : Device {
  std::vector<std::thread> workers;
  ~SwitchesLater() override {
    for (auto& worker : workers) worker.join();
  }
  bool onInputChange(const std::string& name) override {
    const Lock lock(mutex);
    if (workers.size() > 16) return true;
    workers.emplace_back([this, &name] {
      std::this_thread::yield();
      std::this_thread::sleep_for(Milliseconds(5));
      const Lock inner(mutex);
      input = name;
    });
    return true;
  }
};
struct LowersKey : Device {
  Entries readKeyValue(const std::string& key) override {
    auto& own = const_cast<std::string&>(key);
    std::transform(own.begin(), own.end(), own.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return Device::readKeyValue(key);
  }
};
struct SortsKeys : Device {
  bool removeKeyValue(const Texts& keys) override {
    auto& own = const_cast<Texts&>(keys);
    std::sort(own.begin(), own.end());
    return Device::removeKeyValue(keys);
  }
};
struct MovesKeys : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Texts own = std::move(const_cast<Texts&>(keys));
    return Device::removeKeyValue(own);
  }
};
struct TakesCard : Device {
  bool renderGUICard(const std::string& document) override {
    card.swap(const_cast<std::string&>(document));
    return true;
  }
};
struct WipesToken : Player {
  bool login(const std::string& token, const std::string&, bool, Milliseconds, std::string) override {
    auto& own = const_cast<std::string&>(token);
    std::fill(own.begin(), own.end(), '*');
    return true;
  }
};
struct TrimsLog : Device {
  void onLogEmitted(const std::string&, const std::string& second) override {
    auto& own = const_cast<std::string&>(second);
    if (own.size() > 80) own.resize(80);
  }
};
struct TrimsInput : Device {
  bool onInputChange(const std::string& name) override {
    auto& own = const_cast<std::string&>(name);
    while (!own.empty() && own.back() == ' ') own.pop_back();
    own += '\n';
    return Device::onInputChange(name);
  }
};
VORN_HOST("kept", KeepsLogText, "onLogEmitted")
VORN_HOST("kept", KeepsCard, "renderGUICard")
VORN_HOST("kept", KeepsCardForClearing, "renderGUICard|clearGUICard")
VORN_HOST("kept", KeepsKey, "readKeyValue")
VORN_HOST("kept", KeepsKeys, "removeKeyValue")
VORN_PLAYER("kept", KeepsUser, "login|logout")
VORN_HOST("kept", KeepsSetupTexts, "sendCBLInfo|alexaAuthStatusChanged")
VORN_HOST("kept", KeepsSetupNumber, "sendCBLInfo")
VORN_HOST("kept", KeepsAnswer, "getSystemSetting|setSystemSetting")
VORN_HOST("kept", KeepsCalls, "onCommsStateChanged")
VORN_HOST("kept by a worker", WorksLater, "onLogEmitted")
VORN_HOST("kept by a worker", PrintsLater, "renderGUICard")
VORN_HOST("kept by a worker", SwitchesLater, "onInputChange")
VORN_HOST("changed", LowersKey, "readKeyValue")
VORN_HOST("changed", SortsKeys, "removeKeyValue")
VORN_HOST("changed", MovesKeys, "removeKeyValue")
VORN_HOST("changed", TakesCard, "renderGUICard")
VORN_PLAYER("changed", WipesToken, "login")
VORN_HOST("changed", TrimsLog, "onLogEmitted")
VORN_HOST("changed", TrimsInput, "onInputChange")

// ---- Texts in answers ----------------------------------------------------------------------------

struct LatinZone : Device {
  std::string getTimezone() override { return "Z\xfcrich"; }
};
struct LatinFacts : Device {
  Entries getDeviceInformation() override {
    return {{"name",
             "K\xfc"
             "che"}};
  }
};
struct LatinFactName : Device {
  Entries getDeviceInformation() override { return {{"Ger\xe4t", "x"}}; }
};
struct LatinReason : Device {
  Result onChangeChannel(std::string name) override {
    return Device::onChangeChannel(name).first ? Result(true, "") : Result(false, "ung\xfcltig");
  }
};
struct LatinCapabilities : Device {
  std::string getVSKCapabilities() override { return "[\"\xe9\"]"; }
};
struct LatinWhilePlaying : Player {
  std::string getPlaybackState(std::string id) override {
    const std::string state = Player::getPlaybackState(id);
    return state == "PLAYING" ? "l\xe4uft" : state;
  }
};
struct EchoCutAt16 : Device {
  Result onSearchAndDisplayResults(std::string target) override {
    return {false, "no target " + target.substr(0, 16)};
  }
};
struct EchoCutAt31 : Device {
  Result onSearchAndPlay(std::string payload) override { return {true, payload.substr(0, 31)}; }
};
struct EchoCutAt64 : Device {
  std::string getConfigData(std::string key) override { return key.substr(0, 64); }
};
struct EchoCutAt255 : Device {
  Result onSetToggleState(std::string toggle, std::string) override {
    return {true, "toggled " + toggle.substr(0, 255)};
  }
};
struct SettingCut : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    return Device::setSystemSetting(key, value.substr(0, 7));
  }
};
struct NamesUnknownMode : Device {
  Result onSetMode(std::string mode, std::string) override { return {false, mode.substr(0, 11) + "..."}; }
};
VORN_HOST("texts", LatinZone, "getTimezone")
VORN_HOST("texts", LatinFacts, "getDeviceInformation")
VORN_HOST("texts", LatinFactName, "getDeviceInformation")
VORN_HOST("texts", LatinReason, "onChangeChannel")
VORN_HOST("texts", LatinCapabilities, "getVSKCapabilities")
VORN_PLAYER("texts", LatinWhilePlaying, "getPlaybackState")
VORN_HOST("texts", EchoCutAt16, "onSearchAndDisplayResults")
VORN_HOST("texts", EchoCutAt31, "onSearchAndPlay")
VORN_HOST("texts", EchoCutAt64, "getConfigData")
VORN_HOST("texts", EchoCutAt255, "onSetToggleState")
VORN_HOST("texts", SettingCut, "setSystemSetting|getSystemSetting")
VORN_HOST("texts", NamesUnknownMode, "onSetMode")
struct RangeInBuffer : Device {
  Result onSetRangeValue(double value) override {
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%.2f", value);
    return {true, "set to " + std::string(text, static_cast<std::size_t>(length))};
  }
};
struct EchoSurrogates : Device {
  Result onSetToggleState(std::string toggle, std::string) override {
    std::string said;
    for (std::size_t i = 0; i < toggle.size(); ++i) {
      const auto c = static_cast<unsigned char>(toggle[i]);
      if (c < 0xF0 || i + 3 >= toggle.size()) {
        said += toggle[i];
        continue;
      }
      const auto bits = [&](std::size_t at) { return static_cast<std::uint32_t>(toggle[i + at]) & 0x3FU; };
      const std::uint32_t code = ((c & 7U) << 18U | bits(1) << 12U | bits(2) << 6U | bits(3)) - 0x10000U;
      for (const std::uint32_t half : {0xD800U + (code >> 10U), 0xDC00U + (code & 0x3FFU)}) {
        said += static_cast<char>(0xE0U | half >> 12U);
        said += static_cast<char>(0x80U | (half >> 6U & 0x3FU));
        said += static_cast<char>(0x80U | (half & 0x3FU));
      }
      i += 3;
    }
    return {false, "no toggle " + said};
  }
};
VORN_HOST("texts", RangeInBuffer, "onSetRangeValue")
VORN_HOST("texts", EchoSurrogates, "onSetToggleState")

// ---- The adapter's own mutex ---------------------------------------------------------------------

struct FetchesInVolume : Device {
  int getVolume() override { return VornDeviceInfo::getInstance() ? Device::getVolume() : 0; }
};
struct CreatesInFacts : Device {
  Entries getDeviceInformation() override {
    return VornDeviceInfo::CreateInstance(*this) ? Device::getDeviceInformation() : Entries();
  }
};
struct ShutsDownInMessage : Device {
  void sendAppMessage(std::string, std::string, std::string) override { VornAppMessaging::Shutdown(); }
};
struct HelperFetches : Device {
  bool getMuteStatus() override {
    return std::async(std::launch::async, [] { return VornDeviceInfo::getInstance() == nullptr; }).get() &&
           muted;
  }
};
struct HelperClears : Device {
  bool renderGUICard(const std::string&) override {
    bool done = false;
    std::thread([&] { done = VornGUIOutput::getInstance() != nullptr; }).join();
    return done;
  }
};
struct FetchesAtLast : Device {
  std::atomic<int> calls{0};
  int setAnimation(Texts) override { return ++calls > 60 && !VornLEDController::getInstance() ? 1 : 0; }
};
struct AsksOnCallState : Device {
  void onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&) override {
    VornCommsManager::getInstance();
  }
};
struct CommandsItself : Device {
  void notifyAlexaInvocationDetected(std::string) override {
    VornAudioIn(*this).notifyAlexaButtonPress("tap", Milliseconds(1));
  }
};
VORN_HOST("re-entry", FetchesInVolume, "getVolume")
VORN_HOST("re-entry", CreatesInFacts, "getDeviceInformation")
VORN_HOST("re-entry", ShutsDownInMessage, "sendAppMessage")
VORN_HOST("re-entry", HelperFetches, "getMuteStatus")
VORN_HOST("re-entry", HelperClears, "renderGUICard")
VORN_HOST("re-entry", FetchesAtLast, "setAnimation")
VORN_HOST("re-entry", AsksOnCallState, "onCommsStateChanged")
VORN_HOST("re-entry", CommandsItself, "notifyAlexaInvocationDetected")

// ---- Memory --------------------------------------------------------------------------------------

struct ReturnsFreed : Device {
  std::string getTimezone() override {
    std::string* const text = new std::string(200, 'z');
    const char* volatile bytes = text->c_str();
    delete text;
    return std::string(bytes, 200);
  }
};
struct FreesTwice : Device {
  Result onChangePlaybackNext(std::string) override {
    char* const buffer = static_cast<char*>(std::malloc(64));
    char* volatile again = buffer;
    std::free(buffer);
    std::free(again);
    return {true, ""};
  }
};
struct WritesBeyond : Device {
  Result onSendKeystroke(std::string key) override {
    char* const buffer = static_cast<char*>(std::malloc(32));
    volatile std::size_t size = key.size();
    std::memcpy(buffer, key.data(), size);
    const bool empty = *static_cast<volatile char*>(buffer) == 0;
    std::free(buffer);
    return {!empty, ""};
  }
};
struct SmashesStack : Device {
  void onLogEmitted(const std::string& first, const std::string&) override {
    char line[256];
    volatile std::size_t size = first.size();
    std::memcpy(line, first.data(), size);
    static_cast<void>(*static_cast<volatile char*>(line));
  }
};
VORN_HOST("memory", ReturnsFreed, "getTimezone")
VORN_HOST("memory", FreesTwice, "onChangePlaybackNext")
VORN_HOST("memory", WritesBeyond, "onSendKeystroke")
VORN_HOST("memory", SmashesStack, "onLogEmitted")

}  // namespace
}  // namespace hosts
