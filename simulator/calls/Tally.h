#pragma once

#include <iosfwd>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Crossings.h"

namespace vorn_speaker {

/// Counts the calls of every operation, in both directions.
class Tally : public Crossings::Listener {
 public:
  void began(const Crossing&) override {}
  void ended(const Crossing& crossing) override;

  /// Prints the closing table: what was called, or with `all` every operation.
  void print(std::ostream& out, bool all = false) const;

  /// The operations that no call reached.
  std::vector<std::string> missing() const;

 private:
  unsigned long count(const std::string& target, int slot) const;

  mutable std::mutex m_mutex;
  std::map<std::pair<std::string, int>, unsigned long> m_counts;
};

}  // namespace vorn_speaker
