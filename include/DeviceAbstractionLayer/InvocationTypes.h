#pragma once

#include <string>

/// @file
/// The words for what started a request, as notifyAlexaInvocationDetected() carries them.
///
/// Every source file that includes this header gets copies of its own, built at load time and destroyed
/// at unload: compare the texts, never their addresses.

namespace DeviceAbstractionLayer {

// The three types.
const std::string INVOCATION_TYPE_ALEXA_BUTTON_PRESS = "AlexaButtonPress";
const std::string INVOCATION_TYPE_WAKE_WORD_DETECTED = "WakeWordDetected";
const std::string INVOCATION_TYPE_KEYWORD_VALIDATED = "KeywordValidated";

}  // namespace DeviceAbstractionLayer
