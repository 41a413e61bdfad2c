#ifndef PRODUCT_DAL_OOBE
#define PRODUCT_DAL_OOBE

#include <memory>
#include <string>
#include "detail/Calls.h"

namespace DeviceAbstractionLayer {

// Setup.
class OOBE {
 public:
  static std::shared_ptr<OOBE> getInstance();
  virtual ~OOBE();
  virtual int readBattery(double) const {
    detail::wrongSlot("OOBE 3");
    return 0;
  }
  virtual void notifyOOBEInitiated();
  virtual void setBattery(int) { detail::wrongSlot("OOBE 5"); }
  virtual void notifyOOBECancelled();
  virtual std::string describeBattery(std::string) {
    detail::wrongSlot("OOBE 7");
    return {};
  }
  virtual bool hasBattery(const std::string&, bool) {
    detail::wrongSlot("OOBE 8");
    return false;
  }
  virtual int readDisplay(double) const {
    detail::wrongSlot("OOBE 9");
    return 0;
  }
  virtual void setDisplay(int) { detail::wrongSlot("OOBE 10"); }
  virtual std::string getAlexaAuthStatus();
  virtual std::string describeDisplay(std::string) {
    detail::wrongSlot("OOBE 12");
    return {};
  }
  virtual bool hasDisplay(const std::string&, bool) {
    detail::wrongSlot("OOBE 13");
    return false;
  }
};

}  // namespace DeviceAbstractionLayer

#endif
