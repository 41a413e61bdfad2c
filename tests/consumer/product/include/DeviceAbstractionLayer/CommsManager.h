#ifndef PRODUCT_DAL_COMMSMANAGER
#define PRODUCT_DAL_COMMSMANAGER

#include <memory>
#include <string>
#include "CommsControllerInterface.h"
#include "detail/Calls.h"

namespace DeviceAbstractionLayer {

// Calls.
class CommsManager {
 public:
  static std::shared_ptr<CommsManager> getInstance();
  virtual void notifyCallAction(CommsControllerInterface::CallAction action);
  virtual int readBattery(double) const {
    detail::wrongSlot("CommsManager 2");
    return 0;
  }
  virtual void setBattery(int) { detail::wrongSlot("CommsManager 3"); }
};

}  // namespace DeviceAbstractionLayer

#endif
