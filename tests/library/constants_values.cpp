// The words that the library shares with both sides: their spelling, and that every source file has its own.

#include <DeviceAbstractionLayer/AuthorizationStates.h>
#include <DeviceAbstractionLayer/DeviceInfoConstants.h>
#include <DeviceAbstractionLayer/InvocationTypes.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <utility>
#include <vector>

#include "constants_copies.h"
#include "constants_symbols.h"

namespace {

using namespace DeviceAbstractionLayer;
namespace fs = std::filesystem;

TEST(Constants, AreSpelledAsBothSidesKnowThem) {
  const std::vector<std::pair<std::string, std::string>> words = {
      {AUTHORIZED_STATE, "AUTHORIZED"},
      {UNAUTHORIZED_STATE, "UNAUTHORIZED"},
      {PREVIEW_MODE_AUTHORIZED_STATE, "PREVIEW_MODE_AUTHORIZED"},
      {INVOCATION_TYPE_ALEXA_BUTTON_PRESS, "AlexaButtonPress"},
      {INVOCATION_TYPE_WAKE_WORD_DETECTED, "WakeWordDetected"},
      {INVOCATION_TYPE_KEYWORD_VALIDATED, "KeywordValidated"},
      {DEFAULT_LOCALE, "en-US"},
      {DEFAULT_AUTHORIZATION_FLOW, "CBL"},
      {DEFAULT_COUNTRY_OF_RESIDENCE, "US"},
      {DEFAULT_TIMEZONE, "America/Vancouver"},
      {DEFAULT_DEVICE_COUNTRY_CODE, "US"},
      {DEFAULT_DEVICE_MODE, "AMBIENT"},
      {SERIAL_NUMBER_CODE, "deviceSerialNumber"},
      {BRAND_CODE, "brand"},
      {MANUFACTURER_CODE, "manufacturer"},
      {MANUFACTURER_YEAR_CODE, "manufacturerYear"},
      {FIRMWARE_VERSION_CODE, "firmwareVersion"},
      {SOFTWARE_VERSION_CODE, "softwareVersion"},
      {DEVICE_COUNTRY_CODE, "deviceCountryCode"},
      {ORIGINAL_SERIAL_NUMBER_CODE, "originalDeviceSerialNumber"},
      {AMAZON_ID, "amazonID"},
      {CLIENT_ID, "clientID"},
      {CLIENT_SECRET_CODE, "clientSecret"},
      {PRODUCT_ID, "productID"},
      {PERIPHERAL_ENDPOINT_DESCRIPTION_CODE, "endpointDescription"},
      {PERIPHERAL_ENDPOINT_FRIENDLYNAME_CODE, "friendlyName"},
      {PERIPHERAL_ENDPOINT_DISPLAY_CATEGORY_CODE, "displayCategory"},
      {MODEL_NAME_CODE, "model"},
      {DEVICE_MODE_KEY, "deviceMode"},
      {IS_POWER_STATE_ALWAYS_ON_KEY, "isPowerStateAlwaysOn"},
      {ALWAYS_ON_STARTUP_LATENCY_KEY, "alwaysOnStartupLatency"},
      {SUPPORTS_HANDS_FREE_CODE, "supportsHandsFree"},
      {SUPPORTS_HANDS_FREE_ALWAYS_ON_CODE, "supportsAlwaysOnVoiceMode"},
      {SUPPORTS_PTT_ALWAYS_ON_CODE, "supportsAlwaysOnPTTMode"},
      {CURRENT_HANDS_FREE_STATUS_CODE, "currentHandsFreeStatus"},
      {CURRENT_HANDS_FREE_ALWAYS_ON_STATUS_CODE, "currentAlwaysOnVoiceMode"},
      {CURRENT_PTT_ALWAYS_ON_STATUS_CODE, "currentAlwaysOnPTTMode"},
      {DEVICE_CATEGORY_THEME_CODE, "deviceCategoryTheme"},
      {DEVICE_LOCALE_CODE, "deviceLocale"},
      {FINGERPRINT_PACKAGE_CODE, "fingerprintPackage"},
      {FINGERPRINT_BUILD_TYPE_CODE, "fingerprintBuildType"},
      {FINGERPRINT_VERSION_NUMBER_CODE, "fingerprintVersionNumber"},
      {MINIMAL_LISTENING_LEVEL_KEY, "minimalListeningLevel"},
      {CALLING_MINIMAL_LISTENING_LEVEL_KEY, "callingMinimalListeningLevel"},
      {DROPIN_MINIMAL_LISTENING_LEVEL_KEY, "dropinMinimalListeningLevel"},
      {DEVICE_TYPE_CODE, "deviceType"},
      {DEVICE_OS_TYPE, "deviceOSType"},
      {TRUE_TEXT, "true"},
      {FALSE_TEXT, "false"},
      {ON, "on"},
      {OFF, "off"},
      {HANDS_FREE_ALWAYS_ON_ENABLED_SETTING, "handsFreeAlwaysOnEnabled"},
      {PTT_ALWAYS_ON_ENABLED_SETTING, "PTTAlwaysOnEnabled"},
      {LOG_CONFIG_KEY, "logging"},
      {LOG_STREAM_NAME, "logStreamName"},
      {LOG_IDENTITY_POOL_ID, "logIdentityPoolId"},
      {METRICS_CONFIG_KEY, "metrics"},
      {METRICS_IDENTITY_POOL_ID, "metricsIdentityPoolId"},
      {COGNITO_CLIENT_ID, "cognitoClientId"},
      {TOKEN_UPGRADE_COGNITO_BETA, "TOKEN_UPGRADE_COGNITO_IDENTITY_POOL_ID_BETA"},
      {TOKEN_UPGRADE_COGNITO_PROD, "TOKEN_UPGRADE_COGNITO_IDENTITY_POOL_ID_PROD"},
      {BACK_KEYEVENT_CODE, "BACK"},
      {PLAYPAUSE_KEYEVENT_CODE, "PLAY_PAUSE"},
      {PTT_KEYEVENT_CODE, "PUSH_TO_TALK"},
      {TERMINATE_APP_KEYEVENT_CODE, "TERMINATE_APP"},
      {SHORT_PRESS_KEYEVENT_CODE, "SHORT_PRESS"},
      {TOGGLE_NOTIFICATION_POPUP_KEYEVENT_CODE, "TOGGLE_NOTIFICATION_POPUP"},
  };
  for (const auto& [word, spelling] : words) EXPECT_EQ(word, spelling);
}

TEST(Constants, MapThreeSettingsToTheFieldsThatReflectThem) {
  const std::map<std::string, std::string> expected = {
      {"handsFreeAlwaysOnEnabled", "currentAlwaysOnVoiceMode"},
      {"PTTAlwaysOnEnabled", "currentAlwaysOnPTTMode"},
      {"friendlyName", "friendlyName"}};
  EXPECT_EQ(SYSTEM_SETTING_TO_DEVICE_INFO_MAP, expected);
}

TEST(Constants, MapNothingElse) {
  for (const char* name : {"", "brand", "FriendlyName", "currentAlwaysOnVoiceMode"})
    EXPECT_EQ(SYSTEM_SETTING_TO_DEVICE_INFO_MAP.count(name), 0U) << name;
}

TEST(Constants, AreCopiesOfTheirOwnInEverySourceFile) {
  const std::vector<std::pair<const std::string*, const std::string*>> copies = {
      {&AUTHORIZED_STATE, &authorizedStateElsewhere()},
      {&INVOCATION_TYPE_ALEXA_BUTTON_PRESS, &buttonPressElsewhere()},
      {&DEFAULT_LOCALE, &defaultLocaleElsewhere()}};
  for (const auto& [here, elsewhere] : copies) {
    EXPECT_NE(here, elsewhere);
    EXPECT_EQ(*here, *elsewhere);
  }
}

TEST(Constants, MapIsACopyOfItsOwnToo) {
  EXPECT_NE(&SYSTEM_SETTING_TO_DEVICE_INFO_MAP, &settingMapElsewhere());
  EXPECT_EQ(SYSTEM_SETTING_TO_DEVICE_INFO_MAP, settingMapElsewhere());
}

/// The constant's copies in the library. Compilers differ in whether they tag it with the string's ABI.
std::vector<LibrarySymbols::Symbol> copiesOf(const std::string& name) {
  const std::string mangled = "_ZN22DeviceAbstractionLayerL" + std::to_string(name.size()) + name;
  const auto plain = LibrarySymbols::named(mangled + "E");
  return plain.empty() ? LibrarySymbols::named(mangled + "B5cxx11E") : plain;
}

TEST(ConstantsInTheLibrary, AreTwoLocalCopiesOfTheAuthorisationStates) {
  for (const char* name : {"AUTHORIZED_STATE", "UNAUTHORIZED_STATE", "PREVIEW_MODE_AUTHORIZED_STATE"}) {
    const auto copies = copiesOf(name);
    EXPECT_EQ(copies.size(), 2U) << name;
    for (const auto& copy : copies) EXPECT_TRUE(copy.local) << name;
  }
}

TEST(ConstantsInTheLibrary, HoldTheSameTextInBothCopies) {
  const auto copies = copiesOf("AUTHORIZED_STATE");
  ASSERT_EQ(copies.size(), 2U);
  for (const auto& copy : copies)
    EXPECT_EQ(*reinterpret_cast<const std::string*>(copy.address), "AUTHORIZED");
}

TEST(ConstantsInTheLibrary, AreOneLocalCopyOfAllOthers) {
  for (const char* name : {"INVOCATION_TYPE_ALEXA_BUTTON_PRESS", "INVOCATION_TYPE_WAKE_WORD_DETECTED",
                           "INVOCATION_TYPE_KEYWORD_VALIDATED", "DEFAULT_LOCALE", "SERIAL_NUMBER_CODE",
                           "TOGGLE_NOTIFICATION_POPUP_KEYEVENT_CODE", "SYSTEM_SETTING_TO_DEVICE_INFO_MAP"}) {
    const auto copies = copiesOf(name);
    ASSERT_EQ(copies.size(), 1U) << name;
    EXPECT_TRUE(copies[0].local) << name;
  }
}

/// The library's files that include the header directly.
std::set<std::string> includersOf(const std::string& header) {
  std::set<std::string> names;
  for (const char* folder : {"/include", "/src"}) {
    for (const auto& entry : fs::recursive_directory_iterator(VORN_SOURCE_DIR + std::string(folder))) {
      std::ifstream file(entry.path());
      for (std::string line; std::getline(file, line);)
        if (line.rfind("#include", 0) == 0 && line.find("/" + header) != std::string::npos)
          names.insert(entry.path().filename());
    }
  }
  return names;
}

TEST(ConstantHeaders, AreIncludedByTheSourcesThatTheBinaryContractNames) {
  EXPECT_EQ(includersOf("AuthorizationStates.h"), (std::set<std::string>{"VornAudioIn.cpp", "VornOOBE.cpp"}));
  EXPECT_EQ(includersOf("InvocationTypes.h"), std::set<std::string>{"VornAudioIn.cpp"});
  EXPECT_EQ(includersOf("DeviceInfoConstants.h"), std::set<std::string>{"VornDeviceInfo.cpp"});
}

}  // namespace
