// The trace where it cannot be written, is not what it was, or is wanted by all at once.

#include <VornDeviceCapabilities.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iostream>
#include <thread>

#include "support/everything.h"

namespace {

using namespace operations;
using VornDeviceAbstractionLayer::FileLogger;

using trace_file::kPath;

/// Whether the mounts of this process are its own: the launcher says so by a namespace unlike its parent's.
bool mountsAreOurs() {
  char ours[64] = {};
  char first[64] = {};
  return readlink("/proc/self/ns/mnt", ours, sizeof ours - 1) > 0 &&
         (readlink("/proc/1/ns/mnt", first, sizeof first - 1) <= 0 || std::strcmp(ours, first) != 0) &&
         getenv("VORN_NO_NAMESPACE") == nullptr;
}

/// Something other than an empty folder over /tmp, for as long as it lives.
class Mounted {
 public:
  explicit Mounted(const char* options) {
    m_done = mountsAreOurs() && mount("tmpfs", "/tmp", "tmpfs", 0, options) == 0;
  }
  ~Mounted() {
    if (m_done) umount2("/tmp", MNT_DETACH);
  }
  Mounted(const Mounted&) = delete;
  Mounted& operator=(const Mounted&) = delete;

  explicit operator bool() const { return m_done; }

 private:
  bool m_done;
};

class Stress : public Everything {
 protected:
  /// All operations answer as ever, whatever the trace is.
  void expectUndisturbed() {
    for (const Row& row : m_rows) {
      if (row.keepsAssistant()) continue;
      m_firmware.recorder->clear();
      const Outcome outcome = call(row);
      EXPECT_EQ(outcome.result, row.answer) << row.name();
      EXPECT_EQ(seen(m_firmware.recorder->calls()), row.reaches(outcome.given, true)) << row.name();
    }
  }

  /// The next good moment writes again: one line, whole.
  void expectWritesAgain() {
    const std::size_t before = trace_file::lines().size();
    FileLogger::getInstance()->logMessage("written again");
    const std::vector<std::string> lines = trace_file::lines();
    ASSERT_EQ(lines.size(), before + 1);
    EXPECT_EQ(lines.back(), "written again");
  }
};

TEST_F(Stress, AFullDiskLosesLinesCutsOneAtMostAndNothingElse) {
  const Mounted disk("size=64k");
  if (!disk) GTEST_SKIP() << "no mount of our own over /tmp: " << std::strerror(errno);
  std::ofstream("/tmp/filler") << std::string(32768, 'f');
  for (int i = 0; i < 40; ++i) FileLogger::getInstance()->logMessage(std::string(4000, 'm'));
  expectUndisturbed();
  const std::string full = trace_file::bytes();
  EXPECT_GT(trace_file::lines().size(), 4U);  // and each begins as a record: only the last can be cut
  unlink("/tmp/filler");
  FileLogger::getInstance()->logMessage("written again");
  EXPECT_TRUE(trace_file::bytes() == full + " Time: written again\n");
}

TEST_F(Stress, AReadOnlyFolderLosesLinesAndNothingElse) {
  const Mounted disk("size=64k");
  if (!disk) GTEST_SKIP() << "no mount of our own over /tmp: " << std::strerror(errno);
  ASSERT_EQ(mount(nullptr, "/tmp", nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  expectUndisturbed();
  EXPECT_NE(access(kPath, F_OK), 0);
  ASSERT_EQ(mount(nullptr, "/tmp", nullptr, MS_REMOUNT, nullptr), 0);
  expectWritesAgain();
}

TEST_F(Stress, AFolderThatVanishesAndComesBackLosesLinesAndNothingElse) {
  ASSERT_EQ(mkdir("/tmp/folder", 0700), 0);
  ASSERT_EQ(symlink("/tmp/folder/trace", kPath), 0);
  expectWritesAgain();
  ASSERT_EQ(rename("/tmp/folder", "/tmp/elsewhere"), 0);
  expectUndisturbed();
  ASSERT_EQ(rename("/tmp/elsewhere", "/tmp/folder"), 0);
  expectWritesAgain();
  EXPECT_EQ(trace_file::lines().size(), 2U);
  unlink("/tmp/folder/trace");
  rmdir("/tmp/folder");
}

TEST_F(Stress, ADirectoryInItsPlaceLosesLinesAndNothingElse) {
  ASSERT_EQ(mkdir(kPath, 0700), 0);
  expectUndisturbed();
  ASSERT_EQ(rmdir(kPath), 0);
  expectWritesAgain();
}

TEST_F(Stress, ADanglingLinkIntoAMissingFolderLosesLinesAndNothingElse) {
  ASSERT_EQ(symlink("/tmp/missing/trace", kPath), 0);
  expectUndisturbed();
  ASSERT_EQ(unlink(kPath), 0);
  expectWritesAgain();
}

TEST_F(Stress, AFifoWithAReaderGetsEveryLineWhole) {
  ASSERT_EQ(mkfifo(kPath, 0600), 0);
  const int keep = open(kPath, O_RDWR);
  ASSERT_GE(keep, 0);
  std::string read;
  std::thread reader([&] {
    const std::string end = " Time: the last one\n";
    char byte;
    while (::read(keep, &byte, 1) == 1) {
      read += byte;
      if (read.size() >= end.size() && read.compare(read.size() - end.size(), end.size(), end) == 0) return;
    }
  });
  expectUndisturbed();
  FileLogger::getInstance()->logMessage("the last one");
  reader.join();
  close(keep);
  EXPECT_EQ(read.compare(0, 7, " Time: "), 0);
  ASSERT_EQ(unlink(kPath), 0);
  expectWritesAgain();
}

TEST_F(Stress, RunningOutOfDescriptorsLosesLinesAndNothingElse) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP()
      << "the undefined-behaviour sanitizer looks at objects through a pipe, for which it needs descriptors";
#endif
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit few{3, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &few);
  expectUndisturbed();
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_NE(access(kPath, F_OK), 0);
  expectWritesAgain();
}

std::atomic<long> g_signals;

TEST_F(Stress, SignalsDuringTheWriteTearNoLine) {
  struct sigaction action {};
  action.sa_handler = [](int) { ++g_signals; };
  sigaction(SIGVTALRM, &action, nullptr);  // No SA_RESTART: what can be interrupted is.
  const itimerval often{{0, 200}, {0, 200}};
  setitimer(ITIMER_VIRTUAL, &often, nullptr);
  const std::string message(20000, 'm');
  int lines = 0;
  while ((g_signals < 20 && lines < 100000) || lines < 200) {
    FileLogger::getInstance()->logMessage(message);
    ++lines;
    if (lines % 200 == 0) {
      const std::vector<std::string> written = trace_file::lines();
      ASSERT_EQ(written.size(), 200U);
      for (const std::string& line : written) ASSERT_EQ(line, message);
      unlink(kPath);
    }
  }
  const itimerval never{};
  setitimer(ITIMER_VIRTUAL, &never, nullptr);
  EXPECT_GT(g_signals, 0);
}

void writeFrom(int writer, int threads, int lines) {
  std::vector<std::thread> all;
  for (int thread = 0; thread < threads; ++thread)
    all.emplace_back([=] {
      for (int line = 0; line < lines; ++line)
        FileLogger::getInstance()->logMessage(std::to_string(writer * threads + thread) + " " +
                                              std::to_string(line) +
                                              std::string(static_cast<std::size_t>(line * 211 % 5000), 'x'));
    });
  for (std::thread& each : all) each.join();
}

TEST_F(Stress, SixtyFourThreadsInEachOfEightProcessesTearNoLine) {
  constexpr int kProcesses = 8;
  constexpr int kThreads = 64;
  constexpr int kLines = 8;
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      watchdog::feed();
      writeFrom(process, kThreads, kLines);
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  std::map<int, int> next;
  for (const std::string& line : trace_file::lines()) {
    std::size_t used = 0;
    const int writer = std::stoi(line, &used);
    const int number = next[writer]++;
    ASSERT_EQ(line.substr(used),
              " " + std::to_string(number) + std::string(static_cast<std::size_t>(number * 211 % 5000), 'x'));
  }
  EXPECT_EQ(next.size(), static_cast<std::size_t>(kProcesses * kThreads));
  for (const auto& [writer, lines] : next) EXPECT_EQ(lines, kLines) << writer;
}

}  // namespace
