// The life that the adapters share, on a class of the test's own.

#include "internal/Lifecycle.h"

#include <gtest/gtest.h>

#include <future>
#include <set>
#include <stdexcept>
#include <vector>

namespace {

namespace internal = VornDeviceAbstractionLayer::internal;

struct Thing {};

class Lifecycle : public testing::Test {
 protected:
  bool locked() {
    return std::async(std::launch::async,
                      [this] {
                        if (!mutex.try_lock()) return true;
                        mutex.unlock();
                        return false;
                      })
        .get();
  }

  std::mutex mutex;
  std::shared_ptr<Thing> instance;
  std::atomic<bool> flag{false};
};

TEST_F(Lifecycle, ObtainsWhatItMakesAndKeepsIt) {
  const auto made = std::make_shared<Thing>();
  EXPECT_EQ(internal::obtain(mutex, instance, [&] { return made; }), made);
  EXPECT_EQ(instance, made);
}

TEST_F(Lifecycle, MakesNothingWhenThereIsAnInstance) {
  instance = std::make_shared<Thing>();
  const auto never = []() -> std::shared_ptr<Thing> { throw std::logic_error("made twice"); };
  EXPECT_EQ(internal::obtain(mutex, instance, never), instance);
}

TEST_F(Lifecycle, MakesUnderTheLockAndAnswersWithoutIt) {
  bool during = false;
  internal::obtain(mutex, instance, [&] {
    during = locked();
    return std::make_shared<Thing>();
  });
  EXPECT_TRUE(during);
  EXPECT_FALSE(locked());
}

TEST_F(Lifecycle, StaysEmptyAndUnlockedWhenMakingThrows) {
  const auto fail = []() -> std::shared_ptr<Thing> { throw std::runtime_error("no"); };
  EXPECT_THROW(internal::obtain(mutex, instance, fail, &flag), std::runtime_error);
  EXPECT_EQ(instance, nullptr);
  EXPECT_FALSE(internal::live(flag));
  EXPECT_FALSE(locked());
}

TEST_F(Lifecycle, RaisesTheFlagOnlyWhenTheInstanceIsThere) {
  bool early = true;
  internal::obtain(
      mutex, instance,
      [&] {
        early = internal::live(flag);
        return std::make_shared<Thing>();
      },
      &flag);
  EXPECT_FALSE(early);
  EXPECT_TRUE(internal::live(flag));
}

TEST_F(Lifecycle, DropsTheInstanceAndItsFlag) {
  internal::obtain(
      mutex, instance, [] { return std::make_shared<Thing>(); }, &flag);
  internal::drop(mutex, instance, &flag);
  EXPECT_EQ(instance, nullptr);
  EXPECT_FALSE(internal::live(flag));
}

TEST_F(Lifecycle, LowersTheFlagBeforeTheInstanceDies) {
  bool late = true;
  const auto make = [&] {
    return std::shared_ptr<Thing>(new Thing, [&](Thing* thing) {
      late = internal::live(flag);
      delete thing;
    });
  };
  internal::obtain(mutex, instance, make, &flag);
  internal::drop(mutex, instance, &flag);
  EXPECT_FALSE(late);
}

TEST_F(Lifecycle, DropsNothingTwice) {
  internal::drop(mutex, instance, &flag);
  internal::drop(mutex, instance);
  EXPECT_EQ(instance, nullptr);
  EXPECT_FALSE(locked());
}

TEST_F(Lifecycle, LeavesCopiesToTheirHolders) {
  const auto kept = internal::obtain(mutex, instance, [] { return std::make_shared<Thing>(); });
  internal::drop(mutex, instance);
  EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(Lifecycle, AnswersTheCurrentInstanceOrEmpty) {
  EXPECT_EQ(internal::current(mutex, instance), nullptr);
  instance = std::make_shared<Thing>();
  EXPECT_EQ(internal::current(mutex, instance), instance);
  EXPECT_FALSE(locked());
}

TEST_F(Lifecycle, MakesOneInstanceForAllThreads) {
  std::atomic<int> made{0};
  std::vector<std::future<std::shared_ptr<Thing>>> found;
  for (int thread = 0; thread < 8; ++thread) {
    found.push_back(std::async(std::launch::async, [&] {
      return internal::obtain(mutex, instance, [&] {
        ++made;
        return std::make_shared<Thing>();
      });
    }));
  }
  std::set<std::shared_ptr<Thing>> different;
  for (auto& one : found) different.insert(one.get());
  EXPECT_EQ(different.size(), 1U);
  EXPECT_EQ(made, 1);
}

TEST(LiveFlag, IsOneByteReadWithoutALock) {
  EXPECT_EQ(sizeof(std::atomic<bool>), 1U);
  EXPECT_TRUE(std::atomic<bool>::is_always_lock_free);
}

}  // namespace
