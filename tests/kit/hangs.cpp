// The questions that end in a hang, as docs/threading.md tells them: what the doctor reports where a mutex of the library is
// asked for, what the system says where it is one of the firmware's own, and that the cures of the page are some.

#include <VornAudioIn.h>
#include <VornDeviceInfo.h>
#include <gtest/gtest.h>
#include <pthread.h>
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

/// The firmware's own mutex, which says instead of waiting that its thread would wait for itself.
class OwnMutex {
 public:
  OwnMutex() {
    pthread_mutexattr_t kind;
    pthread_mutexattr_init(&kind);
    pthread_mutexattr_settype(&kind, PTHREAD_MUTEX_ERRORCHECK);
    pthread_mutex_init(&m_mutex, &kind);
    pthread_mutexattr_destroy(&kind);
  }
  void lock() {
    if (const int error = pthread_mutex_lock(&m_mutex))
      throw std::system_error(error, std::generic_category());
  }
  void unlock() { pthread_mutex_unlock(&m_mutex); }

 private:
  pthread_mutex_t m_mutex;
};

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

  OwnMutex own;
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

TEST_F(AHang, OfAnOwnLockHeldWhileNotifyingIsOneOfTheFirmwareWithItself) {
  int error = 0;
  whenAsked("getVolume", [&] { error = errorOf([&] { const std::lock_guard<OwnMutex> lock(own); }); });
  whenTold([&] { info->getVolume(); });
  const std::lock_guard<OwnMutex> lock(own);
  info->notifyVolumeChanged(40);
  EXPECT_EQ(error, EDEADLK);
}

TEST_F(AHang, OfAButtonPressUnderAnOwnLockIsOneOfTheFirmwareWithItself) {
  int error = 0;
  whenAsked("notifyAlexaInvocationDetected", [&] { error = errorOf([&] { own.lock(); }); });
  const std::lock_guard<OwnMutex> lock(own);
  audio->notifyAlexaButtonPress("tap", std::chrono::milliseconds(80));
  EXPECT_EQ(error, EDEADLK);
}

TEST_F(AHang, OfTheAudioThreadThatIsJoinedFromInsideItself) {
  int error = 0;
  std::thread pushing;
  std::promise<void> made;
  whenAsked("stopStreamingAudioData", [&] { error = errorOf([&] { pushing.join(); }); });
  whenTold([&] { audio->stopStreamingAudioData(); });
  pushing = std::thread([&] {
    made.get_future().wait();
    std::vector<short> samples(160);
    audio->sendAudioData(samples);
  });
  made.set_value();
  pushing.join();
  EXPECT_EQ(error, EDEADLK);
}

TEST_F(AHang, OfAnOwnMutexAgainstAnAdaptersIsOneOfTwoThreads) {
  std::promise<void> ownHeld, adapterHeld;
  std::timed_mutex bounded;
  bool got = true;
  whenAsked("getVolume", [&] {
    adapterHeld.set_value();
    ownHeld.get_future().wait();
    // The other thread lets go only when this one has returned.
    got = bounded.try_lock_for(std::chrono::milliseconds(50));
  });
  whenTold([&] {
    adapterHeld.get_future().wait();
    ownHeld.set_value();
    info->getMuteStatus();
  });
  std::thread asks([&] { info->getVolume(); });
  {
    const std::lock_guard<std::timed_mutex> lock(bounded);
    info->notifyVolumeChanged(40);
  }
  asks.join();
  EXPECT_FALSE(got);
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
