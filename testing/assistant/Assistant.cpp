// The stand-in for the closed libDALIMPL.so: the seven singletons, filled and emptied by FakeAssistant.

#include "vorn_testing/FakeAssistant.h"

#include <DeviceAbstractionLayer/AppMessaging.h>
#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/CommsManager.h>
#include <DeviceAbstractionLayer/DeviceCapabilities.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/GUIOutput.h>
#include <DeviceAbstractionLayer/OOBE.h>

#include <mutex>
#include <utility>

namespace vorn_testing {

namespace {

/// What the objects share with the FakeAssistant that made them, and may outlive it with.
class Recording {
 public:
  Recording(std::shared_ptr<Recorder> recorder, std::shared_ptr<FakeAssistant::Answers> answers)
      : m_recorder(std::move(recorder)), m_answers(std::move(answers)) {}

 protected:
  const std::shared_ptr<Recorder> m_recorder;
  const std::shared_ptr<FakeAssistant::Answers> m_answers;
};

class StandDeviceInfo final : public DeviceAbstractionLayer::DeviceInfo, private Recording {
 public:
  using Recording::Recording;

  void notifySystemSettingChanged(std::string key, std::string value) override {
    return m_recorder->run(makeCall("DeviceInfo", "notifySystemSettingChanged", 33, this, key, value),
                           [&] {});
  }

  void notifyLocaleChange(std::string locale) override {
    return m_recorder->run(makeCall("DeviceInfo", "notifyLocaleChange", 34, this, locale), [&] {});
  }

  void notifyLocaleChange(std::vector<std::string> locales) override {
    return m_recorder->run(makeCall("DeviceInfo", "notifyLocaleChange", 35, this, locales), [&] {});
  }

  void notifyNetworkConnectionChanged(std::string status) override {
    return m_recorder->run(makeCall("DeviceInfo", "notifyNetworkConnectionChanged", 37, this, status),
                           [&] {});
  }

  void notifyMicrophoneAvailabilityChanged(std::string availability) override {
    return m_recorder->run(
        makeCall("DeviceInfo", "notifyMicrophoneAvailabilityChanged", 38, this, availability), [&] {});
  }

  void notifyVolumeChanged(int volume) override {
    return m_recorder->run(makeCall("DeviceInfo", "notifyVolumeChanged", 41, this, volume), [&] {});
  }

  void notifyMuteChanged(bool muted) override {
    return m_recorder->run(makeCall("DeviceInfo", "notifyMuteChanged", 42, this, muted), [&] {});
  }

  void notifyHandsfreeStateChanged(bool enabled) override {
    return m_recorder->run(makeCall("DeviceInfo", "notifyHandsfreeStateChanged", 47, this, enabled), [&] {});
  }
};

class StandDeviceCapabilities final : public DeviceAbstractionLayer::DeviceCapabilities, private Recording {
 public:
  using Recording::Recording;

  void notifyUpdatedAssociation(std::string first, std::string second) override {
    return m_recorder->run(
        makeCall("DeviceCapabilities", "notifyUpdatedAssociation", 30, this, first, second), [&] {});
  }

  void notifyFriendlyNameChange(std::string friendlyName) override {
    return m_recorder->run(makeCall("DeviceCapabilities", "notifyFriendlyNameChange", 39, this, friendlyName),
                           [&] {});
  }
};

class StandGUIOutput final : public DeviceAbstractionLayer::GUIOutput, private Recording {
 public:
  using Recording::Recording;

  bool notifyPlaybackControllerAction(std::string action) override {
    return m_recorder->run(makeCall("GUIOutput", "notifyPlaybackControllerAction", 5, this, action),
                           [&] { return m_answers->playbackActionAccepted; });
  }
};

class StandOOBE final : public DeviceAbstractionLayer::OOBE, private Recording {
 public:
  using Recording::Recording;

  void notifyOOBEInitiated() override {
    return m_recorder->run(makeCall("OOBE", "notifyOOBEInitiated", 4, this), [&] {});
  }

  void notifyOOBECancelled() override {
    return m_recorder->run(makeCall("OOBE", "notifyOOBECancelled", 6, this), [&] {});
  }

  std::string getAlexaAuthStatus() override {
    return m_recorder->run(makeCall("OOBE", "getAlexaAuthStatus", 11, this),
                           [&] { return m_answers->authStatus; });
  }
};

class StandAudioIn final : public DeviceAbstractionLayer::AudioIn, private Recording {
 public:
  using Recording::Recording;

  void notifyAlexaButtonPress(std::string type, std::chrono::milliseconds duration) override {
    return m_recorder->run(makeCall("AudioIn", "notifyAlexaButtonPress", 7, this, type, duration), [&] {});
  }

  void notifyAlexaButtonReleased() override {
    return m_recorder->run(makeCall("AudioIn", "notifyAlexaButtonReleased", 8, this), [&] {});
  }

  void sendAudioData(std::vector<short>& samples) override {
    return m_recorder->run(makeCall("AudioIn", "sendAudioData", 11, this, samples), [&] {});
  }
};

class StandAppMessaging final : public DeviceAbstractionLayer::AppMessaging, private Recording {
 public:
  using Recording::Recording;

  bool SendMessageToxApp(std::string first, std::string second, std::string third) override {
    return m_recorder->run(makeCall("AppMessaging", "SendMessageToxApp", 1, this, first, second, third),
                           [&] { return m_answers->messageAccepted; });
  }
};

class StandCommsManager final : public DeviceAbstractionLayer::CommsManager, private Recording {
 public:
  using Recording::Recording;

  void notifyCallAction(DeviceAbstractionLayer::CommsControllerInterface::CallAction action) override {
    return m_recorder->run(makeCall("CommsManager", "notifyCallAction", 1, this, static_cast<int>(action)),
                           [&] {});
  }
};

/// One singleton.
template <class Area>
class Singleton {
 public:
  std::shared_ptr<Area> get() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_object;
  }

  void set(std::shared_ptr<Area> object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_object.swap(object);
  }

  long references() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_object ? m_object.use_count() - 1 : 0;
  }

 private:
  std::mutex m_mutex;
  std::shared_ptr<Area> m_object;
};

Singleton<DeviceAbstractionLayer::DeviceInfo> g_deviceInfo;
Singleton<DeviceAbstractionLayer::DeviceCapabilities> g_deviceCapabilities;
Singleton<DeviceAbstractionLayer::GUIOutput> g_guiOutput;
Singleton<DeviceAbstractionLayer::OOBE> g_oobe;
Singleton<DeviceAbstractionLayer::AudioIn> g_audioIn;
Singleton<DeviceAbstractionLayer::AppMessaging> g_appMessaging;
Singleton<DeviceAbstractionLayer::CommsManager> g_commsManager;

}  // namespace

FakeAssistant::FakeAssistant(std::shared_ptr<Recorder> shared)
    : recorder(std::move(shared)), answers(std::make_shared<Answers>(Answers{"AUTHORIZED", true, true})) {
  try {
    for (int area = 0; area < kAreas; ++area) create(static_cast<Area>(area));
  } catch (...) {
    for (int area = 0; area < kAreas; ++area) remove(static_cast<Area>(area));
    throw;
  }
}

FakeAssistant::~FakeAssistant() {
  for (int area = 0; area < kAreas; ++area) remove(static_cast<Area>(area));
}

void FakeAssistant::create(Area area) {
  switch (area) {
    case kDeviceInfo:
      return g_deviceInfo.set(std::make_shared<StandDeviceInfo>(recorder, answers));
    case kDeviceCapabilities:
      return g_deviceCapabilities.set(std::make_shared<StandDeviceCapabilities>(recorder, answers));
    case kGUIOutput:
      return g_guiOutput.set(std::make_shared<StandGUIOutput>(recorder, answers));
    case kOOBE:
      return g_oobe.set(std::make_shared<StandOOBE>(recorder, answers));
    case kAudioIn:
      return g_audioIn.set(std::make_shared<StandAudioIn>(recorder, answers));
    case kAppMessaging:
      return g_appMessaging.set(std::make_shared<StandAppMessaging>(recorder, answers));
    case kCommsManager:
      return g_commsManager.set(std::make_shared<StandCommsManager>(recorder, answers));
  }
}

void FakeAssistant::remove(Area area) {
  switch (area) {
    case kDeviceInfo:
      return g_deviceInfo.set(nullptr);
    case kDeviceCapabilities:
      return g_deviceCapabilities.set(nullptr);
    case kGUIOutput:
      return g_guiOutput.set(nullptr);
    case kOOBE:
      return g_oobe.set(nullptr);
    case kAudioIn:
      return g_audioIn.set(nullptr);
    case kAppMessaging:
      return g_appMessaging.set(nullptr);
    case kCommsManager:
      return g_commsManager.set(nullptr);
  }
}

long FakeAssistant::references(Area area) {
  switch (area) {
    case kDeviceInfo:
      return g_deviceInfo.references();
    case kDeviceCapabilities:
      return g_deviceCapabilities.references();
    case kGUIOutput:
      return g_guiOutput.references();
    case kOOBE:
      return g_oobe.references();
    case kAudioIn:
      return g_audioIn.references();
    case kAppMessaging:
      return g_appMessaging.references();
    case kCommsManager:
      return g_commsManager.references();
  }
  return 0;
}

}  // namespace vorn_testing

namespace DeviceAbstractionLayer {

std::shared_ptr<DeviceInfo> DeviceInfo::getInstance() { return vorn_testing::g_deviceInfo.get(); }

std::shared_ptr<DeviceCapabilities> DeviceCapabilities::getInstance() {
  return vorn_testing::g_deviceCapabilities.get();
}

std::shared_ptr<GUIOutput> GUIOutput::getInstance() { return vorn_testing::g_guiOutput.get(); }

std::shared_ptr<OOBE> OOBE::getInstance() { return vorn_testing::g_oobe.get(); }

std::shared_ptr<AudioIn> AudioIn::getInstance() { return vorn_testing::g_audioIn.get(); }

std::shared_ptr<AppMessaging> AppMessaging::getInstance() { return vorn_testing::g_appMessaging.get(); }

std::shared_ptr<CommsManager> CommsManager::getInstance() { return vorn_testing::g_commsManager.get(); }

}  // namespace DeviceAbstractionLayer
