#include <DeviceAbstractionLayer/DeviceInfoConstants.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "Often.h"
#include "Store.h"

namespace vorn_testing::checks {

namespace {

const std::string kReported = "VornDALImplIF/23/setSystemSetting/reported";

/// What is read, when it is not yet `expected` for some time: many a device follows a moment later.
std::string soon(const std::function<std::string()>& read, const std::string& expected) {
  const auto enough = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
  std::string found = read();
  while (found != expected && std::chrono::steady_clock::now() < enough) {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // the host alone knows when it has followed
    found = read();
  }
  return found;
}

/// The settings to try: the team's, or made-up ones.
std::map<std::string, Texts> settings(const Trial& trial) {
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

/// Puts the settings back as they were found, whatever came out.
class PutBack {
 public:
  explicit PutBack(Trial& trial) : PutBack(trial, settings(trial)) {}
  PutBack(Trial& trial, const std::map<std::string, Texts>& of) : m_trial(trial) {
    for (const auto& named : of) {
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
        const auto take = [&](int) { mustSet(trial, named.first, value); };
        turn > 0 ? trial.onThreads(1, take) : take(0);
        expect(trial, named.first, value, turn > 0 ? " on another thread" : "");
        trial.onThreads(1, [&](int) { expect(trial, named.first, value, " on another thread"); });
      }
    }
  }
}

/// What nobody named may be refused.
void unnamed(Trial& trial) {
  const PutBack putBack(trial);
  bool accepted = false;
  std::map<std::string, Texts> named{{"vorn-conformance a", {"1", "2"}}, {"vorn-conformance", {"1", "2"}}};
  for (const auto& each : settings(trial)) {  // what somebody who compares beginnings takes for it
    for (const std::string& name :
         {std::string(), each.first.substr(0, each.first.size() / 2), each.first + "x"})
      named.emplace(name, each.second);
  }
  for (const auto& each : settings(trial)) named.erase(each.first);
  for (const auto& each : named) {
    for (const std::string& value : each.second) {
      if (!set(trial, each.first, value)) continue;
      accepted = true;
      expect(trial, each.first, value);
    }
  }
  if (!accepted) trial.notAsked("setSystemSetting() refuses settings that nobody named");
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
void stayApart(Trial& trial, const std::map<std::string, std::string>& values) {
  Host& host = trial.host();
  for (const auto& value : values) mustSet(trial, value.first, value.second);
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

void apartFromStore(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  std::map<std::string, std::string> first, last;  // one of them is not what a new device has
  for (const auto& named : settings(trial)) {
    first[named.first] = named.second.front();
    last[named.first] = named.second.back();
  }
  stayApart(trial, first);
  stayApart(trial, last);
}

void refused(Trial& trial) {
  const PutBack putBack(trial);
  bool any = false;
  for (const auto& named : settings(trial)) {
    Texts values{"\xff", "", "vorn-conformance \x01"};
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

/// Texts that a cut or a change of letters would show; whatever of them is accepted is reported.
void whole(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  int accepted = 0;
  for (const auto& named : settings(trial)) {
    std::string longer =
        "K\xc3\xbc"
        "che ";
    for (int i = 0; i < 40; ++i) longer += "\xe9\x9f\xb3";
    Texts values = odd();
    values.insert(values.end(), {longer, "MiXed Case  ", "a=b\nc;d", ""});
    for (const std::string& value : values) {
      if (!set(trial, named.first, value)) continue;
      ++accepted;
      expect(trial, named.first, value);
    }
  }
  if (accepted == 0)
    trial.notAsked("setSystemSetting() refuses other values than those that it is said to accept");
}

/// Each thread reads a setting of its own.
void readAtOnce(Trial& trial) {
  presumeReported(trial);
  const PutBack putBack(trial);
  std::vector<std::pair<std::string, std::string>> values;
  for (const auto& named : settings(trial)) {
    mustSet(trial, named.first, named.second.front());
    values.emplace_back(named.first, named.second.front());
  }
  if (values.size() < 2) trial.notAsked("HostDemands::settings (--setting) names one setting");
  const auto enough = std::chrono::steady_clock::now() + std::chrono::milliseconds(400);
  trial.onThreads(
      4,
      [&](int thread) {
        const auto& own = values[static_cast<std::size_t>(thread) % values.size()];
        for (int i = 0; i < 5000 && std::chrono::steady_clock::now() < enough; ++i)
          expect(trial, own.first, own.second, ", and other threads read other settings");
      },
      true);
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

/// A device that follows the assistant's locale at all follows it to those that it is said to accept.
void localeFollows(Trial& trial) {
  const auto& named = trial.demands.locales;
  if (named.size() < 2) trial.notAsked("HostDemands::locales (--locale) names less than two");
  Host& host = trial.host();
  const auto reported = [&] {
    std::string locale;
    trial.ask("getDeviceLocale()", [&] { locale = host.getDeviceLocale(); });
    return locale;
  };
  const auto change = [&](const std::string& locale) {
    trial.ask("changeAlexaLocale(" + spelled(locale) + ")", [&] { host.changeAlexaLocale(locale); });
    return soon(reported, locale);
  };
  const std::string before = reported();
  std::vector<std::pair<std::string, std::string>> found;
  for (int turn = 0; turn < 2; ++turn) {
    for (const std::string& locale : named) found.emplace_back(locale, change(locale));
  }
  change(before);
  const bool moves = std::any_of(found.begin(), found.end(),
                                 [&](const auto& each) { return each.second != found.front().second; });
  for (const auto& each : found) {
    if (each.first == each.second) continue;
    const std::string said = "after changeAlexaLocale(" + spelled(each.first) +
                             ") getDeviceLocale() answered " + spelled(each.second);
    if (moves) trial.broken(said);
    trial.remark(said + ", whatever was asked");
  }
}

void leavesText(Trial& trial) {
  Host& host = trial.host();
  bool any = false;
  for (int turn = 0; turn < 3; ++turn) {
    for (const std::string name : {"vorn-conformance none", "", "\xff"}) {
      std::string value = "untouched";
      bool known = false;
      const std::string shown = "getSystemSetting(" + spelled(name) + ")";
      trial.ask(shown, [&] { known = host.getSystemSetting(name, value); });
      any = any || !known;
      if (!known && value != "untouched")
        trial.broken(shown + " answered false and wrote " + spelled(value) +
                     (turn > 0 ? ", asked again" : ""));
    }
  }
  if (!any) trial.refused("getSystemSetting() answers true for names that nobody set");
}

/// "Reads a system setting into value": whatever stood there before.
void replacesText(Trial& trial) {
  const PutBack putBack(trial);
  Host& host = trial.host();
  bool any = false;
  auto all = settings(trial);
  for (const char* const nobodys : {"vorn-conformance none", "", "\xff"}) all[nobodys] = {};
  for (const auto& named : all) {
    Texts values = named.second;
    // The first stands for what is there already; nobody's setting is not made.
    values.insert(values.begin(), named.second.empty() ? 1 : 2, "");
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

/// A field of the device information that is there for a setting follows it, whatever its words for it are. Who keeps any
/// setting that somebody makes up need not know what it means.
void reflected(Trial& trial) {
  namespace names = DeviceAbstractionLayer;
  std::map<std::string, Texts> tried;
  for (const auto& reflects : names::SYSTEM_SETTING_TO_DEVICE_INFO_MAP)
    tried[reflects.first] = {names::TRUE_TEXT, names::FALSE_TEXT};
  tried[names::PERIPHERAL_ENDPOINT_FRIENDLYNAME_CODE] = {"Kitchen", "Garden"};
  for (const auto& named : trial.demands.settings) {
    if (tried.count(named.first)) tried[named.first] = named.second;
  }
  const PutBack putBack(trial, tried);
  const bool takesAny = set(trial, "vorn-conformance a", "1") && get(trial, "vorn-conformance a") == "1";
  bool any = false;
  for (const auto& named : tried) {
    if (takesAny && trial.demands.settings.count(named.first) == 0) continue;
    const std::string field = names::SYSTEM_SETTING_TO_DEVICE_INFO_MAP.at(named.first);
    std::optional<std::string> before;
    for (std::size_t i = 0; i < 2; ++i) {
      const std::string& value = named.second[i];
      if (!set(trial, named.first, value) || get(trial, named.first) != value) break;
      const auto read = [&] {
        std::map<std::string, std::string> facts;
        Host& host = trial.host();
        trial.ask("getDeviceInformation()", [&] { facts = host.getDeviceInformation(); });
        return facts.count(field) ? std::optional<std::string>(facts[field]) : std::nullopt;
      };
      auto found = read();
      if (!found) break;
      const auto enough = std::chrono::steady_clock::now() + std::chrono::milliseconds(1500);
      for (; before && found == before && std::chrono::steady_clock::now() < enough; found = read())
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // as above
      if (before && found == before)
        trial.broken("getDeviceInformation() has " + spelled(*before) + " under " + spelled(field) +
                     " when the setting " + spelled(named.first) + " is " + spelled(named.second[0]) +
                     " and when it is " + spelled(value));
      any |= before.has_value();
      before = found;
    }
  }
  if (!any) trial.notAsked("getDeviceInformation() has no field for a setting that is accepted");
}

}  // namespace

void addSettingChecks(Checks& checks) {
  const auto add = [&](int slot, const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), name, rule, remedy, run));
  };
  constexpr int kLocale = 17, kInformation = 18, kGet = 22, kSet = 23;

  add(kLocale, "reported", "Who follows the assistant's locale reports it.",
      "Report a locale as it was given, or stay with your own.", localeFollows);
  add(kInformation, "reflects", "A field that reflects a setting follows it.",
      "Make the answer anew, or change the field with the setting.", reflected);
  add(kGet, "leaves-text", "When it answers false the caller's text is as it was.",
      "Write to the text only when you are going to answer true.", leavesText);
  add(kGet, "replaces-text", "When it answers true the caller's text is the setting, whatever it was before.",
      "Assign to the text, and only then answer true.", replacesText);
  add(kGet, "at-once", "Who reads has the setting that he names, whatever others read meanwhile.",
      "Keep what belongs to one call in that call.", readAtOnce);
  add(kSet, "reported", "A setting that was accepted is what getSystemSetting() reports.",
      "Keep the value where getSystemSetting() looks, or answer false.", reported);
  add(kSet, "unnamed", "A setting that nobody named is reported too when it was accepted.",
      "Answer false to what you do not keep.", unnamed);
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
}

}  // namespace vorn_testing::checks
