#include "Getters.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <memory>
#include <thread>
#include <utility>

#include "../Operations.h"
#include "vorn_testing/Call.h"

namespace vorn_testing::checks {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

const Getter kVolume{"getVolume()", [](Host& host) { return text(host.getVolume()); }};
const Getter kMuteStatus{"getMuteStatus()", [](Host& host) { return text(host.getMuteStatus()); }};

Getter setting(const std::string& name) {
  return {"getSystemSetting(" + spelled(name) + ")", [name](Host& host) {
            std::string value = "vorn-conformance untouched";
            return host.getSystemSetting(name, value) ? value : "";
          }};
}

/// Which fields there are; what stands in them may change by itself.
std::string fields(Host& host) {
  std::string names;
  for (const auto& field : host.getDeviceInformation()) names += (names.empty() ? "" : ", ") + field.first;
  return names;
}

}  // namespace

std::string ask(Trial& trial, const Getter& getter) {
  std::string answer;
  Host& host = trial.host();
  trial.ask(getter.shown, [&] { answer = getter.ask(host); });
  return answer;
}

std::vector<Getter> facts(const HostDemands& demands) {
  std::vector<Getter> all{{"getTimezone()", [](Host& host) { return host.getTimezone(); }},
                          {"getDeviceLocale()", [](Host& host) { return host.getDeviceLocale(); }},
                          {"getVSKCapabilities()", [](Host& host) { return host.getVSKCapabilities(); }},
                          {"getDeviceInformation()", fields},
                          kVolume,
                          kMuteStatus};
  for (const auto& named : demands.settings) all.push_back(setting(named.first));
  for (const Operation& operation : operations()) {
    for (int which = 0; operation.name == "getConfigData" && which < operation.samples(Given::kWord);
         ++which) {
      const auto made = std::make_shared<Prepared>(operation.prepare(Given::kWord, which));
      all.push_back({made->shown, [made](Host& host) { return made->make(host, nullptr).front(); }});
    }
  }
  return all;
}

std::vector<Getter> questions(const HostDemands& demands) {
  auto all = facts(demands);
  all.insert(
      all.end(),
      {setting("vorn-conformance none"),
       {"isMicrophoneAvailable()", [](Host& host) { return text(host.isMicrophoneAvailable()); }},
       {"getNetworkConnectionStatus()", [](Host& host) { return text(host.getNetworkConnectionStatus()); }},
       {"readKeyValue(\"vorn-conformance\")",
        [](Host& host) { return text(host.readKeyValue("vorn-conformance")); }},
       {"getPlaybackState(\"\")", [](Host& host) {
          Player* const player = host.getEMPAdapter();
          return player ? player->getPlaybackState("") : "";
        }}});
  return all;
}

bool accepts(Trial& trial, const Settable::To& to) {
  bool accepted = false;
  Host& host = trial.host();
  trial.ask(to.shown, [&] { accepted = to.set(host); });
  return accepted;
}

bool becomes(Trial& trial, const Settable& what, const std::string& wanted) {
  const auto enough = Clock::now() + milliseconds(2000);
  while (ask(trial, what.getter) != wanted) {
    if (Clock::now() > enough) return false;
    std::this_thread::sleep_for(milliseconds(5));  // the host alone knows when it has followed
  }
  return true;
}

namespace {

/// What it answers to each value, of those that are accepted; empty when that is not the same each time.
Settable tried(Trial& trial, Settable what) {
  std::map<std::string, std::string> answers;
  for (int turn = 0; turn < 2; ++turn) {
    for (auto& to : what.values) {
      const std::string before = ask(trial, what.getter);
      if (!accepts(trial, to)) return {};
      // Asked once more when nothing moved: some are late by one question.
      if (turn == 0 && (to.answered = ask(trial, what.getter)) == before)
        to.answered = ask(trial, what.getter);
      if (turn == 1 && !becomes(trial, what, to.answered)) return {};
    }
  }
  if (what.values.front().answered == what.values.back().answered) return {};
  return what;
}

}  // namespace

std::vector<Settable> settables(Trial& trial) {
  std::vector<Settable> all(2);
  const auto volume = [](int to) {
    return Settable::To{"onSetVolume(" + spelled(to) + ")", "",
                        [to](Host& host) { return host.onSetVolume(to).first; }};
  };
  const auto mute = [](bool to) {
    return Settable::To{"onMute(" + spelled(to) + ")", "",
                        [to](Host& host) { return host.onMute(to).first; }};
  };
  all[0] = {kVolume, {volume(0), volume(10)}};
  all[1] = {kMuteStatus, {mute(true), mute(false)}};
  for (const auto& named : trial.demands.settings) {
    Settable one{setting(named.first), {}};
    for (const std::string& value : named.second) {
      one.values.push_back(
          {"setSystemSetting(" + spelled(named.first) + ", " + spelled(value) + ")", "",
           [name = named.first, value](Host& host) { return host.setSystemSetting(name, value); }});
    }
    if (one.values.size() > 1) all.push_back(one);
  }
  for (Settable& one : all) one = tried(trial, one);
  all.erase(std::remove_if(all.begin(), all.end(), [](const Settable& one) { return one.values.empty(); }),
            all.end());
  if (all.empty()) trial.refused("nothing can be set");
  return all;
}

}  // namespace vorn_testing::checks
