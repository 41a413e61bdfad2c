#pragma once

#include <chrono>
#include <cstddef>
#include <functional>

namespace vorn_testing::checks {

/// Again and again, as in the months of a device's life: the next round after three hundred, or after two seconds.
inline void often(const std::function<void(std::size_t)>& act) {
  const auto enough = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  for (std::size_t turn = 0; turn < 300 && std::chrono::steady_clock::now() < enough; ++turn) act(turn);
}

}  // namespace vorn_testing::checks
