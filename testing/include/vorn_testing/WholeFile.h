#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>

namespace vorn_testing {

/// A file could not be written whole; what() names it and the reason.
class NotWritten : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws unless nothing stands at the path, or an empty file, or what is no file at all, such as a pipe, or a file whose
/// first `size` bytes are `ours`. `problem` says what is wrong otherwise: "is no recording".
/// @throws std::runtime_error
void refuseToReplace(const std::string& path, const std::string& problem, std::size_t size,
                     const std::function<bool(const std::string& first)>& ours);

/// A file that appears whole where it takes the place of another: it is written aside and renamed. What is no regular file,
/// such as a pipe or a device, is written as it is.
class WholeFile {
 public:
  /// `mode` is the file's, as open() takes it; by default only its owner may read it.
  /// @throws NotWritten
  explicit WholeFile(const std::string& path, unsigned mode = 0600);

  /// Removes what it made and never finished.
  ~WholeFile();

  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  std::ostream& stream() { return *m_stream; }

  /// Every byte is on its way to the disk, and the file in its place. @throws NotWritten
  void finish();

 private:
  class Bytes;

  [[noreturn]] void fail(int error) const;

  const std::string m_path;
  std::string m_target;  ///< Behind links.
  std::string m_made;    ///< Aside, where another is replaced; empty when nothing had to be made.
  std::unique_ptr<Bytes> m_bytes;
  std::unique_ptr<std::ostream> m_stream;
};

}  // namespace vorn_testing
