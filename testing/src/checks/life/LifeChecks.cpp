#include <atomic>
#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "../Checks.h"

namespace vorn_testing::checks {

namespace {

/// Calls every operation plainly, but for those that are known to be broken.
void useAll(Trial& trial) {
  std::vector<const Operation*> all;
  for (const Operation& operation : operations()) all.push_back(&operation);
  callAll(trial, all);
}

/// Its calls of a good day, the words that it may be given among them.
std::vector<Prepared> ordinary(const Operation& operation) {
  std::vector<Prepared> all;
  for (const Given given : {Given::kPlain, Given::kWord}) {
    for (int which = 0; which < operation.samples(given); ++which)
      all.push_back(operation.prepare(given, which));
  }
  return all;
}

void expectPlayer(Trial& trial) { trial.player(); }

void playerOnAnyThread(Trial& trial) {
  trial.player();
  trial.explain("on another thread");
  trial.onThreads(4, [&](int) { trial.player(); });
}

void playerAfterUse(Trial& trial) {
  trial.player();
  for (const Operation& operation : operations()) {
    for (const Prepared& made : ordinary(operation)) {
      trial.explain("");
      tryCall(trial, operation, made);
      trial.explain("after " + made.shown);
      trial.player();
    }
  }
}

void playerAfterMany(Trial& trial) {
  const auto enough = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
  for (int i = 0; i < 20000 && std::chrono::steady_clock::now() < enough; ++i) {
    if (i % 100 == 0) trial.explain("after " + std::to_string(i) + " calls");
    trial.player();
  }
}

/// What is handed out is valid until the command returns, also when others are asked for meanwhile.
void playerStays(Trial& trial) {
  Player& first = trial.player();
  trial.onThreads(1, [&](int) { trial.player(); });
  trial.explain("of the player that was handed out before another was asked for");
  trial.ask("getPlaybackState(\"\")", [&] { first.getPlaybackState(""); });
  trial.ask("pause(\"\")", [&] { first.pause(""); });
  trial.ask("stop(\"\")", [&] { first.stop(""); });
}

/// The first to ask is held up at any of its places, and another asks meanwhile.
void firstPlayersStay(Trial& trial) {
  constexpr long kMost = 40;
  guardMemory(true);
  std::atomic<bool> over{false}, busy{false};
  std::atomic<Player*> other{nullptr};
  const auto askedFor = [&trial] {
    Player* player = nullptr;
    Host& host = trial.host();
    trial.ask("getEMPAdapter()", [&] {
      enterHost();
      player = host.getEMPAdapter();
      leaveHost();
    });
    return player;
  };
  trial.explain("of the player that was handed out while another thread asked a new host for its first");
  trial.onThreads(2, [&](int thread) {
    const AtEnd atEnd([&] { over = true; });
    if (thread == 1) {
      while (!over) {
        Trial::meanwhile([&] {
          busy = true;
          const AtEnd done([&] { busy = false; });
          other = askedFor();
        });
      }
      return;
    }
    for (long at = 0, places = 1; at < kMost && at < places; ++at) {
      trial.destroy();
      trial.host();
      Player* mine = nullptr;
      other = nullptr;
      places = Trial::held(at, [&] { mine = askedFor(); });
      while (busy && !over) std::this_thread::yield();
      for (Player* const player : {mine, other.load()}) {
        if (player) trial.ask("getPlaybackState(\"\")", [&] { player->getPlaybackState(""); });
      }
    }
  });
}

void endsUnused(Trial& trial) {
  trial.host();
  trial.destroy();
  trial.explain("after the host was destroyed");
  std::this_thread::sleep_for(std::chrono::milliseconds(60));  // what runs on comes to it later
}

void presumeEnd(Trial& trial) {
  trial.presume("VornDALImplIF/01/destructor/unused", [] {});
}

void endsUsed(Trial& trial) {
  presumeEnd(trial);
  useAll(trial);
  trial.destroy();
  trial.explain("after the host was destroyed");
  std::this_thread::sleep_for(std::chrono::milliseconds(500));  // what calls began may come to it later still
}

/// One call or a few, and it ends: whatever was begun.
void endsInAnyState(Trial& trial) {
  presumeEnd(trial);
  constexpr std::size_t kFew = 12;
  const auto enough = std::chrono::steady_clock::now() + std::chrono::seconds(4);
  const auto over = [&] { return std::chrono::steady_clock::now() > enough; };
  const auto end = [&](const std::string& last) {
    trial.explain("after " + last);
    trial.destroy();
    trial.explain("");
  };
  std::vector<std::pair<const Operation*, Prepared>> all;
  for (const Operation& operation : operations()) {
    for (const Prepared& made : ordinary(operation)) {
      all.emplace_back(&operation, made);
      if (over()) continue;
      tryCall(trial, operation, made);
      end(made.shown);
    }
  }
  std::mt19937 dice(1);
  while (!over()) {
    const std::pair<const Operation*, Prepared>* last = nullptr;
    for (std::size_t i = dice() % kFew + 2; i > 0; --i) {
      last = &all[dice() % all.size()];
      tryCall(trial, *last->first, last->second);
    }
    end("a few calls, the last of them " + last->second.shown);
  }
}

void endsOnAnyThread(Trial& trial) {
  presumeEnd(trial);
  trial.host();
  trial.onThreads(1, [&](int) { trial.destroy(); });
}

void endsAndBegins(Trial& trial) {
  presumeEnd(trial);
  for (int i = 0; i < 3; ++i) {
    endsUnused(trial);
    trial.explain("after one was destroyed");
  }
  useAll(trial);
  trial.destroy();
  useAll(trial);
}

}  // namespace

void addLifeChecks(Checks& checks) {
  const Operation& player = hostOperation(33);
  const char* const kPlayer =
      "Own one player as long as the host lives, one that answers false if there is none.";
  checks.push_back(checkOf(player, "never-null", "It never answers null.", kPlayer, expectPlayer));
  checks.push_back(
      checkOf(player, "never-null-any-thread", "It answers null to no thread.", kPlayer, playerOnAnyThread));
  checks.push_back(checkOf(player, "never-null-after-use",
                           "It never answers null, whatever was called before.", kPlayer, playerAfterUse));

  checks.push_back(checkOf(player, "never-null-after-many",
                           "It never answers null, however often it is asked.", kPlayer, playerAfterMany));
  checks.push_back(checkOf(player, "first",
                           "What it hands out is valid, also when two threads ask for the first.",
                           "Make the player with the host, or by std::call_once().", firstPlayersStay));
  checks.push_back(checkOf(
      player, "stays", "What it hands out is valid while a command runs, also when another thread asks.",
      "Hand out one player that lives as long as the host, not one for each call.", playerStays));

  Operation destructor;
  destructor.name = "destructor";
  destructor.slot = 1;
  const auto add = [&](const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(destructor, name, rule, remedy, run));
  };
  add("unused", "A host that was never called can be destroyed.", "Release only what was taken.", endsUnused);
  add("after-use", "A host that was called can be destroyed.", "Stop and join what the calls started.",
      endsUsed);
  add("in-any-state", "A host can be destroyed whatever was called last.",
      "End in the destructor whatever a call may have begun and none has ended.", endsInAnyState);
  add("any-thread", "A host can be destroyed on another thread than the one that made it.",
      "Tie nothing to the thread of the constructor.", endsOnAnyThread);
  add("again", "When a host is destroyed the next one can be made and used.",
      "Release in the destructor what the constructor took.", endsAndBegins);
}

const Operation& hostOperation(int slot) { return operations()[static_cast<std::size_t>(slot) - 3]; }

Check checkOf(const Operation& operation, const std::string& name, const std::string& rule,
              const std::string& remedy, std::function<void(Trial&)> run) {
  return {{operation.place() + "/" + name, operation.name, operation.slot, rule, remedy}, std::move(run)};
}

}  // namespace vorn_testing::checks
