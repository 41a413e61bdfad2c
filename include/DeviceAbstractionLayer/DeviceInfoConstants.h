#pragma once

#include <map>
#include <string>

/// @file
/// The words that device and assistant side share about the device: names of fields, configuration items and
/// settings, and the values they are spelled with. The library passes them on and reads none of them; which
/// of the names a host serves is the host's choice.
///
/// Every source file that includes this header gets copies of its own, built at load time and destroyed
/// at unload: compare the texts, never their addresses.

namespace DeviceAbstractionLayer {

// Defaults of the assistant side.
const std::string DEFAULT_LOCALE = "en-US";
const std::string DEFAULT_AUTHORIZATION_FLOW = "CBL";
const std::string DEFAULT_COUNTRY_OF_RESIDENCE = "US";
const std::string DEFAULT_TIMEZONE = "America/Vancouver";
const std::string DEFAULT_DEVICE_COUNTRY_CODE = "US";
const std::string DEFAULT_DEVICE_MODE = "AMBIENT";

// Names of device information fields, which are also names of configuration items.
const std::string SERIAL_NUMBER_CODE = "deviceSerialNumber";
const std::string BRAND_CODE = "brand";
const std::string MANUFACTURER_CODE = "manufacturer";
const std::string MANUFACTURER_YEAR_CODE = "manufacturerYear";
const std::string FIRMWARE_VERSION_CODE = "firmwareVersion";
const std::string SOFTWARE_VERSION_CODE = "softwareVersion";
const std::string DEVICE_COUNTRY_CODE = "deviceCountryCode";
const std::string ORIGINAL_SERIAL_NUMBER_CODE = "originalDeviceSerialNumber";
const std::string AMAZON_ID = "amazonID";
const std::string CLIENT_ID = "clientID";
const std::string CLIENT_SECRET_CODE = "clientSecret";
const std::string PRODUCT_ID = "productID";
const std::string PERIPHERAL_ENDPOINT_DESCRIPTION_CODE = "endpointDescription";
const std::string PERIPHERAL_ENDPOINT_FRIENDLYNAME_CODE = "friendlyName";
const std::string PERIPHERAL_ENDPOINT_DISPLAY_CATEGORY_CODE = "displayCategory";
const std::string MODEL_NAME_CODE = "model";
const std::string DEVICE_MODE_KEY = "deviceMode";
const std::string IS_POWER_STATE_ALWAYS_ON_KEY = "isPowerStateAlwaysOn";
const std::string ALWAYS_ON_STARTUP_LATENCY_KEY = "alwaysOnStartupLatency";
const std::string SUPPORTS_HANDS_FREE_CODE = "supportsHandsFree";
const std::string SUPPORTS_HANDS_FREE_ALWAYS_ON_CODE = "supportsAlwaysOnVoiceMode";
const std::string SUPPORTS_PTT_ALWAYS_ON_CODE = "supportsAlwaysOnPTTMode";
const std::string CURRENT_HANDS_FREE_STATUS_CODE = "currentHandsFreeStatus";
const std::string CURRENT_HANDS_FREE_ALWAYS_ON_STATUS_CODE = "currentAlwaysOnVoiceMode";
const std::string CURRENT_PTT_ALWAYS_ON_STATUS_CODE = "currentAlwaysOnPTTMode";
const std::string DEVICE_CATEGORY_THEME_CODE = "deviceCategoryTheme";
const std::string DEVICE_LOCALE_CODE = "deviceLocale";
const std::string FINGERPRINT_PACKAGE_CODE = "fingerprintPackage";
const std::string FINGERPRINT_BUILD_TYPE_CODE = "fingerprintBuildType";
const std::string FINGERPRINT_VERSION_NUMBER_CODE = "fingerprintVersionNumber";
const std::string MINIMAL_LISTENING_LEVEL_KEY = "minimalListeningLevel";
const std::string CALLING_MINIMAL_LISTENING_LEVEL_KEY = "callingMinimalListeningLevel";
const std::string DROPIN_MINIMAL_LISTENING_LEVEL_KEY = "dropinMinimalListeningLevel";
const std::string DEVICE_TYPE_CODE = "deviceType";
const std::string DEVICE_OS_TYPE = "deviceOSType";

// Truth texts and names of system settings.
const std::string TRUE_TEXT = "true";
const std::string FALSE_TEXT = "false";
const std::string ON = "on";
const std::string OFF = "off";
const std::string HANDS_FREE_ALWAYS_ON_ENABLED_SETTING = "handsFreeAlwaysOnEnabled";
const std::string PTT_ALWAYS_ON_ENABLED_SETTING = "PTTAlwaysOnEnabled";

// Names of the configuration items for cloud logging and metrics.
const std::string LOG_CONFIG_KEY = "logging";
const std::string LOG_STREAM_NAME = "logStreamName";
const std::string LOG_IDENTITY_POOL_ID = "logIdentityPoolId";
const std::string METRICS_CONFIG_KEY = "metrics";
const std::string METRICS_IDENTITY_POOL_ID = "metricsIdentityPoolId";
const std::string COGNITO_CLIENT_ID = "cognitoClientId";
const std::string TOKEN_UPGRADE_COGNITO_BETA = "TOKEN_UPGRADE_COGNITO_IDENTITY_POOL_ID_BETA";
const std::string TOKEN_UPGRADE_COGNITO_PROD = "TOKEN_UPGRADE_COGNITO_IDENTITY_POOL_ID_PROD";

// Key events.
const std::string BACK_KEYEVENT_CODE = "BACK";
const std::string PLAYPAUSE_KEYEVENT_CODE = "PLAY_PAUSE";
const std::string PTT_KEYEVENT_CODE = "PUSH_TO_TALK";
const std::string TERMINATE_APP_KEYEVENT_CODE = "TERMINATE_APP";
const std::string SHORT_PRESS_KEYEVENT_CODE = "SHORT_PRESS";
const std::string TOGGLE_NOTIFICATION_POPUP_KEYEVENT_CODE = "TOGGLE_NOTIFICATION_POPUP";

/// The device information field that reflects a system setting, by the setting's name. The friendly name
/// is its own field.
const std::map<std::string, std::string> SYSTEM_SETTING_TO_DEVICE_INFO_MAP = {
    {HANDS_FREE_ALWAYS_ON_ENABLED_SETTING, CURRENT_HANDS_FREE_ALWAYS_ON_STATUS_CODE},
    {PTT_ALWAYS_ON_ENABLED_SETTING, CURRENT_PTT_ALWAYS_ON_STATUS_CODE},
    {PERIPHERAL_ENDPOINT_FRIENDLYNAME_CODE, PERIPHERAL_ENDPOINT_FRIENDLYNAME_CODE},
};

}  // namespace DeviceAbstractionLayer
