#pragma once

#include <vorn_testing/Operations.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Firmware.h"

/// Every operation that crosses the library, with what must come of it, as a table that tests loop over.
///
/// Which operations there are, where they go and under which lock is the kit's list. docs/operations.tsv and
/// tests/abi, which do not stand on that list, tell whether it is right.
namespace operations {

using vorn_testing::Direction;
using vorn_testing::Guard;

/// One class: its life without its type.
struct Adapter {
  std::string name;
  std::shared_ptr<void> (*create)(Foundation on);     ///< CreateInstance().
  std::shared_ptr<void> (*get)();                     ///< getInstance().
  void (*shutdown)();                                 ///< Shutdown(); nothing where there is none.
  std::shared_ptr<void> (*construct)(Foundation on);  ///< An object that CreateInstance() did not make.
  std::size_t size;                                   ///< Of the object.
  bool oneBlock;  ///< Whether CreateInstance() puts object and reference count into one allocation.
  std::vector<std::string> createLines;     ///< What CreateInstance() leaves in the trace, on every call,
  std::vector<std::string> constructLines;  ///< the constructor,
  std::vector<std::string> getLines;        ///< and getInstance().
};

/// The thirteen that work on a host, in load order.
const std::vector<Adapter>& adapters();

/// The media player factory, the container factory and the logger.
const std::vector<Adapter>& otherClasses();

/// All sixteen.
std::vector<const Adapter*> classes();

/// Which arguments a call gets. Types without such a value get their usual one.
enum class Sample {
  kUsual,   ///< No two alike within a call; texts longer than what fits into the text object.
  kEmpty,   ///< Empty texts and collections, 0, false.
  kLowest,  ///< The smallest numbers; duplicates in lists.
  kNotANumber,
  kNegativeZero,
  kBytes,  ///< Texts with NUL, line feed and bytes that are no UTF-8.
  kHuge,   ///< Texts of one megabyte.
};

/// What one call was given and what came of it. Values are rendered by vorn_testing::text().
struct Outcome {
  std::string result;              ///< Empty for void.
  std::vector<std::string> given;  ///< The arguments.
  std::vector<std::string>
      afterwards;                      ///< The caller's arguments after the call; only references still tell.
  std::vector<const void*> addresses;  ///< Of the caller's arguments.
  std::vector<bool> reference;         ///< Which of them were passed by reference.

  /// Of such a list, those that were passed by reference.
  std::vector<std::string> references(const std::vector<std::string>& rendered) const;
};

/// A call that is ready to be made, once: its arguments stand in the outcome, its result comes into it.
class Invocation {
 public:
  virtual ~Invocation() = default;

  /// Calls an object of the row's adapter.
  virtual void make(void* object) = 0;

  /// Whether the caller keeps its texts: what goes by value is then copied for the call instead of moved into it.
  bool copies = false;

  /// Runs when the operation has returned, before anything is rendered.
  std::function<void()> returned = [] {};

  Outcome outcome;
};

/// One operation.
struct Row {
  const Adapter* adapter;
  std::string operation;
  std::string parameters;  ///< "std::string, int": tells overloads apart.
  Direction direction;
  Guard guard;
  std::string
      target;  ///< The interface on the other side: "VornDALImplIF", "VornEMPAdapterIF", "DeviceInfo" ...
  int slot;    ///< The place reached there, counted from 1.
  std::string answer;                  ///< The result when a Firmware or a FakeAssistant answers.
  std::string fallback;                ///< The result when the other side is missing.
  std::vector<std::string> written;    ///< What the references hold after a Firmware has answered.
  std::vector<std::string> lines;      ///< The trace of a delivered call with the usual arguments.
  std::vector<std::string> lostLines;  ///< The trace of a call that is not delivered.
  std::vector<std::string> heard;      ///< What callbacks and media players hear, when the direction is kOwn.

  /// Prepares a call with arguments of that kind.
  std::function<std::unique_ptr<Invocation>(Sample)> with;

  /// Calls an object of its adapter with arguments of that kind.
  Outcome run(void* object, Sample sample = Sample::kUsual) const;

  /// Calls it with the usual arguments and returns the rendered result.
  std::string call(void* object) const { return run(object).result; }

  /// "VornDeviceInfo::setSystemSetting(std::string, std::string)".
  std::string name() const { return adapter->name + "::" + operation + "(" + parameters + ")"; }

  /// Whether a mutex is held while the other side is called.
  bool locked() const { return guard == Guard::kMutex || guard == Guard::kDalMutex; }

  /// That mutex, or null.
  std::mutex* mutex() const;

  /// Of the audio path: it holds on to the first assistant-side object found and numbers its lines.
  bool keepsAssistant() const { return direction == Direction::kUp && guard == Guard::kOneThread; }

  /// Whether the call has a receiver: the instance of its adapter on the way down, the assistant side upward.
  bool delivered(bool instance, bool assistant = true) const;

  /// Every call that the other sides see, in order and as seen() renders them.
  std::vector<std::string> reaches(const std::vector<std::string>& given, bool instance,
                                   bool assistant = true) const;

  /// Result and references of such a call, and what they have become.
  std::vector<std::string> tells(const Outcome& outcome, bool instance, bool assistant = true) const;
  static std::vector<std::string> told(const Outcome& outcome);
};

/// "VornDALImplIF 13 getVolume()".
std::string seen(const vorn_testing::Call& call);
std::vector<std::string> seen(const std::vector<vorn_testing::Call>& calls);

/// 63 host operations, 16 commands of the external player, 19 operations of the assistant side.
const std::vector<Row>& rows();

/// Those and the operations of the other classes, whose callbacks and players tell `firmware`'s recorder.
std::vector<Row> everyRow(Firmware& firmware);

}  // namespace operations
