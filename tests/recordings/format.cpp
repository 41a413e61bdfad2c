// Recordings as captures and other writers make them: what is read of them, passed over, and told.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "recordings/Recording.h"
#include "recordings/made.h"

namespace {

using namespace vorn_speaker;
using made::call;
using made::kHeader;
using std::chrono::microseconds;

Recorded read(const std::string& lines) { return Recording::read(made::file(kHeader + lines)); }

std::string problem(const std::string& lines) {
  try {
    read(lines);
    return "it was read";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(Format, HoldsWhatIsKnownOfTheLockTheHostAndTheThread) {
  const Crossing made =
      read(call(1, {{"waited", "7"}, {"host", "3"}, {"reached", "false"}, {"threadNumber", "4"}}))
          .calls.at(0)
          .call;
  EXPECT_EQ(made.waited, microseconds(7));
  EXPECT_EQ(made.host, microseconds(3));
  EXPECT_EQ(std::tie(made.reached, made.threadNumber), std::make_tuple(false, 4));
}

TEST(Format, TakesForNotKnownWhatIsNotThere) {
  const Crossing made = read(call(1, {{"waited", ""}, {"host", "null"}, {"reached", ""}})).calls.at(0).call;
  EXPECT_FALSE(made.waited || made.host);
  EXPECT_FALSE(made.reached);
}

TEST(Format, NumbersThreadsByTheirNamesWhereNobodyDid) {
  const Recorded made =
      read(call(1, {{"threadNumber", ""}}) + call(2, {{"threadNumber", ""}, {"thread", "\"b\""}}) +
           call(3, {{"threadNumber", ""}}));
  EXPECT_EQ(made.calls[0].call.threadNumber, 1);
  EXPECT_EQ(made.calls[1].call.threadNumber, 2);
  EXPECT_EQ(made.calls[2].call.threadNumber, 1);
}

TEST(Format, KnowsCallsThatArriveOnNoInterface) {
  const Crossing made =
      read(call(1, {{"direction", "\"life\""}, {"interface", "\"\""}, {"slot", "0"}})).calls.at(0).call;
  EXPECT_EQ(made.direction, Direction::kLife);
  EXPECT_EQ(made.target, "");
  EXPECT_EQ(made.slot, 0);
}

TEST(Format, KeepsWhatTheFirstLineTells) {
  const Recorded made = read("");
  EXPECT_EQ(made.version, 2);
  EXPECT_EQ(made.program, "hand");
  EXPECT_EQ(made.writer, "a hand");
}

TEST(Format, KeepsCallsThatHadNotReturned) {
  const std::string line = call(3, {{"duration", ""}, {"result", ""}, {"written", ""}, {"exception", ""}});
  const Recorded made = read("{\"open\":" + line.substr(0, line.size() - 1) + "}\n");
  EXPECT_TRUE(made.calls.empty());
  EXPECT_EQ(made.open.at(0).call.number, 3U);
  EXPECT_EQ(made.open.at(0).line, 2U);
}

TEST(Format, KeepsWhatWasLostAndNotes) {
  const Recorded made = read("{\"leftOut\":12,\"time\":9}\n{\"note\":\"paused\",\"time\":4}\n");
  EXPECT_EQ(made.lost.at(0).calls, 12);
  EXPECT_EQ(made.notes.at(0).text, "paused");
  EXPECT_EQ(made.notes.at(0).time, microseconds(4));
}

TEST(Format, KeepsSoundThatIsSummedUp) {
  const Recorded made = read(
      "{\"sound\":\"microphone\",\"time\":1000000,\"blocks\":100,\"samples\":16000,\"peak\":32768,\"level\":900,\"gap\":11000}\n");
  EXPECT_EQ(made.sounds.at(0).name, "microphone");
  EXPECT_EQ(made.sounds.at(0).peak, 32768);
  EXPECT_EQ(made.sounds.at(0).gap, microseconds(11000));
}

TEST(Format, PassesOverWhatItDoesNotKnowAndSaysSo) {
  const Recorded made =
      read("{\"weather\":\"rain\"}\n" + call(1, {{"colour", "7"}}) + call(2, {{"colour", "[[]]"}}));
  EXPECT_EQ(made.calls.size(), 2U);
  const std::vector<std::string> told = {
      "/tmp/recordings/one:3: passed over, the field colour is not known; lines that have it: 2",
      "/tmp/recordings/one:2: passed over, a line that begins with weather is not known; lines that have it: 1"};
  EXPECT_EQ(made.leftOut, told);
}

TEST(Format, RefusesKnownLinesThatHoldSomethingElse) {
  EXPECT_EQ(
      problem("{\"leftOut\":-1}\n"),
      "/tmp/recordings/one:2: expected a line of a recording; the field leftOut: expected a whole number from 0 to 1000000000000, found -1");
  EXPECT_EQ(problem("{\"open\":3}\n"),
            "/tmp/recordings/one:2: expected a line of a recording; expected a call, found 3");
  EXPECT_EQ(
      problem("{\"sound\":\"m\",\"peak\":32769}\n"),
      "/tmp/recordings/one:2: expected a line of a recording; the field peak: expected a whole number from 0 to 32768, "
      "found 32769");
}

TEST(Format, RefusesNumbersOfOtherLinesThatAreTooLarge) {
  const std::string line = "/tmp/recordings/one:2: expected a line of a recording; ";
  EXPECT_EQ(problem("{\"leftOut\":1000000000001}\n"),
            line + "the field leftOut: expected a whole number from 0 to 1000000000000, found 1000000000001");
  EXPECT_EQ(
      problem("{\"note\":\"a\",\"time\":1000000000000001}\n"),
      line + "the field time: expected a whole number from 0 to 1000000000000000, found 1000000000000001");
}

TEST(Format, RefusesANumberThatNoTypeHoldsInTheLastLineToo) {
  const std::string why = "/tmp/recordings/one:2: expected a line of a recording; a number is too large";
  EXPECT_EQ(problem(call(1, {{"time", "1e999"}})), why);
  EXPECT_EQ(problem(call(1, {{"colour", "-1e999"}}) + call(2)), why);
}

TEST(Format, RefusesWhatMayHoldASecretWithoutShowingIt) {
  const std::string expected = "/tmp/recordings/one:2: expected a line of a recording; the field ";
  EXPECT_EQ(problem(call(1, {{"adapter", "\"VornEMPAdapterControl\""},
                             {"operation", "\"login\""},
                             {"arguments", "[\"KEEP-THIS secret\"]"}})),
            expected + "arguments: expected values as a scenario holds them, found ********");
  EXPECT_EQ(problem("{\"note\":4,\"leftOut\":\"psk KEEP-THIS\"}\n"),
            expected + "leftOut: expected a whole number from 0 to 1000000000000, found ********");
  EXPECT_EQ(
      read("{\"token KEEP-THIS\":1}\n").leftOut.at(0),
      "/tmp/recordings/one:2: passed over, a line that begins with ******** is not known; lines that have it: 1");
}

TEST(Format, MasksNotesAndCallsThatStandInAnothersPlace) {
  Recorded made = read("{\"note\":\"the PSK is KEEP-THIS\",\"time\":4}\n" +
                       call(1, {{"adapter", "\"VornEMPAdapterControl\""},
                                {"operation", "\"login\""},
                                {"arguments", "[\"KEEP-THIS\"]"},
                                {"written", "[\"KEEP-THIS\"]"},
                                {"result", "\"KEEP-THIS\""},
                                {"exception", "\"KEEP-THIS\""}}));
  made.mask();
  const Crossing& hidden = made.calls.at(0).call;
  EXPECT_EQ(hidden.statement() + hidden.answer() + hidden.exception,
            "VornEMPAdapterControl.login **************** ****************");
  EXPECT_EQ(made.notes.at(0).text, "********");
}

TEST(Format, MasksCallsThatHadNotReturned) {
  Recorded made = read(
      R"({"open":{"call":1,"time":0,"thread":"assistant","direction":"down","adapter":"VornEMPAdapterControl","operation":"login","interface":"VornEMPAdapterIF","slot":3,"inside":0,"arguments":["KEEP-THIS","ada","true","1ms","x"]}})"
      "\n");
  made.mask();
  EXPECT_EQ(made.open.at(0).call.statement(), "VornEMPAdapterControl.login ******** ada true 1ms x");
}

TEST(Format, MasksWhatWasWrittenInAWayThatCannotBeRead) {
  Recorded made = read(call(1, {{"written", R"(["value=\"KEEP\\x2dTHIS","other=3"])"}}));
  made.mask();
  EXPECT_EQ(made.calls.at(0).call.answer(), "30 value=******** other=3");
}

TEST(Format, IsNotWaitedForInAPipeNorLookedForInADevice) {
  made::file("");
  ::mkfifo("/tmp/recordings/silent", 0600);
  const auto why = [](const std::string& path) {
    try {
      Recording::read(path);
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
    return std::string();
  };
  EXPECT_EQ(why("/tmp/recordings/silent"),
            "/tmp/recordings/silent: cannot be read: it is a pipe that nobody writes to");
  EXPECT_EQ(why("/dev/zero"), "/dev/zero:1: expected a recording of version 1 to 2");
  EXPECT_THROW(Recording{"/tmp/recordings/silent"}, NotWritten);
  ::unlink("/tmp/recordings/silent");
}

TEST(Format, RefusesACallThatHasReturnedWithoutWhatItAnswered) {
  EXPECT_EQ(problem(call(1, {{"result", ""}})),
            "/tmp/recordings/one:2: expected a line of a recording; expected the field result");
}

TEST(Format, TakesTheFirstVersionToo) {
  const Recorded made =
      Recording::read(made::file("{\"recording\":\"vorn-speaker\",\"version\":1}\n" + call(1)));
  EXPECT_EQ(made.version, 1);
  EXPECT_EQ(made.calls.size(), 1U);
  EXPECT_THROW(
      try {
        Recording::read(made::file("{\"recording\":\"vorn-speaker\",\"version\":1}\n{\"note\":\"a\"}\n"));
      } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "/tmp/recordings/one:2: expected a line of a recording; expected the field call");
        throw;
      },
      std::runtime_error);
}

struct Field {
  const char* name;
  const char* value;
  const char* says;
};

class BadFields : public testing::TestWithParam<Field> {};

TEST_P(BadFields, AreNamedWithTheirPlace) {
  EXPECT_EQ(problem(made::line({{GetParam().name, GetParam().value}})),
            std::string("/tmp/recordings/one:2: expected a line of a recording; ") + GetParam().says);
}

#define TIME "expected a whole number from 0 to 1000000000000000, found "
const Field kBadFields[] = {
    {"time", "", "expected the field time"},
    {"call", "0", "the field call: expected a whole number from 1, found 0"},
    {"call", "1.0", "the field call: expected a whole number from 1, found 1.0"},
    {"call", "18446744073709551615",
     "the field call: expected a whole number from 1, found 18446744073709551615"},
    {"time", "-1", "the field time: " TIME "-1"},
    {"duration", "\"5\"", "the field duration: " TIME "\"5\""},
    {"time", "1000000000000001", "the field time: " TIME "1000000000000001"},
    {"duration", "18446744073709551616", "the field duration: " TIME "1.8446744073709552e+19"},
    {"waited", "9223372036854775807", "the field waited: " TIME "9223372036854775807"},
    {"host", "9223372036854775807", "the field host: " TIME "9223372036854775807"},
    {"threadNumber", "4294967297",
     "the field threadNumber: expected a whole number from 1 to 1000000000, found 4294967297"},
    {"slot", "4294967297", "the field slot: expected a whole number from 0 to 1000, found 4294967297"},
    {"thread", "7", "the field thread: expected a text, found 7"},
    {"direction", "null", "the field direction: expected down, up, life or own, found null"},
    {"direction", "\"left\"", "the field direction: expected down, up, life or own, found \"left\""},
    {"adapter", "\"#\"", "the field adapter: expected a name, found \"#\""},
    {"adapter", "\"\"", "the field adapter: expected a name, found \"\""},
    {"operation", "\"a b\"", "the field operation: expected a name, found \"a b\""},
    {"interface", "[]", "the field interface: expected a text, found an array"},
    {"slot", "1e300", "the field slot: expected a whole number from 0 to 1000, found 1e+300"},
    {"slot", "-1", "the field slot: expected a whole number from 0 to 1000, found -1"},
    {"slot", "1001", "the field slot: expected a whole number from 0 to 1000, found 1001"},
    {"threadNumber", "0", "the field threadNumber: expected a whole number from 1 to 1000000000, found 0"},
    {"waited", "-1", "the field waited: " TIME "-1"},
    {"host", "\"5\"", "the field host: " TIME "\"5\""},
    {"reached", "1", "the field reached: expected true, false or null, found 1"},
    {"inside", "-5", "the field inside: expected a whole number from 0 to 1000000, found -5"},
    {"inside", "2147483647", "the field inside: expected a whole number from 0 to 1000000, found 2147483647"},
    {"arguments", "{}", "the field arguments: expected a list of texts, found an object"},
    {"arguments", "[3]", "the field arguments: expected a text, found 3"},
    {"arguments", "[\"a b\"]",
     "the field arguments: expected values as a scenario holds them, found ********"},
    {"arguments", "[\"#\"]", "the field arguments: expected values as a scenario holds them, found ********"},
    {"arguments", "[\"[a\"]",
     "the field arguments: expected values as a scenario holds them, found ********"},
    {"result", "30", "the field result: expected a text, found 30"},
    {"written", "null", "the field written: expected a list of texts, found null"},
    {"exception", "5", "the field exception: expected a text, found 5"},
    {"exception", "", "expected the field exception"},
};

INSTANTIATE_TEST_SUITE_P(Format, BadFields, testing::ValuesIn(kBadFields));
#undef TIME

}  // namespace
