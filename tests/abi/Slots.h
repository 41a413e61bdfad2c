#pragma once

// The other sides of the library as a linker sees them: objects that are nothing but a pointer to a table of
// functions, one per slot. Written from the contract; nothing here comes from the product's headers.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace slots {

using Text = std::string;
using Texts = std::vector<std::string>;
using Entries = std::map<std::string, std::string>;
using Result = std::pair<bool, std::string>;
using Duration = std::chrono::milliseconds;
using Samples = std::vector<short>;
using Int64 = std::int64_t;

/// What a slot received: its number, the object it was called on, every argument as text, and the addresses of
/// those that came by reference.
struct Seen {
  int slot = 0;
  const void* object = nullptr;
  std::string arguments;
  std::vector<const void*> references;
};

/// The calls since the last look.
extern std::vector<Seen> seen;

inline std::string show(const Text& value) { return value; }
inline std::string show(bool value) { return value ? "true" : "false"; }
inline std::string show(int value) { return std::to_string(value); }
inline std::string show(double value) { return std::to_string(value); }
inline std::string show(Int64 value) { return std::to_string(value); }
inline std::string show(Duration value) { return std::to_string(value.count()) + "ms"; }
inline std::string show(const Texts& values) {
  std::string line;
  for (const Text& value : values) line += "<" + value + ">";
  return line;
}
inline std::string show(const Entries& values) {
  std::string line;
  for (const auto& value : values) line += "<" + value.first + "=" + value.second + ">";
  return line;
}
inline std::string show(const Samples& values) { return std::to_string(values.size()) + " samples"; }
inline std::string show(const Result& value) { return show(value.first) + " " + value.second; }
struct CommsState {
  int number;
};
inline std::string show(const CommsState& value) { return "state " + std::to_string(value.number); }

/// What a slot answers: a value that tells its number.
template <class R>
struct Answer;
template <>
struct Answer<void> {
  static void of(int) {}
};
template <>
struct Answer<bool> {
  static bool of(int) { return true; }
};
template <>
struct Answer<int> {
  static int of(int slot) { return -1000 - slot; }
};
template <>
struct Answer<Text> {
  static Text of(int slot) { return "a text of slot " + std::to_string(slot); }
};
template <>
struct Answer<Entries> {
  static Entries of(int slot) { return {{"slot", std::to_string(slot)}}; }
};
template <>
struct Answer<Result> {
  static Result of(int slot) { return {false, "a result of slot " + std::to_string(slot)}; }
};
template <>
struct Answer<void*> {
  static void* of(int);  ///< The external player.
};

template <class T>
void note(Seen& call, const T& value, bool reference) {
  call.arguments += (call.arguments.empty() ? "" : ", ") + show(value);
  if (reference) call.references.push_back(&value);
}

/// One slot: a plain function whose first argument is the object, as the calling convention has it.
template <int Slot, class R, class... A>
R record(void* object, A... arguments) {
  Seen call;
  call.slot = Slot;
  call.object = object;
  (note(call, arguments, std::is_reference<A>::value), ...);
  seen.push_back(call);
  return Answer<R>::of(Slot);
}

[[noreturn]] inline void unexpected() {
  std::fputs("a slot that nobody may call was called\n", stderr);
  std::abort();
}

/// A table with the given slots; all others abort.
class Table {
 public:
  explicit Table(std::size_t size) : m_entries(size, reinterpret_cast<void*>(&unexpected)) {}

  template <int Slot, class R, class... A>
  void put() {
    m_entries.at(Slot - 1) = reinterpret_cast<void*>(&record<Slot, R, A...>);
  }

  /// The object: its address is what the library is given.
  void** object() {
    m_object = m_entries.data();
    return reinterpret_cast<void**>(&m_object);
  }

 private:
  std::vector<void*> m_entries;
  void** m_object = nullptr;
};

#define SLOT(slot, name, ...) table.put<slot, __VA_ARGS__>()

}  // namespace slots
