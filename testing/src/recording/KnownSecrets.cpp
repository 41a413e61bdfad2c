#include "vorn_testing/KnownSecrets.h"

namespace vorn_testing {

namespace {

constexpr std::size_t kShortest = 6;

}  // namespace

void KnownSecrets::add(const std::vector<std::string>& values) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const std::string& value : values) {
    if (value.size() >= kShortest) m_values[value.substr(0, kShortest)][value.size()].insert(value);
  }
}

bool KnownSecrets::in(const std::string& text) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_values.empty()) return false;
  for (std::size_t at = 0; at + kShortest <= text.size(); ++at) {
    const auto found = m_values.find(text.substr(at, kShortest));
    if (found == m_values.end()) continue;
    for (const auto& [length, values] : found->second) {
      if (at + length <= text.size() && values.count(text.substr(at, length)) > 0) return true;
    }
  }
  return false;
}

}  // namespace vorn_testing
