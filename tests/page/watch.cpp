// A recording that the page shows while it grows: its lines, masked, and what becomes of others.

#include "page/Watch.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "support/eventually.h"

namespace {

using vorn_speaker::Stream;
using vorn_speaker::Watch;

constexpr char kHead[] = R"({"recording":"vorn-speaker","version":2})";

class AWatch : public testing::Test {
 protected:
  AWatch() { std::filesystem::remove_all(kPath); }

  static void append(const std::string& bytes) {
    std::ofstream(kPath, std::ios::app | std::ios::binary) << bytes;
  }

  std::string told() const {
    std::uint64_t place = 0;
    std::string out;
    m_stream.read(place, 1 << 24, "", out);
    return out;
  }
  /// Whether it is told at last, and nothing else.
  testing::AssertionResult tells(const std::string& lines) const {
    const std::string all = R"({"watching":"/tmp/page-watch"})"
                            "\n" +
                            lines;
    if (eventually([&] { return told().size() >= all.size(); }) && told() == all)
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << "it tells\n" << told();
  }
  static std::string problem() {
    Stream stream(1000);
    try {
      const Watch watch(kPath, false, stream);
      return "it is watched";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  static constexpr char kPath[] = "/tmp/page-watch";
  Stream m_stream{1 << 24};
};

const std::string kHeadTold = kHead + std::string("\n");

TEST_F(AWatch, TellsEveryWholeLine) {
  append(kHeadTold + R"({"call":1,"adapter":"A")");
  const Watch watch(kPath, false, m_stream);
  EXPECT_TRUE(tells(kHeadTold));
  append("}\n{\"note\":\"n\"}\n");
  EXPECT_TRUE(tells(kHeadTold + "{\"call\":1,\"adapter\":\"A\"}\n{\"note\":\"n\"}\n"));
}

TEST_F(AWatch, WaitsForAnEmptyFileToBecomeARecording) {
  append("");
  const Watch watch(kPath, false, m_stream);
  append(kHeadTold);
  EXPECT_TRUE(tells(kHeadTold));
}

TEST_F(AWatch, RefusesWhatIsNoRecording) {
  EXPECT_EQ(problem(), std::string(kPath) + ": cannot be read: No such file or directory");
  const std::string none = std::string(kPath) + ": is no recording; `vorn-speaker record FILE` makes one";
  for (const char* const text : {"hello\n", "{}\n", "{\"recording\":\"other\"}\n", "[\"vorn-speaker\"]\n",
                                 "\n", "{\"recording\":\"vorn-speaker\"\n"}) {
    std::ofstream(kPath) << text;
    EXPECT_EQ(problem(), none) << text;
  }
  std::ofstream(kPath) << kHead << "\nrest";
  EXPECT_EQ(problem(), "it is watched");
}

TEST_F(AWatch, CountsWhatIsNoLine) {
  append(kHeadTold + "no JSON\n[1]\n\n7\n");
  const Watch watch(kPath, false, m_stream);
  EXPECT_TRUE(tells(kHeadTold + "{\"leftOut\":1}\n{\"leftOut\":1}\n{\"leftOut\":1}\n{\"leftOut\":1}\n"));
}

struct Hidden {
  const char* line;
  const char* told;
};

class Hiding : public AWatch, public testing::WithParamInterface<Hidden> {};

TEST_P(Hiding, TellsNoSecret) {
  append(kHeadTold + GetParam().line + "\n");
  const Watch watch(kPath, false, m_stream);
  EXPECT_TRUE(tells(kHeadTold + GetParam().told + "\n"));
}

TEST_P(Hiding, TellsEverythingWhenAsked) {
  append(kHeadTold + GetParam().line + "\n");
  const Watch watch(kPath, true, m_stream);
  EXPECT_TRUE(tells(kHeadTold + GetParam().line + "\n"));
}

#define SET \
  R"("adapter":"VornDeviceInfo","operation":"setSystemSetting","interface":"VornDALImplIF","slot":21,)"
const Hidden kHidden[] = {
    {"{\"call\":1," SET R"("arguments":["wifiPassword","hidden"],"result":"true"})",
     "{\"call\":1," SET R"("arguments":["wifiPassword","********"],"result":"true"})"},
    {"{\"call\":1," SET R"("arguments":["mode","night"],"result":"true"})",
     "{\"call\":1," SET R"("arguments":["mode","night"],"result":"true"})"},
    {"{\"open\":{\"call\":1," SET R"("arguments":["wifiPassword","hidden"]}})",
     "{\"open\":{\"call\":1," SET R"("arguments":["wifiPassword","********"]}})"},
    {"{\"call\":1," SET R"("arguments":["a b"],"result":""})",
     "{\"call\":1," SET R"("arguments":["********"],"result":""})"},
    {"{\"call\":1," SET R"("arguments":["\"open"],"result":""})",
     "{\"call\":1," SET R"("arguments":["********"],"result":""})"},
    {"{\"call\":1," SET R"("arguments":["psk","x"],"result":"","written":["no name"],"exception":"why"})",
     "{\"call\":1," SET
     R"("arguments":["psk","********"],"result":"","written":["?=********"],"exception":"********"})"},
    {"{\"call\":1," SET R"("arguments":["psk","x"],"result":"hidden"})",
     "{\"call\":1," SET R"("arguments":["psk","********"],"result":"********"})"},
    {"{\"note\":\"the password is x\"}", "{\"note\":\"********\"}"},
    {"{\"note\":7}", "{\"note\":7}"},
};

INSTANTIATE_TEST_SUITE_P(Page, Hiding, testing::ValuesIn(kHidden));

TEST_F(AWatch, LeavesOutALineThatIsTooLong) {
  append(kHeadTold + "{\"note\":\"" + std::string((4 << 20) + 1, 'x') + "\"}\n{\"note\":\"n\"}\n");
  const Watch watch(kPath, true, m_stream);
  EXPECT_TRUE(tells(kHeadTold + "{\"leftOut\":1}\n{\"note\":\"n\"}\n"));
}

TEST_F(AWatch, LeavesOutALineThatIsTooDeep) {
  append(kHeadTold + "{\"a\":" + std::string(100, '[') + std::string(100, ']') + "}\n");
  const Watch watch(kPath, true, m_stream);
  EXPECT_TRUE(tells(kHeadTold + "{\"leftOut\":1}\n"));
}

TEST_F(AWatch, ForgetsTheBeginningOfALineWhoseFileIsReplaced) {
  append(kHeadTold + "{\"note\":\"n\"}\n{\"note\":\"of the fi");
  const Watch watch(kPath, false, m_stream);
  EXPECT_TRUE(tells(kHeadTold + "{\"note\":\"n\"}\n"));
  std::filesystem::remove(kPath);
  append(kHeadTold + "{\"note\":\"other\"}\n");
  EXPECT_TRUE(eventually([&] { return told().find("other") != std::string::npos; }));
  EXPECT_TRUE(tells(kHeadTold + "{\"note\":\"other\"}\n"));
}

long openFiles() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                       std::filesystem::directory_iterator());
}

TEST_F(AWatch, KeepsNoFileOpenThatIsNotWatched) {
  append("no recording\n");
  const long before = openFiles();
  problem();
  EXPECT_EQ(openFiles(), before);
  {
    std::filesystem::remove(kPath);
    append(kHeadTold);
    const Watch watch(kPath, false, m_stream);
    for (const std::string note : {"one", "two", "three"}) {
      std::filesystem::remove(kPath);
      append(kHeadTold + "{\"note\":\"" + note + "\"}\n");
      EXPECT_TRUE(eventually([&] { return told().find(note) != std::string::npos; }));
    }
    EXPECT_EQ(openFiles(), before + 1);
  }
  EXPECT_EQ(openFiles(), before);
}

TEST_F(AWatch, BeginsAnewWhenTheFileIsReplacedOrCut) {
  append(kHeadTold + "{\"note\":\"long enough\"}\n");
  const Watch watch(kPath, false, m_stream);
  EXPECT_TRUE(tells(kHeadTold + "{\"note\":\"long enough\"}\n"));
  std::ofstream(kPath, std::ios::trunc) << kHeadTold;
  EXPECT_TRUE(eventually([&] { return told().find("enough") == std::string::npos; }));
  EXPECT_TRUE(tells(kHeadTold));
  std::filesystem::remove(kPath);
  append(kHeadTold + "{\"note\":\"other\"}\n");
  EXPECT_TRUE(tells(kHeadTold + "{\"note\":\"other\"}\n"));
}

}  // namespace
