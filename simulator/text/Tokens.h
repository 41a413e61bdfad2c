#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vorn_speaker {

/// One value as it stands in a scenario line: a word, a "quoted text", a [list, of, texts] or a {key=value} set.
struct Token {
  enum Kind { kWord, kQuoted, kList, kMap };

  Kind kind = kWord;
  std::string text;  ///< As the kit renders the value: without quotes, lists and sets in one spelling.
  std::vector<std::string> items;              ///< Of a list.
  std::map<std::string, std::string> entries;  ///< Of a set.
  std::size_t column = 1;                      ///< Where it begins, counted from 1.
};

/// A value as it stands in a message: what is quoted with its quotes.
std::string shown(const Token& token);

/// A line, or a value in it, that cannot be read; what() tells what was expected, and what was found.
class Unreadable : public std::runtime_error {
 public:
  Unreadable(std::size_t where, const std::string& expected)
      : Unreadable(where, expected, std::nullopt, "") {}

  /// `hint` follows what was found.
  Unreadable(std::size_t where, const std::string& expected, const std::optional<std::string>& found,
             const std::string& hint = "");

  /// The same, with more behind it.
  Unreadable with(const std::string& more) const {
    return Unreadable(column, m_expected, m_found, m_hint + more);
  }

  /// The same without what was found, which may be a secret.
  Unreadable masked() const;

  const std::size_t column;

 private:
  std::string m_expected;
  std::optional<std::string> m_found;
  std::string m_hint;
};

/// Splits a line; a comment (# at the beginning of a word) ends it.
std::vector<Token> split(const std::string& line);

/// What a value of the type looks like, for messages and help: "a whole number".
template <class Value>
const char* describe();

/// Reads a value, or throws Unreadable.
template <class Value>
Value read(const Token& token);

}  // namespace vorn_speaker
