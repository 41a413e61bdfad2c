// That what the operations of the store answer is so.

#include "Store.h"

namespace vorn_testing::checks {

namespace {

/// Whoever answers false to it has not stored it.
void refusedNotStored(Trial& trial) {
  const Store store(trial);
  int refused = 0;
  constexpr int kTimes = 3;
  for (int i = 0; i < kTimes; ++i) {
    const std::string name = key("refused " + std::to_string(i));
    if (store.accepts({{name, "1"}})) continue;
    const Entries found = store.read(name);
    refused += found.count(name) != 0 && found.at(name) == "1";
  }
  if (refused == kTimes)
    trial.broken("writeKeyValue({{key, \"1\"}}) answered false " + std::to_string(kTimes) +
                 " times, and readKeyValue() answers what was written");
}

/// "true when none of the keys is stored any more", and that it is true when none was.
void absentIsRemoved(Trial& trial) {
  const Store store(trial);
  const auto removes = [&](const Texts& keys) {
    bool done = false;
    trial.ask("removeKeyValue(" + spelled(keys) + ")", [&] { done = trial.host().removeKeyValue(keys); });
    return done;
  };
  store.presume({{key("a"), "1"}, {key("b"), "2"}});
  if (!removes({key("a")}) || !removes({key("b")})) trial.refused("removeKeyValue() answered false");
  store.expectNone(key("a"));
  for (const Texts& keys : {Texts{key("a")}, Texts{key("never written")}}) {
    if (!removes(keys))
      trial.broken("removeKeyValue(" + spelled(keys) +
                   ") answered false, and none of them is stored; it answered true when one was");
  }
}

/// The next host of a process finds the store as the first did.
void opensAnew(Trial& trial) {
  const auto opens = [&] {
    bool done = false;
    trial.ask("open()", [&] { done = trial.host().open(); });
    return done;
  };
  if (!opens()) trial.refused("open() answered false");
  trial.destroy();
  trial.explain("by the next host, after one was destroyed");
  if (!opens())
    trial.broken(
        "open() answered true, and false to the next host, which was made when the first was destroyed");
  const Store store(trial);
  if (store.accepts({{key("a"), "1"}})) store.expect(key("a"), "1");
}

}  // namespace

void addStoreAnswerChecks(Checks& checks) {
  const auto add = [&](int slot, const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), name, rule, remedy, run));
  };
  constexpr int kOpen = 25, kWrite = 27, kRemove = 28;
  add(kOpen, "anew",
      "It opens for the next host of a process as for the first, which keeps what it is given too.",
      "Let go in the destructor of what open() took; keep no static flag of the end.", opensAnew);
  add(kWrite, "refused", "What was answered by false is not stored.",
      "Answer true when the entries are stored.", refusedNotStored);
  add(kRemove, "absent", "It answers true when none of the keys is stored, also when none was.",
      "Answer what is so after the call, not what the call found.", absentIsRemoved);
}

}  // namespace vorn_testing::checks
