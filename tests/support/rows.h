#pragma once

#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/ForwardingHost.h>
#include <vorn_testing/RecordingHost.h>

#include <VornDalMediaPlayerInterfaceImpl.h>

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// What every operation promises, as data: the fault lab plays it under whatever goes wrong.
namespace fault {

using Players =
    std::unordered_map<std::string,
                       std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl>>;

/// The firmware's side, recording: a host that answers unlike any default, behind the kit's forwarding host,
/// and a table with a player.
class World {
 public:
  explicit World(std::shared_ptr<vorn_testing::Recorder> shared = std::make_shared<vorn_testing::Recorder>());

  const std::shared_ptr<vorn_testing::Recorder> recorder;

 private:
  const std::unique_ptr<VornDeviceAbstractionLayer::VornEMPAdapterIF> m_player;
  const std::unique_ptr<VornDeviceAbstractionLayer::VornDALImplIF> m_answers;
  vorn_testing::ForwardingHost m_forwarding;

 public:
  vorn_testing::RecordingHost host;
  Players players;
};

/// One class: its life without its type.
struct Adapter {
  const char* name;
  std::shared_ptr<void> (*create)(World&);
  std::shared_ptr<void> (*get)();
  void (*shutdown)();
  std::shared_ptr<void> (*bare)(World&);  ///< An object that is not the class's instance.
};

const std::vector<Adapter>& adapters();
const Adapter& adapter(const std::string& name);

/// One call: made ready, run, and looked at.
class Invocation {
 public:
  virtual ~Invocation() = default;
  virtual void invoke() = 0;

  /// What came back, and what stands in the caller's variables. After invoke().
  virtual std::string result() const = 0;

  /// Where the callee of the last call must find its arguments: the caller's own objects for references, null
  /// for copies.
  virtual std::vector<const void*> references() const { return {}; }
};

enum class Guard { kUnlocked, kLocked, kDalMutex };
enum class Line { kNever, kAlways, kDelivered, kLost };

struct Row {
  const char* adapter;
  const char* operation;
  Guard guard;
  std::vector<std::string> seesAlways;  ///< "slot operation(arguments)", in order, instance or not.
  std::vector<std::string> seesLive;    ///< After those, while there is an instance.
  std::string answer;
  std::string fallback;  ///< Without an instance.
  Line when;
  std::string line;  ///< What the trace gets.
  std::function<std::unique_ptr<Invocation>(void* object, World&)> prepare;

  std::string name() const { return std::string(adapter) + "::" + operation; }
  std::vector<std::string> sees(bool live) const;
  std::vector<std::string> lines(bool live) const;
};

/// Every public operation of every adapter, lifecycle apart.
const std::vector<Row>& rows();

/// The calls as rows write them.
std::vector<std::string> seen(const vorn_testing::Recorder& recorder);

/// Brings the audio path behind its first five lines, onto the assistant's object of now. Once per process.
void settleAudio();

/// The class's mutex, or VornAppMessaging's second one, by its exported name.
std::mutex& mutexOf(const std::string& adapter, const std::string& member = "m_mutex");
std::mutex* mutexOf(const Row& row);

}  // namespace fault
