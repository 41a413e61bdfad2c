#include "vorn_testing/Escapes.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "vorn_testing/Masking.h"

namespace vorn_testing {

namespace {

/// What is spelled by a number: behind what it begins with, so many digits at most and at least.
struct Numbered {
  const char* begin;
  std::size_t least, most;
  std::uint32_t base;
  bool byte;  ///< Not a character.
};
constexpr Numbered kNumbered[] = {
    {"\\u", 4, 4, 16, false}, {"\\U", 8, 8, 16, false}, {"\\x", 1, 2, 16, true},
    {"\\", 1, 3, 8, true},    {"%u", 4, 4, 16, false},  {"%", 2, 2, 16, true},
    {"&#x", 1, 7, 16, false}, {"&#X", 1, 7, 16, false}, {"&#", 1, 7, 10, false}};
/// What is spelled by a name.
constexpr struct {
  const char* spelled;
  char meant;
} kNamed[] = {{"\\n", '\n'}, {"\\t", '\t'},   {"\\r", '\r'},    {"\\b", '\b'}, {"\\f", '\f'},
              {"\\\"", '"'}, {"\\'", '\''},   {"\\\\", '\\'},   {"\\/", '/'},  {"&lt;", '<'},
              {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}};

/// The length of a word that the text begins with; 0 when it does not.
std::size_t beginning(const char* text, std::size_t size, const char* word) {
  const std::size_t length = std::strlen(word);
  return length <= size && std::memcmp(text, word, length) == 0 ? length : 0;
}

/// The length of an escape of a form at the beginning, and its code; 0 where none is.
std::size_t codeOf(const char* text, std::size_t size, const Numbered& form, std::uint32_t& code) {
  const std::size_t begin = beginning(text, size, form.begin);
  if (begin == 0) return 0;
  constexpr char kDigits[] = "0123456789abcdefABCDEF";
  std::size_t end = begin;
  for (code = 0; end < std::min(size, begin + form.most); ++end) {
    const void* const found = std::memchr(kDigits, text[end], sizeof kDigits - 1);
    if (!found) break;
    auto digit = static_cast<std::uint32_t>(static_cast<const char*>(found) - kDigits);
    if (digit >= 16) digit -= 6;
    if (digit >= form.base) break;
    code = code * form.base + digit;
  }
  if (end < begin + form.least) return 0;
  return end + (*form.begin == '&' && end < size && text[end] == ';' ? 1 : 0);
}

char* putUtf8(char* to, std::uint32_t code) {
  const auto put = [&](std::uint32_t byte) { *to++ = static_cast<char>(byte); };
  const auto follow = [&](int shift) { put(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | (code >> 6)), follow(0);
  } else if (code < 0x10000) {
    put(0xE0 | (code >> 12)), follow(6), follow(0);
  } else {
    put(0xF0 | ((code >> 18) & 7)), follow(12), follow(6), follow(0);
  }
  return to;
}

/// Moves `from` behind an escape, and `to` behind what it stands for; false where none is.
bool take(const char*& from, const char* end, char*& to) {
  const auto left = [&] { return static_cast<std::size_t>(end - from); };
  for (const Numbered& form : kNumbered) {
    std::uint32_t code = 0, second = 0;
    const std::size_t length = codeOf(from, left(), form, code);
    if (length == 0) continue;
    from += length;
    if (code >= 0xD800 && code < 0xDC00) {
      const std::size_t more = codeOf(from, left(), form, second);
      if (more) code = 0x10000 + ((code & 0x3FF) << 10) + (second & 0x3FF);
      from += more;
    }
    if (form.byte)
      *to++ = static_cast<char>(code);
    else
      to = putUtf8(to, code);
    return true;
  }
  for (const auto& name : kNamed) {
    const std::size_t length = beginning(from, left(), name.spelled);
    if (length == 0) continue;
    from += length;
    *to++ = name.meant;
    return true;
  }
  return false;
}

}  // namespace

std::size_t unescape(char* text, std::size_t size) {
  char* to = text;
  const char* const end = text + size;
  for (const char* from = text; from != end;) {
    if (!masking::beginsEscape(*from) || !take(from, end, to)) *to++ = *from++;
  }
  return static_cast<std::size_t>(to - text);
}

}  // namespace vorn_testing
