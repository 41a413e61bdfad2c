#include "Spelling.h"

#include <vorn_testing/Call.h>
#include <vorn_testing/Text.h>

#include <cstdio>

#include "Secrets.h"

namespace vorn_speaker {

namespace {

/// In quotes, with everything escaped that a line of text cannot hold.
std::string quoted(const std::string& value) {
  const bool utf8 = vorn_testing::harmless(value).find("\\x") == std::string::npos;
  std::string line = "\"";
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      line += std::string("\\") + c;
    } else if (c == '\n') {
      line += "\\n";
    } else if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !utf8)) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(byte));
      line += escape;
    } else {
      line += c;
    }
  }
  return line + "\"";
}

}  // namespace

std::string spell(const std::string& value) {
  const bool plain = !value.empty() && value.find_first_of(" \t\r\n\"\\#[]{},=") == std::string::npos;
  const std::string line = quoted(value);
  return plain && line.size() == value.size() + 2 ? value : line;
}

std::string spell(bool value) { return vorn_testing::text(value); }
std::string spell(int value) { return vorn_testing::text(value); }
std::string spell(std::int64_t value) { return vorn_testing::text(value); }
std::string spell(double value) { return vorn_testing::text(value); }
std::string spell(std::chrono::milliseconds value) { return vorn_testing::text(value); }

std::string spell(const std::vector<std::string>& values) {
  std::string line = "[";
  for (const std::string& value : values) line += (line.size() > 1 ? ", " : "") + spell(value);
  return line + "]";
}

std::string spell(const std::vector<short>& samples) {
  std::string line = "[";
  for (const short sample : samples) line += (line.size() > 1 ? ", " : "") + std::to_string(sample);
  return line + "]";
}

std::string spell(const std::map<std::string, std::string>& entries, bool secrets) {
  std::string line = "{";
  for (const auto& [key, value] : entries) {
    line += (line.size() > 1 ? ", " : "") + spell(key) + "=" +
            spell(!secrets && isSecretName(key) ? kMask : value);
  }
  return line + "}";
}

}  // namespace vorn_speaker
