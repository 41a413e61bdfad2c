#include "VornLEDController.h"

#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::Lock;

std::shared_ptr<VornLEDController> VornLEDController::m_instance;
std::mutex VornLEDController::m_mutex;

// Life.

std::shared_ptr<VornLEDController> VornLEDController::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornLEDController>(new VornLEDController(host)); };
  return internal::obtain(m_mutex, m_instance, make);
}

std::shared_ptr<VornLEDController> VornLEDController::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornLEDController::Shutdown() { internal::drop(m_mutex, m_instance); }

VornLEDController::VornLEDController(VornDALImplIF& host) : m_host(host) {}

// Down, locked: the host call runs under m_mutex.

int VornLEDController::setAnimation(std::vector<std::string> animations) {
  const Lock lock(m_mutex);
  return m_instance ? m_host.setAnimation(animations) : 0;
}

}  // namespace VornDeviceAbstractionLayer
