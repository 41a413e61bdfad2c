#ifndef PRODUCT_DAL_DEVICECAPABILITIES
#define PRODUCT_DAL_DEVICECAPABILITIES

#include <memory>
#include <string>
#include "detail/Calls.h"

namespace DeviceAbstractionLayer {

// What the device can do.
class DeviceCapabilities {
 public:
  static std::shared_ptr<DeviceCapabilities> getInstance();
  virtual ~DeviceCapabilities();
  virtual int readBattery(double) const {
    detail::wrongSlot("DeviceCapabilities 3");
    return 0;
  }
  virtual void setBattery(int) { detail::wrongSlot("DeviceCapabilities 4"); }
  virtual std::string describeBattery(std::string) {
    detail::wrongSlot("DeviceCapabilities 5");
    return {};
  }
  virtual bool hasBattery(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 6");
    return false;
  }
  virtual int readDisplay(double) const {
    detail::wrongSlot("DeviceCapabilities 7");
    return 0;
  }
  virtual void setDisplay(int) { detail::wrongSlot("DeviceCapabilities 8"); }
  virtual std::string describeDisplay(std::string) {
    detail::wrongSlot("DeviceCapabilities 9");
    return {};
  }
  virtual bool hasDisplay(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 10");
    return false;
  }
  virtual int readButton(double) const {
    detail::wrongSlot("DeviceCapabilities 11");
    return 0;
  }
  virtual void setButton(int) { detail::wrongSlot("DeviceCapabilities 12"); }
  virtual std::string describeButton(std::string) {
    detail::wrongSlot("DeviceCapabilities 13");
    return {};
  }
  virtual bool hasButton(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 14");
    return false;
  }
  virtual int readFan(double) const {
    detail::wrongSlot("DeviceCapabilities 15");
    return 0;
  }
  virtual void setFan(int) { detail::wrongSlot("DeviceCapabilities 16"); }
  virtual std::string describeFan(std::string) {
    detail::wrongSlot("DeviceCapabilities 17");
    return {};
  }
  virtual bool hasFan(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 18");
    return false;
  }
  virtual int readAntenna(double) const {
    detail::wrongSlot("DeviceCapabilities 19");
    return 0;
  }
  virtual void setAntenna(int) { detail::wrongSlot("DeviceCapabilities 20"); }
  virtual std::string describeAntenna(std::string) {
    detail::wrongSlot("DeviceCapabilities 21");
    return {};
  }
  virtual bool hasAntenna(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 22");
    return false;
  }
  virtual int readPanel(double) const {
    detail::wrongSlot("DeviceCapabilities 23");
    return 0;
  }
  virtual void setPanel(int) { detail::wrongSlot("DeviceCapabilities 24"); }
  virtual std::string describePanel(std::string) {
    detail::wrongSlot("DeviceCapabilities 25");
    return {};
  }
  virtual bool hasPanel(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 26");
    return false;
  }
  virtual int readLamp(double) const {
    detail::wrongSlot("DeviceCapabilities 27");
    return 0;
  }
  virtual void setLamp(int) { detail::wrongSlot("DeviceCapabilities 28"); }
  virtual std::string describeLamp(std::string) {
    detail::wrongSlot("DeviceCapabilities 29");
    return {};
  }
  virtual void notifyUpdatedAssociation(std::string from, std::string to);
  virtual bool hasLamp(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 31");
    return false;
  }
  virtual int readTray(double) const {
    detail::wrongSlot("DeviceCapabilities 32");
    return 0;
  }
  virtual void setTray(int) { detail::wrongSlot("DeviceCapabilities 33"); }
  virtual std::string describeTray(std::string) {
    detail::wrongSlot("DeviceCapabilities 34");
    return {};
  }
  virtual bool hasTray(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 35");
    return false;
  }
  virtual int readSensor(double) const {
    detail::wrongSlot("DeviceCapabilities 36");
    return 0;
  }
  virtual void setSensor(int) { detail::wrongSlot("DeviceCapabilities 37"); }
  virtual std::string describeSensor(std::string) {
    detail::wrongSlot("DeviceCapabilities 38");
    return {};
  }
  virtual void notifyFriendlyNameChange(std::string name);
  virtual bool hasSensor(const std::string&, bool) {
    detail::wrongSlot("DeviceCapabilities 40");
    return false;
  }
  virtual int readClock(double) const {
    detail::wrongSlot("DeviceCapabilities 41");
    return 0;
  }
};

}  // namespace DeviceAbstractionLayer

#endif
