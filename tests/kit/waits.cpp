// Threads that wait for each other, and what the doctor says of them.

#include <VornAppMessaging.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <unistd.h>
#include <vorn_testing/FakeAssistant.h>

#include <csignal>
#include <filesystem>
#include <iterator>
#include <regex>
#include <thread>

#include "waiting.h"

using namespace VornDeviceAbstractionLayer;

namespace {

/// What a wait is called whose end nobody can bring: the system tells what threads wait for, except where these runtimes
/// have threads of their own.
#if defined(VORN_EMULATED) || defined(__SANITIZE_THREAD__)
constexpr Finding::Rule kWithoutEnd = Finding::kLongWait;
#else
constexpr Finding::Rule kWithoutEnd = Finding::kLockOrder;
#endif

class AHostsOwnMutex : public TwoThreads {
 protected:
  /// One thread clears a card with the host's mutex in its hand, another renders one, which takes that mutex.
  void meet(const std::function<void()>& holdsOwn, const std::function<void()>& holdsAdapter) {
    const auto gui = VornGUIOutput::CreateInstance(doctor);
    behind.recorder->onCall([&](const vorn_testing::Call& call) {
      if (call.operation != "renderGUICard") return;
      holdsAdapter();
      const std::lock_guard<std::mutex> lock(own);
    });
    auto notifying = std::async(std::launch::async, [&] {
      const std::lock_guard<std::mutex> lock(own);
      holdsOwn();
      return refused([&] { gui->clearGUICard(); });
    });
    asked = refused([&] { gui->renderGUICard(""); });
    called = notifying.get();
    VornGUIOutput::Shutdown();
  }

  std::mutex own;
  int asked = 0, called = 0;
};

TEST_F(AHostsOwnMutex, IsSeenInACircleWithAnAdapters) {
  Event ownHeld, adapterHeld;
  meet([&] { ownHeld.set_value(), wait(adapterHeld); }, [&] { adapterHeld.set_value(), wait(ownHeld); });
  EXPECT_EQ(called, 1) << "the call of the adapter is the one to refuse";
  EXPECT_EQ(asked, 0);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kLockOrder);
  EXPECT_EQ(
      findings[0].message.find("VornGUIOutput::clearGUICard() asks for VornGUIOutput::m_mutex, whose holder "
                               "in VornGUIOutput::renderGUICard() waits for the mutex at 0x"),
      0U)
      << findings[0].message;
  EXPECT_TRUE(names(findings[0].here, "VornGUIOutput::clearGUICard(") &&
              names(findings[0].before, "VornGUIOutput::renderGUICard("))
      << describe(findings[0]);
}

TEST_F(TwoThreads, AreToldWhenBothMutexesAreTheHosts) {
  std::mutex one, other;
  Event oneHeld, otherHeld;
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    const bool first = call.operation == "getVolume";
    const std::lock_guard<std::mutex> outer(first ? one : other);
    first ? oneHeld.set_value() : otherHeld.set_value();
    first ? wait(otherHeld) : wait(oneHeld);
    const std::lock_guard<std::mutex> inner(first ? other : one);
  });
  auto first = std::async(std::launch::async, [&] { return refused([&] { info->getVolume(); }); });
  const int second = refused([&] { info->getVSKCapabilities(); });
  EXPECT_EQ(first.get() + second, 1);
  VornDeviceInfo::Shutdown();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kLockOrder);
}

TEST_F(TwoThreads, AreToldWhenALockedOperationWaitsForAThreadThatCallsItsAdapter) {
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  std::future<int> worker;
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.operation != "getVolume") return;
    worker = std::async(std::launch::async, [&] { return refused([&] { info->getMuteStatus(); }); });
    told.get_future().wait();  // in the place of worker.wait(), so that this test ends everywhere
  });
  info->getVolume();
  EXPECT_EQ(worker.get(), kWithoutEnd == Finding::kLockOrder);
  VornDeviceInfo::Shutdown();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, kWithoutEnd);
  EXPECT_EQ(findings[0].message.find(
                "VornDeviceInfo::getMuteStatus() asks for VornDeviceInfo::m_mutex, whose holder "
                "in VornDeviceInfo::getVolume() "),
            0U)
      << findings[0].message;
  EXPECT_TRUE(names(findings[0].here));
#ifndef __SANITIZE_THREAD__  // which keeps the signal back while that thread sleeps in the standard library
  EXPECT_TRUE(names(findings[0].before)) << describe(findings[0]);
#endif
}

TEST_F(TwoThreads, AreToldWhenALockedOperationJoinsAThreadThatWaits) {
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  std::future<int> worker;
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.operation != "getVolume") return;
    worker = std::async(std::launch::async, [&] { return refused([&] { info->getMuteStatus(); }); });
    std::thread([&] { told.get_future().wait(); }).join();
  });
  info->getVolume();
  EXPECT_EQ(worker.get(), kWithoutEnd == Finding::kLockOrder);
  VornDeviceInfo::Shutdown();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, kWithoutEnd);
}

/// It goes on as soon as whoever hears of it is done.
TEST_F(TwoThreads, AreNotWithoutEndWhileAThirdOneWasRefusedAndHasYetToGoOn) {
  Event toldAgain;
  const std::shared_future<void> again = toldAgain.get_future().share();
  std::vector<Finding::Rule> rules;
  std::shared_ptr<VornDeviceInfo> info;
  std::thread first, second;
  DoctorHost listened(
      behind,
      [&](const Finding& finding) {
        rules.push_back(finding.rule);
        if (rules.size() == 2) toldAgain.set_value();
        if (rules.size() > 1) return;
        second = std::thread([&] { refused([&] { info->getTimezone(); }); });
        again.wait();
      },
      kPatience);
  info = VornDeviceInfo::CreateInstance(listened);
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.operation != "getVolume") return;
    first = std::thread([&] { refused([&] { info->getMuteStatus(); }); });
    again.wait();
  });
  info->getVolume();
  first.join(), second.join();
  VornDeviceInfo::Shutdown();
  EXPECT_EQ(rules, (std::vector<Finding::Rule>{kWithoutEnd, Finding::kLongWait}));
}

long openFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

TEST_F(TwoThreads, AreToldButNotRefusedWhileTheOtherMayGoOn) {
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  const long before = openFiles();
  int refusals = 0;
  std::thread second;
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.operation != "getVolume") return;
    second = std::thread([&] { refusals = refused([&] { info->getMuteStatus(); }); });
    wait(told);  // with a bound: it would go on by itself
  });
  info->getVolume();
  second.join();
  VornDeviceInfo::Shutdown();
  EXPECT_EQ(refusals, 0);
  struct sigaction action = {};
  sigaction(SIGURG, nullptr, &action);
  EXPECT_EQ(action.sa_handler, SIG_DFL) << "the signal that asked the holder is free again";
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kLongWait);
  EXPECT_TRUE(std::regex_search(findings[0].message, std::regex("has not gone on for [0-9]{3,6} ms[.]$")))
      << findings[0].message;
  EXPECT_EQ(openFiles(), before);
}

TEST_F(TwoThreads, AreToldWithoutDisturbingWhatTheHolderReads) {
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ssize_t got = 0;
  std::thread second, third;
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.operation != "getVolume") return;
    second = std::thread([&] { refused([&] { info->getMuteStatus(); }); });
    third = std::thread([&] {
      wait(told);
      if (write(ends[1], "x", 1) != 1) std::abort();
    });
    char letter = 0;
    got = read(ends[0], &letter, 1);
  });
  info->getVolume();
  second.join(), third.join();
  VornDeviceInfo::Shutdown();
  close(ends[0]), close(ends[1]);
  EXPECT_EQ(got, 1) << "it was asked where it is while it read";
}

TEST_F(TwoThreads, AreToldOnceForEachWait) {
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  const auto toldOf = [&](const std::string& operation) {
    const std::lock_guard<std::mutex> lock(mutex);
    return std::count_if(findings.begin(), findings.end(), [&](const Finding& finding) {
      return finding.message.find(operation) != std::string::npos;
    });
  };
  std::mutex own;
  std::thread second, third, outside;
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.operation != "getVolume") return;
    const std::lock_guard<std::mutex> lock(own);
    outside = std::thread([&] { const std::lock_guard<std::mutex> wanted(own); });
    second = std::thread([&] { refused([&] { info->getMuteStatus(); }); });
    wait(told);
    third = std::thread([&] { refused([&] { info->getTimezone(); }); });
    while (toldOf("getTimezone()") == 0) std::this_thread::yield();
  });
  info->getVolume();
  second.join(), third.join(), outside.join();
  VornDeviceInfo::Shutdown();
  EXPECT_EQ(toldOf("getMuteStatus()"), 1);
  EXPECT_EQ(toldOf("A thread asks"), 0)
      << "how long the host's threads wait for each other is its own business";
}

TEST_F(TwoThreads, AreToldWhenAnOperationWaitsForAMutexThatTheHostHoldsElsewhere) {
  std::mutex own;
  Event held;
  std::thread holder([&] {
    const std::lock_guard<std::mutex> lock(own);
    held.set_value();
    wait(told);
  });
  wait(held);
  behind.recorder->onCall([&](const vorn_testing::Call&) { const std::lock_guard<std::mutex> lock(own); });
  VornDeviceInfo::CreateInstance(doctor)->getVolume();
  holder.join();
  VornDeviceInfo::Shutdown();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].message.find("VornDeviceInfo::getVolume() asks for the mutex at 0x"), 0U)
      << findings[0].message;
}

TEST_F(TwoThreads, AreToldWhenEachHoldsWhatTheOtherWants) {
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  const auto gui = VornGUIOutput::CreateInstance(doctor);
  Event askedVolume, clearsCard;
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.operation == "getVolume") askedVolume.set_value(), wait(clearsCard), gui->renderGUICard("");
    if (call.operation == "clearGUICard") clearsCard.set_value(), wait(askedVolume), info->getMuteStatus();
  });
  auto first = std::async(std::launch::async, [&] { return refused([&] { info->getVolume(); }); });
  const int second = refused([&] { gui->clearGUICard(); });
  EXPECT_EQ(first.get() + second, 1) << "one is refused, the other gets what it wants";
  VornDeviceInfo::Shutdown(), VornGUIOutput::Shutdown();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kLockOrder);
  EXPECT_TRUE(names(findings[0].here) && names(findings[0].before)) << describe(findings[0]);
}

TEST_F(TwoThreads, AreToldWhenMessagesOfBothDirectionsWaitForEachOther) {
  vorn_testing::FakeAssistant assistant;
  const auto messaging = VornAppMessaging::CreateInstance(doctor);
  Event downHolds, upHolds;
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.signature() != "sendAppMessage(first, , )") return;
    downHolds.set_value(), wait(upHolds);
    messaging->SendMessageToxApp("answer", "", "");
  });
  std::future<int> third;
  assistant.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.signature() != "SendMessageToxApp(question, , )") return;
    upHolds.set_value();
    third = std::async(std::launch::async,
                       [&] { return refused([&] { messaging->sendAppMessage("second", "", ""); }); });
    told.get_future().wait();  // in the place of third.wait(), so that this test ends everywhere
  });
  auto down = std::async(std::launch::async,
                         [&] { return refused([&] { messaging->sendAppMessage("first", "", ""); }); });
  wait(downHolds);
  messaging->SendMessageToxApp("question", "", "");
  EXPECT_EQ(down.get() + third.get(), kWithoutEnd == Finding::kLockOrder) << "the first that asked";
  VornAppMessaging::Shutdown();
  // A long wait may be told before it is seen to have no end: the third thread may come late.
  const auto isWithoutEnd = [](const Finding& finding) { return finding.rule == kWithoutEnd; };
  EXPECT_TRUE(std::any_of(findings.begin(), findings.end(), isWithoutEnd));
}

}  // namespace
