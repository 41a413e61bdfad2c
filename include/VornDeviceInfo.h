#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VornDALExport.h"

namespace VornDeviceAbstractionLayer {

class VornDALImplIF;

/// Device facts and settings: the assistant asks, the host answers and reports changes.
///
/// Down  Each query is one call of the VornDALImplIF operation of the same name. Nothing is cached.
/// Up    Each notify...() is one call of DeviceAbstractionLayer::DeviceInfo, fetched anew, whether or not
///       this class has an instance.
/// Life  The host is borrowed and must outlive every call. A pointer kept past Shutdown() stays valid;
///       what it then does on the way down stands with each operation.
class VORN_DAL_API VornDeviceInfo {
 public:
  /// Creates the instance on `host`, or returns the live one and ignores `host`.
  ///
  /// @throws std::bad_alloc    Nothing was created; the next call tries again.
  /// @throws std::system_error The mutex could not be locked.
  /// @locked
  static std::shared_ptr<VornDeviceInfo> CreateInstance(VornDALImplIF& host);

  /// Finds the live instance; never creates one.
  ///
  /// @returns The instance, or an empty pointer before CreateInstance() and after Shutdown().
  /// @locked
  static std::shared_ptr<VornDeviceInfo> getInstance();

  /// Drops the library's reference; without an instance it does nothing. Copies handed out stay valid.
  ///
  /// @locked
  static void Shutdown();

  /// Use CreateInstance(): an object made otherwise forwards only while the class has an instance.
  explicit VornDeviceInfo(VornDALImplIF& host);

  VornDeviceInfo(const VornDeviceInfo&) = delete;
  VornDeviceInfo& operator=(const VornDeviceInfo&) = delete;

  /// Reads the device locale.
  ///
  /// @returns    The host's text.
  /// @ifnotlive  Empty text, not the default locale.
  /// @locked
  std::string getDeviceLocale();

  /// Asks the device to follow a new locale of the assistant.
  ///
  /// @ifnotlive  Nothing.
  /// @locked
  void changeAlexaLocale(std::string locale);

  /// Reads the time zone.
  ///
  /// @returns    The host's text.
  /// @ifnotlive  Empty text, not the default time zone.
  /// @locked
  std::string getTimezone();

  /// Reads the facts about the device, by field name.
  ///
  /// @returns    The host's entries; the usual names stand in DeviceInfoConstants.h.
  /// @ifnotlive  An empty map.
  /// @locked
  std::map<std::string, std::string> getDeviceInformation();

  /// Reads whether the device is connected to its network.
  ///
  /// @returns    true when connected.
  /// @ifnotlive  false
  /// @locked
  bool getNetworkConnectionStatus();

  /// Tells the host whether the assistant client reaches the internet.
  ///
  /// @ifnotlive  Nothing.
  /// @locked
  void updateInternetConnectionStatus(bool connected);

  /// Reads one configuration item.
  ///
  /// @returns    The host's text.
  /// @ifnotlive  Empty text.
  /// @locked
  std::string getConfigData(std::string key);

  /// Changes a system setting.
  ///
  /// @returns    true when the host accepts it.
  /// @ifnotlive  false
  /// @locked
  bool setSystemSetting(std::string key, std::string value);

  /// Reads the speaker volume.
  ///
  /// @returns    The host's number, unchanged, on the host's own scale.
  /// @ifnotlive  0
  /// @locked
  int getVolume();

  /// Reads whether the speaker is muted.
  ///
  /// @returns    true when muted.
  /// @ifnotlive  false
  /// @locked
  bool getMuteStatus();

  /// Reads a system setting into `value`, which the host writes to directly.
  ///
  /// @returns    true when the host has written `value`.
  /// @ifnotlive  false; `value` is left as it was.
  /// @unlocked
  bool getSystemSetting(std::string key, std::string& value);

  /// Reads the VSK capabilities of the device.
  ///
  /// @returns    The host's text.
  /// @ifnotlive  The two characters "[]".
  /// @unlocked
  std::string getVSKCapabilities();

  /// Tells the assistant side the new speaker volume, on the host's own scale.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyVolumeChanged(int volume);

  /// Tells the assistant side that the speaker was muted or unmuted.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyMuteChanged(bool muted);

  /// Tells the assistant side that hands-free listening was switched on or off.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyHandsfreeStateChanged(bool state);

  /// Tells the assistant side whether the microphone is available; the words are the host's choice.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyMicrophoneAvailabilityChanged(std::string availability);

  /// Tells the assistant side the new value of a system setting.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifySystemSettingChanged(std::string key, std::string value);

  /// Tells the assistant side the new locale.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyLocaleChange(std::string locale);

  /// Tells the assistant side the network status; the words are the host's choice.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyNetworkConnectionChanged(std::string status);

  /// Tells the assistant side the new list of locales, in order and with duplicates, empty lists too.
  ///
  /// @ifabsent   The notification is dropped.
  /// @unlocked
  void notifyLocaleChange(std::vector<std::string> locales);

 private:
  VornDALImplIF& m_host;

  static std::shared_ptr<VornDeviceInfo> m_instance;
  static std::mutex m_mutex;
};

}  // namespace VornDeviceAbstractionLayer
