// Which lock is held while a line is written. A pipe in place of the trace file stops the writer for as long
// as nobody reads: what it holds then can be looked at in peace.

#include <VornAppMessaging.h>
#include <VornCommsManager.h>
#include <VornDeviceCapabilities.h>
#include <VornEMPAdapterControl.h>
#include <VornMediaPlayerFactory.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

#include <deque>
#include <future>

#include "support/eventually.h"
#include "support/interposed.h"
#include "support/mutexes.h"
#include "support/trace_file.h"

namespace {

using namespace VornDeviceAbstractionLayer;
using operations::isHeld;
using operations::mutexOf;

class LockWhileTracing : public trace_file::Traced {
 protected:
  void SetUp() override {
    Traced::SetUp();
    VornEMPAdapterControl::Shutdown();
    VornDeviceCapabilities::Shutdown();
  }

  void TearDown() override {
    letPass();
    for (auto& one : running) one.wait();
    if (reader >= 0) close(reader);
    VornAppMessaging::Shutdown();
    VornCommsManager::Shutdown();
    VornDeviceCapabilities::Shutdown();
    VornEMPAdapterControl::Shutdown();
    VornMediaPlayerFactory::Shutdown();
    Traced::TearDown();
  }

  /// From now on a writer stops when it opens the trace.
  static void stopWriters() {
    forget();
    ASSERT_EQ(mkfifo(trace_file::kPath, 0600), 0);
  }

  /// Lets the stopped writer and all after it pass.
  void letPass() {
    if (reader < 0) reader = open(trace_file::kPath, O_RDWR | O_NONBLOCK);
  }

  template <class Action>
  std::future<void>& start(Action action) {
    running.push_back(std::async(std::launch::async, action));
    return running.back();
  }

  /// Whether a thread has come to the trace: from there on only a reader moves it.
  bool writerCame() {
    return eventually([this] { return isHeld(logger); });
  }

  std::mutex& logger = mutexOf("FileLogger");
  vorn_testing::RecordingHost host;
  std::deque<std::future<void>> running;
  int reader = -1;
};

TEST_F(LockWhileTracing, IsTheLoggersOwn) {
  const auto trace = FileLogger::getInstance();
  stopWriters();
  auto& writing = start([trace] { trace->logMessage("line"); });
  ASSERT_TRUE(writerCame());
  interposed::watch(logger);
  start([] { FileLogger::getInstance(); });
  EXPECT_TRUE(eventually([] { return interposed::waiting() == 1; }));
  letPass();
  writing.wait();
  EXPECT_TRUE(eventually([this] { return !isHeld(logger); }));
}

TEST_F(LockWhileTracing, IsNoneForALoggerThatIsSwitchedOff) {
  const auto trace = FileLogger::getInstance();
  FileLogger off(false);
  stopWriters();
  start([trace] { trace->logMessage("line"); });
  ASSERT_TRUE(writerCame());
  off.logMessage("passes the one that waits");
}

TEST_F(LockWhileTracing, IsTheClassesOwnWhenCapabilitiesAreCreated) {
  std::mutex& mutex = mutexOf("VornDeviceCapabilities");
  stopWriters();
  start([this] { VornDeviceCapabilities::CreateInstance(host); });
  ASSERT_TRUE(writerCame());
  EXPECT_TRUE(isHeld(mutex));
  interposed::watch(mutex);
  auto& shutdown = start([] { VornDeviceCapabilities::Shutdown(); });
  EXPECT_TRUE(eventually([] { return interposed::waiting() == 1; }));
  letPass();
  shutdown.wait();
  EXPECT_FALSE(isHeld(mutex));
}

TEST_F(LockWhileTracing, IsTheClassesOwnWhenCapabilitiesAreCreatedAgain) {
  VornDeviceCapabilities::CreateInstance(host);
  stopWriters();
  start([this] { VornDeviceCapabilities::CreateInstance(host); });
  ASSERT_TRUE(writerCame());
  EXPECT_TRUE(isHeld(mutexOf("VornDeviceCapabilities")));
}

TEST_F(LockWhileTracing, IsNoneWhenAVolumeIsSet) {
  const auto capabilities = VornDeviceCapabilities::CreateInstance(host);
  stopWriters();
  start([capabilities] { capabilities->onSetVolume(1); });
  ASSERT_TRUE(writerCame());
  EXPECT_FALSE(isHeld(mutexOf("VornDeviceCapabilities")));
}

TEST_F(LockWhileTracing, IsNoneWhenTheExternalPlayerIsFetched) {
  stopWriters();
  start([] { VornEMPAdapterControl::getInstance(); });
  ASSERT_TRUE(writerCame());
  EXPECT_FALSE(isHeld(mutexOf("VornEMPAdapterControl")));
}

TEST_F(LockWhileTracing, IsNoneWhenACommandIsGiven) {
  const auto control = VornEMPAdapterControl::CreateInstance(host);
  stopWriters();
  start([control] { control->pause("kitchen"); });
  ASSERT_TRUE(writerCame());
  EXPECT_FALSE(isHeld(mutexOf("VornEMPAdapterControl")));
}

TEST_F(LockWhileTracing, IsNoneWhenTheExternalPlayersCreationBeginsAndItsOwnWhenTheObjectIsMade) {
  std::mutex& mutex = mutexOf("VornEMPAdapterControl");
  mutex.lock();
  start([this] { VornEMPAdapterControl::CreateInstance(host); });
  EXPECT_TRUE(eventually([] { return !trace_file::bytes().empty(); }));  // Although the lock is taken.
  EXPECT_TRUE(eventually([this] { return !isHeld(logger); }));
  EXPECT_EQ(trace_file::lines().size(), 1U);
  stopWriters();
  mutex.unlock();
  ASSERT_TRUE(writerCame());
  EXPECT_TRUE(isHeld(mutex));
}

TEST_F(LockWhileTracing, IsTheClassesOwnWhenACallStateArrives) {
  const auto comms = VornCommsManager::CreateInstance(host);
  stopWriters();
  start([comms] { comms->onCommsStateChanged({}); });
  ASSERT_TRUE(writerCame());
  EXPECT_TRUE(isHeld(mutexOf("VornCommsManager")));
  EXPECT_TRUE(host.recorder->calls().empty());
}

TEST_F(LockWhileTracing, IsNoneWhenACallActionLeaves) {
  vorn_testing::FakeAssistant assistant;
  const auto comms = VornCommsManager::CreateInstance(host);
  stopWriters();
  auto& action = start([comms] { comms->notifyCallAction({}); });
  ASSERT_TRUE(writerCame());
  EXPECT_FALSE(isHeld(mutexOf("VornCommsManager")));
  letPass();
  action.wait();
}

TEST_F(LockWhileTracing, IsTheUpwardOneWhenAMessageLeavesAndMessagesStillArrive) {
  vorn_testing::FakeAssistant assistant;
  const auto messaging = VornAppMessaging::CreateInstance(host);
  stopWriters();
  auto& up = start([messaging] { messaging->SendMessageToxApp("a", "b", "c"); });
  ASSERT_TRUE(writerCame());
  EXPECT_TRUE(isHeld(mutexOf("VornAppMessaging", "m_dalMutex")));
  EXPECT_FALSE(isHeld(mutexOf("VornAppMessaging")));
  messaging->sendAppMessage("x", "y", "z");
  EXPECT_EQ(host.recorder->count("sendAppMessage"), 1U);
  letPass();
  up.wait();
}

TEST_F(LockWhileTracing, IsTheClassesOwnWhenAPlayerIsAskedFor) {
  std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>> none;
  VornMediaPlayerFactory::CreateInstance(none);
  const auto factory = VornMediaPlayerFactory::getInstance();
  stopWriters();
  auto& request = start([factory] { factory->createDalMediaPlayer(nullptr, true, "any", true); });
  ASSERT_TRUE(writerCame());
  EXPECT_TRUE(isHeld(mutexOf("VornMediaPlayerFactory")));
  letPass();
  request.wait();
}

TEST_F(LockWhileTracing, IsTheClassesOwnWhenThePlayersTableIsBound) {
  std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>> none;
  stopWriters();
  auto& creation = start([&none] { VornMediaPlayerFactory::CreateInstance(none); });
  ASSERT_TRUE(writerCame());
  EXPECT_TRUE(isHeld(mutexOf("VornMediaPlayerFactory")));
  letPass();
  creation.wait();
}

}  // namespace
