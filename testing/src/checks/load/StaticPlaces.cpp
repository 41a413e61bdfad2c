// Functions of the C library that keep something in static memory, which all threads share: strtok(), localtime() and their
// like. Told by a program that stands before them.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <string>

#include "../Checks.h"
#include "Load.h"
#include "LockOrder.h"
#include "vorn_testing/Interposed.h"

namespace vorn_testing::checks {

namespace {

/// A call of such a function from inside a host's operation.
struct Use {
  const char* function;
  std::size_t step, held;
  const void* mutexes[4];
};

constexpr std::size_t kUses = 1000;
Use g_uses[kUses];
std::atomic<std::size_t> g_count{0};
std::atomic<bool> g_looks{false};
std::size_t g_step = 0;

/// What they share: strtok() its own place, the others one for the time.
bool shareAPlace(const Use& left, const Use& right) {
  const auto own = [](const Use& use) { return std::string(use.function) == "strtok"; };
  return own(left) == own(right);
}

bool guardedAlike(const Use& left, const Use& right) {
  return std::find_first_of(left.mutexes, left.mutexes + left.held, right.mutexes,
                            right.mutexes + right.held) != left.mutexes + left.held;
}

void mustBeApart(Trial& trial, const std::vector<Round>& all, const Use& one, const Use& other) {
  const auto from = [&](const Use& use) {
    return all[use.step].prepared.shown + " calls " + use.function + "()";
  };
  const std::string said =
      from(one) + ", which keeps what it does in static memory, and " +
      (one.step == other.step ? "may overlap with itself" : from(other) + " with no mutex in common");
  if (std::string(one.function) == "strtok") trial.broken(said);
  trial.remark(said);
}

}  // namespace

void staticPlaces(Trial& trial) {
  createAdapters(trial.host());
  const LockOrder mutexes;
  if (!LockOrder::sees())
    trial.notAsked(
        "this program does not see what is called; vorn-conformance does, built without a sanitizer");
  const auto all = rounds(everything());
  g_count = 0;
  g_looks = true;
  const AtEnd end([] { g_looks = false; });
  for (g_step = 0; g_step < all.size(); ++g_step) make(trial, all[g_step]);
  const std::size_t count = std::min(g_count.load(), kUses);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = i; j < count; ++j) {
      if (shareAPlace(g_uses[i], g_uses[j]) && !guardedAlike(g_uses[i], g_uses[j]))
        mustBeApart(trial, all, g_uses[i], g_uses[j]);
    }
  }
}

void noteStaticPlace(const char* function) {
  if (!g_looks.load(std::memory_order_relaxed)) return;
  const std::size_t at = g_count++;
  if (at >= kUses) return;
  Use& use = g_uses[at];
  use.function = function;
  use.step = g_step;
  use.held = std::min<std::size_t>(heldMutexes(use.mutexes, 4), 4);
}

}  // namespace vorn_testing::checks
