// The lock rule of each operation, with the other side held up inside it.

#include <condition_variable>
#include <thread>

#include "support/eventually.h"
#include "support/interposed.h"
#include "support/mutexes.h"
#include "support/operation_test.h"

namespace {

using namespace operations;
using vorn_testing::Call;

/// A thread that runs one thing.
class Runner {
 public:
  explicit Runner(std::function<void()> work)
      : m_thread([this, work] {
          work();
          m_done = true;
        }) {}
  ~Runner() { m_thread.join(); }

  bool done() const { return m_done; }

 private:
  std::atomic<bool> m_done{false};
  std::thread m_thread;
};

class HeldUp : public OperationTest {
 protected:
  ~HeldUp() override { letGo(); }

  /// Runs the operation on a thread of its own, once per test, until the other side is held up in it.
  void holdUp(const Row& operation) {
    recorder->onCall([this, &operation](const Call& call) {
      if (call.target != operation.target || call.slot != operation.slot || m_inside.exchange(true)) return;
      std::unique_lock<std::mutex> lock(m_gate);
      m_opened.wait_for(lock, std::chrono::seconds(60), [this] { return m_open; });
    });
    m_runner = std::make_unique<Runner>([this, &operation] { operation.call(object.get()); });
    ASSERT_TRUE(eventually([this] { return m_inside.load(); }));
  }

  void letGo() {
    {
      const std::lock_guard<std::mutex> lock(m_gate);
      m_open = true;
    }
    m_opened.notify_all();
    m_runner.reset();
  }

  /// Whether the work ends although the other side is held up. If not, it is let go.
  bool ends(std::function<void()> work) {
    const Runner runner(std::move(work));
    const bool ended = eventually([&] { return runner.done(); });
    if (!ended) letGo();
    return ended;
  }

  const Adapter& adapter = *row.adapter;
  const std::shared_ptr<void> object = adapter.create(firmware.host);

 private:
  std::mutex m_gate;
  std::condition_variable m_opened;
  bool m_open = false;
  std::atomic<bool> m_inside{false};
  std::unique_ptr<Runner> m_runner;
};

std::vector<Row> guarded(bool locked) {
  std::vector<Row> some;
  for (const Row& row : rows())
    if (row.locked() == locked) some.push_back(row);
  return some;
}

using EveryOperation = HeldUp;

TEST_P(EveryOperation, HoldsTheLockOfTheTableAndNoOther) {
  ASSERT_NO_FATAL_FAILURE(holdUp(row));
  EXPECT_EQ(isHeld(mutexOf(adapter.name)), row.guard == Guard::kMutex);
  if (adapter.name == "VornAppMessaging") {
    EXPECT_EQ(isHeld(mutexOf(adapter.name, "m_dalMutex")), row.guard == Guard::kDalMutex);
  }
  for (const Adapter& other : adapters())
    if (other.name != adapter.name) {
      EXPECT_FALSE(isHeld(mutexOf(other.name))) << other.name;
    }
  EXPECT_FALSE(isHeld(mutexOf("FileLogger")));
}

INSTANTIATE_TEST_SUITE_P(Table, EveryOperation, testing::ValuesIn(rows()), nameOf);

class LockedOperation : public HeldUp {
 protected:
  /// Starts each work and returns whether all of them stand before the mutex.
  bool allWait(std::mutex& mutex, const std::vector<std::function<void()>>& works) {
    interposed::watch(mutex);
    for (const auto& work : works) m_waiting.push_back(std::make_unique<Runner>(work));
    const int all = static_cast<int>(works.size());
    return eventually([all] { return interposed::waiting() == all; });
  }

 private:
  struct LettingGo {
    LockedOperation& test;
    ~LettingGo() { test.letGo(); }
  };

  std::vector<std::unique_ptr<Runner>> m_waiting;  // Joined last,
  const LettingGo m_lettingGo{*this};              // after this.
};

TEST_P(LockedOperation, KeepsTheOthersOfItsMutexOut) {
  ASSERT_NO_FATAL_FAILURE(holdUp(row));
  std::vector<std::function<void()>> works;
  for (const Row& other : rows())
    if (other.adapter == row.adapter && other.guard == row.guard)
      works.push_back([this, &other] { other.call(object.get()); });
  if (row.guard == Guard::kMutex) {
    works.push_back([this] { adapter.create(firmware.host); });
    works.push_back([this] { adapter.get(); });
    works.push_back([this] { adapter.shutdown(); });
  }
  const std::string mutex = row.guard == Guard::kMutex ? "m_mutex" : "m_dalMutex";
  EXPECT_TRUE(allWait(mutexOf(adapter.name, mutex), works));
  EXPECT_EQ(recorder->calls().size(), 1U);
}

TEST_P(LockedOperation, LetsEverythingElseOfItsAdapterPass) {
  ASSERT_NO_FATAL_FAILURE(holdUp(row));
  for (const Row& other : rows())
    if (other.adapter == row.adapter && other.guard != row.guard) {
      EXPECT_TRUE(ends([&] { EXPECT_EQ(other.call(object.get()), other.answer); })) << other.name();
    }
}

INSTANTIATE_TEST_SUITE_P(Table, LockedOperation, testing::ValuesIn(guarded(true)), nameOf);

using UnlockedOperation = HeldUp;

TEST_P(UnlockedOperation, LetsEverythingPass) {
  ASSERT_NO_FATAL_FAILURE(holdUp(row));
  EXPECT_TRUE(ends([&] { EXPECT_EQ(row.call(object.get()), row.answer); }));
  for (const Row& other : guarded(true))
    if (other.adapter == row.adapter) {
      EXPECT_TRUE(ends([&] { other.call(object.get()); })) << other.name();
    }
  EXPECT_TRUE(ends([&] {
    EXPECT_EQ(adapter.create(firmware.host), object);
    EXPECT_EQ(adapter.get(), object);
    adapter.shutdown();
  }));
}

INSTANTIATE_TEST_SUITE_P(Table, UnlockedOperation, testing::ValuesIn(guarded(false)), nameOf);

class Lifecycle : public testing::TestWithParam<Adapter> {};

TEST_P(Lifecycle, WaitsForTheLockInEachOfItsThreeOperations) {
  const Adapter& adapter = GetParam();
  Firmware firmware;
  std::mutex& mutex = mutexOf(adapter.name);
  interposed::watch(mutex);
  std::unique_lock<std::mutex> lock(mutex);
  const Runner create([&] { adapter.create(firmware.host); });
  const Runner get([&] { adapter.get(); });
  const Runner shutdown([&] { adapter.shutdown(); });
  EXPECT_TRUE(eventually([] { return interposed::waiting() == 3; }));
  lock.unlock();
  EXPECT_TRUE(eventually([&] { return create.done() && get.done() && shutdown.done(); }));
  adapter.shutdown();
}

INSTANTIATE_TEST_SUITE_P(Adapters, Lifecycle, testing::ValuesIn(adapters()), adapterName);

}  // namespace
