#include "Spelling.h"

#include "vorn_testing/Text.h"

#include <cstdint>
#include <cstdio>

namespace vorn_testing::checks {

namespace {

/// A text up to this long is shown whole, a longer one by its beginning.
constexpr std::size_t kWhole = 60, kBeginning = 20;

}  // namespace

std::string spelled(const std::string& text) {
  std::string line = "\"";
  const std::size_t end = text.size() > kWhole ? kBeginning : text.size();
  std::size_t position = 0;
  while (position < end) {
    const std::size_t size = characterAt(text, position).length;
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
  for (char& c : digits) c = c == ',' ? '.' : c;  // a host may have set a locale
  return digits;
}

std::string spelled(std::int64_t value) { return std::to_string(value); }

}  // namespace vorn_testing::checks
