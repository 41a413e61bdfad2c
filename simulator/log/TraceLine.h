#pragma once

#include <string>

namespace vorn_log {

/// One record of the library's trace, taken apart.
struct TraceLine {
  std::string text;       ///< The message, without the " Time: " in front; may hold line feeds.
  std::string adapter;    ///< The class that wrote it, "VornAudioIn"; "?" when the line is not the library's.
  std::string operation;  ///< Its operation, "sendAudioData"; the class's own name for a constructor.
  std::string meaning;    ///< What the line says, in words.
};

/// Takes a message apart. Never fails: what is not known becomes adapter "?".
TraceLine parse(const std::string& text);

/// Returns the message with access tokens and play context tokens replaced by "****".
std::string masked(const std::string& text);

/// Returns the message with its numbers replaced by "#": lines that differ in them only are alike.
std::string shape(const std::string& text);

}  // namespace vorn_log
