// What is left of a program that ends in one way or another, and what it sees of the capture.

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <random>

#include "capture/capture_program.h"
#include "support/eventually.h"

extern char** environ;

namespace {

class Ended : public CaptureProgram {
 protected:
  /// Starts the caller under vorn-capture. @returns  Its process and its output.
  std::pair<pid_t, int> start(const std::string& way) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const std::string command = "exec " VORN_CAPTURE_PROGRAM " -o " + m_path + " " VORN_CALLER " " + way;
    const char* const arguments[] = {"sh", "-c", command.c_str(), nullptr};
    pid_t process = 0;
    EXPECT_EQ(posix_spawn(&process, "/bin/sh", &actions, nullptr, const_cast<char**>(arguments), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    return {process, ends[0]};
  }

  static int kill(pid_t process) {
    ::kill(process, SIGKILL);
    int status = 0;
    waitpid(process, &status, 0);
    return WTERMSIG(status);
  }

  static std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++found;
    return found;
  }
};

TEST_F(Ended, ProgramsKeepTheirStatus) {
  capture("plain 37");
  EXPECT_EQ(m_status, 37);
  capture("handled");
  EXPECT_EQ(m_status, 41);
}

TEST_F(Ended, InAHurryLeaveEverything) {
  capture("quick 4");
  EXPECT_EQ(m_status, 4);
  EXPECT_EQ(calls("getSystemSetting").size(), 1U);
}

TEST_F(Ended, ByAFaultLeaveEverythingAndWhatWasOpen) {
  const std::pair<const char*, int> ways[] = {{"crash fault", SIGSEGV},
                                              {"crash abort", SIGABRT},
                                              {"crash 8", SIGFPE},
                                              {"crash 7", SIGBUS},
                                              {"crash 4", SIGILL}};
  for (const auto& [way, signal] : ways) {
    captureScript(std::string("exec " VORN_CALLER " ") + way);
    EXPECT_EQ(calls("getSystemSetting").at(0)["arguments"][0], "last") << way;
    ASSERT_EQ(linesWith("note").size(), 1U) << way;
    EXPECT_EQ(linesWith("note")[0]["note"], "signal " + std::to_string(signal));
    ASSERT_EQ(linesWith("open").size(), 1U) << way;
    EXPECT_EQ(linesWith("open")[0]["open"]["operation"], "renderGUICard");
    EXPECT_EQ(linesWith("open")[0]["open"]["thread"], "painter");
  }
}

TEST_F(Ended, ForWantOfStackLeaveEverythingWhereTheyHaveAnotherOne) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizers tell of a want of stack themselves";
#endif
  if (kEmulated) GTEST_SKIP() << "the emulator gives a handler no stack of its own";
  captureScript("exec " VORN_CALLER " crash deep");
  EXPECT_EQ(calls("getSystemSetting").at(0)["arguments"][0], "last");
  EXPECT_EQ(linesWith("open").size(), 1U);
}

TEST_F(Ended, WhileACallRunsTellOfIt) {
  capture("crash exit");
  EXPECT_EQ(m_status, 0);
  ASSERT_EQ(linesWith("open").size(), 1U);
  EXPECT_EQ(linesWith("open")[0]["open"]["operation"], "renderGUICard");
  EXPECT_TRUE(linesWith("note").empty());
}

TEST_F(Ended, ByAFaultEndAsTheyWouldHave) {
  EXPECT_TRUE(has(capture("crash fault; echo status $?"), "status 139"));
  EXPECT_TRUE(has(capture("crash abort; echo status $?"), "status 134"));
}

TEST_F(Ended, ByAKillLeaveWhatWasWrittenBefore) {
  const auto [process, output] = start("still");
  EXPECT_TRUE(eventually([&] { return count(content(m_path), "\"readKeyValue\"") == 100; }));
  EXPECT_EQ(kill(process), SIGKILL);
  close(output);
  EXPECT_EQ(calls("readKeyValue").size(), 100U);
}

TEST_F(Ended, ByAKillAtAnyMomentLeaveWholeLines) {
  // Two hundred, by hand: VORN_KILLS=200.
  const char* const asked = std::getenv("VORN_KILLS");
  const int times = asked ? std::atoi(asked) : 20;
  std::mt19937 random(20);
  for (int i = 0; i < times; ++i) {
    const auto [process, output] = start("endless");
    char dots[64];
    std::size_t wanted = 1 + random() % (kEmulated ? 50 : 2000);
    for (ssize_t size = 1; wanted > 0 && size > 0; wanted -= std::min(wanted, static_cast<std::size_t>(size)))
      size = read(output, dots, std::min(sizeof dots, wanted));
    ASSERT_EQ(kill(process), SIGKILL);
    close(output);
    const std::string all = content(m_path);
    ASSERT_TRUE(all.empty() || all.back() == '\n')
        << all.substr(all.size() - std::min<std::size_t>(all.size(), 300));
    std::istringstream in(all);
    for (std::string line; std::getline(in, line);) ASSERT_TRUE(Json::accept(line)) << line;
  }
}

TEST_F(Ended, ForkedChildrenHaveAFileOfTheirOwn) {
  if (kEmulated) GTEST_SKIP() << "the emulator ends a forked child that makes a thread";
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the address sanitizer does not free its allocator's locks in a forked child";
#endif
  const std::string child = capture("forks");
  EXPECT_EQ(m_status, 0);
  const std::string own = m_path + "." + child.substr(0, child.find('\n'));
  ASSERT_EQ(calls(own, "getSystemSetting").size(), 1U);
  EXPECT_EQ(calls(own, "getSystemSetting")[0]["arguments"][0], "child");
  const Json first = linesWith(own, "operation").at(0);
  EXPECT_TRUE(first["call"] == 1 && first["threadNumber"] == 1) << first;
  const Json parent = Json::parse(content(m_path).substr(0, content(m_path).find('\n')));
  ASSERT_EQ(linesWith(own, "note").size(), 1U);
  EXPECT_EQ(linesWith(own, "note")[0]["note"], "forked from process " + parent["process"].dump());
  EXPECT_EQ(calls("getSystemSetting").size(), 2U);
}

TEST_F(Ended, ForkedChildrenLeaveTheSoundToTheirParents) {
  if (kEmulated) GTEST_SKIP() << "the emulator ends a forked child that makes a thread";
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the address sanitizer does not free its allocator's locks in a forked child";
#endif
  const std::string said = capture("forks", "--audio " + std::string(kFolder) + "/sound.wav");
  EXPECT_EQ(said.find_first_not_of("0123456789"), said.size() - 1) << said;
}

TEST_F(Ended, ForkedChildrenLeaveTheFileToTheNext) {
  const pid_t child = std::stoi(capture("leaves " + m_path));
  capture("plain");
  EXPECT_EQ(::kill(child, SIGKILL), 0);
  EXPECT_EQ(calls("getSystemSetting").at(0)["arguments"][0], "mode");
}

TEST_F(Ended, ProgramsStartedOneAfterTheOtherKeepTheirFiles) {
  captureScript(VORN_CALLER " plain; " VORN_CALLER " plain");
  int files = 0;
  for (const auto& file : std::filesystem::directory_iterator(kFolder)) {
    EXPECT_EQ(calls(file.path(), "getSystemSetting").size(), 1U) << file.path();
    ++files;
  }
  EXPECT_EQ(files, 2);
}

TEST_F(Ended, WithoutACallSaySo) {
  EXPECT_TRUE(
      has(run(VORN_CAPTURE_PROGRAM " --library " VORN_LIBRARY " -o " + m_path + " " VORN_WITHOUT_CALLS),
          "libvorn-capture.so: nothing is recorded: the program made no call of libVornDALImpl.so\n"));
  EXPECT_EQ(m_status, 2);
  EXPECT_FALSE(std::filesystem::exists(m_path));
}

TEST_F(Ended, WithoutACallOfTheirOwnSayNothingWhenTheyStartedWhatMakesThem) {
  EXPECT_EQ(captureScript(VORN_CALLER " plain; :"), "");
  EXPECT_EQ(calls("getSystemSetting").size(), 1U);
}

TEST_F(Ended, WithoutACallWhileRecordingSaySo) {
  EXPECT_TRUE(
      has(capture("plain 7", "--paused"), "made no call of libVornDALImpl.so while it was recorded\n"));
  EXPECT_EQ(m_status, 7);
  EXPECT_EQ(linesWith("operation").size(), 0U);
}

TEST_F(Ended, SignalsThatMayStopItAreThoseThatTheMessageNames) {
  for (const char* signal :
       {"USR1", "USR2", "HUP", "WINCH", "URG", "CONT", "ALRM", "IO", "PWR", "SIGIO", "12"}) {
    capture("plain 3", std::string("--toggle ") + signal);
    EXPECT_EQ(m_status, 3) << signal;
  }
}

TEST_F(Ended, SignalsStopAndGoOn) {
  capture("toggled " + std::to_string(SIGUSR2), "--toggle USR2");
  const std::vector<Json> found = calls("getSystemSetting");
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0]["arguments"][0], "first");
  EXPECT_EQ(found[1]["arguments"][0], "third");
  capture("toggled " + std::to_string(SIGUSR2), "--paused --toggle SIGUSR2");
  EXPECT_EQ(calls("getSystemSetting").at(0)["arguments"][0], "second");
}

TEST_F(Ended, SignalsThatStopAndGoOnAreNoted) {
  capture("pauses " + m_path, "--toggle USR2");
  std::vector<std::string> notes;
  for (const Json& line : linesWith("note")) notes.push_back(line["note"]);
  EXPECT_EQ(notes, (std::vector<std::string>{"paused", "resumed", "paused"}));
}

TEST_F(Ended, WithARecordingWhereTheEnvironmentIsSetToNothing) {
  EXPECT_EQ(
      run("LD_PRELOAD=" VORN_CAPTURE_LIBRARY " VORN_CAPTURE_KEEP= VORN_CAPTURE_RING= VORN_CAPTURE_TOGGLE= "
          "VORN_CAPTURE_PAUSED= VORN_CAPTURE=" +
          m_path + " " VORN_CALLER " plain"),
      "");
  EXPECT_EQ(calls("getSystemSetting").size(), 1U);
}

TEST_F(Ended, NothingThatATerminalObeysIsSaid) {
  const std::string said =
      run("LD_PRELOAD=" VORN_CAPTURE_LIBRARY " VORN_CAPTURE_KEEP=\"$(printf '5\\033[2J')\" VORN_CAPTURE=" +
          m_path + " " VORN_CALLER " plain");
  EXPECT_TRUE(has(said, "VORN_CAPTURE_KEEP=5\\x1b[2J: expected a size"));
}

TEST_F(Ended, WithoutARecordingWhenTheEnvironmentAsksForWhatCannotBe) {
  for (const char* wrong : {"VORN_CAPTURE_KEEP=lots", "VORN_CAPTURE_RING=7", "VORN_CAPTURE_TOGGLE=KILL"}) {
    EXPECT_TRUE(has(run(std::string("LD_PRELOAD=" VORN_CAPTURE_LIBRARY " ") + wrong +
                        " VORN_CAPTURE=" + m_path + " " VORN_CALLER " plain 5"),
                    std::string("libvorn-capture.so: ") + wrong + ": expected a s"));
    EXPECT_EQ(m_status, 5);
  }
  EXPECT_FALSE(std::filesystem::exists(m_path));
}

TEST_F(Ended, WithoutVornCaptureTheEnvironmentAsks) {
  run("LD_PRELOAD=" VORN_CAPTURE_LIBRARY " VORN_CAPTURE=" + m_path + " " VORN_CALLER " plain");
  EXPECT_EQ(calls("getSystemSetting").size(), 1U);
  std::filesystem::remove(m_path);
  run("LD_PRELOAD=" VORN_CAPTURE_LIBRARY " " VORN_CALLER " plain 5");
  EXPECT_EQ(m_status, 5);
  EXPECT_FALSE(std::filesystem::exists(m_path));
}

}  // namespace
