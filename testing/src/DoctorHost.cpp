#include "vorn_testing/DoctorHost.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

#include "Lent.h"
#include "LockWatch.h"

namespace vorn_testing {

using CommsStateInfo = DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo;
using VornDeviceAbstractionLayer::VornDALImplIF;
using VornDeviceAbstractionLayer::VornEMPAdapterIF;

namespace {

std::mutex g_doctorsMutex;
std::vector<const DoctorHost::OnFinding*> g_doctors;

/// The host operations that run on this thread, outermost first.
thread_local std::vector<const char*> t_running;

void printAndAbort(const Finding& finding) {
  std::fputs(describe(finding).c_str(), stderr);
  std::abort();
}

void onWait(const Wait& wait) {
  const std::string who = t_running.empty() ? "This thread" : std::string(t_running.back()) + "()";
  const bool own = wait.other.empty();
  DoctorHost::report(
      {own ? Finding::kReentry : Finding::kLockOrder,
       who + " asks for " + wait.mutex +
           (own ? ", which its own thread holds." : ", whose holder waits for " + wait.other + "."),
       wait.here.lines(), wait.before.lines()});
}

void onKept(const char* operation, const Stack& call) {
  DoctorHost::report({Finding::kReferenceKept,
                      std::string("An argument of ") + operation + "() was touched after the call.",
                      Stack::here().lines(), call.lines()});
}

/// The names of the adapters that hold a host.
struct Holders : OperationVisitor {
  const VornDALImplIF& host;
  std::string names;

  explicit Holders(const VornDALImplIF& theHost) : host(theHost) { visitOperations(*this); }

  template <class Adapter>
  void constructor(const Operation& operation, Constructor<Adapter, VornDALImplIF&>) {
    static_assert(sizeof(Adapter) == sizeof(void*),
                  "an adapter is the reference to its host and nothing else");
    const auto adapter = Adapter::getInstance();
    if (adapter && *reinterpret_cast<const VornDALImplIF* const*>(adapter.get()) == &host)
      names += (names.empty() ? "" : ", ") + std::string(operation.adapter);
  }
  using OperationVisitor::constructor;
};

}  // namespace

const char* ruleText(Finding::Rule rule) {
  switch (rule) {
    case Finding::kReentry:
      return "A locked operation holds its adapter's mutex until the other side returns. From inside, call no locked "
             "operation, CreateInstance(), getInstance() or Shutdown() of the same adapter: hand that work to another "
             "thread, or do it after the return.";
    case Finding::kLockOrder:
      return "Where mutexes of the library nest, every thread takes them in one order: a message may go up from inside "
             "one that goes down, not the other way round. Inside a locked operation, wait for no thread that calls "
             "into it.";
    case Finding::kHostDestroyed:
      return "A host outlives every call: shut all adapters down, join the threads that call them, then destroy it.";
    case Finding::kNullPlayer:
      return "getEMPAdapter() never answers null: the library uses the pointer untested. Without a player, hand out one "
             "that answers false.";
    case Finding::kNotLive:
      return "Adapters serve between CreateInstance() and Shutdown(). Outside, calls are dropped and answered by "
             "defaults: create earlier, or stop calling before the shutdown.";
    case Finding::kReferenceKept:
      return "An argument that comes by reference is the caller's own, and ends with the call: copy what you need.";
  }
  return "";
}

std::string describe(const Finding& finding) {
  std::string text =
      "vorn doctor: " + finding.message + "\n  rule: " + ruleText(finding.rule) + "\n  here:\n";
  for (const auto& line : finding.here) text += "    " + line + "\n";
  if (!finding.before.empty()) text += "  before:\n";
  for (const auto& line : finding.before) text += "    " + line + "\n";
  return text;
}

void DoctorHost::report(const Finding& finding) {
  OnFinding onFinding = printAndAbort;
  {
    const std::lock_guard<std::mutex> lock(g_doctorsMutex);
    if (!g_doctors.empty()) onFinding = *g_doctors.back();
  }
  onFinding(finding);
}

void reportNotLive(const std::type_info& adapter, bool kept) {
  DoctorHost::report({Finding::kNotLive,
                      demangled(adapter.name()) +
                          (kept ? " was used after its shutdown." : " was used before its creation."),
                      Stack::here().lines(),
                      {}});
}

namespace {

// What becomes of an argument: one that comes by reference is lent, except what holds members that are not known here.

template <class Parameter>
class Passed {
 public:
  Passed(Parameter& argument, const char*) : m_argument(argument) {}
  Parameter& get() { return m_argument; }

 private:
  Parameter& m_argument;
};

template <class T>
class Passed<T&> : public Lent<std::remove_const_t<T>> {
  using Lent<std::remove_const_t<T>>::Lent;
};

template <>
class Passed<const CommsStateInfo&> : public Passed<const CommsStateInfo> {
  using Passed<const CommsStateInfo>::Passed;
};

}  // namespace

/// What stands between the doctor and the host: marks what runs and lends the arguments.
class DoctorHost::Watch : public AroundHost<Watch> {
 public:
  Watch(VornDALImplIF& inner, OnFinding toCall)
      : AroundHost(inner), onFinding(toCall ? std::move(toCall) : OnFinding(printAndAbort)), running(0) {}

  const OnFinding onFinding;
  std::atomic<int> running;

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation& operation, const Onward<Interface, Result, Parameters...>& onward,
                std::remove_reference_t<Parameters>&... arguments) {
    const Call call(*this, operation.name);
    return onward(Passed<Parameters>(arguments, operation.name).get()...);
  }

 protected:
  VornEMPAdapterIF* front(VornEMPAdapterIF* inner) override {
    if (!inner) {
      onFinding({Finding::kNullPlayer, "getEMPAdapter() answered null.", Stack::here().lines(), {}});
      return &m_nullPlayer;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto& player = m_players[inner];
    if (!player) player = std::make_unique<Player>(*this, *inner);
    return player.get();
  }

 private:
  /// Marks an operation as running, on its thread and for its host.
  class Call {
   public:
    Call(Watch& watch, const char* operation) : m_watch(watch) {
      t_running.push_back(operation);
      ++m_watch.running;
    }
    ~Call() {
      --m_watch.running;
      t_running.pop_back();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    Watch& m_watch;
  };

  /// The same for the player's operations, which are calls of its host too.
  class Player : public AroundPlayer<Player> {
   public:
    Player(Watch& watch, VornEMPAdapterIF& inner) : AroundPlayer(inner), m_watch(watch) {}

    template <class Result, class Interface, class... Parameters>
    Result around(const Operation& operation, const Onward<Interface, Result, Parameters...>& onward,
                  std::remove_reference_t<Parameters>&... arguments) {
      return m_watch.around(operation, onward, arguments...);
    }

   private:
    Watch& m_watch;
  };

  NullPlayer m_nullPlayer;
  std::mutex m_mutex;
  std::map<VornEMPAdapterIF*, std::unique_ptr<Player>> m_players;
};

DoctorHost::DoctorHost(VornDALImplIF& inner, OnFinding onFinding)
    : DoctorHost(std::make_shared<Watch>(inner, std::move(onFinding))) {}

DoctorHost::DoctorHost(std::shared_ptr<Watch> watch) : ForwardingHost(*watch), m_watch(watch) {
  const std::lock_guard<std::mutex> lock(g_doctorsMutex);
  g_doctors.push_back(&m_watch->onFinding);
  watchLocks(onWait);
  watchLent(onKept);
}

DoctorHost::~DoctorHost() {
  const auto early = [&](const std::string& why) {
    m_watch->onFinding(
        {Finding::kHostDestroyed, "The host is destroyed while " + why + ".", Stack::here().lines(), {}});
  };
  if (m_watch->running)  // their adapters may be locked, so do not ask them
    early("calls into it run: " + std::to_string(m_watch->running));
  else if (const std::string names = Holders(*this).names; !names.empty())
    early("adapters hold it: " + names);
  const std::lock_guard<std::mutex> lock(g_doctorsMutex);
  g_doctors.erase(std::find(g_doctors.begin(), g_doctors.end(), &m_watch->onFinding));
  if (g_doctors.empty()) watchLocks(nullptr);
}

}  // namespace vorn_testing
