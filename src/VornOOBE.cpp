#include "VornOOBE.h"

#include <DeviceAbstractionLayer/AuthorizationStates.h>  // puts copies of its texts here: contract
#include <DeviceAbstractionLayer/OOBE.h>
#include "VornDALImplIF.h"
#include "internal/HotPath.h"
#include "internal/Lifecycle.h"
#include "internal/Trace.h"

namespace VornDeviceAbstractionLayer {

using internal::live;
using internal::trace;

namespace {

constexpr char kCBLInfoLost[] =
    "void VornDeviceAbstractionLayer::VornOOBE::sendCBLInfo(std::string&, std::string&, int64_t&) m_instance is Null";
constexpr char kAuthStatusLost[] =
    "void VornDeviceAbstractionLayer::VornOOBE::alexaAuthStatusChanged(std::string) m_instance is Null";
constexpr char kInitiatedLost[] =
    "void VornDeviceAbstractionLayer::VornOOBE::notifyOOBEInitiated() dalinstance is Null";

// Out of line, so that the string costs what can be delivered neither registers nor a stack guard.
template <std::size_t Size>
[[gnu::noinline, gnu::cold]] void traceLost(const char (&line)[Size]) {
  trace(line);
}

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornOOBE> VornOOBE::m_instance;
std::mutex VornOOBE::m_mutex;

// Life.

std::shared_ptr<VornOOBE> VornOOBE::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::make_shared<VornOOBE>(host); };
  return internal::obtain(m_mutex, m_instance, make, &liveFlag);
}

std::shared_ptr<VornOOBE> VornOOBE::getInstance() { return internal::current(m_mutex, m_instance); }

void VornOOBE::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornOOBE::VornOOBE(VornDALImplIF& host) : m_host(host) {}

// Down, unlocked. Only what cannot be delivered is worth a line.

void VornOOBE::sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) {
  if (live(liveFlag))
    m_host.sendCBLInfo(first, second, number);
  else
    traceLost(kCBLInfoLost);
}

void VornOOBE::alexaAuthStatusChanged(std::string status) {
  if (live(liveFlag))
    m_host.alexaAuthStatusChanged(status);
  else
    traceLost(kAuthStatusLost);
}

// Up: fetched anew on every call, no lock, whether or not there is an instance.

VORN_NO_STACK_GUARD void VornOOBE::notifyOOBEInitiated() {
  if (const auto assistant = DeviceAbstractionLayer::OOBE::getInstance())
    assistant->notifyOOBEInitiated();
  else
    traceLost(kInitiatedLost);
}

VORN_NO_STACK_GUARD void VornOOBE::notifyOOBECancelled() {
  // No line when lost, unlike the start of setup.
  if (const auto assistant = DeviceAbstractionLayer::OOBE::getInstance()) assistant->notifyOOBECancelled();
}

VORN_NO_STACK_GUARD std::string VornOOBE::getAlexaAuthStatus() {
  const auto assistant = DeviceAbstractionLayer::OOBE::getInstance();
  return assistant ? assistant->getAlexaAuthStatus() : std::string();
}

}  // namespace VornDeviceAbstractionLayer
