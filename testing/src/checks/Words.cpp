#include "Words.h"

#include <DeviceAbstractionLayer/AuthorizationStates.h>
#include <DeviceAbstractionLayer/DeviceInfoConstants.h>
#include <DeviceAbstractionLayer/InvocationTypes.h>

#include <map>

namespace vorn_testing::checks {

namespace {

using namespace DeviceAbstractionLayer;
using Calls = std::vector<std::vector<std::string>>;

Calls callsOf(const std::vector<std::string>& words) {
  Calls calls;
  for (const std::string& word : words) calls.push_back({word});
  return calls;
}

/// Names of configuration items, which are also fields of the device information.
std::vector<std::string> items() {
  return {SERIAL_NUMBER_CODE,
          BRAND_CODE,
          MANUFACTURER_CODE,
          MANUFACTURER_YEAR_CODE,
          FIRMWARE_VERSION_CODE,
          SOFTWARE_VERSION_CODE,
          DEVICE_COUNTRY_CODE,
          ORIGINAL_SERIAL_NUMBER_CODE,
          AMAZON_ID,
          CLIENT_ID,
          CLIENT_SECRET_CODE,
          PRODUCT_ID,
          PERIPHERAL_ENDPOINT_DESCRIPTION_CODE,
          PERIPHERAL_ENDPOINT_FRIENDLYNAME_CODE,
          PERIPHERAL_ENDPOINT_DISPLAY_CATEGORY_CODE,
          MODEL_NAME_CODE,
          DEVICE_MODE_KEY,
          IS_POWER_STATE_ALWAYS_ON_KEY,
          ALWAYS_ON_STARTUP_LATENCY_KEY,
          SUPPORTS_HANDS_FREE_CODE,
          SUPPORTS_HANDS_FREE_ALWAYS_ON_CODE,
          SUPPORTS_PTT_ALWAYS_ON_CODE,
          CURRENT_HANDS_FREE_STATUS_CODE,
          CURRENT_HANDS_FREE_ALWAYS_ON_STATUS_CODE,
          CURRENT_PTT_ALWAYS_ON_STATUS_CODE,
          DEVICE_CATEGORY_THEME_CODE,
          DEVICE_LOCALE_CODE,
          FINGERPRINT_PACKAGE_CODE,
          FINGERPRINT_BUILD_TYPE_CODE,
          FINGERPRINT_VERSION_NUMBER_CODE,
          MINIMAL_LISTENING_LEVEL_KEY,
          CALLING_MINIMAL_LISTENING_LEVEL_KEY,
          DROPIN_MINIMAL_LISTENING_LEVEL_KEY,
          DEVICE_TYPE_CODE,
          DEVICE_OS_TYPE,
          LOG_CONFIG_KEY,
          LOG_STREAM_NAME,
          LOG_IDENTITY_POOL_ID,
          METRICS_CONFIG_KEY,
          METRICS_IDENTITY_POOL_ID,
          COGNITO_CLIENT_ID,
          TOKEN_UPGRADE_COGNITO_BETA,
          TOKEN_UPGRADE_COGNITO_PROD};
}

std::map<std::string, Calls> make() {
  std::map<std::string, Calls> all;
  // The one that lets a device go on comes last.
  all["alexaAuthStatusChanged"] =
      callsOf({UNAUTHORIZED_STATE, PREVIEW_MODE_AUTHORIZED_STATE, AUTHORIZED_STATE});
  all["notifyAlexaInvocationDetected"] =
      callsOf({INVOCATION_TYPE_ALEXA_BUTTON_PRESS, INVOCATION_TYPE_WAKE_WORD_DETECTED,
               INVOCATION_TYPE_KEYWORD_VALIDATED});
  all["getConfigData"] = callsOf(items());
  all["getSystemSetting"] = callsOf({HANDS_FREE_ALWAYS_ON_ENABLED_SETTING, PTT_ALWAYS_ON_ENABLED_SETTING,
                                     PERIPHERAL_ENDPOINT_FRIENDLYNAME_CODE});
  all["onSendKeystroke"] =
      callsOf({BACK_KEYEVENT_CODE, PLAYPAUSE_KEYEVENT_CODE, PTT_KEYEVENT_CODE, TERMINATE_APP_KEYEVENT_CODE,
               SHORT_PRESS_KEYEVENT_CODE, TOGGLE_NOTIFICATION_POPUP_KEYEVENT_CODE});
  for (const std::string& state : {ON, OFF, TRUE_TEXT, FALSE_TEXT})
    all["onSetToggleState"].push_back({"vorn-conformance", state});
  // Common among assistant clients.
  all["alexaStateChanged"] = callsOf({"CONNECTED", "DISCONNECTED", "IDLE"});
  all["dialogUXStateChanged"] = callsOf({"LISTENING", "THINKING", "SPEAKING", "IDLE"});
  return all;
}

}  // namespace

const Calls& wordsOf(const std::string& operation) {
  static const auto* const kAll = new std::map<std::string, Calls>(make());
  static const auto* const kNone = new Calls;
  const auto found = kAll->find(operation);
  return found == kAll->end() ? *kNone : found->second;
}

}  // namespace vorn_testing::checks
