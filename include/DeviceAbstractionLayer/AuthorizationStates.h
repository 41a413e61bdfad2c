#pragma once

#include <string>

/// @file
/// The words for the authorisation status, as alexaAuthStatusChanged() and getAlexaAuthStatus() carry them.
///
/// Every source file that includes this header gets copies of its own, built at load time and destroyed
/// at unload: compare the texts, never their addresses.

namespace DeviceAbstractionLayer {

// The three states.
const std::string AUTHORIZED_STATE = "AUTHORIZED";
const std::string UNAUTHORIZED_STATE = "UNAUTHORIZED";
const std::string PREVIEW_MODE_AUTHORIZED_STATE = "PREVIEW_MODE_AUTHORIZED";

}  // namespace DeviceAbstractionLayer
