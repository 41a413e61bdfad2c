// Many threads and several processes write to one trace, and every line stays whole.

#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <thread>

#include "support/trace_file.h"

namespace {

using VornDeviceAbstractionLayer::FileLogger;

constexpr int kLines = 200;

/// Lines of very different lengths, some far above what a stream buffers, each known by writer and number.
std::string message(int writer, int line) {
  return std::to_string(writer) + " " + std::to_string(line) + " " +
         std::string(static_cast<std::size_t>(line * 97 % 20000), static_cast<char>('a' + writer));
}

void writeAll(int firstWriter, int writers) {
  std::vector<std::thread> threads;
  for (int writer = firstWriter; writer < firstWriter + writers; ++writer) {
    threads.emplace_back([writer] {
      for (int line = 0; line < kLines; ++line) FileLogger::getInstance()->logMessage(message(writer, line));
    });
  }
  for (std::thread& thread : threads) thread.join();
}

/// Every writer's lines are there, whole and in its own order.
void expectWholeLines(int writers) {
  std::map<int, int> next;
  for (const std::string& line : trace_file::lines()) {
    const int writer = std::stoi(line);
    ASSERT_TRUE(line == message(writer, next[writer]++)) << line.substr(0, 40);
  }
  ASSERT_EQ(next.size(), static_cast<std::size_t>(writers));
  for (const auto& [writer, count] : next) EXPECT_EQ(count, kLines) << "writer " << writer;
}

class Crowd : public trace_file::Traced {};

TEST_F(Crowd, OfFourProcessesWithFourThreadsEachTearsNoLine) {
  std::vector<pid_t> children;
  for (int process = 0; process < 4; ++process) {
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      writeAll(process * 4, 4);
      _exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  expectWholeLines(16);
}

TEST_F(Crowd, OfSixteenThreadsTearsNoLine) {
  writeAll(0, 16);
  expectWholeLines(16);
}

}  // namespace
