#include <VornDalMediaPlayerInterfaceImpl.h>

#include "support/rows.h"

namespace fault {

namespace {

using Result = std::pair<bool, std::string>;
using Entries = std::map<std::string, std::string>;

/// Answers as no default would, and with texts too long to fit into the string object.
class Answers final : public vorn_testing::NullHost {
 public:
  explicit Answers(VornDeviceAbstractionLayer::VornEMPAdapterIF& player) : m_player(player) {}

  bool requestAudioFocus() override { return true; }
  bool releaseAudioFocus() override { return true; }
  bool startStreamingAudioData() override { return true; }
  bool isMicrophoneAvailable() override { return true; }
  int getVolume() override { return 37; }
  bool getMuteStatus() override { return true; }
  std::string getTimezone() override { return "Pacific/Auckland, as the crow flies"; }
  std::string getDeviceLocale() override { return "mi-NZ, spoken with great care"; }
  Entries getDeviceInformation() override { return {{"brand of the device", "Vorn, of the fault lab"}}; }
  bool getNetworkConnectionStatus() override { return true; }
  std::string getConfigData(std::string key) override { return "the value of " + key; }
  bool getSystemSetting(std::string, std::string& value) override {
    value = "written by the host, at length";
    return true;
  }
  bool setSystemSetting(std::string, std::string) override { return true; }
  std::string getVSKCapabilities() override { return "[{\"capability\": \"endurance\"}]"; }
  bool open() override { return true; }
  Entries readKeyValue(const std::string& key) override { return {{key, "as it was stored, and no other"}}; }
  bool writeKeyValue(Entries) override { return true; }
  bool removeKeyValue(const std::vector<std::string>&) override { return true; }
  bool clear() override { return true; }
  void sendCBLInfo(std::string& first, std::string& second, std::int64_t& number) override {
    first += ", read";
    second += ", read";
    ++number;
  }
  VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override { return &m_player; }
  int setAnimation(std::vector<std::string>) override { return -7; }
  Result onChangeChannel(std::string) override { return answer("onChangeChannel"); }
  bool onInputChange(const std::string&) override { return false; }
  Result onSkipChannel(int) override { return answer("onSkipChannel"); }
  Result onSendKeystroke(std::string) override { return answer("onSendKeystroke"); }
  Result onChangePlaybackPlay(std::string) override { return answer("onChangePlaybackPlay"); }
  Result onChangePlaybackPause(std::string) override { return answer("onChangePlaybackPause"); }
  Result onChangePlaybackStop(std::string) override { return answer("onChangePlaybackStop"); }
  Result onChangePlaybackStartOver(std::string) override { return answer("onChangePlaybackStartOver"); }
  Result onChangePlaybackPrevious(std::string) override { return answer("onChangePlaybackPrevious"); }
  Result onChangePlaybackNext(std::string) override { return answer("onChangePlaybackNext"); }
  Result onChangePlaybackRewind(std::string) override { return answer("onChangePlaybackRewind"); }
  Result onChangePlaybackFastForward(std::string) override { return answer("onChangePlaybackFastForward"); }
  Result onSearchAndPlay(std::string) override { return answer("onSearchAndPlay"); }
  Result onSearchAndDisplayResults(std::string) override { return answer("onSearchAndDisplayResults"); }
  Result onSetMode(std::string, std::string) override { return answer("onSetMode"); }
  Result onAdjustMode(std::string, int) override { return answer("onAdjustMode"); }
  Result onSetPowerState(bool) override { return answer("onSetPowerState"); }
  Result onSetPowerState(bool, std::string) override { return answer("onSetPowerState of a target"); }
  Result onSetRangeValue(double) override { return answer("onSetRangeValue"); }
  Result onAdjustRangeValue(double) override { return answer("onAdjustRangeValue"); }
  Result onSetToggleState(std::string, std::string) override { return answer("onSetToggleState"); }
  Result onLaunchTarget(std::string) override { return answer("onLaunchTarget"); }
  Result onStartRecording() override { return answer("onStartRecording"); }
  Result onStopRecording() override { return answer("onStopRecording"); }
  Result onAdjustSeekPosition(int) override { return answer("onAdjustSeekPosition"); }
  Result onSetVolume(int) override { return answer("onSetVolume"); }
  Result onAdjustVolume(int) override { return answer("onAdjustVolume"); }
  Result onMute(bool) override { return answer("onMute"); }
  bool clearGUICard() override { return true; }
  bool renderGUICard(const std::string&) override { return true; }

 private:
  static Result answer(const char* operation) {
    return {false, std::string("the host declined ") + operation};
  }

  VornDeviceAbstractionLayer::VornEMPAdapterIF& m_player;
};

class AnsweringPlayer final : public VornDeviceAbstractionLayer::VornEMPAdapterIF {
 public:
  bool login(const std::string&, const std::string&, bool, std::chrono::milliseconds, std::string) override {
    return true;
  }
  bool logout(std::string) override { return true; }
  bool launchAndPlay(std::string, std::chrono::milliseconds, std::string) override { return true; }
  bool nextTrack(std::string) override { return true; }
  bool previousTrack(std::string) override { return true; }
  bool restartCurrentTrack(std::string) override { return true; }
  bool setShuffleOn(std::string) override { return true; }
  bool setShuffleOff(std::string) override { return true; }
  bool resume(std::string) override { return true; }
  bool pause(std::string) override { return true; }
  bool stop(std::string) override { return true; }
  bool skipForward(std::chrono::milliseconds, std::string) override { return true; }
  bool setRepeatAll(std::string) override { return true; }
  bool setRepeatNone(std::string) override { return true; }
  bool setRepeatOne(std::string) override { return true; }
  std::string getPlaybackState(std::string playerId) override { return "playing, says " + playerId; }
};

/// A media player of the table.
class RecordedPlayer final : public VornDeviceAbstractionLayer::VornDalMediaPlayerInterfaceImpl {
 public:
  explicit RecordedPlayer(std::shared_ptr<vorn_testing::Recorder> recorder)
      : m_recorder(std::move(recorder)) {}

  void Configure(Settings settings, std::function<void(std::string)> callback) override {
    m_recorder->run(vorn_testing::makeCall("player", "Configure", 21, this, settings.firstFlag, settings.name,
                                           settings.secondFlag),
                    [&] {
                      if (callback) callback("configured");
                    });
  }

 private:
  const std::shared_ptr<vorn_testing::Recorder> m_recorder;
};

}  // namespace

World::World(std::shared_ptr<vorn_testing::Recorder> shared)
    : recorder(std::move(shared)),
      m_player(std::make_unique<AnsweringPlayer>()),
      m_answers(std::make_unique<Answers>(*m_player)),
      m_forwarding(*m_answers),
      host(m_forwarding) {
  host.recorder = recorder;
  players["DefaultMediaPlayer"] = std::make_shared<RecordedPlayer>(recorder);
}

}  // namespace fault
