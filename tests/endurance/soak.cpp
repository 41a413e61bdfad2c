// At full speed for as long as one wants: nothing grows, nothing is lost, and the counter comes round.
//
//   endurance_soak            a short run, as in the normal tests
//   VORN_SOAK=full ...    ten billion samples, the counter across its wrap, a million calls, 100000 lives
//
// Prints CSV: part, progress, resident kB, descriptors, threads.

#include <DeviceAbstractionLayer/AudioIn.h>
#include <FileLogger.h>
#include <VornAudioIn.h>
#include <dirent.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>

#include "support/everything.h"

namespace {

using namespace operations;
using VornDeviceAbstractionLayer::FileLogger;

// What memory may still grow by once a tenth has run. Sanitizers keep what was freed; an emulator keeps the code
// that it has translated.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr long kSlack = 1L << 30;
#elif defined(__aarch64__)
constexpr long kSlack = 32 * 1024;
#else
constexpr long kSlack = 512;
#endif

bool full() {
  const char* const length = std::getenv("VORN_SOAK");
  return length && std::strcmp(length, "full") == 0;
}

/// Takes the place of the stand-in's object: counts without recording, or a long run would fill the memory.
class CountingAudio final : public DeviceAbstractionLayer::AudioIn {
 public:
  void notifyAlexaButtonPress(std::string, std::chrono::milliseconds) override { ++presses; }
  void notifyAlexaButtonReleased() override { ++presses; }
  void sendAudioData(std::vector<short>& samples) override {
    ++buffers;
    total += samples.size();
  }
  unsigned long buffers = 0;
  unsigned long total = 0;
  unsigned long presses = 0;
};

std::shared_ptr<CountingAudio> g_audio = std::make_shared<CountingAudio>();

struct Use {
  long kilobytes;
  int descriptors;
  int threads;
};

int entries(const char* folder) {
  int count = 0;
  DIR* const directory = opendir(folder);
  while (directory && readdir(directory)) ++count;
  if (directory) closedir(directory);
  return count - 2;
}

Use use() {
  long pages = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return {resident * (sysconf(_SC_PAGESIZE) / 1024), entries("/proc/self/fd") - 1,
          entries("/proc/self/task")};
}

class Soak : public testing::Test {
 protected:
  Soak() { watchdog::feed(full() ? 3600 : 300); }

  /// Runs `step` for all of `steps`, in ten parts, and expects memory, descriptors and threads to stay.
  template <class Step>
  void soak(const char* part, unsigned long steps, Step step) {
    Use settled{};
    for (unsigned long tenth = 0; tenth <= 10; ++tenth) {
      if (tenth > 0)
        for (unsigned long i = steps * (tenth - 1) / 10; i < steps * tenth / 10; ++i) step(i);
      const Use now = use();
      if (tenth == 1) settled = now;
      std::cout << "soak," << part << "," << steps * tenth / 10 << "," << now.kilobytes << ","
                << now.descriptors << "," << now.threads << "\n";
      if (tenth <= 1) continue;
      EXPECT_LE(now.kilobytes, settled.kilobytes + kSlack) << part << " grows";
      EXPECT_EQ(now.descriptors, settled.descriptors);
      EXPECT_EQ(now.threads, settled.threads);
    }
  }

  Firmware m_firmware;
};

TEST_F(Soak, SamplesFlowAndTheCounterComesRound) {
  FileLogger::CreateInstance(false);
  VornDeviceAbstractionLayer::VornAudioIn adapter(m_firmware.host);
  std::vector<short> none;
  std::vector<short> samples(480);
  const unsigned long buffers = full() ? 10'000'000'000UL / samples.size() + 1 : 1'000'000UL;
  soak("audio", buffers, [&](unsigned long) { adapter.sendAudioData(samples); });
  EXPECT_EQ(g_audio->buffers, buffers);
  EXPECT_EQ(g_audio->total, buffers * samples.size());
  if (!full()) return;

  // On to the wrap, with empty buffers; there the number in the trace becomes negative and every call is traced.
  g_audio->buffers = 0;
  const unsigned long toWrap = 2147483647UL - buffers - 1;
  soak("wrap", toWrap, [&](unsigned long) { adapter.sendAudioData(none); });
  EXPECT_EQ(g_audio->buffers, toWrap);
  FileLogger::Shutdown();
  unlink("/tmp/xAppLog.txt");
  FileLogger::CreateInstance(true);
  for (int i = 0; i < 3; ++i) adapter.sendAudioData(none);
  std::ifstream file("/tmp/xAppLog.txt");
  std::vector<std::string> numbers;
  for (std::string line; std::getline(file, line);) numbers.push_back(line.substr(line.rfind('=') + 1));
  EXPECT_EQ(numbers, (std::vector<std::string>{"-2147483648", "-2147483647"}));
}

TEST_F(Soak, MixedCallsLoseNone) {
  vorn_testing::FakeAssistant assistant(m_firmware.recorder);
  FileLogger::Shutdown();
  FileLogger::CreateInstance(false);
  const std::vector<Row> rows = everyRow(m_firmware);
  std::map<const Adapter*, std::shared_ptr<void>> objects;
  for (const Adapter* const each : classes())
    if (each->name != "FileLogger") objects[each] = each->create(m_firmware);
  unsigned long sent = 0;
  unsigned long arrived = 0;
  soak("calls", full() ? 1'000'000UL : 20'000UL, [&](unsigned long i) {
    const Row& row = rows[i % rows.size()];
    if (row.keepsAssistant()) return;
    sent += row.reaches(row.run(objects[row.adapter].get()).given, true).size();
    if (i % 1000 == 999) {
      arrived += m_firmware.recorder->calls().size();
      m_firmware.recorder->clear();
    }
  });
  EXPECT_EQ(arrived + m_firmware.recorder->calls().size() + g_audio->presses, sent);
  for (const Adapter* const each : classes()) each->shutdown();
}

TEST_F(Soak, LivesLeaveNothing) {
  FileLogger::CreateInstance(false);
  soak("lives", full() ? 100'000UL : 5'000UL, [&](unsigned long) {
    for (const Adapter* const each : classes()) {
      each->create(m_firmware);
      each->shutdown();
    }
    unlink("/tmp/xAppLog.txt");
  });
}

}  // namespace

// Before the stand-in's own: a program's definition is found first.
namespace DeviceAbstractionLayer {
std::shared_ptr<AudioIn> AudioIn::getInstance() { return g_audio; }
}  // namespace DeviceAbstractionLayer
