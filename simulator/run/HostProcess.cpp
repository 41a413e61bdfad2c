#include "HostProcess.h"

#include <VornDALImplIF.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vorn_testing/HostLibrary.h>
#include <vorn_testing/Stack.h>
#include <vorn_testing/StandardFiles.h>
#include <vorn_testing/Text.h>
#include <ext/stdio_filebuf.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "Postmortem.h"
#include "text/Files.h"
#include "text/Secrets.h"

namespace vorn_speaker {

using std::chrono::milliseconds;
using VornDeviceAbstractionLayer::VornDALImplIF;

namespace {

enum Phase : int { kCalled, kLoaded, kMade, kAsked, kDestroyed, kUnloaded };

/// After the subject: "The host crashed while it was loaded".
const char* words(int phase) {
  constexpr const char* kWords[] = {"",
                                    " while it was loaded",
                                    " while it was made",
                                    " while it was asked for its media players",
                                    " while it was destroyed",
                                    " while it was unloaded"};
  return kWords[phase];
}

/// What both processes see.
struct Shared {
  struct Call {
    std::atomic<unsigned long> number;  ///< 0 for none.
    char text[160];
  };
  std::atomic<int> phase;
  std::atomic<long long> since;  ///< When the phase began, in milliseconds.
  std::atomic<bool> told;
  std::atomic<int> result;  ///< What the work returned; negative before.
  std::atomic<bool> lost;   ///< Whether what it printed did not arrive.
  Call calls[16];
  std::atomic<std::size_t> length;  ///< Of the report.
  char report[1 << 17];             ///< How it ended, in its own words.
};

Shared* g_shared = nullptr;

long long now() {
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void enter(Phase phase) {
  if (!g_shared) return;
  g_shared->since = now();
  g_shared->phase = phase;
}

void say(const std::string& text) { std::cerr << vorn_testing::harmless(text) << std::endl; }

/// A request to end goes on to the process below; the terminal's own reach it anyway when it is of our group.
volatile sig_atomic_t g_child = 0;
volatile sig_atomic_t g_ownGroup = 0;
volatile sig_atomic_t g_requested = 0;

void passOn(int signal, siginfo_t* info, void*) {
  g_requested = signal;
  if (g_ownGroup || info->si_code <= 0) kill(g_child, signal);
}

/// The same for Ctrl-Z, which stops whoever is in front.
void stopBoth(int) {
  kill(g_child, SIGSTOP);
  raise(SIGSTOP);
  kill(g_child, SIGCONT);
}

/// Ends what the host started and left behind: it is ours now.
void endLeftovers() {
  for (int round = 0; round < 100; ++round) {
    const std::string self = std::to_string(getpid());
    std::ifstream list("/proc/self/task/" + self + "/children");
    if (!list) return;
    for (pid_t left = 0; list >> left;) kill(left, SIGKILL);
    if (waitpid(-1, nullptr, 0) < 0 && errno == ECHILD) return;
  }
}

/// The work, in the process of the host. Never returns.
[[noreturn]] void workBelow(bool apart, int finished, const std::function<int(std::ostream&)>& work) {
  int result = 0;
  if (apart) {
    std::cout.flush();
    std::fflush(stdout);
    const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    __gnu_cxx::stdio_filebuf<char> buffer(own, std::ios::out);
    std::ostream out(&buffer);
    result = work(out);
    g_shared->lost = !out.flush();
  } else {
    result = work(std::cout);
    if (!vorn_testing::standardOutputArrived("vorn-speaker") && result == 0) result = 1;
  }
  enter(kUnloaded);
  g_shared->result = result;
  std::exit(finished);
}

/// The operations that had not returned.
void sayCalls() {
  for (const Shared::Call& call : g_shared->calls)
    if (call.number != 0) say(call.text);
}

int judge(int ended, int finished) {
  const bool whole = WIFEXITED(ended) && WEXITSTATUS(ended) == finished && g_shared->result >= 0;
  // Told from here: the host may have closed the standard error of its process too.
  if (whole && g_shared->lost)
    say("vorn-speaker: standard output could not be written; is the disk full, or did the host close it?");
  if (whole) return g_shared->lost && g_shared->result == 0 ? 1 : g_shared->result.load();
  for (const std::string& line : vorn_testing::demangledLines(g_shared->report)) say(line);
  if (g_shared->told) return kHostFailed;
  if (WIFSIGNALED(ended) && WTERMSIG(ended) == g_requested) return 128 + g_requested;
  // The reader of our output went away, which ends any program.
  pollfd output{STDOUT_FILENO, 0, 0};
  if (WIFSIGNALED(ended) && WTERMSIG(ended) == SIGPIPE && poll(&output, 1, 0) == 1) return 128 + SIGPIPE;
  const std::string where = words(g_shared->phase);
  if (WIFSIGNALED(ended)) {
    say("\nThe host crashed" + where + ": " + sigdescr_np(WTERMSIG(ended)));
  } else {
    say("\nThe host ended the program" + where + ", with status " + std::to_string(WEXITSTATUS(ended)));
  }
  sayCalls();
  return kHostFailed;
}

}  // namespace

int inHostProcess(std::chrono::seconds limit, bool apart, const std::function<int(std::ostream&)>& work) {
  void* const memory =
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::runtime_error(std::string("no memory: ") + std::strerror(errno));
  g_shared = new (memory) Shared{};
  g_shared->result = -1;
  // A status that no host ends the process with, but by chance.
  const int finished = 65 + static_cast<int>(now() % 60);
  signal(SIGCHLD, SIG_DFL);
  prctl(PR_SET_CHILD_SUBREAPER, 1);
  std::cout.flush();
  std::cerr.flush();
  sigset_t gone;
  sigset_t before;
  sigemptyset(&gone);
  sigaddset(&gone, SIGCHLD);
  sigprocmask(SIG_BLOCK, &gone, &before);
  const pid_t above = getpid();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error(std::string("no process for the host: ") + std::strerror(errno));
  if (child == 0) {
    sigprocmask(SIG_SETMASK, &before, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != above) _exit(kHostFailed);
    // A host may signal its group, which would be whoever started us too. The console reads from the terminal, which only the
    // group in front may.
    if (apart) {
      setpgid(0, 0);
      signal(SIGTTOU, SIG_IGN);  // its words are the speaker's, whatever the terminal asks of those behind
    }
    workBelow(apart, finished, work);
  }
  g_child = child;
  g_ownGroup = apart;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    action.sa_sigaction = passOn;
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    struct sigaction earlier {};
    sigaction(signal, &action, &earlier);
    if (earlier.sa_handler == SIG_IGN) sigaction(signal, &earlier, nullptr);
  }
  struct sigaction earlier {};
  sigaction(SIGTSTP, nullptr, &earlier);
  if (apart && earlier.sa_handler != SIG_IGN) signal(SIGTSTP, stopBoth);
  int ended = 0;
  bool asked = false;
  const auto overdue = [&](std::chrono::seconds grace) {
    return limit.count() > 0 && g_shared->phase != kCalled &&
           now() - g_shared->since > milliseconds(limit + grace).count();
  };
  long long stopped = 0;  // Since when; it can neither go on nor tell.
  for (;;) {
    const pid_t changed = waitpid(child, &ended, WNOHANG | WUNTRACED | WCONTINUED);
    if (changed != 0 && !(changed > 0 && (WIFSTOPPED(ended) || WIFCONTINUED(ended)))) break;
    if (changed > 0) stopped = WIFSTOPPED(ended) ? now() : 0;
    if (stopped != 0 && limit.count() > 0 && now() - stopped > milliseconds(limit).count()) {
      if (!g_shared->told.exchange(true)) {
        say(std::string("\nThe host stopped its process") + words(g_shared->phase));
        sayCalls();
      }
      kill(child, SIGKILL);
    }
    if (overdue(std::chrono::seconds(0)) && !asked) {
      asked = true;
      kill(child, kOverdue);
    }
    // It may not even be able to tell.
    if (overdue(std::chrono::seconds(10))) {
      if (!g_shared->told.exchange(true))
        say(std::string("\nThe host does not return") + words(g_shared->phase) + ".");
      kill(child, SIGKILL);
    }
    const timespec moment{0, 100000000};
    sigtimedwait(&gone, nullptr, &moment);
  }
  endLeftovers();
  return judge(ended, finished);
}

namespace {

/// Nothing that the host throws meanwhile comes through.
template <class Work>
auto during(Phase phase, Work&& work) {
  std::string why = "what is no std::exception";
  try {
    enter(phase);
    auto result = work();
    enter(kCalled);
    return result;
  } catch (const std::exception& error) {
    why = error.what();
  } catch (...) {
  }
  giveUp(std::string("The host threw") + words(phase) + ": " + (isSecretText(why) ? kMask : why));
}

}  // namespace

OwnHost ownHost(const std::string& path) {
  refuseUnlessFile(path);
  enter(kLoaded);
  const vorn_testing::HostLibrary library(path);
  auto host = during(kMade, [&] { return library.makeHost(); });
  if (!host) giveUp("The host was not made: vornCreateHost() answers null");
  VornDALImplIF* const made = host.get();
  vorn_testing::MediaPlayers* const players =
      during(kAsked, [&] { return vorn_testing::HostLibrary::playersOf(host); });
  const auto destroy = [host](VornDALImplIF*) mutable {
    enter(kDestroyed);
    host.reset();
    enter(kCalled);
  };
  host.reset();
  return {{made, destroy}, players};
}

void OpenCalls::began(const Crossing& crossing) {
  if (!g_shared) return;
  for (Shared::Call& call : g_shared->calls) {
    if (call.number != 0) continue;
    std::snprintf(call.text, sizeof call.text, "Thread %s, inside %s", crossing.thread.c_str(),
                  crossing.fullName().c_str());
    call.number = crossing.number;
    return;
  }
}

void OpenCalls::ended(const Crossing& crossing) {
  if (!g_shared) return;
  for (Shared::Call& call : g_shared->calls)
    if (call.number == crossing.number) call.number = 0;
}

const char* hostPhase() { return g_shared ? words(g_shared->phase) : ""; }

bool tellAbove(const char* text) {
  if (!g_shared) return false;
  std::size_t end = g_shared->length;
  for (; *text && end + 1 < sizeof g_shared->report; ++text) g_shared->report[end++] = *text;
  g_shared->length = end;
  return true;
}

void hostTold() {
  if (g_shared) g_shared->told = true;
}

}  // namespace vorn_speaker
