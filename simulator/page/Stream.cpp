#include "Stream.h"

#include <algorithm>
#include <utility>

namespace vorn_speaker {

namespace {

constexpr std::size_t kMostOperations = 500;

/// The adapter and the operation as they stand in the line; no text in it can hold these, its quotes have a backslash.
std::string operationIn(const std::string& line) {
  std::string name;
  for (const std::string field : {"\"adapter\":\"", "\"operation\":\""}) {
    const std::size_t at = line.find(field);
    if (at == std::string::npos) return "";
    const std::size_t from = at + field.size();
    name += line.substr(from, line.find('"', from) - from) + " ";
  }
  return name;
}

}  // namespace

void Stream::push(std::string line) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bytes += line.size();
    m_lines.push_back(std::move(line));
    while (m_bytes > m_most && m_lines.size() > 1) forgetFirst();
  }
  if (m_onLine) m_onLine();
}

void Stream::forgetFirst() {
  std::string& line = m_lines.front();
  m_bytes -= line.size();
  const std::string operation = operationIn(line);
  if (!operation.empty() && (m_gone.size() < kMostOperations || m_gone.count(operation) > 0))
    m_gone[operation] = std::move(line);
  m_lines.pop_front();
  ++m_first;
}

void Stream::restart() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_first += m_lines.size();
  m_began = m_first;
  m_lines.clear();
  m_gone.clear();
  m_bytes = 0;
}

bool Stream::read(std::uint64_t& place, std::size_t most, const std::string& prefix, std::string& out) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const std::uint64_t next = m_first + m_lines.size();
  // A place of another server's, or of what was before the restart, is the beginning.
  if (place < m_began || place > next) place = m_began;
  if (place == next) return false;
  if (place < m_first) {
    for (const auto& [operation, line] : m_gone) out += prefix + "{\"earlier\":" + line + "}\n";
    out += prefix + "{\"missed\":" + std::to_string(m_first - place) + "}\n";
    place = m_first;
  }
  do {
    out += prefix + m_lines[place - m_first] + '\n';
  } while (++place < next && out.size() < most);
  return true;
}

}  // namespace vorn_speaker
