// Mistakes in what a host tells the assistant side, and hosts that tell in ways of their own.
#include <VornOOBE.h>

#include <atomic>
#include <optional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "Telling.h"

namespace hosts {
namespace {

// ---- Another value than the getter's -------------------------------------------------------------

struct TellsWanted : Telling {
  Result becomes(std::int64_t wanted) override {
    volume = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, 100));
    tellVolume(static_cast<int>(std::clamp<std::int64_t>(wanted, -1000, 1000)));
    return {true, ""};
  }
};
struct TellsOldVolume : Telling {
  int told = 30;
  void tellVolume(int value) override { Telling::tellVolume(std::exchange(told, value)); }
};
struct TellsDelta : Telling {
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    volume = static_cast<int>(std::clamp<std::int64_t>(std::int64_t{volume} + delta, 0, 100));
    tellVolume(delta);
    return {true, ""};
  }
};
struct TellsPercent : Telling {
  void tellVolume(int value) override { Telling::tellVolume(value / 10); }
};
struct TellsRampWithoutEnd : Telling {
  Result becomes(std::int64_t wanted) override {
    const int value = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, 100));
    for (; volume < value; ++volume) tellVolume(volume);
    for (; volume > value; --volume) tellVolume(volume);
    return {true, ""};
  }
};
struct TellsRefusedVolume : Telling {
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    tellVolume(wanted);
    if (wanted < 0 || wanted > 100) return {false, "0 to 100"};
    volume = wanted;
    return {true, ""};
  }
};
struct TellsSilence : Telling {
  void tellMute(bool value) override {
    Telling::tellMute(value);
    if (value) tellVolume(0);
  }
};
struct TellsMuteAtZero : Telling {
  void tellVolume(int value) override {
    Telling::tellVolume(value);
    if (value == 0) tellMute(true);
  }
};
struct TellsUnmuted : Telling {
  void tellMute(bool value) override { Telling::tellMute(!value); }
};
struct TellsMuteTwiceOver : Telling {
  void tellMute(bool value) override {
    Telling::tellMute(value);
    Telling::tellMute(!value);
  }
};
struct TellsHandsFreeOff : Telling {
  void setAlexaHandsFreeState(bool on) override {
    tell([on](auto& info) { info.notifyHandsfreeStateChanged(!on); });
  }
};
struct TellsOldLocale : Telling {
  std::string told = "en-CA";
  void tellLocale(const std::string& value) override { Telling::tellLocale(std::exchange(told, value)); }
};
struct TellsLocaleSpelled : Telling {
  void tellLocale(const std::string& value) override {
    Telling::tellLocale(value.substr(0, 2) + "_" + value.substr(3));
  }
};
struct TellsRefusedLocale : Telling {
  void changeAlexaLocale(std::string wanted) override {
    Telling::changeAlexaLocale(wanted);
    tell([wanted](auto& info) { info.notifyLocaleChange(wanted); });
  }
};
struct TellsListWithoutIt : Telling {
  void tellLocale(const std::string&) override {
    tell([](auto& info) { info.notifyLocaleChange(Texts{"xx-YY", "yy-XX"}); });
  }
};
struct TellsSettingTurned : Telling {
  void tellSetting(const std::string& key, const std::string& value) override {
    Telling::tellSetting(value, key);
  }
};
struct TellsSettingRenamed : Telling {
  void tellSetting(const std::string& key, const std::string& value) override {
    Telling::tellSetting("settings." + key, value);
  }
};
struct TellsSettingCut : Telling {
  void tellSetting(const std::string& key, const std::string& value) override {
    Telling::tellSetting(key, value.substr(0, 40));
  }
};
struct TellsSettingToNul : Telling {
  void tellSetting(const std::string& key, const std::string& value) override {
    Telling::tellSetting(key, value.c_str());
  }
};
struct TellsAllSettings : Telling {
  void tellSetting(const std::string&, const std::string& value) override {
    for (const auto& setting : settings) Telling::tellSetting(setting.first, value);
  }
};
struct TellsRefusedSetting : Telling {
  bool setSystemSetting(std::string key, std::string value) override {
    const bool accepted = Telling::setSystemSetting(key, value);
    if (!accepted) Telling::tellSetting(key, value);
    return accepted;
  }
};
VORN_HOST("news", TellsWanted, "onSetVolume|onAdjustVolume")
VORN_HOST("news", TellsOldVolume, "onSetVolume|onAdjustVolume")
VORN_HOST("news", TellsDelta, "onAdjustVolume")
VORN_HOST("news", TellsPercent, "onSetVolume")
VORN_HOST("news", TellsRampWithoutEnd, "onSetVolume")
VORN_HOST("news", TellsRefusedVolume, "onSetVolume")
VORN_HOST("news", TellsSilence, "onMute")
VORN_HOST("news", TellsMuteAtZero, "onSetVolume")
VORN_HOST("news", TellsUnmuted, "onMute")
VORN_HOST("news", TellsMuteTwiceOver, "onMute")
VORN_HOST("news", TellsHandsFreeOff, "setAlexaHandsFreeState")
VORN_HOST("news", TellsOldLocale, "changeAlexaLocale")
VORN_HOST("news", TellsLocaleSpelled, "changeAlexaLocale")
VORN_HOST("news", TellsRefusedLocale, "changeAlexaLocale")
VORN_HOST("news", TellsListWithoutIt, "changeAlexaLocale")
VORN_HOST("news", TellsSettingTurned, "setSystemSetting")
VORN_HOST("news", TellsSettingRenamed, "setSystemSetting")
VORN_HOST("news", TellsSettingCut, "setSystemSetting")
VORN_HOST("news", TellsSettingToNul, "setSystemSetting")
VORN_HOST("news", TellsAllSettings, "setSystemSetting")
VORN_HOST("news", TellsRefusedSetting, "setSystemSetting")

// ---- Not every change, or more than once ---------------------------------------------------------

struct TellsFirstOnly : Telling {
  std::set<std::string> told;
  void tellSetting(const std::string& key, const std::string& value) override {
    if (told.insert(key).second) Telling::tellSetting(key, value);
  }
};
struct TellsMuteOnly : Telling {
  void tellMute(bool value) override {
    if (value) Telling::tellMute(value);
  }
};
struct TellsLouderOnly : Telling {
  int last = 30;
  void tellVolume(int value) override {
    if (value > std::exchange(last, value)) Telling::tellVolume(value);
  }
};
struct TellsVolumeTwice : Telling {
  void tellVolume(int value) override {
    Telling::tellVolume(value);
    Telling::tellVolume(value);
  }
};
struct TellsMuteOften : Telling {
  void tellMute(bool value) override {
    for (int i = 0; i < 20; ++i) Telling::tellMute(value);
  }
};
struct TellsSettingTwice : Telling {
  void tellSetting(const std::string& key, const std::string& value) override {
    Telling::tellSetting(key, value);
    Telling::tellSetting(key, value);
  }
};
/// Once more, since nobody has confirmed it.
struct TellsAgainLater : Telling {
  void again(const News& news) {
    tell(news);
    tell([news](auto& info) {
      std::this_thread::sleep_for(Milliseconds(250));
      news(info);
    });
  }
};
struct TellsVolumeAgainLater : TellsAgainLater {
  void tellVolume(int value) override {
    again([value](auto& info) { info.notifyVolumeChanged(value); });
  }
};
struct TellsMuteAgainLater : TellsAgainLater {
  void tellMute(bool value) override {
    again([value](auto& info) { info.notifyMuteChanged(value); });
  }
};
struct TellsSettingAgainLater : TellsAgainLater {
  void tellSetting(const std::string& key, const std::string& value) override {
    again([key, value](auto& info) { info.notifySystemSettingChanged(key, value); });
  }
};
VORN_HOST("news doubled", TellsVolumeAgainLater, "onSetVolume|onAdjustVolume")
VORN_HOST("news doubled", TellsMuteAgainLater, "onMute")
VORN_HOST("news doubled", TellsSettingAgainLater, "setSystemSetting")
struct TellsUnmutedTwice : Telling {
  void tellMute(bool value) override {
    Telling::tellMute(value);
    if (!value) Telling::tellMute(value);
  }
};
struct TellsLouderTwice : Telling {
  int last = 30;
  void tellVolume(int value) override {
    Telling::tellVolume(value);
    if (value > std::exchange(last, value)) Telling::tellVolume(value);
  }
};
struct TellsWhenAsked : Telling {
  int getVolume() override {
    const Lock lock(mutex);
    tellVolume(volume);
    return volume;
  }
};
struct UnmutesUntold : Telling {
  Result onSetVolume(int wanted) override {
    Device::onMute(false);
    return Telling::onSetVolume(wanted);
  }
};
struct RecordsMutedUntold : Telling {
  Result onStartRecording() override {
    Device::onMute(true);
    return Telling::onStartRecording();
  }
  Result onStopRecording() override {
    Device::onMute(false);
    return Telling::onStopRecording();
  }
};
struct PlaysLowUntold : Telling {
  bool requestAudioFocus() override {
    Device::onSetVolume(20);
    return true;
  }
};
struct TellsInFirst : Telling {
  static bool first() {
    static std::atomic<int> made{0};
    return ++made == 1;
  }
  const bool mine = first();
  void tellVolume(int value) override {
    if (mine) Telling::tellVolume(value);
  }
  void tellMute(bool value) override {
    if (mine) Telling::tellMute(value);
  }
};
struct TellsSettingsInFirst : TellsInFirst {
  void tellSetting(const std::string& key, const std::string& value) override {
    if (mine) Telling::tellSetting(key, value);
  }
};
VORN_HOST("news missing", TellsInFirst, "onMute|onSetVolume")
VORN_HOST("news missing", TellsSettingsInFirst, "onMute|onSetVolume|setSystemSetting")
VORN_HOST("news missing", UnmutesUntold, "onSetVolume|onAdjustVolume")
VORN_HOST("news missing", RecordsMutedUntold, "onStartRecording|onStopRecording")
VORN_HOST("news missing", PlaysLowUntold, "requestAudioFocus")
VORN_HOST("news missing", TellsMuteOnly, "onMute")
VORN_HOST("news missing", TellsFirstOnly, "setSystemSetting")
VORN_HOST("news missing", TellsLouderOnly, "onSetVolume")
VORN_HOST("news doubled", TellsVolumeTwice, "onSetVolume")
VORN_HOST("news doubled", TellsMuteOften, "onMute")
VORN_HOST("news doubled", TellsUnmutedTwice, "onMute")
VORN_HOST("news doubled", TellsLouderTwice, "onSetVolume|onAdjustVolume")
VORN_HOST("news doubled", TellsSettingTwice, "setSystemSetting")
VORN_HOST("news doubled", TellsWhenAsked, "onSetVolume")
struct TellsBigSteps : Telling {
  int told = 30;
  void tellVolume(int value) override {
    if (std::abs(value - told) < 5) return;
    told = value;
    Telling::tellVolume(value);
  }
};
struct TellsFirstOfBurst : Telling {
  void tellVolume(int value) override {
    const Lock lock(of_news);
    if (!waiting.empty()) return;  // one of them is on its way
    waiting.push_back([value](auto& info) {
      std::this_thread::sleep_for(Milliseconds(10));
      info.notifyVolumeChanged(value);
    });
    come.notify_one();
  }
};
VORN_HOST("news missing", TellsBigSteps, "onSetVolume|onAdjustVolume")
VORN_HOST("news missing", TellsFirstOfBurst, "onSetVolume|onAdjustVolume")

// ---- Too early, too late, in another order -------------------------------------------------------

struct TellsBefore : Device {
  Result onSetVolume(int wanted) override {
    wanted = std::clamp(wanted, 0, 100);
    if (wanted != getVolume()) tellNow([wanted](auto& info) { info.notifyVolumeChanged(wanted); });
    return Device::onSetVolume(wanted);
  }
};
struct MutesAfterTelling : Device {
  Result onMute(bool mute) override {
    tellNow([mute](auto& info) { info.notifyMuteChanged(mute); });
    return Device::onMute(mute);
  }
};
struct SetsAfterTelling : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    VornDeviceAbstractionLayer::VornDeviceInfo(*this).notifySystemSettingChanged(key, value);
    return Device::setSystemSetting(key, value);
  }
};
struct TellsNext : Telling {
  std::optional<int> held;
  void tellVolume(int value) override {
    if (held) Telling::tellVolume(*held);
    held = value;
  }
};
struct TellsLastFirst : Telling {
  void tellVolume(int value) override {
    const Lock lock(of_news);
    waiting.push_front([value](auto& info) {
      std::this_thread::sleep_for(Milliseconds(3));
      info.notifyVolumeChanged(value);
    });
    come.notify_one();
  }
};
struct TellsInAnyOrder : Telling {
  std::vector<std::thread> tellers;
  void tellMute(bool value) override {
    tellers.emplace_back([value] {
      std::this_thread::sleep_for(Milliseconds(value ? 12 : 1));
      tellNow([value](auto& info) { info.notifyMuteChanged(value); });
    });
  }
  ~TellsInAnyOrder() override {
    for (auto& teller : tellers) teller.join();
  }
};
struct TellsAfterItsEnd : Device {
  Result onMute(bool mute) override {
    const Result result = Device::onMute(mute);
    std::thread([this] {
      std::this_thread::sleep_for(Milliseconds(120));
      const bool value = getMuteStatus();
      tellNow([value](auto& info) { info.notifyMuteChanged(value); });
    }).detach();
    return result;
  }
};
VORN_HOST("news early", TellsBefore, "onSetVolume")
VORN_HOST("news early", MutesAfterTelling, "onMute")
VORN_HOST("news early", SetsAfterTelling, "setSystemSetting")
VORN_HOST("news late", TellsNext, "onSetVolume")
VORN_HOST("news late", TellsLastFirst, "onSetVolume")
VORN_HOST("news late", TellsInAnyOrder, "onMute")
VORN_HOST("news late", TellsAfterItsEnd, "onMute|host")
struct TellsMuteFirst : Telling {
  void tellVolume(int value) override {
    tell([value](auto& info) {
      std::this_thread::sleep_for(Milliseconds(5));
      info.notifyVolumeChanged(value);
    });
  }
  void tellMute(bool value) override {
    const Lock lock(of_news);
    waiting.push_front([value](auto& info) { info.notifyMuteChanged(value); });
    come.notify_one();
  }
};
VORN_HOST("news late", TellsMuteFirst, "onMute|onSetVolume")

// ---- None of it a mistake ------------------------------------------------------------------------

using GoodNews = Telling;
/// Tells also what did not change.
struct GoodNewsUnchanged : Telling {
  Result becomes(std::int64_t wanted) override {
    volume = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, 100));
    tellVolume(volume);
    return {true, ""};
  }
};
/// Tells a volume only when the assistant cannot know it.
struct GoodNewsNeeded : Telling {
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    if (wanted < 0 || wanted > 100) return becomes(wanted);
    volume = wanted;
    return {true, ""};
  }
};
/// Tells the newest value once it comes to it, a moment later.
struct GoodNewsNewest : Telling {
  std::atomic<bool> due{false};
  ~GoodNewsNewest() override { end(); }
  void tellVolume(int) override {
    if (due.exchange(true)) return;
    tell([this](auto& info) {
      std::this_thread::sleep_for(Milliseconds(30));
      due = false;
      info.notifyVolumeChanged(getVolume());
    });
  }
};
/// Moves step by step and tells each, the last one too.
struct GoodNewsRamp : Telling {
  Result becomes(std::int64_t wanted) override {
    const int value = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, 100));
    while (volume != value) {
      volume += value > volume ? 1 : -1;
      tellVolume(volume);
    }
    return {true, ""};
  }
};
/// Follows and tells later where somebody hears of it; until then it reports what was.
struct GoodNewsLater : Telling {
  std::int64_t wanted = 30;
  Result onSetVolume(int value) override {
    return moves([value](std::int64_t) { return value; });
  }
  Result onAdjustVolume(int delta) override {
    return moves([delta](std::int64_t from) { return from + delta; });
  }
  template <class To>
  Result moves(const To& to) {
    const bool heard = VornDeviceAbstractionLayer::VornDeviceInfo::getInstance() != nullptr;
    const Lock lock(mutex);
    wanted = std::clamp<std::int64_t>(to(wanted), 0, 100);
    const int now = static_cast<int>(wanted);
    if (!heard) volume = now;
    tell([this, now](auto& info) {
      std::this_thread::sleep_for(Milliseconds(5));
      {
        const Lock following(mutex);
        if (volume == now) return;
        volume = now;
      }
      info.notifyVolumeChanged(now);
    });
    return {true, ""};
  }
};
/// A volume unmutes, and both are told; a locale is told alone and in a list.
struct GoodNewsMore : Telling {
  Result onSetVolume(int wanted) override {
    onMute(false);
    return Telling::onSetVolume(wanted);
  }
  void tellLocale(const std::string& value) override {
    Telling::tellLocale(value);
    tell([value](auto& info) { info.notifyLocaleChange(Texts{value, "en-CA"}); });
  }
};
/// On the thread that calls, without a mutex; volume alone.
struct GoodNewsAtOnce : Device {
  Result onSetVolume(int wanted) override {
    const Result result = Device::onSetVolume(wanted);
    const int value = getVolume();
    tellNow([value](auto& info) { info.notifyVolumeChanged(value); });
    return result;
  }
};
/// Hides the volume while it is muted, mutes at zero, is lower after a loud time, and tells of each.
struct GoodNewsHidden : Telling {
  int hidden = 30;
  Result becomes(std::int64_t wanted) override {
    hidden = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, 100));
    return shows();
  }
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    return becomes(std::int64_t{hidden} + delta);
  }
  Result onMute(bool mute) override {
    const Result result = Telling::onMute(mute);
    const Lock lock(mutex);
    if (!mute) hidden = std::min(hidden, 45);
    shows();
    return result;
  }
  Result shows() {
    if (const int shown = muted ? 0 : hidden; shown != std::exchange(volume, shown)) tellVolume(shown);
    return {true, ""};
  }
};
VORN_HOST("good", GoodNewsHidden, "")
VORN_HOST("good", GoodNews, "")
VORN_HOST("good", GoodNewsUnchanged, "")
VORN_HOST("good", GoodNewsNeeded, "")
VORN_HOST("good", GoodNewsNewest, "")
VORN_HOST("good", GoodNewsRamp, "")
VORN_HOST("good", GoodNewsLater, "")
VORN_HOST("good", GoodNewsMore, "")
VORN_HOST("good", GoodNewsAtOnce, "")

struct NewsDroppedWhenBusy : Telling {
  void offer(News news) {
    {
      const Lock lock(of_news);
      if (waiting.size() >= 4) return;
    }
    tell(std::move(news));
  }
  void tellVolume(int value) override {
    offer([value](auto& info) { info.notifyVolumeChanged(value); });
  }
};

struct NewsUntilIdle : Telling {
  std::atomic<bool> idle{false};
  std::thread watch{[this] {
    std::unique_lock<std::mutex> lock(of_news);
    come.wait_for(lock, Milliseconds(400), [this] { return ended; });
    idle = true;
  }};
  ~NewsUntilIdle() override {
    end();
    come.notify_all();
    watch.join();
  }
  void tellMute(bool value) override {
    if (!idle) Telling::tellMute(value);
  }
};

struct NewsOfMovedValue : Telling {
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    if (found->second == value) return true;
    found->second = std::move(value);
    tellSetting(key, value);
    return true;
  }
};

struct NewsOfSilence : Telling {
  void tellMute(bool value) override {
    Telling::tellMute(value);
    tellVolume(value ? 0 : volume);
  }
};

struct NewsHandsFreeOfOld : Telling {
  void setAlexaHandsFreeState(bool on) override {
    const Lock lock(mutex);
    if (handsFree == on) return;
    std::swap(handsFree, on);
    tell([on](auto& info) { info.notifyHandsfreeStateChanged(on); });
  }
};

/// Each host adds itself to those who tell, and none leaves them.
struct NewsOfEachHost : Telling {
  static std::atomic<int>& tellers() {
    static std::atomic<int> count{0};
    return count;
  }
  NewsOfEachHost() { ++tellers(); }
  void tellMute(bool value) override {
    for (int i = 0; i < tellers(); ++i) Telling::tellMute(value);
  }
};
VORN_HOST("news", NewsOfEachHost, "onMute|host")

VORN_HOST("news", NewsDroppedWhenBusy, "onSetVolume|onAdjustVolume")
VORN_HOST("news", NewsUntilIdle, "onMute")
VORN_HOST("news", NewsOfMovedValue, "setSystemSetting")
VORN_HOST("news", NewsOfSilence, "onMute|getVolume")
VORN_HOST("news", NewsHandsFreeOfOld, "setAlexaHandsFreeState")

/// Goes to sleep with the power, and nothing wakes it.
struct NewsUntilPowerOff : Telling {
  std::atomic<bool> off{false};
  Result onSetPowerState(bool on) override {
    if (!on) off = true;
    return {true, ""};
  }
  void tellVolume(int value) override {
    if (!off) Telling::tellVolume(value);
  }
  void tellMute(bool value) override {
    if (!off) Telling::tellMute(value);
  }
};
struct NewsUntilLogout : Telling {
  std::atomic<bool> unlinked{false};
  void alexaAuthStatusChanged(std::string status) override {
    if (status == "UNAUTHORIZED") unlinked = true;
  }
  void tellVolume(int value) override {
    if (!unlinked) Telling::tellVolume(value);
  }
};
struct NewsUntilCall : Telling {
  std::atomic<bool> busy{false};
  void onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&) override {
    busy = true;
  }
  void tellMute(bool value) override {
    if (!busy) Telling::tellMute(value);
  }
};
/// Each press adds somebody to be told.
struct NewsOfEachKey : Telling {
  std::atomic<int> told{1};
  Result onSendKeystroke(std::string) override {
    ++told;
    return {true, ""};
  }
  void tellMute(bool value) override {
    for (int i = 0; i < told; ++i) Telling::tellMute(value);
  }
};
/// Sleeps without a word, and has one for each change when it is awake.
struct GoodNewsAwake : Telling {
  std::atomic<bool> awake{true};
  Result onSetPowerState(bool on) override {
    awake = on;
    return {true, ""};
  }
  Result onSetVolume(int wanted) override {
    return awake ? Telling::onSetVolume(wanted) : Result(false, "off");
  }
  Result onMute(bool wanted) override { return awake ? Telling::onMute(wanted) : Result(false, "off"); }
};
VORN_HOST("news", NewsUntilPowerOff, "host|onSetVolume|onMute")
VORN_HOST("news", NewsUntilLogout, "host|onSetVolume")
VORN_HOST("news", NewsUntilCall, "host|onMute")
VORN_HOST("news", NewsOfEachKey, "host|onMute")
VORN_HOST("good", GoodNewsAwake, "")

void tellCancelled(VornDeviceAbstractionLayer::VornDeviceInfo&) {
  if (const auto setup = VornDeviceAbstractionLayer::VornOOBE::getInstance()) setup->notifyOOBECancelled();
}
/// Closes the setup page, as it does when the user leaves it.
struct NewsSetupClosed : Telling {
  void alexaAuthStatusChanged(std::string status) override {
    if (status == "AUTHORIZED") tell(tellCancelled);
  }
};
/// Compares with a spelling that never comes.
struct NewsSetupUnknownStatus : Telling {
  void alexaAuthStatusChanged(std::string status) override {
    if (status != "Authorized") tellNow(tellCancelled);
  }
};
/// The time in which the code holds runs on when it is not needed any more.
struct NewsSetupTimeRunsOn : Telling {
  bool shown = false;
  void sendCBLInfo(std::string&, std::string&, std::int64_t&) override { shown = true; }
  void alexaAuthStatusChanged(std::string) override {
    if (!std::exchange(shown, false)) return;
    tell([](auto& info) {
      std::this_thread::sleep_for(std::chrono::milliseconds(150));
      tellCancelled(info);
    });
  }
};
VORN_HOST("news", NewsSetupClosed, "alexaAuthStatusChanged")
VORN_HOST("news", NewsSetupUnknownStatus, "alexaAuthStatusChanged")
VORN_HOST("news", NewsSetupTimeRunsOn, "alexaAuthStatusChanged")

/// A setup that is open when the account goes is over.
struct GoodNewsSetup : Telling {
  bool open = false;
  void sendCBLInfo(std::string&, std::string&, std::int64_t&) override {
    const Lock lock(mutex);
    open = true;
  }
  void alexaAuthStatusChanged(std::string status) override {
    const Lock lock(mutex);
    if (std::exchange(open, false) && status == "UNAUTHORIZED") tell(tellCancelled);
  }
};
VORN_HOST("good", GoodNewsSetup, "")

}  // namespace
}  // namespace hosts
