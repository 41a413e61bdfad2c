#include "Output.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace vorn_capture {

namespace {

constexpr std::uint64_t kPage = 4096;
constexpr std::size_t kEnough = std::size_t{64} << 10;
constexpr char kBegin[] = "{\"recording\":\"vorn-speaker\"";
constexpr int kMostNames = 100;

std::string because(const std::string& path) { return path + ": " + std::strerror(errno); }

}  // namespace

void OwnFile::hold(int file, const std::string& path) {
  release();
  m_path = path;
  m_file = file;
  // The lowest number that is free is the program's to expect, and what it opens next does not come up there.
  for (int high = 960; high > 30; high /= 2) {
    const int moved = fcntl(file, F_DUPFD_CLOEXEC, high);
    if (moved < 0) continue;
    close(file);
    m_file = moved;
    break;
  }
  struct stat status {};
  fstat(m_file, &status);
  m_device = status.st_dev;
  m_number = status.st_ino;
}

bool OwnFile::isOurs(int file) const {
  struct stat status {};
  return fstat(file, &status) == 0 && status.st_dev == m_device && status.st_ino == m_number;
}

int OwnFile::descriptor() {
  if (isOurs(m_file)) return m_file;
  m_file = -1;  // Whatever has that number now is the program's.
  const int again = open(m_path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (again < 0) return -1;
  if (!isOurs(again)) {
    close(again);
    errno = EBADF;
    return -1;
  }
  flock(again, LOCK_EX | LOCK_NB);
  hold(again, m_path);
  return m_file;
}

void OwnFile::release() {
  if (m_file >= 0 && isOurs(m_file)) close(m_file);
  m_file = -1;
}

std::string Output::take(const std::string& path, const About& about) {
  const int file =
      ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600);
  if (file < 0) return because(path);
  struct stat status {};
  std::string wrong;
  char first[4096];
  if (fstat(file, &status) != 0) {
    wrong = because(path);
  } else if (!S_ISREG(status.st_mode) || status.st_nlink != 1 || status.st_uid != geteuid()) {
    wrong = path + ": is no plain file of yours; choose another name";
  } else if (flock(file, LOCK_EX | LOCK_NB) != 0) {
    wrong = " ";
  } else if (status.st_size > 0) {
    const ssize_t size = pread(file, first, sizeof first, 0);
    const std::string_view line(first, size > 0 ? static_cast<std::size_t>(size) : 0);
    if (line.substr(0, sizeof kBegin - 1) != kBegin)
      wrong = path + ": is there already and is no recording; choose another name";
    else if (!about.run.empty() && line.substr(0, line.find('\n')).find(about.run) != std::string_view::npos)
      wrong = " ";
  }
  if (wrong.empty() && (fchmod(file, 0600) != 0 || ftruncate(file, 0) != 0)) wrong = because(path);
  if (!wrong.empty()) {
    close(file);
    return wrong;
  }
  m_path = path;
  m_file.hold(file, path);
  m_buffer.add(m_header);
  m_buffer.add('\n');
  return "";
}

std::string Output::open(const std::string& path, const About& about, std::uint64_t keep) {
  m_keep = keep;
  m_header = about.header;
  std::string wrong = about.forked ? " " : take(path, about);
  for (int i = 1; wrong == " " && i < kMostNames; ++i)
    wrong = take(path + "." + std::to_string(getpid()) + (i > 1 ? "." + std::to_string(i) : ""), about);
  if (wrong == " ") wrong = path + ": is being written by others";
  if (wrong.empty() && !flush(0)) wrong = because(m_path);
  return wrong;
}

void Output::add(std::string_view line, std::uint64_t calls) {
  const std::uint64_t end = m_base + m_buffer.size();
  const std::uint64_t room = kPage - end % kPage;
  const std::uint64_t needed = line.size() + 1;
  if (needed > room && needed <= kPage) {
    m_buffer.cut(m_buffer.size() - 1);
    m_buffer.fill(' ', static_cast<std::size_t>(room));
    m_buffer.add('\n');
  }
  m_buffer.add(line);
  m_buffer.add('\n');
  m_waiting += calls;
  if (m_buffer.size() > kEnough) flush(-1);
}

bool Output::write(int file, const char* bytes, std::size_t size, std::uint64_t at) {
  while (size > 0) {
    const ssize_t written = pwrite(file, bytes, size, static_cast<off_t>(at));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    at += static_cast<std::uint64_t>(written);
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

bool Output::flush(std::int64_t microseconds) {
  if (m_buffer.size() <= 1 && m_base > 0) return true;
  const int file = m_file.descriptor();
  if (file < 0 || !write(file, m_buffer.data(), m_buffer.size(), m_base)) {
    const int error = errno;
    m_lost += m_waiting;
    m_waiting = 0;
    if (m_base > 0) {
      // What is there stays whole, also where it should have been filled up.
      m_buffer.cut(1);
      m_buffer.data()[0] = '\n';
      if (file >= 0 && ftruncate(file, static_cast<off_t>(m_base + 1)) == 0)
        write(file, m_buffer.data(), 1, m_base);
    } else if (file >= 0) {
      static_cast<void>(!ftruncate(file, 0));
    }
    errno = error;
    return false;
  }
  m_calls += m_waiting;
  m_waiting = 0;
  m_base += m_buffer.size() - 1;
  m_buffer.data()[0] = '\n';
  m_buffer.cut(1);
  if (m_keep == 0) return true;
  const std::uint64_t apart = m_keep / (m_marks.size() - 4);
  if (m_markCount < m_marks.size() &&
      (m_markCount == 0 || m_base + 1 - m_marks[m_markCount - 1].offset >= apart))
    m_marks[m_markCount++] = {m_base + 1, m_calls};
  if (m_base + 1 > m_keep) shorten(file, microseconds);
  return true;
}

/// Makes a new file of the newest half, which then takes the place of this one.
void Output::shorten(int old, std::int64_t microseconds) {
  const std::uint64_t end = m_base + 1;
  const Mark* const from = std::find_if(m_marks.data(), m_marks.data() + m_markCount,
                                        [&](const Mark& mark) { return mark.offset >= end - m_keep / 2; });
  if (from == m_marks.data() + m_markCount) return;
  const Mark mark = *from;
  const std::string path = m_path + "." + std::to_string(getpid()) + ".new";
  unlink(path.c_str());
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file < 0) return;
  const std::string head = m_header + "\n{\"leftOut\":" + std::to_string(mark.calls) +
                           ",\"time\":" + std::to_string(std::max<std::int64_t>(microseconds, 0)) + "}\n";
  bool copied = flock(file, LOCK_EX | LOCK_NB) == 0 && write(file, head.data(), head.size(), 0);
  std::uint64_t to = head.size();
  char part[65536];
  for (std::uint64_t at = mark.offset; copied && at < end;) {
    const ssize_t size =
        pread(old, part, static_cast<std::size_t>(std::min<std::uint64_t>(sizeof part, end - at)),
              static_cast<off_t>(at));
    copied = size > 0 && write(file, part, static_cast<std::size_t>(size), to);
    if (!copied) break;
    at += static_cast<std::uint64_t>(size);
    to += static_cast<std::uint64_t>(size);
  }
  if (!copied || rename(path.c_str(), m_path.c_str()) != 0) {
    unlink(path.c_str());
    close(file);
    return;
  }
  m_file.hold(file, m_path);
  m_base = to - 1;
  m_marks[0] = {head.size(), mark.calls};
  m_marks[1] = {to, m_calls};
  m_markCount = 2;
}

std::uint64_t Output::takeLost() {
  const std::uint64_t lost = m_lost;
  m_lost = 0;
  return lost;
}

}  // namespace vorn_capture
