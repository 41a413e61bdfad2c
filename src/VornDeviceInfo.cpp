#include "VornDeviceInfo.h"

#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/DeviceInfoConstants.h>  // puts copies of its texts here: contract
#include "VornDALImplIF.h"
#include "internal/HotPath.h"
#include "internal/Lifecycle.h"

namespace VornDeviceAbstractionLayer {

using internal::live;
using internal::Lock;

namespace {

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornDeviceInfo> VornDeviceInfo::m_instance;
std::mutex VornDeviceInfo::m_mutex;

// Life.

std::shared_ptr<VornDeviceInfo> VornDeviceInfo::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornDeviceInfo>(new VornDeviceInfo(host)); };
  return internal::obtain(m_mutex, m_instance, make, &liveFlag);
}

std::shared_ptr<VornDeviceInfo> VornDeviceInfo::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornDeviceInfo::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornDeviceInfo::VornDeviceInfo(VornDALImplIF& host) : m_host(host) {}

// Down, locked: the host call runs under m_mutex.

VORN_NO_STACK_GUARD std::string VornDeviceInfo::getDeviceLocale() {
  const Lock lock(m_mutex);
  return m_instance ? m_host.getDeviceLocale() : std::string();
}

void VornDeviceInfo::changeAlexaLocale(std::string locale) {
  const Lock lock(m_mutex);
  if (m_instance) m_host.changeAlexaLocale(locale);
}

VORN_NO_STACK_GUARD std::string VornDeviceInfo::getTimezone() {
  const Lock lock(m_mutex);
  return m_instance ? m_host.getTimezone() : std::string();
}

VORN_NO_STACK_GUARD std::map<std::string, std::string> VornDeviceInfo::getDeviceInformation() {
  const Lock lock(m_mutex);
  return m_instance ? m_host.getDeviceInformation() : std::map<std::string, std::string>();
}

bool VornDeviceInfo::getNetworkConnectionStatus() {
  const Lock lock(m_mutex);
  return m_instance ? m_host.getNetworkConnectionStatus() : false;
}

void VornDeviceInfo::updateInternetConnectionStatus(bool connected) {
  const Lock lock(m_mutex);
  if (m_instance) m_host.updateInternetConnectionStatus(connected);
}

std::string VornDeviceInfo::getConfigData(std::string key) {
  const Lock lock(m_mutex);
  return m_instance ? m_host.getConfigData(key) : std::string();
}

bool VornDeviceInfo::setSystemSetting(std::string key, std::string value) {
  const Lock lock(m_mutex);
  return m_instance ? m_host.setSystemSetting(key, value) : false;
}

int VornDeviceInfo::getVolume() {
  const Lock lock(m_mutex);
  return m_instance ? m_host.getVolume() : 0;
}

bool VornDeviceInfo::getMuteStatus() {
  const Lock lock(m_mutex);
  return m_instance ? m_host.getMuteStatus() : false;
}

// Down, unlocked.

bool VornDeviceInfo::getSystemSetting(std::string key, std::string& value) {
  return live(liveFlag) ? m_host.getSystemSetting(key, value) : false;
}

VORN_NO_STACK_GUARD std::string VornDeviceInfo::getVSKCapabilities() {
  return live(liveFlag) ? m_host.getVSKCapabilities() : std::string("[]");
}

// Up: fetched anew on every call, no lock, whether or not there is an instance.

VORN_NO_STACK_GUARD void VornDeviceInfo::notifyVolumeChanged(int volume) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
    assistant->notifyVolumeChanged(volume);
}

VORN_NO_STACK_GUARD void VornDeviceInfo::notifyMuteChanged(bool muted) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
    assistant->notifyMuteChanged(muted);
}

VORN_NO_STACK_GUARD void VornDeviceInfo::notifyHandsfreeStateChanged(bool state) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
    assistant->notifyHandsfreeStateChanged(state);
}

void VornDeviceInfo::notifyMicrophoneAvailabilityChanged(std::string availability) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
    assistant->notifyMicrophoneAvailabilityChanged(availability);
}

void VornDeviceInfo::notifySystemSettingChanged(std::string key, std::string value) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
    assistant->notifySystemSettingChanged(key, value);
}

void VornDeviceInfo::notifyLocaleChange(std::string locale) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
    assistant->notifyLocaleChange(locale);
}

void VornDeviceInfo::notifyNetworkConnectionChanged(std::string status) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
    assistant->notifyNetworkConnectionChanged(status);
}

void VornDeviceInfo::notifyLocaleChange(std::vector<std::string> locales) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
    assistant->notifyLocaleChange(locales);
}

}  // namespace VornDeviceAbstractionLayer
