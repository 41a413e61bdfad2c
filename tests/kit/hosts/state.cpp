// Mistakes in what a host remembers: settings, volume, mute, the store.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <iterator>
#include <list>
#include <locale>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "Filed.h"

namespace hosts {
namespace {

// ---- Settings ------------------------------------------------------------------------------------

struct ForgetsSetting : Device {
  bool setSystemSetting(std::string key, std::string) override { return settings.count(key) != 0; }
};
struct ForgetsSecondSetting : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    return key == "name" ? true : Device::setSystemSetting(key, value);
  }
};
struct SharesSetting : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    if (!settings.count(key)) return false;
    for (auto& setting : settings) setting.second = value;
    return true;
  }
};
struct LowersSetting : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    std::transform(value.begin(), value.end(), value.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return Device::setSystemSetting(key, value);
  }
};
struct OneBehind : Device {
  std::string before;
  bool setSystemSetting(std::string key, std::string value) override {
    std::swap(before, value);
    return Device::setSystemSetting(key, value);
  }
};
struct SetsButRefuses : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    Device::setSystemSetting(key, value);
    return false;
  }
};
struct WritesWhenFalse : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    if (Device::getSystemSetting(key, value)) return true;
    value = "unknown";
    return false;
  }
};
struct ClearsWhenFalse : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    value.clear();
    return Device::getSystemSetting(key, value);
  }
};
struct TrueWithoutValue : Device {
  bool getSystemSetting(std::string key, std::string&) override { return settings.count(key) != 0; }
};
struct FirstChangeOnly : Device {
  std::set<std::string> changed;
  bool setSystemSetting(std::string key, std::string value) override {
    return settings.count(key) && !changed.insert(key).second ? true : Device::setSystemSetting(key, value);
  }
};
struct AppendsSetting : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    std::string own;
    if (!Device::getSystemSetting(key, own)) return false;
    value += own;
    return true;
  }
};
struct EmptyUnwritten : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    std::string own;
    if (!Device::getSystemSetting(key, own)) return false;
    if (!own.empty()) value = own;
    return true;
  }
};
struct SettingAsCText : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    return Device::setSystemSetting(key, value.c_str());
  }
};
/// A journal of changes that is full one day.
struct SettingsFull : Device {
  int changes = 0;
  bool setSystemSetting(std::string key, std::string value) override {
    return ++changes > 150 ? settings.count(key) != 0 : Device::setSystemSetting(key, value);
  }
};
VORN_HOST("settings", EmptyUnwritten, "getSystemSetting")
VORN_HOST("settings", SettingAsCText, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", SettingsFull, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", ForgetsSetting, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", ForgetsSecondSetting, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", SharesSetting, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", LowersSetting, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", OneBehind, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", SetsButRefuses, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", WritesWhenFalse, "getSystemSetting")
VORN_HOST("settings", ClearsWhenFalse, "getSystemSetting")
VORN_HOST("settings", TrueWithoutValue, "getSystemSetting")
VORN_HOST("settings", FirstChangeOnly, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", AppendsSetting, "getSystemSetting")
struct SettingDefaultErased : Device {
  const Entries defaults = settings;
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    const auto found = defaults.find(key);
    if (found == defaults.end()) return false;
    if (found->second == value)
      settings.erase(key);  // only what differs is kept
    else
      settings[key] = value;
    return true;
  }
};
VORN_HOST("settings", SettingDefaultErased, "setSystemSetting")

// ---- Volume and mute -----------------------------------------------------------------------------

struct VolumeStays : Device {
  Result onSetVolume(int) override { return {true, ""}; }
};
struct AdjustStays : Device {
  Result onAdjustVolume(int) override { return {true, ""}; }
};
struct AdjustReversed : Device {
  Result onAdjustVolume(int delta) override { return Device::onAdjustVolume(delta > 0 ? -1 : 1); }
};
struct MuteStays : Device {
  Result onMute(bool) override { return {true, ""}; }
};
struct MuteReversed : Device {
  Result onMute(bool mute) override { return Device::onMute(!mute); }
};
struct MuteForGood : Device {
  Result onMute(bool mute) override { return Device::onMute(mute || muted); }
};
struct MuteToggles : Device {
  Result onMute(bool) override { return Device::onMute(!muted); }
};
struct VolumeReportedOnce : Device {
  int first = -1;
  int getVolume() override {
    const Lock lock(mutex);
    if (first < 0) first = volume;
    return first;
  }
};
struct VolumeReversed : Device {
  Result onSetVolume(int wanted) override { return Device::onSetVolume(100 - std::clamp(wanted, 0, 100)); }
};
struct VolumeOnlyUp : Device {
  Result onSetVolume(int wanted) override { return Device::onSetVolume(std::max(wanted, volume)); }
};
struct MuteLosesVolume : Device {
  int getVolume() override { return muted ? -1 : Device::getVolume(); }
  Result onMute(bool mute) override {
    Device::onSetVolume(mute ? 0 : 100);
    return {true, ""};
  }
};
/// The mixer's queue is full one day.
struct VolumeSticks : Device {
  int changes = 0;
  Result onSetVolume(int wanted) override {
    return ++changes > 200 ? Result{true, ""} : Device::onSetVolume(wanted);
  }
};
struct MuteSticks : Device {
  int changes = 0;
  Result onMute(bool mute) override { return ++changes > 200 ? Result{true, ""} : Device::onMute(mute); }
};
struct UnmutesToStart : Device {
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    muted = mute;
    if (!mute) volume = 30;
    return {true, ""};
  }
};
struct MutedTwiceIsSilent : Device {
  int saved = 30;
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    muted = mute;
    if (mute) saved = std::exchange(volume, 0);
    if (!mute) volume = saved;
    return {true, ""};
  }
};
struct UnmutesToOld : Device {
  int saved = 30;
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    muted = mute;
    if (mute) saved = volume;
    if (!mute) volume = std::exchange(saved, 5);
    return {true, ""};
  }
};
VORN_HOST("volume", UnmutesToStart, "onMute")
VORN_HOST("volume", MutedTwiceIsSilent, "onMute")
VORN_HOST("volume", UnmutesToOld, "onMute")
VORN_HOST("volume", VolumeSticks, "onSetVolume")
VORN_HOST("volume", MuteSticks, "onMute")
VORN_HOST("volume", VolumeStays, "onSetVolume")
VORN_HOST("volume", AdjustStays, "onAdjustVolume")
VORN_HOST("volume", AdjustReversed, "onAdjustVolume")
VORN_HOST("volume", MuteStays, "onMute")
VORN_HOST("volume", MuteReversed, "onMute")
VORN_HOST("volume", MuteForGood, "onMute")
VORN_HOST("volume", MuteToggles, "onMute")
VORN_HOST("volume", VolumeReportedOnce, "onSetVolume|getVolume|onAdjustVolume")
VORN_HOST("volume", VolumeReversed, "onSetVolume")
VORN_HOST("volume", VolumeOnlyUp, "onSetVolume")
VORN_HOST("volume", MuteLosesVolume, "onMute")

// ---- The store -----------------------------------------------------------------------------------

struct KeyCut : Device {
  static std::string cut(const std::string& key) { return key.substr(0, 32); }
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    const auto found = store.find(cut(key));
    return found == store.end() ? Entries() : Entries{{key, found->second}};
  }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) store[cut(entry.first)] = entry.second;
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (auto& key : keys) store.erase(cut(key));
    return true;
  }
};
template <class Change>
struct Changed : Device {
  Entries readKeyValue(const std::string& key) override {
    const Entries found = Device::readKeyValue(Change::key(key));
    return found.empty() ? Entries() : Entries{{key, found.begin()->second}};
  }
  bool writeKeyValue(Entries entries) override {
    Entries own;
    for (auto& entry : entries) own[Change::key(entry.first)] = Change::value(entry.second);
    return Device::writeKeyValue(std::move(own));
  }
  bool removeKeyValue(const Texts& keys) override {
    Texts own;
    for (auto& key : keys) own.push_back(Change::key(key));
    return Device::removeKeyValue(own);
  }
};
struct Same {
  static std::string key(const std::string& text) { return text; }
  static std::string value(const std::string& text) { return text; }
};
struct LongKeys : Same {
  static std::string key(const std::string& text) { return text.substr(0, 255); }
};
struct KeysToNul : Same {
  static std::string key(const std::string& text) { return text.c_str(); }
};
struct ValuesToNul : Same {
  static std::string value(const std::string& text) { return text.c_str(); }
};
struct KeysToEquals : Same {
  static std::string key(const std::string& text) { return text.substr(0, text.find('=')); }
};
struct ValuesToLine : Same {
  static std::string value(const std::string& text) { return text.substr(0, text.find('\n')); }
};
struct ValuesTrimmed : Same {
  static std::string value(std::string text) {
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.pop_back();
    return text;
  }
};
struct KeysLowered : Same {
  static std::string key(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return text;
  }
};
struct ValuesShort : Same {
  static std::string value(const std::string& text) { return text.substr(0, 4096); }
};
struct ValuesSevenBit : Same {
  static std::string value(std::string text) {
    for (auto& c : text) c = static_cast<char>(c & 0x7f);
    return text;
  }
};
struct KeysHashed : Same {
  static std::string key(const std::string& text) {
    unsigned hash = 0;
    for (const char c : text) hash = (hash + static_cast<unsigned char>(c)) % 4093;
    return std::to_string(hash);
  }
};
struct StoreLongKeys : Changed<LongKeys> {};
struct StoreKeysToNul : Changed<KeysToNul> {};
struct StoreValuesToNul : Changed<ValuesToNul> {};
struct StoreKeysToEquals : Changed<KeysToEquals> {};
struct StoreValuesToLine : Changed<ValuesToLine> {};
struct StoreValuesTrimmed : Changed<ValuesTrimmed> {};
struct StoreKeysLowered : Changed<KeysLowered> {};
struct StoreValuesShort : Changed<ValuesShort> {};
struct StoreValuesSevenBit : Changed<ValuesSevenBit> {};
struct StoreKeysHashed : Changed<KeysHashed> {};
struct WritesNothing : Device {
  bool writeKeyValue(Entries) override { return true; }
};
struct WritesFirst : Device {
  bool writeKeyValue(Entries entries) override {
    return entries.empty() || Device::writeKeyValue({*entries.begin()});
  }
};
struct WritesHundred : Device {
  bool writeKeyValue(Entries entries) override {
    while (entries.size() > 100) entries.erase(std::prev(entries.end()));
    return Device::writeKeyValue(std::move(entries));
  }
};
struct WritesOnce : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    store.insert(entries.begin(), entries.end());
    return true;
  }
};
struct WritesOverAll : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    store = std::move(entries);
    return true;
  }
};
struct EmptyBatchClears : Device {
  bool writeKeyValue(Entries entries) override {
    return entries.empty() ? clear() : Device::writeKeyValue(entries);
  }
};
struct RemovesFirst : Device {
  bool removeKeyValue(const Texts& keys) override {
    return keys.empty() || Device::removeKeyValue({keys.front()});
  }
};
struct RemovesNothing : Device {
  bool removeKeyValue(const Texts&) override { return true; }
};
struct RemovesLikeNames : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys)
      for (auto entry = store.begin(); entry != store.end();)
        entry = entry->first.compare(0, key.size(), key) == 0 ? store.erase(entry) : std::next(entry);
    return true;
  }
};
struct RemovesAllOnEmpty : Device {
  bool removeKeyValue(const Texts& keys) override {
    return keys.empty() ? clear() : Device::removeKeyValue(keys);
  }
};
struct StopsAtAbsent : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys)
      if (!store.erase(key)) break;
    return true;
  }
};
struct RemovesHundred : Device {
  bool removeKeyValue(const Texts& keys) override {
    return Device::removeKeyValue(
        Texts(keys.begin(), keys.begin() + std::min<std::ptrdiff_t>(100, std::ptrdiff_t(keys.size()))));
  }
};
struct ClearsNothing : Device {
  bool clear() override { return true; }
};
struct ClearsOne : Device {
  bool clear() override {
    const Lock lock(mutex);
    if (!store.empty()) store.erase(store.begin());
    return true;
  }
};
struct OpenClears : Device {
  bool open() override { return clear(); }
};
struct KeepsFiveHundred : Device {
  bool writeKeyValue(Entries entries) override {
    Device::writeKeyValue(std::move(entries));
    const Lock lock(mutex);
    while (store.size() > 500) store.erase(store.begin());
    return true;
  }
};
struct LosesUpdates : Device {
  bool writeKeyValue(Entries entries) override {
    Entries copy;
    {
      const Lock lock(mutex);
      copy = store;
    }
    for (auto& entry : entries) copy[entry.first] = entry.second;
    const Lock lock(mutex);
    store = std::move(copy);
    return true;
  }
};
struct DropsWhenBusy : Device {
  bool writeKeyValue(Entries entries) override {
    const std::unique_lock<std::mutex> lock(mutex, std::try_to_lock);
    if (lock)
      for (auto& entry : entries) store[entry.first] = entry.second;
    return true;
  }
};
struct EmptyValueLost : Device {
  bool writeKeyValue(Entries entries) override {
    Entries own;
    for (auto& entry : entries)
      if (entry.second.empty())
        removeKeyValue({entry.first});
      else
        own.insert(entry);
    return Device::writeKeyValue(own);
  }
};
struct WriteBehind : Device {
  Entries pending;
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : pending) store[entry.first] = entry.second;
    pending = std::move(entries);
    return true;
  }
};
/// A cache that forgets the oldest, where nothing else keeps them.
template <std::size_t kMost>
struct ForgetsOldest : Device {
  std::vector<std::string> order;
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (const auto& entry : entries) {
      store[entry.first] = entry.second;
      order.push_back(entry.first);
      if (order.size() <= kMost) continue;
      store.erase(order.front());
      order.erase(order.begin());
    }
    return true;
  }
};
using ForgetsBeyondThousand = ForgetsOldest<1000>;
using ForgetsBeyondFew = ForgetsOldest<16>;
VORN_HOST("store", ForgetsBeyondThousand, "writeKeyValue|readKeyValue")
VORN_HOST("store", ForgetsBeyondFew, "writeKeyValue|readKeyValue")
VORN_HOST("store", KeyCut, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreLongKeys, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreKeysToNul, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreValuesToNul, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreKeysToEquals, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreValuesToLine, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreValuesTrimmed, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreKeysLowered, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreValuesShort, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreValuesSevenBit, "writeKeyValue|readKeyValue")
VORN_HOST("store", StoreKeysHashed, "writeKeyValue|readKeyValue")
VORN_HOST("store", WritesNothing, "writeKeyValue")
VORN_HOST("store", WritesFirst, "writeKeyValue")
VORN_HOST("store", WritesHundred, "writeKeyValue")
VORN_HOST("store", WritesOnce, "writeKeyValue")
VORN_HOST("store", WritesOverAll, "writeKeyValue")
VORN_HOST("store", EmptyBatchClears, "writeKeyValue")
VORN_HOST("store", RemovesFirst, "removeKeyValue")
VORN_HOST("store", RemovesNothing, "removeKeyValue")
VORN_HOST("store", RemovesLikeNames, "removeKeyValue")
VORN_HOST("store", RemovesAllOnEmpty, "removeKeyValue")
VORN_HOST("store", StopsAtAbsent, "removeKeyValue")
VORN_HOST("store", RemovesHundred, "removeKeyValue")
VORN_HOST("store", ClearsNothing, "clear")
VORN_HOST("store", ClearsOne, "clear")
VORN_HOST("store", OpenClears, "open")
VORN_HOST("store", KeepsFiveHundred, "writeKeyValue")
VORN_HOST("store", LosesUpdates, "writeKeyValue")
VORN_HOST("store", DropsWhenBusy, "writeKeyValue")
VORN_HOST("store", EmptyValueLost, "writeKeyValue")
VORN_HOST("store", WriteBehind, "writeKeyValue")
struct RemovesNeighbour : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) {
      const auto found = store.lower_bound(key);
      if (found != store.end()) store.erase(found);
    }
    return true;
  }
};
struct AbsentRemembered : Device {
  std::set<std::string> absent;
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    if (absent.count(key)) return {};
    const auto found = store.find(key);
    if (found != store.end()) return {*found};
    if (absent.size() < 64) absent.insert(key);
    return {};
  }
  bool clear() override {
    const Lock lock(mutex);
    store.clear();
    absent.clear();
    return true;
  }
};
struct EvictsBeyondKilobytes : Device {
  std::list<std::string> order;
  std::size_t bytes = 0;
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) {
      bytes += entry.second.size();
      order.push_back(entry.first);
      store[entry.first] = std::move(entry.second);
      while (bytes > 256 * 1024 && order.size() > 1) {
        bytes -= std::min(bytes, store[order.front()].size());
        store.erase(order.front());
        order.pop_front();
      }
    }
    return true;
  }
};
VORN_HOST("store", RemovesNeighbour, "removeKeyValue")
VORN_HOST("store", AbsentRemembered, "readKeyValue|writeKeyValue")
VORN_HOST("store", EvictsBeyondKilobytes, "writeKeyValue")

// ---- The store in a file -------------------------------------------------------------------------

struct GoodFiled : Filed {};
struct SavesAtEnd : Filed {
  bool save() override { return true; }
  ~SavesAtEnd() override { replace(); }
};
struct SavesEveryTenth : Filed {
  int calls = 0;
  bool save() override { return ++calls % 10 != 1 || replace(); }
};
struct SavesInPlace : Filed {
  bool save() override { return writeTo(path); }
};
struct SavesSlowlyInPlace : Filed {
  bool save() override {
    std::ofstream out(path, std::ios::binary);
    for (const auto& entry : store) {
      put(out, entry.first);
      put(out, entry.second);
      out.flush();
    }
    return static_cast<bool>(out);
  }
};
struct RemovesBeforeRename : Filed {
  bool save() override {
    if (!writeTo(path + "~")) return false;
    std::remove(path.c_str());
    std::this_thread::sleep_for(Milliseconds(1));
    return std::rename((path + "~").c_str(), path.c_str()) == 0;
  }
};
struct SavesLater : Filed {
  std::vector<std::thread> workers;
  ~SavesLater() override {
    for (auto& worker : workers) worker.join();
  }
  bool save() override {
    workers.emplace_back([this] {
      std::this_thread::sleep_for(Milliseconds(30));
      const Lock lock(mutex);
      replace();
    });
    return true;
  }
};
struct ForgetsRemoval : Filed {
  bool removeKeyValue(const Texts& keys) override { return Device::removeKeyValue(keys); }
};
struct ForgetsClearing : Filed {
  bool clear() override { return Device::clear(); }
};
struct NeverLoads : Filed {
  NeverLoads() { store.clear(); }
};
/// Lines of "key=value".
struct Lines : Filed {
  Lines() {
    store.clear();
    Lines::load();
  }
  void load() override {
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
      const auto equals = line.find('=');
      if (equals != std::string::npos) store[line.substr(0, equals)] = line.substr(equals + 1);
    }
  }
  bool save() override {
    {
      std::ofstream out(path + "~");
      for (const auto& entry : store) out << entry.first << '=' << entry.second << '\n';
    }
    return std::rename((path + "~").c_str(), path.c_str()) == 0;
  }
};
/// Texts that end with NUL.
struct Terminated : Filed {
  Terminated() {
    store.clear();
    Terminated::load();
  }
  void load() override {
    std::ifstream in(path, std::ios::binary);
    for (std::string key, value; std::getline(in, key, '\0') && std::getline(in, value, '\0');)
      store[key] = value;
  }
  bool save() override {
    {
      std::ofstream out(path + "~", std::ios::binary);
      for (const auto& entry : store) out << entry.first << '\0' << entry.second << '\0';
    }
    return std::rename((path + "~").c_str(), path.c_str()) == 0;
  }
};
/// Words with blanks between.
struct Words : Filed {
  Words() {
    store.clear();
    Words::load();
  }
  void load() override {
    std::ifstream in(path);
    for (std::string key, value; in >> key >> value;) store[key] = value;
  }
  bool save() override {
    {
      std::ofstream out(path + "~");
      for (const auto& entry : store) out << entry.first << ' ' << entry.second << '\n';
    }
    return std::rename((path + "~").c_str(), path.c_str()) == 0;
  }
};
struct SizeInByte : Filed {
  SizeInByte() {
    store.clear();
    SizeInByte::load();
  }
  void load() override {
    std::ifstream in(path, std::ios::binary);
    for (std::string key, value; text(in, key) && text(in, value);) store[key] = value;
  }
  static bool text(std::istream& in, std::string& got) {
    const int size = in.get();
    if (size < 0) return false;
    got.resize(static_cast<std::size_t>(size));
    return static_cast<bool>(in.read(&got[0], size));
  }
  bool save() override {
    {
      std::ofstream out(path + "~", std::ios::binary);
      for (const auto& entry : store)
        for (const auto& one : {entry.first, entry.second}) {
          out.put(static_cast<char>(std::min<std::size_t>(one.size(), 255)));
          out.write(one.data(), static_cast<std::streamsize>(std::min<std::size_t>(one.size(), 255)));
        }
    }
    return std::rename((path + "~").c_str(), path.c_str()) == 0;
  }
};
struct LockLeftBehind : Filed {
  bool locked = false;
  bool open() override {
    const Lock lock(mutex);
    const int file = ::open((path + ".lock").c_str(), O_CREAT | O_EXCL | O_WRONLY, 0600);
    if (file >= 0) close(file);
    return (locked = locked || file >= 0);
  }
  ~LockLeftBehind() override {
    if (locked) std::remove((path + ".lock").c_str());
  }
};
struct AppendsOnly : Filed {
  AppendsOnly() {
    store.clear();
    Filed::load();
  }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    std::ofstream out(path, std::ios::binary | std::ios::app);
    for (const auto& entry : entries) {
      put(out, entry.first);
      put(out, entry.second);
      store[entry.first] = entry.second;
    }
    return static_cast<bool>(out.flush());
  }
  bool removeKeyValue(const Texts& keys) override { return Device::removeKeyValue(keys); }
};
struct OpenDropsTorn : Filed {
  bool open() override {
    std::ifstream mark(path + ".dirty");
    if (mark) std::remove(path.c_str());
    const Lock lock(mutex);
    if (mark) store.clear();
    return true;
  }
  bool save() override {
    std::ofstream(path + ".dirty") << "writing";
    const bool saved = replace();
    std::this_thread::sleep_for(Milliseconds(1));
    std::remove((path + ".dirty").c_str());
    return saved;
  }
};
VORN_HOST("good", GoodFiled, "")
/// Each of them is about what stands in the file when two calls write it.
struct SavesUnguarded : Filed {
  bool writeKeyValue(Entries entries) override {
    std::string text;
    {
      const Lock lock(mutex);
      for (auto& entry : entries) store[entry.first] = std::move(entry.second);
      std::ostringstream out;
      for (const auto& entry : store) {
        put(out, entry.first);
        put(out, entry.second);
      }
      text = out.str();
    }
    return keep(text);
  }
  virtual bool keep(const std::string& text) {
    static std::atomic<int> count{0};
    const std::string file = path + std::to_string(++count);
    std::ofstream(file, std::ios::binary) << text << std::flush;
    return std::rename(file.c_str(), path.c_str()) == 0;
  }
};
struct SavesTogether : SavesUnguarded {
  bool keep(const std::string& text) override {
    return static_cast<bool>(std::ofstream(path, std::ios::binary) << text << std::flush);
  }
};
struct SavesForAnother : SavesUnguarded {
  std::mutex saving;
  bool keep(const std::string& text) override {
    const std::unique_lock<std::mutex> lock(saving, std::try_to_lock);
    return !lock || SavesUnguarded::keep(text);
  }
};
struct SavesWhenGrown : Filed {
  std::size_t saved = 0;
  bool save() override {
    if (store.size() == saved) return true;
    saved = store.size();
    return replace();
  }
};
VORN_HOST("durable", SavesWhenGrown, "writeKeyValue")
VORN_HOST("durable", SavesUnguarded, "writeKeyValue")
VORN_HOST("durable", SavesTogether, "writeKeyValue")
VORN_HOST("durable", SavesForAnother, "writeKeyValue")
VORN_HOST("durable", SavesAtEnd, "writeKeyValue")
VORN_HOST("durable", SavesEveryTenth, "writeKeyValue")
VORN_HOST("durable", SavesInPlace, "writeKeyValue")
VORN_HOST("durable", SavesSlowlyInPlace, "writeKeyValue")
VORN_HOST("durable", RemovesBeforeRename, "writeKeyValue")
VORN_HOST("durable", SavesLater, "writeKeyValue")
VORN_HOST("durable", ForgetsRemoval, "removeKeyValue")
VORN_HOST("durable", ForgetsClearing, "clear")
VORN_HOST("durable", NeverLoads, "writeKeyValue")
VORN_HOST("durable", Lines, "writeKeyValue")
VORN_HOST("durable", Terminated, "writeKeyValue")
VORN_HOST("durable", Words, "writeKeyValue")
VORN_HOST("durable", SizeInByte, "writeKeyValue")
VORN_HOST("durable", LockLeftBehind, "open")
VORN_HOST("durable", AppendsOnly, "removeKeyValue")
VORN_HOST("durable", OpenDropsTorn, "open|writeKeyValue")

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

struct RemovesByCText : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys)
      for (auto entry = store.begin(); entry != store.end();)
        entry = std::strcmp(entry->first.c_str(), key.c_str()) == 0 ? store.erase(entry) : std::next(entry);
    return true;
  }
};

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

struct OpenStartsAnew : Device {
  bool open() override {
    const Lock lock(mutex);
    store = Entries();
    return true;
  }
};

struct SparesTheFlash : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) {
      std::string& old = store[entry.first];
      if (old.size() != entry.second.size() || old.compare(0, 8, entry.second, 0, 8) != 0)
        old = std::move(entry.second);
    }
    return true;
  }
};

struct BatchOfThirtyTwo : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    int count = 0;
    for (auto& entry : entries)
      if (count++ < 32) store[entry.first] = std::move(entry.second);
    return true;
  }
};

struct LengthOfSixteenBits : Device {
  bool writeKeyValue(Entries entries) override {
    for (auto& entry : entries) entry.second.resize(static_cast<std::uint16_t>(entry.second.size()));
    return Device::writeKeyValue(std::move(entries));
  }
};

struct EmptyMeansRemoved : Filed {
  EmptyMeansRemoved() {
    for (auto entry = store.begin(); entry != store.end();)
      entry = entry->second.empty() ? store.erase(entry) : std::next(entry);
  }
};

struct LoadsFirstPages : Filed {
  LoadsFirstPages() {
    std::size_t read = 0;
    for (auto entry = store.begin(); entry != store.end();) {
      read += entry->first.size() + entry->second.size() + 8;
      entry = read > 65536 ? store.erase(entry) : std::next(entry);
    }
  }
};

struct ClearsInMemoryOnly : Filed {
  bool clear() override {
    const Lock lock(mutex);
    store.clear();
    return true;
  }
};

struct KeyLengthInOneByte : Filed {
  KeyLengthInOneByte() {
    Entries loaded;
    for (auto& entry : store) loaded[entry.first.substr(0, entry.first.size() & 0xFFU)] = entry.second;
    store = loaded;
  }
};

struct RemovesSavedLater : Filed {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    std::size_t gone = 0;
    for (const auto& key : keys) gone += store.erase(key);
    return gone < keys.size() || save();
  }
};

struct EmptyKeyIsExplained : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    if (!key.empty()) return Device::getSystemSetting(std::move(key), value);
    value = "key required";
    return false;
  }
};

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

struct SettingAssignedThenChecked : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    found->second = std::move(value);
    return std::none_of(found->second.begin(), found->second.end(), [](unsigned char c) { return c < ' '; });
  }
};

struct LocaleOfTheSystem : Device {
  void changeAlexaLocale(std::string wanted) override {
    const Lock lock(mutex);
    if (wanted.size() != 5 || wanted[2] != '-') return;
    locale = wanted;
    const std::locale rules(wanted.c_str());
    (void)rules;
  }
};

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

VORN_HOST("store", ReadCachedByAddress, "readKeyValue")
VORN_HOST("store", KeysBySum, "readKeyValue|writeKeyValue|removeKeyValue|clear")
VORN_HOST("store", SlotsReused, "writeKeyValue|readKeyValue")
VORN_HOST("store", RemovesByCText, "removeKeyValue")
VORN_HOST("store", RemovesWhatWasFound, "removeKeyValue")
VORN_HOST("store", OpenStartsAnew, "open|readKeyValue")
VORN_HOST("store", SparesTheFlash, "writeKeyValue|readKeyValue")
VORN_HOST("store", BatchOfThirtyTwo, "writeKeyValue|readKeyValue")
VORN_HOST("store", LengthOfSixteenBits, "writeKeyValue|readKeyValue")
VORN_HOST("durable", EmptyMeansRemoved, "readKeyValue|writeKeyValue")
VORN_HOST("durable", LoadsFirstPages, "readKeyValue|writeKeyValue")
VORN_HOST("durable", ClearsInMemoryOnly, "clear")
VORN_HOST("durable", KeyLengthInOneByte, "readKeyValue|writeKeyValue")
VORN_HOST("durable", RemovesSavedLater, "removeKeyValue")
VORN_HOST("settings", EmptyKeyIsExplained, "getSystemSetting")
VORN_HOST("settings", SettingByBeginning, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", SettingAssignedThenChecked, "setSystemSetting|getSystemSetting")
VORN_HOST("settings", LocaleOfTheSystem, "changeAlexaLocale")
VORN_HOST("settings", SettingsLieInStore, "setSystemSetting")

}  // namespace
}  // namespace hosts
