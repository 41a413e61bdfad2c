#ifndef PRODUCT_DAL_COMMSCONTROLLERINTERFACE
#define PRODUCT_DAL_COMMSCONTROLLERINTERFACE

namespace DeviceAbstractionLayer {

class CommsControllerInterface {
 public:
  enum class CallAction { IGNORE, ACCEPT, END };
};

}  // namespace DeviceAbstractionLayer

#endif
