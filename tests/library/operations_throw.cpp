// What the other side throws reaches the caller, and nothing stays behind.

#include <thread>

#include "support/mutexes.h"
#include "support/operation_test.h"

namespace {

using namespace operations;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;

struct Refusal : std::runtime_error {
  explicit Refusal(const void* from) : runtime_error("refused"), origin(from) {}
  const void* origin;
};

class ThrowingOperations : public OperationTest {
 protected:
  /// Makes the `nth` call of the other sides end by `thrown`.
  template <class Thrown>
  void failAt(std::size_t nth, Thrown thrown) {
    recorder->clear();
    recorder->onCall([this, nth, thrown](const Call&) {
      if (recorder->calls().size() == nth) throw thrown;
    });
  }

  const std::shared_ptr<void> object = row.adapter->create(firmware.host);
  /// How many calls of the other sides one call makes.
  const std::size_t steps = row.reaches({}, true, true).size();
};

TEST_P(ThrowingOperations, PassAStandardExceptionAsItIs) {
  for (std::size_t nth = 1; nth <= steps; ++nth) {
    failAt(nth, Refusal(this));
    try {
      row.call(object.get());
      ADD_FAILURE() << "returned";
    } catch (const Refusal& refusal) {
      EXPECT_EQ(refusal.origin, this);
    }
    EXPECT_EQ(recorder->calls().size(), nth);
  }
}

TEST_P(ThrowingOperations, PassAThrownNumberAsItIs) {
  for (std::size_t nth = 1; nth <= steps; ++nth) {
    failAt(nth, 42);
    try {
      row.call(object.get());
      ADD_FAILURE() << "returned";
    } catch (int number) {
      EXPECT_EQ(number, 42);
    }
  }
}

TEST_P(ThrowingOperations, LeaveEveryLockFree) {
  for (std::size_t nth = 1; nth <= steps; ++nth) {
    failAt(nth, 42);
    EXPECT_THROW(row.call(object.get()), int);
    ASSERT_FALSE(isHeld(mutexOf(row.adapter->name)));
    if (row.guard == Guard::kDalMutex) {
      ASSERT_FALSE(isHeld(mutexOf(row.adapter->name, "m_dalMutex")));
    }
  }
  std::thread([this] {
    EXPECT_EQ(row.adapter->get(), object);
    row.adapter->shutdown();
  }).join();
  EXPECT_EQ(row.adapter->get(), nullptr);
}

TEST_P(ThrowingOperations, WorkAgainAfterwards) {
  failAt(1, 42);
  EXPECT_THROW(row.call(object.get()), int);
  recorder->onCall(nullptr);
  EXPECT_EQ(row.call(object.get()), row.answer);
}

TEST_P(ThrowingOperations, LetGoOfTheAssistantSide) {
  const auto held = [] {
    long count = 0;
    for (int area = 0; area < FakeAssistant::kAreas; ++area)
      count += FakeAssistant::references(static_cast<FakeAssistant::Area>(area));
    return count;
  };
  row.call(object.get());  // What the audio path keeps, it keeps from here on.
  const long before = held();
  failAt(1, 42);
  EXPECT_THROW(row.call(object.get()), int);
  EXPECT_EQ(held(), before);
}

INSTANTIATE_TEST_SUITE_P(Table, ThrowingOperations, testing::ValuesIn(rows()), nameOf);

}  // namespace
