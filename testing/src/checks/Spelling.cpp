#include "Spelling.h"

#include <cstdint>
#include <cstdio>

namespace vorn_testing::checks {

namespace {

/// A text up to this long is shown whole, a longer one by its beginning.
constexpr std::size_t kWhole = 60, kBeginning = 20;

/// How many bytes the character at `position` has, or 0 when it is none.
std::size_t characterAt(const std::string& text, std::size_t position) {
  const auto byte = [&](std::size_t i) {
    return position + i < text.size() ? static_cast<unsigned char>(text[position + i]) : 0U;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t size = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  // What the second byte may be rules out longer forms, surrogates and what is beyond U+10FFFF.
  const unsigned least = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
  const unsigned most = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
  if (first < 0xc2 || first > 0xf4 || byte(1) < least || byte(1) > most) return 0;
  for (std::size_t i = 2; i < size; ++i) {
    if ((byte(i) & 0xc0) != 0x80) return 0;
  }
  return size;
}

}  // namespace

std::string spelled(const std::string& text) {
  std::string line = "\"";
  const std::size_t end = text.size() > kWhole ? kBeginning : text.size();
  std::size_t position = 0;
  while (position < end) {
    const std::size_t size = characterAt(text, position);
    const auto byte = static_cast<unsigned char>(text[position]);
    if (size == 0 || byte < 0x20 || byte == 0x7f) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", byte);
      line += escape;
      ++position;
      continue;
    }
    if (byte == '"' || byte == '\\') line += '\\';
    line.append(text, position, size);
    position += size;
  }
  line += '"';
  return position < text.size() ? line + "... (" + std::to_string(text.size()) + " bytes)" : line;
}

std::string spelled(const Texts& texts) {
  if (texts.size() > 3) return "{" + std::to_string(texts.size()) + " texts}";
  std::string line;
  for (const std::string& text : texts) line += (line.empty() ? "" : ", ") + spelled(text);
  return "{" + line + "}";
}

std::string spelled(const Entries& entries) {
  if (entries.size() > 2) return "{" + std::to_string(entries.size()) + " entries}";
  std::string line;
  for (const auto& entry : entries)
    line += (line.empty() ? "{" : ", {") + spelled(entry.first) + ", " + spelled(entry.second) + "}";
  return "{" + line + "}";
}

std::string spelled(const CommsStateInfo& info) { return "{" + spelled(info.state) + "}"; }

std::string spelled(std::chrono::milliseconds duration) { return spelled(duration.count()) + "ms"; }

std::string spelled(bool value) { return value ? "true" : "false"; }

std::string spelled(double value) {
  char digits[32];
  std::snprintf(digits, sizeof digits, "%.17g", value);
  return digits;
}

std::string spelled(std::int64_t value) { return std::to_string(value); }

bool isUtf8(const std::string& text) {
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t size = characterAt(text, position);
    if (size == 0) return false;
    position += size;
  }
  return true;
}

}  // namespace vorn_testing::checks
