// The speaker's device file, its state, its external player and its display.

#include <gtest/gtest.h>
#include <vorn_testing/Text.h>

#include <climits>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "device/parts/DeviceFile.h"
#include "device/parts/DeviceState.h"
#include "device/parts/Display.h"
#include "device/parts/Playlist.h"

namespace {

using namespace vorn_speaker;
using std::chrono::milliseconds;

DeviceFile readText(const std::string& text) {
  std::ofstream("/tmp/device.toml") << text;
  return DeviceFile::read("/tmp/device.toml");
}

TEST(DeviceFileTest, ReadsTheShippedFile) {
  const DeviceFile device = DeviceFile::read(VORN_DATA "/device.toml");
  EXPECT_EQ(device.information.at("friendlyName"), "Kitchen");
  EXPECT_EQ(device.volume, 30);
  EXPECT_EQ(device.settings.at("handsFreeAlwaysOnEnabled"), "true");
}

struct Bad {
  const char* text;
  const char* says;
};

class BadDeviceFiles : public testing::TestWithParam<Bad> {};

TEST_P(BadDeviceFiles, AreRefusedWithPlaceAndRemedy) {
  try {
    readText(GetParam().text);
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find(GetParam().says), std::string::npos) << error.what();
  }
}

INSTANTIATE_TEST_SUITE_P(
    Device, BadDeviceFiles,
    testing::Values(
        Bad{"volume = 101", "/tmp/device.toml:1:10: 'volume' must be a whole number from 0 to 100"},
        Bad{"\nvolume = \"x\"", ":2:10: 'volume'"}, Bad{"locale = 3", "'locale' must be a text in quotes"},
        Bad{"muted = \"yes\"", "'muted' must be true or false"},
        Bad{"volum = 3", ":1:9: 'volum' is not known here; known are"},
        Bad{"information = 3", "'information' must be a table of texts"},
        Bad{"[config]\nclientID = 3", ":2:12: 'clientID' must be a text"}, Bad{"a = = b", ":1:5: "},
        Bad{"locale = \"\xC3\xBC\" # \xC3\xBC\nvol\xC3\xBCme = 3", ":2:4: letters beyond ASCII"},
        Bad{"a = '' b\xC3\xBC", ":1:9: letters beyond ASCII"},
        Bad{"a = \"\"\"x\"\"\"\"\" \xC3\xBC", ":1:15: letters beyond ASCII"},
        Bad{"\xC3\xBC = \"\xC3\xBC \xC3\xBC", ":1:1: letters beyond ASCII"},
        Bad{"\xff\xfe", "/tmp/device.toml:1:"}));

TEST(DeviceFileTest, KeepsLettersBeyondAsciiInTextsOfEveryKind) {
  const DeviceFile device = readText(
      "\xEF\xBB\xBF# \"K\xC3\xBC\nlocale = \"\\\"K\xC3\xBC\"\ntimezone = 'K\xC3\xBC\\'\n[config]\n"
      "a = \"\"\"K\n\xC3\xBC\"\"\"\"\nb = '''K'\xC3\xBC'''");
  EXPECT_EQ(device.locale + device.timezone, "\"K\xC3\xBCK\xC3\xBC\\");
  EXPECT_EQ(device.config.at("a") + device.config.at("b"), "K\n\xC3\xBC\"K'\xC3\xBC");
}

TEST(DeviceFileTest, NamesAFileThatIsNotThere) {
  EXPECT_THROW(DeviceFile::read("/tmp/absent.toml"), std::runtime_error);
  EXPECT_THROW(DeviceFile::read("/tmp"), std::runtime_error);
}

TEST(DeviceStateTest, ChangesWhatItReports) {
  DeviceState state{DeviceFile{}};
  EXPECT_EQ(state.setVolume(40), DeviceState::Answer(true, "volume 40"));
  EXPECT_EQ(state.adjustVolume(-10).second, "volume 30");
  EXPECT_EQ(state.volume(), 30);
}

TEST(DeviceStateTest, RefusesWhatCannotBeAndChangesNothing) {
  DeviceState state{DeviceFile{}};
  EXPECT_FALSE(state.setVolume(INT_MIN).first || state.setVolume(101).first ||
               state.setRange(std::nan("")).first);
  EXPECT_FALSE(state.adjustMode("brightness", 1).first || state.record(false).first || state.setInput(""));
  EXPECT_EQ(state.volume(), 30);
}

TEST(DeviceStateTest, BoundsEveryStep) {
  DeviceState state{DeviceFile{}};
  EXPECT_EQ(state.adjustVolume(INT_MAX).second, "volume 100");
  EXPECT_EQ(state.adjustVolume(INT_MIN).second, "volume 0");
  EXPECT_EQ(state.seek(INT_MIN).second, "position 0 s");
}

TEST(DeviceStateTest, HoldsNumbersAtTheirEnds) {
  DeviceState state{DeviceFile{}};
  const std::string last = std::to_string(LLONG_MAX);
  state.setMode("gain", last);
  state.setChannel(last);
  EXPECT_EQ(state.adjustMode("gain", 1).second, "mode gain " + last);
  EXPECT_EQ(state.skipChannel(INT_MAX).second, "channel " + last);
  state.setMode("gain", std::to_string(LLONG_MIN));
  EXPECT_EQ(state.adjustMode("gain", INT_MIN).second, "mode gain " + std::to_string(LLONG_MIN));
}

TEST(DeviceFileTest, AnswersBentBytesWithADeviceOrAPlace) {
  std::ifstream file(VORN_DATA "/device.toml");
  const std::string good{std::istreambuf_iterator<char>(file), {}};
  for (std::size_t at = 0; at < good.size(); at += 13) {
    for (const char bent : {'\0', '"', '[', '\n', '\xff'}) {
      std::string text = good;
      text[at] = bent;
      try {
        const int volume = readText(text).volume;
        EXPECT_TRUE(volume >= 0 && volume <= 100) << at;
      } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()).find("/tmp/device.toml:"), 0U) << error.what();
      }
    }
  }
}

TEST(DeviceFileTest, RefusesWhatIsNestedTooDeep) {
  EXPECT_THROW(readText("a = " + std::string(100000, '[')), std::runtime_error);
}

TEST(DeviceStateTest, ReflectsASettingInItsDeviceInformation) {
  DeviceState state(readText("[settings]\nfriendlyName = \"a\""));
  EXPECT_TRUE(state.setSetting("friendlyName", "b"));
  EXPECT_EQ(state.information().at("friendlyName"), "b");
  EXPECT_FALSE(state.setSetting("unknown", "b"));
}

class PlaylistTest : public testing::Test {
 protected:
  nlohmann::json state() { return nlohmann::json::parse(m_playlist.getPlaybackState("kitchen")); }

  void logInAndPlay() {
    ASSERT_TRUE(m_playlist.login("token", "me", false, milliseconds(1), "kitchen"));
    ASSERT_TRUE(m_playlist.launchAndPlay("context", milliseconds(1000), "kitchen"));
  }

  Playlist m_playlist;
};

TEST_F(PlaylistTest, RefusesCommandsBeforeALogin) {
  EXPECT_FALSE(m_playlist.launchAndPlay("context", milliseconds(0), "") || m_playlist.nextTrack(""));
  EXPECT_EQ(state()["state"], "STOPPED");
}

TEST_F(PlaylistTest, PlaysPausesAndMoves) {
  logInAndPlay();
  EXPECT_TRUE(m_playlist.pause("") && !m_playlist.pause("") && m_playlist.resume("") &&
              m_playlist.nextTrack(""));
  EXPECT_EQ(state()["track"], 2);
  EXPECT_EQ(state()["position"], 0);
}

TEST_F(PlaylistTest, BoundsASkipToTheTrack) {
  logInAndPlay();
  EXPECT_TRUE(m_playlist.skipForward(milliseconds(INT64_MAX), ""));
  EXPECT_EQ(state()["position"], 180000);
  EXPECT_TRUE(m_playlist.skipForward(milliseconds(INT64_MIN), ""));
  EXPECT_EQ(state()["position"], 0);
}

TEST_F(PlaylistTest, EndsWithItsListUnlessItRepeats) {
  logInAndPlay();
  m_playlist.setRepeatAll("");
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(m_playlist.nextTrack(""));
  EXPECT_EQ(state()["track"], 1);
  m_playlist.setRepeatNone("");
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(m_playlist.nextTrack(""));
  EXPECT_EQ(state()["state"], "STOPPED");
}

class DisplayTest : public testing::Test {
 protected:
  std::ostringstream m_out;
  Display m_display{m_out, false, 30};
};

TEST_F(DisplayTest, LaysACardOut) {
  m_display.card(R"({"title": "Weather", "text": "Sunny with a chance of rain later", "list": ["a", "b"]})");
  EXPECT_EQ(m_out.str(),
            "┌ Weather ───────────────────┐\n"
            "│ Sunny with a chance of     │\n"
            "│ rain later                 │\n"
            "│ 1. a                       │\n"
            "│ 2. b                       │\n"
            "└────────────────────────────┘\n");
}

TEST_F(DisplayTest, ShowsAnUnknownDocumentAsItIsAndObeysNoControlCharacter) {
  m_display.card("\x1b[2Jplain \xff");
  EXPECT_NE(m_out.str().find("\\x1b[2Jplain \\xff"), std::string::npos) << m_out.str();
  EXPECT_EQ(m_out.str().find('\x1b'), std::string::npos);
}

TEST_F(DisplayTest, CountsTheColumnsOfWideCharactersAndOfMarks) {
  m_display.card("{\"title\": \"日本\", \"text\": \"天気は晴れです今日はとても良い cafe\u0301\"}");
  EXPECT_EQ(m_out.str(),
            "┌ 日本 ──────────────────────┐\n"
            "│ 天気は晴れです今日はとても │\n"
            "│ 良い cafe\u0301                  │\n"
            "└────────────────────────────┘\n");
}

TEST_F(DisplayTest, ShowsACardThatIsNestedTooDeepAsItIs) {
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  m_display.card("{\"title\": \"a\", \"text\": " + deep + "}");
  EXPECT_NE(m_out.str().find("{\"title\": \"a\""), std::string::npos) << m_out.str().substr(0, 200);
}

TEST(HarmlessTest, MakesBrokenTextVisible) {
  EXPECT_EQ(vorn_testing::harmless("\xe0\x82\x9b"), "\\xe0\\x82\\x9b");  // An overlong control sequence.
  EXPECT_EQ(vorn_testing::harmless("\xed\xa0\x80"), "\\xed\\xa0\\x80");  // Half of a pair.
  EXPECT_EQ(vorn_testing::harmless("\xf4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // Beyond the last.
  EXPECT_EQ(vorn_testing::harmless("\xc2\x9b"), "\\xc2\\x9b");
  EXPECT_EQ(vorn_testing::harmless("\xe2\x80\xae"), "\\xe2\\x80\\xae");  // Turns the text around.
  EXPECT_EQ(vorn_testing::harmless("grün 日本 😀\n"), "grün 日本 😀\n");
}

TEST_F(DisplayTest, ClearsOnlyWhatIsShown) {
  EXPECT_FALSE(m_display.clear());
  m_display.card("{}");
  EXPECT_TRUE(m_display.clear() && !m_display.clear());
}

TEST_F(DisplayTest, DrawsEachAnimationDifferently) {
  m_display.ring({"listening", "thinking"});
  const std::string drawn = m_out.str();
  EXPECT_NE(drawn.substr(0, drawn.find("listening")),
            drawn.substr(drawn.find('\n') + 1, drawn.find("listening")));
}

TEST_F(DisplayTest, WalksThroughSetUp) {
  m_display.linking("https://example.com/code", "ABC-123", 600);
  m_display.authorization("AUTHORIZED");
  for (const char* text :
       {"https://example.com/code", "ABC-123", "The code is good for", "Waiting", "Linked."})
    EXPECT_NE(m_out.str().find(text), std::string::npos) << text;
}

}  // namespace
