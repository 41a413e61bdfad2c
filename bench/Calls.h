#pragma once

#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/OOBE.h>
#include <FileLogger.h>
#include <VornAlexaState.h>
#include <VornAttachmentReaderContainerFactory.h>
#include <VornAudioIn.h>
#include <VornDeviceInfo.h>
#include <VornGUIOutput.h>
#include <VornLEDController.h>
#include <VornLoggerObserver.h>
#include <VornOOBE.h>
#include <vorn_testing/NullHost.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "opaque.h"

/// Every kind of call, each beside the bare call that it cannot do without: the same for those who count and those
/// who measure time. The trace is off.
class Calls {
 public:
  Calls() { m_container->Subscribe(m_onData, nullptr); }

  /// Hands `compare` each kind's name, its bare call and the library's, as objects to call any number of times; they
  /// stay valid as long as this object.
  template <class Compare>
  void each(Compare compare) {
    using namespace VornDeviceAbstractionLayer;

    compare(
        "audio", [&ear = m_ear, &samples = m_samples] { opaque(ear.get())->sendAudioData(samples); },
        [&audio = m_audio, &samples = m_samples] { audio->sendAudioData(samples); });
    compare(
        "unlocked", [&host = m_host] { opaque(host)->isMicrophoneAvailable(); },
        [&audio = m_audio] { audio->isMicrophoneAvailable(); });
    compare(
        "unlocked-references", [&host = m_host, &text = m_text] { opaque(host)->onLogEmitted(text, text); },
        [&observer = m_observer, &text = m_text] { observer->onLogEmitted(text, text); });
    compare(
        "unlocked-result", [&host = m_host] { opaque(host)->getVSKCapabilities(); },
        [&info = m_info] { info->getVSKCapabilities(); });
    compare(
        "upward",
        [] {
          if (const auto assistant = DeviceAbstractionLayer::OOBE::getInstance())
            assistant->notifyOOBECancelled();
        },
        [&oobe = m_oobe] { oobe->notifyOOBECancelled(); });
    compare(
        "upward-number",
        [] {
          if (const auto assistant = DeviceAbstractionLayer::DeviceInfo::getInstance())
            assistant->notifyVolumeChanged(1);
        },
        [&info = m_info] { info->notifyVolumeChanged(1); });
    compare(
        "upward-result",
        [] {
          if (const auto assistant = DeviceAbstractionLayer::OOBE::getInstance())
            assistant->getAlexaAuthStatus();
        },
        [&oobe = m_oobe] { oobe->getAlexaAuthStatus(); });
    compare(
        "locked",
        [&mutex = m_mutex, &host = m_host] {
          const std::lock_guard<std::mutex> lock(mutex);
          opaque(host)->clearGUICard();
        },
        [&gui = m_gui] { gui->clearGUICard(); });
    compare(
        "locked-references",
        [&mutex = m_mutex, &host = m_host, &text = m_text] {
          const std::lock_guard<std::mutex> lock(mutex);
          opaque(host)->renderGUICard(text);
        },
        [&gui = m_gui, &text = m_text] { gui->renderGUICard(text); });
    compare(
        "locked-result",
        [&mutex = m_mutex, &host = m_host] {
          const std::lock_guard<std::mutex> lock(mutex);
          opaque(host)->getDeviceInformation();
        },
        [&info = m_info] { info->getDeviceInformation(); });
    compare(
        "container", [&onData = m_onData, &samples = m_samples] { (*opaque(&onData))(samples.data(), 1); },
        [&container = m_container, &samples = m_samples] {
          opaque(container.get())->sendData(samples.data(), 1);
        });
    compare(
        "copies",
        [&text = m_text, &host = m_host] {
          std::string argument = text;
          opaque(host)->alexaStateChanged(argument);
        },
        [&alexaState = m_alexaState, &text = m_text] { alexaState->alexaStateChanged(text); });
    compare(
        "copies-references",
        [&text = m_text, &value = m_value, &host = m_host] {
          std::string argument = text;
          opaque(host)->getSystemSetting(argument, value);
        },
        [&info = m_info, &text = m_text, &value = m_value] { info->getSystemSetting(text, value); });
    compare(
        "locked-copies",
        [&texts = m_texts, &mutex = m_mutex, &host = m_host] {
          std::vector<std::string> argument = texts;
          const std::lock_guard<std::mutex> lock(mutex);
          opaque(host)->setAnimation(argument);
        },
        [&led = m_led, &texts = m_texts] { led->setAnimation(texts); });
    compare(
        "logging-off",
        [&host = m_host] {
          const auto logger = FileLogger::getInstance();
          std::string line =
              "void VornDeviceAbstractionLayer::VornAudioIn::setAlexaHandsFreeState(bool) calling xApp API";
          opaque(line.data());
          opaque(host)->setAlexaHandsFreeState(true);
        },
        [&audio = m_audio] { audio->setAlexaHandsFreeState(true); });
  }

 private:
  vorn_testing::NullHost m_nullHost;
  VornDeviceAbstractionLayer::VornDALImplIF* const m_host =
      opaque<VornDeviceAbstractionLayer::VornDALImplIF>(&m_nullHost);
  std::mutex m_mutex;
  std::vector<short> m_samples = std::vector<short>(160);
  const std::string m_text = "a text too long for the string's own storage";
  std::string m_value;
  const std::vector<std::string> m_texts{3, m_text};
  const std::function<void(void*, std::size_t)> m_onData = [](void*, std::size_t) {};

  const std::shared_ptr<DeviceAbstractionLayer::AudioIn> m_ear =
      DeviceAbstractionLayer::AudioIn::getInstance();
  const std::shared_ptr<VornDeviceAbstractionLayer::VornAudioIn> m_audio =
      VornDeviceAbstractionLayer::VornAudioIn::CreateInstance(*m_host);
  const std::shared_ptr<VornDeviceAbstractionLayer::VornLoggerObserver> m_observer =
      VornDeviceAbstractionLayer::VornLoggerObserver::CreateInstance(*m_host);
  const std::shared_ptr<VornDeviceAbstractionLayer::VornDeviceInfo> m_info =
      VornDeviceAbstractionLayer::VornDeviceInfo::CreateInstance(*m_host);
  const std::shared_ptr<VornDeviceAbstractionLayer::VornGUIOutput> m_gui =
      VornDeviceAbstractionLayer::VornGUIOutput::CreateInstance(*m_host);
  const std::shared_ptr<VornDeviceAbstractionLayer::VornOOBE> m_oobe =
      VornDeviceAbstractionLayer::VornOOBE::CreateInstance(*m_host);
  const std::shared_ptr<VornDeviceAbstractionLayer::VornAlexaState> m_alexaState =
      VornDeviceAbstractionLayer::VornAlexaState::CreateInstance(*m_host);
  const std::shared_ptr<VornDeviceAbstractionLayer::VornLEDController> m_led =
      VornDeviceAbstractionLayer::VornLEDController::CreateInstance(*m_host);
  const std::shared_ptr<VornDeviceAbstractionLayer::VornAttachmentReaderContainerInterfaceImpl> m_container =
      VornDeviceAbstractionLayer::VornAttachmentReaderContainerFactory::getInstance()
          ->createAttachmentReaderContainer(nullptr);
};
