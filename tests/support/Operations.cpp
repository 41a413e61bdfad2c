#include "Operations.h"

#include <algorithm>
#include <stdexcept>

#include "Invocations.h"
#include "mutexes.h"

namespace operations {

namespace {

using namespace VornDeviceAbstractionLayer;
using erased::Texts;
using vorn_testing::Constructor;

const std::string kNamespace = "VornDeviceAbstractionLayer::";

// What an operation does that its types do not tell.

const std::map<std::string, void (*)(Row&)> kExceptions = {
    {"sendAppMessage", [](Row& row) { row.fallback = "true"; }},  // The host's has no answer.
    {"onInputChange", [](Row& row) { row.fallback = "true"; }},
    {"getVSKCapabilities", [](Row& row) { row.fallback = "[]"; }},
    {"getAlexaAuthStatus", [](Row& row) { row.answer = "AUTHORIZED"; }},
};

enum class When { kDelivered, kLost, kAlways };

struct Line {
  When when;
  std::string text;
};

/// A signature as the trace has it.
std::string in(const char* type, const char* text) { return std::string(type) + " " + kNamespace + text; }

const std::map<std::string, Line> kLines = {
    {"setAlexaHandsFreeState",
     {When::kDelivered, in("void", "VornAudioIn::setAlexaHandsFreeState(bool) calling xApp API")}},
    {"notifyAlexaInvocationDetected",
     {When::kDelivered,
      in("void", "VornAudioIn::notifyAlexaInvocationDetected(std::string) calling xApp API")}},
    {"notifyAlexaButtonPress",
     {When::kDelivered,
      in("void",
         "VornAudioIn::notifyAlexaButtonPress(std::string, std::chrono::milliseconds) calling xApp API")}},
    {"notifyAlexaButtonReleased",
     {When::kDelivered, in("void", "VornAudioIn::notifyAlexaButtonReleased() calling xApp API")}},
    {"SendMessageToxApp",
     {When::kDelivered,
      "receiveAppMessage(" + erased::kTexts[0] + "," + erased::kTexts[1] + "," + erased::kTexts[2] + ")"}},
    {"onSetVolume",
     {When::kAlways,
      in("std::pair<bool, std::basic_string<char> >", "VornDeviceCapabilities::onSetVolume(int)")}},
    {"onAdjustVolume",
     {When::kAlways,
      in("std::pair<bool, std::basic_string<char> >", "VornDeviceCapabilities::onAdjustVolume(int)")}},
    {"onMute",
     {When::kAlways,
      in("std::pair<bool, std::basic_string<char> >", "VornDeviceCapabilities::onMute(bool)")}},
    {"sendCBLInfo",
     {When::kLost,
      in("void", "VornOOBE::sendCBLInfo(std::string&, std::string&, int64_t&) m_instance is Null")}},
    {"alexaAuthStatusChanged",
     {When::kLost, in("void", "VornOOBE::alexaAuthStatusChanged(std::string) m_instance is Null")}},
    {"notifyOOBEInitiated", {When::kLost, in("void", "VornOOBE::notifyOOBEInitiated() dalinstance is Null")}},
    {"onCommsStateChanged",
     {When::kDelivered, in("void",
                           "VornCommsManager::onCommsStateChanged(const DeviceAbstractionLayer::"
                           "CommsManagerInterface::CommsStateInfo&)")}},
    {"notifyCallAction",
     {When::kDelivered, in("void",
                           "VornCommsManager::notifyCallAction(DeviceAbstractionLayer::"
                           "CommsControllerInterface::CallAction)")}},
};

/// The line of a command of the external player: its signature, then each argument by its name.
std::string commandLine(const Row& row, const Operation& operation, const char* result) {
  // The one place where the library wrote "string" without its namespace.
  const std::string types = row.operation == "login"
                                ? "const string&, const string&, bool, std::chrono::milliseconds, std::string"
                                : row.parameters;
  std::string line = in(result, "VornEMPAdapterControl::") + row.operation + "(" + types + "):";
  const Texts names = vorn_testing::parameterNames(operation);
  const Texts given = row.with(Sample::kUsual)->outcome.given;
  for (std::size_t i = 0; i < names.size(); ++i)
    line += (i ? ", " : " ") + names[i] + ": " + (given[i] == "true" ? "1" : given[i]);
  return line;
}

/// What stands for an answer that is missing, by type.
template <class Result>
std::string defaultOf() {
  if constexpr (std::is_same_v<Result, bool>) return "false";
  if constexpr (std::is_same_v<Result, int>) return "0";
  if constexpr (std::is_same_v<Result, erased::Map>) return "{}";
  if constexpr (std::is_same_v<Result, std::pair<bool, std::string>>) return "true";
  return "";
}

template <class... P, std::size_t... Place>
Texts written([[maybe_unused]] const Operation& operation, std::index_sequence<Place...>) {
  Texts all;
  [[maybe_unused]] const auto add = [&](auto parameter, int place) {
    using Parameter = typename decltype(parameter)::type;
    if constexpr (kWritten<Parameter>)
      all.push_back(erased::render(writtenTo<std::decay_t<Parameter>>(operation, place)));
  };
  (add(Tag<P>(), static_cast<int>(Place)), ...);
  return all;
}

/// The adapters that leave a line when constructed; of those, which do when created, and when fetched.
const std::vector<std::string> kTracing = {"VornEMPAdapterControl", "VornDeviceCapabilities", "VornAudioIn"};

bool among(std::size_t first, const std::string& name) {
  return std::find(kTracing.begin(), kTracing.begin() + static_cast<std::ptrdiff_t>(first), name) !=
         kTracing.begin() + static_cast<std::ptrdiff_t>(first);
}

struct Adapters : vorn_testing::OperationVisitor {
  template <class Class>
  void constructor(const Operation& operation, Constructor<Class, VornDALImplIF&>) {
    const std::string name = operation.adapter;
    const std::string type = kNamespace + name;
    const std::string life = "static std::shared_ptr<" + type + "> " + type + "::";
    const std::string host = "(" + kNamespace + "VornDALImplIF&)";
    made.push_back({name,
                    [](Foundation on) -> std::shared_ptr<void> { return Class::CreateInstance(on.host); },
                    []() -> std::shared_ptr<void> { return Class::getInstance(); }, [] { Class::Shutdown(); },
                    [](Foundation on) -> std::shared_ptr<void> { return std::make_shared<Class>(on.host); },
                    sizeof(Class), std::is_same_v<Class, VornOOBE>,
                    among(2, name) ? Texts{life + "CreateInstance" + host} : Texts(),
                    among(3, name) ? Texts{type + "::" + name + host} : Texts(),
                    among(1, name) ? Texts{life + "getInstance()"} : Texts()});
  }
  using OperationVisitor::constructor;

  std::vector<Adapter> made;
};

struct Rows : vorn_testing::OperationVisitor {
  template <class OfHost, class Class, class Result, class... P>
  void down(const Operation& operation, OfHost, Result (Class::*member)(P...)) {
    add<true>(operation, member);
  }

  template <class Class, class Result, class... P>
  void up(const Operation& operation, Result (Class::*member)(P...)) {
    add<false>(operation, member);
  }

  std::vector<Row> made;

 private:
  template <bool OfHost, class Class, class Result, class... P>
  void add(const Operation& operation, Result (Class::*member)(P...)) {
    Row row{};
    for (const Adapter& adapter : adapters())
      if (adapter.name == operation.adapter) row.adapter = &adapter;
    row.operation = operation.name;
    row.parameters = erased::typeNames<P...>();
    row.direction = operation.direction;
    row.guard = operation.guard;
    row.target = operation.target;
    row.slot = operation.slot;
    if constexpr (!std::is_void_v<Result>) row.answer = erased::render(answerOf<Result>(operation));
    row.fallback = defaultOf<Result>();
    const auto exception = kExceptions.find(row.operation);
    if (exception != kExceptions.end()) exception->second(row);
    if constexpr (OfHost) row.written = written<P...>(operation, std::index_sequence_for<P...>());
    row.with = erased::preparer(member);
    const auto line = kLines.find(row.operation);
    if (line != kLines.end()) {
      if (line->second.when != When::kLost) row.lines = {line->second.text};
      if (line->second.when != When::kDelivered) row.lostLines = {line->second.text};
    }
    if (row.target == "VornEMPAdapterIF")
      row.lines = row.lostLines = {
          commandLine(row, operation, std::is_same_v<Result, bool> ? "bool" : "std::string")};
    made.push_back(std::move(row));
  }
};

template <class Visitor>
auto visited() {
  Visitor visitor;
  vorn_testing::visitOperations(visitor);
  return visitor.made;
}

}  // namespace

const std::vector<Adapter>& adapters() {
  static const std::vector<Adapter> all = visited<Adapters>();
  return all;
}

const std::vector<Row>& rows() {
  static const std::vector<Row> all = visited<Rows>();
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

std::vector<std::string> Outcome::references(const std::vector<std::string>& rendered) const {
  std::vector<std::string> some;
  for (std::size_t i = 0; i < rendered.size(); ++i)
    if (reference[i]) some.push_back(rendered[i]);
  return some;
}

Outcome Row::run(void* object, Sample sample) const {
  const std::unique_ptr<Invocation> invocation = with(sample);
  invocation->make(object);
  return invocation->outcome;
}

std::mutex* Row::mutex() const {
  return locked() ? &mutexOf(adapter->name, guard == Guard::kMutex ? "m_mutex" : "m_dalMutex") : nullptr;
}

bool Row::delivered(bool instance, bool assistant) const {
  return direction == Direction::kOwn || (direction == Direction::kDown ? instance : assistant);
}

std::vector<std::string> Row::reaches(const std::vector<std::string>& given, bool instance,
                                      bool assistant) const {
  std::vector<std::string> all = heard;
  if (direction != Direction::kOwn && delivered(instance, assistant)) {
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

std::vector<std::string> Row::tells(const Outcome& outcome, bool instance, bool assistant) const {
  const bool answered = delivered(instance, assistant);
  Texts all = answered && !written.empty() ? written : outcome.references(outcome.given);
  all.insert(all.begin(), answered ? answer : fallback);
  return all;
}

std::vector<std::string> Row::told(const Outcome& outcome) {
  Texts all = outcome.references(outcome.afterwards);
  all.insert(all.begin(), outcome.result);
  return all;
}

}  // namespace operations
