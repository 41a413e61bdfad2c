#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "../Render.h"

namespace vorn_capture {

/// A file that stays what it is though the program closes descriptors that it does not know, and opens files of its own in
/// their place.
class OwnFile {
 public:
  OwnFile() = default;
  ~OwnFile() { release(); }

  OwnFile(const OwnFile&) = delete;
  OwnFile& operator=(const OwnFile&) = delete;

  /// Takes an open file over, in the place of the one before.
  void hold(int file, const std::string& path);

  /// Its descriptor, opened again where it was closed; -1 when it cannot be.
  int descriptor();

  /// Closes it, when it is still there.
  void release();

 private:
  bool isOurs(int file) const;

  std::string m_path;
  int m_file = -1;
  dev_t m_device = 0;
  ino_t m_number = 0;
};

/// The file of a recording, of which every line is whole at any moment.
///
/// When a process is killed while it writes, the system has written up to the end of a page. So no line crosses one: the
/// line before it is filled up with blanks. Only a line that is longer than a page can be cut.
class Output {
 public:
  /// What the file begins with, what tells recordings of the same run, and whether the process was forked from another
  /// that records.
  struct About {
    std::string header;
    std::string run;
    bool forked;
  };

  /// Takes the place of an earlier recording; the name gets the process's number in a forked one, and beside a file that
  /// is being written, or was in this run. Never through a link, never over another file. @returns  What went wrong, or an empty text.
  std::string open(const std::string& path, const About& about, std::uint64_t keep);

  const std::string& path() const { return m_path; }

  /// Adds a line. `calls` is how many it stands for, should it have to go.
  void add(std::string_view line, std::uint64_t calls);

  /// Writes what was added. @returns  Whether it could.
  bool flush(std::int64_t microseconds);

  /// In a forked child: leaves the file to the parent.
  void release() { m_file.release(); }

  /// How many calls could not be written, and forgets it.
  std::uint64_t takeLost();

 private:
  struct Mark {
    std::uint64_t offset = 0;
    std::uint64_t calls = 0;
  };

  std::string take(const std::string& path, const About& about);
  bool write(int file, const char* bytes, std::size_t size, std::uint64_t at);
  void shorten(int old, std::int64_t microseconds);

  OwnFile m_file;
  std::string m_path;
  std::string m_header;
  Bytes m_buffer;            ///< Begins with the last byte of the file, which may have to give way to blanks.
  std::uint64_t m_base = 0;  ///< Where the buffer's first byte stands.
  std::uint64_t m_calls = 0;  ///< That the file stands for, the buffer included.
  std::uint64_t m_waiting = 0;
  std::uint64_t m_lost = 0;
  std::uint64_t m_keep = 0;
  std::array<Mark, 64> m_marks;
  std::size_t m_markCount = 0;
};

}  // namespace vorn_capture
