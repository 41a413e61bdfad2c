#include "VornDeviceCapabilities.h"

#include <DeviceAbstractionLayer/DeviceCapabilities.h>
#include "VornDALImplIF.h"
#include "internal/HotPath.h"
#include "internal/Lifecycle.h"
#include "internal/Trace.h"

namespace VornDeviceAbstractionLayer {

using internal::live;
using internal::Lock;
using internal::trace;

namespace {

using Result = std::pair<bool, std::string>;

constexpr char kCreateInstance[] =
    "static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)";
constexpr char kConstructor[] =
    "VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities(VornDeviceAbstractionLayer::VornDALImplIF&)";
constexpr char kSetVolume[] =
    "std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onSetVolume(int)";
constexpr char kAdjustVolume[] =
    "std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onAdjustVolume(int)";
constexpr char kMute[] =
    "std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::onMute(bool)";

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornDeviceCapabilities> VornDeviceCapabilities::m_instance;
std::mutex VornDeviceCapabilities::m_mutex;

// Life, which traces creation: under the lock, and on every call.

std::shared_ptr<VornDeviceCapabilities> VornDeviceCapabilities::CreateInstance(VornDALImplIF& host) {
  const Lock lock(m_mutex);
  trace(kCreateInstance);
  if (!m_instance) {
    m_instance = std::shared_ptr<VornDeviceCapabilities>(new VornDeviceCapabilities(host));
    liveFlag.store(true, std::memory_order_release);
  }
  return m_instance;
}

std::shared_ptr<VornDeviceCapabilities> VornDeviceCapabilities::getInstance() {
  return internal::current(m_mutex, m_instance);
}

void VornDeviceCapabilities::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornDeviceCapabilities::VornDeviceCapabilities(VornDALImplIF& host) : m_host(host) { trace(kConstructor); }

// Down, unlocked. Without an instance a directive counts as carried out.

Result VornDeviceCapabilities::onChangeChannel(std::string channel) {
  return live(liveFlag) ? m_host.onChangeChannel(channel) : Result{true, ""};
}

bool VornDeviceCapabilities::onInputChange(const std::string& input) {
  return live(liveFlag) ? m_host.onInputChange(input) : true;
}

VORN_NO_STACK_GUARD Result VornDeviceCapabilities::onSkipChannel(int count) {
  return live(liveFlag) ? m_host.onSkipChannel(count) : Result{true, ""};
}

Result VornDeviceCapabilities::onSendKeystroke(std::string keystroke) {
  return live(liveFlag) ? m_host.onSendKeystroke(keystroke) : Result{true, ""};
}

Result VornDeviceCapabilities::onChangePlaybackPlay(std::string payload) {
  return live(liveFlag) ? m_host.onChangePlaybackPlay(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onChangePlaybackPause(std::string payload) {
  return live(liveFlag) ? m_host.onChangePlaybackPause(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onChangePlaybackStop(std::string payload) {
  return live(liveFlag) ? m_host.onChangePlaybackStop(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onChangePlaybackStartOver(std::string payload) {
  return live(liveFlag) ? m_host.onChangePlaybackStartOver(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onChangePlaybackPrevious(std::string payload) {
  return live(liveFlag) ? m_host.onChangePlaybackPrevious(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onChangePlaybackNext(std::string payload) {
  return live(liveFlag) ? m_host.onChangePlaybackNext(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onChangePlaybackRewind(std::string payload) {
  return live(liveFlag) ? m_host.onChangePlaybackRewind(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onChangePlaybackFastForward(std::string payload) {
  return live(liveFlag) ? m_host.onChangePlaybackFastForward(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onSearchAndPlay(std::string payload) {
  return live(liveFlag) ? m_host.onSearchAndPlay(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onSearchAndDisplayResults(std::string payload) {
  return live(liveFlag) ? m_host.onSearchAndDisplayResults(payload) : Result{true, ""};
}

Result VornDeviceCapabilities::onSetMode(std::string mode, std::string value) {
  return live(liveFlag) ? m_host.onSetMode(mode, value) : Result{true, ""};
}

Result VornDeviceCapabilities::onAdjustMode(std::string mode, int delta) {
  return live(liveFlag) ? m_host.onAdjustMode(mode, delta) : Result{true, ""};
}

VORN_NO_STACK_GUARD Result VornDeviceCapabilities::onSetPowerState(bool on) {
  return live(liveFlag) ? m_host.onSetPowerState(on) : Result{true, ""};
}

Result VornDeviceCapabilities::onSetPowerState(bool on, std::string target) {
  return live(liveFlag) ? m_host.onSetPowerState(on, target) : Result{true, ""};
}

VORN_NO_STACK_GUARD Result VornDeviceCapabilities::onSetRangeValue(double value) {
  return live(liveFlag) ? m_host.onSetRangeValue(value) : Result{true, ""};
}

VORN_NO_STACK_GUARD Result VornDeviceCapabilities::onAdjustRangeValue(double delta) {
  return live(liveFlag) ? m_host.onAdjustRangeValue(delta) : Result{true, ""};
}

Result VornDeviceCapabilities::onSetToggleState(std::string toggle, std::string state) {
  return live(liveFlag) ? m_host.onSetToggleState(toggle, state) : Result{true, ""};
}

Result VornDeviceCapabilities::onLaunchTarget(std::string target) {
  return live(liveFlag) ? m_host.onLaunchTarget(target) : Result{true, ""};
}

VORN_NO_STACK_GUARD Result VornDeviceCapabilities::onStartRecording() {
  return live(liveFlag) ? m_host.onStartRecording() : Result{true, ""};
}

VORN_NO_STACK_GUARD Result VornDeviceCapabilities::onStopRecording() {
  return live(liveFlag) ? m_host.onStopRecording() : Result{true, ""};
}

VORN_NO_STACK_GUARD Result VornDeviceCapabilities::onAdjustSeekPosition(int delta) {
  return live(liveFlag) ? m_host.onAdjustSeekPosition(delta) : Result{true, ""};
}

Result VornDeviceCapabilities::onSetVolume(int volume) {
  trace(kSetVolume);
  return live(liveFlag) ? m_host.onSetVolume(volume) : Result{true, ""};
}

Result VornDeviceCapabilities::onAdjustVolume(int delta) {
  trace(kAdjustVolume);
  return live(liveFlag) ? m_host.onAdjustVolume(delta) : Result{true, ""};
}

Result VornDeviceCapabilities::onMute(bool mute) {
  trace(kMute);
  return live(liveFlag) ? m_host.onMute(mute) : Result{true, ""};
}

// Up: fetched anew on every call, no lock, whether or not there is an instance.

void VornDeviceCapabilities::notifyFriendlyNameChange(std::string friendlyName) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceCapabilities::getInstance())
    assistant->notifyFriendlyNameChange(friendlyName);
}

void VornDeviceCapabilities::notifyUpdatedAssociation(std::string first, std::string second) {
  if (const auto assistant = DeviceAbstractionLayer::DeviceCapabilities::getInstance())
    assistant->notifyUpdatedAssociation(first, second);
}

}  // namespace VornDeviceAbstractionLayer
