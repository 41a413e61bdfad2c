// vorn-log: the reader of the trace, as a program and line by line.

#include <gtest/gtest.h>

#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include <vorn_testing/Operations.h>
#include <vorn_testing/TraceLine.h>

#include "support/eventually.h"

namespace {

using vorn_testing::TraceLine;

const std::string kLogin =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, "
    "std::chrono::milliseconds, std::string): accessToken: secret, userName: x, userName: me, forceLogin: 1, "
    "refreshInterval: 1ms, playerId: kitchen";
const std::string kBuffer =
    "void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData(std::vector<short int>&) calling xApp API count=";

TEST(TraceLine, NamesClassAndOperationWhateverTheResultType) {
  EXPECT_EQ(TraceLine::parse("static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> "
                             "VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()")
                .operation,
            "getInstance");
  EXPECT_EQ(TraceLine::parse(kLogin).adapter, "VornEMPAdapterControl");
  EXPECT_EQ(TraceLine::parse("receiveAppMessage(a,b,c)").operation, "SendMessageToxApp");
}

TEST(TraceLine, SaysWhenALineIsNotTheLibrarys) { EXPECT_EQ(TraceLine::parse("hello").adapter, "?"); }

TEST(TraceLine, MasksATokenToItsVeryEnd) {
  EXPECT_EQ(TraceLine::masked(kLogin).find("secret"), std::string::npos);
  EXPECT_NE(TraceLine::masked(kLogin).find("accessToken: ********, userName: me"), std::string::npos);
}

/// Runs the program on a trace of its own and keeps what it says. In clear: lines that are not the library's are masked
/// whole, and serve here to look at everything else.
class LogReader : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* file : {"/tmp/trace", "/tmp/trace.old"}) std::filesystem::remove_all(file);
  }

  std::string run(const std::string& options) {
    return shell(VORN_LOG_PROGRAM " --secrets " + options + " 2>&1");
  }

  std::string shell(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    char part[256];
    while (std::fgets(part, sizeof part, pipe)) output += part;
    m_status = WEXITSTATUS(pclose(pipe));
    return output;
  }

  static void write(const std::string& line) { writeRaw(" Time: " + line + "\n"); }
  static void writeRaw(const std::string& bytes) { std::ofstream("/tmp/trace", std::ios::app) << bytes; }

  static testing::AssertionResult has(const std::string& text, const std::string& part) {
    if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no \"" << part << "\" in\n" << text;
  }

  int m_status = -1;
};

TEST_F(LogReader, CollapsesBuffersThatDifferInTheirNumber) {
  for (int i = 1; i <= 5; ++i) write(kBuffer + std::to_string(i));
  EXPECT_TRUE(has(run("/tmp/trace"), "count=1\n    and 4 more like it"));
  EXPECT_EQ(m_status, 0);
}

TEST_F(LogReader, PrintsEveryLineWhenAsked) {
  for (int i = 1; i <= 3; ++i) write(kBuffer + std::to_string(i));
  EXPECT_TRUE(has(run("--all /tmp/trace"), "count=2\n"));
}

TEST_F(LogReader, CountsByClassAndOperation) {
  write(kBuffer + "1");
  write(kBuffer + "2");
  write("receiveAppMessage(a\nb,c,)");
  EXPECT_EQ(run("--count /tmp/trace"),
            "VornAppMessaging  1\n  SendMessageToxApp  1\nVornAudioIn  2\n  sendAudioData  2\n");
}

TEST_F(LogReader, ShowsTheLinesOfOneClassOnly) {
  write(kBuffer + "1");
  write(kLogin);
  const std::string output = run("-a VornEMPAdapterControl --explain /tmp/trace");
  EXPECT_FALSE(has(output, "sendAudioData"));
  EXPECT_TRUE(has(output, "a command for the external player arrived"));
}

TEST_F(LogReader, TakesOneClassForEachOptionAndThenTheFile) {
  write(kBuffer + "1");
  write("receiveAppMessage(a,b,c,)");
  write("not ours");
  const std::string output = run("-a VornAppMessaging -a '?' /tmp/trace");
  EXPECT_EQ(output, "VornAppMessaging.SendMessageToxApp  receiveAppMessage(a,b,c,)\n?  not ours\n");
}

TEST_F(LogReader, MasksUnlessAskedOtherwise) {
  write(kLogin);
  EXPECT_FALSE(has(shell(VORN_LOG_PROGRAM + std::string(" /tmp/trace")), "secret"));
  EXPECT_TRUE(has(run("/tmp/trace"), "accessToken: secret"));
}

TEST_F(LogReader, ShowsTheLinesThatHoldATextOnly) {
  write("one apple");
  write("one pear");
  EXPECT_EQ(run("-g apple /tmp/trace"), "?  one apple\n");
}

struct Wrong {
  const char* options;
  const char* says;
};

void PrintTo(const Wrong& wrong, std::ostream* out) { *out << wrong.options; }

class WrongUse : public LogReader, public testing::WithParamInterface<Wrong> {};

TEST_P(WrongUse, IsToldAndEndsWithStatusTwo) {
  write(kBuffer + "1");
  const std::string output = run(GetParam().options);
  EXPECT_TRUE(has(output, GetParam().says));
  EXPECT_FALSE(has(output, "sendAudioData"));
  EXPECT_EQ(m_status, 2);
}

INSTANTIATE_TEST_SUITE_P(
    Log, WrongUse,
    testing::Values(
        Wrong{"-a audioIn /tmp/trace", "audioIn is no adapter; did you mean VornAudioIn?"},
        Wrong{"-a VornComsManager /tmp/trace", "did you mean VornCommsManager?"},
        Wrong{"-a '' /tmp/trace", "is no adapter"}, Wrong{"/tmp/trace -a", "adapter"},
        Wrong{"--loud /tmp/trace", "--loud"}, Wrong{"--folow /tmp/trace", "--folow; did you mean --follow?"},
        Wrong{"/tmp/trace /tmp/trace", "/tmp/trace"}, Wrong{"--color sometimes /tmp/trace", "sometimes"},
        Wrong{"\"$(printf -- '--a\\033b')\" /tmp/trace", "a\\x1bb"},
        Wrong{"/tmp", "/tmp cannot be read: it is a folder"},
        Wrong{"-f /tmp", "/tmp cannot be read: it is a folder"}, Wrong{"/tmp/trace/none", "Not a directory"},
        Wrong{"/tmp/nowhere", "/tmp/nowhere cannot be read: No such file or directory; is the trace on"}));

/// Collects the adapters of the one list.
struct Adapters : vorn_testing::OperationVisitor {
  template <class OfHost, class OfAdapter>
  void down(const vorn_testing::Operation& operation, OfHost, OfAdapter) {
    names.insert(operation.adapter);
  }
  std::set<std::string> names;
};

TEST_F(LogReader, KnowsEveryAdapter) {
  Adapters adapters;
  vorn_testing::visitOperations(adapters);
  write("plain");
  std::string options;
  for (const std::string& name : adapters.names) options += "-a " + name + " ";
  EXPECT_EQ(run(options + "/tmp/trace"), "");
  EXPECT_GT(adapters.names.size(), 10U);
}

TEST_F(LogReader, ShowsTheRestOfALineWithoutItsEndAndSaysSo) {
  write("whole");
  writeRaw(" Time: half of");
  EXPECT_TRUE(has(run("/tmp/trace"), "?  half of\n    the line has no end"));
}

TEST_F(LogReader, ReadsLinesThatAnEditorEndedInItsOwnWay) {
  writeRaw("\xEF\xBB\xBF Time: one\r\n Time: two\r\n");
  EXPECT_EQ(run("/tmp/trace"), "?  one\n?  two\n");
}

TEST_F(LogReader, LetsNoControlCharacterThroughAndNoLinePassForAnother) {
  write("a\x1b[2Jb\rc\nVornOOBE.x  d");
  EXPECT_EQ(run("/tmp/trace"), "?  a\\x1b[2Jb\\x0dc\n    VornOOBE.x  d\n");
}

TEST_F(LogReader, KeepsTheFirstMegabyteOfALineWithoutEnd) {
  writeRaw(" Time: " + std::string(3 << 20, 'x') + "\n");
  write("next");
  const std::string output = run("/tmp/trace");
  EXPECT_LT(output.size(), std::size_t{2} << 20);
  EXPECT_TRUE(has(output.substr(1000000), "x\n    and 2097159 bytes more, left out\n?  next\n"));
}

TEST_F(LogReader, HoldsNoMoreThanItShows) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "a sanitizer takes more memory for itself than the program may have here";
#endif
  std::filesystem::resize_file((writeRaw(" Time: a"), "/tmp/trace"), 64 << 20);
  // More than the limit allows: a reader that keeps all of it cannot end well.
  const std::string output =
      shell("ulimit -v 60000; " VORN_LOG_PROGRAM " --secrets /tmp/trace 2>&1 | tail -n 2");
  EXPECT_TRUE(has(output, "bytes more, left out\n    the line has no end"));
}

TEST_F(LogReader, ColoursOnlyWhenAskedAndNeverIntoAFile) {
  write("plain");
  EXPECT_EQ(run("/tmp/trace"), "?  plain\n");
  EXPECT_EQ(run("--color always /tmp/trace"), "\x1b[1m?\x1b[0m  plain\n");
  EXPECT_EQ(run("--color=never /tmp/trace"), "?  plain\n");
}

TEST_F(LogReader, ColoursATerminalUnlessToldNotTo) {
  write("plain");
  const std::string onTerminal = "script -qec '" VORN_LOG_PROGRAM " --secrets /tmp/trace' /dev/null";
  EXPECT_TRUE(has(shell(onTerminal), "\x1b[1m?"));
  EXPECT_FALSE(has(shell("NO_COLOR=1 " + onTerminal), "\x1b[1m"));
}

TEST_F(LogReader, SaysWhenItsOutputIsLost) {
  write("plain");
  for (const char* output : {">/dev/full", ">&-"}) {
    EXPECT_TRUE(has(shell(std::string(VORN_LOG_PROGRAM " --secrets /tmp/trace 2>&1 ") + output),
                    "vorn-log: standard output could not be written"));
    EXPECT_EQ(m_status, 1) << output;
  }
}

TEST_F(LogReader, MayStartWithEveryStandardFileClosed) {
  write("plain");
  shell(VORN_LOG_PROGRAM " --secrets /tmp/trace <&- >&- 2>&-");
  EXPECT_EQ(m_status, 1);
}

TEST_F(LogReader, HelpsAndTellsItsVersion) {
  EXPECT_TRUE(has(run("--help"), "Exit status: 0"));
  EXPECT_EQ(m_status, 0);
  EXPECT_EQ(run("--version"), VORN_LOG_VERSION "\n");
}

TEST_F(LogReader, ReadsAPipeAndDoesNotWaitForAWriterThatIsNotThere) {
  write("plain");
  EXPECT_EQ(shell("cat /tmp/trace | " VORN_LOG_PROGRAM " --secrets /dev/stdin"), "?  plain\n");
  ASSERT_EQ(mkfifo("/tmp/trace.old", 0600), 0);
  EXPECT_TRUE(
      has(run("/tmp/trace.old"), "/tmp/trace.old cannot be read: it is a pipe that nobody writes to"));
  EXPECT_EQ(m_status, 2);
  EXPECT_EQ(run("/dev/stdin </dev/null"), "");
  EXPECT_EQ(m_status, 0);
}

/// Follows the trace, as a program of its own whose words arrive one after the other.
class Following : public LogReader {
 protected:
  void follow(const std::string& options) {
    // The shell is replaced, so that signals reach the program itself.
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    m_reader = fork();
    if (m_reader == 0) {
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      close(ends[0]);
      close(ends[1]);
      execl("/bin/sh", "sh", "-c",
            ("exec " VORN_LOG_PROGRAM " --secrets -f " + options + " /tmp/trace").c_str(),
            static_cast<char*>(nullptr));
      _exit(127);
    }
    close(ends[1]);
    m_output = fdopen(ends[0], "r");
  }

  void TearDown() override {
    if (m_reader > 0) kill(m_reader, SIGKILL);
    if (m_reader > 0) waitpid(m_reader, nullptr, 0);
    if (m_output) fclose(m_output);
  }

  /// Reads until a line comes with the text; the test's own time limit bounds it.
  std::string lineWith(const std::string& text) {
    char line[4096];
    std::string all;
    while (std::fgets(line, sizeof line, m_output)) {
      all += line;
      if (std::string(line).find(text) != std::string::npos) return line;
    }
    return "none, but " + all;
  }

  int end(int signal) {
    kill(m_reader, signal);
    int ended = 0;
    waitpid(m_reader, &ended, 0);
    m_reader = -1;
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
  }

  pid_t m_reader = -1;
  FILE* m_output = nullptr;
};

TEST_F(Following, GoesOnUntilTheTextComes) {
  write(kBuffer + "1");
  follow("--until 'receiveAppMessage(end'");
  lineWith("count=1");
  write("receiveAppMessage(end,,)");
  EXPECT_EQ(lineWith("end"), "VornAppMessaging.SendMessageToxApp  receiveAppMessage(end,,)\n");
  EXPECT_EQ(lineWith("never"), "none, but ");
}

TEST_F(Following, WaitsForAFileThatIsNotThere) {
  follow("");
  EXPECT_EQ(lineWith("waiting"), "vorn-log: /tmp/trace is not there; waiting for it\n");
  write("first");
  EXPECT_EQ(lineWith("first"), "?  first\n");
}

TEST_F(Following, ReadsAFileThatWasCutFromItsBeginning) {
  write("a long line before it");
  follow("");
  lineWith("long");
  std::ofstream("/tmp/trace", std::ios::trunc) << " Time: new\n";
  EXPECT_EQ(lineWith("cut short"), "vorn-log: /tmp/trace was cut short; reading it from the beginning\n");
  EXPECT_EQ(lineWith("new"), "?  new\n");
  std::filesystem::resize_file("/tmp/trace", 10);
  EXPECT_EQ(lineWith("cut short"), "vorn-log: /tmp/trace was cut short; reading it from the beginning\n");
}

TEST_F(Following, TellsItsNewsAfterTheLinesBeforeThem) {
  write("old");
  follow("");
  lineWith("old");
  kill(m_reader, SIGSTOP);
  ASSERT_EQ(waitpid(m_reader, nullptr, WUNTRACED), m_reader);
  write("the rest");
  std::filesystem::rename("/tmp/trace", "/tmp/trace.old");
  write("new");
  kill(m_reader, SIGCONT);
  EXPECT_EQ(lineWith("the rest"), "?  the rest\n");
  EXPECT_EQ(lineWith("replaced"), "vorn-log: /tmp/trace was replaced; reading the new file\n");
}

TEST_F(Following, ReadsTheRestOfAFileThatIsReplacedAndThenTheNewOne) {
  write("old");
  follow("");
  lineWith("old");
  {
    std::ofstream still("/tmp/trace", std::ios::app);
    std::filesystem::rename("/tmp/trace", "/tmp/trace.old");
    still << " Time: the rest\n";
  }
  EXPECT_EQ(lineWith("the rest"), "?  the rest\n");
  write("new");
  EXPECT_EQ(lineWith("?  new"), "?  new\n");
}

TEST_F(Following, WaitsForAFileThatWasRemoved) {
  write("old");
  follow("");
  lineWith("old");
  std::filesystem::remove("/tmp/trace");
  EXPECT_EQ(lineWith("removed"), "vorn-log: /tmp/trace was removed or renamed; waiting for a new one\n");
  write("new");
  EXPECT_EQ(lineWith("new"), "?  new\n");
}

TEST_F(Following, ShowsNoHalfOfALine) {
  write("before");
  follow("");
  lineWith("before");
  writeRaw(" Time: first half,");
  writeRaw(" second half\n");
  EXPECT_EQ(lineWith("half"), "?  first half, second half\n");
}

TEST_F(Following, FiltersMeanwhile) {
  write("one apple");
  follow("-g apple");
  lineWith("one");
  write("a pear");
  write("another apple");
  EXPECT_EQ(lineWith("a"), "?  another apple\n");
}

TEST_F(Following, PrintsItsCountsWhenItIsEnded) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::filesystem::remove("/tmp/trace");
    follow("--count");
    lineWith("waiting");
    write("counted");
    lineWith("there now");
    EXPECT_EQ(end(signal), 0) << signal;
    EXPECT_EQ(lineWith("other lines"), "  (other lines)  1\n");
    fclose(m_output);
    m_output = nullptr;
  }
}

TEST_F(Following, EndsAtOnceAtTheSecondSignalAlsoWhenNobodyTakesWhatItSays) {
  std::string lines;
  for (int i = 0; i < 10000; ++i) lines += " Time: a\n";
  writeRaw(lines);
  follow("--all --explain");  // says more of each block that it reads than a pipe holds
  pollfd shown{fileno(m_output), POLLIN, 0};
  ASSERT_EQ(poll(&shown, 1, 60000), 1);
  int ended = 0;
  ASSERT_TRUE(eventually([&] {
    kill(m_reader, SIGINT);
    return waitpid(m_reader, &ended, WNOHANG) == m_reader;
  }));
  m_reader = -1;
  EXPECT_TRUE(WIFSIGNALED(ended) && WTERMSIG(ended) == SIGINT) << ended;
}

}  // namespace
