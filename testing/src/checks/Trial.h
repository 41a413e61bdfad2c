#pragma once

#include <VornEMPAdapterIF.h>

#include <atomic>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <utility>

#include "vorn_testing/HostChecks.h"
#include "vorn_testing/HostLibrary.h"

namespace vorn_testing::checks {

using Host = VornDeviceAbstractionLayer::VornDALImplIF;
using Player = VornDeviceAbstractionLayer::VornEMPAdapterIF;

/// How a check ends before its end: thrown by Trial, never past a host's frames.
struct Outcome {
  HostVerdict::Kind kind;
  std::string detail;
  bool refused = false;  ///< Of what was not asked: whether the host's answer is the reason.
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
    std::atomic<int> thread;
    std::atomic<bool>
        stepped;  ///< Whether the check stops it after every instruction: its time is not the host's own.
    Text call;
  };

  std::atomic<int> descriptor;  ///< One that the check's process has, and no host's; 0 for none.

  std::atomic<bool> ended;       ///< Whether the check came to its end; verdict and detail hold then.
  std::atomic<bool> innerEnded;  ///< Whether a process that the check started came to its own.
  std::atomic<bool> made;
  std::atomic<bool> refused;
  std::atomic<std::int64_t> active;  ///< When something was last done.
  std::atomic<int> verdict;
  Text detail;
  Text context;  ///< What goes before a call that ends the process.
  Text seen;     ///< How much was seen, also of a promise that was kept.
  std::atomic<std::int64_t> slowest;
  Text slowestCall;
  Busy calls[16];

  std::atomic<int> acknowledged;       ///< Of a process that is killed while it writes: how much was written.
  std::atomic<long> overlaps, loaded;  ///< Of a load: how many calls overlapped, of how many.

  std::atomic<bool> twice;  ///< Whether a call returned in another process too; that one's words stand in:
  Text twiceCall;

  // Of a thread that was ended by a signal.
  std::atomic<bool> crashed;
  Text crashedCall;
  Text touched;  ///< The operation whose argument it touched after the call.
  char stack[4000];

  // Of threads that wait: told when the watching process asks them.
  std::atomic<int> process;  ///< The one that is at work: the check's, or one that it started.
  std::atomic<int> told;     ///< How many have told.
  char waiting[4000];

  // What the watching process adds.
  std::atomic<bool> watched;
  std::atomic<int> status;
  Text reason;
};

/// What is known from the checks that were run before.
struct Known {
  std::set<std::string> broken;  ///< Checks, by id.
  std::set<std::string> dead;    ///< Operations, by name, that fail plainly or once did not answer.
};

/// One check at work in the child process: makes hosts, calls them and says what was seen.
class Trial {
 public:
  Trial(const HostMaker& hostMaker, const HostDemands& hostDemands, const Known& before, Report& forParent)
      : demands(hostDemands), m_known(before), m_report(forParent), m_maker(hostMaker) {}

  const HostDemands& demands;

  /// Makes another host, on this thread.
  std::shared_ptr<Host> make();

  /// The host of this check, made on the thread that asks first.
  Host& host();

  /// The media players that it brings, or null.
  MediaPlayers* mediaPlayers();

  /// Destroys it, on this thread.
  void destroy();

  /// The host's player, asked for anew as the library does.
  Player& player();

  [[noreturn]] void broken(const std::string& detail) const { throw Outcome{HostVerdict::kBroken, detail}; }
  [[noreturn]] void remark(const std::string& detail) const { throw Outcome{HostVerdict::kRemark, detail}; }
  /// For a reason that lies in the demands, or in what was broken before.
  [[noreturn]] void notAsked(const std::string& detail) const {
    throw Outcome{HostVerdict::kNotAsked, detail};
  }
  /// Because the host refuses by its answer.
  [[noreturn]] void refused(const std::string& detail) const {
    throw Outcome{HostVerdict::kNotAsked, detail, true};
  }

  /// Makes one call into the host, named `shown`: watched and timed; what it throws breaks the check.
  void ask(const std::string& shown, const std::function<void()>& call);

  /// Does what another check is about: not asked when that is known to be broken. What goes wrong here breaks this.
  void presume(const std::string& check, const std::function<void()>& act) const;

  /// Adds to what is said when a call from now on goes wrong.
  void explain(const std::string& context);

  /// Says how much was seen.
  void saw(const std::string& text) { put(m_report.seen, text); }

  /// Runs on `count` threads, numbered from 0 and let go together, until all have ended. When `disturbed`, they are
  /// held up in the midst of their calls again and again, so that others come in between.
  void onThreads(int count, const std::function<void(int)>& act, bool disturbed = false);

  /// Acts on this thread, whose call is held up once, after so many places where the host asks for memory or gives it
  /// back, takes a mutex or leaves it: until the other thread is done with what it does meanwhile(), or waits. Returns how
  /// many places came by; 0 in a program that does not stand before the C library.
  static long held(long after, const std::function<void()>& act);

  /// Acts if a thread is held up now; answers whether.
  static bool meanwhile(const std::function<void()>& act);
  static bool othersPaused();

  /// How many calls began while another was on its way, in this process.
  long overlaps() const;

  /// Adds what this process saw to what was seen of a load.
  void addLoad();
  long overlapped() const { return m_report.overlaps; }

  /// Runs in a process of its own that is killed as soon as `act` is done, or, when `after` is not zero, then.
  void inKilledProcess(const std::function<void()>& act,
                       std::chrono::microseconds after = std::chrono::microseconds(0));

  /// Shared with the processes that are killed.
  std::atomic<int>& acknowledged() { return m_report.acknowledged; }

 private:
  /// Ends this process when a host made it by fork() and let it return.
  void endTwin(int process, const std::string& shown);

  const Known& m_known;
  Report& m_report;
  const HostMaker& m_maker;
  std::shared_ptr<Host> m_host;
};

/// Acts when its block is left, also by an outcome.
struct AtEnd {
  std::function<void()> act;
  explicit AtEnd(std::function<void()> what) : act(std::move(what)) {}
  ~AtEnd() { act(); }
  AtEnd(const AtEnd&) = delete;
  AtEnd& operator=(const AtEnd&) = delete;
};

/// One promise and how it is tried.
struct Check {
  HostCheck shown;
  std::function<void(Trial&)> run;
};

/// The status of a process that a check let end in its own way, so that a host that ends it looks different.
constexpr int kOrderly = 86;

/// Catches the signals that end a process, to note the call and the stack before they do. Not where somebody else,
/// such as a sanitizer, looks already.
void noteCrashes(Report& report);

/// Right before and after the host's own instructions, for those that are to be held up there.
void enterHost();
void leaveHost();

/// From now on blocks of memory get pages of their own, where a program knows how to; or no more. What is used after it
/// was given back then ends the process at that place.
void guardMemory(bool guards);
bool isGuarded(const void* memory);

/// The signal by which a thread is asked where it is, to be told in Report::waiting.
int question();

/// Runs the check in a child process and watches it.
HostVerdict runWatched(const Check& check, const HostMaker& maker, const HostDemands& demands,
                       const Known& known);

}  // namespace vorn_testing::checks
