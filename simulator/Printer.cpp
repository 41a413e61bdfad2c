#include "Printer.h"

#include <iomanip>
#include <ostream>

namespace vorn_speaker {

namespace {

constexpr int kAdapterWidth = 26;
constexpr int kThreadWidth = 10;

bool same(const Crossing& left, const Crossing& right) {
  return left.thread == right.thread && left.target == right.target && left.slot == right.slot;
}

std::string answer(const Crossing& crossing) {
  if (crossing.threw) return " threw";
  const std::string text = crossing.answer();
  return text.empty() ? "" : " = " + text;
}

}  // namespace

bool Printer::isBlock(const Crossing& crossing) const {
  return !m_everyBlock && (crossing.operation == "sendAudioData" || crossing.operation == "sendData") &&
         crossing.depth == 0;
}

void Printer::line(const Crossing& crossing, const std::string& text) {
  m_out << (crossing.down ? "  down  " : "  up    ") << std::left << std::setw(kThreadWidth)
        << crossing.thread << "  " << std::setw(kAdapterWidth) << crossing.adapter << "  "
        << std::string(2 * static_cast<std::size_t>(crossing.depth), ' ') << text << '\n';
}

void Printer::flushWaiting() {
  if (m_hasWaiting) line(m_waiting, m_waiting.signature() + " ...");
  m_hasWaiting = false;
}

void Printer::flushBlocks() {
  if (m_blocks > 0) line(m_block, "... " + std::to_string(m_blocks) + " more of " + m_block.operation);
  m_blocks = 0;
}

void Printer::began(const Crossing& crossing) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (isBlock(crossing)) return;
  flushWaiting();
  m_waiting = crossing;
  m_hasWaiting = true;
}

void Printer::ended(const Crossing& crossing) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (isBlock(crossing) && !crossing.threw && same(crossing, m_block)) {
    ++m_blocks;
    return;
  }
  flushBlocks();
  m_block = isBlock(crossing) ? crossing : Crossing{};
  const bool alone = m_hasWaiting && same(crossing, m_waiting) && crossing.depth == m_waiting.depth;
  if (isBlock(crossing)) {
    flushWaiting();
    line(crossing, crossing.signature() + answer(crossing));
  } else if (alone) {
    line(crossing, crossing.signature() + answer(crossing));
  } else {
    line(crossing, "... " + crossing.operation + answer(crossing));
  }
  if (alone) m_hasWaiting = false;
  m_out.flush();
}

void Printer::say(const std::string& text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  flushWaiting();
  flushBlocks();
  m_block = Crossing{};
  m_out << text << std::endl;
}

}  // namespace vorn_speaker
