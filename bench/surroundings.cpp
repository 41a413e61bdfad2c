// What surrounds the calls that are counted: an assistant side, the allocator and the locks. In a file of its own, so
// that the compiler cannot see from the bare calls what they reach and inline it, as it cannot in the library.

#include "surroundings.h"

#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <dlfcn.h>
#include <pthread.h>

#include <cstdlib>
#include <new>

thread_local long allocations = 0;
thread_local long locks = 0;

namespace {

class Ear final : public DeviceAbstractionLayer::AudioIn {
 public:
  void notifyAlexaButtonPress(std::string, std::chrono::milliseconds) override {}
  void notifyAlexaButtonReleased() override {}
  void sendAudioData(std::vector<short>&) override {}
};

class Settings final : public DeviceAbstractionLayer::DeviceInfo {
 public:
  void notifySystemSettingChanged(std::string, std::string) override {}
  void notifyLocaleChange(std::string) override {}
  void notifyLocaleChange(std::vector<std::string>) override {}
  void notifyNetworkConnectionChanged(std::string) override {}
  void notifyMicrophoneAvailabilityChanged(std::string) override {}
  void notifyVolumeChanged(int) override {}
  void notifyMuteChanged(bool) override {}
  void notifyHandsfreeStateChanged(bool) override {}
};

}  // namespace

// This program is its own assistant side: the library's calls are resolved to it before the stand-in's.

std::shared_ptr<DeviceAbstractionLayer::AudioIn> DeviceAbstractionLayer::AudioIn::getInstance() {
  static const std::shared_ptr<AudioIn> ear = std::make_shared<Ear>();
  return ear;
}

std::shared_ptr<DeviceAbstractionLayer::DeviceInfo> DeviceAbstractionLayer::DeviceInfo::getInstance() {
  static const std::shared_ptr<DeviceInfo> settings = std::make_shared<Settings>();
  return settings;
}

// Every allocation and every lock of the process passes through these.

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

extern "C" int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  using Lock = int (*)(pthread_mutex_t*);
  static const Lock real = reinterpret_cast<Lock>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  ++locks;
  return real(mutex);
}
