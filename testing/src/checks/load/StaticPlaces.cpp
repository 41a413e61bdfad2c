// Functions of the C library that keep something in static memory, which all threads share: strtok(), localtime() and their
// like. Told by a program that stands before them.

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <string>

#include "../Checks.h"
#include "Load.h"
#include "LockOrder.h"
#include "Steps.h"
#include "vorn_testing/Interposed.h"

namespace vorn_testing::checks {

namespace {

/// A call of such a function from inside a host's operation.
struct StaticUse {
  const char* function;
  std::size_t step, held;
  const void* mutexes[4];
};

constexpr std::size_t kUses = 1000;
constexpr int kMostTries = 20;
StaticUse g_uses[kUses];
std::atomic<std::size_t> g_useCount{0};
std::atomic<bool> g_looksAtUses{false};
std::size_t g_stepOfUse = 0;

/// Whether this thread is to stop there, whether one has, and whether another came meanwhile.
thread_local bool t_stops = false;
std::atomic<bool> g_stoppedInUse{false}, g_met{false};

/// What they share: strtok() its own place, the others one for the time.
bool shareAPlace(const StaticUse& left, const StaticUse& right) {
  const auto own = [](const StaticUse& use) { return std::string(use.function) == "strtok"; };
  return own(left) == own(right);
}

bool guardedAlike(const StaticUse& left, const StaticUse& right) {
  return std::find_first_of(left.mutexes, left.mutexes + left.held, right.mutexes,
                            right.mutexes + right.held) != left.mutexes + left.held;
}

/// Whether the second comes to such a function while the first is in one: other locks than mutexes are not seen.
bool meet(Trial& trial, const Round& one, const Round& other) {
  std::atomic<bool> over{false};
  g_met = false;
  trial.onThreads(2, [&](int thread) {
    if (thread == 0) {
      const AtEnd atEnd([&] { over = true; });
      t_stops = true;
      make(trial, one);
      t_stops = false;
      return;
    }
    while (!over) {
      if (Trial::meanwhile([&] { make(trial, other); })) return;
    }
  });
  return g_met;
}

void mustBeApart(Trial& trial, const std::vector<Round>& all, const std::vector<Round>& others,
                 const StaticUse& one, const StaticUse& other) {
  if (!meet(trial, all[one.step], others[other.step])) return;
  const auto from = [&](const StaticUse& use) {
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
  const auto all = rounds(everything()), others = rounds(everything());
  g_useCount = 0;
  g_looksAtUses = true;
  const AtEnd end([] { g_looksAtUses = false; });
  for (g_stepOfUse = 0; g_stepOfUse < all.size(); ++g_stepOfUse) make(trial, all[g_stepOfUse]);
  const std::vector<StaticUse> uses(g_uses, g_uses + std::min(g_useCount.load(), kUses));
  int tried = 0;
  for (std::size_t i = 0; i < uses.size(); ++i) {
    for (std::size_t j = i; j < uses.size() && tried < kMostTries; ++j) {
      if (!shareAPlace(uses[i], uses[j]) || guardedAlike(uses[i], uses[j])) continue;
      ++tried;
      mustBeApart(trial, all, others, uses[i], uses[j]);
    }
  }
}

void noteStaticPlace(const char* function) {
  if (!g_looksAtUses.load(std::memory_order_relaxed)) return;
  if (t_stops) {
    t_stops = false;
    g_stoppedInUse = true;
    pauseHere();
    g_stoppedInUse = false;
  } else if (g_stoppedInUse) {
    g_met = true;
  }
  const std::size_t at = g_useCount++;
  if (at >= kUses) return;
  StaticUse& use = g_uses[at];
  use.function = function;
  use.step = g_stepOfUse;
  use.held = std::min<std::size_t>(heldMutexes(use.mutexes, 4), 4);
}

}  // namespace vorn_testing::checks
