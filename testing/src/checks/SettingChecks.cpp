#include <VornDeviceInfo.h>

#include <utility>

#include "Checks.h"

namespace vorn_testing::checks {

namespace {

using Result = std::pair<bool, std::string>;
using Values = std::vector<std::string>;
using Named = std::pair<std::string, Values>;

const std::string kReported = "VornDALImplIF/23/setSystemSetting/reported";

/// The settings to try: the team's, or made-up ones.
std::map<std::string, Values> settings(const Trial& trial) {
  if (!trial.demands.settings.empty()) return trial.demands.settings;
  return {{"vorn-conformance a", {"1", "2"}}, {"vorn-conformance b", {"1", "2"}}};
}

/// The first setting, with two values.
Named setting(const Trial& trial) {
  for (const auto& named : settings(trial)) {
    if (named.second.size() > 1) return named;
  }
  trial.notAsked("no setting of HostDemands::settings (--setting) has two values");
}

bool set(Trial& trial, const std::string& name, const std::string& value) {
  bool accepted = false;
  Host& host = trial.host();
  trial.ask("setSystemSetting(" + spelled(name) + ", " + spelled(value) + ")",
            [&] { accepted = host.setSystemSetting(name, value); });
  return accepted;
}

void mustSet(Trial& trial, const std::string& name, const std::string& value) {
  if (!set(trial, name, value))
    trial.notAsked("setSystemSetting(" + spelled(name) + ", " + spelled(value) +
                   ") answered false; name settings by HostDemands::settings (--setting)");
}

void expect(Trial& trial, const std::string& name, const std::string& value) {
  std::string found = "untouched";
  bool known = false;
  Host& host = trial.host();
  const std::string shown = "getSystemSetting(" + spelled(name) + ")";
  trial.ask(shown, [&] { known = host.getSystemSetting(name, found); });
  if (!known) trial.broken(shown + " answered false, accepted was " + spelled(value));
  if (found != value)
    trial.broken(shown + " answered " + spelled(found) + ", accepted was " + spelled(value));
}

void reported(Trial& trial) {
  const Named named = setting(trial);
  mustSet(trial, named.first, named.second[0]);
  expect(trial, named.first, named.second[0]);
}

void presumeReported(Trial& trial) {
  trial.presume(kReported, [&] { reported(trial); });
}

void lastReported(Trial& trial) {
  presumeReported(trial);
  const Named named = setting(trial);
  mustSet(trial, named.first, named.second[1]);
  expect(trial, named.first, named.second[1]);
}

void settingsApart(Trial& trial) {
  presumeReported(trial);
  const auto all = settings(trial);
  if (all.size() < 2) trial.notAsked("HostDemands::settings (--setting) names one setting");
  for (const auto& named : all)
    mustSet(trial, named.first,
            named.first == all.begin()->first ? named.second.front() : named.second.back());
  expect(trial, all.begin()->first, all.begin()->second.front());
}

void refused(Trial& trial) {
  presumeReported(trial);
  const Named named = setting(trial);
  if (set(trial, named.first, "\xff")) trial.notAsked("setSystemSetting() refuses nothing");
  expect(trial, named.first, named.second[0]);
}

void leavesText(Trial& trial) {
  Host& host = trial.host();
  std::string value = "untouched";
  bool known = false;
  trial.ask("getSystemSetting(\"vorn-conformance none\")",
            [&] { known = host.getSystemSetting("vorn-conformance none", value); });
  if (known) trial.notAsked("getSystemSetting() answers true for a name that nobody set");
  if (value != "untouched") trial.broken("getSystemSetting() answered false and wrote " + spelled(value));
}

/// A directive, and how it is shown.
struct Directive {
  std::string shown;
  std::function<Result(Host&)> give;
};

/// Follows what the getter says while a directive moves the value to `target`, and back.
template <class Value>
void follows(Trial& trial, const std::string& getter, Value (Host::*get)(),
             const std::function<Value(Value)>& target,
             const std::function<Directive(Value from, Value to)>& directive) {
  Host& host = trial.host();
  const auto now = [&] {
    Value value{};
    trial.ask(getter + "()", [&] { value = (host.*get)(); });
    return value;
  };
  const Value before = now();
  bool moved = false;
  Value from = before;
  for (const Value to : {target(before), before}) {
    const Directive given = directive(from, to);
    Result answer;
    trial.ask(given.shown, [&] { answer = given.give(host); });
    if (!answer.first) trial.notAsked(given.shown + " answered {false, " + spelled(answer.second) + "}");
    const Value found = now();
    moved = moved || found != before;
    // Until it moves it may be of a host without any, which answers the same whatever happens.
    if (moved && found != to)
      trial.broken(given.shown + " answered true, then " + getter + "() answered " + spelled(found) +
                   " instead of " + spelled(to));
    from = to;
  }
  if (!moved) trial.notAsked(getter + "() answers " + spelled(before) + " whatever is set");
}

int nextTo(int volume) { return volume > 0 ? volume - 1 : volume + 1; }

void setVolumeFollows(Trial& trial) {
  follows<int>(trial, "getVolume", &Host::getVolume, nextTo, [](int, int to) {
    return Directive{"onSetVolume(" + spelled(to) + ")", [to](Host& host) { return host.onSetVolume(to); }};
  });
}

void adjustVolumeFollows(Trial& trial) {
  follows<int>(trial, "getVolume", &Host::getVolume, nextTo, [](int from, int to) {
    return Directive{"onAdjustVolume(" + spelled(to - from) + ")",
                     [from, to](Host& host) { return host.onAdjustVolume(to - from); }};
  });
}

void muteFollows(Trial& trial) {
  follows<bool>(
      trial, "getMuteStatus", &Host::getMuteStatus, [](bool muted) { return !muted; },
      [](bool, bool to) {
        return Directive{"onMute(" + spelled(to) + ")", [to](Host& host) { return host.onMute(to); }};
      });
}

}  // namespace

void addSettingChecks(Checks& checks) {
  const auto add = [&](int slot, const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), name, rule, remedy, run));
  };
  constexpr int kGet = 22, kSet = 23, kSetVolume = 61, kAdjustVolume = 62, kMute = 63;

  add(kGet, "leaves-text", "When it answers false the caller's text is as it was.",
      "Write to the text only when you are going to answer true.", leavesText);
  add(kSet, "reported", "A setting that was accepted is what getSystemSetting() reports.",
      "Keep the value where getSystemSetting() looks, or answer false.", reported);
  add(kSet, "last-reported", "The value accepted last is the one reported.",
      "Replace the value before you answer.", lastReported);
  add(kSet, "apart", "A setting does not change another one.", "Keep settings by their whole name.",
      settingsApart);
  add(kSet, "refused", "A value that was refused is not taken.", "Check first, change then.", refused);

  const char* const kFollow = "Change what the getter reports before you answer true, or answer false.";
  add(kSetVolume, "reported", "A volume that was set is the volume that getVolume() reports.", kFollow,
      setVolumeFollows);
  add(kAdjustVolume, "reported", "A volume is moved by so much, and getVolume() reports it.", kFollow,
      adjustVolumeFollows);
  add(kMute, "reported", "getMuteStatus() reports what was set.", kFollow, muteFollows);
}

}  // namespace vorn_testing::checks
