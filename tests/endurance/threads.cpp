// All operations of all adapters at once, from many threads, while instances come and go.

#include <FileLogger.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <iostream>
#include <thread>

#include "support/everything.h"

namespace {

using namespace operations;
using VornDeviceAbstractionLayer::FileLogger;

constexpr int kThreads = 8;
constexpr int kRounds = 25;

/// "interface slot operation".
std::string key(const std::string& call) { return call.substr(0, call.find('(')); }

using Counts = std::map<std::string, long>;

class Threads : public Everything {
 protected:
  /// Plays every row kRounds times in each of kThreads; the audio in the first only, as one thread delivers it.
  /// Returns the calls that must have reached the other side.
  Counts play(bool always) {
    std::vector<Counts> sent(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&, thread] {
        for (int round = 0; round < kRounds; ++round) {
          for (const Row& row : m_rows) {
            if (row.keepsAssistant() && thread != 0) continue;
            const Outcome outcome = call(row);
            const bool delivered = always || (outcome.result == row.answer && row.answer != row.fallback);
            EXPECT_TRUE(outcome.result == row.answer || (!always && outcome.result == row.fallback))
                << row.name() << ": " << outcome.result;
            for (const std::string& seen : row.reaches(outcome.given, delivered))
              ++sent[static_cast<std::size_t>(thread)][key(seen)];
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    Counts all;
    for (const Counts& each : sent)
      for (const auto& [call, number] : each) all[call] += number;
    return all;
  }

  Counts arrived() const {
    Counts all;
    for (const std::string& call : seen(m_firmware.recorder->calls())) ++all[key(call)];
    return all;
  }
};

TEST_F(Threads, NoCallIsLostOrDoubled) {
  const Counts sent = play(true);
  EXPECT_EQ(arrived(), sent);
  long calls = 0;
  for (const auto& [call, number] : sent) calls += number;
  std::cout << "threads: " << kThreads << " threads, " << calls << " calls to the other sides\n";
}

TEST_F(Threads, InstancesThatComeAndGoLoseNoAnswer) {
  std::atomic<bool> stop{false};
  std::atomic<long> lives{0};
  std::vector<std::thread> creators;
  for (int thread = 0; thread < 2; ++thread) {
    creators.emplace_back([&] {
      while (!stop) {
        for (const Adapter* const each : classes()) {
          each->shutdown();
          each->create(m_firmware);
          each->get();
          ++lives;
        }
      }
    });
  }
  Counts sent = play(false);
  stop = true;
  for (std::thread& creator : creators) creator.join();

  // An answer that is no default has been given by exactly one call. Calls without such an answer may have
  // found no instance.
  Counts came = arrived();
  for (const Row& row : m_rows) {
    const bool down = row.direction == Direction::kDown;
    if (down && row.answer == row.fallback) continue;
    for (const std::string& call : row.reaches(row.with(Sample::kUsual)->outcome.given, down))
      if (call != "VornDALImplIF 33 getEMPAdapter()") {
        EXPECT_EQ(came[key(call)], sent[key(call)]) << call;
      }
  }
  std::cout << "threads: " << lives << " lives while they ran\n";
}

TEST_F(Threads, AWatchdogShowsTheStackOfEachThread) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP()
      << "the thread sanitizer objects to opening a folder in a signal handler, which the watchdog does last";
#endif
  EXPECT_EXIT(
      {
        std::mutex first;
        first.lock();
        std::thread stuck([&] { first.lock(); });
        alarm(0);
        setenv("VORN_WATCHDOG", "1", 1);
        watchdog::feed();
        stuck.join();
      },
      testing::ExitedWithCode(97), "deadlock; the stack of each thread:(.|\n)*--(.|\n)*--");
}

}  // namespace
