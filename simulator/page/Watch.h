#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "Stream.h"
#include "calls/Crossings.h"

namespace vorn_speaker {

/// Follows a recording that may still grow, and tells its lines, secrets masked.
class Watch {
 public:
  /// @throws std::runtime_error  Names the file and why it is no recording.
  Watch(const std::string& path, bool secrets, Stream& stream);
  ~Watch();

  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

 private:
  void begin();
  void run();

  /// What was added, or all of it when it is another file by now.
  void read();
  void tell(const std::string& line);

  const std::string m_path;
  const bool m_secrets;
  Stream& m_stream;
  Masker m_masker;
  int m_file = -1;
  unsigned long long m_inode = 0;
  long long m_at = 0;
  std::string m_begun;  ///< A line that is not whole yet.
  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_ending = false;
  std::thread m_thread;
};

}  // namespace vorn_speaker
