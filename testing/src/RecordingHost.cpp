#include "vorn_testing/RecordingHost.h"

namespace vorn_testing {

namespace {

/// What stands behind a double that was given nothing; as old as whoever calls.
template <class Double>
Double& nothing() {
  static Double* const one = new Double;
  return *one;
}

}  // namespace

RecordingPlayer::RecordingPlayer() : RecordingPlayer(nothing<NullPlayer>()) {}

RecordingPlayer::RecordingPlayer(VornDeviceAbstractionLayer::VornEMPAdapterIF& inner)
    : AroundPlayer(inner), recorder(std::make_shared<Recorder>()) {}

RecordingHost::RecordingHost() : RecordingHost(nothing<NullHost>()) {}

RecordingHost::RecordingHost(VornDeviceAbstractionLayer::VornDALImplIF& inner)
    : AroundHost(inner), recorder(std::make_shared<Recorder>()) {}

VornDeviceAbstractionLayer::VornEMPAdapterIF* RecordingHost::front(
    VornDeviceAbstractionLayer::VornEMPAdapterIF* inner) {
  if (!inner) return nullptr;
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::unique_ptr<RecordingPlayer>& player = m_players[inner];
  if (!player) {
    player.reset(new RecordingPlayer(*inner));
    player->recorder = recorder;
  }
  return player.get();
}

template class AroundPlayer<RecordingPlayer>;
template class AroundHost<RecordingHost>;

}  // namespace vorn_testing
