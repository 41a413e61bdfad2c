// That volume and mute are what they were set to.

#include <algorithm>
#include <chrono>
#include <limits>
#include <map>
#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "../Checks.h"
#include "Often.h"

namespace vorn_testing::checks {

namespace {

using Result = std::pair<bool, std::string>;

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

int patiently(Trial& trial) {
  g_patient = true;
  const AtEnd end([] { g_patient = false; });
  return volume(trial);
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
  for (int turn = 0; turn < 2; ++turn) {  // one right after the other
    setVolume(trial, ends[turn].first);
    if (!setVolume(trial, ends[1 - turn].first)) continue;
    const int found = volume(trial);
    if (found != ends[1 - turn].second)
      trial.broken("onSetVolume(" + spelled(ends[1 - turn].first) +
                   ") answered true right after another volume was set, then getVolume() answered " +
                   spelled(found) + ", before that " + spelled(ends[1 - turn].second));
  }
  setVolume(trial, before);
  if (different.size() < 2 && reported.size() > 1)
    trial.broken("onSetVolume() answered true to " + spelled(static_cast<int>(reported.size())) +
                 " volumes, and getVolume() answers " + spelled(before) + " whatever is set");
}

void adjustVolumeFollows(Trial& trial) {
  const int before = volume(trial);
  bool accepted = false, moved = false;
  constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
  for (const int by : {kLeast, kMost, 50, kMost, kLeast, 50, 0,   -5, 5,   -10, 10,   -1,
                       1,      -30,   30, 20,    -20,    50, -50, 50, 100, 100, -100, -100}) {
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

bool mute(Trial& trial, bool to) {
  return give(trial, "onMute(" + spelled(to) + ")", [to](Host& host) { return host.onMute(to); });
}

/// What is set while it is muted is reported then, or at last when it is not.
void setVolumeMuted(Trial& trial) {
  const int before = volume(trial);
  const bool wasMuted = muted(trial);
  if (!mute(trial, false)) trial.refused("onMute(false) answered false");
  for (const int asked : {10, 3, 50, before, 0}) {
    if (!setVolume(trial, asked)) continue;
    const int expected = volume(trial);
    mute(trial, true);
    mute(trial, false);
    if (volume(trial) != expected) continue;  // too loud to come back at once
    for (const int other : {5, 70, -10, 1}) {
      if (!setVolume(trial, other) || volume(trial) == expected) continue;
      if (!mute(trial, true)) trial.refused("onMute(true) answered false");
      const bool accepted = setVolume(trial, asked);
      const int whileMuted = volume(trial);
      mute(trial, false);
      const int then = volume(trial);
      if (accepted && then != expected)
        trial.broken("onSetVolume(" + spelled(asked) +
                     ") answered true after onMute(true), and getVolume() answered " + spelled(whileMuted) +
                     ", then " + spelled(then) + " after onMute(false); unmuted it is " + spelled(expected));
    }
  }
  setVolume(trial, before);
  mute(trial, wasMuted);
}

/// To mute, twice too, and to unmute leaves the volume where it was. One that is lowered may be too loud to come back at once.
void muteKeepsVolume(Trial& trial) {
  const int before = volume(trial);
  const bool wasMuted = muted(trial);
  if (!mute(trial, false)) trial.refused("onMute(false) answered false");
  std::string moved;
  std::set<int> tried;
  for (const int asked : {10, 50, 20, 40}) {
    if (!setVolume(trial, asked)) continue;
    const int set = volume(trial);
    if (!tried.insert(set).second) continue;
    for (const bool to : {true, true, false, false}) {
      if (!mute(trial, to)) trial.refused("onMute(" + spelled(to) + ") answered false");
      if (to || volume(trial) == set) continue;
      if (!moved.empty()) trial.broken(moved + "; it does so at other volumes too");
      moved = "getVolume() answered " + spelled(set) + ", then " + spelled(volume(trial)) +
              " after onMute(true) and onMute(false)";
      break;
    }
  }
  setVolume(trial, before);
  mute(trial, wasMuted);
  if (tried.empty()) trial.refused("onSetVolume() answered false to every volume");
}

/// Small steps up, from several threads as from one: the same in all.
void adjustFromThreads(Trial& trial) {
  constexpr int kThreads = 4, kEach = 2, kTurns = 40;
  const auto enough = std::chrono::steady_clock::now() + std::chrono::seconds(4);
  const int before = volume(trial);
  const auto up = [&](int times) {
    for (int i = 0; i < times; ++i) {
      trial.ask("onAdjustVolume(1)", [&] {
        enterHost();
        trial.host().onAdjustVolume(1);
        leaveHost();
      });
    }
  };
  for (const int low : {std::numeric_limits<int>::min(), -1000, -100, -1, -1, -1, -1, -1, -1, -1, -1})
    adjustVolume(trial, low);
  const int from = patiently(trial);
  up(kThreads * kEach);
  const int expected = volume(trial);
  if (patiently(trial) != expected) trial.notAsked("getVolume() follows later");
  if (expected == from) trial.notAsked("onAdjustVolume(1) does not move the volume");
  for (int turn = 0; turn < kTurns && std::chrono::steady_clock::now() < enough; ++turn) {
    for (int i = 0; i < 1000 && volume(trial) > from && adjustVolume(trial, -1); ++i) {
    }
    if (volume(trial) != from) break;
    trial.onThreads(
        kThreads, [&](int) { up(kEach); }, true);
    if (volume(trial) != expected && patiently(trial) != expected)
      trial.broken("onAdjustVolume(1) eight times from four threads moved getVolume() from " + spelled(from) +
                   " to " + spelled(volume(trial)) + ", from one thread to " + spelled(expected));
  }
  setVolume(trial, before);
}

void muteFollows(Trial& trial) {
  const bool before = muted(trial);
  bool accepted = false;
  const auto follow = [&](bool to, bool looks = true) {
    const std::string shown = "onMute(" + spelled(to) + ")";
    const bool last = looks && muted(trial);
    if (!mute(trial, to)) {
      if (looks && muted(trial) != last)
        trial.broken(shown + " answered false and moved getMuteStatus() to " + spelled(!last));
      return;
    }
    accepted = true;
    if (muted(trial) != to)
      trial.broken(shown + " answered true, then getMuteStatus() answered " + spelled(!to));
  };
  for (const bool to : {true, true, false, false, true, false, true}) follow(to);
  for (const bool to : {true, false, true}) {  // one right after the other
    mute(trial, !to);
    follow(to, false);
  }
  often([&](std::size_t turn) {
    if (!g_patient) follow(turn % 2 == 0);
  });
  follow(before);
  if (!accepted) trial.refused("onMute() answered false");
}

}  // namespace

void addVolumeChecks(Checks& checks) {
  const auto add = [&](int slot, const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), name, rule, remedy, run));
  };
  constexpr int kSetVolume = 61, kAdjustVolume = 62, kMute = 63;

  const char* const kFollow = "Change what the getter reports before you answer true, or answer false.";
  add(kSetVolume, "reported", "getVolume() follows what is set, on its own scale, steps and limits.", kFollow,
      soonOrLater(setVolumeFollows));
  add(kAdjustVolume, "reported", "The volume moves the way that was asked, and getVolume() reports it.",
      kFollow, soonOrLater(adjustVolumeFollows));
  add(kSetVolume, "muted", "A volume that is set while the speaker is muted is not lost.",
      "Keep it for when the mute ends, or answer false.", soonOrLater(setVolumeMuted));
  add(kAdjustVolume, "threads", "What several threads adjust at once adds up.",
      "Read, change and write the volume under one mutex, or in one atomic step.", adjustFromThreads);
  add(kMute, "reported", "getMuteStatus() reports what was set.", kFollow, soonOrLater(muteFollows));
  add(kMute, "volume", "To mute and to unmute leaves the volume where it was.",
      "Keep the mute in a value of its own beside the volume.", soonOrLater(muteKeepsVolume));
}

}  // namespace vorn_testing::checks
