#pragma once

#include <VornDALImplIF.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
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
};

/// How a check came out.
struct HostVerdict {
  /// The ways to come out.
  enum Kind {
    kKept,     ///< The promise was kept.
    kBroken,   ///< It was not; detail says what was seen.
    kNotAsked  ///< The host or the demands leave nothing to check; detail says why.
  };

  Kind kind;                          ///< Which of them.
  std::string detail;                 ///< What was seen; empty when kept.
  bool made;                          ///< Whether there was a host to check.
  std::string slowestCall;            ///< The call that took longest, as "getVolume()".
  std::chrono::microseconds slowest;  ///< How long it took. A fact, never a reason for a verdict.
};

/// Every check, by interface and slot. What an operation answers plainly is the ground of its other checks: when
/// that is broken, they are not asked.
const std::vector<HostCheck>& hostChecks();

/// Runs one check in a child process, so that a host that crashes, exits or hangs breaks this check alone. The
/// host's standard output goes to the standard error. To be called from a process without other threads.
///
/// The checks write, remove and clear: give the host a store of its own.
///
/// @throws std::invalid_argument  There is no check with that id.
/// @throws std::system_error      No process can be made.
HostVerdict runHostCheck(const HostCheck& check, const HostMaker& maker,
                         const HostDemands& demands = HostDemands());

}  // namespace vorn_testing
