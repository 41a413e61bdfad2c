#pragma once

#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/RecordingHost.h>

#include <chrono>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "HostProcess.h"
#include "Worker.h"
#include "calls/Crossings.h"
#include "calls/Printer.h"
#include "calls/Recording.h"
#include "calls/Tally.h"
#include "device/Adapters.h"
#include "device/Attachments.h"
#include "device/SpeakerHost.h"
#include "device/parts/Microphone.h"
#include "device/parts/Sink.h"
#include "language/Scenario.h"

namespace vorn_speaker {

/// How the speaker is set up, from the command line.
struct Settings {
  std::string store;              ///< The file of the key-value store; empty for one that is not kept.
  std::string device;             ///< The device file.
  std::string audio;              ///< What the microphone hears.
  std::shared_ptr<Sink> sink;     ///< What the players play to.
  std::string host;               ///< A library with a host that takes the place of the simulated one.
  std::chrono::seconds limit{0};  ///< How long a call may take; 0 for ever.
  std::string recording;          ///< The file that every call is written to, when not empty.
  bool realTime = false;          ///< Whether the microphone keeps real time.
  bool trace = true;              ///< Whether the library writes its trace.
  bool everyBlock = false;        ///< Whether each block of sound is printed.
  bool secrets = false;           ///< Whether secrets are printed.
  bool colour = false;
  std::size_t width = 60;  ///< Of the display, in columns.
};

/// An expectation that was not met.
class Disappointed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The whole device: the firmware with its host and its parts, the adapters, the assistant side and the
/// assistant client, each on its thread. Boots when made, shuts down in the right order when destroyed.
class Speaker : public Stage, private Crossings::Listener {
 public:
  Speaker(const Settings& settings, std::ostream& out);
  ~Speaker() override;

  /// Plays the steps up to the first expectation that is not met, which it throws as Disappointed, or up to a request
  /// to end; see endRequested().
  void play(const std::string& file, const std::vector<Step>& steps);

  const Tally& tally() const { return m_tally; }

  /// Prints what the library has traced since the start, runs of like lines once and tokens masked.
  void printTrace(std::ostream& out) const;

  /// The calls that arrived since the last call of a scenario began.
  std::vector<Crossing> recent() const;

  void section(const std::string& title) override;
  void call(Caller caller, const std::string& name, const std::string& firstArgument,
            const BoundCall& call) override;
  void expectResult(const std::string& expected) override;
  void expectCall(bool wanted, const std::string& name, const std::vector<std::string>& arguments) override;
  void expectHeard(std::int64_t samples) override;
  void expectTrace(const std::string& part) override;
  void expectEveryOperation() override;
  void assistantSide(bool present, const std::string& area) override;
  void answer(const std::string& question, const std::string& value) override;
  void waitForMicrophone() override;
  void adapters(bool create) override;

 private:
  SpeakerHost::Face face();
  void began(const Crossing&) override {}
  void ended(const Crossing& crossing) override;
  std::int64_t heard() const;

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
  const std::shared_ptr<VornDALImplIF> m_ownHost;
  vorn_testing::RecordingHost m_recordingHost;
  PlayerTable m_players;
  Attachments m_attachments;
  Adapters m_adapters;
  std::unique_ptr<vorn_testing::FakeAssistant> m_assistantSide;
  std::unique_ptr<Worker> m_firmware;
  std::unique_ptr<Worker> m_assistant;

  mutable std::mutex m_mutex;
  std::vector<Crossing> m_recent;  ///< Since the last call of a scenario began.
  std::string m_result;
  std::int64_t m_heard = 0;
  const bool m_trace;
  const long m_traceStart;
};

}  // namespace vorn_speaker
