#ifndef PRODUCT_DAL_DEVICEINFOCONSTANTS
#define PRODUCT_DAL_DEVICEINFOCONSTANTS

#include <map>
#include <string>

namespace DeviceAbstractionLayer {

static const std::string DEFAULT_LOCALE("en-US");
static const std::string DEFAULT_AUTHORIZATION_FLOW("CBL");
static const std::string DEFAULT_COUNTRY_OF_RESIDENCE("US");
static const std::string DEFAULT_TIMEZONE("America/Vancouver");
static const std::string DEFAULT_DEVICE_COUNTRY_CODE("US");
static const std::string DEFAULT_DEVICE_MODE("AMBIENT");
static const std::string SERIAL_NUMBER_CODE("deviceSerialNumber");
static const std::string BRAND_CODE("brand");
static const std::string MANUFACTURER_CODE("manufacturer");
static const std::string MANUFACTURER_YEAR_CODE("manufacturerYear");
static const std::string FIRMWARE_VERSION_CODE("firmwareVersion");
static const std::string SOFTWARE_VERSION_CODE("softwareVersion");
static const std::string DEVICE_COUNTRY_CODE("deviceCountryCode");
static const std::string ORIGINAL_SERIAL_NUMBER_CODE("originalDeviceSerialNumber");
static const std::string AMAZON_ID("amazonID");
static const std::string CLIENT_ID("clientID");
static const std::string CLIENT_SECRET_CODE("clientSecret");
static const std::string PRODUCT_ID("productID");
static const std::string PERIPHERAL_ENDPOINT_DESCRIPTION_CODE("endpointDescription");
static const std::string PERIPHERAL_ENDPOINT_FRIENDLYNAME_CODE("friendlyName");
static const std::string PERIPHERAL_ENDPOINT_DISPLAY_CATEGORY_CODE("displayCategory");
static const std::string MODEL_NAME_CODE("model");
static const std::string DEVICE_MODE_KEY("deviceMode");
static const std::string IS_POWER_STATE_ALWAYS_ON_KEY("isPowerStateAlwaysOn");
static const std::string ALWAYS_ON_STARTUP_LATENCY_KEY("alwaysOnStartupLatency");
static const std::string SUPPORTS_HANDS_FREE_CODE("supportsHandsFree");
static const std::string SUPPORTS_HANDS_FREE_ALWAYS_ON_CODE("supportsAlwaysOnVoiceMode");
static const std::string SUPPORTS_PTT_ALWAYS_ON_CODE("supportsAlwaysOnPTTMode");
static const std::string CURRENT_HANDS_FREE_STATUS_CODE("currentHandsFreeStatus");
static const std::string CURRENT_HANDS_FREE_ALWAYS_ON_STATUS_CODE("currentAlwaysOnVoiceMode");
static const std::string CURRENT_PTT_ALWAYS_ON_STATUS_CODE("currentAlwaysOnPTTMode");
static const std::string DEVICE_CATEGORY_THEME_CODE("deviceCategoryTheme");
static const std::string DEVICE_LOCALE_CODE("deviceLocale");
static const std::string FINGERPRINT_PACKAGE_CODE("fingerprintPackage");
static const std::string FINGERPRINT_BUILD_TYPE_CODE("fingerprintBuildType");
static const std::string FINGERPRINT_VERSION_NUMBER_CODE("fingerprintVersionNumber");
static const std::string MINIMAL_LISTENING_LEVEL_KEY("minimalListeningLevel");
static const std::string CALLING_MINIMAL_LISTENING_LEVEL_KEY("callingMinimalListeningLevel");
static const std::string DROPIN_MINIMAL_LISTENING_LEVEL_KEY("dropinMinimalListeningLevel");
static const std::string DEVICE_TYPE_CODE("deviceType");
static const std::string DEVICE_OS_TYPE("deviceOSType");
static const std::string TRUE_TEXT("true");
static const std::string FALSE_TEXT("false");
static const std::string ON("on");
static const std::string OFF("off");
static const std::string HANDS_FREE_ALWAYS_ON_ENABLED_SETTING("handsFreeAlwaysOnEnabled");
static const std::string PTT_ALWAYS_ON_ENABLED_SETTING("PTTAlwaysOnEnabled");
static const std::string LOG_CONFIG_KEY("logging");
static const std::string LOG_STREAM_NAME("logStreamName");
static const std::string LOG_IDENTITY_POOL_ID("logIdentityPoolId");
static const std::string METRICS_CONFIG_KEY("metrics");
static const std::string METRICS_IDENTITY_POOL_ID("metricsIdentityPoolId");
static const std::string COGNITO_CLIENT_ID("cognitoClientId");
static const std::string TOKEN_UPGRADE_COGNITO_BETA("TOKEN_UPGRADE_COGNITO_IDENTITY_POOL_ID_BETA");
static const std::string TOKEN_UPGRADE_COGNITO_PROD("TOKEN_UPGRADE_COGNITO_IDENTITY_POOL_ID_PROD");
static const std::string BACK_KEYEVENT_CODE("BACK");
static const std::string PLAYPAUSE_KEYEVENT_CODE("PLAY_PAUSE");
static const std::string PTT_KEYEVENT_CODE("PUSH_TO_TALK");
static const std::string TERMINATE_APP_KEYEVENT_CODE("TERMINATE_APP");
static const std::string SHORT_PRESS_KEYEVENT_CODE("SHORT_PRESS");
static const std::string TOGGLE_NOTIFICATION_POPUP_KEYEVENT_CODE("TOGGLE_NOTIFICATION_POPUP");
static const std::map<std::string, std::string> SYSTEM_SETTING_TO_DEVICE_INFO_MAP{
    {PTT_ALWAYS_ON_ENABLED_SETTING, CURRENT_PTT_ALWAYS_ON_STATUS_CODE},
};

}  // namespace DeviceAbstractionLayer

#endif
