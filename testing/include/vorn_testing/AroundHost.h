#pragma once

#include <type_traits>

#include "Operations.h"

namespace vorn_testing {

/// What an operation does next: it reaches the double that stands behind.
template <class Interface, class Result, class... Parameters>
class Onward {
 public:
  typedef Result (Interface::*Member)(Parameters...);

  Onward(Interface& behind, Member member) : m_behind(behind), m_member(member) {}

  /// Hands the call on: references as they are, what came by value moved.
  Result operator()(typename std::remove_reference<Parameters>::type&... arguments) const {
    return (m_behind.*m_member)(static_cast<Parameters&&>(arguments)...);
  }

 private:
  Interface& m_behind;
  Member m_member;
};

namespace list {

/// The operations of an interface, each at the index of its slot.
const Operation* ofHost();
const Operation* ofPlayer();

}  // namespace list

/// A base for external media players that do the same around every operation, as AroundHost.
template <class Self>
class AroundPlayer : public VornDeviceAbstractionLayer::VornEMPAdapterIF {
  typedef VornDeviceAbstractionLayer::VornEMPAdapterIF Player;

 public:
  /// `inner` is borrowed.
  explicit AroundPlayer(Player& inner) : m_inner(inner), m_operations(list::ofPlayer()) {}

  bool login(const std::string& accessToken, const std::string& userName, bool forceLogin,
             std::chrono::milliseconds refreshInterval, std::string playerId) override {
    return call(3, &Player::login, accessToken, userName, forceLogin, refreshInterval, playerId);
  }
  bool logout(std::string playerId) override { return call(4, &Player::logout, playerId); }
  bool launchAndPlay(std::string playContextToken, std::chrono::milliseconds offset,
                     std::string playerId) override {
    return call(5, &Player::launchAndPlay, playContextToken, offset, playerId);
  }
  bool nextTrack(std::string playerId) override { return call(6, &Player::nextTrack, playerId); }
  bool previousTrack(std::string playerId) override { return call(7, &Player::previousTrack, playerId); }
  bool restartCurrentTrack(std::string playerId) override {
    return call(8, &Player::restartCurrentTrack, playerId);
  }
  bool setShuffleOn(std::string playerId) override { return call(9, &Player::setShuffleOn, playerId); }
  bool setShuffleOff(std::string playerId) override { return call(10, &Player::setShuffleOff, playerId); }
  bool resume(std::string playerId) override { return call(11, &Player::resume, playerId); }
  bool pause(std::string playerId) override { return call(12, &Player::pause, playerId); }
  bool stop(std::string playerId) override { return call(13, &Player::stop, playerId); }
  bool skipForward(std::chrono::milliseconds offset, std::string playerId) override {
    return call(14, &Player::skipForward, offset, playerId);
  }
  bool setRepeatAll(std::string playerId) override { return call(15, &Player::setRepeatAll, playerId); }
  bool setRepeatNone(std::string playerId) override { return call(16, &Player::setRepeatNone, playerId); }
  bool setRepeatOne(std::string playerId) override { return call(17, &Player::setRepeatOne, playerId); }
  std::string getPlaybackState(std::string playerId) override {
    return call(18, &Player::getPlaybackState, playerId);
  }

 private:
  template <class Result, class... Parameters>
  Result call(int slot, Result (Player::*member)(Parameters...),
              typename std::remove_reference<Parameters>::type&... arguments) {
    return static_cast<Self*>(this)->around(
        m_operations[slot], Onward<Player, Result, Parameters...>(m_inner, member), arguments...);
  }

  Player& m_inner;
  const Operation* const m_operations;
};

/// A base for hosts that do the same around every operation: count it, delay it, fail it, look at its arguments.
///
/// Each operation becomes one call of around(), which the derived class writes once. It hands on by calling `onward`,
/// or does not; what it returns is the operation's answer:
///
///     class Counting : public vorn_testing::AroundHost<Counting> {
///      public:
///       explicit Counting(VornDALImplIF& inner) : AroundHost(inner) {}
///
///       template <class Result, class Interface, class... Parameters>
///       Result around(const vorn_testing::Operation& operation,
///                     const vorn_testing::Onward<Interface, Result, Parameters...>& onward,
///                     typename std::remove_reference<Parameters>::type&... arguments) {
///         ++counts[operation.name];
///         return onward(arguments...);
///       }
///
///       std::map<std::string, int> counts;
///     };
///
/// around() runs on the calling thread, on several at once. It is public, or AroundHost<Counting> is a friend. A single
/// operation that needs more is overridden as in any host.
template <class Self>
class AroundHost : public VornDeviceAbstractionLayer::VornDALImplIF {
  typedef VornDeviceAbstractionLayer::VornDALImplIF Host;
  typedef VornDeviceAbstractionLayer::VornEMPAdapterIF Player;

 public:
  /// `inner` is borrowed.
  explicit AroundHost(Host& inner) : m_inner(inner), m_operations(list::ofHost()) {}

  void alexaStateChanged(std::string state) override { return call(3, &Host::alexaStateChanged, state); }
  void dialogUXStateChanged(std::string state) override {
    return call(4, &Host::dialogUXStateChanged, state);
  }
  void notifyMainAppInitialized() override { return call(5, &Host::notifyMainAppInitialized); }
  bool requestAudioFocus() override { return call(6, &Host::requestAudioFocus); }
  bool releaseAudioFocus() override { return call(7, &Host::releaseAudioFocus); }
  bool startStreamingAudioData() override { return call(8, &Host::startStreamingAudioData); }
  void stopStreamingAudioData() override { return call(9, &Host::stopStreamingAudioData); }
  bool isMicrophoneAvailable() override { return call(10, &Host::isMicrophoneAvailable); }
  void setAlexaHandsFreeState(bool enabled) override {
    return call(11, &Host::setAlexaHandsFreeState, enabled);
  }
  void notifyAlexaInvocationDetected(std::string invocationType) override {
    return call(12, &Host::notifyAlexaInvocationDetected, invocationType);
  }
  int getVolume() override { return call(13, &Host::getVolume); }
  bool getMuteStatus() override { return call(14, &Host::getMuteStatus); }
  std::string getTimezone() override { return call(15, &Host::getTimezone); }
  std::string getDeviceLocale() override { return call(16, &Host::getDeviceLocale); }
  void changeAlexaLocale(std::string locale) override { return call(17, &Host::changeAlexaLocale, locale); }
  std::map<std::string, std::string> getDeviceInformation() override {
    return call(18, &Host::getDeviceInformation);
  }
  bool getNetworkConnectionStatus() override { return call(19, &Host::getNetworkConnectionStatus); }
  void updateInternetConnectionStatus(bool connected) override {
    return call(20, &Host::updateInternetConnectionStatus, connected);
  }
  std::string getConfigData(std::string key) override { return call(21, &Host::getConfigData, key); }
  bool getSystemSetting(std::string key, std::string& value) override {
    return call(22, &Host::getSystemSetting, key, value);
  }
  bool setSystemSetting(std::string key, std::string value) override {
    return call(23, &Host::setSystemSetting, key, value);
  }
  std::string getVSKCapabilities() override { return call(24, &Host::getVSKCapabilities); }
  bool open() override { return call(25, &Host::open); }
  std::map<std::string, std::string> readKeyValue(const std::string& key) override {
    return call(26, &Host::readKeyValue, key);
  }
  bool writeKeyValue(std::map<std::string, std::string> entries) override {
    return call(27, &Host::writeKeyValue, entries);
  }
  bool removeKeyValue(const std::vector<std::string>& keys) override {
    return call(28, &Host::removeKeyValue, keys);
  }
  bool clear() override { return call(29, &Host::clear); }
  void onLogEmitted(const std::string& first, const std::string& second) override {
    return call(30, &Host::onLogEmitted, first, second);
  }
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override {
    return call(31, &Host::sendCBLInfo, first, second, number);
  }
  void alexaAuthStatusChanged(std::string status) override {
    return call(32, &Host::alexaAuthStatusChanged, status);
  }
  Player* getEMPAdapter() override {
    return handOn(33, Onward<AroundHost, Player*>(*this, &AroundHost::fronted));
  }
  void sendAppMessage(std::string first, std::string second, std::string third) override {
    return call(34, &Host::sendAppMessage, first, second, third);
  }
  int setAnimation(std::vector<std::string> animations) override {
    return call(35, &Host::setAnimation, animations);
  }
  std::pair<bool, std::string> onChangeChannel(std::string channel) override {
    return call(36, &Host::onChangeChannel, channel);
  }
  bool onInputChange(const std::string& input) override { return call(37, &Host::onInputChange, input); }
  std::pair<bool, std::string> onSkipChannel(int count) override {
    return call(38, &Host::onSkipChannel, count);
  }
  std::pair<bool, std::string> onSendKeystroke(std::string keystroke) override {
    return call(39, &Host::onSendKeystroke, keystroke);
  }
  std::pair<bool, std::string> onChangePlaybackPlay(std::string payload) override {
    return call(40, &Host::onChangePlaybackPlay, payload);
  }
  std::pair<bool, std::string> onChangePlaybackPause(std::string payload) override {
    return call(41, &Host::onChangePlaybackPause, payload);
  }
  std::pair<bool, std::string> onChangePlaybackStop(std::string payload) override {
    return call(42, &Host::onChangePlaybackStop, payload);
  }
  std::pair<bool, std::string> onChangePlaybackStartOver(std::string payload) override {
    return call(43, &Host::onChangePlaybackStartOver, payload);
  }
  std::pair<bool, std::string> onChangePlaybackPrevious(std::string payload) override {
    return call(44, &Host::onChangePlaybackPrevious, payload);
  }
  std::pair<bool, std::string> onChangePlaybackNext(std::string payload) override {
    return call(45, &Host::onChangePlaybackNext, payload);
  }
  std::pair<bool, std::string> onChangePlaybackRewind(std::string payload) override {
    return call(46, &Host::onChangePlaybackRewind, payload);
  }
  std::pair<bool, std::string> onChangePlaybackFastForward(std::string payload) override {
    return call(47, &Host::onChangePlaybackFastForward, payload);
  }
  std::pair<bool, std::string> onSearchAndPlay(std::string payload) override {
    return call(48, &Host::onSearchAndPlay, payload);
  }
  std::pair<bool, std::string> onSearchAndDisplayResults(std::string payload) override {
    return call(49, &Host::onSearchAndDisplayResults, payload);
  }
  std::pair<bool, std::string> onSetMode(std::string mode, std::string value) override {
    return call(50, &Host::onSetMode, mode, value);
  }
  std::pair<bool, std::string> onAdjustMode(std::string mode, int delta) override {
    return call(51, &Host::onAdjustMode, mode, delta);
  }
  std::pair<bool, std::string> onSetPowerState(bool on) override {
    return call(52, list::Taking<bool>::member(&Host::onSetPowerState), on);
  }
  std::pair<bool, std::string> onSetPowerState(bool on, std::string target) override {
    return call(53, list::Taking<bool, std::string>::member(&Host::onSetPowerState), on, target);
  }
  std::pair<bool, std::string> onSetRangeValue(double value) override {
    return call(54, &Host::onSetRangeValue, value);
  }
  std::pair<bool, std::string> onAdjustRangeValue(double delta) override {
    return call(55, &Host::onAdjustRangeValue, delta);
  }
  std::pair<bool, std::string> onSetToggleState(std::string toggle, std::string state) override {
    return call(56, &Host::onSetToggleState, toggle, state);
  }
  std::pair<bool, std::string> onLaunchTarget(std::string target) override {
    return call(57, &Host::onLaunchTarget, target);
  }
  std::pair<bool, std::string> onStartRecording() override { return call(58, &Host::onStartRecording); }
  std::pair<bool, std::string> onStopRecording() override { return call(59, &Host::onStopRecording); }
  std::pair<bool, std::string> onAdjustSeekPosition(int delta) override {
    return call(60, &Host::onAdjustSeekPosition, delta);
  }
  std::pair<bool, std::string> onSetVolume(int volume) override {
    return call(61, &Host::onSetVolume, volume);
  }
  std::pair<bool, std::string> onAdjustVolume(int delta) override {
    return call(62, &Host::onAdjustVolume, delta);
  }
  std::pair<bool, std::string> onMute(bool mute) override { return call(63, &Host::onMute, mute); }
  bool clearGUICard() override { return call(64, &Host::clearGUICard); }
  bool renderGUICard(const std::string& card) override { return call(65, &Host::renderGUICard, card); }
  void onCommsStateChanged(
      const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) override {
    return call(66, &Host::onCommsStateChanged, info);
  }

 protected:
  /// What getEMPAdapter() hands out in place of the player that the host behind answered; null when that was null.
  /// A derived class puts its own in front, one for each.
  virtual Player* front(Player* inner) { return inner; }

 private:
  template <class Result, class... Parameters>
  Result call(int slot, Result (Host::*member)(Parameters...),
              typename std::remove_reference<Parameters>::type&... arguments) {
    return handOn(slot, Onward<Host, Result, Parameters...>(m_inner, member), arguments...);
  }

  template <class Result, class Interface, class... Parameters>
  Result handOn(int slot, const Onward<Interface, Result, Parameters...>& onward,
                typename std::remove_reference<Parameters>::type&... arguments) {
    return static_cast<Self*>(this)->around(m_operations[slot], onward, arguments...);
  }

  Player* fronted() { return front(m_inner.getEMPAdapter()); }

  Host& m_inner;
  const Operation* const m_operations;
};

}  // namespace vorn_testing
