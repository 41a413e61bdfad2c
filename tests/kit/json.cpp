// JSON as recordings use it: texts written, values read, everything else refused.

#include "src/recording/Json.h"

#include <gtest/gtest.h>

namespace {

using vorn_testing::recording::Json;
using vorn_testing::recording::jsonText;
using vorn_testing::recording::NoJson;
using vorn_testing::recording::parseJson;
using Texts = std::vector<std::string>;

/// A value in words: kind, then what it holds.
std::string told(const Json& json) {
  const char* const kinds[] = {"null", "word", "text", "list", "object"};
  std::string words = kinds[json.kind];
  if (!json.text.empty()) words += " " + json.text;
  for (const Json& item : json.items) words += " [" + told(item) + "]";
  for (const auto& [name, value] : json.members) words += " {" + name + ": " + told(value) + "}";
  return words;
}

std::string read(const std::string& text) {
  try {
    return told(parseJson(text));
  } catch (const NoJson& problem) {
    return problem.what();
  }
}

struct Written {
  std::string value;
  const char* json;
};

class JsonTexts : public testing::TestWithParam<Written> {};

TEST_P(JsonTexts, AreWrittenWithTheirEscapes) { EXPECT_EQ(jsonText(GetParam().value), GetParam().json); }

const Written kWritten[] = {
    {"", R"("")"},
    {"a b", R"("a b")"},
    {"\"\\/", R"("\"\\/")"},
    {std::string("\0\x01\x1f !", 5), R"("\u0000\u0001\u001f !")"},
    {"\n\t\x7f~", R"("\u000a\u0009\u007f~")"},
    {"\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80.", "\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80.\""},
    {"\xff"
     "a\xc3",
     "\"\xef\xbf\xbd"
     "a\xef\xbf\xbd\""},
};

INSTANTIATE_TEST_SUITE_P(Written, JsonTexts, testing::ValuesIn(kWritten));

TEST(JsonTexts, OfAListStandInBrackets) {
  EXPECT_EQ((Texts{jsonText(Texts{}), jsonText(Texts{""}), jsonText(Texts{"a", "b", "c"})}),
            (Texts{"[]", R"([""])", R"(["a","b","c"])"}));
}

struct Reading {
  std::string text, told;
};

class Values : public testing::TestWithParam<Reading> {};

TEST_P(Values, AreReadOrRefused) { EXPECT_EQ(read(GetParam().text), GetParam().told); }

std::string nested(int depth) {
  return std::string(static_cast<std::size_t>(depth), '[') + "1" +
         std::string(static_cast<std::size_t>(depth), ']');
}

std::string toldNested(int depth) { return depth == 0 ? "word 1" : "list [" + toldNested(depth - 1) + "]"; }

constexpr char kNone[] = "no JSON";

const Reading kReadings[] = {
    {"null", "null null"},
    {"true", "word true"},
    {" \t\r\n12 \n", "word 12"},
    {"-1.5e+3", "word -1.5e+3"},
    {"\"\"", "text"},
    {"\"a b\"", "text a b"},
    {R"("\"\\\/\b\f\n\r\t")", "text \"\\/\b\f\n\r\t"},
    {R"("\u0041\u00e9\u20ac\uffff")", "text A\xc3\xa9\xe2\x82\xac\xef\xbf\xbf"},
    {R"("\u007f\u0080\u07ff\u0800")", "text \x7f\xc2\x80\xdf\xbf\xe0\xa0\x80"},
    {R"("\ud83d\ude00.")", "text \xf0\x9f\x98\x80."},
    {R"("\ud800\udc00\udbff\udfff")", "text \xf0\x90\x80\x80\xf4\x8f\xbf\xbf"},
    {R"("\ud7ff\udc00")", "text \xed\x9f\xbf\xed\xb0\x80"},
    {R"("\ud83d")", "text \xed\xa0\xbd"},
    {R"("\ud83dx")", "text \xed\xa0\xbdx"},
    {"[]", "list"},
    {"[ ]", "list"},
    {"[1,\"a\" , [null]]", "list [word 1] [text a] [list [null null]]"},
    {"{}", "object"},
    {R"({"a":1,"b":{"c":[]}})", "object {a: word 1} {b: object {c: list}}"},
    {R"( { "a" : 1 , "a" : 2 } )", "object {a: word 1} {a: word 2}"},
    {nested(16), toldNested(16)},
    {nested(17), kNone},
    {R"({"a":)" + nested(16) + "}", kNone},
    {R"("\udc00\u0041")",
     "text \xed\xb0\x80"
     "A"},
    {"", kNone},
    {" ", kNone},
    {"1 2", kNone},
    {"[1", kNone},
    {"[1 2]", kNone},
    {"[1}", kNone},
    {"[1,]", kNone},
    {"[,1]", kNone},
    {"[", kNone},
    {"]", kNone},
    {"{", kNone},
    {"{\"a\"}", kNone},
    {"{\"a\":}", kNone},
    {"{a:1}", kNone},
    {"{\"a\":1,}", kNone},
    {"{\"a\":1]", kNone},
    {"{1:1}", kNone},
    {"\"", kNone},
    {"\"a", kNone},
    {"\"a\\", kNone},
    {"\"a\\\"", kNone},
    {"\"\\x\"", kNone},
    {"\"\\u\"", kNone},
    {"\"\\u004\"", kNone},
    {"\"\\u004g\"", kNone},
    {"\"\\u0041", kNone},
    {"\"\\ud83d\\u\"", kNone},
    {"\"a\"b", kNone},
    {":", kNone},
    {",", kNone},
    {std::string("1\0", 2), kNone},
};

INSTANTIATE_TEST_SUITE_P(Json, Values, testing::ValuesIn(kReadings));

TEST(Members, AreFoundByTheirWholeName) {
  const Json json = parseJson(R"({"a":1,"ab":2,"a":3})");
  ASSERT_TRUE(json.member("a") && json.member("ab"));
  EXPECT_EQ(json.member("a")->text + json.member("ab")->text, "12");
  EXPECT_FALSE(json.member("b") || json.member("") || parseJson("[1]").member("a"));
}

}  // namespace
