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
        Bad{"a = '\xC3\xBC\xE2\x82\xAC' b\xC3\xBC", ":1:11: letters beyond ASCII"},
        Bad{"a = \"\"\"x\"\"\"\"\" \xC3\xBC", ":1:15: letters beyond ASCII"},
        Bad{"\xC3\xBC = \"\xC3\xBC \xC3\xBC", ":1:1: letters beyond ASCII"},
        Bad{"\xff\xfe", "/tmp/device.toml:1:"},
        Bad{"a = \"\"\"x \\\n  \xC3\xBC\"\"\"",
            ":1:10: a letter beyond ASCII must not follow a backslash; write it as \\u00e9"},
        Bad{"a = \"\"\"x \\ \xC3\xBC\"\"\"", ":1:10: a letter beyond ASCII"},
        Bad{"locale = \"\"\"x \\\\\\\xC3\xBC\"\"\"", ":1:17: a letter beyond ASCII"},
        Bad{"a = \"\"\"x \\\n  y\"\"\"\nvol\xC3\xBCme = 3", ":3:4: letters beyond ASCII"},
        Bad{"volume = -1", "'volume' must be"}, Bad{"volume = 1.5", "'volume' must be"},
        Bad{"networkConnected = 1", "'networkConnected' must be true or false"},
        Bad{"a.b.c.d.e.f.g.h.i.j.k.l.m.n.o.p.q.r.s.t.u.v.w.x.y.z.a.b.c.d.e.f.g.h = 1",
            ":1:66: a key has at most 33 parts"},
        Bad{"\rvolume = 101\r", "/tmp/device.toml:2:10: 'volume'"}));

TEST(DeviceFileTest, KeepsLettersBeyondAsciiInTextsOfEveryKind) {
  const DeviceFile device = readText(
      "\xEF\xBB\xBF# \"K\xC3\xBC\nlocale = \"\\\"K\xC3\xBC\"\ntimezone = 'K\xC3\xBC\\'\n[config]\n"
      "a = \"\"\"K\n\xC3\xBC\"\"\"\"\nb = '''K'\xC3\xBC'''");
  EXPECT_EQ(device.locale + device.timezone, "\"K\xC3\xBCK\xC3\xBC\\");
  EXPECT_EQ(device.config.at("a") + device.config.at("b"), "K\n\xC3\xBC\"K'\xC3\xBC");
}

TEST(DeviceFileTest, NamesAFileThatItCannotRead) {
  const std::pair<const char*, const char*> cases[] = {{"/tmp/absent.toml", "No such file or directory"},
                                                       {"/tmp", "Is a directory"},
                                                       {"/dev/zero", "it holds more than 1048576 bytes"}};
  for (const auto& [path, reason] : cases) {
    try {
      DeviceFile::read(path);
      FAIL() << path;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), std::string(path) + ": cannot be read: " + reason);
    }
  }
}

TEST(DeviceFileTest, ReadsEveryEntryAndKeepsTheDefaultsOfOthers) {
  const DeviceFile device = readText(
      "locale = 'a'\ntimezone = 'b'\ncapabilities = 'c'\nvolume = 100\nmuted = true\nnetworkConnected = false\n"
      "microphoneAvailable = false\n[information]\ni = 'd'\n[config]\nc = 'e'\n[settings]\ns = 'f'\n");
  EXPECT_EQ(device.locale + device.timezone + device.capabilities + device.information.at("i") +
                device.config.at("c") + device.settings.at("s"),
            "abcdef");
  EXPECT_TRUE(device.volume == 100 && device.muted && !device.networkConnected &&
              !device.microphoneAvailable);
  const DeviceFile none = readText("volume = 0");
  EXPECT_TRUE(none.locale == "en-US" && none.volume == 0 && !none.muted && none.networkConnected &&
              none.microphoneAvailable && none.information.empty());
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
  std::string table = "[a";
  for (int i = 0; i < 400000; ++i) table += ".a";
  EXPECT_THROW(readText(table + "]"), std::runtime_error);
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

TEST_F(DisplayTest, ShowsSomeRingsOfManyAndSaysHowManyMore) {
  m_display.ring(std::vector<std::string>(34, "pulse"));
  const std::string shown = m_out.str();
  EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 33);
  EXPECT_NE(shown.find("pulse\nand 2 more\n"), std::string::npos) << shown;
}

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

std::string utf8(char32_t code) {
  if (code < 0x800) return {static_cast<char>(0xc0 | code >> 6), static_cast<char>(0x80 | (code & 0x3f))};
  std::string text{static_cast<char>(0x80 | (code >> 6 & 0x3f)), static_cast<char>(0x80 | (code & 0x3f))};
  if (code < 0x10000) return static_cast<char>(0xe0 | code >> 12) + text;
  return std::string{static_cast<char>(0xf0 | code >> 18), static_cast<char>(0x80 | (code >> 12 & 0x3f))} +
         text;
}

TEST_F(DisplayTest, GivesEachCharacterItsColumns) {
  const std::map<std::size_t, std::vector<char32_t>> kCodes = {
      {0, {0x300, 0x36f, 0x20d0, 0x20ff, 0xfe0e, 0xfe0f}},
      {1, {0xe9,    0x2ff,   0x370,   0x10ff,  0x1160,  0x20cf,  0x2100, 0x2e7f, 0x303f,
           0xa4d0,  0xabff,  0xd7a4,  0xf8ff,  0xfb00,  0xfe10,  0xfe70, 0xff61, 0xffe7,
           0x1f2ff, 0x1f650, 0x1f67f, 0x1f700, 0x1f8ff, 0x1fa00, 0x1ffff}},
      {2, {0x1100,  0x115f,  0x2e80,  0x303e,  0x3041,  0xa4cf,  0xac00,  0xd7a3,
           0xf900,  0xfaff,  0xfe30,  0xfe6f,  0xff01,  0xff60,  0xffe0,  0xffe6,
           0x1f300, 0x1f64f, 0x1f680, 0x1f6ff, 0x1f900, 0x1f9ff, 0x20000, 0x3fffd}}};
  for (const auto& [columns, codes] : kCodes) {
    for (const char32_t code : codes) {
      m_out.str("");
      m_display.card(R"({"title": "t", "text": "a)" + utf8(code) + "\"}");
      EXPECT_NE(m_out.str().find("│ a" + utf8(code) + std::string(26 - columns, ' ') + "│\n"),
                std::string::npos)
          << std::hex << static_cast<std::uint32_t>(code) << " does not take " << columns << ":\n"
          << m_out.str();
    }
  }
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

/// What is drawn, and what stands in the frame.
struct Drawing {
  const char* name;
  void (*draw)(Display&);
  const char* drawn;
};

void PrintTo(const Drawing& drawing, std::ostream* out) { *out << drawing.name; }

class Drawings : public DisplayTest, public testing::WithParamInterface<Drawing> {};

TEST_P(Drawings, AreDrawnAsTheyAre) {
  GetParam().draw(m_display);
  std::string lines;
  std::istringstream drawn(m_out.str());
  // Without the frame's corners and its right side.
  for (std::string line; std::getline(drawn, line);) {
    while (!line.empty() && (line.back() == ' ' || static_cast<unsigned char>(line.back()) > 0x7f))
      line.pop_back();
    if (line.compare(0, 3, "│") == 0) line.erase(0, 4);
    if (line.compare(0, 3, "┌") == 0) line.erase(0, 3);
    if (!line.empty()) lines += line + "|";
  }
  EXPECT_EQ(lines, GetParam().drawn);
}

INSTANTIATE_TEST_SUITE_P(
    Device, Drawings,
    testing::Values(
        Drawing{"all of a card",
                [](Display& d) {
                  d.card(R"({"title":"T","subtitle":"S","text":"X","list":["a",{"b":1}],"image":"i"})");
                },
                " T|S|X|1. a|2. {\"b\":1}|[image: i]|"},
        Drawing{"no title", [](Display& d) { d.card(R"({"text":"X"})"); }, " card|X|"},
        Drawing{"no text", [](Display& d) { d.card(R"({"title":"T"})"); }, " T|{\"title\":\"T\"}|"},
        Drawing{"numbers", [](Display& d) { d.card(R"({"title":7,"text":[1]})"); }, " 7|[1]|"},
        Drawing{"no object", [](Display& d) { d.card("[1]"); }, " card|[1]|"},
        Drawing{"a list that is none", [](Display& d) { d.card(R"({"text":"X","list":"a"})"); }, " card|X|"},
        Drawing{"lines", [](Display& d) { d.card(R"({"text":"a\nb"})"); }, " card|a|b|"},
        Drawing{"a long word", [](Display& d) { d.card(R"({"text":"abcdefghijklmnopqrstuvwxyz0123"})"); },
                " card|abcdefghijklmnopqrstuvwxyz|0123|"},
        Drawing{"just fitting", [](Display& d) { d.card(R"({"text":"abcdefghijklm opqrstuvwxyz x"})"); },
                " card|abcdefghijklm opqrstuvwxyz|x|"},
        Drawing{"no lights", [](Display& d) { d.ring({}); }, "( ············ )  lights off|"},
        Drawing{"linked", [](Display& d) { d.authorization("AUTHORIZED"); }, " Set up your speaker|Linked.|"},
        Drawing{"not linked", [](Display& d) { d.authorization("UNAUTHORIZED"); },
                " Set up your speaker|Not linked.|"},
        Drawing{"cancelled", [](Display& d) { d.authorization("cancelled"); },
                " Set up your speaker|Cancelled.|"},
        Drawing{"other", [](Display& d) { d.authorization("x\x1b"); },
                " Set up your speaker|Status: x\\x1b|"},
        Drawing{"no time", [](Display& d) { d.linking("u", "c", 0); },
                " Set up your speaker|Go to     u|and enter c|Waiting ...|"},
        Drawing{"ringing", [](Display& d) { d.call("RINGING"); }, " Call|Ringing ...|"},
        Drawing{"active", [](Display& d) { d.call("ACTIVE\x1b"); }, " Call|ACTIVE\\x1b|"}));

TEST_F(DisplayTest, PaintsOnlyForTerminals) {
  std::ostringstream painted;
  Display(painted, true).ring({"a"});
  m_display.ring({"a"});
  EXPECT_NE(painted.str().find("\x1b[38;5;"), std::string::npos);
  EXPECT_NE(painted.str().find("●\x1b[0m"), std::string::npos);
  EXPECT_EQ(m_out.str().find('\x1b'), std::string::npos);
}

TEST_F(DisplayTest, HasTwelveLightsAndIsNeverTooNarrow) {
  m_display.ring({"a"});
  std::size_t lights = 0;
  for (std::size_t at = 0; at < m_out.str().size(); ++at)
    lights += m_out.str().compare(at, 3, "●") == 0 || m_out.str().compare(at, 3, "○") == 0 ? 1 : 0;
  EXPECT_EQ(lights, 12U);
  std::ostringstream narrow;
  Display(narrow, false, 1).call("x");
  EXPECT_NE(narrow.str().find("│ x                │\n"), std::string::npos) << narrow.str();
}

TEST_F(DisplayTest, WalksThroughSetUp) {
  m_display.linking("https://example.com/code", "ABC-123", 600);
  m_display.authorization("AUTHORIZED");
  for (const char* text :
       {"https://example.com/code", "ABC-123", "The code is good for", "Waiting", "Linked."})
    EXPECT_NE(m_out.str().find(text), std::string::npos) << text;
}

}  // namespace
