#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vorn_testing {

/// Values that were secret once, to find them again wherever they come up. May be used from any thread.
class KnownSecrets {
 public:
  void add(const std::vector<std::string>& values);

  /// Whether the text holds one, also escaped as JSON, C, URLs and HTML do, and escaped again. Values of less than six
  /// characters are not looked for: they stand in too many words.
  bool in(const std::string& text) const;

 private:
  bool holds(const std::string& text) const;

  mutable std::mutex m_mutex;
  /// Their hashes, by their first characters, then by their length: a text is looked through once, however many they are.
  std::unordered_map<std::string, std::map<std::size_t, std::unordered_set<std::uint64_t>>> m_values;
};

}  // namespace vorn_testing
