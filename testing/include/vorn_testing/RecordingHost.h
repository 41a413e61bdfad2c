#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "AroundHost.h"
#include "NullHost.h"
#include "Recorder.h"

namespace vorn_testing {

namespace list {

/// What is recorded of an argument: itself, or the text that it holds.
template <class Argument>
const Argument& recorded(const Argument& argument) {
  return argument;
}
inline const std::string& recorded(
    const DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo& info) {
  return info.state;
}

/// Records a call that came in at `object` and hands it on.
template <class Onward, class... Arguments>
auto record(Recorder& recorder, const Operation& operation, const void* object, const Onward& onward,
            Arguments&... arguments) -> decltype(onward(arguments...)) {
  return recorder.run(
      makeCall(operation.target, operation.name, operation.slot, object, recorded(arguments)...),
      [&]() -> decltype(onward(arguments...)) { return onward(arguments...); });
}

}  // namespace list

/// An external media player that records every call and hands it on to another, or to a NullPlayer.
/// Both the recorder and the player behind are the caller's to share; the player is borrowed.
class RecordingPlayer : public AroundPlayer<RecordingPlayer> {
 public:
  RecordingPlayer();
  explicit RecordingPlayer(VornDeviceAbstractionLayer::VornEMPAdapterIF& inner);

  /// Never empty. Replace it before use to share one between doubles.
  std::shared_ptr<Recorder> recorder;

 private:
  friend class AroundPlayer<RecordingPlayer>;

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation& operation, const Onward<Interface, Result, Parameters...>& onward,
                typename std::remove_reference<Parameters>::type&... arguments) {
    return list::record(*recorder, operation, this, onward, arguments...);
  }
};

/// A host that records every call, its player's included, and hands it on to another host, or to a NullHost.
/// The host behind is borrowed. Failing, blocking and watching go through recorder->onCall().
class RecordingHost : public AroundHost<RecordingHost> {
 public:
  RecordingHost();
  explicit RecordingHost(VornDeviceAbstractionLayer::VornDALImplIF& inner);

  RecordingHost(const RecordingHost&) = delete;
  RecordingHost& operator=(const RecordingHost&) = delete;

  /// Never empty. Replace it before use to share one between doubles; the player follows.
  std::shared_ptr<Recorder> recorder;

 protected:
  /// Finds or makes the recording player in front of `inner`; a host may have several.
  VornDeviceAbstractionLayer::VornEMPAdapterIF* front(
      VornDeviceAbstractionLayer::VornEMPAdapterIF* inner) override;

 private:
  friend class AroundHost<RecordingHost>;

  template <class Result, class Interface, class... Parameters>
  Result around(const Operation& operation, const Onward<Interface, Result, Parameters...>& onward,
                typename std::remove_reference<Parameters>::type&... arguments) {
    return list::record(*recorder, operation, this, onward, arguments...);
  }

  std::mutex m_mutex;
  std::map<VornDeviceAbstractionLayer::VornEMPAdapterIF*, std::unique_ptr<RecordingPlayer>> m_players;
};

extern template class AroundPlayer<RecordingPlayer>;
extern template class AroundHost<RecordingHost>;

}  // namespace vorn_testing
