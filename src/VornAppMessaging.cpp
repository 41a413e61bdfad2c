#include "VornAppMessaging.h"

#include <DeviceAbstractionLayer/AppMessaging.h>
#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"
#include "internal/Trace.h"

namespace VornDeviceAbstractionLayer {

using internal::Lock;
using internal::trace;

std::shared_ptr<VornAppMessaging> VornAppMessaging::m_instance;
std::mutex VornAppMessaging::m_mutex;
std::mutex VornAppMessaging::m_dalMutex;

// Life.

std::shared_ptr<VornAppMessaging> VornAppMessaging::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornAppMessaging>(new VornAppMessaging(host)); };
  return internal::obtain(m_mutex, m_instance, make);
}

std::shared_ptr<VornAppMessaging> VornAppMessaging::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornAppMessaging::Shutdown() { internal::drop(m_mutex, m_instance); }

VornAppMessaging::VornAppMessaging(VornDALImplIF& host) : m_host(host) {}

// Down, locked: the host call runs under m_mutex.

bool VornAppMessaging::sendAppMessage(std::string first, std::string second, std::string third) {
  const Lock lock(m_mutex);
  if (m_instance) m_host.sendAppMessage(first, second, third);
  return true;
}

// Up: under m_dalMutex, so that lines and deliveries are in the same order and a host may send up while
// it handles a message that came down.

bool VornAppMessaging::SendMessageToxApp(std::string first, std::string second, std::string third) {
  const Lock lock(m_dalMutex);
  const auto assistant = DeviceAbstractionLayer::AppMessaging::getInstance();
  if (!assistant) return false;
  trace("receiveAppMessage(" + first + "," + second + "," + third + ")");
  return assistant->SendMessageToxApp(first, second, third);
}

}  // namespace VornDeviceAbstractionLayer
