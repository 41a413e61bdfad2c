#pragma once

#include <vorn_testing/Operations.h>

#include <functional>
#include <string>
#include <vector>

#include "text/Tokens.h"

namespace vorn_speaker {

struct Adapters;

/// The word before the time that an expectation may wait.
constexpr char kWithin[] = "within";

/// The interface that the host implements.
constexpr char kHostInterface[] = "VornDALImplIF";

/// Who calls an operation: the assistant client (down) or the firmware (up).
enum class Caller { kAssistant, kFirmware };

struct Parameter {
  std::string name;
  std::string type;                        ///< What a value looks like, in words.
  bool reference;                          ///< The operation may write it; at the end it may be left out.
  std::string (*canonical)(const Token&);  ///< The one spelling of the value, or throws Unreadable.
};

/// An operation with its arguments read, ready to be called; gives the result as text.
using BoundCall = std::function<std::string(Adapters&)>;

/// One operation that a scenario, the console or a replay can call.
struct Operation {
  std::string adapter;  ///< "VornDeviceInfo"
  std::string name;     ///< "getVolume"
  Caller caller;
  std::vector<Parameter> parameters;
  std::function<BoundCall(const std::vector<Token>&)> bind;  ///< Throws Unreadable.

  std::string target;  ///< The interface on which the call arrives; empty when it arrives nowhere.
  int slot;            ///< Its place there.
  vorn_testing::Guard guard = {};  ///< What keeps its calls apart.

  /// Spells the arguments that a double found at their addresses; none for rows that are not members.
  std::function<std::vector<std::string>(const std::vector<const void*>&)> spell = {};

  std::string fullName() const { return adapter + "." + name; }
};

/// Every operation of both sides, in the order of the kit's list.
const std::vector<Operation>& operations();

/// The rows among them that players and containers take part in.
std::vector<Operation> attachmentOperations();

/// Finds the overload that takes `arguments` and binds it; throws Unreadable, with a suggestion for a name
/// that nearly fits. `end` is the column after the line.
BoundCall bindCall(Caller caller, const Token& name, const std::vector<Token>& arguments, std::size_t end);

/// The names of an operation's parameters.
std::vector<std::string> parameterNames(const Operation& operation);

/// The first operation of this full name, of either side, or null.
const Operation* operationNamed(const std::string& name);

/// Reads the arguments as one of the overloads of `name` takes them, of either side; throws Unreadable.
void checkArguments(const Token& name, const std::vector<Token>& arguments, std::size_t end);

/// Whether a call of the operation had these arguments, compared as values: "2s" is "2000ms".
bool takes(const Operation& operation, const std::vector<Token>& expected,
           const std::vector<std::string>& spelled);

/// A statement as it may be shown: its secrets masked. Throws Unreadable for what is no list of words.
std::string maskedStatement(const std::string& line);

/// Whether a line may hold a secret, also when it cannot be read: it names one, or something like an operation that
/// takes one.
bool mayHoldSecret(const std::string& line);

/// The operation whose call arrives at a slot of an interface, or null.
const Operation* operationAt(const std::string& target, int slot);

/// "VornDeviceInfo.setSystemSetting key value"
std::string usage(const Operation& operation);

/// A line for each parameter: its name and what a value looks like.
std::string parameterHelp(const Operation& operation);

}  // namespace vorn_speaker
