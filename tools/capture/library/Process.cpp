// What makes the thread that writes: the environment, a fork, a signal, the end of the process.

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>

#include "../Settings.h"
#include "Calls.h"
#include "Writer.h"

namespace vorn_capture {

namespace {

constexpr int kCrashes[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
/// Milliseconds that the end of a process waits for a writer that does nothing.
constexpr int kLongestWait = 1000;

struct sigaction former[NSIG];

/// How long the writer has worked; a disk that hangs is no work.
std::int64_t writersWork() {
  const int id = course.writerId;
  timespec time{};
  // The processor's clock of another thread, as the system numbers them.
  if (id) clock_gettime(static_cast<clockid_t>((~static_cast<unsigned>(id) << 3U) | 6U), &time);
  return time.tv_sec * std::int64_t{1000000000} + time.tv_nsec;
}

/// Waits until all that is there has been written.
void flush() {
  if (!course.started || syscall(SYS_gettid) == course.writerId) return;
  const std::uint32_t wanted = course.asked.fetch_add(1) + 1;
  wakeWriter();
  std::int64_t work = 0;
  for (int i = 0; i < kLongestWait && !course.hasFailed &&
                  static_cast<std::int32_t>(course.answered.load() - wanted) < 0;
       ++i) {
    const timespec moment = {0, 1000000};
    nanosleep(&moment, nullptr);
    const std::int64_t more = writersWork();
    if (more != work) i = 0;
    work = more;
  }
}

void onCrash(int signal, siginfo_t* info, void*) {
  const int error = errno;
  course.crash = signal;
  flush();
  sigaction(signal, &former[signal], nullptr);
  errno = error;
  // A fault happens again on return; what was sent is sent again.
  if (info->si_code <= 0) syscall(SYS_tgkill, getpid(), syscall(SYS_gettid), signal);
}

void onToggle(int) { state.recording = !state.recording; }

void handle(int signal, void (*simple)(int), void (*informed)(int, siginfo_t*, void*)) {
  struct sigaction action = {};
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  if (informed) {
    action.sa_sigaction = informed;
    action.sa_flags |= SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  } else {
    action.sa_handler = simple;
  }
  sigaction(signal, &action, &former[signal]);
}

void onFork() {
  if (!course.request) return;
  releaseFiles();
  course.forkedFrom = getppid();
  course.writerId = 0;
  course.started = false;
  course.asked = course.answered = 0;
  course.hasFailed = false;
  state.wake = 0;
  state.keepsSamples = false;
  forgetThreads();
}

const char* asks(const char* name) {
  const char* const value = std::getenv(name);
  return value && *value ? value : nullptr;
}

/// Whether the environment asks for what can be done, as vorn-capture has made sure.
template <class Read>
bool isFit(Read read, const char* name, const char* expected) {
  const char* const value = asks(name);
  if (!value || read(value)) return true;
  complain(std::string(name) + "=" + value + expected + "; nothing is recorded");
  return false;
}

}  // namespace

void startWriter() {
  if (course.started.exchange(true)) return;
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  pthread_t thread;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  if (pthread_create(&thread, &attributes, writeAll, nullptr) != 0) {
    complain("no thread can be made; nothing is recorded");
    state.recording = false;
    course.hasFailed = true;
  }
  pthread_attr_destroy(&attributes);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

namespace {

void end();

void begin() {
  wrap();
  const char* const path = asks("VORN_CAPTURE");
  if (!path || !isFit(sizeOf, "VORN_CAPTURE_KEEP", kSizeExpected) ||
      !isFit(sizeOf, "VORN_CAPTURE_RING", kSizeExpected) ||
      !isFit(signalOf, "VORN_CAPTURE_TOGGLE", kSignalExpected))
    return;
  course.request = new Request;
  course.request->path = path;
  char folder[PATH_MAX];
  if (path[0] != '/' && getcwd(folder, sizeof folder))
    course.request->path = std::string(folder) + "/" + path;
  if (const char* const audio = asks("VORN_CAPTURE_AUDIO")) course.request->audio = audio;
  state.keepsSamples = !course.request->audio.empty();
  if (const char* const keep = asks("VORN_CAPTURE_KEEP")) course.request->keep = sizeOf(keep);
  if (const char* const run = asks("VORN_CAPTURE_RUN")) course.request->run = run;
  course.request->program = program_invocation_name;
  course.startTime = now();
  if (const char* const toggle = asks("VORN_CAPTURE_TOGGLE")) handle(signalOf(toggle), onToggle, nullptr);
  for (const int signal : kCrashes) handle(signal, nullptr, onCrash);
  pthread_atfork(nullptr, nullptr, onFork);
  at_quick_exit(end);
  course.request->paused = asks("VORN_CAPTURE_PAUSED");
  state.recording = !course.request->paused;
  // Where the library is not there yet, and in a shell that only starts the program, no file is made before the first call.
  if (dlsym(RTLD_NEXT, "_ZN26VornDeviceAbstractionLayer10FileLogger8ShutdownEv")) startWriter();
}

/// Whether it is the program that vorn-capture became, and none that this one started has recorded in its place.
bool isAlone() {
  if (course.request->run.compare(0, course.request->run.find('.'), std::to_string(getpid())) != 0)
    return false;
  char first[4096];
  const int file = course.started
                       ? -1
                       : open(course.request->path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  const ssize_t size = file < 0 ? 0 : read(file, first, sizeof first);
  if (file >= 0) close(file);
  return std::string(first, size > 0 ? static_cast<std::size_t>(size) : 0).find(course.request->run) ==
         std::string::npos;
}

/// Of the process.
__attribute__((destructor)) void end() {
  if (!course.request) return;
  course.ending = true;
  flush();
  if (state.threadCount == 0 && !course.hasFailed && isAlone())
    complain(std::string("nothing is recorded: the program made no call of libVornDALImpl.so") +
             (course.request->paused ? " while it was recorded" : ""));
}

}  // namespace

}  // namespace vorn_capture

/// Called by the first stub that is called, or on loading.
extern "C" [[gnu::visibility("hidden")]] __attribute__((constructor)) void vornCapturePrepare() {
  static const bool once = (vorn_capture::begin(), true);
  static_cast<void>(once);
}
