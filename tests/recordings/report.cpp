// Reports of recordings, and of how two differ.

#include <algorithm>
#include <random>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "recordings/Report.h"
#include "recordings/made.h"
#include "speaker/speaker_program.h"

namespace {

using namespace vorn_speaker;
using made::call;
using made::Fields;
using made::kHeader;

std::string reported(const std::string& lines) {
  std::ostringstream out;
  report(Recording::read(made::file(kHeader + lines)), out);
  return out.str();
}

/// A row of a table, with one space between its cells.
testing::AssertionResult hasRow(const std::string& text, const std::string& row) {
  std::istringstream lines(text);
  std::string all;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string cells;
    for (std::string word; words >> word;) cells += (cells.empty() ? "" : " ") + word;
    if (cells == row) return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "no row \"" << row << "\" in\n" << text;
}

TEST(Reports, TellPercentilesOfEachOperation) {
  std::string lines;
  for (int i = 1; i <= 200; ++i) lines += call(i, {{"duration", std::to_string(i)}});
  EXPECT_TRUE(hasRow(reported(lines), "down VornDeviceInfo.getVolume 200 1 100 180 198 200"));
}

TEST(Reports, TellTheLeastTheMedianAndTheMostOfFewCalls) {
  std::string lines;
  for (const char* time : {"9", "1", "4", "2", "3"})
    lines += made::line({{"call", time}, {"duration", time}});
  const std::string shown = reported(lines);
  EXPECT_NE(shown.find("       5       1       3       9       9       9\n"), std::string::npos) << shown;
}

TEST(Reports, AreForPeopleAndWithoutSecrets) {
  const std::string path = made::file(
      kHeader + made::line({{"call", "2"}}) +
      R"({"call":3,"time":0,"duration":7,"thread":"assistant","direction":"down","adapter":"VornEMPAdapterControl","operation":"login","interface":"VornEMPAdapterIF","slot":3,"inside":0,"arguments":["KEEP-THIS","ada","true","1ms","x"],"result":"true","written":[],"exception":null})"
      "\n" +
      R"({"call":4,"time":0,"duration":9,"thread":"assistant","direction":"up","adapter":"VornDeviceInfo","operation":"notifyVolumeChanged","interface":"DeviceInfo","slot":41,"inside":2,"arguments":["3"],"result":"","written":[],"exception":"\u001b[2J KEEP-THIS"})"
      "\n" +
      "{");
  std::ostringstream shown, plain;
  Recorded recorded = Recording::read(path);
  report(recorded, plain);
  recorded.mask();
  report(recorded, shown);
  EXPECT_EQ(
      shown.str(),
      path +
          ":5: left out, the line is cut\n"
          "assistant          firmware\n"
          "    |----------------->|  VornDeviceInfo.getVolume = 30\n"
          "    |----------------->|  VornEMPAdapterControl.login ******** ada true 1ms x = true\n"
          "    |<-----------------|      VornDeviceInfo.notifyVolumeChanged 3 = threw ********\n"
          "\n"
          "Microseconds                                                                   calls   least  median    90 %    99 %    most\n"
          "down  VornDeviceInfo.getVolume                                                     1       5       5       5       5       5\n"
          "down  VornEMPAdapterControl.login                                                  1       7       7       7       7       7\n"
          "up    VornDeviceInfo.notifyVolumeChanged                                           1       9       9       9       9       9\n");
  EXPECT_NE(plain.str().find("threw \\x1b[2J KEEP-THIS\n"), std::string::npos) << plain.str();
}

TEST(Reports, TellWaitsForLocksAndTheTimeOfTheHostWhereTheyAreKnown) {
  const std::string known = reported(call(1, {{"duration", "9"}, {"waited", "3"}, {"host", "5"}}) + call(2));
  const std::string lock = known.substr(known.find("Microseconds of waiting for the adapter's lock"));
  EXPECT_TRUE(hasRow(lock, "down VornDeviceInfo.getVolume 1 3 3 3 3 3"));
  EXPECT_TRUE(hasRow(known, "down VornDeviceInfo.getVolume 1 5 5 5 5 5"));
  EXPECT_EQ(reported(call(1, {{"host", "5"}})).find("other side"), std::string::npos);
}

TEST(Reports, TellCallsThatOverlappedThoseOfOtherThreads) {
  const auto at = [](int number, int time, int duration, int thread, const Fields& more = {}) {
    Fields fields = {{"time", std::to_string(time)},
                     {"duration", std::to_string(duration)},
                     {"threadNumber", std::to_string(thread)}};
    fields.insert(more.begin(), more.end());
    return call(number, fields);
  };
  const std::string output =
      reported(at(1, 0, 50, 1) + at(2, 10, 5, 2) + at(3, 12, 90, 3) + at(4, 100, 10, 1) + at(5, 200, 10, 1) +
               at(6, 201, 5, 1, {{"inside", "1"}}) + at(7, 210, 5, 2));
  EXPECT_TRUE(hasRow(output, "Calls during which another thread called calls at once"));
  EXPECT_TRUE(hasRow(output, "down VornDeviceInfo.getVolume 4 3"));
  EXPECT_EQ(reported(at(1, 0, 5, 1) + at(2, 5, 5, 2)).find("another thread"), std::string::npos);
}

TEST(Reports, TellOverlapsAsIfEachCallWereComparedWithEachOther) {
  std::mt19937 random(3);
  const auto below = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
  for (int round = 0; round < 300; ++round) {
    struct Made {
      int began, end, thread;
      std::size_t most;
    };
    std::vector<Made> all;
    std::string lines;
    for (int number = 1, time = 0; number <= 12; ++number, time += below(4)) {
      all.push_back({time, time + below(12), 1 + below(3), 0});
      lines += call(number, {{"time", std::to_string(time)},
                             {"duration", std::to_string(all.back().end - time)},
                             {"threadNumber", std::to_string(all.back().thread)}});
      const Made& next = all.back();
      const auto meets = [&](const Made& one) { return one.thread != next.thread && one.end > next.began; };
      const auto others = static_cast<std::size_t>(std::count_if(all.begin(), all.end(), meets));
      for (Made& one : all) {
        if (others > 0 && (&one == &next || meets(one))) one.most = std::max(one.most, others + 1);
      }
    }
    const auto calls = std::count_if(all.begin(), all.end(), [](const Made& one) { return one.most > 0; });
    const auto most = std::max_element(all.begin(), all.end(), [](const Made& left, const Made& right) {
                        return left.most < right.most;
                      })->most;
    const std::string output = reported(lines), row = "down VornDeviceInfo.getVolume ";
    if (calls > 0) {
      ASSERT_TRUE(hasRow(output, row + std::to_string(calls) + " " + std::to_string(most)));
    } else {
      ASSERT_EQ(output.find("another thread"), std::string::npos);
    }
  }
}

TEST(Reports, TellSoundNotesAndWhatIsMissing) {
  const std::string output = reported(
      "{\"sound\":\"microphone\",\"time\":1,\"blocks\":2,\"samples\":320,\"peak\":900,\"level\":80,\"gap\":7}\n"
      "{\"note\":\"paused\\u001b\",\"time\":4}\n{\"leftOut\":3,\"time\":1}\n");
  EXPECT_TRUE(hasRow(output, "microphone 2 320 900 80 7"));
  EXPECT_TRUE(hasRow(output, "After 4 microseconds: paused\\x1b"));
  EXPECT_TRUE(hasRow(output, "/tmp/recordings/one: calls that could not be kept when they came: 3"));
}

TEST(Reports, TellCallsThatReachedNobody) {
  EXPECT_TRUE(hasRow(reported(call(1, {{"reached", "false"}})),
                     "|----------------->| VornDeviceInfo.getVolume = 30 (reached nobody)"));
}

TEST(Reports, TellTheLivesOfAdaptersBetweenBothSides) {
  EXPECT_TRUE(hasRow(
      reported(call(
          1,
          {{"direction", "\"life\""}, {"operation", "\"Shutdown\""}, {"interface", "\"\""}, {"slot", "0"}})),
      "| | VornDeviceInfo.Shutdown = 30"));
}

class Differences : public testing::Test {
 protected:
  /// Whether they are the same; what is told of it is kept.
  bool same(const std::string& left, const std::string& right) {
    std::ostringstream out;
    const bool same = compare(Recording::read(made::file(kHeader + left, "left")),
                              Recording::read(made::file(kHeader + right, "right")), out);
    m_told = out.str();
    return same;
  }

  std::string m_told;
};

TEST_F(Differences, AreNoneBetweenTheSameCallsAtOtherTimes) {
  EXPECT_TRUE(same(call(1) + call(2), call(3, {{"duration", "70"}}) + call(9)));
  EXPECT_TRUE(hasRow(m_told, "2 calls are the same, 0 differ."));
  EXPECT_TRUE(hasRow(m_told, "down VornDeviceInfo.getVolume 2 2 5 5 5 70"));
}

TEST_F(Differences, AreAnswers) {
  EXPECT_FALSE(same(call(1), call(4, {{"result", "\"31\""}})));
  EXPECT_EQ(m_told.substr(0, m_told.find("\n\n")),
            "/tmp/recordings/left: call 1, and /tmp/recordings/right: call 4, are answered differently:\n"
            "  called  VornDeviceInfo.getVolume\n  first   30\n  second  31");
}

TEST_F(Differences, AreExceptionsAndWhatIsWritten) {
  EXPECT_FALSE(same(call(1), call(1, {{"exception", "\"why\""}})));
  EXPECT_FALSE(same(call(1), call(1, {{"written", "[\"value=on\"]"}})));
}

TEST_F(Differences, AreCallsThatOnlyOneHas) {
  const std::string extra = call(2, {{"operation", "\"getTimezone\""}, {"slot", "15"}});
  EXPECT_FALSE(same(call(1) + extra + call(3), call(1) + call(2)));
  EXPECT_TRUE(
      hasRow(m_told,
             "/tmp/recordings/left:3: only here, call 2, thread assistant: VornDeviceInfo.getTimezone = 30"));
  EXPECT_TRUE(hasRow(m_told, "2 calls are the same, 1 differ."));
}

TEST_F(Differences, AreThreadsThatOnlyOneHas) {
  EXPECT_FALSE(same(call(1), call(1) + call(2, made::volumeChanged())));
  EXPECT_TRUE(hasRow(
      m_told,
      "/tmp/recordings/right:3: only here, call 2, thread firmware: VornDeviceInfo.notifyVolumeChanged 3 = no result"));
}

TEST_F(Differences, AreNoneInTheOrderOfDifferentThreads) {
  EXPECT_TRUE(same(call(1) + call(2, made::volumeChanged()), call(1, made::volumeChanged()) + call(2)));
}

TEST_F(Differences, AreToldInLongRecordingsWithoutAnEnd) {
  std::string left, right;
  for (int i = 1; i <= 600; ++i) {
    const Fields one = {{"operation", "\"getConfigData\""},
                        {"slot", "21"},
                        {"arguments", "[\"k" + std::to_string(i) + "\"]"}};
    const Fields other = {{"operation", "\"getConfigData\""},
                          {"slot", "21"},
                          {"arguments", "[\"m" + std::to_string(i) + "\"]"}};
    left += call(i, one);
    right += call(i, other);
  }
  EXPECT_FALSE(same(left + call(601), right + call(601)));
  EXPECT_TRUE(hasRow(m_told, "1 calls are the same, 1200 differ."));
}

TEST_F(Differences, AreNotWhatOneWriterAloneSees) {
  const std::string asked =
      call(2, {{"adapter", "\"VornEMPAdapterControl\""}, {"operation", "\"getEMPAdapter\""}, {"slot", "33"}});
  const std::string created = call(
      3, {{"direction", "\"life\""}, {"operation", "\"Shutdown\""}, {"interface", "\"\""}, {"slot", "0"}});
  const std::string dropped =
      call(4, {{"reached", "false"}, {"operation", "\"getTimezone\""}, {"slot", "15"}});
  const std::string sound = call(5, made::volumeChanged({{"adapter", "\"VornAudioIn\""},
                                                         {"operation", "\"sendAudioData\""},
                                                         {"interface", "\"AudioIn\""}}));
  EXPECT_TRUE(
      same(call(1) + asked + sound, call(1) + created + dropped + "{\"sound\":\"microphone\",\"time\":3}\n"));
}

class ReportProgram : public SpeakerProgram {};

TEST_F(ReportProgram, EndsWithOneWhenTwoRecordingsDiffer) {
  const std::string left = file("left", kHeader + call(1)),
                    right = file("right", kHeader + call(1, {{"result", "\"31\""}}));
  run("report " + left + " " + left);
  EXPECT_EQ(m_status, 0);
  run("report " + left + " " + right);
  EXPECT_EQ(m_status, 1);
}

TEST_F(ReportProgram, ComparesOnlyWhatIsWanted) {
  const std::string left = file("left", kHeader + call(1) + call(2)),
                    right = file("right", kHeader + call(1, {{"result", "\"31\""}}) + call(2));
  run("report " + left + " " + right + " --calls 2-");
  EXPECT_EQ(m_status, 0);
}

TEST_F(ReportProgram, ReadsWhatComesThroughAPipe) {
  const std::string path = file("one", kHeader + call(1));
  EXPECT_TRUE(has(output("cat " + path + " | " VORN_SPEAKER_PROGRAM " report /dev/stdin " + path),
                  "1 calls are the same, 0 differ.\n"));
}

TEST_F(ReportProgram, FindsTheSameCallsInTwoMornings) {
  for (const char* const name : {"/first", "/second"}) run(std::string("record ") + kFolder + name);
  EXPECT_TRUE(has(run(std::string("report ") + kFolder + "/first " + kFolder + "/second"), ", 0 differ.\n"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(ReportProgram, MasksSecretsUnlessAskedOtherwise) {
  const Fields login = {{"adapter", "\"VornEMPAdapterControl\""},
                        {"operation", "\"login\""},
                        {"interface", "\"VornEMPAdapterIF\""},
                        {"slot", "3"},
                        {"arguments", "[\"KEEP-THIS\",\"ada\",\"true\",\"1ms\",\"x\"]"},
                        {"result", "\"true\""}};
  const std::string left = file("left", kHeader + call(1, login)), right = file("right", kHeader);
  EXPECT_FALSE(has(run("report " + left + " " + right), "KEEP-THIS"));
  EXPECT_TRUE(has(run("report --secrets " + left + " " + right), "login KEEP-THIS ada"));
}

}  // namespace
