// What one buffer costs, and the far end of the counter. This program is its own assistant side: an object
// that does nothing itself, so that every lock and allocation counted is the library's. Counter and object
// live as long as the process, so each test has a process of its own.

#include <DeviceAbstractionLayer/AudioIn.h>
#include <VornAudioIn.h>
#include <vorn_testing/NullHost.h>

#include <limits>
#include <new>
#include <stdexcept>

#include "constants_symbols.h"
#include "support/eventually.h"
#include "support/interposed.h"
#include "support/mutexes.h"
#include "support/trace_file.h"

namespace {

class QuietAudioIn final : public DeviceAbstractionLayer::AudioIn {
 public:
  void notifyAlexaButtonPress(std::string, std::chrono::milliseconds) override {}
  void notifyAlexaButtonReleased() override {}
  void sendAudioData(std::vector<short>& samples) override {
    ++buffers;
    last = &samples;
    references = self.use_count();
  }

  std::weak_ptr<QuietAudioIn> self;
  int buffers = 0;
  const void* last = nullptr;
  long references = 0;
};

int g_searches = 0;
std::vector<std::string> g_linesAtSearch;
std::shared_ptr<QuietAudioIn> g_assistant;

}  // namespace

std::shared_ptr<DeviceAbstractionLayer::AudioIn> DeviceAbstractionLayer::AudioIn::getInstance() {
  ++g_searches;
  g_linesAtSearch = trace_file::lines();
  return g_assistant;
}

namespace {

using namespace VornDeviceAbstractionLayer;
using interposed::counts;
using interposed::Counts;
using Lines = std::vector<std::string>;

class AudioCounter : public trace_file::Traced {
 protected:
  void SetUp() override {
    Traced::SetUp();
    g_assistant = std::make_shared<QuietAudioIn>();
    g_assistant->self = g_assistant;
    audio = std::make_shared<VornAudioIn>(host);
    forget();
  }

  void send(int buffers = 1) {
    for (int i = 0; i < buffers; ++i) audio->sendAudioData(samples);
  }

  /// The numbers of the buffers that left a line.
  static Lines numbers() {
    Lines found;
    for (const std::string& line : trace_file::lines()) found.push_back(line.substr(line.rfind('=') + 1));
    return found;
  }

  /// The counter inside the loaded library.
  static int& count() {
    const auto found = LibrarySymbols::named(
        "_ZZN26VornDeviceAbstractionLayer11VornAudioIn13sendAudioDataERSt6vectorIsSaIsEEE5count");
    if (found.size() != 1) throw std::runtime_error("the library has no such counter");
    return *reinterpret_cast<int*>(found[0].address);
  }

  vorn_testing::NullHost host;
  std::shared_ptr<VornAudioIn> audio;
  std::vector<short> samples = std::vector<short>(160, 1);
};

TEST_F(AudioCounter, SteadyBuffersCostNoLockNoAllocationAndNoReference) {
  send(6);
  const long references = g_assistant.use_count();
  const Counts before = counts();
  send(1000);
  EXPECT_TRUE(counts() - before == Counts{});
  EXPECT_EQ(g_assistant->references, references);
  EXPECT_EQ(g_searches, 1);
}

// Whatever becomes of the search, the trace tells that it began.
TEST_F(AudioCounter, TheSearchIsTracedBeforeItIsMade) {
  send();
  EXPECT_EQ(g_linesAtSearch, Lines{"void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData("
                                   "std::vector<short int>&) calling AudioInHelper getInstance 1"});
}

// A host may push sound from inside the operation that starts it, which holds the lock.
TEST_F(AudioCounter, BuffersPassWhileTheAdapterIsLockedTheFirstOneToo) {
  std::mutex& mutex = operations::mutexOf("VornAudioIn");
  EXPECT_TRUE(passes(mutex, [this] { send(6); }));
  EXPECT_TRUE(passes(mutex, [this] { send(100); }));
  EXPECT_EQ(g_assistant->buffers, 106);
  EXPECT_EQ(g_assistant->last, &samples);
}

TEST_F(AudioCounter, NumberedBuffersDoTakeTheTracesLock) {
  send();
  const Counts before = counts();
  send();
  EXPECT_GT((counts() - before).locks, 0U);
}

TEST_F(AudioCounter, StartsAtOneAndAdvancesByOne) {
  EXPECT_EQ(count(), 1);
  send();
  EXPECT_EQ(count(), 2);
  send(99);
  EXPECT_EQ(count(), 101);
}

TEST_F(AudioCounter, AdvancesWithoutAnAssistantToo) {
  g_assistant.reset();
  send(3);
  EXPECT_EQ(count(), 4);
}

TEST_F(AudioCounter, StaysWhereItIsWhenALineFindsNoMemory) {
  int failures = 0;
  for (std::size_t nth = 1; g_assistant->buffers == 0; ++nth) {
    interposed::failAllocation(nth);
    try {
      send();
    } catch (const std::bad_alloc&) {
      ++failures;
      EXPECT_EQ(count(), 1);
    }
    interposed::failAllocation(0);
  }
  EXPECT_GT(failures, 0);
  EXPECT_EQ(count(), 2);
}

TEST_F(AudioCounter, GoesFromTheLargestToTheSmallestNumber) {
  send();
  forget();
  count() = std::numeric_limits<int>::max();
  send();
  EXPECT_EQ(count(), std::numeric_limits<int>::min());
  EXPECT_EQ(numbers(), Lines{});
  send(2);
  EXPECT_EQ(numbers(), (Lines{"-2147483648", "-2147483647"}));
}

TEST_F(AudioCounter, WritesEveryNegativeNumberAndTheFirstFiveAgain) {
  send();
  forget();
  count() = -3;
  send(10);
  EXPECT_EQ(numbers(), (Lines{"-3", "-2", "-1", "0", "1", "2", "3", "4", "5"}));
}

TEST_F(AudioCounter, WritesTheLastMultipleBeforeTheEnd) {
  send();
  forget();
  count() = 2147479999;
  send(3);
  EXPECT_EQ(numbers(), Lines{"2147480000"});
}

}  // namespace
