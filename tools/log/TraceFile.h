#pragma once

#include <functional>
#include <string>

namespace vorn_log {

/// The bytes of a file, once or while it grows: followed by its name, through truncation, removal and replacement,
/// and waited for when it is not there yet.
class TraceFile {
 public:
  /// `say` is told what happens to a followed file.
  TraceFile(std::string path, bool follow, std::function<void(const std::string&)> say);
  ~TraceFile();

  TraceFile(const TraceFile&) = delete;
  TraceFile& operator=(const TraceFile&) = delete;

  enum class Event {
    kBytes,      ///< Some were read.
    kEndForNow,  ///< Nothing more for now; a followed file may grow.
    kEnd,        ///< There is no more in this file: its end, or another took its place.
  };

  /// Reads on. At the end for now it first waits a moment, which a signal cuts short.
  /// @throws std::runtime_error  Names the file, what is wrong and the remedy.
  Event read(std::string& bytes);

 private:
  bool open();
  bool replaced();
  void close();

  const std::string m_path;
  const bool m_follow;
  const std::function<void(const std::string&)> m_say;
  std::string m_news;  ///< Told when all that was read before it has been shown.
  int m_file = -1;
  bool m_regular = false;
  bool m_pipe = false;
  bool m_waiting = false;  ///< For a file that is not there.
  long long m_at = 0;
};

}  // namespace vorn_log
