#include "support/rows.h"

#include <FileLogger.h>
#include <VornAlexaState.h>
#include <VornAppMessaging.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAudioFocus.h>
#include <VornAudioIn.h>
#include <VornCommsManager.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornLoggerObserver.h>
#include <VornMediaPlayerFactory.h>
#include <VornOOBE.h>
#include <VornStorage.h>
#include <dlfcn.h>

#include <array>
#include <optional>
#include <stdexcept>
#include <tuple>

namespace fault {

namespace {

using namespace VornDeviceAbstractionLayer;
using vorn_testing::text;
using Comms = DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo;
using Action = DeviceAbstractionLayer::CommsControllerInterface::CallAction;
using Milliseconds = std::chrono::milliseconds;
using Pair = std::pair<bool, std::string>;
using Texts = std::vector<std::string>;
using Entries = std::map<std::string, std::string>;
using Samples = std::vector<short>;

constexpr Guard U = Guard::kUnlocked;
constexpr Guard L = Guard::kLocked;

// Longer than what a string object holds, so that every copy can fail; all different, so that none can be
// taken for another.
const std::string kA = "alpha, the first of three texts";
const std::string kB = "bravo, the second of three texts";
const std::string kC = "charlie, the third of three texts";

std::string text(const Comms& info) { return info.state; }
std::string text(Action action) { return text(static_cast<int>(action)); }

template <class... Arguments>
std::string signature(int slot, const std::string& operation, const Arguments&... arguments) {
  std::string line;
  ((line += (line.empty() ? "" : ", ") + text(arguments)), ...);
  return std::to_string(slot) + " " + operation + "(" + line + ")";
}

template <class Type, class Operation, class Result, class... Parameters>
class MemberCall final : public Invocation {
 public:
  MemberCall(Type& object, Operation operation, std::tuple<std::decay_t<Parameters>...> arguments)
      : m_object(object), m_operation(operation), m_arguments(std::move(arguments)) {}

  void invoke() override {
    std::apply([this](auto&... argument) { this->call(argument...); }, m_arguments);
  }

  std::string result() const override {
    std::string line;
    if constexpr (!std::is_void_v<Result>) line = text(*m_result);
    std::size_t i = 0;
    const bool written[] = {out<Parameters>()..., false};
    std::apply([&](auto&... argument) { ((line += written[i++] ? "|" + text(argument) : ""), ...); },
               m_arguments);
    return line;
  }

  std::vector<const void*> references() const override {
    const bool byReference[] = {std::is_reference_v<Parameters>..., false};
    std::vector<const void*> found;
    std::apply(
        [&](auto&... argument) {
          (found.push_back(byReference[found.size()] ? static_cast<const void*>(&argument) : nullptr), ...);
        },
        m_arguments);
    return found;
  }

 private:
  template <class Parameter>
  static constexpr bool out() {
    return std::is_lvalue_reference_v<Parameter> && !std::is_const_v<std::remove_reference_t<Parameter>>;
  }

  template <class... Arguments>
  void call(Arguments&... arguments) {
    if constexpr (std::is_void_v<Result>)
      (m_object.*m_operation)(arguments...);
    else
      m_result.emplace((m_object.*m_operation)(arguments...));
  }

  Type& m_object;
  const Operation m_operation;
  std::tuple<std::decay_t<Parameters>...> m_arguments;
  std::optional<std::conditional_t<std::is_void_v<Result>, int, Result>> m_result;
};

template <class Result, class Type, class... Parameters>
auto preparing(Result (Type::*operation)(Parameters...), std::decay_t<Parameters>... arguments) {
  using Call = MemberCall<Type, Result (Type::*)(Parameters...), Result, Parameters...>;
  return [=](void* object, World&) -> std::unique_ptr<Invocation> {
    return std::make_unique<Call>(*static_cast<Type*>(object), operation,
                                  std::tuple<std::decay_t<Parameters>...>(arguments...));
  };
}

/// Down: one call of the host's operation of the same name, while there is an instance.
template <class Result, class Type, class... Parameters>
Row down(const char* adapter, Guard guard, int slot, const char* operation,
         Result (Type::*member)(Parameters...), std::string answer, std::string fallback,
         std::decay_t<Parameters>... arguments) {
  return {adapter, operation, guard,        {}, {signature(slot, operation, arguments...)},
          answer,  fallback,  Line::kNever, "", preparing(member, arguments...)};
}

/// Up: one call of the assistant's operation of the same name, instance or not.
template <class Result, class Type, class... Parameters>
Row up(const char* adapter, int slot, const char* operation, Result (Type::*member)(Parameters...),
       std::string answer, std::decay_t<Parameters>... arguments) {
  return {adapter, operation,
          U,       {signature(slot, operation, arguments...)},
          {},      answer,
          answer,  Line::kNever,
          "",      preparing(member, arguments...)};
}

Row traced(Line when, std::string line, Row row) {
  row.when = when;
  row.line = std::move(line);
  return row;
}

Row guarded(Guard guard, Row row) {
  row.guard = guard;
  return row;
}

/// External media player commands: first getEMPAdapter(), then the player's operation; traced before the guard.
template <class Result, class Type, class... Parameters>
Row command(int slot, const char* operation, Result (Type::*member)(Parameters...),
            const std::string& signatureText, const std::string& fields, std::string answer,
            std::string fallback, std::decay_t<Parameters>... arguments) {
  Row row = down("VornEMPAdapterControl", U, slot, operation, member, answer, fallback, arguments...);
  row.seesLive.insert(row.seesLive.begin(), "33 getEMPAdapter()");
  return traced(Line::kAlways,
                (row.answer == "true" ? "bool" : "std::string") +
                    (" VornDeviceAbstractionLayer::VornEMPAdapterControl::" + std::string(operation)) + "(" +
                    signatureText + "): " + fields,
                row);
}

template <class Result, class Type>
Row command(int slot, const char* operation, Result (Type::*member)(std::string), std::string answer = "true",
            std::string fallback = "false") {
  return command(slot, operation, member, "std::string", "playerId: " + kA, answer, fallback, kA);
}

/// What has no neighbour to record it: made by `make`, run as it is.
class FreeCall final : public Invocation {
 public:
  explicit FreeCall(std::function<std::string()> call) : m_call(std::move(call)) {}
  void invoke() override { m_result = m_call(); }
  std::string result() const override { return m_result; }

 private:
  const std::function<std::string()> m_call;
  std::string m_result;
};

template <class Make>
auto freely(Make make) {
  return [make](void* object, World& world) -> std::unique_ptr<Invocation> {
    return std::make_unique<FreeCall>(make(object, world));
  };
}

template <class Argument>
Argument shown(const Argument& argument) {
  return argument;
}
std::int64_t shown(std::size_t size) { return static_cast<std::int64_t>(size); }

/// A callback that allocates when it is copied and records when it is called.
template <class... Arguments>
auto callback(World& world, const char* name) {
  return [recorder = world.recorder, name, weight = std::array<long, 8>{}](Arguments... arguments) {
    static_cast<void>(weight);
    recorder->run(vorn_testing::makeCall("callback", name, 0, nullptr, shown(arguments)...), [] {});
  };
}

using Container = VornAttachmentReaderContainerInterfaceImpl;
using Factory = VornAttachmentReaderContainerFactory;
using Start = void (*)(World&, Container&);

/// An operation of a container that `start` has brought into its state.
template <class Operation>
Row container(const char* operation, std::vector<std::string> sees, std::string answer, Start start,
              Operation call) {
  return {"VornAttachmentReaderContainerFactory",
          operation,
          U,
          sees,
          {},
          answer,
          answer,
          Line::kNever,
          "",
          freely([start, call](void* object, World& world) {
            const auto made = static_cast<Factory*>(object)->createAttachmentReaderContainer(
                callback<std::string>(world, "onClose"));
            start(world, *made);
            std::function<void(void*, std::size_t)> data =
                callback<const void*, std::size_t>(world, "onData");
            std::function<void()> end = callback<>(world, "onEnd");
            return [=, keep = world.recorder]() -> std::string { return call(*made, data, end); };
          })};
}

void alone(World&, Container&) {}
void subscribed(World& world, Container& made) {
  made.Subscribe(callback<const void*, std::size_t>(world, "onData"), callback<>(world, "onEnd"));
}

template <class Type>
constexpr Adapter standard(const char* name) {
  return {name, [](World& world) -> std::shared_ptr<void> { return Type::CreateInstance(world.host); },
          []() -> std::shared_ptr<void> { return Type::getInstance(); }, [] { Type::Shutdown(); },
          [](World& world) -> std::shared_ptr<void> { return std::make_shared<Type>(world.host); }};
}

}  // namespace

const std::vector<Adapter>& adapters() {
  static const std::vector<Adapter> all = {
      standard<VornAlexaState>("VornAlexaState"),
      standard<VornAppMessaging>("VornAppMessaging"),
      standard<VornAudioFocus>("VornAudioFocus"),
      standard<VornAudioIn>("VornAudioIn"),
      {"VornMediaPlayerFactory",
       [](World& world) -> std::shared_ptr<void> {
         VornMediaPlayerFactory::CreateInstance(world.players);
         return VornMediaPlayerFactory::getInstance();
       },
       []() -> std::shared_ptr<void> { return VornMediaPlayerFactory::getInstance(); },
       [] { VornMediaPlayerFactory::Shutdown(); },
       [](World& world) -> std::shared_ptr<void> {
         return std::make_shared<VornMediaPlayerFactory>(world.players);
       }},
      {"VornAttachmentReaderContainerFactory",
       [](World&) -> std::shared_ptr<void> { return Factory::getInstance(); },
       []() -> std::shared_ptr<void> { return Factory::getInstance(); }, [] {},
       [](World&) -> std::shared_ptr<void> { return std::make_shared<Factory>(); }},
      standard<VornDeviceCapabilities>("VornDeviceCapabilities"),
      standard<VornDeviceInfo>("VornDeviceInfo"),
      {"FileLogger", [](World&) -> std::shared_ptr<void> { return FileLogger::CreateInstance(true); },
       []() -> std::shared_ptr<void> { return FileLogger::getInstance(); }, [] { FileLogger::Shutdown(); },
       [](World&) -> std::shared_ptr<void> { return std::make_shared<FileLogger>(false); }},
      standard<VornGUIOutput>("VornGUIOutput"),
      standard<VornLEDController>("VornLEDController"),
      standard<VornLoggerObserver>("VornLoggerObserver"),
      standard<VornOOBE>("VornOOBE"),
      standard<VornStorage>("VornStorage"),
      standard<VornEMPAdapterControl>("VornEMPAdapterControl"),
      standard<VornCommsManager>("VornCommsManager"),
  };
  return all;
}

const Adapter& adapter(const std::string& name) {
  for (const Adapter& each : adapters())
    if (each.name == name) return each;
  throw std::out_of_range(name);
}

std::vector<std::string> Row::sees(bool live) const {
  std::vector<std::string> all = seesAlways;
  if (live) all.insert(all.end(), seesLive.begin(), seesLive.end());
  return all;
}

std::vector<std::string> Row::lines(bool live) const {
  const bool wanted = when == Line::kAlways ||
                      (when == Line::kDelivered && !sees(live).empty() && (live || !seesAlways.empty())) ||
                      (when == Line::kLost && !live);
  return wanted ? Texts{" Time: " + line} : Texts{};
}

std::vector<std::string> seen(const vorn_testing::Recorder& recorder) {
  std::vector<std::string> lines;
  for (const vorn_testing::Call& call : recorder.calls())
    lines.push_back(std::to_string(call.slot) + " " + call.signature());
  return lines;
}

void settleAudio() {
  World world;
  VornAudioIn adapter(world.host);
  Samples samples(4);
  for (int i = 0; i < 6; ++i) adapter.sendAudioData(samples);
}

std::mutex& mutexOf(const std::string& adapter, const std::string& member) {
  const std::string symbol = "_ZN26VornDeviceAbstractionLayer" + std::to_string(adapter.size()) + adapter +
                             std::to_string(member.size()) + member + "E";
  void* const found = dlsym(RTLD_DEFAULT, symbol.c_str());
  if (!found) throw std::runtime_error(dlerror());
  return *static_cast<std::mutex*>(found);
}

std::mutex* mutexOf(const Row& row) {
  if (row.guard == Guard::kUnlocked) return nullptr;
  return &mutexOf(row.adapter, row.guard == Guard::kLocked ? "m_mutex" : "m_dalMutex");
}

// The table.

namespace {

const char kCaps[] = "VornDeviceCapabilities";
const char kInfo[] = "VornDeviceInfo";
using Caps = VornDeviceCapabilities;
using Info = VornDeviceInfo;
using Emp = VornEMPAdapterControl;

template <class... Parameters>
Row directive(int slot, const char* operation, Pair (Caps::*member)(Parameters...),
              std::decay_t<Parameters>... arguments) {
  return down(kCaps, U, slot, operation, member, std::string("false the host declined ") + operation, "true",
              arguments...);
}

template <class Parameter>
Row tracedDirective(int slot, const char* operation, Pair (Caps::*member)(Parameter), const char* parameter,
                    Parameter argument) {
  return traced(
      Line::kAlways,
      "std::pair<bool, std::basic_string<char> > VornDeviceAbstractionLayer::VornDeviceCapabilities::" +
          std::string(operation) + "(" + parameter + ")",
      directive(slot, operation, member, argument));
}

std::string cannotDeliver(const char* signatureText, const char* why) {
  return std::string("void VornDeviceAbstractionLayer::VornOOBE::") + signatureText + why;
}

std::string audioLine(const char* signatureText) {
  return std::string("void VornDeviceAbstractionLayer::VornAudioIn::") + signatureText + " calling xApp API";
}

Row buttonPress() {
  Row row = up("VornAudioIn", 7, "notifyAlexaButtonPress", &VornAudioIn::notifyAlexaButtonPress, "", kA,
               Milliseconds(500));
  row.seesLive = {"12 notifyAlexaInvocationDetected(AlexaButtonPress)"};
  return traced(Line::kAlways, audioLine("notifyAlexaButtonPress(std::string, std::chrono::milliseconds)"),
                row);
}

std::vector<Row> table() {
  const Entries entries{{kA, kB}, {kC, kA}};
  const Texts texts{kC, kA, kC};
  std::vector<Row> all = {
      down("VornAlexaState", U, 3, "alexaStateChanged", &VornAlexaState::alexaStateChanged, "", "", kA),
      down("VornAlexaState", U, 4, "dialogUXStateChanged", &VornAlexaState::dialogUXStateChanged, "", "", kA),
      down("VornAlexaState", U, 5, "notifyMainAppInitialized", &VornAlexaState::notifyMainAppInitialized, "",
           ""),
      down("VornAppMessaging", L, 34, "sendAppMessage", &VornAppMessaging::sendAppMessage, "true", "true", kA,
           kB, kC),
      guarded(Guard::kDalMutex, traced(Line::kAlways, "receiveAppMessage(" + kA + "," + kB + "," + kC + ")",
                                       up("VornAppMessaging", 1, "SendMessageToxApp",
                                          &VornAppMessaging::SendMessageToxApp, "true", kA, kB, kC))),
      down("VornAudioFocus", U, 6, "requestAudioFocus", &VornAudioFocus::requestAudioFocus, "true", "false"),
      down("VornAudioFocus", U, 7, "releaseAudioFocus", &VornAudioFocus::releaseAudioFocus, "true", "false"),
      down("VornAudioIn", U, 8, "startStreamingAudioData", &VornAudioIn::startStreamingAudioData, "true",
           "false"),
      down("VornAudioIn", U, 9, "stopStreamingAudioData", &VornAudioIn::stopStreamingAudioData, "", ""),
      down("VornAudioIn", U, 10, "isMicrophoneAvailable", &VornAudioIn::isMicrophoneAvailable, "true",
           "false"),
      traced(Line::kDelivered, audioLine("setAlexaHandsFreeState(bool)"),
             down("VornAudioIn", U, 11, "setAlexaHandsFreeState", &VornAudioIn::setAlexaHandsFreeState, "",
                  "", true)),
      traced(Line::kDelivered, audioLine("notifyAlexaInvocationDetected(std::string)"),
             down("VornAudioIn", U, 12, "notifyAlexaInvocationDetected",
                  &VornAudioIn::notifyAlexaInvocationDetected, "", "", kA)),
      buttonPress(),
      traced(Line::kAlways, audioLine("notifyAlexaButtonReleased()"),
             up("VornAudioIn", 8, "notifyAlexaButtonReleased", &VornAudioIn::notifyAlexaButtonReleased, "")),
      up("VornAudioIn", 11, "sendAudioData", &VornAudioIn::sendAudioData, "|[480 samples]", Samples(480)),
      traced(Line::kDelivered,
             "void VornDeviceAbstractionLayer::VornCommsManager::onCommsStateChanged(const "
             "DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo&)",
             down("VornCommsManager", L, 66, "onCommsStateChanged", &VornCommsManager::onCommsStateChanged,
                  "", "", Comms{kA})),
      traced(Line::kAlways,
             "void VornDeviceAbstractionLayer::VornCommsManager::notifyCallAction(DeviceAbstractionLayer::"
             "CommsControllerInterface::CallAction)",
             up("VornCommsManager", 1, "notifyCallAction", &VornCommsManager::notifyCallAction, "",
                static_cast<Action>(3))),
      directive(36, "onChangeChannel", &Caps::onChangeChannel, kA),
      down(kCaps, U, 37, "onInputChange", &Caps::onInputChange, "false", "true", kA),
      directive(38, "onSkipChannel", &Caps::onSkipChannel, -3),
      directive(39, "onSendKeystroke", &Caps::onSendKeystroke, kA),
      directive(40, "onChangePlaybackPlay", &Caps::onChangePlaybackPlay, kA),
      directive(41, "onChangePlaybackPause", &Caps::onChangePlaybackPause, kA),
      directive(42, "onChangePlaybackStop", &Caps::onChangePlaybackStop, kA),
      directive(43, "onChangePlaybackStartOver", &Caps::onChangePlaybackStartOver, kA),
      directive(44, "onChangePlaybackPrevious", &Caps::onChangePlaybackPrevious, kA),
      directive(45, "onChangePlaybackNext", &Caps::onChangePlaybackNext, kA),
      directive(46, "onChangePlaybackRewind", &Caps::onChangePlaybackRewind, kA),
      directive(47, "onChangePlaybackFastForward", &Caps::onChangePlaybackFastForward, kA),
      directive(48, "onSearchAndPlay", &Caps::onSearchAndPlay, kA),
      directive(49, "onSearchAndDisplayResults", &Caps::onSearchAndDisplayResults, kA),
      directive(50, "onSetMode", &Caps::onSetMode, kA, kB),
      directive(51, "onAdjustMode", &Caps::onAdjustMode, kA, -2),
      directive(52, "onSetPowerState", static_cast<Pair (Caps::*)(bool)>(&Caps::onSetPowerState), true),
      down(kCaps, U, 53, "onSetPowerState",
           static_cast<Pair (Caps::*)(bool, std::string)>(&Caps::onSetPowerState),
           "false the host declined onSetPowerState of a target", "true", true, kA),
      directive(54, "onSetRangeValue", &Caps::onSetRangeValue, -0.5),
      directive(55, "onAdjustRangeValue", &Caps::onAdjustRangeValue, 0.25),
      directive(56, "onSetToggleState", &Caps::onSetToggleState, kA, kB),
      directive(57, "onLaunchTarget", &Caps::onLaunchTarget, kA),
      directive(58, "onStartRecording", &Caps::onStartRecording),
      directive(59, "onStopRecording", &Caps::onStopRecording),
      directive(60, "onAdjustSeekPosition", &Caps::onAdjustSeekPosition, -1500),
      tracedDirective(61, "onSetVolume", &Caps::onSetVolume, "int", 30),
      tracedDirective(62, "onAdjustVolume", &Caps::onAdjustVolume, "int", -10),
      tracedDirective(63, "onMute", &Caps::onMute, "bool", true),
      up(kCaps, 39, "notifyFriendlyNameChange", &Caps::notifyFriendlyNameChange, "", kA),
      up(kCaps, 30, "notifyUpdatedAssociation", &Caps::notifyUpdatedAssociation, "", kA, kB),
      down(kInfo, L, 16, "getDeviceLocale", &Info::getDeviceLocale, "mi-NZ, spoken with great care", ""),
      down(kInfo, L, 17, "changeAlexaLocale", &Info::changeAlexaLocale, "", "", kA),
      down(kInfo, L, 15, "getTimezone", &Info::getTimezone, "Pacific/Auckland, as the crow flies", ""),
      down(kInfo, L, 18, "getDeviceInformation", &Info::getDeviceInformation,
           "{brand of the device=Vorn, of the fault lab}", "{}"),
      down(kInfo, L, 19, "getNetworkConnectionStatus", &Info::getNetworkConnectionStatus, "true", "false"),
      down(kInfo, L, 20, "updateInternetConnectionStatus", &Info::updateInternetConnectionStatus, "", "",
           true),
      down(kInfo, L, 21, "getConfigData", &Info::getConfigData, "the value of " + kA, "", kA),
      down(kInfo, L, 23, "setSystemSetting", &Info::setSystemSetting, "true", "false", kA, kB),
      down(kInfo, L, 13, "getVolume", &Info::getVolume, "37", "0"),
      down(kInfo, L, 14, "getMuteStatus", &Info::getMuteStatus, "true", "false"),
      down(kInfo, U, 22, "getSystemSetting", &Info::getSystemSetting, "true|written by the host, at length",
           "false|" + kB, kA, kB),
      down(kInfo, U, 24, "getVSKCapabilities", &Info::getVSKCapabilities, "[{\"capability\": \"endurance\"}]",
           "[]"),
      up(kInfo, 41, "notifyVolumeChanged", &Info::notifyVolumeChanged, "", 55),
      up(kInfo, 42, "notifyMuteChanged", &Info::notifyMuteChanged, "", true),
      up(kInfo, 47, "notifyHandsfreeStateChanged", &Info::notifyHandsfreeStateChanged, "", true),
      up(kInfo, 38, "notifyMicrophoneAvailabilityChanged", &Info::notifyMicrophoneAvailabilityChanged, "",
         kA),
      up(kInfo, 33, "notifySystemSettingChanged", &Info::notifySystemSettingChanged, "", kA, kB),
      up(kInfo, 34, "notifyLocaleChange", static_cast<void (Info::*)(std::string)>(&Info::notifyLocaleChange),
         "", kA),
      up(kInfo, 37, "notifyNetworkConnectionChanged", &Info::notifyNetworkConnectionChanged, "", kA),
      up(kInfo, 35, "notifyLocaleChange", static_cast<void (Info::*)(Texts)>(&Info::notifyLocaleChange), "",
         texts),
      down("VornGUIOutput", L, 64, "clearGUICard", &VornGUIOutput::clearGUICard, "true", "false"),
      down("VornGUIOutput", L, 65, "renderGUICard", &VornGUIOutput::renderGUICard, "true", "false", kA),
      up("VornGUIOutput", 5, "notifyPlaybackControllerAction", &VornGUIOutput::notifyPlaybackControllerAction,
         "true", kA),
      down("VornLEDController", L, 35, "setAnimation", &VornLEDController::setAnimation, "-7", "0", texts),
      down("VornLoggerObserver", U, 30, "onLogEmitted", &VornLoggerObserver::onLogEmitted, "", "", kA, kB),
      traced(Line::kLost,
             cannotDeliver("sendCBLInfo(std::string&, std::string&, int64_t&)", " m_instance is Null"),
             down("VornOOBE", U, 31, "sendCBLInfo", &VornOOBE::sendCBLInfo,
                  "|" + kA + ", read|" + kB + ", read|601", "|" + kA + "|" + kB + "|600", kA, kB,
                  std::int64_t{600})),
      traced(
          Line::kLost, cannotDeliver("alexaAuthStatusChanged(std::string)", " m_instance is Null"),
          down("VornOOBE", U, 32, "alexaAuthStatusChanged", &VornOOBE::alexaAuthStatusChanged, "", "", kA)),
      up("VornOOBE", 4, "notifyOOBEInitiated", &VornOOBE::notifyOOBEInitiated, ""),
      up("VornOOBE", 6, "notifyOOBECancelled", &VornOOBE::notifyOOBECancelled, ""),
      up("VornOOBE", 11, "getAlexaAuthStatus", &VornOOBE::getAlexaAuthStatus, "AUTHORIZED"),
      down("VornStorage", U, 25, "open", &VornStorage::open, "true", "false"),
      down("VornStorage", U, 26, "readKeyValue", &VornStorage::readKeyValue,
           "{" + kA + "=as it was stored, and no other}", "{}", kA),
      down("VornStorage", U, 27, "writeKeyValue", &VornStorage::writeKeyValue, "true", "false", entries),
      down("VornStorage", U, 28, "removeKeyValue", &VornStorage::removeKeyValue, "true", "false", texts),
      down("VornStorage", U, 29, "clear", &VornStorage::clear, "true", "false"),
      command(3, "login", &Emp::login,
              "const string&, const string&, bool, std::chrono::milliseconds, std::string",
              "accessToken: " + kA + ", userName: " + kB +
                  ", forceLogin: 1, refreshInterval: 3600000ms, playerId: " + kC,
              "true", "false", kA, kB, true, Milliseconds(3600000), kC),
      command(4, "logout", &Emp::logout),
      command(5, "launchAndPlay", &Emp::launchAndPlay, "std::string, std::chrono::milliseconds, std::string",
              "playContextToken: " + kA + ", offset: -250ms, playerId: " + kB, "true", "false", kA,
              Milliseconds(-250), kB),
      command(6, "nextTrack", &Emp::nextTrack),
      command(7, "previousTrack", &Emp::previousTrack),
      command(8, "restartCurrentTrack", &Emp::restartCurrentTrack),
      command(9, "setShuffleOn", &Emp::setShuffleOn),
      command(10, "setShuffleOff", &Emp::setShuffleOff),
      command(11, "resume", &Emp::resume),
      command(12, "pause", &Emp::pause),
      command(13, "stop", &Emp::stop),
      command(14, "skipForward", &Emp::skipForward, "std::chrono::milliseconds, std::string",
              "offset: -15000ms, playerId: " + kA, "true", "false", Milliseconds(-15000), kA),
      command(15, "setRepeatAll", &Emp::setRepeatAll),
      command(16, "setRepeatNone", &Emp::setRepeatNone),
      command(17, "setRepeatOne", &Emp::setRepeatOne),
      command(18, "getPlaybackState", &Emp::getPlaybackState, "playing, says " + kA, ""),
      {"VornMediaPlayerFactory",
       "createDalMediaPlayer",
       L,
       {"21 Configure(true, " + kA + ", false)"},
       {},
       "object",
       "object",
       Line::kAlways,
       "VornMediaPlayerFactory::createDalMediaPlayer name=" + kA,
       freely([](void* object, World& world) {
         const std::function<void(std::string)> configured = callback<std::string>(world, "configured");
         return [=, &world]() -> std::string {
           const auto player = static_cast<VornMediaPlayerFactory*>(object)->createDalMediaPlayer(
               configured, true, kA, false);
           return player == world.players.at("DefaultMediaPlayer") ? "object" : "another";
         };
       })},
      container("createAttachmentReaderContainer", {}, "object", alone,
                [](Container&, const auto&, const auto&) -> std::string {
                  return text(static_cast<const void*>(
                      Factory::getInstance()->createAttachmentReaderContainer([](std::string) {}).get()));
                }),
      container("Subscribe", {"0 onData(null, 3)"}, "", alone,
                [](Container& made, const auto& data, const auto& end) -> std::string {
                  made.Subscribe(data, end);
                  made.sendData(nullptr, 3);
                  return "";
                }),
      container("Unsubscribe", {}, "", subscribed,
                [](Container& made, const auto&, const auto&) -> std::string {
                  made.Unsubscribe();
                  made.sendData(nullptr, 3);
                  made.notifyEndOfStream();
                  return "";
                }),
      container("sendData", {"0 onData(object, 7)"}, "", subscribed,
                [](Container& made, const auto&, const auto&) -> std::string {
                  char bytes[7];
                  made.sendData(bytes, sizeof bytes);
                  return "";
                }),
      container("notifyEndOfStream", {"0 onEnd()"}, "", subscribed,
                [](Container& made, const auto&, const auto&) -> std::string {
                  made.notifyEndOfStream();
                  return "";
                }),
      container("GetOnCloseCallbackFunction", {"0 onClose(" + kA + ")"}, "", subscribed,
                [](Container& made, const auto&, const auto&) -> std::string {
                  made.GetOnCloseCallbackFunction()(kA);
                  return "";
                }),
      {"FileLogger", "logMessage", L, {}, {}, "", "", Line::kAlways, kA, freely([](void*, World&) {
         return []() -> std::string {
           FileLogger::getInstance()->logMessage(kA);
           return "";
         };
       })},
  };
  // The player calls its callback from inside Configure().
  for (Row& row : all)
    if (row.operation == std::string("createDalMediaPlayer"))
      row.seesAlways.push_back("0 configured(configured)");
  return all;
}

}  // namespace

const std::vector<Row>& rows() {
  static const std::vector<Row> all = table();
  return all;
}

}  // namespace fault
