// App messages: two directions that never wait for each other, one line for each that leaves.

#include <VornAppMessaging.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

#include <algorithm>
#include <future>
#include <stdexcept>

#include "support/eventually.h"
#include "support/mutexes.h"
#include "support/trace_file.h"

namespace {

using namespace VornDeviceAbstractionLayer;
using trace_file::lines;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;
using Lines = std::vector<std::string>;

class AppMessages : public trace_file::Traced {
 protected:
  void SetUp() override {
    Traced::SetUp();
    messaging = VornAppMessaging::CreateInstance(host);
  }

  void TearDown() override {
    VornAppMessaging::Shutdown();
    Traced::TearDown();
  }

  Lines heard() const { return host.recorder->signatures(); }

  std::mutex& downMutex = operations::mutexOf("VornAppMessaging");
  std::mutex& upMutex = operations::mutexOf("VornAppMessaging", "m_dalMutex");
  vorn_testing::RecordingHost host;
  FakeAssistant assistant{host.recorder};
  std::shared_ptr<VornAppMessaging> messaging;
};

TEST_F(AppMessages, UpLeaveALineOfBareTextsAndCommas) {
  messaging->SendMessageToxApp("a", "b,c", "");
  EXPECT_EQ(lines(), Lines{"receiveAppMessage(a,b,c,)"});
  EXPECT_EQ(host.recorder->calls().at(0).arguments, (Lines{"a", "b,c", ""}));
}

TEST_F(AppMessages, UpAreWrittenUnescaped) {
  messaging->SendMessageToxApp("\"", "\\", "%s\t\xc3\xa4");
  EXPECT_EQ(lines(), Lines{"receiveAppMessage(\",\\,%s\t\xc3\xa4)"});
}

TEST_F(AppMessages, UpAnswerWhatTheAssistantAnswers) {
  EXPECT_TRUE(messaging->SendMessageToxApp("a", "b", "c"));
  assistant.answers->messageAccepted = false;
  EXPECT_FALSE(messaging->SendMessageToxApp("a", "b", "c"));
}

TEST_F(AppMessages, UpWithoutAnAssistantAreRefusedWithoutALine) {
  assistant.remove(FakeAssistant::kAppMessaging);
  EXPECT_FALSE(messaging->SendMessageToxApp("a", "b", "c"));
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(AppMessages, UpNeedNoInstance) {
  VornAppMessaging::Shutdown();
  EXPECT_TRUE(messaging->SendMessageToxApp("a", "b", "c"));
  EXPECT_EQ(lines(), Lines{"receiveAppMessage(a,b,c)"});
}

TEST_F(AppMessages, UpAreInTheTraceBeforeTheyAreDelivered) {
  Lines during;
  host.recorder->onCall([&](const Call&) { during = lines(); });
  messaging->SendMessageToxApp("a", "b", "c");
  EXPECT_EQ(during, Lines{"receiveAppMessage(a,b,c)"});
}

TEST_F(AppMessages, UpHoldTheirOwnLockDuringDelivery) {
  bool up = false, down = true;
  host.recorder->onCall([&](const Call&) {
    std::async(std::launch::async, [&] {
      up = operations::isHeld(upMutex);
      down = operations::isHeld(downMutex);
    }).wait();
  });
  messaging->SendMessageToxApp("a", "b", "c");
  EXPECT_TRUE(up);
  EXPECT_FALSE(down);
}

TEST_F(AppMessages, UpReleaseTheirLockWhenTheAssistantThrows) {
  host.recorder->onCall([](const Call&) { throw std::runtime_error("refused"); });
  EXPECT_THROW(messaging->SendMessageToxApp("a", "b", "c"), std::runtime_error);
  EXPECT_FALSE(operations::isHeld(upMutex));
  EXPECT_EQ(FakeAssistant::references(FakeAssistant::kAppMessaging), 0);
}

TEST_F(AppMessages, UpPassWhileAMessageDownIsHandled) {
  EXPECT_TRUE(passes(downMutex, [this] { messaging->SendMessageToxApp("a", "b", "c"); }));
}

TEST_F(AppMessages, DownPassWhileAMessageUpIsDelivered) {
  EXPECT_TRUE(passes(upMutex, [this] { messaging->sendAppMessage("a", "b", "c"); }));
  EXPECT_EQ(heard(), Lines{"sendAppMessage(a, b, c)"});
}

TEST_F(AppMessages, DownAreAlwaysAcceptedAndLeaveNoLine) {
  EXPECT_TRUE(messaging->sendAppMessage("", "", ""));
  VornAppMessaging::Shutdown();
  EXPECT_TRUE(messaging->sendAppMessage("a", "b", "c"));
  EXPECT_EQ(heard(), Lines{"sendAppMessage(, , )"});
  EXPECT_EQ(lines(), Lines{});
}

TEST_F(AppMessages, UpFromTheHandlerOfOneDownComplete) {
  bool answered = false;
  host.recorder->onCall([&](const Call& call) {
    if (call.operation == "sendAppMessage") answered = messaging->SendMessageToxApp("pong", "", "");
  });
  EXPECT_TRUE(messaging->sendAppMessage("ping", "", ""));
  EXPECT_TRUE(answered);
  EXPECT_EQ(heard(), (Lines{"sendAppMessage(ping, , )", "SendMessageToxApp(pong, , )"}));
}

TEST_F(AppMessages, UpFromEightThreadsAreDeliveredInTheOrderOfTheirLines) {
  std::vector<std::future<void>> senders;
  for (int sender = 0; sender < 8; ++sender)
    senders.push_back(std::async(std::launch::async, [this, sender] {
      for (int i = 0; i < 100; ++i)
        messaging->SendMessageToxApp(std::to_string(sender), std::to_string(i), "text");
    }));
  for (auto& sender : senders) sender.get();

  Lines delivered;
  for (const Call& call : host.recorder->calls())
    delivered.push_back("receiveAppMessage(" + call.arguments[0] + "," + call.arguments[1] + ",text)");
  EXPECT_EQ(delivered.size(), 800U);
  EXPECT_EQ(lines(), delivered);
}

TEST_F(AppMessages, DownFromEightThreadsReachTheHostOneAtATime) {
  int inside = 0, most = 0;
  host.recorder->onCall([&](const Call&) {
    most = std::max(most, ++inside);
    std::this_thread::yield();
    --inside;
  });
  std::vector<std::future<void>> senders;
  for (int sender = 0; sender < 8; ++sender)
    senders.push_back(std::async(std::launch::async, [this] {
      for (int i = 0; i < 100; ++i) messaging->sendAppMessage("a", "b", "c");
    }));
  for (auto& sender : senders) sender.get();
  EXPECT_EQ(most, 1);
  EXPECT_EQ(host.recorder->calls().size(), 800U);
}

}  // namespace
