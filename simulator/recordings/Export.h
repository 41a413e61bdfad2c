#pragma once

#include <iosfwd>
#include <string>

#include "Recording.h"

namespace vorn_speaker {

/// A form in which other programs read recordings.
struct ExportFormat {
  const char* name;
  const char* meaning;
  void (*write)(const Recorded& recording, std::ostream& out);

  /// How each of its files begins, by which a file that may be replaced is known.
  std::string (*beginning)();
};

/// All of them, as --format names them.
const std::vector<ExportFormat>& exportFormats();

/// Writes a recording to a file, in place of an earlier one of the same form and of no other file.
/// @throws NotWritten, std::runtime_error
void exportTo(const std::string& path, const ExportFormat& format, const Recorded& recording);

}  // namespace vorn_speaker
