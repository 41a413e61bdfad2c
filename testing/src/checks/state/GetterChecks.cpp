// That asking changes nothing, and that what is set is answered whatever was called before.

#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "../Checks.h"
#include "../load/Load.h"
#include "Getters.h"

namespace vorn_testing::checks {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kRounds = 40;

/// What may change by itself does not do so at the second question of every host.
void mustNotBeHandedOut(Trial& trial) {
  constexpr int kHosts = 4;
  const std::string kInformation = "getDeviceInformation()";
  const std::map<std::string, bool (Host::*)()> questions{
      {"isMicrophoneAvailable()", &Host::isMicrophoneAvailable},
      {"getNetworkConnectionStatus()", &Host::getNetworkConnectionStatus}};
  std::map<std::string, int> times;
  for (int i = 0; i < kHosts; ++i) {
    trial.destroy();
    for (const auto& question : questions) {
      bool first = false, then = false;
      Host& host = trial.host();
      trial.ask(question.first, [&] { first = (host.*question.second)(); });
      trial.ask(question.first, [&] { then = (host.*question.second)(); });
      if (first && !then && ++times[question.first] == kHosts)
        trial.broken(question.first + " answered true to the first question and false to the second, of " +
                     std::to_string(kHosts) + " hosts one after the other");
    }
    Entries first, then;
    Host& host = trial.host();
    trial.ask(kInformation, [&] { first = host.getDeviceInformation(); });
    trial.ask(kInformation, [&] { then = host.getDeviceInformation(); });
    for (const auto& field : first) {
      if (then.count(field.first) == 0 && ++times[field.first] == kHosts)
        trial.broken(kInformation + " answered a field " + spelled(field.first) +
                     " to the first question and none to the second, of " + std::to_string(kHosts) +
                     " hosts one after the other");
    }
  }
}

/// Asked again and again, nothing else: no answer comes back to what it was, none becomes empty and none more each time.
void sameWhenAsked(Trial& trial) {
  constexpr int kGrows = 3;
  struct Seen {
    std::string first, last;
    bool changed = false;
    int grew = 0;
  };
  const auto all = facts(trial.demands);
  std::map<std::string, Seen> seen;
  const auto enough = Clock::now() + milliseconds(4000);
  for (int round = 0; round < kRounds && (round < 4 || Clock::now() < enough); ++round) {
    for (const Getter& getter : all) {
      const std::string answer = ask(trial, getter);
      Seen& before = seen.emplace(getter.shown, Seen{answer, answer}).first->second;
      if (answer != before.last && (answer.empty() || (before.changed && answer == before.first)))
        trial.broken(getter.shown + " answered " + spelled(before.first) + " and " + spelled(before.last) +
                     ", then " + spelled(answer) + ", and it was only asked");
      const bool more = !before.last.empty() && answer.size() > before.last.size() &&
                        answer.compare(0, before.last.size(), before.last) == 0;
      before.grew = more ? before.grew + 1 : 0;
      if (before.grew == kGrows)
        trial.broken(getter.shown + " answers more each time that it is asked: " + spelled(before.last) +
                     ", then " + spelled(answer));
      before.changed = before.changed || answer != before.last;
      before.last = answer;
    }
  }
  mustNotBeHandedOut(trial);
}

/// What was set stays, whatever is asked.
void staysWhenAsked(Trial& trial) {
  const auto all = questions(trial.demands);
  for (const Settable& what : settables(trial)) {
    for (const auto& to : what.values) {
      if (!accepts(trial, to) || !becomes(trial, what, to.answered)) continue;
      for (int round = 0; round < 3; ++round) {
        for (const Getter& getter : all) {
          ask(trial, getter);
          const std::string found = ask(trial, what.getter);
          if (found != to.answered)
            trial.broken("after " + to.shown + " " + what.getter.shown + " answered " + spelled(to.answered) +
                         ", then " + spelled(found) + ", and nothing was done but to ask " + getter.shown);
        }
      }
    }
  }
}

/// When it had time, and not only when it is asked once more.
void followsUnasked(Trial& trial) {
  for (const Settable& what : settables(trial)) {
    const auto &from = what.values.front(), &to = what.values.back();
    std::string late;
    for (const int wait : {400, 700, 1100}) {  // one may be the time that it takes
      late.clear();
      if (!accepts(trial, from) || !becomes(trial, what, from.answered) || !accepts(trial, to)) break;
      std::this_thread::sleep_for(milliseconds(wait));  // the host alone knows when it has followed
      const std::string first = ask(trial, what.getter), second = ask(trial, what.getter);
      if (first == to.answered || second != to.answered) break;
      late = to.shown + " answered true, then " + what.getter.shown + " answered " + spelled(first) +
             " to the first question, " + std::to_string(wait) + " ms later, and " + spelled(second) +
             " to the second";
    }
    if (!late.empty()) trial.broken(late);
  }
}

/// Read from a file, it may still have the end of its line.
void nameAlone(Trial& trial, const Getter& getter) {
  const std::string answer = ask(trial, getter);
  const auto control = [](unsigned char c) { return c < ' ' || c == 0x7f; };
  if (std::any_of(answer.begin(), answer.end(), control) ||
      (!answer.empty() && (answer.front() == ' ' || answer.back() == ' ')))
    trial.broken(getter.shown + " answered " + spelled(answer) + ", which is more than a name");
}

void answersNone(Trial& trial) {
  const Getter getter{"getVSKCapabilities()", [](Host& host) { return host.getVSKCapabilities(); }};
  if (ask(trial, getter).empty()) trial.broken(getter.shown + " answered an empty text");
}

/// Ends what may hold a value back: a device that is off, lends its speaker or is muted, unless that is the value.
void toRest(Trial& trial, const Getter& value) {
  Host& host = trial.host();
  if (value.shown != "getMuteStatus()") trial.ask("onMute(false)", [&] { host.onMute(false); });
  trial.ask("onSetPowerState(true)", [&] { host.onSetPowerState(true); });
  trial.ask("releaseAudioFocus()", [&] { host.releaseAudioFocus(); });
  trial.ask("stopStreamingAudioData()", [&] { host.stopStreamingAudioData(); });
  trial.ask("onChangePlaybackStop(\"\")", [&] { host.onChangePlaybackStop(""); });
}

/// What was set is answered as before, whatever was called.
void followsAfter(Trial& trial, const std::vector<Settable>& all, const std::string& after) {
  for (const Settable& what : all) {
    for (const auto& to : what.values) {
      if (!accepts(trial, to) || ask(trial, what.getter) == to.answered || becomes(trial, what, to.answered))
        continue;
      toRest(trial, what.getter);
      if (!becomes(trial, what, to.answered))
        trial.broken("after " + after + " " + to.shown + " answered true, then " + what.getter.shown +
                     " answered " + spelled(ask(trial, what.getter)) + "; before that it was " +
                     spelled(to.answered));
    }
  }
}

void followsInAnyState(Trial& trial) {
  const auto all = settables(trial);
  const auto atLast = Clock::now() + milliseconds(8000);
  followsAfter(trial, all, "other values were set");
  std::vector<const Operation*> which;
  for (const Operation& operation : operations()) {
    if (operation.name != "clear") which.push_back(&operation);
  }
  for (const Given given : {Given::kPlain, Given::kWord}) {
    for (const Operation* const operation : which) {
      for (int sample = 0; sample < operation->samples(given) && Clock::now() < atLast; ++sample) {
        const Prepared prepared = operation->prepare(given, sample);
        tryCall(trial, *operation, prepared);
        followsAfter(trial, all, prepared.shown);
      }
    }
  }
}

/// At each end of the volume.
void muteAtAnyVolume(Trial& trial) {
  int before = 0;
  Host& host = trial.host();
  trial.ask("getVolume()", [&] { before = host.getVolume(); });
  const auto all = settables(trial);
  std::vector<Settable> mutes;
  std::copy_if(all.begin(), all.end(), std::back_inserter(mutes),
               [](const Settable& one) { return one.getter.shown == "getMuteStatus()"; });
  if (mutes.empty()) trial.refused("the mute cannot be set");
  for (const int volume : {0, 1, -1000, 1000, 100, 50, before}) {
    const std::string shown = "onSetVolume(" + spelled(volume) + ")";
    trial.ask(shown, [&] { host.onSetVolume(volume); });
    followsAfter(trial, mutes, shown);
  }
}

/// What a device is, it is after every call: no text becomes empty.
void factsStay(Trial& trial) {
  std::vector<std::pair<Getter, std::string>> known;
  for (const Getter& getter : facts(trial.demands)) {
    if (getter.shown.find("getSystemSetting") == 0 || getter.shown.find("getDeviceLocale") == 0) continue;
    const std::string answer = ask(trial, getter);
    if (!answer.empty()) known.emplace_back(getter, answer);
  }
  const auto atLast = Clock::now() + milliseconds(5000);
  for (const Operation& operation : operations()) {
    for (const Given given : {Given::kPlain, Given::kWord}) {
      for (int which = 0; which < operation.samples(given) && Clock::now() < atLast; ++which) {
        const Prepared prepared = operation.prepare(given, which);
        tryCall(trial, operation, prepared);
        for (const auto& fact : known) {
          if (ask(trial, fact.first).empty())
            trial.broken(fact.first.shown + " answered nothing after " + prepared.shown + ", before that " +
                         spelled(fact.second));
        }
      }
    }
  }
}

/// What nobody set is not there because it was asked for.
void askingMakesNothing(Trial& trial) {
  const std::map<std::string, std::function<bool(Host&, const std::string&)>> questions{
      {"getConfigData",
       [](Host& host, const std::string& name) { return !host.getConfigData(name).empty(); }},
      {"getSystemSetting",
       [](Host& host, const std::string& name) {
         std::string value;
         return host.getSystemSetting(name, value);
       }},
      {"readKeyValue", [](Host& host, const std::string& name) { return !host.readKeyValue(name).empty(); }}};
  Host& host = trial.host();
  for (const auto& question : questions) {
    const std::string name = "vorn-conformance none of " + question.first;
    const std::string shown = question.first + "(" + spelled(name) + ")";
    const auto known = [&] {
      bool yes = false;
      trial.ask(shown, [&] { yes = question.second(host, name); });
      return yes;
    };
    const auto listed = [&] {
      bool yes = false;
      trial.ask("getDeviceInformation()", [&] { yes = host.getDeviceInformation().count(name) != 0; });
      return yes;
    };
    const bool before = listed();
    if (!known() && known())
      trial.broken(shown + " answered that there is none, then that there is, and it was only asked");
    if (!before && listed())
      trial.broken(shown + " was asked, and getDeviceInformation() has a field of that name now");
  }
}

std::string playbackState(Trial& trial, const std::string& id) {
  std::string answer;
  Player& player = trial.player();
  trial.ask("getPlaybackState(" + spelled(id) + ")", [&] { answer = player.getPlaybackState(id); });
  return answer;
}

void launch(Trial& trial, const std::string& id) {
  Player& player = trial.player();
  trial.ask("launchAndPlay(\"vorn-conformance\", 0, " + spelled(id) + ")",
            [&] { player.launchAndPlay("vorn-conformance", milliseconds(0), id); });
}

using Command = bool (Player::*)(std::string);

/// Who has several players moves the one that is named.
void movesTheNamed(Trial& trial, const std::string& name, Command command) {
  constexpr int kTimes = 3;
  using States = std::pair<std::string, std::string>;
  const std::string first = "vorn-conformance 1", second = "vorn-conformance 2";
  const auto settled = [&]() -> States {
    const auto states = [&] { return States{playbackState(trial, first), playbackState(trial, second)}; };
    States found = states(), then;
    const auto atLast = Clock::now() + milliseconds(1000);
    for (; Clock::now() < atLast; found = then) {
      std::this_thread::sleep_for(milliseconds(100));  // the host alone knows when it has followed
      then = states();
      if (then == found) return found;
    }
    trial.notAsked("getPlaybackState() does not come to rest");
  };
  States before, after;
  for (int i = 0; i < kTimes; ++i) {
    launch(trial, first);
    launch(trial, second);
    before = settled();
    bool done = false;
    Player& player = trial.player();
    trial.ask(name + "(" + spelled(first) + ")", [&] { done = (player.*command)(first); });
    after = settled();
    if (!done || after.first != before.first || after.second == before.second) return;
  }
  trial.broken(name + "(" + spelled(first) + ") answered true and left the state of that player at " +
               spelled(before.first) + "; it moved " + spelled(second) + " from " + spelled(before.second) +
               " to " + spelled(after.second));
}

/// A question that comes when everything is at rest has the answer of the next one: it is not one question late.
void stateIsOfNow(Trial& trial) {
  constexpr int kTimes = 3;
  const std::string player = "vorn-conformance";
  std::string late;
  for (int i = 0; i < kTimes; ++i) {
    launch(trial, player);
    std::this_thread::sleep_for(milliseconds(400));  // longer than a device takes
    playbackState(trial, player);
    const std::string playing = playbackState(trial, player);
    bool done = false;
    Player& asked = trial.player();
    trial.ask("stop(" + spelled(player) + ")", [&] { done = asked.stop(player); });
    std::this_thread::sleep_for(milliseconds(400));
    const std::string first = playbackState(trial, player), second = playbackState(trial, player);
    if (!done || first != playing || second == first) return;
    late = spelled(first) + ", then " + spelled(second);
  }
  trial.broken("400 ms after stop() getPlaybackState() answered " + late + ", and it was only asked");
}

/// The locale stands in two answers.
void localesAgree(Trial& trial) {
  const std::string kField = "deviceLocale";
  Host& host = trial.host();
  if (trial.demands.locales.size() < 2) trial.notAsked("HostDemands::locales (--locale) names less than two");
  for (const std::string& locale : trial.demands.locales) {
    std::string answered;
    Entries facts;
    trial.ask("changeAlexaLocale(" + spelled(locale) + ")", [&] { host.changeAlexaLocale(locale); });
    trial.ask("getDeviceLocale()", [&] { answered = host.getDeviceLocale(); });
    trial.ask("getDeviceInformation()", [&] { facts = host.getDeviceInformation(); });
    if (facts.count(kField) && facts[kField] != answered)
      trial.remark("getDeviceLocale() answers " + spelled(answered) + ", and getDeviceInformation() " +
                   spelled(facts[kField]) + " under " + spelled(kField));
  }
}

}  // namespace

void addGetterChecks(Checks& checks) {
  const char* const kAsked =
      "Let a question change nothing: no flag that it resets, nothing that is handed out once.";
  const char* const kFollow = "Take the value in every state of the device, or answer false.";
  checks.push_back(checkOfHost("asked-again", "A question that is asked again has the same answer.", kAsked,
                               sameWhenAsked));
  checks.push_back(checkOfHost("asked", "What was set stays, whatever is asked.", kAsked, staysWhenAsked));
  checks.push_back(checkOfHost("asked-unknown", "What nobody set is not there because it was asked for.",
                               "Look for it with find(): operator[] of a map makes what it does not find.",
                               askingMakesNothing));
  checks.push_back(checkOfHost("follows", "What was set is answered, whatever was called before.", kFollow,
                               followsInAnyState));
  checks.push_back(checkOfHost("follows-unasked", "What was set is answered to the first question.",
                               "Renew what a getter answers when it changes, or before the answer.",
                               followsUnasked));
  checks.push_back(checkOfHost("facts", "What a device is, it is still after every call.",
                               "Change only what a call is about.", factsStay));
  for (const Operation& operation : operations()) {
    if (!operation.ofPlayer) continue;
    if (operation.name == "getPlaybackState")
      checks.push_back(checkOf(operation, "of-now",
                               "It answers what is so, not what was so when it was last asked.",
                               "Look first, answer then.", stateIsOfNow));
    for (const auto& command : {std::make_pair("pause", &Player::pause), {"stop", &Player::stop}}) {
      if (operation.name != command.first) continue;
      checks.push_back(checkOf(operation, "named", "It moves the player that is named, and no other instead.",
                               "Look for the player by its id in every command.", [command](Trial& trial) {
                                 movesTheNamed(trial, command.first, command.second);
                               }));
    }
  }
  constexpr int kTimezone = 15, kLocale = 16, kInformation = 18, kCapabilities = 24, kMuted = 63;
  const char *const kName = "It answers a name, and nothing beside it.",
                    *const kTrim = "Take the end of the line off what you read from a file.";
  checks.push_back(checkOf(hostOperation(kTimezone), "name", kName, kTrim, [](Trial& trial) {
    nameAlone(trial, {"getTimezone()", [](Host& host) { return host.getTimezone(); }});
  }));
  checks.push_back(checkOf(hostOperation(kLocale), "name", kName, kTrim, [](Trial& trial) {
    nameAlone(trial, {"getDeviceLocale()", [](Host& host) { return host.getDeviceLocale(); }});
  }));
  checks.push_back(checkOf(hostOperation(kCapabilities), "never-empty", "It is never empty.",
                           "Answer \"[]\" for none.", answersNone));
  checks.push_back(checkOf(hostOperation(kMuted), "any-volume", "The mute follows at every volume.", kFollow,
                           muteAtAnyVolume));
  checks.push_back(checkOf(hostOperation(kInformation), "agrees",
                           "The locale among the facts is the one that getDeviceLocale() answers.",
                           "Make both from one value.", localesAgree));
}

}  // namespace vorn_testing::checks
