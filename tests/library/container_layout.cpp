// Where a container keeps what, what it allocates, and in which order its callbacks die.

#include <VornAttachmentReaderContainerFactory.h>
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <stdexcept>
#include <vector>

#include "support/interposed.h"

namespace {

using namespace VornDeviceAbstractionLayer;
using Impl = VornAttachmentReaderContainerInterfaceImpl;

std::shared_ptr<Impl> make(std::function<void(std::string)> onClose = nullptr) {
  return VornAttachmentReaderContainerFactory::getInstance()->createAttachmentReaderContainer(onClose);
}

/// Runs what it was made with when the last copy of it dies.
std::shared_ptr<void> uponDeath(std::function<void()> action) {
  return {nullptr, [action](void*) { action(); }};
}

constexpr std::size_t kOnClose = 8, kOnData = 40,
                      kOnEndOfStream = 72;  // Behind the table's address, in a row.

/// Whether the function at this offset is set: its third word manages what it holds, null for nothing.
bool isSet(const Impl& container, std::size_t offset) {
  std::uintptr_t manager;
  std::memcpy(&manager, reinterpret_cast<const char*>(&container) + offset + 16, sizeof manager);
  return manager != 0;
}

TEST(ContainerLayout, IsATableAndThreeFunctions) {
  if (sizeof(void*) != 8) GTEST_SKIP() << "the layout is fixed for 64-bit devices; this is not one";
  EXPECT_EQ(sizeof(Impl), 104U);
  EXPECT_EQ(sizeof(DeviceAbstractionLayer::AttachmentReaderContainerInterface), 40U);
  EXPECT_EQ(sizeof(std::function<void()>), 32U);
}

TEST(ContainerLayout, KeepsTheCreatorsCallbackInTheBase) {
  Impl container([](std::string) {});
  EXPECT_TRUE(isSet(container, kOnClose));
  EXPECT_FALSE(isSet(container, kOnData));
  EXPECT_FALSE(isSet(container, kOnEndOfStream));
}

TEST(ContainerLayout, KeepsTheDataCallbackNext) {
  Impl container(nullptr);
  container.Subscribe([](void*, std::size_t) {}, nullptr);
  EXPECT_FALSE(isSet(container, kOnClose));
  EXPECT_TRUE(isSet(container, kOnData));
  EXPECT_FALSE(isSet(container, kOnEndOfStream));
}

TEST(ContainerLayout, KeepsTheEndOfStreamCallbackLast) {
  Impl container(nullptr);
  container.Subscribe(nullptr, [] {});
  EXPECT_FALSE(isSet(container, kOnData));
  EXPECT_TRUE(isSet(container, kOnEndOfStream));
}

TEST(ContainerLayout, KeepsOnlyTheBaseWhenTheSubscriptionEnds) {
  Impl container([](std::string) {});
  container.Subscribe([](void*, std::size_t) {}, [] {});
  container.Unsubscribe();
  EXPECT_TRUE(isSet(container, kOnClose));
  EXPECT_FALSE(isSet(container, kOnData));
  EXPECT_FALSE(isSet(container, kOnEndOfStream));
}

TEST(ContainerCosts, AreOneAllocationForContainerAndCount) {
  const auto factory = VornAttachmentReaderContainerFactory::getInstance();
  const interposed::Counts before = interposed::counts();
  const auto container = factory->createAttachmentReaderContainer(nullptr);
  EXPECT_EQ((interposed::counts() - before).allocations, 1U);
}

TEST(ContainerCosts, AreNothingOnTheDataPath) {
  const auto container = make();
  std::size_t total = 0;
  container->Subscribe([&total](void*, std::size_t size) { total += size; }, [] {});
  const interposed::Counts before = interposed::counts();
  for (int block = 0; block < 100; ++block) container->sendData(nullptr, 10);
  container->notifyEndOfStream();
  EXPECT_TRUE(interposed::counts() - before == interposed::Counts{});
  EXPECT_EQ(total, 1000U);
}

TEST(ContainerCosts, LeaveNothingBehindWhenMemoryEnds) {
  const auto alive = std::make_shared<int>();
  const auto factory = VornAttachmentReaderContainerFactory::getInstance();
  std::function<void(std::string)> onClose = [alive](std::string) {};
  interposed::failAllocation(1);
  EXPECT_THROW(factory->createAttachmentReaderContainer(onClose), std::bad_alloc);
  interposed::failAllocation(0);
  onClose = nullptr;
  EXPECT_EQ(alive.use_count(), 1);
}

class ContainerDeaths : public testing::Test {
 protected:
  void noteDeaths(Impl& of, const std::string& suffix = "") {
    const auto data = note("data" + suffix);
    const auto end = note("end" + suffix);
    of.Subscribe([data](void*, std::size_t) {}, [end] {});
  }

  std::shared_ptr<void> note(const std::string& name) {
    return uponDeath([this, name] { deaths.push_back(name); });
  }

  std::vector<std::string> deaths;
};

TEST_F(ContainerDeaths, GoFromTheLastFieldToTheBase) {
  auto mark = note("close");
  auto container = make([mark](std::string) {});
  mark.reset();
  noteDeaths(*container);
  EXPECT_TRUE(deaths.empty());
  container.reset();
  EXPECT_EQ(deaths, (std::vector<std::string>{"end", "data", "close"}));
}

TEST_F(ContainerDeaths, HappenAtTheEndOfASubscription) {
  const auto container = make();
  noteDeaths(*container);
  container->Unsubscribe();
  EXPECT_EQ(deaths.size(), 2U);
}

TEST_F(ContainerDeaths, OfTheFormerSubscriberAreDataFirst) {
  const auto container = make();
  noteDeaths(*container, " of the first");
  noteDeaths(*container, " of the second");
  EXPECT_EQ(deaths, (std::vector<std::string>{"data of the first", "end of the first"}));
}

TEST_F(ContainerDeaths, FindTheSuccessorInPlace) {
  const auto container = make();
  std::vector<std::string> heard;
  const auto use = [&heard, container = container.get()](const std::string& death) {
    heard.push_back(death);
    container->sendData(nullptr, 0);
    container->notifyEndOfStream();
  };
  {
    const auto data = uponDeath([use] { use("old data dies"); });
    const auto end = uponDeath([use] { use("old end dies"); });
    container->Subscribe([data](void*, std::size_t) {}, [end, &heard] { heard.push_back("old end"); });
  }
  container->Subscribe([&heard](void*, std::size_t) { heard.push_back("new data"); },
                       [&heard] { heard.push_back("new end"); });
  EXPECT_EQ(heard, (std::vector<std::string>{"old data dies", "new data", "old end",  //
                                             "old end dies", "new data", "new end"}));
}

/// A callback that cannot be copied once `refuse` is set.
struct Uncopyable {
  explicit Uncopyable(const bool& refuse) : m_refuse(&refuse) {}
  Uncopyable(const Uncopyable& other) : m_refuse(other.m_refuse) {
    if (*m_refuse) throw std::runtime_error("no copy");
  }
  void operator()(void*, std::size_t) const {}
  void operator()() const {}
  const bool* m_refuse;
};

TEST(ContainerSubscription, StaysWithTheOldDataCallbackWhenTheNewOneCannotBeCopied) {
  const auto container = make();
  int old = 0;
  bool refuse = false;
  container->Subscribe([&old](void*, std::size_t) { ++old; }, [&old] { ++old; });
  std::function<void(void*, std::size_t)> onData = Uncopyable(refuse);
  refuse = true;
  EXPECT_THROW(container->Subscribe(std::move(onData), nullptr), std::runtime_error);
  container->sendData(nullptr, 0);
  container->notifyEndOfStream();
  EXPECT_EQ(old, 2);
}

TEST(ContainerSubscription, HasTheNewDataCallbackWhenTheNewEndCannotBeCopied) {
  const auto container = make();
  std::vector<std::string> heard;
  bool refuse = false;
  container->Subscribe(nullptr, [&heard] { heard.push_back("old end"); });
  std::function<void()> onEnd = Uncopyable(refuse);
  refuse = true;
  EXPECT_THROW(
      container->Subscribe([&heard](void*, std::size_t) { heard.push_back("new data"); }, std::move(onEnd)),
      std::runtime_error);
  container->sendData(nullptr, 0);
  container->notifyEndOfStream();
  EXPECT_EQ(heard, (std::vector<std::string>{"new data", "old end"}));
}

}  // namespace
