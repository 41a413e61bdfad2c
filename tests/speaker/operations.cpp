// The speaker's operations: found, described, compared, bound.

#include "language/Operations.h"

#include <gtest/gtest.h>
#include <vorn_testing/Text.h>

#include <set>

#include "text/Tokens.h"

namespace {

using namespace vorn_speaker;
using List = std::vector<std::string>;

struct Likeness {
  const char* word;
  const char* meant;
};

class Words : public testing::TestWithParam<Likeness> {};

TEST_P(Words, AreTakenForTheNearestNameIfForAny) {
  const List names = {"volume", "mute", "play", "playPause"};
  EXPECT_EQ(vorn_testing::nearest(GetParam().word, names), GetParam().meant);
}

// At most one letter in three may be wrong.
const Likeness kLikenesses[] = {
    {"volume", "volume"},
    {"VOLUME", "volume"},
    {"volum", "volume"},
    {"vlume", "volume"},
    {"volumee", "volume"},
    {"velume", "volume"},
    {"vulame", "volume"},
    {"vulama", ""},
    {"mtue", ""},
    {"moat", ""},
    {"pley", "play"},
    {"playpause", "playPause"},
    {"playPose", "playPause"},
    {"", ""},
    {"somethingelse", ""},
    {"volumevolumevolume", ""},
    {"pl", ""},
    {"mut", "mute"},
};

INSTANTIATE_TEST_SUITE_P(Operations, Words, testing::ValuesIn(kLikenesses));

TEST(Operations, AreFoundByTheirFullName) {
  const Operation* const found = operationNamed("VornDeviceInfo.getVolume");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->fullName(), "VornDeviceInfo.getVolume");
  EXPECT_FALSE(operationNamed("getVolume") || operationNamed("vorndeviceinfo.getvolume") ||
               operationNamed(""));
}

TEST(Operations, AreFoundAsTheFirstOfTheirOverloads) {
  for (const Operation& operation : operations()) {
    const Operation* const found = operationNamed(operation.fullName());
    ASSERT_TRUE(found);
    EXPECT_LE(found, &operation);
    EXPECT_EQ(found->fullName(), operation.fullName());
  }
}

TEST(Operations, AreFoundWhereTheirCallsArrive) {
  std::set<std::pair<std::string, int>> places;
  for (const Operation& operation : operations()) {
    EXPECT_EQ(operationAt(operation.target, operation.slot), &operation) << operation.fullName();
    EXPECT_TRUE(places.insert({operation.target, operation.slot}).second) << operation.fullName();
  }
  EXPECT_FALSE(operationAt("VornDALImplIF", 0) || operationAt("", 13));
}

TEST(Operations, TellHowTheyAreUsed) {
  EXPECT_EQ(usage(*operationNamed("VornDeviceInfo.getVolume")), "VornDeviceInfo.getVolume");
  EXPECT_EQ(usage(*operationNamed("VornDeviceInfo.getSystemSetting")),
            "VornDeviceInfo.getSystemSetting key [value]");
  EXPECT_EQ(usage(*operationNamed("VornMediaPlayerFactory.createDalMediaPlayer")),
            "VornMediaPlayerFactory.createDalMediaPlayer name firstFlag secondFlag");
}

TEST(Operations, TellWhatTheirArgumentsLookLike) {
  EXPECT_EQ(parameterHelp(*operationNamed("VornDeviceInfo.getVolume")), "");
  EXPECT_EQ(
      parameterHelp(*operationNamed("VornEMPAdapterControl.launchAndPlay")),
      "      playContextToken: a text\n      offset: a duration such as 500ms or 2s\n      playerId: a text\n");
  EXPECT_EQ(parameterHelp(*operationNamed("VornMediaPlayerFactory.createDalMediaPlayer")),
            "      name: a text\n      firstFlag: true or false\n      secondFlag: true or false\n");
}

TEST(Operations, HaveANameAndATypeForEveryParameter) {
  for (const Operation& operation : operations()) {
    const List names = parameterNames(operation);
    EXPECT_EQ(names.size(), operation.parameters.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
      EXPECT_FALSE(names[i].empty() || operation.parameters[i].type.empty()) << operation.fullName();
      EXPECT_EQ(names[i], operation.parameters[i].name);
    }
  }
}

struct Comparison {
  const char* operation;
  const char* expected;
  List spelled;
  bool same;
};

class Arguments : public testing::TestWithParam<Comparison> {};

TEST_P(Arguments, AreComparedAsValues) {
  const auto& [name, expected, spelled, same] = GetParam();
  EXPECT_EQ(takes(*operationNamed(name), split(expected), spelled), same);
}

constexpr char kLaunch[] = "VornEMPAdapterControl.launchAndPlay";
constexpr char kSet[] = "VornDeviceInfo.setSystemSetting";
constexpr char kGet[] = "VornDeviceInfo.getSystemSetting";
const Comparison kComparisons[] = {
    {kLaunch, "", {"a", "2000ms", "x"}, true},
    {kLaunch, "a 2s x", {"a", "2000ms", "x"}, true},
    {kLaunch, "a 2000 \"x\"", {"a", "2000ms", "x"}, true},
    {kLaunch, "a 2001ms x", {"a", "2000ms", "x"}, false},
    {kLaunch, "b 2s x", {"a", "2000ms", "x"}, false},
    {kLaunch, "a 2s y", {"a", "2000ms", "x"}, false},
    {kLaunch, "a soon x", {"a", "2000ms", "x"}, false},
    {kLaunch, "a 2s", {"a", "2000ms", "x"}, false},
    {kLaunch, "a 2s x y", {"a", "2000ms", "x"}, false},
    {kSet, "mode on", {"mode", "on"}, true},
    {kSet, "mode", {"mode", "on"}, false},
    {kSet, "mode on on", {"mode", "on"}, false},
    // What the operation writes need not be told.
    {kGet, "mode", {"mode", "on"}, true},
    {kGet, "mode on", {"mode", "on"}, true},
    {kGet, "mode off", {"mode", "on"}, false},
    {kGet, "other", {"mode", "on"}, false},
    // Not typed by the list: as texts.
    {"VornMediaPlayerFactory.createDalMediaPlayer", "kitchen true false", {"kitchen", "true", "false"}, true},
    {"VornMediaPlayerFactory.createDalMediaPlayer", "kitchen true", {"kitchen", "true", "false"}, false},
    {"VornMediaPlayerFactory.createDalMediaPlayer", "kitchen on false", {"kitchen", "true", "false"}, false},
};

INSTANTIATE_TEST_SUITE_P(Operations, Arguments, testing::ValuesIn(kComparisons));

std::string refusal(const std::string& line) {
  std::vector<Token> words = split(line);
  const Token name = words.front();
  words.erase(words.begin());
  try {
    checkArguments(name, words, line.size() + 1);
    return "";
  } catch (const Unreadable& error) {
    return std::to_string(error.column) + ": " + error.what();
  }
}

TEST(Operations, CheckArgumentsOfEitherSideAndOfAnyOverload) {
  EXPECT_EQ(refusal("VornDeviceInfo.notifyVolumeChanged 3"), "");
  EXPECT_EQ(refusal("VornDeviceInfo.setSystemSetting a b"), "");
  EXPECT_EQ(refusal("VornDeviceInfo.setSystemSetting"), "");
  EXPECT_EQ(refusal("VornDeviceInfo.setSystemSetting a"),
            "34: expected value, a text, in VornDeviceInfo.setSystemSetting key value");
  EXPECT_EQ(refusal("VornDeviceCapabilities.onSetPowerState true"), "");
  EXPECT_EQ(refusal("VornDeviceCapabilities.onSetPowerState true lamp"), "");
}

TEST(Operations, TellTheOverloadThatWasReadFurthest) {
  EXPECT_EQ(
      refusal("VornDeviceCapabilities.onSetPowerState true lamp more"),
      "50: expected the end of the line after VornDeviceCapabilities.onSetPowerState on target, found more");
}

}  // namespace
