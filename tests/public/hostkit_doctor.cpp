#include <VornAlexaState.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornGUIOutput.h>
#include <VornOOBE.h>
#include <VornStorage.h>
#include <gtest/gtest.h>
#include <vorn_testing/DoctorHost.h>

#include <csignal>

using namespace VornDeviceAbstractionLayer;
using vorn_testing::Checked;
using vorn_testing::DoctorHost;
using vorn_testing::Finding;

namespace {

class TheDoctor : public testing::Test {
 protected:
  DoctorHost& around(VornDALImplIF& host) {
    doctor =
        std::make_unique<DoctorHost>(host, [this](const Finding& finding) { findings.push_back(finding); });
    return *doctor;
  }
  bool found(Finding::Rule rule, const std::string& words) const {
    return findings.size() == 1 && findings[0].rule == rule &&
           findings[0].message.find(words) != std::string::npos;
  }

  std::vector<Finding> findings;
  std::unique_ptr<DoctorHost> doctor;
};

struct KeyValues : vorn_testing::NullHost {
  std::map<std::string, std::string> values;
  int getVolume() override { return 50; }
  bool getSystemSetting(std::string key, std::string& value) override {
    const auto found = values.find(key);
    if (found != values.end()) value = found->second;
    return found != values.end();
  }
  bool setSystemSetting(std::string key, std::string value) override {
    values[key] = value;
    return true;
  }
  std::map<std::string, std::string> readKeyValue(const std::string& key) override {
    return {{key, values[key]}};
  }
};

TEST_F(TheDoctor, HandsOnArgumentsAndAnswers) {
  KeyValues host;
  const auto info = VornDeviceInfo::CreateInstance(around(host));
  const auto storage = VornStorage::CreateInstance(*doctor);
  const std::string text(5000, 'x');
  std::string value = "before";

  EXPECT_FALSE(info->getSystemSetting("none", value));
  EXPECT_EQ(value, "before");
  EXPECT_TRUE(info->setSystemSetting("key", text) && info->getSystemSetting("key", value));
  EXPECT_EQ(value, text);
  EXPECT_EQ(storage->readKeyValue("key").at("key"), text);

  VornDeviceInfo::Shutdown();
  VornStorage::Shutdown();
  EXPECT_TRUE(findings.empty());
}

struct Linking : vorn_testing::NullHost {
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override {
    std::swap(first, second);
    ++number;
  }
};

TEST_F(TheDoctor, HandsBackWhatTheHostWroteIntoItsArguments) {
  Linking host;
  const auto setup = VornOOBE::CreateInstance(around(host));
  std::string first = "address", second = "code";
  std::int64_t number = 1;
  setup->sendCBLInfo(first, second, number);
  VornOOBE::Shutdown();
  EXPECT_EQ(first + second + std::to_string(number), "codeaddress2");
}

TEST_F(TheDoctor, NamesTheAdaptersThatStillHoldADestroyedHost) {
  vorn_testing::NullHost host, other;
  VornAlexaState::CreateInstance(around(host));
  VornStorage::CreateInstance(*doctor);
  VornGUIOutput::CreateInstance(other);
  doctor.reset();
  VornAlexaState::Shutdown(), VornStorage::Shutdown(), VornGUIOutput::Shutdown();
  EXPECT_TRUE(found(Finding::kHostDestroyed, "adapters hold it: VornAlexaState, VornStorage."));
}

struct EndingHost : vorn_testing::NullHost {
  std::function<void()> onFocus;
  bool requestAudioFocus() override {
    onFocus();
    return true;
  }
};

TEST_F(TheDoctor, ReportsAHostThatIsDestroyedInsideACall) {
  EndingHost host;
  const auto die = [&] {
    DoctorHost dying(host);
    host.onFocus = [&] { dying.~DoctorHost(); };
    dying.requestAudioFocus();
  };
  EXPECT_EXIT(die(), testing::KilledBySignal(SIGABRT), "destroyed while calls into it run: 1");
}

struct PlayerlessHost : vorn_testing::NullHost {
  VornEMPAdapterIF* getEMPAdapter() override { return nullptr; }
};

TEST_F(TheDoctor, ReportsANullPlayerAndGoesOnWithOneThatDoesNothing) {
  PlayerlessHost host;
  EXPECT_FALSE(VornEMPAdapterControl::CreateInstance(around(host))->pause("kitchen"));
  VornEMPAdapterControl::Shutdown();
  EXPECT_TRUE(found(Finding::kNullPlayer, "null"));
}

TEST_F(TheDoctor, ReportsCallsBeforeCreationAndAfterShutdown) {
  KeyValues host;
  around(host);
  Checked<VornDeviceInfo> info;
  EXPECT_THROW(info->getVolume(), std::logic_error);
  EXPECT_TRUE(found(Finding::kNotLive, "VornDeviceInfo was used before its creation"));

  VornDeviceInfo::CreateInstance(*doctor);
  EXPECT_EQ(info->getVolume(), 50);
  VornDeviceInfo::Shutdown();
  findings.clear();
  EXPECT_EQ(info->getVolume(), 0);
  EXPECT_TRUE(found(Finding::kNotLive, "VornDeviceInfo was used after its shutdown"));
}

struct KeepingHost : vorn_testing::NullHost {
  const std::string* kept = nullptr;
  bool renderGUICard(const std::string& card) override {
    kept = &card;
    return true;
  }
  bool clearGUICard() override { return kept->empty(); }
};

TEST_F(TheDoctor, ReportsAKeptReferenceWhenItIsUsed) {
  KeepingHost host;
  const auto gui = VornGUIOutput::CreateInstance(around(host));
  gui->renderGUICard("card");
  EXPECT_TRUE(findings.empty());
  gui->clearGUICard();
  VornGUIOutput::Shutdown();
  EXPECT_TRUE(found(Finding::kReferenceKept, "renderGUICard()"));
  EXPECT_FALSE(findings[0].here.empty() || findings[0].before.empty());
}

TEST_F(TheDoctor, LeavesTheCrashesOfOthersToThem) {
  vorn_testing::NullHost host;
  const auto crash = [&] {
    around(host);
    std::raise(SIGSEGV);
    std::raise(SIGSEGV);  // the first one only hands the signal back
  };
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the address sanitizer turns the signal into an exit status of its own";
#endif
  EXPECT_EXIT(crash(), testing::KilledBySignal(SIGSEGV), "");
}

TEST(Findings, ReadAsSentenceRuleAndStacks) {
  const std::string text =
      vorn_testing::describe({Finding::kReentry, "It happened.", {"inner", "outer"}, {"holder"}});
  EXPECT_EQ(text.find("vorn doctor: It happened.\n  rule: A locked operation"), 0U);
  EXPECT_NE(text.find("  here:\n    inner\n    outer\n  before:\n    holder\n"), std::string::npos);
}

}  // namespace
