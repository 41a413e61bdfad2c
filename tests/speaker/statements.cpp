// Statements of a scenario: one table for the parser, the help, the completion and the page about them.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>

#include "language/Console.h"
#include "language/Scenario.h"
#include "recordings/Recording.h"
#include "speaker/script.h"

namespace {

using namespace vorn_speaker;
using List = std::vector<std::string>;

struct Example {
  const char* line;
  const char* played;
};

class Statements : public testing::TestWithParam<Example> {};

TEST_P(Statements, AreReadAndPlayed) {
  Script script;
  const Play play = readStatement(GetParam().line);
  ASSERT_TRUE(play);
  play(script);
  EXPECT_EQ(script.noted, GetParam().played);
}

const Example kExamples[] = {
    {"assistant VornDeviceInfo.getVolume", "assistant VornDeviceInfo.getVolume 1"},
    {"firmware VornDeviceInfo.notifyVolumeChanged 3", "firmware VornDeviceInfo.notifyVolumeChanged 1"},
    {"together 2 VornDeviceInfo.getVolume", "assistant VornDeviceInfo.getVolume 2"},
    {"together 64 VornDeviceInfo.getVolume", "assistant VornDeviceInfo.getVolume 64"},
    {"expect 30", "result 30"},
    {"expect true value=on", "result true value=on"},
    {"expect \"call\"", "result call"},
    {"expect call VornDeviceInfo.getVolume", "call VornDeviceInfo.getVolume 0"},
    {"expect call VornDeviceInfo.setSystemSetting a \"b c\" within 2s",
     "call VornDeviceInfo.setSystemSetting <a> <b c> 2000"},
    {"expect call VornDeviceInfo.setSystemSetting a \"within\" within 5ms",
     "call VornDeviceInfo.setSystemSetting <a> <within> 5"},
    {"expect no call", "no call  0"},
    {"expect no call VornDeviceInfo.getVolume", "no call VornDeviceInfo.getVolume 0"},
    {"expect heard some", "heard some 0"},
    {"expect heard 0", "heard 0 0"},
    {"expect heard 160 within 1s", "heard 160 1000"},
    {"expect trace \"a b\"", "trace a b"},
    {"expect every operation", "every"},
    {"remove DeviceInfo", "remove DeviceInfo"},
    {"create all", "create all"},
    {"remove adapters", "shut adapters down"},
    {"create adapters", "create adapters"},
    {"remove trace", "trace not writable"},
    {"create trace", "trace writable"},
    {"answer authStatus on", "answer authStatus on"},
    {"answer messageAccepted on", "answer messageAccepted true"},
    {"answer messageAccepted true", "answer messageAccepted true"},
    {"answer playbackActionAccepted off", "answer playbackActionAccepted false"},
    {"answer playbackActionAccepted false", "answer playbackActionAccepted false"},
    {"delay VornDeviceInfo.getVolume 2s", "delay VornDeviceInfo.getVolume 2000"},
    {"fail VornDeviceInfo.getVolume \"no clock\"", "fail VornDeviceInfo.getVolume no clock"},
    {"restore VornDeviceInfo.getVolume", "restore VornDeviceInfo.getVolume"},
    {"wait microphone", "microphone"},
    {"section Morning", "section Morning"},
};

INSTANTIATE_TEST_SUITE_P(Language, Statements, testing::ValuesIn(kExamples));

TEST(Statements, AreNoneInBlankLinesAndComments) {
  EXPECT_FALSE(readStatement(""));
  EXPECT_FALSE(readStatement(" \t "));
  EXPECT_FALSE(readStatement("# assistant"));
}

struct Mistake {
  const char* line;
  std::size_t column;
  const char* says;
};

class BadStatements : public testing::TestWithParam<Mistake> {};

TEST_P(BadStatements, AreToldWithColumnAndRemedy) {
  try {
    readStatement(GetParam().line);
    FAIL() << "it was read";
  } catch (const Unreadable& error) {
    EXPECT_EQ(error.column, GetParam().column);
    EXPECT_EQ(std::string(error.what()).substr(0, std::string(GetParam().says).size()), GetParam().says);
  }
}

#define VERBS                                                                                                   \
  "expected one of assistant, firmware, together, expect, remove, create, answer, delay, fail, restore, wait, " \
  "section"
const Mistake kMistakes[] = {
    {"asistant x", 1, VERBS ", found asistant; did you mean assistant?"},
    {"KEEP-THIS ada true", 1, VERBS ", found ********"},
    {"\"assistant\" x", 1, VERBS ", found \"assistant\""},
    {"expect no", 10, "expected one of call"},
    {"expect no \"call\"", 11, "expected one of call, found \"call\""},
    {"expect every day", 14, "expected one of operation, found day"},
    {"expect every operation now", 24, "expected the end of the line, found now"},
    {"expect heard", 13, "expected a number of samples, or some"},
    {"expect heard -1", 14, "expected a number of samples, or some, found -1"},
    {"expect heard some more", 19, "expected the end of the line, found more"},
    {"expect trace a b", 16, "expected the end of the line, found b"},
    {"expect call VornDeviceInfo.notifyVolumeChanged loud", 48,
     "expected a whole number, found loud, in Vorn"},
    {"expect call VornDeviceInfo.getVolume 3", 38,
     "expected the end of the line after VornDeviceInfo.getVolume, found 3"},
    {"expect call VornDeviceInfo.getVolume within x", 45, "expected a duration such as 500ms or 2s, found x"},
    {"expect call VornDeviceInfo.getVolume within -1s", 45,
     "expected a duration of a day at most, found -1s"},
    {"expect call VornDeviceInfo.getVolume within 90000s", 45, "expected a duration of a day at most"},
    {"expect call", 12, "expected an operation such as"},
    {"answer messageAccepted yes", 24, "expected true or false, found yes"},
    {"answer messageAccepted", 23, "expected the answer"},
    {"answer messageAccepted true x", 29, "expected the end of the line, found x"},
    {"answer volume 3", 8,
     "expected one of authStatus, messageAccepted, playbackActionAccepted, found volume"},
    {"together 1 VornDeviceInfo.getVolume", 10, "expected 2 to 64 threads, found 1"},
    {"together 65 VornDeviceInfo.getVolume", 10, "expected 2 to 64 threads, found 65"},
    {"together 2 VornDeviceInfo.notifyVolumeChanged 3", 12,
     "VornDeviceInfo.notifyVolumeChanged is called by the firmware, not by the assistant"},
    {"delay VornDeviceInfo.getVolume soon", 32, "expected a duration such as 500ms or 2s, found soon"},
    {"fail VornDeviceInfo.getVolume", 30, "expected the text of the exception"},
    {"restore VornDeviceInfo.getVolum", 9,
     "expected an operation, found VornDeviceInfo.getVolum; did you mean VornDeviceInfo.getVolume?"},
    {"wait microphone now", 17, "expected the end of the line, found now"},
    {"section", 8, "expected a title"},
    {"assistant VornEMPAdapterControl.login KEEP-THIS ada maybe 1s x", 53,
     "expected true or false, found ********, in VornEMPAdapterControl.login"},
    {"assistant VornEMPAdapterControl.logn KEEP-THIS", 11,
     "expected an operation of the assistant, found ********; did you mean VornEMPAdapterControl.login?"},
    {"assistant KEEP-THIS", 11,
     "expected an operation of the assistant, found ********; vorn-speaker --list names them all"},
    {"assistant VornDeviceInfo.setSystemSetting wifi_password a KEEP-THIS", 59,
     "expected the end of the line after VornDeviceInfo.setSystemSetting key value, found ********"},
};

INSTANTIATE_TEST_SUITE_P(Language, BadStatements, testing::ValuesIn(kMistakes));

TEST(BadStatements, ThatAreAMegabyteLongAreRefusedAtOnce) {
  EXPECT_THROW(readStatement("assistant " + std::string(1000000, 'g')), Unreadable);
  EXPECT_THROW(readStatement(std::string(1000000, 'g')), Unreadable);
}

TEST(Scenarios, AreReadWithEveryEndOfLine) {
  const std::vector<Step> steps = readScenario("x", "\xef\xbb\xbfsection a\r\r\nsection b\rsection c");
  ASSERT_EQ(steps.size(), 3U);
  EXPECT_EQ(steps[1].line, 3U);
  EXPECT_EQ(steps[2].line, 4U);
}

TEST(Scenarios, AreNotReadBeyondAHundredMistakes) {
  std::string text;
  for (int i = 0; i < 101; ++i) text += "mistake\n";
  try {
    readScenario("x", text);
    FAIL() << "it was read";
  } catch (const BadScenario& error) {
    const std::string told = error.what();
    EXPECT_NE(told.find("\nx:100:1: "), std::string::npos);
    EXPECT_EQ(told.substr(told.rfind('\n') + 1), "x: that is enough of mistakes, the rest was not read");
  }
}

struct Masking {
  const char* line;
  const char* shown;
};

class MaskedStatements : public testing::TestWithParam<Masking> {};

TEST_P(MaskedStatements, StillReadBack) {
  EXPECT_EQ(maskedStatement(GetParam().line), GetParam().shown);
  EXPECT_TRUE(readStatement(maskedStatement(GetParam().line)));
}

const Masking kMaskings[] = {
    {"assistant VornDeviceInfo.getVolume # loud?", "assistant VornDeviceInfo.getVolume # loud?"},
    {" \tassistant VornEMPAdapterControl.login KEEP ada true 1s x",
     "assistant VornEMPAdapterControl.login ******** ada true 1s x"},
    {"together 2 VornEMPAdapterControl.launchAndPlay \"K E\" 1s x",
     "together 2 VornEMPAdapterControl.launchAndPlay ******** 1s x"},
    {"assistant VornDeviceInfo.setSystemSetting API-KEY KEEP",
     "assistant VornDeviceInfo.setSystemSetting API-KEY ********"},
    {"assistant VornStorage.writeKeyValue {psk=\"K, E\", a=b}",
     "assistant VornStorage.writeKeyValue {a=b, psk=********}"},
    {"expect call VornEMPAdapterControl.login KEEP ada true 1s x within 2s",
     "expect call VornEMPAdapterControl.login ******** ada true 1s x within 2s"},
    {"expect \"token=KEEP\"", "expect ********"},
    {"section \"The token KEEP\"", "section ********"},
};

INSTANTIATE_TEST_SUITE_P(Language, MaskedStatements, testing::ValuesIn(kMaskings));

TEST(Lines, MayHoldASecretAlsoWhenTheyCannotBeRead) {
  for (const char* line : {"assistant VornEMPAdapterControl.logn x", "LOGIN x", "lo gin", "launch_and_play",
                           "launcAzdPlay", "log in x", "my API key", "********"})
    EXPECT_TRUE(mayHoldSecret(line)) << line;
  for (const char* line : {"", "assistant VornDeviceInfo.getVolume", "expect 30", "logout"})
    EXPECT_FALSE(mayHoldSecret(line)) << line;
}

TEST(Completion, OffersWhatTheTableHas) {
  EXPECT_EQ(completions("re"), (List{"remove", "restore"}));
  EXPECT_EQ(completions("expect "), (List{"call", "every", "heard", "no", "trace"}));
  EXPECT_EQ(completions("expect every "), List{"operation"});
  EXPECT_EQ(completions("answer m"), List{"messageAccepted"});
  EXPECT_EQ(completions("answer messageAccepted "), List{});
  EXPECT_EQ(completions("together 2 VornDeviceInfo.getVol"), List{"VornDeviceInfo.getVolume"});
  EXPECT_EQ(completions("firmware VornDeviceInfo.getVol"), List{});
  EXPECT_EQ(completions("help VornDeviceInfo.getVol"), List{"VornDeviceInfo.getVolume"});
  EXPECT_EQ(completions("wait "), List{"microphone"});
  EXPECT_EQ(completions("remove Device"), (List{"DeviceCapabilities", "DeviceInfo"}));
  EXPECT_EQ(completions(" wait  "), List{"microphone"});
}

/// The page about the speaker.
std::string page() {
  std::ifstream file(VORN_PAGE, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A row of a table, as the page has it.
std::string row(std::string form, const std::string& meaning) {
  std::size_t at = 0;
  while ((at = form.find('|', at)) != std::string::npos) form.replace(at, 1, "\\|"), at += 2;
  return "\n| `" + form + "` | " + meaning + " |\n";
}

TEST(Page, ToldEveryStatementAsTheTableDoes) {
  for (const Statement& statement : statements())
    EXPECT_NE(page().find(row(statement.form, statement.help)), std::string::npos)
        << "docs/speaker.md lacks" << row(statement.form, statement.help);
}

TEST(Page, ToldEveryFieldOfARecordingAsTheTableDoes) {
  EXPECT_EQ(recordedFields().size(), 18U);
  for (const RecordedField& field : recordedFields())
    EXPECT_NE(page().find(row(field.name, field.meaning)), std::string::npos)
        << "docs/speaker.md lacks" << row(field.name, field.meaning);
}

}  // namespace
