// What is about all operations together: loads and orders.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "../Checks.h"
#include "Load.h"
#include "LockOrder.h"
#include "vorn_testing/FakeAssistant.h"
#include "vorn_testing/Operations.h"

namespace vorn_testing::checks {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

struct Area {
  const char* name;
  std::vector<const char*> operations;
};

const std::vector<Area>& table() {
  static const auto* const kAreas =
      new std::vector<Area>{{"storage", {"open", "readKeyValue", "writeKeyValue", "removeKeyValue", "clear"}},
                            {"settings", {"getSystemSetting", "setSystemSetting"}},
                            {"volume", {"getVolume", "onSetVolume", "onAdjustVolume"}},
                            {"mute", {"getMuteStatus", "onMute"}},
                            {"focus", {"requestAudioFocus", "releaseAudioFocus"}},
                            {"microphone",
                             {"startStreamingAudioData", "stopStreamingAudioData", "isMicrophoneAvailable",
                              "setAlexaHandsFreeState"}},
                            {"channels", {"onChangeChannel", "onSkipChannel"}},
                            {"inputs", {"onInputChange"}},
                            {"modes", {"onSetMode", "onAdjustMode"}},
                            {"recording", {"onStartRecording", "onStopRecording"}},
                            {"cards", {"clearGUICard", "renderGUICard"}},
                            {"lights", {"setAnimation"}},
                            {"calls", {"onCommsStateChanged"}},
                            {"messages", {"sendAppMessage"}},
                            {"logs", {"onLogEmitted"}},
                            {"setup", {"sendCBLInfo", "alexaAuthStatusChanged"}}};
  return *kAreas;
}

/// Numbers that look random and are the same in every run.
class Dice {
 public:
  explicit Dice(std::uint64_t seed) : m_state(seed * 0x9e3779b97f4a7c15 + 1) {}
  std::size_t operator()(std::size_t sides) {
    m_state = m_state * 6364136223846793005U + 1442695040888963407U;
    return static_cast<std::size_t>(m_state >> 33) % sides;
  }

 private:
  std::uint64_t m_state;
};

}  // namespace

std::vector<Round> rounds(const std::vector<const Operation*>& which) {
  std::vector<Round> all;
  for (const Operation* const operation : which) {
    for (const Given given : {Given::kPlain, Given::kLoad, Given::kWord}) {
      for (int sample = 0; sample < operation->samples(given); ++sample)
        all.push_back({operation, operation->prepare(given, sample)});
    }
  }
  return all;
}

std::vector<const Operation*> everything() {
  std::vector<const Operation*> all;
  for (const Operation& operation : operations()) all.push_back(&operation);
  return all;
}

void make(Trial& trial, const Round& round) {
  try {
    if (round.operation->locked)
      callThrough(trial, *round.operation, round.prepared);
    else
      call(trial, *round.operation, round.prepared);
  } catch (const Outcome& outcome) {
    if (outcome.kind == HostVerdict::kBroken) throw;
  }
}

void createAdapters(Host& host) {
  using namespace VornDeviceAbstractionLayer;
  VornAlexaState::CreateInstance(host);
  VornAppMessaging::CreateInstance(host);
  VornAudioFocus::CreateInstance(host);
  VornAudioIn::CreateInstance(host);
  VornCommsManager::CreateInstance(host);
  VornDeviceCapabilities::CreateInstance(host);
  VornDeviceInfo::CreateInstance(host);
  VornEMPAdapterControl::CreateInstance(host);
  VornGUIOutput::CreateInstance(host);
  VornLEDController::CreateInstance(host);
  VornLoggerObserver::CreateInstance(host);
  VornOOBE::CreateInstance(host);
  VornStorage::CreateInstance(host);
}

void shutDownAdapters() {
  using namespace VornDeviceAbstractionLayer;
  VornAlexaState::Shutdown();
  VornAppMessaging::Shutdown();
  VornAudioFocus::Shutdown();
  VornAudioIn::Shutdown();
  VornCommsManager::Shutdown();
  VornDeviceCapabilities::Shutdown();
  VornDeviceInfo::Shutdown();
  VornEMPAdapterControl::Shutdown();
  VornGUIOutput::Shutdown();
  VornLEDController::Shutdown();
  VornLoggerObserver::Shutdown();
  VornOOBE::Shutdown();
  VornStorage::Shutdown();
}

namespace {

/// Eight threads for a while: in bursts of a few operations, so that any two of them meet often.
void together(Trial& trial, const std::vector<const Operation*>& which, milliseconds time) {
  constexpr int kThreads = 8;
  constexpr std::int64_t kBurstMs = 20;
  constexpr std::size_t kFew = 8;
  createAdapters(trial.host());
  std::vector<std::vector<std::vector<Round>>> all;  // by thread and operation
  for (int thread = 0; thread < kThreads; ++thread) {
    all.emplace_back();
    for (const Operation* const operation : which) all.back().push_back(rounds({operation}));
  }
  trial.explain("while other threads were in the host");
  for (const bool disturbed : {false, true}) {
    guardMemory(disturbed);  // at full speed first
    const auto start = Clock::now();
    const auto end = start + time / 2, atLast = end + milliseconds(2000);
    trial.onThreads(
        kThreads,
        [&](int thread) {
          Dice dice(static_cast<std::uint64_t>(thread) + 1);
          const auto& own = all[static_cast<std::size_t>(thread)];
          while (Clock::now() < (trial.overlaps() < 200 ? atLast : end)) {
            const auto burst =
                std::chrono::duration_cast<milliseconds>(Clock::now() - start).count() / kBurstMs;
            // The same few for all threads, others in the next burst.
            const Dice of(static_cast<std::uint64_t>(burst) * kFew + dice(kFew) + 77);
            const auto& calls = own[Dice(of)(own.size())];
            make(trial, calls[dice(calls.size())]);
          }
        },
        disturbed);
  }
  trial.addLoad();
}

void anyOrder(Trial& trial) {
  createAdapters(trial.host());
  const auto all = rounds(everything());
  const auto atLast = Clock::now() + milliseconds(2500);
  int count = 0;
  for (std::uint64_t seed = 1; seed <= 3; ++seed) {
    Dice dice(seed);
    const Round* last[2] = {nullptr, nullptr};
    for (int i = 0; i < 3000 && Clock::now() < atLast; ++i, ++count) {
      const Round& next = all[dice(all.size())];
      trial.explain(last[0] ? "after " + last[1]->prepared.shown + ", " + last[0]->prepared.shown : "");
      make(trial, next);
      last[1] = last[0] ? last[0] : &next;
      last[0] = &next;
    }
  }
  trial.saw(std::to_string(count) + " calls");
}

// What has an order of its own on a device's day; every other operation comes between the two.
constexpr char kFirst[] =
    "open readKeyValue getDeviceInformation getConfigData getTimezone getDeviceLocale "
    "changeAlexaLocale getDeviceLocale updateInternetConnectionStatus sendCBLInfo "
    "alexaAuthStatusChanged writeKeyValue notifyMainAppInitialized setAlexaHandsFreeState "
    "alexaStateChanged isMicrophoneAvailable startStreamingAudioData dialogUXStateChanged "
    "notifyAlexaInvocationDetected requestAudioFocus setAnimation stopStreamingAudioData "
    "releaseAudioFocus login launchAndPlay getPlaybackState pause getPlaybackState resume "
    "nextTrack previousTrack restartCurrentTrack skipForward setShuffleOn setRepeatAll "
    "setRepeatOne setRepeatNone setShuffleOff stop resume stop logout nextTrack resume pause "
    "stop onChangePlaybackPlay onChangePlaybackPause onChangePlaybackPlay "
    "onChangePlaybackFastForward onChangePlaybackRewind onChangePlaybackNext "
    "onChangePlaybackPrevious onChangePlaybackStartOver onChangePlaybackStop "
    "onChangePlaybackPause onStartRecording onStartRecording onStopRecording onStopRecording "
    "onSetVolume onAdjustVolume onMute onMute getVolume getMuteStatus";
constexpr char kLast[] =
    "renderGUICard renderGUICard clearGUICard clearGUICard onCommsStateChanged sendAppMessage "
    "onLogEmitted removeKeyValue requestAudioFocus requestAudioFocus releaseAudioFocus "
    "releaseAudioFocus startStreamingAudioData startStreamingAudioData stopStreamingAudioData "
    "stopStreamingAudioData open clear";

/// What a device sees on a day, in its order.
std::vector<const Operation*> wholeDay() {
  std::vector<const Operation*> all;
  const auto add = [&](const std::string& name) {
    for (const Operation& operation : operations())
      if (operation.name == name) all.push_back(&operation);
  };
  std::istringstream first(kFirst), last(kLast);
  for (std::string name; first >> name;) add(name);
  const std::string ordered = std::string(" ") + kFirst + " " + kLast + " ";
  for (const Operation& operation : operations())
    if (ordered.find(" " + operation.name + " ") == std::string::npos) all.push_back(&operation);
  for (std::string name; last >> name;) add(name);
  return all;
}

/// The day, twice: nothing keeps a user from it.
void day(Trial& trial) {
  const FakeAssistant assistant;  // what the host tells upward arrives, and may come back down
  createAdapters(trial.host());
  std::string last;
  for (int turn = 0; turn < 2; ++turn) {
    for (const Operation* const operation : wholeDay()) {
      for (const Given given : {Given::kWord, Given::kPlain}) {
        for (int which = 0; which < operation->samples(given); ++which) {
          trial.explain(last.empty() ? "" : "after " + last);
          const Round round{operation, operation->prepare(given, which)};
          make(trial, round);
          last = round.prepared.shown;
        }
      }
    }
  }
}

constexpr int kOften = 40;

/// Some mutexes are taken every so many calls only.
void lookOften(Trial& trial, const std::vector<Round>& all) {
  const auto enough = Clock::now() + milliseconds(3000);
  std::map<const Operation*, std::vector<std::size_t>> steps;
  for (std::size_t step = 0; step < all.size(); ++step) steps[all[step].operation].push_back(step);
  for (const auto& of : steps) {
    for (int i = 0; i < kOften && Clock::now() < enough; ++i) {
      const std::size_t step = of.second[static_cast<std::size_t>(i) % of.second.size()];
      LockOrder::at(static_cast<int>(step));
      trial.explain("called often");
      make(trial, all[step]);
    }
  }
}

/// A day is looked at for mutexes that are taken in two orders; those who take them are then made to meet.
void lockOrder(Trial& trial) {
  const FakeAssistant assistant;
  createAdapters(trial.host());
  auto day = wholeDay();
  const auto again = everything();
  day.insert(day.end(), again.begin(), again.end());
  const auto all = rounds(day);
  LockOrder order;
  if (!LockOrder::sees())
    trial.notAsked(
        "this program does not see which mutexes are taken; vorn-conformance does, built without a sanitizer");
  for (std::size_t step = 0; step < all.size(); ++step) {
    LockOrder::at(static_cast<int>(step));
    trial.explain(step ? "after " + all[step - 1].prepared.shown : "");
    make(trial, all[step]);
  }
  lookOften(trial, all);
  LockOrder::at(-1);
  const auto circles = order.circles();
  trial.explain("while other threads took the same mutexes in another order");
  const auto atLast = Clock::now() + milliseconds(4000);
  for (std::size_t i = 0; i < circles.size() && Clock::now() < atLast; ++i) {
    LockOrder::meetAt(i);
    trial.onThreads(static_cast<int>(circles[i].size()), [&](int thread) {
      const int step = circles[i][static_cast<std::size_t>(thread)];
      // What came before may have led to where the mutexes are taken.
      for (int before = std::min(2, step); before >= 0; --before)
        make(trial, all[static_cast<std::size_t>(step - before)]);
      for (int turn = 0; turn < kOften && !LockOrder::came(static_cast<std::size_t>(thread)); ++turn)
        make(trial, all[static_cast<std::size_t>(step)]);
    });
  }
  trial.saw(std::to_string(circles.size()) + " circles of mutexes tried");
}

/// Arguments of all operations are taken back, and then a worker has time to come to one.
void letsGoLater(Trial& trial) {
  for (const Operation& operation : operations()) {
    for (int which = 0; which < operation.samples(Given::kLent); ++which) {
      const Prepared prepared = operation.prepare(Given::kLent, which);
      tryCall(trial, operation, prepared);
      prepared.revoke();
    }
  }
  trial.explain("after every call had returned and its arguments were gone");
  std::this_thread::sleep_for(milliseconds(700));  // a worker that kept one tells nobody when it looks
  callAll(trial, everything());
}

}  // namespace

std::string areaOf(const std::string& operation) {
  for (const Area& area : table()) {
    if (std::find(area.operations.begin(), area.operations.end(), operation) != area.operations.end())
      return area.name;
  }
  for (const Operation& each : operations()) {
    if (each.name == operation && (each.ofPlayer || each.name == "getEMPAdapter")) return "player";
  }
  if (operation == "createDalMediaPlayer") return "media-players";
  return operation.compare(0, 10, "onChangePl") == 0 ? "playback" : "";
}

const std::vector<std::string>& areas() {
  static const auto* const kNames = [] {
    auto* const names = new std::vector<std::string>{"media-players", "player", "playback"};
    for (const Area& area : table()) names->push_back(area.name);
    std::sort(names->begin(), names->end());
    return names;
  }();
  return *kNames;
}

Check checkOfHost(const std::string& name, const std::string& rule, const std::string& remedy,
                  std::function<void(Trial&)> run) {
  Operation host;
  host.name = "host";
  host.slot = 1;
  return checkOf(host, name, rule, remedy, std::move(run));
}

void addHostChecks(Checks& checks) {
  const char* const kGuard =
      "Guard what operations share with one mutex, take several always in the same order, and hold none while you call "
      "an adapter. A build with -fsanitize=thread finds the place.";
  checks.push_back(checkOfHost("day", "Every operation answers in the order of a device's day.",
                               "Decide for each state of the device what a call means there.", day));
  checks.push_back(checkOfHost("any-order", "Every operation answers in any order.",
                               "Decide for each state of the device what a call means there.", anyOrder));
  checks.push_back(checkOfHost(
      "lock-order", "Mutexes are taken in one order, those of the adapters among them.", kGuard, lockOrder));
  checks.push_back(checkOfHost("races",
                               "What operations share, no two of them touch at once when one of them writes.",
                               kGuard, races));
  checks.push_back(checkOfHost("first-calls",
                               "What the first call makes is not touched by the second before it is made.",
                               "Make it in the constructor, or by std::call_once().", firstCalls));
  checks.push_back(
      checkOfHost("static-places",
                  "Functions of the C library that all threads share a place of are called by one at a time.",
                  "Call strtok_r(), localtime_r() and their like.", staticPlaces));
  std::map<std::string, std::vector<const Operation*>> groups;
  for (const Operation& operation : operations()) groups[operation.adapter].push_back(&operation);
  for (const auto& group : groups) {
    if (group.second.size() < 2) continue;
    checks.push_back(
        checkOfHost("together-" + group.first,
                    "What " + group.first +
                        " calls may overlap: locked operations with unlocked ones, unlocked ones with all.",
                    kGuard, [which = group.second](Trial& trial) {
                      together(trial, which, milliseconds(200 + 40 * static_cast<int>(which.size())));
                    }));
  }
  checks.push_back(checkOfHost("together", "Operations of different adapters may overlap, also locked ones.",
                               kGuard,
                               [](Trial& trial) { together(trial, everything(), milliseconds(4000)); }));
  checks.push_back(checkOfHost("lets-go",
                               "Arguments are the caller's and end with the call, also for a worker.",
                               "Copy what you hand to another thread.", letsGoLater));
}

}  // namespace vorn_testing::checks
