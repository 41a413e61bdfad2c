#pragma once

#include <string>

namespace vorn_testing {

/// One record of the library's trace, taken apart.
struct TraceLine {
  std::string text;       ///< The message, without the " Time: " in front; may hold line feeds.
  std::string adapter;    ///< The class that wrote it, "VornAudioIn"; "?" when the line is not the library's.
  std::string operation;  ///< Its operation, "sendAudioData"; the class's own name for a constructor.
  std::string meaning;    ///< What the line says, in words.

  /// Takes a message apart. Never fails: what is not known becomes adapter "?".
  static TraceLine parse(const std::string& text);

  /// The message with access tokens and play context tokens replaced by "****".
  static std::string masked(const std::string& text);

  /// The message with its numbers replaced by "#": lines that differ in them only are alike.
  static std::string shape(const std::string& text);
};

}  // namespace vorn_testing
