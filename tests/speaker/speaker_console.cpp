// The console of vorn-speaker, from a file and at a terminal.

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "speaker/speaker_program.h"

namespace {

class Console : public SpeakerProgram {
 protected:
  std::string type(const std::string& lines) { return run("console", file("typed", lines)); }
};

TEST_F(Console, PlaysWhatIsTyped) {
  EXPECT_TRUE(has(type("assistant VornDeviceInfo.getVolume\nexpect 30\n"), "getVolume() = 30"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(Console, PointsAtAMistakeAndGoesOn) {
  const std::string output = type("assistant VornDeviceInfo.getVolum\nassistant VornDeviceInfo.getVolume\n");
  EXPECT_TRUE(has(
      output,
      "\n            ^ expected an operation of the assistant, found VornDeviceInfo.getVolum; did you mean"));
  EXPECT_TRUE(has(output, "getVolume() = 30"));
}

TEST_F(Console, FailsFromAPipeAfterABadLineOrWhatWasNotMet) {
  type("assistant VornDeviceInfo.getVolum\nassistant VornDeviceInfo.getVolume\n");
  EXPECT_EQ(m_status, 1);
  type("assistant VornDeviceInfo.getVolume\nexpect 1\n");
  EXPECT_EQ(m_status, 1);
  type("save /tmp/speaker/none/x\n");
  EXPECT_EQ(m_status, 1);
}

TEST_F(Console, ReplacesNoFileThatItDidNotSave) {
  const std::string mine = file("mine", "precious\n");
  EXPECT_TRUE(has(type("section a\nsave " + mine + "\n"), "mine is there already; choose another name"));
  EXPECT_EQ(content(mine), "precious\n");
  type("section a\nsave " + mine + "2\nsection b\nsave " + mine + "2\n");
  EXPECT_EQ(content(mine + "2"), "section a\nsection b\n");
}

TEST_F(Console, SavesAgainWhereTheFirstTimeHadNoRoom) {
  const std::string saved = std::string(kFolder) + "/saved";
  const std::string typed =
      file("typed", "section " + std::string(1 << 21, 'a') + "\nsave " + saved + "\nsave " + saved + "\n");
  // Room for what a sanitizer writes when it starts, not for the section.
  const std::string told = output(std::string("ulimit -f 2048; " VORN_SPEAKER_PROGRAM " --state ") + kFolder +
                                  "/state console 2>&1 <" + typed + " | cut -c -200");
  EXPECT_TRUE(has(told, "saved cannot be written"));
  EXPECT_FALSE(has(told, "is there already"));
}

TEST_F(Console, ShowsWhatWentWrongAsItShowsWhatItDidNotUnderstand) {
  EXPECT_TRUE(has(type("section a\nsave /nowhere/x\n"), "\n  /nowhere/x cannot be written: No such file"));
}

TEST_F(Console, ShowsNothingOfALineThatItDidNotUnderstand) {
  const std::string output = type(
      "assistant VornDeviceInfo.notifyVolume x\nasistant y\nfirmware VornDeviceInfo.notifyVolumeChanged \x1b[2J\n");
  EXPECT_TRUE(has(output, "  assistant\n            ^ expected"));
  EXPECT_TRUE(has(output, "  \n  ^ expected one of assistant"));
  EXPECT_TRUE(has(output, "  firmware VornDeviceInfo.notifyVolumeChanged\n"));
  EXPECT_EQ(output.find('\x1b'), std::string::npos);
}

TEST_F(Console, TellsWhatWasNotMetAndGoesOn) {
  const std::string output =
      type("assistant VornDeviceInfo.getVolume\nexpect 1\nassistant VornDeviceInfo.getTimezone\n");
  EXPECT_TRUE(has(output, "expected the result 1, saw 30"));
  EXPECT_TRUE(has(output, "getTimezone() ="));
}

TEST_F(Console, MakesAScenarioOfItsLines) {
  const std::string saved = std::string(kFolder) + "/saved.scenario";
  type("assistant VornDeviceInfo.getVolume\nnonsense\nexpect 30\nsave " + saved + "\n");
  EXPECT_EQ(content(saved), "assistant VornDeviceInfo.getVolume\nexpect 30\n");
  run(saved);
  EXPECT_EQ(m_status, 0);
}

TEST_F(Console, ExplainsOperations) {
  EXPECT_TRUE(has(type("help setSystemSetting\n"),
                  "assistant VornDeviceInfo.setSystemSetting key value\n      key: a text"));
}

TEST_F(Console, EndsAtQuit) {
  EXPECT_FALSE(has(type("quit\nassistant VornDeviceInfo.getVolume\n"), "getVolume()"));
}

/// The console while it waits for more: what is typed, and what it has shown.
class Session : public SpeakerProgram {
 protected:
  void TearDown() override {
    for (const int end : {m_typed, m_shown}) {
      if (end >= 0) close(end);
    }
  }

  /// What the child does.
  [[noreturn]] static void console() {
    const std::string command =
        std::string("exec " VORN_SPEAKER_PROGRAM " --state ") + kFolder + " console 2>&1";
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }

  void type(const std::string& keys) {
    ASSERT_EQ(write(m_typed, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }

  /// Waits until the text was shown after what was shown before; a minute at most.
  testing::AssertionResult shows(const std::string& text) {
    for (;;) {
      const std::size_t found = m_screen.find(text);
      if (found != std::string::npos) {
        m_screen.erase(0, found + text.size());
        return testing::AssertionSuccess();
      }
      pollfd ready{m_shown, POLLIN, 0};
      char part[512];
      const ssize_t count = poll(&ready, 1, 60000) == 1 ? read(m_shown, part, sizeof part) : 0;
      if (count <= 0) return testing::AssertionFailure() << "no \"" << text << "\" in\n" << m_screen;
      m_screen.append(part, static_cast<std::size_t>(count));
    }
  }

  int quit() {
    type("quit\n");
    int ended = -1;
    waitpid(m_child, &ended, 0);
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
  }

  int m_typed = -1;
  int m_shown = -1;
  pid_t m_child = -1;
  std::string m_screen;
};

/// Another program types, and reads the answers.
class Piped : public Session {
 protected:
  void SetUp() override {
    SpeakerProgram::SetUp();
    int in[2], out[2];
    ASSERT_EQ(pipe2(in, O_CLOEXEC) | pipe2(out, O_CLOEXEC), 0);
    m_child = fork();
    if (m_child == 0) {
      dup2(in[0], STDIN_FILENO);
      dup2(out[1], STDOUT_FILENO);
      console();
    }
    close(in[0]);
    close(out[1]);
    m_typed = in[1];
    m_shown = out[0];
  }
};

TEST_F(Piped, IsAnsweredLineByLine) {
  type("assistant VornDeviceInfo.getVolume\n");
  EXPECT_TRUE(shows("getVolume() = 30\n"));
  type("expect 31\n");
  EXPECT_TRUE(shows("expected the result 31, saw 30\n"));
  EXPECT_EQ(quit(), 1);
}

TEST_F(Piped, EndsLinesByEveryKindOfEnd) {
  type(
      "\xef\xbb\xbf"
      "section a\rsection b\r\nhelp getVolume\n");
  EXPECT_TRUE(shows("a\n"));
  EXPECT_TRUE(shows("b\n"));
  EXPECT_TRUE(shows("assistant VornDeviceInfo.getVolume\n"));
  EXPECT_EQ(quit(), 0);
}

/// A person at a terminal.
class Terminal : public Session {
 protected:
  void SetUp() override {
    SpeakerProgram::SetUp();
    start();
  }

  void start() {
    m_child = forkpty(&m_typed, nullptr, nullptr, nullptr);
    ASSERT_GE(m_child, 0);
    if (m_child == 0) {
      setenv("TERM", "dumb", 1);
      setenv("HOME", kFolder, 1);
      console();
    }
    m_shown = dup(m_typed);
    ASSERT_TRUE(shows("speaker> "));
  }
};

TEST_F(Terminal, CompletesStatementsAndOperations) {
  type("assi\tVornDeviceInfo.getVol\t\n");
  EXPECT_TRUE(shows("getVolume() = 30"));
  EXPECT_EQ(quit(), 0);
}

TEST_F(Terminal, CompletesWhatSeveralHaveInCommonAndLeavesTheRestToBeTyped) {
  type("assistant VornDeviceInfo.g\tV\t\t");
  EXPECT_TRUE(shows("VornDeviceInfo.getVolume"));
  EXPECT_TRUE(shows("VornDeviceInfo.getVSKCapabilities"));
  type("olume\n");
  EXPECT_TRUE(shows("getVolume() = 30"));
  EXPECT_EQ(quit(), 0);
}

TEST_F(Terminal, OffersOnlyWhatTheSideCanCall) {
  type("firmware VornCommsManager.\t\n");
  EXPECT_TRUE(shows("notifyCallAction"));
  EXPECT_EQ(quit(), 0);
}

TEST_F(Terminal, RemembersLinesButNoLogin) {
  type("assistant VornDeviceInfo.getTimezone\n");
  EXPECT_TRUE(shows("getTimezone() ="));
  type("assistant VornEMPAdapterControl.login hidden-token ada true 1s x\n");
  EXPECT_TRUE(shows("login(********"));
  EXPECT_EQ(quit(), 0);
  const std::string history = content(std::string(kFolder) + "/console-history");
  EXPECT_TRUE(has(history, "getTimezone"));
  EXPECT_FALSE(has(history, "hidden-token"));
}

TEST_F(Terminal, RemembersLinesAlsoWhenItIsEnded) {
  type("assistant VornDeviceInfo.getTimezone\n");
  ASSERT_TRUE(shows("getTimezone() ="));
  ASSERT_TRUE(shows("speaker> "));
  kill(m_child, SIGHUP);
#ifdef __SANITIZE_THREAD__  // which keeps a signal back that comes just before a read, until that returns
  type("\n");
#endif
  int ended = -1;
  waitpid(m_child, &ended, 0);
  EXPECT_TRUE(WIFEXITED(ended) && WEXITSTATUS(ended) == 128 + SIGHUP) << ended;
  EXPECT_TRUE(has(content(std::string(kFolder) + "/console-history"), "getTimezone"));
}

TEST_F(Terminal, EndsWhicheverThreadTheSignalReaches) {
  type("assistant VornDeviceInfo.getVolume\n");  // Now its thread has its name.
  ASSERT_TRUE(shows("getVolume() = 30"));
  ASSERT_TRUE(shows("speaker> "));
  const std::string threads = "/proc/" + std::to_string(m_child) + "/task/";
  pid_t other = 0;
  for (const auto& thread : std::filesystem::directory_iterator(threads))
    if (content(thread.path() / "comm") == "assistant\n") other = std::stoi(thread.path().filename());
  ASSERT_EQ(syscall(SYS_tgkill, m_child, other, SIGHUP), 0);
  ASSERT_TRUE(shows("vorn-speaker: ended by a signal: Hangup"));
  EXPECT_EQ(quit(), 128 + SIGHUP);
}

TEST_F(Terminal, SaysOnceThatItCannotRemember) {
  const std::string history = std::string(kFolder) + "/console-history";
  std::filesystem::remove(history);
  std::filesystem::create_directory(history);
  type("assistant VornDeviceInfo.getVolume\n");
  EXPECT_TRUE(shows("console-history: cannot be written; what is typed is not remembered"));
  EXPECT_EQ(quit(), 0);
}

TEST_F(Terminal, RemembersOnlyWhatItUnderstoodAndHoldsNoSecret) {
  const std::string history = std::string(kFolder) + "/console-history";
  for (const char* line : {" assistant VornEMPAdapterControl.login KEEP-THIS ada true 1s x",
                           "assistant VornEMPAdapterControl.logn KEEP-THIS",
                           "assistant VornDeviceInfo.setSystemSetting Psk KEEP-THIS",
                           "assistant VornStorage.writeKeyValue {Psk=KEEP-THIS}", "expect KEEP-THIS",
                           "KEEP-THIS", "assistant VornDeviceInfo.getVolume", "expect 31"}) {
    type(line + std::string("\n"));
    ASSERT_TRUE(shows("speaker> "));
  }
  EXPECT_EQ(quit(), 0);
  EXPECT_EQ(content(history), "assistant VornDeviceInfo.getVolume\nexpect 31\n");
  EXPECT_EQ(std::filesystem::status(history).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

/// A person at a terminal who was there before.
class Again : public Terminal {
 protected:
  void SetUp() override {
    SpeakerProgram::SetUp();
    file(
        "console-history",
        "assistant VornDeviceInfo.getTimezone\nnonsense\nassistant VornEMPAdapterControl.login KEEP-THIS a true 1s x\n");
    std::filesystem::permissions(kFolder, std::filesystem::perms::owner_all);
    std::filesystem::permissions(std::string(kFolder) + "/console-history",
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    start();
  }
};

TEST_F(Again, FindsItsLinesAndNothingElse) {
  type("\x1b[A\n");  // the arrow up
  EXPECT_TRUE(shows("getTimezone() ="));
  EXPECT_EQ(quit(), 0);
  EXPECT_EQ(content(std::string(kFolder) + "/console-history"),
            "assistant VornDeviceInfo.getTimezone\nassistant VornDeviceInfo.getTimezone\n");
}

/// A person who gave a key a meaning for this program alone.
class Bound : public Terminal {
 protected:
  void SetUp() override {
    SpeakerProgram::SetUp();
    file(".editrc", "vorn-speaker:bind -s ^G \"assistant VornDeviceInfo.getVolume\"\n");
    start();
  }
};

TEST_F(Bound, FindsItsKeys) {
  type("\a\n");
  EXPECT_TRUE(shows("getVolume() = 30"));
  EXPECT_EQ(quit(), 0);
}

}  // namespace
