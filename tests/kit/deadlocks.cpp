// Every way in which a thread can come to wait for itself, and what the doctor says of it.

#include <VornAppMessaging.h>
#include <VornCommsManager.h>
#include <VornDalMediaPlayerInterfaceImpl.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornMediaPlayerFactory.h>
#include <dlfcn.h>
#include <pthread.h>
#include <vorn_testing/FakeAssistant.h>

#include <cerrno>
#include <mutex>
#include <system_error>

#include "waiting.h"

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
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].message.find("A thread asks for the mutex at 0x"), 0U) << findings[0].message;
  std::make_unique<vorn_testing::Doctor>().reset();
  EXPECT_EQ(pthread_mutex_lock(&own), EDEADLK);
  EXPECT_EQ(findings.size(), 2U) << "another doctor is still there";
  pthread_mutex_unlock(&own);
}

TEST_F(TheDoctor, KnowsTheMutexOfEveryAdapter) {
  for (const std::string adapter :
       {"FileLogger", "VornAlexaState", "VornAppMessaging", "VornAttachmentReaderContainerFactory",
        "VornAudioFocus", "VornAudioIn", "VornCommsManager", "VornDeviceCapabilities", "VornDeviceInfo",
        "VornEMPAdapterControl", "VornGUIOutput", "VornLEDController", "VornLoggerObserver",
        "VornMediaPlayerFactory", "VornOOBE", "VornStorage"}) {
    const std::string symbol =
        "_ZN26VornDeviceAbstractionLayer" + std::to_string(adapter.size()) + adapter + "7m_mutexE";
    auto* const mutex = static_cast<pthread_mutex_t*>(dlsym(RTLD_DEFAULT, symbol.c_str()));
    ASSERT_NE(mutex, nullptr) << adapter;
    findings.clear();
    pthread_mutex_lock(mutex);
    EXPECT_EQ(pthread_mutex_lock(mutex), EDEADLK);
    pthread_mutex_unlock(mutex);
    ASSERT_EQ(findings.size(), 1U) << adapter;
    EXPECT_EQ(findings[0].message, "A thread asks for " + adapter + "::m_mutex, which its own thread holds.");
  }
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
