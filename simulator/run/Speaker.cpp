#include "Speaker.h"

#include <FileLogger.h>
#include <vorn_testing/TraceLine.h>

#include <algorithm>
#include <fstream>
#include <future>
#include <thread>
#include <utility>

#include "Postmortem.h"
#include "TraceFile.h"
#include "text/Lines.h"
#include "text/Secrets.h"
#include "text/Spelling.h"

namespace vorn_speaker {

using vorn_testing::FakeAssistant;
using vorn_testing::TraceLine;
using VornDeviceAbstractionLayer::FileLogger;
using VornDeviceAbstractionLayer::VornAudioIn;

namespace {

constexpr std::size_t kMostRecent = 10000;
constexpr unsigned long kMostRecorded = 4096;
constexpr std::chrono::milliseconds kPart(100);  // of a wait: a request to end wakes nobody

const std::vector<std::pair<std::string, FakeAssistant::Area>>& areas() {
  static const std::vector<std::pair<std::string, FakeAssistant::Area>> all = {
      {"DeviceInfo", FakeAssistant::kDeviceInfo},
      {"DeviceCapabilities", FakeAssistant::kDeviceCapabilities},
      {"GUIOutput", FakeAssistant::kGUIOutput},
      {"OOBE", FakeAssistant::kOOBE},
      {"AudioIn", FakeAssistant::kAudioIn},
      {"AppMessaging", FakeAssistant::kAppMessaging},
      {"CommsManager", FakeAssistant::kCommsManager}};
  return all;
}

/// Waits until it is so, but not beyond the time, nor beyond a request to end. Returns whether it is so.
bool waitFor(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
             std::chrono::milliseconds within, const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + within;
  for (auto now = end - within; !condition(); now = std::chrono::steady_clock::now()) {
    if (now >= end || endRequested() != 0) return false;
    changed.wait_until(lock, std::min(end, now + kPart));
  }
  return true;
}

}  // namespace

Speaker::Speaker(const Settings& settings, std::ostream& out)
    : m_limit(settings.limit),
      m_secrets(settings.secrets),
      m_keepGoing(settings.keepGoing),
      m_trace(settings.trace),
      m_traceStart(std::max<std::streamoff>(traceSize(), 0)),
      m_recorder(std::make_shared<vorn_testing::Recorder>()),
      m_printer(out, settings.everyBlock),
      m_recording(settings.recording.empty() ? nullptr : std::make_unique<Recording>(settings.recording)),
      m_crossings(m_recorder, settings.secrets),
      m_display(m_canvas, settings.colour, settings.width),
      m_microphone(settings.realTime ? Microphone::Pace::kRealTime : Microphone::Pace::kFast,
                   [this](std::vector<short>& samples) {
                     nameThread("microphone");
                     if (const auto audioIn = m_adapters.held<VornAudioIn>()) audioIn->sendAudioData(samples);
                   }),
      m_host(settings.device, settings.store, m_microphone, face()),
      m_ownHost(settings.host.empty() ? OwnHost() : ownHost(settings.host)),
      m_recordingHost(m_ownHost.host ? *m_ownHost.host : m_host),
      m_doctorHost(settings.onFinding
                       ? std::make_unique<vorn_testing::DoctorHost>(m_recordingHost, settings.onFinding)
                       : nullptr),
      m_attachments(m_recorder, m_players),
      m_adapters(m_doctorHost ? static_cast<VornDALImplIF&>(*m_doctorHost) : m_recordingHost, m_players,
                 m_attachments) {
  m_microphone.hear(settings.audio);
  if (m_ownHost.players) {
    for (const auto& [name, player] : *m_ownHost.players) {
      auto& recorded = m_players[name];  // empty where the host's is
      if (player) recorded = std::make_shared<RecordedPlayer>(name, settings.sink, m_recorder, player);
    }
  } else {
    if (VornDeviceAbstractionLayer::VornMediaPlayerFactory::getInstance())
      m_printer.say(
          "The host made a media player factory, which is replaced here by one that is watched; it hands its players "
          "over by vornMediaPlayers(), see vorn_testing/HostEntry.h");
    for (const char* name : {"SpeechPlayer", "DefaultMediaPlayer"})
      m_players[name] = std::make_shared<RecordedPlayer>(name, settings.sink, m_recorder);
  }
  m_recordingHost.recorder = m_recorder;
  m_host.connect(m_adapters);
  m_crossings.tell(m_openCalls);
  m_crossings.tell(m_printer);
  m_crossings.tell(m_tally);
  m_crossings.tell(*this);
  if (m_recording) m_crossings.tell(*m_recording);
  if (settings.listener) m_crossings.tell(*settings.listener);
  m_crossings.disturb([this](const Crossing& crossing) { disturb(crossing); });

  // As a device boots: the host, the trace, the adapters, the assistant client.
  m_firmware = std::make_unique<Worker>("firmware", settings.limit);
  m_firmware->run([&] {
    FileLogger::CreateInstance(settings.trace);
    m_adapters.create();
    return std::string();
  });
  m_assistantSide = std::make_unique<FakeAssistant>(m_recorder);
  m_assistant = std::make_unique<Worker>("assistant", settings.limit);
}

SpeakerHost::Face Speaker::face() {
  // What a call that was given a secret leads to may show it in parts.
  const auto say = [this](const std::string& line) {
    const Crossing* const inside = openCall();
    const bool hidden = (inside && inside->masked) || m_crossings.isSecret(line);
    m_printer.say("    " + (hidden ? kMask : line));
  };
  const auto draw = [this, say](const std::function<void(Display&)>& drawing) {
    const std::lock_guard<std::mutex> lock(m_canvasMutex);
    m_canvas.str("");
    drawing(m_display);
    std::istringstream lines(m_canvas.str());
    for (std::string line; std::getline(lines, line);) say(line);
  };
  return {draw, say};
}

Speaker::~Speaker() {
  m_moreAssistants.clear();
  m_assistant.reset();
  m_firmware->run([this] {
    m_microphone.stop();
    m_adapters.shutdown();
    FileLogger::Shutdown();
    return std::string();
  });
  try {
    traceFile(true);
  } catch (const std::exception& error) {
    m_printer.say(error.what());
  }
  m_assistantSide.reset();
  m_firmware.reset();
  m_players.clear();
  m_ownHost.host.reset();  // Its threads end here, watched and heard.
}

void Speaker::play(const std::string& file, const std::vector<Step>& steps) {
  std::size_t unmet = 0;
  for (const Step& step : steps) {
    if (endRequested() != 0) break;
    try {
      step.play(*this);
    } catch (const Unmet& error) {
      if (endRequested() != 0) break;
      const std::string told = oneLine(file) + ":" + std::to_string(step.line) + ": " + error.what();
      if (!m_keepGoing) throw Unmet(told);
      m_printer.say(told);
      ++unmet;
    }
  }
  if (unmet > 0) throw Unmet(oneLine(file) + ": expectations that were not met: " + std::to_string(unmet));
}

void Speaker::finish() {
  if (m_recording) m_recording->finish();
}

void Speaker::ended(const Crossing& crossing) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_recent.push_back(crossing);
    if (m_recent.size() > kMostRecent) m_recent.pop_front();
    // What the kit recorded is asked for by nobody here; a call that runs meanwhile may be kept at another's place.
    if (++m_calls % kMostRecorded == 0) m_recorder->clear();
    m_heard += static_cast<std::int64_t>(crossing.samples);
  }
  m_arrived.notify_all();
}

bool Speaker::holds(std::chrono::milliseconds within, const std::function<bool()>& condition) {
  std::unique_lock<std::mutex> lock(m_mutex);
  return waitFor(m_arrived, lock, within, condition);
}

void Speaker::disturb(const Crossing& crossing) {
  const std::string name = crossing.asked();
  std::unique_lock<std::mutex> lock(m_mutex);
  const auto found = m_disturbances.find(name);
  if (found == m_disturbances.end()) return;
  const Disturbance disturbance = found->second;
  const auto restored = [&] { return m_disturbances.count(name) == 0; };
  if (waitFor(m_restored, lock, disturbance.delay, restored)) return;
  if (disturbance.failure) throw std::runtime_error(*disturbance.failure);
}

void Speaker::delay(const std::string& name, std::chrono::milliseconds time) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_disturbances[name].delay = time;
}

void Speaker::fail(const std::string& name, const std::string& text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_disturbances[name].failure = text;
}

void Speaker::restore(const std::string& name) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_disturbances.erase(name);
  m_restored.notify_all();
}

std::vector<Crossing> Speaker::recent() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return {m_recent.begin(), m_recent.end()};
}

void Speaker::section(const std::string& title) { m_printer.say("\n" + shown(title)); }

std::string Speaker::resultOf(const std::string& name, const BoundCall& call) {
  const Crossings::Asking asking(m_crossings, name);
  try {
    return call(m_adapters);
  } catch (const std::exception& error) {
    return std::string("threw ") + error.what();
  } catch (...) {
    return "threw what is no std::exception";
  }
}

std::string Speaker::callTogether(const std::string& name, const BoundCall& call, int threads) {
  while (m_moreAssistants.size() < static_cast<std::size_t>(threads)) {
    const std::string thread = "assistant " + std::to_string(m_moreAssistants.size() + 1);
    m_moreAssistants.push_back(std::make_unique<Worker>(thread.c_str(), m_limit));
  }
  // Nobody calls before everybody can.
  std::mutex mutex;
  std::condition_variable ready;
  int waiting = threads;
  const auto meet = [&] {
    std::unique_lock<std::mutex> lock(mutex);
    if (--waiting == 0) ready.notify_all();
    ready.wait(lock, [&] { return waiting == 0; });
  };
  std::vector<std::future<std::string>> answers;
  for (int i = 0; i < threads; ++i) {
    Worker& worker = *m_moreAssistants[static_cast<std::size_t>(i)];
    answers.push_back(std::async(std::launch::async, [&] {
      return worker.run([&] {
        meet();
        return resultOf(name, call);
      });
    }));
  }
  std::vector<std::string> results;
  for (auto& answer : answers) results.push_back(answer.get());
  std::string all = results.front();
  if (std::all_of(results.begin(), results.end(), [&](const std::string& one) { return one == all; }))
    return all;
  for (std::size_t i = 1; i < results.size(); ++i) all += "; " + results[i];
  return all;
}

void Speaker::call(Caller caller, const std::string& name, const BoundCall& call, int threads) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_recent.clear();
  }
  Worker& worker = caller == Caller::kAssistant ? *m_assistant : *m_firmware;
  m_result =
      threads > 1 ? callTogether(name, call, threads) : worker.run([&] { return resultOf(name, call); });
  // A result that no printed call shows: a default, or what was written through a reference.
  const std::vector<Crossing> calls = recent();
  const auto shows = [&](const Crossing& crossing) {
    return crossing.asked() == name && crossing.clear.answer == m_result;
  };
  const auto shownBy = std::find_if(calls.begin(), calls.end(), shows);
  const bool secret = std::any_of(calls.begin(), calls.end(), [&](const Crossing& crossing) {
    return crossing.secret && crossing.asked() == name;
  });
  // What was asked for a secret and had none to tell would still have told one.
  m_secretAsked = !m_secrets && std::any_of(calls.begin(), calls.end(), [](const Crossing& crossing) {
    const std::vector<std::string>& asked = crossing.clear.spelled;
    return crossing.masked || std::any_of(asked.begin(), asked.end(), isSecretText);
  });
  if (shownBy != calls.end()) {
    m_shownResult = shownBy->answer();
  } else {
    m_shownResult = secret ? kMask : shown(m_result);
    if (!m_result.empty()) {
      m_printer.say("        " + name + " gave " + m_shownResult);
    } else if (calls.empty()) {
      m_printer.say("        " + name + " was dropped");
    }
  }
}

std::string Speaker::shown(const std::string& text) const {
  return m_crossings.isSecret(text) ? kMask : oneLine(text);
}

std::string Speaker::shownCall(const std::string& name, const std::vector<Token>& arguments) const {
  if (name.empty()) return "";
  std::string line = " " + name;
  for (const Token& argument : arguments) {
    const std::string text = oneLine(spell(argument));
    line += " " + (m_crossings.isKnown(argument.text) ? kMask : text);
  }
  return line;
}

void Speaker::expectResult(const std::string& expected) {
  if (m_result == expected) return;
  const bool secret = m_secretAsked || m_shownResult.find(kMask) != std::string::npos;
  throw Unmet("expected the result " + (secret ? kMask : shown(expected)) + ", saw " +
              (m_shownResult.empty() ? "none" : oneLine(m_shownResult)));
}

void Speaker::expectCall(const ExpectedCall& expected) {
  const auto matches = [&](const Crossing& crossing) {
    if (!expected.name.empty() && crossing.asked() != expected.name) return false;
    const Operation* const operation = operationAt(crossing.target, crossing.slot);
    return expected.name.empty() ||
           (operation && takes(*operation, expected.arguments, crossing.clear.spelled));
  };
  const auto came = [&] { return std::any_of(m_recent.begin(), m_recent.end(), matches); };
  if (holds(expected.within, [&] { return came() == expected.wanted; })) return;
  std::string seen;
  for (const Crossing& crossing : recent()) {
    seen += (seen.empty() ? "" : "; ") + crossing.asked();
    for (const std::string& argument : crossing.spelled) seen += " " + oneLine(argument);
  }
  const Operation* const operation = operationNamed(expected.name);
  const std::vector<Token> wanted = operation && !m_secrets
                                        ? masked(parameterNames(*operation), expected.arguments).arguments
                                        : expected.arguments;
  throw Unmet(std::string("expected ") + (expected.wanted ? "the call" : "no call") +
              shownCall(expected.name, wanted) + ", saw " + (seen.empty() ? "none" : seen));
}

void Speaker::expectHeard(std::optional<std::int64_t> samples, std::chrono::milliseconds within) {
  if (holds(within, [&] { return samples ? m_heard == *samples : m_heard > 0; })) return;
  const std::lock_guard<std::mutex> lock(m_mutex);
  throw Unmet("expected " + (samples ? std::to_string(*samples) : "some") + " samples heard, saw " +
              std::to_string(m_heard));
}

std::vector<std::string> Speaker::traced() const {
  std::ifstream trace(kTraceFile, std::ios::binary);
  // A file that is shorter than it was has been emptied since: all of it is new.
  if (traceSize() >= m_traceStart) trace.seekg(m_traceStart);
  return vorn_testing::traceRecords(trace);
}

void Speaker::conclude(bool everyOperation) {
  std::ostringstream table;
  table.imbue(std::locale::classic());
  m_tally.print(table << '\n', everyOperation);
  std::string counts = table.str();
  counts.pop_back();  // say() ends the last line
  m_printer.say("\nWhat the library traced meanwhile");
  std::string before;
  for (const std::string& record : traced()) {
    const std::string shape = TraceLine::shape(record);
    if (shape != before) m_printer.say("  trace " + shownTrace(record));
    before = shape;
  }
  m_printer.say(counts);
}

std::string Speaker::shownTrace(const std::string& record) const {
  if (m_secrets) return oneLine(record);
  const std::string text = TraceLine::masked(record);
  return m_crossings.isKnown(text) ? kMask : oneLine(text);
}

void Speaker::expectTrace(const std::string& part) {
  if (!m_trace) {
    m_printer.say("        expect trace is passed over: the trace is off (--no-trace)");
    return;
  }
  const std::vector<std::string> records = traced();
  const auto holds = [&](const std::string& record) { return record.find(part) != std::string::npos; };
  if (std::any_of(records.begin(), records.end(), holds)) return;
  throw Unmet("expected a trace line with " + shown(part) + ", saw " +
              (records.empty() ? "no line" : "as the last line " + shownTrace(records.back())));
}

void Speaker::expectEveryOperation() {
  const std::vector<std::string> missing = m_tally.missing();
  if (missing.empty()) return;
  std::string names;
  for (const std::string& name : missing) names += (names.empty() ? "" : ", ") + name;
  throw Unmet("expected a call of every operation, saw none of " + names);
}

void Speaker::assistantSide(bool present, const std::string& area) {
  for (const auto& [name, place] : areas()) {
    if (area != "all" && area != name) continue;
    present ? m_assistantSide->create(place) : m_assistantSide->remove(place);
  }
}

void Speaker::answer(const std::string& question, const std::string& value) {
  FakeAssistant::Answers& answers = *m_assistantSide->answers;
  if (question == "authStatus") answers.authStatus = value;
  if (question == "messageAccepted") answers.messageAccepted = value == "true";
  if (question == "playbackActionAccepted") answers.playbackActionAccepted = value == "true";
}

void Speaker::waitForMicrophone() {
  while (!m_microphone.wait(kPart) && endRequested() == 0) {
  }
}

void Speaker::adapter(const std::string& name, bool live) {
  m_firmware->run([&] {
    m_adapters.set(name, live);
    return std::string();
  });
}

void Speaker::traceFile(bool writable) {
  if (m_traceAside != writable) return;
  writable ? returnTrace() : takeTraceAway();
  m_traceAside = !writable;
}

void Speaker::adapters(bool create) {
  m_firmware->run([&] {
    create ? m_adapters.create() : m_adapters.shutdown();
    return std::string();
  });
}

}  // namespace vorn_speaker
