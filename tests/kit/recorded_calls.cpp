// Calls of recordings: with their secrets masked, in words, compared.

#include <gtest/gtest.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingFile.h>
#include <vorn_testing/RecordingHost.h>

#include <DeviceAbstractionLayer/CommsManager.h>
#include <DeviceAbstractionLayer/OOBE.h>

#include <stdexcept>

namespace {

using namespace vorn_testing;
using Calls = std::vector<RecordedCall>;
using Texts = std::vector<std::string>;

/// What the host behind the recording one answers.
struct Host : NullHost {
  std::string answer, written;
  bool accepted = true;

  bool getSystemSetting(std::string, std::string& value) override {
    value = written;
    return accepted;
  }
  std::string getConfigData(std::string) override { return answer; }
  std::map<std::string, std::string> readKeyValue(const std::string&) override { return {{"a", answer}}; }
  std::string getTimezone() override { throw std::runtime_error(answer); }
};

class RecordedCallsOf : public testing::Test {
 protected:
  /// The last of the calls that `act` makes.
  template <class Act>
  std::string last(Act act) {
    const RecordedCalls calls(outer.recorder);
    act(outer);
    return calls.calls().back().text();
  }

  Host inner;
  RecordingHost outer{inner};
};

TEST_F(RecordedCallsOf, SecretKeysAreMaskedInAnswersAndWhatIsWritten) {
  inner.written = "open";
  EXPECT_EQ(last([](RecordingHost& host) {
              std::string value;
              host.getSystemSetting("wifiPassword", value);
            }),
            "VornDeviceInfo.getSystemSetting wifiPassword ******** = true value=********");
  inner.accepted = false;
  inner.written = "";
  EXPECT_EQ(last([](RecordingHost& host) {
              std::string value;
              host.getSystemSetting("wifiPassword", value);
            }),
            "VornDeviceInfo.getSystemSetting wifiPassword ******** = false");
  inner.answer = "short";
  EXPECT_EQ(last([](RecordingHost& host) { host.getConfigData("apiKey"); }),
            "VornDeviceInfo.getConfigData apiKey = ********");
  EXPECT_EQ(last([](RecordingHost& host) { host.getConfigData("city"); }),
            "VornDeviceInfo.getConfigData city = short");
}

TEST_F(RecordedCallsOf, SecretsAreMaskedWhereverTheyComeUpAgain) {
  inner.answer = "hidden-7";
  last([](RecordingHost& host) { host.setSystemSetting("psk", "hidden-7"); });
  const RecordedCalls calls(outer.recorder);
  outer.setSystemSetting("psk", "hidden-7");
  outer.getConfigData("city");
  outer.setSystemSetting("note", "it is hidden-7.");
  outer.removeKeyValue({"a", "hidden-7"});
  outer.writeKeyValue({{"a", "hidden-7"}, {"b", "c"}});
  EXPECT_THROW(outer.getTimezone(), std::runtime_error);
  Texts shown;
  for (const RecordedCall& call : calls.calls()) shown.push_back(call.text());
  EXPECT_EQ(shown, (Texts{"VornDeviceInfo.setSystemSetting psk ******** = false",
                          "VornDeviceInfo.getConfigData city = ********",
                          "VornDeviceInfo.setSystemSetting note ******** = false",
                          "VornStorage.removeKeyValue ******** = false",
                          "VornStorage.writeKeyValue ******** = false",
                          "VornDeviceInfo.getTimezone = threw ********"}));
}

TEST_F(RecordedCallsOf, SecretsOfAListAreFoundAgainOneByOne) {
  const RecordedCalls calls(outer.recorder);
  outer.setAnimation({"the token", "listed-5"});
  inner.answer = "it is listed-5";
  outer.getConfigData("city");
  EXPECT_EQ(calls.calls()[0].text(), "VornLEDController.setAnimation ******** = ********");
  EXPECT_EQ(calls.calls()[1].text(), "VornDeviceInfo.getConfigData city = ********");
}

TEST_F(RecordedCallsOf, SetsAreMaskedEntryByEntry) {
  EXPECT_EQ(last([](RecordingHost& host) {
              host.writeKeyValue({{"apiToken", "x"}, {"city", "Oslo"}, {"note", "password: y"}});
            }),
            "VornStorage.writeKeyValue {apiToken=********, city=Oslo, note=********} = false");
}

TEST_F(RecordedCallsOf, TextsThatTellOfASecretAreMasked) {
  EXPECT_EQ(last([](RecordingHost& host) { host.renderGUICard("the token is 7"); }),
            "VornGUIOutput.renderGUICard ******** = false");
  EXPECT_EQ(last([](RecordingHost& host) { host.renderGUICard("the bill is 7"); }),
            "VornGUIOutput.renderGUICard \"the bill is 7\" = false");
}

TEST_F(RecordedCallsOf, ExceptionsOfMaskedCallsAreMasked) {
  struct Throwing : NullHost {
    bool setSystemSetting(std::string, std::string value) override {
      throw std::runtime_error("no " + value);
    }
  } throwing;
  RecordingHost host(throwing);
  const RecordedCalls calls(host.recorder);
  EXPECT_THROW(host.setSystemSetting("psk", "a b"), std::runtime_error);
  EXPECT_THROW(host.setSystemSetting("mode", "c d"), std::runtime_error);
  EXPECT_EQ(calls.calls()[0].text(), "VornDeviceInfo.setSystemSetting psk ******** = threw ********");
  EXPECT_EQ(calls.calls()[1].text(), "VornDeviceInfo.setSystemSetting mode \"c d\" = threw no c d");
}

TEST_F(RecordedCallsOf, LoginsHoldNoToken) {
  struct Player : NullPlayer {
    bool login(const std::string& token, const std::string& user, bool, std::chrono::milliseconds,
               std::string) override {
      if (user == "bob") throw std::runtime_error("no " + token.substr(0, 2));
      return false;
    }
  } inside;
  RecordingPlayer player(inside);
  player.recorder = outer.recorder;
  const auto login = [&](const char* user) {
    return last([&](RecordingHost&) {
      try {
        player.login("t-1", user, true, std::chrono::milliseconds(5), "p");
      } catch (const std::runtime_error&) {
      }
    });
  };
  EXPECT_EQ(login("ada"), "VornEMPAdapterControl.login ******** ada true 5ms p = false");
  EXPECT_EQ(login("bob"), "VornEMPAdapterControl.login ******** bob true 5ms p = threw ********");
}

TEST_F(RecordedCallsOf, SoundIsShownAsItIs) {
  FakeAssistant assistant(outer.recorder);
  EXPECT_EQ(last([](RecordingHost&) {
              std::vector<short> samples{1, -2};
              DeviceAbstractionLayer::CommsManager::getInstance()->notifyCallAction(
                  static_cast<DeviceAbstractionLayer::CommsControllerInterface::CallAction>(1));
            }),
            "VornCommsManager.notifyCallAction 1 = no result");
  EXPECT_EQ(last([](RecordingHost&) { DeviceAbstractionLayer::OOBE::getInstance()->getAlexaAuthStatus(); }),
            "VornOOBE.getAlexaAuthStatus = AUTHORIZED");
}

TEST_F(RecordedCallsOf, DoublesThatAreNotKnownAreShownAsTheyTell) {
  const RecordedCalls calls(outer.recorder);
  outer.recorder->run(makeCall("Mine", "go", 900, this, std::string("a b")), [] { return 3; });
  outer.recorder->run(makeCall("Mine", "go", 900, this, std::string("my password")), [] { return 3; });
  const Calls made = calls.calls();
  EXPECT_EQ(made[0].text() + " " + made[0].direction + " " + made[0].interfaceName + " " +
                std::to_string(made[0].slot),
            "Mine.go \"a b\" = 3 up Mine 900");
  EXPECT_EQ(made[1].text(), "Mine.go ******** = ********");
}

TEST_F(RecordedCallsOf, CallsThatRunWhenTheWatchBeginsAreLeftOut) {
  std::unique_ptr<RecordedCalls> calls;
  outer.recorder->onCall([&](const Call& call) {
    if (call.operation == "open") calls = std::make_unique<RecordedCalls>(outer.recorder);
  });
  outer.open();
  outer.clear();
  ASSERT_TRUE(calls);
  EXPECT_EQ(calls->calls().back().text(), "VornStorage.clear = false");
  EXPECT_EQ(calls->calls().size(), 1U);
}

RecordedCall plain() {
  RecordedCall call{};
  call.number = 1;
  call.threadNumber = 1;
  call.thread = "main";
  call.direction = "down";
  call.adapter = "A";
  call.operation = "go";
  call.interfaceName = "I";
  call.slot = 3;
  call.arguments = {"x"};
  call.result = "1";
  return call;
}

TEST(ACall, IsShownWithWhatCameOfIt) {
  RecordedCall call = plain();
  EXPECT_EQ(call.text(), "A.go x = 1");
  call.written = {"a=2", "b=3"};
  EXPECT_EQ(call.text(), "A.go x = 1 a=2 b=3");
  call.result = "";
  call.arguments = {};
  EXPECT_EQ(call.text(), "A.go = a=2 b=3");
  call.threw = true;
  call.exception = "why";
  EXPECT_EQ(call.text(), "A.go = threw why");
  call = plain();
  call.result = "";
  EXPECT_EQ(call.text(), "A.go x = no result");
}

struct Change {
  const char* what;
  void (*make)(RecordedCall&);
  bool differs;
};

class Changes : public testing::TestWithParam<Change> {};

TEST_P(Changes, AreDifferencesOrNot) {
  RecordedCall changed = plain();
  GetParam().make(changed);
  EXPECT_EQ(differenceOfCalls({plain()}, {changed}).empty(), !GetParam().differs);
  EXPECT_EQ(differenceOfCalls({changed}, {plain()}).empty(), !GetParam().differs);
}

const Change kChanges[] = {
    {"nothing", [](RecordedCall&) {}, false},
    {"number", [](RecordedCall& call) { call.number = 7; }, false},
    {"began", [](RecordedCall& call) { call.began = 7; }, false},
    {"took", [](RecordedCall& call) { call.took = 7; }, false},
    {"thread", [](RecordedCall& call) { call.thread = "other"; }, false},
    {"threadNumber", [](RecordedCall& call) { call.threadNumber = 7; }, false},
    {"line", [](RecordedCall& call) { call.line = 7; }, false},
    {"direction", [](RecordedCall& call) { call.direction = "up"; }, true},
    {"adapter", [](RecordedCall& call) { call.adapter = "B"; }, true},
    {"operation", [](RecordedCall& call) { call.operation = "stop"; }, true},
    {"interface", [](RecordedCall& call) { call.interfaceName = "J"; }, true},
    {"slot", [](RecordedCall& call) { call.slot = 4; }, true},
    {"inside", [](RecordedCall& call) { call.inside = 1; }, true},
    {"arguments", [](RecordedCall& call) { call.arguments.push_back("y"); }, true},
    {"result", [](RecordedCall& call) { call.result = "2"; }, true},
    {"written", [](RecordedCall& call) { call.written = {"a=1"}; }, true},
    {"threw", [](RecordedCall& call) { call.threw = true; }, true},
    {"exception", [](RecordedCall& call) { call.exception = "why"; }, true},
};

INSTANTIATE_TEST_SUITE_P(Calls, Changes, testing::ValuesIn(kChanges),
                         [](const auto& change) { return std::string(change.param.what); });

/// Calls of one thread, told apart by their operation.
Calls named(const std::string& names, int thread = 1, const std::string& threadName = "main") {
  Calls calls;
  for (const char name : names) {
    calls.push_back(plain());
    calls.back().operation = name;
    calls.back().threadNumber = thread;
    calls.back().thread = threadName;
  }
  return calls;
}

Calls operator+(Calls left, const Calls& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

TEST(Differences, AreShownWithTheThreeCallsBefore) {
  EXPECT_EQ(differenceOfCalls(named("abcdeX"), named("abcdeY")),
            "  before    A.c x = 1\n  before    A.d x = 1\n  before    A.e x = 1\n"
            "  expected  A.X x = 1\n  actual    A.Y x = 1\n");
  EXPECT_EQ(differenceOfCalls(named("aX"), named("a")),
            "  before    A.a x = 1\n  expected  A.X x = 1\n  actual    no more calls\n");
  EXPECT_EQ(differenceOfCalls({}, named("a")), "  expected  no more calls\n  actual    A.a x = 1\n");
}

TEST(Differences, AreOfTheThreadsThatHaveNone) {
  EXPECT_EQ(differenceOfCalls(named("a", 1) + named("b", 2), named("b", 1) + named("a", 2)), "");
  EXPECT_EQ(differenceOfCalls(named("a", 1) + named("b", 2), named("b", 1) + named("c", 2)),
            "  expected  A.a x = 1\n  actual    A.c x = 1\n");
  EXPECT_EQ(differenceOfCalls(named("a", 1) + named("a", 2), named("a", 1)),
            "  expected  A.a x = 1\n  actual    no more calls\n");
  EXPECT_EQ(differenceOfCalls(named("a", 1), named("a", 1) + named("a", 2)),
            "  expected  no more calls\n  actual    A.a x = 1\n");
}

TEST(Differences, TellThreadsWithoutNumbersApartByTheirNames) {
  EXPECT_EQ(differenceOfCalls(named("a", 0, "one") + named("b", 0, "two"), named("a", 1) + named("b", 2)),
            "");
  EXPECT_NE(differenceOfCalls(named("a", 0, "one") + named("b", 0, "one"), named("a", 1) + named("b", 2)),
            "");
  EXPECT_EQ(differenceOfCalls(named("a", 1, "one") + named("b", 1, "two"), named("ab")), "");
}

}  // namespace
