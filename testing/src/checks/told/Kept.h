#pragma once

#include <functional>
#include <mutex>
#include <optional>

#include "../Trial.h"

namespace vorn_testing::checks {

/// What went wrong in a call of the assistant side: it may not pass through the host's own frames.
class Kept {
 public:
  void run(const std::function<void()>& act) {
    try {
      act();
    } catch (const Outcome& outcome) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      if (!m_first && outcome.kind == HostVerdict::kBroken) m_first = outcome;
    }
  }
  void mustBeNone() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_first) throw Outcome(*m_first);
  }

 private:
  std::mutex m_mutex;
  std::optional<Outcome> m_first;
};

}  // namespace vorn_testing::checks
