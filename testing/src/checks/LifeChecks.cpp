#include "Checks.h"

namespace vorn_testing::checks {

namespace {

/// Calls every operation plainly, whatever comes of it.
void useAll(Trial& trial) {
  for (const Operation& operation : operations()) {
    try {
      call(trial, operation, Given::kPlain, 0);
    } catch (const Outcome&) {
    }
  }
}

void expectPlayer(Trial& trial, const char* when) {
  Player* player = nullptr;
  Host& host = trial.host();
  trial.ask("getEMPAdapter()", [&] { player = host.getEMPAdapter(); });
  if (!player) trial.broken(std::string("getEMPAdapter() answered null") + when);
}

void presumePlayer(Trial& trial) {
  trial.presume("VornDALImplIF/33/getEMPAdapter/never-null", [&] { expectPlayer(trial, ""); });
}

void playerOnAnyThread(Trial& trial) {
  presumePlayer(trial);
  trial.onThreads(4, [&](int) { expectPlayer(trial, " on another thread"); });
}

void playerAfterUse(Trial& trial) {
  presumePlayer(trial);
  trial.presume("the checks of that operation", [&] { useAll(trial); });
  expectPlayer(trial, " after every operation had been called");
}

void endsUnused(Trial& trial) {
  trial.host();
  trial.destroy();
}

/// In another process, so that what happens there leaves no trace here.
void presumeEnd(Trial& trial) {
  trial.presume("VornDALImplIF/01/destructor/unused",
                [&] { trial.inKilledProcess([&] { endsUnused(trial); }); });
}

void endsUsed(Trial& trial) {
  trial.presume("the checks of that operation", [&] { useAll(trial); });
  trial.destroy();
}

void endsOnAnyThread(Trial& trial) {
  presumeEnd(trial);
  trial.host();
  trial.onThreads(1, [&](int) { trial.destroy(); });
}

void endsAndBegins(Trial& trial) {
  presumeEnd(trial);
  for (int i = 0; i < 3; ++i) endsUnused(trial);
}

}  // namespace

void addLifeChecks(Checks& checks) {
  const Operation& player = hostOperation(33);
  const char* const kPlayer =
      "Own one player as long as the host lives, one that answers false if there is none.";
  checks.push_back(checkOf(player, "never-null", "It never answers null.", kPlayer,
                           [](Trial& trial) { expectPlayer(trial, ""); }));
  checks.push_back(
      checkOf(player, "never-null-any-thread", "It answers null to no thread.", kPlayer, playerOnAnyThread));
  checks.push_back(checkOf(player, "never-null-after-use",
                           "It never answers null, whatever was called before.", kPlayer, playerAfterUse));

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
  add("any-thread", "A host can be destroyed on another thread than the one that made it.",
      "Tie nothing to the thread of the constructor.", endsOnAnyThread);
  add("again", "When a host is destroyed the next one can be made.",
      "Release in the destructor what the constructor took.", endsAndBegins);
}

const Operation& hostOperation(int slot) { return operations()[static_cast<std::size_t>(slot) - 3]; }

Check checkOf(const Operation& operation, const std::string& name, const std::string& rule,
              const std::string& remedy, std::function<void(Trial&)> run) {
  return {{operation.place() + "/" + name, operation.name, operation.slot, rule, remedy}, std::move(run)};
}

}  // namespace vorn_testing::checks
