// The watching side of a check: starts the child, and says how it ended when it cannot say so itself.

#include <dirent.h>
#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <system_error>
#include <utility>
#include <vector>

#include <vorn_testing/Stack.h>
#include "Operations.h"
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

std::string folderOf(pid_t process) { return "/proc/" + std::to_string(process); }

/// The system call that a thread sits in, and its arguments; "running" when it could go on.
std::string systemCall(pid_t process, pid_t thread) {
  return lineOf(folderOf(process) + "/task/" + std::to_string(thread) + "/syscall");
}

/// For whom a thread waits, as far as it can be seen: the holder of a mutex, or a thread that it joins. 0: for none.
pid_t waitsFor(pid_t process, const std::string& call) {
  long number = -1;
  unsigned long word = 0, operation = 0, expected = 0;
  if (std::sscanf(call.c_str(), "%ld %lx %lx %lx", &number, &word, &operation, &expected) != 4) return 0;
  constexpr unsigned long kCommand = 0x7f;  // without FUTEX_PRIVATE_FLAG and FUTEX_CLOCK_REALTIME
  constexpr unsigned long kWait = 0, kWaitBitset = 9;
  if (number != SYS_futex) return 0;
  int fields[3] = {};  // of a mutex: lock, count, owner; of a thread that is joined: its number
  const int memory = open((folderOf(process) + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
  const ssize_t size = pread(memory, fields, sizeof fields, static_cast<off_t>(word));
  close(memory);
  if (size != static_cast<ssize_t>(sizeof fields)) return 0;
  if ((operation & kCommand) == kWait && fields[0] == 2) return fields[2];
  if ((operation & kCommand) == kWaitBitset && fields[0] == static_cast<int>(expected)) return fields[0];
  return 0;
}

/// The threads that wait for each other in a circle, and so for ever; empty when there is none. Told from the system
/// calls that they sit in and the owner that the C library notes in a mutex; where these cannot be read, the bound
/// decides. `running` becomes whether any thread could go on.
std::vector<pid_t> circle(pid_t process, bool& running) {
  std::map<pid_t, pid_t> edges;
  running = false;
  DIR* const tasks = opendir((folderOf(process) + "/task").c_str());
  if (!tasks) return {};
  while (const dirent* const entry = readdir(tasks)) {
    const pid_t thread = std::atoi(entry->d_name);
    if (thread <= 0) continue;
    const std::string call = systemCall(process, thread);
    running = running || call == "running";
    edges[thread] = waitsFor(process, call);
  }
  closedir(tasks);
  for (const auto& edge : edges) {
    std::vector<pid_t> path{edge.first};
    for (pid_t next = edge.second; edges.count(next); next = edges[next]) {
      const auto seen = std::find(path.begin(), path.end(), next);
      if (seen != path.end()) return {seen, path.end()};
      path.push_back(next);
    }
  }
  return {};
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

/// The call that a thread is in, or what is known of it.
std::string callOf(const Report& report, pid_t thread) {
  for (const Report::Busy& call : report.calls) {
    if (call.since > 0 && call.thread == thread) return call.call;
  }
  return "a thread of the host";
}

constexpr char kCircle[] = "threads wait for each other: ";

/// How threads wait for each other, in words.
std::string told(const Report& report, const std::vector<pid_t>& threads) {
  if (threads.size() == 1) return "waits for a mutex that its own thread holds";
  std::string words = kCircle;
  for (std::size_t i = 0; i < threads.size(); ++i)
    words += (i ? ", which waits for " : "") + callOf(report, threads[i]) +
             (i ? "" : " waits for a mutex or thread of");
  const std::size_t first = words.find(" of, which waits for ");
  if (first != std::string::npos) words.replace(first, 21, " of ");
  return words + ", which waits for the first";
}

/// The time that a process has had of the processors.
std::chrono::nanoseconds processorTime(pid_t process) {
  clockid_t clock;
  timespec time{};
  if (clock_getcpuclockid(process, &clock) == 0) clock_gettime(clock, &time);
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// Asks threads where they are; what they tell stands in the report.
void askWhere(Report& report, const std::vector<pid_t>& threads) {
  constexpr int kTurns = 300;
  for (const pid_t thread : threads) {
    const int before = report.told;
    if (syscall(SYS_tgkill, report.process.load(), thread, question()) != 0) continue;
    for (int i = 0; report.told == before && i < kTurns; ++i) poll(nullptr, 0, kLastTickMs);
  }
}

/// Waits for the child. Returns its status, or the reason why it was not waited for any longer.
std::string wait(pid_t child, int ends, Report& report, std::chrono::milliseconds bound, int& status) {
  pollfd end{ends, POLLIN, 0};
  std::vector<pid_t> waiting;
  std::int64_t begun = 0;
  std::chrono::nanoseconds seen{0}, worked{0}, kept{0};  // kept: from running, by others, since it began
  for (int stuck = 0;;) {
    if (poll(&end, 1, end.fd < 0 ? kLastTickMs : kTickMs) > 0)
      end.fd = -1;  // closed by the end, or by the host
    if (waitpid(child, &status, WNOHANG | WUNTRACED) == child)
      return WIFSTOPPED(status) ? "stopped its own process" : "";
    const pid_t process = report.process;
    bool running = false;
    const std::vector<pid_t> now = circle(process ? process : child, running);
    stuck = !now.empty() && now == waiting ? stuck + 1 : 0;
    waiting = now;
    if (stuck == 3) {
      const std::string words = told(report, waiting);
      askWhere(report, waiting);
      return words;
    }
    const std::chrono::nanoseconds time = std::chrono::steady_clock::now().time_since_epoch();
    const auto [call, since] = oldest(report);
    const bool hosts = call ? !call->stepped : report.ended.load();
    const std::chrono::milliseconds atMost =
        hosts ? bound : std::max<std::chrono::milliseconds>(bound, kOwnBound);
    const std::int64_t from = call ? since : report.active.load();
    const std::chrono::nanoseconds work = processorTime(process ? process : child);
    if (from != begun)
      kept = {};
    else if (running)
      kept += std::max(time - seen - std::max(work - worked, {}), {});
    begun = from, seen = time, worked = work;
    // What could go on and had no processor is not late; but nobody waits for ever.
    if (time - std::chrono::nanoseconds(from) - std::min<std::chrono::nanoseconds>(kept, 9 * atMost) >
        atMost) {
      if (call) askWhere(report, {static_cast<pid_t>(call->thread)});
      return "did not answer within " + seconds(atMost);
    }
  }
}

[[noreturn]] void runChild(const Check& check, const HostMaker& maker, const HostDemands& demands,
                           const Known& known, Report& report) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  mallopt(M_PERTURB, 0xa5);  // what is freed does not look as it was
  noteCrashes(report);
  guardMemory(true);
  takeAccepted(demands);
  // Not destroyed: the host of a check that is not about its end lives as long as the process.
  auto* const trial = new Trial(maker, demands, known, report);
  Outcome outcome{HostVerdict::kKept, ""};
  try {
    check.run(*trial);
  } catch (const Outcome& thrown) {
    outcome = thrown;
  } catch (const std::exception& exception) {
    outcome = {HostVerdict::kBroken, std::string("the check itself failed: ") + exception.what()};
  }
  put(report.detail, outcome.detail);
  report.refused = outcome.refused;
  report.verdict = outcome.kind;
  std::fflush(nullptr);
  report.active = std::chrono::steady_clock::now().time_since_epoch().count();
  report.ended = true;
  _exit(0);
}

/// Ends what the host has started and not ended: this process takes the place of their parent, see runWatcher().
void endOrphans() {
  for (;;) {
    int status = 0;
    while (waitpid(-1, &status, WNOHANG) > 0) {
    }
    bool any = false;
    DIR* const processes = opendir("/proc");
    while (const dirent* const entry = processes ? readdir(processes) : nullptr) {
      const pid_t process = std::atoi(entry->d_name);
      if (process <= 0) continue;
      const std::string line = lineOf("/proc/" + std::string(entry->d_name) + "/stat");
      const std::size_t name = line.rfind(')');
      char state = 0;
      int parent = 0;
      if (name == std::string::npos || std::sscanf(line.c_str() + name + 1, " %c %d", &state, &parent) != 2)
        continue;
      if (parent != getpid()) continue;
      any = true;
      kill(process, SIGKILL);
    }
    if (processes) closedir(processes);
    if (!any) return;
    waitpid(-1, &status, 0);
  }
}

/// A process between the caller and the check: whatever the host does to its parent, its children or its group stays
/// below, and how the caller treats SIGCHLD does not matter.
[[noreturn]] void runWatcher(const Check& check, const HostMaker& maker, const HostDemands& demands,
                             const Known& known, Report& report) {
  std::signal(SIGCHLD, SIG_DFL);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) _exit(1);
  const pid_t child = fork();
  if (child == 0) {
    prctl(PR_SET_CHILD_SUBREAPER, 0);
    close(ends[0]);
    report.descriptor = ends[1];
    runChild(check, maker, demands, known, report);
  }
  close(ends[1]);
  if (child < 0) _exit(1);
  setpgid(child, child);
  int status = 0;
  const std::string reason = wait(child, ends[0], report, demands.bound, status);
  kill(-child, SIGKILL);
  kill(child, SIGKILL);
  if (!reason.empty()) waitpid(child, &status, 0);
  endOrphans();
  put(report.reason, reason);
  report.status = status;
  report.watched = true;
  _exit(0);
}

}  // namespace

HostVerdict runWatched(const Check& check, const HostMaker& maker, const HostDemands& demands,
                       const Known& known) {
  Shared shared;
  Report& report = *shared;
  report.active = std::chrono::steady_clock::now().time_since_epoch().count();
  std::fflush(nullptr);
  const pid_t watcher = fork();
  if (watcher < 0) fail("no process for a check");
  if (watcher == 0) runWatcher(check, maker, demands, known, report);
  while (waitpid(watcher, nullptr, 0) < 0 && errno == EINTR) {
  }

  HostVerdict verdict{
      static_cast<HostVerdict::Kind>(report.verdict.load()),
      report.detail,
      report.made,
      report.slowestCall,
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::nanoseconds(report.slowest)),
      report.refused,
      false,
      report.seen,
      {}};
  if (report.twice) {
    verdict.kind = HostVerdict::kBroken;
    verdict.detail =
        std::string(report.twiceCall) + " returned in two processes: the host made one by fork()";
    return verdict;
  }
  const std::string reason = report.reason, context = report.context;
  const int status = report.status;
  if (report.watched && reason.empty() && report.ended && status == 0) return verdict;
  if (report.watched && reason.empty() && WIFEXITED(status) && WEXITSTATUS(status) == kOrderly) {
    verdict.kind = HostVerdict::kKept;
    return verdict;
  }
  const auto [call, since] = oldest(report);
  std::string who = report.crashed && *report.crashedCall ? report.crashedCall : call ? call->call : "";
  if (who.empty()) who = report.ended ? "the host, after the check," : "the host, outside of any call,";
  verdict.hung = report.watched && !reason.empty();
  verdict.kind = HostVerdict::kBroken;
  const bool circular = reason.compare(0, sizeof kCircle - 1, kCircle) == 0;
  verdict.detail = circular ? "" : who + " ";
  if (!report.watched)
    verdict.detail += "ended the process that watches it";
  else
    verdict.detail += reason.empty() ? howItEnded(status) : reason;
  if (*report.touched)
    verdict.detail += std::string(": it touched an argument of ") + report.touched + "(), which had returned";
  if (!context.empty()) verdict.detail += ", " + context;
  std::string meanwhile;
  for (const Report::Busy& other : report.calls) {
    if (other.since > 0 && other.call != who && meanwhile.find(other.call) == std::string::npos)
      meanwhile += (meanwhile.empty() ? "" : ", ") + std::string(other.call);
  }
  if (!meanwhile.empty()) verdict.detail += ", while these were on their way: " + meanwhile;
  verdict.stack = demangledLines(*report.stack ? report.stack : report.waiting);
  return verdict;
}

}  // namespace vorn_testing::checks
