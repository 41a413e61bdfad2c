// Runs each kind of call, and the bare call that it cannot do without, for callgrind to count. check-budgets starts
// it and takes the difference; a table of allocations and locks goes to standard output.

#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <FileLogger.h>
#include <VornAlexaState.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAudioIn.h>
#include <VornDeviceInfo.h>
#include <VornLEDController.h>
#include <VornLoggerObserver.h>
#include <valgrind/callgrind.h>
#include <vorn_testing/NullHost.h>

#include <cstdio>
#include <functional>
#include <string>

#include "Company.h"
#include "surroundings.h"

namespace {

using namespace VornDeviceAbstractionLayer;

// Enough that a call that allocates only now and then shows up, and few enough for the audio path's rare trace line.
constexpr int kCalls = 1000;

/// Hides from the compiler what a pointer points to, so that it cannot call the operation directly.
template <class Object>
Object* opaque(Object* object) {
  asm volatile("" : "+r"(object) : : "memory");
  return object;
}

template <class Operation>
[[gnu::noinline]] void repeat(int times, Operation& operation) {
  for (int i = 0; i < times; ++i) operation();
}

/// Once and then twice as often: what starting and ending a count costs falls out of the difference.
template <class Operation>
void count(const char* name, const char* side, Operation operation) {
  for (int i = 0; i < 6; ++i) operation();  // The first calls search, trace and resolve.
  for (const int times : {kCalls, 2 * kCalls}) {
    const std::string label = std::string(name) + ' ' + side + ' ' + std::to_string(times);
    const long allocationsBefore = allocations;
    const long locksBefore = locks;
    CALLGRIND_ZERO_STATS;
    repeat(times, operation);
    CALLGRIND_DUMP_STATS_AT(label.c_str());
    std::printf("%s %ld %ld\n", label.c_str(), allocations - allocationsBefore, locks - locksBefore);
  }
}

template <class Bare, class Adapter>
void compare(const char* name, Bare bare, Adapter adapter) {
  count(name, "bare", bare);
  count(name, "library", adapter);
}

constexpr char kHandsFree[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::setAlexaHandsFreeState(bool) calling xApp API";

}  // namespace

int main() {
  const Company company;
  vorn_testing::NullHost nullHost;
  VornDALImplIF* const host = opaque<VornDALImplIF>(&nullHost);
  std::mutex mutex;
  std::vector<short> samples(160);
  const std::string state = "a state too long for the string's own storage";
  const std::vector<std::string> animations(3, "an animation too long for the string's own storage");

  const auto audio = VornAudioIn::CreateInstance(*host);
  const auto ear = DeviceAbstractionLayer::AudioIn::getInstance();
  compare(
      "audio", [&] { opaque(ear.get())->sendAudioData(samples); }, [&] { audio->sendAudioData(samples); });
  compare(
      "unlocked", [&] { opaque(host)->isMicrophoneAvailable(); }, [&] { audio->isMicrophoneAvailable(); });

  const auto observer = VornLoggerObserver::CreateInstance(*host);
  compare(
      "unlocked-references", [&] { opaque(host)->onLogEmitted(state, state); },
      [&] { observer->onLogEmitted(state, state); });

  const auto info = VornDeviceInfo::CreateInstance(*host);
  compare(
      "upward",
      [] {
        if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
          assistant->notifyVolumeChanged(1);
      },
      [&] { info->notifyVolumeChanged(1); });
  compare(
      "locked",
      [&] {
        const std::lock_guard<std::mutex> lock(mutex);
        opaque(host)->getVolume();
      },
      [&] { info->getVolume(); });

  const std::function<void(void*, std::size_t)> onData = [](void*, std::size_t) {};
  const auto container =
      VornAttachmentReaderContainerFactory::getInstance()->createAttachmentReaderContainer(nullptr);
  container->Subscribe(onData, nullptr);
  compare(
      "container", [&] { (*opaque(&onData))(samples.data(), 1); },
      [&] { opaque(container.get())->sendData(samples.data(), 1); });

  const auto alexaState = VornAlexaState::CreateInstance(*host);
  compare(
      "copies",
      [&] {
        std::string argument = state;
        opaque(host)->alexaStateChanged(argument);
      },
      [&] { alexaState->alexaStateChanged(state); });

  const auto led = VornLEDController::CreateInstance(*host);
  compare(
      "locked-copies",
      [&] {
        std::vector<std::string> argument = animations;
        const std::lock_guard<std::mutex> lock(mutex);
        opaque(host)->setAnimation(argument);
      },
      [&] { led->setAnimation(animations); });

  compare(
      "logging-off",
      [&] {
        const auto logger = FileLogger::getInstance();
        std::string text = kHandsFree;
        opaque(text.data());
        opaque(host)->setAlexaHandsFreeState(true);
      },
      [&] { audio->setAlexaHandsFreeState(true); });
}
