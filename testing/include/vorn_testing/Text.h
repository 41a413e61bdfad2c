#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vorn_testing {

/// One character of a text in UTF-8.
struct Character {
  std::size_t length;  ///< In bytes; 0 when what stands there is no UTF-8.
  std::uint32_t code;  ///< Its Unicode number.
};

/// The character that begins at byte `at` of `text`.
Character characterAt(const std::string& text, std::size_t at);

/// Whether the whole text is UTF-8 as it must be: shortest form, no surrogates, nothing beyond U+10FFFF.
bool isUtf8(const std::string& text);

/// `text` as a terminal may see it: control characters, what turns text around, and bytes that are no UTF-8 are
/// shown as "\x1b". Line feeds stay.
std::string harmless(const std::string& text);

/// The same on one line: a line feed is shown as "\n".
std::string oneLine(const std::string& text);

/// How many letters must be put in, taken out or changed to make one word of the other, whatever their case; or `limit`,
/// when it is no less. Words of too different lengths are not looked at.
std::size_t distanceBelow(std::size_t limit, const std::string& left, const std::string& right);

/// The one of `names` that a misspelt word was meant to be, whatever its case; empty when it is like none.
std::string nearest(const std::string& word, const std::vector<std::string>& names);

/// "; did you mean NAME?" with the nearest one, as it ends a message; empty when the word is like none.
std::string didYouMean(const std::string& word, const std::vector<std::string>& names);

/// "1 call", "2 calls".
std::string counted(std::size_t number, const std::string& word);

}  // namespace vorn_testing
