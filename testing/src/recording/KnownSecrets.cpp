#include "vorn_testing/KnownSecrets.h"

#include <algorithm>
#include <optional>

#include "vorn_testing/Escapes.h"
#include "vorn_testing/Masking.h"
#include "vorn_testing/Text.h"

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

/// The text, and what it means to readers that take the escapes in it for what they stand for.
std::vector<std::string> meanings(const std::string& text) {
  std::vector<std::string> all{text};
  while (all.size() <= masking::kMostEscaped) {
    std::string plain = all.back();
    plain.resize(unescape(&plain[0], plain.size()));
    if (plain == all.back()) break;
    all.push_back(std::move(plain));
  }
  return all;
}

/// What others may show of a value: its lines, what stands before a NUL, and what lies between bytes that are no UTF-8.
std::vector<std::string> partsOf(const std::string& value) {
  const bool whole = isUtf8(value);
  std::vector<std::string> all(1);
  for (const char c : value) {
    if (masking::endsPart(c) || (!whole && (c & 0x80))) {
      all.emplace_back();
    } else {
      all.back() += c;
    }
  }
  return all;
}

}  // namespace

void KnownSecrets::add(const std::vector<std::string>& values) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const std::string& value : values) {
    auto all = meanings(value);
    for (std::string& part : partsOf(value)) all.push_back(std::move(part));
    for (const std::string& meant : all) {
      if (meant.size() >= kShortest)
        m_values[meant.substr(0, kShortest)][meant.size()].insert(Parts(meant).hash(0, meant.size()));
    }
  }
}

bool KnownSecrets::in(const std::string& text) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_values.empty()) return false;
  const auto all = meanings(text);
  return std::any_of(all.begin(), all.end(), [this](const std::string& meant) { return holds(meant); });
}

bool KnownSecrets::holds(const std::string& text) const {
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
