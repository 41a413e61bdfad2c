#include "VornAudioFocus.h"

#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::live;

std::shared_ptr<VornAudioFocus> VornAudioFocus::m_instance;
std::mutex VornAudioFocus::m_mutex;
std::atomic<bool> VornAudioFocus::m_live{false};

// Life.

std::shared_ptr<VornAudioFocus> VornAudioFocus::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornAudioFocus>(new VornAudioFocus(host)); };
  return internal::obtain(m_mutex, m_instance, make, &m_live);
}

std::shared_ptr<VornAudioFocus> VornAudioFocus::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornAudioFocus::Shutdown() { internal::drop(m_mutex, m_instance, &m_live); }

VornAudioFocus::VornAudioFocus(VornDALImplIF& host) : m_host(host) {}

// Down, unlocked.

bool VornAudioFocus::requestAudioFocus() { return live(m_live) ? m_host.requestAudioFocus() : false; }

bool VornAudioFocus::releaseAudioFocus() { return live(m_live) ? m_host.releaseAudioFocus() : false; }

}  // namespace VornDeviceAbstractionLayer
