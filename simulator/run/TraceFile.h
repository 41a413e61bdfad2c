#pragma once

#include <ios>

namespace vorn_speaker {

constexpr char kTraceFile[] = "/tmp/xAppLog.txt";  ///< The library's.

/// Its size; negative while there is none.
std::streamoff traceSize();

/// The library keeps quiet when it cannot write its trace, and waits for the reader of a pipe. @throws std::runtime_error
void refuseTraceThatCannotBeWritten();

/// Has the library's trace file not be written: a folder takes its place, and the file is put aside. By one process at a
/// time. @throws std::runtime_error
void takeTraceAway();

/// Puts the file back.
void returnTrace();

/// Puts the file back that a run took away and, since it ended early, did not return; says so on standard error. Whatever
/// else is in the way stays as it is.
void returnTraceLeftAway();

}  // namespace vorn_speaker
