#pragma once

#include <VornDALImplIF.h>

#include <memory>
#include <string>

namespace vorn_speaker {

/// A host from somebody else's shared library; see vorn_testing/HostEntry.h.
class HostLibrary {
 public:
  /// @throws std::runtime_error  Names the library and what it lacks.
  explicit HostLibrary(const std::string& path);

  VornDeviceAbstractionLayer::VornDALImplIF& host() { return *m_host; }

 private:
  std::unique_ptr<VornDeviceAbstractionLayer::VornDALImplIF,
                  void (*)(VornDeviceAbstractionLayer::VornDALImplIF*)>
      m_host;
};

}  // namespace vorn_speaker
