#pragma once

#include <vorn_testing/Masking.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace vorn_capture {

/// Looks for what vorn_testing::isSecretText() looks for, in one pass and without memory of its own: on every call.
class SecretSearch {
 public:
  /// Takes the next part of the text.
  void add(const char* text, std::size_t size);

  /// Whether what was taken so far is a secret text.
  bool found() const;

 private:
  friend struct SecretWords;
  static constexpr std::uint8_t kFound = 255;

  /// The text with so many escapes taken off. Looked through from the first escape on: before, it is the one above.
  struct Level {
    std::uint8_t state = 0;
    bool escaped = false;  ///< Whether an escape may have begun.
    std::uint8_t held = 0;
    char begun[vorn_testing::masking::kLongestEscape] = {};  ///< What may be an escape.
  };

  void take(int level, char c);
  void decide(int level);

  Level m_levels[vorn_testing::masking::kMostEscaped + 1];
  std::uint8_t m_stars = 0;
  bool m_masked = false;
};

/// Values that were secret once, by length and hash, to find them again wherever they come up. Nothing in it locks.
namespace known {

/// Values of less than six characters are not looked for: they stand in too many words.
constexpr std::size_t kShortest = 6;

/// Adds the value, and its parts: its lines, and what stands before and after a NUL.
void add(const char* text, std::size_t size);

/// Whether the text holds one, also escaped as JSON, C, URLs and HTML do, and escaped again.
bool in(const char* text, std::size_t size);

/// Whether there is any.
bool any();

}  // namespace known

/// What was masked of a call so far, as its arguments are looked at one after the other.
struct Masking {
  bool answer =
      false;  ///< Whether what follows, and what the call answers, is a secret: "wifiPassword" came before.
  bool masked = false;  ///< Whether an argument was.
};

/// What a parameter's name tells.
struct ParameterName {
  bool secret = false;
  bool key = false;   ///< It names a value and does not hold one: "key" or "keys".
  bool keys = false;  ///< Of these, "keys".
};

ParameterName parameterName(const std::string& name);

}  // namespace vorn_capture
