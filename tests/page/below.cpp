// What vorn-speaker starts below its page: what it says, how it ended, and how it is made to end.

#include "page/Below.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "support/eventually.h"

namespace {

using vorn_speaker::Below;

constexpr char kLife[] = "/tmp/page-below";  ///< Is there from the first life on.

void say(const char* text) { static_cast<void>(!write(STDOUT_FILENO, text, std::strlen(text))); }

/// Reads nothing, and ends when nothing more can come.
[[noreturn]] void waitForTheEnd() {
  pollfd input{STDIN_FILENO, 0, 0};
  while ((input.revents & POLLHUP) == 0) poll(&input, 1, -1);
  _exit(0);
}

/// Says what it reads.
[[noreturn]] void echo() {
  char part[65536];
  for (ssize_t size = 0; (size = read(STDIN_FILENO, part, sizeof part)) > 0;)
    static_cast<void>(!write(STDOUT_FILENO, part, static_cast<std::size_t>(size)));
  _exit(0);
}

/// What this program is when it is started below.
[[noreturn]] void behave(const std::string& way) {
  if (way == "speaks") {
    say("first\nlast");
    static_cast<void>(!write(STDERR_FILENO, "an error", 8));
    _exit(0);
  }
  if (way == "crashes") raise(SIGKILL);
  if (way == "stubborn") {
    signal(SIGTERM, [](int) { _exit(9); });
    say("here\n");
    for (;;) pause();
  }
  if (way == "tells its signals") {
    sigset_t kept;
    sigprocmask(SIG_SETMASK, nullptr, &kept);
    say(sigismember(&kept, SIGTERM) == 1 ? "kept\n" : "free\n");
    _exit(0);
  }
  const bool first = !std::filesystem::exists(kLife);
  if (first) std::fclose(std::fopen(kLife, "w"));
  say(first ? "first life\n" : "next life\n");
  if (first) waitForTheEnd();
  echo();
}

/// Before main(), which belongs to the tests.
[[gnu::constructor]] void beginBelow(int count, char** arguments) {
  if (count == 3 && std::strcmp(arguments[1], "below") == 0) behave(arguments[2]);
}

class ProgramBelow : public testing::Test, public Below::Listener {
 protected:
  ProgramBelow() { std::filesystem::remove(kLife); }

  void started() override { note("started"); }
  void said(std::string line) override { note("said " + line.substr(0, 20)); }
  void reported(std::string line) override { note("reported " + line); }
  void ended(int status) override { note("ended " + std::to_string(status)); }

  static std::vector<std::string> command(const std::string& way) { return {"page", "below", way}; }

  /// Whether that is told at last, and once.
  testing::AssertionResult tells(const std::string& event) {
    if (eventually([&] { return count(event) > 0; }) && count(event) == 1) return testing::AssertionSuccess();
    const std::lock_guard<std::mutex> lock(m_mutex);
    return testing::AssertionFailure() << "it tells " << testing::PrintToString(m_events);
  }
  long count(const std::string& event) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::count(m_events.begin(), m_events.end(), event);
  }

 private:
  void note(const std::string& event) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_events.push_back(event);
  }

  std::mutex m_mutex;
  std::vector<std::string> m_events;
};

TEST_F(ProgramBelow, IsHeardToItsLastWordThoughNoLineEndsThere) {
  Below below(command("speaks"), *this);
  EXPECT_TRUE(below.speaks());
  EXPECT_TRUE(tells("ended 0"));
  EXPECT_TRUE(tells("said first") && tells("said last") && tells("reported an error"));
}

TEST_F(ProgramBelow, EndsWithTheNumberThatAShellWouldSay) {
  Below below(command("crashes"), *this);
  EXPECT_FALSE(below.speaks());
  EXPECT_TRUE(tells("ended 137"));
  EXPECT_EQ(below.status(), 137);
}

TEST_F(ProgramBelow, TakesNoMoreThanFourMebibytesThatItDoesNotRead) {
  Below below(command("waits"), *this);
  EXPECT_TRUE(tells("said first life"));
  int taken = 0;
  while (taken < 1000 && below.send(std::string((1 << 16) - 1, 'x'))) ++taken;
  EXPECT_GE(taken, 64);
  EXPECT_LE(taken, 66) << "one may be in the pipe, one on its way there";
}

TEST_F(ProgramBelow, GetsNothingThatWasForTheLifeBefore) {
  Below below(command("waits"), *this);
  EXPECT_TRUE(tells("said first life"));
  for (int i = 0; i < 10; ++i) EXPECT_TRUE(below.send(std::string(1 << 16, 'x')));
  below.restart();
  EXPECT_TRUE(tells("said next life"));
  EXPECT_TRUE(below.send("fresh"));
  EXPECT_TRUE(tells("said fresh"));
  EXPECT_EQ(count("said " + std::string(20, 'x')), 0);
  EXPECT_EQ(count("started"), 2);
}

TEST_F(ProgramBelow, IsAskedWithASignalWhenTheEndOfItsInputIsNotEnough) {
  Below below(command("stubborn"), *this);
  EXPECT_TRUE(below.speaks());
  below.restart();
  EXPECT_TRUE(tells("ended 9"));
}

TEST_F(ProgramBelow, GetsTheSignalsThatThePageKeepsForItself) {
  sigset_t kept, before;
  sigemptyset(&kept);
  sigaddset(&kept, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &kept, &before);
  const Below below(command("tells its signals"), *this);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  EXPECT_TRUE(tells("said free"));
}

}  // namespace
