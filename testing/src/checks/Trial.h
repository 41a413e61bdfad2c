#pragma once

#include <VornEMPAdapterIF.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "vorn_testing/HostChecks.h"

namespace vorn_testing::checks {

using Host = VornDeviceAbstractionLayer::VornDALImplIF;
using Player = VornDeviceAbstractionLayer::VornEMPAdapterIF;

/// How a check ends before its end: thrown by Trial, never past a host's frames.
struct Outcome {
  HostVerdict::Kind kind;
  std::string detail;
};

/// Copies as much of a text as fits.
template <std::size_t kSize>
void put(char (&target)[kSize], const std::string& text) {
  target[text.copy(target, kSize - 1)] = '\0';
}

/// What the child tells the process that watches it, in memory that both see: it must survive the child.
struct Report {
  static constexpr std::size_t kText = 1000;
  using Text = char[kText];

  /// A call on its way. `since` is 0 when free, else the start in nanoseconds of the steady clock.
  struct Busy {
    std::atomic<std::int64_t> since;
    Text call;
  };

  std::atomic<bool> ended;       ///< Whether the check came to its end; verdict and detail hold then.
  std::atomic<bool> innerEnded;  ///< Whether a process that the check started came to its own.
  std::atomic<bool> made;
  std::atomic<std::int64_t> active;  ///< When something was last done.
  std::atomic<int> verdict;
  Text detail;
  Text excuse;   ///< While not empty, what goes wrong is the business of the check named here.
  Text context;  ///< What goes before a call that ends the process.
  std::atomic<std::int64_t> slowest;
  Text slowestCall;
  Busy calls[16];
};

/// One check at work in the child process: makes hosts, calls them and says what was seen.
class Trial {
 public:
  Trial(const HostMaker& hostMaker, const HostDemands& hostDemands, Report& forParent)
      : demands(hostDemands), m_report(forParent), m_maker(hostMaker) {}

  const HostDemands& demands;

  /// Makes another host, on this thread.
  std::shared_ptr<Host> make();

  /// The host of this check, made on the thread that asks first.
  Host& host();

  /// Destroys it, on this thread.
  void destroy();

  /// The host's player, asked for anew as the library does. Without one there is nothing to ask.
  Player& player();

  [[noreturn]] void broken(const std::string& detail) const { throw Outcome{HostVerdict::kBroken, detail}; }
  [[noreturn]] void notAsked(const std::string& detail) const {
    throw Outcome{HostVerdict::kNotAsked, detail};
  }

  /// Makes one call into the host, named `shown`: watched and timed; what it throws breaks the check.
  void ask(const std::string& shown, const std::function<void()>& call);

  /// Does what another check is about: when that goes wrong, in whatever way, this check is not asked.
  void presume(const std::string& check, const std::function<void()>& act);

  /// Adds to what is said when a call from now on ends the process or does not answer.
  void explain(const std::string& context);

  /// Runs on `count` threads, numbered from 0 and let go together, until all have ended.
  void onThreads(int count, const std::function<void(int)>& act);

  /// Runs in a process of its own that is killed as soon as `act` is done.
  void inKilledProcess(const std::function<void()>& act);

 private:
  Report& m_report;
  const HostMaker& m_maker;
  std::shared_ptr<Host> m_host;
};

/// One promise and how it is tried.
struct Check {
  HostCheck shown;
  std::function<void(Trial&)> run;
};

/// Runs the check in a child process and watches it.
HostVerdict runWatched(const Check& check, const HostMaker& maker, const HostDemands& demands);

}  // namespace vorn_testing::checks
