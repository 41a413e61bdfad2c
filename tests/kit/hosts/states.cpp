// Mistakes that show in a state, at a word, at the first call or at the thirtieth, or when the assistant side asks back.
#include <DeviceAbstractionLayer/AuthorizationStates.h>
#include <DeviceAbstractionLayer/DeviceInfoConstants.h>
#include <VornAudioIn.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornLEDController.h>
#include <VornOOBE.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <future>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Filed.h"

using namespace VornDeviceAbstractionLayer;

namespace hosts {
namespace {

// ---- Destroyed while something is on its way -----------------------------------------------------

/// A thread for as long as a call lasts; it ends with stop(), and with nothing else.
struct Ticking {
  std::thread thread;
  std::atomic<bool> on{false};
  void start() {
    if (on.exchange(true)) return;
    thread = std::thread([this] {
      while (on) std::this_thread::sleep_for(Milliseconds(5));
    });
  }
  void stop() {
    if (on.exchange(false)) thread.join();
  }
};
struct TicksWithCard : Device {
  Ticking ticking;
  bool renderGUICard(const std::string&) override {
    const Lock lock(mutex);
    ticking.start();
    return true;
  }
  bool clearGUICard() override {
    const Lock lock(mutex);
    ticking.stop();
    return true;
  }
};
struct WaitsForSilence : Device {
  ~WaitsForSilence() override {
    while (playback == "PLAYING") std::this_thread::sleep_for(Milliseconds(5));
  }
};
struct TokenAtEnd : Player {
  std::string token;
  bool login(const std::string& given, const std::string&, bool, Milliseconds, std::string) override {
    const Lock lock(mutex);
    token = given;
    return true;
  }
  bool logout(std::string) override {
    const Lock lock(mutex);
    token.clear();
    return true;
  }
  ~TokenAtEnd() override {
    if (!token.empty()) std::abort();
  }
};
VORN_HOST("ends in any state", TicksWithCard, "destructor")
VORN_HOST("ends in any state", WaitsForSilence, "destructor")
VORN_PLAYER("ends in any state", TokenAtEnd, "destructor")

// ---- Words of the headers ------------------------------------------------------------------------

struct NoPlayerInPreview : Device {
  std::atomic<bool> preview{false};
  void alexaAuthStatusChanged(std::string status) override {
    preview = status == DeviceAbstractionLayer::PREVIEW_MODE_AUTHORIZED_STATE;
  }
  VornEMPAdapterIF* getEMPAdapter() override { return preview ? nullptr : &player; }
};
struct TerminatesApp : Device {
  Result onSendKeystroke(std::string key) override {
    if (key == DeviceAbstractionLayer::TERMINATE_APP_KEYEVENT_CODE) std::exit(0);
    return {true, ""};
  }
};
struct YearAsNumber : Device {
  std::string getConfigData(std::string key) override {
    const std::string year;
    return key == DeviceAbstractionLayer::MANUFACTURER_YEAR_CODE ? std::to_string(std::stoi(year)) : "";
  }
};
VORN_HOST("words", NoPlayerInPreview, "getEMPAdapter")
VORN_HOST("words", TerminatesApp, "onSendKeystroke")
VORN_HOST("words", YearAsNumber, "getConfigData")

// ---- Sound ---------------------------------------------------------------------------------------

/// Pushes from a thread for each start.
struct Sounding : Device {
  std::vector<std::thread> threads;
  std::atomic<bool> on{false};
  void push() const {
    std::vector<short> samples(160);
    while (on) {
      if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(samples);
      std::this_thread::sleep_for(Milliseconds(2));
    }
  }
  void begin() {
    on = true;
    threads.emplace_back([this] { push(); });
  }
  void end() {
    on = false;
    for (std::thread& thread : threads) thread.join();
    threads.clear();
  }
  ~Sounding() override { end(); }
};
struct ThreadForEachStart : Sounding {
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (threads.size() < 3) begin();
    return true;
  }
  void stopStreamingAudioData() override { on = false; }
};
struct JoinsFromInside : Sounding {
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (threads.empty()) begin();
    return true;
  }
  void stopStreamingAudioData() override {
    const Lock lock(mutex);
    end();
  }
};
struct SoundsOnce : Sounding {
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (threads.empty()) begin();
    return true;
  }
  void stopStreamingAudioData() override { on = false; }
};
struct NeverSilent : Sounding {
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (threads.empty()) begin();
    return true;
  }
  void stopStreamingAudioData() override {}
};
struct CountsStarts : Sounding {
  int starts = 0;
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    ++starts;
    if (threads.empty()) begin();
    return true;
  }
  void stopStreamingAudioData() override {
    const Lock lock(mutex);
    if (--starts == 0) on = false;
  }
};
struct SoundsRefused : Sounding {
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (threads.empty()) begin();
    return false;
  }
  void stopStreamingAudioData() override { on = false; }
};
struct SoundsUnasked : Sounding {
  SoundsUnasked() { begin(); }
};
/// One thread, which looks every now and then at what it is to do.
struct Pushing : Sounding {
  std::atomic<bool> over{false};
  virtual bool wanted() { return on; }
  void push() {
    std::vector<short> samples(160);
    for (; !over; std::this_thread::sleep_for(Milliseconds(4))) {
      if (const auto audio = VornAudioIn::getInstance(); audio && wanted()) deliver(*audio, samples);
    }
  }
  virtual void deliver(VornAudioIn& audio, std::vector<short>& samples) { audio.sendAudioData(samples); }
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (threads.empty()) threads.emplace_back([this] { push(); });
    on = true;
    return true;
  }
  void stopStreamingAudioData() override { on = false; }
  void finish() {
    over = true;
    end();
  }
};
struct StopKeptForLater : Pushing {
  std::atomic<bool> stopping{false};
  bool wanted() override {
    if (stopping.exchange(false)) on = false;
    return on;
  }
  void stopStreamingAudioData() override { stopping = true; }
  ~StopKeptForLater() override { finish(); }
};
struct StartsAfterAll : Pushing {
  std::atomic<bool> starting{false};
  bool wanted() override {
    if (starting.exchange(false)) on = true;
    return on;
  }
  bool startStreamingAudioData() override {
    Pushing::startStreamingAudioData();
    on = false;
    return starting = true;
  }
  ~StartsAfterAll() override { finish(); }
};
struct ThreadForEachBuffer : Pushing {
  void deliver(VornAudioIn& audio, std::vector<short>& samples) override {
    std::thread([&] { audio.sendAudioData(samples); }).join();
  }
  ~ThreadForEachBuffer() override { finish(); }
};
struct TakesTurns : Pushing {
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    on = true;
    while (threads.size() < 6) {
      threads.emplace_back([this, mine = static_cast<int>(threads.size())] {
        std::vector<short> samples(160);
        for (; !over; std::this_thread::sleep_for(Milliseconds(2))) {
          if (on && next % 6 == mine) {
            if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(samples);
            ++next;
          }
        }
      });
    }
    return true;
  }
  std::atomic<int> next{0};
  ~TakesTurns() override { finish(); }
};
struct LooksEveryHundred : Pushing {
  void deliver(VornAudioIn& audio, std::vector<short>& samples) override {
    for (int i = 0; i < 100 && !over; ++i) {
      audio.sendAudioData(samples);
      std::this_thread::sleep_for(Milliseconds(10));
    }
  }
  ~LooksEveryHundred() override { finish(); }
};
struct SoundsForFirst : Pushing {
  bool startStreamingAudioData() override {
    static std::atomic<bool> begun{false};
    if (begun.exchange(true)) return on = true;
    return Pushing::startStreamingAudioData();
  }
  ~SoundsForFirst() override { finish(); }
};
/// The thread of the start before sees only that sound is wanted, again.
struct OldThreadGoesOn : Sounding {
  bool startStreamingAudioData() override {
    const Lock lock(mutex);
    if (on) return true;
    on = true;
    threads.emplace_back([this] {
      std::vector<short> samples(160);
      for (; on; std::this_thread::sleep_for(Milliseconds(15))) {
        if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(samples);
      }
    });
    return true;
  }
  void stopStreamingAudioData() override { on = false; }
};
VORN_HOST("sound", OldThreadGoesOn, "startStreamingAudioData|stopStreamingAudioData")
/// To save time the first buffer comes at once.
struct FirstBufferFromInside : Pushing {
  bool startStreamingAudioData() override {
    std::vector<short> samples(160);
    if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(samples);
    return Pushing::startStreamingAudioData();
  }
  ~FirstBufferFromInside() override { finish(); }
};
struct SoundsForHandsFree : Pushing {
  void setAlexaHandsFreeState(bool state) override {
    if (state) Pushing::startStreamingAudioData();
  }
  ~SoundsForHandsFree() override { finish(); }
};
struct SoundsForFocus : Pushing {
  bool requestAudioFocus() override { return Pushing::startStreamingAudioData(); }
  ~SoundsForFocus() override { finish(); }
};
struct SoundsForKey : Pushing {
  Result onSendKeystroke(std::string) override { return {Pushing::startStreamingAudioData(), ""}; }
  ~SoundsForKey() override { finish(); }
};
/// Has a file for each start, in place of the microphone.
template <int kBuffers>
struct Ending : Pushing {
  std::atomic<int> left{0};
  bool wanted() override { return on && left > 0; }
  void deliver(VornAudioIn& audio, std::vector<short>& samples) override {
    --left;
    audio.sendAudioData(samples);
  }
  bool startStreamingAudioData() override {
    left = kBuffers;
    return Pushing::startStreamingAudioData();
  }
  ~Ending() override { finish(); }
};
using SixBuffersAStart = Ending<6>;
using FiftyBuffersAStart = Ending<50>;
/// Its thread is nobody's.
struct SoundsForever : Device {
  std::shared_ptr<std::atomic<bool>> on = std::make_shared<std::atomic<bool>>(false);
  bool startStreamingAudioData() override {
    if (on->exchange(true)) return true;
    std::thread([on = on] {
      std::vector<short> samples(160);
      for (; *on; std::this_thread::sleep_for(Milliseconds(10))) {
        if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(samples);
      }
    }).detach();
    return true;
  }
  void stopStreamingAudioData() override { *on = false; }
};
VORN_HOST("sound", FirstBufferFromInside, "startStreamingAudioData")
VORN_HOST("sound", SoundsForHandsFree, "startStreamingAudioData|setAlexaHandsFreeState")
VORN_HOST("sound", SoundsForFocus, "startStreamingAudioData|requestAudioFocus")
VORN_HOST("sound", SoundsForKey, "startStreamingAudioData|onSendKeystroke")
VORN_HOST("sound", SixBuffersAStart, "startStreamingAudioData")
VORN_HOST("sound", FiftyBuffersAStart, "startStreamingAudioData")
VORN_HOST("sound", SoundsForever, "startStreamingAudioData")

/// Gives the microphone away with what it takes for the same wish.
struct SoundEndsWithHandsFree : Pushing {
  void setAlexaHandsFreeState(bool state) override {
    if (!state) Pushing::stopStreamingAudioData();
  }
  ~SoundEndsWithHandsFree() override { finish(); }
};
struct SoundEndsWithFocus : Pushing {
  bool releaseAudioFocus() override {
    Pushing::stopStreamingAudioData();
    return true;
  }
  ~SoundEndsWithFocus() override { finish(); }
};
struct SoundEndsWithRecording : Pushing {
  Result onStopRecording() override {
    Pushing::stopStreamingAudioData();
    return {true, ""};
  }
  ~SoundEndsWithRecording() override { finish(); }
};
struct SoundEndsWithMute : Pushing {
  Result onMute(bool wanted) override {
    if (wanted) Pushing::stopStreamingAudioData();
    return Device::onMute(wanted);
  }
  ~SoundEndsWithMute() override { finish(); }
};
VORN_HOST("sound", SoundEndsWithHandsFree, "startStreamingAudioData|setAlexaHandsFreeState")
VORN_HOST("sound", SoundEndsWithFocus, "startStreamingAudioData|releaseAudioFocus")
VORN_HOST("sound", SoundEndsWithRecording, "startStreamingAudioData|onStopRecording")
VORN_HOST("sound", SoundEndsWithMute, "startStreamingAudioData|onMute")

/// Empties its buffer at a stop.
struct GoodDrain : Pushing {
  std::atomic<int> left{0};
  bool wanted() override {
    if (on) left = 20;
    return on || left-- > 0;
  }
  ~GoodDrain() override { finish(); }
};
VORN_HOST("sound", StopKeptForLater, "startStreamingAudioData|stopStreamingAudioData")
VORN_HOST("sound", StartsAfterAll, "startStreamingAudioData|stopStreamingAudioData")
VORN_HOST("sound", ThreadForEachBuffer, "startStreamingAudioData")
VORN_HOST("sound", TakesTurns, "startStreamingAudioData")
VORN_HOST("sound", LooksEveryHundred, "stopStreamingAudioData")
VORN_HOST("sound", SoundsForFirst, "startStreamingAudioData")
VORN_HOST("good", GoodDrain, "")
VORN_HOST("sound", SoundsUnasked, "startStreamingAudioData")
VORN_HOST("sound", CountsStarts, "stopStreamingAudioData|startStreamingAudioData")
VORN_HOST("sound", SoundsRefused, "startStreamingAudioData")
VORN_HOST("sound", ThreadForEachStart, "startStreamingAudioData")
VORN_HOST("sound", JoinsFromInside, "stopStreamingAudioData")
VORN_HOST("sound", SoundsOnce, "startStreamingAudioData")
VORN_HOST("sound", NeverSilent, "stopStreamingAudioData")

// ---- Asked back ----------------------------------------------------------------------------------

struct TellsStateLocked : Device {
  void alexaAuthStatusChanged(std::string status) override {
    const Lock lock(mutex);
    if (status == "UNAUTHORIZED") VornOOBE(*this).notifyOOBEInitiated();
  }
};
struct TellsNameLocked : Device {
  Result onLaunchTarget(std::string) override {
    const Lock lock(mutex);
    VornDeviceCapabilities(*this).notifyFriendlyNameChange(settings["name"]);
    return {true, ""};
  }
};
struct AsksLightsWhenDark : Device {
  int setAnimation(Texts names) override { return names.empty() && VornLEDController::getInstance() ? 1 : 0; }
};
VORN_HOST("asked back", TellsStateLocked, "alexaAuthStatusChanged|asked-back")
VORN_HOST("asked back", TellsNameLocked, "onLaunchTarget|asked-back")
VORN_HOST("asked back", AsksLightsWhenDark, "setAnimation")

// ---- The first call, and the thirtieth -----------------------------------------------------------

struct TableWhenNeeded : Device {
  std::atomic<bool> made{false};
  std::map<std::string, std::string> keys;
  Result onSendKeystroke(std::string key) override {
    if (!made.exchange(true)) {
      for (int i = 0; i < 30; ++i) keys["KEY " + std::to_string(i)] = "code of key " + std::to_string(i);
    }
    return {true, keys.count(key) ? keys[key] : ""};
  }
};
struct PlanWhenNeeded : Device {
  std::unique_ptr<std::set<std::string>> plan;
  Result onLaunchTarget(std::string target) override {
    if (!plan) {
      plan = std::make_unique<std::set<std::string>>();
      for (const char* const name : {"radio", "alarm", "timer", "news"}) plan->insert(name);
    }
    return {plan->count(target) > 0, ""};
  }
};
struct CountsByName : Device {
  std::map<std::string, int> counts;
  Result onSetToggleState(std::string toggle, std::string) override { return {++counts[toggle] > 0, ""}; }
};
struct LogsOverflow : Device {
  std::mutex of_logs;
  Texts logs;
  void onLogEmitted(const std::string& first, const std::string&) override {
    const Lock lock(of_logs);
    logs.push_back(first);
    if (logs.size() < 30) return;
    const Lock other(mutex);
    store["last"] = logs.back();
    logs.clear();
  }
  bool clear() override {
    const Lock lock(mutex);
    const Lock other(of_logs);
    store.clear();
    logs.clear();
    return true;
  }
};
struct CardsByTheDozen : Device {
  std::vector<const std::string*> cards;
  std::size_t length = 0;
  bool renderGUICard(const std::string& document) override {
    const Lock lock(mutex);
    cards.push_back(&document);
    if (cards.size() < 12) return true;
    for (const std::string* const each : cards) length += each->size();
    cards.clear();
    return true;
  }
};
struct BrightnessOfTwo : Device {
  std::mutex of_power, of_range;
  int brightness = 40;
  Result onSetPowerState(bool on) override {
    const Lock lock(of_power);
    if (!on) brightness = 0;
    return {true, ""};
  }
  Result onAdjustSeekPosition(int delta) override {
    const Lock lock(of_range);
    brightness = delta > brightness ? 100 : brightness;
    return {true, ""};
  }
};
struct WordsOfSearch : Device {
  Result onSearchAndDisplayResults(std::string payload) override {
    int words = 0;
    for (char* word = std::strtok(&payload[0], " ,"); word; word = std::strtok(nullptr, " ,")) ++words;
    return {words > 0, ""};
  }
};
VORN_HOST("first call", TableWhenNeeded, "onSendKeystroke")
VORN_HOST("first call", PlanWhenNeeded, "onLaunchTarget")
VORN_HOST("grows by name", CountsByName, "onSetToggleState")
VORN_HOST("every so often", LogsOverflow, "onLogEmitted|clear")
VORN_HOST("every so often", CardsByTheDozen, "renderGUICard")
VORN_HOST("a number of two", BrightnessOfTwo, "onSetPowerState|onAdjustSeekPosition")
VORN_HOST("static place", WordsOfSearch, "onSearchAndDisplayResults")

struct PresetsBetweenCalls : Device {
  std::atomic<int> level{30};
  int getVolume() override { return level; }
  Result onSetVolume(int wanted) override {
    level = std::clamp(wanted, 0, 100);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    const std::int64_t sum = std::int64_t{level.load()} + delta;
    level.store(static_cast<int>(std::clamp<std::int64_t>(sum, 0, 100)));
    return {true, ""};
  }
};
struct DeafWhenMuted : Device {
  Result onSetVolume(int wanted) override {
    if (getMuteStatus()) return {true, ""};
    return Device::onSetVolume(wanted);
  }
};
struct LanguageOnly : Device {
  void changeAlexaLocale(std::string wanted) override {
    const Lock lock(mutex);
    locale = wanted.substr(0, 2);
  }
};
struct YesToAll : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    Device::setSystemSetting(key, value);
    return true;
  }
};
struct KnowsAll : Device {
  bool getSystemSetting(std::string key, std::string& value) override {
    Device::getSystemSetting(key, value);
    return true;
  }
};
struct NamesInMarkup : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    for (std::size_t at = 0; (at = value.find('<', at)) != std::string::npos;) value.replace(at, 1, "&lt;");
    return Device::setSystemSetting(key, value);
  }
};
VORN_HOST("volume", PresetsBetweenCalls, "onAdjustVolume")
VORN_HOST("volume", DeafWhenMuted, "onSetVolume")
VORN_HOST("settings", LanguageOnly, "changeAlexaLocale")
VORN_HOST("settings", YesToAll, "setSystemSetting")
VORN_HOST("settings", KnowsAll, "getSystemSetting")
VORN_HOST("settings", NamesInMarkup, "setSystemSetting")

// ---- The store -----------------------------------------------------------------------------------

struct FullWithoutAWord : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    const bool full = store.size() > 500;
    for (auto& entry : entries) {
      if (!full || store.count(entry.first)) store[entry.first] = std::move(entry.second);
    }
    return true;
  }
};
/// Refuses what its lines cannot hold in a key, and forgets that values have lines too.
struct LinesOfValues : Filed {
  void load() override {
    std::ifstream in(path, std::ios::binary);
    for (std::string key, value; std::getline(in, key) && std::getline(in, value);) store[key] = value;
  }
  bool save() override {
    std::ofstream out(path + "~", std::ios::binary);
    for (const auto& entry : store) out << entry.first << "\n" << entry.second << "\n";
    return static_cast<bool>(out.flush()) && std::rename((path + "~").c_str(), path.c_str()) == 0;
  }
  LinesOfValues() {
    store.clear();
    load();
  }
  bool writeKeyValue(Entries entries) override {
    for (const auto& entry : entries) {
      if (entry.first.find('\n') != std::string::npos) return false;
    }
    return Filed::writeKeyValue(std::move(entries));
  }
};
struct MarkOfUse : Filed {
  const std::string mark = folder() + "/in-use";
  bool mine = false;
  bool open() override {
    const Lock lock(mutex);
    if (mine) return true;
    const int file = ::open(mark.c_str(), O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) return false;
    close(file);
    return mine = true;
  }
  ~MarkOfUse() override {
    if (mine) unlink(mark.c_str());
  }
};
VORN_HOST("store", FullWithoutAWord, "writeKeyValue|readKeyValue")
VORN_HOST("durable", LinesOfValues, "writeKeyValue|readKeyValue")
VORN_HOST("durable", MarkOfUse, "open")

struct ReturnsTwice : Device {
  Result onLaunchTarget(std::string target) override {
    if (fork() == 0) execl("/nowhere/app", "app", target.c_str(), static_cast<char*>(nullptr));
    return {true, ""};
  }
};
VORN_HOST("process", ReturnsTwice, "onLaunchTarget")

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

void pushWhile(const std::atomic<bool>& on) {
  std::vector<short> buffer(160);
  while (on) {
    if (const auto audio = VornAudioIn::getInstance()) audio->sendAudioData(buffer);
    std::this_thread::sleep_for(Milliseconds(10));
  }
}

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
    pusher = std::thread([this] { pushWhile(on); });
    return true;
  }
  void stopStreamingAudioData() override { on = false; }
};

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
    pushers.emplace_back([this] { pushWhile(on); });
    return true;
  }
  void stopStreamingAudioData() override { on = false; }
};

struct FreshPlayerEachTime : Device {
  std::unique_ptr<Player> current;
  VornEMPAdapterIF* getEMPAdapter() override {
    const Lock lock(mutex);
    current = std::make_unique<Player>();
    return current.get();
  }
};
VORN_HOST("memory", FreshPlayerEachTime,
          "getEMPAdapter|getPlaybackState|pause|login|launchAndPlay|resume|stop")

struct UnmutesUnderLock : Device {
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    if (muted && delta > 0) onMute(false);
    volume = std::clamp(volume + std::clamp(delta, -100, 100), 0, 100);
    return {true, ""};
  }
};

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

struct AsksAdapterWhenOffline : Device {
  bool online = false;
  void updateInternetConnectionStatus(bool connected) override {
    const bool lost = online && !connected;
    online = connected;
    if (!lost) return;
    if (const auto info = VornDeviceInfo::getInstance()) info->getNetworkConnectionStatus();
  }
};

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

struct NoPlayerInCall : Device {
  bool calling = false;
  void onCommsStateChanged(
      const ::DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) override {
    const Lock lock(mutex);
    calling = !info.state.empty();
  }
  VornEMPAdapterIF* getEMPAdapter() override {
    const Lock lock(mutex);
    return calling ? nullptr : &player;
  }
};

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

struct PromisesTwice : Device {
  std::promise<void> initialized;
  void notifyMainAppInitialized() override { initialized.set_value(); }
};

struct NextPastQueue : Device {
  std::size_t at = 0;
  Texts queue = Texts(40, "track");
  Result onChangePlaybackNext(std::string) override {
    const Lock lock(mutex);
    return {true, queue.at(at++)};
  }
};

struct MuteDebounced : Device {
  std::chrono::steady_clock::time_point last{};
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    const auto now = std::chrono::steady_clock::now();
    if (now - last > Milliseconds(1000)) muted = mute;
    last = now;
    return {true, ""};
  }
};

struct AlarmAfterRefusal : Device {
  bool onInputChange(const std::string& name) override {
    ::alarm(1);
    if (!Device::onInputChange(name)) return false;
    ::alarm(0);
    return true;
  }
};

struct RepeatsAreAppended : Device {
  int setAnimation(Texts names) override {
    std::deque<std::string> queue(names.begin(), names.end());
    for (std::set<std::string> seen; !queue.empty(); queue.pop_front())
      if (!seen.insert(queue.front()).second) queue.push_back(queue.front());
    return 0;
  }
};

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

VORN_HOST("ends in any state", OverlayTimer, "destructor")
VORN_HOST("sound", PusherPerStart, "startStreamingAudioData")
VORN_HOST("sound", OldPusherGoesOn, "startStreamingAudioData|stopStreamingAudioData")
VORN_HOST("re-entry", UnmutesUnderLock, "onAdjustVolume")
VORN_PLAYER("re-entry", RepeatTurnsShuffleOff, "setRepeatOne")
VORN_PLAYER("hang", StateAfterBuffering, "getPlaybackState")
VORN_HOST("re-entry", AsksAdapterWhenOffline, "updateInternetConnectionStatus")
VORN_HOST("hang", PlayWaitsForAnswer, "onChangePlaybackPlay")
VORN_HOST("player", NoPlayerInCall, "getEMPAdapter|onCommsStateChanged")
VORN_HOST("player", NoPlayerWithoutAccount, "getEMPAdapter|alexaAuthStatusChanged")
VORN_PLAYER("player", PausesTheLast, "pause|getPlaybackState")
VORN_HOST("sequence", PromisesTwice, "notifyMainAppInitialized")
VORN_HOST("nth call", NextPastQueue, "onChangePlaybackNext")
VORN_HOST("volume", MuteDebounced, "onMute")
VORN_HOST("ends process", AlarmAfterRefusal, "onInputChange")
VORN_HOST("arguments", RepeatsAreAppended, "setAnimation")
VORN_HOST("arguments", ModeBeforeFirst, "onAdjustMode")

}  // namespace
}  // namespace hosts
