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

/// Follows what the getter says while a directive is given and taken back.
template <class Value>
void follows(Trial& trial, const std::string& getter, const std::function<Value(Host&)>& get,
             const std::function<std::pair<std::string, Result>(Host&, Value from, Value to)>& change,
             const std::function<Value(Value)>& other) {
  Host& host = trial.host();
  const auto now = [&] {
    Value value{};
    trial.ask(getter + "()", [&] { value = get(host); });
    return value;
  };
  const Value before = now();
  const Value target = other(before);
  bool moved = false;
  Value from = before;
  for (const Value to : {target, before}) {
    std::pair<std::string, Result> answer;
    trial.ask("the directive", [&] { answer = change(host, from, to); });
    if (!answer.second.first)
      trial.notAsked(answer.first + " answered {false, " + spelled(answer.second.second) + "}");
    const Value found = now();
    moved = moved || found != before;
    // A host without a volume of its own answers the same whatever happens: nothing to follow.
    if (found != to && (moved || to == before))
      trial.broken(answer.first + " answered true, then " + getter + "() answered " + spelled(found) +
                   " instead of " + spelled(to));
    from = to;
  }
  if (!moved) trial.notAsked(getter + "() answers " + spelled(before) + " whatever is set");
}

void volumeFollows(Trial& trial, bool adjust) {
  follows<int>(
      trial, "getVolume", [](Host& host) { return host.getVolume(); },
      [adjust](Host& host, int from, int to) {
        const int argument = adjust ? to - from : to;
        return std::make_pair((adjust ? "onAdjustVolume(" : "onSetVolume(") + spelled(argument) + ")",
                              adjust ? host.onAdjustVolume(argument) : host.onSetVolume(argument));
      },
      [](int volume) { return volume > 0 ? volume - 1 : volume + 1; });
}

void muteFollows(Trial& trial) {
  follows<bool>(
      trial, "getMuteStatus", [](Host& host) { return host.getMuteStatus(); },
      [](Host& host, bool, bool to) {
        return std::make_pair("onMute(" + spelled(to) + ")", host.onMute(to));
      },
      [](bool muted) { return !muted; });
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
      [](Trial& trial) { volumeFollows(trial, false); });
  add(kAdjustVolume, "reported", "A volume is moved by so much, and getVolume() reports it.", kFollow,
      [](Trial& trial) { volumeFollows(trial, true); });
  add(kMute, "reported", "getMuteStatus() reports what was set.", kFollow, muteFollows);
}

}  // namespace vorn_testing::checks
