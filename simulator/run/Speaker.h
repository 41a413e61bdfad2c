#pragma once

#include <vorn_testing/DoctorHost.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "HostProcess.h"
#include "Worker.h"
#include "calls/Crossings.h"
#include "calls/Printer.h"
#include "calls/Tally.h"
#include "device/Adapters.h"
#include "device/Attachments.h"
#include "device/SpeakerHost.h"
#include "device/parts/DeviceFile.h"
#include "device/sound/Microphone.h"
#include "device/sound/Sink.h"
#include "language/Scenario.h"
#include "recordings/Recording.h"

namespace vorn_speaker {

/// How the speaker is set up, from the command line.
struct Settings {
  std::string store;  ///< The file of the key-value store; empty for one that is not kept.
  DeviceFile device;
  std::string audio;              ///< What the microphone hears.
  std::shared_ptr<Sink> sink;     ///< What the players play to.
  std::string host;               ///< A library with a host that takes the place of the simulated one.
  std::chrono::seconds limit{0};  ///< How long a call may take; 0 for ever.
  std::string recording;          ///< The file that every call is written to, when not empty.
  bool realTime = false;          ///< Whether the microphone keeps real time.
  bool trace = true;              ///< Whether the library writes its trace.
  bool everyBlock = false;        ///< Whether each block of sound is printed.
  bool secrets = false;           ///< Whether secrets are printed.
  bool keepGoing = false;         ///< Whether a scenario goes on after an expectation that was not met.
  Crossings::Listener* listener = nullptr;    ///< Told every call too. Borrowed.
  vorn_testing::Doctor::OnFinding onFinding;  ///< Told rules that were broken; without it nobody looks.
  bool colour = false;
  std::size_t width = 60;  ///< Of the display, in columns.
};

/// An expectation that was not met.
class Unmet : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The whole device: the firmware with its host and its parts, the adapters, the assistant side and the
/// assistant client, each on its thread. Boots when made, shuts down in the right order when destroyed.
class Speaker : public Stage, private Crossings::Listener {
 public:
  Speaker(const Settings& settings, std::ostream& out);
  ~Speaker() override;

  /// Plays the steps up to the first expectation that is not met, which it throws as Unmet, or up to a request to end; see
  /// endRequested(). When it keeps going it tells each that is not met and throws at the end.
  void play(const std::string& file, const std::vector<Step>& steps);

  /// Puts the recording in its place. @throws NotWritten
  void finish();

  /// Whether secrets are shown.
  bool secrets() const { return m_secrets; }

  /// Prints what the library has traced since the start, runs of like lines once and tokens masked, and the table of
  /// what was called, or with `everyOperation` of all. The parts may still be at work.
  void conclude(bool everyOperation);

  /// Creates one adapter, or shuts it down.
  void adapter(const std::string& name, bool live);
  /// The last call's result, with secrets masked.
  const std::string& shownResult() const { return m_shownResult; }

  /// The calls that arrived since the last call of a scenario began.
  std::vector<Crossing> recent() const;

  /// Who has asked an adapter and waits for its lock.
  std::vector<Asked> waiting() const { return m_crossings.waiting(); }

  void section(const std::string& title) override;
  void call(Caller caller, const std::string& name, const BoundCall& call, int threads) override;
  void expectResult(const std::string& expected) override;
  void expectCall(const ExpectedCall& expected) override;
  void expectHeard(std::optional<std::int64_t> samples, std::chrono::milliseconds within) override;
  void expectTrace(const std::string& part) override;
  void expectEveryOperation() override;
  void assistantSide(bool present, const std::string& area) override;
  void answer(const std::string& question, const std::string& value) override;
  void waitForMicrophone() override;
  void adapters(bool create) override;
  void traceFile(bool writable) override;
  void delay(const std::string& name, std::chrono::milliseconds time) override;
  void fail(const std::string& name, const std::string& text) override;
  void restore(const std::string& name) override;
  bool isSecret(const std::string& text) const override { return m_crossings.isKnown(text); }

 private:
  SpeakerHost::Face face();
  void began(const Crossing&) override {}
  void ended(const Crossing& crossing) override;
  void disturb(const Crossing& crossing);
  std::string resultOf(const std::string& name, const BoundCall& call);
  std::string callTogether(const std::string& name, const BoundCall& call, int threads);
  std::string shown(const std::string& text) const;
  std::string shownCall(const std::string& name, const std::vector<Token>& arguments) const;
  std::string shownTrace(const std::string& record) const;
  std::vector<std::string> traced() const;

  /// Waits until `condition` holds under m_mutex, at most so long; returns whether it does.
  bool holds(std::chrono::milliseconds within, const std::function<bool()>& condition);

  /// What statements put in the way of an operation's calls.
  struct Disturbance {
    std::chrono::milliseconds delay{0};
    std::optional<std::string> failure;
  };

  // What is told of calls stands before what makes them, whose threads may tell until they are destroyed.
  const std::chrono::seconds m_limit;
  const bool m_secrets;
  const bool m_keepGoing;
  mutable std::mutex m_mutex;
  std::condition_variable m_arrived;   ///< Something ended.
  std::condition_variable m_restored;  ///< A disturbance did.
  std::map<std::string, Disturbance> m_disturbances;
  std::deque<Crossing> m_recent;  ///< The newest since the last call of a scenario began.
  unsigned long m_calls = 0;
  std::string m_result;
  std::string m_shownResult;   ///< The same, with secrets masked.
  bool m_secretAsked = false;  ///< Whether the last call was asked for a secret, or given one.
  std::int64_t m_heard = 0;
  const bool m_trace;
  bool m_traceAside = false;  ///< Whether a folder stands where the trace belongs.
  const std::streamoff m_traceStart;

  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
  Printer m_printer;
  Tally m_tally;
  std::unique_ptr<Recording> m_recording;
  OpenCalls m_openCalls;
  Crossings m_crossings;

  std::ostringstream m_canvas;  ///< What the display draws, before it is printed.
  std::mutex m_canvasMutex;
  Display m_display;
  Microphone m_microphone;
  SpeakerHost m_host;
  OwnHost m_ownHost;
  vorn_testing::RecordingHost m_recordingHost;
  const std::unique_ptr<vorn_testing::DoctorHost> m_doctorHost;
  PlayerTable m_players;
  Attachments m_attachments;
  Adapters m_adapters;
  std::unique_ptr<vorn_testing::FakeAssistant> m_assistantSide;
  std::unique_ptr<Worker> m_firmware;
  std::unique_ptr<Worker> m_assistant;
  std::vector<std::unique_ptr<Worker>> m_moreAssistants;
};

}  // namespace vorn_speaker
