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
      "/tmp/recordings/one:2: expected a line of a recording; the field leftOut: expected a whole number from 0, found -1");
  EXPECT_EQ(problem("{\"open\":3}\n"),
            "/tmp/recordings/one:2: expected a line of a recording; expected a call, found 3");
  EXPECT_EQ(
      problem("{\"sound\":\"m\",\"peak\":32769}\n"),
      "/tmp/recordings/one:2: expected a line of a recording; the field peak: expected a whole number from 0 to 32768, "
      "found 32769");
}

TEST(Format, RefusesWhatMayHoldASecretWithoutShowingIt) {
  const std::string expected = "/tmp/recordings/one:2: expected a line of a recording; the field ";
  EXPECT_EQ(problem(call(1, {{"adapter", "\"VornEMPAdapterControl\""},
                             {"operation", "\"login\""},
                             {"arguments", "[\"KEEP-THIS secret\"]"}})),
            expected + "arguments: expected values as a scenario holds them, found ********");
  EXPECT_EQ(problem("{\"note\":4,\"leftOut\":\"psk KEEP-THIS\"}\n"),
            expected + "leftOut: expected a whole number from 0, found ********");
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
}

}  // namespace
