#ifndef PRODUCT_DAL_AUDIOIN
#define PRODUCT_DAL_AUDIOIN

#include <chrono>
#include <memory>
#include <string>
#include <vector>
#include "detail/Calls.h"

namespace DeviceAbstractionLayer {

// Voice input.
class AudioIn {
 public:
  static std::shared_ptr<AudioIn> getInstance();
  virtual ~AudioIn();
  virtual int readBattery(double) const {
    detail::wrongSlot("AudioIn 3");
    return 0;
  }
  virtual void setBattery(int) { detail::wrongSlot("AudioIn 4"); }
  virtual std::string describeBattery(std::string) {
    detail::wrongSlot("AudioIn 5");
    return {};
  }
  virtual bool hasBattery(const std::string&, bool) {
    detail::wrongSlot("AudioIn 6");
    return false;
  }
  virtual void notifyAlexaButtonPress(std::string type, std::chrono::milliseconds duration);
  virtual void notifyAlexaButtonReleased();
  virtual int readDisplay(double) const {
    detail::wrongSlot("AudioIn 9");
    return 0;
  }
  virtual void setDisplay(int) { detail::wrongSlot("AudioIn 10"); }
  virtual void sendAudioData(std::vector<short>& samples);
  virtual std::string describeDisplay(std::string) {
    detail::wrongSlot("AudioIn 12");
    return {};
  }
  virtual bool hasDisplay(const std::string&, bool) {
    detail::wrongSlot("AudioIn 13");
    return false;
  }
  virtual int readButton(double) const {
    detail::wrongSlot("AudioIn 14");
    return 0;
  }
};

}  // namespace DeviceAbstractionLayer

#endif
