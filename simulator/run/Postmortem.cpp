// Everything here may run inside a signal handler of a process that is past help: no locks, no streams.

#include "Postmortem.h"

#include <dirent.h>
#include <fcntl.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <vorn_testing/Stack.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>

#include "HostProcess.h"
#include "calls/Crossings.h"
#include "text/Lines.h"
#include "text/Secrets.h"

namespace vorn_speaker {

using vorn_testing::Stack;

namespace {

constexpr int kTell = SIGUSR2;
constexpr int kFatal[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS};
constexpr std::size_t kStack = std::size_t{128} << 10;

sem_t g_told;
std::atomic<int> g_ending{0};

void say(const char* text) {
  if (tellAbove(text)) return;
  if (write(STDERR_FILENO, text, std::strlen(text)) < 0) return;
}

/// A text of a host's or a user's, without what a terminal would obey.
void sayHarmless(const char* text) {
  for (char part[128]; *text; say(part)) {
    std::size_t size = 0;
    for (; *text && size + 1 < sizeof part; ++text) {
      const bool obeyed = (static_cast<unsigned char>(*text) < ' ' && *text != '\n') || *text == '\x7f';
      part[size++] = obeyed ? '?' : *text;
    }
    part[size] = '\0';
  }
}

/// Only the first thread that is past help tells; the others answer when it asks them, until the process has ended.
void tellAlone() {
  static std::atomic<long> teller{0};
  const long self = syscall(SYS_gettid);
  long none = 0;
  if (teller.compare_exchange_strong(none, self)) return;
  if (none == self) _exit(kHostFailed);  // past help a second time, while it told
  for (;;) pause();
}

/// This thread's name, the operation that it is inside, and its stack.
void tellThisThread() {
  say("\nThread ");
  say(threadName());
  if (const Crossing* const call = openCall()) {
    say(", inside ");
    sayHarmless(call->adapter.c_str());
    say(".");
    sayHarmless(call->operation.c_str());
  }
  say("\n");
  char frames[8192];
  Stack::here().spell(frames, sizeof frames, 2);
  say(frames);
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
  tellAlone();
  say("\nThe host crashed");
  say(hostPhase());
  say(": ");
  say(sigdescr_np(signal));
  say("\n");
  tellThisThread();
  tellOtherThreads();
  hostTold();
  _exit(kHostFailed);
}

/// The parent has waited for too long; see HostProcess.h.
void overdue(int) {
  tellAlone();
  say("\nThe host does not return");
  say(hostPhase());
  say(".\n");
  tellThisThread();
  tellOtherThreads();
  hostTold();
  _exit(kHostFailed);
}

/// In place of the C++ library's, which prints the text as it is. Here the thread is still its own.
[[noreturn]] void tellException() {
  if (std::current_exception()) {
    say("\nAn exception left the host: ");
    try {
      throw;
    } catch (const std::exception& error) {
      const std::string text = error.what() ? error.what() : "";
      say(isSecretText(text) ? kMask : oneLine(text).c_str());
    } catch (...) {
      say("no std::exception");
    }
    say("\n");
  }
  std::abort();
}

void handle(int signal, void (*handler)(int), int flags) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(signal, &action, nullptr);
}

}  // namespace

void tellCrashes() {
  std::set_terminate(tellException);
  Stack::here();  // loads what it needs while that still can be loaded
  sem_init(&g_told, 0, 0);
  static const SignalStack stack;
  handle(kTell, tellOnSignal, SA_RESTART | SA_ONSTACK);
  handle(kOverdue, overdue, SA_ONSTACK);
  for (const int signal : kFatal) handle(signal, crashed, static_cast<int>(SA_RESETHAND | SA_ONSTACK));
}

void giveUp(const std::string& what) {
  tellAlone();
  say("\n");
  sayHarmless(what.c_str());
  say("\n");
  tellOtherThreads();
  hostTold();
  _exit(kHostFailed);
}

SignalStack::SignalStack() : m_stack(new char[kStack]) {
  stack_t stack{};
  stack.ss_sp = m_stack.get();
  stack.ss_size = kStack;
  sigaltstack(&stack, nullptr);
}

SignalStack::~SignalStack() {
  stack_t none{};
  none.ss_flags = SS_DISABLE;
  sigaltstack(&none, nullptr);
}

namespace {

void requestEnd(int signal) {
  const int before = errno;
  if (syscall(SYS_gettid) != getpid()) {  // It is the first thread that may wait for input.
    handle(signal, requestEnd, static_cast<int>(SA_RESETHAND));
    syscall(SYS_tgkill, getpid(), getpid(), signal);
    errno = before;
    return;
  }
  g_ending = signal;
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (nothing >= 0) dup2(nothing, STDIN_FILENO);
  if (nothing > STDIN_FILENO) close(nothing);
  errno = before;
}

}  // namespace

void endGently() {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler == SIG_IGN) continue;  // as nohup wants it
    // Without SA_RESTART: what waits for input is woken, and finds its end when it tries again.
    handle(signal, requestEnd, static_cast<int>(SA_RESETHAND));
  }
}

int endRequested() { return g_ending; }

}  // namespace vorn_speaker
