#ifndef PRODUCT_DAL_COMMSMANAGERINTERFACE
#define PRODUCT_DAL_COMMSMANAGERINTERFACE

#include <string>

namespace DeviceAbstractionLayer {

class CommsManagerInterface {
 public:
  struct CommsStateInfo {
    int calls = 0;
    double seconds = 0;
    std::string with;
  };
};

}  // namespace DeviceAbstractionLayer

#endif
