#ifndef PRODUCT_DAL_INVOCATIONTYPES
#define PRODUCT_DAL_INVOCATIONTYPES

#include <string>

namespace DeviceAbstractionLayer {

static const std::string INVOCATION_TYPE_ALEXA_BUTTON_PRESS("AlexaButtonPress");
static const std::string INVOCATION_TYPE_WAKE_WORD_DETECTED("WakeWordDetected");
static const std::string INVOCATION_TYPE_KEYWORD_VALIDATED("KeywordValidated");

}  // namespace DeviceAbstractionLayer

#endif
