#include "vorn_testing/DoctorHost.h"

#include <VornAlexaState.h>
#include <VornAppMessaging.h>
#include <VornAudioFocus.h>
#include <VornAudioIn.h>
#include <VornCommsManager.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornLoggerObserver.h>
#include <VornOOBE.h>
#include <VornStorage.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "Lent.h"
#include "LockWatch.h"

namespace vorn_testing {

using VornDeviceAbstractionLayer::VornDALImplIF;
using VornDeviceAbstractionLayer::VornEMPAdapterIF;

namespace {

std::mutex g_doctorsMutex;
std::vector<const DoctorHost::OnFinding*> g_doctors;

/// The host operations that run on this thread, outermost first.
thread_local std::vector<const char*> t_running;

void printAndAbort(const Finding& finding) {
  std::fputs(describe(finding).c_str(), stderr);
  std::abort();
}

void onWait(const Wait& wait) {
  const std::string who = t_running.empty() ? "This thread" : std::string(t_running.back()) + "()";
  const bool own = wait.other.empty();
  DoctorHost::report(
      {own ? Finding::kReentry : Finding::kLockOrder,
       who + " asks for " + wait.mutex +
           (own ? ", which its own thread holds." : ", whose holder waits for " + wait.other + "."),
       wait.here.lines(), wait.before.lines()});
}

void onKept(const char* operation, const Stack& call) {
  DoctorHost::report({Finding::kReferenceKept,
                      std::string("An argument of ") + operation + "() was touched after the call.",
                      Stack::here().lines(), call.lines()});
}

template <class Adapter>
void addHolder(const VornDALImplIF& host, std::string& names) {
  static_assert(sizeof(Adapter) == sizeof(void*), "an adapter is the reference to its host and nothing else");
  const auto adapter = Adapter::getInstance();
  if (adapter && *reinterpret_cast<const VornDALImplIF* const*>(adapter.get()) == &host)
    names += (names.empty() ? "" : ", ") +
             demangled(typeid(Adapter).name()).substr(sizeof "VornDeviceAbstractionLayer:");
}

template <class... Adapters>
std::string holders(const VornDALImplIF& host) {
  std::string names;
  (addHolder<Adapters>(host, names), ...);
  return names;
}

std::string adaptersThatHold(const VornDALImplIF& host) {
  using namespace VornDeviceAbstractionLayer;
  return holders<VornAlexaState, VornAppMessaging, VornAudioFocus, VornAudioIn, VornCommsManager,
                 VornDeviceCapabilities, VornDeviceInfo, VornEMPAdapterControl, VornGUIOutput,
                 VornLEDController, VornLoggerObserver, VornOOBE, VornStorage>(host);
}

}  // namespace

const char* ruleText(Finding::Rule rule) {
  switch (rule) {
    case Finding::kReentry:
      return "A locked operation holds its adapter's mutex until the other side returns. From inside, call no locked "
             "operation, CreateInstance(), getInstance() or Shutdown() of the same adapter: hand that work to another "
             "thread, or do it after the return.";
    case Finding::kLockOrder:
      return "Where mutexes of the library nest, every thread takes them in one order: a message may go up from inside "
             "one that goes down, not the other way round. Inside a locked operation, wait for no thread that calls "
             "into it.";
    case Finding::kHostDestroyed:
      return "A host outlives every call: shut all adapters down, join the threads that call them, then destroy it.";
    case Finding::kNullPlayer:
      return "getEMPAdapter() never answers null: the library uses the pointer untested. Without a player, hand out one "
             "that answers false.";
    case Finding::kNotLive:
      return "Adapters serve between CreateInstance() and Shutdown(). Outside, calls are dropped and answered by "
             "defaults: create earlier, or stop calling before the shutdown.";
    case Finding::kReferenceKept:
      return "An argument that comes by reference is the caller's own, and ends with the call: copy what you need.";
  }
  return "";
}

std::string describe(const Finding& finding) {
  std::string text =
      "vorn doctor: " + finding.message + "\n  rule: " + ruleText(finding.rule) + "\n  here:\n";
  for (const auto& line : finding.here) text += "    " + line + "\n";
  if (!finding.before.empty()) text += "  before:\n";
  for (const auto& line : finding.before) text += "    " + line + "\n";
  return text;
}

void DoctorHost::report(const Finding& finding) {
  OnFinding onFinding = printAndAbort;
  {
    const std::lock_guard<std::mutex> lock(g_doctorsMutex);
    if (!g_doctors.empty()) onFinding = *g_doctors.back();
  }
  onFinding(finding);
}

void reportNotLive(const std::type_info& adapter, bool kept) {
  DoctorHost::report({Finding::kNotLive,
                      demangled(adapter.name()) +
                          (kept ? " was used after its shutdown." : " was used before its creation."),
                      Stack::here().lines(),
                      {}});
}

/// Marks an operation as running, on its thread and for its host.
class DoctorHost::Call {
 public:
  Call(DoctorHost& host, const char* operation) : m_host(host) {
    t_running.push_back(operation);
    ++m_host.m_running;
  }
  ~Call() {
    --m_host.m_running;
    t_running.pop_back();
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

 private:
  DoctorHost& m_host;
};

/// The same for the player's operations, which are calls of its host too.
class DoctorHost::Player : public ForwardingPlayer {
 public:
  Player(DoctorHost& host, VornEMPAdapterIF& inner) : ForwardingPlayer(inner), m_host(host) {}

  bool login(const std::string& accessToken, const std::string& userName, bool forceLogin,
             std::chrono::milliseconds refreshInterval, std::string playerId) override {
    const Call call(m_host, "login");
    Lent<std::string> lentToken(accessToken, "login");
    Lent<std::string> lentName(userName, "login");
    return ForwardingPlayer::login(lentToken.get(), lentName.get(), forceLogin, refreshInterval,
                                   std::move(playerId));
  }
  bool logout(std::string playerId) override {
    const Call call(m_host, "logout");
    return ForwardingPlayer::logout(std::move(playerId));
  }
  bool launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                     std::string playerId) override {
    const Call call(m_host, "launchAndPlay");
    return ForwardingPlayer::launchAndPlay(std::move(playContextToken), offset, std::move(playerId));
  }
  bool nextTrack(std::string playerId) override {
    const Call call(m_host, "nextTrack");
    return ForwardingPlayer::nextTrack(std::move(playerId));
  }
  bool previousTrack(std::string playerId) override {
    const Call call(m_host, "previousTrack");
    return ForwardingPlayer::previousTrack(std::move(playerId));
  }
  bool restartCurrentTrack(std::string playerId) override {
    const Call call(m_host, "restartCurrentTrack");
    return ForwardingPlayer::restartCurrentTrack(std::move(playerId));
  }
  bool setShuffleOn(std::string playerId) override {
    const Call call(m_host, "setShuffleOn");
    return ForwardingPlayer::setShuffleOn(std::move(playerId));
  }
  bool setShuffleOff(std::string playerId) override {
    const Call call(m_host, "setShuffleOff");
    return ForwardingPlayer::setShuffleOff(std::move(playerId));
  }
  bool resume(std::string playerId) override {
    const Call call(m_host, "resume");
    return ForwardingPlayer::resume(std::move(playerId));
  }
  bool pause(std::string playerId) override {
    const Call call(m_host, "pause");
    return ForwardingPlayer::pause(std::move(playerId));
  }
  bool stop(std::string playerId) override {
    const Call call(m_host, "stop");
    return ForwardingPlayer::stop(std::move(playerId));
  }
  bool skipForward(std::chrono::milliseconds offset, std::string playerId) override {
    const Call call(m_host, "skipForward");
    return ForwardingPlayer::skipForward(offset, std::move(playerId));
  }
  bool setRepeatAll(std::string playerId) override {
    const Call call(m_host, "setRepeatAll");
    return ForwardingPlayer::setRepeatAll(std::move(playerId));
  }
  bool setRepeatNone(std::string playerId) override {
    const Call call(m_host, "setRepeatNone");
    return ForwardingPlayer::setRepeatNone(std::move(playerId));
  }
  bool setRepeatOne(std::string playerId) override {
    const Call call(m_host, "setRepeatOne");
    return ForwardingPlayer::setRepeatOne(std::move(playerId));
  }
  std::string getPlaybackState(std::string playerId) override {
    const Call call(m_host, "getPlaybackState");
    return ForwardingPlayer::getPlaybackState(std::move(playerId));
  }

 private:
  DoctorHost& m_host;
};

DoctorHost::DoctorHost(VornDALImplIF& inner, OnFinding onFinding)
    : ForwardingHost(inner),
      m_onFinding(onFinding ? std::move(onFinding) : OnFinding(printAndAbort)),
      m_running(0) {
  const std::lock_guard<std::mutex> lock(g_doctorsMutex);
  g_doctors.push_back(&m_onFinding);
  watchLocks(onWait);
  watchLent(onKept);
}

DoctorHost::~DoctorHost() {
  const auto early = [&](const std::string& why) {
    m_onFinding(
        {Finding::kHostDestroyed, "The host is destroyed while " + why + ".", Stack::here().lines(), {}});
  };
  if (m_running)  // their adapters may be locked, so do not ask them
    early("calls into it run: " + std::to_string(m_running));
  else if (const std::string names = adaptersThatHold(*this); !names.empty())
    early("adapters hold it: " + names);
  const std::lock_guard<std::mutex> lock(g_doctorsMutex);
  g_doctors.erase(std::find(g_doctors.begin(), g_doctors.end(), &m_onFinding));
  if (g_doctors.empty()) watchLocks(nullptr);
}

VornEMPAdapterIF* DoctorHost::getEMPAdapter() {
  const Call call(*this, "getEMPAdapter");
  VornEMPAdapterIF* const player = ForwardingHost::getEMPAdapter();
  if (!player) {
    m_onFinding({Finding::kNullPlayer, "getEMPAdapter() answered null.", Stack::here().lines(), {}});
    return &m_nullPlayer;
  }
  const std::lock_guard<std::mutex> lock(m_playersMutex);
  auto& doctored = m_players[player];
  if (!doctored) doctored = std::make_shared<Player>(*this, *player);
  return doctored.get();
}

void DoctorHost::alexaStateChanged(std::string state) {
  const Call call(*this, "alexaStateChanged");
  return ForwardingHost::alexaStateChanged(std::move(state));
}

void DoctorHost::dialogUXStateChanged(std::string state) {
  const Call call(*this, "dialogUXStateChanged");
  return ForwardingHost::dialogUXStateChanged(std::move(state));
}

void DoctorHost::notifyMainAppInitialized() {
  const Call call(*this, "notifyMainAppInitialized");
  return ForwardingHost::notifyMainAppInitialized();
}

bool DoctorHost::requestAudioFocus() {
  const Call call(*this, "requestAudioFocus");
  return ForwardingHost::requestAudioFocus();
}

bool DoctorHost::releaseAudioFocus() {
  const Call call(*this, "releaseAudioFocus");
  return ForwardingHost::releaseAudioFocus();
}

bool DoctorHost::startStreamingAudioData() {
  const Call call(*this, "startStreamingAudioData");
  return ForwardingHost::startStreamingAudioData();
}

void DoctorHost::stopStreamingAudioData() {
  const Call call(*this, "stopStreamingAudioData");
  return ForwardingHost::stopStreamingAudioData();
}

bool DoctorHost::isMicrophoneAvailable() {
  const Call call(*this, "isMicrophoneAvailable");
  return ForwardingHost::isMicrophoneAvailable();
}

void DoctorHost::setAlexaHandsFreeState(bool enabled) {
  const Call call(*this, "setAlexaHandsFreeState");
  return ForwardingHost::setAlexaHandsFreeState(enabled);
}

void DoctorHost::notifyAlexaInvocationDetected(std::string invocationType) {
  const Call call(*this, "notifyAlexaInvocationDetected");
  return ForwardingHost::notifyAlexaInvocationDetected(std::move(invocationType));
}

int DoctorHost::getVolume() {
  const Call call(*this, "getVolume");
  return ForwardingHost::getVolume();
}

bool DoctorHost::getMuteStatus() {
  const Call call(*this, "getMuteStatus");
  return ForwardingHost::getMuteStatus();
}

std::string DoctorHost::getTimezone() {
  const Call call(*this, "getTimezone");
  return ForwardingHost::getTimezone();
}

std::string DoctorHost::getDeviceLocale() {
  const Call call(*this, "getDeviceLocale");
  return ForwardingHost::getDeviceLocale();
}

void DoctorHost::changeAlexaLocale(std::string locale) {
  const Call call(*this, "changeAlexaLocale");
  return ForwardingHost::changeAlexaLocale(std::move(locale));
}

std::map<std::string, std::string> DoctorHost::getDeviceInformation() {
  const Call call(*this, "getDeviceInformation");
  return ForwardingHost::getDeviceInformation();
}

bool DoctorHost::getNetworkConnectionStatus() {
  const Call call(*this, "getNetworkConnectionStatus");
  return ForwardingHost::getNetworkConnectionStatus();
}

void DoctorHost::updateInternetConnectionStatus(bool connected) {
  const Call call(*this, "updateInternetConnectionStatus");
  return ForwardingHost::updateInternetConnectionStatus(connected);
}

std::string DoctorHost::getConfigData(std::string key) {
  const Call call(*this, "getConfigData");
  return ForwardingHost::getConfigData(std::move(key));
}

bool DoctorHost::getSystemSetting(std::string key, std::string& value) {
  const Call call(*this, "getSystemSetting");
  Lent<std::string> lentValue(value, "getSystemSetting");
  return ForwardingHost::getSystemSetting(std::move(key), lentValue.get());
}

bool DoctorHost::setSystemSetting(std::string key, std::string value) {
  const Call call(*this, "setSystemSetting");
  return ForwardingHost::setSystemSetting(std::move(key), std::move(value));
}

std::string DoctorHost::getVSKCapabilities() {
  const Call call(*this, "getVSKCapabilities");
  return ForwardingHost::getVSKCapabilities();
}

bool DoctorHost::open() {
  const Call call(*this, "open");
  return ForwardingHost::open();
}

std::map<std::string, std::string> DoctorHost::readKeyValue(const std::string& key) {
  const Call call(*this, "readKeyValue");
  Lent<std::string> lentKey(key, "readKeyValue");
  return ForwardingHost::readKeyValue(lentKey.get());
}

bool DoctorHost::writeKeyValue(std::map<std::string, std::string> entries) {
  const Call call(*this, "writeKeyValue");
  return ForwardingHost::writeKeyValue(std::move(entries));
}

bool DoctorHost::removeKeyValue(const std::vector<std::string>& keys) {
  const Call call(*this, "removeKeyValue");
  Lent<std::vector<std::string>> lentKeys(keys, "removeKeyValue");
  return ForwardingHost::removeKeyValue(lentKeys.get());
}

bool DoctorHost::clear() {
  const Call call(*this, "clear");
  return ForwardingHost::clear();
}

void DoctorHost::onLogEmitted(const std::string& first, const std::string& second) {
  const Call call(*this, "onLogEmitted");
  Lent<std::string> lentFirst(first, "onLogEmitted");
  Lent<std::string> lentSecond(second, "onLogEmitted");
  return ForwardingHost::onLogEmitted(lentFirst.get(), lentSecond.get());
}

void DoctorHost::sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) {
  const Call call(*this, "sendCBLInfo");
  Lent<std::string> lentFirst(first, "sendCBLInfo");
  Lent<std::string> lentSecond(second, "sendCBLInfo");
  Lent<std::int64_t> lentNumber(number, "sendCBLInfo");
  return ForwardingHost::sendCBLInfo(lentFirst.get(), lentSecond.get(), lentNumber.get());
}

void DoctorHost::alexaAuthStatusChanged(std::string status) {
  const Call call(*this, "alexaAuthStatusChanged");
  return ForwardingHost::alexaAuthStatusChanged(std::move(status));
}

void DoctorHost::sendAppMessage(std::string first, std::string second, std::string third) {
  const Call call(*this, "sendAppMessage");
  return ForwardingHost::sendAppMessage(std::move(first), std::move(second), std::move(third));
}

int DoctorHost::setAnimation(std::vector<std::string> animations) {
  const Call call(*this, "setAnimation");
  return ForwardingHost::setAnimation(std::move(animations));
}

std::pair<bool, std::string> DoctorHost::onChangeChannel(std::string channel) {
  const Call call(*this, "onChangeChannel");
  return ForwardingHost::onChangeChannel(std::move(channel));
}

bool DoctorHost::onInputChange(const std::string& input) {
  const Call call(*this, "onInputChange");
  Lent<std::string> lentInput(input, "onInputChange");
  return ForwardingHost::onInputChange(lentInput.get());
}

std::pair<bool, std::string> DoctorHost::onSkipChannel(int count) {
  const Call call(*this, "onSkipChannel");
  return ForwardingHost::onSkipChannel(count);
}

std::pair<bool, std::string> DoctorHost::onSendKeystroke(std::string keystroke) {
  const Call call(*this, "onSendKeystroke");
  return ForwardingHost::onSendKeystroke(std::move(keystroke));
}

std::pair<bool, std::string> DoctorHost::onChangePlaybackPlay(std::string payload) {
  const Call call(*this, "onChangePlaybackPlay");
  return ForwardingHost::onChangePlaybackPlay(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onChangePlaybackPause(std::string payload) {
  const Call call(*this, "onChangePlaybackPause");
  return ForwardingHost::onChangePlaybackPause(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onChangePlaybackStop(std::string payload) {
  const Call call(*this, "onChangePlaybackStop");
  return ForwardingHost::onChangePlaybackStop(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onChangePlaybackStartOver(std::string payload) {
  const Call call(*this, "onChangePlaybackStartOver");
  return ForwardingHost::onChangePlaybackStartOver(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onChangePlaybackPrevious(std::string payload) {
  const Call call(*this, "onChangePlaybackPrevious");
  return ForwardingHost::onChangePlaybackPrevious(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onChangePlaybackNext(std::string payload) {
  const Call call(*this, "onChangePlaybackNext");
  return ForwardingHost::onChangePlaybackNext(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onChangePlaybackRewind(std::string payload) {
  const Call call(*this, "onChangePlaybackRewind");
  return ForwardingHost::onChangePlaybackRewind(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onChangePlaybackFastForward(std::string payload) {
  const Call call(*this, "onChangePlaybackFastForward");
  return ForwardingHost::onChangePlaybackFastForward(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onSearchAndPlay(std::string payload) {
  const Call call(*this, "onSearchAndPlay");
  return ForwardingHost::onSearchAndPlay(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onSearchAndDisplayResults(std::string payload) {
  const Call call(*this, "onSearchAndDisplayResults");
  return ForwardingHost::onSearchAndDisplayResults(std::move(payload));
}

std::pair<bool, std::string> DoctorHost::onSetMode(std::string mode, std::string value) {
  const Call call(*this, "onSetMode");
  return ForwardingHost::onSetMode(std::move(mode), std::move(value));
}

std::pair<bool, std::string> DoctorHost::onAdjustMode(std::string mode, int delta) {
  const Call call(*this, "onAdjustMode");
  return ForwardingHost::onAdjustMode(std::move(mode), delta);
}

std::pair<bool, std::string> DoctorHost::onSetPowerState(bool on) {
  const Call call(*this, "onSetPowerState");
  return ForwardingHost::onSetPowerState(on);
}

std::pair<bool, std::string> DoctorHost::onSetPowerState(bool on, std::string target) {
  const Call call(*this, "onSetPowerState");
  return ForwardingHost::onSetPowerState(on, std::move(target));
}

std::pair<bool, std::string> DoctorHost::onSetRangeValue(double value) {
  const Call call(*this, "onSetRangeValue");
  return ForwardingHost::onSetRangeValue(value);
}

std::pair<bool, std::string> DoctorHost::onAdjustRangeValue(double delta) {
  const Call call(*this, "onAdjustRangeValue");
  return ForwardingHost::onAdjustRangeValue(delta);
}

std::pair<bool, std::string> DoctorHost::onSetToggleState(std::string toggle, std::string state) {
  const Call call(*this, "onSetToggleState");
  return ForwardingHost::onSetToggleState(std::move(toggle), std::move(state));
}

std::pair<bool, std::string> DoctorHost::onLaunchTarget(std::string target) {
  const Call call(*this, "onLaunchTarget");
  return ForwardingHost::onLaunchTarget(std::move(target));
}

std::pair<bool, std::string> DoctorHost::onStartRecording() {
  const Call call(*this, "onStartRecording");
  return ForwardingHost::onStartRecording();
}

std::pair<bool, std::string> DoctorHost::onStopRecording() {
  const Call call(*this, "onStopRecording");
  return ForwardingHost::onStopRecording();
}

std::pair<bool, std::string> DoctorHost::onAdjustSeekPosition(int delta) {
  const Call call(*this, "onAdjustSeekPosition");
  return ForwardingHost::onAdjustSeekPosition(delta);
}

std::pair<bool, std::string> DoctorHost::onSetVolume(int volume) {
  const Call call(*this, "onSetVolume");
  return ForwardingHost::onSetVolume(volume);
}

std::pair<bool, std::string> DoctorHost::onAdjustVolume(int delta) {
  const Call call(*this, "onAdjustVolume");
  return ForwardingHost::onAdjustVolume(delta);
}

std::pair<bool, std::string> DoctorHost::onMute(bool mute) {
  const Call call(*this, "onMute");
  return ForwardingHost::onMute(mute);
}

bool DoctorHost::clearGUICard() {
  const Call call(*this, "clearGUICard");
  return ForwardingHost::clearGUICard();
}

bool DoctorHost::renderGUICard(const std::string& card) {
  const Call call(*this, "renderGUICard");
  Lent<std::string> lentCard(card, "renderGUICard");
  return ForwardingHost::renderGUICard(lentCard.get());
}

void DoctorHost::onCommsStateChanged(
    const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) {
  const Call call(*this, "onCommsStateChanged");
  return ForwardingHost::onCommsStateChanged(info);
}

}  // namespace vorn_testing
