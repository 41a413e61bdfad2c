#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// Capability directives: the assistant orders, the host carries out; two notifications go back.
///
/// Down  Each directive is one call of the VornDALImplIF operation of the same name, with its arguments as
///       they are: nothing is checked, empty texts, any number and not-a-number included. Without an
///       instance a directive counts as carried out.
/// Up    Each notify...() is one call of DeviceAbstractionLayer::DeviceCapabilities, fetched anew, whether
///       or not this class has an instance.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornDeviceCapabilities {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @logs   Its signature, on every call, under the lock; then the constructor's, when it creates.
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornDeviceCapabilities> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornDeviceCapabilities> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornDeviceCapabilities(VornDALImplIF& host);

  VornDeviceCapabilities(const VornDeviceCapabilities&) = delete;
  VornDeviceCapabilities& operator=(const VornDeviceCapabilities&) = delete;

  /// Changes to the channel that the text names.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangeChannel(std::string channel);

  /// Switches to the input that the text names, by the same reference.
  ///
  /// @returns    The host's answer.
  /// @ifnotlive  true
  /// @unlocked
  bool onInputChange(const std::string& input);

  /// Moves `count` channels on, or back when negative.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSkipChannel(int count);

  /// Presses the key that the text names.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSendKeystroke(std::string keystroke);

  /// Starts or resumes playback.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangePlaybackPlay(std::string payload);

  /// Pauses playback.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangePlaybackPause(std::string payload);

  /// Stops playback.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangePlaybackStop(std::string payload);

  /// Starts the current item over.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangePlaybackStartOver(std::string payload);

  /// Goes to the previous item.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangePlaybackPrevious(std::string payload);

  /// Goes to the next item.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangePlaybackNext(std::string payload);

  /// Rewinds.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangePlaybackRewind(std::string payload);

  /// Winds forward.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onChangePlaybackFastForward(std::string payload);

  /// Searches and plays the first result.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSearchAndPlay(std::string payload);

  /// Searches and shows the results.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSearchAndDisplayResults(std::string payload);

  /// Sets the mode named first to the value given second.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSetMode(std::string mode, std::string value);

  /// Moves the mode by `delta` of its values.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onAdjustMode(std::string mode, int delta);

  /// Switches the device on (true) or off.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSetPowerState(bool on);

  /// Switches on (true) or off what the text names; a host operation of its own.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSetPowerState(bool on, std::string target);

  /// Sets the range to a value on the host's scale.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSetRangeValue(double value);

  /// Moves the range by `delta` on the host's scale.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onAdjustRangeValue(double delta);

  /// Sets the toggle named first to the state given second.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onSetToggleState(std::string toggle, std::string state);

  /// Launches the app or view that the text names.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onLaunchTarget(std::string target);

  /// Starts a recording.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onStartRecording();

  /// Stops the recording.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onStopRecording();

  /// Moves the play position by `delta`, back when negative, in a unit settled between the two sides.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @unlocked
  std::pair<bool, std::string> onAdjustSeekPosition(int delta);

  /// Sets the speaker volume, on the host's scale.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @logs       The signature, on every call, before anything else. Never the value.
  /// @unlocked
  std::pair<bool, std::string> onSetVolume(int volume);

  /// Moves the speaker volume by `delta`, down when negative.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @logs       The signature, on every call, before anything else. Never the value.
  /// @unlocked
  std::pair<bool, std::string> onAdjustVolume(int delta);

  /// Mutes (true) or unmutes the speaker.
  ///
  /// @returns    The host's flag and text.
  /// @ifnotlive  true with empty text.
  /// @logs       The signature, on every call, before anything else. Never the value.
  /// @unlocked
  std::pair<bool, std::string> onMute(bool mute);

  /// Tells the assistant side the device's new friendly name; an empty one is passed on.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyFriendlyNameChange(std::string friendlyName);

  /// Tells the assistant side that an association was updated: two texts, in the host's order.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyUpdatedAssociation(std::string first, std::string second);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornDeviceCapabilities> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
