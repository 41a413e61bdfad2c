// Standard input, output and error of a program that was started without them, or whose output gets nowhere.

#include <vorn_testing/StandardFiles.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace {

using vorn_testing::prepareStandardFiles;
using vorn_testing::standardOutputArrived;

/// What became of a process of its own: its exit status, or minus the signal, and what it wrote to standard error.
struct End {
  int status;
  std::string said;
};

template <class Act>
End inChild(Act act) {
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  std::cout.flush();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDERR_FILENO);
    close(ends[0]);
    close(ends[1]);
    _exit(act());
  }
  close(ends[1]);
  std::string said;
  char part[256];
  for (ssize_t size; (size = read(ends[0], part, sizeof part)) > 0;)
    said.append(part, static_cast<std::size_t>(size));
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), said};
}

bool isOpen(int file) { return fcntl(file, F_GETFD) >= 0; }

class ClosedFiles : public testing::TestWithParam<int> {};

TEST_P(ClosedFiles, AreReplacedAndNoneMore) {
  const auto act = [] {
    const int before = dup(STDIN_FILENO);
    close(before);
    for (int file = 0; file < 3; ++file) {
      if (GetParam() & 1 << file) close(file);
    }
    prepareStandardFiles();
    for (int file = 0; file < 3; ++file) {
      if (!isOpen(file)) return 10 + file;
      char byte;
      if ((GetParam() & 1 << file) && (read(file, &byte, 1) != 0 || write(file, "x", 1) != -1))
        return 20 + file;
    }
    return isOpen(before) ? 30 : 0;
  };
  EXPECT_EQ(inChild(act).status, 0);
}

INSTANTIATE_TEST_SUITE_P(Standard, ClosedFiles, testing::Range(0, 8));

TEST(StandardFiles, LetAProgramLiveThatWritesTooLargeAFile) {
  const auto act = [] {
    prepareStandardFiles();
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_FSIZE, &none);
    const int file = open("/tmp/kit-standard-files", O_CREAT | O_WRONLY, 0600);
    return write(file, "x", 1) == -1 && errno == EFBIG ? 0 : 1;
  };
  EXPECT_EQ(inChild(act).status, 0);
}

/// Ends with 0 when the output arrived and 1 when it did not.
template <class Act>
End written(const char* path, int flags, Act act) {
  return inChild([&] {
    const int file = path ? open(path, flags, 0600) : -1;
    if (path)
      dup2(file, STDOUT_FILENO);
    else
      close(STDOUT_FILENO);
    std::cout.clear();
    std::clearerr(stdout);
    act();
    return standardOutputArrived("a-program") ? 0 : 1;
  });
}

constexpr char kFull[] = "a-program: standard output could not be written; is the disk full?\n";
constexpr char kClosed[] = "a-program: standard output could not be written; it is closed\n";

const auto kBoth = [] {
  std::cout << "one ";
  std::fputs("two", stdout);
};
const auto kStream = [] { std::cout << "one"; };
const auto kBuffered = [] {
  std::ios::sync_with_stdio(false);
  std::cout << "one";
};
const auto kCLibrary = [] { std::fputs("two", stdout); };

TEST(StandardOutput, ArrivesByBothWays) {
  constexpr char kPath[] = "/tmp/kit-standard-output";
  std::remove(kPath);
  const End end = written(kPath, O_CREAT | O_WRONLY, kBoth);
  EXPECT_EQ(end.status, 0);
  EXPECT_EQ(end.said, "");
  char text[16] = "";
  std::FILE* const file = std::fopen(kPath, "r");
  ASSERT_TRUE(file);
  EXPECT_TRUE(std::fgets(text, sizeof text, file));
  std::fclose(file);
  EXPECT_STREQ(text, "one two");
}

TEST(StandardOutput, ThatIsLostIsTold) {
  for (const End& end :
       {written("/dev/full", O_WRONLY, kBoth), written("/dev/full", O_WRONLY, kStream),
        written("/dev/full", O_WRONLY, kBuffered), written("/dev/full", O_WRONLY, kCLibrary)}) {
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.said, kFull);
  }
}

TEST(StandardOutput, ThatWasLostEarlierIsTold) {
  const End stream = written("/dev/null", O_WRONLY, [] { std::cout.setstate(std::ios::badbit); });
  EXPECT_EQ(stream.said, kFull);
  const End library = written("/dev/full", O_WRONLY, [] {
    std::fputs("lost", stdout);
    std::fflush(stdout);
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
  });
  EXPECT_EQ(library.status, 1);
  EXPECT_EQ(library.said, kFull);
}

TEST(StandardOutput, ThatIsClosedIsToldAsSuch) {
  const auto prepared = [] {
    prepareStandardFiles();
    std::cout << "one";
  };
  const End end = written(nullptr, 0, prepared);
  EXPECT_EQ(end.status, 1);
  EXPECT_EQ(end.said, kClosed);
  EXPECT_EQ(written("/dev/null", O_RDONLY, kStream).said, kClosed);
  EXPECT_EQ(written("/dev/full", O_RDWR, kStream).said, kFull);
}

}  // namespace
