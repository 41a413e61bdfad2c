#ifndef PRODUCT_DAL_GUIOUTPUT
#define PRODUCT_DAL_GUIOUTPUT

#include <memory>
#include <string>
#include "detail/Calls.h"

namespace DeviceAbstractionLayer {

// The display.
class GUIOutput {
 public:
  static std::shared_ptr<GUIOutput> getInstance();
  virtual ~GUIOutput();
  virtual int readBattery(double) const {
    detail::wrongSlot("GUIOutput 3");
    return 0;
  }
  virtual void setBattery(int) { detail::wrongSlot("GUIOutput 4"); }
  virtual bool notifyPlaybackControllerAction(std::string action);
  virtual std::string describeBattery(std::string) {
    detail::wrongSlot("GUIOutput 6");
    return {};
  }
};

}  // namespace DeviceAbstractionLayer

#endif
