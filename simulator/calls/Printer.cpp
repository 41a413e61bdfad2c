#include "Printer.h"

#include <algorithm>
#include <iomanip>
#include <ostream>

#include "text/Lines.h"

namespace vorn_speaker {

namespace {

constexpr int kAdapterWidth = 26;
constexpr int kThreadWidth = 10;

/// Whether two blocks belong to one stream.
bool same(const Crossing& left, const Crossing& right) {
  return left.thread == right.thread && left.target == right.target;
}

std::string answer(const Crossing& crossing) {
  if (crossing.threw) return " threw " + crossing.exception;
  const std::string text = crossing.answer();
  return text.empty() ? "" : " = " + text;
}

}  // namespace

bool Printer::isBlock(const Crossing& crossing) const {
  return !m_everyBlock && (crossing.operation == "sendAudioData" || crossing.operation == "sendData") &&
         crossing.depth == 0;
}

void Printer::line(const Crossing& crossing, const std::string& text) {
  m_out << (crossing.isDown() ? "  down  " : "  up    ") << std::left << std::setw(kThreadWidth)
        << crossing.thread << "  " << std::setw(kAdapterWidth) << crossing.adapter << "  "
        << std::string(2 * static_cast<std::size_t>(std::min(crossing.depth, kDeepest)), ' ') << oneLine(text)
        << '\n';
}

void Printer::flushWaiting(const std::string& thread) {
  const auto found = m_waiting.find(thread);
  if (found == m_waiting.end()) return;
  line(found->second, found->second.signature() + " ...");
  m_waiting.erase(found);
}

void Printer::flushBlocks() {
  if (m_blocks > 0) line(m_block, "... " + std::to_string(m_blocks) + " more of " + m_block.operation);
  m_blocks = 0;
  m_block = Crossing{};
}

void Printer::began(const Crossing& crossing) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (isBlock(crossing)) return;
  flushWaiting(crossing.thread);
  flushBlocks();
  m_waiting[crossing.thread] = crossing;
}

void Printer::ended(const Crossing& crossing) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (isBlock(crossing) && !crossing.threw && same(crossing, m_block)) {
    ++m_blocks;
    return;
  }
  const auto waiting = m_waiting.find(crossing.thread);
  const bool whole = waiting != m_waiting.end() && waiting->second.number == crossing.number;
  if (whole) m_waiting.erase(waiting);
  if (isBlock(crossing)) {
    flushBlocks();
    m_block = crossing;
  }
  line(crossing,
       (whole || isBlock(crossing) ? crossing.signature() : "... " + crossing.operation) + answer(crossing));
  m_out.flush();
}

void Printer::say(const std::string& text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  flushWaiting(threadName());
  flushBlocks();
  m_out << text << std::endl;
}

}  // namespace vorn_speaker
