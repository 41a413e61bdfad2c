#pragma once

#include <string>

/// What must not be shown, and what is shown in its place: one rule for every tool.
namespace vorn_testing {

/// What stands in place of a secret.
constexpr char kMask[] = "********";

/// What a name that tells of a secret holds, in small letters.
constexpr const char* kSecretWords[] = {"token",      "password",   "passwd",     "passphrase",  "passcode",
                                        "pwd",        "psk",        "apikey",     "accesskey",   "privatekey",
                                        "credential", "secret",     "setupcode",  "pairingcode", "authcode",
                                        "wpakey",     "encryptkey", "networkkey", "pincode"};

/// Whether what bears this name must not be printed: a parameter, a key of a setting, a key in a store.
///
/// Case and what stands between words do not matter: accessToken, wifi_password and API-KEY are all secret. A word inside
/// another counts too: a harmless value that is masked is the smaller harm.
inline bool isSecretName(const std::string& name) {
  std::string letters;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char c = name[i];
    if (c >= 'A' && c <= 'Z') letters += static_cast<char>(c - 'A' + 'a');
    if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) letters += c;
  }
  for (const char* const word : kSecretWords) {
    if (letters.find(word) != std::string::npos) return true;
  }
  return false;
}

/// Whether a text of any form may hold a secret: it names one, or something in it was masked already.
inline bool isSecretText(const std::string& text) {
  return isSecretName(text) || text.find(kMask) != std::string::npos;
}

}  // namespace vorn_testing
