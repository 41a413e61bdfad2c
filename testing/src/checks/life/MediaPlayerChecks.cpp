// That the media players which a host brings can be configured.

#include <VornMediaPlayerFactory.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "../Checks.h"

namespace vorn_testing::checks {

namespace {

using Factory = VornDeviceAbstractionLayer::VornMediaPlayerFactory;

constexpr char kDefault[] = "DefaultMediaPlayer";

/// On what the host brings: by vornMediaPlayers(), or by a factory that was made with it.
std::shared_ptr<Factory> factoryOf(Trial& trial) {
  trial.host();
  if (MediaPlayers* const players = trial.mediaPlayers()) Factory::CreateInstance(*players);
  auto factory = Factory::getInstance();
  if (!factory)
    trial.refused("the host brings no media players: vornMediaPlayers() is not defined or answers null");
  return factory;
}

/// Every name that is known, and one that is not.
std::vector<std::string> namesFor(Trial& trial) {
  std::vector<std::string> names{kDefault, "kitchen radio"};
  if (const MediaPlayers* const players = trial.mediaPlayers()) {
    for (const auto& player : *players) {
      if (player.first != kDefault) names.push_back(player.first);
    }
  }
  return names;
}

/// Returns whether there was a player.
bool configure(
    Trial& trial, Factory& factory, const std::string& name, bool flag = true,
    const std::function<void(std::string)>& callback = [](const std::string&) {}) {
  bool found = false;
  trial.ask("createDalMediaPlayer(" + spelled(name) + ")",
            [&] { found = factory.createDalMediaPlayer(callback, flag, name, !flag) != nullptr; });
  return found;
}

void areThere(Trial& trial) {
  factoryOf(trial);
  const MediaPlayers* const players = trial.mediaPlayers();
  if (!players) return;  // a factory does not show its table
  for (const auto& player : *players) {
    if (!player.second)
      trial.broken("vornMediaPlayers() answers a table with an empty pointer, called " +
                   spelled(player.first));
  }
}

void hasDefault(Trial& trial) {
  const auto factory = factoryOf(trial);
  if (!configure(trial, *factory, kDefault))
    trial.remark("no player is called " + std::string(kDefault) +
                 ": for a name that is not in the table there is none");
}

void answers(Trial& trial) {
  const auto factory = factoryOf(trial);
  for (const std::string& name : namesFor(trial)) {
    for (const bool flag : {true, false}) configure(trial, *factory, name, flag);
  }
}

void needsNoCallback(Trial& trial) {
  const auto factory = factoryOf(trial);
  trial.explain("with an empty callback");
  for (const std::string& name : namesFor(trial)) configure(trial, *factory, name, true, nullptr);
}

void onAnyThread(Trial& trial) {
  const auto factory = factoryOf(trial);
  const std::vector<std::string> names = namesFor(trial);
  trial.explain("on several threads");
  trial.onThreads(4, [&](int) {
    for (int i = 0; i < 50; ++i) {
      for (const std::string& name : names) configure(trial, *factory, name);
    }
  });
}

/// Nobody guards the table: who changes it may meet a search.
void tableStays(Trial& trial) {
  const auto factory = factoryOf(trial);
  const MediaPlayers* const players = trial.mediaPlayers();
  if (!players) trial.notAsked("the host makes its factory itself, which does not show its table");
  const MediaPlayers before = *players;
  for (const std::string& name : namesFor(trial)) {
    configure(trial, *factory, name);
    if (*players != before)
      trial.broken("createDalMediaPlayer(" + spelled(name) +
                   ") changed the table: " + std::to_string(before.size()) + " players were in it, and " +
                   (players->size() == before.size() ? "others" : std::to_string(players->size())) +
                   " are now");
  }
}

/// The assistant client keeps what it was given.
void staysAfterShutdown(Trial& trial) {
  const auto factory = factoryOf(trial);
  const std::vector<std::string> names = namesFor(trial);
  Factory::Shutdown();
  trial.explain("of a factory that was kept when it was shut down");
  for (const std::string& name : names) configure(trial, *factory, name);
}

void endsConfigured(Trial& trial) {
  {
    const auto factory = factoryOf(trial);
    for (const std::string& name : namesFor(trial)) configure(trial, *factory, name);
  }
  Factory::Shutdown();
  trial.destroy();
  trial.explain("after the host was destroyed whose players were configured");
  std::this_thread::sleep_for(std::chrono::milliseconds(300));  // what was begun may come to it later still
}

}  // namespace

void addMediaPlayerChecks(Checks& checks) {
  const auto add = [&](const char* name, const char* rule, const char* remedy, void (*run)(Trial&)) {
    const std::string operation = "createDalMediaPlayer",
                      id = "VornDalMediaPlayerInterfaceImpl/21/" + operation + "/" + name;
    checks.push_back({HostCheck{id, operation, 21, rule, remedy}, run});
  };
  const char* const kUnderLock =
      "Configure() runs under the factory's lock: keep the callback, call no factory, and return.";
  add("answers", "Every player can be configured, by its own name and in place of another.", kUnderLock,
      answers);
  add("players", "Behind every name of the table stands a player.",
      "Put a player into the table when there is one, not before.", areThere);
  add("default", "A player is called DefaultMediaPlayer.", "Add one: it stands in where a name is not found.",
      hasDefault);
  add("no-callback", "The callback may be empty.", "Look whether there is one before you call it.",
      needsNoCallback);
  add("any-thread", "Players can be configured on any thread.", kUnderLock, onAnyThread);
  add("table", "The table of players stays as it is.", "Change it only when no factory is there.",
      tableStays);
  add("stays", "Table and players stay as long as the host, also past the factory's Shutdown().",
      "Let the host own them.", staysAfterShutdown);
  add("destroyed", "A host whose players were configured can be destroyed.",
      "End in the destructor what Configure() began.", endsConfigured);
}

}  // namespace vorn_testing::checks
