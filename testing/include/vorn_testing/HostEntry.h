#pragma once

#include <VornDALImplIF.h>
#include <VornDalMediaPlayerInterfaceImpl.h>

#include <memory>
#include <string>
#include <unordered_map>

// How a host of your own is handed to the tools. Build it as a shared library that defines the first two functions, link
// it to libVornDALImpl.so, and name the library: vorn-conformance ./libMyHost.so, vorn-speaker --host ./libMyHost.so
//
//   VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() { return new MyHost; }
//   void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }

namespace vorn_testing {

/// Players by name, as VornMediaPlayerFactory::CreateInstance() takes them.
typedef std::unordered_map<std::string,
                           std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl>>
    MediaPlayers;

}  // namespace vorn_testing

extern "C" {

/// Makes a host, or returns null when it cannot. Called before any adapter is created, and again at most when the
/// host before was destroyed.
__attribute__((visibility("default"))) VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost();

/// Destroys a host that vornCreateHost() made. Called after every adapter was shut down and no call runs.
__attribute__((visibility("default"))) void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host);

/// The media players that a host brings, or null for none; need not be defined when no host brings any. Asked once for each
/// host, right after vornCreateHost() made it. The table is borrowed, for VornMediaPlayerFactory, and stays as it is until
/// vornDestroyHost() begins.
__attribute__((visibility("default"))) vorn_testing::MediaPlayers* vornMediaPlayers(
    VornDeviceAbstractionLayer::VornDALImplIF* host);
}
