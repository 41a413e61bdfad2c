// A whole firmware host on one page: every operation, the locks, sound from a thread, news sent the safe way. Copy it and
// fill in your device. main.cpp creates and ends it, library.cpp hands it to the tools.
#pragma once

#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <VornAudioIn.h>
#include <VornDALImplIF.h>
#include <VornDalMediaPlayerInterfaceImpl.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterIF.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <iostream>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>

namespace vorn = VornDeviceAbstractionLayer;
using Text = std::string;
using Texts = std::vector<Text>;
using Entries = std::map<Text, Text>;
using Result = std::pair<bool, Text>;
using Duration = std::chrono::milliseconds;
using CommsState = DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo;
using Lock = std::unique_lock<std::mutex>;

/// Sends news to the assistant from a thread of its own, in order: no lock of ours and none of the library is held there, so
/// the assistant may call back whatever it likes.
class MyNews {
 public:
  void post(std::function<void()> news) {
    const Lock lock(m_mutex);
    m_waiting.push_back(news);
    m_wake.notify_one();
  }

  /// Sends what waits, then ends the thread. Nothing of it runs afterwards.
  void stop() {
    {
      const Lock lock(m_mutex);
      m_end = true;
      m_wake.notify_one();
    }
    if (m_thread.joinable()) m_thread.join();
  }

  ~MyNews() { stop(); }

 private:
  void run() {
    Lock lock(m_mutex);
    for (;;) {
      m_wake.wait(lock, [this] { return m_end || !m_waiting.empty(); });
      if (m_waiting.empty()) return;
      const std::function<void()> news = m_waiting.front();
      m_waiting.pop_front();
      lock.unlock();
      news();
      lock.lock();
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_wake;
  std::deque<std::function<void()>> m_waiting;
  bool m_end = false;
  std::thread m_thread{&MyNews::run, this};  // last: it uses the others
};

/// Pushes a buffer every 10 ms while the assistant listens: the one thread that calls sendAudioData().
class MyMicrophone {
 public:
  /// Does not wait for the thread: the assistant may ask from inside sendAudioData().
  void listen(bool on) {
    const Lock lock(m_mutex);
    m_on = on;
    m_wake.notify_one();
  }

  /// No buffer is pushed any more when it returns. Before the adapters are shut down and before the program ends.
  void stop() {
    {
      const Lock lock(m_mutex);
      m_end = true;
      m_wake.notify_one();
    }
    if (m_thread.joinable()) m_thread.join();
  }

  ~MyMicrophone() { stop(); }

 private:
  void run() {
    std::vector<short> buffer(160);
    Lock lock(m_mutex);
    while (!m_end) {
      m_wake.wait(lock, [this] { return m_end || m_on; });
      if (m_end) return;
      lock.unlock();  // the assistant may call back from inside
      if (const auto audio = vorn::VornAudioIn::getInstance()) audio->sendAudioData(buffer);
      lock.lock();
      // Your device's driver waits here for the next samples.
      m_wake.wait_for(lock, Duration(10), [this] { return m_end || !m_on; });
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_wake;
  bool m_on = false;
  bool m_end = false;
  std::thread m_thread{&MyMicrophone::run, this};
};

/// One of the players by name. Under the factory's lock: keep the callback and return, call no factory.
struct MyPlayer : vorn::VornDalMediaPlayerInterfaceImpl {
  void Configure(Settings, std::function<void(std::string)> callback) override {
    const Lock lock(m_mutex);
    m_callback = callback;
  }

  std::mutex m_mutex;
  std::function<void(std::string)> m_callback;
};

/// No external player on this device: every command is refused.
struct MyExternalPlayer : vorn::VornEMPAdapterIF {
  bool login(const Text&, const Text&, bool, Duration, Text) override { return false; }
  bool logout(Text) override { return false; }
  bool launchAndPlay(Text, Duration, Text) override { return false; }
  bool nextTrack(Text) override { return false; }
  bool previousTrack(Text) override { return false; }
  bool restartCurrentTrack(Text) override { return false; }
  bool setShuffleOn(Text) override { return false; }
  bool setShuffleOff(Text) override { return false; }
  bool resume(Text) override { return false; }
  bool pause(Text) override { return false; }
  bool stop(Text) override { return false; }
  bool skipForward(Duration, Text) override { return false; }
  bool setRepeatAll(Text) override { return false; }
  bool setRepeatNone(Text) override { return false; }
  bool setRepeatOne(Text) override { return false; }
  Text getPlaybackState(Text) override { return {}; }
};

/// Unlocked operations come from any thread, at once: one mutex guards the state. Nothing of the assistant is called under
/// it; news are posted under it, so that they go out in the order of the changes.
class MyHost : public vorn::VornDALImplIF {
 public:
  /// Ends the threads: after the assistant client has stopped and before the adapters are shut down.
  void stop() {
    m_microphone.stop();
    m_news.stop();
  }

  void alexaStateChanged(Text state) override { std::cout << "assistant: " << state << "\n"; }
  void dialogUXStateChanged(Text) override {}
  void notifyMainAppInitialized() override {}
  bool requestAudioFocus() override { return false; }
  bool releaseAudioFocus() override { return false; }
  bool startStreamingAudioData() override {
    m_microphone.listen(true);
    return true;
  }
  void stopStreamingAudioData() override { m_microphone.listen(false); }
  bool isMicrophoneAvailable() override { return true; }
  void setAlexaHandsFreeState(bool) override {}
  void notifyAlexaInvocationDetected(Text) override {}
  int getVolume() override {
    const Lock lock(m_mutex);
    return m_volume;
  }
  bool getMuteStatus() override {
    const Lock lock(m_mutex);
    return m_muted;
  }
  Text getTimezone() override { return "America/Vancouver"; }
  Text getDeviceLocale() override { return "en-US"; }
  void changeAlexaLocale(Text) override {}
  Entries getDeviceInformation() override { return {}; }
  bool getNetworkConnectionStatus() override { return false; }
  void updateInternetConnectionStatus(bool) override {}
  Text getConfigData(Text) override { return {}; }
  bool getSystemSetting(Text key, Text& value) override {
    const Lock lock(m_mutex);
    const auto found = m_settings.find(key);
    if (found == m_settings.end()) return false;
    value = found->second;
    return true;
  }
  bool setSystemSetting(Text key, Text value) override {
    const Lock lock(m_mutex);
    const auto found = m_settings.find(key);
    if (found == m_settings.end()) return false;
    found->second = value;
    // Not from here: this is a locked operation, and an assistant that asks back on this thread would wait for ever.
    m_news.post([key, value] {
      if (const auto info = vorn::VornDeviceInfo::getInstance()) info->notifySystemSettingChanged(key, value);
    });
    return true;
  }
  Text getVSKCapabilities() override { return "[]"; }
  bool open() override { return false; }
  Entries readKeyValue(const Text&) override { return {}; }
  bool writeKeyValue(Entries) override { return false; }
  bool removeKeyValue(const Texts&) override { return false; }
  bool clear() override { return false; }
  void onLogEmitted(const Text&, const Text&) override {}
  void sendCBLInfo(Text&, Text&, std::int64_t&) override {}
  void alexaAuthStatusChanged(Text) override {}
  vorn::VornEMPAdapterIF* getEMPAdapter() override { return &m_external; }
  void sendAppMessage(Text, Text, Text) override {}
  int setAnimation(Texts) override { return 0; }
  Result onChangeChannel(Text) override { return refused(); }
  bool onInputChange(const Text&) override { return false; }
  Result onSkipChannel(int) override { return refused(); }
  Result onSendKeystroke(Text) override { return refused(); }
  Result onChangePlaybackPlay(Text) override { return refused(); }
  Result onChangePlaybackPause(Text) override { return refused(); }
  Result onChangePlaybackStop(Text) override { return refused(); }
  Result onChangePlaybackStartOver(Text) override { return refused(); }
  Result onChangePlaybackPrevious(Text) override { return refused(); }
  Result onChangePlaybackNext(Text) override { return refused(); }
  Result onChangePlaybackRewind(Text) override { return refused(); }
  Result onChangePlaybackFastForward(Text) override { return refused(); }
  Result onSearchAndPlay(Text) override { return refused(); }
  Result onSearchAndDisplayResults(Text) override { return refused(); }
  Result onSetMode(Text, Text) override { return refused(); }
  Result onAdjustMode(Text, int) override { return refused(); }
  Result onSetPowerState(bool) override { return refused(); }
  Result onSetPowerState(bool, Text) override { return refused(); }
  Result onSetRangeValue(double) override { return refused(); }
  Result onAdjustRangeValue(double) override { return refused(); }
  Result onSetToggleState(Text, Text) override { return refused(); }
  Result onLaunchTarget(Text) override { return refused(); }
  Result onStartRecording() override { return refused(); }
  Result onStopRecording() override { return refused(); }
  Result onAdjustSeekPosition(int) override { return refused(); }
  Result onSetVolume(int volume) override {
    return setVolume([volume](int) { return volume; });
  }
  Result onAdjustVolume(int delta) override {
    // Clamped before it is added: any number arrives.
    return setVolume([delta](int now) { return now + std::max(-100, std::min(delta, 100)); });
  }
  Result onMute(bool muted) override {
    const Lock lock(m_mutex);
    m_muted = muted;
    m_news.post([muted] {
      if (const auto info = vorn::VornDeviceInfo::getInstance()) info->notifyMuteChanged(muted);
    });
    return {true, ""};
  }
  bool clearGUICard() override { return false; }
  bool renderGUICard(const Text&) override { return false; }
  void onCommsStateChanged(const CommsState&) override {}

  /// The table for VornMediaPlayerFactory, which reads it as long as anybody keeps the factory.
  std::unordered_map<Text, std::shared_ptr<vorn::VornDalMediaPlayerInterfaceImpl>> players{
      {"DefaultMediaPlayer", std::make_shared<MyPlayer>()}};

 private:
  /// The assistant tells the user, so say why.
  static Result refused() { return {false, "not on this device"}; }

  Result setVolume(const std::function<int(int)>& change) {
    const Lock lock(m_mutex);
    const int volume = m_volume = std::max(0, std::min(change(m_volume), 100));
    m_news.post([volume] {
      if (const auto info = vorn::VornDeviceInfo::getInstance()) info->notifyVolumeChanged(volume);
    });
    return {true, ""};
  }

  std::mutex m_mutex;
  int m_volume = 30;
  bool m_muted = false;
  Entries m_settings{{"friendlyName", "Kitchen"}};
  MyExternalPlayer m_external;
  MyNews m_news;
  MyMicrophone m_microphone;
};
