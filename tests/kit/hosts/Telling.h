#pragma once

#include <VornDeviceInfo.h>

#include <condition_variable>
#include <deque>
#include <thread>

#include "Host.h"

namespace hosts {

using News = std::function<void(VornDeviceAbstractionLayer::VornDeviceInfo&)>;

/// Tells on the thread that calls it.
inline void tellNow(const News& news) {
  if (const auto info = VornDeviceAbstractionLayer::VornDeviceInfo::getInstance()) news(*info);
}

/// A device that tells each change from a thread of its own, in order, with what its getters answer.
struct Telling : Device {
  std::mutex of_news;
  std::condition_variable come;
  std::deque<News> waiting;
  bool ended = false, handsFree = false;
  std::thread worker{[this] { work(); }};

  Telling() = default;
  ~Telling() override { end(); }
  Telling(const Telling&) = delete;
  Telling& operator=(const Telling&) = delete;

  /// Nothing is told any more when it returns.
  void end() {
    {
      const Lock lock(of_news);
      ended = true;
    }
    come.notify_one();
    if (worker.joinable()) worker.join();
  }
  void work() {
    std::unique_lock<std::mutex> lock(of_news);
    for (;;) {
      come.wait(lock, [this] { return ended || !waiting.empty(); });
      if (waiting.empty()) return;
      const News news = std::move(waiting.front());
      waiting.pop_front();
      lock.unlock();
      tellNow(news);
      lock.lock();
    }
  }
  void tell(News news) {
    const Lock lock(of_news);
    waiting.push_back(std::move(news));
    come.notify_one();
  }

  /// What a mistake replaces: how a change that was made is told. Under the device's mutex.
  virtual void tellVolume(int value) {
    tell([value](auto& info) { info.notifyVolumeChanged(value); });
  }
  virtual void tellMute(bool value) {
    tell([value](auto& info) { info.notifyMuteChanged(value); });
  }
  virtual void tellLocale(const std::string& value) {
    tell([value](auto& info) { info.notifyLocaleChange(value); });
  }
  virtual void tellSetting(const std::string& key, const std::string& value) {
    tell([key, value](auto& info) { info.notifySystemSettingChanged(key, value); });
  }

  virtual Result becomes(std::int64_t wanted) {
    const int value = static_cast<int>(std::clamp<std::int64_t>(wanted, 0, 100));
    if (value == volume) return {true, ""};
    volume = value;
    tellVolume(value);
    return {true, ""};
  }
  Result onSetVolume(int wanted) override {
    const Lock lock(mutex);
    return becomes(wanted);
  }
  Result onAdjustVolume(int delta) override {
    const Lock lock(mutex);
    return becomes(std::int64_t{volume} + delta);
  }
  Result onMute(bool mute) override {
    const Lock lock(mutex);
    if (muted == mute) return {true, ""};
    muted = mute;
    tellMute(mute);
    return {true, ""};
  }
  void changeAlexaLocale(std::string wanted) override {
    const Lock lock(mutex);
    if (wanted.size() != 5 || wanted[2] != '-' || wanted == locale) return;
    locale = wanted;
    tellLocale(wanted);
  }
  bool setSystemSetting(std::string key, std::string value) override {
    const Lock lock(mutex);
    const auto found = settings.find(key);
    if (found == settings.end()) return false;
    if (found->second == value) return true;
    found->second = value;
    tellSetting(key, value);
    return true;
  }
  void setAlexaHandsFreeState(bool on) override {
    const Lock lock(mutex);
    if (handsFree == on) return;
    handsFree = on;
    tell([on](auto& info) { info.notifyHandsfreeStateChanged(on); });
  }
};

}  // namespace hosts
