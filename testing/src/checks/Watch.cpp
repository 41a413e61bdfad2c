// The watching side of a check: starts the child, and says how it ended when it cannot say so itself.

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <system_error>
#include <utility>

#include "Trial.h"

namespace vorn_testing::checks {

namespace {

/// How often a child at work is looked at, and one that is about to end.
constexpr int kTickMs = 20, kLastTickMs = 1;

/// Nothing that a check does takes longer without a call on its way than this.
constexpr std::chrono::seconds kOwnBound(120);

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

/// Memory that the child writes and this process reads, also after the child's death.
class Shared {
 public:
  Shared() : m_report(map()) {}
  ~Shared() { munmap(m_report, sizeof(Report)); }
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;
  Report& operator*() { return *m_report; }

 private:
  static Report* map() {
    void* const memory =
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) fail("no memory for a check");
    return new (memory) Report();
  }

  Report* m_report;
};

std::string lineOf(const std::string& path) {
  std::string line;
  std::getline(std::ifstream(path), line);
  return line;
}

/// Whether the first thread of the child waits for a mutex that it holds itself, and so for ever. Told from the
/// system call that it sits in and the owner that the C library notes in the mutex; where either cannot be
/// read, the answer is false and the bound decides.
bool waitsForItself(pid_t child) {
  const std::string process = "/proc/" + std::to_string(child);
  const std::string call = lineOf(process + "/syscall");
  long number = -1;
  unsigned long mutex = 0, operation = 0;
  if (std::sscanf(call.c_str(), "%ld %lx %lx", &number, &mutex, &operation) != 3) return false;
  constexpr unsigned long kCommand =
      0x7f;  // without FUTEX_PRIVATE_FLAG and FUTEX_CLOCK_REALTIME; 0 is to wait
  if (number != SYS_futex || (operation & kCommand) != 0) return false;
  int fields[3] = {};  // lock, count, owner
  const int memory = open((process + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
  const ssize_t size = pread(memory, fields, sizeof fields, static_cast<off_t>(mutex));
  close(memory);
  if (size != static_cast<ssize_t>(sizeof fields)) return false;
  return fields[2] == child && lineOf(process + "/syscall") == call;
}

/// The call that has been on its way for longest, or null, and since when. Read once: it may end at any moment.
std::pair<const Report::Busy*, std::int64_t> oldest(const Report& report) {
  std::pair<const Report::Busy*, std::int64_t> found(nullptr, 0);
  for (const Report::Busy& call : report.calls) {
    const std::int64_t since = call.since;
    if (since > 0 && (!found.first || since < found.second)) found = {&call, since};
  }
  return found;
}

std::string seconds(std::chrono::milliseconds duration) {
  char text[32];
  std::snprintf(text, sizeof text, "%g s", static_cast<double>(duration.count()) / 1000);
  return text;
}

std::string howItEnded(int status) {
  if (WIFEXITED(status)) return "ended the process with status " + std::to_string(WEXITSTATUS(status));
  return "ended the process with signal " + std::to_string(WTERMSIG(status)) + " (" +
         strsignal(WTERMSIG(status)) + ")";
}

/// Waits for the child. Returns its status, or the reason why it was not waited for any longer.
std::string wait(pid_t child, int ends, const Report& report, std::chrono::milliseconds bound, int& status) {
  pollfd end{ends, POLLIN, 0};
  for (int stuck = 0;;) {
    if (poll(&end, 1, end.fd < 0 ? kLastTickMs : kTickMs) > 0)
      end.fd = -1;  // closed by the end, or by the host
    if (waitpid(child, &status, report.ended ? 0 : WNOHANG) == child) return "";
    stuck = waitsForItself(child) ? stuck + 1 : 0;
    if (stuck == 3) return "waits for a mutex that its own thread holds";
    const std::chrono::nanoseconds now = std::chrono::steady_clock::now().time_since_epoch();
    const auto [call, since] = oldest(report);
    if (now - std::chrono::nanoseconds(call ? since : report.active.load()) >
        (call ? std::chrono::nanoseconds(bound) : kOwnBound))
      return "did not answer within " + seconds(call ? bound : kOwnBound);
  }
}

[[noreturn]] void runChild(const Check& check, const HostMaker& maker, const HostDemands& demands,
                           Report& report) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  // Not destroyed: the host of a check that is not about its end lives as long as the process.
  auto* const trial = new Trial(maker, demands, report);
  Outcome outcome{HostVerdict::kKept, ""};
  try {
    check.run(*trial);
  } catch (const Outcome& thrown) {
    outcome = thrown;
  } catch (const std::exception& exception) {
    outcome = {HostVerdict::kNotAsked, std::string("the check itself failed: ") + exception.what()};
  }
  put(report.detail, outcome.detail);
  report.verdict = outcome.kind;
  std::fflush(nullptr);
  report.ended = true;
  _exit(0);
}

}  // namespace

HostVerdict runWatched(const Check& check, const HostMaker& maker, const HostDemands& demands) {
  Shared shared;
  Report& report = *shared;
  report.active = std::chrono::steady_clock::now().time_since_epoch().count();
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) fail("no pipe for a check");
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) runChild(check, maker, demands, report);
  close(ends[1]);
  int status = 0;
  const std::string reason = child < 0 ? "" : wait(child, ends[0], report, demands.bound, status);
  close(ends[0]);
  if (child < 0) fail("no process for a check");
  kill(-child, SIGKILL);  // and what it may have started
  if (!reason.empty()) waitpid(child, &status, 0);

  HostVerdict verdict{
      static_cast<HostVerdict::Kind>(report.verdict.load()), report.detail, report.made, report.slowestCall,
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::nanoseconds(report.slowest))};
  if (reason.empty() && report.ended) return verdict;
  const Report::Busy* const call = oldest(report).first;
  const std::string context = report.context, excuse = report.excuse;
  verdict.kind = excuse.empty() ? HostVerdict::kBroken : HostVerdict::kNotAsked;
  verdict.detail = (call ? call->call : "the host, outside of any call,") + std::string(" ") +
                   (reason.empty() ? howItEnded(status) : reason) + (context.empty() ? "" : ", " + context) +
                   (excuse.empty() ? "" : ", see " + excuse);
  return verdict;
}

}  // namespace vorn_testing::checks
