#include "Operations.h"

#include <VornAppMessaging.h>
#include <VornCommsManager.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <sys/mman.h>
#include <unistd.h>

#include <new>
#include <tuple>
#include <type_traits>

namespace vorn_testing::checks {

namespace {

using namespace VornDeviceAbstractionLayer;

// Answers, and what of them is text.

void collect(Texts& texts, const std::string& answer) { texts.push_back(answer); }

void collect(Texts& texts, const Entries& answer) {
  for (const auto& entry : answer) texts.insert(texts.end(), {entry.first, entry.second});
}

void collect(Texts& texts, const std::pair<bool, std::string>& answer) { texts.push_back(answer.second); }

template <class Answer>
void collect(Texts&, const Answer&) {}

/// What was written to the caller's own text is an answer too.
template <class Parameter, class Value>
void collectWritten(Texts& texts, const Value& value) {
  if constexpr (std::is_same_v<Parameter, std::string&>) texts.push_back(value);
}

template <class Value>
constexpr bool kIsText = std::is_same_v<Value, std::string> || std::is_same_v<Value, Texts> ||
                         std::is_same_v<Value, Entries> || std::is_same_v<Value, CommsStateInfo>;

template <class Value>
constexpr bool kIsNumber = !kIsText<Value> && !std::is_same_v<Value, bool>;

template <class Answer>
constexpr bool kHasText = kIsText<Answer> || std::is_same_v<Answer, std::pair<bool, std::string>>;

// Arguments have pages of their own, never used again: whoever keeps a reference is found when they are revoked.

template <class Values>
std::size_t pages() {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return (sizeof(Values) + page - 1) / page * page;
}

template <class Values>
Values* onPages(Values values) {
  void* const memory =
      mmap(nullptr, pages<Values>(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return new (memory) Values(std::move(values));
}

template <class Object, class Answer, class... Parameters>
using Member = Answer (Object::*)(Parameters...);

template <class Object, class Answer, class... Parameters>
Texts answer(Object& object, Member<Object, Answer, Parameters...> member,
             std::tuple<std::decay_t<Parameters>...>& values) {
  Texts texts;
  const auto ask = [&](auto&... arguments) {
    if constexpr (std::is_void_v<Answer>)
      (object.*member)(arguments...);
    else
      collect(texts, (object.*member)(arguments...));
    (collectWritten<Parameters>(texts, arguments), ...);
  };
  std::apply(ask, values);
  return texts;
}

template <class Object, class Answer, class... Parameters>
Operation operation(int slot, const char* name, const char* adapter,
                    Member<Object, Answer, Parameters...> member) {
  Operation made;
  made.name = name;
  made.slot = slot;
  made.adapter = adapter;
  made.ofPlayer = std::is_same_v<Object, Player>;
  made.takesTexts = (kIsText<std::decay_t<Parameters>> || ...);
  made.takesNumbers = (kIsNumber<std::decay_t<Parameters>> || ...);
  made.answersTexts = kHasText<Answer> || (std::is_same_v<Parameters, std::string&> || ...);
  made.prepare = [called = made.name, member]([[maybe_unused]] Given given, [[maybe_unused]] int which) {
    using Values = std::tuple<std::decay_t<Parameters>...>;
    Values* const values = onPages(Values(Sample<std::decay_t<Parameters>>::make(given, which)...));
    Prepared prepared;
    const auto spell = [](const auto&... arguments) {
      std::string all;
      ((all += (all.empty() ? "" : ", ") + spelled(arguments)), ...);
      return all;
    };
    prepared.shown = called + "(" + std::apply(spell, *values) + ")";
    prepared.make = [values, member](Host& host, [[maybe_unused]] Player* player) {
      if constexpr (std::is_same_v<Object, Player>)
        return answer(*player, member, *values);
      else
        return answer(host, member, *values);
    };
    prepared.revoke = [values] {
      values->~Values();
      mprotect(values, pages<Values>(), PROT_NONE);
    };
    return prepared;
  };
  return made;
}

template <class Adapter, class Answer, class AdapterAnswer, class... Parameters>
Operation locked(int slot, const char* name, const char* adapter, Member<Host, Answer, Parameters...> member,
                 Member<Adapter, AdapterAnswer, Parameters...> through) {
  Operation made = operation(slot, name, adapter, member);
  made.locked = true;
  made.prepare = [direct = made.prepare, through](Given given, int which) {
    using Values = std::tuple<std::decay_t<Parameters>...>;
    Prepared prepared = direct(given, which);
    Values* const values = onPages(Values(Sample<std::decay_t<Parameters>>::make(given, which)...));
    prepared.makeThrough = [values, through](Host& host) {
      answer(*Adapter::CreateInstance(host), through, *values);
    };
    return prepared;
  };
  return made;
}

}  // namespace

std::string Operation::place() const {
  return std::string(ofPlayer ? "VornEMPAdapterIF" : "VornDALImplIF") + (slot < 10 ? "/0" : "/") +
         std::to_string(slot) + "/" + name;
}

const std::vector<Operation>& operations() {
  using Result = std::pair<bool, std::string>;
  static const auto* const kOperations = new std::vector<Operation>{
      operation(3, "alexaStateChanged", "VornAlexaState", &Host::alexaStateChanged),
      operation(4, "dialogUXStateChanged", "VornAlexaState", &Host::dialogUXStateChanged),
      operation(5, "notifyMainAppInitialized", "VornAlexaState", &Host::notifyMainAppInitialized),
      operation(6, "requestAudioFocus", "VornAudioFocus", &Host::requestAudioFocus),
      operation(7, "releaseAudioFocus", "VornAudioFocus", &Host::releaseAudioFocus),
      operation(8, "startStreamingAudioData", "VornAudioIn", &Host::startStreamingAudioData),
      operation(9, "stopStreamingAudioData", "VornAudioIn", &Host::stopStreamingAudioData),
      operation(10, "isMicrophoneAvailable", "VornAudioIn", &Host::isMicrophoneAvailable),
      operation(11, "setAlexaHandsFreeState", "VornAudioIn", &Host::setAlexaHandsFreeState),
      operation(12, "notifyAlexaInvocationDetected", "VornAudioIn", &Host::notifyAlexaInvocationDetected),
      locked(13, "getVolume", "VornDeviceInfo", &Host::getVolume, &VornDeviceInfo::getVolume),
      locked(14, "getMuteStatus", "VornDeviceInfo", &Host::getMuteStatus, &VornDeviceInfo::getMuteStatus),
      locked(15, "getTimezone", "VornDeviceInfo", &Host::getTimezone, &VornDeviceInfo::getTimezone),
      locked(16, "getDeviceLocale", "VornDeviceInfo", &Host::getDeviceLocale,
             &VornDeviceInfo::getDeviceLocale),
      locked(17, "changeAlexaLocale", "VornDeviceInfo", &Host::changeAlexaLocale,
             &VornDeviceInfo::changeAlexaLocale),
      locked(18, "getDeviceInformation", "VornDeviceInfo", &Host::getDeviceInformation,
             &VornDeviceInfo::getDeviceInformation),
      locked(19, "getNetworkConnectionStatus", "VornDeviceInfo", &Host::getNetworkConnectionStatus,
             &VornDeviceInfo::getNetworkConnectionStatus),
      locked(20, "updateInternetConnectionStatus", "VornDeviceInfo", &Host::updateInternetConnectionStatus,
             &VornDeviceInfo::updateInternetConnectionStatus),
      locked(21, "getConfigData", "VornDeviceInfo", &Host::getConfigData, &VornDeviceInfo::getConfigData),
      operation(22, "getSystemSetting", "VornDeviceInfo", &Host::getSystemSetting),
      locked(23, "setSystemSetting", "VornDeviceInfo", &Host::setSystemSetting,
             &VornDeviceInfo::setSystemSetting),
      operation(24, "getVSKCapabilities", "VornDeviceInfo", &Host::getVSKCapabilities),
      operation(25, "open", "VornStorage", &Host::open),
      operation(26, "readKeyValue", "VornStorage", &Host::readKeyValue),
      operation(27, "writeKeyValue", "VornStorage", &Host::writeKeyValue),
      operation(28, "removeKeyValue", "VornStorage", &Host::removeKeyValue),
      operation(29, "clear", "VornStorage", &Host::clear),
      operation(30, "onLogEmitted", "VornLoggerObserver", &Host::onLogEmitted),
      operation(31, "sendCBLInfo", "VornOOBE", &Host::sendCBLInfo),
      operation(32, "alexaAuthStatusChanged", "VornOOBE", &Host::alexaAuthStatusChanged),
      operation(33, "getEMPAdapter", "VornEMPAdapterControl", &Host::getEMPAdapter),
      locked(34, "sendAppMessage", "VornAppMessaging", &Host::sendAppMessage,
             &VornAppMessaging::sendAppMessage),
      locked(35, "setAnimation", "VornLEDController", &Host::setAnimation, &VornLEDController::setAnimation),
      operation(36, "onChangeChannel", "VornDeviceCapabilities", &Host::onChangeChannel),
      operation(37, "onInputChange", "VornDeviceCapabilities", &Host::onInputChange),
      operation(38, "onSkipChannel", "VornDeviceCapabilities", &Host::onSkipChannel),
      operation(39, "onSendKeystroke", "VornDeviceCapabilities", &Host::onSendKeystroke),
      operation(40, "onChangePlaybackPlay", "VornDeviceCapabilities", &Host::onChangePlaybackPlay),
      operation(41, "onChangePlaybackPause", "VornDeviceCapabilities", &Host::onChangePlaybackPause),
      operation(42, "onChangePlaybackStop", "VornDeviceCapabilities", &Host::onChangePlaybackStop),
      operation(43, "onChangePlaybackStartOver", "VornDeviceCapabilities", &Host::onChangePlaybackStartOver),
      operation(44, "onChangePlaybackPrevious", "VornDeviceCapabilities", &Host::onChangePlaybackPrevious),
      operation(45, "onChangePlaybackNext", "VornDeviceCapabilities", &Host::onChangePlaybackNext),
      operation(46, "onChangePlaybackRewind", "VornDeviceCapabilities", &Host::onChangePlaybackRewind),
      operation(47, "onChangePlaybackFastForward", "VornDeviceCapabilities",
                &Host::onChangePlaybackFastForward),
      operation(48, "onSearchAndPlay", "VornDeviceCapabilities", &Host::onSearchAndPlay),
      operation(49, "onSearchAndDisplayResults", "VornDeviceCapabilities", &Host::onSearchAndDisplayResults),
      operation(50, "onSetMode", "VornDeviceCapabilities", &Host::onSetMode),
      operation(51, "onAdjustMode", "VornDeviceCapabilities", &Host::onAdjustMode),
      operation(52, "onSetPowerState", "VornDeviceCapabilities",
                static_cast<Result (Host::*)(bool)>(&Host::onSetPowerState)),
      operation(53, "onSetPowerState", "VornDeviceCapabilities",
                static_cast<Result (Host::*)(bool, std::string)>(&Host::onSetPowerState)),
      operation(54, "onSetRangeValue", "VornDeviceCapabilities", &Host::onSetRangeValue),
      operation(55, "onAdjustRangeValue", "VornDeviceCapabilities", &Host::onAdjustRangeValue),
      operation(56, "onSetToggleState", "VornDeviceCapabilities", &Host::onSetToggleState),
      operation(57, "onLaunchTarget", "VornDeviceCapabilities", &Host::onLaunchTarget),
      operation(58, "onStartRecording", "VornDeviceCapabilities", &Host::onStartRecording),
      operation(59, "onStopRecording", "VornDeviceCapabilities", &Host::onStopRecording),
      operation(60, "onAdjustSeekPosition", "VornDeviceCapabilities", &Host::onAdjustSeekPosition),
      operation(61, "onSetVolume", "VornDeviceCapabilities", &Host::onSetVolume),
      operation(62, "onAdjustVolume", "VornDeviceCapabilities", &Host::onAdjustVolume),
      operation(63, "onMute", "VornDeviceCapabilities", &Host::onMute),
      locked(64, "clearGUICard", "VornGUIOutput", &Host::clearGUICard, &VornGUIOutput::clearGUICard),
      locked(65, "renderGUICard", "VornGUIOutput", &Host::renderGUICard, &VornGUIOutput::renderGUICard),
      locked(66, "onCommsStateChanged", "VornCommsManager", &Host::onCommsStateChanged,
             &VornCommsManager::onCommsStateChanged),
      operation(3, "login", "VornEMPAdapterControl", &Player::login),
      operation(4, "logout", "VornEMPAdapterControl", &Player::logout),
      operation(5, "launchAndPlay", "VornEMPAdapterControl", &Player::launchAndPlay),
      operation(6, "nextTrack", "VornEMPAdapterControl", &Player::nextTrack),
      operation(7, "previousTrack", "VornEMPAdapterControl", &Player::previousTrack),
      operation(8, "restartCurrentTrack", "VornEMPAdapterControl", &Player::restartCurrentTrack),
      operation(9, "setShuffleOn", "VornEMPAdapterControl", &Player::setShuffleOn),
      operation(10, "setShuffleOff", "VornEMPAdapterControl", &Player::setShuffleOff),
      operation(11, "resume", "VornEMPAdapterControl", &Player::resume),
      operation(12, "pause", "VornEMPAdapterControl", &Player::pause),
      operation(13, "stop", "VornEMPAdapterControl", &Player::stop),
      operation(14, "skipForward", "VornEMPAdapterControl", &Player::skipForward),
      operation(15, "setRepeatAll", "VornEMPAdapterControl", &Player::setRepeatAll),
      operation(16, "setRepeatNone", "VornEMPAdapterControl", &Player::setRepeatNone),
      operation(17, "setRepeatOne", "VornEMPAdapterControl", &Player::setRepeatOne),
      operation(18, "getPlaybackState", "VornEMPAdapterControl", &Player::getPlaybackState)};
  return *kOperations;
}

Texts call(Trial& trial, const Operation& operation, const Prepared& prepared) {
  Host& host = trial.host();
  Player* const player = operation.ofPlayer ? &trial.player() : nullptr;
  Texts texts;
  trial.ask(prepared.shown, [&] { texts = prepared.make(host, player); });
  return texts;
}

Texts call(Trial& trial, const Operation& operation, Given given, int which) {
  return call(trial, operation, operation.prepare(given, which));
}

void callOthers(Trial& trial, const Operation& operation) {
  for (const Operation& other : operations()) {
    if (other.adapter != operation.adapter || other.place() == operation.place()) continue;
    if (operation.ofPlayer && !other.ofPlayer) continue;
    try {
      call(trial, other, Given::kPlain, 0);
    } catch (const Outcome&) {
    }
  }
}

}  // namespace vorn_testing::checks
