// The child's side of a check.

#include "Trial.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <optional>
#include <thread>
#include <typeinfo>
#include <vector>

#include "../Stack.h"
#include "Spelling.h"

namespace vorn_testing::checks {

namespace {

std::int64_t now() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

/// Enters a call in the report for as long as it runs.
class OnItsWay {
 public:
  OnItsWay(Report& report, const std::string& shown) : m_report(report), m_shown(shown) {
    for (Report::Busy& call : report.calls) {
      std::int64_t free = 0;
      if (!call.since.compare_exchange_strong(free, -1)) continue;
      put(call.call, shown);
      m_call = &call;
      break;
    }
    m_start = now();
    if (m_call) m_call->since = m_start;
  }

  ~OnItsWay() {
    const std::int64_t end = now();
    if (m_call) m_call->since = 0;
    m_report.active = end;
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
  Report::Busy* m_call = nullptr;
  std::int64_t m_start = 0;
};

}  // namespace

void Trial::ask(const std::string& shown, const std::function<void()>& call) {
  const OnItsWay onItsWay(m_report, shown);
  try {
    call();
  } catch (const Outcome&) {
    throw;
  } catch (const std::exception& exception) {
    broken(shown + " threw " + demangled(typeid(exception).name()) + ": " +
           spelled(std::string(exception.what())));
  } catch (...) {
    broken(shown + " threw what is no std::exception");
  }
}

std::shared_ptr<Host> Trial::make() {
  std::shared_ptr<Host> host;
  ask("making the host", [&] { host = m_maker(); });
  if (!host) broken("no host was made");
  m_report.made = true;
  return host;
}

Host& Trial::host() {
  if (!m_host) m_host = make();
  return *m_host;
}

void Trial::destroy() {
  ask("destroying the host", [&] { m_host.reset(); });
}

Player& Trial::player() {
  Player* player = nullptr;
  Host& asked = host();
  ask("getEMPAdapter()", [&] { player = asked.getEMPAdapter(); });
  if (!player) notAsked("there is no player, see VornDALImplIF/33/getEMPAdapter/never-null");
  return *player;
}

void Trial::presume(const std::string& check, const std::function<void()>& act) {
  const std::string outer = m_report.excuse;
  if (outer.empty()) put(m_report.excuse, check);
  try {
    act();
  } catch (Outcome& outcome) {
    if (outcome.kind == HostVerdict::kBroken)
      outcome = {HostVerdict::kNotAsked, outcome.detail + ", see " + check};
    throw;
  }
  put(m_report.excuse, outer);
}

void Trial::explain(const std::string& context) { put(m_report.context, context); }

void Trial::onThreads(int count, const std::function<void(int)>& act) {
  std::mutex mutex;
  std::optional<Outcome> first;
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  threads.reserve(static_cast<std::size_t>(count));
  for (int number = 0; number < count; ++number) {
    threads.emplace_back([&, number] {
      ++ready;
      while (ready < count) std::this_thread::yield();
      try {
        act(number);
      } catch (const Outcome& outcome) {
        const std::lock_guard<std::mutex> lock(mutex);
        if (!first) first = outcome;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  if (first) throw Outcome(*first);
}

void Trial::inKilledProcess(const std::function<void()>& act) {
  m_report.innerEnded = false;
  const pid_t child = fork();
  if (child < 0) notAsked(std::string("no process can be made: ") + std::strerror(errno));
  if (child == 0) {
    try {
      act();
      m_report.verdict = HostVerdict::kKept;
    } catch (const Outcome& outcome) {
      put(m_report.detail, outcome.detail);
      m_report.verdict = outcome.kind;
    }
    m_report.innerEnded = true;
    std::raise(SIGKILL);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!m_report.innerEnded) {
    // The host ended it: this process follows, and leaves the word to the watching one.
    if (WIFSIGNALED(status)) std::raise(WTERMSIG(status));
    _exit(WEXITSTATUS(status));
  }
  if (m_report.verdict != HostVerdict::kKept)
    throw Outcome{static_cast<HostVerdict::Kind>(m_report.verdict.load()), m_report.detail};
}

}  // namespace vorn_testing::checks
