// The host as a shared library: vorn-conformance ./libMyHost.so, vorn-speaker --host ./libMyHost.so

#include <vorn_testing/HostEntry.h>

#include "MyHost.h"

VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() { return new MyHost; }
void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }
vorn_testing::MediaPlayers* vornMediaPlayers(VornDeviceAbstractionLayer::VornDALImplIF* host) {
  return &static_cast<MyHost*>(host)->players;
}
