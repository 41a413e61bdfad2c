#include "vorn_testing/KnownSecrets.h"

#include <optional>

namespace vorn_testing {

namespace {

constexpr std::size_t kShortest = 6;

/// Hashes of all parts of a text, each in one step: a long secret that nearly stands at many places costs no more.
class Parts {
 public:
  explicit Parts(const std::string& text) : m_hashes{0}, m_powers{1} {
    for (const char c : text) {
      m_hashes.push_back(m_hashes.back() * kBase + static_cast<unsigned char>(c) + 1);
      m_powers.push_back(m_powers.back() * kBase);
    }
  }

  std::uint64_t hash(std::size_t at, std::size_t length) const {
    return m_hashes[at + length] - m_hashes[at] * m_powers[length];
  }

 private:
  static constexpr std::uint64_t kBase = 0x9E3779B97F4A7C15;

  std::vector<std::uint64_t> m_hashes, m_powers;
};

}  // namespace

void KnownSecrets::add(const std::vector<std::string>& values) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const std::string& value : values) {
    if (value.size() >= kShortest)
      m_values[value.substr(0, kShortest)][value.size()].insert(Parts(value).hash(0, value.size()));
  }
}

bool KnownSecrets::in(const std::string& text) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_values.empty()) return false;
  std::optional<Parts> parts;
  for (std::size_t at = 0; at + kShortest <= text.size(); ++at) {
    const auto found = m_values.find(text.substr(at, kShortest));
    if (found == m_values.end()) continue;
    if (!parts) parts.emplace(text);
    for (const auto& [length, hashes] : found->second) {
      if (at + length > text.size()) break;
      if (hashes.count(parts->hash(at, length)) > 0) return true;
    }
  }
  return false;
}

}  // namespace vorn_testing
