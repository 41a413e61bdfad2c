// What vorn-log is made of: records cut from bytes, and what is shown of them.

#include <gtest/gtest.h>

#include <sstream>

#include "log/Records.h"
#include "log/Report.h"

namespace {

using namespace vorn_log;
using Texts = std::vector<std::string>;

/// Records in words: "text", "text+3" where bytes were dropped, "text..." of a line without its end.
struct Taken {
  Texts all;
  std::size_t most = 1000;
  Records records{[this](const Records::Record& record) {
    all.push_back(record.text + (record.dropped ? "+" + std::to_string(record.dropped) : "") +
                  (record.unfinished ? "..." : ""));
    return all.size() < most;
  }};

  bool add(const std::string& bytes) { return records.add(bytes.data(), bytes.size()); }
};

struct Cut {
  std::string bytes;
  Texts records;
};

class TraceBytes : public testing::TestWithParam<Cut> {};

TEST_P(TraceBytes, AreCutIntoRecords) {
  Taken taken;
  EXPECT_TRUE(taken.add(GetParam().bytes));
  EXPECT_TRUE(taken.records.finish());
  EXPECT_EQ(taken.all, GetParam().records);
}

TEST_P(TraceBytes, AreCutAlikeByteByByte) {
  Taken taken;
  for (const char byte : GetParam().bytes) EXPECT_TRUE(taken.add(std::string(1, byte)));
  EXPECT_TRUE(taken.records.finish());
  EXPECT_EQ(taken.all, GetParam().records);
}

const std::string kMark = "\xEF\xBB\xBF";

const Cut kCuts[] = {
    {"", {}},
    {" Time: a\n", {"a"}},
    {" Time: \n", {""}},
    {" Time: a\n Time: b\n", {"a", "b"}},
    {" Time: a\nb\n\nc\n Time: d\n", {"a\nb\n\nc", "d"}},
    {"rest\nmore\n Time: a\n", {"rest\nmore", "a"}},
    {"\n", {""}},
    {"\n Time: a\n", {"", "a"}},
    {" Time: a", {"a..."}},
    {" Time: a\nb", {"a\nb..."}},
    {" Time: a\n Time: b", {"a", "b..."}},
    {" Time:a\n", {" Time:a"}},
    {"Time: a\n", {"Time: a"}},
    {" Time: a\r\nb\r\r\n", {"a\nb\r"}},
    {"\r\n", {""}},
    {kMark + " Time: a\n", {"a"}},
    {kMark + "a\n", {"a"}},
    {kMark + "\n", {""}},
    {kMark, {"..."}},
    {kMark.substr(0, 2) + "\n", {kMark.substr(0, 2)}},
    {" Time: a\n" + kMark + " Time: b\n", {"a\n" + kMark + " Time: b"}},
};

INSTANTIATE_TEST_SUITE_P(Log, TraceBytes, testing::ValuesIn(kCuts));

TEST(Records, AreHandedOnAtTheEndForNowButNoHalfLine) {
  Taken taken;
  EXPECT_TRUE(taken.records.flush());
  taken.add(" Time: a\n Ti");
  EXPECT_EQ(taken.all, Texts{});
  EXPECT_TRUE(taken.records.flush());
  EXPECT_TRUE(taken.records.flush());
  EXPECT_EQ(taken.all, Texts{"a"});
  taken.add("me: b\nmore\n");
  EXPECT_TRUE(taken.records.flush());
  taken.add("late\n");
  EXPECT_TRUE(taken.records.finish());
  EXPECT_TRUE(taken.records.finish());
  EXPECT_EQ(taken.all, (Texts{"a", "b\nmore", "late"}));
}

TEST(Records, AreNoMoreThanAreWanted) {
  Taken taken;
  taken.most = 2;
  EXPECT_TRUE(taken.add(" Time: a\n Time: b\n"));
  EXPECT_FALSE(taken.add(" Time: c\n Time: d\n Time: e\n"));
  EXPECT_EQ(taken.all, (Texts{"a", "b"}));
  Taken flushed, finished;
  flushed.most = finished.most = 1;
  flushed.add(" Time: a\n");
  finished.add(" Time: a");
  EXPECT_FALSE(flushed.records.flush());
  EXPECT_FALSE(finished.records.finish());
  Taken last;
  last.most = 1;
  last.add(" Time: a\n Time: b");
  EXPECT_FALSE(last.records.finish());
  EXPECT_EQ(last.all, Texts{"a"});
}

TEST(Records, KeepTheirBeginningAndCountTheRest) {
  const std::size_t most = Records::kLongest;
  const auto counted = [](const std::string& bytes, bool inParts) {
    std::vector<std::pair<std::size_t, std::size_t>> sizes;
    Records records([&](const Records::Record& record) {
      sizes.emplace_back(record.text.size(), record.dropped);
      return true;
    });
    for (std::size_t at = 0; at < bytes.size(); at += inParts ? 4095 : bytes.size())
      records.add(bytes.data() + at, std::min(bytes.size() - at, inParts ? std::size_t{4095} : bytes.size()));
    records.finish();
    return sizes;
  };
  using Sizes = std::vector<std::pair<std::size_t, std::size_t>>;
  const std::string prefix = " Time: ";
  for (const bool inParts : {false, true}) {
    EXPECT_EQ(counted(prefix + std::string(most - prefix.size(), 'a') + "\n", inParts),
              (Sizes{{most - prefix.size(), 0}}));
    EXPECT_EQ(counted(prefix + std::string(most + 5, 'a') + "\n Time: b\n", inParts),
              (Sizes{{most - prefix.size(), 5 + prefix.size()}, {1, 0}}));
    EXPECT_EQ(counted("a\n" + std::string(most - 2, 'b') + "\ncd\n", inParts), (Sizes{{most, 3}}));
    EXPECT_EQ(counted("a\n" + std::string(most - 3, 'b') + "\ncd\n", inParts), (Sizes{{most, 2}}));
    EXPECT_EQ(counted(std::string(most + 1, 'a') + "\n" + std::string(most + 1, 'b') + "\n", inParts),
              (Sizes{{most, most + 3}}));
  }
}

#define AUDIO "void VornDeviceAbstractionLayer::VornAudioIn::"
const std::string kBuffer = AUDIO "sendAudioData(std::vector<short int>&) calling xApp API count=";

class Reports : public testing::Test {
 protected:
  Reports() { options.secrets = true; }

  std::string of(const std::vector<Records::Record>& records) {
    std::ostringstream out;
    Report report(options, out);
    m_more = "";
    for (const Records::Record& record : records) m_more += report.take(record) ? 'y' : 'n';
    m_before = out.str();
    report.finish();
    return out.str();
  }
  std::string ofTexts(const Texts& texts) {
    std::vector<Records::Record> records;
    for (const std::string& text : texts) records.push_back({text, 0, false});
    return of(records);
  }

  Options options;
  std::string m_more, m_before;
};

TEST_F(Reports, NameClassAndOperation) {
  EXPECT_EQ(ofTexts({kBuffer + "1", "hello", "receiveAppMessage(a,b,c)"}),
            "VornAudioIn.sendAudioData  " + kBuffer +
                "1\n?  hello\nVornAppMessaging.SendMessageToxApp  receiveAppMessage(a,b,c)\n");
}

TEST_F(Reports, CountRunsOfLikeLines) {
  EXPECT_EQ(ofTexts({"a 1", "a 2", "a 33", "b", "a 1", "a 2"}),
            "?  a 1\n    and 2 more like it\n?  b\n?  a 1\n    and 1 more like it\n");
  EXPECT_EQ(m_before, "?  a 1\n    and 2 more like it\n?  b\n?  a 1\n");
  options.all = true;
  EXPECT_EQ(ofTexts({"a 1", "a 2"}), "?  a 1\n?  a 2\n");
}

TEST_F(Reports, ShowFurtherLinesBelowTheFirst) {
  EXPECT_EQ(ofTexts({"a\nb\n\x1b"}), "?  a\n    b\n    \\x1b\n");
}

TEST_F(Reports, TellWhatIsLeftOutAndWhatHasNoEnd) {
  EXPECT_EQ(
      of({{"a", 7, false}, {"b", 0, true}, {"c", 1, true}}),
      "?  a\n    and 7 bytes more, left out\n?  b\n    the line has no end: it was cut, or is still being "
      "written\n?  c\n    and 1 byte more, left out\n    the line has no end: it was cut, or is still being "
      "written\n");
}

TEST_F(Reports, TellItOfTheLineThatItIsTrueOf) {
  EXPECT_EQ(
      of({{"a 1", 0, false}, {"a 2", 0, false}, {"a 3", 2, false}, {"a 4", 0, true}}),
      "?  a 1\n    and 1 more like it\n?  a 3\n    and 2 bytes more, left out\n?  a 4\n    the line has no "
      "end: it was cut, or is still being written\n");
}

TEST_F(Reports, MaskExplainAndColour) {
  options.secrets = false;
  options.explain = true;
  EXPECT_EQ(ofTexts({"hello"}), "?  ********\n    not a line of the library\n");
  options.explain = false;
  options.colour = true;
  EXPECT_EQ(ofTexts({kBuffer + "1"}), "\x1b[1mVornAudioIn.sendAudioData\x1b[0m  " + kBuffer + "1\n");
}

TEST_F(Reports, CountByClassAndOperation) {
  options.count = true;
  EXPECT_EQ(
      of({{kBuffer + "1", 0, false},
          {kBuffer + "2", 9, true},
          {AUDIO "startStreaming()", 0, false},
          {"hello", 0, false},
          {"you", 0, false}}),
      "?  2\n  (other lines)  2\nVornAudioIn  3\n  sendAudioData  2\n  startStreaming  1\nA line has no end: "
      "it was cut, or is still being written\n");
  EXPECT_EQ(m_before, "");
}

TEST_F(Reports, ShowOnlyWhatIsWantedUntilATextComes) {
  options.adapters = {"VornAudioIn", "VornOOBE"};
  options.text = "count";
  options.until = "stop";
  EXPECT_EQ(
      ofTexts({kBuffer + "1", AUDIO "other()", "count", kBuffer + "stop 2"}),
      "VornAudioIn.sendAudioData  " + kBuffer + "1\nVornAudioIn.sendAudioData  " + kBuffer + "stop 2\n");
  EXPECT_EQ(m_more, "yyyn");
  EXPECT_EQ(ofTexts({"stop"}), "");
  EXPECT_EQ(m_more, "n");
}

struct Meant {
  const char* name;
  const char* hint;
};

class AdapterNames : public testing::TestWithParam<Meant> {};

TEST_P(AdapterNames, AreProposedWithOrWithoutTheirFirstWord) {
  EXPECT_EQ(didYouMeanAdapter(GetParam().name), GetParam().hint);
}

const Meant kMeant[] = {
    {"VornAudioin", "; did you mean VornAudioIn?"},
    {"audioin", "; did you mean VornAudioIn?"},
    {"vORNoobe", "; did you mean VornOOBE?"},
    {"Storag", "; did you mean VornStorage?"},
    {"VornGUIOuput", "; did you mean VornGUIOutput?"},
    {"Vor", ""},
    {"somethingelse", ""},
};

INSTANTIATE_TEST_SUITE_P(Log, AdapterNames, testing::ValuesIn(kMeant));

}  // namespace
