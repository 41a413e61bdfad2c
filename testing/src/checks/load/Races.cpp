// Two calls that touch the same memory, one of them writing, with no mutex that both hold: a suspicion and no more. So they
// are made to meet: one stops right before it touches the memory, and only if the other comes to it then, whatever locks
// there are, nothing keeps the two apart. What may be a std::atomic is left alone.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
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
};

std::vector<Step> steps() {
  std::vector<Step> all;
  const auto add = [&](Given given, int from, int step) {
    for (const Operation& operation : operations()) {
      for (int which = from; which < operation.samples(given); which += step)
        all.push_back({given,
                       {&operation, operation.prepare(given, which)},
                       {&operation, operation.prepare(given, which)},
                       {}});
    }
  };
  add(Given::kPlain, 0, 1);
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
    for (std::size_t i = 0; i < count; ++i) {
      for (std::size_t j = 0; j < count; ++j) {
        const Access &stops = *here[i].second, &comes = *here[j].second;
        // What a call has just made is not there when it is made again.
        if (stops.fresh || (here[i].first == here[j].first && comes.fresh)) continue;
        if (guardedAlike(stops, comes) || !accesses.collide(stops, comes)) continue;
        auto& of =
            found[{all[here[i].first].first.operation->name, all[here[j].first].first.operation->name}];
        const bool known = std::any_of(of.begin(), of.end(), [&](const Suspicion& each) {
          return each.place.address == stops.address && each.place.writes == stops.writes;
        });
        if (!known && of.size() < kMostOfPair) of.push_back({here[i].first, here[j].first, stops});
      }
    }
  }
  return found;
}

void tryToMeet(Trial& trial, Step& stops, Step& comes, const Access& place, const Accesses& accesses) {
  stops.renew();
  comes.renew();
  std::atomic<bool> over{false};
  std::vector<Access> met;
  trial.onThreads(2, [&](int thread) {
    if (thread == 0) {
      const AtEnd atEnd([&] { over = true; });
      accesses.stopAt(place, [&] { make(trial, stops.first); });
      return;
    }
    while (!over) {
      if (Trial::meanwhile([&] { met = accesses.meet([&] { make(trial, comes.second); }); })) return;
    }
  });
  if (met.empty()) return;
  const Access one = Accesses::stoppedAt(), &other = met.front();
  const auto at = [](const Access& access) {
    const std::string where = Accesses::whereIs(access);
    return (access.writes ? " was to write to" : " was to read") + std::string(" memory") +
           (where.empty() ? "" : " in " + where);
  };
  trial.broken(stops.first.prepared.shown + at(one) + ", and nothing kept " + comes.second.prepared.shown +
               " out, which" + at(other) + " at the same place");
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
      tryToMeet(trial, all[each.stops], all[each.comes], each.place, accesses);
    }
  }
  trial.saw(std::to_string(tried) + " places tried");
}

}  // namespace vorn_testing::checks
