#pragma once

#include <string>
#include <utility>

#include "FileLogger.h"

namespace VornDeviceAbstractionLayer::internal {

/// Writes one line to the library's trace.
///
/// Callers pass literal texts, never a signature that the compiler prints: those differ between compilers,
/// their versions and string ABIs, and the lines must not.
inline void trace(std::string line) { FileLogger::getInstance()->logMessage(std::move(line)); }

/// The same for a line that is a literal: its length is known, and the text is built where the logger takes it.
template <std::size_t Size>
void trace(const char (&line)[Size]) {
  FileLogger::getInstance()->logMessage(std::string(line, Size - 1));
}

}  // namespace VornDeviceAbstractionLayer::internal
