// The files of vorn-speaker: what it reads and writes, what it leaves alone, and how it ends.

#include <pwd.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <regex>
#include <set>

#include "speaker/speaker_program.h"

namespace {

namespace fs = std::filesystem;

const std::string kVolume = "assistant VornDeviceInfo.getVolume\n";

class Files : public SpeakerProgram {
 protected:
  static std::string path(const std::string& name) { return std::string(kFolder) + "/" + name; }
  static std::string state(const std::string& name) { return path("state/" + name); }

  /// The mode of a file as ls shows it, without its kind.
  static int mode(const std::string& name) {
    struct stat status {};
    return stat(name.c_str(), &status) == 0 ? static_cast<int>(status.st_mode & 0777) : -1;
  }

  /// Runs the program with the current folder there, which keeps its state too.
  std::string runIn(const std::string& folder, const std::string& arguments) {
    return output("cd " + folder + " && " VORN_SPEAKER_PROGRAM " --state . " + arguments + " 2>&1");
  }

  void makeState() { fs::create_directory(path("state")); }
};

// ---- What it leaves alone

TEST_F(Files, OfTheUserInTheFolderRecordedStay) {
  makeState();
  fs::create_directory(state("recorded"));
  file("state/recorded/notes", "mine");
  file("state/recorded/store.sqlite", "mine too");
  run("record " + path("a") + " --scenario " + file("a.scenario", kVolume));
  run("replay " + path("a"));
  EXPECT_EQ(m_status, 0);
  EXPECT_EQ(content(state("recorded/notes")) + content(state("recorded/store.sqlite")), "minemine too");
}

TEST_F(Files, InTheCurrentFolderStayWhenThatKeepsTheState) {
  fs::create_directories(path("here/recorded"));
  for (const char* name : {"a.scenario", "notes", "recorded/notes"})
    file(std::string("here/") + name, kVolume);
  runIn(path("here"), "record a --scenario a.scenario");
  EXPECT_EQ(m_status, 0);
  EXPECT_TRUE(has(runIn(path("here"), "replay a"), "1 calls, all answered as recorded."));
  for (const char* name : {"a.scenario", "notes", "recorded/notes"})
    EXPECT_EQ(content(path("here/") + name), kVolume);
}

TEST_F(Files, NamedAsItsOwnButMadeByTheUserAreLeftAlone) {
  makeState();
  file("state/answer.wav", "my own song");
  EXPECT_TRUE(has(run(""), "answer.wav: was not made by vorn-speaker; move it away"));
  EXPECT_EQ(m_status, 2);
  EXPECT_EQ(content(state("answer.wav")), "my own song");
}

TEST_F(Files, OfAnEarlierRunAreReplaced) {
  run("");
  const std::string before = content(state("answer.wav"));
  run("");
  EXPECT_EQ(m_status, 0);
  EXPECT_EQ(content(state("answer.wav")), before);
}

TEST_F(Files, ThatAreReadAreNotWrittenOver) {
  const std::string scenario = file("a.scenario", kVolume);
  const std::string sound = content(std::string(VORN_DATA) + "/request.wav");
  const std::string audio = file("a.wav", sound);
  struct {
    std::string arguments;
    const char* says;
  } const kCases[] = {
      {"record " + scenario + " --scenario " + scenario,
       "is the scenario, and the recording would replace it"},
      {"record " + path("state/../a.scenario") + " --scenario " + scenario, "is the scenario"},
      {"record " + audio + " --audio " + audio, "is the sound of the microphone"},
      {"record " + path("new") + " --out " + path("new"), "is named by --out too"},
      {"--audio " + audio + " --out " + audio, "is the sound of the microphone, and --out would replace it"},
      {scenario + " --out " + scenario, "is the scenario, and --out would replace it"},
      {"replay " + scenario + " --out " + scenario, "is the recording, and --out would replace it"}};
  makeState();
  for (const auto& wrong : kCases) {
    EXPECT_TRUE(has(run(wrong.arguments), wrong.says));
    EXPECT_EQ(m_status, 2) << wrong.arguments;
    EXPECT_TRUE(content(scenario) == kVolume && content(audio) == sound) << wrong.arguments;
  }
}

TEST_F(Files, InTheCurrentFolderAreNotTakenForWhatShips) {
  file("answer.wav", "no sound at all");
  EXPECT_TRUE(has(runIn(kFolder, "--out other.wav"), "FINISHED"));
  EXPECT_EQ(content(path("answer.wav")), "no sound at all");
}

TEST_F(Files, PlayedFromTheCurrentFolderMayBeTheOneThatIsWritten) {
  fs::copy(VORN_DATA "/answer.wav", path("answer.wav"));
  const std::string output =
      runIn(kFolder, file("own.scenario",
                          "assistant VornMediaPlayerFactory.createDalMediaPlayer SpeechPlayer true false\n"
                          "assistant VornAttachmentReaderContainerFactory.createAttachmentReaderContainer\n"
                          "firmware VornAttachmentReaderContainerInterfaceImpl.Subscribe SpeechPlayer\n"
                          "assistant VornAttachmentReaderContainerInterfaceImpl.sendData ./answer.wav\n"
                          "assistant VornAttachmentReaderContainerInterfaceImpl.notifyEndOfStream\n") +
                         " --out answer.wav");
  EXPECT_TRUE(has(output, "FINISHED"));
  EXPECT_GT(fs::file_size(path("answer.wav")), 10000U);
}

TEST_F(Files, StayWhenNothingIsPlayed) {
  const std::string earlier = file("mine.wav", "my own song");
  for (const char* wrong : {"/tmp/speaker/none.scenario", "--device /tmp/speaker/none",
                            "--host /tmp/speaker/none", "--audio /tmp/speaker/none"}) {
    run(wrong + (" --out " + earlier));
    EXPECT_EQ(m_status, 2) << wrong;
    EXPECT_EQ(content(earlier), "my own song") << wrong;
  }
}

TEST_F(Files, AreWrittenAsideAndNothingStaysBeside) {
  run(" --out " + path("out/none.wav"));
  EXPECT_EQ(m_status, 2);
  fs::create_directory(path("out"));
  run(" --out " + path("out/a.wav"));
  EXPECT_EQ(std::distance(fs::directory_iterator(path("out")), fs::directory_iterator()), 1);
}

// ---- Whose they are

TEST_F(Files, AreForTheUsersEyesOnly) {
  run("record " + path("a") + " --secrets");
  run("");
  EXPECT_EQ(mode(path("state")), 0700);
  EXPECT_EQ(mode(state("store.sqlite")), 0600);
  EXPECT_EQ(mode(path("a")), 0600);
}

TEST_F(Files, AreNotFollowedThroughLinksInTheStateFolder) {
  for (const char* name : {"answer.wav", "lock", "store.sqlite", "store.sqlite-wal", "console-history"}) {
    fs::remove_all(path("state"));
    makeState();
    fs::create_symlink(file("precious", "precious"), state(name));
    EXPECT_TRUE(has(run("--alsa none"),
                    "is a link, which is not followed; choose a folder of your own with --state"));
    EXPECT_EQ(m_status, 2);
    EXPECT_EQ(content(path("precious")), "precious") << name;
  }
}

TEST_F(Files, ThatAreNoneInTheStateFolderAreRefusedWithoutWaiting) {
  for (const char* name : {"lock", "store.sqlite", "store.sqlite-wal", "console-history"}) {
    fs::remove_all(path("state"));
    makeState();
    ASSERT_EQ(mkfifo(state(name).c_str(), 0600), 0);
    EXPECT_TRUE(has(run("--alsa none"), std::string(name) + ": is no file; choose a folder of your own"));
    EXPECT_EQ(m_status, 2);
  }
}

TEST_F(Files, AreNotWrittenWhereEverybodyMayWrite) {
  makeState();
  fs::permissions(path("state"), fs::perms::all);
  EXPECT_TRUE(has(run(""), "state: may be written by everybody; choose a folder of your own with --state"));
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(fs::is_empty(path("state")));
}

TEST_F(Files, AreNotWrittenIntoAnotherUsersFolder) {
  makeState();
  if (chown(path("state").c_str(), 12345, 12345) != 0)
    GTEST_SKIP() << "needs another user's folder, thus root";
  EXPECT_TRUE(has(run(""), "state: belongs to another user"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Files, OfTheStateAreNotInTheWorldsFolderWithoutAHome) {
  const std::string home = getpwuid(getuid())->pw_dir;
  const std::string program = VORN_SPEAKER_PROGRAM;
  EXPECT_TRUE(has(output("env -u HOME -u XDG_STATE_HOME " + program + " --help"),
                  home + "/.local/state/vorn-speaker"));
  EXPECT_TRUE(has(output("XDG_STATE_HOME=relative HOME=/somewhere " + program + " --help"),
                  "/somewhere/.local/state/vorn-speaker"));
  EXPECT_TRUE(has(output("XDG_STATE_HOME=/else " + program + " --help"), "=/else/vorn-speaker"));
}

TEST_F(Files, ThatAreNoFoldersAreNoState) {
  file("state", "a file");
  EXPECT_TRUE(has(run(""), "state: is no folder"));
  EXPECT_EQ(m_status, 2);
}

// ---- What cannot be read or written

TEST_F(Files, ThatAreLostGiveStatusOne) {
  for (const char* redirected : {"2>&1 >/dev/full #", "2>&1 >&- #"}) {
    EXPECT_TRUE(has(run(std::string("--list ") + redirected), "standard output could not be written"));
    EXPECT_EQ(m_status, 1);
    EXPECT_TRUE(has(play(kVolume, redirected), "standard output could not be written"));
    EXPECT_EQ(m_status, 1);
  }
}

TEST_F(Files, KeepTheirOwnTextWhenTheStandardOnesAreClosed) {
  run("record " + path("a") + " --scenario " + file("a.scenario", kVolume) + " --out " + path("a.wav") +
      " <&- >&- 2>&- #");
  EXPECT_EQ(m_status, 1);
  EXPECT_EQ(content(path("a")).find("{\"recording\":"), 0U);
  EXPECT_EQ(content(path("a.wav")).find("RIFF"), 0U);
  EXPECT_FALSE(has(content(path("a")) + content(path("a.wav")), "getVolume() ="));
}

TEST_F(Files, OfSoundThatAreLostGiveStatusOne) {
  const std::string sounds =
      file("sounds.scenario",
           "assistant VornMediaPlayerFactory.createDalMediaPlayer SpeechPlayer true false\n"
           "assistant VornAttachmentReaderContainerFactory.createAttachmentReaderContainer\n"
           "firmware VornAttachmentReaderContainerInterfaceImpl.Subscribe SpeechPlayer\n"
           "assistant VornAttachmentReaderContainerInterfaceImpl.sendData answer.wav\n"
           "assistant VornAttachmentReaderContainerInterfaceImpl.notifyEndOfStream\n");
  EXPECT_TRUE(
      has(output("ulimit -f 20; " VORN_SPEAKER_PROGRAM " --state " + path("state") + " " + sounds + " 2>&1"),
          "is the disk full?\n"));
  EXPECT_EQ(m_status, 1);
  EXPECT_FALSE(fs::exists(state("answer.wav")));
  run(sounds + " --out /dev/full");
  EXPECT_EQ(m_status, 2);
  run(sounds + " --out /dev/null");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Files, ThatArePipesOrFoldersAreRefusedWithoutWaiting) {
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
  for (const char* option : {"--audio ", "--out ", "--device "}) {
    run(option + path("pipe"));
    EXPECT_EQ(m_status, 2) << option;
    run(option + std::string(kFolder));
    EXPECT_EQ(m_status, 2) << option;
  }
  EXPECT_TRUE(has(run(path("pipe")), "pipe: cannot be read: it is a pipe that nobody writes to"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Files, MayComeThroughAPipe) {
  EXPECT_TRUE(has(output("echo assistant VornDeviceInfo.getVolume | " VORN_SPEAKER_PROGRAM " --state " +
                         path("state") + " /dev/stdin"),
                  "getVolume() = 30"));
}

TEST_F(Files, AreReadWhereverProcessesAreHidden) {
  const std::string hidden = "unshare --mount sh -c 'mount -t tmpfs none /proc && ";
  if (std::system((hidden + "true' 2>/dev/null").c_str()) != 0)
    GTEST_SKIP() << "needs a mount namespace to hide /proc in";
  EXPECT_TRUE(has(output(hidden + VORN_SPEAKER_PROGRAM " --state " + path("state") + " " +
                         file("a.scenario", kVolume) + "' 2>&1"),
                  "getVolume() = 30"));
}

TEST_F(Files, OfTheTraceThatCannotBeWrittenAreNamedBeforeAnythingIsPlayed) {
  fs::create_directory("/tmp/xAppLog.txt");
  EXPECT_TRUE(has(play(kVolume), "/tmp/xAppLog.txt: the library cannot write its trace: Is a directory"));
  EXPECT_EQ(m_status, 2);
  fs::remove("/tmp/xAppLog.txt");
  ASSERT_EQ(mkfifo("/tmp/xAppLog.txt", 0600), 0);
  EXPECT_TRUE(has(play(kVolume), "/tmp/xAppLog.txt: the library cannot write its trace"));
}

TEST_F(Files, OfTheTraceThatIsAnothersAreNamedWithTheirOwner) {
  file("../xAppLog.txt", "");
  if (chown("/tmp/xAppLog.txt", 12345, 12345) != 0) GTEST_SKIP() << "needs another user's file, thus root";
  const std::string output = play(kVolume);
  if (m_status == 0) GTEST_SKIP() << "this system lets the superuser write to it";
  EXPECT_TRUE(
      has(output, "it belongs to user 12345; have it removed, or leave the trace off with --no-trace"));
}

TEST_F(Files, OfTheTraceAreNotMissedWhenItIsOff) {
  EXPECT_TRUE(has(run("--no-trace"), "expect trace is passed over: the trace is off"));
  EXPECT_EQ(m_status, 0);
  run("--no-trace --strict");
  EXPECT_EQ(m_status, 0);
}

// ---- What is asked for

struct Asked {
  const char* arguments;
  const char* says;
};

class BadRequests : public Files, public testing::WithParamInterface<Asked> {};

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
                    Asked{"--port 8080", "--port and --watch are for serve"},
                    Asked{"replay a --watch b", "--port and --watch are for serve"},
                    Asked{"console a.scenario", "a.scenario: this command plays no scenario"},
                    Asked{"report a b c", "c: this command plays no scenario"},
                    Asked{"--sceanrio a", "not expected: --sceanrio; did you mean --scenario?"},
                    Asked{"report a --format csv", "not expected: --format; it is an option of export"},
                    Asked{"export a --format ''", "expected trace-event, mermaid or csv, found \"\""}));

TEST_F(Files, NamedNearlyAsACommandAreTakenForIt) {
  EXPECT_TRUE(has(run("consol"), "consol: there is no such scenario; did you mean console?"));
  EXPECT_EQ(m_status, 2);
}

// ---- As users know programs

TEST_F(Files, ThatAreNamedStrangelyReachNoTerminalRaw) {
  const std::string output = run("\"$(printf 'a\\033b')\"");
  EXPECT_TRUE(has(output, "a\\x1bb"));
  EXPECT_FALSE(has(output + run("\"$(printf -- '--a\\033b')\""), "\x1b"));
}

TEST_F(Files, TellTheVersion) {
  EXPECT_EQ(run("--version"), VORN_VERSION "\n");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Files, AreColouredOnATerminalAndWhenAsked) {
  const std::string lights = file("lights.scenario", "assistant VornLEDController.setAnimation [a]\n");
  const std::string command = VORN_SPEAKER_PROGRAM " --state " + path("state") + " " + lights;
  const auto onTerminal = [](const std::string& shell) { return "script -qec '" + shell + "' /dev/null"; };
  const std::string coloured = "\x1b[38;5;";
  EXPECT_FALSE(has(run(lights), coloured));
  EXPECT_TRUE(has(run(lights + " --color always"), coloured));
  EXPECT_TRUE(has(output(onTerminal(command)), coloured));
  EXPECT_FALSE(has(output(onTerminal(command + " --color never")), coloured));
  EXPECT_FALSE(has(output(onTerminal("NO_COLOR=1 " + command)), coloured));
}

TEST_F(Files, KeepToTheWidthOfTheTerminal) {
  const std::string card = file("card.scenario", "assistant VornGUIOutput.renderGUICard \"{}\"\n");
  const std::string narrow = "script -qec 'stty cols 34; " VORN_SPEAKER_PROGRAM " --state " + path("state") +
                             " " + card + "' /dev/null";
  std::string frame = "    └";
  for (int i = 0; i < 28; ++i) frame += "─";
  EXPECT_TRUE(has(output(narrow), frame + "┘"));
}

/// The options that a program's help names.
std::set<std::string> options(const std::string& help) {
  std::set<std::string> found;
  const std::regex option("--[a-z]+(-[a-z]+)*");
  for (std::sregex_iterator at(help.begin(), help.end(), option); at != std::sregex_iterator(); ++at)
    found.insert(at->str());
  return found;
}

class Manuals : public Files, public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(Manuals, TellEveryOptionAndNoOther) {
  std::string page = content(GetParam().second);
  page.erase(std::remove(page.begin(), page.end(), '\\'), page.end());
  EXPECT_EQ(options(page), options(output(GetParam().first)));
}

INSTANTIATE_TEST_SUITE_P(Speaker, Manuals,
                         testing::Values(std::make_pair(VORN_SPEAKER_PROGRAM " --help-all",
                                                        VORN_SOURCE "/simulator/vorn-speaker.1"),
                                         std::make_pair(VORN_LOG_PROGRAM " --help",
                                                        VORN_SOURCE "/tools/log/vorn-log.1")));

class Completion : public Files {
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
class Running : public Files {
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
            ("exec " VORN_SPEAKER_PROGRAM " --state " + path("state") + " " + arguments).c_str(),
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

TEST_F(Running, PrintsWhatItHasWhenItIsEnded) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    start(
        "--real-time " +
        file("long.scenario", "assistant VornAudioIn.startStreamingAudioData\nwait microphone\n" + kVolume));
    until("startStreamingAudioData");
    EXPECT_EQ(end(signal), 128 + signal);
    const std::string output = until("never");
    EXPECT_TRUE(matches(output, "VornAudioIn.startStreamingAudioData +1\n") &&
                has(output, "vorn-speaker: ended by a signal"))
        << output;
    EXPECT_FALSE(has(output, "getVolume() ="));
    fclose(m_output);
    m_output = nullptr;
  }
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
