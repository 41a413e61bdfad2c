// A host as a library: good, with one fault, or none at all, as it is compiled.

#include <vorn_testing/HostEntry.h>
#include <vorn_testing/MemoryHost.h>

#include <cstdio>

namespace {

struct Faulty : vorn_testing::MemoryHost {
  Faulty() { std::puts("the faulty host says hello"); }
  std::string getTimezone() override { return "Z\xfcrich"; }
};

}  // namespace

VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() { return VORN_HOST; }

void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }
