#include "vorn_testing/Text.h"

#include <algorithm>
#include <iterator>

namespace vorn_testing {

namespace {

/// Whether a terminal would obey the character, or let it turn the text around.
bool commands(std::uint32_t code) {
  constexpr std::uint32_t kCommands[][2] = {
      {0, '\n' - 1}, {'\n' + 1, 0x1f}, {0x7f, 0x9f}, {0x2028, 0x202e}, {0x2066, 0x2069}};
  return std::any_of(std::begin(kCommands), std::end(kCommands),
                     [&](const std::uint32_t(&range)[2]) { return code >= range[0] && code <= range[1]; });
}

}  // namespace

Character characterAt(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return {1, first};
  const std::size_t length = first < 0xc0 ? 0 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  if (length == 0) return {0, 0};
  std::uint32_t code = first & (0x7fU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return {0, 0};
    code = code << 6 | (byte(i) & 0x3fU);
  }
  // Too long for their code, halves of a pair, beyond the last.
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool good =
      first < 0xf8 && code >= kSmallest[length] && (code < 0xd800 || code > 0xdfff) && code <= 0x10ffff;
  return {good ? length : 0, code};
}

bool isUtf8(const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = characterAt(text, at).length;
    if (length == 0) return false;
    at += length;
  }
  return true;
}

std::string harmless(const std::string& text) {
  static const char kHex[] = "0123456789abcdef";
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const Character next = characterAt(text, at);
    if (next.length == 0 || commands(next.code)) {
      for (std::size_t i = 0; i < std::max<std::size_t>(next.length, 1); ++i, ++at) {
        const auto byte = static_cast<unsigned char>(text[at]);
        result += std::string("\\x") + kHex[byte >> 4] + kHex[byte & 15];
      }
    } else {
      result.append(text, at, next.length);
      at += next.length;
    }
  }
  return result;
}

}  // namespace vorn_testing
