// The calls that the checks make: what is known of each operation, the call ready to be made, its arguments when it ended.

#include <gtest/gtest.h>
#include <vorn_testing/RecordingHost.h>

#include <set>
#include <stdexcept>

#include "src/checks/Checks.h"

namespace {

using namespace vorn_testing::checks;
using vorn_testing::RecordingHost;
using List = std::vector<std::string>;

const Operation& named(const std::string& name) {
  for (const Operation& operation : operations()) {
    if (operation.name == name) return operation;
  }
  throw std::out_of_range(name);
}

TEST(Operations, StandByTheirSlots) {
  ASSERT_EQ(operations().size(), 80U);
  for (std::size_t i = 0; i < 80; ++i) {
    EXPECT_EQ(operations()[i].slot, static_cast<int>(i < 64 ? i : i - 64) + 3) << i;
    EXPECT_EQ(operations()[i].ofPlayer, i >= 64) << i;
  }
  EXPECT_EQ(hostOperation(13).place(), "VornDALImplIF/13/getVolume");
  EXPECT_EQ(named("getVolume").place(), "VornDALImplIF/13/getVolume");
  EXPECT_EQ(operations()[6].place().substr(0, 17), "VornDALImplIF/09/");
  EXPECT_EQ(operations()[7].place().substr(0, 17), "VornDALImplIF/10/");
  EXPECT_EQ(operations()[64].place().substr(0, 20), "VornEMPAdapterIF/03/");
}

/// "locked takes-texts takes-numbers answers-texts", as far as it does.
std::string traits(const std::string& name) {
  const Operation& operation = named(name);
  return std::string(operation.locked ? "l" : "-") + (operation.takesTexts ? "t" : "-") +
         (operation.takesNumbers ? "n" : "-") + (operation.answersTexts ? "a" : "-");
}

TEST(Operations, TellWhatTheyTakeAndAnswer) {
  EXPECT_EQ((List{traits("getVolume"), traits("getTimezone"), traits("getSystemSetting"),
                  traits("onSetVolume"), traits("setSystemSetting"), traits("login"), traits("writeKeyValue"),
                  traits("readKeyValue"), traits("onMute"), traits("getDeviceInformation"), traits("open")}),
            (List{"l---", "l--a", "-t-a", "--na", "lt--", "-tn-", "-t--", "-t-a", "---a", "l--a", "----"}));
}

TEST(Operations, HaveTheNeighboursOfTheirAdapter) {
  const auto names = [](const std::string& of) {
    std::set<std::string> all;
    for (const Operation* const each : neighbours(named(of))) all.insert(each->name);
    return all;
  };
  EXPECT_TRUE(names("getVolume").count("getVolume") && names("getVolume").count("getTimezone"));
  EXPECT_FALSE(names("getVolume").count("open") || names("getVolume").count("login"));
  EXPECT_EQ(names("login").size(), 16U);
}

TEST(Operations, TakeWhatAHostIsSaidToAccept) {
  vorn_testing::HostDemands demands;
  demands.settings = {{"mode", {"day", "night"}}};
  demands.modes = {{"light", {"on", "off", "dim"}}};
  demands.channels = {"one"};
  demands.inputs = {"hdmi", "tv"};
  demands.locales = {"de-DE"};
  takeAccepted(demands);
  const auto shown = [](const std::string& name) {
    const Operation& operation = named(name);
    List all;
    for (int which = samples(Given::kPlain); which < operation.samples(Given::kPlain); ++which)
      all.push_back(operation.prepare(Given::kPlain, which).shown);
    return all;
  };
  EXPECT_EQ(shown("getSystemSetting"), List{R"(getSystemSetting("mode", "vorn-conformance"))"});
  EXPECT_EQ(shown("setSystemSetting"),
            (List{R"(setSystemSetting("mode", "day"))", R"(setSystemSetting("mode", "night"))"}));
  EXPECT_EQ(shown("onSetMode").size(), 3U);
  EXPECT_EQ(shown("onAdjustMode").size(), 1U);
  EXPECT_EQ(shown("onChangeChannel").size(), 1U);
  EXPECT_EQ(shown("onInputChange"), (List{R"(onInputChange("hdmi"))", R"(onInputChange("tv"))"}));
  EXPECT_EQ(shown("changeAlexaLocale"), List{R"(changeAlexaLocale("de-DE"))"});
  EXPECT_EQ(named("changeAlexaLocale").samples(Given::kHostile), 14);
  EXPECT_EQ(named("onAdjustMode").samples(Given::kHostile), 28);
  const Prepared hostile = named("onAdjustMode").prepare(Given::kHostile, 15);
  EXPECT_EQ(hostile.shown, R"(onAdjustMode("light", -1))");
  hostile.revoke();  // it was not lent to anybody
  EXPECT_EQ(named("changeAlexaLocale").samples(Given::kLent), 3);
  EXPECT_EQ(named("changeAlexaLocale").samples(Given::kLoad), 7);
  EXPECT_EQ(named("alexaStateChanged").samples(Given::kWord), 3);
  EXPECT_EQ(named("alexaStateChanged").prepare(Given::kWord, 1).shown, "alexaStateChanged(\"DISCONNECTED\")");
  takeAccepted({});
  EXPECT_EQ(shown("onInputChange"), List{});
}

TEST(Calls, AreMadeAsTheyAreShown) {
  RecordingHost host;
  for (const Operation& operation : operations()) {
    const Prepared prepared = operation.prepare(Given::kPlain, 0);
    host.recorder->clear();
    auto* const player = operation.ofPlayer ? host.getEMPAdapter() : nullptr;
    prepared.make(host, player);
    ASSERT_FALSE(host.recorder->calls().empty()) << operation.name;
    const vorn_testing::Call call = host.recorder->calls().back();
    EXPECT_EQ(call.operation + " " + std::to_string(call.slot),
              operation.name + " " + std::to_string(operation.slot));
    EXPECT_EQ(prepared.shown.substr(0, prepared.shown.find('(')), operation.name);
    EXPECT_EQ(static_cast<bool>(prepared.makeThrough), operation.locked) << operation.name;
  }
}

TEST(Calls, GoThroughTheAdapterWhereAMutexIsHeld) {
  RecordingHost host;
  for (const Operation& operation : operations()) {
    if (!operation.locked) continue;
    const Prepared prepared = operation.prepare(Given::kPlain, 0);
    host.recorder->clear();
    prepared.makeThrough(host);
    ASSERT_EQ(host.recorder->calls().size(), 1U) << operation.name;
    EXPECT_EQ(host.recorder->calls()[0].slot, operation.slot);
  }
}

/// Answers texts in every form.
struct Answering : vorn_testing::NullHost {
  std::string getTimezone() override { return "UTC"; }
  std::map<std::string, std::string> getDeviceInformation() override { return {{"a", "1"}, {"b", "2"}}; }
  std::pair<bool, std::string> onMute(bool) override { return {true, "why"}; }
  bool getSystemSetting(std::string, std::string& value) override {
    value = "written";
    return true;
  }
};

TEST(Calls, CollectTheTextsOfTheirAnswers) {
  Answering host;
  const auto texts = [&](const std::string& name) {
    return named(name).prepare(Given::kPlain, 0).make(host, nullptr);
  };
  EXPECT_EQ(texts("getTimezone"), List{"UTC"});
  EXPECT_EQ(texts("getDeviceInformation"), (List{"a", "1", "b", "2"}));
  EXPECT_EQ(texts("onMute"), List{"why"});
  EXPECT_EQ(texts("getSystemSetting"), List{"written"});
  EXPECT_EQ(texts("getVolume"), List{});
}

TEST(Calls, SeeAnArgumentThatIsChangedThoughItIsTheCallers) {
  struct Changing : vorn_testing::NullHost {
    std::map<std::string, std::string> readKeyValue(const std::string& key) override {
      const_cast<std::string&>(key) = "mine";
      return {};
    }
  } host;
  try {
    named("readKeyValue").prepare(Given::kPlain, 0).make(host, nullptr);
    ADD_FAILURE() << "nothing was seen";
  } catch (const Outcome& outcome) {
    EXPECT_EQ(outcome.detail,
              "readKeyValue() changed the caller's argument from \"vorn-conformance\" to \"mine\"");
  }
}

TEST(Arguments, ThatHaveEndedAreKnownByTheirOperation) {
  struct Keeping : vorn_testing::NullHost {
    const std::string* kept = nullptr;
    const char* text = nullptr;
    std::map<std::string, std::string> readKeyValue(const std::string& key) override {
      kept = &key;
      text = key.data();
      return {};
    }
  } host;
  const Prepared plain = named("readKeyValue").prepare(Given::kPlain, 1);
  plain.make(host, nullptr);
  EXPECT_EQ(ownerOfRevoked(host.kept), nullptr);
  plain.revoke();
  EXPECT_STREQ(ownerOfRevoked(host.kept), "readKeyValue");
  const char* const page = reinterpret_cast<const char*>(host.kept);
  EXPECT_STREQ(ownerOfRevoked(page + 4095), "readKeyValue");
  EXPECT_EQ(ownerOfRevoked(page - 1), nullptr);
  EXPECT_EQ(ownerOfRevoked(page + 4096), nullptr);
#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  const Prepared lent = named("readKeyValue").prepare(Given::kLent, 0);
  lent.make(host, nullptr);
  const char* const text = host.text;
  lent.revoke();
  EXPECT_STREQ(ownerOfRevoked(text), "readKeyValue");
  EXPECT_STREQ(ownerOfRevoked(text + 300000), "readKeyValue");
  EXPECT_EQ(ownerOfRevoked(text + 300001), nullptr);
#endif
}

TEST(Arguments, ThatHaveEndedLeaveCopiesOfThem) {
  struct Copying : vorn_testing::NullHost {
    std::string copy;
    std::map<std::string, std::string> readKeyValue(const std::string& key) override {
      copy = key;
      return {};
    }
  } host;
  const Prepared lent = named("readKeyValue").prepare(Given::kLent, 0);
  lent.make(host, nullptr);
  lent.revoke();
  EXPECT_TRUE(host.copy == "L" + std::string(300000, 'l'));
}

}  // namespace
