#include "VornAudioIn.h"

#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/AuthorizationStates.h>  // puts copies of its texts here: contract
#include <DeviceAbstractionLayer/InvocationTypes.h>      // puts copies of its texts here: contract
#include "VornDALImplIF.h"
#include "internal/Lifecycle.h"
#include "internal/Trace.h"

namespace VornDeviceAbstractionLayer {

using internal::live;
using internal::trace;

namespace {

constexpr char kConstructor[] =
    "VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)";
constexpr char kInvocationDetected[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaInvocationDetected(std::string) calling xApp API";
constexpr char kHandsFreeState[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::setAlexaHandsFreeState(bool) calling xApp API";
constexpr char kButtonPress[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaButtonPress(std::string, std::chrono::milliseconds) calling xApp API";
constexpr char kButtonReleased[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::notifyAlexaButtonReleased() calling xApp API";
constexpr char kSearch[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData(std::vector<short int>&) calling AudioInHelper getInstance ";
constexpr char kSearchFailed[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData(std::vector<short int>&) dalInstance is NULL";
constexpr char kBuffer[] =
    "void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData(std::vector<short int>&) calling xApp API count=";

// Out of line, so that the string costs the hot path neither registers nor a stack guard.
[[gnu::noinline, gnu::cold]] void traceBuffer(int count) { trace(kBuffer + std::to_string(count)); }

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornAudioIn> VornAudioIn::m_instance;
std::mutex VornAudioIn::m_mutex;

// Life.

std::shared_ptr<VornAudioIn> VornAudioIn::CreateInstance(VornDALImplIF& host) {
  const auto make = [&host] { return std::shared_ptr<VornAudioIn>(new VornAudioIn(host)); };
  return internal::obtain(m_mutex, m_instance, make, &liveFlag);
}

std::shared_ptr<VornAudioIn> VornAudioIn::getInstance() { return internal::current(m_mutex, m_instance); }

void VornAudioIn::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornAudioIn::VornAudioIn(VornDALImplIF& host) : m_host(host) { trace(kConstructor); }

// Down, unlocked. The lines name the xApp although the host is called; trace readers rely on them.

bool VornAudioIn::startStreamingAudioData() {
  return live(liveFlag) ? m_host.startStreamingAudioData() : false;
}

void VornAudioIn::stopStreamingAudioData() {
  if (live(liveFlag)) m_host.stopStreamingAudioData();
}

bool VornAudioIn::isMicrophoneAvailable() { return live(liveFlag) ? m_host.isMicrophoneAvailable() : false; }

void VornAudioIn::notifyAlexaInvocationDetected(std::string invocationType) {
  if (!live(liveFlag)) return;
  trace(kInvocationDetected);
  m_host.notifyAlexaInvocationDetected(invocationType);
}

void VornAudioIn::setAlexaHandsFreeState(bool enabled) {
  if (!live(liveFlag)) return;
  trace(kHandsFreeState);
  m_host.setAlexaHandsFreeState(enabled);
}

// Up: fetched anew on every call, no lock, whether or not there is an instance.

void VornAudioIn::notifyAlexaButtonPress(std::string type, std::chrono::milliseconds duration) {
  const auto assistant = DeviceAbstractionLayer::AudioIn::getInstance();
  if (assistant) {
    trace(kButtonPress);
    assistant->notifyAlexaButtonPress(type, duration);
  }
  if (live(liveFlag)) m_host.notifyAlexaInvocationDetected("AlexaButtonPress");
}

void VornAudioIn::notifyAlexaButtonReleased() {
  if (const auto assistant = DeviceAbstractionLayer::AudioIn::getInstance()) {
    trace(kButtonReleased);
    assistant->notifyAlexaButtonReleased();
  }
}

// Up, the hot path: the assistant-side object is kept for the life of the process, by design, so that a
// buffer costs no search, no lock and no reference count. One thread delivers the audio.

void VornAudioIn::sendAudioData(std::vector<short>& samples) {
  static int count = 1;
  // What dalInstance holds, without its one-time guard.
  static DeviceAbstractionLayer::AudioIn* found = nullptr;

  const auto search = []() __attribute__((noinline, cold)) {
    static std::shared_ptr<DeviceAbstractionLayer::AudioIn> dalInstance;
    trace(kSearch + std::to_string(count));
    dalInstance = DeviceAbstractionLayer::AudioIn::getInstance();
    if (!dalInstance) trace(kSearchFailed);
    return dalInstance.get();
  };

  if (!found) found = search();
  if (found) {
    if (count <= 5 || count % 10000 == 0) traceBuffer(count);
    found->sendAudioData(samples);
  }
  count = static_cast<int>(static_cast<unsigned>(count) + 1U);  // Wraps: trace readers know the number.
}

}  // namespace VornDeviceAbstractionLayer
