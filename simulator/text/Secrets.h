#pragma once

#include <vorn_testing/Masking.h>

#include <map>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Tokens.h"

namespace vorn_speaker {

using vorn_testing::isSecretName;
using vorn_testing::isSecretText;
using vorn_testing::kMask;

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

/// Values that were secret once, to find them again wherever they come up. May be used from any thread.
class KnownSecrets {
 public:
  void add(const std::vector<std::string>& values);

  /// Whether the text holds one. Values of less than six characters are not looked for: they stand in too many words.
  bool in(const std::string& text) const;

 private:
  mutable std::mutex m_mutex;
  /// By their first characters, then by their length: a text is looked through once, however many they are.
  std::unordered_map<std::string, std::map<std::size_t, std::unordered_set<std::string>>> m_values;
};

}  // namespace vorn_speaker
