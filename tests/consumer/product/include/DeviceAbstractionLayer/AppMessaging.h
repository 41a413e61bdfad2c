#ifndef PRODUCT_DAL_APPMESSAGING
#define PRODUCT_DAL_APPMESSAGING

#include <memory>
#include <string>
#include "detail/Calls.h"

namespace DeviceAbstractionLayer {

// Messages to the app.
class AppMessaging {
 public:
  static std::shared_ptr<AppMessaging> getInstance();
  virtual bool SendMessageToxApp(std::string topic, std::string event, std::string payload);
  virtual int readBattery(double) const {
    detail::wrongSlot("AppMessaging 2");
    return 0;
  }
  virtual void setBattery(int) { detail::wrongSlot("AppMessaging 3"); }
  virtual std::string describeBattery(std::string) {
    detail::wrongSlot("AppMessaging 4");
    return {};
  }
};

}  // namespace DeviceAbstractionLayer

#endif
