// Mistakes in how a host, and the library that brings it, comes and goes; and what it does to its process.

#include <VornMediaPlayerFactory.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

#include "Host.h"

namespace hosts {
namespace {

// ---- Made, destroyed, made again -----------------------------------------------------------------

struct HangsAtEnd : Device {
  std::atomic<bool> told{false};
  std::thread worker{[this] {
    while (!told) std::this_thread::sleep_for(Milliseconds(5));
  }};
  ~HangsAtEnd() override { worker.join(); }
};
struct CrashesAtEnd : Device {
  ~CrashesAtEnd() override { std::abort(); }
};
struct ThreadLeftAtEnd : Device {
  std::thread worker{[] {}};  // destroyed without a join
};
struct ExitsAtEnd : Device {
  ~ExitsAtEnd() override { _exit(0); }
};
struct UsesItselfAfter : Device {
  UsesItselfAfter() {
    std::thread([this] {
      for (int i = 0; i < 400; ++i) {
        if (std::memcmp(&marker, &kMarker, sizeof marker) != 0) std::abort();
        std::this_thread::sleep_for(Milliseconds(1));
      }
    }).detach();
  }
  static constexpr std::uint64_t kMarker = 0x1122334455667788;
  std::uint64_t marker = kMarker;
};
struct OnlyOne : Device {
  static std::atomic<int>& made() {
    static std::atomic<int> count{0};
    return count;
  }
  OnlyOne() {
    if (made()++ > 0) throw std::logic_error("there is one already");
  }
};
struct StaticStore : Device {
  static std::unique_ptr<Entries>& shared() {
    static std::unique_ptr<Entries> entries(new Entries);
    return entries;
  }
  ~StaticStore() override { shared().reset(); }
  bool writeKeyValue(Entries entries) override {
    const Lock lock(mutex);
    if (!shared()) std::abort();
    for (auto& entry : entries) (*shared())[entry.first] = entry.second;
    return true;
  }
  Entries readKeyValue(const std::string& key) override {
    const Lock lock(mutex);
    if (!shared()) std::abort();
    const auto found = shared()->find(key);
    return found == shared()->end() ? Entries() : Entries{*found};
  }
};
struct CrashesAfterUse : Device {
  bool used = false;
  int setAnimation(Texts) override {
    used = true;
    return 0;
  }
  ~CrashesAfterUse() override {
    if (used) std::abort();
  }
};
struct ThrowsWhenMade : Device {
  ThrowsWhenMade() { throw std::runtime_error("no configuration"); }
};
struct ExitsWhenMade : Device {
  ExitsWhenMade() { std::exit(0); }
};
struct HangsWhenMade : Device {
  HangsWhenMade() {
    for (;;) pause();
  }
};
struct CrashesWhenMade : Device {
  CrashesWhenMade() { std::abort(); }
};
struct NotMadeAgain : Device {};
struct FirstPlayerOfTwo : Device {
  std::unique_ptr<hosts::Player> made;
  VornEMPAdapterIF* getEMPAdapter() override {
    if (!made) made.reset(new hosts::Player);
    return made.get();
  }
};
struct FirstPlayerShared : Device {
  std::shared_ptr<hosts::Player> made;
  VornEMPAdapterIF* getEMPAdapter() override {
    if (!made) made = std::make_shared<hosts::Player>();
    return made.get();
  }
};
struct FirstPlayerChecked : Device {
  std::unique_ptr<hosts::Player> made;
  std::atomic<bool> known{false};
  VornEMPAdapterIF* getEMPAdapter() override {
    if (!known) {
      auto one = std::make_unique<hosts::Player>();
      const Lock lock(mutex);
      made = std::move(one);
      known = true;
    }
    return made.get();
  }
};
VORN_HOST("player", FirstPlayerOfTwo, "getEMPAdapter|getPlaybackState")
VORN_HOST("player", FirstPlayerShared, "getEMPAdapter|getPlaybackState")
VORN_HOST("player", FirstPlayerChecked, "getEMPAdapter|getPlaybackState")
VORN_HOST("life", HangsAtEnd, "destructor")
VORN_HOST("life", CrashesAtEnd, "destructor")
VORN_HOST("life", ThreadLeftAtEnd, "destructor")
VORN_HOST("life", ExitsAtEnd, "destructor")
VORN_HOST("life", UsesItselfAfter, "destructor")
VORN_HOST("life", OnlyOne, "destructor")
VORN_HOST("life", StaticStore, "destructor|writeKeyValue|readKeyValue")
VORN_HOST("life", CrashesAfterUse, "destructor")
const Added addedNotMadeAgain({"life", "NotMadeAgain", "destructor", []() -> VornDALImplIF* {
                                 static bool made = false;
                                 return std::exchange(made, true) ? nullptr : new Device;
                               }});
VORN_HOST("not made", ThrowsWhenMade, "vornCreateHost")
VORN_HOST("not made", ExitsWhenMade, "vornCreateHost")
VORN_HOST("not made", HangsWhenMade, "vornCreateHost")
VORN_HOST("not made", CrashesWhenMade, "vornCreateHost")
const Added addedNull({"not made", "Null", "vornCreateHost", []() -> VornDALImplIF* { return nullptr; }});

// ---- The library: what happens while it is loaded, and when its process ends ---------------------

bool named(const char* name) {
  const char* const wanted = std::getenv("VORN_KIT_HOST");
  return wanted && std::strcmp(wanted, name) == 0;
}
struct Loading {
  Loading() {
    if (named("ExitsAtLoad")) std::exit(0);
    if (named("LeavesAtLoad")) _exit(0);
    if (named("AbortsAtLoad")) std::abort();
    if (named("ThrowsAtLoad")) throw std::runtime_error("licence");
    if (named("HangsAtLoad"))
      for (;;) pause();
  }
  ~Loading() {
    if (named("LeavesAtUnload")) _exit(0);
    if (named("AbortsAtUnload")) std::abort();
    if (named("HangsAtUnload"))
      for (;;) pause();
    if (named("FailsAtUnload")) _exit(66);
  }
};
const Loading loading;
struct ExitsAtLoad : Device {};
struct LeavesAtLoad : Device {};
struct AbortsAtLoad : Device {};
struct ThrowsAtLoad : Device {};
struct HangsAtLoad : Device {};
struct LeavesAtUnload : Device {
  std::string getTimezone() override { return "Z\xfcrich"; }
};
struct AbortsAtUnload : Device {};
struct HangsAtUnload : Device {};
struct FailsAtUnload : Device {};
VORN_HOST("load", ExitsAtLoad, "the library")
VORN_HOST("load", LeavesAtLoad, "the library")
VORN_HOST("load", AbortsAtLoad, "the library")
VORN_HOST("load", ThrowsAtLoad, "the library")
VORN_HOST("load", HangsAtLoad, "the library")
VORN_HOST("unload", LeavesAtUnload, "getTimezone")
VORN_HOST("unload", AbortsAtUnload, "the library")
VORN_HOST("unload", HangsAtUnload, "the library")
VORN_HOST("unload", FailsAtUnload, "the library")

// ---- Media players --------------------------------------------------------------------------------

using VornDeviceAbstractionLayer::VornMediaPlayerFactory;

struct MediaPlayer : VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl {
  std::mutex mutex;
  std::function<void(std::string)> news;
  void Configure(Settings, std::function<void(std::string)> callback) override {
    const Lock lock(mutex);
    news = std::move(callback);
  }
};
/// A device with such players.
template <class OfPlayer>
struct Bringing : Device, hosts::WithPlayers {
  Bringing() {
    players = {{"DefaultMediaPlayer", std::make_shared<OfPlayer>()}, {"Radio", std::make_shared<OfPlayer>()}};
  }
};

struct AsksFactory : MediaPlayer {
  void Configure(Settings settings, std::function<void(std::string)> callback) override {
    if (VornMediaPlayerFactory::getInstance()) MediaPlayer::Configure(settings, std::move(callback));
  }
};
struct MakesFactory : MediaPlayer {
  vorn_testing::MediaPlayers others;
  void Configure(Settings, std::function<void(std::string)>) override {
    VornMediaPlayerFactory::CreateInstance(others);
  }
};
struct CallsUnlooked : MediaPlayer {
  void Configure(Settings settings, std::function<void(std::string)> callback) override {
    callback("ready for " + settings.name);
  }
};
struct ThrowsForOthers : MediaPlayer {
  void Configure(Settings settings, std::function<void(std::string)> callback) override {
    static const std::map<std::string, int> volumes{{"DefaultMediaPlayer", 30}, {"Radio", 20}};
    MediaPlayer::Configure(settings, volumes.at(settings.name) > 0 ? std::move(callback) : nullptr);
  }
};
struct FewSessions : MediaPlayer {
  std::vector<std::string> names = std::vector<std::string>(64);
  std::size_t next = 0;
  void Configure(Settings settings, std::function<void(std::string)>) override {
    names.at(next++) = settings.name;
  }
};
using AskingPlayer = Bringing<AsksFactory>;
using FactoryFromInside = Bringing<MakesFactory>;
using UnlookedCallback = Bringing<CallsUnlooked>;
using OwnNamesOnly = Bringing<ThrowsForOthers>;
using SixtyFourSessions = Bringing<FewSessions>;
struct PlayersPlayOn : Device, hosts::WithPlayers {
  char* const buffer =
      static_cast<char*>(mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  struct Sounding : MediaPlayer {
    char* const sound;
    explicit Sounding(char* buffer) : sound(buffer) {}
    void Configure(Settings, std::function<void(std::string)>) override {
      std::thread([sound = sound] {
        for (int i = 0; i < 20; ++i) {
          usleep(10000);
          sound[i] = 'a';
        }
      }).detach();
    }
  };
  PlayersPlayOn() { players["DefaultMediaPlayer"] = std::make_shared<Sounding>(buffer); }
  ~PlayersPlayOn() override { munmap(buffer, 4096); }
};
struct EmptyPlayer : Bringing<MediaPlayer> {
  EmptyPlayer() { players["Bluetooth"] = nullptr; }
};
/// Its table is gone with the page on which it was made.
struct TableOfTheCall : Device {
  TableOfTheCall() {
    void* const page = mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    auto* const table =
        new (page) vorn_testing::MediaPlayers{{"DefaultMediaPlayer", std::make_shared<MediaPlayer>()}};
    VornMediaPlayerFactory::CreateInstance(*table);
    table->~unordered_map();
    munmap(page, 4096);
  }
};
struct AskingItself : Device {
  vorn_testing::MediaPlayers table{{"DefaultMediaPlayer", std::make_shared<AsksFactory>()}};
  AskingItself() { VornMediaPlayerFactory::CreateInstance(table); }
};
/// Has the table at hand.
template <class OfPlayer>
struct WithTable : Device, hosts::WithPlayers {
  WithTable() {
    for (const char* const name : {"DefaultMediaPlayer", "Radio"})
      players[name] = std::make_shared<OfPlayer>(players);
  }
};
struct OfTable : MediaPlayer {
  vorn_testing::MediaPlayers& table;
  explicit OfTable(vorn_testing::MediaPlayers& players) : table(players) {}
};
struct EntersItself : OfTable {
  using OfTable::OfTable;
  void Configure(Settings settings, std::function<void(std::string)>) override {
    table.emplace(settings.name, table.at("DefaultMediaPlayer"));
  }
};
struct LeavesTable : OfTable {
  using OfTable::OfTable;
  void Configure(Settings settings, std::function<void(std::string)>) override {
    if (settings.name == "Radio") table.erase("Radio");
  }
};
struct ReplacesItself : OfTable {
  using OfTable::OfTable;
  void Configure(Settings settings, std::function<void(std::string)>) override {
    const auto found = table.find(settings.name);
    if (found == table.end()) return;
    const std::shared_ptr<void> keep = found->second;
    found->second = std::make_shared<ReplacesItself>(table);
  }
};
using PlayerEntersItself = WithTable<EntersItself>;
using PlayerLeavesTable = WithTable<LeavesTable>;
using PlayerReplacesItself = WithTable<ReplacesItself>;
VORN_HOST("media players", PlayerEntersItself, "createDalMediaPlayer")
VORN_HOST("media players", PlayerLeavesTable, "createDalMediaPlayer")
VORN_HOST("media players", PlayerReplacesItself, "createDalMediaPlayer")
VORN_HOST("media players", AskingPlayer, "createDalMediaPlayer")
VORN_HOST("media players", FactoryFromInside, "createDalMediaPlayer")
VORN_HOST("media players", UnlookedCallback, "createDalMediaPlayer")
VORN_HOST("media players", OwnNamesOnly, "createDalMediaPlayer")
VORN_HOST("media players", SixtyFourSessions, "createDalMediaPlayer")
VORN_HOST("media players", PlayersPlayOn, "createDalMediaPlayer")
VORN_HOST("media players", EmptyPlayer, "createDalMediaPlayer")
VORN_HOST("media players", TableOfTheCall, "createDalMediaPlayer")
VORN_HOST("media players", AskingItself, "createDalMediaPlayer")

using GoodPlayers = Bringing<MediaPlayer>;
/// Tells on a thread of its own, which it joins, that it was configured.
struct GoodTellingPlayers : Device, hosts::WithPlayers {
  struct Telling : MediaPlayer {
    std::thread worker;
    void Configure(Settings settings, std::function<void(std::string)> callback) override {
      if (worker.joinable()) worker.join();
      worker = std::thread([settings, callback] {
        if (callback) callback("ready for " + settings.name);
      });
    }
    ~Telling() override {
      if (worker.joinable()) worker.join();
    }
  };
  GoodTellingPlayers() { players["DefaultMediaPlayer"] = std::make_shared<Telling>(); }
};
VORN_HOST("good", GoodPlayers, "")
VORN_HOST("good", GoodTellingPlayers, "")

// ---- The process ---------------------------------------------------------------------------------

struct KillsGroup : Device {
  Result onChangePlaybackFastForward(std::string) override {
    kill(0, SIGKILL);
    return {true, ""};
  }
};
struct LeavesThreadBehind : Device {
  Result onSendKeystroke(std::string) override {
    std::thread([] { std::terminate(); }).detach();
    return {true, ""};
  }
};
VORN_HOST("process", KillsGroup, "onChangePlaybackFastForward")
VORN_HOST("process", LeavesThreadBehind, "onSendKeystroke")

}  // namespace
}  // namespace hosts
