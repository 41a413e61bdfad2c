#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <set>
#include <string>
#include <vector>

#include "calls/Crossings.h"
#include "text/Files.h"

namespace vorn_speaker {

/// A field of a recorded call: what writes it, reads it and tells of it.
struct RecordedField {
  std::string name;
  std::string meaning;
};

/// The fields, in the order in which they are written.
const std::vector<RecordedField>& recordedFields();

/// What the fields of a call hold, as plain text: lists as JSON, nothing for what is not known, or not before a return.
std::vector<std::string> recordedCells(const Crossing& call, bool returned);

/// A text as JSON in ASCII; bytes that are no UTF-8 are lost.
std::string jsonText(const std::string& text);

/// Which calls of a recording are wanted.
struct Selection {
  unsigned long first = 1;
  unsigned long last = std::numeric_limits<unsigned long>::max();
  std::set<std::string> adapters;  ///< All when empty.

  /// "7", "7-9", "7-" or "-9". @throws std::invalid_argument
  void setRange(const std::string& text);

  /// Adds an adapter. @throws std::invalid_argument  With the name that was meant.
  void addAdapter(const std::string& name);

  bool takes(const Crossing& call) const;
};

/// A recording that was read.
struct Recorded {
  struct Call {
    Crossing call;
    std::size_t line;
  };

  /// Sound that a capture sums up, one a second.
  struct Sound {
    std::chrono::microseconds time;
    std::string name;  ///< What made it: "microphone".
    std::int64_t blocks;
    std::int64_t samples;
    int peak;                       ///< From 0 to 32768.
    int level;                      ///< The root of the mean square, on the same scale.
    std::chrono::microseconds gap;  ///< The longest time between two blocks.
  };

  /// Calls that came before `time` and could not be kept.
  struct Lost {
    std::chrono::microseconds time;
    std::int64_t calls;
  };

  struct Note {
    std::chrono::microseconds time;
    std::string text;
  };

  std::string path;
  int version;
  std::string program;  ///< What was recorded, when it was begun, in UTC, and by what; empty when not known.
  std::string started;
  std::string writer;
  std::vector<Call> calls;  ///< In the order in which they began.
  std::vector<Call>
      open;  ///< Those that had not returned when the file ended; without what only a return tells.
  std::vector<Sound> sounds;
  std::vector<Lost> lost;
  std::vector<Note> notes;
  std::vector<std::string> leftOut;  ///< What could not be read, or was passed over, in words.

  /// Prints what is missing: what could not be read, was lost, or had not returned.
  void tellLeftOut(std::ostream& out) const;

  /// Drops the calls that are not wanted.
  void keep(const Selection& selection);

  /// Masks the secrets of all calls.
  void mask();
};

/// Writes every call to a file, one JSON object a line; docs/speaker.md tells the format.
class Recording : public Crossings::Listener {
 public:
  static constexpr int kVersion = 2;

  /// Takes the place of an earlier recording, and of no other file. @throws NotWritten, std::runtime_error
  explicit Recording(const std::string& path);

  void began(const Crossing&) override {}
  void ended(const Crossing& crossing) override;

  /// Puts the file in its place. @throws NotWritten  Not every byte could be written.
  void finish();

  /// Its first line, and the line of a call.
  static std::string header();
  static std::string line(const Crossing& crossing);

  /// A text as a recording gives it back: bytes that are no UTF-8 are lost.
  static std::string asRead(const std::string& text);

  /// Reads a file of this version or an earlier one; what is whole of it when its end was cut.
  /// @throws std::runtime_error  Names file, line, field, reason.
  static Recorded read(const std::string& path);

 private:
  WholeFile m_file;
};

}  // namespace vorn_speaker
