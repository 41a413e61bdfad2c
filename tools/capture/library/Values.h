#pragma once

#include <DeviceAbstractionLayer/CommsControllerInterface.h>
#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <VornDALImplIF.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Masker.h"

/// Values on their way into a ring: as they are, without memory of their own, and with their secrets masked.
namespace vorn_capture {

/// What a value in a ring is; its bytes follow, padded to a multiple of eight.
enum class Tag : std::uint32_t {
  kMasked,
  kText,
  kWhole,         ///< A whole number, as its digits.
  kReal,          ///< A double.
  kFlag,          ///< "true" or "false".
  kMilliseconds,  ///< A whole number.
  kTexts,         ///< Each a length of 4 bytes and its bytes.
  kEntries,       ///< Key and value, each like a text of kTexts.
  kObject,        ///< "object" or "null".
  kAnswer,        ///< "true" or "false", and a text: two like those of kTexts.
};

struct ValueHead {
  Tag tag;
  std::uint32_t size;  ///< Of what follows, without the padding.
};

typedef std::vector<std::string> Texts;
typedef std::map<std::string, std::string> Entries;
typedef std::pair<bool, std::string> Answer;

/// What a value is for a recording; of anything else whether it is there.
inline std::string_view told(const std::string& value) { return value; }
inline bool told(bool value) { return value; }
inline std::int64_t told(int value) { return value; }
inline std::int64_t told(std::int64_t value) { return value; }
inline std::int64_t told(std::size_t value) { return static_cast<std::int64_t>(value); }
inline double told(double value) { return value; }
inline std::chrono::milliseconds told(std::chrono::milliseconds value) { return value; }
inline const Texts& told(const Texts& value) { return value; }
inline const Entries& told(const Entries& value) { return value; }
inline const Answer& told(const Answer& value) { return value; }
inline std::string_view told(const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& value) {
  return value.state;
}
inline std::int64_t told(DeviceAbstractionLayer::CommsControllerInterface::CallAction value) {
  return static_cast<std::int64_t>(value);
}

/// Whether an object is there.
struct Object {
  bool there;
};
inline Object told(const void* value) { return {value != nullptr}; }
template <class Value>
Object told(const std::shared_ptr<Value>& value) {
  return {value != nullptr};
}
template <class Signature>
Object told(const std::function<Signature>& value) {
  return {value != nullptr};
}
template <class Key, class Value>
Object told(const std::unordered_map<Key, Value>&) {
  return {true};
}
inline Object told(const VornDeviceAbstractionLayer::VornDALImplIF&) { return {true}; }

inline const char* word(bool value) { return value ? "true" : "false"; }

/// Hands `take` the parts of the text that the kit makes of a value.
template <class Take>
void eachPart(std::string_view value, Take take) {
  take(value.data(), value.size());
}
template <class Take>
void eachPart(bool value, Take take) {
  take(word(value), std::strlen(word(value)));
}
template <class Take>
void eachPart(std::int64_t value, Take take) {
  char digits[24];
  take(digits,
       static_cast<std::size_t>(std::snprintf(digits, sizeof digits, "%lld", static_cast<long long>(value))));
}
template <class Take>
void eachPart(double value, Take take) {
  char digits[40];
  take(digits, static_cast<std::size_t>(std::snprintf(digits, sizeof digits, "%.17g", value)));
}
template <class Take>
void eachPart(std::chrono::milliseconds value, Take take) {
  eachPart(static_cast<std::int64_t>(value.count()), take);
  take("ms", 2);
}
template <class Take>
void eachPart(const Texts& values, Take take) {
  take("[", 1);
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) take(", ", 2);
    take(values[i].data(), values[i].size());
  }
  take("]", 1);
}
template <class Take>
void eachPart(const Entries& entries, Take take) {
  take("{", 1);
  for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
    if (entry != entries.begin()) take(", ", 2);
    take(entry->first.data(), entry->first.size());
    take("=", 1);
    take(entry->second.data(), entry->second.size());
  }
  take("}", 1);
}
template <class Take>
void eachPart(const Answer& answer, Take take) {
  eachPart(answer.first, take);
  if (!answer.second.empty()) {
    take(" ", 1);
    take(answer.second.data(), answer.second.size());
  }
}
template <class Take>
void eachPart(Object, Take) {}

template <class Value>
constexpr bool mayBeSecret = !std::is_same_v<Value, Object> && !std::is_same_v<Value, bool>;
template <class Value>
constexpr bool isText = std::is_convertible_v<const Value&, std::string_view>;
template <class Value>
constexpr bool isNumber = std::is_arithmetic_v<Value> || std::is_same_v<Value, std::chrono::milliseconds>;

/// The text of a value in one piece, when it is short enough for the stack.
class ShortText {
 public:
  template <class Value>
  explicit ShortText(const Value& value) {
    eachPart(value, [this](const char* part, std::size_t size) {
      if (size <= sizeof m_bytes - m_size) std::memcpy(m_bytes + m_size, part, size);
      m_size += size;
    });
  }

  bool fits() const { return m_size <= sizeof m_bytes; }
  const char* data() const { return m_bytes; }
  std::size_t size() const { return m_size; }

 private:
  char m_bytes[2048];
  std::size_t m_size = 0;
};

/// Whether the text of a value tells of a secret. Numbers have no words.
template <class Value>
bool isTelling(const Value& value) {
  if constexpr (isNumber<Value> || !mayBeSecret<Value>) return false;
  SecretSearch search;
  eachPart(value, [&search](const char* part, std::size_t size) { search.add(part, size); });
  return search.found();
}

/// Whether a value holds what was a secret before.
template <class Value>
bool isKnown(const Value& value) {
  if (!mayBeSecret<Value> || !known::any()) return false;
  if constexpr (isText<Value>) return known::in(value.data(), value.size());
  const ShortText text(value);
  if (text.fits()) return known::in(text.data(), text.size());
  bool found = false;
  eachPart(value, [&found](const char* part, std::size_t size) { found = found || known::in(part, size); });
  return found;
}

/// Keeps a value, to find it again.
template <class Value>
void remember(const Value& value) {
  if constexpr (isText<Value>) {
    known::add(value.data(), value.size());
  } else if constexpr (mayBeSecret<Value>) {
    const ShortText text(value);
    if (text.fits()) known::add(text.data(), text.size());
    if constexpr (std::is_same_v<Value, Texts>) {
      for (const std::string& item : value) known::add(item.data(), item.size());
    }
  }
}

/// The same of what is shown of a set: its keys, and the values that tell of no secret by themselves.
inline bool isKnownBeside(const Entries& entries) {
  if (!known::any()) return false;
  for (const auto& [key, value] : entries) {
    if (isKnown(key) || (!isTelling(key) && !isTelling(value) && isKnown(value))) return true;
  }
  return false;
}

constexpr std::size_t padded(std::size_t size) { return (size + 7) & ~std::size_t{7}; }

/// The most bytes that a value takes in a ring.
template <class Value>
std::size_t room(const Value&) {
  return sizeof(ValueHead) + 8;
}
inline std::size_t room(std::string_view value) { return sizeof(ValueHead) + padded(value.size()); }
inline std::size_t room(const Answer& value) { return sizeof(ValueHead) + padded(value.second.size() + 13); }
inline std::size_t room(const Texts& values) {
  std::size_t size = 0;
  for (const std::string& value : values) size += 4 + value.size();
  return sizeof(ValueHead) + padded(size);
}
inline std::size_t room(const Entries& entries) {
  std::size_t size = 0;
  for (const auto& entry : entries)
    size += 8 + entry.first.size() + entry.second.size() + sizeof vorn_testing::kMask;
  return sizeof(ValueHead) + padded(size);
}

/// Writes values one behind the other.
class Pen {
 public:
  explicit Pen(char* at) : m_at(at) {}

  char* at() const { return m_at; }

  void masked() { close(Tag::kMasked, begin()); }

  void put(std::string_view value) { put(Tag::kText, value.data(), value.size()); }
  void put(bool value) { put(Tag::kFlag, &value, 1); }
  void put(std::int64_t value) { put(Tag::kWhole, &value, sizeof value); }
  void put(double value) { put(Tag::kReal, &value, sizeof value); }
  void put(std::chrono::milliseconds value) {
    const std::int64_t count = value.count();
    put(Tag::kMilliseconds, &count, sizeof count);
  }
  void put(Object value) { put(Tag::kObject, &value.there, 1); }
  void put(const Texts& values) {
    char* const from = begin();
    for (const std::string& value : values) item(value.data(), value.size());
    close(Tag::kTexts, from);
  }
  void put(const Answer& value) {
    char* const from = begin();
    item(word(value.first), std::strlen(word(value.first)));
    item(value.second.data(), value.second.size());
    close(Tag::kAnswer, from);
  }
  void put(const Entries& entries) {
    char* const from = begin();
    for (const auto& entry : entries) {
      item(entry.first.data(), entry.first.size());
      item(entry.second.data(), entry.second.size());
    }
    close(Tag::kEntries, from);
  }

  /// With the values of telling keys masked. @returns  Whether one was.
  bool putMasked(const Entries& entries) {
    bool any = false;
    char* const from = begin();
    for (const auto& [key, value] : entries) {
      item(key.data(), key.size());
      if (isTelling(key) || isTelling(value)) {
        any = true;
        remember(value);
        item(vorn_testing::kMask, sizeof vorn_testing::kMask - 1);
      } else {
        item(value.data(), value.size());
      }
    }
    close(Tag::kEntries, from);
    return any;
  }

  /// Goes back to where something began.
  void back(char* to) { m_at = to; }

 private:
  void put(Tag tag, const void* bytes, std::size_t size) {
    char* const from = begin();
    std::memcpy(m_at, bytes, size);
    m_at += size;
    close(tag, from);
  }

  void item(const char* text, std::size_t size) {
    const auto length = static_cast<std::uint32_t>(size);
    std::memcpy(m_at, &length, sizeof length);
    std::memcpy(m_at + sizeof length, text, size);
    m_at += sizeof length + size;
  }

  char* begin() {
    char* const from = m_at;
    m_at += sizeof(ValueHead);
    return from;
  }

  void close(Tag tag, char* from) {
    const auto size =
        static_cast<std::uint32_t>(m_at - from - static_cast<std::ptrdiff_t>(sizeof(ValueHead)));
    const ValueHead head = {tag, size};
    std::memcpy(from, &head, sizeof head);
    m_at = from + sizeof head + padded(size);
  }

  char* m_at;
};

/// Writes an argument as it may be shown.
///
/// The rule: what a parameter of a telling name holds is masked, and so are the values of telling keys in a set, and, from
/// a text that names a secret on, that text and all that follows: {"wifiPassword", "abc"} is a name and a value wherever
/// it stands. Only what names a value stays to be seen.
template <class Value>
void putArgument(Pen& pen, const Value& value, const ParameterName& name, Masking& masking) {
  const bool secret = masking.answer || name.secret;
  if constexpr (std::is_same_v<Value, Entries>) {
    if (!secret) {
      char* const from = pen.at();
      masking.masked = pen.putMasked(value) || masking.masked;
      if (!isKnownBeside(value)) return;
      pen.back(from);
      pen.masked();
      masking.masked = true;
      return;
    }
  }
  const bool telling = !name.secret && isTelling(value);
  if (secret || (telling && !name.key)) {
    remember(value);
    pen.masked();
    masking.masked = true;
  } else if (isKnown(value)) {
    pen.masked();
    masking.masked = true;
  } else {
    pen.put(value);
  }
  masking.answer = masking.answer || (telling && !name.keys);
}

/// Writes what a call answered.
template <class Value>
void putAnswer(Pen& pen, const Value& value, bool secret) {
  bool empty = !mayBeSecret<Value>;
  if constexpr (isText<Value>) empty = value.empty();
  if constexpr (std::is_same_v<Value, Answer>) secret = secret && !value.second.empty();
  if (!empty && (secret || isTelling(value) || isKnown(value))) {
    remember(value);
    pen.masked();
  } else {
    pen.put(value);
  }
}

/// Tells whether a value has changed.
inline std::uint64_t fingerprint(std::string_view value) {
  std::uint64_t hash = 0xCBF29CE484222325 ^ value.size();
  for (const char c : value) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  return hash;
}
inline std::uint64_t fingerprint(std::int64_t value) { return static_cast<std::uint64_t>(value); }

}  // namespace vorn_capture
