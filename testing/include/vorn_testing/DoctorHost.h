#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <typeinfo>

#include "ForwardingHost.h"
#include "NullHost.h"

namespace vorn_testing {

/// A rule of the library that was broken, and where.
struct Finding {
  /// The rules.
  enum Rule {
    kReentry,        ///< A mutex of the library was asked for by the thread that holds it.
    kLockOrder,      ///< Threads inside the library wait for each other.
    kHostDestroyed,  ///< A host went while adapters or calls still needed it.
    kNullPlayer,     ///< getEMPAdapter() answered null.
    kNotLive,        ///< An adapter was used before its creation or after its shutdown.
    kReferenceKept,  ///< The host touched an argument of a call that had ended.
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

/// A host for debug builds: hands everything on to another, which is borrowed, and reports what would otherwise
/// freeze or crash the device: at once, or after half a second where only waiting shows it (kLockOrder).
///
/// Make one around your host and hand it to every CreateInstance(). While one lives, the library's own calls of
/// pthread_mutex_lock() are watched; nothing else in the process is. A thread that would wait for itself, directly or
/// through others, gets std::system_error from the adapter instead, so the process goes on. Arguments that come by
/// reference are lent as copies, except CommsStateInfo, whose members are not known here; they become unreachable when
/// the call returns, and a touch is reported and let through. Of the last 256, that is, and of the argument itself:
/// a pointer kept into a long text's characters goes unnoticed.
///
/// Stacks name functions of programs that are linked with -rdynamic.
class DoctorHost : public ForwardingHost {
 public:
  typedef std::function<void(const Finding&)> OnFinding;

  /// Runs `onFinding` on the thread that broke the rule, possibly on several at once and under the adapter's
  /// mutex; it must neither throw nor call an adapter. Without one, findings are printed and the process aborts.
  explicit DoctorHost(VornDeviceAbstractionLayer::VornDALImplIF& inner, OnFinding onFinding = OnFinding());

  /// Reports adapters that still hold this host, and calls that still run.
  ~DoctorHost() override;

  DoctorHost(const DoctorHost&) = delete;
  DoctorHost& operator=(const DoctorHost&) = delete;

  /// Hands `finding` to the doctor that was made last, or prints and aborts when there is none.
  static void report(const Finding& finding);

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
