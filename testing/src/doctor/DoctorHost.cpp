#include "vorn_testing/DoctorHost.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

#include "Argument.h"
#include "LockWatch.h"

namespace vorn_testing {

using CommsStateInfo = DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo;
using VornDeviceAbstractionLayer::VornDALImplIF;
using VornDeviceAbstractionLayer::VornEMPAdapterIF;

namespace {

std::mutex g_doctorsMutex;
std::vector<const Doctor*> g_doctors;
std::string g_notWatching;

void print(const Finding& finding) {
  std::fputs(describe(finding).c_str(), stderr);
  if (finding.rule != Finding::kLongWait) std::abort();
}

void onWait(const Wait& wait) {
  const Finding::Rule rules[] = {Finding::kReentry, Finding::kLockOrder, Finding::kLongWait};
  Doctor::report({rules[wait.kind], wait.message, wait.here.lines(), wait.before.lines()});
}

void onMisuse(const Misuse& misuse) {
  const bool kept = misuse.kind == Misuse::kKept;
  Doctor::report({kept ? Finding::kReferenceKept : Finding::kArgumentChanged,
                  std::string("An argument of ") + misuse.operation + "() was " +
                      (kept ? "touched after the call." : "changed, which is the caller's own."),
                  Stack::here().lines(), misuse.call.lines()});
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
             "thread, or do it after the return. A lock of your own is asked for again when you hold it while you notify "
             "or call an adapter.";
    case Finding::kLockOrder:
      return "Where mutexes of the library nest, every thread takes them in one order: a message may go up from inside "
             "one that goes down, not the other way round. Hold no lock of your own while you notify or call an adapter, "
             "and wait inside a locked operation for no thread that calls into it.";
    case Finding::kLongWait:
      return "A locked operation answers soon: others wait for its adapter's mutex meanwhile. If it waits for a thread "
             "that calls the adapter, or for a lock that such a thread holds, it never ends.";
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
    case Finding::kArgumentChanged:
      return "An argument that comes by reference to const is the caller's own: copy it before you change it.";
    case Finding::kNotWatching:
      return "Locks are watched on Linux with the GNU C library, on x86-64 and 64-bit ARM, where the library is linked "
             "dynamically. Without that, deadlocks are waited for.";
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

Doctor::Doctor(OnFinding onFinding, std::chrono::milliseconds patience)
    : m_onFinding(onFinding ? std::move(onFinding) : OnFinding(print)) {
  std::string trouble;
  {
    const std::lock_guard<std::mutex> lock(g_doctorsMutex);
    g_doctors.push_back(this);
    g_notWatching = trouble = watchLocks(onWait, patience);
    watchArguments(onMisuse);
  }
  if (!trouble.empty())
    tell({Finding::kNotWatching, "Locks are not watched: " + trouble + ".", Stack::here().lines(), {}});
}

Doctor::~Doctor() {
  const std::lock_guard<std::mutex> lock(g_doctorsMutex);
  g_doctors.erase(std::find(g_doctors.begin(), g_doctors.end(), this));
  if (!g_doctors.empty()) return;
  leaveLocks();
  g_notWatching.clear();
}

std::string Doctor::notWatching() {
  const std::lock_guard<std::mutex> lock(g_doctorsMutex);
  return g_notWatching;
}

void Doctor::report(const Finding& finding) {
  OnFinding onFinding = print;
  {
    const std::lock_guard<std::mutex> lock(g_doctorsMutex);
    if (!g_doctors.empty()) onFinding = g_doctors.back()->m_onFinding;
  }
  onFinding(finding);
}

void reportNotLive(const std::type_info& adapter, bool kept) {
  Doctor::report({Finding::kNotLive,
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
class Passed<T&> : public Argument<T> {
  using Argument<T>::Argument;
};

template <>
class Passed<const CommsStateInfo&> : public Passed<const CommsStateInfo> {
  using Passed<const CommsStateInfo>::Passed;
};

}  // namespace

/// What stands between the doctor and the host: marks what runs and lends the arguments.
class DoctorHost::Watch : public AroundHost<Watch> {
 public:
  Watch(VornDALImplIF& inner, OnFinding onFinding, std::chrono::milliseconds patience)
      : AroundHost(inner), doctor(std::move(onFinding), patience), running(0) {}

  const Doctor doctor;
  std::atomic<int> running;  ///< Calls into the host.

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation& operation, const Onward<Interface, Result, Parameters...>& onward,
                std::remove_reference_t<Parameters>&... arguments) {
    const Call call(running);
    return onward(Passed<Parameters>(arguments, operation.name).get()...);
  }

 protected:
  VornEMPAdapterIF* front(VornEMPAdapterIF* inner) override {
    if (!inner) {
      doctor.tell({Finding::kNullPlayer, "getEMPAdapter() answered null.", Stack::here().lines(), {}});
      return &m_nullPlayer;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    auto& player = m_players[inner];
    if (!player) player = std::make_unique<Player>(*this, *inner);
    return player.get();
  }

 private:
  class Call {
   public:
    explicit Call(std::atomic<int>& running) : m_running(running) { ++m_running; }
    ~Call() { --m_running; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

   private:
    std::atomic<int>& m_running;
  };

  /// The player's operations are calls of its host too.
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

DoctorHost::DoctorHost(VornDALImplIF& inner, OnFinding onFinding, std::chrono::milliseconds patience)
    : DoctorHost(std::make_shared<Watch>(inner, std::move(onFinding), patience)) {}

DoctorHost::DoctorHost(std::shared_ptr<Watch> watch) : ForwardingHost(*watch), m_watch(watch) {}

DoctorHost::~DoctorHost() {
  const auto early = [&](const std::string& why) {
    m_watch->doctor.tell(
        {Finding::kHostDestroyed, "The host is destroyed while " + why + ".", Stack::here().lines(), {}});
  };
  if (m_watch->running)  // their adapters may be locked, so do not ask them
    early("calls into it run: " + std::to_string(m_watch->running));
  else if (const std::string names = Holders(*this).names; !names.empty())
    early("adapters hold it: " + names);
}

}  // namespace vorn_testing
