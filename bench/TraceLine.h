#pragma once

#include <FileLogger.h>
#include <fcntl.h>
#include <unistd.h>

#include <stdexcept>
#include <string>

/// A line of the trace: what the library does for it, and what cannot be done without. Turns the trace on while it
/// lives. The programs that use it are started with a /tmp of their own, where the trace's file is.
class TraceLine {
 public:
  explicit TraceLine(std::size_t length) : m_message(length, 'x'), m_line(" Time: " + m_message + "\n") {
    VornDeviceAbstractionLayer::FileLogger::Shutdown();
    VornDeviceAbstractionLayer::FileLogger::CreateInstance(true);
  }

  ~TraceLine() { VornDeviceAbstractionLayer::FileLogger::Shutdown(); }

  TraceLine(const TraceLine&) = delete;
  TraceLine& operator=(const TraceLine&) = delete;

  /// What the trace holds before: `size` bytes, a hole that takes no room on the disk.
  static void history(off_t size) {
    const int file = ::open(kPath, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0 || ::ftruncate(file, size) != 0)
      throw std::runtime_error("/tmp/xAppLog.txt: cannot be written");
    ::close(file);
  }

  void bare() const {
    const int file = ::open(kPath, O_WRONLY | O_CREAT | O_APPEND, 0666);
    const bool whole = ::write(file, m_line.data(), m_line.size()) == static_cast<ssize_t>(m_line.size());
    if (::close(file) != 0 || !whole) throw std::runtime_error("/tmp/xAppLog.txt: cannot be written");
  }

  void library() const { VornDeviceAbstractionLayer::FileLogger::getInstance()->logMessage(m_message); }

 private:
  static constexpr char kPath[] = "/tmp/xAppLog.txt";

  std::string m_message;
  std::string m_line;
};
