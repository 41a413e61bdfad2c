#include "constants_copies.h"

#include <DeviceAbstractionLayer/AuthorizationStates.h>
#include <DeviceAbstractionLayer/DeviceInfoConstants.h>
#include <DeviceAbstractionLayer/InvocationTypes.h>

const std::string& authorizedStateElsewhere() { return DeviceAbstractionLayer::AUTHORIZED_STATE; }
const std::string& buttonPressElsewhere() {
  return DeviceAbstractionLayer::INVOCATION_TYPE_ALEXA_BUTTON_PRESS;
}
const std::string& defaultLocaleElsewhere() { return DeviceAbstractionLayer::DEFAULT_LOCALE; }
const std::map<std::string, std::string>& settingMapElsewhere() {
  return DeviceAbstractionLayer::SYSTEM_SETTING_TO_DEVICE_INFO_MAP;
}
