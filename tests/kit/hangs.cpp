// The questions that end in a hang, as docs/threading.md tells them: what the doctor reports where a thread waits for a mutex
// of the library or of the firmware, what the system says where one is joined from inside itself, and that the cures of the
// page are some.

#include <VornAudioIn.h>
#include <VornDeviceInfo.h>
#include <gtest/gtest.h>
#include <vorn_testing/DoctorHost.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

#include <future>
#include <mutex>
#include <system_error>
#include <thread>

#include "MyHost.h"

using namespace VornDeviceAbstractionLayer;
using vorn_testing::Call;
using vorn_testing::DoctorHost;
using vorn_testing::Finding;

namespace {

class AHang : public testing::Test {
 protected:
  ~AHang() override {
    VornAudioIn::Shutdown();
    VornDeviceInfo::Shutdown();
  }

  /// What the assistant does when it hears of something, on the thread that told it.
  void whenTold(const std::function<void()>& call) {
    assistant.recorder->onCall([call](const Call&) { call(); });
  }
  void whenAsked(const std::string& operation, const std::function<void()>& call) {
    host.recorder->onCall([=](const Call& asked) {
      if (asked.operation == operation) call();
    });
  }
  static int errorOf(const std::function<void()>& call) {
    try {
      call();
      return 0;
    } catch (const std::system_error& error) {
      return error.code().value();
    }
  }

  std::mutex own;  ///< The firmware's.
  std::vector<Finding> findings;
  vorn_testing::FakeAssistant assistant;
  vorn_testing::RecordingHost host;
  DoctorHost doctor{host, [this](const Finding& finding) { findings.push_back(finding); }};
  const std::shared_ptr<VornDeviceInfo> info = VornDeviceInfo::CreateInstance(doctor);
  const std::shared_ptr<VornAudioIn> audio = VornAudioIn::CreateInstance(doctor);
};

TEST_F(AHang, OfAnAssistantThatAsksBackUnderALockedOperationIsReportedWithTheQuestion) {
  whenAsked("setSystemSetting", [&] { info->notifySystemSettingChanged("key", "value"); });
  whenTold([&] { info->getDeviceInformation(); });
  EXPECT_NE(errorOf([&] { info->setSystemSetting("key", "value"); }), 0);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kReentry);
  EXPECT_NE(describe(findings[0]).find("getDeviceInformation"), std::string::npos) << describe(findings[0]);
}

TEST_F(AHang, OfAnOwnLockHeldWhileNotifyingIsReportedWithTheQuestion) {
  whenAsked("getVolume", [&] { const std::lock_guard<std::mutex> lock(own); });
  whenTold([&] { info->getVolume(); });
  const std::lock_guard<std::mutex> lock(own);
  EXPECT_NE(errorOf([&] { info->notifyVolumeChanged(40); }), 0);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kReentry) << describe(findings[0]);
}

TEST_F(AHang, OfAButtonPressUnderAnOwnLockIsReportedWithThePress) {
  whenAsked("notifyAlexaInvocationDetected", [&] { const std::lock_guard<std::mutex> lock(own); });
  const std::lock_guard<std::mutex> lock(own);
  EXPECT_NE(errorOf([&] { audio->notifyAlexaButtonPress("tap", std::chrono::milliseconds(80)); }), 0);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kReentry) << describe(findings[0]);
}

TEST_F(AHang, OfTheAudioThreadThatIsJoinedFromInsideItself) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the thread sanitizer takes the join that fails for the one that ends the thread";
#endif
  int error = 0;
  std::thread pushing;
  std::promise<void> made, tried;
  whenAsked("stopStreamingAudioData", [&] {
    error = errorOf([&] { pushing.join(); });
    tried.set_value();
  });
  whenTold([&] { audio->stopStreamingAudioData(); });
  pushing = std::thread([&] {
    made.get_future().wait();
    std::vector<short> samples(160);
    audio->sendAudioData(samples);
  });
  made.set_value();
  tried.get_future().wait();
  pushing.join();
  EXPECT_EQ(error, EDEADLK);
}

TEST_F(AHang, OfAnOwnMutexAgainstAnAdaptersIsReportedWithTwoThreads) {
  std::promise<void> adapterHeld;
  whenAsked("getVolume", [&] {
    adapterHeld.set_value();
    const std::lock_guard<std::mutex> lock(own);
  });
  whenTold([&] { info->getMuteStatus(); });
  std::unique_lock<std::mutex> lock(own);
  std::thread asks([&] { info->getVolume(); });
  adapterHeld.get_future().wait();
  EXPECT_NE(errorOf([&] { info->notifyVolumeChanged(40); }), 0);
  lock.unlock();
  asks.join();
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kLockOrder) << describe(findings[0]);
}

TEST(TheMinimalHost, TellsOfASettingWhereTheAssistantMayAskBack) {
  std::vector<Finding> findings;
  vorn_testing::FakeAssistant assistant;
  std::promise<void> told;
  MyHost host;
  DoctorHost doctor(host, [&](const Finding& finding) { findings.push_back(finding); });
  const auto info = VornDeviceInfo::CreateInstance(doctor);
  assistant.recorder->onCall([&](const Call&) {
    info->getDeviceInformation();
    told.set_value();
  });
  info->setSystemSetting("friendlyName", "Bath");
  EXPECT_EQ(told.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
  host.stop();
  VornDeviceInfo::Shutdown();
  EXPECT_TRUE(findings.empty());
}

TEST(TheMinimalHost, StopsListeningWhenItIsAskedFromInsideTheSound) {
  vorn_testing::FakeAssistant assistant;
  std::promise<void> stopped;
  MyHost host;
  const auto audio = VornAudioIn::CreateInstance(host);
  std::once_flag once;
  assistant.recorder->onCall([&](const Call&) {
    audio->stopStreamingAudioData();
    std::call_once(once, [&] { stopped.set_value(); });
  });
  audio->startStreamingAudioData();
  EXPECT_EQ(stopped.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
  host.stop();
  VornAudioIn::Shutdown();
}

TEST(TheMinimalHost, RefusesADirectiveWithAReason) {
  MyHost host;
  const Result answer = host.onStartRecording();
  EXPECT_FALSE(answer.first);
  EXPECT_FALSE(answer.second.empty());
}

}  // namespace
