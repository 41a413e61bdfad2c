// The thread that writes, and what makes it: the environment, a fork, a signal, the end.

#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <dlfcn.h>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>

#include <vorn_testing/Text.h>

#include "../Settings.h"
#include "Calls.h"
#include "Output.h"

namespace vorn_capture {

namespace {

constexpr long kPeriod = 20000000;  ///< Nanoseconds between two looks at the rings.
constexpr std::int64_t kSecond = 1000000000;
constexpr int kCrashes[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
constexpr int kLongestWait =
    1000;  ///< Milliseconds that the end of a process waits for a writer that does nothing.

/// What the environment asks for.
struct Request {
  std::string path;
  std::string audio;
  std::string program;
  std::string run;
  std::uint64_t keep = 0;
  bool paused = false;  ///< At its beginning.
};

Request* request = nullptr;
std::int64_t startTime = 0;
std::atomic<bool> started{false};
std::atomic<std::uint32_t> asked{0}, answered{0};  ///< Requests to write all that is there.
std::atomic<int> crash{0};
std::atomic<bool> ending{false};
std::atomic<bool> hasFailed{false};  ///< There is nothing to write to.
std::atomic<int> writerId{0};
pid_t forkedFrom = 0;
struct sigaction former[NSIG];

/// The sound of a second.
struct Second {
  std::int64_t from = 0;
  std::int64_t last = 0;  ///< When the last block came, also of the second before.
  std::int64_t gap = 0;
  std::uint64_t blocks = 0, samples = 0, squares = 0;
  std::uint32_t peak = 0;
};

/// A file of sound, which nothing is written over.
class WaveFile {
 public:
  bool create(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (file < 0) return false;
    m_file.hold(file, path);
    return head();
  }

  void add(const char* samples, std::size_t bytes) {
    if (m_failed) return;
    m_failed = ::pwrite(m_file.descriptor(), samples, bytes, static_cast<off_t>(sizeof(Head) + m_bytes)) !=
               static_cast<ssize_t>(bytes);
    if (!m_failed) m_bytes += static_cast<std::uint32_t>(bytes);
    m_changed = true;
  }

  void release() { m_file.release(); }

  /// @returns  Whether all of it is there.
  bool finish() {
    if (m_changed) m_failed = !head() || m_failed;
    m_changed = false;
    return !m_failed;
  }

 private:
  static constexpr std::uint32_t kRate = 16000;  // What the assistant side is delivered.

  struct Head {
    char riff[4] = {'R', 'I', 'F', 'F'};
    std::uint32_t size = 0;
    char wave[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
    std::uint32_t formatSize = 16;
    std::uint16_t format = 1, channels = 1;
    std::uint32_t rate = kRate, bytesASecond = 2 * kRate;
    std::uint16_t bytesASample = 2, bits = 16;
    char data[4] = {'d', 'a', 't', 'a'};
    std::uint32_t bytes = 0;
  };

  bool head() {
    Head made;
    made.size = m_bytes + static_cast<std::uint32_t>(sizeof made) - 8;
    made.bytes = m_bytes;
    return pwrite(m_file.descriptor(), &made, sizeof made, 0) == static_cast<ssize_t>(sizeof made);
  }

  OwnFile m_file;
  std::uint32_t m_bytes = 0;
  bool m_failed = false;
  bool m_changed = false;
};

void complain(const std::string& text) {
  const std::string line = "libvorn-capture.so: " + vorn_testing::harmless(text) + "\n";
  static_cast<void>(!write(STDERR_FILENO, line.data(), line.size()));
}

class Writer {
 public:
  /// @returns  Whether there is a file to write to.
  bool open() {
    std::string header = "{\"recording\":\"vorn-speaker\",\"version\":2";
    Bytes quoted;
    quote(quoted, request->program);
    header += ",\"program\":" + std::string(quoted.text()) + ",\"started\":\"" + date() +
              "\",\"writer\":\"vorn-capture " VORN_VERSION "\",\"process\":" + std::to_string(getpid());
    if (!request->run.empty()) header += ",\"run\":\"" + request->run + "\"";
    const std::string wrong = m_output.open(
        request->path, {header + "}", "\"run\":\"" + request->run + "\"", forkedFrom != 0}, request->keep);
    if (!wrong.empty()) {
      complain(wrong + "; nothing is recorded");
      return false;
    }
    if (state.keepsSamples && !m_wave.create(request->audio)) {
      complain(request->audio + ": " + std::strerror(errno) + "; the sound is not kept");
      state.keepsSamples = false;
    }
    if (forkedFrom) note("forked from process " + std::to_string(forkedFrom));
    m_wasRecording = state.recording;
    return true;
  }

  /// In a forked child: leaves the files, and the lock on the recording, to the parent.
  void release() {
    m_output.release();
    m_wave.release();
  }

  [[noreturn]] void run() {
    for (;;) {
      const timespec period = {0, kPeriod};
      syscall(SYS_futex, &state.wake, FUTEX_WAIT_PRIVATE, 0, &period, nullptr, 0);
      state.wake.exchange(0, std::memory_order_acquire);
      const std::uint32_t wanted = asked.load(std::memory_order_acquire);
      drain();
      if (wanted != answered.load()) {
        finish();
        answered.store(wanted, std::memory_order_release);
      }
    }
  }

 private:
  /// Without the C library's calendar: another thread may have held its lock when the process was forked.
  static std::string date() {
    timespec time;
    clock_gettime(CLOCK_REALTIME, &time);
    // Days since the first of March of the year 0, in eras of 400 years; years begin in March.
    const long days = time.tv_sec / 86400 + 719468, era = days / 146097, ofEra = days % 146097;
    const long year = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    const long ofYear = ofEra - (365 * year + year / 4 - year / 100);
    const long month = (5 * ofYear + 2) / 153;
    const long seconds = time.tv_sec % 86400;
    char text[64];
    std::snprintf(text, sizeof text, "%04ld-%02ld-%02ldT%02ld:%02ld:%02ld.%06ldZ",
                  year + era * 400 + (month >= 10), month < 10 ? month + 3 : month - 9,
                  ofYear - (153 * month + 2) / 5 + 1, seconds / 3600, seconds / 60 % 60, seconds % 60,
                  time.tv_nsec / 1000);
    return text;
  }

  std::int64_t microseconds() const { return (now() - startTime) / 1000; }

  void drain() {
    const bool recording = state.recording;
    if (recording != m_wasRecording) note(recording ? "resumed" : "paused");
    m_wasRecording = recording;
    Thread* before = nullptr;
    for (Thread* thread = state.threads.load(std::memory_order_acquire); thread;) {
      const bool gone = thread->gone.load(std::memory_order_acquire);
      drain(*thread);
      Thread* const next = thread->next;
      Thread* expected = thread;
      if (gone &&
          (before ? (before->next = next, true) : state.threads.compare_exchange_strong(expected, next))) {
        dropThread(thread);
      } else {
        before = thread;
      }
      thread = next;
    }
    if (m_second.blocks > 0 && now() - m_second.from > kSecond + kSecond / 4) tellSecond();
    tellLeftOut();
    if (!m_output.flush(microseconds())) failed();
    if (!m_wave.finish() && state.keepsSamples.exchange(false))
      complain(request->audio + ": " + std::strerror(errno) + "; the sound is kept no longer");
  }

  /// What is there, and not what comes meanwhile: a thread that calls all the time would hold up the others and the end.
  void drain(Thread& thread) {
    bool named = false;
    const std::size_t written = thread.ring.head();
    while (const char* const record = thread.ring.front(written)) {
      Head head;
      std::memcpy(&head, record, sizeof head);
      if (head.kind != Kind::kSkip && head.kind != Kind::kSound && !named) name(thread);
      named = true;
      if (head.kind == Kind::kBegin) thread.pending.push(record, head.size);
      if (head.kind == Kind::kEnd) ended(thread, record);
      if (head.kind == Kind::kSound) heard(record);
      thread.ring.pass(head.size);
    }
    const std::uint64_t leftOut = thread.leftOut.load(std::memory_order_relaxed);
    m_leftOut += leftOut - thread.told;
    thread.told = leftOut;
  }

  /// A thread may be named after its first call.
  static void name(Thread& thread) {
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/task/%d/comm", thread.id);
    const int file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return;
    const ssize_t size = read(file, thread.name, sizeof thread.name);
    close(file);
    if (size > 0) thread.name[size - 1] = 0;
  }

  static Line about(const Thread& thread, const char* begin) {
    Begin head;
    std::memcpy(&head, begin, sizeof head);
    return {functionAt(head.function), thread.name, thread.number, startTime};
  }

  void ended(Thread& thread, const char* record) {
    End end;
    std::memcpy(&end, record, sizeof end);
    Pending& open = thread.pending;
    while (const char* const begin = open.last()) {
      Begin head;
      std::memcpy(&head, begin, sizeof head);
      if (head.number == end.begun) {
        if (!end.lost) {
          m_line.cut(0);
          renderCall(m_line, about(thread, begin), begin, record);
          m_output.add(m_line.text(), 1);
        }
        open.pop();
        return;
      }
      open.pop();
    }
  }

  void heard(const char* record) {
    Sound sound;
    std::memcpy(&sound, record, sizeof sound);
    if (sound.kept) m_wave.add(record + sizeof sound, sound.samples * sizeof(short));
    if (m_second.blocks > 0 && sound.time - m_second.from >= kSecond) tellSecond();
    if (m_second.blocks == 0) m_second.from = sound.time;
    if (m_second.last) m_second.gap = std::max(m_second.gap, sound.time - m_second.last);
    m_second.last = sound.time;
    ++m_second.blocks;
    m_second.samples += sound.samples;
    m_second.squares += sound.squares;
    m_second.peak = std::max(m_second.peak, sound.peak);
  }

  void tellSecond() {
    const double square =
        m_second.samples ? static_cast<double>(m_second.squares) / static_cast<double>(m_second.samples) : 0;
    char line[256];
    const int size = std::snprintf(
        line, sizeof line,
        "{\"sound\":\"microphone\",\"time\":%lld,\"blocks\":%llu,\"samples\":%llu,\"peak\":%u,\"level\":%ld,\"gap\":%lld}",
        static_cast<long long>((m_second.from - startTime) / 1000),
        static_cast<unsigned long long>(m_second.blocks), static_cast<unsigned long long>(m_second.samples),
        m_second.peak, std::lround(std::sqrt(square)), static_cast<long long>(m_second.gap / 1000));
    m_output.add(std::string_view(line, static_cast<std::size_t>(size)), 0);
    const std::int64_t last = m_second.last;
    m_second = Second();
    // A gap in which nobody listened for sound is none.
    if (now() - last < 2 * kSecond) m_second.last = last;
  }

  void tellLeftOut() {
    m_leftOut += m_output.takeLost();
    if (m_leftOut == 0) return;
    char line[128];
    const int size =
        std::snprintf(line, sizeof line, "{\"leftOut\":%llu,\"time\":%lld}",
                      static_cast<unsigned long long>(m_leftOut), static_cast<long long>(microseconds()));
    m_output.add(std::string_view(line, static_cast<std::size_t>(size)), m_leftOut);
    m_leftOut = 0;
  }

  void note(const std::string& text) {
    m_output.add("{\"note\":\"" + text + "\",\"time\":" + std::to_string(microseconds()) + "}", 0);
  }

  /// What the end of a process leaves open.
  void finish() {
    if (m_second.blocks > 0) tellSecond();
    const int signal = crash.exchange(0);
    if (signal) note("signal " + std::to_string(signal));
    if (signal || ending) {
      for (Thread* thread = state.threads.load(); thread; thread = thread->next) {
        thread->pending.each([&](const char* begin) {
          m_line.cut(0);
          renderOpen(m_line, about(*thread, begin), begin);
          m_output.add(m_line.text(), 0);
        });
      }
    }
    if (!m_output.flush(microseconds())) failed();
  }

  void failed() {
    if (m_complained) return;
    m_complained = true;
    complain(m_output.path() + ": " + std::strerror(errno) + "; calls are left out");
  }

  Output m_output;
  WaveFile m_wave;
  Bytes m_line;
  Second m_second;
  std::uint64_t m_leftOut = 0;
  bool m_wasRecording = false;
  bool m_complained = false;
};

std::atomic<Writer*> running{nullptr};

void* writerMain(void*) {
  writerId = static_cast<int>(syscall(SYS_gettid));
  pthread_setname_np(pthread_self(), "vorn-capture");
  auto* const writer = new Writer;  // As long as the process.
  if (!writer->open()) {
    delete writer;
    state.recording = false;
    hasFailed = true;
    return nullptr;
  }
  running = writer;
  writer->run();
}

/// How long the writer has worked; a disk that hangs is no work.
std::int64_t writersWork() {
  const int id = writerId;
  timespec time{};
  // The processor's clock of another thread, as the system numbers them.
  if (id) clock_gettime(static_cast<clockid_t>((~static_cast<unsigned>(id) << 3U) | 6U), &time);
  return time.tv_sec * kSecond + time.tv_nsec;
}

/// Waits until all that is there has been written.
void flush() {
  if (!started || syscall(SYS_gettid) == writerId) return;
  const std::uint32_t wanted = asked.fetch_add(1) + 1;
  wakeWriter();
  std::int64_t work = 0;
  for (int i = 0; i < kLongestWait && !hasFailed && static_cast<std::int32_t>(answered.load() - wanted) < 0;
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
  crash = signal;
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
  if (!request) return;
  if (Writer* const parents = running.exchange(nullptr)) parents->release();
  forkedFrom = getppid();
  writerId = 0;
  started = false;
  asked = answered = 0;
  hasFailed = false;
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
  if (started.exchange(true)) return;
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  pthread_t thread;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  if (pthread_create(&thread, &attributes, writerMain, nullptr) != 0) {
    complain("no thread can be made; nothing is recorded");
    state.recording = false;
    hasFailed = true;
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
  request = new Request;
  request->path = path;
  char folder[PATH_MAX];
  if (path[0] != '/' && getcwd(folder, sizeof folder)) request->path = std::string(folder) + "/" + path;
  if (const char* const audio = asks("VORN_CAPTURE_AUDIO")) request->audio = audio;
  state.keepsSamples = !request->audio.empty();
  if (const char* const keep = asks("VORN_CAPTURE_KEEP")) request->keep = sizeOf(keep);
  if (const char* const run = asks("VORN_CAPTURE_RUN")) request->run = run;
  request->program = program_invocation_name;
  startTime = now();
  if (const char* const toggle = asks("VORN_CAPTURE_TOGGLE")) handle(signalOf(toggle), onToggle, nullptr);
  for (const int signal : kCrashes) handle(signal, nullptr, onCrash);
  pthread_atfork(nullptr, nullptr, onFork);
  at_quick_exit(end);
  request->paused = asks("VORN_CAPTURE_PAUSED");
  state.recording = !request->paused;
  // Where the library is not there yet, and in a shell that only starts the program, no file is made before the first call.
  if (dlsym(RTLD_NEXT, "_ZN26VornDeviceAbstractionLayer10FileLogger8ShutdownEv")) startWriter();
}

/// Whether it is the program that vorn-capture became, and none that this one started has recorded in its place.
bool isAlone() {
  if (request->run.compare(0, request->run.find('.'), std::to_string(getpid())) != 0) return false;
  char first[4096];
  const int file = started ? -1 : open(request->path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  const ssize_t size = file < 0 ? 0 : read(file, first, sizeof first);
  if (file >= 0) close(file);
  return std::string(first, size > 0 ? static_cast<std::size_t>(size) : 0).find(request->run) ==
         std::string::npos;
}

/// Of the process.
__attribute__((destructor)) void end() {
  if (!request) return;
  ending = true;
  flush();
  if (state.threadCount == 0 && !hasFailed && isAlone())
    complain(std::string("nothing is recorded: the program made no call of libVornDALImpl.so") +
             (request->paused ? " while it was recorded" : ""));
}

}  // namespace

}  // namespace vorn_capture

/// Called by the first stub that is called, or on loading.
extern "C" [[gnu::visibility("hidden")]] __attribute__((constructor)) void vornCapturePrepare() {
  static const bool once = (vorn_capture::begin(), true);
  static_cast<void>(once);
}
