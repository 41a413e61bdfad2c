// Hosts without a mistake, which differ where the headers leave it to the host.

#include <VornAppMessaging.h>
#include <VornDeviceInfo.h>
#include <VornLEDController.h>
#include <vorn_testing/MemoryHost.h>

#include <atomic>
#include <clocale>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <deque>
#include <shared_mutex>
#include <thread>

#include "Filed.h"

using namespace VornDeviceAbstractionLayer;

namespace hosts {
namespace {

using GoodDevice = Device;
using GoodMemory = vorn_testing::MemoryHost;
using GoodNull = vorn_testing::NullHost;

/// Ten steps: a volume between two goes to the lower one, a small adjustment is one step.
struct GoodSteps : Device {
  Result onSetVolume(int wanted) override {
    return Device::onSetVolume(std::clamp(wanted, 0, 100) / 10 * 10);
  }
  Result onAdjustVolume(int delta) override {
    const int step = delta == 0 ? 0 : std::max(1, std::abs(std::clamp(delta, -100, 100)) / 10);
    return Device::onAdjustVolume((delta < 0 ? -10 : 10) * step);
  }
};
/// A range of 0 to 10, and what is beyond is refused.
struct GoodRange : Device {
  GoodRange() { volume = 3; }
  Result onSetVolume(int wanted) override {
    return wanted < 0 || wanted > 10 ? Result(false, "0 to 10") : Device::onSetVolume(wanted);
  }
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    const std::int64_t sum = std::int64_t{volume} + delta;
    if (sum < 0 || sum > 10) return {false, "0 to 10"};
    volume = static_cast<int>(sum);
    return {true, ""};
  }
};
/// Decibels below full.
struct GoodDecibels : Device {
  GoodDecibels() { volume = -20; }
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    volume = std::clamp(wanted, -60, 0);
    return {true, ""};
  }
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    volume = static_cast<int>(std::clamp<std::int64_t>(std::int64_t{volume} + delta, -60, 0));
    return {true, ""};
  }
};
/// Every answer takes its time.
struct GoodSlow : Device {
  static void wait() { std::this_thread::sleep_for(Milliseconds(2)); }
  int getVolume() override { return wait(), Device::getVolume(); }
  std::string getTimezone() override { return wait(), Device::getTimezone(); }
  bool setSystemSetting(std::string key, std::string value) override {
    return wait(), Device::setSystemSetting(key, value);
  }
  bool writeKeyValue(Entries entries) override { return wait(), Device::writeKeyValue(std::move(entries)); }
  Entries readKeyValue(const std::string& key) override { return wait(), Device::readKeyValue(key); }
  Result onSearchAndPlay(std::string) override { return wait(), Result(true, ""); }
  VornEMPAdapterIF* getEMPAdapter() override { return wait(), &player; }
};
/// Slow while it holds the one mutex.
struct GoodSlowLocked : Device {
  Result onChangeChannel(std::string name) override {
    {
      const Lock lock(mutex);
      std::this_thread::sleep_for(Milliseconds(3));
    }
    return Device::onChangeChannel(std::move(name));
  }
  bool requestAudioFocus() override {
    const Lock lock(mutex);
    std::this_thread::sleep_for(Milliseconds(3));
    return true;
  }
};
/// A mutex for each field.
struct GoodFields : Device {
  std::mutex of_store, of_settings, of_channel;
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(of_store);
    return store.count(key) ? Entries{*store.find(key)} : Entries();
  }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(of_store);
    for (auto& entry : entries) store[entry.first] = entry.second;
    return true;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(of_store);
    for (auto& key : keys) store.erase(key);
    return true;
  }
  bool clear() override {
    const Lock lock(of_store);
    store.clear();
    return true;
  }
  bool getSystemSetting(std::string key, std::string& value) override {
    const Lock lock(of_settings);
    if (!settings.count(key)) return false;
    value = settings[key];
    return true;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(of_settings);
    if (!settings.count(key)) return false;
    settings[key] = value;
    return true;
  }
};
/// Hands work to a thread of its own, which ends with the host, and tells the assistant side from there.
struct GoodWorker : Device {
  std::deque<std::function<void()>> work;
  std::condition_variable come;
  std::mutex of_work;
  bool ends = false;
  std::thread worker{[this] { run(); }};

  ~GoodWorker() override {
    {
      const Lock lock(of_work);
      ends = true;
    }
    come.notify_all();
    worker.join();
  }
  void run() {
    std::unique_lock<std::mutex> lock(of_work);
    for (;;) {
      come.wait(lock, [&] { return ends || !work.empty(); });
      if (ends) return;
      const auto next = std::move(work.front());
      work.pop_front();
      lock.unlock();
      next();
      lock.lock();
    }
  }
  void later(std::function<void()> what) {
    const Lock lock(of_work);
    if (work.size() < 100) work.push_back(std::move(what));
    come.notify_one();
  }
  void onLogEmitted(const std::string& first, const std::string& second) override {
    later([this, text = first + second] {
      const Lock lock(mutex);
      card = text;
    });
  }
  bool renderGUICard(const std::string& document) override {
    later([this, document] { Device::renderGUICard(document); });
    return true;
  }
  Result onSetVolume(int wanted) override {
    const Result result = Device::onSetVolume(wanted);
    later([this] {
      if (const auto info = VornDeviceInfo::getInstance()) info->notifyVolumeChanged(getVolume());
    });
    return result;
  }
};
/// Tells the assistant side on the thread that called, without a mutex of its own.
struct GoodTeller : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    const bool accepted = Device::setSystemSetting(key, value);
    if (accepted) VornDeviceInfo(*this).notifySystemSettingChanged(key, value);
    return accepted;
  }
  void sendAppMessage(std::string first, std::string second, std::string third) override {
    VornAppMessaging(*this).SendMessageToxApp(first, second, third);
  }
  int setAnimation(Texts) override { return VornDeviceInfo(*this).getVolume(); }
};
/// What is absent is an empty value.
struct GoodEmpty : Device {
  Entries readKeyValue(const std::string& key) override {
    const Entries found = Device::readKeyValue(key);
    return found.empty() ? Entries{{key, ""}} : found;
  }
};
/// A key selects every entry that begins with it.
struct GoodBeginnings : Device {
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    Entries found;
    for (auto entry = store.lower_bound(key);
         entry != store.end() && entry->first.compare(0, key.size(), key) == 0; ++entry)
      found.insert(*entry);
    return found;
  }
};
/// Refuses everything by its answer.
struct GoodRefusing : vorn_testing::NullHost {
  static Result no() { return {false, "not on this device"}; }
  Result onChangeChannel(std::string) override { return no(); }
  Result onSkipChannel(int) override { return no(); }
  Result onSendKeystroke(std::string) override { return no(); }
  Result onChangePlaybackPlay(std::string) override { return no(); }
  Result onChangePlaybackPause(std::string) override { return no(); }
  Result onChangePlaybackStop(std::string) override { return no(); }
  Result onSetMode(std::string, std::string) override { return no(); }
  Result onAdjustMode(std::string, int) override { return no(); }
  Result onSetVolume(int) override { return no(); }
  Result onAdjustVolume(int) override { return no(); }
  Result onMute(bool) override { return no(); }
};
/// Prints, and reads numbers as people in its country write them.
struct GoodPrinting : Device {
  GoodPrinting() {
    std::setlocale(LC_ALL, "de_DE.UTF-8");
    std::puts("<testcase name=\"mine\">");
  }
  int getVolume() override {
    std::printf("volume %d\n", volume);
    return Device::getVolume();
  }
};
/// Unmutes when the volume is set, mutes at none, and remembers the last volume.
struct GoodCoupled : Device {
  Result onSetVolume(int wanted) override {
    const Result result = Device::onSetVolume(wanted);
    Device::onMute(wanted <= 0);
    return result;
  }
};
/// Nothing is shared: an answer is made of what arrives.
struct GoodStateless : vorn_testing::NullHost {
  std::string getConfigData(std::string key) override {
    return "no " + std::string(key.size() < 9 ? "short" : "long") + " key";
  }
  Result onSetVolume(int) override { return {false, "no volume"}; }
  Result onAdjustVolume(int) override { return {false, "no volume"}; }
  Result onMute(bool) override { return {false, "no volume"}; }
  VornEMPAdapterIF* getEMPAdapter() override {
    thread_local Player player;
    return &player;
  }
};
/// A store that is full at once, and says so.
struct GoodFull : Device {
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    if (store.size() + entries.size() > 3) return false;
    for (auto& entry : entries) store[entry.first] = entry.second;
    return true;
  }
};
/// Speaks with one voice: a recursive mutex, and its own operations used in others.
struct GoodRecursive : Device {
  std::recursive_mutex all;
  Result onChangePlaybackStartOver(std::string payload) override {
    const std::lock_guard<std::recursive_mutex> lock(all);
    onChangePlaybackStop(payload);
    return onChangePlaybackPlay(payload);
  }
  Result onChangePlaybackPlay(std::string payload) override {
    const std::lock_guard<std::recursive_mutex> lock(all);
    return Device::onChangePlaybackPlay(payload);
  }
};
/// What is shared has guards that are no mutexes: one that turns, and one for readers and writers. What lies side by side
/// has a mutex each.
struct GoodGuards : Device {
  std::atomic_flag turning = ATOMIC_FLAG_INIT;
  std::shared_timed_mutex reading;
  std::mutex of_first, of_second;
  std::string state = "IDLE", target = "home";
  struct {
    char first[4], second[4];
  } beside{};
  void alexaStateChanged(std::string wanted) override {
    while (turning.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
    state = wanted.substr(0, 12);
    turning.clear(std::memory_order_release);
  }
  Result onSearchAndPlay(std::string wanted) override {
    const std::unique_lock<std::shared_timed_mutex> lock(reading);
    target = std::to_string(wanted.size());
    return {true, ""};
  }
  Result onSendKeystroke(std::string) override {
    const std::shared_lock<std::shared_timed_mutex> lock(reading);
    return {true, target};
  }
  Result onChangePlaybackNext(std::string payload) override {
    const Lock lock(of_first);
    std::strncpy(beside.first, payload.c_str(), sizeof beside.first);
    return {true, ""};
  }
  Result onChangePlaybackPrevious(std::string payload) override {
    const Lock lock(of_second);
    std::strncpy(beside.second, payload.c_str(), sizeof beside.second);
    return {true, ""};
  }
};
/// A buffer of each thread's own, and a text that is made once.
struct GoodBuffers : Device {
  Result onSkipChannel(int count) override {
    thread_local char text[40];
    std::snprintf(text, sizeof text, "%d channels on", count);
    return {true, text};
  }
  std::string getVSKCapabilities() override {
    static const std::string kText = "[" + std::string(40, ' ') + "]";
    return kText;
  }
};
VORN_HOST("good", GoodGuards, "")
VORN_HOST("good", GoodBuffers, "")
/// Keeps its values in a file, for the next start.
struct GoodKeeping : Device {
  const std::string path = folder() + "/values";
  GoodKeeping() {
    std::ifstream in(path);
    in >> volume >> muted >> locale >> settings["mode"] >> settings["name"];
  }
  ~GoodKeeping() override {
    std::ofstream(path + "~") << volume << ' ' << muted << ' ' << locale << ' ' << settings["mode"] << ' '
                              << settings["name"] << '\n';
    std::rename((path + "~").c_str(), path.c_str());
  }
};
/// Searches on a thread made for it, and keeps signals away while it writes.
struct GoodSearcher : Device {
  Result onSearchAndPlay(std::string payload) override {
    std::size_t length = 0;
    std::thread([&] { length = payload.size(); }).join();
    return {true, std::to_string(length)};
  }
  Result onSendKeystroke(std::string key) override {
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const Result result = Device::onSendKeystroke(key);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return result;
  }
};
VORN_HOST("good", GoodKeeping, "")
VORN_HOST("good", GoodSearcher, "")
VORN_HOST("good", GoodDevice, "")
VORN_HOST("good", GoodMemory, "")
VORN_HOST("good", GoodNull, "")
VORN_HOST("good", GoodSteps, "")
VORN_HOST("good", GoodRange, "")
VORN_HOST("good", GoodDecibels, "")
VORN_HOST("good", GoodSlow, "")
VORN_HOST("good", GoodSlowLocked, "")
VORN_HOST("good", GoodFields, "")
VORN_HOST("good", GoodWorker, "")
VORN_HOST("good", GoodTeller, "")
VORN_HOST("good", GoodEmpty, "")
VORN_HOST("good", GoodBeginnings, "")
VORN_HOST("good", GoodRefusing, "")
VORN_HOST("good", GoodPrinting, "")
VORN_HOST("good", GoodCoupled, "")
VORN_HOST("good", GoodStateless, "")
VORN_HOST("good", GoodFull, "")
VORN_HOST("good", GoodRecursive, "")

}  // namespace
}  // namespace hosts
