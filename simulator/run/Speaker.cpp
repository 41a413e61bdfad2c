#include "Speaker.h"

#include <FileLogger.h>
#include <vorn_testing/Text.h>
#include <vorn_testing/TraceLine.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include "Postmortem.h"
#include "text/Secrets.h"

namespace vorn_speaker {

using vorn_testing::FakeAssistant;
using VornDeviceAbstractionLayer::FileLogger;
using VornDeviceAbstractionLayer::VornAudioIn;

namespace {

constexpr char kTraceFile[] = "/tmp/xAppLog.txt";

long sizeOf(const char* file) {
  std::error_code none;
  const auto size = std::filesystem::file_size(file, none);
  return none ? 0 : static_cast<long>(size);
}

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

std::string signature(const std::string& name, const std::vector<std::string>& arguments) {
  std::string line = name;
  for (const std::string& argument : arguments) line += " " + argument;
  return line;
}

}  // namespace

Speaker::Speaker(const Settings& settings, std::ostream& out)
    : m_recorder(std::make_shared<vorn_testing::Recorder>()),
      m_printer(out, settings.everyBlock),
      m_recording(settings.recording.empty() ? nullptr : std::make_unique<Recording>(settings.recording)),
      m_crossings(m_recorder, settings.secrets),
      m_display(m_canvas, settings.colour, settings.width),
      m_microphone(settings.realTime ? Microphone::Pace::kRealTime : Microphone::Pace::kFast,
                   [this](std::vector<short>& samples) {
                     nameThread("microphone");
                     if (const auto audioIn = m_adapters.held<VornAudioIn>()) audioIn->sendAudioData(samples);
                   }),
      m_host(DeviceFile::read(settings.device), settings.store, m_microphone, face()),
      m_ownHost(settings.host.empty() ? nullptr : ownHost(settings.host)),
      m_recordingHost(m_ownHost ? *m_ownHost : m_host),
      m_attachments(m_recorder, m_players),
      m_adapters(m_recordingHost, m_players, m_attachments),
      m_trace(settings.trace),
      m_traceStart(sizeOf(kTraceFile)) {
  m_microphone.hear(settings.audio);
  for (const char* name : {"SpeechPlayer", "DefaultMediaPlayer"}) {
    m_players[name] = std::make_shared<RecordedPlayer>(name, settings.sink, m_recorder);
  }
  m_recordingHost.recorder = m_recorder;
  m_host.connect(m_adapters);
  m_crossings.tell(m_openCalls);
  m_crossings.tell(m_printer);
  m_crossings.tell(m_tally);
  m_crossings.tell(*this);
  if (m_recording) m_crossings.tell(*m_recording);

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
  const auto say = [this](const std::string& line) { m_printer.say("    " + line); };
  const auto draw = [this](const std::function<void(Display&)>& drawing) {
    const std::lock_guard<std::mutex> lock(m_canvasMutex);
    m_canvas.str("");
    drawing(m_display);
    std::istringstream lines(m_canvas.str());
    for (std::string line; std::getline(lines, line);) m_printer.say("    " + line);
  };
  return {draw, say};
}

Speaker::~Speaker() {
  m_assistant.reset();
  m_firmware->run([this] {
    m_microphone.stop();
    m_adapters.shutdown();
    FileLogger::Shutdown();
    return std::string();
  });
  m_assistantSide.reset();
  m_firmware.reset();
}

void Speaker::play(const std::string& file, const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    if (endRequested() != 0) return;
    try {
      step.play(*this);
    } catch (const Disappointed& disappointed) {
      throw Disappointed(file + ":" + std::to_string(step.line) + ": " + disappointed.what());
    }
  }
}

void Speaker::ended(const Crossing& crossing) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_recent.push_back(crossing);
  // "[160 samples]", as the kit renders them.
  if (crossing.operation == "sendAudioData")
    m_heard += std::strtoll(crossing.arguments[0].c_str() + 1, nullptr, 10);
}

std::int64_t Speaker::heard() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_heard;
}

std::vector<Crossing> Speaker::recent() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_recent;
}

void Speaker::section(const std::string& title) { m_printer.say("\n" + title); }

void Speaker::call(Caller caller, const std::string& name, const std::string& firstArgument,
                   const BoundCall& call) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_recent.clear();
  }
  Worker& worker = caller == Caller::kAssistant ? *m_assistant : *m_firmware;
  m_result = worker.run([&] {
    try {
      return call(m_adapters);
    } catch (const std::exception& error) {
      return std::string("threw ") + error.what();
    } catch (...) {
      return std::string("threw what is no std::exception");
    }
  });
  // A result that no printed call shows: a default, or what was written through a reference.
  const auto shows = [&](const Crossing& crossing) {
    return crossing.fullName() == name && crossing.answer() == m_result;
  };
  const std::vector<Crossing> calls = recent();
  if (std::none_of(calls.begin(), calls.end(), shows) && !isSecretName(firstArgument) && !m_result.empty()) {
    m_printer.say("        " + name + " gave " + vorn_testing::harmless(hideSecrets(m_result)));
  } else if (calls.empty()) {
    m_printer.say("        " + name + " was dropped");
  }
}

void Speaker::expectResult(const std::string& expected) {
  if (m_result != expected)
    throw Disappointed("expected the result " + expected + ", saw " + hideSecrets(m_result));
}

void Speaker::expectCall(bool wanted, const std::string& name, const std::vector<std::string>& arguments) {
  const std::vector<Crossing> calls = recent();
  const auto matches = [&](const Crossing& crossing) {
    return (name.empty() || crossing.fullName() == name) &&
           (arguments.empty() || crossing.arguments == arguments);
  };
  if (std::any_of(calls.begin(), calls.end(), matches) == wanted) return;
  std::string seen;
  for (const Crossing& crossing : calls) {
    seen += (seen.empty() ? "" : "; ") + signature(crossing.fullName(), crossing.arguments);
  }
  throw Disappointed("expected " + std::string(wanted ? "the call " : "no call ") +
                     signature(name, arguments) + ", saw " + (seen.empty() ? "none" : seen));
}

void Speaker::expectHeard(std::int64_t samples) {
  const std::int64_t seen = heard();
  if (samples == kSome ? seen > 0 : seen == samples) return;
  const std::string wanted = samples == kSome ? "some" : std::to_string(samples);
  throw Disappointed("expected " + wanted + " samples heard, saw " + std::to_string(seen));
}

void Speaker::printTrace(std::ostream& out) const {
  std::ifstream trace(kTraceFile);
  trace.seekg(m_traceStart);
  std::string before;
  for (std::string line; std::getline(trace, line);) {
    const std::string shape = vorn_testing::TraceLine::shape(line);
    if (shape != before) out << "  trace" << vorn_testing::TraceLine::masked(line) << '\n';
    before = shape;
  }
}

void Speaker::expectTrace(const std::string& part) {
  if (!m_trace) {
    m_printer.say("        expect trace is passed over: the trace is off (--no-trace)");
    return;
  }
  std::ifstream trace(kTraceFile);
  trace.seekg(m_traceStart);
  std::string last;
  for (std::string line; std::getline(trace, line); last = line) {
    if (line.find(part) != std::string::npos) return;
  }
  throw Disappointed("expected a trace line with " + part + ", saw " +
                     (last.empty() ? "no line" : "as the last line" + last));
}

void Speaker::expectEveryOperation() {
  const std::vector<std::string> missing = m_tally.missing();
  if (missing.empty()) return;
  std::string names;
  for (const std::string& name : missing) names += (names.empty() ? "" : ", ") + name;
  throw Disappointed("expected a call of every operation, saw none of " + names);
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

void Speaker::waitForMicrophone() { m_microphone.wait(); }

void Speaker::adapters(bool create) {
  m_firmware->run([&] {
    create ? m_adapters.create() : m_adapters.shutdown();
    return std::string();
  });
}

}  // namespace vorn_speaker
