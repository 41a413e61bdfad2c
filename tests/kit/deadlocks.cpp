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

#include <algorithm>
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
  const std::string name = adapter + "_" + operation + "_";
  // The pointer that the host kept: what is locked is the operation, not the way to it.
  ways.push_back({name + "again", mutex, outer, [call](VornDALImplIF& host) {
                    Adapter kept(host);
                    call(kept);
                  }});
  ways.push_back(
      {name + "creates", mutex, outer, [](VornDALImplIF& host) { Adapter::CreateInstance(host); }});
  ways.push_back({name + "fetches", mutex, outer, [](VornDALImplIF&) { Adapter::getInstance(); }});
  ways.push_back({name + "shutsDown", mutex, outer, [](VornDALImplIF&) { Adapter::Shutdown(); }});
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
  EXPECT_NE(findings[0].message.find(GetParam().mutex), std::string::npos) << findings[0].message;
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

class TwoThreads : public testing::Test {
 protected:
  using Event = std::promise<void>;
  static void wait(Event& event) { event.get_future().wait(); }
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
  vorn_testing::RecordingHost behind;
  DoctorHost doctor{behind, [this](const Finding& finding) {
                      const std::lock_guard<std::mutex> lock(mutex);
                      findings.push_back(finding);
                    }};
};

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
  behind.recorder->onCall([&](const vorn_testing::Call&) {
    downHolds.set_value(), wait(upHolds);
    messaging->SendMessageToxApp("answer", "", "");
  });
  int refusals = 0;
  assistant.recorder->onCall([&](const vorn_testing::Call& call) {
    if (call.signature() != "SendMessageToxApp(question, , )") return;
    upHolds.set_value();
    const auto third = [&] { return refused([&] { messaging->sendAppMessage("", "", ""); }); };
    refusals = std::async(std::launch::async, third).get();
  });
  std::thread down([&] { messaging->sendAppMessage("", "", ""); });
  wait(downHolds);
  messaging->SendMessageToxApp("question", "", "");
  down.join();
  VornAppMessaging::Shutdown();
  EXPECT_EQ(refusals, 1);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(
      findings[0].message,
      "This thread asks for VornAppMessaging::m_mutex, whose holder waits for VornAppMessaging::m_dalMutex.");
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
