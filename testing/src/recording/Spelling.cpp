#include "vorn_testing/Spelling.h"

#include <charconv>
#include <cstdio>
#include <iomanip>
#include <sstream>

#include "vorn_testing/Call.h"
#include "vorn_testing/Text.h"

namespace vorn_testing {

namespace {

/// Whether nothing beyond ASCII is broken or steers a terminal.
bool isClean(const std::string& value) {
  for (std::size_t at = 0; at < value.size();) {
    const std::size_t length = characterAt(value, at).length;
    if (length == 0) return false;
    const std::string character = value.substr(at, length);
    if (length > 1 && harmless(character) != character) return false;
    at += length;
  }
  return true;
}

/// In quotes, with everything escaped that a line of text cannot hold.
std::string quoted(const std::string& value) {
  const bool clean = isClean(value);
  std::string line = "\"";
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      line += std::string("\\") + c;
    } else if (c == '\n') {
      line += "\\n";
    } else if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !clean)) {
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

std::string spell(bool value) { return text(value); }
std::string spell(int value) { return text(value); }
std::string spell(std::int64_t value) { return text(value); }

std::string spell(double value) {
  // Shortest, and with a point whatever locale a host has set.
#if defined(__cpp_lib_to_chars)
  char digits[32];
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
#else
  for (int digits = 1;; ++digits) {  // as good as that of a newer library, if not always as short
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << std::setprecision(digits) << value;
    std::istringstream in(out.str());
    in.imbue(std::locale::classic());
    double back = 0;
    if (digits == 17 || (in >> back && back == value)) return out.str();
  }
#endif
}

std::string spell(std::chrono::milliseconds value) { return text(value); }

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

std::string spell(const std::map<std::string, std::string>& entries) {
  std::string line = "{";
  for (const auto& [key, value] : entries)
    line += (line.size() > 1 ? ", " : "") + spell(key) + "=" + spell(value);
  return line + "}";
}

}  // namespace vorn_testing
