#include "Files.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

namespace vorn_speaker {

std::string readWhole(const std::string& path, std::size_t most) {
  const auto refuse = [&](const std::string& reason) {
    throw std::runtime_error(path + ": cannot be read: " + reason);
  };
  struct Closed {
    int file;
    ~Closed() { close(file); }
  };
  // Without waiting for a writer, should it be a pipe.
  const Closed opened{open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
  if (opened.file < 0) refuse(std::strerror(errno));
  std::string all;
  char part[1 << 16];
  for (;;) {
    const ssize_t count = read(opened.file, part, sizeof part);
    if (count == 0) {
      struct stat status {};
      if (all.empty() && fstat(opened.file, &status) == 0 && S_ISFIFO(status.st_mode))
        refuse("it is a pipe that nobody writes to");
      return all;
    }
    if (count > 0) {
      all.append(part, static_cast<std::size_t>(count));
      if (all.size() > most) refuse("it holds more than " + std::to_string(most) + " bytes");
    } else if (errno == EAGAIN) {
      pollfd more{opened.file, POLLIN, 0};
      poll(&more, 1, -1);
    } else if (errno != EINTR) {
      refuse(std::strerror(errno));
    }
  }
}

void refuseUnlessFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return;
  throw std::runtime_error(path + ": is " +
                           (S_ISDIR(status.st_mode)    ? "a folder"
                            : S_ISFIFO(status.st_mode) ? "a pipe"
                                                       : "a device or a socket") +
                           "; name a file");
}

bool sameFile(const std::string& one, const std::string& other) {
  std::error_code error;
  return std::filesystem::equivalent(one, other, error) && !error;
}

}  // namespace vorn_speaker
