#include "WaveFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace vorn_capture {

namespace {

constexpr std::uint32_t kRate = 16000;  // What the assistant side is delivered.

struct WaveHead {
  char riff[4] = {'R', 'I', 'F', 'F'};
  std::uint32_t size = 0;
  char wave[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
  std::uint32_t formatSize = 16;
  std::uint16_t format = 1, channels = 1;
  std::uint32_t rate = kRate, bytesASecond = 2 * kRate;
  std::uint16_t bytesASample = 2, bits = 16;
  char data[4] = {'d', 'a', 't', 'a'};
  std::uint32_t bytes = 0;
};

/// What a head can tell of.
constexpr std::uint32_t kMost = UINT32_MAX - (sizeof(WaveHead) - 8);

}  // namespace

bool WaveFile::create(const std::string& path) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file < 0) return false;
  m_file.hold(file, path);
  return head();
}

void WaveFile::add(const char* samples, std::size_t bytes) {
  if (m_error != 0) return;
  if (bytes > kMost - m_bytes) {
    m_error = EFBIG;
    return;
  }
  errno = ENOSPC;  // unless it says otherwise of what it did not take
  if (::pwrite(m_file.descriptor(), samples, bytes, static_cast<off_t>(sizeof(WaveHead) + m_bytes)) ==
      static_cast<ssize_t>(bytes)) {
    m_bytes += static_cast<std::uint32_t>(bytes);
  } else {
    m_error = errno;
  }
  m_changed = true;
}

bool WaveFile::finish() {
  if (m_changed && !head() && m_error == 0) m_error = errno;
  m_changed = false;
  errno = m_error;
  return m_error == 0;
}

bool WaveFile::head() {
  WaveHead made;
  made.size = m_bytes + static_cast<std::uint32_t>(sizeof made) - 8;
  made.bytes = m_bytes;
  return pwrite(m_file.descriptor(), &made, sizeof made, 0) == static_cast<ssize_t>(sizeof made);
}

}  // namespace vorn_capture
