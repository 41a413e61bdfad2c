// The life that the adapters share. An adapter joins by its line in adapters().

#include <FileLogger.h>

#include "support/interposed.h"
#include "support/mutexes.h"
#include "support/operation_test.h"
#include "support/trace_file.h"

namespace {

using namespace operations;
using Lines = std::vector<std::string>;

class Life : public testing::TestWithParam<Adapter> {
 protected:
  ~Life() override { adapter.shutdown(); }

  /// The hosts that one downward operation of the object reaches.
  Lines reachedBy(const std::shared_ptr<void>& object) {
    first.recorder->clear();
    second.recorder->clear();
    for (const Row& row : rows())
      if (row.adapter->name == adapter.name && row.direction == Direction::kDown) {
        row.call(object.get());
        break;
      }
    Lines names;
    if (!first.recorder->calls().empty()) names.push_back("first");
    if (!second.recorder->calls().empty()) names.push_back("second");
    return names;
  }

  const Adapter& adapter = GetParam();
  Firmware first, second;
};

TEST_P(Life, HasNoInstanceBeforeItsCreation) { EXPECT_EQ(adapter.get(), nullptr); }

TEST_P(Life, IsCreatedOnceAndKeepsItsFirstHost) {
  const auto object = adapter.create(first.host);
  EXPECT_EQ(adapter.create(second.host), object);
  EXPECT_EQ(adapter.get(), object);
  EXPECT_EQ(reachedBy(object), Lines{"first"});
}

TEST_P(Life, EndsWithShutdownForEverybodyElse) {
  adapter.create(first.host);
  adapter.shutdown();
  EXPECT_EQ(adapter.get(), nullptr);
}

TEST_P(Life, EndsTwiceAndWithoutBeginningWithoutHarm) {
  adapter.shutdown();
  adapter.create(first.host);
  adapter.shutdown();
  adapter.shutdown();
  EXPECT_EQ(adapter.get(), nullptr);
}

TEST_P(Life, GoesOnForAKeptPointerAndForNothingElse) {
  auto kept = adapter.create(first.host);
  const std::weak_ptr<void> object = kept;
  EXPECT_EQ(kept.use_count(), 2);
  adapter.shutdown();
  EXPECT_EQ(kept.use_count(), 1);
  kept.reset();
  EXPECT_TRUE(object.expired());
}

TEST_P(Life, BeginsAgainWithANewObjectAndItsOwnHost) {
  const auto kept = adapter.create(first.host);
  adapter.shutdown();
  const auto fresh = adapter.create(second.host);
  EXPECT_NE(fresh, kept);
  EXPECT_EQ(reachedBy(fresh), Lines{"second"});
  EXPECT_EQ(reachedBy(kept), Lines{"first"});
}

TEST_P(Life, TakesTheAllocationsThatTheTableTells) {
  const auto logger = VornDeviceAbstractionLayer::FileLogger::getInstance();
  const interposed::Blocks watch;
  auto object = adapter.create(first.host);
  EXPECT_EQ(watch.at(object.get()), adapter.oneBlock ? 0 : adapter.size);
  EXPECT_EQ(watch.live(), adapter.oneBlock ? 1U : 2U);
  adapter.shutdown();
  object.reset();
  EXPECT_EQ(watch.live(), 0U);
}

TEST_P(Life, DoesNotBeginWhenAnAllocationFails) {
  const auto logger = VornDeviceAbstractionLayer::FileLogger::getInstance();
  std::size_t failures = 0;
  for (bool created = false; !created;) {
    const interposed::Blocks watch;
    interposed::failAllocation(failures + 1);
    try {
      created = adapter.create(first.host) != nullptr;
    } catch (const std::bad_alloc&) {
      ++failures;
    }
    interposed::failAllocation(0);
    if (created) break;
    EXPECT_EQ(watch.live(), 0U);
    ASSERT_FALSE(isHeld(mutexOf(adapter.name)));
    EXPECT_EQ(adapter.get(), nullptr);
  }
  EXPECT_GE(failures, adapter.oneBlock ? 1U : 2U);
}

TEST_P(Life, HoldsNoLockInside) {
  adapter.create(first.host);
  EXPECT_FALSE(isHeld(mutexOf(adapter.name)));
  adapter.get();
  EXPECT_FALSE(isHeld(mutexOf(adapter.name)));
  adapter.shutdown();
  EXPECT_FALSE(isHeld(mutexOf(adapter.name)));
}

INSTANTIATE_TEST_SUITE_P(Adapters, Life, testing::ValuesIn(adapters()), adapterName);

class TracedLife : public Life {
 protected:
  TracedLife() {
    VornDeviceAbstractionLayer::FileLogger::Shutdown();
    VornDeviceAbstractionLayer::FileLogger::CreateInstance(true);
  }

  ~TracedLife() override { VornDeviceAbstractionLayer::FileLogger::Shutdown(); }

  /// The lines since it was last asked.
  static Lines lines() {
    const Lines all = trace_file::lines();
    std::filesystem::remove(trace_file::kPath);
    return all;
  }
};

TEST_P(TracedLife, LeavesTheLinesOfCreationAndOfConstructionOnce) {
  Lines both = adapter.createLines;
  both.insert(both.end(), adapter.constructLines.begin(), adapter.constructLines.end());
  adapter.create(first.host);
  EXPECT_EQ(lines(), both);
  adapter.create(first.host);
  EXPECT_EQ(lines(), adapter.createLines);
}

TEST_P(TracedLife, LeavesTheLinesOfAnObjectMadeOtherwise) {
  adapter.construct(first.host);
  EXPECT_EQ(lines(), adapter.constructLines);
}

TEST_P(TracedLife, LeavesTheLinesOfAFetchWithAndWithoutAnInstance) {
  adapter.get();
  EXPECT_EQ(lines(), adapter.getLines);
  adapter.create(first.host);
  lines();
  adapter.get();
  EXPECT_EQ(lines(), adapter.getLines);
}

TEST_P(TracedLife, LeavesNothingAtShutdown) {
  adapter.create(first.host);
  lines();
  adapter.shutdown();
  adapter.shutdown();
  EXPECT_EQ(lines(), Lines());
}

INSTANTIATE_TEST_SUITE_P(Adapters, TracedLife, testing::ValuesIn(adapters()), adapterName);

}  // namespace
