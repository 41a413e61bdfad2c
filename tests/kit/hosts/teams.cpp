// Hosts as teams hand them in: one mistake each, of every kind, and some that are only unlike the others.

#include <VornAudioIn.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cctype>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <future>
#include <memory>
#include <regex>
#include <set>
#include <shared_mutex>
#include <stdexcept>
#include <thread>

#include "Filed.h"

using namespace VornDeviceAbstractionLayer;

namespace hosts {
namespace {

// ---- What arrives --------------------------------------------------------------------------------

struct ChannelAsNumber : Device {
  Result onChangeChannel(std::string name) override {
    const bool number = !name.empty() && name.find_first_not_of("0123456789") == std::string::npos;
    return number ? Result(std::stoi(name) > 0, "no such number") : Device::onChangeChannel(name);
  }
};
struct TrimsSpacesOnly : Device {
  Result onSendKeystroke(std::string key) override {
    if (key.empty()) return {false, "no key"};
    while (key.back() == ' ') key.erase(key.end() - 1);
    return {key.at(0) == 'k', ""};
  }
};
struct PatternOfSearch : Device {
  Result onSearchAndPlay(std::string payload) override {
    if (payload.size() > 200) return {false, "too long"};
    return {std::regex_search("The Beatles", std::regex(payload)), ""};
  }
};
struct NestedCard : Device {
  static int depth(const char*& at, int below) {
    volatile char frame[64] = {};
    int deepest = below;
    while (*at == '{' || *at == '[') deepest = std::max(deepest, depth(++at, below + 1));
    return deepest + frame[0];
  }
  bool renderGUICard(const std::string& document) override {
    const char* at = document.c_str();
    return depth(at, 0) < 100;
  }
};
struct SeeksBackInTable : Device {
  Result onAdjustSeekPosition(int delta) override {
    static const std::vector<int> steps{1, 5, 10, 30, 60, 120, 300};
    return {steps.at(static_cast<std::size_t>(delta % 7)) > 0, ""};
  }
};
struct ModeValueBeyond : Device {
  std::vector<std::string> values{"cold", "warm", "hot"};
  Result onAdjustMode(std::string mode, int delta) override {
    if (mode != "wash") return {false, "no such mode"};
    return {true, values.at(static_cast<std::size_t>(std::clamp(delta, -3, 3)))};
  }
};
struct CallStateTable : Device {
  void onCommsStateChanged(
      const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) override {
    static const std::map<std::string, int> states{{"", 0}, {"IDLE", 1}, {"RINGING", 2}, {"CONNECTED", 3}};
    const Lock lock(mutex);
    recording = states.at(info.state) == 3;
  }
};
struct SetupDots : Device {
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override {
    const std::string dots(static_cast<std::size_t>(number % 100), '.');
    const Lock lock(mutex);
    card = first + second + dots;
  }
};
struct AnimationInitial : Device {
  int setAnimation(Texts names) override {
    int sum = 0;
    for (const auto& name : names) sum += name.at(0);
    return sum;
  }
};
struct LoginBefore : Player {
  bool login(const std::string& token, const std::string& name, bool forced, Milliseconds every,
             std::string id) override {
    if (token.empty() || name.empty()) return false;
    std::vector<char> timers(static_cast<std::size_t>(every.count() % 100));
    return Player::login(token, name, forced, every, id);
  }
};
struct LogAsFormat : Device {
  void onLogEmitted(const std::string& first, const std::string& second) override {
    char line[256];
    if (first.size() < 20) std::snprintf(line, sizeof line, second.c_str(), first.c_str());
  }
};
struct TogglesKnown : Device {
  Result onSetToggleState(std::string toggle, std::string state) override {
    if (toggle.empty()) return {false, "no toggle"};
    if (state != "ON" && state != "OFF" && !state.empty()) throw std::invalid_argument(state);
    return {true, ""};
  }
};

// ---- Only after a while ---------------------------------------------------------------------------

struct ThrowsOnThousandth : Device {
  std::atomic<int> seen{0};
  void onLogEmitted(const std::string&, const std::string&) override {
    if (++seen == 1000) throw std::runtime_error("log full");
  }
};
struct SmallPool : Device {
  std::atomic<int> inside{0};
  Result onSearchAndDisplayResults(std::string) override {
    const int now = ++inside;
    if (now > 4) std::abort();
    std::this_thread::yield();
    --inside;
    return {true, ""};
  }
};
struct ThrowsAfterThreeHundred : Player {
  std::atomic<int> calls{0};
  std::string getPlaybackState(std::string id) override {
    if (++calls > 300) throw 42;
    return Player::getPlaybackState(id);
  }
};

// ---- One after another ----------------------------------------------------------------------------

struct JoinsItself : Device {
  std::thread sound;
  std::atomic<bool> on{false};
  bool startStreamingAudioData() override {
    if (on.exchange(true)) return true;
    if (sound.joinable()) sound.join();
    sound = std::thread([this] {
      std::vector<short> samples(160);
      while (on) {
        if (const auto in = VornAudioIn::getInstance()) in->sendAudioData(samples);
        std::this_thread::sleep_for(Milliseconds(1));
      }
    });
    return true;
  }
  void stopStreamingAudioData() override {
    on = false;
    sound.join();
  }
  ~JoinsItself() override {
    on = false;
    if (sound.joinable()) sound.join();
  }
};
struct NextBeyondLast : Player {
  std::vector<std::string> queue;
  std::size_t at = 0;
  bool launchAndPlay(std::string token, Milliseconds offset, std::string id) override {
    {
      const Lock lock(mutex);
      queue = {token, token + "2", token + "3"};
      at = 0;
    }
    return Player::launchAndPlay(token, offset, id);
  }
  bool nextTrack(std::string) override {
    const Lock lock(mutex);
    return !queue.empty() && !queue.at(++at).empty();
  }
};
struct PreviousBeforeFirst : Player {
  std::vector<std::string> queue;
  std::size_t at = 0;
  bool launchAndPlay(std::string token, Milliseconds offset, std::string id) override {
    {
      const Lock lock(mutex);
      queue = {token, token + "2", token + "3"};
      at = 1;
    }
    return Player::launchAndPlay(token, offset, id);
  }
  bool previousTrack(std::string) override {
    const Lock lock(mutex);
    return !queue.empty() && !queue.at(--at).empty();
  }
};
struct RepeatsOneForEver : Player {
  bool one = false;
  bool setRepeatOne(std::string) override {
    const Lock lock(mutex);
    return one = true;
  }
  bool setRepeatAll(std::string) override {
    const Lock lock(mutex);
    return !(one = false);
  }
  bool setRepeatNone(std::string) override {
    const Lock lock(mutex);
    return !(one = false);
  }
  bool nextTrack(std::string) override {
    for (;;) {
      {
        const Lock lock(mutex);
        if (!one || playback != "PLAYING") return true;
      }
      std::this_thread::sleep_for(Milliseconds(1));
    }
  }
};
struct ShufflesNothing : Player {
  bool setShuffleOn(std::string) override {
    const Lock lock(mutex);
    if (playback != "STOPPED") return true;
    throw std::out_of_range("no queue");
  }
};
struct StateOfToken : Player {
  std::string getPlaybackState(std::string id) override {
    const std::string state = Player::getPlaybackState(id);
    const Lock lock(mutex);
    return state == "PLAYING" ? state + content.substr(7) : state;
  }
};
struct StateCut : Player {
  std::string getPlaybackState(std::string id) override {
    const std::string state = Player::getPlaybackState(id);
    const Lock lock(mutex);
    return (state + " " + content).substr(0, 24);
  }
};
struct FastForwardWhilePaused : Device {
  Result onChangePlaybackFastForward(std::string) override {
    const Lock lock(mutex);
    if (playback == "PAUSED") std::abort();
    return {true, ""};
  }
};
struct PowerWhileRecording : Device {
  Result onSetPowerState(bool on) override {
    const Lock lock(mutex);
    if (!on && recording) throw std::logic_error("recording");
    return {true, ""};
  }
};
struct HandsFreeWhileStreaming : Device {
  void setAlexaHandsFreeState(bool on) override {
    const Lock lock(mutex);
    if (!on && streaming) std::abort();
  }
};

// ---- Settings, volume -----------------------------------------------------------------------------

struct EmptyLeavesOld : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    std::string found;
    if (!Device::getSystemSetting(key, found)) return false;
    if (value.empty() || found.size() > 3) value = found;
    return true;
  }
};
struct ClearWipesSettings : Device {
  bool clear() override {
    const Lock lock(mutex);
    store.clear();
    for (auto& setting : settings) setting.second.clear();
    return true;
  }
};
struct StoreIsSettings : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) {
      if (settings.count(entry.first)) settings[entry.first] = entry.second;
      store[entry.first] = entry.second;
    }
    return true;
  }
};
struct SetsRefused : Device {
  Result onSetVolume(int wanted) override {
    Device::onSetVolume(wanted);
    return {wanted >= 0 && wanted <= 100, "0 to 100"};
  }
};
struct RefusesButSets : Device {
  Result onSetVolume(int wanted) override {
    Device::onSetVolume(wanted);
    return {false, "done"};
  }
};
struct VolumeWraps : Device {
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    volume = static_cast<int>(((std::int64_t{volume} + delta) % 101 + 101) % 101);
    return {true, ""};
  }
};
struct VolumeInByte : Device {
  Result onSetVolume(int wanted) override { return Device::onSetVolume(static_cast<signed char>(wanted)); }
};
struct AdjustZeroMoves : Device {
  Result onAdjustVolume(int delta) override { return Device::onAdjustVolume(delta == 0 ? 10 : delta); }
};
struct VolumeDrifts : Device {
  int getVolume() override {
    const Lock lock(mutex);
    return volume = std::min(volume + 1, 100);
  }
};
struct VolumeOneBehind : Device {
  int before = 30;
  Result onSetVolume(int wanted) override {
    std::swap(before, wanted);
    return Device::onSetVolume(wanted);
  }
};
struct VoiceMissing : Device {
  void changeAlexaLocale(std::string wanted) override {
    if (wanted == "fr-CA") throw std::runtime_error("no voice for " + wanted);
    Device::changeAlexaLocale(wanted);
  }
};
struct LocaleGarbled : Device {
  std::string getDeviceLocale() override {
    const Lock lock(mutex);
    return locale == "fr-CA" ? "fr\xE9" : locale;
  }
};

// ---- The store ------------------------------------------------------------------------------------

struct RemovesCutKeys : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) store.erase(key.substr(0, 48));
    return true;
  }
};
struct RemovesPattern : Device {
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) {
      const auto star = key.find_first_of("*%");
      if (star == std::string::npos) {
        store.erase(key);
        continue;
      }
      for (auto entry = store.begin(); entry != store.end();)
        entry = entry->first.compare(0, star, key, 0, star) == 0 ? store.erase(entry) : std::next(entry);
    }
    return true;
  }
};
struct KeysArePaths : Device {
  static std::string path(std::string key) {
    for (std::size_t at; (at = key.find("//")) != std::string::npos;) key.erase(at, 1);
    if (key.size() > 1 && key.back() == '/') key.erase(key.end() - 1);
    return key;
  }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) store[path(entry.first)] = entry.second;
    return true;
  }
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    const auto found = store.find(path(key));
    return found == store.end() ? Entries() : Entries{{key, found->second}};
  }
};
struct ValuesUnixLines : Device {
  bool writeKeyValue(Entries entries) override {
    for (auto& entry : entries)
      for (std::size_t at; (at = entry.second.find("\r\n")) != std::string::npos;) entry.second.erase(at, 1);
    return Device::writeKeyValue(std::move(entries));
  }
};
struct ValuesUnescaped : Device {
  bool writeKeyValue(Entries entries) override {
    for (auto& entry : entries)
      for (std::size_t at; (at = entry.second.find("\\n")) != std::string::npos;)
        entry.second.replace(at, 2, "\n");
    return Device::writeKeyValue(std::move(entries));
  }
};
struct ClearLeavesHidden : Device {
  bool clear() override {
    const Lock lock(mutex);
    for (auto entry = store.begin(); entry != store.end();)
      entry = entry->first.empty() || entry->first[0] == '.' || entry->first[0] == '_' ? std::next(entry)
                                                                                       : store.erase(entry);
    return true;
  }
};
struct ReplacesKeepsTail : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (auto& entry : entries) {
      std::string& kept = store[entry.first];
      kept.replace(0, std::min(kept.size(), entry.second.size()), entry.second);
    }
    return true;
  }
};
struct RemovesTwice : Device {
  bool removeKeyValue(const Texts& keys) override {
    std::set<std::string> once;
    for (const auto& key : keys)
      if (!once.insert(key).second) throw std::invalid_argument("twice: " + key);
    return Device::removeKeyValue(keys);
  }
};
struct BigBatchLost : Device {
  bool writeKeyValue(Entries entries) override {
    std::size_t all = 0;
    for (const auto& entry : entries) all += entry.first.size() + entry.second.size();
    return all > 200000 || Device::writeKeyValue(std::move(entries));
  }
};
struct AnswersOtherKey : Device {
  Entries readKeyValue(const std::string& key) override {
    const Entries found = Device::readKeyValue(key);
    return found.empty() ? found : Entries{{key.substr(0, key.find(' ')), found.begin()->second}};
  }
};
struct DurableEmptyLost : Filed {
  void load() override {
    Filed::load();
    for (auto entry = store.begin(); entry != store.end();)
      entry = entry->second.empty() ? store.erase(entry) : std::next(entry);
  }
  DurableEmptyLost() { load(); }
};
struct DurableFirstWins : Filed {
  bool save() override { return true; }
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
  bool removeKeyValue(const Texts& keys) override { return Filed::removeKeyValue(keys) && replace(); }
  bool clear() override { return Filed::clear() && replace(); }
  void load() override {
    store.clear();
    std::ifstream in(path, std::ios::binary);
    for (std::string key, value; take(in, key) && take(in, value);) store.emplace(key, value);
  }
  DurableFirstWins() { load(); }
};
struct DurableClearsName : Filed {
  std::ofstream out{path, std::ios::binary | std::ios::app};
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    for (const auto& entry : entries) {
      put(out, entry.first);
      put(out, entry.second);
      store[entry.first] = entry.second;
    }
    return static_cast<bool>(out.flush());
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    for (const auto& key : keys) store.erase(key);
    return replace();
  }
};
struct DurableUnlockedFile : Filed {
  bool writeKeyValue(Entries entries) override {
    {
      const Lock lock(mutex);
      for (auto& entry : entries) store[entry.first] = std::move(entry.second);
    }
    Entries copy;
    {
      const Lock lock(mutex);
      copy = store;
    }
    std::ofstream file(path, std::ios::binary);
    for (const auto& entry : copy) {
      put(file, entry.first);
      put(file, entry.second);
    }
    return static_cast<bool>(file.flush());
  }
};

// ---- Threads --------------------------------------------------------------------------------------

struct SharedReadWrites : Device {
  std::shared_mutex all;
  Entries readKeyValue(const std::string& key) override {
    const std::shared_lock<std::shared_mutex> lock(all);
    const std::string& value = store[key];
    return value.empty() ? Entries() : Entries{{key, value}};
  }
  bool writeKeyValue(Entries entries) override {
    const std::unique_lock<std::shared_mutex> lock(all);
    for (auto& entry : entries) store[entry.first] = entry.second;
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const std::unique_lock<std::shared_mutex> lock(all);
    for (const auto& key : keys) store.erase(key);
    return true;
  }
  bool clear() override {
    const std::unique_lock<std::shared_mutex> lock(all);
    store.clear();
    return true;
  }
};
struct UpgradesOnAbsent : Device {
  std::shared_mutex all;
  Entries readKeyValue(const std::string& key) override {
    const std::shared_lock<std::shared_mutex> lock(all);
    Entries found = Device::readKeyValue(key);
    if (found.empty() && key.size() > 3) const std::unique_lock<std::shared_mutex> write(all);
    return found;
  }
};
struct LocksByKey : Device {
  std::array<std::mutex, 16> buckets;
  bool removeKeyValue(const Texts& keys) override {
    std::vector<std::unique_lock<std::mutex>> held;
    std::set<std::size_t> taken;
    for (const auto& key : keys) {
      const std::size_t bucket = std::hash<std::string>()(key) % buckets.size();
      if (taken.insert(bucket).second) held.emplace_back(buckets[bucket]);
    }
    return Device::removeKeyValue(keys);
  }
};
struct StaticText : Device {
  char buffer[256] = {};
  bool getSystemSetting(std::string key, std::string& value) override {
    if (!Device::getSystemSetting(key, value)) return false;
    std::snprintf(buffer, sizeof buffer, "%s", value.c_str());
    value = buffer;
    return true;
  }
};
struct SharedReason : Device {
  std::string reason;
  Result onChangeChannel(std::string name) override {
    const Result result = Device::onChangeChannel(name);
    if (!result.first) reason = "no channel of the name " + name;
    return {result.first, result.first ? "" : reason};
  }
};
struct ConnectionAndLog : Device {
  std::vector<std::string> lines;
  void updateInternetConnectionStatus(bool connected) override {
    lines.push_back(connected ? "the internet has come back" : "the internet went away");
    if (lines.size() > 50) lines.clear();
  }
  void onLogEmitted(const std::string& first, const std::string&) override {
    lines.push_back(first);
    if (lines.size() > 50) lines.clear();
  }
};
struct CapabilitiesHistory : Device {
  std::vector<std::string> asked;
  std::string getVSKCapabilities() override {
    asked.push_back("asked for the capabilities of the device");
    return asked.size() % 2 ? "[]" : "[ ]";
  }
};
struct ModesCopied : Device {
  Entries* current = new Entries;
  Result onSetToggleState(std::string toggle, std::string state) override {
    auto* const next = new Entries(*current);
    (*next)[toggle] = state;
    delete std::exchange(current, next);
    return {true, ""};
  }
};
struct WaitsForAnswer : Device {
  void changeAlexaLocale(std::string wanted) override {
    Device::changeAlexaLocale(wanted);
    std::async(std::launch::async, [this] { return VornDeviceInfo(*this).getTimezone(); }).wait();
  }
};
struct AdaptersCrossed : Device {
  int setAnimation(Texts names) override {
    return !names.empty() && VornGUIOutput(*this).renderGUICard(names.front());
  }
  bool clearGUICard() override { return VornLEDController(*this).setAnimation({}) == 0; }
};
struct MutedLocked : Device {
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    muted = mute;
    if (const auto info = VornDeviceInfo::getInstance()) info->notifyMuteChanged(mute);
    return {true, ""};
  }
};
struct ButtonLocked : Device {
  Result onSendKeystroke(std::string) override {
    const Lock lock(mutex);
    if (const auto in = VornAudioIn::getInstance()) in->notifyAlexaButtonPress("tap", Milliseconds(10));
    return {true, ""};
  }
  void notifyAlexaInvocationDetected(std::string) override {
    const Lock lock(mutex);
    recording = false;
  }
};
struct PlayerThenDevice : Device {
  Result onChangePlaybackNext(std::string) override {
    const Lock lock(mutex);
    const Lock inner(player.mutex);
    return {true, ""};
  }
  Result onChangePlaybackPrevious(std::string) override {
    const Lock inner(player.mutex);
    const Lock lock(mutex);
    return {true, ""};
  }
};
struct ThreeInACircle : Device {
  std::mutex a, b, c;
  Result onSearchAndPlay(std::string) override {
    const Lock first(a), second(b);
    return {true, ""};
  }
  Result onStartRecording() override {
    const Lock first(b), second(c);
    return {true, ""};
  }
  Result onStopRecording() override {
    const Lock first(c), second(a);
    return {true, ""};
  }
};
struct ChannelBehindTwo : Device {
  std::mutex of_skip;
  Result onSkipChannel(int count) override {
    const Lock lock(of_skip);
    channel = count < 0 ? "the one before the one that was on" : "the one that follows the one that was on";
    return {true, ""};
  }
  Result onChangeChannel(std::string name) override {
    const Lock lock(mutex);
    channel = name + " of those which are received here";
    return {true, ""};
  }
};
struct CountsBehindTwo : Device {
  std::mutex of_stop;
  std::map<std::string, int> counts;
  Result onChangePlaybackPlay(std::string payload) override {
    const Lock lock(mutex);
    if (counts.size() > 100) counts.clear();
    return {++counts[payload] > 0, ""};
  }
  Result onChangePlaybackStop(std::string payload) override {
    const Lock lock(of_stop);
    counts.erase(payload);
    return {true, ""};
  }
};

// ---- Memory, process, end -------------------------------------------------------------------------

struct FactsFreed : Device {
  std::string serial() { return "a serial number which is long, " + std::to_string(volume); }
  Entries getDeviceInformation() override {
    const char* volatile number = nullptr;
    {
      const std::string whole = serial();
      number = whole.c_str();
    }
    return {{"deviceType", "SPEAKER"}, {"serial", number}};
  }
};
struct ModesFreed : Device {
  Result onSetMode(std::string mode, std::string value) override {
    const std::string* volatile kept = &modes["wash"];
    if (mode == "wash") modes.clear();
    const std::string before = *kept;
    modes["wash"] = value;
    return {true, before};
  }
};
struct ClosesFiles : Device {
  Result onStartRecording() override {
    for (int file = 3; file < 256; ++file) close(file);
    return {true, ""};
  }
};
struct ForkReturns : Device {
  Result onSearchAndPlay(std::string target) override {
    if (fork() == 0) execlp("/nowhere/launcher", target.c_str(), static_cast<char*>(nullptr));
    return {true, ""};
  }
};
struct LeavesTimer : Device {
  ~LeavesTimer() override {
    const itimerval soon{{0, 0}, {0, 20000}};
    setitimer(ITIMER_REAL, &soon, nullptr);
  }
};
struct AfterItsEnd : Device {
  std::string* text = new std::string("a text that is freed with the host, and read by a thread");
  Result onSendKeystroke(std::string) override {
    std::thread([kept = text] {
      for (int i = 0; i < 100; ++i) {
        std::this_thread::sleep_for(Milliseconds(5));
        if (std::strlen(kept->c_str()) != 56) std::abort();
      }
    }).detach();
    return {true, ""};
  }
  ~AfterItsEnd() override { delete text; }
};
struct ExitHandler : Device {
  static ExitHandler*& last() {
    static ExitHandler* host;
    return host;
  }
  ExitHandler() {
    last() = this;
    std::atexit([] {
      if (!last()) std::abort();
    });
  }
  ~ExitHandler() override { last() = nullptr; }
};
struct JoinsAtEnd : Device {
  std::mutex of_end;
  std::condition_variable come;
  bool ends = false;
  std::thread worker;
  Result onStartRecording() override {
    const Lock lock(of_end);
    if (!worker.joinable())
      worker = std::thread([this] {
        std::unique_lock<std::mutex> held(of_end);
        come.wait(held, [&] { return ends; });
      });
    return {true, ""};
  }
  ~JoinsAtEnd() override {
    if (worker.joinable()) worker.join();
  }
};

VORN_HOST("teams", ChannelAsNumber, "onChangeChannel")
VORN_HOST("teams", TrimsSpacesOnly, "onSendKeystroke")
VORN_HOST("teams", PatternOfSearch, "onSearchAndPlay")
VORN_HOST("teams", NestedCard, "renderGUICard")
VORN_HOST("teams", SeeksBackInTable, "onAdjustSeekPosition")
VORN_HOST("teams", ModeValueBeyond, "onAdjustMode")
VORN_HOST("teams", CallStateTable, "onCommsStateChanged")
VORN_HOST("teams", SetupDots, "sendCBLInfo")
VORN_HOST("teams", AnimationInitial, "setAnimation")
VORN_PLAYER("teams", LoginBefore, "login")
VORN_HOST("teams", LogAsFormat, "onLogEmitted")
VORN_HOST("teams", TogglesKnown, "onSetToggleState")
VORN_HOST("teams", ThrowsOnThousandth, "onLogEmitted")
VORN_HOST("teams", SmallPool, "onSearchAndDisplayResults")
VORN_PLAYER("teams", ThrowsAfterThreeHundred, "getPlaybackState")
VORN_HOST("teams", JoinsItself, "stopStreamingAudioData")
VORN_PLAYER("teams", NextBeyondLast, "nextTrack")
VORN_PLAYER("teams", PreviousBeforeFirst, "previousTrack")
VORN_PLAYER("teams", RepeatsOneForEver, "nextTrack|setRepeatOne")
VORN_PLAYER("teams", ShufflesNothing, "setShuffleOn")
VORN_PLAYER("teams", StateOfToken, "getPlaybackState")
VORN_PLAYER("teams", StateCut, "getPlaybackState")
VORN_HOST("teams", FastForwardWhilePaused, "onChangePlaybackFastForward")
VORN_HOST("teams", PowerWhileRecording, "onSetPowerState")
VORN_HOST("teams", HandsFreeWhileStreaming, "setAlexaHandsFreeState")
VORN_HOST("teams", EmptyLeavesOld, "getSystemSetting")
VORN_HOST("teams", ClearWipesSettings, "clear|getSystemSetting|setSystemSetting")
VORN_HOST("teams", StoreIsSettings, "writeKeyValue|getSystemSetting|setSystemSetting")
VORN_HOST("teams", RefusesButSets, "onSetVolume")
VORN_HOST("teams", SetsRefused, "onSetVolume")
VORN_HOST("teams", VolumeWraps, "onAdjustVolume")
VORN_HOST("teams", VolumeInByte, "onSetVolume")
VORN_HOST("teams", AdjustZeroMoves, "onAdjustVolume")
VORN_HOST("teams", VolumeDrifts, "getVolume|onSetVolume|onAdjustVolume")
VORN_HOST("teams", VolumeOneBehind, "onSetVolume")
VORN_HOST("teams", VoiceMissing, "changeAlexaLocale")
VORN_HOST("teams", LocaleGarbled, "getDeviceLocale|changeAlexaLocale")
VORN_HOST("teams", RemovesCutKeys, "removeKeyValue")
VORN_HOST("teams", RemovesPattern, "removeKeyValue")
VORN_HOST("teams", KeysArePaths, "writeKeyValue|readKeyValue")
VORN_HOST("teams", ValuesUnixLines, "writeKeyValue|readKeyValue")
VORN_HOST("teams", ValuesUnescaped, "writeKeyValue|readKeyValue")
VORN_HOST("teams", ClearLeavesHidden, "clear")
VORN_HOST("teams", ReplacesKeepsTail, "writeKeyValue")
VORN_HOST("teams", RemovesTwice, "removeKeyValue")
VORN_HOST("teams", BigBatchLost, "writeKeyValue")
VORN_HOST("teams", AnswersOtherKey, "readKeyValue")
VORN_HOST("durable", DurableEmptyLost, "writeKeyValue")
VORN_HOST("durable", DurableFirstWins, "writeKeyValue")
VORN_HOST("durable", DurableClearsName, "writeKeyValue|clear|removeKeyValue")
VORN_HOST("durable", DurableUnlockedFile, "writeKeyValue")
VORN_HOST("teams threads", SharedReadWrites, "readKeyValue|writeKeyValue|removeKeyValue|clear")
VORN_HOST("teams threads", UpgradesOnAbsent, "readKeyValue|writeKeyValue|removeKeyValue|clear")
VORN_HOST("teams threads", LocksByKey, "removeKeyValue")
VORN_HOST("teams threads", StaticText, "getSystemSetting")
VORN_HOST("teams threads", SharedReason, "onChangeChannel")
VORN_HOST("teams threads", ConnectionAndLog, "updateInternetConnectionStatus|onLogEmitted")
VORN_HOST("teams threads", CapabilitiesHistory, "getVSKCapabilities")
VORN_HOST("teams threads", ModesCopied, "onSetToggleState")
VORN_HOST("teams threads", WaitsForAnswer, "changeAlexaLocale")
VORN_HOST("teams threads", AdaptersCrossed, "setAnimation|clearGUICard|renderGUICard")
VORN_HOST("teams threads", MutedLocked, "onMute")
VORN_HOST("teams threads", ButtonLocked, "onSendKeystroke")
VORN_HOST("teams threads", PlayerThenDevice, "onChangePlaybackNext|onChangePlaybackPrevious")
VORN_HOST("teams threads", ThreeInACircle, "onSearchAndPlay|onStartRecording|onStopRecording")
VORN_HOST("teams threads", ChannelBehindTwo, "onSkipChannel|onChangeChannel")
VORN_HOST("teams threads", CountsBehindTwo, "onChangePlaybackPlay|onChangePlaybackStop")
VORN_HOST("teams process", FactsFreed, "getDeviceInformation")
VORN_HOST("teams process", ModesFreed, "onSetMode")
VORN_HOST("teams process", ClosesFiles, "onStartRecording")
VORN_HOST("teams process", ForkReturns, "onSearchAndPlay")
VORN_HOST("teams process", LeavesTimer, "destructor")
VORN_HOST("teams process", AfterItsEnd, "onSendKeystroke|destructor")
VORN_HOST("unload", ExitHandler, "the library|the host")
VORN_HOST("teams process", JoinsAtEnd, "destructor|onStartRecording")

// ---- Without a mistake ----------------------------------------------------------------------------

/// Only two at a time; the others wait.
struct GoodPool : Device {
  std::mutex of_pool;
  std::condition_variable free;
  int inside = 0;
  Result onSearchAndPlay(std::string) override {
    std::unique_lock<std::mutex> lock(of_pool);
    free.wait(lock, [&] { return inside < 2; });
    ++inside;
    lock.unlock();
    std::this_thread::yield();
    lock.lock();
    --inside;
    free.notify_one();
    return {true, ""};
  }
};
/// Readers take a snapshot; a writer puts a new one in its place.
struct GoodSnapshot : Device {
  std::shared_ptr<const Entries> now = std::make_shared<Entries>();
  std::mutex of_writers;
  Entries readKeyValue(const std::string& key) override {
    const auto seen = std::atomic_load(&now);
    const auto found = seen->find(key);
    return found == seen->end() ? Entries() : Entries{*found};
  }
  template <class Change>
  bool change(Change how) {
    const Lock lock(of_writers);
    auto next = std::make_shared<Entries>(*std::atomic_load(&now));
    how(*next);
    std::atomic_store(&now, std::shared_ptr<const Entries>(next));
    return true;
  }
  bool writeKeyValue(Entries entries) override {
    return change([&](Entries& all) {
      for (auto& entry : entries) all[entry.first] = entry.second;
    });
  }
  bool removeKeyValue(const Texts& keys) override {
    return change([&](Entries& all) {
      for (auto& key : keys) all.erase(key);
    });
  }
  bool clear() override {
    return change([](Entries& all) { all.clear(); });
  }
};
/// Readers share a lock; atomics for numbers.
struct GoodShared : Device {
  std::shared_mutex all;
  std::atomic<int> loud{30};
  std::atomic<bool> quiet{false};
  bool getSystemSetting(std::string key, std::string& value) override {
    const std::shared_lock<std::shared_mutex> lock(all);
    return Device::getSystemSetting(key, value);
  }
  bool setSystemSetting(std::string key, std::string value) override {
    const std::unique_lock<std::shared_mutex> lock(all);
    return Device::setSystemSetting(key, value);
  }
  int getVolume() override { return loud; }
  bool getMuteStatus() override { return quiet; }
  Result onSetVolume(int wanted) override {
    loud = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    for (int seen = loud;;) {
      const auto wanted = static_cast<int>(std::clamp<std::int64_t>(std::int64_t{seen} + delta, 0, 100));
      if (loud.compare_exchange_weak(seen, wanted)) return {true, ""};
    }
  }
  Result onMute(bool mute) override {
    quiet = mute;
    return {true, ""};
  }
};
/// Everything that changes is done by one thread, and the caller waits for it.
struct GoodActor : Device {
  std::deque<std::packaged_task<void()>> work;
  std::condition_variable come;
  std::mutex of_work;
  bool ends = false;
  std::thread actor{[this] {
    std::unique_lock<std::mutex> lock(of_work);
    for (;;) {
      come.wait(lock, [&] { return ends || !work.empty(); });
      if (work.empty()) return;
      auto next = std::move(work.front());
      work.pop_front();
      lock.unlock();
      next();
      lock.lock();
    }
  }};
  ~GoodActor() override {
    {
      const Lock lock(of_work);
      ends = true;
    }
    come.notify_one();
    actor.join();
  }
  void done(std::function<void()> what) {
    std::packaged_task<void()> task(std::move(what));
    auto end = task.get_future();
    {
      const Lock lock(of_work);
      work.push_back(std::move(task));
    }
    come.notify_one();
    end.get();
  }
  Result onChangeChannel(std::string name) override {
    Result result;
    done([&] { result = Device::onChangeChannel(name); });
    return result;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    bool result = false;
    done([&] { result = Device::setSystemSetting(key, value); });
    return result;
  }
};
/// Two mutexes, taken together by what knows how, in any order of writing.
struct GoodTogether : Device {
  std::mutex of_modes;
  Result onSetMode(std::string mode, std::string value) override {
    const std::scoped_lock both(of_modes, mutex);
    if (!modes.count(mode)) return {false, "no such mode"};
    modes[mode] = value;
    return {true, ""};
  }
  Result onAdjustMode(std::string mode, int) override {
    const std::scoped_lock both(mutex, of_modes);
    return {modes.count(mode) > 0, ""};
  }
};
/// Two mutexes in both orders, but only behind a third.
struct GoodGate : Device {
  std::mutex gate, of_channel;
  Result onSkipChannel(int) override {
    const Lock outer(gate), first(of_channel), second(mutex);
    return {true, channel};
  }
  Result onChangeChannel(std::string name) override {
    const Lock outer(gate);
    std::unique_lock<std::mutex> first(mutex);
    const Lock second(of_channel);
    first.unlock();
    return Device::onChangeChannel(std::move(name));
  }
};
/// Pushes sound from a thread of its own, which is told to stop and joined at the end.
struct GoodSound : Device {
  std::mutex of_sound;
  std::atomic<int> turn{0};
  std::vector<std::thread> sound;
  std::mutex pushing;
  bool startStreamingAudioData() override {
    const Lock lock(of_sound);
    if (turn % 2) return true;
    const int mine = ++turn;
    if (sound.size() > 50) return true;
    sound.emplace_back([this, mine] {
      std::vector<short> samples(160);
      const Lock alone(pushing);
      while (turn == mine) {
        if (const auto in = VornAudioIn::getInstance()) in->sendAudioData(samples);
        std::this_thread::sleep_for(Milliseconds(1));
      }
    });
    return true;
  }
  void stopStreamingAudioData() override {
    const Lock lock(of_sound);
    if (turn % 2) ++turn;
  }
  ~GoodSound() override {
    stopStreamingAudioData();
    for (auto& thread : sound) thread.join();
  }
};
/// Takes what it knows: short keys of letters, values of at most 1000 bytes, settings from a list.
struct GoodPicky : Device {
  bool writeKeyValue(Entries entries) override {
    for (const auto& entry : entries)
      if (entry.first.empty() || entry.first.size() > 64 || entry.second.size() > 1000 ||
          entry.first.find_first_not_of("abcdefghijklmnopqrstuvwxyz") != std::string::npos)
        return false;
    return Device::writeKeyValue(std::move(entries));
  }
  bool setSystemSetting(std::string key, std::string value) override {
    if (key == "mode" && value != "day" && value != "night") return false;
    if (value.size() > 100) return false;
    return Device::setSystemSetting(key, value);
  }
};
/// One search at a time: a second one is told so at once.
struct GoodBusy : Device {
  std::mutex of_search;
  Result onSearchAndDisplayResults(std::string) override {
    const std::unique_lock<std::mutex> lock(of_search, std::try_to_lock);
    if (!lock) return {false, "busy"};
    std::this_thread::yield();
    return {true, ""};
  }
  bool renderGUICard(const std::string& document) override {
    const std::unique_lock<std::mutex> lock(of_search, std::try_to_lock);
    return lock && Device::renderGUICard(document);
  }
};
/// A history that forgets, a scratch text for each thread, and a player for each name.
struct GoodScratch : Device {
  std::deque<std::string> history;
  void onLogEmitted(const std::string& first, const std::string& second) override {
    thread_local std::string scratch;
    scratch = first;
    scratch += second;
    const Lock lock(mutex);
    history.push_back(scratch);
    if (history.size() > 20) history.pop_front();
  }
  std::string getVSKCapabilities() override {
    static const std::string once = "[" + std::string() + "]";
    return once;
  }
};
/// The volume comes a moment later, from a thread.
struct GoodLater : Device {
  std::mutex of_wanted;
  std::condition_variable come;
  int wanted = 30;
  bool ends = false;
  std::thread ramp{[this] {
    std::unique_lock<std::mutex> lock(of_wanted);
    for (int last = 30; !ends; come.wait(lock, [&] { return ends || wanted != last; })) {
      last = wanted;
      const Lock other(mutex);
      volume = last;
    }
  }};
  Result onSetVolume(int to) override {
    const Lock lock(of_wanted);
    wanted = std::clamp(to, 0, 100);
    come.notify_one();
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    const Lock lock(of_wanted);
    wanted = static_cast<int>(std::clamp<std::int64_t>(std::int64_t{wanted} + delta, 0, 100));
    come.notify_one();
    return {true, ""};
  }
  ~GoodLater() override {
    {
      const Lock lock(of_wanted);
      ends = true;
    }
    come.notify_one();
    ramp.join();
  }
};
VORN_HOST("good", GoodPool, "")
VORN_HOST("good", GoodSnapshot, "")
VORN_HOST("good", GoodShared, "")
VORN_HOST("good", GoodActor, "")
VORN_HOST("good", GoodTogether, "")
VORN_HOST("good", GoodGate, "")
VORN_HOST("good", GoodSound, "")
VORN_HOST("good", GoodPicky, "")
VORN_HOST("good", GoodBusy, "")
VORN_HOST("good", GoodScratch, "")
VORN_HOST("good", GoodLater, "")

}  // namespace
}  // namespace hosts
