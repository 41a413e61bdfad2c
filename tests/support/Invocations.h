#pragma once

#include <DeviceAbstractionLayer/CommsControllerInterface.h>
#include <DeviceAbstractionLayer/CommsManagerInterface.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/Operations.h"

/// How a member function becomes a Row's with(): its arguments by type and place, its result as text.
namespace operations::erased {

using CallAction = DeviceAbstractionLayer::CommsControllerInterface::CallAction;
using CommsStateInfo = DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo;
using Texts = std::vector<std::string>;
using Map = std::map<std::string, std::string>;

template <class T>
std::string render(const T& value) {
  return vorn_testing::text(value);
}
inline std::string render(CallAction value) { return vorn_testing::text(static_cast<int>(value)); }
inline std::string render(const CommsStateInfo& value) { return value.state; }

// Longer than what a text object holds, so that every copy can fail; all different, so that none can be taken for
// another.
inline const std::string kTexts[] = {"alpha is the first of five texts", "bravo is the second of five texts",
                                     "charlie is the third of five texts",
                                     "delta is the fourth of five texts", "echo is the fifth of five texts"};

/// The usual argument of a type at the place-th parameter, from 0.
template <class T>
T usual(std::size_t place) {
  if constexpr (std::is_same_v<T, std::string>) return kTexts[place];
  if constexpr (std::is_same_v<T, CommsStateInfo>) return {kTexts[place]};
  if constexpr (std::is_same_v<T, Texts>) return {kTexts[2], kTexts[0], kTexts[2]};
  if constexpr (std::is_same_v<T, Map>) return {{kTexts[1], kTexts[0]}, {kTexts[0], kTexts[2]}};
  if constexpr (std::is_same_v<T, std::vector<short>>) return std::vector<short>(160);
  if constexpr (std::is_same_v<T, std::chrono::milliseconds>)
    return T(-3600000 + 2400000 * static_cast<int>(place));
  if constexpr (std::is_same_v<T, bool>) return true;
  if constexpr (std::is_same_v<T, int>) return -1234567;
  if constexpr (std::is_same_v<T, std::int64_t>) return std::int64_t{1} << 40;
  if constexpr (std::is_same_v<T, double>) return -0.1;
  if constexpr (std::is_same_v<T, CallAction>) return CallAction{3};
}

inline std::string sampled(Sample sample, const std::string& usual) {
  switch (sample) {
    case Sample::kEmpty:
      return {};
    case Sample::kBytes:
      return std::string("\0nul\nline\xff\xc0,", 12);
    case Sample::kHuge:
      return std::string(1U << 20, usual.empty() ? 'x' : usual[0]);
    default:
      return usual;
  }
}

template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
Number sampled(Sample sample, Number usual) {
  using Limits = std::numeric_limits<Number>;
  if (sample == Sample::kEmpty) return {};
  if (sample == Sample::kLowest) return Limits::lowest();
  if constexpr (std::is_floating_point_v<Number>) {
    if (sample == Sample::kNotANumber) return Limits::quiet_NaN();
    if (sample == Sample::kNegativeZero) return -Number{};
  }
  return usual;
}

inline std::chrono::milliseconds sampled(Sample sample, std::chrono::milliseconds usual) {
  return std::chrono::milliseconds(sampled(sample, std::int64_t{usual.count()}));
}

inline CallAction sampled(Sample sample, CallAction usual) {
  return static_cast<CallAction>(sampled(sample, static_cast<std::int32_t>(usual)));
}

inline CommsStateInfo sampled(Sample sample, const CommsStateInfo& usual) {
  return {sampled(sample, usual.state)};
}

inline Texts sampled(Sample sample, const Texts& usual) {
  if (sample == Sample::kEmpty) return {};
  Texts list;
  for (const std::string& text : usual) list.push_back(sampled(sample, text));
  if (sample == Sample::kLowest) list.insert(list.end(), usual.begin(), usual.end());
  return list;
}

inline std::vector<short> sampled(Sample sample, const std::vector<short>& usual) {
  return sample == Sample::kEmpty ? std::vector<short>() : usual;
}

inline Map sampled(Sample sample, const Map& usual) {
  if (sample == Sample::kEmpty) return {};
  Map entries;
  for (const auto& [key, value] : usual) entries[key] = sampled(sample, value);
  return entries;
}

template <class T>
std::string typeName() {
  using Plain = std::decay_t<T>;
  std::string name;
  if constexpr (std::is_same_v<Plain, std::string>) name = "std::string";
  if constexpr (std::is_same_v<Plain, bool>) name = "bool";
  if constexpr (std::is_same_v<Plain, int>) name = "int";
  if constexpr (std::is_same_v<Plain, double>) name = "double";
  if constexpr (std::is_same_v<Plain, std::int64_t>) name = "std::int64_t";
  if constexpr (std::is_same_v<Plain, std::chrono::milliseconds>) name = "std::chrono::milliseconds";
  if constexpr (std::is_same_v<Plain, Texts>) name = "std::vector<std::string>";
  if constexpr (std::is_same_v<Plain, std::vector<short>>) name = "std::vector<short>";
  if constexpr (std::is_same_v<Plain, Map>) name = "std::map<std::string, std::string>";
  if constexpr (std::is_same_v<Plain, CallAction>) name = "CallAction";
  if constexpr (std::is_same_v<Plain, CommsStateInfo>) name = "CommsStateInfo";
  if (std::is_const_v<std::remove_reference_t<T>>) name = "const " + name;
  return name + (std::is_reference_v<T> ? "&" : "");
}

template <class... T>
std::string typeNames() {
  std::string names;
  ((names += (names.empty() ? "" : ", ") + typeName<T>()), ...);
  return names;
}

template <class Class, class Result, class... P>
class Call final : public Invocation {
 public:
  using Operation = Result (Class::*)(P...);

  Call(Operation operation, std::decay_t<P>... arguments)
      : m_operation(operation), m_arguments(std::move(arguments)...) {
    outcome.given = rendered();
    outcome.reference = {std::is_reference_v<P>...};
    std::apply([this](auto&... own) { outcome.addresses = {static_cast<const void*>(&own)...}; },
               m_arguments);
  }

  void make(void* object) override {
    const auto call = [&](auto&... own) -> Result {
      return (static_cast<Class*>(object)->*m_operation)(passed<P>(own)...);
    };
    if constexpr (std::is_void_v<Result>) {
      std::apply(call, m_arguments);
      returned();
    } else {
      const Result result = std::apply(call, m_arguments);
      returned();
      outcome.result = render(result);
    }
    outcome.afterwards = rendered();
  }

 private:
  template <class Parameter>
  Parameter passed(std::decay_t<Parameter>& own) const {
    if constexpr (std::is_reference_v<Parameter>)
      return own;
    else
      return copies ? Parameter(own) : Parameter(std::move(own));
  }

  Texts rendered() const {
    return std::apply([](const auto&... own) { return Texts{render(own)...}; }, m_arguments);
  }

  const Operation m_operation;
  std::tuple<std::decay_t<P>...> m_arguments;
};

template <class Class, class Result, class... P, std::size_t... Place>
std::function<std::unique_ptr<Invocation>(Sample)> prepare(Result (Class::*operation)(P...),
                                                           std::index_sequence<Place...>) {
  return [operation]([[maybe_unused]] Sample sample) {
    return std::make_unique<Call<Class, Result, P...>>(operation,
                                                       sampled(sample, usual<std::decay_t<P>>(Place))...);
  };
}

/// Makes calls of a member function.
template <class Class, class Result, class... P>
std::function<std::unique_ptr<Invocation>(Sample)> preparer(Result (Class::*operation)(P...)) {
  return prepare(operation, std::index_sequence_for<P...>());
}

}  // namespace operations::erased
