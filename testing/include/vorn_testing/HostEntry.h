#pragma once

#include <VornDALImplIF.h>

// How a host of your own is handed to the tools. Build it as a shared library that defines both functions, link it
// to libVornDALImpl.so, and name the library: vorn-conformance ./libMyHost.so, vorn-speaker --host ./libMyHost.so
//
//   VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() { return new MyHost; }
//   void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }

extern "C" {

/// Makes a host, or returns null when it cannot. Called before any adapter is created, and again at most when the
/// host before was destroyed.
__attribute__((visibility("default"))) VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost();

/// Destroys a host that vornCreateHost() made. Called after every adapter was shut down and no call runs.
__attribute__((visibility("default"))) void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host);
}
