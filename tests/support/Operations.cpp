#include "support/Operations.h"

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

#include "support/OperationsErased.h"

namespace operations {

namespace {

using namespace VornDeviceAbstractionLayer;
using erased::CallAction;
using std::chrono::hours;
using std::chrono::milliseconds;
using Lines = std::vector<std::string>;
using Result = std::pair<bool, std::string>;

template <class Class>
Adapter adapter(const char* name, Lines createLines = {}, Lines constructLines = {}, Lines getLines = {}) {
  return {name,
          [](VornDALImplIF& host) -> std::shared_ptr<void> { return Class::CreateInstance(host); },
          []() -> std::shared_ptr<void> { return Class::getInstance(); },
          [] { Class::Shutdown(); },
          [](VornDALImplIF& host) -> std::shared_ptr<void> { return std::make_shared<Class>(host); },
          sizeof(Class),
          std::is_same_v<Class, VornOOBE>,
          createLines,
          constructLines,
          getLines};
}

enum Index {
  kState,
  kMessaging,
  kFocus,
  kAudio,
  kCapabilities,
  kInfo,
  kGUI,
  kLED,
  kObserver,
  kOOBE,
  kStorage,
  kPlayer,
  kComms
};

constexpr Guard U = Guard::kUnlocked;
constexpr Guard L = Guard::kMutex;
constexpr Guard D = Guard::kDalMutex;

/// A Row that can be completed where it stands.
struct Building : Row {
  /// Leaves these lines whether or not it is delivered.
  Building logs(const std::string& line) && {
    lines = lostLines = {line};
    return std::move(*this);
  }
  Building logsDelivered(const std::string& line) && {
    lines = {line};
    return std::move(*this);
  }
  Building logsLost(const std::string& line) && {
    lostLines = {line};
    return std::move(*this);
  }
  Building writes(Lines references) && {
    written = std::move(references);
    return std::move(*this);
  }
};

template <class Class, class R, class... P>
Building row(Index index, const char* name, Direction direction, Guard guard, R (Class::*operation)(P...),
             const char* target, int slot, const char* answer, const char* fallback,
             const std::decay_t<P>&... usual) {
  Row made{};
  made.adapter = &adapters()[index];
  made.operation = name;
  made.parameters = erased::typeNames<P...>();
  made.direction = direction;
  made.guard = guard;
  made.target = target;
  made.slot = slot;
  made.answer = answer;
  made.fallback = fallback;
  made.keepsAssistant = made.operation == "sendAudioData";
  made.with = erased::preparer(operation, usual...);
  return {made};
}

/// Down to the host.
template <class Class, class R, class... P>
Building down(Index index, const char* name, Guard guard, R (Class::*operation)(P...), int slot,
              const char* answer, const char* fallback, const std::decay_t<P>&... usual) {
  return row(index, name, Direction::kDown, guard, operation, "VornDALImplIF", slot, answer, fallback,
             usual...);
}

/// A directive: the host's failure comes back, a missing instance is a success.
template <class... P>
Building directive(const char* name, Result (VornDeviceCapabilities::*operation)(P...), int slot,
                   const std::decay_t<P>&... usual) {
  Building made = down(kCapabilities, name, U, operation, slot, "", "true", usual...);
  made.answer = std::string("false ") + name;
  return made;
}

/// A command of the external media player, which leaves its line in any case.
template <class R, class... P>
Building command(const char* name, R (VornEMPAdapterControl::*operation)(P...), int slot, const char* fields,
                 const std::decay_t<P>&... usual) {
  constexpr bool kText = std::is_same_v<R, std::string>;
  Building made = row(kPlayer, name, Direction::kDown, U, operation, "VornEMPAdapterIF", slot,
                      kText ? name : "true", kText ? "" : "false", usual...);
  return std::move(made).logs(std::string(kText ? "std::string" : "bool") +
                              " VornDeviceAbstractionLayer::VornEMPAdapterControl::" + name + fields);
}

/// A command with nothing but the player's name.
template <class R>
Building command(const char* name, R (VornEMPAdapterControl::*operation)(std::string), int slot) {
  return command(name, operation, slot, "(std::string): playerId: kitchen", "kitchen");
}

template <class Class, class R, class... P>
Building up(Index index, const char* name, Guard guard, R (Class::*operation)(P...), const char* target,
            int slot, const char* answer, const char* fallback, const std::decay_t<P>&... usual) {
  return row(index, name, Direction::kUp, guard, operation, target, slot, answer, fallback, usual...);
}

/// A signature as the trace has it.
std::string in(const char* type, const char* text) {
  return std::string(type) + " VornDeviceAbstractionLayer::" + text;
}

std::vector<Row> make() {
  using State = VornAlexaState;
  using Audio = VornAudioIn;
  using Info = VornDeviceInfo;
  using Store = VornStorage;
  using Caps = VornDeviceCapabilities;
  using Player = VornEMPAdapterControl;
  // clang-format off
  return {
      // Down to the host, in slot order.
      down(kState, "alexaStateChanged", U, &State::alexaStateChanged, 3, "", "", "LISTENING"),
      down(kState, "dialogUXStateChanged", U, &State::dialogUXStateChanged, 4, "", "", "THINKING"),
      down(kState, "notifyMainAppInitialized", U, &State::notifyMainAppInitialized, 5, "", ""),
      down(kFocus, "requestAudioFocus", U, &VornAudioFocus::requestAudioFocus, 6, "true", "false"),
      down(kFocus, "releaseAudioFocus", U, &VornAudioFocus::releaseAudioFocus, 7, "true", "false"),
      down(kAudio, "startStreamingAudioData", U, &Audio::startStreamingAudioData, 8, "true", "false"),
      down(kAudio, "stopStreamingAudioData", U, &Audio::stopStreamingAudioData, 9, "", ""),
      down(kAudio, "isMicrophoneAvailable", U, &Audio::isMicrophoneAvailable, 10, "true", "false"),
      down(kAudio, "setAlexaHandsFreeState", U, &Audio::setAlexaHandsFreeState, 11, "", "", true)
          .logsDelivered(in("void", "VornAudioIn::setAlexaHandsFreeState(bool) calling xApp API")),
      down(kAudio, "notifyAlexaInvocationDetected", U, &Audio::notifyAlexaInvocationDetected, 12, "", "", "WakeWordDetected")
          .logsDelivered(in("void", "VornAudioIn::notifyAlexaInvocationDetected(std::string) calling xApp API")),
      down(kInfo, "getVolume", L, &Info::getVolume, 13, "37", "0"),
      down(kInfo, "getMuteStatus", L, &Info::getMuteStatus, 14, "true", "false"),
      down(kInfo, "getTimezone", L, &Info::getTimezone, 15, "getTimezone", ""),
      down(kInfo, "getDeviceLocale", L, &Info::getDeviceLocale, 16, "getDeviceLocale", ""),
      down(kInfo, "changeAlexaLocale", L, &Info::changeAlexaLocale, 17, "", "", "de-DE"),
      down(kInfo, "getDeviceInformation", L, &Info::getDeviceInformation, 18, "{brand=Vorn, model=getDeviceInformation}", "{}"),
      down(kInfo, "getNetworkConnectionStatus", L, &Info::getNetworkConnectionStatus, 19, "true", "false"),
      down(kInfo, "updateInternetConnectionStatus", L, &Info::updateInternetConnectionStatus, 20, "", "", true),
      down(kInfo, "getConfigData", L, &Info::getConfigData, 21, "getConfigData", "", "logging"),
      down(kInfo, "getSystemSetting", U, &Info::getSystemSetting, 22, "true", "false", "friendlyName", "as it was")
          .writes({"getSystemSetting"}),
      down(kInfo, "setSystemSetting", L, &Info::setSystemSetting, 23, "true", "false", "friendlyName", "Bob's"),
      down(kInfo, "getVSKCapabilities", U, &Info::getVSKCapabilities, 24, "getVSKCapabilities", "[]"),
      down(kStorage, "open", U, &Store::open, 25, "true", "false"),
      down(kStorage, "readKeyValue", U, &Store::readKeyValue, 26, "{key=readKeyValue}", "{}", "key"),
      down(kStorage, "writeKeyValue", U, &Store::writeKeyValue, 27, "true", "false", {{"b", "2"}, {"a", "1"}}),
      down(kStorage, "removeKeyValue", U, &Store::removeKeyValue, 28, "true", "false", {"b", "a"}),
      down(kStorage, "clear", U, &Store::clear, 29, "true", "false"),
      down(kObserver, "onLogEmitted", U, &VornLoggerObserver::onLogEmitted, 30, "", "", "INFO", "started"),
      down(kOOBE, "sendCBLInfo", U, &VornOOBE::sendCBLInfo, 31, "", "", "https://link", "A1B2", 600)
          .writes({"sendCBLInfo", "written", "-9223372036854775808"})
          .logsLost(in("void", "VornOOBE::sendCBLInfo(std::string&, std::string&, int64_t&) m_instance is Null")),
      down(kOOBE, "alexaAuthStatusChanged", U, &VornOOBE::alexaAuthStatusChanged, 32, "", "", "AUTHORIZED")
          .logsLost(in("void", "VornOOBE::alexaAuthStatusChanged(std::string) m_instance is Null")),
      down(kMessaging, "sendAppMessage", L, &VornAppMessaging::sendAppMessage, 34, "true", "true", "a", "b,c", "d"),
      down(kLED, "setAnimation", L, &VornLEDController::setAnimation, 35, "-7", "0", {"pulse", "pulse", "fade"}),
      directive("onChangeChannel", &Caps::onChangeChannel, 36, "7"),
      down(kCapabilities, "onInputChange", U, &Caps::onInputChange, 37, "false", "true", "HDMI 1"),
      directive("onSkipChannel", &Caps::onSkipChannel, 38, -2),
      directive("onSendKeystroke", &Caps::onSendKeystroke, 39, "SELECT"),
      directive("onChangePlaybackPlay", &Caps::onChangePlaybackPlay, 40, "play"),
      directive("onChangePlaybackPause", &Caps::onChangePlaybackPause, 41, "pause"),
      directive("onChangePlaybackStop", &Caps::onChangePlaybackStop, 42, "stop"),
      directive("onChangePlaybackStartOver", &Caps::onChangePlaybackStartOver, 43, "over"),
      directive("onChangePlaybackPrevious", &Caps::onChangePlaybackPrevious, 44, "previous"),
      directive("onChangePlaybackNext", &Caps::onChangePlaybackNext, 45, "next"),
      directive("onChangePlaybackRewind", &Caps::onChangePlaybackRewind, 46, "rewind"),
      directive("onChangePlaybackFastForward", &Caps::onChangePlaybackFastForward, 47, "forward"),
      directive("onSearchAndPlay", &Caps::onSearchAndPlay, 48, "song"),
      directive("onSearchAndDisplayResults", &Caps::onSearchAndDisplayResults, 49, "songs"),
      directive("onSetMode", &Caps::onSetMode, 50, "mode", "night"),
      directive("onAdjustMode", &Caps::onAdjustMode, 51, "mode", -1),
      directive("onSetPowerState", static_cast<Result (Caps::*)(bool)>(&Caps::onSetPowerState), 52, true),
      down(kCapabilities, "onSetPowerState", U, static_cast<Result (Caps::*)(bool, std::string)>(&Caps::onSetPowerState), 53,
           "false onSetPowerState of a target", "true", true, "lamp"),
      directive("onSetRangeValue", &Caps::onSetRangeValue, 54, -0.5),
      directive("onAdjustRangeValue", &Caps::onAdjustRangeValue, 55, 0.1),
      directive("onSetToggleState", &Caps::onSetToggleState, 56, "light", "on"),
      directive("onLaunchTarget", &Caps::onLaunchTarget, 57, "radio"),
      directive("onStartRecording", &Caps::onStartRecording, 58),
      directive("onStopRecording", &Caps::onStopRecording, 59),
      directive("onAdjustSeekPosition", &Caps::onAdjustSeekPosition, 60, -30000),
      directive("onSetVolume", &Caps::onSetVolume, 61, 1234567)
          .logs(in("std::pair<bool, std::basic_string<char> >", "VornDeviceCapabilities::onSetVolume(int)")),
      directive("onAdjustVolume", &Caps::onAdjustVolume, 62, -10)
          .logs(in("std::pair<bool, std::basic_string<char> >", "VornDeviceCapabilities::onAdjustVolume(int)")),
      directive("onMute", &Caps::onMute, 63, true)
          .logs(in("std::pair<bool, std::basic_string<char> >", "VornDeviceCapabilities::onMute(bool)")),
      down(kGUI, "clearGUICard", L, &VornGUIOutput::clearGUICard, 64, "true", "false"),
      down(kGUI, "renderGUICard", L, &VornGUIOutput::renderGUICard, 65, "true", "false", "<card/>"),
      down(kComms, "onCommsStateChanged", L, &VornCommsManager::onCommsStateChanged, 66, "", "", {"ringing"})
          .logsDelivered(in("void", "VornCommsManager::onCommsStateChanged(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&)")),

      // Down to the external media player that the host hands out.
      command("login", &Player::login, 3,
              "(const string&, const string&, bool, std::chrono::milliseconds, std::string): accessToken: token, "
              "userName: user, forceLogin: 1, refreshInterval: 3600000ms, playerId: kitchen",
              "token", "user", true, hours(1), "kitchen"),
      command("logout", &Player::logout, 4),
      command("launchAndPlay", &Player::launchAndPlay, 5,
              "(std::string, std::chrono::milliseconds, std::string): playContextToken: album, offset: 0ms, playerId: kitchen",
              "album", milliseconds(0), "kitchen"),
      command("nextTrack", &Player::nextTrack, 6),
      command("previousTrack", &Player::previousTrack, 7),
      command("restartCurrentTrack", &Player::restartCurrentTrack, 8),
      command("setShuffleOn", &Player::setShuffleOn, 9),
      command("setShuffleOff", &Player::setShuffleOff, 10),
      command("resume", &Player::resume, 11),
      command("pause", &Player::pause, 12),
      command("stop", &Player::stop, 13),
      command("skipForward", &Player::skipForward, 14,
              "(std::chrono::milliseconds, std::string): offset: -90000ms, playerId: kitchen", milliseconds(-90000), "kitchen"),
      command("setRepeatAll", &Player::setRepeatAll, 15),
      command("setRepeatNone", &Player::setRepeatNone, 16),
      command("setRepeatOne", &Player::setRepeatOne, 17),
      command("getPlaybackState", &Player::getPlaybackState, 18),

      // Up to the assistant side, in slot order.
      up(kInfo, "notifySystemSettingChanged", U, &Info::notifySystemSettingChanged, "DeviceInfo", 33, "", "", "friendlyName", "Bob's"),
      up(kInfo, "notifyLocaleChange", U, static_cast<void (Info::*)(std::string)>(&Info::notifyLocaleChange), "DeviceInfo", 34, "", "", "en-US"),
      up(kInfo, "notifyLocaleChange", U, static_cast<void (Info::*)(Lines)>(&Info::notifyLocaleChange), "DeviceInfo", 35, "", "", {"en-US", "en-US"}),
      up(kInfo, "notifyNetworkConnectionChanged", U, &Info::notifyNetworkConnectionChanged, "DeviceInfo", 37, "", "", "CONNECTED"),
      up(kInfo, "notifyMicrophoneAvailabilityChanged", U, &Info::notifyMicrophoneAvailabilityChanged, "DeviceInfo", 38, "", "", "true"),
      up(kInfo, "notifyVolumeChanged", U, &Info::notifyVolumeChanged, "DeviceInfo", 41, "", "", 40),
      up(kInfo, "notifyMuteChanged", U, &Info::notifyMuteChanged, "DeviceInfo", 42, "", "", true),
      up(kInfo, "notifyHandsfreeStateChanged", U, &Info::notifyHandsfreeStateChanged, "DeviceInfo", 47, "", "", true),
      up(kCapabilities, "notifyUpdatedAssociation", U, &Caps::notifyUpdatedAssociation, "DeviceCapabilities", 30, "", "", "lamp", "added"),
      up(kCapabilities, "notifyFriendlyNameChange", U, &Caps::notifyFriendlyNameChange, "DeviceCapabilities", 39, "", "", "Bob's"),
      up(kGUI, "notifyPlaybackControllerAction", U, &VornGUIOutput::notifyPlaybackControllerAction, "GUIOutput", 5, "true", "false", "NEXT"),
      up(kOOBE, "notifyOOBEInitiated", U, &VornOOBE::notifyOOBEInitiated, "OOBE", 4, "", "")
          .logsLost(in("void", "VornOOBE::notifyOOBEInitiated() dalinstance is Null")),
      up(kOOBE, "notifyOOBECancelled", U, &VornOOBE::notifyOOBECancelled, "OOBE", 6, "", ""),
      up(kOOBE, "getAlexaAuthStatus", U, &VornOOBE::getAlexaAuthStatus, "OOBE", 11, "AUTHORIZED", ""),
      up(kAudio, "notifyAlexaButtonPress", U, &Audio::notifyAlexaButtonPress, "AudioIn", 7, "", "", "WakeWordDetected", milliseconds(500))
          .logsDelivered(in("void", "VornAudioIn::notifyAlexaButtonPress(std::string, std::chrono::milliseconds) calling xApp API")),
      up(kAudio, "notifyAlexaButtonReleased", U, &Audio::notifyAlexaButtonReleased, "AudioIn", 8, "", "")
          .logsDelivered(in("void", "VornAudioIn::notifyAlexaButtonReleased() calling xApp API")),
      up(kAudio, "sendAudioData", U, &Audio::sendAudioData, "AudioIn", 11, "", "", std::vector<short>(160)),
      up(kMessaging, "SendMessageToxApp", D, &VornAppMessaging::SendMessageToxApp, "AppMessaging", 1, "true", "false", "a", "b,c", "")
          .logsDelivered("receiveAppMessage(a,b,c,)"),
      up(kComms, "notifyCallAction", U, &VornCommsManager::notifyCallAction, "CommsManager", 1, "", "", CallAction{3})
          .logsDelivered(in("void", "VornCommsManager::notifyCallAction(DeviceAbstractionLayer::CommsControllerInterface::CallAction)")),
  };
  // clang-format on
}

}  // namespace

const std::vector<Adapter>& adapters() {
  static const std::vector<Adapter> all = {
      adapter<VornAlexaState>("VornAlexaState"),
      adapter<VornAppMessaging>("VornAppMessaging"),
      adapter<VornAudioFocus>("VornAudioFocus"),
      adapter<VornAudioIn>(
          "VornAudioIn", {},
          {"VornDeviceAbstractionLayer::VornAudioIn::VornAudioIn(VornDeviceAbstractionLayer::VornDALImplIF&)"}),
      adapter<VornDeviceCapabilities>(
          "VornDeviceCapabilities",
          {"static std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceCapabilities> "
           "VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(VornDeviceAbstractionLayer::"
           "VornDALImplIF&)"},
          {"VornDeviceAbstractionLayer::VornDeviceCapabilities::VornDeviceCapabilities("
           "VornDeviceAbstractionLayer::VornDALImplIF&)"}),
      adapter<VornDeviceInfo>("VornDeviceInfo"),
      adapter<VornGUIOutput>("VornGUIOutput"),
      adapter<VornLEDController>("VornLEDController"),
      adapter<VornLoggerObserver>("VornLoggerObserver"),
      adapter<VornOOBE>("VornOOBE"),
      adapter<VornStorage>("VornStorage"),
      adapter<VornEMPAdapterControl>(
          "VornEMPAdapterControl",
          {"static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> "
           "VornDeviceAbstractionLayer::VornEMPAdapterControl::CreateInstance(VornDeviceAbstractionLayer::"
           "VornDALImplIF&)"},
          {"VornDeviceAbstractionLayer::VornEMPAdapterControl::VornEMPAdapterControl("
           "VornDeviceAbstractionLayer::VornDALImplIF&)"},
          {"static std::shared_ptr<VornDeviceAbstractionLayer::VornEMPAdapterControl> "
           "VornDeviceAbstractionLayer::VornEMPAdapterControl::getInstance()"}),
      adapter<VornCommsManager>("VornCommsManager"),
  };
  return all;
}

const std::vector<Row>& rows() {
  static const std::vector<Row> all = make();
  return all;
}

std::string seen(const vorn_testing::Call& call) {
  return call.target + " " + std::to_string(call.slot) + " " + call.signature();
}

std::vector<std::string> seen(const std::vector<vorn_testing::Call>& calls) {
  std::vector<std::string> all;
  for (const vorn_testing::Call& call : calls) all.push_back(seen(call));
  return all;
}

Outcome Row::run(void* object, Sample sample) const {
  const std::unique_ptr<Invocation> invocation = with(sample);
  invocation->make(object);
  return invocation->outcome;
}

std::vector<std::string> Row::reaches(const std::vector<std::string>& given, bool instance,
                                      bool assistant) const {
  std::vector<std::string> all;
  if (delivered(instance, assistant)) {
    if (target == "VornEMPAdapterIF") all.push_back("VornDALImplIF 33 getEMPAdapter()");
    vorn_testing::Call own{};
    own.target = target;
    own.slot = slot;
    own.operation = operation;
    own.arguments = given;
    all.push_back(seen(own));
  }
  if (operation == "notifyAlexaButtonPress" && instance)
    all.push_back("VornDALImplIF 12 notifyAlexaInvocationDetected(AlexaButtonPress)");
  return all;
}

}  // namespace operations
