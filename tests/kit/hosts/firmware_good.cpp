// Hosts without a mistake, unusual in what the interface leaves to them.
#include <VornAppMessaging.h>
#include <VornAudioIn.h>

#include <atomic>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <fstream>
#include <future>
#include <memory>
#include <shared_mutex>
#include <sstream>

#include "Filed.h"
#include "Telling.h"

namespace hosts {
namespace {

/// A key selects all keys that begin with it; one that selects none yields itself with a text of its own.
struct GoodPrefixReads : Device {
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    Entries result;
    for (auto i = store.lower_bound(key); i != store.end() && i->first.compare(0, key.size(), key) == 0; ++i)
      result.insert(*i);
    return result;
  }
  std::string getConfigData(std::string key) override { return key; }
  int setAnimation(Texts animations) override { return -static_cast<int>(animations.size()); }
};

/// Everything in values that are replaced, never changed.
struct GoodSnapshots : Device {
  std::shared_ptr<const Entries> now = std::make_shared<Entries>(),
                                 named = std::make_shared<Entries>(settings);
  static Entries of(const std::shared_ptr<const Entries>& all, const std::string& key) {
    const auto seen = std::atomic_load(&all);
    const auto found = seen->find(key);
    return found == seen->end() ? Entries() : Entries{*found};
  }
  template <class Change>
  static bool change(std::shared_ptr<const Entries>& all, const Change& how) {
    for (auto old = std::atomic_load(&all);;) {
      auto next = std::make_shared<Entries>(*old);
      how(*next);
      std::shared_ptr<const Entries> wanted = std::move(next);
      if (std::atomic_compare_exchange_strong(&all, &old, wanted)) return true;
    }
  }
  Entries readKeyValue(const std::string& key) override { return of(now, key); }
  bool writeKeyValue(Entries entries) override {
    return change(now, [&](Entries& all) {
      Entries both = entries;
      both.merge(all);
      all.swap(both);
    });
  }
  bool removeKeyValue(const Texts& keys) override {
    return change(now, [&](Entries& all) {
      for (const auto& key : keys) all.erase(key);
    });
  }
  bool clear() override {
    return change(now, [](Entries& all) { all.clear(); });
  }
  bool getSystemSetting(std::string key, std::string& value) override {
    const Entries found = of(named, key);
    if (!found.empty()) value = found.begin()->second;
    return !found.empty();
  }
  bool setSystemSetting(std::string key, std::string value) override {
    bool known = false;
    change(named, [&](Entries& all) {
      const auto found = all.find(key);
      known = found != all.end();
      if (known) found->second = value;
    });
    return known;
  }
};

/// One thread does all that changes sound, and those who ask wait for what it answers.
struct GoodStrand : Device {
  std::mutex of_jobs;
  std::condition_variable come;
  std::deque<std::packaged_task<Result()>> jobs;
  bool ended = false;
  std::thread strand{[this] {
    std::unique_lock<std::mutex> lock(of_jobs);
    for (;;) {
      come.wait(lock, [this] { return ended || !jobs.empty(); });
      if (jobs.empty()) return;
      auto job = std::move(jobs.front());
      jobs.pop_front();
      lock.unlock();
      job();
      lock.lock();
    }
  }};
  ~GoodStrand() override {
    {
      const Lock lock(of_jobs);
      ended = true;
    }
    come.notify_one();
    strand.join();
  }
  Result does(std::function<Result()> work) {
    std::packaged_task<Result()> job(std::move(work));
    auto answer = job.get_future();
    {
      const Lock lock(of_jobs);
      jobs.push_back(std::move(job));
    }
    come.notify_one();
    return answer.get();
  }
  Result onSetVolume(int wanted) override {
    return does([=] { return Device::onSetVolume(wanted); });
  }
  Result onAdjustVolume(int delta) override {
    return does([=] { return Device::onAdjustVolume(delta); });
  }
  Result onMute(bool wanted) override {
    return does([=] { return Device::onMute(wanted); });
  }
  Result onSetRangeValue(double value) override {
    return does([=] {
      return Result{std::isfinite(value), std::isfinite(value) ? "" : "not a number of this range"};
    });
  }
};

/// A journal: each batch a record with its length and sum; what is torn at the end is cut off.
struct GoodJournal : Device {
  const std::string path = folder() + "/journal";
  std::ofstream out;
  GoodJournal() {
    std::string all;
    {
      std::ifstream in(path, std::ios::binary);
      std::stringstream text;
      text << in.rdbuf();
      all = text.str();
    }
    std::size_t at = 0;
    while (at + 8 <= all.size()) {
      const std::uint32_t size = number(all, at), sum = number(all, at + 4);
      if (at + 8 + size > all.size() || sum != sumOf(all.substr(at + 8, size))) break;
      apply(all.substr(at + 8, size));
      at += 8 + size;
    }
    out.open(path + "~", std::ios::binary);
    std::string record = "c";
    out << framed(record);
    for (const auto& entry : store) out << framed("w" + text(entry.first) + text(entry.second));
    out.flush();
    std::rename((path + "~").c_str(), path.c_str());
  }
  static std::uint32_t number(const std::string& bytes, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 8U | static_cast<unsigned char>(bytes[at + i]);
    return value;
  }
  static std::string of(std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i, value >>= 8U) bytes += static_cast<char>(value & 255U);
    return bytes;
  }
  static std::uint32_t sumOf(const std::string& bytes) {
    std::uint32_t sum = 2166136261U;
    for (const char c : bytes) sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U;
    return sum;
  }
  static std::string text(const std::string& bytes) {
    return of(static_cast<std::uint32_t>(bytes.size())) + bytes;
  }
  static std::string framed(const std::string& record) {
    return of(static_cast<std::uint32_t>(record.size())) + of(sumOf(record)) + record;
  }
  void apply(const std::string& record) {
    std::size_t at = 1;
    const auto next = [&] {
      const std::uint32_t size = number(record, at);
      at += 4 + size;
      return record.substr(at - size, size);
    };
    if (record[0] == 'c') store.clear();
    while (at < record.size()) {
      const std::string key = next();
      if (record[0] == 'w')
        store[key] = next();
      else
        store.erase(key);
    }
  }
  bool does(const std::string& record) {
    const Lock lock(mutex);
    if (!(out << framed(record)).flush()) return false;
    apply(record);
    return true;
  }
  bool writeKeyValue(Entries entries) override {
    std::string record = "w";
    for (const auto& entry : entries) record += text(entry.first) + text(entry.second);
    return does(record);
  }
  bool removeKeyValue(const Texts& keys) override {
    std::string record = "r";
    for (const auto& key : keys) record += text(key);
    return does(record);
  }
  bool clear() override { return does("c"); }
};

/// Entries in sixty-four files by a sum of the key, each replaced as a whole.
struct GoodFileEach : Device {
  static std::string fileOf(const std::string& key) {
    return folder() + "/part" + std::to_string(GoodJournal::sumOf(key) % 64);
  }
  static Entries read(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    Entries entries;
    for (std::string key, value; Filed::take(in, key) && Filed::take(in, value);) entries[key] = value;
    return entries;
  }
  static bool save(const std::string& file, const Entries& entries) {
    {
      std::ofstream out(file + "~", std::ios::binary);
      for (const auto& entry : entries) {
        Filed::put(out, entry.first);
        Filed::put(out, entry.second);
      }
      if (!out.flush()) return false;
    }
    return std::rename((file + "~").c_str(), file.c_str()) == 0;
  }
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    const Entries part = read(fileOf(key));
    const auto found = part.find(key);
    return found == part.end() ? Entries() : Entries{*found};
  }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    std::map<std::string, Entries> parts;
    for (const auto& entry : entries) parts[fileOf(entry.first)].insert(entry);
    bool done = true;
    for (auto& part : parts) {
      part.second.merge(read(part.first));
      done = save(part.first, part.second) && done;
    }
    return done;
  }
  bool removeKeyValue(const Texts& keys) override {
    const Lock lock(mutex);
    std::map<std::string, Texts> parts;
    for (const auto& key : keys) parts[fileOf(key)].push_back(key);
    bool done = true;
    for (const auto& part : parts) {
      Entries entries = read(part.first);
      for (const auto& key : part.second) entries.erase(key);
      done = save(part.first, entries) && done;
    }
    return done;
  }
  bool clear() override {
    const Lock lock(mutex);
    for (int i = 0; i < 64; ++i) std::remove((folder() + "/part" + std::to_string(i)).c_str());
    return true;
  }
};

/// Locks without a mutex, held for a few instructions.
struct GoodSpins : Device {
  struct Spin {
    std::atomic_flag flag = ATOMIC_FLAG_INIT;
    void lock() {
      while (flag.test_and_set(std::memory_order_acquire)) std::this_thread::yield();
    }
    void unlock() { flag.clear(std::memory_order_release); }
  };
  Spin of_sound, of_store;
  int level = 3;
  bool quiet = false;
  int getVolume() override {
    const std::lock_guard<Spin> lock(of_sound);
    return level;
  }
  bool getMuteStatus() override {
    const std::lock_guard<Spin> lock(of_sound);
    return quiet;
  }
  Result sets(std::int64_t wanted) {
    level = static_cast<int>(std::clamp<std::int64_t>(wanted, -7, 11));
    return {true, ""};
  }
  Result onSetVolume(int wanted) override {
    const std::lock_guard<Spin> lock(of_sound);
    return sets(wanted);
  }
  Result onAdjustVolume(int delta) override {
    const std::lock_guard<Spin> lock(of_sound);
    return sets(std::int64_t{level} + delta);
  }
  Result onMute(bool wanted) override {
    const std::lock_guard<Spin> lock(of_sound);
    quiet = wanted;
    return {true, wanted ? "quiet" : "loud"};
  }
};

/// Sessions by player, of which one plays; a second user needs force; states as a text of many parts.
struct Sessions : vorn_testing::NullPlayer {
  struct Session {
    std::string user, content, state = "IDLE";
    std::int64_t position = 0;
    bool shuffle = false;
  };
  std::mutex mutex;
  std::map<std::string, Session> sessions;
  template <class Work>
  bool with(const std::string& id, const Work& work) {
    const Lock lock(mutex);
    const auto found = sessions.find(id);
    if (found == sessions.end()) return false;
    work(found->second);
    return true;
  }
  bool becomes(const std::string& id, const char* state) {
    return with(id, [state](Session& session) { session.state = session.content.empty() ? "IDLE" : state; });
  }
  bool login(const std::string&, const std::string& user, bool force, Milliseconds, std::string id) override {
    const Lock lock(mutex);
    const auto found = sessions.find(id);
    if (found != sessions.end() && found->second.user != user && !force) return false;
    if (found == sessions.end() && sessions.size() >= 16) return false;
    sessions[id] = Session();
    sessions[id].user = user;
    return true;
  }
  bool logout(std::string id) override {
    const Lock lock(mutex);
    return sessions.erase(id) == 1;
  }
  bool launchAndPlay(std::string token, Milliseconds offset, std::string id) override {
    return with(id, [&](Session& session) {
      session.content = token;
      session.state = "PLAYING";
      session.position = std::max<std::int64_t>(offset.count(), 0);
    });
  }
  bool resume(std::string id) override { return becomes(id, "PLAYING"); }
  bool pause(std::string id) override { return becomes(id, "PAUSED"); }
  bool stop(std::string id) override { return becomes(id, "STOPPED"); }
  bool setShuffleOn(std::string id) override {
    return with(id, [](Session& session) { session.shuffle = true; });
  }
  bool setShuffleOff(std::string id) override {
    return with(id, [](Session& session) { session.shuffle = false; });
  }
  bool skipForward(Milliseconds offset, std::string id) override {
    return with(id, [&](Session& session) {
      const auto delta = std::clamp<std::int64_t>(offset.count(), -(1LL << 40), 1LL << 40);
      session.position = std::clamp<std::int64_t>(session.position + delta, 0, 1LL << 40);
    });
  }
  std::string getPlaybackState(std::string id) override {
    const Lock lock(mutex);
    const auto found = sessions.find(id);
    if (found == sessions.end()) return "{\"players\":" + std::to_string(sessions.size()) + "}";
    return "{\"state\":\"" + found->second.state +
           "\",\"position\":" + std::to_string(found->second.position) + "}";
  }
};
struct GoodSessions : Telling {
  Sessions deck;
  VornEMPAdapterIF* getEMPAdapter() override { return &deck; }
};

/// Says more than it must, in the words that it was asked with; does less than it could.
struct GoodEchoing : Device {
  bool focus = false;
  bool requestAudioFocus() override {
    const Lock lock(mutex);
    if (focus) return false;
    return focus = true;
  }
  bool releaseAudioFocus() override {
    const Lock lock(mutex);
    const bool had = focus;
    focus = false;
    return had;
  }
  Result onLaunchTarget(std::string target) override { return {false, "«" + target + "» n’est pas là"}; }
  Result onSendKeystroke(std::string key) override { return {true, key}; }
  Result onSkipChannel(int count) override { return {count != 0, std::to_string(count)}; }
  Result onAdjustMode(std::string mode, int delta) override {
    const Lock lock(mutex);
    const auto found = modes.find(mode);
    if (found == modes.end()) return {false, mode + "?"};
    if (delta % 2 != 0) found->second = found->second == "cold" ? "hot" : "cold";
    return {true, found->second};
  }
  Result onSetRangeValue(double value) override {
    std::ostringstream said;
    said << value;
    return {!std::isnan(value), said.str()};
  }
  std::string getVSKCapabilities() override {
    const Lock lock(mutex);
    return "[{\"locale\":\"" + locale + "\"}]";
  }
  void onLogEmitted(const std::string& first, const std::string& second) override {
    const Lock lock(mutex);
    if (records.size() == 100) records.pop_front();
    records.push_back(first + "\t" + second);
  }
  std::deque<std::string> records;
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override {
    first.clear();  // they are ours to write to
    second += "!";
    number = -number / 2;
  }
};

VORN_HOST("good", GoodPrefixReads, "")
VORN_HOST("good", GoodSnapshots, "")
VORN_HOST("good", GoodStrand, "")
VORN_HOST("good", GoodJournal, "")
VORN_HOST("good", GoodFileEach, "")
VORN_HOST("good", GoodSpins, "")
VORN_HOST("good", GoodSessions, "")
VORN_HOST("good", GoodEchoing, "")

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

struct GoodBoundedHistory : Device {
  std::deque<std::string> history;
  void remember(std::string text) {
    const Lock lock(mutex);
    history.push_back(std::move(text));
    if (history.size() > 200) history.pop_front();
  }
  void alexaStateChanged(std::string state) override { remember(std::move(state)); }
  void onLogEmitted(const std::string& first, const std::string& second) override {
    remember(first + second);
  }
  void dialogUXStateChanged(std::string state) override { remember(std::move(state)); }
};

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
      if (const auto audio = VornDeviceAbstractionLayer::VornAudioIn::getInstance())
        audio->sendAudioData(buffer);
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

struct GoodRefusesControls : Device {
  static bool plain(const std::string& text) {
    return std::none_of(text.begin(), text.end(), [](unsigned char c) { return c < ' '; });
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

/// Answers a message from inside, by a pointer that it fetched when all began.
struct GoodAnswersInside : Device {
  std::weak_ptr<VornDeviceAbstractionLayer::VornAppMessaging> app;
  void notifyMainAppInitialized() override {
    const auto found = VornDeviceAbstractionLayer::VornAppMessaging::getInstance();
    const Lock lock(mutex);
    app = found;
  }
  void sendAppMessage(std::string first, std::string second, std::string) override {
    std::shared_ptr<VornDeviceAbstractionLayer::VornAppMessaging> to;
    {
      const Lock lock(mutex);
      to = app.lock();
    }
    if (to) to->SendMessageToxApp(first, second, "arrived");
  }
};

/// Keeps whatever somebody sets, and knows nothing of what it means.
struct GoodAnySetting : Device {
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    settings[key] = std::move(value);
    return true;
  }
  Entries getDeviceInformation() override { return {{"friendlyName", "Speaker"}}; }
};

VORN_HOST("good", GoodAnswersInside, "")
VORN_HOST("good", GoodAnySetting, "")
VORN_HOST("good", GoodSharedLock, "")
VORN_HOST("good", GoodBoundedHistory, "")
VORN_HOST("good", GoodStoreRefusesMuch, "")
VORN_HOST("good", GoodSharedDriver, "")
VORN_HOST("good", GoodOnePusherAnew, "")
VORN_HOST("good", GoodRefusesControls, "")

}  // namespace
}  // namespace hosts
