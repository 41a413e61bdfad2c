#pragma once

#include <VornDALImplIF.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace vorn_testing {

/// One promise that a host makes to the library, and how it is kept.
struct HostCheck {
  std::string id;         ///< "VornDALImplIF/13/getVolume/answers": unique, and the same in every release.
  std::string operation;  ///< "getVolume", or "destructor".
  int slot;               ///< Its place in the interface's virtual table, counted from 1.
  std::string rule;       ///< What is promised, one sentence.
  std::string remedy;     ///< What to do when it is broken.
};

/// Makes a host of its own for every check, or answers null when it cannot.
using HostMaker = std::function<std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF>()>;

/// What else a team asks of its host, and what the checks may use of it.
struct HostDemands {
  /// Whether what was stored must survive its host and its process, also one that is killed.
  bool durable = false;

  /// How long one call may take before it counts as not answering.
  std::chrono::milliseconds bound = std::chrono::seconds(30);

  /// Settings that the checks may change, each with at least two values that setSystemSetting() accepts. Empty:
  /// made-up ones, which a host may refuse.
  std::map<std::string, std::vector<std::string>> settings;

  // Values that the host accepts, used wherever an argument is needed; without them those of the checks, which a host
  // may refuse.
  std::vector<std::string> channels;                      ///< For onChangeChannel().
  std::vector<std::string> inputs;                        ///< For onInputChange().
  std::map<std::string, std::vector<std::string>> modes;  ///< For onSetMode() and onAdjustMode().
  std::vector<std::string> locales;                       ///< For changeAlexaLocale().

  // Areas of hostAreas().
  std::set<std::string> without;   ///< What the host does not offer: not asked.
  std::set<std::string> required;  ///< What it claims: an area that could not be asked is broken.
};

/// The areas that can be left out or required: "storage", "player", "volume" ...
const std::vector<std::string>& hostAreas();

/// How a check came out.
struct HostVerdict {
  /// The ways to come out.
  enum Kind {
    kKept,      ///< The promise was kept.
    kBroken,    ///< It was not; detail says what was seen.
    kNotAsked,  ///< The host or the demands leave nothing to check; detail says why.
    kRemark     ///< Nothing promised was broken, but detail tells what a device maker wants to know.
  };

  Kind kind;                          ///< Which of them.
  std::string detail;                 ///< What was seen; empty when kept.
  bool made;                          ///< Whether there was a host to check.
  std::string slowestCall;            ///< The call that took longest, as "getVolume()".
  std::chrono::microseconds slowest;  ///< How long it took. A fact, never a reason for a verdict.
  bool refused;                       ///< Not asked because the host refused by its answer.
  bool hung;                          ///< Broken because a call did not answer.
  std::string seen;                   ///< How much was seen, such as how many calls overlapped; or empty.
  std::vector<std::string> stack;     ///< Where a call ended the process; or empty.
};

/// Every check, in the order in which they are best run: what each operation answers plainly, then the rest by
/// interface and slot, and last what is about all operations together.
const std::vector<HostCheck>& hostChecks();

/// Runs checks of one host, each in a child process, so that a host that crashes, exits or hangs breaks this check
/// alone. The host's standard output goes to the standard error. To be used from a process without other threads.
///
/// Whatever is seen to go wrong breaks the check at work. What is known to be broken from a check before is the ground
/// of no other: those are not asked, and a call that did not answer is not waited for again.
class HostCheckRun {
 public:
  HostCheckRun(HostMaker maker, HostDemands demands);

  /// Runs one check.
  /// @throws std::invalid_argument  There is no check with that id.
  /// @throws std::system_error      No process can be made.
  HostVerdict run(const HostCheck& check);

  /// Takes over how a check came out in an earlier run, so that the next ones know.
  void remember(const HostCheck& check, const HostVerdict& verdict);

  /// Notes what the host says of its volume, mute, locale and the settings that the demands name.
  /// @throws std::system_error  No process can be made.
  void noteValues();

  /// Sets again what checks have changed of what was noted, in so far as the host still does what it is told.
  /// @throws std::system_error  No process can be made.
  void putValuesBack();

 private:
  struct State;
  std::shared_ptr<State> m_state;
};

/// Runs one check alone.
///
/// The checks write, remove and clear: give the host a store of its own.
///
/// @throws as HostCheckRun::run()
HostVerdict runHostCheck(const HostCheck& check, const HostMaker& maker,
                         const HostDemands& demands = HostDemands());

}  // namespace vorn_testing
