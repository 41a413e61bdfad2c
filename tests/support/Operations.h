#pragma once

#include <VornDALImplIF.h>
#include <vorn_testing/Call.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Every operation that crosses the library, as a table that tests loop over.
namespace operations {

/// One of the thirteen adapters that work on a host.
struct Adapter {
  std::string name;
  std::shared_ptr<void> (*create)(VornDeviceAbstractionLayer::VornDALImplIF& host);  ///< CreateInstance().
  std::shared_ptr<void> (*get)();                                                    ///< getInstance().
  void (*shutdown)();
  /// An object that CreateInstance() did not make.
  std::shared_ptr<void> (*construct)(VornDeviceAbstractionLayer::VornDALImplIF& host);
  std::size_t size;  ///< Of the object.
  bool oneBlock;     ///< Whether CreateInstance() puts object and reference count into one allocation.
  std::vector<std::string> createLines;     ///< What CreateInstance() leaves in the trace, on every call,
  std::vector<std::string> constructLines;  ///< the constructor,
  std::vector<std::string> getLines;        ///< and getInstance().
};

const std::vector<Adapter>& adapters();

enum class Direction { kDown, kUp };

/// What is held while the other side is called.
enum class Guard { kUnlocked, kMutex, kDalMutex };

/// Which arguments a call gets. Types without such a value get their usual one.
enum class Sample {
  kUsual,
  kEmpty,   ///< Empty texts and collections, 0, false.
  kLowest,  ///< The smallest numbers; duplicates in lists.
  kNotANumber,
  kNegativeZero,
  kBytes,  ///< Texts with NUL, line feed and bytes that are no UTF-8.
  kHuge,   ///< Texts of one megabyte.
};

/// What one call was given and what came of it.
struct Outcome {
  std::string result;              ///< Rendered by vorn_testing::text(); empty for void.
  std::vector<std::string> given;  ///< The arguments, rendered.
  std::vector<std::string>
      afterwards;                      ///< The caller's arguments after the call; only references still tell.
  std::vector<const void*> addresses;  ///< Of the caller's arguments.
  std::vector<bool> reference;         ///< Which of them were passed by reference.
};

/// A call that is ready to be made, once: its arguments stand in the outcome, its result comes into it.
class Invocation {
 public:
  virtual ~Invocation() = default;

  /// Calls an object of the row's adapter, texts by value moved in.
  virtual void make(void* object) = 0;

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
  std::string answer;                  ///< The result when an operations::Host or a FakeAssistant answers.
  std::string fallback;                ///< The result when the other side is missing.
  std::vector<std::string> written;    ///< What the references hold after an operations::Host has answered.
  std::vector<std::string> lines;      ///< The trace of a delivered call with the usual arguments.
  std::vector<std::string> lostLines;  ///< The trace of a call that is not delivered.
  bool keepsAssistant;  ///< sendAudioData: holds on to the first object found and numbers its lines.

  /// Prepares a call with arguments of that kind.
  std::function<std::unique_ptr<Invocation>(Sample)> with;

  /// Calls an object of its adapter with arguments of that kind.
  Outcome run(void* object, Sample sample) const;

  /// Calls it with the usual arguments and returns the rendered result.
  std::string call(void* object) const { return run(object, Sample::kUsual).result; }

  /// "VornDeviceInfo::setSystemSetting(std::string, std::string)".
  std::string name() const { return adapter->name + "::" + operation + "(" + parameters + ")"; }

  /// Whether the call has a receiver: the instance of its adapter on the way down, the assistant side upward.
  bool delivered(bool instance, bool assistant) const {
    return direction == Direction::kDown ? instance : assistant;
  }

  /// Every call that the other sides see, in order and as seen() renders them.
  std::vector<std::string> reaches(const std::vector<std::string>& given, bool instance,
                                   bool assistant) const;
};

/// "VornDALImplIF 13 getVolume()".
std::string seen(const vorn_testing::Call& call);
std::vector<std::string> seen(const std::vector<vorn_testing::Call>& calls);

/// 63 host operations, 16 commands of the external player, 19 operations of the assistant side.
const std::vector<Row>& rows();

}  // namespace operations
