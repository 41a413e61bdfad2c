#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

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

}  // namespace vorn_testing
