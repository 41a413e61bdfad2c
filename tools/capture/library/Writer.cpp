#include "Writer.h"

#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstring>

#include <vorn_testing/Text.h>

#include "Calls.h"
#include "files/Output.h"
#include "files/WaveFile.h"

namespace vorn_capture {

Course course;

namespace {

constexpr long kPeriod = 20000000;  ///< Nanoseconds between two looks at the rings.
constexpr std::int64_t kSecond = 1000000000;

/// The sound of a second.
struct Second {
  std::int64_t from = 0;
  std::int64_t last = 0;  ///< When the last block came, also of the second before.
  std::int64_t gap = 0;
  std::uint64_t blocks = 0, samples = 0, squares = 0;
  std::uint32_t peak = 0;
};

class Writer {
 public:
  /// @returns  Whether there is a file to write to.
  bool open() {
    std::string header = "{\"recording\":\"vorn-speaker\",\"version\":2";
    Bytes quoted;
    quote(quoted, course.request->program);
    header += ",\"program\":" + std::string(quoted.text()) + ",\"started\":\"" + date() +
              "\",\"writer\":\"vorn-capture " VORN_VERSION "\",\"process\":" + std::to_string(getpid());
    if (!course.request->run.empty()) header += ",\"run\":\"" + course.request->run + "\"";
    const std::string wrong =
        m_output.open(course.request->path,
                      {header + "}", "\"run\":\"" + course.request->run + "\"", course.forkedFrom != 0},
                      course.request->keep);
    if (!wrong.empty()) {
      complain(wrong + "; nothing is recorded");
      return false;
    }
    if (state.keepsSamples && !m_wave.create(course.request->audio)) {
      complain(course.request->audio + ": " + std::strerror(errno) + "; the sound is not kept");
      state.keepsSamples = false;
    }
    if (course.forkedFrom) note("forked from process " + std::to_string(course.forkedFrom));
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
      const std::uint32_t wanted = course.asked.load(std::memory_order_acquire);
      drain();
      if (wanted != course.answered.load()) {
        finish();
        course.answered.store(wanted, std::memory_order_release);
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

  std::int64_t microseconds() const { return (now() - course.startTime) / 1000; }

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
      complain(course.request->audio + ": " + std::strerror(errno) + "; the sound is kept no longer");
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
    return {functionAt(head.function), thread.name, thread.number, course.startTime};
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
        static_cast<long long>((m_second.from - course.startTime) / 1000),
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
    const int signal = course.crash.exchange(0);
    if (signal) note("signal " + std::to_string(signal));
    if (signal || course.ending) {
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

}  // namespace

void* writeAll(void*) {
  course.writerId = static_cast<int>(syscall(SYS_gettid));
  pthread_setname_np(pthread_self(), "vorn-capture");
  auto* const writer = new Writer;  // As long as the process.
  if (!writer->open()) {
    delete writer;
    state.recording = false;
    course.hasFailed = true;
    return nullptr;
  }
  running = writer;
  writer->run();
}

void releaseFiles() {
  if (Writer* const parents = running.exchange(nullptr)) parents->release();
}

void complain(const std::string& text) {
  const std::string line = "libvorn-capture.so: " + vorn_testing::harmless(text) + "\n";
  static_cast<void>(!write(STDERR_FILENO, line.data(), line.size()));
}

}  // namespace vorn_capture
