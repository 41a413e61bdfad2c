#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "HostEntry.h"

namespace vorn_testing {

/// A shared library of somebody else's that makes hosts; see HostEntry.h. It is never unloaded: what a host started
/// may outlive it. May be used from any thread; the hosts follow the library's own rules.
class HostLibrary {
 public:
  /// Loads the library. A name without a folder is meant as a file of the current folder, not as a system library.
  /// @throws std::runtime_error  Names the library, what is wrong with it, and the remedy.
  explicit HostLibrary(const std::string& path);

  /// Makes a host, which is destroyed by the library that made it; empty when vornCreateHost() answers null.
  std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF> makeHost() const;

  /// The media players that a host of makeHost() brings, its library's as long as the host lives; the library is asked at
  /// the first call, which comes right after the host was made. Null where it brings none, and for a host that was made
  /// otherwise.
  static MediaPlayers* playersOf(const std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF>& host);

 private:
  VornDeviceAbstractionLayer::VornDALImplIF* (*m_create)();
  void (*m_destroy)(VornDeviceAbstractionLayer::VornDALImplIF*);
  MediaPlayers* (*m_players)(VornDeviceAbstractionLayer::VornDALImplIF*);
};

/// What came of loading a library.
struct LibraryTrial {
  std::string failure;  ///< What went wrong; empty when all went well.
  bool makesHosts;      ///< Whether hosts can be asked nevertheless: it failed when it destroyed one.
};

/// Loads the library, makes a host, destroys it and ends, all in a process of its own, which then is not this one's
/// business: whatever the library does while it is loaded or unloaded.
LibraryTrial tryHostLibrary(const std::string& path, std::chrono::milliseconds bound);

}  // namespace vorn_testing
