#pragma once

#include <vorn_testing/KnownSecrets.h>
#include <vorn_testing/Masking.h>

#include <string>
#include <vector>

#include "Tokens.h"

namespace vorn_speaker {

using vorn_testing::isSecretName;
using vorn_testing::isSecretText;
using vorn_testing::kMask;
using vorn_testing::KnownSecrets;

/// The arguments of a call as they may be shown, told by the names of its parameters.
struct Masked {
  std::vector<Token> arguments;
  std::vector<std::string> secrets;  ///< The values that were masked.
  bool answer = false;               ///< Whether what the call answers must be masked too.
};

/// Masks what a parameter of a telling name holds, the values of telling keys in a set, and, from a text that names a
/// secret, that text and all that follows it: {"wifiPassword", "abc"} is a name and a value wherever it stands. Only
/// what names a value stays to be seen: parameters called key and keys.
Masked masked(const std::vector<std::string>& parameters, const std::vector<Token>& arguments);

}  // namespace vorn_speaker
