#ifndef PRODUCT_DAL_DEVICEINFO
#define PRODUCT_DAL_DEVICEINFO

#include <memory>
#include <string>
#include <vector>
#include "detail/Calls.h"

namespace DeviceAbstractionLayer {

// What the device is.
class DeviceInfo {
 public:
  static std::shared_ptr<DeviceInfo> getInstance();
  virtual ~DeviceInfo();
  virtual int readBattery(double) const {
    detail::wrongSlot("DeviceInfo 3");
    return 0;
  }
  virtual void setBattery(int) { detail::wrongSlot("DeviceInfo 4"); }
  virtual std::string describeBattery(std::string) {
    detail::wrongSlot("DeviceInfo 5");
    return {};
  }
  virtual bool hasBattery(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 6");
    return false;
  }
  virtual int readDisplay(double) const {
    detail::wrongSlot("DeviceInfo 7");
    return 0;
  }
  virtual void setDisplay(int) { detail::wrongSlot("DeviceInfo 8"); }
  virtual std::string describeDisplay(std::string) {
    detail::wrongSlot("DeviceInfo 9");
    return {};
  }
  virtual bool hasDisplay(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 10");
    return false;
  }
  virtual int readButton(double) const {
    detail::wrongSlot("DeviceInfo 11");
    return 0;
  }
  virtual void setButton(int) { detail::wrongSlot("DeviceInfo 12"); }
  virtual std::string describeButton(std::string) {
    detail::wrongSlot("DeviceInfo 13");
    return {};
  }
  virtual bool hasButton(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 14");
    return false;
  }
  virtual int readFan(double) const {
    detail::wrongSlot("DeviceInfo 15");
    return 0;
  }
  virtual void setFan(int) { detail::wrongSlot("DeviceInfo 16"); }
  virtual std::string describeFan(std::string) {
    detail::wrongSlot("DeviceInfo 17");
    return {};
  }
  virtual bool hasFan(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 18");
    return false;
  }
  virtual int readAntenna(double) const {
    detail::wrongSlot("DeviceInfo 19");
    return 0;
  }
  virtual void setAntenna(int) { detail::wrongSlot("DeviceInfo 20"); }
  virtual std::string describeAntenna(std::string) {
    detail::wrongSlot("DeviceInfo 21");
    return {};
  }
  virtual bool hasAntenna(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 22");
    return false;
  }
  virtual int readPanel(double) const {
    detail::wrongSlot("DeviceInfo 23");
    return 0;
  }
  virtual void setPanel(int) { detail::wrongSlot("DeviceInfo 24"); }
  virtual std::string describePanel(std::string) {
    detail::wrongSlot("DeviceInfo 25");
    return {};
  }
  virtual bool hasPanel(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 26");
    return false;
  }
  virtual int readLamp(double) const {
    detail::wrongSlot("DeviceInfo 27");
    return 0;
  }
  virtual void setLamp(int) { detail::wrongSlot("DeviceInfo 28"); }
  virtual std::string describeLamp(std::string) {
    detail::wrongSlot("DeviceInfo 29");
    return {};
  }
  virtual bool hasLamp(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 30");
    return false;
  }
  virtual int readTray(double) const {
    detail::wrongSlot("DeviceInfo 31");
    return 0;
  }
  virtual void setTray(int) { detail::wrongSlot("DeviceInfo 32"); }
  virtual void notifySystemSettingChanged(std::string key, std::string value);
  virtual void notifyLocaleChange(std::string locale);
  virtual void notifyLocaleChange(std::vector<std::string> locales);
  virtual std::string describeTray(std::string) {
    detail::wrongSlot("DeviceInfo 36");
    return {};
  }
  virtual void notifyNetworkConnectionChanged(std::string status);
  virtual void notifyMicrophoneAvailabilityChanged(std::string availability);
  virtual bool hasTray(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 39");
    return false;
  }
  virtual int readSensor(double) const {
    detail::wrongSlot("DeviceInfo 40");
    return 0;
  }
  virtual void notifyVolumeChanged(int volume);
  virtual void notifyMuteChanged(bool muted);
  virtual void setSensor(int) { detail::wrongSlot("DeviceInfo 43"); }
  virtual std::string describeSensor(std::string) {
    detail::wrongSlot("DeviceInfo 44");
    return {};
  }
  virtual bool hasSensor(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 45");
    return false;
  }
  virtual int readClock(double) const {
    detail::wrongSlot("DeviceInfo 46");
    return 0;
  }
  virtual void notifyHandsfreeStateChanged(bool on);
  virtual void setClock(int) { detail::wrongSlot("DeviceInfo 48"); }
  virtual std::string describeClock(std::string) {
    detail::wrongSlot("DeviceInfo 49");
    return {};
  }
  virtual bool hasClock(const std::string&, bool) {
    detail::wrongSlot("DeviceInfo 50");
    return false;
  }
  virtual int readRegion(double) const {
    detail::wrongSlot("DeviceInfo 51");
    return 0;
  }
  virtual void setRegion(int) { detail::wrongSlot("DeviceInfo 52"); }
};

}  // namespace DeviceAbstractionLayer

#endif
