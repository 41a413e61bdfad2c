#include "TraceFile.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace vorn_log {

namespace {

constexpr int kMomentMs = 100;
constexpr std::size_t kBlock = 1 << 16;

}  // namespace

TraceFile::TraceFile(std::string path, bool follow, std::function<void(const std::string&)> say)
    : m_path(std::move(path)), m_follow(follow), m_say(std::move(say)) {}

TraceFile::~TraceFile() { close(); }

void TraceFile::close() {
  if (m_file >= 0) ::close(m_file);
  m_file = -1;
}

bool TraceFile::open() {
  // Without waiting for a writer, should it be a named pipe.
  m_file = ::open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (m_file < 0 && m_follow && errno == ENOENT) {
    if (!std::exchange(m_waiting, true)) m_say(m_path + " is not there; waiting for it");
    return false;
  }
  const std::string hint =
      "; is the trace on (FileLogger::CreateInstance(true)), or is it another file? --follow waits for one";
  if (m_file < 0) throw std::runtime_error(m_path + " cannot be read: " + std::strerror(errno) + hint);
  struct stat status {};
  fstat(m_file, &status);
  if (S_ISDIR(status.st_mode))
    throw std::runtime_error(m_path + " cannot be read: it is a folder; name a file");
  m_regular = S_ISREG(status.st_mode);
  // By its own name: what a shell hands over may be empty.
  m_pipe = lstat(m_path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
  m_at = 0;
  if (std::exchange(m_waiting, false)) m_say(m_path + " is there now");
  return true;
}

/// Whether the name leads to another file now, or this one lost what was read: it is then read from its beginning.
bool TraceFile::replaced() {
  struct stat ours {};
  struct stat named {};
  fstat(m_file, &ours);
  if (ours.st_size > m_at) return false;  // First the rest of this one.
  if (stat(m_path.c_str(), &named) != 0) {
    // What has it open may go on writing; a new file of that name is waited for.
    if (!std::exchange(m_waiting, true)) m_news = m_path + " was removed or renamed; waiting for a new one";
    return false;
  }
  if (ours.st_ino != named.st_ino || ours.st_dev != named.st_dev) {
    if (!m_waiting) m_news = m_path + " was replaced; reading the new file";
    close();
    return true;
  }
  if (ours.st_size >= m_at) return false;
  m_news = m_path + " was cut short; reading it from the beginning";
  lseek(m_file, 0, SEEK_SET);
  m_at = 0;
  return true;
}

TraceFile::Event TraceFile::read(std::string& bytes) {
  if (!m_news.empty()) m_say(std::exchange(m_news, std::string()));
  if (m_file < 0 && !open()) {
    poll(nullptr, 0, kMomentMs);
    return Event::kEndForNow;
  }
  bytes.resize(kBlock);
  const ssize_t count = ::read(m_file, &bytes[0], kBlock);
  const int error = errno;
  bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  if (count > 0) {
    m_at += count;
    return Event::kBytes;
  }
  if (count < 0 && error != EAGAIN && error != EINTR)
    throw std::runtime_error(m_path + " cannot be read on: " + std::strerror(error));
  if (count < 0) {  // A pipe whose writer is silent.
    pollfd more{m_file, POLLIN, 0};
    poll(&more, 1, kMomentMs);
    return Event::kEndForNow;
  }
  if (!m_follow && m_at == 0 && m_pipe)
    throw std::runtime_error(m_path +
                             " cannot be read: it is a pipe that nobody writes to; --follow waits for one");
  if (!m_follow) return Event::kEnd;
  if (m_regular && replaced()) return Event::kEnd;
  poll(nullptr, 0, kMomentMs);
  return Event::kEndForNow;
}

}  // namespace vorn_log
