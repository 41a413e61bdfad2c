// Attachment containers: what reaches the subscriber, what is dropped, what stays.

#include <VornAttachmentReaderContainerFactory.h>
#include <gtest/gtest.h>

#include <future>
#include <limits>
#include <set>
#include <stdexcept>
#include <vector>

#include "support/interposed.h"

namespace {

using namespace VornDeviceAbstractionLayer;
using Container = std::shared_ptr<VornAttachmentReaderContainerInterfaceImpl>;

Container make(std::function<void(std::string)> onClose = nullptr) {
  return VornAttachmentReaderContainerFactory::getInstance()->createAttachmentReaderContainer(onClose);
}

class AttachmentContainer : public testing::Test {
 protected:
  /// Subscribes with callbacks that note `name` and what they are given.
  void subscribe(const std::string& name) {
    container->Subscribe(
        [this, name](void* data, std::size_t size) {
          heard.push_back(name + " " + std::to_string(size));
          lastData = data;
        },
        [this, name] { heard.push_back(name + " end"); });
  }

  std::vector<std::string> heard;
  void* lastData = nullptr;
  Container container = make([this](std::string reason) { heard.push_back("closed " + reason); });
  char block[16] = {};
};

TEST_F(AttachmentContainer, DropsEverythingBeforeASubscription) {
  container->sendData(block, sizeof block);
  container->notifyEndOfStream();
  subscribe("late");
  EXPECT_TRUE(heard.empty());
}

TEST_F(AttachmentContainer, HandsEachBlockAndTheEndToTheSubscriber) {
  subscribe("a");
  container->sendData(block, sizeof block);
  container->notifyEndOfStream();
  EXPECT_EQ(heard, (std::vector<std::string>{"a 16", "a end"}));
  EXPECT_EQ(lastData, block);
}

TEST_F(AttachmentContainer, HandsOnBlocksThatItCouldNeverRead) {
  subscribe("a");
  container->sendData(nullptr, std::numeric_limits<std::size_t>::max());
  EXPECT_EQ(heard, std::vector<std::string>{"a 18446744073709551615"});
  EXPECT_EQ(lastData, nullptr);
  container->sendData(block, 0);
  EXPECT_EQ(heard.back(), "a 0");
}

TEST_F(AttachmentContainer, HandsOnDataAfterTheEnd) {
  subscribe("a");
  container->notifyEndOfStream();
  container->sendData(block, 1);
  container->notifyEndOfStream();
  EXPECT_EQ(heard, (std::vector<std::string>{"a end", "a 1", "a end"}));
}

TEST_F(AttachmentContainer, HasOneSubscriberTheLast) {
  subscribe("a");
  subscribe("b");
  container->sendData(block, 2);
  container->notifyEndOfStream();
  EXPECT_EQ(heard, (std::vector<std::string>{"b 2", "b end"}));
}

TEST_F(AttachmentContainer, DropsEverythingAfterTheSubscriptionEnds) {
  subscribe("a");
  container->Unsubscribe();
  container->sendData(block, 2);
  container->notifyEndOfStream();
  EXPECT_TRUE(heard.empty());
}

TEST_F(AttachmentContainer, CanBeSubscribedAgain) {
  subscribe("a");
  container->Unsubscribe();
  container->Unsubscribe();
  subscribe("b");
  container->sendData(block, 3);
  EXPECT_EQ(heard, std::vector<std::string>{"b 3"});
}

TEST_F(AttachmentContainer, DropsWhatASubscriberDoesNotWant) {
  container->Subscribe(nullptr, [this] { heard.push_back("end"); });
  container->sendData(block, 1);
  container->notifyEndOfStream();
  EXPECT_EQ(heard, std::vector<std::string>{"end"});
  container->Subscribe([this](void*, std::size_t) { heard.push_back("data"); }, nullptr);
  container->notifyEndOfStream();
  container->sendData(block, 1);
  EXPECT_EQ(heard, (std::vector<std::string>{"end", "data"}));
}

TEST_F(AttachmentContainer, NeverCallsTheCallbackOfItsCreator) {
  subscribe("a");
  container->notifyEndOfStream();
  container->Unsubscribe();
  container.reset();
  EXPECT_EQ(heard, std::vector<std::string>{"a end"});
}

TEST_F(AttachmentContainer, GivesTheCallbackOfItsCreatorToWhoeverAsks) {
  subscribe("a");
  container->Unsubscribe();
  const auto onClose = container->GetOnCloseCallbackFunction();
  container.reset();
  onClose("done");
  EXPECT_EQ(heard, std::vector<std::string>{"closed done"});
}

TEST_F(AttachmentContainer, GivesAnEmptyCallbackWhenMadeWithOne) {
  EXPECT_FALSE(make()->GetOnCloseCallbackFunction());
}

TEST_F(AttachmentContainer, LetsExceptionsOfItsSubscriberPassAndStaysSubscribed) {
  container->Subscribe([](void*, std::size_t) { throw std::runtime_error("data"); },
                       [] { throw std::logic_error("end"); });
  for (int time = 0; time < 2; ++time) {
    EXPECT_THROW(container->sendData(block, 1), std::runtime_error);
    EXPECT_THROW(container->notifyEndOfStream(), std::logic_error);
  }
}

TEST_F(AttachmentContainer, IsReachedThroughItsBase) {
  subscribe("a");
  const std::shared_ptr<DeviceAbstractionLayer::AttachmentReaderContainerInterface> base = container;
  base->sendData(block, 4);
  base->notifyEndOfStream();
  EXPECT_EQ(heard, (std::vector<std::string>{"a 4", "a end"}));
}

TEST_F(AttachmentContainer, IsWhollyDestroyedThroughItsBase) {
  const auto alive = std::make_shared<int>();
  const DeviceAbstractionLayer::AttachmentReaderContainerInterface* const base =
      new VornAttachmentReaderContainerInterfaceImpl([alive](std::string) {});
  EXPECT_EQ(alive.use_count(), 2);
  delete base;
  EXPECT_EQ(alive.use_count(), 1);
}

TEST_F(AttachmentContainer, BelongsToItsHoldersOnly) { EXPECT_EQ(container.use_count(), 1); }

class AttachmentFactory : public AttachmentContainer {};

TEST_F(AttachmentFactory, IsAlwaysTheSame) {
  const auto first = VornAttachmentReaderContainerFactory::getInstance();
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(VornAttachmentReaderContainerFactory::getInstance(), first);
  EXPECT_EQ(sizeof(VornAttachmentReaderContainerFactory), 1U);
}

TEST_F(AttachmentFactory, IsTheSameForAllThreads) {
  std::vector<std::future<std::shared_ptr<VornAttachmentReaderContainerFactory>>> found;
  for (int thread = 0; thread < 8; ++thread)
    found.push_back(std::async(std::launch::async, VornAttachmentReaderContainerFactory::getInstance));
  std::set<VornAttachmentReaderContainerFactory*> different;
  for (auto& one : found) different.insert(one.get().get());
  EXPECT_EQ(different.size(), 1U);
}

TEST_F(AttachmentFactory, MakesIndependentContainers) {
  const Container other = make();
  EXPECT_NE(other, container);
  subscribe("a");
  other->sendData(block, 1);
  EXPECT_TRUE(heard.empty());
}

TEST_F(AttachmentFactory, MakesContainersWithoutItsLock) {
  const auto factory = VornAttachmentReaderContainerFactory::getInstance();
  const interposed::Counts before = interposed::counts();
  const Container made = factory->createAttachmentReaderContainer(nullptr);
  EXPECT_EQ((interposed::counts() - before).locks, 0U);
}

}  // namespace
