// The command line of vorn-speaker: what it refuses, how it is answered, completed and ended.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "speaker/speaker_program.h"

namespace {

namespace fs = std::filesystem;

const std::string kVolume = "assistant VornDeviceInfo.getVolume\n";

class CommandLine : public SpeakerProgram {
 protected:
  const std::string m_state = std::string(kFolder) + "/state";
};

struct Asked {
  const char* arguments;
  const char* says;
};

class BadRequests : public CommandLine, public testing::WithParamInterface<Asked> {};

TEST_P(BadRequests, AreToldAndNothingIsDone) {
  EXPECT_TRUE(has(run(GetParam().arguments), GetParam().says));
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(fs::is_empty(kFolder));
}

INSTANTIATE_TEST_SUITE_P(
    Speaker, BadRequests,
    testing::Values(Asked{"--host ''", "--host: expected a name, found nothing"},
                    Asked{"record ''", "RECORDING: expected a name, found nothing"},
                    Asked{"--scenario ''", "--scenario: expected a name, found nothing"},
                    Asked{"''", "--scenario: expected a name, found nothing"},
                    Asked{"--out ''", "--out: expected a name, found nothing"},
                    Asked{"--alsa default --out x.wav", "--out excludes --alsa"},
                    Asked{"--watchdog 0x10", "--watchdog: expected a whole number, found 0x10"},
                    Asked{"--watchdog ' 5'", "--watchdog: expected a whole number, found  5"},
                    Asked{"serve --port 010", "--port: expected a whole number, found 010"},
                    Asked{"--port 65536", "--port: Value 65536 not in range 1 to 65535"},
                    Asked{"--watch ''", "--watch: expected a name, found nothing"},
                    Asked{"--port 8080", "--port and --watch are for serve"},
                    Asked{"replay a --watch b", "--port and --watch are for serve"},
                    Asked{"console --strict", "--strict and --all are for what plays a scenario"},
                    Asked{"replay a --all", "--strict and --all are for what plays a scenario"},
                    Asked{"console --keep-going",
                          "--keep-going is for what plays a scenario, and for replay"},
                    Asked{"report a --host b.so", "--host is for what runs a host"},
                    Asked{"console a.scenario", "a.scenario: this command plays no scenario"},
                    Asked{"report a b c", "c: this command plays no scenario"},
                    Asked{"--sceanrio a", "not expected: --sceanrio; did you mean --scenario?"},
                    Asked{"repaly a", "not expected: a; there is no scenario repaly; did you mean replay?"},
                    Asked{"report a --format csv", "not expected: --format; it is an option of export"},
                    Asked{"export a --format ''", "expected trace-event, mermaid or csv, found \"\""}));

TEST_F(CommandLine, IsToldThatNothingCouldBeRead) {
  EXPECT_TRUE(has(run("console", "/tmp"), "standard input cannot be read"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(CommandLine, IsToldThatNothingWasCompared) {
  run("record /tmp/speaker/a.rec");
  EXPECT_TRUE(
      has(run("report /tmp/speaker/a.rec /tmp/speaker/a.rec --calls 90000-"), "no call was compared"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(CommandLine, IsToldTheCommandThatWasMeant) {
  EXPECT_TRUE(has(run("consol"), "consol: there is no such scenario; did you mean console?"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(CommandLine, ReachesNoTerminalRaw) {
  const std::string output = run("\"$(printf 'a\\033b')\"");
  EXPECT_TRUE(has(output, "a\\x1bb"));
  EXPECT_FALSE(has(output + run("\"$(printf -- '--a\\033b')\""), "\x1b"));
}

TEST_F(CommandLine, AsksForTheVersion) {
  EXPECT_EQ(run("--version"), VORN_VERSION "\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(CommandLine, IsAnsweredInColourOnATerminalAndWhenAsked) {
  const std::string lights = file("lights.scenario", "assistant VornLEDController.setAnimation [a]\n");
  const std::string command = VORN_SPEAKER_PROGRAM " --state " + m_state + " " + lights;
  const auto onTerminal = [](const std::string& shell) { return "script -qec '" + shell + "' /dev/null"; };
  const std::string coloured = "\x1b[38;5;";
  EXPECT_FALSE(has(run(lights), coloured));
  EXPECT_TRUE(has(run(lights + " --color always"), coloured));
  EXPECT_TRUE(has(output(onTerminal(command)), coloured));
  EXPECT_FALSE(has(output(onTerminal(command + " --color never")), coloured));
  EXPECT_FALSE(has(output(onTerminal("NO_COLOR=1 " + command)), coloured));
}

TEST_F(CommandLine, IsAnsweredWithinTheWidthOfTheTerminal) {
  const std::string card = file("card.scenario", "assistant VornGUIOutput.renderGUICard \"{}\"\n");
  const std::string narrow =
      "script -qec 'stty cols 34; " VORN_SPEAKER_PROGRAM " --state " + m_state + " " + card + "' /dev/null";
  std::string frame = "    └";
  for (int i = 0; i < 28; ++i) frame += "─";
  EXPECT_TRUE(has(output(narrow), frame + "┘"));
}

class Completion : public CommandLine {
 protected:
  /// What bash offers for the last of the words.
  std::string offered(const std::string& words, int last) {
    return output("bash -c 'source " VORN_SOURCE "/packaging/completion/vorn-tools.bash; COMP_WORDS=(" +
                  words + "); COMP_CWORD=" + std::to_string(last) +
                  "; _vorn_tool " VORN_SPEAKER_PROGRAM "; echo ${COMPREPLY[*]}'");
  }
};

TEST_F(Completion, OffersOptionsCommandsAndValues) {
  EXPECT_EQ(offered("vorn-speaker --st", 1), "--state --strict\n");
  EXPECT_EQ(offered("vorn-speaker re", 1), "record replay report\n");
  EXPECT_EQ(offered("vorn-speaker export --fo", 2), "--format\n");
  EXPECT_EQ(offered("vorn-speaker --color a", 2), "always auto\n");
}

/// A run that the test can watch and end.
class Running : public CommandLine {
 protected:
  void start(const std::string& arguments) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    m_program = fork();
    if (m_program == 0) {
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      close(ends[0]);
      close(ends[1]);
      execl("/bin/sh", "sh", "-c",
            ("exec " VORN_SPEAKER_PROGRAM " --state " + m_state + " " + arguments).c_str(),
            static_cast<char*>(nullptr));
      _exit(127);
    }
    close(ends[1]);
    m_output = fdopen(ends[0], "r");
  }

  void TearDown() override {
    if (m_program > 0) kill(m_program, SIGKILL);
    if (m_program > 0) waitpid(m_program, nullptr, 0);
    if (m_output) fclose(m_output);
  }

  /// What it says up to a line with the text, or to its end.
  std::string until(const std::string& text) {
    char line[4096];
    std::string all;
    while (std::fgets(line, sizeof line, m_output)) {
      all += line;
      if (std::string(line).find(text) != std::string::npos) return all;
    }
    return all;
  }

  int end(int signal) {
    kill(m_program, signal);
    int ended = 0;
    waitpid(m_program, &ended, 0);
    m_program = -1;
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : -WTERMSIG(ended);
  }

  pid_t m_program = -1;
  FILE* m_output = nullptr;
};

TEST_F(Running, IsTheOnlyOneOnItsStateFolder) {
  std::string minutes;
  for (int i = 0; i < 200; ++i) minutes += "assistant VornAudioIn.startStreamingAudioData\nwait microphone\n";
  start("--real-time " + file("long.scenario", minutes));
  until("startStreamingAudioData");
  EXPECT_TRUE(has(play(kVolume), "state: another vorn-speaker uses it; wait until that has ended; choose"));
  EXPECT_EQ(m_status, 2);
  end(SIGKILL);
  play(kVolume);
  EXPECT_EQ(m_status, 0);
}

#ifdef __SANITIZE_THREAD__
constexpr bool kSignalsArrive = false;  // delivered by the system, but now and then not to their handler
#else
constexpr bool kSignalsArrive = true;
#endif
constexpr char kSignalsLost[] = "the thread sanitizer keeps a signal now and then";

TEST_F(Running, PrintsWhatItHasWhenItIsEnded) {
  if (!kSignalsArrive) GTEST_SKIP() << kSignalsLost;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    start(
        "--real-time --strict " +
        file("long.scenario", "assistant VornAudioIn.startStreamingAudioData\nwait microphone\n" + kVolume));
    until("startStreamingAudioData");
    EXPECT_EQ(end(signal), 128 + signal);
    const std::string output = until("never");
    EXPECT_TRUE(matches(output, "VornAudioIn.startStreamingAudioData +1\n") &&
                has(output, "vorn-speaker: ended by a signal"))
        << output;
    EXPECT_FALSE(has(output, "getVolume() ="));
    EXPECT_FALSE(has(output, "expected a call of every operation")) << "nobody let it come that far";
    EXPECT_FALSE(fs::exists(m_state + "/answer.wav"));
    fclose(m_output);
    m_output = nullptr;
  }
}

TEST_F(Running, WaitsForNothingWhenItIsEnded) {
  if (!kSignalsArrive) GTEST_SKIP() << kSignalsLost;
  for (const char* const waits :
       {"expect call VornDeviceInfo.notifyVolumeChanged within 86400s\n", "expect heard 7 within 86400s\n",
        "delay VornDeviceInfo.getVolume 86400s\nassistant VornDeviceInfo.getVolume\n"}) {
    start(file("long.scenario", "assistant VornDeviceInfo.getMuteStatus\n" + std::string(waits)));
    until("getMuteStatus");
    EXPECT_EQ(end(SIGTERM), 128 + SIGTERM);
    EXPECT_FALSE(has(until("never"), "expected")) << "nobody let it come that far";
    fclose(m_output);
    m_output = nullptr;
  }
}

TEST_F(Running, StopsAndGoesOnWithItsHost) {
  if (!kSignalsArrive) GTEST_SKIP() << kSignalsLost;
  start("--host " VORN_OWN_HOST " " +
        file("long.scenario", kVolume + "expect call VornDeviceInfo.notifyVolumeChanged within 86400s\n"));
  until("getVolume");
  pid_t host = 0;
  std::ifstream("/proc/" + std::to_string(m_program) + "/task/" + std::to_string(m_program) + "/children") >>
      host;
  ASSERT_GT(host, 0);
  const auto isStopped = [host] {
    std::string skipped, state;
    std::ifstream("/proc/" + std::to_string(host) + "/stat") >> skipped >> skipped >> state;
    return state == "T";
  };
  int ended = 0;
  kill(m_program, SIGTSTP);
  waitpid(m_program, &ended, WUNTRACED);
  EXPECT_TRUE(WIFSTOPPED(ended));
  while (!isStopped()) {
  }
  kill(m_program, SIGCONT);
  while (isStopped()) {
  }
  EXPECT_EQ(end(SIGTERM), 128 + SIGTERM);
  EXPECT_FALSE(has(until("never"), "The host stopped"));
}

TEST_F(Running, RecordsEachCallWhenItHasReturned) {
  const std::string recording = std::string(kFolder) + "/new";
  start("--real-time record " + recording + " --scenario " +
        file("long.scenario", kVolume + "assistant VornAudioIn.startStreamingAudioData\nwait microphone\n"));
  until("startStreamingAudioData");
  EXPECT_TRUE(has(content(recording), "\"operation\":\"getVolume\""));
}

TEST_F(Running, GoesOnWhereWhoStartedItLetsSignalsBeIgnored) {
  for (const char* signal : {"HUP", "INT", "TERM"}) {
    const std::string said = output(
        "cd " + std::string(kFolder) + " && rm -f in out && mkfifo in && trap '' " + signal +
        " && { " VORN_SPEAKER_PROGRAM
        " --state state console <in >out 2>&1 & } && exec 3>in &&"
        " echo assistant VornDeviceInfo.getVolume >&3 && until grep -q 'getVolume() =' out; do :; done &&"
        " kill -" +
        signal +
        " $! && echo assistant VornDeviceInfo.getTimezone >&3 && exec 3>&- && wait $!;"
        " echo $?; cat out");
    EXPECT_TRUE(matches(said, "^0\n.*getTimezone\\(\\) =")) << signal << ": " << said;
  }
}

}  // namespace
