// The media player factory: which player it finds, what it tells it, and what it holds meanwhile.

#include <VornMediaPlayerFactory.h>

#include <algorithm>
#include <future>
#include <new>
#include <stdexcept>
#include <unordered_map>

#include "support/eventually.h"
#include "support/interposed.h"
#include "support/mutexes.h"
#include "support/trace_file.h"

namespace {

using namespace VornDeviceAbstractionLayer;
using trace_file::lines;
using Callback = std::function<void(std::string)>;
using Lines = std::vector<std::string>;

constexpr char kConstructor[] =
    "VornDeviceAbstractionLayer::VornMediaPlayerFactory::VornMediaPlayerFactory(std::unordered_map<std::basic_"
    "string<char>, std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl> >&)";
constexpr char kMissing[] = "VornMediaPlayerFactory::createDalMediaPlayer WARNING: returning NULLPTR";

std::string requested(const std::string& name) {
  return "VornMediaPlayerFactory::createDalMediaPlayer name=" + name;
}

class Player : public VornDalMediaPlayerInterfaceImpl {
 public:
  void Configure(Settings settings, Callback callback) override {
    configured.push_back(settings);
    given = callback;
    if (meanwhile) meanwhile();
  }

  std::vector<Settings> configured;
  Callback given;
  std::function<void()> meanwhile;
};

class PlayerFactory : public trace_file::Traced {
 protected:
  using Table = std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>>;

  void SetUp() override {
    Traced::SetUp();
    VornMediaPlayerFactory::CreateInstance(players);
    EXPECT_EQ(lines(), Lines{kConstructor});
    forget();
  }

  void TearDown() override {
    VornMediaPlayerFactory::Shutdown();
    Traced::TearDown();
  }

  static std::shared_ptr<VornDalMediaPlayerInterfaceImpl> ask(const std::string& name) {
    return VornMediaPlayerFactory::getInstance()->createDalMediaPlayer(nullptr, true, name, false);
  }

  std::mutex& mutex = operations::mutexOf("VornMediaPlayerFactory");
  std::shared_ptr<Player> kitchen = std::make_shared<Player>();
  std::shared_ptr<Player> fallback = std::make_shared<Player>();
  Table players = {{"kitchen", kitchen}, {"DefaultMediaPlayer", fallback}};
};

TEST_F(PlayerFactory, FindsThePlayerOfTheName) {
  EXPECT_EQ(ask("kitchen"), kitchen);
  EXPECT_EQ(fallback->configured.size(), 0U);
  EXPECT_EQ(lines(), Lines{requested("kitchen")});
}

TEST_F(PlayerFactory, FallsBackSilentlyAndTellsTheNameThatWasAsked) {
  EXPECT_EQ(ask("cellar"), fallback);
  EXPECT_EQ(fallback->configured.at(0).name, "cellar");
  EXPECT_EQ(lines(), Lines{requested("cellar")});
}

TEST_F(PlayerFactory, ComparesNamesExactly) {
  for (const char* name : {"Kitchen", "kitchen ", "", "defaultmediaplayer"})
    EXPECT_EQ(ask(name), fallback) << name;
  EXPECT_TRUE(kitchen->configured.empty());
}

TEST_F(PlayerFactory, AnswersEmptyWithAWarningWhenThereIsNoFallback) {
  players.erase("DefaultMediaPlayer");
  EXPECT_EQ(ask("cellar"), nullptr);
  EXPECT_EQ(lines(), (Lines{requested("cellar"), kMissing}));
  EXPECT_TRUE(kitchen->configured.empty());
}

TEST_F(PlayerFactory, AnswersEmptyOnAnEmptyTable) {
  players.clear();
  EXPECT_EQ(ask("DefaultMediaPlayer"), nullptr);
  EXPECT_EQ(lines(), (Lines{requested("DefaultMediaPlayer"), kMissing}));
}

TEST_F(PlayerFactory, ConfiguresTheSamePlayerAnewOnEveryRequest) {
  EXPECT_EQ(ask("kitchen"), ask("kitchen"));
  EXPECT_EQ(kitchen->configured.size(), 2U);
}

TEST_F(PlayerFactory, KeepsTheFlagsApart) {
  const auto factory = VornMediaPlayerFactory::getInstance();
  factory->createDalMediaPlayer(nullptr, true, "kitchen", false);
  factory->createDalMediaPlayer(nullptr, false, "kitchen", true);
  EXPECT_TRUE(kitchen->configured[0].firstFlag && !kitchen->configured[0].secondFlag);
  EXPECT_TRUE(!kitchen->configured[1].firstFlag && kitchen->configured[1].secondFlag);
}

TEST_F(PlayerFactory, HandsOnACopyOfTheCallback) {
  std::string heard;
  Callback callback = [&heard](std::string text) { heard = text; };
  VornMediaPlayerFactory::getInstance()->createDalMediaPlayer(callback, true, "kitchen", true);
  callback = nullptr;
  kitchen->given("done");
  EXPECT_EQ(heard, "done");
}

TEST_F(PlayerFactory, HandsOnAnEmptyCallback) {
  ask("kitchen");
  EXPECT_FALSE(kitchen->given);
}

TEST_F(PlayerFactory, HoldsNoPlayer) {
  const long before = kitchen.use_count();
  ask("kitchen");
  EXPECT_EQ(kitchen.use_count(), before);
  EXPECT_EQ(players.size(), 2U);
}

TEST_F(PlayerFactory, LooksIntoTheTableAsItStandsNow) {
  const auto cellar = std::make_shared<Player>();
  players["cellar"] = cellar;
  EXPECT_EQ(ask("cellar"), cellar);
}

TEST_F(PlayerFactory, IsBoundToTheTableOfTheLastCreation) {
  const auto other = std::make_shared<Player>();
  Table second = {{"kitchen", other}};
  VornMediaPlayerFactory::CreateInstance(second);
  EXPECT_EQ(lines(), Lines{kConstructor});
  EXPECT_EQ(ask("kitchen"), other);
}

TEST_F(PlayerFactory, IsReplacedAndTracedAgainByASecondCreationOnTheSameTable) {
  const auto former = VornMediaPlayerFactory::getInstance();
  VornMediaPlayerFactory::CreateInstance(players);
  EXPECT_EQ(lines(), Lines{kConstructor});
  EXPECT_NE(VornMediaPlayerFactory::getInstance(), former);
  EXPECT_EQ(former.use_count(), 1);
}

TEST_F(PlayerFactory, KeepsItsTableWhenAnotherTakesItsPlace) {
  const auto kept = VornMediaPlayerFactory::getInstance();
  Table second;
  VornMediaPlayerFactory::CreateInstance(second);
  EXPECT_NE(VornMediaPlayerFactory::getInstance(), kept);
  EXPECT_EQ(kept->createDalMediaPlayer(nullptr, true, "kitchen", true), kitchen);
  EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(PlayerFactory, WorksOnAfterShutdownForThoseWhoKeptIt) {
  const auto kept = VornMediaPlayerFactory::getInstance();
  VornMediaPlayerFactory::Shutdown();
  EXPECT_EQ(VornMediaPlayerFactory::getInstance(), nullptr);
  EXPECT_EQ(kept->createDalMediaPlayer(nullptr, true, "kitchen", true), kitchen);
}

TEST_F(PlayerFactory, IsEmptyBeforeCreationAndWritesNothingWhenShutDownOrFetched) {
  VornMediaPlayerFactory::Shutdown();
  VornMediaPlayerFactory::Shutdown();
  EXPECT_EQ(VornMediaPlayerFactory::getInstance(), nullptr);
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(PlayerFactory, StaysBoundWhenRebindingFails) {
  FileLogger::Shutdown();
  FileLogger::CreateInstance(false);
  const auto kept = VornMediaPlayerFactory::getInstance();
  Table second;
  int failures = 0;
  for (std::size_t nth = 1; VornMediaPlayerFactory::getInstance() == kept; ++nth) {
    interposed::failAllocation(nth);
    try {
      VornMediaPlayerFactory::CreateInstance(second);
    } catch (const std::bad_alloc&) {
      ++failures;
      interposed::failAllocation(0);
      ASSERT_EQ(VornMediaPlayerFactory::getInstance(), kept);
      EXPECT_EQ(ask("kitchen"), kitchen);
    }
    interposed::failAllocation(0);
  }
  EXPECT_GE(failures, 2);  // Factory and control block, and the text of its line.
}

TEST_F(PlayerFactory, LetsExceptionsOfAPlayerPassAndReleasesItsLock) {
  kitchen->meanwhile = [] { throw std::runtime_error("refused"); };
  EXPECT_THROW(ask("kitchen"), std::runtime_error);
  EXPECT_FALSE(operations::isHeld(mutex));
  EXPECT_EQ(lines(), Lines{requested("kitchen")});
}

TEST_F(PlayerFactory, WritesTheRequestBeforeItConfigures) {
  Lines during;
  kitchen->meanwhile = [&during] { during = lines(); };
  ask("kitchen");
  EXPECT_EQ(during, Lines{requested("kitchen")});
}

TEST_F(PlayerFactory, LetsEveryoneWaitWhileAPlayerConfigures) {
  std::promise<void> configuring, resume;
  kitchen->meanwhile = [&] {
    configuring.set_value();
    resume.get_future().wait();
  };
  interposed::watch(mutex);
  auto first = std::async(std::launch::async, ask, "kitchen");
  configuring.get_future().wait();
  auto fetch = std::async(std::launch::async, VornMediaPlayerFactory::getInstance);
  auto end = std::async(std::launch::async, VornMediaPlayerFactory::Shutdown);
  EXPECT_TRUE(eventually([] { return interposed::waiting() == 2; }));
  EXPECT_TRUE(operations::isHeld(mutex));
  resume.set_value();
  EXPECT_EQ(first.get(), kitchen);
  end.get();
}

TEST_F(PlayerFactory, ConfiguresOneRequestAfterTheOther) {
  int inside = 0, most = 0;
  kitchen->meanwhile = [&] {
    most = std::max(most, ++inside);
    std::this_thread::yield();
    --inside;
  };
  std::vector<std::future<void>> requests;
  for (int thread = 0; thread < 4; ++thread)
    requests.push_back(std::async(std::launch::async, [] {
      for (int i = 0; i < 50; ++i) ask("kitchen");
    }));
  for (auto& request : requests) request.get();
  EXPECT_EQ(most, 1);
  EXPECT_EQ(kitchen->configured.size(), 200U);
}

TEST(PlayerBase, ConfiguresByDoingNothing) {
  VornDalMediaPlayerInterfaceImpl player;
  EXPECT_NO_THROW(player.Configure({true, "any", false}, nullptr));
}

}  // namespace
