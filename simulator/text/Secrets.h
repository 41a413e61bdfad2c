#pragma once

#include <string>

namespace vorn_speaker {

/// What stands in place of a secret.
extern const char kMask[];

/// Whether a value of this name is nothing to print: a token, a secret, a password.
bool isSecretName(const std::string& name);

/// Hides the values of telling keys in a set as the kit renders it, "{clientSecret=abc, model=V1}".
std::string hideSecrets(const std::string& text);

}  // namespace vorn_speaker
