// Everything here may run inside a signal handler of a process that is past help: no locks, no streams.

#include "Postmortem.h"

#include <dirent.h>
#include <execinfo.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "calls/Crossings.h"

namespace vorn_speaker {

namespace {

constexpr int kTell = SIGUSR2;
constexpr int kFatal[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

sem_t g_told;

void say(const char* text) {
  if (write(STDERR_FILENO, text, std::strlen(text)) < 0) return;
}

/// This thread's name, the operation that it is inside, and its stack.
void tellThisThread() {
  say("\nThread ");
  say(threadName());
  if (const Crossing* const call = openCall()) {
    say(", inside ");
    say(call->adapter.c_str());
    say(".");
    say(call->operation.c_str());
  }
  say("\n");
  void* frames[48];
  backtrace_symbols_fd(frames, backtrace(frames, 48), STDERR_FILENO);
}

void tellOnSignal(int) {
  const int before = errno;
  tellThisThread();
  sem_post(&g_told);
  errno = before;
}

/// Asks every other thread in turn; one that cannot answer within a second is passed over.
void tellOtherThreads() {
  DIR* const threads = opendir("/proc/self/task");
  if (!threads) return;
  while (const dirent* const entry = readdir(threads)) {
    const long thread = std::atol(entry->d_name);
    if (thread == 0 || thread == syscall(SYS_gettid)) continue;
    if (syscall(SYS_tgkill, getpid(), thread, kTell) != 0) continue;
    timespec limit{};
    clock_gettime(CLOCK_REALTIME, &limit);
    ++limit.tv_sec;
    while (sem_timedwait(&g_told, &limit) != 0 && errno == EINTR) {
    }
  }
  closedir(threads);
}

void crashed(int signal) {
  say("\nThe host crashed: ");
  say(sigdescr_np(signal));
  say("\n");
  tellThisThread();
  tellOtherThreads();
  _exit(kHostFailed);
}

void handle(int signal, void (*handler)(int), int flags) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(signal, &action, nullptr);
}

}  // namespace

void tellCrashes() {
  void* frame = nullptr;
  backtrace(&frame, 1);  // loads what it needs while that still can be loaded
  sem_init(&g_told, 0, 0);
  handle(kTell, tellOnSignal, SA_RESTART);
  for (const int signal : kFatal) handle(signal, crashed, static_cast<int>(SA_RESETHAND));
}

void giveUp(const std::string& what) {
  say("\n");
  say(what.c_str());
  say("\n");
  tellOtherThreads();
  _exit(kHostFailed);
}

}  // namespace vorn_speaker
