#include "VornLoggerObserver.h"

#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::live;

namespace {

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornLoggerObserver> VornLoggerObserver::m_instance;
std::mutex VornLoggerObserver::m_mutex;

// Life.

std::shared_ptr<VornLoggerObserver> VornLoggerObserver::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornLoggerObserver>(new VornLoggerObserver(host)); };
  return internal::obtain(m_mutex, m_instance, make, &liveFlag);
}

std::shared_ptr<VornLoggerObserver> VornLoggerObserver::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornLoggerObserver::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornLoggerObserver::VornLoggerObserver(VornDALImplIF& host) : m_host(host) {}

// Down, unlocked.

void VornLoggerObserver::onLogEmitted(const std::string& first, const std::string& second) {
  if (live(liveFlag)) m_host.onLogEmitted(first, second);
}

}  // namespace VornDeviceAbstractionLayer
