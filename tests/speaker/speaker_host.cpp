// vorn-speaker with a host of somebody else, who may throw, crash and hang.

#include <signal.h>
#include <sys/stat.h>

#include <cstdlib>

#include "speaker/comma_locale.h"
#include "speaker/speaker_program.h"

namespace {

class OwnHost : public SpeakerProgram {
 protected:
  std::string playOnIt(const std::string& lines, const std::string& options = "") {
    return play(lines, "--host " VORN_OWN_HOST " " + options);
  }
};

TEST_F(OwnHost, AnswersInPlaceOfTheSimulatedOne) {
  EXPECT_TRUE(has(playOnIt("assistant VornDeviceInfo.getVolume\nexpect 7\n"), "getVolume() = 7"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(OwnHost, IsDestroyedAfterEverythingElse) {
  const std::string output = playOnIt("assistant VornDeviceInfo.getVolume\n");
  EXPECT_TRUE(matches(output, "Together[^\n]*\nthe own host is destroyed\n$"));
}

TEST_F(OwnHost, MayThrowAndTheScenarioGoesOn) {
  const std::string output = playOnIt(
      "assistant VornDeviceInfo.getTimezone\nexpect threw no clock\n"
      "assistant VornDeviceInfo.getDeviceLocale\nassistant VornDeviceInfo.getVolume\nexpect 7\n");
  EXPECT_EQ(m_status, 0);
  EXPECT_TRUE(has(output, "getTimezone() threw no clock\n"));
  EXPECT_TRUE(has(output, "getDeviceLocale() threw no std::exception\n"));
  EXPECT_TRUE(has(output, "VornDeviceInfo.getDeviceLocale gave threw what is no std::exception"));
}

TEST_F(OwnHost, BringsItsMediaPlayers) {
  const std::string create = "assistant VornMediaPlayerFactory.createDalMediaPlayer ";
  const std::string output = playOnIt(create + "Radio true false\nexpect \"\"\n" + create +
                                      "DefaultMediaPlayer true false\nexpect \"no player\"\n");
  EXPECT_EQ(m_status, 0) << output;
  EXPECT_TRUE(has(output, "Configure(Radio, true, false) ...\n"));
  EXPECT_TRUE(has(output, "own player for Radio"));
}

TEST_F(OwnHost, IsRecordedWithWhatItThrew) {
  const std::string recording = std::string(kFolder) + "/thrown";
  run("record " + recording + " --host " VORN_OWN_HOST " --scenario " +
      file("thrown.scenario",
           "assistant VornDeviceInfo.getTimezone\nassistant VornDeviceInfo.getDeviceLocale\n"
           "assistant VornDeviceInfo.getVolume\n"));
  const std::string text = content(recording);
  EXPECT_TRUE(has(text, "\"exception\":\"no clock\","));
  EXPECT_TRUE(has(text, "\"exception\":\"no std::exception\","));
  EXPECT_TRUE(has(text, "\"exception\":null,"));
  EXPECT_TRUE(
      has(run("replay " + recording + " --host " VORN_OWN_HOST), "3 calls, all answered as recorded."));
  EXPECT_TRUE(has(run("replay " + recording), "recorded  threw no clock\n"));
  EXPECT_EQ(m_status, 1);
}

TEST_F(OwnHost, ThatCrashesIsNamedWithOperationAndStacks) {
  const std::string output = playOnIt("assistant VornDeviceInfo.getMuteStatus\n");
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(
      has(output, "The host crashed: Aborted\n\nThread assistant, inside VornDeviceInfo.getMuteStatus\n"));
  EXPECT_TRUE(has(output, "Thread firmware"));
  EXPECT_TRUE(has(output, "Thread main"));
}

TEST_F(OwnHost, MaySetALocaleWithADecimalComma) {
  if (!makeCommaLocale()) GTEST_SKIP() << "the package locales is not here";
  const std::string recording = std::string(kFolder) + "/comma";
  run("record " + recording + " --host " VORN_OWN_HOST " --scenario " +
      file("comma.scenario", "assistant VornDeviceCapabilities.onSetRangeValue 2.5\nexpect true\n"));
  EXPECT_EQ(m_status, 0);
  EXPECT_TRUE(has(content(recording), "\"arguments\":[\"2.5\"]"));
  run("replay " + recording + " --host " VORN_OWN_HOST);
  EXPECT_EQ(m_status, 0);
}

TEST_F(OwnHost, WithoutAnExternalPlayerIsNamed) {
  EXPECT_TRUE(
      has(playOnIt("assistant VornEMPAdapterControl.nextTrack x\n"), "getEMPAdapter() answered null."));
  EXPECT_EQ(m_status, 3);
}

TEST_F(OwnHost, ThatDoesNotReturnIsNamedWithOperationAndStacks) {
  const std::string output = playOnIt("assistant VornStorage.open\n", "--watchdog 1");
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(has(output, "No answer on the thread assistant within 1 s."));
  EXPECT_TRUE(has(output, "Thread assistant, inside VornStorage.open\n"));
}

/// Whoever gave up first tells of all threads, and nobody writes in between.
TEST_F(OwnHost, ThatDoesNotReturnIsToldOnceHoweverManyWait) {
  const std::string output = playOnIt("together 8 VornStorage.open\n", "--watchdog 1");
  EXPECT_EQ(m_status, 3);
  const std::size_t told = output.find("No answer on the thread assistant");
  EXPECT_NE(told, std::string::npos) << output;
  EXPECT_EQ(output.find("No answer", told + 1), std::string::npos) << output;
  for (int thread = 1; thread <= 8; ++thread) {
    const std::string name = "\nThread assistant " + std::to_string(thread) + ", inside VornStorage.open\n";
    const std::size_t found = output.find(name);
    EXPECT_NE(found, std::string::npos) << thread;
    EXPECT_EQ(output.find(name, found + 1), std::string::npos) << thread;
  }
}

TEST_F(OwnHost, AnswersAReplayDifferently) {
  const std::string recording = std::string(kFolder) + "/recording";
  run("record " + recording + " --scenario " + file("a.scenario", "assistant VornDeviceInfo.getVolume\n"));
  EXPECT_TRUE(has(run("replay " + recording + " --host " VORN_OWN_HOST), "recorded  30\n  now       7\n"));
  EXPECT_EQ(m_status, 1);
}

TEST_F(OwnHost, IsRefusedWhenTheFileHoldsNone) {
  EXPECT_TRUE(has(run("--host /tmp/speaker/none.so"), "/tmp/speaker/none.so cannot be loaded"));
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(has(run("--host " VORN_LIBRARY), "does not define vornCreateHost()"));
}

/// A host that misbehaves at a time of its life, and what the speaker says of it.
struct Bad {
  const char* when;
  const char* what;
  const char* says;
};

void PrintTo(const Bad& bad, std::ostream* out) { *out << bad.when << ' ' << bad.what; }

class BadHost : public SpeakerProgram, public testing::WithParamInterface<Bad> {
 protected:
  std::string playOnIt(const std::string& bad, const std::string& options = "") {
    setenv("VORN_BAD", bad.c_str(), 1);
    // What ends by itself may take its time: under the thread sanitizer the end of a process takes a second.
    const bool ends = bad.find("hang") == std::string::npos && bad.find("stop") == std::string::npos;
    return play("assistant VornDeviceInfo.getVolume\n",
                "--host " VORN_BAD_HOST " --watchdog " + std::string(ends ? "60 " : "1 ") + options);
  }
};

TEST_P(BadHost, IsToldWithWhatItDidWhen) {
#if defined(__SANITIZE_ADDRESS__)
  if (std::string(GetParam().what).find("recursion") != std::string::npos)
    GTEST_SKIP() << "the sanitizer ends the process at the end of its stack, before the speaker hears of it";
#endif
  const std::string output = playOnIt(std::string(GetParam().when) + " " + GetParam().what);
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(has(output, GetParam().says));
  int told = 0;
  for (const char* end : {"The host crashed", "The host ended the program", "The host does not return",
                          "The host stopped", "No answer on the thread"}) {
    for (std::size_t at = 0; (at = output.find(end, at)) != std::string::npos; ++at) ++told;
  }
  EXPECT_EQ(told, 1) << output;
}

constexpr char kInside[] = "Thread assistant, inside VornDeviceInfo.getVolume\n";

INSTANTIATE_TEST_SUITE_P(
    Speaker, BadHost,
    testing::Values(
        Bad{"load", "abort", "The host crashed while it was loaded: Aborted"},
        Bad{"load", "throw", "The host crashed while it was loaded: Aborted"},
        Bad{"load", "exit", "The host ended the program while it was loaded, with status 0"},
        Bad{"load", "quick-exit", "The host ended the program while it was loaded, with status 0"},
        Bad{"load", "hang", "The host does not return while it was loaded."},
        Bad{"load", "kill", "The host crashed while it was loaded: Killed"},
        Bad{"make", "abort", "The host crashed while it was made: Aborted"},
        Bad{"make", "recursion", "The host crashed while it was made: Segmentation fault"},
        Bad{"make", "exit", "The host ended the program while it was made, with status 0"},
        Bad{"make", "hang", "The host does not return while it was made."}, Bad{"call", "abort", kInside},
        Bad{"call", "trap", "The host crashed: Trace/breakpoint trap"},
        Bad{"call", "system-call", "The host crashed: Bad system call"},
        Bad{"call", "broken-pipe", "The host crashed: Broken pipe"}, Bad{"call", "recursion", kInside},
        Bad{"call", "thread-recursion", kInside}, Bad{"call", "kill", kInside},
        Bad{"call", "kill-group", kInside}, Bad{"call", "exit", kInside}, Bad{"call", "quick-exit", kInside},
        Bad{"call", "hang", kInside},
        Bad{"call", "stop",
            "The host stopped its process\nThread assistant, inside VornDeviceInfo.getVolume"},
        Bad{"ask", "abort", "The host crashed while it was asked for its media players: Aborted"},
        Bad{"ask", "exit",
            "The host ended the program while it was asked for its media players, with status 0"},
        Bad{"ask", "hang", "The host does not return while it was asked for its media players."},
        Bad{"make", "stop", "The host stopped its process while it was made"},
        Bad{"destroy", "abort", "The host crashed while it was destroyed: Aborted"},
        Bad{"destroy", "throw", "The host crashed while it was destroyed: Aborted"},
        Bad{"destroy", "quick-exit", "The host ended the program while it was destroyed, with status 0"},
        Bad{"destroy", "hang", "The host does not return while it was destroyed."},
        Bad{"unload", "abort", "The host crashed while it was unloaded: Aborted"},
        Bad{"unload", "quick-exit", "The host ended the program while it was unloaded, with status 0"},
        Bad{"unload", "hang", "The host does not return while it was unloaded."},
        Bad{"finish", "quick-exit", "The host ended the program while it was unloaded, with status 0"},
        Bad{"finish", "hang", "The host does not return while it was unloaded."}));

/// Two that would freeze a device.
class FrozenHost : public BadHost {};

TEST_P(FrozenHost, IsToldBeforeTheWatchdogAndFailsTheRun) {
  setenv("VORN_BAD", (std::string("mute ") + GetParam().what).c_str(), 1);
  const std::string output =
      play("assistant VornDeviceInfo.getMuteStatus\nassistant VornStorage.open\n", "--host " VORN_BAD_HOST);
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(has(output, GetParam().says) && has(output, "libbad_host.so")) << output;
  EXPECT_TRUE(has(output, "VornStorage                 open()")) << "the run ended there: " << output;
}

INSTANTIATE_TEST_SUITE_P(
    Speaker, FrozenHost,
    testing::Values(Bad{"mute", "ask-again", "which its own thread holds in VornDeviceInfo::getMuteStatus()"},
                    Bad{"mute", "own-mutex",
                        "whose holder in VornDeviceInfo::getMuteStatus() waits for the mutex"}));

class QuietBadHost : public BadHost {};

TEST_F(QuietBadHost, ThatHangsOutsideACallIsToldWithTheStacksOfItsThreads) {
  EXPECT_TRUE(matches(playOnIt("load hang"), "\nThread main\n.*\npause\n"));
  EXPECT_TRUE(has(playOnIt("make thread-hang"), "\npause\n")) << "where another thread waits";
}

TEST_F(QuietBadHost, IsAskedToEndAndEndsUnlessTheCallerIgnoresThat) {
  const std::string two = "assistant VornDeviceInfo.getVolume\nassistant VornStorage.open\n";
  setenv("VORN_BAD", "call terminate", 1);
  EXPECT_FALSE(has(play(two, "--host " VORN_BAD_HOST), "VornStorage"));
  EXPECT_EQ(m_status, 128 + SIGTERM);
  EXPECT_TRUE(has(output("trap '' TERM; " VORN_SPEAKER_PROGRAM
                         " --state /tmp/speaker/state --no-trace --host " VORN_BAD_HOST
                         " /tmp/speaker/test.scenario 2>&1"),
                  "VornStorage                 open()"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(QuietBadHost, EndsWithTheSpeaker) {
  EXPECT_FALSE(has(playOnIt("load orphan"), "left behind"));
  EXPECT_EQ(std::abs(m_status) % 128, SIGKILL);
}

TEST_F(QuietBadHost, HearsOfItsChildren) {
  EXPECT_TRUE(has(playOnIt("call children"), "the host hears of its children\n"));
}

TEST_F(QuietBadHost, IsWatchedUntilItIsDestroyed) {
  const std::string output = playOnIt("destroy lock-twice");
  EXPECT_EQ(m_status, 3);
  EXPECT_TRUE(has(output, "which its own thread holds")) << output;
}

TEST_F(QuietBadHost, ThatThrowsWhenItIsMadeFailsWithWhatItSays) {
  EXPECT_TRUE(has(playOnIt("make throw"), "The host threw while it was made: nothing for it"));
  EXPECT_EQ(m_status, 3);
}

TEST_F(QuietBadHost, ThatThrowsWhenItIsAskedForItsPlayersFailsWithWhatItSays) {
  EXPECT_TRUE(
      has(playOnIt("ask throw"), "The host threw while it was asked for its media players: nothing for it"));
  EXPECT_EQ(m_status, 3);
}

TEST_F(QuietBadHost, IsToldThatItsFactoryIsReplaced) {
  const std::string told =
      "The host made a media player factory, which is replaced here by one that is watched;";
  EXPECT_TRUE(has(playOnIt("make factory"), told));
  EXPECT_EQ(m_status, 0);
  EXPECT_FALSE(has(playOnIt("none"), told));
}

TEST_F(QuietBadHost, ThatIsNotMadeFails) {
  EXPECT_TRUE(has(playOnIt("make none"), "The host was not made: vornCreateHost() answers null"));
  EXPECT_EQ(m_status, 3);
}

TEST_F(QuietBadHost, LeavesNothingBesideTheSpeakersOwnFiles) {
  for (const char* when : {"none", "load abort", "call kill", "make throw", "full"}) {
    output(std::string("ulimit -f ") + (when == std::string("full") ? "0" : "unlimited") + "; VORN_BAD='" +
           when +
           "' " VORN_SPEAKER_PROGRAM
           " --state /tmp/speaker/state --no-trace --watchdog 1 --host " VORN_BAD_HOST " " +
           file("volume.scenario", "assistant VornDeviceInfo.getVolume\n") + " 2>&1");
    for (const auto& entry : std::filesystem::directory_iterator("/tmp/speaker/state"))
      EXPECT_TRUE(entry.path().filename() == "lock" || entry.path().filename() == "answer.wav")
          << when << ": " << entry.path();
  }
}

TEST_F(QuietBadHost, ThatClosesEveryFileCannotKeepTheSpeakerSilent) {
  EXPECT_TRUE(has(playOnIt("call close"), "standard output could not be written"));
  EXPECT_EQ(m_status, 1);
}

TEST_F(QuietBadHost, IsQuotedWithoutSecretsAndHarmlesslyWhenItThrowsWhereNoneMay) {
  EXPECT_TRUE(has(playOnIt("destroy throw"), "An exception left the host: nothing for it\n"));
  EXPECT_TRUE(has(playOnIt("load throw-secret"), "An exception left the host: ********\n"));
  const std::string output = playOnIt("destroy throw-raw");
  EXPECT_TRUE(has(output, "An exception left the host: nothing\\x1b[2J for it\n"));
  EXPECT_FALSE(has(output, "\x1b"));
}

TEST_F(QuietBadHost, PrintsBesideTheCallsAndNotAmongThem) {
  for (const char* when : {"load print", "make print", "call print", "destroy print", "unload print"}) {
    playOnIt(when,
             ">/tmp/speaker/calls 2>/tmp/speaker/beside #");  // the fixture's own redirections a comment
    const std::string calls = content("/tmp/speaker/calls");
    EXPECT_TRUE(has(calls, "getVolume() = 7")) << when;
    EXPECT_FALSE(has(calls, "the host prints")) << when;
    EXPECT_TRUE(has(content("/tmp/speaker/beside"), "the host prints")) << when;
  }
}

TEST_F(QuietBadHost, IsNotBlamedForAReaderThatWentAway) {
  EXPECT_EQ(playOnIt("none", "--every-block | true"), "");
}

TEST_F(QuietBadHost, LeavesNoProcessBehind) {
  // The speaker would not come back: popen() reads until the last holder of the pipe is gone.
  playOnIt("call leave");
  EXPECT_EQ(m_status, 0);
}

TEST_F(QuietBadHost, IsToldAlsoWhenItsCallerIgnoresTheEndOfProcesses) {
  signal(SIGCHLD, SIG_IGN);
  setenv("VORN_BAD", "none", 1);
  const int ended =
      std::system((std::string(VORN_SPEAKER_PROGRAM) + " --state " + kFolder + "/state --host " +
                   VORN_BAD_HOST + " >/tmp/speaker/output 2>&1; echo $? >/tmp/speaker/status")
                      .c_str());
  signal(SIGCHLD, SIG_DFL);
  EXPECT_EQ(ended, -1);  // Its own child's end went unheard.
  EXPECT_EQ(content("/tmp/speaker/status"), "1\n") << content("/tmp/speaker/output");
}

TEST_F(QuietBadHost, ThatIsAPipeOrAFolderIsRefused) {
  ASSERT_EQ(mkfifo("/tmp/speaker/pipe", 0600), 0);
  EXPECT_TRUE(has(run("--host /tmp/speaker/pipe"), "/tmp/speaker/pipe: is a pipe; name a file"));
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(has(run("--host /tmp/speaker"), "/tmp/speaker: is a folder; name a file"));
}

}  // namespace
