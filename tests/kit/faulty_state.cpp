// Faults in what a host remembers: player, store, settings, volume, life.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <thread>

#include "faulty.h"

using namespace faulty_hosts;

namespace {

// The player.

struct NoPlayer : MemoryHost {
  VornEMPAdapterIF* getEMPAdapter() override { return nullptr; }
};
struct NoPlayerElsewhere : MemoryHost {
  std::thread::id made = std::this_thread::get_id();
  VornEMPAdapterIF* getEMPAdapter() override {
    return made == std::this_thread::get_id() ? &player : nullptr;
  }
};
struct NoPlayerAfterLogout : MemoryHost {
  struct Leaving : MemoryPlayer {
    bool left = false;
    bool logout(std::string) override { return left = true; }
  } leaving;
  VornEMPAdapterIF* getEMPAdapter() override { return leaving.left ? nullptr : &leaving; }
};

// The store.

struct ReadsNothing : MemoryHost {
  Entries readKeyValue(const std::string&) override { return {}; }
};
struct ReadsOnce : MemoryHost {
  Entries readKeyValue(const std::string& key) override {
    const Entries found = MemoryHost::readKeyValue(key);
    removeKeyValue({key});
    return found;
  }
};
struct ReadsAnything : MemoryHost {
  Entries readKeyValue(const std::string& key) override {
    const Entries found = MemoryHost::readKeyValue(key);
    return found.empty() ? Entries{{key, ""}} : found;
  }
};
struct ReadsOnOneThread : MemoryHost {
  std::thread::id made = std::this_thread::get_id();
  Entries readKeyValue(const std::string& key) override {
    return made == std::this_thread::get_id() ? MemoryHost::readKeyValue(key) : Entries();
  }
};
struct KeysWithoutCase : MemoryHost {
  static std::string lower(std::string key) {
    std::transform(key.begin(), key.end(), key.begin(), [](char c) { return c == 'V' ? 'v' : c; });
    return key;
  }
  bool writeKeyValue(Entries entries) override {
    for (const auto& entry : entries) MemoryHost::writeKeyValue({{lower(entry.first), entry.second}});
    return true;
  }
  Entries readKeyValue(const std::string& key) override {
    const Entries found = MemoryHost::readKeyValue(lower(key));
    return found.empty() ? found : Entries{{key, found.begin()->second}};
  }
};
struct NeverReplaces : MemoryHost {
  bool writeKeyValue(Entries entries) override {
    change([&](State& state) { state.store.insert(entries.begin(), entries.end()); });
    return true;
  }
};
struct ReplacesAll : MemoryHost {
  bool writeKeyValue(Entries entries) override {
    change([&](State& state) { state.store = entries; });
    return true;
  }
};
struct ClearsOnEmptyMap : MemoryHost {
  bool writeKeyValue(Entries entries) override {
    return entries.empty() ? clear() : MemoryHost::writeKeyValue(entries);
  }
};

/// Changes every value on its way into the store.
template <std::string (*changed)(const std::string&)>
struct Changes : MemoryHost {
  bool writeKeyValue(Entries entries) override {
    for (auto& entry : entries) entry.second = changed(entry.second);
    return MemoryHost::writeKeyValue(entries);
  }
};
std::string upToNul(const std::string& value) { return value.c_str(); }
std::string upTo64K(const std::string& value) { return value.substr(0, 65536); }
std::string asciiOnly(const std::string& value) {
  std::string kept;
  std::copy_if(value.begin(), value.end(), std::back_inserter(kept),
               [](unsigned char c) { return c < 0x80; });
  return kept;
}

struct EmptyValueRemoves : MemoryHost {
  bool writeKeyValue(Entries entries) override {
    for (const auto& entry : entries)
      entry.second.empty() ? removeKeyValue({entry.first}) : MemoryHost::writeKeyValue({entry});
    return true;
  }
};
struct WritesAHundred : MemoryHost {
  bool writeKeyValue(Entries entries) override {
    while (entries.size() > 100) entries.erase(std::prev(entries.end()));
    return MemoryHost::writeKeyValue(entries);
  }
};
struct OneWriterWins : MemoryHost {
  Meeting inside;
  bool writeKeyValue(Entries entries) override {
    Entries store = state().store;
    inside.enter();
    for (const auto& entry : entries) store[entry.first] = entry.second;
    change([&](State& state) { state.store = store; });
    inside.leave();
    return true;
  }
};
struct OpenClears : MemoryHost {
  bool open() override { return clear(); }
};
struct OpenLosesWrites : MemoryHost {
  std::thread::id made = std::this_thread::get_id();
  bool open() override {
    if (made != std::this_thread::get_id()) change([](State& state) { state.store.clear(); });
    return true;
  }
};
struct RemovesNothing : MemoryHost {
  bool removeKeyValue(const Texts&) override { return true; }
};
struct RemovesFirst : MemoryHost {
  bool removeKeyValue(const Texts& keys) override {
    return keys.empty() || MemoryHost::removeKeyValue({keys.front()});
  }
};
struct StopsAtAbsent : MemoryHost {
  bool removeKeyValue(const Texts& keys) override {
    for (const auto& key : keys) {
      if (!state().store.count(key)) break;
      MemoryHost::removeKeyValue({key});
    }
    return true;
  }
};
struct RemovesAllOnEmpty : MemoryHost {
  bool removeKeyValue(const Texts& keys) override {
    return keys.empty() ? clear() : MemoryHost::removeKeyValue(keys);
  }
};
struct RemovesByPrefix : MemoryHost {
  bool removeKeyValue(const Texts& keys) override { return keys.empty() || clear(); }
};
struct ClearsNothing : MemoryHost {
  bool clear() override { return true; }
};

struct ClearCloses : MemoryHost {
  std::atomic<bool> closed{false};
  bool clear() override { return closed = MemoryHost::clear(); }
  bool writeKeyValue(Entries entries) override { return closed || MemoryHost::writeKeyValue(entries); }
};

/// A store in a file, written on every change but those of one kind, and at the end.
enum class Late { kNothing, kWriting, kRemoving, kClearing };

template <Late kLate>
struct FileHost : MemoryHost {
  static constexpr char kFile[] = "/tmp/hostkit-store";
  std::mutex saving;

  FileHost() {
    std::ifstream file(kFile, std::ios::binary);
    for (std::string key, value; text(file, key) && text(file, value);)
      MemoryHost::writeKeyValue({{key, value}});
  }
  ~FileHost() override { save(); }

  bool writeKeyValue(Entries entries) override {
    return MemoryHost::writeKeyValue(entries) && (kLate == Late::kWriting || save());
  }
  bool removeKeyValue(const Texts& keys) override {
    return MemoryHost::removeKeyValue(keys) && (kLate == Late::kRemoving || save());
  }
  bool clear() override { return MemoryHost::clear() && (kLate == Late::kClearing || save()); }

  static bool text(std::istream& file, std::string& to) {
    std::size_t size = 0;
    if (!(file >> size)) return false;
    file.get();
    to.resize(size);
    return static_cast<bool>(file.read(&to[0], static_cast<std::streamsize>(size)));
  }
  bool save() {
    const std::lock_guard<std::mutex> lock(saving);
    std::ofstream file(kFile, std::ios::binary);
    for (const auto& entry : state().store)
      file << entry.first.size() << ' ' << entry.first << entry.second.size() << ' ' << entry.second;
    return true;
  }
};
using DurableHost = FileHost<Late::kNothing>;

// Settings, volume, mute.

struct SettingForgotten : MemoryHost {
  bool setSystemSetting(std::string, std::string) override { return true; }
};
struct SettingOneBehind : MemoryHost {
  Entries pending;
  bool setSystemSetting(std::string key, std::string value) override {
    const std::string late = pending.count(key) ? pending[key] : value;
    pending[key] = value;
    return MemoryHost::setSystemSetting(key, late);
  }
};
struct SettingForAll : MemoryHost {
  bool setSystemSetting(std::string, std::string value) override {
    return MemoryHost::setSystemSetting("all", value);
  }
  bool getSystemSetting(std::string, std::string& value) override {
    return MemoryHost::getSystemSetting("all", value);
  }
};
struct SettingRefusedButTaken : MemoryHost {
  bool setSystemSetting(std::string key, std::string value) override {
    MemoryHost::setSystemSetting(key, value);
    return value != "\xff";
  }
};
struct SettingClearsText : MemoryHost {
  bool getSystemSetting(std::string key, std::string& value) override {
    value.clear();
    return MemoryHost::getSystemSetting(key, value);
  }
};
struct VolumeOneBehind : MemoryHost {
  std::atomic<int> pending{0};
  Result onSetVolume(int volume) override { return MemoryHost::onSetVolume(pending.exchange(volume)); }
};
struct AdjustSets : MemoryHost {
  Result onAdjustVolume(int delta) override { return onSetVolume(delta); }
};
struct MuteOnly : MemoryHost {
  Result onMute(bool mute) override { return mute ? MemoryHost::onMute(true) : Result(true, ""); }
};

// Life.

struct EndsBadlyAfterUse : MemoryHost {
  ~EndsBadlyAfterUse() override {
    if (!state().card.empty()) std::abort();
  }
};
struct EndsBadlyUnused : MemoryHost {
  ~EndsBadlyUnused() override {
    if (!state().streaming) std::abort();
  }
  void stopStreamingAudioData() override {}
};
struct EndsOnOneThread : MemoryHost {
  std::thread::id made = std::this_thread::get_id();
  ~EndsOnOneThread() override {
    if (made != std::this_thread::get_id()) std::abort();
  }
};
struct OnceInALife : MemoryHost {
  OnceInALife() {
    static int made = 0;
    if (made++) throw std::logic_error("the sound card is taken");
  }
};

const std::string kPlayer = "VornDALImplIF/33/getEMPAdapter", kOpen = "VornDALImplIF/25/open",
                  kRead = "VornDALImplIF/26/readKeyValue", kWrite = "VornDALImplIF/27/writeKeyValue",
                  kRemove = "VornDALImplIF/28/removeKeyValue", kClear = "VornDALImplIF/29/clear",
                  kGet = "VornDALImplIF/22/getSystemSetting", kSet = "VornDALImplIF/23/setSystemSetting",
                  kEnd = "VornDALImplIF/01/destructor";

std::vector<Fault> faults() {
  std::vector<Fault> all = {
      fault<NoPlayer>("NoPlayer", kPlayer, {"never-null"}),
      fault<NoPlayerElsewhere>("NoPlayerElsewhere", kPlayer, {"never-null-any-thread"}),
      fault<NoPlayerAfterLogout>("NoPlayerAfterLogout", kPlayer, {"never-null-after-use"}),
      fault<ReadsNothing>("ReadsNothing", kRead, {"reads-written"}),
      fault<ReadsOnce>("ReadsOnce", kRead, {"reads-again"}),
      fault<ReadsAnything>("ReadsAnything", kRead, {"invents-nothing"}),
      fault<ReadsOnOneThread>("ReadsOnOneThread", kRead, {"any-thread"}),
      fault<KeysWithoutCase>("KeysWithoutCase", kRead, {"keys-apart"}),
      fault<NeverReplaces>("NeverReplaces", kWrite, {"replaces"}),
      fault<ReplacesAll>("ReplacesAll", kWrite, {"leaves-others"}),
      fault<ClearsOnEmptyMap>("ClearsOnEmptyMap", kWrite, {"empty-map"}),
      fault<Changes<upToNul>>("ValuesUpToNul", kWrite, {"every-byte"}),
      fault<Changes<upTo64K>>("ValuesUpTo64K", kWrite, {"long-value"}),
      fault<Changes<asciiOnly>>("ValuesInAsciiOnly", kWrite, {"every-byte", "utf8-value"}),
      fault<EmptyValueRemoves>("EmptyValueRemoves", kWrite, {"empty-value"}),
      fault<WritesAHundred>("WritesAHundred", kWrite, {"many"}),
      fault<OneWriterWins>("OneWriterWins", kWrite, {"threads"}),
      fault<OpenClears>("OpenClears", kOpen, {"keeps"}),
      fault<OpenLosesWrites>("OpenLosesWrites", kOpen, {"in-use"}),
      fault<RemovesNothing>("RemovesNothing", kRemove, {"removes"}),
      fault<RemovesFirst>("RemovesFirst", kRemove, {"past-absent", "removes-all"}),
      fault<StopsAtAbsent>("StopsAtAbsent", kRemove, {"past-absent"}),
      fault<RemovesAllOnEmpty>("RemovesAllOnEmpty", kRemove, {"empty-list"}),
      fault<RemovesByPrefix>("RemovesByPrefix", kRemove, {"leaves-others"}),
      fault<ClearCloses>("ClearCloses", kClear, {"usable"}),
      fault<ClearsNothing>("ClearsNothing", kClear, {"clears"}),
      fault<FileHost<Late::kWriting>>("SavesWritesAtTheEnd", kWrite, {"killed"}),
      fault<FileHost<Late::kRemoving>>("SavesRemovalsAtTheEnd", kRemove, {"killed"}),
      fault<FileHost<Late::kClearing>>("SavesClearingAtTheEnd", kClear, {"killed"}),
      fault<MemoryHost>("SaidToBeDurable", kWrite, {"new-host"}),
      fault<SettingForgotten>("SettingForgotten", kSet, {"reported"}),
      fault<SettingOneBehind>("SettingOneBehind", kSet, {"last-reported"}),
      fault<SettingForAll>("SettingForAll", kSet, {"apart"}),
      fault<SettingRefusedButTaken>("SettingRefusedButTaken", kSet, {"refused"}),
      fault<SettingClearsText>("SettingClearsText", kGet, {"leaves-text"}),
      fault<VolumeOneBehind>("VolumeOneBehind", "VornDALImplIF/61/onSetVolume", {"reported"}),
      fault<AdjustSets>("AdjustSets", "VornDALImplIF/62/onAdjustVolume", {"reported"}),
      fault<MuteOnly>("MuteOnly", "VornDALImplIF/63/onMute", {"reported"}),
      fault<EndsBadlyAfterUse>("EndsBadlyAfterUse", kEnd, {"after-use"}),
      fault<EndsBadlyUnused>("EndsBadlyUnused", kEnd, {"unused"}),
      fault<EndsOnOneThread>("EndsOnOneThread", kEnd, {"any-thread"}),
      fault<OnceInALife>("OnceInALife", kEnd, {"again"}),
  };
  for (Fault& it : all)
    it.demands.durable = it.name.compare(0, 5, "Saves") == 0 || it.name == "SaidToBeDurable";
  return all;
}

TEST_P(AFaultyHost, IsCaughtByTheChecksOfItsFault) {
  std::remove(DurableHost::kFile);
  EXPECT_EQ(broken(GetParam()), GetParam().broken);
}

INSTANTIATE_TEST_SUITE_P(InWhatItRemembers, AFaultyHost, testing::ValuesIn(faults()),
                         [](const auto& fault) { return fault.param.name; });

TEST(ADurableHost, KeepsWhatItIsAskedToKeep) {
  std::remove(DurableHost::kFile);
  vorn_testing::HostDemands durable;
  durable.durable = true;
  for (const auto& check : vorn_testing::hostChecks()) {
    if (check.slot < 25 || check.slot > 29) continue;
    const auto verdict = runHostCheck(
        check, [] { return std::make_shared<DurableHost>(); }, durable);
    EXPECT_EQ(verdict.kind, vorn_testing::HostVerdict::kKept) << check.id << ": " << verdict.detail;
  }
}

}  // namespace
