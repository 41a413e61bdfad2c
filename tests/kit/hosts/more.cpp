#include <VornAudioIn.h>
#include <alloca.h>
#include <fcntl.h>
#include <fenv.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <future>
#include <limits>
#include <list>
#include <locale>
#include <memory>
#include <optional>
#include <regex>
#include <set>
#include <shared_mutex>

#include "Filed.h"
#include "Telling.h"

namespace hosts {
namespace {

using VornDeviceAbstractionLayer::VornAudioIn;
using VornDeviceAbstractionLayer::VornDeviceInfo;
using Comms = DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo;

// ---- what is kept, of the caller's

struct CommsInfoKept : Device {
  const Comms* last = nullptr;
  std::size_t changes = 0;
  void onCommsStateChanged(const Comms& info) override {
    if (last && last->state != info.state) ++changes;
    last = &info;
  }
};
VORN_HOST("kept", CommsInfoKept, "onCommsStateChanged")

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
VORN_HOST("kept", CblTextsClearedLater, "sendCBLInfo|alexaAuthStatusChanged")

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
VORN_HOST("kept", LogRingOfPointers, "onLogEmitted")

struct ReadCachedByAddress : Device {
  const std::string* last = nullptr;
  Entries answer;
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    if (last == &key) return answer;
    last = &key;
    const auto found = store.find(key);
    return answer = found == store.end() ? Entries() : Entries{*found};
  }
  void forget() {
    const Lock lock(mutex);
    last = nullptr;
  }
  bool writeKeyValue(Entries entries) override {
    forget();
    return Device::writeKeyValue(std::move(entries));
  }
  bool removeKeyValue(const Texts& keys) override {
    forget();
    return Device::removeKeyValue(keys);
  }
  bool clear() override {
    forget();
    return Device::clear();
  }
};
VORN_HOST("cached", ReadCachedByAddress, "readKeyValue")

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
VORN_HOST("kept", RemovesAtNextRead, "removeKeyValue|readKeyValue|writeKeyValue")

// ---- numbers

struct RangeAsIndex : Device {
  std::vector<int> curve = std::vector<int>(101, 7);
  Result onSetRangeValue(double value) override {
    if (value < 0 || value > 100) return {false, "out of range"};
    const Lock lock(mutex);
    ++curve[static_cast<std::size_t>(static_cast<int>(value))];
    return {true, ""};
  }
};
VORN_HOST("number", RangeAsIndex, "onSetRangeValue")

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
VORN_HOST("number", RangeInSteps, "onAdjustRangeValue")

struct SkipsByAbs : Device {
  std::vector<std::string> names{"One", "Two", "Three"};
  int now = 0;
  Result onSkipChannel(int count) override {
    const Lock lock(mutex);
    const int steps = std::abs(count) % 3;
    now = count < 0 ? (now + 3 - steps) % 3 : (now + steps) % 3;
    channel = names.at(static_cast<std::size_t>(now == 0 ? 0 : now));
    return steps < 0 ? Result{true, names.at(static_cast<std::size_t>(steps))} : Result{true, ""};
  }
};
VORN_HOST("number", SkipsByAbs, "onSkipChannel")

struct VolumeInOneByte : Device {
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    volume = std::min<int>(static_cast<std::uint8_t>(volume + std::clamp(delta, -100, 100)), 100);
    return {true, ""};
  }
};
VORN_HOST("number", VolumeInOneByte, "onAdjustVolume")

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
VORN_HOST("mixed", MuteTwiceForgets, "onMute|getVolume")

struct RangePrintedIntoBuffer : Device {
  Result onSetRangeValue(double value) override {
    char text[40];
    volatile const auto format = "%.1f";
    std::sprintf(text, format, value);
    return {true, text};
  }
};
VORN_HOST("number", RangePrintedIntoBuffer, "onSetRangeValue")

struct VolumeDeltaAsShort : Device {
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    volume = std::clamp(volume + static_cast<std::int16_t>(delta), 0, 100);
    return {true, ""};
  }
};
VORN_HOST("number", VolumeDeltaAsShort, "onAdjustVolume")

struct RefusesButSets : Device {
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    volume = std::clamp(wanted, 0, 100);
    if (volume != wanted) return {false, "out of range"};
    return {true, ""};
  }
};
VORN_HOST("answer", RefusesButSets, "onSetVolume")

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
VORN_HOST("number", FloatingTraps, "onAdjustRangeValue")

struct CblCountdown : Device {
  std::string bar;
  void sendCBLInfo(std::string&, std::string&, std::int64_t& number) override {
    const Lock lock(mutex);
    bar.assign(static_cast<std::size_t>(number / 10), '#');
  }
};
VORN_HOST("number", CblCountdown, "sendCBLInfo")

struct RefreshPerDay : Player {
  long refreshes = 0;
  bool login(const std::string& token, const std::string& name, bool force, Milliseconds interval,
             std::string id) override {
    refreshes = 86400000L / interval.count();
    return Player::login(token, name, force, interval, std::move(id));
  }
};
VORN_PLAYER("number", RefreshPerDay, "login")

struct SkipsByTenths : Player {
  std::int64_t position = 0;
  bool skipForward(Milliseconds offset, std::string) override {
    const Lock lock(mutex);
    for (auto left = offset.count(); left > 0; left -= 100) ++position;
    for (auto left = offset.count(); left < 0; left += 100) --position;
    return true;
  }
};
VORN_PLAYER("number", SkipsByTenths, "skipForward")

// ---- stores

struct KeysBySum : Device {
  std::map<unsigned, std::pair<std::string, std::string>> slots;
  static unsigned sum(const std::string& key) {
    unsigned all = 0;
    for (const char c : key) all += static_cast<unsigned char>(c);
    return all;
  }
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    const auto found = slots.find(sum(key));
    return found == slots.end() || found->second.first != key ? Entries() : Entries{found->second};
  }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) slots[sum(entry.first)] = entry;
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) slots.erase(sum(key));
    return true;
  }
  bool clear() override {
    const Lock lock(mutex);
    slots.clear();
    return true;
  }
};
VORN_HOST("store", KeysBySum, "readKeyValue|writeKeyValue|removeKeyValue|clear")

struct SlotsReused : Device {
  std::deque<std::string> order;
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) {
      if (!store.count(entry.first)) order.push_back(entry.first);
      store[entry.first] = std::move(entry.second);
      if (order.size() <= 128) continue;
      store.erase(order.front());
      order.pop_front();
    }
    return true;
  }
  bool clear() override {
    const Lock lock(mutex);
    store.clear();
    order.clear();
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) {
      store.erase(key);
      order.erase(std::remove(order.begin(), order.end(), key), order.end());
    }
    return true;
  }
};
VORN_HOST("store", SlotsReused, "writeKeyValue|readKeyValue")

struct RemovesByCText : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys)
      for (auto entry = store.begin(); entry != store.end();)
        entry = std::strcmp(entry->first.c_str(), key.c_str()) == 0 ? store.erase(entry) : std::next(entry);
    return true;
  }
};
VORN_HOST("store", RemovesByCText, "removeKeyValue")

struct RemovesWhatWasFound : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    std::vector<Entries::iterator> found;
    for (const auto& key : keys)
      if (const auto entry = store.find(key); entry != store.end()) found.push_back(entry);
    for (const auto& entry : found) store.erase(entry);
    return true;
  }
};
VORN_HOST("store", RemovesWhatWasFound, "removeKeyValue")

struct OpenStartsAnew : Device {
  bool open() override {
    const Lock lock(mutex);
    store = Entries();
    return true;
  }
};
VORN_HOST("reset", OpenStartsAnew, "open|readKeyValue")

struct SparesTheFlash : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) {
      std::string& old = store[entry.first];
      if (old.size() != entry.second.size() || old.compare(0, 8, entry.second, 0, 8) != 0) old = std::move(entry.second);
    }
    return true;
  }
};
VORN_HOST("store", SparesTheFlash, "writeKeyValue|readKeyValue")

struct BatchOfThirtyTwo : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    int count = 0;
    for (auto& entry : entries)
      if (count++ < 32) store[entry.first] = std::move(entry.second);
    return true;
  }
};
VORN_HOST("store", BatchOfThirtyTwo, "writeKeyValue|readKeyValue")

struct LengthOfSixteenBits : Device {
  bool writeKeyValue(Entries entries) override {
    for (auto& entry : entries) entry.second.resize(static_cast<std::uint16_t>(entry.second.size()));
    return Device::writeKeyValue(std::move(entries));
  }
};
VORN_HOST("store", LengthOfSixteenBits, "writeKeyValue|readKeyValue")

struct EmptyMeansRemoved : Filed {
  EmptyMeansRemoved() {
    for (auto entry = store.begin(); entry != store.end();)
      entry = entry->second.empty() ? store.erase(entry) : std::next(entry);
  }
};
VORN_HOST("durable", EmptyMeansRemoved, "readKeyValue|writeKeyValue")

struct LoadsFirstPages : Filed {
  LoadsFirstPages() {
    std::size_t read = 0;
    for (auto entry = store.begin(); entry != store.end();) {
      read += entry->first.size() + entry->second.size() + 8;
      entry = read > 65536 ? store.erase(entry) : std::next(entry);
    }
  }
};
VORN_HOST("durable", LoadsFirstPages, "readKeyValue|writeKeyValue")

struct ClearsInMemoryOnly : Filed {
  bool clear() override {
    const Lock lock(mutex);
    store.clear();
    return true;
  }
};
VORN_HOST("durable", ClearsInMemoryOnly, "clear")

struct KeyLengthInOneByte : Filed {
  KeyLengthInOneByte() {
    Entries loaded;
    for (auto& entry : store) loaded[entry.first.substr(0, entry.first.size() & 0xFFU)] = entry.second;
    store = loaded;
  }
};
VORN_HOST("durable", KeyLengthInOneByte, "readKeyValue|writeKeyValue")

struct RemovesSavedLater : Filed {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    std::size_t gone = 0;
    for (const auto& key : keys) gone += store.erase(key);
    return gone < keys.size() || save();
  }
};
VORN_HOST("durable", RemovesSavedLater, "removeKeyValue")

// ---- settings and locale

struct EmptyKeyIsExplained : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    if (!key.empty()) return Device::getSystemSetting(std::move(key), value);
    value = "key required";
    return false;
  }
};
VORN_HOST("answer", EmptyKeyIsExplained, "getSystemSetting")

struct SettingByBeginning : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    for (auto& setting : settings)
      if (setting.first.compare(0, key.size(), key) == 0) {
        setting.second = std::move(value);
        return true;
      }
    return false;
  }
};
VORN_HOST("setting", SettingByBeginning, "setSystemSetting|getSystemSetting")

struct SettingAssignedThenChecked : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    found->second = std::move(value);
    return std::none_of(found->second.begin(), found->second.end(), [](char c) { return c >= 0 && c < ' '; });
  }
};
VORN_HOST("setting", SettingAssignedThenChecked, "setSystemSetting|getSystemSetting")

struct LocaleOfTheSystem : Device {
  void changeAlexaLocale(std::string wanted) override {
    const Lock lock(mutex);
    if (wanted.size() != 5 || wanted[2] != '-') return;
    locale = wanted;
    wanted[2] = '_';
    const std::locale rules((wanted + ".UTF-8").c_str());
    (void)rules;
  }
};
VORN_HOST("throws", LocaleOfTheSystem, "changeAlexaLocale")

struct LocaleResetsName : Device {
  void changeAlexaLocale(std::string wanted) override {
    const Lock lock(mutex);
    if (wanted.size() != 5 || wanted[2] != '-') return;
    locale = std::move(wanted);
    settings["name"] = "Kitchen";
  }
};
VORN_HOST("mixed", LocaleResetsName, "changeAlexaLocale|getSystemSetting")

struct SettingsLieInStore : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    const Lock lock(mutex);
    if (const auto stored = store.find("setting." + key); stored != store.end()) {
      value = stored->second;
      return true;
    }
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    value = found->second;
    return true;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    if (!settings.count(key)) return false;
    store["setting." + key] = std::move(value);
    return true;
  }
};
VORN_HOST("mixed", SettingsLieInStore, "clear|getSystemSetting")

// ---- news

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
VORN_HOST("news", NewsDroppedWhenBusy, "onSetVolume|onAdjustVolume")

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
VORN_HOST("news", NewsUntilIdle, "onMute")

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
VORN_HOST("news", NewsOfMovedValue, "setSystemSetting")

struct NewsOfSilence : Telling {
  void tellMute(bool value) override {
    Telling::tellMute(value);
    tellVolume(value ? 0 : volume);
  }
};
VORN_HOST("news", NewsOfSilence, "onMute|getVolume")

struct NewsAtLimitAgain : Telling {
  Result becomes(std::int64_t wanted) override {
    if (wanted == volume) return {true, ""};
    volume = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, 100));
    tellVolume(volume);
    return {true, ""};
  }
};
VORN_HOST("news", NewsAtLimitAgain, "onSetVolume|onAdjustVolume")

struct NewsHandsFreeOfOld : Telling {
  void setAlexaHandsFreeState(bool on) override {
    const Lock lock(mutex);
    if (handsFree == on) return;
    std::swap(handsFree, on);
    tell([on](auto& info) { info.notifyHandsfreeStateChanged(on); });
  }
};
VORN_HOST("news", NewsHandsFreeOfOld, "setAlexaHandsFreeState")

struct OverlayTimer : Device {
  Result onSetVolume(int wanted) override {
    std::thread([this] {
      std::this_thread::sleep_for(Milliseconds(200));
      const Lock lock(mutex);
      card = "hide";
    }).detach();
    return Device::onSetVolume(wanted);
  }
};
VORN_HOST("thread", OverlayTimer, "onSetVolume")

// ---- threads

struct PusherPerStart : Device {
  std::atomic<bool> on{false};
  std::thread pusher;
  ~PusherPerStart() override {
    on = false;
    if (pusher.joinable()) pusher.join();
  }
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (on) return true;
    on = true;
    pusher = std::thread([this] {
      std::vector<short> buffer(160);
      while (on) {
        if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(buffer);
        std::this_thread::sleep_for(Milliseconds(10));
      }
    });
    return true;
  }
  void stopStreamingAudioData() override { on = false; }
};
VORN_HOST("stream", PusherPerStart, "startStreamingAudioData")

struct OldPusherGoesOn : Device {
  std::atomic<bool> on{false};
  std::vector<std::thread> pushers;
  ~OldPusherGoesOn() override {
    on = false;
    for (auto& pusher : pushers) pusher.join();
  }
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (on.exchange(true)) return true;
    pushers.emplace_back([this] {
      std::vector<short> buffer(160);
      while (on) {
        if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(buffer);
        std::this_thread::sleep_for(Milliseconds(10));
      }
    });
    return true;
  }
  void stopStreamingAudioData() override { on = false; }
};
VORN_HOST("stream", OldPusherGoesOn, "startStreamingAudioData|stopStreamingAudioData")

struct VolumePerThread : Device {
  static int& mine() {
    thread_local int value = 30;
    return value;
  }
  int getVolume() override { return mine(); }
  Result onSetVolume(int wanted) override {
    mine() = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    mine() = std::clamp(mine() + std::clamp(delta, -100, 100), 0, 100);
    return {true, ""};
  }
};
VORN_HOST("affinity", VolumePerThread, "getVolume|onSetVolume|onAdjustVolume")

struct PlayerPerThread : Device {
  VornEMPAdapterIF* getEMPAdapter() override {
    thread_local Player mine;
    return &mine;
  }
};
VORN_HOST("affinity", PlayerPerThread, "getEMPAdapter|getPlaybackState|launchAndPlay|pause|stop|resume")

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
VORN_HOST("affinity", CardOnOneThread, "renderGUICard")

struct AnimatorPerCall : Device {
  std::promise<void> over;
  std::shared_future<void> done = over.get_future().share();
  std::vector<std::thread> animators;
  ~AnimatorPerCall() override {
    over.set_value();
    for (auto& animator : animators) animator.join();
  }
  int setAnimation(Texts names) override {
    const Lock lock(mutex);
    animators.emplace_back([names, end = done] { end.wait(); });
    return 0;
  }
};
VORN_HOST("growth", AnimatorPerCall, "setAnimation")

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
VORN_HOST("unguarded", LruUnderSharedLock, "readKeyValue")

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
VORN_HOST("unguarded", AtomicButInTwoSteps, "onAdjustVolume")

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
VORN_HOST("unguarded", CopiedThenReplaced, "writeKeyValue|removeKeyValue|readKeyValue")

struct OnceForAllHosts : Device {
  std::unique_ptr<std::string> zone;
  OnceForAllHosts() {
    static std::once_flag once;
    std::call_once(once, [this] { zone = std::make_unique<std::string>("America/Vancouver"); });
  }
  std::string getTimezone() override { return *zone; }
};
VORN_HOST("two hosts", OnceForAllHosts, "getTimezone")

struct DriverOfFirstHost : Device {
  static std::unique_ptr<int>& driver() {
    static std::unique_ptr<int> one;
    return one;
  }
  DriverOfFirstHost() {
    if (!driver()) driver() = std::make_unique<int>(30);
  }
  ~DriverOfFirstHost() override { driver().reset(); }
  int getVolume() override {
    const Lock lock(mutex);
    return *driver();
  }
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    *driver() = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    *driver() = std::clamp(*driver() + std::clamp(delta, -100, 100), 0, 100);
    return {true, ""};
  }
};
VORN_HOST("two hosts", DriverOfFirstHost, "getVolume|onSetVolume|onAdjustVolume")

struct EndsOnlyWhenSilent : Device {
  std::condition_variable silent;
  ~EndsOnlyWhenSilent() override {
    std::unique_lock<std::mutex> lock(mutex);
    silent.wait(lock, [this] { return !recording; });
  }
  Result onStopRecording() override {
    const Lock lock(mutex);
    recording = false;
    silent.notify_all();
    return {true, ""};
  }
};
VORN_HOST("end", EndsOnlyWhenSilent, "onStartRecording|destruction|vornDestroyHost|getVolume")

struct FreshPlayerEachTime : Device {
  std::unique_ptr<Player> current;
  VornEMPAdapterIF* getEMPAdapter() override {
    const Lock lock(mutex);
    current = std::make_unique<Player>();
    return current.get();
  }
};
VORN_HOST("memory", FreshPlayerEachTime, "getEMPAdapter|getPlaybackState|pause|login|launchAndPlay|resume|stop")

// ---- waits

struct UnmutesUnderLock : Device {
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    if (muted && delta > 0) onMute(false);
    volume = std::clamp(volume + std::clamp(delta, -100, 100), 0, 100);
    return {true, ""};
  }
};
VORN_HOST("waits", UnmutesUnderLock, "onAdjustVolume")

struct RepeatTurnsShuffleOff : Player {
  bool shuffle = false;
  bool setShuffleOn(std::string) override {
    const Lock lock(mutex);
    return shuffle = true;
  }
  bool setShuffleOff(std::string) override {
    const Lock lock(mutex);
    shuffle = false;
    return true;
  }
  bool setRepeatOne(std::string id) override {
    const Lock lock(mutex);
    return !shuffle || setShuffleOff(std::move(id));
  }
};
VORN_PLAYER("waits", RepeatTurnsShuffleOff, "setRepeatOne")

struct StateAfterBuffering : Player {
  std::condition_variable ready;
  bool buffering = false;
  bool launchAndPlay(std::string token, Milliseconds offset, std::string id) override {
    {
      const Lock lock(mutex);
      buffering = offset.count() > 0;
    }
    return Player::launchAndPlay(std::move(token), offset, std::move(id));
  }
  bool resume(std::string id) override {
    {
      const Lock lock(mutex);
      buffering = false;
      ready.notify_all();
    }
    return Player::resume(std::move(id));
  }
  std::string getPlaybackState(std::string) override {
    std::unique_lock<std::mutex> lock(mutex);
    ready.wait(lock, [this] { return !buffering; });
    return playback;
  }
};
VORN_PLAYER("waits", StateAfterBuffering, "getPlaybackState")

struct AsksAdapterWhenOffline : Device {
  bool online = false;
  void updateInternetConnectionStatus(bool connected) override {
    const bool lost = online && !connected;
    online = connected;
    if (!lost) return;
    if (const auto info = VornDeviceInfo::getInstance()) info->getNetworkConnectionStatus();
  }
};
VORN_HOST("waits", AsksAdapterWhenOffline, "updateInternetConnectionStatus")

struct PlayWaitsForAnswer : Device {
  std::condition_variable answered;
  Result onChangePlaybackPlay(std::string) override {
    std::unique_lock<std::mutex> lock(mutex);
    const bool changes = playback != "PLAYING";
    playback = "PLAYING";
    answered.wait_for(lock, Milliseconds(30000), [changes] { return changes; });
    return {changes, ""};
  }
};
VORN_HOST("waits", PlayWaitsForAnswer, "onChangePlaybackPlay")

struct NoPlayerInCall : Device {
  bool calling = false;
  void onCommsStateChanged(const Comms& info) override {
    const Lock lock(mutex);
    calling = !info.state.empty();
  }
  VornEMPAdapterIF* getEMPAdapter() override {
    const Lock lock(mutex);
    return calling ? nullptr : &player;
  }
};
VORN_HOST("null", NoPlayerInCall, "getEMPAdapter|onCommsStateChanged")

struct NoPlayerWithoutAccount : Device {
  bool account = true;
  void alexaAuthStatusChanged(std::string status) override {
    const Lock lock(mutex);
    account = status == "AUTHORIZED" || status == "REFRESHED";
  }
  VornEMPAdapterIF* getEMPAdapter() override {
    const Lock lock(mutex);
    return account ? &player : nullptr;
  }
};
VORN_HOST("null", NoPlayerWithoutAccount, "getEMPAdapter|alexaAuthStatusChanged")

struct PausesTheLast : Player {
  std::map<std::string, std::string> states;
  std::string last;
  bool put(const std::string& id, const char* state) {
    const Lock lock(mutex);
    states[id] = state;
    return true;
  }
  bool launchAndPlay(std::string, Milliseconds, std::string id) override {
    put(id, "PLAYING");
    const Lock lock(mutex);
    last = std::move(id);
    return true;
  }
  bool resume(std::string id) override { return put(id, "PLAYING"); }
  bool stop(std::string id) override { return put(id, "STOPPED"); }
  bool pause(std::string) override {
    const Lock lock(mutex);
    states[last] = "PAUSED";
    return true;
  }
  std::string getPlaybackState(std::string id) override {
    const Lock lock(mutex);
    const auto found = states.find(id);
    return found == states.end() ? "IDLE" : found->second;
  }
};
VORN_PLAYER("mixed", PausesTheLast, "pause|getPlaybackState")

// ---- texts

struct SearchByExpression : Device {
  Result onSearchAndPlay(std::string payload) override {
    static const std::regex words("([^ ]| )*");
    return {std::regex_match(payload, words), ""};
  }
};
VORN_HOST("text", SearchByExpression, "onSearchAndPlay")

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
VORN_HOST("text", CardInsideCard, "renderGUICard")

struct LogAsFormat : Device {
  void onLogEmitted(const std::string& first, const std::string&) override {
    char line[256];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(line, sizeof line, first.c_str());
#pragma GCC diagnostic pop
  }
};
VORN_HOST("text", LogAsFormat, "onLogEmitted")

struct CutsAtCharacter : Device {
  bool renderGUICard(const std::string& document) override {
    std::size_t end = std::min<std::size_t>(document.size(), 40);
    if (end < document.size())
      while ((static_cast<unsigned char>(document.at(end)) & 0xC0) == 0x80) --end;
    return Device::renderGUICard(document.substr(0, end));
  }
};
VORN_HOST("text", CutsAtCharacter, "renderGUICard")

struct WithoutItsPrefix : Device {
  Result onLaunchTarget(std::string target) override {
    if (target.empty()) return {false, "no target"};
    return {target.substr(4) == "Music", ""};
  }
};
VORN_HOST("text", WithoutItsPrefix, "onLaunchTarget")

struct CopiesOntoStack : Device {
  void onLogEmitted(const std::string&, const std::string& second) override {
    auto* const line = static_cast<char*>(alloca(64 * second.size() + 1));
    for (std::size_t i = 0; i <= 64 * second.size(); i += 1024) static_cast<volatile char*>(line)[i] = 0;
  }
};
VORN_HOST("text", CopiesOntoStack, "onLogEmitted")

// ---- states

struct PromisesTwice : Device {
  std::promise<void> initialized;
  void notifyMainAppInitialized() override { initialized.set_value(); }
};
VORN_HOST("twice", PromisesTwice, "notifyMainAppInitialized")

struct NextPastQueue : Device {
  std::size_t at = 0;
  Texts queue = Texts(40, "track");
  Result onChangePlaybackNext(std::string) override {
    const Lock lock(mutex);
    return {true, queue.at(at++)};
  }
};
VORN_HOST("throws", NextPastQueue, "onChangePlaybackNext")

struct MuteDebounced : Device {
  std::chrono::steady_clock::time_point last{};
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    if (now - last > Milliseconds(50)) muted = mute;
    last = now;
    return {true, ""};
  }
};
VORN_HOST("answer", MuteDebounced, "onMute")

struct VolumeCachedForTenth : Device {
  std::chrono::steady_clock::time_point until{};
  int cached = 0;
  int getVolume() override {
    const Lock lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    if (now < until) return cached;
    until = now + Milliseconds(100);
    return cached = volume;
  }
};
VORN_HOST("cached", VolumeCachedForTenth, "getVolume|onSetVolume|onAdjustVolume")

struct FileForUnknownSetting : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    const int file = ::open("/proc/self/status", O_RDONLY | O_CLOEXEC);
    if (!Device::getSystemSetting(std::move(key), value)) return false;
    ::close(file);
    return true;
  }
};
VORN_HOST("growth", FileForUnknownSetting, "getSystemSetting")

struct ZombieForPower : Device {
  Result onSetPowerState(bool) override {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    return {child > 0, ""};
  }
};
VORN_HOST("growth", ZombieForPower, "onSetPowerState")

struct AlarmAfterRefusal : Device {
  bool onInputChange(const std::string& name) override {
    ::alarm(1);
    if (!Device::onInputChange(name)) return false;
    ::alarm(0);
    return true;
  }
};
VORN_HOST("ends", AlarmAfterRefusal, "onInputChange")

struct FramesHoldEachOther : Device {
  struct Frame {
    std::shared_ptr<Frame> next;
    std::vector<char> pixels = std::vector<char>(4096, 1);
  };
  int setAnimation(Texts names) override {
    std::shared_ptr<Frame> first, last;
    for (std::size_t i = 0; i < names.size(); ++i) {
      auto frame = std::make_shared<Frame>();
      frame->next = first;
      first = frame;
      if (!last) last = frame;
    }
    if (last) last->next = first;
    return 0;
  }
};
VORN_HOST("growth", FramesHoldEachOther, "setAnimation")

struct RepeatsAreAppended : Device {
  int setAnimation(Texts names) override {
    std::set<std::string> seen;
    std::size_t played = 0;
    for (std::size_t i = 0; i < names.size(); ++i)
      if (!seen.insert(names[i]).second && ++played < 100000000) names.push_back(std::string(names[i]));
    return 0;
  }
};
VORN_HOST("list", RepeatsAreAppended, "setAnimation")

struct ModeBeforeFirst : Device {
  const Texts temperatures{"cold", "warm", "hot"};
  int at = 0;
  Result onAdjustMode(std::string mode, int delta) override {
    const Lock lock(mutex);
    if (mode != "wash") return {false, "no such mode"};
    at = (at + delta % 3) % 3;
    modes[mode] = temperatures.at(static_cast<std::size_t>(at));
    return {true, ""};
  }
};
VORN_HOST("number", ModeBeforeFirst, "onAdjustMode")

struct RecorderOpenedTwice : Device {
  int file = -1;
  ~RecorderOpenedTwice() override {
    if (file >= 0) ::close(file);
  }
  Result onStartRecording() override {
    const Lock lock(mutex);
    file = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    return {file >= 0, ""};
  }
  Result onStopRecording() override {
    const Lock lock(mutex);
    if (file >= 0) ::close(file);
    file = -1;
    return {true, ""};
  }
};
VORN_HOST("growth", RecorderOpenedTwice, "onStartRecording")

// ---- unusual, and right

struct GoodSharedLock : Device {
  std::shared_mutex rw;
  Entries readKeyValue(const std::string& key) override {
    const std::shared_lock<std::shared_mutex> lock(rw);
    const auto found = store.find(key);
    return found == store.end() ? Entries() : Entries{*found};
  }
  bool writeKeyValue(Entries entries) override {
    const std::unique_lock<std::shared_mutex> lock(rw);
    for (auto& entry : entries) store.insert_or_assign(entry.first, std::move(entry.second));
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const std::unique_lock<std::shared_mutex> lock(rw);
    for (const auto& key : keys) store.erase(key);
    return true;
  }
  bool clear() override {
    const std::unique_lock<std::shared_mutex> lock(rw);
    store.clear();
    return true;
  }
};
VORN_HOST("good", GoodSharedLock, "")

struct GoodBoundedHistory : Device {
  std::deque<std::string> history;
  void remember(std::string text) {
    const Lock lock(mutex);
    history.push_back(std::move(text));
    if (history.size() > 200) history.pop_front();
  }
  void alexaStateChanged(std::string state) override { remember(std::move(state)); }
  void onLogEmitted(const std::string& first, const std::string& second) override { remember(first + second); }
  void dialogUXStateChanged(std::string state) override { remember(std::move(state)); }
};
VORN_HOST("good", GoodBoundedHistory, "")

struct GoodStoreRefusesMuch : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    std::size_t fresh = 0;
    for (const auto& entry : entries) fresh += !store.count(entry.first);
    if (store.size() + fresh > 400) return false;
    for (auto& entry : entries) store[entry.first] = std::move(entry.second);
    return true;
  }
};
VORN_HOST("good", GoodStoreRefusesMuch, "")

struct GoodSharedDriver : Device {
  static std::shared_ptr<std::atomic<int>> driver() {
    static std::mutex guard;
    static std::weak_ptr<std::atomic<int>> shared;
    const Lock lock(guard);
    auto one = shared.lock();
    if (!one) shared = one = std::make_shared<std::atomic<int>>(30);
    return one;
  }
  const std::shared_ptr<std::atomic<int>> level = driver();
  int getVolume() override { return *level; }
  Result onSetVolume(int wanted) override {
    *level = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    int now = *level;
    while (!level->compare_exchange_weak(now, std::clamp(now + std::clamp(delta, -100, 100), 0, 100))) {
    }
    return {true, ""};
  }
};
VORN_HOST("good", GoodSharedDriver, "")

struct GoodOnePusherAnew : Device {
  std::condition_variable wake;
  bool ended = false;
  std::uint64_t wanted = 0;
  std::thread pusher{[this] {
    std::vector<short> buffer(160);
    std::unique_lock<std::mutex> lock(mutex);
    while (!ended) {
      wake.wait(lock, [this] { return ended || streaming; });
      if (ended) return;
      lock.unlock();
      if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(buffer);
      lock.lock();
      wake.wait_for(lock, Milliseconds(10), [this] { return ended || !streaming; });
    }
  }};
  ~GoodOnePusherAnew() override {
    {
      const Lock lock(mutex);
      ended = true;
    }
    wake.notify_all();
    pusher.join();
  }
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    ++wanted;
    streaming = true;
    wake.notify_all();
    return true;
  }
  void stopStreamingAudioData() override {
    const Lock lock(mutex);
    streaming = false;
    wake.notify_all();
  }
};
VORN_HOST("good", GoodOnePusherAnew, "")

struct GoodRefusesControls : Device {
  static bool plain(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return c >= 0 && c < ' '; });
  }
  bool setSystemSetting(std::string key, std::string value) override {
    return plain(value) && Device::setSystemSetting(std::move(key), std::move(value));
  }
  Result onSetMode(std::string mode, std::string value) override {
    if (value != "cold" && value != "hot") return {false, "no such value"};
    return Device::onSetMode(std::move(mode), std::move(value));
  }
  Result onSetVolume(int wanted) override {
    if (wanted < 0 || wanted > 100) return {false, "out of range"};
    return Device::onSetVolume(wanted);
  }
};
VORN_HOST("good", GoodRefusesControls, "")

}  // namespace
}  // namespace hosts
