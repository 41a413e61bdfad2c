// A host whose text several threads change at once: what the thread sanitizer sees must break a check.

#include <vorn_testing/HostEntry.h>
#include <vorn_testing/MemoryHost.h>

namespace {

class Racing : public vorn_testing::MemoryHost {
 public:
  void alexaStateChanged(std::string state) override { m_state = state; }

 private:
  std::string m_state;
};

}  // namespace

VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() { return new Racing; }

void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }
