#pragma once

#include <VornDalMediaPlayerInterfaceImpl.h>
#include <vorn_testing/AroundHost.h>
#include <vorn_testing/ForwardingHost.h>
#include <vorn_testing/NullHost.h>
#include <vorn_testing/RecordingHost.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <unordered_map>

namespace operations {

using vorn_testing::Operation;

/// A text unlike any default, and too long for the text object.
inline std::string answerText(const Operation& operation) {
  return std::string("what the host answers to ") + operation.name + ", slot " +
         std::to_string(operation.slot);
}

/// What an AnsweringHost answers: unlike what the adapter answers without an instance. Numbers are the slot.
template <class Result>
Result answerOf(const Operation& operation) {
  if constexpr (std::is_same_v<Result, bool>) return std::string(operation.name) != "onInputChange";
  if constexpr (std::is_same_v<Result, int>) return operation.slot;
  if constexpr (std::is_same_v<Result, std::string>) return answerText(operation);
  if constexpr (std::is_same_v<Result, std::map<std::string, std::string>>)
    return {{"key", answerText(operation)}};
  if constexpr (std::is_same_v<Result, std::pair<bool, std::string>>) return {false, answerText(operation)};
}

/// Whether a parameter is there to be written to.
template <class Parameter>
constexpr bool kWritten =
    std::is_lvalue_reference_v<Parameter> && !std::is_const_v<std::remove_reference_t<Parameter>>;

/// What an AnsweringHost writes there.
template <class Value>
Value writtenTo(const Operation& operation, int place) {
  if constexpr (std::is_same_v<Value, std::string>)
    return answerText(operation) + ", in place " + std::to_string(place);
  if constexpr (std::is_same_v<Value, std::int64_t>) return INT64_MIN + place;
}

template <class Type>
struct Tag {
  using type = Type;
};

/// The work of both doubles below.
template <class Result, class... Parameters>
Result answer(const Operation& operation, std::remove_reference_t<Parameters>&... arguments) {
  [[maybe_unused]] const auto write = [&operation](auto parameter, auto& argument, int place) {
    if constexpr (kWritten<typename decltype(parameter)::type>)
      argument = writtenTo<std::decay_t<decltype(argument)>>(operation, place);
  };
  [[maybe_unused]] int place = 0;
  (write(Tag<Parameters>(), arguments, place++), ...);
  return answerOf<Result>(operation);
}

/// An external media player that answers so.
class AnsweringPlayer : public vorn_testing::AroundPlayer<AnsweringPlayer> {
 public:
  AnsweringPlayer() : AroundPlayer(m_nobody) {}

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation& operation, const vorn_testing::Onward<Interface, Result, Parameters...>&,
                std::remove_reference_t<Parameters>&... arguments) {
    return answer<Result, Parameters...>(operation, arguments...);
  }

 private:
  vorn_testing::NullPlayer m_nobody;
};

/// A host that answers so.
class AnsweringHost : public vorn_testing::AroundHost<AnsweringHost> {
 public:
  AnsweringHost() : AroundHost(m_nobody) {}

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation& operation,
                const vorn_testing::Onward<Interface, Result, Parameters...>& onward,
                std::remove_reference_t<Parameters>&... arguments) {
    if constexpr (std::is_pointer_v<Result>)
      return onward(arguments...);
    else
      return answer<Result, Parameters...>(operation, arguments...);
  }

 protected:
  VornDeviceAbstractionLayer::VornEMPAdapterIF* front(
      VornDeviceAbstractionLayer::VornEMPAdapterIF*) override {
    return &m_player;
  }

 private:
  vorn_testing::NullHost m_nobody;
  AnsweringPlayer m_player;
};

/// A media player of the factory's table.
class RecordedPlayer final : public VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl {
 public:
  explicit RecordedPlayer(std::shared_ptr<vorn_testing::Recorder> recorder)
      : m_recorder(std::move(recorder)) {}

  void Configure(Settings settings, std::function<void(std::string)> callback) override {
    m_recorder->run(vorn_testing::makeCall("VornDalMediaPlayerInterfaceImpl", "Configure", 21, this,
                                           settings.firstFlag, settings.name, settings.secondFlag),
                    [&] {
                      if (callback) callback("configured");
                    });
  }

 private:
  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
};

using Players =
    std::unordered_map<std::string,
                       std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl>>;

/// The firmware's side, as the table expects it: a host that answers, behind the kit's forwarding and recording
/// ones, and a table with one media player.
class Firmware {
 public:
  explicit Firmware(
      std::shared_ptr<vorn_testing::Recorder> shared = std::make_shared<vorn_testing::Recorder>())
      : recorder(std::move(shared)) {
    host.recorder = recorder;
  }

  const std::shared_ptr<vorn_testing::Recorder> recorder;

 private:
  AnsweringHost m_answering;
  vorn_testing::ForwardingHost m_forwarding{m_answering};

 public:
  vorn_testing::RecordingHost host{m_forwarding};
  Players players{{"DefaultMediaPlayer", std::make_shared<RecordedPlayer>(recorder)}};
};

/// What a class is created on: a host, or the table of players.
struct Foundation {
  Foundation(VornDeviceAbstractionLayer::VornDALImplIF& hostAlone) : host(hostAlone), players(none()) {}
  Foundation(Firmware& firmware) : host(firmware.host), players(firmware.players) {}

  VornDeviceAbstractionLayer::VornDALImplIF& host;
  Players& players;

 private:
  static Players& none() {
    static Players empty;
    return empty;
  }
};

}  // namespace operations
