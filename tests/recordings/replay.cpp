// Replays of recordings that were made on a device: which calls are played, when, and what is told of them.

#include <chrono>
#include <csignal>

#include "recordings/made.h"
#include "speaker/speaker_program.h"

namespace {

using made::call;
using made::Fields;
using made::kHeader;

class Replays : public SpeakerProgram {
 protected:
  std::string replay(const std::string& lines, const std::string& options = "") {
    return run("replay " + file("recording", kHeader + lines) + " --no-trace " + options);
  }

  static Fields life(const std::string& operation) {
    return {{"direction", "\"life\""}, {"operation", "\"" + operation + "\""},
            {"interface", "\"\""},     {"slot", "0"},
            {"result", "\"\""},        {"thread", "\"firmware\""},
            {"threadNumber", "2"}};
  }

  const Fields m_other = {{"result", "\"31\""}};
};

TEST_F(Replays, StopAtTheFirstDifference) {
  const std::string output = replay(call(1) + call(2, m_other) + call(3, m_other));
  EXPECT_EQ(m_status, 1);
  EXPECT_TRUE(has(output, "recording:3: Call 2 is answered differently:\n"));
  EXPECT_FALSE(has(output, "Call 3"));
}

TEST_F(Replays, GoOnWhenAskedAndTellAllDifferences) {
  const std::string output = replay(call(1) + call(2, m_other) + call(3) + call(4, m_other), "--keep-going");
  EXPECT_EQ(m_status, 1);
  EXPECT_TRUE(has(output, "recording:3: Call 2 is answered differently:\n"));
  EXPECT_TRUE(
      has(output,
          "recording:5: Call 4 is answered differently:\n  before    VornDeviceInfo.getVolume = 30\n") &&
      has(output, "4 calls, 2 answered differently.\n"));
}

TEST_F(Replays, HoldForAnsweredWhatTheAdapterAnswersByItself) {
  const Fields sent = {{"adapter", "\"VornAppMessaging\""},
                       {"operation", "\"sendAppMessage\""},
                       {"slot", "34"},
                       {"arguments", "[\"a\",\"b\",\"c\"]"}};
  const auto answering = [&sent](const char* result) {
    Fields fields = sent;
    fields["result"] = result;
    return fields;
  };
  EXPECT_EQ(replay(call(1, answering("\"true\"")) + call(2, answering("\"\""))),
            "2 calls, all answered as recorded.\n");
  EXPECT_TRUE(has(replay(call(1, answering("\"false\""))), "Call 1 is answered differently"));
}

TEST_F(Replays, PlayOnlyTheCallsThatAreWanted) {
  const std::string lines = call(1, m_other) + call(2) + call(3, m_other);
  EXPECT_EQ(replay(lines, "--calls 2"), "1 call, all answered as recorded.\n");
  replay(lines, "--calls 2-");
  EXPECT_EQ(m_status, 1);
}

TEST_F(Replays, PlayOnlyTheAdaptersThatAreWanted) {
  const std::string lines = call(1, m_other) + call(2, {{"adapter", "\"VornStorage\""},
                                                        {"operation", "\"open\""},
                                                        {"slot", "25"},
                                                        {"result", "\"true\""}});
  EXPECT_EQ(replay(lines, "--adapter VornStorage"), "1 call, all answered as recorded.\n");
  EXPECT_TRUE(has(replay(lines, "-a VornStorge"), "did you mean VornStorage?"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Replays, PlayWhatTheAssistantSideCalledFromInsideANotification) {
  EXPECT_EQ(replay(made::line(made::volumeChanged({{"call", "1"}, {"time", "0"}, {"duration", "90"}})) +
                   call(2, {{"thread", "\"firmware\""}, {"threadNumber", "2"}, {"inside", "1"}})),
            "1 call, all answered as recorded.\n");
}

TEST_F(Replays, DoNotPlayWhatTheHostCalledFromInsideACall) {
  const Fields outer = {{"adapter", "\"VornDeviceCapabilities\""},
                        {"operation", "\"onSetVolume\""},
                        {"slot", "61"},
                        {"arguments", "[\"30\"]"},
                        {"result", "\"true volume 30\""},
                        {"duration", "90"}};
  EXPECT_EQ(replay(call(1, outer) + call(2, {{"inside", "1"}, {"result", "\"31\""}})),
            "1 call, all answered as recorded.\n");
}

TEST_F(Replays, KnowTheCallsAroundThatNeverReturned) {
  const std::string open =
      call(1, made::volumeChanged({{"duration", ""}, {"result", ""}, {"written", ""}, {"exception", ""}}));
  EXPECT_TRUE(
      has(replay(call(2, {{"thread", "\"firmware\""}, {"threadNumber", "2"}, {"inside", "1"}}) +
                 "{\"open\":" + open.substr(0, open.size() - 1) + "}\n"),
          "recording:3: the call 1 had not returned: VornDeviceInfo.notifyVolumeChanged\n1 call, all"));
}

TEST_F(Replays, DoNotPlayCallsThatNeverReturned) {
  const auto open = [](int number, const char* thread) {
    const std::string line = call(
        number,
        {{"threadNumber", thread}, {"duration", ""}, {"result", ""}, {"written", ""}, {"exception", ""}});
    return "{\"open\":" + line.substr(0, line.size() - 1) + "}\n";
  };
  EXPECT_TRUE(has(replay(call(3, {{"threadNumber", "3"}}) + open(1, "1") + open(2, "2")),
                  "\n1 call, all answered as recorded.\n"));
}

TEST_F(Replays, ShutAdaptersDownAndCreateThemAsTheFirmwareDid) {
  replay(call(1) + call(2, life("Shutdown")) + call(3, life("CreateInstance")) + call(4));
  EXPECT_EQ(m_status, 0);
  EXPECT_TRUE(
      has(replay(call(1) + call(2, life("Shutdown")) + call(3)), "recorded  30\n  now       no call\n"));
  Fields failed = life("Shutdown");
  failed["exception"] = "\"not now\"";
  EXPECT_EQ(replay(call(1) + call(2, failed) + call(3)), "2 calls, all answered as recorded.\n");
}

TEST_F(Replays, PassOverCallsThatReachedNoHost) {
  EXPECT_EQ(replay(call(1, {{"reached", "false"}, {"result", "\"0\""}}) + call(2)),
            "Calls that reached no host, and were not played: 1\n1 call, all answered as recorded.\n");
}

TEST_F(Replays, PassOverCallsWhoseArgumentsTheMaskMadeUnreadable) {
  EXPECT_EQ(replay(call(1, {{"adapter", "\"VornStorage\""},
                            {"operation", "\"removeKeyValue\""},
                            {"slot", "28"},
                            {"arguments", "[\"********\"]"},
                            {"result", "\"true\""}}) +
                   call(2)),
            "Calls whose arguments are masked, and were not played: 1\n1 call, all answered as recorded.\n");
}

TEST_F(Replays, KeepTheRecordedTimesWhenAsked) {
  const std::string lines = call(1, {{"time", "5000000"}}) + call(2, {{"time", "5300000"}});
  const auto start = std::chrono::steady_clock::now();
  replay(lines, "--keep-times");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Replays, TellACallThatDoesNotReturn) {
  setenv("VORN_BAD", "call hang", 1);
  const std::string output = replay(call(1), "--watchdog 1 --host " VORN_BAD_HOST);
  unsetenv("VORN_BAD");
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(has(output, "VornDeviceInfo.getVolume"));
}

TEST_F(Replays, EndWhenTheyAreAskedToAndSayWhatTheyPlayed) {
  setenv("VORN_BAD", "call terminate", 1);
  const std::string output =
      replay(call(1, {{"result", "\"7\""}}) + call(2, {{"result", "\"7\""}}), "--host " VORN_BAD_HOST);
  unsetenv("VORN_BAD");
  EXPECT_EQ(m_status, 128 + SIGTERM);
  EXPECT_TRUE(has(output, "1 call, all answered as recorded.\n"));
}

TEST_F(Replays, TellDifferencesThatCameBeforeAHostFailed) {
  setenv("VORN_BAD", "call abort", 1);
  const Fields open = {
      {"adapter", "\"VornStorage\""}, {"operation", "\"open\""}, {"slot", "25"}, {"result", "\"true\""}};
  const std::string output = replay(call(1, open) + call(2), "--keep-going --host " VORN_BAD_HOST);
  unsetenv("VORN_BAD");
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(has(output, "recording:2: Call 1 is answered differently:\n"));
}

TEST_F(Replays, TellWhatIsMissing) {
  const std::string output =
      replay("{\"leftOut\":3,\"time\":1}\n" + call(1) + "{\"leftOut\":4,\"time\":2}\n{\"wind\":1}\n");
  EXPECT_TRUE(has(output, "recording:5: passed over, a line that begins with wind is not known"));
  EXPECT_TRUE(has(output, "recording: calls that could not be kept when they came: 7\n"));
}

}  // namespace
