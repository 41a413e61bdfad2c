// UTF-8 as every tool reads it, and what of it a terminal may see.

#include <gtest/gtest.h>
#include <vorn_testing/Text.h>

namespace {

using vorn_testing::characterAt;
using vorn_testing::harmless;
using vorn_testing::isUtf8;

struct Reading {
  std::string bytes;
  std::size_t length;
  std::uint32_t code;
};

class Characters : public testing::TestWithParam<Reading> {};

TEST_P(Characters, AreReadByTheirLengthAndCode) {
  const auto [bytes, length, code] = GetParam();
  EXPECT_EQ(characterAt("a" + bytes + "b", 1).length, length);
  EXPECT_EQ(length > 0 ? characterAt(bytes, 0).code : 0, code);
  EXPECT_EQ(isUtf8("a" + bytes + "b"), length > 0);
}

const Reading kReadings[] = {
    {std::string(1, '\0'), 1, 0},
    {"\x7f", 1, 0x7f},
    {"\xc2\x80", 2, 0x80},
    {"\xdf\xbf", 2, 0x7ff},
    {"\xe0\xa0\x80", 3, 0x800},
    {"\xed\x9f\xbf", 3, 0xd7ff},
    {"\xee\x80\x80", 3, 0xe000},
    {"\xef\xbf\xbf", 3, 0xffff},
    {"\xf0\x90\x80\x80", 4, 0x10000},
    {"\xf4\x8f\xbf\xbf", 4, 0x10ffff},
    // Nothing begins with these.
    {"\x80", 0, 0},
    {"\xbf", 0, 0},
    {"\xf8\x88\x80\x80\x80", 0, 0},
    {"\xf8\x90\x80\x80", 0, 0},
    {"\xff", 0, 0},
    // Too short.
    {"\xc2", 0, 0},
    {"\xe0\xa0", 0, 0},
    {"\xf0\x90\x80", 0, 0},
    {"\xc2\xc2", 0, 0},
    {"\xe2\x80\x41", 0, 0},
    // Too long for their code.
    {"\xc0\x80", 0, 0},
    {"\xc1\xbf", 0, 0},
    {"\xe0\x9f\xbf", 0, 0},
    {"\xf0\x8f\xbf\xbf", 0, 0},
    // Halves of a pair, and beyond the last.
    {"\xed\xa0\x80", 0, 0},
    {"\xed\xbf\xbf", 0, 0},
    {"\xf4\x90\x80\x80", 0, 0},
};

INSTANTIATE_TEST_SUITE_P(Utf8, Characters, testing::ValuesIn(kReadings));

TEST(Utf8, IsReadToTheEndOfATextAndNoFurther) {
  EXPECT_EQ(characterAt("\xe2\x80", 0).length, 0U);
  EXPECT_TRUE(isUtf8(""));
  EXPECT_FALSE(isUtf8("a\xc2"));
}

struct Shown {
  std::string text;
  const char* shown;
};

class Terminals : public testing::TestWithParam<Shown> {};

TEST_P(Terminals, SeeNothingThatTheyWouldObey) { EXPECT_EQ(harmless(GetParam().text), GetParam().shown); }

const Shown kShown[] = {
    {"", ""},
    {"plain ~", "plain ~"},
    {"a\nb", "a\nb"},
    {std::string(1, '\0'), "\\x00"},
    {"\t\v", "\\x09\\x0b"},
    {"\x1f ", "\\x1f "},
    {"\x7e\x7f", "~\\x7f"},
    {"\xc2\x9f\xc2\xa0", "\\xc2\\x9f\xc2\xa0"},
    {"\xe2\x80\xa7", "\xe2\x80\xa7"},
    {"\xe2\x80\xa8", "\\xe2\\x80\\xa8"},
    {"\xe2\x80\xae", "\\xe2\\x80\\xae"},
    {"\xe2\x80\xaf", "\xe2\x80\xaf"},
    {"\xe2\x81\xa5", "\xe2\x81\xa5"},
    {"\xe2\x81\xa6", "\\xe2\\x81\\xa6"},
    {"\xe2\x81\xa9", "\\xe2\\x81\\xa9"},
    {"\xe2\x81\xaa", "\xe2\x81\xaa"},
    {"\xff\x41", "\\xff\x41"},
    {"\xe2\x82", "\\xe2\\x82"},
};

INSTANTIATE_TEST_SUITE_P(Utf8, Terminals, testing::ValuesIn(kShown));

}  // namespace
