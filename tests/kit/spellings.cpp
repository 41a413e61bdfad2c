// Values as the checks and the recordings spell them, and words that were meant.

#include "src/text/Spelling.h"

#include <gtest/gtest.h>
#include <vorn_testing/Spelling.h>
#include <vorn_testing/Text.h>

#include <limits>

namespace {

using vorn_testing::didYouMean;
using vorn_testing::distanceBelow;
using vorn_testing::oneLine;
using vorn_testing::spell;
using vorn_testing::checks::spelled;
using Texts = std::vector<std::string>;
using Entries = std::map<std::string, std::string>;

struct Spelled {
  std::string value, spelled;
};

class InFindings : public testing::TestWithParam<Spelled> {};

TEST_P(InFindings, TextsAreInQuotesAndNotTooLong) {
  EXPECT_EQ(spelled(GetParam().value), GetParam().spelled);
}

const std::string kSixty(60, 'a'), kSixtyOne(61, 'b');

const Spelled kSpelled[] = {
    {"", "\"\""},
    {"a b", "\"a b\""},
    {"\"\\", "\"\\\"\\\\\""},
    {std::string("\0\n\x1f ~\x7f", 6), "\"\\x00\\x0a\\x1f ~\\x7f\""},
    {"\xc3\xa9\xff", "\"\xc3\xa9\\xff\""},
    {kSixty, "\"" + kSixty + "\""},
    {kSixtyOne, "\"" + kSixtyOne.substr(0, 20) + "\"... (61 bytes)"},
    {kSixtyOne.substr(0, 19) + "\xe2\x82\xac" + kSixty,
     "\"" + kSixtyOne.substr(0, 19) + "\xe2\x82\xac\"... (82 bytes)"},
};

INSTANTIATE_TEST_SUITE_P(Checks, InFindings, testing::ValuesIn(kSpelled));

TEST(InFindings, ListsAndSetsAreCountedWhenTheyAreLong) {
  EXPECT_EQ((Texts{spelled(Texts{}), spelled(Texts{"a"}), spelled(Texts{"a", "b", "c"}),
                   spelled(Texts{"a", "b", "c", "d"})}),
            (Texts{"{}", R"({"a"})", R"({"a", "b", "c"})", "{4 texts}"}));
  EXPECT_EQ((Texts{spelled(Entries{}), spelled(Entries{{"a", "1"}, {"b", "2"}}),
                   spelled(Entries{{"a", ""}, {"b", ""}, {"c", ""}})}),
            (Texts{"{}", R"({{"a", "1"}, {"b", "2"}})", "{3 entries}"}));
}

TEST(InFindings, NumbersAreExact) {
  EXPECT_EQ((Texts{spelled(true), spelled(false), spelled(0.1), spelled(1e300), spelled(-2.0),
                   spelled(std::numeric_limits<std::int64_t>::min()), spelled(std::chrono::milliseconds(-5)),
                   spelled(vorn_testing::checks::CommsStateInfo{"IDLE"})}),
            (Texts{"true", "false", "0.10000000000000001", "1.0000000000000001e+300", "-2",
                   "-9223372036854775808", "-5ms", "{\"IDLE\"}"}));
}

class InRecordings : public testing::TestWithParam<Spelled> {};

TEST_P(InRecordings, TextsAreInQuotesWhereTheyMust) {
  EXPECT_EQ(spell(GetParam().value), GetParam().spelled);
}

const Spelled kRecorded[] = {
    {"", "\"\""},
    {"a", "a"},
    {"a.b:c/d-e_f'g|h;", "a.b:c/d-e_f'g|h;"},
    {"a b", "\"a b\""},
    {"\t", "\"\\x09\""},
    {"\r", "\"\\x0d\""},
    {"\n", "\"\\n\""},
    {"\"", "\"\\\"\""},
    {"\\", "\"\\\\\""},
    {"#", "\"#\""},
    {"[", "\"[\""},
    {"]", "\"]\""},
    {"{", "\"{\""},
    {"}", "\"}\""},
    {",", "\",\""},
    {"=", "\"=\""},
    {"\x1f", "\"\\x1f\""},
    {"\x7f", "\"\\x7f\""},
    {"~", "~"},
    {"\xc3\xa9", "\xc3\xa9"},
    {"\xc3\xa9 \xc3", "\"\\xc3\\xa9 \\xc3\""},
    {"\xc2\x85", "\"\\xc2\\x85\""},
    {"\xe2\x80\xae", "\"\\xe2\\x80\\xae\""},
    {"a\xff", "\"a\\xff\""},
    {"\xc3\xa9\x01", "\"\xc3\xa9\\x01\""},
};

INSTANTIATE_TEST_SUITE_P(Recording, InRecordings, testing::ValuesIn(kRecorded));

TEST(InRecordings, EverythingElseIsShort) {
  EXPECT_EQ(
      (Texts{spell(true), spell(-7), spell(std::int64_t{1} << 40), spell(0.1), spell(-1e300), spell(2.0),
             spell(std::chrono::milliseconds(12)), spell(Texts{}), spell(Texts{"a", "b c", ""}),
             spell(std::vector<short>{}), spell(std::vector<short>{1, -2, 3}), spell(Entries{}),
             spell(Entries{{"a", "b c"}, {"d=", ""}})}),
      (Texts{"true", "-7", "1099511627776", "0.1", "-1e+300", "2", "12ms", "[]", R"([a, "b c", ""])", "[]",
             "[1, -2, 3]", "{}", R"({a="b c", "d="=""})"}));
}

struct Likeness {
  std::size_t limit;
  const char *left, *right;
  std::size_t distance;
};

class Distances : public testing::TestWithParam<Likeness> {};

TEST_P(Distances, AreCountedUpToALimit) {
  const Likeness& row = GetParam();
  EXPECT_EQ(distanceBelow(row.limit, row.left, row.right), row.distance);
  EXPECT_EQ(distanceBelow(row.limit, row.right, row.left), row.distance);
}

const Likeness kLikenesses[] = {
    {9, "", "", 0},
    {9, "a", "", 1},
    {9, "abc", "", 3},
    {9, "abc", "ABC", 0},
    {9, "abc", "abd", 1},
    {9, "abc", "bc", 1},
    {9, "abc", "ac", 1},
    {9, "abc", "ab", 1},
    {9, "ab", "ba", 2},
    {9, "abc", "bcd", 2},
    {9, "kitten", "sitting", 3},
    {3, "abc", "def", 3},
    {2, "abc", "def", 2},
    {4, "abc", "def", 3},
    {0, "a", "a", 0},
    {2, "abcd", "ab", 2},
    {1, "abcd", "ab", 1},
    {3, "abcd", "ab", 2},
    {9, "aXbXc", "abc", 2},
    {9, "\xc3\x84", "\xc3\xa4", 1},
};

INSTANTIATE_TEST_SUITE_P(Words, Distances, testing::ValuesIn(kLikenesses));

TEST(Words, ThatWereMeantEndAMessage) {
  EXPECT_EQ(didYouMean("volum", {"mute", "volume", "volumes"}), "; did you mean volume?");
  EXPECT_EQ(didYouMean("something", {"mute"}), "");
  EXPECT_EQ(didYouMean("a", {}), "");
  EXPECT_EQ(didYouMean("ab", {"ax", "ay"}), "");
  EXPECT_EQ(didYouMean("abc", {"abx", "aby"}), "; did you mean abx?");
  EXPECT_EQ(didYouMean("abc", {"ab", "abc"}), "; did you mean abc?");
}

TEST(OneLine, HoldsNoLineFeedAndNothingThatATerminalObeys) {
  EXPECT_EQ(oneLine(""), "");
  EXPECT_EQ(oneLine("a\nb\n\n"), "a\\nb\\n\\n");
  EXPECT_EQ(oneLine("\x1b[0m\r\xff"), "\\x1b[0m\\x0d\\xff");
}

}  // namespace
