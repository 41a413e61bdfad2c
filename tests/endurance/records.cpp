// The parts of vorn-log: records whatever pieces they arrive in, reports whatever is in them.

#include "log/Records.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <vorn_testing/TraceLine.h>

#include <sstream>

#include "log/Report.h"

namespace {

using vorn_log::Options;
using vorn_log::Records;
using vorn_log::Report;
using Texts = std::vector<std::string>;

/// The records of these pieces, with what was dropped of each and whether it has no end.
Texts read(const Texts& pieces) {
  Texts found;
  Records records([&](const Records::Record& record) {
    found.push_back(record.text + "/" + std::to_string(record.dropped) + (record.unfinished ? "/open" : ""));
    return true;
  });
  for (const std::string& piece : pieces) records.add(piece.data(), piece.size());
  records.finish();
  return found;
}

RC_GTEST_PROP(Records, AreTheSameHoweverTheirBytesArrive,
              (const std::vector<unsigned char>& choices, unsigned char cut)) {
  // Of parts that matter to a reader, in any order.
  static const Texts parts = {" Time: ", "\n", "a", "\r", "\xef\xbb\xbf", " Tim", "e: b", "\n Time: "};
  std::string trace;
  for (const unsigned char choice : choices) trace += parts[choice % parts.size()];
  const std::size_t at = trace.empty() ? 0 : cut % trace.size();
  Texts bytes;
  for (const char c : trace) bytes.emplace_back(1, c);
  const Texts whole = read({trace});
  RC_ASSERT(read({trace.substr(0, at), trace.substr(at)}) == whole);
  RC_ASSERT(read(bytes) == whole);
}

struct Trace {
  const char* bytes;
  Texts records;
};

class Traces : public testing::TestWithParam<Trace> {};

TEST_P(Traces, AreCutIntoRecords) { EXPECT_EQ(read({GetParam().bytes}), GetParam().records); }

const Trace kTraces[] = {
    {"", {}},
    {" Time: a\n", {"a/0"}},
    {" Time: a", {"a/0/open"}},
    {" Time: a\n Time: b\n", {"a/0", "b/0"}},
    {" Time: a\nb\n\nc\n Time: d\n", {"a\nb\n\nc/0", "d/0"}},
    {"before\n Time: a\n", {"before/0", "a/0"}},
    {"before\nit\n", {"before\nit/0"}},
    {"\n", {"/0"}},
    {" Time: \n", {"/0"}},
    {" Time: a\r\n Time: b\r\n", {"a/0", "b/0"}},
    {" Time: a\r\r\n", {"a\r/0"}},
    {"\xef\xbb\xbf Time: a\n", {"a/0"}},
    {" Time: a\n\xef\xbb\xbf Time: b\n", {"a\n\xef\xbb\xbf Time: b/0"}},
    {"Time: a\n Time:b\n", {"Time: a\n Time:b/0"}},
};

INSTANTIATE_TEST_SUITE_P(Records, Traces, testing::ValuesIn(kTraces));

TEST(RecordsTest, KeepTheirFirstMegabyteAndCountTheRest) {
  const std::string most(Records::kLongest - 7, 'x');  // Beside " Time: ".
  EXPECT_EQ(read({" Time: " + most + "\n"}), Texts{most + "/0"});
  EXPECT_EQ(read({" Time: " + most + "yz\n Time: b\n"}), (Texts{most + "/2", "b/0"}));
  const Texts lines = read({" Time: " + most + "\nsecond\n"});
  EXPECT_EQ(lines, Texts{most + "\nsecond/0"});
  const Texts full = read({" Time: " + most + "\n1234567890\n"});
  EXPECT_EQ(full, Texts{most + "\n123456/4"});
}

TEST(RecordsTest, AreHandedOnWhenNothingFollowsForNow) {
  int taken = 0;
  Records records([&](const Records::Record&) { return ++taken > 0; });
  const std::string trace = " Time: a\n Time: b";
  records.add(trace.data(), trace.size());
  EXPECT_EQ(taken, 0);
  EXPECT_TRUE(records.flush());
  EXPECT_EQ(taken, 1);
  records.add("c\n", 2);
  records.flush();
  records.flush();
  EXPECT_EQ(taken, 2);
}

TEST(RecordsTest, EndWhenNoMoreIsWanted) {
  int taken = 0;
  Records records([&](const Records::Record&) { return ++taken < 1; });
  const std::string trace = " Time: a\n Time: b\n Time: c\n";
  EXPECT_FALSE(records.add(trace.data(), trace.size()));
  EXPECT_EQ(taken, 1);
}

/// What is printed of these lines.
std::string reported(const Options& options, const Texts& lines) {
  std::ostringstream out;
  Report report(options, out);
  for (const std::string& line : lines) {
    if (!report.take({line, 0, false})) break;
  }
  report.finish();
  return out.str();
}

Options clear() {
  Options options;
  options.secrets = true;
  return options;
}

TEST(Reports, CollapseLinesThatDifferInNumbersOnly) {
  EXPECT_EQ(reported(clear(), {"n 1", "n 22", "m 1", "n 3"}),
            "?  n 1\n    and 1 more like it\n?  m 1\n?  n 3\n");
  EXPECT_EQ(reported(clear(), {"n 1", "n 2", "n 3"}), "?  n 1\n    and 2 more like it\n");
  Options all = clear();
  all.all = true;
  EXPECT_EQ(reported(all, {"n 1", "n 2"}), "?  n 1\n?  n 2\n");
}

TEST(Reports, StopAfterTheTextThatWasToldAndCountIt) {
  Options options = clear();
  options.until = "stop";
  options.text = "a";
  EXPECT_EQ(reported(options, {"a", "b", "stop", "a again"}), "?  a\n");
  options.count = true;
  EXPECT_EQ(reported(options, {"a", "b", "a stop", "a again"}), "?  2\n  (other lines)  2\n");
}

TEST(Reports, SayWhatIsMissing) {
  std::ostringstream out;
  const Options options = clear();
  Report report(options, out);
  report.take({"cut", 5, true});
  EXPECT_EQ(
      out.str(),
      "?  cut\n    and 5 bytes more, left out\n    the line has no end: it was cut, or is still being written\n");
}

TEST(Reports, ExplainColourAndMask) {
  Options options;
  options.explain = options.colour = true;
  EXPECT_EQ(reported(options, {"token: KEEP"}), "\x1b[1m?\x1b[0m  ********\n    not a line of the library\n");
}

TEST(Reports, KnowWhichAdapterWasMeant) {
  for (const std::string& name : vorn_log::adapters()) {
    if (name == "?") continue;
    const std::string meant = "; did you mean " + name + "?";
    EXPECT_EQ(vorn_log::didYouMeanAdapter("vORN" + name.substr(4, name.size() - 5) + "x"), meant);
    EXPECT_EQ(vorn_log::didYouMeanAdapter(name.substr(4)), meant);
  }
  EXPECT_EQ(vorn_log::didYouMeanAdapter("audioin"), "; did you mean VornAudioIn?");
  EXPECT_EQ(vorn_log::didYouMeanAdapter("secret-token"), "");
}

}  // namespace
