#include "VornLoggerObserver.h"

#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::live;

std::shared_ptr<VornLoggerObserver> VornLoggerObserver::m_instance;
std::mutex VornLoggerObserver::m_mutex;
std::atomic<bool> VornLoggerObserver::m_live{false};

// Life.

std::shared_ptr<VornLoggerObserver> VornLoggerObserver::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornLoggerObserver>(new VornLoggerObserver(host)); };
  return internal::obtain(m_mutex, m_instance, make, &m_live);
}

std::shared_ptr<VornLoggerObserver> VornLoggerObserver::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornLoggerObserver::Shutdown() { internal::drop(m_mutex, m_instance, &m_live); }

VornLoggerObserver::VornLoggerObserver(VornDALImplIF& host) : m_host(host) {}

// Down, unlocked.

void VornLoggerObserver::onLogEmitted(const std::string& first, const std::string& second) {
  if (live(m_live)) m_host.onLogEmitted(first, second);
}

}  // namespace VornDeviceAbstractionLayer
