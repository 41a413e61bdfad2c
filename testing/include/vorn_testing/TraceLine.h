#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace vorn_testing {

/// One record of the library's trace, taken apart.
struct TraceLine {
  std::string text;       ///< The message, without the " Time: " in front; may hold line feeds.
  std::string adapter;    ///< The class that wrote it, "VornAudioIn"; "?" when the line is not the library's.
  std::string operation;  ///< Its operation, "sendAudioData"; the class's own name for a constructor.
  std::string meaning;    ///< What the line says, in words.

  /// Takes a message apart. Never fails: what is not known becomes adapter "?".
  static TraceLine parse(const std::string& text);

  /// The message with its secrets masked. Fails closed: what no line of the library looks like is masked whole, and
  /// of a line that was cut or ran into the next everything that may be part of a token.
  static std::string masked(const std::string& text);

  /// The message with its numbers replaced by "#": lines that differ in them only are alike.
  static std::string shape(const std::string& text);
};

/// Cuts a trace into records: a line that begins with " Time: " begins one, other lines go on with it.
std::vector<std::string> traceRecords(std::istream& trace);

}  // namespace vorn_testing
