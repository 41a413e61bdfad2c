#include "vorn_testing/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <locale>
#include <streambuf>

#include "vorn_testing/Text.h"

namespace vorn_testing {

/// Writes to a descriptor, and keeps the reason of the first failure.
class WholeFile::Bytes : public std::streambuf {
 public:
  explicit Bytes(int descriptor) : m_descriptor(descriptor) {
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
  }
  ~Bytes() override { close(); }

  int error() const { return m_error; }

  bool close() {
    if (m_descriptor < 0) return m_error == 0;
    sync();
    if (::close(m_descriptor) != 0) failed();
    m_descriptor = -1;
    return m_error == 0;
  }

 protected:
  int_type overflow(int_type byte) override {
    if (sync() != 0) return traits_type::eof();
    if (!traits_type::eq_int_type(byte, traits_type::eof())) sputc(traits_type::to_char_type(byte));
    return traits_type::not_eof(byte);
  }

  int sync() override {
    const char* at = pbase();
    while (at < pptr() && m_error == 0) {
      const ssize_t written = ::write(m_descriptor, at, static_cast<std::size_t>(pptr() - at));
      if (written >= 0) {
        at += written;
      } else if (errno != EINTR) {
        failed();
      }
    }
    setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
    return m_error == 0 ? 0 : -1;
  }

 private:
  void failed() {
    if (m_error == 0) m_error = errno;
  }

  int m_descriptor;
  int m_error = 0;
  std::array<char, 1 << 14> m_buffer;
};

void refuseToReplace(const std::string& path, const std::string& problem, std::size_t size,
                     const std::function<bool(const std::string& first)>& ours) {
  struct stat there {};
  if (::stat(path.c_str(), &there) != 0 || (!S_ISREG(there.st_mode) && !S_ISDIR(there.st_mode))) return;
  if (S_ISREG(there.st_mode) && there.st_size == 0) return;
  std::ifstream file(path, std::ios::binary);
  std::string first(size, '\0');
  file.read(&first[0], static_cast<std::streamsize>(first.size()));
  first.resize(static_cast<std::size_t>(file.gcount()));
  if (S_ISDIR(there.st_mode) || !ours(first))
    throw std::runtime_error(oneLine(path) + " is there already and " + problem + "; choose another name");
}

WholeFile::WholeFile(const std::string& path, unsigned mode) : m_path(path), m_target(path) {
  if (char* const real = ::realpath(path.c_str(), nullptr)) {
    m_target = real;
    std::free(real);
  }
  struct stat there {};
  const bool exists = ::stat(m_target.c_str(), &there) == 0;
  int descriptor = -1;
  if (exists && S_ISREG(there.st_mode)) {
    const std::string aside = ".XXXXXX";
    // Its name may be as long as a name can be.
    m_made = m_target.substr(0, m_target.rfind('/') + 1 + NAME_MAX - aside.size()) + aside;
    descriptor = ::mkostemp(&m_made[0], O_CLOEXEC);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (descriptor >= 0) ::fchmod(descriptor, mode & ~mask);
  } else {
    // Without waiting for a reader, should it be a pipe.
    const int flags = O_WRONLY | O_CLOEXEC | (exists ? O_NONBLOCK : O_CREAT | O_EXCL);
    descriptor = ::open(m_target.c_str(), flags, mode);
    if (descriptor < 0 && errno == ENXIO)
      throw NotWritten(m_path + " cannot be written: it is a pipe or a socket that nobody reads");
    struct stat link {};
    if (descriptor < 0 && errno == EEXIST && ::lstat(m_target.c_str(), &link) == 0 && S_ISLNK(link.st_mode))
      throw NotWritten(
          m_path +
          " cannot be written: it is a link to a file that is not there; make that file, or remove the link");
    if (descriptor >= 0 && exists) ::fcntl(descriptor, F_SETFL, 0);
    if (!exists) m_made = m_target;
  }
  if (descriptor < 0) fail(errno);
  m_bytes = std::make_unique<Bytes>(descriptor);
  m_stream = std::make_unique<std::ostream>(m_bytes.get());
  m_stream->imbue(std::locale::classic());
}

WholeFile::~WholeFile() {
  if (!m_made.empty()) ::unlink(m_made.c_str());
}

void WholeFile::finish() {
  const bool aside = m_made != m_target;
  if (!aside) m_made.clear();  // What could be written of a new file is kept.
  if (!m_bytes->close()) fail(m_bytes->error());
  if (aside && !m_made.empty() && ::rename(m_made.c_str(), m_target.c_str()) != 0) fail(errno);
  m_made.clear();
}

void WholeFile::fail(int error) const {
  throw NotWritten(m_path + " cannot be written: " + std::strerror(error));
}

}  // namespace vorn_testing
