#include "VornCommsManager.h"

#include <DeviceAbstractionLayer/CommsManager.h>
#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"
#include "internal/Trace.h"

namespace VornDeviceAbstractionLayer {

using internal::Lock;
using internal::trace;

namespace {

constexpr char kStateChanged[] =
    "void VornDeviceAbstractionLayer::VornCommsManager::onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&)";
constexpr char kCallAction[] =
    "void VornDeviceAbstractionLayer::VornCommsManager::notifyCallAction(DeviceAbstractionLayer::CommsControllerInterface::CallAction)";

}  // namespace

std::shared_ptr<VornCommsManager> VornCommsManager::m_instance;
std::mutex VornCommsManager::m_mutex;

// Life.

std::shared_ptr<VornCommsManager> VornCommsManager::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornCommsManager>(new VornCommsManager(host)); };
  return internal::obtain(m_mutex, m_instance, make);
}

std::shared_ptr<VornCommsManager> VornCommsManager::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornCommsManager::Shutdown() { internal::drop(m_mutex, m_instance); }

VornCommsManager::VornCommsManager(VornDALImplIF& host) : m_host(host) {}

// Down, locked: line and host call run under m_mutex.

void VornCommsManager::onCommsStateChanged(
    const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) {
  const Lock lock(m_mutex);
  if (!m_instance) return;
  trace(kStateChanged);
  m_host.onCommsStateChanged(info);
}

// Up: fetched anew on every call, no lock, whether or not there is an instance.

void VornCommsManager::notifyCallAction(DeviceAbstractionLayer::CommsControllerInterface::CallAction action) {
  if (const auto assistant = DeviceAbstractionLayer::CommsManager::getInstance()) {
    trace(kCallAction);
    assistant->notifyCallAction(action);
  }
}

}  // namespace VornDeviceAbstractionLayer
