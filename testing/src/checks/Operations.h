#pragma once

#include "Sample.h"
#include "Trial.h"

namespace vorn_testing::checks {

/// One call, ready to be made.
struct Prepared {
  std::string shown;                          ///< "onSetVolume(1)".
  std::function<Texts(Host&, Player*)> make;  ///< Calls the host itself; returns the texts of the answer.
  std::function<void(Host&)> makeThrough;     ///< Calls through the adapter; for locked operations only.
  std::function<void()> revoke;  ///< Ends the arguments: from now on a look at them ends the process.
};

/// One operation of the host or of its player.
struct Operation {
  std::string name;
  int slot;
  std::string adapter;      ///< The class that calls it.
  bool ofPlayer = false;    ///< Whether it is VornEMPAdapterIF's.
  bool locked = false;      ///< Whether the adapter's mutex is held.
  bool takesTexts = false;  ///< Whether an argument is a text, or made of texts.
  bool takesNumbers = false;
  bool answersTexts = false;
  std::function<Prepared(Given, int which)> prepare;

  /// How many samples of a kind there are for it: those of any host, then what this one is said to accept.
  int samples(Given given) const;

  /// "VornDALImplIF/13/getVolume".
  std::string place() const;
};

/// How many of the words that the headers name are enough where others matter as much.
constexpr int kFewWords = 4;

/// All 64 and 16 of them, by slot.
const std::vector<Operation>& operations();

/// Prepares a call and makes it.
Texts call(Trial& trial, const Operation& operation, Given given, int which);
Texts call(Trial& trial, const Operation& operation, const Prepared& prepared);
/// The same where it may fail: what breaks is thrown on, what is refused is passed over.
void tryCall(Trial& trial, const Operation& operation, const Prepared& prepared);

/// The same for a locked operation, through its adapter.
void callThrough(Trial& trial, const Operation& operation, const Prepared& prepared);

/// Calls each of them plainly, but for those that are known to be broken.
void callAll(Trial& trial, const std::vector<const Operation*>& which);

/// The other operations of the same adapter, and its own.
std::vector<const Operation*> neighbours(const Operation& operation);

/// From now on the arguments of plain calls are also those that a host is said to accept.
void takeAccepted(const HostDemands& demands);

/// The operation whose argument stood at that address, or null. May be called by a handler of signals.
const char* ownerOfRevoked(const void* address);

}  // namespace vorn_testing::checks
