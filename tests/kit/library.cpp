// A host as a library: good, with one fault, with habits that are no fault, or none at all, as it is compiled.

#include <sys/stat.h>
#include <unistd.h>
#include <vorn_testing/HostEntry.h>
#include <vorn_testing/MemoryHost.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

namespace {

struct Faulty : vorn_testing::MemoryHost {
  Faulty() { std::puts("the faulty host says hello"); }
  std::string getTimezone() override { return "Z\xfcrich"; }
};

/// Breaks no promise, and is not what its neighbours want.
struct Untidy : vorn_testing::MemoryHost {
  std::string getVSKCapabilities() override {
    static_cast<void>(dup(STDERR_FILENO));
    umask(0123);
    return MemoryHost::getVSKCapabilities();
  }
  bool isMicrophoneAvailable() override {
    const char* const folder = std::getenv("VORN_KIT_FOLDER");
    const std::string left = std::string(folder ? folder : "") + "/left";
    if (folder && fork() == 0) {
      setsid();
      std::ofstream(left + "~") << getpid();
      std::rename((left + "~").c_str(), left.c_str());
      for (int stream = 0; stream < 3; ++stream) close(stream);
      for (;;) pause();
    }
    while (folder && access(left.c_str(), F_OK) != 0) std::this_thread::yield();
    return MemoryHost::isMicrophoneAvailable();
  }
  std::string getTimezone() override {
    static const bool slow = (std::this_thread::sleep_for(std::chrono::milliseconds(1050)), true);
    return slow ? MemoryHost::getTimezone() : "";
  }
};

}  // namespace

VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() { return VORN_HOST; }

void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }
