#include "Records.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vorn_log {

namespace {

constexpr char kPrefix[] = " Time: ";
constexpr std::size_t kPrefixSize = sizeof kPrefix - 1;
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";

/// Adds what has room. Returns how many bytes had none.
std::size_t append(std::string& to, const char* bytes, std::size_t size) {
  const std::size_t kept = std::min(size, Records::kLongest - std::min(Records::kLongest, to.size()));
  to.append(bytes, kept);
  return size - kept;
}

}  // namespace

bool Records::add(const char* bytes, std::size_t size) {
  const char* const end = bytes + size;
  while (bytes != end) {
    const auto* const feed =
        static_cast<const char*>(std::memchr(bytes, '\n', static_cast<std::size_t>(end - bytes)));
    const char* const stop = feed ? feed : end;
    m_lineDropped += append(m_line, bytes, static_cast<std::size_t>(stop - bytes));
    if (!feed) break;
    if (!endLine()) return false;
    bytes = feed + 1;
  }
  return true;
}

bool Records::endLine() {
  std::string line = std::exchange(m_line, std::string());
  if (m_first && line.compare(0, 3, kByteOrderMark) == 0) line.erase(0, 3);
  m_first = false;
  // As an editor or a transfer may have ended it.
  if (!line.empty() && line.back() == '\r') line.pop_back();
  const std::size_t dropped = std::exchange(m_lineDropped, 0);
  if (line.compare(0, kPrefixSize, kPrefix) == 0) {
    if (!flush()) return false;
    m_record = line.substr(kPrefixSize);
    m_dropped = dropped;
  } else {
    if (m_open) line.insert(0, 1, '\n');
    m_dropped += dropped + append(m_record, line.data(), line.size());
  }
  m_open = true;
  return true;
}

bool Records::flush() {
  if (!m_open) return true;
  m_open = false;
  return m_take({std::exchange(m_record, std::string()), std::exchange(m_dropped, 0), false});
}

bool Records::finish() {
  const bool unfinished = !m_line.empty();
  if (unfinished && !endLine()) return false;
  if (!m_open) return true;
  m_open = false;
  return m_take({std::exchange(m_record, std::string()), std::exchange(m_dropped, 0), unfinished});
}

}  // namespace vorn_log
