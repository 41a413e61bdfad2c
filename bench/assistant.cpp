// The assistant side of the benchmarks, which does nothing: calls are resolved to it before the stand-in.

#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/OOBE.h>

namespace {

class Ear final : public DeviceAbstractionLayer::AudioIn {
 public:
  void notifyAlexaButtonPress(std::string, std::chrono::milliseconds) override {}
  void notifyAlexaButtonReleased() override {}
  void sendAudioData(std::vector<short>&) override {}
};

class Settings final : public DeviceAbstractionLayer::DeviceInfo {
 public:
  void notifySystemSettingChanged(std::string, std::string) override {}
  void notifyLocaleChange(std::string) override {}
  void notifyLocaleChange(std::vector<std::string>) override {}
  void notifyNetworkConnectionChanged(std::string) override {}
  void notifyMicrophoneAvailabilityChanged(std::string) override {}
  void notifyVolumeChanged(int) override {}
  void notifyMuteChanged(bool) override {}
  void notifyHandsfreeStateChanged(bool) override {}
};

class Setup final : public DeviceAbstractionLayer::OOBE {
 public:
  void notifyOOBEInitiated() override {}
  void notifyOOBECancelled() override {}
  std::string getAlexaAuthStatus() override { return {}; }
};

}  // namespace

std::shared_ptr<DeviceAbstractionLayer::AudioIn> DeviceAbstractionLayer::AudioIn::getInstance() {
  static const std::shared_ptr<AudioIn> ear = std::make_shared<Ear>();
  return ear;
}

std::shared_ptr<DeviceAbstractionLayer::DeviceInfo> DeviceAbstractionLayer::DeviceInfo::getInstance() {
  static const std::shared_ptr<DeviceInfo> settings = std::make_shared<Settings>();
  return settings;
}

std::shared_ptr<DeviceAbstractionLayer::OOBE> DeviceAbstractionLayer::OOBE::getInstance() {
  static const std::shared_ptr<OOBE> setup = std::make_shared<Setup>();
  return setup;
}
