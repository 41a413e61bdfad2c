#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "Recorder.h"

namespace vorn_testing {

/// One call as a line of a recording holds it: values as scenarios spell them, secrets masked.
struct RecordedCall {
  unsigned long number;       ///< In the order in which calls began, from 1.
  long long began;            ///< Microseconds since the start.
  long long took;             ///< Microseconds.
  std::string thread;         ///< Its name.
  int threadNumber;           ///< In the order in which threads were first seen, from 1.
  std::string direction;      ///< "down" to the firmware or "up" to the assistant side.
  std::string adapter;        ///< "VornDeviceInfo"
  std::string operation;      ///< "getVolume"
  std::string interfaceName;  ///< "VornDALImplIF"
  int slot;                   ///< Its place there.
  int inside;                 ///< How many calls of the same thread it ran inside.
  std::vector<std::string> arguments;
  std::string result;                ///< Empty without one.
  std::vector<std::string> written;  ///< What was written through references, "value=on".
  bool threw;
  std::string exception;
  std::size_t line;  ///< Where it was read; 0 when it was not.

  /// "VornDeviceInfo.setSystemSetting mode on = true"
  std::string text() const;
};

/// Writes every call that a recorder is told of to a file, as `vorn-speaker record` and `vorn-capture` do, for a debug
/// build or a test: vorn-speaker replays, reports and exports it.
///
/// A call is written when it has returned, and a line is written at once and whole, so that a crash leaves all calls before
/// it. Nobody but the owner may read the file. It takes the place of an earlier recording and of no other file, and follows
/// no link. Calls up are those that a FakeAssistant with the same recorder sees. The lock's wait is not known here.
///
///     vorn_testing::RecordingHost host(mine);
///     host.recorder->keepCalls(false);  // the file is enough
///     vorn_testing::RecordingFile file("/data/calls.jsonl", host.recorder);
class RecordingFile {
 public:
  /// `program` is what the first line tells of who was recorded.
  /// @throws std::runtime_error  Names the file and the reason.
  RecordingFile(const std::string& path, std::shared_ptr<Recorder> recorder, const std::string& program = "");

  /// Not while a call runs. What cannot be written then is lost in silence; see close().
  ~RecordingFile();

  RecordingFile(const RecordingFile&) = delete;
  RecordingFile& operator=(const RecordingFile&) = delete;

  /// Ends it. Not while a call runs. @throws std::runtime_error  A line could not be written.
  void close();

 private:
  class Lines;
  std::unique_ptr<Lines> m_lines;
};

/// Keeps every call that a recorder is told of as a recording holds it.
class RecordedCalls {
 public:
  explicit RecordedCalls(std::shared_ptr<Recorder> recorder);

  /// Not while a call runs.
  ~RecordedCalls();

  RecordedCalls(const RecordedCalls&) = delete;
  RecordedCalls& operator=(const RecordedCalls&) = delete;

  /// Those that have returned, in the order in which they began.
  std::vector<RecordedCall> calls() const;

 private:
  class Kept;
  const std::unique_ptr<Kept> m_kept;
};

/// Reads the calls of a recording, in the order in which they began; other lines are passed over.
/// @throws std::runtime_error  Names file, line, reason.
std::vector<RecordedCall> readRecording(const std::string& path);

/// Writes a recording to keep in a repository: without times and names of threads, each thread's calls together, so that
/// the same calls give the same file. @throws std::runtime_error
void writeGoldenRecording(const std::string& path, const std::vector<RecordedCall>& calls);

/// Tells the first difference between the calls of a recording and of a test, thread by thread, or nothing.
///
/// Compared are, for every call of a thread and in their order, operation, interface, arguments, answer, what was written,
/// the exception, and what it ran inside of; not times, numbers, names of threads, and not how threads took turns.
std::string differenceOfCalls(const std::vector<RecordedCall>& expected,
                              const std::vector<RecordedCall>& actual);

}  // namespace vorn_testing
