// Values of the speaker's language: read, spelled, split into lines, masked. What is spelled reads back.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <vorn_testing/Call.h>

#include <chrono>
#include <clocale>
#include <thread>

#include "speaker/comma_locale.h"
#include "text/Lines.h"
#include "text/Secrets.h"
#include "text/Spelling.h"
#include "text/Tokens.h"

namespace {

using namespace vorn_speaker;
using Set = std::map<std::string, std::string>;
using List = std::vector<std::string>;
using std::chrono::milliseconds;

Token only(const std::string& line) {
  const std::vector<Token> tokens = split(line);
  return tokens.size() == 1 ? tokens[0] : Token{Token::kWord, "no single token", {}, {}, 0};
}

RC_GTEST_PROP(Spelled, TextReadsBack, (const std::string& value)) {
  RC_ASSERT(read<std::string>(only(spell(value))) == value);
}
RC_GTEST_PROP(Spelled, ListReadsBack, (const List& value)) {
  RC_ASSERT(read<List>(only(spell(value))) == value);
}
RC_GTEST_PROP(Spelled, SetReadsBack, (const Set& value)) {
  RC_ASSERT(read<Set>(only(spell(value))) == value);
}
RC_GTEST_PROP(Spelled, SoundReadsBack, (const std::vector<short>& value)) {
  RC_ASSERT(read<std::vector<short>>(only(spell(value))) == value);
}
RC_GTEST_PROP(Spelled, NumberReadsBack, (int whole, std::int64_t large, double number, bool flag)) {
  RC_ASSERT(read<int>(only(spell(whole))) == whole);
  RC_ASSERT(read<std::int64_t>(only(spell(large))) == large);
  RC_ASSERT(read<double>(only(spell(number))) == number);
  RC_ASSERT(read<bool>(only(spell(flag))) == flag);
}
RC_GTEST_PROP(Spelled, DurationReadsBack, (int count)) {
  RC_ASSERT(read<milliseconds>(only(spell(milliseconds(count)))) == milliseconds(count));
}
RC_GTEST_PROP(Spelled, StaysInOneLineOfHarmlessText, (const std::string& value)) {
  const std::string line = spell(value);
  RC_ASSERT(oneLine(line) == line);
}
RC_GTEST_PROP(Read, NeverFailsOtherwiseThanByAMessage, (const std::string& line)) {
  try {
    split(line);
  } catch (const Unreadable& error) {
    RC_ASSERT(error.column >= 1U && error.column <= line.size() + 1);
  }
}

struct Spelling {
  std::string value;
  const char* spelled;
};

class Texts : public testing::TestWithParam<Spelling> {};

TEST_P(Texts, AreSpelledPlainlyWhereTheyCan) { EXPECT_EQ(spell(GetParam().value), GetParam().spelled); }

const Spelling kTexts[] = {
    {"kitchen", "kitchen"},
    {"", R"("")"},
    {"two words", R"("two words")"},
    {"#1", R"("#1")"},
    {"a\"b\\c", R"("a\"b\\c")"},
    {"a\nb\tc\r", R"("a\nb\x09c\x0d")"},
    {"a,b", R"("a,b")"},
    {"a=b", R"("a=b")"},
    {"[a]", R"("[a]")"},
    {"{a}", R"("{a}")"},
    {"Gr\xc3\xbc\xc3\x9f"
     "e",
     "Gr\xc3\xbc\xc3\x9f"
     "e"},
    {"\xc3", R"("\xc3")"},
    {"\x7f", R"("\x7f")"},
    {"\x1b[2J", R"("\x1b[2J")"},
    {"\xc2\x9b"
     "2J",
     R"("\xc2\x9b2J")"},
    {"\xe2\x80\xae", R"("\xe2\x80\xae")"},
};

INSTANTIATE_TEST_SUITE_P(Spelled, Texts, testing::ValuesIn(kTexts));

TEST(Spelled, NumbersAreShortestAndHaveAPoint) {
  EXPECT_EQ(spell(2.5), "2.5");
  EXPECT_EQ(spell(0.1), "0.1");
  EXPECT_EQ(spell(std::chrono::milliseconds(1500)), "1500ms");
}

TEST(Spelled, NumbersHaveAPointWhateverTheLocale) {
  if (!makeCommaLocale()) GTEST_SKIP() << "the package locales is not here";
  ASSERT_TRUE(std::setlocale(LC_NUMERIC, "comma"));
  EXPECT_EQ(spell(2.5), "2.5");
  EXPECT_EQ(vorn_testing::text(2.5), "2.5");
  EXPECT_EQ(read<double>(only("2.5")), 2.5);
  std::setlocale(LC_NUMERIC, "C");
}

struct Reading {
  const char* line;
  Token::Kind kind;
  const char* text;
};

class Tokens : public testing::TestWithParam<Reading> {};

TEST_P(Tokens, AreReadAsTheyStand) {
  const Token token = only(GetParam().line);
  EXPECT_EQ(token.kind, GetParam().kind);
  EXPECT_EQ(token.text, GetParam().text);
}

const Reading kReadings[] = {
    {"word", Token::kWord, "word"},
    {"  word \t\r", Token::kWord, "word"},
    {"a#b # a comment", Token::kWord, "a#b"},
    {R"("")", Token::kQuoted, ""},
    {R"("a b # \" \\ \n \t \x41")", Token::kQuoted, "a b # \" \\ \n \t A"},
    {"[]", Token::kList, "[]"},
    {"[ ]", Token::kList, "[]"},
    {"[a b, \"c, d\" ,]", Token::kList, "[a b, c, d]"},
    {"{}", Token::kMap, "{}"},
    {"{ b = 2 , a=\"x=1, y\"}", Token::kMap, "{a=x=1, y, b=2}"},
    {"{a=}", Token::kMap, "{a=}"},
};

INSTANTIATE_TEST_SUITE_P(Read, Tokens, testing::ValuesIn(kReadings));

struct Refusal {
  const char* line;
  std::size_t column;
  const char* says;
};

class Refusals : public testing::TestWithParam<Refusal> {};

TEST_P(Refusals, NameTheColumnAndWhatWasExpected) {
  try {
    split(GetParam().line);
    FAIL() << "it was read";
  } catch (const Unreadable& error) {
    EXPECT_EQ(error.column, GetParam().column);
    EXPECT_STREQ(error.what(), GetParam().says);
  }
}

const Refusal kRefusals[] = {
    {"a \"b", 3, "expected a closing \""},
    {"a [b", 3, "expected a closing ]"},
    {"{a=b", 1, "expected a closing }"},
    {"\"a\"b", 4, "expected a blank after the value"},
    {"[a]b", 4, "expected a blank after the value"},
    {"[\"a\"b]", 5, "expected a comma or a closing ]"},
    {"{a=\"b\" c=d}", 8, "expected a comma or a closing }"},
    {"{a}", 3, "expected = between a key and its value"},
    {"{a=b, a=c}", 1, "expected every key once"},
    {"\"\\q\"", 2, "expected one of the escapes \\n \\t \\\" \\\\ \\x41"},
    {"\"\\x4\"", 2, "expected one of the escapes \\n \\t \\\" \\\\ \\x41"},
    {"\"\\x4g\"", 2, "expected one of the escapes \\n \\t \\\" \\\\ \\x41"},
    {"\"\\", 2, "expected one of the escapes \\n \\t \\\" \\\\ \\x41"},
};

INSTANTIATE_TEST_SUITE_P(Read, Refusals, testing::ValuesIn(kRefusals));

template <class Value>
std::string problem(const std::string& line) {
  try {
    read<Value>(only(line));
    return "it was read";
  } catch (const Unreadable& error) {
    return error.what();
  }
}

TEST(Read, NumbersAndFlagsAreWholeWords) {
  EXPECT_EQ(problem<int>("2147483648"), "expected a whole number, found 2147483648");
  EXPECT_EQ(problem<int>("1x"), "expected a whole number, found 1x");
  EXPECT_EQ(problem<int>("\"1\""), "expected a whole number, found \"1\"");
  EXPECT_EQ(problem<double>("2,5"), "expected a number, found 2,5");
  EXPECT_EQ(problem<bool>("\"on\""), "expected true or false, found \"on\"");
  EXPECT_TRUE(read<bool>(only("on")));
  EXPECT_FALSE(read<bool>(only("off")));
}

TEST(Read, DurationsHaveTheirUnit) {
  EXPECT_EQ(read<milliseconds>(only("2s")), milliseconds(2000));
  EXPECT_EQ(read<milliseconds>(only("2ms")), milliseconds(2));
  EXPECT_EQ(read<milliseconds>(only("2")), milliseconds(2));
  EXPECT_EQ(problem<milliseconds>("9223372036854775807s"),
            "expected a duration such as 500ms or 2s, found 9223372036854775807s");
  EXPECT_EQ(problem<milliseconds>("\"2s\""), "expected a duration such as 500ms or 2s, found \"2s\"");
}

TEST(Read, GroupsAreNoTextsAndTextsNoGroups) {
  EXPECT_EQ(problem<std::string>("[a]"), "expected a text (in quotes if it begins with a bracket)");
  EXPECT_EQ(problem<List>("a"), "expected a list such as [en-US, de-DE], found a");
  EXPECT_EQ(problem<Set>("[a]"), "expected a set such as {alarm=07:00, city=Oslo}, found [a]");
  EXPECT_EQ(problem<std::vector<short>>("3"), "expected samples such as [0, 120, -120], found 3");
  EXPECT_EQ(problem<std::vector<short>>("[1, 40000]"),
            "expected samples such as [0, 120, -120], found [1, 40000]");
}

TEST(Messages, HoldNeitherControlCharactersNorWholeBooks) {
  EXPECT_EQ(problem<int>("\x1b[2J"), "expected a whole number, found \\x1b[2J");
  EXPECT_EQ(problem<int>(std::string(1000000, 'a')),
            "expected a whole number, found " + std::string(80, 'a') + "...");
  EXPECT_EQ(problem<int>("\"\""), "expected a whole number, found \"\"");
}

TEST(Messages, KeepTheRestWhenWhatWasFoundIsMasked) {
  const Unreadable error = Unreadable(3, "expected a number", "abc", "; really").with(", in x");
  EXPECT_STREQ(error.what(), "expected a number, found abc; really, in x");
  EXPECT_STREQ(error.masked().what(), "expected a number, found ********; really, in x");
  EXPECT_STREQ(Unreadable(3, "expected a number").masked().what(), "expected a number");
}

TEST(Lines, EndByEveryKindOfEnd) {
  EXPECT_EQ(lines("\xef\xbb\xbf"
                  "a\r\nb\rc\n\nd"),
            (List{"a", "b", "c", "", "d"}));
  EXPECT_EQ(lines("a\n"), List{"a"});
  EXPECT_EQ(lines(""), List{});
  EXPECT_EQ(lines("\n"), List{""});
}

TEST(Lines, AreCutBetweenCharacters) {
  EXPECT_EQ(excerpt(std::string(79, 'a') + "\xc3\xbc"), std::string(79, 'a') + "...");
  EXPECT_EQ(excerpt(std::string(78, 'a') + "\xc3\xbc"), std::string(78, 'a') + "\xc3\xbc");
  EXPECT_EQ(excerpt("a\nb"), "a\\nb");
}

struct Hiding {
  List parameters;
  const char* given;
  const char* shown;
  bool answer;
};

class Arguments : public testing::TestWithParam<Hiding> {};

TEST_P(Arguments, AreMaskedByName) {
  const Masked shown = masked(GetParam().parameters, split(GetParam().given));
  std::string line;
  for (const Token& token : shown.arguments) line += (line.empty() ? "" : " ") + spell(token);
  EXPECT_EQ(line, GetParam().shown);
  EXPECT_EQ(shown.answer, GetParam().answer);
}

const Hiding kHidings[] = {
    {{"state"}, "READY", "READY", false},
    {{"accessToken", "userName"}, "secret-abc ada", "******** ada", false},
    {{"playContextToken", "offset"}, "\"a, b\" 5s", "******** 5s", false},
    {{"key", "value"}, "wifiPassword abc", "wifiPassword ********", true},
    {{"key", "value"}, "WIFI_PASSWORD abc", "WIFI_PASSWORD ********", true},
    {{"key", "value"}, "channel abc", "channel abc", false},
    {{"key"}, "apiToken", "apiToken", true},
    {{"keys"}, "[apiToken, b]", "[apiToken, b]", false},
    {{"entries"}, "{apiToken=\"a, b=c}\", city=Oslo}", "{apiToken=********, city=Oslo}", false},
    {{"entries"}, "{\"a, b\"=\"x, token=1\", c=d}", "{\"a, b\"=********, c=d}", false},
    {{"first", "second", "third"}, "\"auth token\" abc d", "******** ******** ********", true},
    {{"first", "second", "third"}, "a \"token: abc\" d", "a ******** ********", true},
    {{"animations"}, "[a, \"token=b\"]", "********", true},
    {{"accessToken"}, "a b {c=d}", "******** ******** ********", false},
    {{"state"}, "a b", "a b", false},
    {{}, "a ******** b", "a ******** ********", true},
    {{"key", "value"}, "pin_code {a=b}", "pin_code ********", true},
};

INSTANTIATE_TEST_SUITE_P(Masked, Arguments, testing::ValuesIn(kHidings));

TEST(KnownSecrets, AreFoundAgainUnlessTheyAreShort) {
  KnownSecrets known;
  known.add({"abcdef", "abcde"});
  EXPECT_TRUE(known.in("x abcdef y"));
  EXPECT_FALSE(known.in("x abcde y"));
  EXPECT_TRUE(known.in("abcdef"));
  EXPECT_FALSE(known.in("abcdeabcdxf"));
  EXPECT_FALSE(KnownSecrets().in("token"));
}

TEST(KnownSecrets, AreFoundAsOtherTextsSpellThem) {
  KnownSecrets known;
  known.add({"Gr\u00fc\u00dfe \"an\"\t<alle> & \U0001f511/1"});
  for (const char* const spelled : {R"(Gr\u00fc\u00DFe \"an\"\t<alle> & \ud83d\udd11\/1)",
                                    R"(Gr\xc3\xbc\303\237e \x22an\42\11<alle> & \U0001F511/1)",
                                    "Gr%C3%BC%c3%9fe%20%22an%22%09%3Calle%3E%20%26%20%F0%9F%94%91%2F1",
                                    "Gr%u00FC%u00dfe %22an%22%09<alle> & %uD83D%uDD11/1",
                                    "Gr&#252;&#xDF;e &quot;an&quot;&#9;&lt;alle&gt; &amp; &#x1F511;/1",
                                    R"(Gr\\u00fc\\u00dfe \\\"an\\\"\\t<alle> & \\ud83d\\udd11/1)",
                                    "Gr%25C3%25BC%25C3%259Fe \"an\"%2509<alle> %2526 %25F0%259F%2594%2591/1"})
    EXPECT_TRUE(known.in(std::string("{\"text\": \"") + spelled + "\"}")) << spelled;
  for (const char* const other : {"Gr%C3%BC%C3%9Fe%20%22an%22%0b%3Calle%3E%20%26%20%F0%9F%94%91%2F1",
                                  "Gr\\u00fc\\u00DFe", "%", "\\", "\\u", "&", "&#;", "100 %\\"})
    EXPECT_FALSE(known.in(other)) << other;
}

TEST(KnownSecrets, AreFoundWhereATextWasCutOrItsBytesWereReplaced) {
  KnownSecrets known;
  known.add({std::string("before\0behind", 13), "first1\nsecond",
             "left12\xff"
             "right12",
             "K\xc3\xbc"
             "che12"});
  for (const char* const part : {"before", "behind", "first1", "second", "left12", "right12"})
    EXPECT_TRUE(known.in(std::string("x ") + part)) << part;
  EXPECT_FALSE(known.in("che12"));
}

TEST(KnownSecrets, AreFoundWithEveryNameOfACharacter) {
  KnownSecrets known;
  known.add({"a\rb\bc\fd'e\tf\"g/h\\i>j"});
  EXPECT_TRUE(known.in(R"(a\rb\bc\fd\'e\tf\"g\/h\\i>j)"));
  EXPECT_TRUE(known.in("a&#Xd;b&#8;c&#12;d&apos;e&#9;f&quot;g&#x2F;h&#92;i&gt;j"));
  EXPECT_TRUE(known.in("a&#13b&#8c&#12d'e&#9f\"g/h&#92i&#62j"));
}

TEST(KnownSecrets, ThatAreEscapesThemselvesAreFound) {
  KnownSecrets known;
  known.add({"pa%41ss\\n&amp;"});
  EXPECT_TRUE(known.in("with pa%41ss\\n&amp; in it"));
  EXPECT_TRUE(known.in("{\"pa%41ss\\\\n&amp;\"}"));
}

TEST(KnownSecrets, AreAddedByManyThreadsAtOnce) {
  KnownSecrets known;
  const auto add = [&](const std::string& thread) {
    for (int i = 0; i < 5000; ++i) known.add({std::to_string(i) + " of thread " + thread});
  };
  std::thread one(add, "one"), other(add, "other");
  one.join();
  other.join();
  int found = 0;
  for (int i = 0; i < 5000; ++i) {
    const std::string number = std::to_string(i);
    found += known.in(number + " of thread one") && known.in(number + " of thread other") ? 1 : 0;
  }
  EXPECT_EQ(found, 5000);
}

RC_GTEST_PROP(KnownSecrets, AreFoundInsideAnyText,
              (const std::string& before, const std::string& secret, const std::string& after)) {
  RC_PRE(secret.size() >= 6U);
  KnownSecrets known;
  known.add({secret, secret + "x", secret.substr(0, 6) + "other"});
  RC_ASSERT(known.in(before + secret + after));
}

}  // namespace
