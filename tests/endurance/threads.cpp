// All operations of all adapters at once, from many threads, while instances come and go.

#include <FileLogger.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <iostream>
#include <thread>

#include "support/rows.h"
#include "support/watchdog.h"

namespace {

using namespace fault;
using VornDeviceAbstractionLayer::FileLogger;

constexpr int kThreads = 8;
constexpr int kRounds = 25;

bool isAudio(const Row& row) { return row.operation == std::string("sendAudioData"); }

/// "slot operation", which tells overloads and interfaces apart well enough to count.
std::string key(const std::string& call) { return call.substr(0, call.find('(')); }

using Counts = std::map<std::string, long>;

class Threads : public testing::Test {
 protected:
  Threads() : m_assistant(m_world.recorder) {
    watchdog::feed();
    settleAudio();
    FileLogger::Shutdown();
    FileLogger::CreateInstance(true);
    for (const Adapter& each : adapters())
      if (!isLogger(each)) m_objects[each.name] = each.create(m_world);
    m_objects["FileLogger"];
    m_world.recorder->clear();
  }

  ~Threads() override {
    for (const Adapter& each : adapters()) each.shutdown();
    unlink("/tmp/xAppLog.txt");
  }

  static bool isLogger(const Adapter& adapter) { return adapter.name == std::string("FileLogger"); }

  /// Plays every row kRounds times in each of kThreads; the audio in the first only, as one thread delivers it.
  /// Returns the calls that must have reached a neighbour.
  Counts play(bool always) {
    std::vector<Counts> sent(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&, thread] {
        for (int round = 0; round < kRounds; ++round) {
          for (const Row& row : rows()) {
            if (isAudio(row) && thread != 0) continue;
            const std::unique_ptr<Invocation> call = row.prepare(m_objects.at(row.adapter).get(), m_world);
            call->invoke();
            const std::string result = call->result();
            const bool delivered =
                always || row.seesLive.empty() || (result == row.answer && row.answer != row.fallback);
            EXPECT_TRUE(result == row.answer || (!always && result == row.fallback))
                << row.name() << ": " << result;
            for (const std::string& seen : row.sees(delivered))
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
    for (const std::string& call : seen(*m_world.recorder)) ++all[key(call)];
    return all;
  }

  World m_world;
  vorn_testing::FakeAssistant m_assistant;
  std::map<std::string, std::shared_ptr<void>> m_objects;
};

TEST_F(Threads, NoCallIsLostOrDoubled) {
  const Counts sent = play(true);
  EXPECT_EQ(arrived(), sent);
  long calls = 0;
  for (const auto& [call, number] : sent) calls += number;
  std::cout << "threads: " << kThreads << " threads, " << calls << " calls to neighbours\n";
}

TEST_F(Threads, InstancesThatComeAndGoLoseNoAnswer) {
  std::atomic<bool> stop{false};
  std::atomic<long> lives{0};
  std::vector<std::thread> gods;
  for (int god = 0; god < 2; ++god) {
    gods.emplace_back([&] {
      while (!stop) {
        for (const Adapter& each : adapters()) {
          each.shutdown();
          each.create(m_world);
          each.get();
          ++lives;
        }
      }
    });
  }
  const Counts sent = play(false);
  stop = true;
  for (std::thread& god : gods) god.join();

  // An answer that is no default has been given by exactly one call. Calls without such an answer may have
  // found no instance.
  Counts came = arrived();
  for (const Row& row : rows()) {
    if (row.answer == row.fallback && !row.seesLive.empty()) continue;
    for (const std::string& call : row.sees(true)) {
      if (call == "33 getEMPAdapter()" ||
          (row.operation == std::string("notifyAlexaButtonPress") && call == row.seesLive.front()))
        continue;
      const auto it = sent.find(key(call));
      EXPECT_EQ(came[key(call)], it == sent.end() ? 0 : it->second) << call;
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
