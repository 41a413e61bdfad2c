// Mistakes in what a host answers when it is asked, and in what it keeps in the states of a device.

#include <VornDeviceInfo.h>

#include <atomic>
#include <thread>

#include "Host.h"

namespace hosts {
namespace {

// ---- Only for words that mean something ----------------------------------------------------------

struct TogglesOnBare : Device {
  Entries toggles;
  Result onSetToggleState(std::string toggle, std::string state) override {
    if (state != "on" && state != "off") return {false, "on or off"};
    toggles[toggle] = state;
    return {true, ""};
  }
};
struct TogglesUnderAnother : Device {
  std::mutex of_toggles;
  Result onSetToggleState(std::string toggle, std::string state) override {
    if (state != "on" && state != "off") return {false, "on or off"};
    const Lock lock(of_toggles);
    const auto made = modes.emplace("toggle " + toggle, state);
    if (!made.second) modes.erase(made.first);
    return {true, ""};
  }
};
VORN_HOST("unguarded", TogglesOnBare, "onSetToggleState")
VORN_HOST("two mutexes", TogglesUnderAnother, "onSetToggleState|onSetMode|onAdjustMode")

// ---- Asking changes something --------------------------------------------------------------------

struct AskedMuteEnds : Device {
  bool getMuteStatus() override {
    const Lock lock(mutex);
    return std::exchange(muted, false);
  }
};
struct AskedMicrophoneUnmutes : Device {
  bool isMicrophoneAvailable() override {
    const Lock lock(mutex);
    muted = false;
    return true;
  }
};
struct AskedSettingForgets : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    if (!Device::getSystemSetting(key, value)) {
      const Lock lock(mutex);
      settings["mode"] = "day";
      return false;
    }
    return true;
  }
};
struct AskedConfigOnce : Device {
  std::string region = "Québec";
  std::string getConfigData(std::string key) override {
    const Lock lock(mutex);
    return key == "region" || key == "logging" ? std::exchange(region, "") : "";
  }
};
struct AskedInformationMoved : Device {
  Entries facts{{"deviceType", "SPEAKER"}, {"serial", "0042"}};
  Entries getDeviceInformation() override {
    const Lock lock(mutex);
    return std::move(facts);
  }
};
struct AskedCapabilitiesByTurns : Device {
  std::atomic<int> times{0};
  std::string getVSKCapabilities() override { return ++times % 2 ? "[]" : "[{\"interface\":\"Vorn\"}]"; }
};
struct AskedVolumeFails : Device {
  std::atomic<int> times{0};
  int getVolume() override { return ++times % 16 ? Device::getVolume() : -1; }
};
struct AskedVolumeDecays : Device {
  int getVolume() override {
    const Lock lock(mutex);
    return volume > 0 ? volume-- : 0;
  }
};
/// What it has added since goes with each answer again, and what it began with but once.
struct AskedFirstFacts : Device {
  Entries facts{{"deviceType", "SPEAKER"}, {"serial", "0042"}};
  Entries getDeviceInformation() override {
    const Lock lock(mutex);
    Entries all = std::exchange(facts, {});
    all["friendlyName"] = settings["name"];
    return all;
  }
};
struct AskedFieldOnce : Device {
  std::once_flag first;
  Entries getDeviceInformation() override {
    Entries all{{"deviceType", "SPEAKER"}};
    std::call_once(first, [&] { all["serial"] = "0042"; });
    return all;
  }
};
struct AskedFieldsByTurns : Device {
  std::atomic<int> times{0};
  Entries getDeviceInformation() override {
    return {{times++ % 2 ? "serial" : "deviceType", "0042"}, {"friendlyName", "Speaker"}};
  }
};
/// Facts that the network brings come and go with it.
struct GoodFieldsOfNetwork : Device {
  std::atomic<bool> internet{false};
  void updateInternetConnectionStatus(bool connected) override { internet = connected; }
  Entries getDeviceInformation() override {
    Entries all{{"deviceType", "SPEAKER"}};
    if (internet) all["address"] = "192.0.2.7";
    return all;
  }
};
VORN_HOST("asked", AskedFirstFacts, "getDeviceInformation")
VORN_HOST("asked", AskedFieldOnce, "getDeviceInformation")
VORN_HOST("asked", AskedFieldsByTurns, "getDeviceInformation")
VORN_HOST("good", GoodFieldsOfNetwork, "")

/// As its file has them.
struct TimezoneWithLineEnd : Device {
  std::string getTimezone() override { return "America/Vancouver\n"; }
};
struct TimezoneOfLink : Device {
  std::string getTimezone() override { return std::string("America/Vancouver\0\0\0", 20); }
};
struct LocaleOfWindows : Device {
  LocaleOfWindows() { locale = "en-US\r"; }
};
struct LocaleWithBlank : Device {
  LocaleWithBlank() { locale = " en-US"; }
};
struct CapabilitiesNone : Device {
  std::string getVSKCapabilities() override { return ""; }
};
/// Has them when its file was read, which nobody waits for.
struct CapabilitiesLater : Device {
  std::atomic<int> times{0};
  std::string getVSKCapabilities() override { return times++ < 2 ? "" : "[]"; }
};
struct CapabilitiesOfLocale : Device {
  std::string getVSKCapabilities() override { return getDeviceLocale() == "en-US" ? "[]" : ""; }
};
VORN_HOST("texts", TimezoneWithLineEnd, "getTimezone")
VORN_HOST("texts", TimezoneOfLink, "getTimezone")
VORN_HOST("texts", LocaleOfWindows, "getDeviceLocale")
VORN_HOST("texts", LocaleWithBlank, "getDeviceLocale")
VORN_HOST("texts", CapabilitiesNone, "getVSKCapabilities")
VORN_HOST("texts", CapabilitiesLater, "getVSKCapabilities")
VORN_HOST("texts", CapabilitiesOfLocale, "getVSKCapabilities")

VORN_HOST("asked", AskedMuteEnds, "getMuteStatus|onMute")
VORN_HOST("asked", AskedMicrophoneUnmutes, "isMicrophoneAvailable")
VORN_HOST("asked", AskedSettingForgets, "getSystemSetting|setSystemSetting")
VORN_HOST("asked", AskedConfigOnce, "getConfigData")
VORN_HOST("asked", AskedInformationMoved, "getDeviceInformation")
VORN_HOST("asked", AskedCapabilitiesByTurns, "getVSKCapabilities")
VORN_HOST("asked", AskedVolumeFails, "getVolume")
VORN_HOST("asked", AskedVolumeDecays, "getVolume|onSetVolume")

// ---- Not in every state --------------------------------------------------------------------------

struct MutesWhenLoud : Device {
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    if (volume > 0) muted = mute;
    return {true, ""};
  }
};
struct SetsWhileNotRecording : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    {
      const Lock lock(mutex);
      if (recording) return settings.count(key) != 0;
    }
    return Device::setSystemSetting(key, value);
  }
};
struct VolumeStuckOnTuner : Device {
  Result onSetVolume(int wanted) override {
    {
      const Lock lock(mutex);
      if (input == "TUNER") return {true, ""};
    }
    return Device::onSetVolume(wanted);
  }
};
struct ZoneLostBySetting : Device {
  std::string zone = "America/Vancouver";
  std::string getTimezone() override {
    const Lock lock(mutex);
    return zone;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    const bool accepted = Device::setSystemSetting(key, value);
    const Lock lock(mutex);
    if (accepted) zone.clear();
    return accepted;
  }
};
struct InformationLostByCard : Device {
  std::atomic<bool> lost{false};
  bool renderGUICard(const std::string& document) override {
    lost = true;
    return Device::renderGUICard(document);
  }
  Entries getDeviceInformation() override { return lost ? Entries() : Device::getDeviceInformation(); }
};
struct KeepsForEmpty : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    return value.empty() ? settings.count(key) != 0 : Device::setSystemSetting(key, value);
  }
};
VORN_HOST("states", MutesWhenLoud, "onMute")
VORN_HOST("states", SetsWhileNotRecording, "setSystemSetting")
VORN_HOST("states", VolumeStuckOnTuner, "onSetVolume")
VORN_HOST("states", ZoneLostBySetting, "getTimezone")
VORN_HOST("states", InformationLostByCard, "getDeviceInformation")
VORN_HOST("states", KeepsForEmpty, "setSystemSetting")

// ---- The store's answers -------------------------------------------------------------------------

struct StoresButRefuses : Device {
  bool writeKeyValue(Entries entries) override {
    Device::writeKeyValue(std::move(entries));
    return false;
  }
};
struct RemovesButRefuses : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    bool all = true;
    for (const auto& key : keys) all = store.erase(key) != 0 && all;
    return all;
  }
};
struct OpensFirstHostOnly : Device {
  bool open() override {
    static std::atomic<OpensFirstHostOnly*> first{nullptr};
    OpensFirstHostOnly* nobody = nullptr;
    return first.compare_exchange_strong(nobody, this) || nobody == this;
  }
  // Never at the same place as the one before.
  std::unique_ptr<char[]> taken{new char[64]};
};
struct CutsUserAt : Player {
  bool login(const std::string& token, const std::string& name, bool force, Milliseconds interval,
             std::string id) override {
    auto& mine = const_cast<std::string&>(name);
    mine = mine.substr(0, mine.find('@'));
    return Player::login(token, mine, force, interval, std::move(id));
  }
};
VORN_HOST("store", StoresButRefuses, "writeKeyValue")
VORN_HOST("store", RemovesButRefuses, "removeKeyValue")
VORN_HOST("hosts", OpensFirstHostOnly, "open")
VORN_PLAYER("references", CutsUserAt, "login")

// ---- None of it a mistake ------------------------------------------------------------------------

/// What is off takes nothing, and says so; what it is, it says by degrees.
struct GoodOff : Device {
  bool on = true;
  std::atomic<int> asked{0};
  Result onSetPowerState(bool wanted) override {
    const Lock lock(mutex);
    on = wanted;
    return {true, ""};
  }
  bool isOff() {
    const Lock lock(mutex);
    return !on;
  }
  Result onSetVolume(int wanted) override {
    return isOff() ? Result(false, "off") : Device::onSetVolume(wanted);
  }
  Result onMute(bool mute) override { return isOff() ? Result(false, "off") : Device::onMute(mute); }
  std::string getVSKCapabilities() override { return ++asked < 20 ? "[]" : "[{\"interface\":\"Vorn\"}]"; }
  Entries getDeviceInformation() override {
    return {{"serial", "0042"}, {"deviceLocale", "en-CA"}, {"uptime", std::to_string(++asked)}};
  }
};
/// Follows when it is on again and when it has its speaker back.
struct GoodHeldBack : Device {
  bool on = true;
  int focus = 0, wanted = 30;
  void follow() {
    if (on && focus == 0) volume = wanted;
  }
  Result onSetPowerState(bool to) override {
    const Lock lock(mutex);
    on = to;
    follow();
    return {true, ""};
  }
  bool requestAudioFocus() override {
    const Lock lock(mutex);
    focus = 1;
    return true;
  }
  bool releaseAudioFocus() override {
    const Lock lock(mutex);
    focus = 0;
    follow();
    return true;
  }
  Result onSetVolume(int to) override {
    const Lock lock(mutex);
    wanted = std::clamp(to, 0, 100);
    follow();
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    wanted = static_cast<int>(std::clamp<std::int64_t>(std::int64_t{wanted} + delta, 0, 100));
    follow();
    return {true, ""};
  }
};
struct ConfigMakesFields : Device {
  Entries facts{{"deviceType", "SPEAKER"}};
  Entries getDeviceInformation() override {
    const Lock lock(mutex);
    return facts;
  }
  std::string getConfigData(std::string key) override {
    const Lock lock(mutex);
    return facts[key];
  }
};
struct SettingMakesItself : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    const Lock lock(mutex);
    const std::size_t known = settings.size();
    const std::string& found = settings[key];
    if (settings.size() != known) return false;
    value = found;
    return true;
  }
};
struct ReadMakesEntry : Device {
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    const bool known = store.count(key) != 0;
    const Entries found{{key, store[key]}};
    return known ? found : Entries();
  }
};
struct NetworkOnce : Device {
  std::atomic<bool> fresh{true};
  bool getNetworkConnectionStatus() override { return fresh.exchange(false); }
};
struct MicrophoneTaken : Device {
  std::atomic<int> asked{0};
  bool isMicrophoneAvailable() override { return asked++ == 0; }
};
/// Is there from the second question on: the first one opens it.
struct GoodOpensLater : Device {
  std::atomic<int> asked{0};
  bool isMicrophoneAvailable() override { return asked++ > 0; }
};
VORN_HOST("asked", NetworkOnce, "getNetworkConnectionStatus")
VORN_HOST("asked", MicrophoneTaken, "isMicrophoneAvailable")
VORN_HOST("good", GoodOpensLater, "")
/// Made once, with what a user may change in it.
struct FactsMadeOnce : Device {
  Entries facts;
  FactsMadeOnce() { settings["friendlyName"] = "Speaker"; }
  Entries getDeviceInformation() override {
    const Lock lock(mutex);
    if (facts.empty()) facts = {{"deviceSerialNumber", "7"}, {"friendlyName", settings["friendlyName"]}};
    return facts;
  }
};
struct HandsFreeAsFirst : Device {
  HandsFreeAsFirst() { settings["handsFreeAlwaysOnEnabled"] = "false"; }
  Entries getDeviceInformation() override { return {{"currentAlwaysOnVoiceMode", "OFF"}}; }
};
struct PttOfAnother : Device {
  PttOfAnother() { settings["PTTAlwaysOnEnabled"] = settings["handsFreeAlwaysOnEnabled"] = "false"; }
  Entries getDeviceInformation() override {
    const Lock lock(mutex);
    return {{"currentAlwaysOnPTTMode", settings["handsFreeAlwaysOnEnabled"]}};
  }
};
struct StateOfLastQuestion : hosts::Player {
  std::string known = "IDLE";
  std::string getPlaybackState(std::string id) override {
    std::string now = hosts::Player::getPlaybackState(id);
    const Lock lock(mutex);
    now.swap(known);
    return now;
  }
};
/// As each device has its words for what is on.
struct GoodReflecting : Device {
  GoodReflecting() {
    settings["handsFreeAlwaysOnEnabled"] = "false";
    settings["friendlyName"] = "Speaker";
  }
  Entries getDeviceInformation() override {
    const Lock lock(mutex);
    return {{"currentAlwaysOnVoiceMode", settings["handsFreeAlwaysOnEnabled"] == "true" ? "ON" : "OFF"},
            {"friendlyName", settings["friendlyName"].substr(0, 4)}};
  }
};
VORN_HOST("facts", FactsMadeOnce, "getDeviceInformation|setSystemSetting")
VORN_HOST("facts", HandsFreeAsFirst, "getDeviceInformation|setSystemSetting")
VORN_HOST("facts", PttOfAnother, "getDeviceInformation|setSystemSetting")
VORN_PLAYER("asked", StateOfLastQuestion, "getPlaybackState")
VORN_HOST("good", GoodReflecting, "")
VORN_HOST("asked", ConfigMakesFields, "getConfigData")
VORN_HOST("asked", SettingMakesItself, "getSystemSetting")
VORN_HOST("asked", ReadMakesEntry, "readKeyValue")
VORN_HOST("good", GoodOff, "")
VORN_HOST("good", GoodHeldBack, "")

// ---- A question, a thread or a mute later ---------------------------------------------------------

struct VolumeOneQuestionLate : Device {
  int known = 30;
  int getVolume() override {
    const Lock lock(mutex);
    return std::exchange(known, volume);
  }
};
/// What is not there stands empty in the cache, and is found there the second time.
struct SettingAbsentCached : Device {
  Entries cached;
  bool getSystemSetting(std::string key, std::string& value) override {
    const Lock lock(mutex);
    if (const auto found = settings.find(key); found != settings.end()) {
      value = found->second;
      return true;
    }
    if (const auto again = cached.find(key); again != cached.end()) value = again->second;
    cached[key];
    return false;
  }
};
struct CapabilitiesAppended : Device {
  std::string composed;
  std::string getVSKCapabilities() override {
    const Lock lock(mutex);
    return composed += "[]";
  }
};
/// Each thread knows the settings as they were when it asked first.
struct SettingOfThread : Device {
  static Entries& known() {
    thread_local Entries ofThread;
    return ofThread;
  }
  bool getSystemSetting(std::string key, std::string& value) override {
    const auto found = known().find(key);
    if (found == known().end()) {
      if (!Device::getSystemSetting(key, value)) return false;
      known()[key] = value;
    } else {
      value = found->second;
    }
    return true;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    known().erase(key);
    return Device::setSystemSetting(key, value);
  }
};
/// Which one is wanted stands in a place that all calls share, while the flash is looked up.
struct Cursor {
  std::mutex mutex;
  std::string wanted;
  std::string seek(const std::string& key) {
    {
      const Lock lock(mutex);
      wanted = key;
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    const Lock lock(mutex);
    return wanted;
  }
};
struct SettingAtCursor : Device {
  Cursor cursor;
  bool getSystemSetting(std::string key, std::string& value) override {
    return Device::getSystemSetting(cursor.seek(key), value);
  }
};
struct EntryAtCursor : Device {
  Cursor cursor;
  Entries readKeyValue(const std::string& key) override { return Device::readKeyValue(cursor.seek(key)); }
};
/// The batch before is played again with each write, also after the store was cleared.
struct JournalPastClear : Device {
  Entries journal;
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    Entries all = entries;
    all.insert(journal.begin(), journal.end());
    journal = std::move(entries);
    for (auto& entry : all) store[entry.first] = std::move(entry.second);
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) {
      journal.erase(key);
      store.erase(key);
    }
    return true;
  }
};
struct VolumeOfBeforeMute : Device {
  int before = 30;
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    if (mute && !muted) before = volume;
    if (!mute && muted) volume = before;
    muted = mute;
    return {true, ""};
  }
};
/// Whom the account is of is looked up when it is asked for.
struct UserOfCaller : hosts::Player {
  std::map<std::string, const std::string*> users;
  bool login(const std::string&, const std::string& name, bool, Milliseconds, std::string id) override {
    const Lock lock(mutex);
    users[id] = &name;
    return true;
  }
  bool logout(std::string id) override {
    const Lock lock(mutex);
    users.erase(id);
    return true;
  }
  std::string getPlaybackState(std::string id) override {
    const Lock lock(mutex);
    return users.count(id) ? *users[id] + " " + playback : playback;
  }
};
VORN_HOST("late", VolumeOneQuestionLate, "onSetVolume|host")
VORN_HOST("asked", SettingAbsentCached, "getSystemSetting")
VORN_HOST("asked", CapabilitiesAppended, "getVSKCapabilities|host")
VORN_HOST("threads", SettingOfThread, "setSystemSetting")
VORN_HOST("threads", SettingAtCursor, "getSystemSetting")
VORN_HOST("threads", EntryAtCursor, "readKeyValue")
VORN_HOST("store", JournalPastClear, "clear|readKeyValue")
VORN_HOST("volume", VolumeOfBeforeMute, "onSetVolume")
VORN_PLAYER("arguments", UserOfCaller, "login")

}  // namespace
}  // namespace hosts
