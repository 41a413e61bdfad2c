#pragma once

#include <FileLogger.h>
#include <VornAlexaState.h>
#include <VornAppMessaging.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAudioFocus.h>
#include <VornAudioIn.h>
#include <VornCommsManager.h>
#include <VornDALImplIF.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornEMPAdapterIF.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornLoggerObserver.h>
#include <VornMediaPlayerFactory.h>
#include <VornOOBE.h>
#include <VornStorage.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "Masking.h"

/// The one list of operations, for whatever treats them all alike: doubles, tables, printers, recorders.
///
/// What guards the list does not stand on it: docs/operations.tsv is written by hand, so that a slip here is not
/// repeated there; tests/abi asks the compiled library, so that slots and names are those of the file.
namespace vorn_testing {

/// Which way an operation goes.
enum class Direction {
  kDown,  ///< The assistant side calls, the firmware answers.
  kUp,    ///< The firmware calls, the assistant side answers.
  kLife,  ///< Creates, fetches, shuts down.
  kOwn,   ///< Stays inside the library.
};

/// What keeps its calls apart while the other side is called.
enum class Guard {
  kUnlocked,   ///< Nothing: calls may overlap.
  kMutex,      ///< The adapter's mutex.
  kDalMutex,   ///< The adapter's second mutex, of the upward direction.
  kOneThread,  ///< Nothing, and calls must not overlap: that is the caller's duty.
};

/// One operation without its types. All texts are literals.
struct Operation {
  const char* adapter;  ///< Its class: "VornDeviceInfo".
  const char* name;     ///< "setSystemSetting"; a constructor is named as its class.
  Direction direction;  ///< Which way it goes.
  Guard guard;          ///< What keeps its calls apart.
  const char* target;   ///< The interface on which the call arrives, "VornDALImplIF"; empty when on none.
  int slot;             ///< Its place in that interface's virtual table, counted from 1; 0 without a target.
  const char* parameters;  ///< The names of its parameters, one space between: "key value".
};

/// The names of an operation's parameters, in order.
inline std::vector<std::string> parameterNames(const Operation& operation) {
  std::vector<std::string> names;
  for (const char* at = operation.parameters; *at;) {
    const std::size_t length = std::strcspn(at, " ");
    names.push_back(std::string(at, length));
    at += length + (at[length] == ' ');
  }
  return names;
}

/// A constructor in the list, which no pointer can name.
template <class Adapter, class... Parameters>
struct Constructor {};

/// What visitOperations() is handed: hide what is wanted, the rest is passed over.
///
/// The members keep their types, so a visitor takes what it needs of them by deduction.
struct OperationVisitor {
  /// An operation of a host interface, VornDALImplIF or VornEMPAdapterIF, and the adapter's that leads to it.
  template <class OfHost, class OfAdapter>
  void down(const Operation&, OfHost, OfAdapter) {}

  /// An operation of VornDALImplIF that no operation of an adapter leads to by itself: getEMPAdapter(), which every
  /// operation of VornEMPAdapterControl calls first.
  template <class OfHost>
  void hostOnly(const Operation&, OfHost) {}

  /// An operation of an adapter that goes up to the assistant side.
  template <class OfAdapter>
  void up(const Operation&, OfAdapter) {}

  /// An operation of a class whose other side is no host interface: the media player's and the stream's classes, the
  /// trace. Its direction tells more.
  template <class OfClass>
  void own(const Operation&, OfClass) {}

  /// CreateInstance(), getInstance() or Shutdown(), a static function.
  template <class Function>
  void life(const Operation&, Function) {}

  /// A constructor.
  template <class Adapter, class... Parameters>
  void constructor(const Operation&, Constructor<Adapter, Parameters...>) {}
};

namespace list {

/// Tells overloads apart: Taking<int>::member(&Class::name).
template <class... Parameters>
struct Taking {
  template <class Class, class Result>
  static auto member(Result (Class::*member)(Parameters...)) -> decltype(member) {
    return member;
  }
};

/// The operations of one class, as visitOperations() writes them.
template <class Visitor, class Adapter>
class Of {
 public:
  Of(Visitor& visitor, const char* adapter) : m_visitor(visitor), m_adapter(adapter) {}

  Of(const Of&) = delete;
  Of& operator=(const Of&) = delete;

  void created(const char* from) const {
    life("CreateInstance", &Adapter::CreateInstance, from);
    life("getInstance", &Adapter::getInstance);
    life("Shutdown", &Adapter::Shutdown);
  }

  void onHost() const {
    created("host");
    constructed(Constructor<Adapter, VornDeviceAbstractionLayer::VornDALImplIF&>(), "host");
  }

  template <class Function>
  void life(const char* name, Function function, const char* parameters = "") const {
    m_visitor.life(made(name, Direction::kLife, Guard::kMutex, "", 0, parameters), function);
  }

  template <class... Parameters>
  void constructed(Constructor<Adapter, Parameters...> constructor, const char* parameters) const {
    m_visitor.constructor(made(m_adapter, Direction::kLife, Guard::kUnlocked, "", 0, parameters),
                          constructor);
  }

  template <class OfHost, class OfAdapter>
  void unlocked(int slot, const char* name, OfHost host, OfAdapter adapter,
                const char* parameters = "") const {
    down(slot, name, Guard::kUnlocked, host, adapter, parameters);
  }

  template <class OfHost, class OfAdapter>
  void locked(int slot, const char* name, OfHost host, OfAdapter adapter, const char* parameters = "") const {
    down(slot, name, Guard::kMutex, host, adapter, parameters);
  }

  template <class OfHost>
  void hostOnly(int slot, const char* name, OfHost host) const {
    m_visitor.hostOnly(made(name, Direction::kDown, Guard::kUnlocked, "VornDALImplIF", slot, ""), host);
  }

  template <class OfAdapter>
  void up(int slot, const char* name, OfAdapter adapter, const char* parameters = "",
          Guard guard = Guard::kUnlocked) const {
    // The assistant side's class is named as the adapter, without its prefix.
    m_visitor.up(made(name, Direction::kUp, guard, m_adapter + std::strlen("Vorn"), slot, parameters),
                 adapter);
  }

  template <class OfClass>
  void own(const char* name, OfClass member, Guard guard, const char* parameters = "") const {
    m_visitor.own(made(name, Direction::kOwn, guard, "", 0, parameters), member);
  }

  template <class OfClass>
  void configured(int slot, const char* name, OfClass member, const char* target,
                  const char* parameters) const {
    m_visitor.own(made(name, Direction::kDown, Guard::kMutex, target, slot, parameters), member);
  }

 private:
  Operation made(const char* name, Direction direction, Guard guard, const char* target, int slot,
                 const char* parameters) const {
    const Operation operation = {m_adapter, name, direction, guard, target, slot, parameters};
    return operation;
  }

  template <class OfAdapter, class Result, class... Parameters>
  void down(int slot, const char* name, Guard guard,
            Result (VornDeviceAbstractionLayer::VornDALImplIF::*host)(Parameters...), OfAdapter adapter,
            const char* parameters) const {
    m_visitor.down(made(name, Direction::kDown, guard, "VornDALImplIF", slot, parameters), host, adapter);
  }

  template <class OfAdapter, class Result, class... Parameters>
  void down(int slot, const char* name, Guard guard,
            Result (VornDeviceAbstractionLayer::VornEMPAdapterIF::*player)(Parameters...), OfAdapter adapter,
            const char* parameters) const {
    m_visitor.down(made(name, Direction::kDown, guard, "VornEMPAdapterIF", slot, parameters), player,
                   adapter);
  }

  Visitor& m_visitor;
  const char* const m_adapter;
};

}  // namespace list

/// Shows `visitor` every operation once: the classes in the library's load order, and of each class its life, then
/// what goes down, then what goes up, both in slot order.
///
///     struct Count : vorn_testing::OperationVisitor {
///       int commands = 0;
///       template <class Result, class... Parameters, class OfAdapter>
///       void down(const vorn_testing::Operation&, Result (VornEMPAdapterIF::*)(Parameters...), OfAdapter) {
///         ++commands;
///       }
///       using vorn_testing::OperationVisitor::down;  // the other interface's
///     };
template <class Visitor>
void visitOperations(Visitor& visitor) {
  using namespace VornDeviceAbstractionLayer;
  typedef VornDALImplIF Host;
  typedef std::string Text;
  using list::Of;
  using list::Taking;

  {
    typedef VornAlexaState Self;
    const Of<Visitor, Self> of(visitor, "VornAlexaState");
    of.onHost();
    of.unlocked(3, "alexaStateChanged", &Host::alexaStateChanged, &Self::alexaStateChanged, "state");
    of.unlocked(4, "dialogUXStateChanged", &Host::dialogUXStateChanged, &Self::dialogUXStateChanged, "state");
    of.unlocked(5, "notifyMainAppInitialized", &Host::notifyMainAppInitialized,
                &Self::notifyMainAppInitialized);
  }
  {
    typedef VornAppMessaging Self;
    const Of<Visitor, Self> of(visitor, "VornAppMessaging");
    of.onHost();
    of.locked(34, "sendAppMessage", &Host::sendAppMessage, &Self::sendAppMessage, "first second third");
    of.up(1, "SendMessageToxApp", &Self::SendMessageToxApp, "first second third", Guard::kDalMutex);
  }
  {
    typedef VornAudioFocus Self;
    const Of<Visitor, Self> of(visitor, "VornAudioFocus");
    of.onHost();
    of.unlocked(6, "requestAudioFocus", &Host::requestAudioFocus, &Self::requestAudioFocus);
    of.unlocked(7, "releaseAudioFocus", &Host::releaseAudioFocus, &Self::releaseAudioFocus);
  }
  {
    typedef VornAudioIn Self;
    const Of<Visitor, Self> of(visitor, "VornAudioIn");
    of.onHost();
    of.unlocked(8, "startStreamingAudioData", &Host::startStreamingAudioData, &Self::startStreamingAudioData);
    of.unlocked(9, "stopStreamingAudioData", &Host::stopStreamingAudioData, &Self::stopStreamingAudioData);
    of.unlocked(10, "isMicrophoneAvailable", &Host::isMicrophoneAvailable, &Self::isMicrophoneAvailable);
    of.unlocked(11, "setAlexaHandsFreeState", &Host::setAlexaHandsFreeState, &Self::setAlexaHandsFreeState,
                "enabled");
    of.unlocked(12, "notifyAlexaInvocationDetected", &Host::notifyAlexaInvocationDetected,
                &Self::notifyAlexaInvocationDetected, "invocationType");
    // Reaches notifyAlexaInvocationDetected() of the host too.
    of.up(7, "notifyAlexaButtonPress", &Self::notifyAlexaButtonPress, "type duration");
    of.up(8, "notifyAlexaButtonReleased", &Self::notifyAlexaButtonReleased);
    of.up(11, "sendAudioData", &Self::sendAudioData, "samples", Guard::kOneThread);
  }
  {
    typedef VornMediaPlayerFactory Self;
    typedef std::unordered_map<Text, std::shared_ptr<VornDalMediaPlayerInterfaceImpl>> Players;
    const Of<Visitor, Self> of(visitor, "VornMediaPlayerFactory");
    of.created("players");
    of.constructed(Constructor<Self, Players&>(), "players");
    of.configured(21, "createDalMediaPlayer", &Self::createDalMediaPlayer, "VornDalMediaPlayerInterfaceImpl",
                  "callback firstFlag name secondFlag");
  }
  {
    typedef VornAttachmentReaderContainerFactory Self;
    const Of<Visitor, Self> of(visitor, "VornAttachmentReaderContainerFactory");
    of.life("getInstance", &Self::getInstance);
    of.own("createAttachmentReaderContainer", &Self::createAttachmentReaderContainer, Guard::kUnlocked,
           "onClose");
  }
  {
    typedef VornAttachmentReaderContainerInterfaceImpl Self;
    const Of<Visitor, Self> of(visitor, "VornAttachmentReaderContainerInterfaceImpl");
    of.constructed(Constructor<Self, std::function<void(Text)>>(), "onClose");
    of.own("Subscribe", &Self::Subscribe, Guard::kOneThread, "onData onEndOfStream");
    of.own("Unsubscribe", &Self::Unsubscribe, Guard::kOneThread);
    of.own("sendData", &Self::sendData, Guard::kOneThread, "data size");
    of.own("notifyEndOfStream", &Self::notifyEndOfStream, Guard::kOneThread);
    of.own("GetOnCloseCallbackFunction", &Self::GetOnCloseCallbackFunction, Guard::kUnlocked);
  }
  {
    typedef VornDeviceCapabilities Self;
    const Of<Visitor, Self> of(visitor, "VornDeviceCapabilities");
    of.onHost();
    of.unlocked(36, "onChangeChannel", &Host::onChangeChannel, &Self::onChangeChannel, "channel");
    of.unlocked(37, "onInputChange", &Host::onInputChange, &Self::onInputChange, "input");
    of.unlocked(38, "onSkipChannel", &Host::onSkipChannel, &Self::onSkipChannel, "count");
    of.unlocked(39, "onSendKeystroke", &Host::onSendKeystroke, &Self::onSendKeystroke, "keystroke");
    of.unlocked(40, "onChangePlaybackPlay", &Host::onChangePlaybackPlay, &Self::onChangePlaybackPlay,
                "payload");
    of.unlocked(41, "onChangePlaybackPause", &Host::onChangePlaybackPause, &Self::onChangePlaybackPause,
                "payload");
    of.unlocked(42, "onChangePlaybackStop", &Host::onChangePlaybackStop, &Self::onChangePlaybackStop,
                "payload");
    of.unlocked(43, "onChangePlaybackStartOver", &Host::onChangePlaybackStartOver,
                &Self::onChangePlaybackStartOver, "payload");
    of.unlocked(44, "onChangePlaybackPrevious", &Host::onChangePlaybackPrevious,
                &Self::onChangePlaybackPrevious, "payload");
    of.unlocked(45, "onChangePlaybackNext", &Host::onChangePlaybackNext, &Self::onChangePlaybackNext,
                "payload");
    of.unlocked(46, "onChangePlaybackRewind", &Host::onChangePlaybackRewind, &Self::onChangePlaybackRewind,
                "payload");
    of.unlocked(47, "onChangePlaybackFastForward", &Host::onChangePlaybackFastForward,
                &Self::onChangePlaybackFastForward, "payload");
    of.unlocked(48, "onSearchAndPlay", &Host::onSearchAndPlay, &Self::onSearchAndPlay, "payload");
    of.unlocked(49, "onSearchAndDisplayResults", &Host::onSearchAndDisplayResults,
                &Self::onSearchAndDisplayResults, "payload");
    of.unlocked(50, "onSetMode", &Host::onSetMode, &Self::onSetMode, "mode value");
    of.unlocked(51, "onAdjustMode", &Host::onAdjustMode, &Self::onAdjustMode, "mode delta");
    of.unlocked(52, "onSetPowerState", Taking<bool>::member(&Host::onSetPowerState),
                Taking<bool>::member(&Self::onSetPowerState), "on");
    of.unlocked(53, "onSetPowerState", Taking<bool, Text>::member(&Host::onSetPowerState),
                Taking<bool, Text>::member(&Self::onSetPowerState), "on target");
    of.unlocked(54, "onSetRangeValue", &Host::onSetRangeValue, &Self::onSetRangeValue, "value");
    of.unlocked(55, "onAdjustRangeValue", &Host::onAdjustRangeValue, &Self::onAdjustRangeValue, "delta");
    of.unlocked(56, "onSetToggleState", &Host::onSetToggleState, &Self::onSetToggleState, "toggle state");
    of.unlocked(57, "onLaunchTarget", &Host::onLaunchTarget, &Self::onLaunchTarget, "target");
    of.unlocked(58, "onStartRecording", &Host::onStartRecording, &Self::onStartRecording);
    of.unlocked(59, "onStopRecording", &Host::onStopRecording, &Self::onStopRecording);
    of.unlocked(60, "onAdjustSeekPosition", &Host::onAdjustSeekPosition, &Self::onAdjustSeekPosition,
                "delta");
    of.unlocked(61, "onSetVolume", &Host::onSetVolume, &Self::onSetVolume, "volume");
    of.unlocked(62, "onAdjustVolume", &Host::onAdjustVolume, &Self::onAdjustVolume, "delta");
    of.unlocked(63, "onMute", &Host::onMute, &Self::onMute, "mute");
    of.up(30, "notifyUpdatedAssociation", &Self::notifyUpdatedAssociation, "first second");
    of.up(39, "notifyFriendlyNameChange", &Self::notifyFriendlyNameChange, "friendlyName");
  }
  {
    typedef VornDeviceInfo Self;
    const Of<Visitor, Self> of(visitor, "VornDeviceInfo");
    of.onHost();
    of.locked(13, "getVolume", &Host::getVolume, &Self::getVolume);
    of.locked(14, "getMuteStatus", &Host::getMuteStatus, &Self::getMuteStatus);
    of.locked(15, "getTimezone", &Host::getTimezone, &Self::getTimezone);
    of.locked(16, "getDeviceLocale", &Host::getDeviceLocale, &Self::getDeviceLocale);
    of.locked(17, "changeAlexaLocale", &Host::changeAlexaLocale, &Self::changeAlexaLocale, "locale");
    of.locked(18, "getDeviceInformation", &Host::getDeviceInformation, &Self::getDeviceInformation);
    of.locked(19, "getNetworkConnectionStatus", &Host::getNetworkConnectionStatus,
              &Self::getNetworkConnectionStatus);
    of.locked(20, "updateInternetConnectionStatus", &Host::updateInternetConnectionStatus,
              &Self::updateInternetConnectionStatus, "connected");
    of.locked(21, "getConfigData", &Host::getConfigData, &Self::getConfigData, "key");
    of.unlocked(22, "getSystemSetting", &Host::getSystemSetting, &Self::getSystemSetting, "key value");
    of.locked(23, "setSystemSetting", &Host::setSystemSetting, &Self::setSystemSetting, "key value");
    of.unlocked(24, "getVSKCapabilities", &Host::getVSKCapabilities, &Self::getVSKCapabilities);
    of.up(33, "notifySystemSettingChanged", &Self::notifySystemSettingChanged, "key value");
    of.up(34, "notifyLocaleChange", Taking<Text>::member(&Self::notifyLocaleChange), "locale");
    of.up(35, "notifyLocaleChange", Taking<std::vector<Text>>::member(&Self::notifyLocaleChange), "locales");
    of.up(37, "notifyNetworkConnectionChanged", &Self::notifyNetworkConnectionChanged, "status");
    of.up(38, "notifyMicrophoneAvailabilityChanged", &Self::notifyMicrophoneAvailabilityChanged,
          "availability");
    of.up(41, "notifyVolumeChanged", &Self::notifyVolumeChanged, "volume");
    of.up(42, "notifyMuteChanged", &Self::notifyMuteChanged, "muted");
    of.up(47, "notifyHandsfreeStateChanged", &Self::notifyHandsfreeStateChanged, "state");
  }
  {
    typedef FileLogger Self;
    const Of<Visitor, Self> of(visitor, "FileLogger");
    of.created("enable");
    of.constructed(Constructor<Self, bool>(), "enable");
    of.own("logMessage", &Self::logMessage, Guard::kMutex, "message");
  }
  {
    typedef VornGUIOutput Self;
    const Of<Visitor, Self> of(visitor, "VornGUIOutput");
    of.onHost();
    of.locked(64, "clearGUICard", &Host::clearGUICard, &Self::clearGUICard);
    of.locked(65, "renderGUICard", &Host::renderGUICard, &Self::renderGUICard, "card");
    of.up(5, "notifyPlaybackControllerAction", &Self::notifyPlaybackControllerAction, "action");
  }
  {
    typedef VornLEDController Self;
    const Of<Visitor, Self> of(visitor, "VornLEDController");
    of.onHost();
    of.locked(35, "setAnimation", &Host::setAnimation, &Self::setAnimation, "animations");
  }
  {
    typedef VornLoggerObserver Self;
    const Of<Visitor, Self> of(visitor, "VornLoggerObserver");
    of.onHost();
    of.unlocked(30, "onLogEmitted", &Host::onLogEmitted, &Self::onLogEmitted, "first second");
  }
  {
    typedef VornOOBE Self;
    const Of<Visitor, Self> of(visitor, "VornOOBE");
    of.onHost();
    of.unlocked(31, "sendCBLInfo", &Host::sendCBLInfo, &Self::sendCBLInfo, "first second number");
    of.unlocked(32, "alexaAuthStatusChanged", &Host::alexaAuthStatusChanged, &Self::alexaAuthStatusChanged,
                "status");
    of.up(4, "notifyOOBEInitiated", &Self::notifyOOBEInitiated);
    of.up(6, "notifyOOBECancelled", &Self::notifyOOBECancelled);
    of.up(11, "getAlexaAuthStatus", &Self::getAlexaAuthStatus);
  }
  {
    typedef VornStorage Self;
    const Of<Visitor, Self> of(visitor, "VornStorage");
    of.onHost();
    of.unlocked(25, "open", &Host::open, &Self::open);
    of.unlocked(26, "readKeyValue", &Host::readKeyValue, &Self::readKeyValue, "key");
    of.unlocked(27, "writeKeyValue", &Host::writeKeyValue, &Self::writeKeyValue, "entries");
    of.unlocked(28, "removeKeyValue", &Host::removeKeyValue, &Self::removeKeyValue, "keys");
    of.unlocked(29, "clear", &Host::clear, &Self::clear);
  }
  {
    typedef VornEMPAdapterControl Self;
    typedef VornEMPAdapterIF Player;
    const Of<Visitor, Self> of(visitor, "VornEMPAdapterControl");
    of.onHost();
    of.hostOnly(33, "getEMPAdapter", &Host::getEMPAdapter);
    of.unlocked(3, "login", &Player::login, &Self::login,
                "accessToken userName forceLogin refreshInterval playerId");
    of.unlocked(4, "logout", &Player::logout, &Self::logout, "playerId");
    of.unlocked(5, "launchAndPlay", &Player::launchAndPlay, &Self::launchAndPlay,
                "playContextToken offset playerId");
    of.unlocked(6, "nextTrack", &Player::nextTrack, &Self::nextTrack, "playerId");
    of.unlocked(7, "previousTrack", &Player::previousTrack, &Self::previousTrack, "playerId");
    of.unlocked(8, "restartCurrentTrack", &Player::restartCurrentTrack, &Self::restartCurrentTrack,
                "playerId");
    of.unlocked(9, "setShuffleOn", &Player::setShuffleOn, &Self::setShuffleOn, "playerId");
    of.unlocked(10, "setShuffleOff", &Player::setShuffleOff, &Self::setShuffleOff, "playerId");
    of.unlocked(11, "resume", &Player::resume, &Self::resume, "playerId");
    of.unlocked(12, "pause", &Player::pause, &Self::pause, "playerId");
    of.unlocked(13, "stop", &Player::stop, &Self::stop, "playerId");
    of.unlocked(14, "skipForward", &Player::skipForward, &Self::skipForward, "offset playerId");
    of.unlocked(15, "setRepeatAll", &Player::setRepeatAll, &Self::setRepeatAll, "playerId");
    of.unlocked(16, "setRepeatNone", &Player::setRepeatNone, &Self::setRepeatNone, "playerId");
    of.unlocked(17, "setRepeatOne", &Player::setRepeatOne, &Self::setRepeatOne, "playerId");
    of.unlocked(18, "getPlaybackState", &Player::getPlaybackState, &Self::getPlaybackState, "playerId");
  }
  {
    typedef VornCommsManager Self;
    const Of<Visitor, Self> of(visitor, "VornCommsManager");
    of.onHost();
    of.locked(66, "onCommsStateChanged", &Host::onCommsStateChanged, &Self::onCommsStateChanged, "info");
    of.up(1, "notifyCallAction", &Self::notifyCallAction, "action");
  }
}

}  // namespace vorn_testing
