#include "Report.h"

#include <vorn_testing/Text.h>
#include <vorn_testing/TraceLine.h>

#include <algorithm>
#include <cctype>
#include <numeric>

namespace vorn_log {

using vorn_testing::harmless;
using vorn_testing::TraceLine;

namespace {

/// How many letters must be put in, taken out or changed to make one word of the other.
std::size_t distance(const std::string& one, const std::string& other) {
  std::vector<std::size_t> row(other.size() + 1);
  std::iota(row.begin(), row.end(), 0U);
  for (std::size_t i = 0; i < one.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < other.size(); ++j) {
      const std::size_t changed = diagonal + (one[i] == other[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

std::string plain(const std::string& name) {
  std::string lower;
  for (const char c : name) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower.compare(0, 4, "vorn") == 0 ? lower.substr(4) : lower;
}

/// A message on one screen: its further lines stand below the first, so that none passes for a record.
std::string shown(const std::string& text) {
  std::string result;
  for (const char c : harmless(text)) result += c == '\n' ? std::string("\n    ") : std::string(1, c);
  return result;
}

}  // namespace

const std::vector<std::string>& adapters() {
  static const std::vector<std::string> all = {"VornAlexaState",
                                               "VornAppMessaging",
                                               "VornAttachmentReaderContainerFactory",
                                               "VornAudioFocus",
                                               "VornAudioIn",
                                               "VornCommsManager",
                                               "VornDeviceCapabilities",
                                               "VornDeviceInfo",
                                               "VornEMPAdapterControl",
                                               "VornGUIOutput",
                                               "VornLEDController",
                                               "VornLoggerObserver",
                                               "VornMediaPlayerFactory",
                                               "VornOOBE",
                                               "VornStorage",
                                               "?"};
  return all;
}

std::string closestAdapter(const std::string& name) {
  const std::string wanted = plain(name.substr(0, 64));
  return *std::min_element(adapters().begin(), adapters().end(), [&](const auto& left, const auto& right) {
    return distance(wanted, plain(left)) < distance(wanted, plain(right));
  });
}

bool Report::take(const Records::Record& record) {
  const TraceLine line = TraceLine::parse(record.text);
  const bool last = !m_options.until.empty() && record.text.find(m_options.until) != std::string::npos;
  if (wanted(line)) {
    ++m_counts[line.adapter][line.operation];
    if (!m_options.count) {
      print(line);
      if (record.dropped > 0) m_out << "    and " << record.dropped << " bytes more, left out\n";
      if (record.unfinished) m_out << "    the line has no end: it was cut, or is still being written\n";
    }
  }
  return !last;
}

void Report::finish() {
  flushRepeats();
  if (m_options.count) {
    for (const auto& [adapter, operations] : m_counts) {
      std::size_t total = 0;
      for (const auto& operation : operations) total += operation.second;
      m_out << adapter << "  " << total << "\n";
      for (const auto& [operation, count] : operations)
        m_out << "  " << (operation.empty() ? "(other lines)" : operation) << "  " << count << "\n";
    }
  }
  m_out.flush();
}

bool Report::wanted(const TraceLine& line) const {
  const auto& adapters = m_options.adapters;
  if (!adapters.empty() && std::find(adapters.begin(), adapters.end(), line.adapter) == adapters.end())
    return false;
  return m_options.text.empty() || line.text.find(m_options.text) != std::string::npos;
}

void Report::print(const TraceLine& line) {
  const std::string shape = TraceLine::shape(line.text);
  if (!m_options.all && shape == m_lastShape) {
    ++m_repeats;
    return;
  }
  flushRepeats();
  m_lastShape = shape;
  const std::string name = line.adapter + (line.operation.empty() ? "" : ".") + line.operation;
  m_out << (m_options.colour ? "\x1b[1m" + name + "\x1b[0m" : name) << "  "
        << shown(m_options.secrets ? line.text : TraceLine::masked(line.text)) << "\n";
  if (m_options.explain) m_out << "    " << line.meaning << "\n";
}

void Report::flushRepeats() {
  if (m_repeats > 0) m_out << "    and " << m_repeats << " more like it\n";
  m_repeats = 0;
}

}  // namespace vorn_log
