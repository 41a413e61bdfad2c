// An assistant side of another hand: it says what reaches it.

#include <DeviceAbstractionLayer/AppMessaging.h>
#include <DeviceAbstractionLayer/AudioIn.h>
#include <DeviceAbstractionLayer/CommsManager.h>
#include <DeviceAbstractionLayer/DeviceCapabilities.h>
#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <DeviceAbstractionLayer/GUIOutput.h>
#include <DeviceAbstractionLayer/OOBE.h>

#include <cstdlib>
#include <iostream>

namespace DeviceAbstractionLayer {

using std::cout;
using std::string;

void detail::wrongSlot(const char* slot) {
  cout << "called through the wrong slot: " << slot << std::endl;
  std::abort();
}

template <class Area>
static std::shared_ptr<Area> only() {
  static const auto object = std::make_shared<Area>();
  return object;
}

std::shared_ptr<AppMessaging> AppMessaging::getInstance() { return only<AppMessaging>(); }
bool AppMessaging::SendMessageToxApp(string a, string b, string c) {
  cout << "app: " << a << " " << b << " " << c << "\n";
  return true;
}

std::shared_ptr<AudioIn> AudioIn::getInstance() { return only<AudioIn>(); }
AudioIn::~AudioIn() {}
void AudioIn::notifyAlexaButtonPress(string type, std::chrono::milliseconds duration) {
  cout << "button: " << type << " " << duration.count() << "\n";
}
void AudioIn::notifyAlexaButtonReleased() { cout << "button: released\n"; }
void AudioIn::sendAudioData(std::vector<short>& samples) { cout << "samples: " << samples.size() << "\n"; }

std::shared_ptr<CommsManager> CommsManager::getInstance() { return only<CommsManager>(); }
void CommsManager::notifyCallAction(CommsControllerInterface::CallAction action) {
  cout << "call: " << static_cast<int>(action) << "\n";
}

std::shared_ptr<DeviceCapabilities> DeviceCapabilities::getInstance() { return only<DeviceCapabilities>(); }
DeviceCapabilities::~DeviceCapabilities() {}
void DeviceCapabilities::notifyUpdatedAssociation(string a, string b) {
  cout << "association: " << a << " " << b << "\n";
}
void DeviceCapabilities::notifyFriendlyNameChange(string name) { cout << "name: " << name << "\n"; }

std::shared_ptr<DeviceInfo> DeviceInfo::getInstance() { return only<DeviceInfo>(); }
DeviceInfo::~DeviceInfo() {}
void DeviceInfo::notifySystemSettingChanged(string key, string value) {
  cout << "setting: " << key << " " << value << "\n";
}
void DeviceInfo::notifyLocaleChange(string locale) { cout << "locale: " << locale << "\n"; }
void DeviceInfo::notifyLocaleChange(std::vector<string> locales) {
  cout << "locales: " << locales.size() << "\n";
}
void DeviceInfo::notifyNetworkConnectionChanged(string status) { cout << "network: " << status << "\n"; }
void DeviceInfo::notifyMicrophoneAvailabilityChanged(string now) { cout << "microphone: " << now << "\n"; }
void DeviceInfo::notifyVolumeChanged(int volume) { cout << "volume: " << volume << "\n"; }
void DeviceInfo::notifyMuteChanged(bool muted) { cout << "muted: " << muted << "\n"; }
void DeviceInfo::notifyHandsfreeStateChanged(bool on) { cout << "hands-free: " << on << "\n"; }

std::shared_ptr<GUIOutput> GUIOutput::getInstance() { return only<GUIOutput>(); }
GUIOutput::~GUIOutput() {}
bool GUIOutput::notifyPlaybackControllerAction(string action) { return action == "PLAY"; }

std::shared_ptr<OOBE> OOBE::getInstance() { return only<OOBE>(); }
OOBE::~OOBE() {}
void OOBE::notifyOOBEInitiated() { cout << "setup: begun\n"; }
void OOBE::notifyOOBECancelled() { cout << "setup: cancelled\n"; }
string OOBE::getAlexaAuthStatus() { return "UNAUTHORIZED"; }

}  // namespace DeviceAbstractionLayer
