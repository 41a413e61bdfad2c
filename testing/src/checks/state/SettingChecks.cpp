#include <algorithm>
#include <atomic>
#include <map>
#include <optional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "../Checks.h"

namespace vorn_testing::checks {

namespace {

using Result = std::pair<bool, std::string>;
using Values = std::vector<std::string>;

const std::string kReported = "VornDALImplIF/23/setSystemSetting/reported";

/// The settings to try: the team's, or made-up ones.
std::map<std::string, Values> settings(const Trial& trial) {
  if (!trial.demands.settings.empty()) return trial.demands.settings;
  return {{"vorn-conformance a", {"1", "2"}}, {"vorn-conformance b", {"1", "2"}}};
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
    trial.refused("setSystemSetting(" + spelled(name) + ", " + spelled(value) +
                  ") answered false; name settings by HostDemands::settings (--setting)");
}

/// What is reported, or nothing when the answer is false.
std::optional<std::string> get(Trial& trial, const std::string& name) {
  std::string found = "untouched";
  bool known = false;
  Host& host = trial.host();
  trial.ask("getSystemSetting(" + spelled(name) + ")", [&] { known = host.getSystemSetting(name, found); });
  return known ? std::optional<std::string>(found) : std::nullopt;
}

void expect(Trial& trial, const std::string& name, const std::string& value, const std::string& when = "") {
  const auto found = get(trial, name);
  const std::string shown = "getSystemSetting(" + spelled(name) + ")";
  if (!found) trial.broken(shown + " answered false, accepted was " + spelled(value) + when);
  if (*found != value)
    trial.broken(shown + " answered " + spelled(*found) + ", accepted was " + spelled(value) + when);
}

/// Again and again, as in the months of a device's life: the next round after three hundred, or after two seconds.
void often(const std::function<void(std::size_t)>& act) {
  const auto enough = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  for (std::size_t turn = 0; turn < 300 && std::chrono::steady_clock::now() < enough; ++turn) act(turn);
}

/// Puts the settings back as they were found, whatever came out.
class PutBack {
 public:
  explicit PutBack(Trial& trial) : m_trial(trial) {
    for (const auto& named : settings(trial)) {
      if (const auto value = get(trial, named.first)) m_values[named.first] = *value;
    }
  }
  ~PutBack() {
    for (const auto& value : m_values) {
      try {
        set(m_trial, value.first, value.second);
      } catch (const Outcome&) {
      }
    }
  }
  PutBack(const PutBack&) = delete;
  PutBack& operator=(const PutBack&) = delete;

 private:
  Trial& m_trial;
  std::map<std::string, std::string> m_values;
};

/// Every value of every setting is reported, twice through, so that each follows another.
void reported(Trial& trial) {
  const PutBack putBack(trial);
  for (int turn = 0; turn < 2; ++turn) {
    for (const auto& named : settings(trial)) {
      for (const std::string& value : named.second) {
        mustSet(trial, named.first, value);
        expect(trial, named.first, value);
        trial.onThreads(1, [&](int) { expect(trial, named.first, value, " on another thread"); });
      }
    }
  }
}

void presumeReported(Trial& trial) {
  trial.presume(kReported, [&] { reported(trial); });
}

/// However often it was changed.
void reportedOften(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  for (const auto& named : settings(trial)) {
    often([&](std::size_t turn) {
      const std::string& value = named.second[turn % named.second.size()];
      const std::string when = " as the " + std::to_string(turn + 1) + ". change";
      if (!set(trial, named.first, value))
        trial.broken("setSystemSetting(" + spelled(named.first) + ", " + spelled(value) + ") answered false" +
                     when + ", and true before");
      expect(trial, named.first, value, when);
    });
  }
}

void lastReported(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  for (const auto& named : settings(trial)) {
    for (const std::string& value : named.second) mustSet(trial, named.first, value);
    expect(trial, named.first, named.second.back());
  }
}

void settingsApart(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  const auto all = settings(trial);
  if (all.size() < 2) trial.notAsked("HostDemands::settings (--setting) names one setting");
  for (const auto& named : all) {
    mustSet(trial, named.first, named.second.front());
    for (const auto& other : all) {
      if (other.first != named.first) mustSet(trial, other.first, other.second.back());
    }
    expect(trial, named.first, named.second.front(), ", then others were set");
  }
}

/// The store has keys of the same names, and is emptied: settings are no part of it.
void apartFromStore(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  Host& host = trial.host();
  std::map<std::string, std::string> values;
  for (const auto& named : settings(trial)) {
    mustSet(trial, named.first, named.second.front());
    values[named.first] = named.second.front();
  }
  const auto expectAll = [&](const char* when) {
    for (const auto& value : values) expect(trial, value.first, value.second, when);
  };
  trial.ask("open()", [&] { host.open(); });
  for (const auto& value : values)
    trial.ask("writeKeyValue({" + spelled(value.first) + ": \"stored\"})", [&] {
      host.writeKeyValue({{value.first, "stored"}});
    });
  expectAll(", then writeKeyValue() stored something under that name");
  for (const auto& value : values)
    trial.ask("removeKeyValue({" + spelled(value.first) + "})", [&] { host.removeKeyValue({value.first}); });
  expectAll(", then removeKeyValue() removed that name from the store");
  trial.ask("clear()", [&] { host.clear(); });
  expectAll(", then clear() emptied the store");
}

void refused(Trial& trial) {
  const PutBack putBack(trial);
  bool any = false;
  for (const auto& named : settings(trial)) {
    Values values{"\xff", "", "vorn-conformance \x01"};
    values.insert(values.end(), named.second.begin(), named.second.end());
    for (const std::string& value : values) {
      const auto before = get(trial, named.first);
      if (set(trial, named.first, value)) continue;
      any = true;
      const auto after = get(trial, named.first);
      if (before != after)
        trial.broken("setSystemSetting(" + spelled(named.first) + ", " + spelled(value) +
                     ") answered false, then getSystemSetting() answered " +
                     (after ? spelled(*after) : "false"));
    }
  }
  if (!any) trial.notAsked("setSystemSetting() refuses nothing");
}

/// Values that a cut or a change of letters would show; whatever of them is accepted is reported.
void whole(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  int accepted = 0;
  for (const auto& named : settings(trial)) {
    std::string longer =
        "K\xc3\xbc"
        "che ";
    for (int i = 0; i < 40; ++i) longer += "\xe9\x9f\xb3";
    for (const std::string& value :
         {longer, std::string("MiXed Case  "), std::string("a=b\nc;d"), std::string("a\0b", 3)}) {
      if (!set(trial, named.first, value)) continue;
      ++accepted;
      expect(trial, named.first, value);
    }
  }
  if (accepted == 0)
    trial.notAsked("setSystemSetting() refuses other values than those that it is said to accept");
}

/// Read by three threads while one changes it: never anything but a value that was set.
void readWhileSet(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  for (const auto& named : settings(trial)) {
    const std::set<std::string> values(named.second.begin(), named.second.end());
    mustSet(trial, named.first, named.second.front());
    std::atomic<bool> over{false};
    const auto enough = std::chrono::steady_clock::now() + std::chrono::milliseconds(400);
    trial.onThreads(
        4,
        [&](int thread) {
          const AtEnd end([&] { over = true; });
          for (std::size_t i = 0; i < 5000 && !over && std::chrono::steady_clock::now() < enough; ++i) {
            if (thread == 0) {
              set(trial, named.first, named.second[i % named.second.size()]);
              continue;
            }
            const auto found = get(trial, named.first);
            if (!found || !values.count(*found))
              trial.broken("getSystemSetting(" + spelled(named.first) + ") answered " +
                           (found ? spelled(*found) : "false") + " while setSystemSetting() was on its way");
          }
        },
        true);
  }
}

void leavesText(Trial& trial) {
  Host& host = trial.host();
  bool any = false;
  for (const std::string name : {"vorn-conformance none", "", "\xff"}) {
    std::string value = "untouched";
    bool known = false;
    const std::string shown = "getSystemSetting(" + spelled(name) + ")";
    trial.ask(shown, [&] { known = host.getSystemSetting(name, value); });
    any = any || !known;
    if (!known && value != "untouched") trial.broken(shown + " answered false and wrote " + spelled(value));
  }
  if (!any) trial.refused("getSystemSetting() answers true for names that nobody set");
}

/// "Reads a system setting into value": whatever stood there before.
void replacesText(Trial& trial) {
  const PutBack putBack(trial);
  Host& host = trial.host();
  bool any = false;
  for (const auto& named : settings(trial)) {
    Values values = named.second;
    values.insert(values.begin(), {"", ""});  // the first stands for what is there already
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i > 0 && !set(trial, named.first, values[i])) continue;
      std::string first = "vorn 1", second = "another one";
      bool known = false;
      const std::string shown = "getSystemSetting(" + spelled(named.first) + ")";
      trial.ask(shown, [&] { known = host.getSystemSetting(named.first, first); });
      if (!known) continue;
      any = true;
      trial.ask(shown, [&] { known = host.getSystemSetting(named.first, second); });
      if (known && first != second)
        trial.broken(shown + " answered true and left " + spelled(first) + " in one text and " +
                     spelled(second) + " in another: it depends on what was there before");
    }
  }
  if (!any)
    trial.refused("getSystemSetting() knows no setting; name some by HostDemands::settings (--setting)");
}

/// Whether what is read is waited for until it stays: some devices follow a moment later.
bool g_patient = false;

template <class Value>
Value settled(const std::function<Value()>& read) {
  constexpr std::chrono::milliseconds kStill(250), kAtMost(2500), kBetween(10);
  Value value = read();
  const auto start = std::chrono::steady_clock::now();
  for (auto since = start, time = start; g_patient && time - since < kStill && time - start < kAtMost;
       time = std::chrono::steady_clock::now()) {
    std::this_thread::sleep_for(kBetween);  // the host alone knows when it has followed
    const Value next = read();
    if (next != value) since = time;
    value = next;
  }
  return value;
}

int volume(Trial& trial) {
  Host& host = trial.host();
  return settled<int>([&] {
    int value = 0;
    trial.ask("getVolume()", [&] { value = host.getVolume(); });
    return value;
  });
}

bool muted(Trial& trial) {
  Host& host = trial.host();
  return settled<bool>([&] {
    bool value = false;
    trial.ask("getMuteStatus()", [&] { value = host.getMuteStatus(); });
    return value;
  });
}

/// What is broken at once is looked at again with patience.
std::function<void(Trial&)> soonOrLater(const std::function<void(Trial&)>& act) {
  return [act](Trial& trial) {
    g_patient = false;
    try {
      return act(trial);
    } catch (const Outcome& outcome) {
      if (outcome.kind != HostVerdict::kBroken) throw;
    }
    g_patient = true;
    act(trial);
    trial.remark("it is reported a moment later, not when the answer is true");
  };
}

/// Gives a directive on another thread than the one that reads; answers whether it was accepted.
bool give(Trial& trial, const std::string& shown, const std::function<Result(Host&)>& directive) {
  Result answer;
  Host& host = trial.host();
  trial.onThreads(1, [&](int) { trial.ask(shown, [&] { answer = directive(host); }); });
  return answer.first;
}

bool setVolume(Trial& trial, int to) {
  return give(trial, "onSetVolume(" + spelled(to) + ")", [to](Host& host) { return host.onSetVolume(to); });
}

bool adjustVolume(Trial& trial, int by) {
  return give(trial, "onAdjustVolume(" + spelled(by) + ")",
              [by](Host& host) { return host.onAdjustVolume(by); });
}

/// Whatever the scale, its steps and its limits: more asked is never less reported, the same asked is the same
/// reported, what is reported can be set again, and not everything is one.
void setVolumeFollows(Trial& trial) {
  const int before = volume(trial);
  std::map<int, int> reported;
  std::set<int> different;
  const std::vector<int> kAsked = {before, 10,  50,  3,   70,  30,    1,    100, 5,  0, 20,
                                   7,      -20, -40, 128, 300, 65566, -129, 50,  10, 3, before};
  for (const int asked : kAsked) {
    const int last = volume(trial);
    const bool accepted = setVolume(trial, asked);
    const int found = volume(trial);
    if (!accepted) {
      if (found != last)
        trial.broken("onSetVolume(" + spelled(asked) + ") answered false and moved getVolume() from " +
                     spelled(last) + " to " + spelled(found));
      continue;
    }
    const auto shown =
        "onSetVolume(" + spelled(asked) + ") answered true, then getVolume() answered " + spelled(found);
    const auto known = reported.emplace(asked, found).first;
    if (known->second != found) trial.broken(shown + ", before that " + spelled(known->second));
    for (const auto& other : reported) {
      if ((other.first < asked && other.second > found) || (other.first > asked && other.second < found))
        trial.broken(shown + ", but " + spelled(other.second) + " after onSetVolume(" + spelled(other.first) +
                     ")");
    }
    different.insert(found);
    if (setVolume(trial, found) && volume(trial) != found)
      trial.broken("onSetVolume(" + spelled(found) +
                   ") answered true, which getVolume() had answered; now it answers " +
                   spelled(volume(trial)));
  }
  if (reported.empty()) trial.refused("onSetVolume() answered false to every volume");
  const auto most =
      std::max_element(reported.begin(), reported.end(),
                       [](const auto& left, const auto& right) { return left.second < right.second; });
  const std::pair<int, int> ends[] = {*reported.begin(), *most};
  often([&](std::size_t turn) {
    const auto [asked, expected] = ends[turn % 2];
    if (g_patient || !setVolume(trial, asked)) return;
    const int found = volume(trial);
    if (found != expected)
      trial.broken("onSetVolume(" + spelled(asked) + ") answered true, then getVolume() answered " +
                   spelled(found) + " at the " + std::to_string(turn + 1) + ". time, before that " +
                   spelled(expected));
  });
  setVolume(trial, before);
  if (different.size() < 2 && reported.size() > 1)
    trial.broken("onSetVolume() answered true to " + spelled(static_cast<int>(reported.size())) +
                 " volumes, and getVolume() answers " + spelled(before) + " whatever is set");
}

void adjustVolumeFollows(Trial& trial) {
  const int before = volume(trial);
  bool accepted = false, moved = false;
  for (const int by : {0, -5, 5, -10, 10, -1, 1, -30, 30, 20, -20, 50, -50, 50, 100, 100, -100, -100}) {
    const int from = volume(trial);
    const bool done = adjustVolume(trial, by);
    const int to = volume(trial);
    if (to != from && (by == 0 || !done))
      trial.broken("onAdjustVolume(" + spelled(by) + ") answered " + (done ? "true" : "false") +
                   " and moved getVolume() from " + spelled(from) + " to " + spelled(to));
    if (!done) continue;
    accepted = true;
    moved = moved || to != from;
    if ((by > 0 && to < from) || (by < 0 && to > from))
      trial.broken("onAdjustVolume(" + spelled(by) + ") answered true and moved getVolume() from " +
                   spelled(from) + " to " + spelled(to));
  }
  if (!accepted) trial.refused("onAdjustVolume() answered false to every delta");
  if (!moved)
    trial.broken("onAdjustVolume() answered true, and getVolume() answers " + spelled(before) +
                 " whatever is asked");
  setVolume(trial, before);
}

void muteFollows(Trial& trial) {
  const bool before = muted(trial);
  bool accepted = false;
  const auto mute = [&](bool to) {
    const std::string shown = "onMute(" + spelled(to) + ")";
    const bool last = muted(trial);
    if (!give(trial, shown, [to](Host& host) { return host.onMute(to); })) {
      if (muted(trial) != last)
        trial.broken(shown + " answered false and moved getMuteStatus() to " + spelled(!last));
      return;
    }
    accepted = true;
    if (muted(trial) != to)
      trial.broken(shown + " answered true, then getMuteStatus() answered " + spelled(!to));
  };
  for (const bool to : {true, true, false, false, true, false, true}) mute(to);
  often([&](std::size_t turn) {
    if (!g_patient) mute(turn % 2 == 0);
  });
  mute(before);
  if (!accepted) trial.refused("onMute() answered false");
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
  add(kGet, "replaces-text", "When it answers true the caller's text is the setting, whatever it was before.",
      "Assign to the text, and only then answer true.", replacesText);
  add(kSet, "reported", "A setting that was accepted is what getSystemSetting() reports.",
      "Keep the value where getSystemSetting() looks, or answer false.", reported);
  add(kSet, "often", "A setting is accepted and reported however often it was changed.",
      "Give back what a change takes.", reportedOften);
  add(kSet, "last-reported", "The value accepted last is the one reported.",
      "Replace the value before you answer.", lastReported);
  add(kSet, "apart", "A setting does not change another one.", "Keep settings by their whole name.",
      settingsApart);
  add(kSet, "store-apart", "A setting stays when the store is written or emptied.",
      "Keep settings and the assistant client's store apart.", apartFromStore);
  add(kSet, "refused", "A value that was refused is not taken.", "Check first, change then.", refused);

  add(kSet, "whole",
      "Every value that was accepted is reported as it was, long ones and those in any script too.",
      "Keep the value as it is, or answer false.", whole);
  add(kSet, "threads", "A setting is read while it is changed.",
      "Guard the settings with one mutex for both: getSystemSetting() comes without the adapter's.",
      readWhileSet);

  const char* const kFollow = "Change what the getter reports before you answer true, or answer false.";
  add(kSetVolume, "reported", "getVolume() follows what is set, on its own scale, steps and limits.", kFollow,
      soonOrLater(setVolumeFollows));
  add(kAdjustVolume, "reported", "The volume moves the way that was asked, and getVolume() reports it.",
      kFollow, soonOrLater(adjustVolumeFollows));
  add(kMute, "reported", "getMuteStatus() reports what was set.", kFollow, soonOrLater(muteFollows));
}

}  // namespace vorn_testing::checks
