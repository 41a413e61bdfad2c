#include "Lines.h"

namespace vorn_speaker {

namespace {

constexpr char kByteOrderMark[] = "\xef\xbb\xbf";
constexpr std::size_t kExcerpt = 80;

}  // namespace

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> all;
  std::size_t at = text.compare(0, 3, kByteOrderMark) == 0 ? 3 : 0;
  while (at < text.size()) {
    const std::size_t end = text.find_first_of("\r\n", at);
    all.push_back(text.substr(at, end - at));
    if (end == std::string::npos) break;
    at = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
  }
  return all;
}

std::string excerpt(const std::string& text) {
  if (text.empty()) return "\"\"";
  if (text.size() <= kExcerpt) return oneLine(text);
  std::size_t end = kExcerpt;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return oneLine(text.substr(0, end)) + "...";
}

}  // namespace vorn_speaker
