#include "VornStorage.h"

#include "VornDALImplIF.h"
#include "internal/HotPath.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::live;

namespace {

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornStorage> VornStorage::m_instance;
std::mutex VornStorage::m_mutex;

// Life.

std::shared_ptr<VornStorage> VornStorage::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornStorage>(new VornStorage(host)); };
  return internal::obtain(m_mutex, m_instance, make, &liveFlag);
}

std::shared_ptr<VornStorage> VornStorage::getInstance() { return internal::current(m_mutex, m_instance); }

void VornStorage::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornStorage::VornStorage(VornDALImplIF& host) : m_host(host) {}

// Down, unlocked.

bool VornStorage::open() { return live(liveFlag) ? m_host.open() : false; }

VORN_NO_STACK_GUARD std::map<std::string, std::string> VornStorage::readKeyValue(const std::string& key) {
  return live(liveFlag) ? m_host.readKeyValue(key) : std::map<std::string, std::string>();
}

bool VornStorage::writeKeyValue(std::map<std::string, std::string> entries) {
  return live(liveFlag) ? m_host.writeKeyValue(entries) : false;
}

bool VornStorage::removeKeyValue(const std::vector<std::string>& keys) {
  return live(liveFlag) ? m_host.removeKeyValue(keys) : false;
}

bool VornStorage::clear() { return live(liveFlag) ? m_host.clear() : false; }

}  // namespace VornDeviceAbstractionLayer
