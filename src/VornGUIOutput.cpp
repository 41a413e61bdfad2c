#include "VornGUIOutput.h"

#include <DeviceAbstractionLayer/GUIOutput.h>
#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::Lock;

std::shared_ptr<VornGUIOutput> VornGUIOutput::m_instance;
std::mutex VornGUIOutput::m_mutex;

// Life.

std::shared_ptr<VornGUIOutput> VornGUIOutput::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornGUIOutput>(new VornGUIOutput(host)); };
  return internal::obtain(m_mutex, m_instance, make);
}

std::shared_ptr<VornGUIOutput> VornGUIOutput::getInstance() { return internal::current(m_mutex, m_instance); }

void VornGUIOutput::Shutdown() { internal::drop(m_mutex, m_instance); }

VornGUIOutput::VornGUIOutput(VornDALImplIF& host) : m_host(host) {}

// Down, locked: the host call runs under m_mutex.

bool VornGUIOutput::clearGUICard() {
  const Lock lock(m_mutex);
  return m_instance ? m_host.clearGUICard() : false;
}

bool VornGUIOutput::renderGUICard(const std::string& card) {
  const Lock lock(m_mutex);
  return m_instance ? m_host.renderGUICard(card) : false;
}

// Up: fetched anew on every call, no lock, whether or not there is an instance.

bool VornGUIOutput::notifyPlaybackControllerAction(std::string action) {
  const auto assistant = DeviceAbstractionLayer::GUIOutput::getInstance();
  return assistant ? assistant->notifyPlaybackControllerAction(action) : false;
}

}  // namespace VornDeviceAbstractionLayer
