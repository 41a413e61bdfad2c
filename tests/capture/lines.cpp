// Values and calls as vorn-capture writes them: masked on their way into a ring, spelled on their way out of it.

#include <gtest/gtest.h>

#include <limits>

#include "../../tools/capture/library/Render.h"

namespace {

using namespace vorn_capture;
using vorn_testing::Direction;
using vorn_testing::Guard;
using Texts = std::vector<std::string>;

/// A place that its values need no more than.
class Paper {
 public:
  template <class Value>
  void put(const Value& value) {
    const std::size_t before = m_size;
    Pen pen(m_bytes + m_size);
    pen.put(value);
    m_size = static_cast<std::size_t>(pen.at() - m_bytes);
    EXPECT_LE(m_size - before, room(value));
    EXPECT_EQ(m_size % 8, 0U);
  }
  void masked() {
    Pen pen(m_bytes + m_size);
    pen.masked();
    m_size = static_cast<std::size_t>(pen.at() - m_bytes);
  }
  template <class Record>
  void record(const Record& record) {
    std::memcpy(m_bytes + m_size, &record, sizeof record);
    m_size += sizeof record;
  }
  const char* bytes() const { return m_bytes; }

 private:
  alignas(8) char m_bytes[4096] = {};
  std::size_t m_size = 0;
};

std::atomic<bool> hostWasSeen{true};

struct Called : Function {
  Called() : Function{} {
    operation.adapter = "VornDeviceInfo";
    operation.name = "getSystemSetting";
    operation.direction = Direction::kDown;
    operation.guard = Guard::kMutex;
    operation.target = "VornDALImplIF";
    operation.slot = 21;
    operation.parameters = "key value";
    fronted = &hostWasSeen;
  }
};

template <class Value>
std::string argument(const Value& value) {
  Paper from, to;
  Begin begin{};
  begin.arguments = 1;
  from.record(begin);
  from.put(told(value));
  End end{};
  to.record(end);
  const Called called;
  Bytes line;
  renderCall(line, {called, "main", 1, 0}, from.bytes(), to.bytes());
  const std::string text(line.text());
  const std::size_t at = text.find("\"arguments\":[") + 13;
  return text.substr(at, text.find("],\"result\"") - at);
}

TEST(Arguments, AreSpelledAsScenariosDo) {
  EXPECT_EQ((Texts{argument(std::string("plain")), argument(std::string("a b")), argument(std::string()),
                   argument(std::string("\"\\\n\t\x1f\x7f")), argument(std::string("=")),
                   argument(std::string("#,[]{}"))}),
            (Texts{R"("plain")", R"("\"a b\"")", R"("\"\"")", R"("\"\\\"\\\\\\n\\x09\\x1f\\x7f\"")",
                   R"("\"=\"")", R"("\"#,[]{}\"")"}));
  EXPECT_EQ((Texts{argument(std::string("\xc3\xa9")), argument(std::string("\xff")),
                   argument(std::string("\xc2\x85")), argument(std::string("\xc3\xa9\xff")),
                   argument(std::string("\xc3\xa9\x01"))}),
            (Texts{"\"\xc3\xa9\"", R"("\"\\xff\"")", R"("\"\\xc2\\x85\"")", R"("\"\\xc3\\xa9\\xff\"")",
                   "\"\\\"\xc3\xa9\\\\x01\\\"\""}));
  EXPECT_EQ(
      (Texts{argument(true), argument(false), argument(-7), argument(std::int64_t{1} << 40),
             argument(std::numeric_limits<std::int64_t>::min()), argument(std::chrono::milliseconds(5))}),
      (Texts{"\"true\"", "\"false\"", "\"-7\"", "\"1099511627776\"", "\"-9223372036854775808\"", "\"5ms\""}));
  const int object = 0;
  EXPECT_EQ((Texts{argument(static_cast<const void*>(&object)), argument(static_cast<const void*>(nullptr))}),
            (Texts{"\"object\"", "\"null\""}));
}

TEST(Arguments, OfManyPartsHaveTheirBrackets) {
  EXPECT_EQ((Texts{argument(Texts{}), argument(Texts{"a", "b c", ""}), argument(Entries{}),
                   argument(Entries{{"a", "1"}, {"b c", ""}})}),
            (Texts{R"("[]")", R"("[a, \"b c\", \"\"]")", R"("{}")", R"("{a=1, \"b c\"=\"\"}")"}));
}

TEST(Arguments, ThatAreNumbersAreShortest) {
  const std::pair<double, const char*> kNumbers[] = {
      {0, "0"},           {-0.0, "-0"},
      {1, "1"},           {0.1, "0.1"},
      {-2.5, "-2.5"},     {100, "100"},
      {1e5, "1e+05"},     {123456, "123456"},
      {1e22, "1e+22"},    {1e300, "1e+300"},
      {1e-5, "1e-05"},    {0.0001, "1e-04"},
      {0.001, "0.001"},   {1.0 / 3, "0.3333333333333333"},
      {5e-324, "5e-324"}, {1.7976931348623157e308, "1.7976931348623157e+308"}};
  for (const auto& [number, spelled] : kNumbers)
    EXPECT_EQ(argument(number), '"' + std::string(spelled) + '"');
  EXPECT_EQ(argument(std::numeric_limits<double>::infinity()), "\"inf\"");
  EXPECT_EQ(argument(std::numeric_limits<double>::quiet_NaN()), "\"nan\"");
}

struct Quoted {
  std::string text, quoted;
};

class InQuotes : public testing::TestWithParam<Quoted> {};

TEST_P(InQuotes, TextsAreJson) {
  Bytes line;
  quote(line, GetParam().text);
  EXPECT_EQ(line.text(), GetParam().quoted);
}

const Quoted kQuoted[] = {
    {"", R"("")"},
    {"a/b", R"("a/b")"},
    {"\"\\", R"("\"\\")"},
    {"\b\f\n\r\t", R"("\b\f\n\r\t")"},
    {std::string("\0\x01\x1f ", 4), R"("\u0000\u0001\u001f ")"},
    {"\x7f~", "\"\x7f~\""},
    {"\xc3\xa9\xe2\x82\xac.", "\"\xc3\xa9\xe2\x82\xac.\""},
    {"\xff\xc3\xa9\xc3", "\"\xef\xbf\xbd\xc3\xa9\xef\xbf\xbd\""},
};

INSTANTIATE_TEST_SUITE_P(Lines, InQuotes, testing::ValuesIn(kQuoted));

/// A call that began at 5 ms of the recording, and all that came of it.
struct Made {
  Called called;
  Begin begin{};
  End end{};
  Paper from, to;

  Made() {
    begin.time = 5000000;
    begin.number = 3;
    begin.inside = 2;
    end.number = 4;
    end.time = 9000999;
  }
  /// Puts down what is set; the values follow.
  void put() {
    from.record(begin);
    to.record(end);
  }
  std::string call() {
    Bytes text;
    renderCall(text, {called, "main", 7, 1000000}, from.bytes(), to.bytes());
    return std::string(text.text());
  }
  /// From a field on.
  std::string since(const char* field) {
    const std::string text = call();
    return text.substr(text.find(std::string("\"") + field + "\":"));
  }
};

TEST(Calls, HoldWhatIsKnownOfThem) {
  Made made;
  made.begin.arguments = 2;
  made.end.answers = true;
  made.end.written = 1;
  made.put();
  made.from.put(std::string_view("mode"));
  made.from.masked();
  made.to.put(true);
  made.to.put(std::int64_t{1});
  made.to.put(std::string_view("on 1"));
  EXPECT_EQ(
      made.call(),
      R"({"call":4,"time":4000,"duration":4000,"thread":"main","direction":"down","adapter":"VornDeviceInfo",)"
      R"("operation":"getSystemSetting","interface":"VornDALImplIF","slot":21,"inside":2,)"
      R"("arguments":["mode","********"],"result":"true","written":["value=\"on 1\""],"exception":null,)"
      R"("threadNumber":7,"waited":null,"host":null,"reached":false})");
}

TEST(Calls, ThatHaveNotReturnedAreOpen) {
  Made made;
  made.begin.arguments = 1;
  made.put();
  made.from.put(std::string_view("mode"));
  Bytes text;
  renderOpen(text, {made.called, "a\"b", 7, 1000000}, made.from.bytes());
  EXPECT_EQ(text.text(),
            R"({"open":{"call":3,"time":4000,"thread":"a\"b","direction":"down","adapter":"VornDeviceInfo",)"
            R"("operation":"getSystemSetting","interface":"VornDALImplIF","slot":21,"inside":2,)"
            R"("arguments":["mode"],"threadNumber":7}})");
}

TEST(Calls, HoldTheirException) {
  Made made;
  made.end.threw = true;
  made.put();
  made.to.put(std::string_view("no \"x\""));
  EXPECT_EQ(made.since("result").substr(0, 48), R"("result":"","written":[],"exception":"no \"x\"",)");
  Made answered;
  answered.end.answers = true;
  answered.put();
  answered.to.put(Answer{true, "why"});
  EXPECT_EQ(answered.since("result").substr(0, 33), R"("result":"true why","written":[],)");
}

TEST(Calls, AnswerAsTheKitRendersIt) {
  const auto result = [](const auto& value) {
    Made made;
    made.end.answers = true;
    made.put();
    made.to.put(told(value));
    const std::string text = made.since("result");
    return text.substr(9, text.find(",\"written\"") - 9);
  };
  EXPECT_EQ((Texts{result(std::string("a b")), result(Texts{"a b", "c"}), result(Entries{{"a", "b c"}}),
                   result(0.1), result(Answer{false, ""}), result(-3)}),
            (Texts{R"("a b")", R"("[a b, c]")", R"("{a=b c}")", R"("0.10000000000000001")", R"("false")",
                   R"("-3")"}));
}

struct Times {
  const char* what;
  Direction direction;
  Guard guard;
  std::int64_t arrived, left, locked;
  Reached reached;
  bool fronted;
  const char* told;
};

class Reaching : public testing::TestWithParam<Times> {};

TEST_P(Reaching, IsToldWithItsTimes) {
  const Times& row = GetParam();
  Made made;
  made.called.operation.direction = row.direction;
  made.called.operation.guard = row.guard;
  hostWasSeen = row.fronted;
  made.end.arrived = row.arrived;
  made.end.left = row.left;
  made.end.locked = row.locked;
  made.end.reached = row.reached;
  made.put();
  EXPECT_EQ(made.since("waited"), row.told);
}

constexpr Direction kDown = Direction::kDown, kUp = Direction::kUp;
const Times kTimes[] = {
    {"NotKnown", kDown, Guard::kMutex, 0, 0, 0, Reached::kUnknown, false, R"("waited":null,"host":null})"},
    {"NotReached", kDown, Guard::kMutex, 0, 0, 0, Reached::kUnknown, true,
     R"("waited":null,"host":null,"reached":false})"},
    {"Reached", kDown, Guard::kMutex, 6000000, 8500000, 0, Reached::kUnknown, false,
     R"("waited":1000,"host":2500,"reached":true})"},
    {"NeverLeft", kDown, Guard::kMutex, 6000000, 0, 0, Reached::kUnknown, false,
     R"("waited":1000,"host":null,"reached":true})"},
    {"ToldNo", kDown, Guard::kMutex, 6000000, 8500000, 0, Reached::kNo, false,
     R"("waited":1000,"host":null,"reached":false})"},
    {"ToldYes", kDown, Guard::kMutex, 0, 0, 0, Reached::kYes, true,
     R"("waited":null,"host":null,"reached":true})"},
    {"Unlocked", kDown, Guard::kUnlocked, 6000000, 8500000, 0, Reached::kUnknown, false,
     R"("waited":0,"host":2500,"reached":true})"},
    {"OneThread", kDown, Guard::kOneThread, 0, 0, 0, Reached::kUnknown, false, R"("waited":0,"host":null})"},
    {"OtherLock", kUp, Guard::kDalMutex, 6000000, 8500000, 5500000, Reached::kYes, false,
     R"("waited":500,"host":2500,"reached":true})"},
    {"OtherLockNotKnown", kUp, Guard::kDalMutex, 6000000, 8500000, 0, Reached::kYes, false,
     R"("waited":null,"host":2500,"reached":true})"},
    {"UpToTheEnd", kUp, Guard::kMutex, 6000000, 0, 0, Reached::kYes, false,
     R"("waited":1000,"host":3000,"reached":true})"},
    {"UpNotKnown", kUp, Guard::kMutex, 0, 0, 0, Reached::kUnknown, true, R"("waited":null,"host":null})"},
};

INSTANTIATE_TEST_SUITE_P(Lines, Reaching, testing::ValuesIn(kTimes),
                         [](const auto& row) { return std::string(row.param.what); });

TEST(Calls, HaveADirection) {
  const std::pair<Direction, const char*> kWords[] = {
      {kDown, "down"}, {kUp, "up"}, {Direction::kLife, "life"}, {Direction::kOwn, "own"}};
  for (const auto& [direction, word] : kWords) {
    Made made;
    made.called.operation.direction = direction;
    made.called.operation.target = "";
    made.put();
    EXPECT_NE(made.call().find(std::string("\"direction\":\"") + word + "\""), std::string::npos);
    EXPECT_EQ(made.call().find("reached"), std::string::npos);
  }
}

}  // namespace
