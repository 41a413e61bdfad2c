#include "VornAlexaState.h"

#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::live;

namespace {

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornAlexaState> VornAlexaState::m_instance;
std::mutex VornAlexaState::m_mutex;

// Life.

std::shared_ptr<VornAlexaState> VornAlexaState::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornAlexaState>(new VornAlexaState(host)); };
  return internal::obtain(m_mutex, m_instance, make, &liveFlag);
}

std::shared_ptr<VornAlexaState> VornAlexaState::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornAlexaState::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornAlexaState::VornAlexaState(VornDALImplIF& host) : m_host(host) {}

// Down, unlocked.

void VornAlexaState::alexaStateChanged(std::string state) {
  if (live(liveFlag)) m_host.alexaStateChanged(state);
}

void VornAlexaState::dialogUXStateChanged(std::string state) {
  if (live(liveFlag)) m_host.dialogUXStateChanged(state);
}

void VornAlexaState::notifyMainAppInitialized() {
  if (live(liveFlag)) m_host.notifyMainAppInitialized();
}

}  // namespace VornDeviceAbstractionLayer
