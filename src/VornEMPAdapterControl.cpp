#include "VornEMPAdapterControl.h"

#include "VornDALImplIF.h"
#include "VornEMPAdapterIF.h"
#include "internal/Lifecycle.h"
#include "internal/Trace.h"

namespace VornDeviceAbstractionLayer {

using internal::live;
using internal::trace;

namespace {

// Each ends where its first argument begins.
constexpr char kGetInstance[] =
    "static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()";
constexpr char kConstructor[] =
    "VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl(VornDeviceAbstractionLayer::VornDALImplIF&)";
constexpr char kCreateInstance[] =
    "static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::VornDALImplIF&)";
constexpr char kLogin[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: ";
constexpr char kLaunchAndPlay[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::launchAndPlay(std::string, std::chrono::milliseconds, std::string): playContextToken: ";
constexpr char kSkipForward[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, std::string): offset: ";
constexpr char kLogout[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::logout(std::string): playerId: ";
constexpr char kNextTrack[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::nextTrack(std::string): playerId: ";
constexpr char kPreviousTrack[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::previousTrack(std::string): playerId: ";
constexpr char kRestartCurrentTrack[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::restartCurrentTrack(std::string): playerId: ";
constexpr char kSetShuffleOn[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setShuffleOn(std::string): playerId: ";
constexpr char kSetShuffleOff[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setShuffleOff(std::string): playerId: ";
constexpr char kResume[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::resume(std::string): playerId: ";
constexpr char kPause[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::pause(std::string): playerId: ";
constexpr char kStop[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::stop(std::string): playerId: ";
constexpr char kSetRepeatAll[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setRepeatAll(std::string): playerId: ";
constexpr char kSetRepeatNone[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setRepeatNone(std::string): playerId: ";
constexpr char kSetRepeatOne[] =
    "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::setRepeatOne(std::string): playerId: ";
constexpr char kGetPlaybackState[] =
    "std::string VornDeviceAbstractionLayer::VornEMPAdapterControl::getPlaybackState(std::string): playerId: ";

/// A duration as the lines show it: std::to_string() knows no locale that could group the digits.
std::string text(std::chrono::milliseconds duration) { return std::to_string(duration.count()) + "ms"; }

/// Whether m_instance is filled, for guards without the lock.
std::atomic<bool> liveFlag{false};

}  // namespace

std::shared_ptr<VornEMPAdapterControl> VornEMPAdapterControl::m_instance;
std::mutex VornEMPAdapterControl::m_mutex;

// Life, which traces everything but Shutdown(): each line before the lock, the constructor's inside it.

std::shared_ptr<VornEMPAdapterControl> VornEMPAdapterControl::CreateInstance(VornDALImplIF& host) {
  trace(kCreateInstance);
  const auto make = [&host] {
    return std::shared_ptr<VornEMPAdapterControl>(new VornEMPAdapterControl(host));
  };
  return internal::obtain(m_mutex, m_instance, make, &liveFlag);
}

std::shared_ptr<VornEMPAdapterControl> VornEMPAdapterControl::getInstance() {
  trace(kGetInstance);
  return internal::current(m_mutex, m_instance);
}

void VornEMPAdapterControl::Shutdown() { internal::drop(m_mutex, m_instance, &liveFlag); }

VornEMPAdapterControl::VornEMPAdapterControl(VornDALImplIF& host) : m_host(host) { trace(kConstructor); }

// Down, unlocked. The line comes first and does not depend on an instance.

bool VornEMPAdapterControl::login(const std::string& accessToken, const std::string& userName,
                                  bool forceLogin, std::chrono::milliseconds refreshInterval,
                                  std::string playerId) {
  trace(kLogin + accessToken + ", userName: " + userName + ", forceLogin: " + (forceLogin ? "1" : "0") +
        ", refreshInterval: " + text(refreshInterval) + ", playerId: " + playerId);
  return live(liveFlag)
             ? m_host.getEMPAdapter()->login(accessToken, userName, forceLogin, refreshInterval, playerId)
             : false;
}

bool VornEMPAdapterControl::logout(std::string playerId) {
  trace(kLogout + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->logout(playerId) : false;
}

bool VornEMPAdapterControl::launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                                          std::string playerId) {
  trace(kLaunchAndPlay + playContextToken + ", offset: " + text(offset) + ", playerId: " + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->launchAndPlay(playContextToken, offset, playerId) : false;
}

bool VornEMPAdapterControl::nextTrack(std::string playerId) {
  trace(kNextTrack + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->nextTrack(playerId) : false;
}

bool VornEMPAdapterControl::previousTrack(std::string playerId) {
  trace(kPreviousTrack + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->previousTrack(playerId) : false;
}

bool VornEMPAdapterControl::restartCurrentTrack(std::string playerId) {
  trace(kRestartCurrentTrack + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->restartCurrentTrack(playerId) : false;
}

bool VornEMPAdapterControl::setShuffleOn(std::string playerId) {
  trace(kSetShuffleOn + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->setShuffleOn(playerId) : false;
}

bool VornEMPAdapterControl::setShuffleOff(std::string playerId) {
  trace(kSetShuffleOff + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->setShuffleOff(playerId) : false;
}

bool VornEMPAdapterControl::resume(std::string playerId) {
  trace(kResume + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->resume(playerId) : false;
}

bool VornEMPAdapterControl::pause(std::string playerId) {
  trace(kPause + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->pause(playerId) : false;
}

bool VornEMPAdapterControl::stop(std::string playerId) {
  trace(kStop + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->stop(playerId) : false;
}

bool VornEMPAdapterControl::skipForward(std::chrono::milliseconds offset, std::string playerId) {
  trace(kSkipForward + text(offset) + ", playerId: " + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->skipForward(offset, playerId) : false;
}

bool VornEMPAdapterControl::setRepeatAll(std::string playerId) {
  trace(kSetRepeatAll + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->setRepeatAll(playerId) : false;
}

bool VornEMPAdapterControl::setRepeatNone(std::string playerId) {
  trace(kSetRepeatNone + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->setRepeatNone(playerId) : false;
}

bool VornEMPAdapterControl::setRepeatOne(std::string playerId) {
  trace(kSetRepeatOne + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->setRepeatOne(playerId) : false;
}

std::string VornEMPAdapterControl::getPlaybackState(std::string playerId) {
  trace(kGetPlaybackState + playerId);
  return live(liveFlag) ? m_host.getEMPAdapter()->getPlaybackState(playerId) : std::string();
}

}  // namespace VornDeviceAbstractionLayer
