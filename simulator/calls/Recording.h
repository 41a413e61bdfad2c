#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Crossings.h"
#include "text/WholeFile.h"

namespace vorn_speaker {

/// A field of a recorded call: what writes it, reads it and tells of it.
struct RecordedField {
  std::string name;
  std::string meaning;
};

/// The fields, in the order in which they are written.
const std::vector<RecordedField>& recordedFields();

/// A recording that was read.
struct Recorded {
  struct Call {
    Crossing call;
    std::size_t line;
  };

  std::string path;
  std::vector<Call> calls;  ///< In the order in which they began.
  std::string leftOut;      ///< What could not be read, in words; empty when all was.
};

/// Writes every call to a file, one JSON object a line; docs/speaker.md tells the format.
class Recording : public Crossings::Listener {
 public:
  static constexpr int kVersion = 1;

  /// Takes the place of an earlier recording, and of no other file. @throws NotWritten, std::runtime_error
  explicit Recording(const std::string& path);

  void began(const Crossing&) override {}
  void ended(const Crossing& crossing) override;

  /// Puts the file in its place. @throws NotWritten  Not every byte could be written.
  void finish();

  /// A text as a recording gives it back: bytes that are no UTF-8 are lost.
  static std::string asRead(const std::string& text);

  /// Reads a file; what is whole of it when its end was cut. @throws std::runtime_error  Names file, line, field, reason.
  static Recorded read(const std::string& path);

 private:
  WholeFile m_file;
};

}  // namespace vorn_speaker
