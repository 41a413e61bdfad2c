#include "VornAudioFocus.h"

#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::live;

namespace {

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornAudioFocus> VornAudioFocus::m_instance;
std::mutex VornAudioFocus::m_mutex;

// Life.

std::shared_ptr<VornAudioFocus> VornAudioFocus::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornAudioFocus>(new VornAudioFocus(host)); };
  return internal::obtain(m_mutex, m_instance, make, &liveFlag);
}

std::shared_ptr<VornAudioFocus> VornAudioFocus::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornAudioFocus::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornAudioFocus::VornAudioFocus(VornDALImplIF& host) : m_host(host) {}

// Down, unlocked.

bool VornAudioFocus::requestAudioFocus() { return live(liveFlag) ? m_host.requestAudioFocus() : false; }

bool VornAudioFocus::releaseAudioFocus() { return live(liveFlag) ? m_host.releaseAudioFocus() : false; }

}  // namespace VornDeviceAbstractionLayer
