#include "Report.h"

#include <strings.h>
#include <vorn_testing/Text.h>
#include <vorn_testing/TraceLine.h>

#include <algorithm>
#include <cctype>

namespace vorn_log {

using vorn_testing::harmless;
using vorn_testing::nearest;
using vorn_testing::TraceLine;

namespace {

/// Without the word that all adapters begin with.
std::string shortName(const std::string& name) {
  return strncasecmp(name.c_str(), "Vorn", 4) == 0 ? name.substr(4) : name;
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

std::string didYouMeanAdapter(const std::string& name) {
  std::vector<std::string> names;
  for (const std::string& adapter : adapters()) names.push_back(shortName(adapter));
  const std::string meant = nearest(shortName(name), names);
  return meant.empty() ? "" : "; did you mean Vorn" + meant + "?";
}

bool Report::take(const Records::Record& record) {
  const TraceLine line = TraceLine::parse(record.text);
  const bool last = !m_options.until.empty() && record.text.find(m_options.until) != std::string::npos;
  if (wanted(line)) {
    ++m_counts[line.adapter][line.operation];
    m_unfinished = m_unfinished || record.unfinished;
    if (!m_options.count) {
      print(line, record.dropped > 0 || record.unfinished);
      if (record.dropped > 0)
        m_out << "    and " << vorn_testing::counted(record.dropped, "byte") << " more, left out\n";
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
    if (m_unfinished) m_out << "A line has no end: it was cut, or is still being written\n";
  }
  m_out.flush();
}

bool Report::wanted(const TraceLine& line) const {
  const auto& adapters = m_options.adapters;
  if (!adapters.empty() && std::find(adapters.begin(), adapters.end(), line.adapter) == adapters.end())
    return false;
  return m_options.text.empty() || line.text.find(m_options.text) != std::string::npos;
}

void Report::print(const TraceLine& line, bool alone) {
  const std::string shape = TraceLine::shape(line.text);
  if (!m_options.all && !alone && shape == m_lastShape) {
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
