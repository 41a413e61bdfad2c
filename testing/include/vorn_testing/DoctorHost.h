#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "ForwardingHost.h"
#include "NullHost.h"

namespace vorn_testing {

/// A rule of the library that was broken, and where.
struct Finding {
  /// The rules.
  enum Rule {
    kReentry,          ///< A mutex was asked for by the thread that holds it.
    kLockOrder,        ///< Threads wait for each other without end.
    kLongWait,         ///< A thread waits longer than the patience; it may still go on.
    kHostDestroyed,    ///< A host went while adapters or calls still needed it.
    kNullPlayer,       ///< getEMPAdapter() answered null.
    kNotLive,          ///< An adapter was used before its creation or after its shutdown.
    kReferenceKept,    ///< The host touched an argument of a call that had ended.
    kArgumentChanged,  ///< The host wrote to an argument that came by reference to const.
    kNotWatching,      ///< The doctor cannot watch locks in this process.
  };
  Rule rule;                        ///< Which one.
  std::string message;              ///< What happened, in one sentence.
  std::vector<std::string> here;    ///< The stack that broke the rule, innermost first.
  std::vector<std::string> before;  ///< The stack that it collides with; empty when there is none.
};

/// The rule in words, and what to do instead.
const char* ruleText(Finding::Rule rule);

/// The whole finding as it is printed.
std::string describe(const Finding& finding);

/// Watches the process while it lives: locks, and what becomes of arguments.
///
/// A DoctorHost has one. Make one yourself where findings are wanted but no host can be wrapped: calls of
/// pthread_mutex_lock(), such as those of std::mutex, are watched in every module that is loaded by then, with the
/// help of the GNU C library. A thread that would wait for itself, directly or through others, gets EDEADLK instead,
/// which is std::system_error from an adapter or a std::mutex, so the process goes on. Other waits are reported after
/// `patience`, at most once each, when they are for an adapter's mutex or inside an operation.
class Doctor {
 public:
  typedef std::function<void(const Finding&)> OnFinding;

  /// How long a thread may wait for a lock before that is reported.
  static std::chrono::milliseconds defaultPatience() { return std::chrono::seconds(1); }

  /// Runs `onFinding` on the thread that broke the rule, possibly on several at once, under the adapter's mutex or
  /// from the handler of a fault; it must neither throw nor call an adapter. Without one, findings are printed and
  /// the process aborts, except after kLongWait.
  explicit Doctor(OnFinding onFinding = OnFinding(), std::chrono::milliseconds patience = defaultPatience());
  ~Doctor();
  Doctor(const Doctor&) = delete;
  Doctor& operator=(const Doctor&) = delete;

  /// Why locks are not watched; empty when they are, or no doctor lives. It was a finding too: kNotWatching.
  static std::string notWatching();

  /// Hands `finding` to the doctor that was made last, or prints and aborts when there is none.
  static void report(const Finding& finding);

  /// Hands `finding` to this one.
  void tell(const Finding& finding) const { m_onFinding(finding); }

 private:
  const OnFinding m_onFinding;
};

/// A host for debug builds: hands everything on to another, which is borrowed, and reports what would otherwise
/// freeze or crash the device, at once where that is certain.
///
/// Make one around your host and hand it to every CreateInstance(). It is a Doctor, and lends the host copies of the
/// arguments that come by reference, except of CommsStateInfo, whose members are not known here. Those that are const
/// can only be read, and all become unreachable when the call returns; a touch is reported and let through. Of the last
/// 256, that is, and of the argument itself: a pointer kept into a long text's characters goes unnoticed.
///
/// Stacks name functions of programs that are linked with -rdynamic.
class DoctorHost : public ForwardingHost {
 public:
  typedef Doctor::OnFinding OnFinding;

  /// The parameters are those of Doctor.
  explicit DoctorHost(VornDeviceAbstractionLayer::VornDALImplIF& inner, OnFinding onFinding = OnFinding(),
                      std::chrono::milliseconds patience = Doctor::defaultPatience());

  /// Reports adapters that still hold this host, and calls that still run.
  ~DoctorHost() override;

  DoctorHost(const DoctorHost&) = delete;
  DoctorHost& operator=(const DoctorHost&) = delete;

 private:
  class Watch;

  explicit DoctorHost(std::shared_ptr<Watch> watch);

  const std::shared_ptr<Watch> m_watch;
};

/// Reports the use of an adapter that has no instance, with the stack of the caller. For Checked.
void reportNotLive(const std::type_info& adapter, bool kept);

/// The assistant side's way to an adapter, in debug builds: reports calls before CreateInstance() and after
/// Shutdown(), which the adapter itself answers quietly with defaults.
///
///     Checked<VornDeviceInfo> info;
///     info->getVolume();
///
/// Each arrow asks getInstance(), so it is no way for a host to call back from inside an operation.
template <class Adapter>
class Checked {
 public:
  Checked() : m_adapter(Adapter::getInstance()) {}
  explicit Checked(std::shared_ptr<Adapter> adapter) : m_adapter(adapter) {}

  /// Throws std::logic_error, after the finding, when there never was an instance.
  Adapter* operator->() {
    if (!m_adapter) m_adapter = Adapter::getInstance();
    if (!m_adapter || !Adapter::getInstance()) reportNotLive(typeid(Adapter), m_adapter != nullptr);
    if (!m_adapter) throw std::logic_error("the adapter has no instance");
    return m_adapter.get();
  }

 private:
  std::shared_ptr<Adapter> m_adapter;
};

}  // namespace vorn_testing
