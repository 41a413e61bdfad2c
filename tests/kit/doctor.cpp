#include <VornAlexaState.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornGUIOutput.h>
#include <VornOOBE.h>
#include <VornStorage.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <vorn_testing/DoctorHost.h>

#include <csignal>
#include <thread>

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
#ifdef VORN_EMULATED
  GTEST_SKIP() << "qemu-user does not end a process that aborts";
#endif
  EXPECT_EXIT(die(), testing::KilledBySignal(SIGABRT), "destroyed while calls into it run: 1");
}

struct EndingPlayer : EndingHost, vorn_testing::NullPlayer {
  VornEMPAdapterIF* getEMPAdapter() override { return this; }
  bool pause(std::string) override { return requestAudioFocus(); }
};

TEST_F(TheDoctor, ReportsAHostThatIsDestroyedInsideACallOfItsPlayer) {
  EndingPlayer host;
  const auto die = [&] {
    DoctorHost dying(host);
    host.onFocus = [&] { dying.~DoctorHost(); };
    dying.getEMPAdapter()->pause("kitchen");
  };
#ifdef VORN_EMULATED
  GTEST_SKIP() << "qemu-user does not end a process that aborts";
#endif
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

/// Keeps one argument that came by reference.
struct KeepingHost : vorn_testing::NullHost, vorn_testing::NullPlayer {
  int which = 0;
  std::function<void()> touch;

  template <class T>
  bool keep(const T& argument) {
    touch = [&argument] { testing::PrintToString(argument); };
    return true;
  }

  bool getSystemSetting(std::string, std::string& value) override { return keep(value); }
  std::map<std::string, std::string> readKeyValue(const std::string& key) override {
    keep(key);
    return {};
  }
  bool removeKeyValue(const std::vector<std::string>& keys) override { return keep(keys); }
  void onLogEmitted(const std::string& first, const std::string& second) override {
    keep(which == 0 ? first : second);
  }
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override {
    which == 2 ? keep(number) : keep(which == 0 ? first : second);
  }
  bool onInputChange(const std::string& input) override { return keep(input); }
  bool renderGUICard(const std::string& card) override { return keep(card); }
  VornEMPAdapterIF* getEMPAdapter() override { return this; }
  bool login(const std::string& accessToken, const std::string& userName, bool, std::chrono::milliseconds,
             std::string) override {
    return keep(which == 0 ? accessToken : userName);
  }
};

struct Lending {
  std::string operation;
  int which;
  std::function<void(VornDALImplIF&)> call;
};
void PrintTo(const Lending& lending, std::ostream* out) { *out << lending.operation << lending.which; }

std::vector<Lending> lendings() {
  const std::string text(100, 'x');
  const auto link = [](VornDALImplIF& host) {
    std::string first, second;
    std::int64_t number = 0;
    host.sendCBLInfo(first, second, number);
  };
  const auto log = [](VornDALImplIF& host) { host.onLogEmitted("a", "b"); };
  const auto login = [](VornDALImplIF& host) {
    host.getEMPAdapter()->login("token", "name", true, std::chrono::milliseconds(1), "id");
  };
  return {{"getSystemSetting", 0,
           [text](VornDALImplIF& host) {
             std::string value = text;
             host.getSystemSetting("key", value);
           }},
          {"readKeyValue", 0, [text](VornDALImplIF& host) { host.readKeyValue(text); }},
          {"removeKeyValue", 0,
           [](VornDALImplIF& host) {
             host.removeKeyValue({"a", "b"});
           }},
          {"onLogEmitted", 0, log},
          {"onLogEmitted", 1, log},
          {"sendCBLInfo", 0, link},
          {"sendCBLInfo", 1, link},
          {"sendCBLInfo", 2, link},
          {"onInputChange", 0, [](VornDALImplIF& host) { host.onInputChange("TV"); }},
          {"renderGUICard", 0, [text](VornDALImplIF& host) { host.renderGUICard(text); }},
          {"login", 0, login},
          {"login", 1, login}};
}

class AKeptReference : public TheDoctor, public testing::WithParamInterface<Lending> {};

TEST_P(AKeptReference, IsReportedWhenItIsUsed) {
  KeepingHost host;
  host.which = GetParam().which;
  GetParam().call(around(host));
  EXPECT_TRUE(findings.empty());
  host.touch();
  ASSERT_TRUE(found(Finding::kReferenceKept,
                    "An argument of " + GetParam().operation + "() was touched after the call."));
  EXPECT_FALSE(findings[0].here.empty() || findings[0].before.empty());
}

INSTANTIATE_TEST_SUITE_P(OfEachArgument, AKeptReference, testing::ValuesIn(lendings()));

TEST_F(TheDoctor, ReportsAReferenceThatIsKeptForTheNextCall) {
  struct Late : KeepingHost {
    bool renderGUICard(const std::string& card) override {
      if (touch) touch();
      return keep(card);
    }
  } host;
  around(host).renderGUICard("first");
  doctor->renderGUICard("second");
  EXPECT_TRUE(found(Finding::kReferenceKept, "renderGUICard()"));
}

TEST_F(TheDoctor, ReportsAReferenceThatAWorkerUsesAfterTheCall) {
  KeepingHost host;
  around(host).renderGUICard("card");
  std::thread(host.touch).join();
  EXPECT_TRUE(found(Finding::kReferenceKept, "renderGUICard()"));
}

TEST_F(TheDoctor, LetsAHostUseItsArgumentsWhileTheCallRuns) {
  struct Using : KeepingHost {
    std::string seen;
    bool renderGUICard(const std::string& card) override {
      std::thread([&] { seen = card; }).join();
      return true;
    }
  } host;
  around(host).renderGUICard("card");
  EXPECT_EQ(host.seen, "card");
  EXPECT_TRUE(findings.empty());
}

/// Changes what is not its own.
struct ChangingHost : vorn_testing::NullHost {
  bool renderGUICard(const std::string& card) override {
    const_cast<std::string&>(card)[0] = '!';
    const_cast<std::string&>(card)[1] = '!';
    return true;
  }
  bool removeKeyValue(const std::vector<std::string>& keys) override {
    const_cast<std::vector<std::string>&>(keys)[0] = "other";
    return true;
  }
};

class AChangedArgument : public TheDoctor {
 protected:
  ChangingHost host;
};

TEST_F(AChangedArgument, IsReportedOnceWhereItIsChanged) {
  std::string card = "short";
  EXPECT_TRUE(around(host).renderGUICard(card));
  EXPECT_EQ(card, "short") << "the caller's own stays as it was";
  EXPECT_TRUE(found(Finding::kArgumentChanged,
                    "An argument of renderGUICard() was changed, which is the caller's own."));
}

TEST_F(AChangedArgument, IsReportedAtTheEndWhereThePageDoesNotShowIt) {
  const std::string card(100, 'x');
  EXPECT_TRUE(around(host).renderGUICard(card));
  EXPECT_TRUE(found(Finding::kArgumentChanged,
                    "An argument of renderGUICard() was changed, which is the caller's own."));
}

TEST_F(AChangedArgument, IsReportedInsideAContainer) {
  EXPECT_TRUE(around(host).removeKeyValue({"key"}));
  EXPECT_TRUE(found(Finding::kArgumentChanged, "removeKeyValue() was changed"));
}

TEST_F(TheDoctor, ForgetsTheOldestOfManyArgumentsOnly) {
  KeepingHost host;
  around(host);
  for (int i = 0; i < 300; ++i) doctor->renderGUICard("card");
  host.touch();
  EXPECT_TRUE(found(Finding::kReferenceKept, "renderGUICard()"));
}

TEST_F(TheDoctor, PrintsALongWaitAndGoesOn) {
  const auto wait = [] {
    const vorn_testing::Doctor quiet;
    vorn_testing::Doctor::report({Finding::kLongWait, "It takes long.", {}, {}});
    std::_Exit(0);
  };
  EXPECT_EXIT(wait(), testing::ExitedWithCode(0), "It takes long");
}

TEST_F(TheDoctor, LeavesTheCrashesOfOthersToThem) {
  vorn_testing::NullHost host;
  const auto crash = [&] {
    around(host);
    std::raise(SIGSEGV);
    std::raise(SIGSEGV);  // the first one only hands the signal back
  };
#ifdef VORN_EMULATED
  GTEST_SKIP() << "qemu-user does not end a process that aborts";
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers keep the signal or turn it into an exit status of their own";
#endif
  EXPECT_EXIT(crash(), testing::KilledBySignal(SIGSEGV), "");
}

/// More stack than there is.
[[gnu::noinline]] int deep(const volatile int* above) {
  const volatile int here[1000] = {*above};
  return *above > 0 ? deep(here) + here[999] : 0;
}

TEST_F(TheDoctor, LeavesAWantOfStackToWhoeverTellsOfIt) {
  vorn_testing::NullHost host;
  const auto overflow = [&] {
    static char stack[1 << 16];
    stack_t own = {};
    own.ss_sp = stack;
    own.ss_size = sizeof stack;
    sigaltstack(&own, nullptr);
    struct sigaction tell = {};
    tell.sa_handler = [](int) { _exit(7); };
    tell.sa_flags = SA_ONSTACK;
    sigaction(SIGSEGV, &tell, nullptr);
    around(host);
    const int more = 1;
    deep(&more);
  };
#ifdef VORN_EMULATED
  GTEST_SKIP() << "qemu-user gives a handler no stack of its own";
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers tell of a want of stack themselves";
#endif
  EXPECT_EXIT(overflow(), testing::ExitedWithCode(7), "");
}

}  // namespace
