// Faults in how a host takes calls: threads, arguments, mutexes, references, texts.

#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <VornAppMessaging.h>
#include <VornCommsManager.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "faulty.h"

using namespace faulty_hosts;
using namespace VornDeviceAbstractionLayer;

namespace {

// Threads, exceptions, ends.

struct VolumeOnOneThread : MemoryHost {
  std::thread::id made = std::this_thread::get_id();
  int getVolume() override {
    return made == std::this_thread::get_id() ? 1 : throw std::logic_error("wrong thread");
  }
};
struct PlayerOnOneThread : MemoryPlayer {
  std::thread::id made = std::this_thread::get_id();
  bool pause(std::string) override {
    return made == std::this_thread::get_id() ? true : (std::abort(), false);
  }
};
struct SearchThrows : MemoryHost {
  Result onSearchAndPlay(std::string) override { throw std::runtime_error("no network"); }
};
struct StateThrowsNumber : MemoryHost {
  void alexaStateChanged(std::string) override { throw 42; }
};
struct StopHangs : MemoryHost {
  void stopStreamingAudioData() override {
    for (std::atomic<bool> never{false}; !never;) std::this_thread::yield();
  }
};
struct FocusOnce : MemoryHost {
  std::atomic<int> requests{0};
  bool requestAudioFocus() override { return requests++ == 0 ? true : throw std::logic_error("taken"); }
};
struct InitialisedExits : MemoryHost {
  void notifyMainAppInitialized() override { std::_Exit(0); }
};

/// A stay in an operation that another thread may be in too.
struct Inside {
  Meeting& meeting;
  const bool alone;
  explicit Inside(Meeting& where) : meeting(where), alone(!where.enter()) {}
  ~Inside() { meeting.leave(); }
};
struct DialogUnguarded : MemoryHost {
  Meeting inside;
  void dialogUXStateChanged(std::string) override {
    if (!Inside(inside).alone) std::abort();
  }
};
struct MicrophoneUnguarded : MemoryHost {
  Meeting inside;
  bool isMicrophoneAvailable() override {
    return Inside(inside).alone ? true : throw std::logic_error("busy");
  }
};
struct PlaybackUnguarded : MemoryPlayer {
  Meeting inside;
  std::string getPlaybackState(std::string) override {
    return Inside(inside).alone ? "IDLE" : (std::abort(), "");
  }
};
struct ReadUnguarded : MemoryHost {
  Meeting inside;
  Entries readKeyValue(const std::string& key) override {
    return Inside(inside).alone ? MemoryHost::readKeyValue(key) : throw std::logic_error("busy");
  }
};

// Arguments.

struct LocaleNotEmpty : MemoryHost {
  void changeAlexaLocale(std::string locale) override { static_cast<void>(locale.at(0)); }
};
struct AnimationsNotEmpty : MemoryHost {
  int setAnimation(Texts animations) override { return static_cast<int>(animations.at(0).size()); }
};
struct TargetNotEmpty : MemoryHost {
  Result onLaunchTarget(std::string target) override {
    return target.empty() ? (std::abort(), Result()) : Result();
  }
};
struct RepeatNotEmpty : MemoryPlayer {
  bool setRepeatOne(std::string playerId) override { return playerId.at(0) != 0; }
};
struct MessageInBuffer : MemoryHost {
  void sendAppMessage(std::string first, std::string, std::string) override {
    if (first.size() > 4096) std::abort();
  }
};
struct ChannelOverflows : MemoryHost {
  Result onSkipChannel(int count) override {
    int channel = 1;
    return __builtin_add_overflow(channel, count, &channel) ? (std::abort(), Result()) : Result();
  }
};
struct RangeLimited : MemoryHost {
  Result onSetRangeValue(double value) override {
    return value > 1e6 ? throw std::range_error("range") : Result();
  }
};
struct AnimationsLimited : MemoryHost {
  int setAnimation(Texts animations) override {
    return animations.size() > 100 ? throw std::length_error("many") : 0;
  }
};
struct OffsetOverflows : MemoryPlayer {
  bool launchAndPlay(std::string, Milliseconds offset, std::string) override {
    return offset < Milliseconds::max() ? true : throw std::overflow_error("end of time");
  }
};
struct LogFormats : MemoryHost {
  void onLogEmitted(const std::string& first, const std::string&) override {
    if (first.find("%n") != std::string::npos) std::abort();
  }
};
struct KeystrokeNoNul : MemoryHost {
  Result onSendKeystroke(std::string keystroke) override {
    return keystroke.find('\0') == std::string::npos ? Result() : throw std::invalid_argument("NUL");
  }
};
struct RangeNoNan : MemoryHost {
  Result onAdjustRangeValue(double delta) override {
    return std::isnan(delta) ? (std::abort(), Result()) : Result();
  }
};
struct SeekNegates : MemoryHost {
  Result onAdjustSeekPosition(int delta) override {
    int back = 0;
    return __builtin_sub_overflow(0, delta, &back) ? (std::abort(), Result()) : Result();
  }
};
struct ConfigurationUtf8Only : MemoryHost {
  std::string getConfigData(std::string key) override {
    return key.find('\xff') == std::string::npos ? "" : throw std::invalid_argument("UTF-8");
  }
};
struct SkipForwardOnly : MemoryPlayer {
  bool skipForward(Milliseconds offset, std::string) override {
    return offset.count() < 0 ? (std::abort(), false) : true;
  }
};

// The adapter's own mutex.

struct VolumeFetches : MemoryHost {
  int getVolume() override { return VornDeviceInfo::getInstance() ? 1 : 0; }
};
struct MuteAsksVolume : MemoryHost {
  bool getMuteStatus() override { return VornDeviceInfo(*this).getVolume() == 0; }
};
struct SettingShutsDown : MemoryHost {
  bool setSystemSetting(std::string, std::string) override {
    try {
      VornDeviceInfo::Shutdown();
    } catch (...) {
    }
    return true;
  }
};
struct CardClearsFirst : MemoryHost {
  bool renderGUICard(const std::string&) override { return VornGUIOutput(*this).clearGUICard(); }
};
struct MessageCreates : MemoryHost {
  void sendAppMessage(std::string, std::string, std::string) override {
    VornAppMessaging::CreateInstance(*this);
  }
};
struct AnimationFetches : MemoryHost {
  int setAnimation(Texts) override { return VornLEDController::getInstance() ? 0 : 1; }
};
struct CommsFetches : MemoryHost {
  void onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&) override {
    VornCommsManager::getInstance();
  }
};

// References.

struct KeepsCard : MemoryHost {
  const std::string* card = nullptr;
  bool renderGUICard(const std::string& given) override { return (card = &given) != nullptr; }
  bool clearGUICard() override { return card && card->empty(); }
};
struct KeepsKey : MemoryHost {
  const std::string* key = nullptr;
  Entries readKeyValue(const std::string& given) override {
    return key = &given, MemoryHost::readKeyValue(given);
  }
  ~KeepsKey() override {
    if (key && key->size() > 4096) std::abort();
  }
};
struct KeepsLog : MemoryHost {
  const std::string* line = nullptr;
  std::size_t bytes = 0;
  ~KeepsLog() override { bytes = line ? line->size() : 0; }
  void onLogEmitted(const std::string&, const std::string& second) override { line = &second; }
};
struct KeepsNumber : MemoryHost {
  std::int64_t* number = nullptr;
  void sendCBLInfo(std::string&, std::string&, std::int64_t& given) override { number = &given; }
  void alexaAuthStatusChanged(std::string) override {
    if (number) *number = 0;
  }
};
struct KeepsName : MemoryPlayer {
  const std::string* name = nullptr;
  bool login(const std::string&, const std::string& given, bool, Milliseconds, std::string) override {
    return (name = &given) != nullptr;
  }
  std::string getPlaybackState(std::string) override { return name ? *name : "IDLE"; }
};
struct KeepsKeys : MemoryHost {
  const Texts* keys = nullptr;
  bool removeKeyValue(const Texts& given) override { return (keys = &given) != nullptr; }
  bool clear() override { return keys && keys->empty(); }
};
struct KeepsState : MemoryHost {
  const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo* state = nullptr;
  void onCommsStateChanged(
      const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& given) override {
    state = &given;
  }
  ~KeepsState() override {
    if (state && state->state.size() > 4096) std::abort();
  }
};

// Texts.

struct TimezoneLatin1 : MemoryHost {
  std::string getTimezone() override { return "Z\xfcrich"; }
};
struct InformationCut : MemoryHost {
  Entries getDeviceInformation() override { return {{"brand", "K\xc3"}}; }
};
struct ModeOverlong : MemoryHost {
  Result onSetMode(std::string, std::string) override { return {true, "\xc0\x80"}; }
};
struct PlaybackSurrogate : MemoryPlayer {
  std::string getPlaybackState(std::string) override { return "\xed\xa0\x80"; }
};
struct SettingTooHigh : MemoryHost {
  bool getSystemSetting(std::string key, std::string& value) override {
    if (!MemoryHost::getSystemSetting(key, value)) value = "\xf4\x90\x80\x80";
    return true;
  }
};

const std::string kHost = "VornDALImplIF/", kPlayer = "VornEMPAdapterIF/";

std::vector<Fault> faults() {
  std::vector<Fault> all = {
      fault<VolumeOnOneThread>("VolumeOnOneThread", kHost + "13/getVolume", {"answers"}),
      fault<WithPlayer<PlayerOnOneThread>>("PlayerOnOneThread", kPlayer + "12/pause",
                                           {"answers", "concurrent"}),
      fault<SearchThrows>("SearchThrows", kHost + "48/onSearchAndPlay", {"answers"}),
      fault<StateThrowsNumber>("StateThrowsNumber", kHost + "03/alexaStateChanged", {"answers"}),
      fault<StopHangs>("StopHangs", kHost + "09/stopStreamingAudioData", {"answers"}),
      fault<FocusOnce>("FocusOnce", kHost + "06/requestAudioFocus", {"answers", "concurrent"}),
      fault<InitialisedExits>("InitialisedExits", kHost + "05/notifyMainAppInitialized", {"answers"}),
      fault<DialogUnguarded>("DialogUnguarded", kHost + "04/dialogUXStateChanged", {"concurrent"}),
      fault<MicrophoneUnguarded>("MicrophoneUnguarded", kHost + "10/isMicrophoneAvailable", {"concurrent"}),
      fault<WithPlayer<PlaybackUnguarded>>("PlaybackUnguarded", kPlayer + "18/getPlaybackState",
                                           {"concurrent"}),
      fault<ReadUnguarded>("ReadUnguarded", kHost + "26/readKeyValue", {"concurrent"}),
      fault<LocaleNotEmpty>("LocaleNotEmpty", kHost + "17/changeAlexaLocale", {"empty-arguments"}),
      fault<AnimationsNotEmpty>("AnimationsNotEmpty", kHost + "35/setAnimation", {"empty-arguments"}),
      fault<TargetNotEmpty>("TargetNotEmpty", kHost + "57/onLaunchTarget", {"empty-arguments"}),
      fault<WithPlayer<RepeatNotEmpty>>("RepeatNotEmpty", kPlayer + "17/setRepeatOne", {"empty-arguments"}),
      fault<MessageInBuffer>("MessageInBuffer", kHost + "34/sendAppMessage", {"large-arguments"}),
      fault<ChannelOverflows>("ChannelOverflows", kHost + "38/onSkipChannel", {"large-arguments"}),
      fault<RangeLimited>("RangeLimited", kHost + "54/onSetRangeValue", {"large-arguments"}),
      fault<AnimationsLimited>("AnimationsLimited", kHost + "35/setAnimation", {"large-arguments"}),
      fault<WithPlayer<OffsetOverflows>>("OffsetOverflows", kPlayer + "05/launchAndPlay",
                                         {"large-arguments"}),
      fault<LogFormats>("LogFormats", kHost + "30/onLogEmitted", {"hostile-arguments"}),
      fault<KeystrokeNoNul>("KeystrokeNoNul", kHost + "39/onSendKeystroke", {"hostile-arguments"}),
      fault<RangeNoNan>("RangeNoNan", kHost + "55/onAdjustRangeValue", {"hostile-arguments"}),
      fault<SeekNegates>("SeekNegates", kHost + "60/onAdjustSeekPosition", {"hostile-arguments"}),
      fault<ConfigurationUtf8Only>("ConfigurationUtf8Only", kHost + "21/getConfigData",
                                   {"hostile-arguments"}),
      fault<WithPlayer<SkipForwardOnly>>("SkipForwardOnly", kPlayer + "14/skipForward",
                                         {"hostile-arguments"}),
      fault<VolumeFetches>("VolumeFetches", kHost + "13/getVolume", {"stays-out"}),
      fault<MuteAsksVolume>("MuteAsksVolume", kHost + "14/getMuteStatus", {"stays-out"}),
      fault<SettingShutsDown>("SettingShutsDown", kHost + "23/setSystemSetting", {"reported", "stays-out"}),
      fault<CardClearsFirst>("CardClearsFirst", kHost + "65/renderGUICard", {"stays-out"}),
      fault<MessageCreates>("MessageCreates", kHost + "34/sendAppMessage", {"stays-out"}),
      fault<AnimationFetches>("AnimationFetches", kHost + "35/setAnimation", {"stays-out"}),
      fault<CommsFetches>("CommsFetches", kHost + "66/onCommsStateChanged", {"stays-out"}),
      fault<KeepsCard>("KeepsCard", kHost + "65/renderGUICard", {"lets-go"}),
      fault<KeepsKey>("KeepsKey", kHost + "26/readKeyValue", {"lets-go"}),
      fault<KeepsLog>("KeepsLog", kHost + "30/onLogEmitted", {"lets-go"}),
      fault<KeepsNumber>("KeepsNumber", kHost + "31/sendCBLInfo", {"lets-go"}),
      fault<WithPlayer<KeepsName>>("KeepsName", kPlayer + "03/login", {"lets-go"}),
      fault<KeepsKeys>("KeepsKeys", kHost + "28/removeKeyValue", {"lets-go", "removes"}),
      fault<KeepsState>("KeepsState", kHost + "66/onCommsStateChanged", {"lets-go"}),
      fault<TimezoneLatin1>("TimezoneLatin1", kHost + "15/getTimezone", {"utf8"}),
      fault<InformationCut>("InformationCut", kHost + "18/getDeviceInformation", {"utf8"}),
      fault<ModeOverlong>("ModeOverlong", kHost + "50/onSetMode", {"utf8"}),
      fault<WithPlayer<PlaybackSurrogate>>("PlaybackSurrogate", kPlayer + "18/getPlaybackState", {"utf8"}),
      fault<SettingTooHigh>("SettingTooHigh", kHost + "22/getSystemSetting", {"utf8"}),
  };
  // What hangs is waited for where it cannot be told otherwise.
  for (Fault& it : all) {
    if (it.broken.count("stays-out")) it.demands.bound = std::chrono::seconds(5);
    if (it.name == "StopHangs") it.demands.bound = std::chrono::milliseconds(500);
  }
  return all;
}

TEST_P(AFaultyHost, IsCaughtByTheChecksOfItsFault) { EXPECT_EQ(broken(GetParam()), GetParam().broken); }

INSTANTIATE_TEST_SUITE_P(InItsCalls, AFaultyHost, testing::ValuesIn(faults()),
                         [](const auto& fault) { return fault.param.name; });

}  // namespace
