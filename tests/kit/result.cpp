// What vorn-conformance makes of the outcomes of its checks: for people, as JUnit and as lines of JSON.

#include "conformance/Result.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace {

using namespace vorn_conformance;
using vorn_testing::HostVerdict;

Result result(HostVerdict::Kind kind, const std::string& detail, const std::string& name = "kept-apart") {
  const std::string id = "VornDALImplIF/13/getVolume/" + name;
  return {{id, "getVolume", 13, "It <answers>.", "Answer & \"go on\"."},
          {kind, detail, true, "getVolume()", std::chrono::microseconds(1500), false, false, "", {}},
          std::chrono::milliseconds(20)};
}

std::string printed(const std::vector<Result>& results) {
  std::ostringstream out;
  Printer printer(out);
  for (const Result& each : results) printer.add(each);
  return out.str();
}

std::string summary(const std::vector<Result>& results) {
  std::ostringstream out;
  printSummary(out, "./libMyHost.so", results);
  return out.str();
}

TEST(Printed, IsWhatWasSeenWithStackRuleAndRemedy) {
  Result broken = result(HostVerdict::kBroken, "getVolume() threw\x1b");
  broken.verdict.stack = {"one (a.so+0x1)", "two\x1b"};
  EXPECT_EQ(printed({broken}),
            "BROKEN    VornDALImplIF/13/getVolume/kept-apart (getVolume, slot 13)\n"
            "  seen:   getVolume() threw\\x1b\n          at one (a.so+0x1)\n          at two\\x1b\n"
            "  rule:   It <answers>.\n  remedy: Answer & \"go on\".\n");
}

TEST(Printed, IsTheBeginningOfALongStack) {
  Result broken = result(HostVerdict::kBroken, "x");
  for (int i = 0; i < 100; ++i) broken.verdict.stack.push_back("frame " + std::to_string(i) + ";");
  const std::string text = printed({broken});
  EXPECT_NE(text.find("at frame 35;\n  rule"), text.npos) << text;
}

TEST(Printed, IsNothingOfWhatWasKeptOrNotAsked) {
  EXPECT_EQ(printed({result(HostVerdict::kKept, ""), result(HostVerdict::kNotAsked, "no player")}), "");
}

TEST(Printed, IsARemarkAsWhatItIs) {
  EXPECT_EQ(printed({result(HostVerdict::kRemark, "took 2000 ms")}).substr(0, 16), "REMARK    VornDA");
}

struct Pair {
  const char* first;
  const char* second;
  bool same;
};

class Reasons : public testing::TestWithParam<Pair> {};

TEST_P(Reasons, AreOneWhenOnlyLongNumbersAndAddressesDiffer) {
  const std::string text = printed({result(HostVerdict::kBroken, GetParam().first, "a"),
                                    result(HostVerdict::kBroken, GetParam().second, "b")});
  EXPECT_EQ(text.find("\n  as in   VornDALImplIF/13/getVolume/a\n") != text.npos, GetParam().same) << text;
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Reasons,
    testing::Values(Pair{"x", "x", true}, Pair{"x", "y", false}, Pair{"at 0x7f12 of", "at 0x1 of", true},
                    Pair{"after 1700000000000 ns", "after 1700000000999 ns", true},
                    Pair{"key a1b2c3", "key 0f9e8d7c", true}, Pair{"volume 1234", "volume 1235", false},
                    Pair{"volume 12345", "volume 54321", true}, Pair{"deface", "facade", false},
                    Pair{"0xzz", "0x", false}, Pair{"", "", true}));

TEST(Reasons, OfAMistakeAndOfARemarkAreTwo) {
  const std::string text = printed({result(HostVerdict::kRemark, "x"), result(HostVerdict::kBroken, "x")});
  EXPECT_EQ(text.find("as in"), text.npos);
}

TEST(Summary, NamesWhatWasNotAskedByReason) {
  EXPECT_EQ(
      summary({result(HostVerdict::kNotAsked, "no player", "a"), result(HostVerdict::kKept, "no player", "k"),
               result(HostVerdict::kNotAsked, "no store", "b"),
               result(HostVerdict::kNotAsked, "no player", "c")}),
      "NOT ASKED no player\n  VornDALImplIF/13/getVolume/a\n  VornDALImplIF/13/getVolume/c\n"
      "NOT ASKED no store\n  VornDALImplIF/13/getVolume/b\n"
      "SLOWEST   1.500 ms  getVolume()\n"
      "./libMyHost.so: 4 checks, 1 kept, 0 broken, 3 not asked\n");
}

TEST(Summary, TellsTheFiveSlowestCallsOnceEach) {
  std::vector<Result> results;
  for (int i = 0; i < 14; ++i) {
    results.push_back(result(HostVerdict::kKept, ""));
    results.back().verdict.slowest = std::chrono::microseconds(1000 * (i / 2 + 1));
    results.back().verdict.slowestCall = std::string(1, static_cast<char>('a' + i / 2)) + "()";
  }
  results.push_back(result(HostVerdict::kRemark, ""));
  results.back().verdict.slowestCall = "";
  results.back().verdict.slowest = std::chrono::microseconds(0);
  EXPECT_EQ(
      summary(results),
      "SLOWEST   7.000 ms  g()\nSLOWEST   6.000 ms  f()\nSLOWEST   5.000 ms  e()\nSLOWEST   4.000 ms  d()\n"
      "SLOWEST   3.000 ms  c()\n./libMyHost.so: 15 checks, 14 kept, 0 broken, 0 not asked, 1 with a remark\n");
}

TEST(JUnit, HoldsEveryOutcome) {
  Result broken = result(HostVerdict::kBroken, "seen \"<&>\"\n", "b"),
         kept = result(HostVerdict::kKept, "", "k");
  broken.verdict.stack = {"one"};
  kept.verdict.seen = "40 of 100 calls overlapped";
  std::ostringstream xml;
  writeJUnit(xml, {{"tool", "vorn-conformance 1"}, {"host", "a&b"}},
             {broken, kept, result(HostVerdict::kNotAsked, "no <player>", "n"),
              result(HostVerdict::kRemark, "slow", "r")});
  EXPECT_EQ(
      xml.str(),
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n"
      "  <testsuite name=\"a&amp;b\" tests=\"4\" failures=\"1\" errors=\"0\" skipped=\"1\" time=\"0.080\">\n"
      "    <properties>\n      <property name=\"tool\" value=\"vorn-conformance 1\"/>\n"
      "      <property name=\"host\" value=\"a&amp;b\"/>\n    </properties>\n"
      "    <testcase classname=\"VornDALImplIF\" name=\"13/getVolume/b\" time=\"0.020\">"
      "<failure message=\"seen &quot;&lt;&amp;&gt;&quot;&#10;\">rule: It &lt;answers&gt;.\n"
      "remedy: Answer &amp; &quot;go on&quot;.&#10;at one</failure></testcase>\n"
      "    <testcase classname=\"VornDALImplIF\" name=\"13/getVolume/k\" time=\"0.020\">"
      "<system-out>40 of 100 calls overlapped</system-out></testcase>\n"
      "    <testcase classname=\"VornDALImplIF\" name=\"13/getVolume/n\" time=\"0.020\">"
      "<skipped message=\"no &lt;player&gt;\"/></testcase>\n"
      "    <testcase classname=\"VornDALImplIF\" name=\"13/getVolume/r\" time=\"0.020\">"
      "<system-out>remark: slow</system-out></testcase>\n"
      "  </testsuite>\n</testsuites>\n");
}

TEST(JUnit, HoldsNoCharacterThatXmlDoesNotKnow) {
  std::ostringstream xml;
  writeJUnit(xml, {{"host", "a\xef\xbf\xbf"}},
             {result(HostVerdict::kBroken, "\xef\xbf\xbe\xef\xbf\xbf \xef\xbf\xbd \xef\xbe\xbf")});
  EXPECT_NE(xml.str().find("<testsuite name=\"a\\xef\\xbf\\xbf\""), std::string::npos) << xml.str();
  EXPECT_NE(xml.str().find("\"\\xef\\xbf\\xbe\\xef\\xbf\\xbf \xef\xbf\xbd \xef\xbe\xbf\""), std::string::npos)
      << xml.str();
}

TEST(Json, IsOneLineWithEverything) {
  Result broken = result(HostVerdict::kBroken, "a \"b\" \\ \n\x01", "b");
  broken.verdict.stack = {"one", "two"};
  broken.verdict.hung = true;
  broken.verdict.seen = "much";
  const std::string expected =
      R"x({"check":"VornDALImplIF/13/getVolume/b","verdict":"broken","detail":"a \"b\" \\ \n\\x01","seen":"much",)x"
      R"x("seconds":0.020,"slowestCall":"getVolume()","slowestMs":1.500,"stack":["one","two"],"hung":true})x";
  EXPECT_EQ(jsonOf(broken), expected);
  EXPECT_EQ(jsonOf(Facts{{"tool", "t"}, {"host", "h"}}), R"({"tool":"t","host":"h"})");
}

TEST(Json, IsReadBack) {
  for (const auto kind :
       {HostVerdict::kKept, HostVerdict::kBroken, HostVerdict::kNotAsked, HostVerdict::kRemark}) {
    Result written = result(kind, "a \"verdict\":\"kept\" \\ \n b", "b");
    written.verdict.seen = "\"hung\":false";
    written.verdict.hung = kind == HostVerdict::kBroken;
    const auto [id, verdict] = resultOf(jsonOf(written));
    EXPECT_EQ(id, written.check.id);
    EXPECT_TRUE(verdict.kind == kind && verdict.hung == written.verdict.hung);
    EXPECT_EQ(verdict.detail + verdict.seen, written.verdict.detail + written.verdict.seen);
  }
}

TEST(Json, ThatWasCutOrIsSomethingElseIsNothing) {
  const std::string line = jsonOf(result(HostVerdict::kKept, "x"));
  for (std::size_t size = 0; size < line.size(); ++size) EXPECT_EQ(resultOf(line.substr(0, size)).first, "");
  EXPECT_EQ(resultOf(R"({"tool":"vorn-conformance 1","host":"h"})").first, "");
  EXPECT_EQ(resultOf(R"({"check":"a","verdict":"good"})").first, "");
}

TEST(Json, ThatIsReadBackKnowsNothingOfTheRest) {
  const auto [id, verdict] = resultOf(jsonOf(result(HostVerdict::kRemark, "x")));
  EXPECT_TRUE(verdict.made && !verdict.hung && !verdict.refused && verdict.stack.empty());
  EXPECT_EQ(verdict.slowestCall, "");
  EXPECT_FALSE(resultOf("{}").second.hung);
}

TEST(Summary, CountsEveryKind) {
  const std::string all = summary({result(HostVerdict::kBroken, "x"), result(HostVerdict::kBroken, "y"),
                                   result(HostVerdict::kKept, ""), result(HostVerdict::kRemark, "z")});
  EXPECT_NE(all.find(": 4 checks, 1 kept, 2 broken, 0 not asked, 1 with a remark\n"), all.npos) << all;
}

class Reports : public testing::Test {
 protected:
  Reports() { std::remove(kPath); }

  static void write(const std::string& content) { std::ofstream(kPath, std::ios::binary) << content; }
  static std::string content() {
    std::ifstream in(kPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static bool mayReplace(const std::string& there) {
    write(there);
    try {
      refuseUnlessReport(kPath);
      return true;
    } catch (const std::runtime_error& refusal) {
      EXPECT_EQ(
          refusal.what(),
          kPath + std::string(" is there already and is no report of vorn-conformance; choose another name"));
      return false;
    }
  }

  static constexpr char kPath[] = "/tmp/kit-result";
};

TEST_F(Reports, AreReplacedAndGoOn) {
  writeReport(kPath, "one\n");
  writeReport(kPath, "two\n");
  Lines(kPath).add("three");
  Lines(kPath).add("four");
  EXPECT_EQ(content(), "two\nthree\nfour\n");
  EXPECT_THROW(Lines("/tmp/kit-result-none/a"), std::runtime_error);
}

TEST_F(Reports, AreAddedToByOneProgramAtATime) {
  write("");
  Lines lines(kPath);
  const pid_t other = fork();
  if (other == 0) {
    try {
      Lines second(kPath);
    } catch (const std::runtime_error& refusal) {
      _exit(refusal.what() ==
            kPath +
                std::string(" is being written by another program; wait for its end or name another file"));
    }
    _exit(0);
  }
  int status = 0;
  waitpid(other, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 1);
}

TEST_F(Reports, HoldNoPartOfALineThatHasNoRoom) {
  write("whole\n");
  Lines lines(kPath);
  const pid_t other = fork();  // the limit is its own
  if (other == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {10, 10};
    setrlimit(RLIMIT_FSIZE, &limit);
    try {
      lines.add("more than there is room for");
    } catch (const std::runtime_error& problem) {
      _exit(problem.what() == kPath + std::string(" cannot be written: ") + std::strerror(EFBIG));
    }
    _exit(0);
  }
  int status = 0;
  waitpid(other, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 1);
  EXPECT_EQ(content(), "whole\n");
}

TEST_F(Reports, TakeThePlaceOfReportsOnly) {
  std::ostringstream xml;
  writeJUnit(xml, {{"tool", "vorn-conformance 1"}, {"host", "h"}}, {});
  EXPECT_TRUE(mayReplace(""));
  EXPECT_TRUE(mayReplace(xml.str()));
  EXPECT_TRUE(mayReplace(jsonOf(Facts{{"tool", "vorn-conformance 1"}}) + "\nmore"));
  EXPECT_FALSE(mayReplace(" " + xml.str()));
  std::ostringstream deep;
  writeJUnit(deep, {{"tool", "vorn-conformance 1"}, {"host", "/" + std::string(3000, 'h')}}, {});
  EXPECT_TRUE(mayReplace(deep.str()));
  EXPECT_FALSE(mayReplace(jsonOf(Facts{{"tool", "other"}}) + "\nvorn-conformance 1"));
  EXPECT_FALSE(mayReplace("{}"));
  EXPECT_FALSE(mayReplace("vorn-conformance 1"));
  xml.str("");
  writeJUnit(xml, {{"tool", "other"}}, {result(HostVerdict::kBroken, "vorn-conformance 1")});
  EXPECT_FALSE(mayReplace(xml.str()));
}

}  // namespace
