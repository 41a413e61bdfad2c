#include "Tally.h"

#include <iomanip>
#include <ostream>

#include "language/Operations.h"

namespace vorn_speaker {

namespace {

constexpr int kNameWidth = 74;
constexpr int kCountWidth = 8;

/// The name, with the parameters where overloads share it.
std::string label(const Operation& operation) {
  for (const Operation& other : operations()) {
    if (&other != &operation && other.fullName() == operation.fullName()) return usage(operation);
  }
  return operation.fullName();
}

}  // namespace

void Tally::ended(const Crossing& crossing) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  ++m_counts[{crossing.target, crossing.slot}];
}

unsigned long Tally::count(const std::string& target, int slot) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_counts.find({target, slot});
  return found == m_counts.end() ? 0 : found->second;
}

void Tally::print(std::ostream& out, bool all) const {
  unsigned long down = 0, up = 0;
  std::size_t silent = 0;
  out << std::left << std::setw(kNameWidth) << "Calls that arrived" << std::right << std::setw(kCountWidth)
      << "down" << std::setw(kCountWidth) << "up" << '\n';
  const auto row = [&](const std::string& name, bool isDown, unsigned long calls) {
    (isDown ? down : up) += calls;
    if (calls == 0) ++silent;
    if (calls == 0 && !all) return;
    out << std::left << std::setw(kNameWidth) << name << std::right
        << std::setw(isDown ? kCountWidth : 2 * kCountWidth) << calls << '\n';
  };
  for (const Operation& operation : operations()) {
    row(label(operation), operation.caller == Caller::kAssistant, count(operation.target, operation.slot));
  }
  row("VornEMPAdapterControl: getEMPAdapter, asked before each command", true, count(kHostInterface, 33));
  if (silent > 0 && !all)
    out << std::left << std::setw(kNameWidth) << "Operations that no call reached (--all tells them)"
        << std::right << std::setw(2 * kCountWidth) << silent << '\n';
  out << std::left << std::setw(kNameWidth) << "Together" << std::right << std::setw(kCountWidth) << down
      << std::setw(kCountWidth) << up << '\n';
}

std::vector<std::string> Tally::missing() const {
  std::vector<std::string> names;
  for (const Operation& operation : operations()) {
    if (count(operation.target, operation.slot) == 0) names.push_back(label(operation));
  }
  return names;
}

}  // namespace vorn_speaker
