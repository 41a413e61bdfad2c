#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

/// The library's own trace: one line per notable event, appended to "/tmp/xAppLog.txt".
///
/// Off unless the firmware switches it on before anything else: the first CreateInstance() or
/// getInstance() decides until Shutdown(). What the lines reveal (an access token among them) stands in
/// SECURITY.md.
class VORN_DAL_API FileLogger {
 public:
  /// Creates the logger, writing or not as `enable` says, or returns the live one with its own flag.
  ///
  /// @returns  The logger; an empty pointer when there was no memory, which is told on standard error
  ///           as "FileLogger initialization failed due to an exception."
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<FileLogger> CreateInstance(bool enable);

  /// Finds the logger, creating one that writes nothing when there is none.
  ///
  /// @returns  Never empty.
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<FileLogger> getInstance();

  /// Drops the library's reference; without a logger it does nothing. Copies handed out write on.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance().
  explicit FileLogger(bool enable);

  FileLogger(const FileLogger&) = delete;
  FileLogger& operator=(const FileLogger&) = delete;

  /// Appends " Time: ", the message as it is and a line feed, in one write. The file is opened for every
  /// line; when it cannot be, the line is dropped and the next one tries again.
  ///
  /// @throws   std::bad_alloc, or std::system_error when the mutex could not be locked.
  /// @locked   When enabled, the writing included. A disabled logger returns at once.
  void logMessage(std::string message);

 private:
  const bool m_enabled;

  static std::shared_ptr<FileLogger> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
