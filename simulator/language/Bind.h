#pragma once

#include <vorn_testing/Call.h>
#include <vorn_testing/Operations.h>

#include <cstdint>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "Operations.h"
#include "device/Adapters.h"
#include "text/Spelling.h"

namespace vorn_speaker {

/// Whether an operation may write through a parameter: a reference to a text or a number.
template <class Parameter>
constexpr bool kWrites = std::is_same_v<Parameter, std::string&> || std::is_same_v<Parameter, std::int64_t&>;

/// Adds what an operation wrote through a reference to a text or a number.
template <class Parameter, class Value>
void showWritten(std::string& line, const std::string& name, const Value& before, const Value& after) {
  if constexpr (kWrites<Parameter>) {
    if (before != after) line += (line.empty() ? "" : " ") + name + "=" + vorn_testing::text(after);
  }
}

/// The one spelling of a value of the type.
template <class Value>
std::string canonical(const Token& token) {
  const Value value = read<Value>(token);
  return spellAt<Value>(&value);
}

/// Reads one argument; one that is left out is an empty value, for the operation to write.
template <class Value>
Value readAt(const std::vector<Token>& arguments, std::size_t index) {
  return index < arguments.size() ? read<Value>(arguments[index]) : Value();
}

/// A member function of an adapter with its arguments read.
template <class Adapter, class Result, class... P>
class BoundMember {
 public:
  using Function = Result (Adapter::*)(P...);

  BoundMember(Caller caller, Function function, std::vector<Parameter> parameters,
              const std::vector<Token>& arguments)
      : BoundMember(caller, function, std::move(parameters), arguments, std::index_sequence_for<P...>()) {}

  std::string operator()(Adapters& adapters) const {
    const std::shared_ptr<Adapter> object =
        m_caller == Caller::kAssistant ? Adapter::getInstance() : adapters.held<Adapter>();
    return object ? call(*object, std::index_sequence_for<P...>()) : kNoInstance;
  }

 private:
  template <std::size_t... I>
  BoundMember(Caller caller, Function function, std::vector<Parameter> parameters,
              const std::vector<Token>& arguments, std::index_sequence<I...>)
      : m_caller(caller),
        m_function(function),
        m_parameters(std::move(parameters)),
        m_values{readAt<std::decay_t<P>>(arguments, I)...} {}

  template <std::size_t... I>
  std::string call(Adapter& object, std::index_sequence<I...>) const {
    [[maybe_unused]] auto values = m_values;
    std::string line;
    if constexpr (std::is_void_v<Result>) {
      (object.*m_function)(std::get<I>(values)...);
    } else {
      line = vorn_testing::text((object.*m_function)(std::get<I>(values)...));
    }
    (showWritten<P>(line, m_parameters[I].name, std::get<I>(m_values), std::get<I>(values)), ...);
    return line;
  }

  Caller m_caller;
  Function m_function;
  std::vector<Parameter> m_parameters;
  std::tuple<std::decay_t<P>...> m_values;
};

/// Spells the arguments of a call that a double recorded.
template <class... P, std::size_t... I>
std::vector<std::string> spellAll(const std::vector<const void*>& addresses, std::index_sequence<I...>) {
  static_cast<void>(addresses);
  return {spellAt<std::decay_t<P>>(addresses.at(I))...};
}

/// Describes a member function of an adapter: the types of its parameters come from its declaration, the rest
/// from the kit's list.
template <class Adapter, class Result, class... P>
Operation member(const vorn_testing::Operation& listed, Result (Adapter::*function)(P...)) {
  const Caller caller =
      listed.direction == vorn_testing::Direction::kUp ? Caller::kFirmware : Caller::kAssistant;
  Operation made{listed.adapter, listed.name, caller, {}, {}, listed.target, listed.slot, listed.guard};
  const std::vector<std::string> names = parameterNames(listed);
  [[maybe_unused]] std::size_t index = 0;
  (made.parameters.push_back(
       {names.at(index++), describe<std::decay_t<P>>(), kWrites<P>, canonical<std::decay_t<P>>}),
   ...);
  made.bind = [caller, function, parameters = made.parameters](const std::vector<Token>& arguments) {
    return BoundCall(BoundMember<Adapter, Result, P...>(caller, function, parameters, arguments));
  };
  made.spell = [](const std::vector<const void*>& addresses) {
    return spellAll<P...>(addresses, std::index_sequence_for<P...>());
  };
  return made;
}

}  // namespace vorn_speaker
