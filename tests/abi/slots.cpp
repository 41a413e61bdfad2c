// Machine-level slot calls, both ways: every operation is called through its mangled name and must reach exactly its
// slot of a hand-made table, with its arguments where the calling convention puts them.

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>

#include "Declarations.h"

namespace {

using namespace slots;
using namespace VornDeviceAbstractionLayer;
using DeviceAbstractionLayer::CommsControllerInterface;
using DeviceAbstractionLayer::CommsManagerInterface;

Table& playerTable() {
  static Table table(20);
  SLOT(3, "login", bool, const Text&, const Text&, bool, Duration, Text);
  SLOT(4, "logout", bool, Text);
  SLOT(5, "launchAndPlay", bool, Text, Duration, Text);
  SLOT(6, "nextTrack", bool, Text);
  SLOT(7, "previousTrack", bool, Text);
  SLOT(8, "restartCurrentTrack", bool, Text);
  SLOT(9, "setShuffleOn", bool, Text);
  SLOT(10, "setShuffleOff", bool, Text);
  SLOT(11, "resume", bool, Text);
  SLOT(12, "pause", bool, Text);
  SLOT(13, "stop", bool, Text);
  SLOT(14, "skipForward", bool, Duration, Text);
  SLOT(15, "setRepeatAll", bool, Text);
  SLOT(16, "setRepeatNone", bool, Text);
  SLOT(17, "setRepeatOne", bool, Text);
  SLOT(18, "getPlaybackState", Text, Text);
  return table;
}

Table& hostTable() {
  static Table table(70);
  SLOT(3, "alexaStateChanged", void, Text);
  SLOT(4, "dialogUXStateChanged", void, Text);
  SLOT(5, "notifyMainAppInitialized", void);
  SLOT(6, "requestAudioFocus", bool);
  SLOT(7, "releaseAudioFocus", bool);
  SLOT(8, "startStreamingAudioData", bool);
  SLOT(9, "stopStreamingAudioData", void);
  SLOT(10, "isMicrophoneAvailable", bool);
  SLOT(11, "setAlexaHandsFreeState", void, bool);
  SLOT(12, "notifyAlexaInvocationDetected", void, Text);
  SLOT(13, "getVolume", int);
  SLOT(14, "getMuteStatus", bool);
  SLOT(15, "getTimezone", Text);
  SLOT(16, "getDeviceLocale", Text);
  SLOT(17, "changeAlexaLocale", void, Text);
  SLOT(18, "getDeviceInformation", Entries);
  SLOT(19, "getNetworkConnectionStatus", bool);
  SLOT(20, "updateInternetConnectionStatus", void, bool);
  SLOT(21, "getConfigData", Text, Text);
  SLOT(22, "getSystemSetting", bool, Text, Text&);
  SLOT(23, "setSystemSetting", bool, Text, Text);
  SLOT(24, "getVSKCapabilities", Text);
  SLOT(25, "open", bool);
  SLOT(26, "readKeyValue", Entries, const Text&);
  SLOT(27, "writeKeyValue", bool, Entries);
  SLOT(28, "removeKeyValue", bool, const Texts&);
  SLOT(29, "clear", bool);
  SLOT(30, "onLogEmitted", void, const Text&, const Text&);
  SLOT(31, "sendCBLInfo", void, Text&, Text&, Int64&);
  SLOT(32, "alexaAuthStatusChanged", void, Text);
  SLOT(33, "getEMPAdapter", void*);
  SLOT(34, "sendAppMessage", void, Text, Text, Text);
  SLOT(35, "setAnimation", int, Texts);
  SLOT(36, "onChangeChannel", Result, Text);
  SLOT(37, "onInputChange", bool, const Text&);
  SLOT(38, "onSkipChannel", Result, int);
  SLOT(39, "onSendKeystroke", Result, Text);
  SLOT(40, "onChangePlaybackPlay", Result, Text);
  SLOT(41, "onChangePlaybackPause", Result, Text);
  SLOT(42, "onChangePlaybackStop", Result, Text);
  SLOT(43, "onChangePlaybackStartOver", Result, Text);
  SLOT(44, "onChangePlaybackPrevious", Result, Text);
  SLOT(45, "onChangePlaybackNext", Result, Text);
  SLOT(46, "onChangePlaybackRewind", Result, Text);
  SLOT(47, "onChangePlaybackFastForward", Result, Text);
  SLOT(48, "onSearchAndPlay", Result, Text);
  SLOT(49, "onSearchAndDisplayResults", Result, Text);
  SLOT(50, "onSetMode", Result, Text, Text);
  SLOT(51, "onAdjustMode", Result, Text, int);
  SLOT(52, "onSetPowerState", Result, bool);
  SLOT(53, "onSetPowerState", Result, bool, Text);
  SLOT(54, "onSetRangeValue", Result, double);
  SLOT(55, "onAdjustRangeValue", Result, double);
  SLOT(56, "onSetToggleState", Result, Text, Text);
  SLOT(57, "onLaunchTarget", Result, Text);
  SLOT(58, "onStartRecording", Result);
  SLOT(59, "onStopRecording", Result);
  SLOT(60, "onAdjustSeekPosition", Result, int);
  SLOT(61, "onSetVolume", Result, int);
  SLOT(62, "onAdjustVolume", Result, int);
  SLOT(63, "onMute", Result, bool);
  SLOT(64, "clearGUICard", bool);
  SLOT(65, "renderGUICard", bool, const Text&);
  SLOT(66, "onCommsStateChanged", void, const CommsState&);
  return table;
}

/// The adapter on a host that is a table, made on first use.
template <class Adapter>
const std::shared_ptr<Adapter>& made() {
  static const std::shared_ptr<Adapter> adapter =
      Adapter::CreateInstance(*reinterpret_cast<VornDALImplIF*>(hostTable().object()));
  return adapter;
}

/// The argument at a place of the list: two texts of one call differ.
template <class T>
T& sample(int place);
template <>
Text& sample(int place) {
  static Text texts[] = {"one, longer than a small string", "two", std::string("\0 three", 7), "four",
                         "five"};
  return texts[place];
}
template <>
bool& sample(int) {
  static bool value = true;
  return value;
}
template <>
int& sample(int place) {
  static int values[] = {-7, 9};
  return values[place];
}
template <>
double& sample(int) {
  static double value = -2.5;
  return value;
}
template <>
Texts& sample(int) {
  static Texts values = {"a", "b", "a"};
  return values;
}
template <>
Entries& sample(int) {
  static Entries values = {{"k", "v"}, {"l", "w"}};
  return values;
}
template <>
Duration& sample(int) {
  static Duration value(-90000);
  return value;
}
template <>
Int64& sample(int) {
  static Int64 value = 9000000000;
  return value;
}
template <>
Samples& sample(int) {
  static Samples values(160);
  return values;
}
template <>
CommsManagerInterface::CommsStateInfo& sample(int) {
  static CommsState value{5};
  return reinterpret_cast<CommsManagerInterface::CommsStateInfo&>(value);
}
template <>
CommsControllerInterface::CallAction& sample(int) {
  static auto value = static_cast<CommsControllerInterface::CallAction>(77);
  return value;
}

/// The same as their tables see them.
const CommsState& seenAs(const CommsManagerInterface::CommsStateInfo& value) {
  return reinterpret_cast<const CommsState&>(value);
}
int seenAs(CommsControllerInterface::CallAction value) { return static_cast<int>(value); }
template <class T>
const T& seenAs(const T& value) {
  return value;
}

struct Row {
  std::string name;
  int slot;
  Seen expected;
  std::string answer;
  std::function<std::string()> call;
};

template <class C, class R, class... A, std::size_t... Place>
Row row(const char* name, int slot, R (C::*operation)(A...), std::index_sequence<Place...>) {
  Row row{name, slot, Seen(), "", nullptr};
  (note(row.expected, seenAs(sample<std::decay_t<A>>(Place)), std::is_reference<A>::value), ...);
  if constexpr (!std::is_void<R>::value) {
    row.answer = show(Answer<R>::of(slot));
    row.call = [operation] { return show((made<C>().get()->*operation)(sample<std::decay_t<A>>(Place)...)); };
  } else {
    row.call = [operation] {
      (made<C>().get()->*operation)(sample<std::decay_t<A>>(Place)...);
      return std::string();
    };
  }
  return row;
}

template <class C, class R, class... A>
Row row(const char* name, int slot, R (C::*operation)(A...)) {
  return row(name, slot, operation, std::index_sequence_for<A...>());
}

std::vector<Row> host() {
  return {
      row("VornAlexaState::alexaStateChanged", 3, &VornAlexaState::alexaStateChanged),
      row("VornAlexaState::dialogUXStateChanged", 4, &VornAlexaState::dialogUXStateChanged),
      row("VornAlexaState::notifyMainAppInitialized", 5, &VornAlexaState::notifyMainAppInitialized),
      row("VornAudioFocus::requestAudioFocus", 6, &VornAudioFocus::requestAudioFocus),
      row("VornAudioFocus::releaseAudioFocus", 7, &VornAudioFocus::releaseAudioFocus),
      row("VornAudioIn::startStreamingAudioData", 8, &VornAudioIn::startStreamingAudioData),
      row("VornAudioIn::stopStreamingAudioData", 9, &VornAudioIn::stopStreamingAudioData),
      row("VornAudioIn::isMicrophoneAvailable", 10, &VornAudioIn::isMicrophoneAvailable),
      row("VornAudioIn::setAlexaHandsFreeState", 11, &VornAudioIn::setAlexaHandsFreeState),
      row("VornAudioIn::notifyAlexaInvocationDetected", 12, &VornAudioIn::notifyAlexaInvocationDetected),
      row("VornDeviceInfo::getVolume", 13, &VornDeviceInfo::getVolume),
      row("VornDeviceInfo::getMuteStatus", 14, &VornDeviceInfo::getMuteStatus),
      row("VornDeviceInfo::getTimezone", 15, &VornDeviceInfo::getTimezone),
      row("VornDeviceInfo::getDeviceLocale", 16, &VornDeviceInfo::getDeviceLocale),
      row("VornDeviceInfo::changeAlexaLocale", 17, &VornDeviceInfo::changeAlexaLocale),
      row("VornDeviceInfo::getDeviceInformation", 18, &VornDeviceInfo::getDeviceInformation),
      row("VornDeviceInfo::getNetworkConnectionStatus", 19, &VornDeviceInfo::getNetworkConnectionStatus),
      row("VornDeviceInfo::updateInternetConnectionStatus", 20,
          &VornDeviceInfo::updateInternetConnectionStatus),
      row("VornDeviceInfo::getConfigData", 21, &VornDeviceInfo::getConfigData),
      row("VornDeviceInfo::getSystemSetting", 22, &VornDeviceInfo::getSystemSetting),
      row("VornDeviceInfo::setSystemSetting", 23, &VornDeviceInfo::setSystemSetting),
      row("VornDeviceInfo::getVSKCapabilities", 24, &VornDeviceInfo::getVSKCapabilities),
      row("VornStorage::open", 25, &VornStorage::open),
      row("VornStorage::readKeyValue", 26, &VornStorage::readKeyValue),
      row("VornStorage::writeKeyValue", 27, &VornStorage::writeKeyValue),
      row("VornStorage::removeKeyValue", 28, &VornStorage::removeKeyValue),
      row("VornStorage::clear", 29, &VornStorage::clear),
      row("VornLoggerObserver::onLogEmitted", 30, &VornLoggerObserver::onLogEmitted),
      row("VornOOBE::sendCBLInfo", 31, &VornOOBE::sendCBLInfo),
      row("VornOOBE::alexaAuthStatusChanged", 32, &VornOOBE::alexaAuthStatusChanged),
      row("VornAppMessaging::sendAppMessage", 34, &VornAppMessaging::sendAppMessage),
      row("VornLEDController::setAnimation", 35, &VornLEDController::setAnimation),
      row("VornDeviceCapabilities::onChangeChannel", 36, &VornDeviceCapabilities::onChangeChannel),
      row("VornDeviceCapabilities::onInputChange", 37, &VornDeviceCapabilities::onInputChange),
      row("VornDeviceCapabilities::onSkipChannel", 38, &VornDeviceCapabilities::onSkipChannel),
      row("VornDeviceCapabilities::onSendKeystroke", 39, &VornDeviceCapabilities::onSendKeystroke),
      row("VornDeviceCapabilities::onChangePlaybackPlay", 40, &VornDeviceCapabilities::onChangePlaybackPlay),
      row("VornDeviceCapabilities::onChangePlaybackPause", 41,
          &VornDeviceCapabilities::onChangePlaybackPause),
      row("VornDeviceCapabilities::onChangePlaybackStop", 42, &VornDeviceCapabilities::onChangePlaybackStop),
      row("VornDeviceCapabilities::onChangePlaybackStartOver", 43,
          &VornDeviceCapabilities::onChangePlaybackStartOver),
      row("VornDeviceCapabilities::onChangePlaybackPrevious", 44,
          &VornDeviceCapabilities::onChangePlaybackPrevious),
      row("VornDeviceCapabilities::onChangePlaybackNext", 45, &VornDeviceCapabilities::onChangePlaybackNext),
      row("VornDeviceCapabilities::onChangePlaybackRewind", 46,
          &VornDeviceCapabilities::onChangePlaybackRewind),
      row("VornDeviceCapabilities::onChangePlaybackFastForward", 47,
          &VornDeviceCapabilities::onChangePlaybackFastForward),
      row("VornDeviceCapabilities::onSearchAndPlay", 48, &VornDeviceCapabilities::onSearchAndPlay),
      row("VornDeviceCapabilities::onSearchAndDisplayResults", 49,
          &VornDeviceCapabilities::onSearchAndDisplayResults),
      row("VornDeviceCapabilities::onSetMode", 50, &VornDeviceCapabilities::onSetMode),
      row("VornDeviceCapabilities::onAdjustMode", 51, &VornDeviceCapabilities::onAdjustMode),
      row("VornDeviceCapabilities::onSetPowerState", 52,
          static_cast<Result (VornDeviceCapabilities::*)(bool)>(&VornDeviceCapabilities::onSetPowerState)),
      row("VornDeviceCapabilities::onSetPowerState", 53,
          static_cast<Result (VornDeviceCapabilities::*)(bool, Text)>(
              &VornDeviceCapabilities::onSetPowerState)),
      row("VornDeviceCapabilities::onSetRangeValue", 54, &VornDeviceCapabilities::onSetRangeValue),
      row("VornDeviceCapabilities::onAdjustRangeValue", 55, &VornDeviceCapabilities::onAdjustRangeValue),
      row("VornDeviceCapabilities::onSetToggleState", 56, &VornDeviceCapabilities::onSetToggleState),
      row("VornDeviceCapabilities::onLaunchTarget", 57, &VornDeviceCapabilities::onLaunchTarget),
      row("VornDeviceCapabilities::onStartRecording", 58, &VornDeviceCapabilities::onStartRecording),
      row("VornDeviceCapabilities::onStopRecording", 59, &VornDeviceCapabilities::onStopRecording),
      row("VornDeviceCapabilities::onAdjustSeekPosition", 60, &VornDeviceCapabilities::onAdjustSeekPosition),
      row("VornDeviceCapabilities::onSetVolume", 61, &VornDeviceCapabilities::onSetVolume),
      row("VornDeviceCapabilities::onAdjustVolume", 62, &VornDeviceCapabilities::onAdjustVolume),
      row("VornDeviceCapabilities::onMute", 63, &VornDeviceCapabilities::onMute),
      row("VornGUIOutput::clearGUICard", 64, &VornGUIOutput::clearGUICard),
      row("VornGUIOutput::renderGUICard", 65, &VornGUIOutput::renderGUICard),
      row("VornCommsManager::onCommsStateChanged", 66, &VornCommsManager::onCommsStateChanged),
  };
}

std::vector<Row> player() {
  return {
      row("VornEMPAdapterControl::login", 3, &VornEMPAdapterControl::login),
      row("VornEMPAdapterControl::logout", 4, &VornEMPAdapterControl::logout),
      row("VornEMPAdapterControl::launchAndPlay", 5, &VornEMPAdapterControl::launchAndPlay),
      row("VornEMPAdapterControl::nextTrack", 6, &VornEMPAdapterControl::nextTrack),
      row("VornEMPAdapterControl::previousTrack", 7, &VornEMPAdapterControl::previousTrack),
      row("VornEMPAdapterControl::restartCurrentTrack", 8, &VornEMPAdapterControl::restartCurrentTrack),
      row("VornEMPAdapterControl::setShuffleOn", 9, &VornEMPAdapterControl::setShuffleOn),
      row("VornEMPAdapterControl::setShuffleOff", 10, &VornEMPAdapterControl::setShuffleOff),
      row("VornEMPAdapterControl::resume", 11, &VornEMPAdapterControl::resume),
      row("VornEMPAdapterControl::pause", 12, &VornEMPAdapterControl::pause),
      row("VornEMPAdapterControl::stop", 13, &VornEMPAdapterControl::stop),
      row("VornEMPAdapterControl::skipForward", 14, &VornEMPAdapterControl::skipForward),
      row("VornEMPAdapterControl::setRepeatAll", 15, &VornEMPAdapterControl::setRepeatAll),
      row("VornEMPAdapterControl::setRepeatNone", 16, &VornEMPAdapterControl::setRepeatNone),
      row("VornEMPAdapterControl::setRepeatOne", 17, &VornEMPAdapterControl::setRepeatOne),
      row("VornEMPAdapterControl::getPlaybackState", 18, &VornEMPAdapterControl::getPlaybackState),
  };
}

std::vector<Row> assistant() {
  return {
      row("VornDeviceInfo::notifySystemSettingChanged", 33, &VornDeviceInfo::notifySystemSettingChanged),
      row("VornDeviceInfo::notifyLocaleChange", 34,
          static_cast<void (VornDeviceInfo::*)(Text)>(&VornDeviceInfo::notifyLocaleChange)),
      row("VornDeviceInfo::notifyLocaleChange", 35,
          static_cast<void (VornDeviceInfo::*)(Texts)>(&VornDeviceInfo::notifyLocaleChange)),
      row("VornDeviceInfo::notifyNetworkConnectionChanged", 37,
          &VornDeviceInfo::notifyNetworkConnectionChanged),
      row("VornDeviceInfo::notifyMicrophoneAvailabilityChanged", 38,
          &VornDeviceInfo::notifyMicrophoneAvailabilityChanged),
      row("VornDeviceInfo::notifyVolumeChanged", 41, &VornDeviceInfo::notifyVolumeChanged),
      row("VornDeviceInfo::notifyMuteChanged", 42, &VornDeviceInfo::notifyMuteChanged),
      row("VornDeviceInfo::notifyHandsfreeStateChanged", 47, &VornDeviceInfo::notifyHandsfreeStateChanged),
      row("VornDeviceCapabilities::notifyUpdatedAssociation", 30,
          &VornDeviceCapabilities::notifyUpdatedAssociation),
      row("VornDeviceCapabilities::notifyFriendlyNameChange", 39,
          &VornDeviceCapabilities::notifyFriendlyNameChange),
      row("VornGUIOutput::notifyPlaybackControllerAction", 5, &VornGUIOutput::notifyPlaybackControllerAction),
      row("VornOOBE::notifyOOBEInitiated", 4, &VornOOBE::notifyOOBEInitiated),
      row("VornOOBE::notifyOOBECancelled", 6, &VornOOBE::notifyOOBECancelled),
      row("VornOOBE::getAlexaAuthStatus", 11, &VornOOBE::getAlexaAuthStatus),
      row("VornAudioIn::notifyAlexaButtonPress", 7, &VornAudioIn::notifyAlexaButtonPress),
      row("VornAudioIn::notifyAlexaButtonReleased", 8, &VornAudioIn::notifyAlexaButtonReleased),
      row("VornAudioIn::sendAudioData", 11, &VornAudioIn::sendAudioData),
      row("VornAppMessaging::SendMessageToxApp", 1, &VornAppMessaging::SendMessageToxApp),
      row("VornCommsManager::notifyCallAction", 1, &VornCommsManager::notifyCallAction),
  };
}

class Slots : public testing::TestWithParam<Row> {
 protected:
  void SetUp() override {
    GetParam().call();  // what a first call makes is made
    seen.clear();
  }
};

TEST_P(Slots, AreReachedByExactlyTheirOperation) {
  const Row& row = GetParam();
  EXPECT_EQ(row.call(), row.answer);
  ASSERT_FALSE(seen.empty());
  const Seen& call =
      seen[0].slot == 33 && seen.size() == 2 ? seen[1] : seen[0];  // a command fetches its player first
  EXPECT_EQ(call.slot, row.slot);
  EXPECT_EQ(call.arguments, row.expected.arguments);
  EXPECT_EQ(call.references, row.expected.references);
}

std::string name(const testing::TestParamInfo<Row>& test) {
  std::string name = test.param.name;
  return name.replace(name.find("::"), 2, "_") + "_" + std::to_string(test.param.slot);
}

INSTANTIATE_TEST_SUITE_P(Host, Slots, testing::ValuesIn(host()), name);
INSTANTIATE_TEST_SUITE_P(Player, Slots, testing::ValuesIn(player()), name);
INSTANTIATE_TEST_SUITE_P(Assistant, Slots, testing::ValuesIn(assistant()), name);

TEST(SlotTables, AreReachedInEverySlotOnce) {
  std::map<int, int> slots;
  for (const Row& row : host()) ++slots[row.slot];
  EXPECT_EQ(slots.size(), 63U);  // and the 33rd, by every command of the external player
  EXPECT_EQ(player().size(), 16U);
  EXPECT_EQ(assistant().size(), 19U);
}

TEST(SlotTables, GiveEveryCommandThePlayerThatTheHostHandsOut) {
  made<VornEMPAdapterControl>();
  seen.clear();
  made<VornEMPAdapterControl>()->stop("kitchen");
  ASSERT_EQ(seen.size(), 2U);
  EXPECT_EQ(seen[0].slot, 33);
  EXPECT_EQ(seen[1].object, playerTable().object());
}

TEST(SlotTables, TellTheHostOfAButtonPressAfterTheAssistant) {
  made<VornAudioIn>();
  seen.clear();
  made<VornAudioIn>()->notifyAlexaButtonPress("WakeWordDetected", Duration(500));
  ASSERT_EQ(seen.size(), 2U);
  EXPECT_EQ(seen[0].slot, 7);
  EXPECT_EQ(seen[1].slot, 12);
  EXPECT_EQ(seen[1].arguments, "AlexaButtonPress");
}

}  // namespace

namespace slots {

void* Answer<void*>::of(int) { return playerTable().object(); }

}  // namespace slots
