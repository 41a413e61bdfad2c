#pragma once

#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornEMPAdapterIF;

/// The host interface: what the device firmware implements and hands to every adapter.
///
/// A request of the assistant client arrives at an adapter (VornDeviceInfo, VornStorage, ...), which
/// calls the operation of the same name here, once, on the caller's thread, and hands the answer back
/// unread. Nothing is queued, retried, checked or translated on the way.
///
/// Ownership   The firmware owns the object. Pass the same one to every CreateInstance() and keep it
///             alive until every adapter is shut down and no call into an adapter can still run. The
///             library never copies or destroys it.
/// Arguments   What comes by value is your own copy. A `const &` or `&` is the caller's own object:
///             valid until you return, never to be kept. Texts are UTF-8 by agreement; any bytes,
///             also empty ones and NUL, can arrive.
/// Threads     Calls come on whatever thread the assistant client uses; the library has none of its
///             own. The word in each description tells what may overlap:
///             @locked    one at a time, under the mutex of the adapter named in the group. Do not call
///                        a @locked operation, CreateInstance(), getInstance() or Shutdown() of that
///                        adapter from inside: the mutex is not recursive and the thread would hang.
///             @unlocked  from several threads at once, also with themselves. Guard your own state.
/// Exceptions  The library catches none: what you throw reaches the assistant client, after the
///             adapter's lock and copies are released. A client that expects none will terminate, so
///             answer with a result instead.
/// Order       Every operation has a fixed slot in the virtual table, the order below. Firmware that
///             was compiled against this header relies on it: never insert, remove or reorder.
class VORN_DAL_API VornDALImplIF {
 public:
  /// Slots 1 and 2. The library never destroys the host.
  virtual ~VornDALImplIF() = default;

  // ---- Assistant state: slots 3 to 5, called by VornAlexaState -----------------------------------

  /// Tells the assistant's overall state. The vocabulary is the assistant client's; the same state may
  /// be reported twice in a row.
  /// @unlocked
  virtual void alexaStateChanged(std::string state) = 0;

  /// Tells the assistant's dialog state, for lights and sounds. The vocabulary is the assistant client's.
  /// @unlocked
  virtual void dialogUXStateChanged(std::string state) = 0;

  /// Tells that the assistant client has finished its start-up.
  /// @unlocked
  virtual void notifyMainAppInitialized() = 0;

  // ---- Audio focus: slots 6 and 7, called by VornAudioFocus --------------------------------------

  /// Asks for the audio output, before the assistant speaks or plays. Duck, pause or refuse as you like.
  /// @returns  true when the focus is granted. The library keeps no record of who holds it.
  /// @unlocked
  virtual bool requestAudioFocus() = 0;

  /// Hands the audio output back. May come without a request before it.
  /// @returns  true when the release is accepted.
  /// @unlocked
  virtual bool releaseAudioFocus() = 0;

  // ---- Voice input: slots 8 to 12, called by VornAudioIn -----------------------------------------

  /// Asks for microphone samples: from now on push buffers through VornAudioIn::sendAudioData(), from
  /// one thread of yours, until stopStreamingAudioData().
  /// @returns  true when streaming has started.
  /// @unlocked
  virtual bool startStreamingAudioData() = 0;

  /// Asks to stop pushing microphone samples.
  /// @unlocked
  virtual void stopStreamingAudioData() = 0;

  /// Asks whether a microphone can be used now (present, not muted by a switch: your choice).
  /// @returns  true when it can.
  /// @unlocked
  virtual bool isMicrophoneAvailable() = 0;

  /// Tells whether hands-free listening for the wake word shall be on.
  /// @unlocked
  virtual void setAlexaHandsFreeState(bool enabled) = 0;

  /// Tells what started a request: usually one of the texts in DeviceAbstractionLayer/InvocationTypes.h,
  /// but any text is passed on. A press of the talk button always arrives as "AlexaButtonPress", after
  /// the assistant client has heard of it and on the thread that reported the press.
  /// @unlocked
  virtual void notifyAlexaInvocationDetected(std::string invocationType) = 0;

  // ---- Device info: slots 13 to 24, called by VornDeviceInfo -------------------------------------

  /// Reports the speaker volume, on a scale of your choice; the library hands it on unread.
  /// @locked
  virtual int getVolume() = 0;

  /// Reports whether the speaker is muted.
  /// @returns  true when muted.
  /// @locked
  virtual bool getMuteStatus() = 0;

  /// Reports the time zone, such as "America/Vancouver".
  /// @locked
  virtual std::string getTimezone() = 0;

  /// Reports the device locale, such as "en-US".
  /// @locked
  virtual std::string getDeviceLocale() = 0;

  /// Asks the device to follow a new locale of the assistant.
  /// @locked
  virtual void changeAlexaLocale(std::string locale) = 0;

  /// Reports the facts about the device by field name; the names stand in
  /// DeviceAbstractionLayer/DeviceInfoConstants.h. Which of them you serve is your choice.
  /// @locked
  virtual std::map<std::string, std::string> getDeviceInformation() = 0;

  /// Reports whether the device is connected to its network.
  /// @returns  true when connected.
  /// @locked
  virtual bool getNetworkConnectionStatus() = 0;

  /// Tells whether the assistant client reaches the internet.
  /// @locked
  virtual void updateInternetConnectionStatus(bool connected) = 0;

  /// Reports one configuration item by name. What an unknown name yields is your choice.
  /// @locked
  virtual std::string getConfigData(std::string key) = 0;

  /// Reads a system setting into `value`, which is the caller's own text; leave it alone when you
  /// return false.
  /// @returns  true when `value` was written.
  /// @unlocked
  virtual bool getSystemSetting(std::string key, std::string& value) = 0;

  /// Changes a system setting.
  /// @returns  true when the setting was accepted.
  /// @locked
  virtual bool setSystemSetting(std::string key, std::string value) = 0;

  /// Reports the VSK capabilities of the device as one text, in the format that the assistant client
  /// expects ("[]" for none).
  /// @unlocked
  virtual std::string getVSKCapabilities() = 0;

  // ---- Storage: slots 25 to 29, called by VornStorage --------------------------------------------

  /// Opens the persistent key-value store. Whether the others need it first is your choice.
  /// @returns  true when the store can be used.
  /// @unlocked
  virtual bool open() = 0;

  /// Reads what is stored under `key`. Which entries a key selects, and what an absent one yields, is
  /// your choice; an empty map is the usual answer for "nothing".
  /// @unlocked
  virtual std::map<std::string, std::string> readKeyValue(const std::string& key) = 0;

  /// Stores every entry, replacing the values of keys that exist. May come with an empty map.
  /// @returns  true when the entries are stored, as durably as you promise.
  /// @unlocked
  virtual bool writeKeyValue(std::map<std::string, std::string> entries) = 0;

  /// Removes every key of the list. May come with an empty list.
  /// @returns  true when none of the keys is stored any more.
  /// @unlocked
  virtual bool removeKeyValue(const std::vector<std::string>& keys) = 0;

  /// Removes every entry.
  /// @returns  true when the store is empty.
  /// @unlocked
  virtual bool clear() = 0;

  // ---- Log records of the assistant: slot 30, called by VornLoggerObserver -----------------------

  /// Hands over one record of the assistant client's own log: two texts, in the assistant's order.
  /// @unlocked
  virtual void onLogEmitted(const std::string& first, const std::string& second) = 0;

  // ---- Setup and authorisation: slots 31 and 32, called by VornOOBE ------------------------------

  /// Hands over what the user needs to link the device: two texts (address and code, in the
  /// assistant's order) and a number whose unit is the assistant's. All three are the caller's own
  /// objects and may be written to.
  /// @unlocked
  virtual void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) = 0;

  /// Tells the new authorisation status: usually one of the texts in
  /// DeviceAbstractionLayer/AuthorizationStates.h, but any text is passed on.
  /// @unlocked
  virtual void alexaAuthStatusChanged(std::string status) = 0;

  // ---- External media player: slot 33, called by every VornEMPAdapterControl command -------------

  /// Hands out the external media player adapter. It stays yours; the library uses the pointer for the
  /// one command that asked and keeps nothing.
  /// @returns  Never null: the pointer is used without a test. Valid while the command runs.
  /// @unlocked
  virtual VornEMPAdapterIF* getEMPAdapter() = 0;

  // ---- App messages: slot 34, called by VornAppMessaging -----------------------------------------

  /// Hands over a message of the assistant app: three texts without a meaning to the library.
  /// VornAppMessaging::SendMessageToxApp() may be called from inside: it has a mutex of its own.
  /// @locked
  virtual void sendAppMessage(std::string first, std::string second, std::string third) = 0;

  // ---- LEDs: slot 35, called by VornLEDController ------------------------------------------------

  /// Plays animations by name, in the order of the list, which may be empty or repeat itself.
  /// @returns  A status of your choice, handed on unread.
  /// @locked
  virtual int setAnimation(std::vector<std::string> animations) = 0;

  // ---- Capability directives: slots 36 to 63, called by VornDeviceCapabilities -------------------
  //
  // Each answers with a success flag and a text that goes with it; both are handed on unread. Their
  // texts (channels, keys, payloads, modes) are settled between you and the assistant client, numbers
  // are not checked: any int and any double, also not-a-number, can arrive.

  /// Changes to the channel that the text names.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangeChannel(std::string channel) = 0;

  /// Switches to the input that the text names. The one directive that answers with a plain flag.
  /// @returns  true when carried out.
  /// @unlocked
  virtual bool onInputChange(const std::string& input) = 0;

  /// Moves `count` channels on, or back when negative.
  /// @unlocked
  virtual std::pair<bool, std::string> onSkipChannel(int count) = 0;

  /// Presses the key that the text names.
  /// @unlocked
  virtual std::pair<bool, std::string> onSendKeystroke(std::string keystroke) = 0;

  /// Starts or resumes playback.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangePlaybackPlay(std::string payload) = 0;

  /// Pauses playback.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangePlaybackPause(std::string payload) = 0;

  /// Stops playback.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangePlaybackStop(std::string payload) = 0;

  /// Starts the current item over.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangePlaybackStartOver(std::string payload) = 0;

  /// Goes to the previous item.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangePlaybackPrevious(std::string payload) = 0;

  /// Goes to the next item.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangePlaybackNext(std::string payload) = 0;

  /// Rewinds.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangePlaybackRewind(std::string payload) = 0;

  /// Winds forward.
  /// @unlocked
  virtual std::pair<bool, std::string> onChangePlaybackFastForward(std::string payload) = 0;

  /// Searches and plays the first result.
  /// @unlocked
  virtual std::pair<bool, std::string> onSearchAndPlay(std::string payload) = 0;

  /// Searches and shows the results.
  /// @unlocked
  virtual std::pair<bool, std::string> onSearchAndDisplayResults(std::string payload) = 0;

  /// Sets the mode named first to the value given second.
  /// @unlocked
  virtual std::pair<bool, std::string> onSetMode(std::string mode, std::string value) = 0;

  /// Moves the mode by `delta` of its values, in an order of your choice.
  /// @unlocked
  virtual std::pair<bool, std::string> onAdjustMode(std::string mode, int delta) = 0;

  /// Switches the device on (true) or off. Slot 52: the overload with one argument comes first.
  /// @unlocked
  virtual std::pair<bool, std::string> onSetPowerState(bool on) = 0;

  /// Switches on (true) or off what the text names. Slot 53.
  /// @unlocked
  virtual std::pair<bool, std::string> onSetPowerState(bool on, std::string target) = 0;

  /// Sets the range to a value, on a scale of your choice.
  /// @unlocked
  virtual std::pair<bool, std::string> onSetRangeValue(double value) = 0;

  /// Moves the range by `delta`, on the same scale.
  /// @unlocked
  virtual std::pair<bool, std::string> onAdjustRangeValue(double delta) = 0;

  /// Sets the toggle named first to the state given second.
  /// @unlocked
  virtual std::pair<bool, std::string> onSetToggleState(std::string toggle, std::string state) = 0;

  /// Launches the app or view that the text names.
  /// @unlocked
  virtual std::pair<bool, std::string> onLaunchTarget(std::string target) = 0;

  /// Starts a recording.
  /// @unlocked
  virtual std::pair<bool, std::string> onStartRecording() = 0;

  /// Stops the recording.
  /// @unlocked
  virtual std::pair<bool, std::string> onStopRecording() = 0;

  /// Moves the play position by `delta`, back when negative; the unit is the assistant client's.
  /// @unlocked
  virtual std::pair<bool, std::string> onAdjustSeekPosition(int delta) = 0;

  /// Sets the speaker volume, on the scale of getVolume(); out of range values arrive as they are.
  /// @unlocked
  virtual std::pair<bool, std::string> onSetVolume(int volume) = 0;

  /// Moves the speaker volume by `delta`, down when negative.
  /// @unlocked
  virtual std::pair<bool, std::string> onAdjustVolume(int delta) = 0;

  /// Mutes (true) or unmutes the speaker.
  /// @unlocked
  virtual std::pair<bool, std::string> onMute(bool mute) = 0;

  // ---- GUI cards: slots 64 and 65, called by VornGUIOutput ---------------------------------------

  /// Takes the card off the display.
  /// @returns  true when done.
  /// @locked
  virtual bool clearGUICard() = 0;

  /// Shows a card; the document is opaque to the library.
  /// @returns  true when shown.
  /// @locked
  virtual bool renderGUICard(const std::string& card) = 0;

  // ---- Calls: slot 66, called by VornCommsManager ------------------------------------------------

  /// Tells the new state of calls and messaging. `info` is the assistant client's own object.
  /// @locked
  virtual void onCommsStateChanged(
      const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) = 0;
};

}  // namespace VornDeviceAbstractionLayer
