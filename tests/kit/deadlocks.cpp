// Every way in which a thread can come to wait for itself, and what the doctor says of it.

#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <VornAppMessaging.h>
#include <VornCommsManager.h>
#include <VornDalMediaPlayerInterfaceImpl.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornMediaPlayerFactory.h>
#include <gtest/gtest.h>
#include <vorn_testing/DoctorHost.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <future>
#include <mutex>
#include <system_error>
#include <thread>

using namespace VornDeviceAbstractionLayer;
using vorn_testing::DoctorHost;
using vorn_testing::Finding;

namespace {

using Action = std::function<void(VornDALImplIF&)>;
struct Way {
  std::string name;
  std::string holds;  ///< The operation that is asked.
  std::string asks;   ///< What the host calls from inside it.
  std::string mutex;
  Action outer;
  Action inner;
};

void PrintTo(const Way& way, std::ostream* out) { *out << way.name; }

template <class Adapter>
void add(std::vector<Way>& ways, const std::string& adapter, const std::string& operation,
         const std::function<void(Adapter&)>& call) {
  const std::string mutex = "Vorn" + adapter + "::m_mutex";
  const Action outer = [call](VornDALImplIF& host) { call(*Adapter::CreateInstance(host)); };
  const auto way = [&](const std::string& what, const std::string& asks, const Action& inner) {
    const std::string prefix = "Vorn" + adapter + "::";
    ways.push_back({adapter + "_" + operation + "_" + what, prefix + operation + "()", prefix + asks + "()",
                    mutex, outer, inner});
  };
  // The pointer that the host kept: what is locked is the operation, not the way to it.
  way("again", operation, [call](VornDALImplIF& host) {
    Adapter kept(host);
    call(kept);
  });
  way("creates", "CreateInstance", [](VornDALImplIF& host) { Adapter::CreateInstance(host); });
  way("fetches", "getInstance", [](VornDALImplIF&) { Adapter::getInstance(); });
  way("shutsDown", "Shutdown", [](VornDALImplIF&) { Adapter::Shutdown(); });
}

std::vector<Way> ways() {
  std::vector<Way> all;
  const auto info = [&](const char* name, const std::function<void(VornDeviceInfo&)>& call) {
    add(all, "DeviceInfo", name, call);
  };
  info("getVolume", [](VornDeviceInfo& it) { it.getVolume(); });
  info("getMuteStatus", [](VornDeviceInfo& it) { it.getMuteStatus(); });
  info("getTimezone", [](VornDeviceInfo& it) { it.getTimezone(); });
  info("getDeviceLocale", [](VornDeviceInfo& it) { it.getDeviceLocale(); });
  info("changeAlexaLocale", [](VornDeviceInfo& it) { it.changeAlexaLocale("en-US"); });
  info("getDeviceInformation", [](VornDeviceInfo& it) { it.getDeviceInformation(); });
  info("getNetworkConnectionStatus", [](VornDeviceInfo& it) { it.getNetworkConnectionStatus(); });
  info("updateInternetConnectionStatus", [](VornDeviceInfo& it) { it.updateInternetConnectionStatus(true); });
  info("getConfigData", [](VornDeviceInfo& it) { it.getConfigData("key"); });
  info("setSystemSetting", [](VornDeviceInfo& it) { it.setSystemSetting("key", "value"); });
  add<VornAppMessaging>(all, "AppMessaging", "sendAppMessage",
                        [](VornAppMessaging& it) { it.sendAppMessage("a", "b", "c"); });
  add<VornGUIOutput>(all, "GUIOutput", "clearGUICard", [](VornGUIOutput& it) { it.clearGUICard(); });
  add<VornGUIOutput>(all, "GUIOutput", "renderGUICard", [](VornGUIOutput& it) { it.renderGUICard("card"); });
  add<VornLEDController>(all, "LEDController", "setAnimation",
                         [](VornLEDController& it) { it.setAnimation({"pulse"}); });
  add<VornCommsManager>(all, "CommsManager", "onCommsStateChanged",
                        [](VornCommsManager& it) { it.onCommsStateChanged({}); });
  return all;
}

/// Whether the stack names a function of the library.
bool names(const std::vector<std::string>& stack) {
  return std::any_of(stack.begin(), stack.end(), [](const std::string& line) {
    return line.find("VornDeviceAbstractionLayer::Vorn") == 0;
  });
}

class ADeadlock : public testing::TestWithParam<Way> {
 protected:
  static void shutdown() {
    VornDeviceInfo::Shutdown();
    VornAppMessaging::Shutdown();
    VornGUIOutput::Shutdown();
    VornLEDController::Shutdown();
    VornCommsManager::Shutdown();
  }

  void run(DoctorHost& doctor) {
    behind.recorder->onCall([&](const vorn_testing::Call&) { GetParam().inner(doctor); });
    GetParam().outer(doctor);
  }

  vorn_testing::RecordingHost behind;
};

TEST_P(ADeadlock, IsReportedAndEndsTheCallInstead) {
  std::vector<Finding> findings;
  {
    DoctorHost doctor(behind, [&](const Finding& finding) { findings.push_back(finding); });
    EXPECT_THROW(run(doctor), std::system_error);
    shutdown();
  }
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].message, GetParam().asks + " asks for " + GetParam().mutex +
                                     ", which its own thread holds in " + GetParam().holds + ".");
  EXPECT_EQ(findings[0].rule, Finding::kReentry);
  EXPECT_TRUE(names(findings[0].here) && names(findings[0].before)) << describe(findings[0]);
}

TEST_P(ADeadlock, AbortsWithTheRuleWhenNobodyListens) {
  const auto die = [this] {
    DoctorHost doctor(behind);
    run(doctor);
  };
#ifdef VORN_EMULATED
  GTEST_SKIP() << "qemu-user does not end a process that aborts";
#endif
  EXPECT_EXIT(die(), testing::KilledBySignal(SIGABRT),
              "asks for " + GetParam().mutex + ".*\n  rule: A locked operation");
}

INSTANTIATE_TEST_SUITE_P(OfEachLockedOperation, ADeadlock, testing::ValuesIn(ways()),
                         [](const auto& way) { return way.param.name; });

class TheDoctor : public testing::Test {
 protected:
  std::vector<Finding> findings;
  vorn_testing::RecordingHost behind;
  DoctorHost doctor{behind, [this](const Finding& finding) { findings.push_back(finding); }};
};

TEST_F(TheDoctor, ReportsAnAssistantSideThatSendsToItselfFromInside) {
  vorn_testing::FakeAssistant assistant;
  VornAppMessaging messaging(doctor);
  assistant.recorder->onCall([&](const vorn_testing::Call&) { messaging.SendMessageToxApp("", "", ""); });
  EXPECT_THROW(messaging.SendMessageToxApp("", "", ""), std::system_error);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_NE(findings[0].message.find("VornAppMessaging::m_dalMutex"), std::string::npos)
      << findings[0].message;
}

TEST_F(TheDoctor, IsSilentWhenAHostAnswersAMessageFromInside) {
  vorn_testing::FakeAssistant assistant;
  const auto messaging = VornAppMessaging::CreateInstance(doctor);
  behind.recorder->onCall([&](const vorn_testing::Call&) { messaging->SendMessageToxApp("", "", ""); });
  messaging->sendAppMessage("", "", "");
  VornAppMessaging::Shutdown();
  EXPECT_TRUE(findings.empty());
  EXPECT_EQ(assistant.recorder->count("SendMessageToxApp"), 1U);
}

TEST_F(TheDoctor, IsSilentWhenAHostUsesAnotherAdapterOrAnUnlockedOperation) {
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.operation != "getVolume") return;
    info->getVSKCapabilities();
    VornGUIOutput::CreateInstance(doctor)->clearGUICard();
  });
  info->getVolume();
  VornDeviceInfo::Shutdown();
  VornGUIOutput::Shutdown();
  EXPECT_TRUE(findings.empty());
}

TEST_F(TheDoctor, NamesTheOperationThatAsksAndTheOneThatHolds) {
  vorn_testing::FakeAssistant assistant;
  VornDeviceInfo info(doctor);
  VornDeviceInfo::CreateInstance(doctor);
  behind.recorder->onCall(
      [&](const vorn_testing::Call&) { info.notifySystemSettingChanged("key", "value"); });
  assistant.recorder->onCall([&](const vorn_testing::Call&) { info.getDeviceInformation(); });
  EXPECT_THROW(info.setSystemSetting("key", "value"), std::system_error);
  VornDeviceInfo::Shutdown();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(
      findings[0].message,
      "VornDeviceInfo::getDeviceInformation() asks for VornDeviceInfo::m_mutex, which its own thread holds "
      "in VornDeviceInfo::setSystemSetting().");
}

TEST_F(TheDoctor, ReportsAHostThatComesBackToItsOwnMutex) {
  std::mutex own;
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    const std::lock_guard<std::mutex> lock(own);
    if (call.operation == "getVolume") info->getVSKCapabilities();
  });
  EXPECT_THROW(info->getVolume(), std::system_error);
  VornDeviceInfo::Shutdown();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kReentry);
  EXPECT_EQ(findings[0].message.find("VornDeviceInfo::getVSKCapabilities() asks for the mutex at 0x"), 0U)
      << findings[0].message;
}

TEST_F(TheDoctor, LetsAHostTakeARecursiveMutexAgain) {
  std::recursive_mutex own;
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  behind.recorder->onCall([&](const vorn_testing::Call& call) {
    const std::lock_guard<std::recursive_mutex> lock(own);
    if (call.operation == "getVolume") info->getVSKCapabilities();
  });
  info->getVolume();
  VornDeviceInfo::Shutdown();
  EXPECT_TRUE(findings.empty());
}

TEST_F(TheDoctor, LeavesLocksAloneWhenItIsGone) {
  pthread_mutexattr_t kind;
  pthread_mutexattr_init(&kind);
  pthread_mutexattr_settype(&kind, PTHREAD_MUTEX_ERRORCHECK);
  pthread_mutex_t own;
  pthread_mutex_init(&own, &kind);
  pthread_mutex_lock(&own);
  EXPECT_EQ(pthread_mutex_lock(&own), EDEADLK);
  EXPECT_EQ(findings.size(), 1U);
  std::make_unique<vorn_testing::Doctor>().reset();
  EXPECT_EQ(pthread_mutex_lock(&own), EDEADLK);
  EXPECT_EQ(findings.size(), 2U) << "another doctor is still there";
  pthread_mutex_unlock(&own);
}

class TwoThreads : public testing::Test {
 protected:
  using Event = std::promise<void>;
  static constexpr std::chrono::milliseconds kPatience{400};

  static void wait(Event& event) {
    if (event.get_future().wait_for(std::chrono::minutes(2)) != std::future_status::ready) std::abort();
  }
  static int refused(const std::function<void()>& call) {
    try {
      call();
      return 0;
    } catch (const std::system_error&) {
      return 1;
    }
  }

  std::mutex mutex;
  std::vector<Finding> findings;
  Event told;
  vorn_testing::RecordingHost behind;
  DoctorHost doctor{behind,
                    [this](const Finding& finding) {
                      const std::lock_guard<std::mutex> lock(mutex);
                      if (findings.empty()) told.set_value();
                      findings.push_back(finding);
                    },
                    kPatience};
};

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
  EXPECT_TRUE(names(findings[0].here) && names(findings[0].before)) << describe(findings[0]);
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

TEST_F(TwoThreads, AreToldButNotRefusedWhileTheOtherMayGoOn) {
  const auto info = VornDeviceInfo::CreateInstance(doctor);
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

struct CallingPlayer : VornDalMediaPlayerInterfaceImpl {
  std::function<void()> onConfigure;
  void Configure(Settings, std::function<void(std::string)>) override { onConfigure(); }
};

TEST_F(TheDoctor, ReportsAPlayerThatCallsTheFactoryFromConfigure) {
  const auto player = std::make_shared<CallingPlayer>();
  std::unordered_map<std::string, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>> table = {{"p", player}};
  VornMediaPlayerFactory::CreateInstance(table);
  const auto factory = VornMediaPlayerFactory::getInstance();
  const std::vector<std::function<void()>> calls = {
      [&] { factory->createDalMediaPlayer({}, false, "p", false); },
      [] { VornMediaPlayerFactory::getInstance(); }, [&] { VornMediaPlayerFactory::CreateInstance(table); },
      [] { VornMediaPlayerFactory::Shutdown(); }};
  for (const auto& call : calls) {
    player->onConfigure = call;
    EXPECT_THROW(factory->createDalMediaPlayer({}, false, "p", false), std::system_error);
  }
  VornMediaPlayerFactory::Shutdown();
  EXPECT_EQ(findings.size(), calls.size());
}

}  // namespace
