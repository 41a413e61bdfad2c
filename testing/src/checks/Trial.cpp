// The child's side of a check.

#include "Trial.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <optional>
#include <thread>
#include <typeinfo>
#include <vector>

#include <vorn_testing/Stack.h>
#include "../text/Spelling.h"
#include "Checks.h"
#include "Operations.h"
#include "load/Load.h"
#include "load/LockOrder.h"
#include "load/Steps.h"
#include "vorn_testing/Interposed.h"

// A sanitizer has plans of its own for the signal of a single step.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
#define VORN_SANITIZED
#endif
#endif
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
#define VORN_SANITIZED
#endif
#if defined(__x86_64__) && !defined(VORN_SANITIZED)
#define VORN_STEPS
#endif

namespace vorn_testing::checks {

namespace {

std::int64_t now() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

/// The call that this thread is in.
thread_local const Report::Busy* t_call = nullptr;

/// Whether this thread is to be held up in the midst of its calls, and after how many instructions of this one.
thread_local bool t_disturbed = false;
thread_local long t_steps = 0;
thread_local bool (*t_onEveryStep)(const void*) = nullptr;
thread_local int t_holds = 0;  ///< How often it was held up in this call.
thread_local std::uint64_t t_dice = 0;

/// Of a thread whose calls are held up once: at which place, and how many came by. Places are where the host asks for
/// memory or gives it back, takes a mutex or leaves it: what is shared is halfway there.
thread_local long t_pauseAt = -1, t_cameBy = 0;
/// Whether this thread runs meanwhile.
thread_local bool t_meanwhile = false;
thread_local bool t_inHost = false;
std::atomic<int> g_paused{0};  ///< Whether it is held up; what the other thread sleeps on, and it itself.
std::atomic<long> g_stepsMeanwhile{0};

std::uint64_t roll() {
  t_dice = t_dice * 6364136223846793005U + 1442695040888963407U;
  return t_dice >> 33;
}

/// Lets others come in between.
void holdUpNow() {
  constexpr int kMostHolds = 8;
  if (++t_holds > kMostHolds) return;
  const int error = errno;
  // Sometimes for so long that others come round more than once.
  const timespec pause{0, roll() % 8 == 0 ? 3000000 : 20000 + static_cast<long>(roll() % 8) * 30000};
  nanosleep(&pause, nullptr);
  errno = error;
}

/// From here on this thread is stopped after every instruction, until the steps are done: so it is held up at places
/// that are a few instructions wide. Elsewhere than on x86-64 signals of another thread do, more roughly.
void beginSteps() {
  t_holds = 0;
#if defined(VORN_STEPS)
  if (!t_onEveryStep && (!t_disturbed || roll() % 5 != 0)) return;
  sigset_t kept;
  if (pthread_sigmask(SIG_SETMASK, nullptr, &kept) != 0 || sigismember(&kept, SIGTRAP) == 1) return;
  t_steps = 30L << (roll() % 5);
  t_steps += static_cast<long>(roll() % static_cast<std::uint64_t>(t_steps));
  asm volatile("lea -128(%%rsp), %%rsp\n\tpushfq\n\torq $0x100, (%%rsp)\n\tpopfq\n\tlea 128(%%rsp), %%rsp" ::
                   : "memory", "cc");
#endif
}

std::atomic<bool> g_guards{false};
std::atomic<bool (*)(const void*)> g_guarded{nullptr};

std::atomic<int> g_inside{0};
std::atomic<long> g_overlaps{0}, g_calls{0};

/// Enters a call in the report for as long as it runs.
class OnItsWay {
 public:
  OnItsWay(Report& report, const std::string& shown) : m_report(report), m_shown(shown), m_outer(t_call) {
    for (Report::Busy& call : report.calls) {
      std::int64_t free = 0;
      if (!call.since.compare_exchange_strong(free, -1)) continue;
      put(call.call, shown);
      call.thread = static_cast<int>(syscall(SYS_gettid));
      call.stepped = t_onEveryStep != nullptr;
      m_call = &call;
      break;
    }
    m_start = now();
    if (m_call) m_call->since = m_start;
    ++g_calls;
    if (g_inside++ > 0) ++g_overlaps;
    t_call = m_call;
  }

  ~OnItsWay() {
    leaveHost();
    t_call = m_outer;
    --g_inside;
    const std::int64_t end = now();
    if (m_call) m_call->since = 0;
    m_report.active = end;
    if (t_onEveryStep) return;  // no time of the host's own
    if (end - m_start <= m_report.slowest) return;
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    if (end - m_start <= m_report.slowest) return;
    m_report.slowest = end - m_start;
    put(m_report.slowestCall, m_shown);
  }

  OnItsWay(const OnItsWay&) = delete;
  OnItsWay& operator=(const OnItsWay&) = delete;

 private:
  Report& m_report;
  const std::string& m_shown;
  const Report::Busy* const m_outer;
  Report::Busy* m_call = nullptr;
  std::int64_t m_start = 0;
};

Report* g_report = nullptr;

/// What a handler may do: no memory is asked for.
void append(char (&text)[sizeof(Report::stack)], std::size_t& length, const char* more) {
  while (*more && length + 1 < sizeof text) text[length++] = *more++;
  text[length] = '\0';
}

/// Tells where this thread is, when the watching process asks; one at a time, since that asks one after the other.
void onQuestion(int) {
  if (!g_report) return;
  const int error = errno;
  std::size_t length = std::strlen(g_report->waiting);
  append(g_report->waiting, length, t_call ? t_call->call : "a thread of the host");
  append(g_report->waiting, length, " waits:\n");
  Stack::here().spell(g_report->waiting + length, sizeof g_report->waiting - length, 2, 12);
  ++g_report->told;
  errno = error;
}

void onCrash(int signal, siginfo_t* info, void*) {
  if (g_report && !g_report->crashed.exchange(true)) {
    if (t_call) std::memcpy(g_report->crashedCall, t_call->call, sizeof g_report->crashedCall);
    if (signal == SIGSEGV || signal == SIGBUS) {
      if (const char* const operation = ownerOfRevoked(info->si_addr))
        std::strncpy(g_report->touched, operation, sizeof g_report->touched - 1);
    }
    Stack::here().spell(g_report->stack, sizeof g_report->stack, 1, 24);
  }
  ::signal(signal, SIG_DFL);
  raise(signal);
}

/// Holds a thread up in the midst of a call.
void onDisturbed(int) {
  if (t_call) holdUpNow();
}

void sleepWhile(int value, long forMs) {
  const timespec atMost{0, forMs * 1000000};
  syscall(SYS_futex, &g_paused, FUTEX_WAIT_PRIVATE, value, &atMost, nullptr, 0);
}

void setPaused(int value) {
  g_paused = value;
  syscall(SYS_futex, &g_paused, FUTEX_WAKE_PRIVATE, 2, nullptr, nullptr, 0);
}

/// Until the other thread is done, or waits for this one.
void pauseNow() {
  constexpr int kTurns = 4;
  const int error = errno;
  setPaused(1);
  for (int i = 0; g_paused && i < kTurns; ++i) sleepWhile(1, 20);
  setPaused(0);
  errno = error;
}

#if defined(VORN_STEPS)
/// Whether the next instruction asks the system to keep signals away, or for another thread or process. A step where its
/// signal is kept away ends the process.
bool endsSteps(const ucontext_t& context) {
  const auto& registers = context.uc_mcontext.gregs;
  const auto* const code = reinterpret_cast<const unsigned char*>(registers[REG_RIP]);
  if (code[0] != 0x0f || code[1] != 0x05) return false;
  for (const long call : {SYS_rt_sigprocmask, SYS_clone, SYS_clone3, SYS_fork, SYS_vfork, SYS_execve}) {
    if (registers[REG_RAX] == call) return true;
  }
  return false;
}

void onStep(int signal, siginfo_t* info, void* context) {
  if (info->si_code != TRAP_TRACE) return onCrash(signal, info, context);
  auto& at = *static_cast<ucontext_t*>(context);
  auto& flags = at.uc_mcontext.gregs[REG_EFL];
  if (t_onEveryStep) {
    if (t_meanwhile) ++g_stepsMeanwhile;
    if (!t_inHost || endsSteps(at) || !t_onEveryStep(context)) flags &= ~0x100LL;
    return;
  }
  if (--t_steps > 0 && !endsSteps(at)) return;
  flags &= ~0x100LL;
  if (t_steps == 0) holdUpNow();
}

void catchSteps() {
  struct sigaction action = {};
  action.sa_sigaction = onStep;
  action.sa_flags = SA_RESTART | SA_SIGINFO;
  sigaction(SIGTRAP, &action, nullptr);
}
#endif

int disturbance() { return SIGRTMIN + 6; }

std::string nameOf(const std::string& shown) { return shown.substr(0, shown.find('(')); }

}  // namespace

int question() { return SIGRTMIN + 7; }

void noteCrashes(Report& report) {
  g_report = &report;
  report.process = getpid();
  struct sigaction asked = {};
  asked.sa_handler = onQuestion;
  asked.sa_flags = SA_RESTART;
  sigaction(question(), &asked, nullptr);
  Stack::here();  // loads what it needs now, not in the handler
  constexpr std::size_t kStack = 1 << 16;
  stack_t own = {};
  static char* const stack = new char[kStack];
  own.ss_sp = stack;
  own.ss_size = kStack;
  sigaltstack(&own, nullptr);
  for (const int signal : {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL, SIGTRAP, SIGSYS}) {
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_DFL) continue;
    action.sa_sigaction = onCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    sigaction(signal, &action, nullptr);
  }
}

void Trial::ask(const std::string& shown, const std::function<void()>& call) {
  if (m_known.dead.count(nameOf(shown))) {
    const std::string area = areaOf(nameOf(shown));
    notAsked(demands.without.count(area) ? "the host is said to be without " + area
                                         : nameOf(shown) + "() fails, see its checks");
  }
  const OnItsWay onItsWay(m_report, shown);
  const auto after = [&] { return *m_report.context ? std::string(", ") + m_report.context : std::string(); };
  const pid_t process = getpid();
  try {
    call();
    endTwin(process, shown);
    if (m_report.descriptor > 0 && fcntl(m_report.descriptor, F_GETFD) < 0 &&
        m_report.descriptor.exchange(0) > 0)
      broken(shown + " closed a descriptor that is not the host's" + after());
  } catch (const Outcome&) {
    throw;
  } catch (const std::exception& exception) {
    endTwin(process, shown);
    broken(shown + " threw " + demangled(typeid(exception).name()) + ": " +
           spelled(std::string(exception.what())) + after());
  } catch (...) {
    broken(shown + " threw what is no std::exception" + after());
  }
}

void Trial::endTwin(int process, const std::string& shown) {
  if (getpid() == process) return;
  if (!m_report.twice.exchange(true)) put(m_report.twiceCall, shown);
  _exit(0);
}

std::shared_ptr<Host> Trial::make() {
  std::shared_ptr<Host> host;
  ask("making the host", [&] { host = m_maker(); });
  if (!host) broken("no host was made");
  ask("vornMediaPlayers()", [&] { HostLibrary::playersOf(host); });
  m_report.made = true;
  return host;
}

Host& Trial::host() {
  if (!m_host) m_host = make();
  return *m_host;
}

MediaPlayers* Trial::mediaPlayers() {
  host();
  return HostLibrary::playersOf(m_host);
}

void Trial::destroy() {
  ask("destroying the host", [&] { m_host.reset(); });
}

Player& Trial::player() {
  if (m_known.broken.count("VornDALImplIF/33/getEMPAdapter/never-null"))
    notAsked("there is no player, see VornDALImplIF/33/getEMPAdapter/never-null");
  Player* player = nullptr;
  Host& asked = host();
  ask("getEMPAdapter()", [&] { player = asked.getEMPAdapter(); });
  if (!player)
    broken(std::string("getEMPAdapter() answered null") + (*m_report.context ? ", " : "") + m_report.context);
  return *player;
}

void Trial::presume(const std::string& check, const std::function<void()>& act) const {
  if (m_known.broken.count(check)) notAsked("a promise that this one stands on is broken, see " + check);
  act();
}

void enterHost() {
  t_inHost = true;
  beginSteps();
}

void leaveHost() {
  t_steps = 0;
  t_inHost = false;
}

bool canStep() {
#if defined(VORN_STEPS)
  return true;
#else
  return false;
#endif
}

void onEveryStep(bool (*act)(const void* context)) {
#if defined(VORN_STEPS)
  if (act) catchSteps();
#endif
  t_onEveryStep = act;
}

void pauseHere() {
  constexpr int kTurns = 20, kTurnsWithout = 6;
  const int error = errno;
  setPaused(1);
  g_stepsMeanwhile = 0;
  for (int turn = 0, without = 0; g_paused && turn < kTurns && without < kTurnsWithout; ++turn) {
    sleepWhile(1, 20);
    without = g_stepsMeanwhile.exchange(0) == 0 ? without + 1 : 0;
  }
  setPaused(0);
  errno = error;
}

void guardMemory(bool guards) { g_guards = guards; }

bool interposesMemory() { return g_guarded != nullptr; }

bool isGuarded(const void* memory) {
  const auto owns = g_guarded.load();
  return owns && owns(memory);
}

void Trial::explain(const std::string& context) { put(m_report.context, context); }

long Trial::overlaps() const { return g_overlaps; }

void Trial::addLoad() {
  m_report.overlaps += g_overlaps;
  m_report.loaded += g_calls;
  saw(std::to_string(m_report.overlaps) + " of " + std::to_string(m_report.loaded) + " calls overlapped");
}

void Trial::onThreads(int count, const std::function<void(int)>& act, bool disturbed) {
  std::mutex mutex;
  std::optional<Outcome> first;
  std::atomic<int> ready{0}, left{count};
  std::vector<std::thread> threads;
  threads.reserve(static_cast<std::size_t>(count));
  if (disturbed) {
    struct sigaction action = {};
    action.sa_handler = onDisturbed;
    action.sa_flags = SA_RESTART;
    sigaction(disturbance(), &action, nullptr);
#if defined(VORN_STEPS)
    catchSteps();
#endif
  }
  for (int number = 0; number < count; ++number) {
    threads.emplace_back([&, number] {
      t_disturbed = disturbed;
      t_dice = static_cast<std::uint64_t>(number) * 7919 + 13 + static_cast<std::uint64_t>(now());
      ++ready;
      while (ready < count) std::this_thread::yield();
      try {
        act(number);
      } catch (const Outcome& outcome) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!first || (first->kind != HostVerdict::kBroken && outcome.kind == HostVerdict::kBroken))
          first = outcome;
      }
      --left;
    });
  }
  for (std::size_t turn = 0; disturbed && left > 0; ++turn) {
    pthread_kill(threads[turn * 7 % threads.size()].native_handle(), disturbance());
    const timespec pause{0, 50000};
    nanosleep(&pause, nullptr);
  }
  for (std::thread& thread : threads) thread.join();
  if (first) throw Outcome(*first);
}

long Trial::held(long after, const std::function<void()>& act) {
  t_pauseAt = after;
  t_cameBy = 0;
  const AtEnd end([] { t_pauseAt = -1; });
  act();
  return t_cameBy;
}

bool Trial::meanwhile(const std::function<void()>& act) {
  if (!g_paused) sleepWhile(0, 20);
  if (!g_paused) return false;
  t_meanwhile = true;
  const AtEnd end([] {
    t_meanwhile = false;
    setPaused(0);
  });
  act();
  return true;
}

bool Trial::othersPaused() { return g_paused; }

void Trial::inKilledProcess(const std::function<void()>& act, std::chrono::microseconds after) {
  m_report.innerEnded = false;
  const pid_t child = fork();
  if (child < 0) notAsked(std::string("no process can be made: ") + std::strerror(errno));
  if (child == 0) {
    m_report.process = getpid();
    if (after.count() > 0) guardMemory(false);  // much is to be done until then
    try {
      act();
      m_report.verdict = HostVerdict::kKept;
    } catch (const Outcome& outcome) {
      put(m_report.detail, outcome.detail);
      m_report.verdict = outcome.kind;
      m_report.refused = outcome.refused;
    }
    m_report.innerEnded = true;
    std::raise(SIGKILL);
  }
  int status = 0;
  bool cut = false;
  if (after.count() > 0) {
    std::this_thread::sleep_for(after);  // a random moment is what is wanted
    cut = waitpid(child, &status, WNOHANG) == 0;
    if (cut) kill(child, SIGKILL);
  }
  if (cut || after.count() == 0) {
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
  }
  m_report.process = getpid();
  if (cut && !m_report.innerEnded && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) {
    for (Report::Busy& call : m_report.calls) call.since = 0;
    return;
  }
  if (!m_report.innerEnded) {
    // The host ended it: this process follows, and leaves the word to the watching one.
    if (WIFSIGNALED(status)) {
      ::signal(WTERMSIG(status), SIG_DFL);
      std::raise(WTERMSIG(status));
    }
    _exit(WEXITSTATUS(status));
  }
  if (m_report.verdict != HostVerdict::kKept)
    throw Outcome{static_cast<HostVerdict::Kind>(m_report.verdict.load()), m_report.detail, m_report.refused};
}

}  // namespace vorn_testing::checks

namespace vorn_testing::interposed {

void locked(const void* mutex) {
  checks::noteHeld(mutex);
  if (checks::t_disturbed && checks::t_call && checks::t_steps == 0 && checks::roll() % 4 == 0)
    checks::holdUpNow();
}

void place() {
  if (checks::t_pauseAt >= 0 && checks::t_inHost && checks::t_cameBy++ == checks::t_pauseAt)
    checks::pauseNow();
}

void waits() {
  if (checks::t_meanwhile) checks::setPaused(0);  // for a mutex of the thread that is held up
}

void staticPlace(const char* function) {
  if (checks::t_inHost) checks::noteStaticPlace(function);
}

bool guardsMemory() { return checks::g_guards.load(std::memory_order_relaxed); }

void guardedBy(bool (*owns)(const void*)) { checks::g_guarded = owns; }

}  // namespace vorn_testing::interposed
