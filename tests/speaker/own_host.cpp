// A team's host as a library: good in parts, and bad in every way that the speaker must tell.

#include <vorn_testing/HostEntry.h>
#include <vorn_testing/NullHost.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <stdexcept>

namespace {

class OwnHost : public vorn_testing::NullHost {
 public:
  ~OwnHost() override { std::puts("the own host is destroyed"); }

  int getVolume() override { return 7; }
  std::string getTimezone() override { throw std::runtime_error("no clock"); }
  std::string getDeviceLocale() override { throw 42; }
  bool getMuteStatus() override { std::abort(); }
  bool open() override {
    std::mutex mutex;
    std::unique_lock<std::mutex> lock(mutex);
    std::condition_variable().wait(lock, [] { return false; });
    return true;
  }
  VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override { return nullptr; }
};

}  // namespace

VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() { return new OwnHost; }

void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }
