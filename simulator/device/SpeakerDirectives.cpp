// The directives: each changes the device's state, which the queries then report.

#include <utility>

#include "Adapters.h"
#include "SpeakerHost.h"

namespace vorn_speaker {

using Directive = std::pair<bool, std::string>;
using VornDeviceAbstractionLayer::VornDeviceInfo;

Directive SpeakerHost::onChangeChannel(std::string channel) { return m_state.setChannel(channel); }

bool SpeakerHost::onInputChange(const std::string& input) { return m_state.setInput(input); }

Directive SpeakerHost::onSkipChannel(int count) { return m_state.skipChannel(count); }

Directive SpeakerHost::onSendKeystroke(std::string keystroke) { return m_state.note("keystroke", keystroke); }

Directive SpeakerHost::onChangePlaybackPlay(std::string) { return m_state.note("playback", "PLAYING"); }

Directive SpeakerHost::onChangePlaybackPause(std::string) { return m_state.note("playback", "PAUSED"); }

Directive SpeakerHost::onChangePlaybackStop(std::string) { return m_state.note("playback", "STOPPED"); }

Directive SpeakerHost::onChangePlaybackStartOver(std::string) {
  return m_state.note("playback", "STARTED OVER");
}

Directive SpeakerHost::onChangePlaybackPrevious(std::string) { return m_state.note("playback", "PREVIOUS"); }

Directive SpeakerHost::onChangePlaybackNext(std::string) { return m_state.note("playback", "NEXT"); }

Directive SpeakerHost::onChangePlaybackRewind(std::string) { return m_state.note("playback", "REWINDING"); }

Directive SpeakerHost::onChangePlaybackFastForward(std::string) {
  return m_state.note("playback", "WINDING FORWARD");
}

Directive SpeakerHost::onSearchAndPlay(std::string payload) { return m_state.note("playing", payload); }

Directive SpeakerHost::onSearchAndDisplayResults(std::string payload) {
  return m_state.note("results", payload);
}

Directive SpeakerHost::onSetMode(std::string mode, std::string value) { return m_state.setMode(mode, value); }

Directive SpeakerHost::onAdjustMode(std::string mode, int delta) { return m_state.adjustMode(mode, delta); }

Directive SpeakerHost::onSetPowerState(bool on) { return m_state.power("", on); }

Directive SpeakerHost::onSetPowerState(bool on, std::string target) { return m_state.power(target, on); }

Directive SpeakerHost::onSetRangeValue(double value) { return m_state.setRange(value); }

Directive SpeakerHost::onAdjustRangeValue(double delta) { return m_state.adjustRange(delta); }

Directive SpeakerHost::onSetToggleState(std::string toggle, std::string state) {
  return m_state.toggle(toggle, state);
}

Directive SpeakerHost::onLaunchTarget(std::string target) { return m_state.note("launched", target); }

Directive SpeakerHost::onStartRecording() { return m_state.record(true); }

Directive SpeakerHost::onStopRecording() { return m_state.record(false); }

Directive SpeakerHost::onAdjustSeekPosition(int delta) { return m_state.seek(delta); }

Directive SpeakerHost::volumeChanged(const Directive& answer) {
  const auto info = m_adapters->held<VornDeviceInfo>();
  if (answer.first && info) info->notifyVolumeChanged(m_state.volume());
  return answer;
}

Directive SpeakerHost::onSetVolume(int volume) { return volumeChanged(m_state.setVolume(volume)); }

Directive SpeakerHost::onAdjustVolume(int delta) { return volumeChanged(m_state.adjustVolume(delta)); }

Directive SpeakerHost::onMute(bool mute) {
  const Directive answer = m_state.mute(mute);
  if (const auto info = m_adapters->held<VornDeviceInfo>()) info->notifyMuteChanged(m_state.muted());
  return answer;
}

}  // namespace vorn_speaker
