#include "vorn_testing/Text.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <numeric>

namespace vorn_testing {

namespace {

/// Whether a terminal would obey the character, or let it turn the text around.
bool commands(std::uint32_t code) {
  constexpr std::uint32_t kCommands[][2] = {
      {0, '\n' - 1}, {'\n' + 1, 0x1f}, {0x7f, 0x9f}, {0x2028, 0x202e}, {0x2066, 0x2069}};
  return std::any_of(std::begin(kCommands), std::end(kCommands),
                     [&](const std::uint32_t(&range)[2]) { return code >= range[0] && code <= range[1]; });
}

/// How many letters must be put in, taken out or changed to make one word of the other, whatever their case.
std::size_t distance(const std::string& left, const std::string& right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < right.size(); ++j) {
      const bool same = std::tolower(static_cast<unsigned char>(left[i])) ==
                        std::tolower(static_cast<unsigned char>(right[j]));
      const std::size_t replaced = diagonal + (same ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

/// How far a word may be from the one that was meant.
std::size_t tolerance(const std::string& word) { return word.size() / 3 + 1; }

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

std::string oneLine(const std::string& text) {
  std::string line;
  for (const char c : harmless(text)) {
    if (c == '\n') {
      line += "\\n";
    } else {
      line += c;
    }
  }
  return line;
}

std::size_t distanceBelow(std::size_t limit, const std::string& left, const std::string& right) {
  const std::size_t apart = std::max(left.size(), right.size()) - std::min(left.size(), right.size());
  return apart >= limit ? limit : std::min(limit, distance(left, right));
}

std::string nearest(const std::string& word, const std::vector<std::string>& names) {
  std::string best;
  std::size_t least = tolerance(word);
  for (const std::string& name : names) {
    // A word that is much longer than a name is near to none, however long it is.
    const std::size_t limit = std::min(least, tolerance(name));
    const std::size_t far = distanceBelow(limit, word, name);
    if (far >= limit) continue;
    least = far;
    best = name;
  }
  return best;
}

std::string didYouMean(const std::string& word, const std::vector<std::string>& names) {
  const std::string meant = nearest(word, names);
  return meant.empty() ? "" : "; did you mean " + meant + "?";
}

std::string counted(std::size_t number, const std::string& word) {
  return std::to_string(number) + " " + word + (number == 1 ? "" : "s");
}

}  // namespace vorn_testing
