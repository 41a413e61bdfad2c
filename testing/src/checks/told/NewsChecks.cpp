// That what the host tells the assistant side is so: the value that its getter answers, each change once, the last one last.

#include <DeviceAbstractionLayer/AuthorizationStates.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

#include "../Checks.h"
#include "../load/Load.h"
#include "../state/Store.h"
#include "News.h"
#include "vorn_testing/Call.h"

namespace vorn_testing::checks {

namespace {

using std::chrono::milliseconds;

/// Something that the assistant side has the host do.
struct Step {
  std::string shown;
  std::string of;      ///< What it moves.
  std::string wanted;  ///< To what; empty when the host alone knows.
  bool locked;
  std::function<void(Host&)> act;

  std::string operation() const { return shown.substr(0, shown.find('(')); }
};
using Steps = std::vector<Step>;

Step setVolume(int to) {
  return {"onSetVolume(" + spelled(to) + ")", "volume", text(to), false,
          [to](Host& host) { host.onSetVolume(to); }};
}

Step adjustVolume(int by) {
  return {"onAdjustVolume(" + spelled(by) + ")", "volume", "", false,
          [by](Host& host) { host.onAdjustVolume(by); }};
}

Step mute(bool to) {
  return {"onMute(" + spelled(to) + ")", "mute", text(to), false, [to](Host& host) { host.onMute(to); }};
}

Step handsFree(bool to) {
  return {"setAlexaHandsFreeState(" + spelled(to) + ")", "hands-free", text(to), false,
          [to](Host& host) { host.setAlexaHandsFreeState(to); }};
}

Step locale(const std::string& to) {
  return {"changeAlexaLocale(" + spelled(to) + ")", "locale", to, true,
          [to](Host& host) { host.changeAlexaLocale(to); }};
}

Step setting(const std::string& name, const std::string& to) {
  return {"setSystemSetting(" + spelled(name) + ", " + spelled(to) + ")", "setting " + name, to, true,
          [name, to](Host& host) { host.setSystemSetting(name, to); }};
}

/// Whether the changes of one kind of step are told, and how often each.
struct Kind {
  std::string told, silent;  ///< Of each the first example.
  struct Way {
    static constexpr int kEnough = 3;
    int moves = 0;                        ///< Of those that are waited for.
    std::size_t least = ~std::size_t{0};  ///< How often one change was told.
    std::string shown;
  };
  std::map<bool, Way> ways;  ///< Up and down, on and off.
};

/// What is asked on the thread that tells, from inside the step: whether it is told before it is so.
class FromInside {
 public:
  FromInside(Trial& trial, Listener& listener) : m_trial(trial), m_listener(listener) {
    listener.inside = [this](const News& news) {
      if (std::this_thread::get_id() != m_thread) return;
      m_onThread = true;
      const bool readIsLocked = news.of == "locale";  // the host may know that nobody asks that there
      if (!m_step || news.of != m_step->of || readIsLocked) return;
      m_value = news.value;
      m_answered = m_listener.read(news.of);
      m_shown = news.shown;
    };
  }

  void make(const Step& step) {
    m_thread = std::this_thread::get_id();
    m_step = &step;
    m_answered.reset();
    const AtEnd end([this] { m_step = nullptr; });
    Host& host = m_trial.host();
    m_trial.ask(step.shown, [&] { step.act(host); });
    m_listener.mustBeKept();
    if (m_answered && *m_answered != m_value && m_listener.read(step.of) == m_value)
      m_trial.broken(step.shown + " told " + m_shown + " before it was so: asked from inside, it was still " +
                     spelled(*m_answered));
    if (m_onThread && step.locked) m_fromLocked = step.shown;
    m_onThread = false;
  }

  const std::string& fromLocked() const { return m_fromLocked; }

 private:
  Trial& m_trial;
  Listener& m_listener;
  std::thread::id m_thread;
  const Step* m_step = nullptr;
  bool m_onThread = false;
  std::optional<std::string> m_answered;
  std::string m_value, m_shown, m_fromLocked;
};

/// How long what is told is waited for, once it is known that the host tells at all.
constexpr milliseconds kPatience(3000);

/// "setting" of "setting name": a setting may be told under a name that is another's.
std::string sortOf(const std::string& of) { return of.substr(0, of.find(' ')); }

void mustTellAll(Trial& trial, const Kind& kind) {
  if (!kind.told.empty() && !kind.silent.empty())
    trial.broken(kind.silent + " and nothing was told of it, as it was when " + kind.told);
}

/// One step after the other, and each waited for; answers whether anything of their sort was told.
bool oneByOne(Trial& trial, Listener& listener, FromInside& steps, const Steps& all, milliseconds silence,
              std::map<std::string, Kind>& kinds) {
  bool any = false;
  for (const Step& step : all) {
    const auto before = listener.read(step.of);
    listener.begin();
    steps.make(step);
    const std::string wrong = listener.settle(silence);
    if (!wrong.empty() && silence == kPatience) trial.broken("after " + step.shown + " it " + wrong);
    const auto heard = listener.heard();
    any = any || std::any_of(heard.begin(), heard.end(),
                             [&](const News& news) { return sortOf(news.of) == sortOf(step.of); });
    const auto after = listener.read(step.of);
    if (!after) continue;
    const bool moved = before != after;
    for (auto left = silence; moved && listener.heardOf(step.of).empty() && left.count() > 0;
         left -= milliseconds(5))
      std::this_thread::sleep_for(milliseconds(5));  // as in settle()
    // What came out otherwise than it was asked for is a kind of its own: the assistant cannot know it.
    Kind& kind = kinds[step.operation() + step.of + (step.wanted == *after ? "" : " otherwise")];
    const bool up =
        step.of == "volume" ? std::stoi(*after) > std::stoi(before.value_or("0")) : *after == "true";
    Kind::Way& way = kind.ways[up];
    const bool looksLonger = moved && silence == kPatience && way.moves < Kind::Way::kEnough;
    if (looksLonger) listener.waitForSilence();  // a second time may come later
    const auto told = listener.heardOf(step.of);
    const std::string shown =
        step.shown + (moved ? " moved it from " + spelled(before.value_or("")) + " to " : " left it at ") +
        spelled(*after);
    if (!told.empty() || moved) (told.empty() ? kind.silent : kind.told) = shown;
    if (silence == kPatience) mustTellAll(trial, kind);
    if (!looksLonger) continue;
    const auto times =
        std::count_if(told.begin(), told.end(), [&](const News& news) { return news.value == *after; });
    ++way.moves;
    way.least = std::min(way.least, static_cast<std::size_t>(times));
    way.shown = shown;
  }
  return any;
}

void mustNotTellWhenAsked(Trial& trial, Listener& listener, const std::string& of) {
  constexpr std::size_t kTimes = 20;
  constexpr milliseconds kStill(200), kBetween(10);
  listener.begin();
  std::optional<std::string> value;
  for (std::size_t i = 0; i < kTimes; ++i) value = listener.read(of);
  std::size_t count = 0;
  for (auto left = kStill; left.count() > 0 && count < kTimes; left -= kBetween) {
    std::this_thread::sleep_for(kBetween);  // as in settle()
    const auto heard = listener.heardOf(of);
    const auto now = static_cast<std::size_t>(
        std::count_if(heard.begin(), heard.end(), [&](const News& news) { return news.value == value; }));
    if (now > count) left = kStill;
    count = now;
  }
  if (count >= kTimes)
    trial.broken("it was told " + std::to_string(count) + " times by " + listener.heardOf(of).back().shown +
                 " when nothing was done but to ask " + std::to_string(kTimes) + " times");
}

void toldAsItIs(Trial& trial, const Steps& all) {
  constexpr int kBursts = 6;
  constexpr std::size_t kFirst = 12;  // show whether anything is told
  trial.presume("VornDALImplIF/01/host/asked-back", [] {});
  Listener listener(trial);
  FromInside steps(trial, listener);
  std::map<std::string, Kind> kinds;
  const Steps first(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(std::min(all.size(), kFirst)));
  if (!oneByOne(trial, listener, steps, first, milliseconds(60), kinds)) {
    listener.settle(milliseconds(500));
    if (listener.heard().empty()) trial.notAsked("nothing is told of it");
  }
  mustNotTellWhenAsked(trial, listener, all.front().of);
  // Who tells at all is waited for.
  for (auto& entry : kinds) entry.second = Kind{entry.second.told, "", {}};
  listener.settle(kPatience);  // what still comes is of the first steps
  oneByOne(trial, listener, steps, all, kPatience, kinds);
  for (const auto& kind : kinds) {
    for (const auto& way : kind.second.ways) {
      const std::size_t least = way.second.least;
      if (way.second.moves == Kind::Way::kEnough && least >= 2)
        trial.broken("every change was told " + std::to_string(least) + " times or more, such as when " +
                     way.second.shown);
    }
  }
  trial.explain("after others, all at once");
  // Who is silent about what the assistant knows anyway may have told last of another change.
  const bool tellsAll =
      std::all_of(kinds.begin(), kinds.end(), [](const auto& kind) { return kind.second.silent.empty(); });
  for (int burst = 0; tellsAll && burst < kBursts; ++burst) {
    listener.begin();
    for (const Step& step : all) steps.make(step);
    const std::string wrong = listener.settle(kPatience);
    if (!wrong.empty()) trial.broken("after " + std::to_string(all.size()) + " changes in a row it " + wrong);
  }
  if (!steps.fromLocked().empty())
    trial.remark(
        steps.fromLocked() +
        " tells on the thread that calls it: an assistant side that asks the adapter back from there hangs");
}

/// Whether it could be asked: what a host does not offer is passed over.
bool made(Trial& trial, const Step& step) {
  try {
    trial.ask(step.shown, [&] { step.act(trial.host()); });
  } catch (const Outcome& outcome) {
    if (outcome.kind == HostVerdict::kBroken) throw;
    return false;
  }
  return true;
}

/// What was told when something was set, and how often at least.
struct Told {
  std::string shown;
  std::size_t least = ~std::size_t{0};
  std::string silent;  ///< A change of which nothing was told.
};
using AllTold = std::map<std::string, Told>;

/// Whether anything of it was told.
bool isTold(const AllTold::value_type& one) { return !one.second.shown.empty(); }

/// What is told when volume, mute and settings are set to and fro; what was told `before` is waited for.
AllTold toldWhenSet(Trial& trial, Listener& listener, const AllTold& before = {}) {
  Steps all{mute(true), mute(false), setVolume(10), setVolume(50)};
  for (const auto& each : trial.demands.settings) {
    for (const std::string& value : each.second) all.push_back(setting(each.first, value));
  }
  AllTold found;
  for (int i = 0; i < 2; ++i) {
    for (const Step& step : all) {
      const auto value = listener.read(step.of);
      listener.begin();
      if (!made(trial, step)) continue;
      listener.settle(milliseconds(500));
      Told& told = found[step.of];
      const bool moved = listener.read(step.of) != value;
      const auto known = before.find(step.of);
      const bool awaited = moved && told.silent.empty() && known != before.end() && isTold(*known);
      for (auto left = kPatience; awaited && listener.heardOf(step.of).empty() && left.count() > 0;
           left -= milliseconds(5))
        std::this_thread::sleep_for(milliseconds(5));  // as in settle()
      const std::size_t times = listener.heardOf(step.of).size();
      if (times == 0) {
        if (moved) told.silent = step.shown;
        continue;
      }
      told.shown = step.shown;
      told.least = std::min(told.least, times);
    }
  }
  return found;
}

/// `first` and `then` say when it was told before, and when it is to be told now.
void mustTellAsBefore(Trial& trial, Listener& listener, const AllTold& told, const std::string& first,
                      const std::string& then) {
  const auto all = toldWhenSet(trial, listener, told);
  for (const auto& known : told) {
    const auto now = all.find(known.first);
    if (!isTold(known) || now == all.end()) continue;
    if (!isTold(*now) && !now->second.silent.empty())
      trial.broken(now->second.silent + " is told " + first + ", and not " + then);
    if (known.second.least == 1 && isTold(*now) && now->second.least > 1)
      trial.broken(known.second.shown + " is told once " + first + ", and " +
                   std::to_string(now->second.least) + " times " + then);
  }
}

void nextHostTells(Trial& trial) {
  AllTold told;
  {
    Listener listener(trial);
    told = toldWhenSet(trial, listener);
  }
  if (std::none_of(told.begin(), told.end(), isTold)) trial.notAsked("nothing is told of it");
  shutDownAdapters();
  trial.destroy();
  Listener listener(trial);
  mustTellAsBefore(trial, listener, told, "by a host",
                   "by the next one, which was made when that was destroyed");
}

/// Each operation was asked, and what may hold news back is over.
void tellsAfterAll(Trial& trial) {
  Listener listener(trial);
  const auto told = toldWhenSet(trial, listener);
  if (std::none_of(told.begin(), told.end(), isTold)) trial.notAsked("nothing is told of it");
  for (const Operation& operation : operations()) {
    for (const Given given : {Given::kPlain, Given::kWord}) {
      for (int which = 0; which < operation.samples(given); ++which)
        tryCall(trial, operation, operation.prepare(given, which));
    }
  }
  Host& host = trial.host();
  trial.ask("releaseAudioFocus()", [&] { host.releaseAudioFocus(); });
  for (const bool on : {false, true})
    trial.ask("onSetPowerState(" + spelled(on) + ")", [&] { host.onSetPowerState(on); });
  mustTellAsBefore(trial, listener, told, "at first", "when every operation was asked, off and on the last");
}

void volumeTold(Trial& trial, const Steps& asked) {
  int before = 0;
  trial.ask("getVolume()", [&] { before = trial.host().getVolume(); });
  Steps all = asked;
  all.push_back(setVolume(before));
  toldAsItIs(trial, all);
}

void muteTold(Trial& trial) {
  bool before = false;
  trial.ask("getMuteStatus()", [&] { before = trial.host().getMuteStatus(); });
  Steps all;
  for (int i = 0; i < 6; ++i) all.push_back(mute((i % 2 == 0) != before));
  toldAsItIs(trial, all);
}

/// What may move one of the two without being about it.
std::vector<Step> movers() {
  std::vector<Step> all{setVolume(40),    setVolume(60), adjustVolume(-10),
                        adjustVolume(10), mute(true),    mute(false)};
  for (const Operation& operation : operations()) {
    const std::string& name = operation.name;
    // What rests may hide what it has.
    if (name == "onSetPowerState" || name == "releaseAudioFocus" || name == "onSetVolume" ||
        name == "onAdjustVolume" || name == "onMute" || name == "changeAlexaLocale" ||
        name == "setSystemSetting")
      continue;
    for (int which = 0; which < operation.samples(Given::kPlain); ++which) {
      const auto prepared = std::make_shared<Prepared>(operation.prepare(Given::kPlain, which));
      all.push_back(
          {prepared->shown, "", "", operation.locked, [prepared, player = operation.ofPlayer](Host& host) {
             prepared->make(host, player ? host.getEMPAdapter() : nullptr);
           }});
    }
  }
  return all;
}

/// What the host tells when it is set, it tells when something else has moved it.
void toldWhateverMoves(Trial& trial) {
  Listener listener(trial);
  const auto make = [&](const Step& step) { trial.ask(step.shown, [&] { step.act(trial.host()); }); };
  auto told = toldWhenSet(trial, listener);
  for (auto one = told.begin(); one != told.end();)
    one = isTold(*one) && (one->first == "volume" || one->first == "mute") ? std::next(one) : told.erase(one);
  if (told.empty()) trial.notAsked("nothing is told of volume and mute when they are set");
  const std::string rested = listener.read("volume").value_or("");
  std::string unadjusted;  // a step that nothing was told of
  bool adjustTold = false;

  const auto silentAfter = [&](const Step& step, bool muted) -> std::string {
    if (listener.read("volume") != rested || listener.read("mute") != text(muted)) {
      for (const Step& rest : {mute(false), setVolume(50), mute(muted)}) make(rest);
      listener.settle(milliseconds(500));
      if (listener.read("mute") != text(muted)) return "";
    }
    std::map<std::string, std::string> before;
    for (const auto& known : told) before[known.first] = listener.read(known.first).value_or("");
    listener.begin();
    if (!made(trial, step)) return "";
    for (const auto& known : told) {
      const std::string& of = known.first;
      const std::string after = listener.read(of).value_or("");
      const bool adjusted = of == step.of && step.operation() == "onAdjustVolume";
      // Who sets it may look himself, and a mute may hide the volume.
      if ((of == step.of && !adjusted) || before[of] == after || (of == "volume" && step.of == "mute"))
        continue;
      auto left = kPatience;
      while (listener.heardOf(of).empty() && listener.read("volume") != "0" && left.count() > 0) {
        std::this_thread::sleep_for(milliseconds(5));  // as in settle()
        left -= milliseconds(5);
      }
      if (adjusted) {
        adjustTold = adjustTold || !listener.heardOf(of).empty();
        unadjusted = step.shown;
      } else if (left.count() <= 0) {
        return step.shown + " moved " + (of == "mute" ? "getMuteStatus()" : "getVolume()") + " from " +
               before[of] + " to " + after + " and nothing was told of it, as it was when " +
               known.second.shown;
      }
    }
    return "";
  };
  for (const bool muted : {true, false}) {
    for (const Step& step : movers()) {
      if (silentAfter(step, muted).empty()) continue;
      const std::string silent = silentAfter(step, muted);  // what came first may have been of a step before
      if (!silent.empty()) trial.broken(silent);
    }
  }
  if (!unadjusted.empty() && !adjustTold)
    trial.remark(unadjusted + " moved getVolume() and nothing was told of it, as it was when " +
                 told["volume"].shown + ": who adjusts it cannot know where it came to rest");
}

void localeTold(Trial& trial) {
  std::string before;
  trial.ask("getDeviceLocale()", [&] { before = trial.host().getDeviceLocale(); });
  Steps all;
  for (const std::string& each : trial.demands.locales) all.push_back(locale(each));
  for (const char* const each : {"vorn-conformance", "en-US", "de-DE"}) all.push_back(locale(each));
  all.push_back(locale(before));
  toldAsItIs(trial, all);
}

void settingTold(Trial& trial) {
  auto named = trial.demands.settings;
  for (const char* const nobodys : {"vorn-conformance a", "friendlyName"}) named[nobodys];
  Steps all, back;
  Host& host = trial.host();
  for (const auto& each : named) {
    std::string before;
    bool known = false;
    trial.ask("getSystemSetting(" + spelled(each.first) + ")",
              [&] { known = host.getSystemSetting(each.first, before); });
    if (known) back.push_back(setting(each.first, before));
    for (const std::string& value : each.second) all.push_back(setting(each.first, value));
  }
  // After what the host certainly takes, which comes first: it shows whether anything is told.
  for (const auto& each : named) {
    for (const std::string& value : odd()) all.push_back(setting(each.first, value));
  }
  all.insert(all.end(), back.begin(), back.end());
  toldAsItIs(trial, all);
}

/// No getter answers it: a host may refuse to follow, but not each time the other way round.
void handsFreeTold(Trial& trial) {
  Listener listener(trial);
  std::map<std::string, std::string> told;
  for (const bool to : {true, false, true, false}) {
    listener.begin();
    const Step step = handsFree(to);
    trial.ask(step.shown, [&] { step.act(trial.host()); });
    listener.settle(milliseconds(0));
    std::this_thread::sleep_for(milliseconds(100));  // as in settle()
    const auto heard = listener.heardOf(step.of);
    if (!heard.empty()) told[step.wanted] = heard.back().value;
  }
  if (told.empty()) trial.notAsked("nothing is told of it");
  if (told["true"] == "false" && told["false"] == "true")
    trial.broken(
        "setAlexaHandsFreeState(true) told notifyHandsfreeStateChanged(false), and the other way round");
}

/// Authorised is what setup is for.
void notCancelledAtItsEnd(Trial& trial) {
  Listener listener(trial);
  std::string address = "https://vorn.example/link", code = "ABCD23";
  std::int64_t number = 600;
  Host& host = trial.host();
  trial.ask("sendCBLInfo(\"" + address + "\", \"" + code + "\", 600)",
            [&] { host.sendCBLInfo(address, code, number); });
  const std::string status = DeviceAbstractionLayer::AUTHORIZED_STATE;
  trial.ask("alexaAuthStatusChanged(" + spelled(status) + ")", [&] { host.alexaAuthStatusChanged(status); });
  listener.waitForSilence();
  if (!listener.heardOf("setup").empty())
    trial.broken("notifyOOBECancelled() was told after alexaAuthStatusChanged(" + spelled(status) + ")");
}

/// Who tells after the end works with what is gone.
void quietAfterEnd(Trial& trial) {
  Listener listener(trial);
  std::atomic<bool> over{false};
  std::mutex mutex;
  std::string late;
  listener.inside = [&](const News& news) {
    const std::lock_guard<std::mutex> lock(mutex);
    if (over && late.empty()) late = news.shown;
  };
  for (const Step& step :
       {setVolume(10), setVolume(50), adjustVolume(-10), mute(true), mute(false), mute(true)})
    trial.ask(step.shown, [&] { step.act(trial.host()); });
  for (const auto& each : trial.demands.settings) {
    for (const std::string& value : each.second) {
      const Step step = setting(each.first, value);
      trial.ask(step.shown, [&] { step.act(trial.host()); });
    }
  }
  trial.explain("after the host was told to change and was destroyed at once");
  guardMemory(true);
  trial.destroy();
  over = true;
  std::this_thread::sleep_for(milliseconds(700));  // a thread that was left behind may come to it later
  const std::lock_guard<std::mutex> lock(mutex);
  if (!late.empty()) trial.broken("the host was destroyed, and told " + late + " after that");
}

}  // namespace

void addNewsChecks(Checks& checks) {
  const char* const kRemedy =
      "Change the value first, then tell once what the getter answers, in the order of the changes.";
  const auto add = [&](int slot, const char* rule, const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), "told", rule, kRemedy, run));
  };
  constexpr int kHandsFree = 11, kLocale = 17, kSetting = 23, kAuthorized = 32, kSetVolume = 61,
                kAdjustVolume = 62, kMute = 63;
  add(kHandsFree, "Who tells of it tells what was set.", handsFreeTold);
  add(kLocale, "Who tells of the locale tells of each change, once, with what getDeviceLocale() answers.",
      localeTold);
  add(kSetting, "Who tells of settings tells of each change, once, with what getSystemSetting() answers.",
      settingTold);
  checks.push_back(checkOf(hostOperation(kAuthorized), "set-up", "Setup that has succeeded is not cancelled.",
                           "Call notifyOOBECancelled() when the user or time ends a setup without success.",
                           notCancelledAtItsEnd));
  const char* const kVolume =
      "Who tells of the volume tells of each change, once, with what getVolume() answers.";
  add(kSetVolume, kVolume, [](Trial& trial) {
    volumeTold(trial,
               {setVolume(10), setVolume(50), setVolume(3), setVolume(70), setVolume(0), setVolume(300),
                setVolume(7), setVolume(-5), setVolume(40), setVolume(41), setVolume(43), setVolume(10)});
  });
  add(kAdjustVolume, kVolume, [](Trial& trial) {
    volumeTold(trial, {adjustVolume(-10), adjustVolume(20), adjustVolume(-30), adjustVolume(1000),
                       adjustVolume(-20), adjustVolume(10), adjustVolume(-1000), adjustVolume(20)});
  });
  add(kMute, "Who tells of the mute tells of each change, once, with what getMuteStatus() answers.",
      muteTold);
  checks.push_back(checkOfHost(
      "tells-each", "Who tells of volume and mute when they are set tells too when another call moves them.",
      "Tell in the one place where the value changes, whatever call has led there.", toldWhateverMoves));
  checks.push_back(
      checkOfHost("tells-anew", "Who tells of a change tells of it in the next host of a process too.",
                  "Tie nothing that a host needs to the first of them: no static thread, no flag of once.",
                  nextHostTells));
  checks.push_back(checkOfHost("tells-on", "Who tells of a change tells of it too after every other call.",
                               "Begin to tell again where you have stopped it: at the latest with the power.",
                               tellsAfterAll));
  checks.push_back(checkOfHost("quiet", "Nothing is told any more when the host has been destroyed.",
                               "Stop and join in the destructor whatever tells.", quietAfterEnd));
}

}  // namespace vorn_testing::checks
