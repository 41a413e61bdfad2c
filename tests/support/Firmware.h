#pragma once

#include <VornDalMediaPlayerInterfaceImpl.h>
#include <vorn_testing/ForwardingHost.h>
#include <vorn_testing/NullHost.h>
#include <vorn_testing/RecordingHost.h>

#include <memory>
#include <string>
#include <unordered_map>

namespace operations {

/// What AnsweringHost answers where a text is asked for: unlike any default, and too long for the text object.
inline std::string answerOf(const std::string& operation) { return "what the host answers to " + operation; }

/// An external media player whose answers differ from what a command answers without an instance.
class AnsweringPlayer : public vorn_testing::NullPlayer {
 public:
  using Ms = std::chrono::milliseconds;

  bool login(const std::string&, const std::string&, bool, Ms, std::string) override { return true; }
  bool logout(std::string) override { return true; }
  bool launchAndPlay(std::string, Ms, std::string) override { return true; }
  bool nextTrack(std::string) override { return true; }
  bool previousTrack(std::string) override { return true; }
  bool restartCurrentTrack(std::string) override { return true; }
  bool setShuffleOn(std::string) override { return true; }
  bool setShuffleOff(std::string) override { return true; }
  bool resume(std::string) override { return true; }
  bool pause(std::string) override { return true; }
  bool stop(std::string) override { return true; }
  bool skipForward(Ms, std::string) override { return true; }
  bool setRepeatAll(std::string) override { return true; }
  bool setRepeatNone(std::string) override { return true; }
  bool setRepeatOne(std::string) override { return true; }
  std::string getPlaybackState(std::string) override { return answerOf("getPlaybackState"); }
};

/// A host whose answers differ from what an adapter answers without an instance: texts name the
/// operation, numbers are its slot, directives fail, and references are written to.
class AnsweringHost : public vorn_testing::NullHost {
 public:
  using Map = std::map<std::string, std::string>;
  using Result = std::pair<bool, std::string>;

  bool requestAudioFocus() override { return true; }
  bool releaseAudioFocus() override { return true; }
  bool startStreamingAudioData() override { return true; }
  bool isMicrophoneAvailable() override { return true; }
  int getVolume() override { return 13; }
  bool getMuteStatus() override { return true; }
  std::string getTimezone() override { return answerOf("getTimezone"); }
  std::string getDeviceLocale() override { return answerOf("getDeviceLocale"); }
  Map getDeviceInformation() override { return {{"key", answerOf("getDeviceInformation")}}; }
  bool getNetworkConnectionStatus() override { return true; }
  std::string getConfigData(std::string) override { return answerOf("getConfigData"); }
  bool getSystemSetting(std::string, std::string& value) override {
    value = answerOf("getSystemSetting");
    return true;
  }
  bool setSystemSetting(std::string, std::string) override { return true; }
  std::string getVSKCapabilities() override { return answerOf("getVSKCapabilities"); }
  bool open() override { return true; }
  Map readKeyValue(const std::string&) override { return {{"key", answerOf("readKeyValue")}}; }
  bool writeKeyValue(Map) override { return true; }
  bool removeKeyValue(const std::vector<std::string>&) override { return true; }
  bool clear() override { return true; }
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override {
    first = answerOf("sendCBLInfo");
    second = answerOf("sendCBLInfo, again");
    number = INT64_MIN;
  }
  VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override { return &m_player; }
  int setAnimation(std::vector<std::string>) override { return 35; }
  Result onChangeChannel(std::string) override { return {false, answerOf("onChangeChannel")}; }
  bool onInputChange(const std::string&) override { return false; }
  Result onSkipChannel(int) override { return {false, answerOf("onSkipChannel")}; }
  Result onSendKeystroke(std::string) override { return {false, answerOf("onSendKeystroke")}; }
  Result onChangePlaybackPlay(std::string) override { return {false, answerOf("onChangePlaybackPlay")}; }
  Result onChangePlaybackPause(std::string) override { return {false, answerOf("onChangePlaybackPause")}; }
  Result onChangePlaybackStop(std::string) override { return {false, answerOf("onChangePlaybackStop")}; }
  Result onChangePlaybackStartOver(std::string) override {
    return {false, answerOf("onChangePlaybackStartOver")};
  }
  Result onChangePlaybackPrevious(std::string) override {
    return {false, answerOf("onChangePlaybackPrevious")};
  }
  Result onChangePlaybackNext(std::string) override { return {false, answerOf("onChangePlaybackNext")}; }
  Result onChangePlaybackRewind(std::string) override { return {false, answerOf("onChangePlaybackRewind")}; }
  Result onChangePlaybackFastForward(std::string) override {
    return {false, answerOf("onChangePlaybackFastForward")};
  }
  Result onSearchAndPlay(std::string) override { return {false, answerOf("onSearchAndPlay")}; }
  Result onSearchAndDisplayResults(std::string) override {
    return {false, answerOf("onSearchAndDisplayResults")};
  }
  Result onSetMode(std::string, std::string) override { return {false, answerOf("onSetMode")}; }
  Result onAdjustMode(std::string, int) override { return {false, answerOf("onAdjustMode")}; }
  Result onSetPowerState(bool) override { return {false, answerOf("onSetPowerState")}; }
  Result onSetPowerState(bool, std::string) override {
    return {false, answerOf("onSetPowerState of a target")};
  }
  Result onSetRangeValue(double) override { return {false, answerOf("onSetRangeValue")}; }
  Result onAdjustRangeValue(double) override { return {false, answerOf("onAdjustRangeValue")}; }
  Result onSetToggleState(std::string, std::string) override { return {false, answerOf("onSetToggleState")}; }
  Result onLaunchTarget(std::string) override { return {false, answerOf("onLaunchTarget")}; }
  Result onStartRecording() override { return {false, answerOf("onStartRecording")}; }
  Result onStopRecording() override { return {false, answerOf("onStopRecording")}; }
  Result onAdjustSeekPosition(int) override { return {false, answerOf("onAdjustSeekPosition")}; }
  Result onSetVolume(int) override { return {false, answerOf("onSetVolume")}; }
  Result onAdjustVolume(int) override { return {false, answerOf("onAdjustVolume")}; }
  Result onMute(bool) override { return {false, answerOf("onMute")}; }
  bool clearGUICard() override { return true; }
  bool renderGUICard(const std::string&) override { return true; }

 private:
  AnsweringPlayer m_player;
};

/// A media player of the factory's table.
class RecordedPlayer final : public VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl {
 public:
  explicit RecordedPlayer(std::shared_ptr<vorn_testing::Recorder> recorder)
      : m_recorder(std::move(recorder)) {}

  void Configure(Settings settings, std::function<void(std::string)> callback) override {
    m_recorder->run(vorn_testing::makeCall("VornDalMediaPlayerInterfaceImpl", "Configure", 21, this,
                                           settings.firstFlag, settings.name, settings.secondFlag),
                    [&] {
                      if (callback) callback("configured");
                    });
  }

 private:
  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
};

using Players =
    std::unordered_map<std::string,
                       std::shared_ptr<VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl>>;

/// The firmware's side, as the table expects it: a host that answers, behind the kit's forwarding and recording
/// ones, and a table with one media player.
class Firmware {
 public:
  explicit Firmware(
      std::shared_ptr<vorn_testing::Recorder> shared = std::make_shared<vorn_testing::Recorder>())
      : recorder(std::move(shared)) {
    host.recorder = recorder;
  }

  const std::shared_ptr<vorn_testing::Recorder> recorder;

 private:
  AnsweringHost m_answering;
  vorn_testing::ForwardingHost m_forwarding{m_answering};

 public:
  vorn_testing::RecordingHost host{m_forwarding};
  Players players{{"DefaultMediaPlayer", std::make_shared<RecordedPlayer>(recorder)}};
};

/// What a class is created on: a host, or the table of players.
struct Foundation {
  Foundation(VornDeviceAbstractionLayer::VornDALImplIF& hostAlone) : host(hostAlone), players(none()) {}
  Foundation(Firmware& firmware) : host(firmware.host), players(firmware.players) {}

  VornDeviceAbstractionLayer::VornDALImplIF& host;
  Players& players;

 private:
  static Players& none() {
    static Players empty;
    return empty;
  }
};

}  // namespace operations
