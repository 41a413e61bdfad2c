#pragma once

#include <dirent.h>
#include <execinfo.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <ctime>

/// Turns a process that stands still into a failure that shows where each of its threads stands.
namespace watchdog {

namespace detail {

inline volatile sig_atomic_t g_shown;

inline void show(int) {
  void* frames[48];
  const int depth = backtrace(frames, 48);
  backtrace_symbols_fd(frames, depth, STDERR_FILENO);
  const char end[] = "--\n";
  static_cast<void>(!::write(STDERR_FILENO, end, sizeof end - 1));
  g_shown = g_shown + 1;
}

inline void showAllAndEnd(int) {
  const char title[] = "watchdog: deadlock; the stack of each thread:\n";
  static_cast<void>(!::write(STDERR_FILENO, title, sizeof title - 1));
  if (DIR* const tasks = opendir("/proc/self/task")) {
    while (const dirent* const task = readdir(tasks)) {
      const int thread = std::atoi(task->d_name);
      if (!thread) continue;
      const sig_atomic_t before = g_shown;
      if (thread == syscall(SYS_gettid))
        show(0);
      else
        syscall(SYS_tgkill, getpid(), thread, SIGUSR2);
      const timespec moment{0, 10'000'000};
      for (int tries = 0; g_shown == before && tries < 100; ++tries) nanosleep(&moment, nullptr);
    }
  }
  _exit(97);
}

}  // namespace detail

/// Ends the process with 97, stacks first, unless called again within `seconds`. VORN_WATCHDOG shortens it.
/// Children inherit no alarm: each sets its own.
inline void feed(unsigned seconds = 300) {
  void* frame[1];
  backtrace(frame, 1);  // Loads what it needs now, not in the handler.
  struct sigaction action {};
  action.sa_handler = detail::show;
  sigaction(SIGUSR2, &action, nullptr);
  action.sa_handler = detail::showAllAndEnd;
  sigaction(SIGALRM, &action, nullptr);
  const char* const shorter = std::getenv("VORN_WATCHDOG");
  alarm(shorter ? static_cast<unsigned>(std::atoi(shorter)) : seconds);
}

}  // namespace watchdog
