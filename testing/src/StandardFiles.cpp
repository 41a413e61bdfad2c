#include "vorn_testing/StandardFiles.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace vorn_testing {

void prepareStandardFiles() {
  // The lowest free number is given first.
  int opened = -1;
  do opened = open("/dev/null", O_RDONLY);
  while (opened >= 0 && opened <= STDERR_FILENO);
  if (opened >= 0) close(opened);
  signal(SIGXFSZ, SIG_IGN);
}

bool standardOutputArrived(const char* program) {
  std::cout.flush();
  // Both at once: a failure of one must not keep the other from being written out.
  const bool flushed = std::fflush(stdout) == 0;
  if (std::cout.good() && flushed && std::ferror(stdout) == 0) return true;
  const int flags = fcntl(STDOUT_FILENO, F_GETFL);
  const bool open = flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
  std::cerr << program << ": standard output could not be written; "
            << (open ? "is the disk full?" : "it is closed") << '\n';
  return false;
}

bool standardOutputIsColoured(const std::string& when) {
  const char* const plain = std::getenv("NO_COLOR");
  return when == "always" || (when == "auto" && isatty(STDOUT_FILENO) == 1 && (!plain || !*plain));
}

}  // namespace vorn_testing
