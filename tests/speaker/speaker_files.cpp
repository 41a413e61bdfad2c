// The files of vorn-speaker: what it reads, what it writes and what it leaves alone.

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

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
  EXPECT_TRUE(has(runIn(path("here"), "replay a"), "1 call, all answered as recorded."));
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

TEST_F(Files, AreNotMadeForWhatCannotBeRead) {
  for (const std::string& wrong : {path("none.scenario"), file("wrong.scenario", "assistant Nobody.asks\n"),
                                   "replay " + path("none"), "--device " + path("none.toml")}) {
    run(wrong);
    EXPECT_EQ(m_status, 2) << wrong;
    EXPECT_FALSE(fs::exists(path("state"))) << wrong;
  }
}

TEST_F(Files, NamedForTheSoundButMadeByOthersAreLeftAlone) {
  const std::string sound = content(std::string(VORN_DATA) + "/request.wav");
  for (const std::string& mine : {std::string("my notes"), sound}) {
    const std::string named = file("mine", mine);
    EXPECT_TRUE(has(run("--out " + named), "mine: was not made by vorn-speaker; move it away"));
    EXPECT_EQ(m_status, 2);
    EXPECT_EQ(content(named), mine);
  }
  fs::create_symlink("nowhere", path("link"));
  EXPECT_TRUE(has(run("--out " + path("link")), "link: cannot be written: it is a link to nothing"));
  EXPECT_EQ(m_status, 2);
  EXPECT_TRUE(fs::is_symlink(path("link")));
  run("--out " + file("empty", ""));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Files, OfTheStateAreNoPlaceForSoundAndRecordings) {
  const std::string scenario = file("a.scenario", "assistant VornStorage.writeKeyValue {city=Oslo}\n");
  for (const char* name : {"store.sqlite", "lock", "console-history", "store.sqlite-journal"}) {
    EXPECT_TRUE(has(run("--out " + state(name) + " " + scenario), "keeps the state; name another file"))
        << name;
    EXPECT_EQ(m_status, 2) << name;
    EXPECT_TRUE(has(run("record " + state(name) + " --scenario " + scenario), "keeps the state")) << name;
    EXPECT_EQ(m_status, 2) << name;
  }
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
  runIn(kFolder, "--out answer.wav");
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

TEST_F(Files, OfTheTraceThatAreAnothersLinksAreNamedWithTheirOwner) {
  fs::create_directory_symlink(kFolder, "/tmp/xAppLog.txt");
  if (lchown("/tmp/xAppLog.txt", 12345, 12345) != 0) GTEST_SKIP() << "needs another user's link, thus root";
  EXPECT_TRUE(has(play(kVolume), "Is a directory, it belongs to user 12345; have it removed"));
  EXPECT_EQ(m_status, 2);
}

TEST_F(Files, OfTheTraceAreNotMissedWhenItIsOff) {
  EXPECT_TRUE(has(run("--no-trace"), "expect trace is passed over: the trace is off"));
  EXPECT_EQ(m_status, 0);
  run("--no-trace --strict");
  EXPECT_EQ(m_status, 0);
}

}  // namespace
