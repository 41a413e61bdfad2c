// Two calls that touch the same memory, one of them writing, with no mutex that both hold: a suspicion and no more. So they
// are made to meet: one stops right before it touches the memory, and only if the other comes to it then, whatever locks
// there are, nothing keeps the two apart. What may be a std::atomic is left alone.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "Accesses.h"
#include "Load.h"
#include "LockOrder.h"

namespace vorn_testing::checks {

namespace {

using Clock = std::chrono::steady_clock;

/// What this process has computed: the same on an idle machine and on a loaded one.
std::chrono::milliseconds computed() {
  return std::chrono::milliseconds(static_cast<long>(std::clock()) / (CLOCKS_PER_SEC / 1000));
}

/// A call, with arguments for two threads, and what it touched.
struct Step {
  Given given;
  Round first, second;
  std::vector<Access> touched;

  /// What is to come for the first time is made anew for each time.
  void renew() {
    if (given != Given::kNew) return;
    guardMemory(false);
    for (Round* const round : {&first, &second}) round->prepared = round->operation->prepare(given, 0);
    guardMemory(true);
  }
};

/// A call that is to stop where it touches memory, and another that is to come to it meanwhile.
struct Suspicion {
  std::size_t stops, comes;
  Access place;
  bool apart;  ///< Whether two mutexes take the part of one.
};

std::vector<Step> steps() {
  std::vector<Step> all;
  const auto add = [&](Given given, int from, int step) {
    for (const Operation& operation : operations()) {
      const int end =
          given == Given::kWord ? std::min(kFewWords, operation.samples(given)) : operation.samples(given);
      for (int which = from; which < end; which += step)
        all.push_back({given,
                       {&operation, operation.prepare(given, which)},
                       {&operation, operation.prepare(given, which)},
                       {}});
    }
  };
  add(Given::kPlain, 0, 1);
  add(Given::kWord, 0, 1);
  add(Given::kLoad, 4, samples(Given::kLoad));
  for (const Operation& operation : operations()) {
    if (operation.takesTexts)
      all.push_back({Given::kNew,
                     {&operation, operation.prepare(Given::kNew, 0)},
                     {&operation, operation.prepare(Given::kNew, 0)},
                     {}});
  }
  return all;
}

bool guardedAlike(const Access& left, const Access& right) {
  const auto known = [](const Access& access) { return std::min<std::size_t>(access.held, 4); };
  return std::find_first_of(left.mutexes, left.mutexes + known(left), right.mutexes,
                            right.mutexes + known(right)) != left.mutexes + known(left);
}

/// By pair of operations: a few places where they may collide.
std::map<std::pair<std::string, std::string>, std::vector<Suspicion>> suspicions(const std::vector<Step>& all,
                                                                                 const Accesses& accesses) {
  constexpr std::uintptr_t kGrain = 8, kMostGrains = 64;
  constexpr std::size_t kMostHere = 400, kMostOfPair = 6;
  std::map<std::uintptr_t, std::vector<std::pair<std::size_t, const Access*>>> grains;
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (const Access& access : all[i].touched) {
      const std::uintptr_t from = access.address / kGrain, to = (access.address + access.size - 1) / kGrain;
      for (std::uintptr_t grain = from; grain <= to && grain < from + kMostGrains; ++grain)
        grains[grain].emplace_back(i, &access);
    }
  }
  std::map<std::pair<std::string, std::string>, std::vector<Suspicion>> found;
  for (const auto& grain : grains) {
    const auto& here = grain.second;
    if (std::none_of(here.begin(), here.end(), [](const auto& each) { return each.second->writes; }))
      continue;
    const std::size_t count = std::min(here.size(), kMostHere);
    const bool alwaysGuarded = std::all_of(
        here.begin(), here.end(), [](const auto& each) { return each.second->own && !each.second->locked; });
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t j = 0; j < count; ++j) {
        const Access &stops = *here[i].second, &comes = *here[j].second;
        // What a call has just made is not there when it is made again.
        if (stops.fresh || (here[i].first == here[j].first && comes.fresh)) continue;
        const bool apart = alwaysGuarded && Accesses::guardedApart(stops, comes);
        if (guardedAlike(stops, comes) || (!apart && !accesses.collide(stops, comes))) continue;
        auto& of =
            found[{all[here[i].first].first.operation->name, all[here[j].first].first.operation->name}];
        const bool known = std::any_of(of.begin(), of.end(), [&](const Suspicion& each) {
          return each.place.address == stops.address && each.place.writes == stops.writes;
        });
        if (!known && of.size() < kMostOfPair) of.push_back({here[i].first, here[j].first, stops, apart});
      }
    }
  }
  return found;
}

/// How one of two threads is made to stop where it touches memory.
using Stop = std::function<void(const std::function<void()>& act)>;

void mustNotMeet(Trial& trial, const Round& stops, const Round& comes, const Stop& stop, bool apart,
                 const Accesses& accesses) {
  std::atomic<bool> over{false};
  std::vector<Access> met;
  trial.onThreads(2, [&](int thread) {
    if (thread == 0) {
      const AtEnd atEnd([&] { over = true; });
      stop([&] { make(trial, stops); });
      return;
    }
    while (!over) {
      if (Trial::meanwhile([&] { met = accesses.meet([&] { make(trial, comes); }, apart); })) return;
    }
  });
  if (met.empty()) return;
  const Access one = Accesses::stoppedAt(), &other = met.front();
  const auto at = [](const Access& access) {
    const std::string where = Accesses::whereIs(access);
    return (access.writes ? " was to write to" : " was to read") + std::string(" memory") +
           (where.empty() ? "" : " in " + where);
  };
  trial.broken(stops.prepared.shown + at(one) + ", and nothing kept " + comes.prepared.shown + " out, which" +
               at(other) + " at the same place");
}

}  // namespace

void races(Trial& trial) {
  constexpr std::chrono::milliseconds kLook(6000), kMeet(2000);
  constexpr std::chrono::seconds kAtMost(6), kLookAtMost(30);
  createAdapters(trial.host());
  if (!Accesses::sees())
    trial.notAsked(
        "this program does not see what memory is touched; vorn-conformance does, on x86-64 without a sanitizer");
  guardMemory(false);  // what is watched has its place for the host's own blocks
  auto all = steps();
  const Accesses accesses;
  const LockOrder mutexes;  // from here on it is noted who holds which
  guardMemory(true);
  trial.onThreads(1, [&](int) {
    const auto late = Clock::now() + kLookAtMost;
    for (const Step& step : all) {
      if (Clock::now() < late - kLookAtMost / 2) make(trial, step.first);
    }
    const auto end = computed() + kLook;
    for (Step& step : all) {
      step.renew();
      if (computed() < end && Clock::now() < late)
        step.touched = accesses.of([&] { make(trial, step.first); });
    }
  });
  guardMemory(false);
  trial.explain("while another thread was in the host");
  int tried = 0;
  const auto end = computed() + kMeet;
  const auto atLast = Clock::now() + kAtMost;
  const auto suspected = suspicions(all, accesses);
  guardMemory(true);
  for (std::size_t turn = 0, left = 1; left > 0; ++turn) {  // one of every pair, then the next
    left = 0;
    for (const auto& pair : suspected) {
      if (turn >= pair.second.size() || computed() > end || Clock::now() > atLast) continue;
      const Suspicion& each = pair.second[turn];
      ++left;
      ++tried;
      Step &stops = all[each.stops], &comes = all[each.comes];
      stops.renew();
      comes.renew();
      mustNotMeet(
          trial, stops.first, comes.second,
          [&](const std::function<void()>& act) { accesses.stopAt(each.place, act); }, each.apart, accesses);
    }
  }
  trial.saw(std::to_string(tried) + " places tried");
}

namespace {

/// Where the first call of a host writes without a mutex what the second one touches: what is made when it is needed.
std::vector<Access> firstWrites(Trial& trial, const Round& first, const Round& second,
                                const Accesses& accesses) {
  constexpr std::size_t kMost = 8;
  const auto before = accesses.of([&] { make(trial, first); });
  const auto after = accesses.of([&] { make(trial, second); });
  std::vector<Access> found;
  for (const Access& one : before) {
    const bool known = std::any_of(found.begin(), found.end(),
                                   [&](const Access& each) { return each.instruction == one.instruction; });
    if (!one.writes || known || found.size() == kMost) continue;
    const bool touched = std::any_of(after.begin(), after.end(), [&](const Access& other) {
      return !other.fresh && accesses.collide(one, other) && !guardedAlike(one, other);
    });
    if (touched) found.push_back(one);
  }
  return found;
}

}  // namespace

void firstCalls(Trial& trial) {
  constexpr std::chrono::milliseconds kCompute(4000);
  constexpr std::chrono::seconds kAtMost(10);
  if (!Accesses::sees())
    trial.notAsked(
        "this program does not see what memory is touched; vorn-conformance does, on x86-64 without a sanitizer");
  trial.host();
  guardMemory(false);
  std::vector<std::pair<Round, Round>> all;
  for (const Operation& operation : operations()) {
    const int last = operation.samples(Given::kPlain) - 1;
    if (!operation.locked)
      all.push_back({{&operation, operation.prepare(Given::kPlain, last)},
                     {&operation, operation.prepare(Given::kPlain, last)}});
  }
  const Accesses accesses;
  const LockOrder mutexes;
  guardMemory(true);
  const auto end = computed() + kCompute;
  const auto atLast = Clock::now() + kAtMost;
  trial.explain("as the first two calls of a host");
  int tried = 0;
  for (const auto& [first, second] : all) {
    if (computed() > end || Clock::now() > atLast) break;
    trial.destroy();
    trial.host();
    for (const Access& place : firstWrites(trial, first, second, accesses)) {
      trial.destroy();
      trial.host();
      ++tried;
      mustNotMeet(
          trial, first, second,
          [&](const std::function<void()>& act) { accesses.stopAtInstruction(place, act); }, false, accesses);
    }
  }
  trial.saw(std::to_string(tried) + " places tried");
}

}  // namespace vorn_testing::checks
