#pragma once

#include <cstddef>
#include <cstring>
#include <string>

/// What must not be shown, and what is shown in its place: one rule for every tool.
namespace vorn_testing {

/// What stands in place of a secret.
constexpr char kMask[] = "********";

/// What a name that tells of a secret holds, in small letters.
constexpr const char* kSecretWords[] = {
    "token",     "password",    "passwd",        "passphrase", "passcode",     "pwd",
    "psk",       "apikey",      "accesskey",     "privatekey", "credential",   "secret",
    "setupcode", "pairingcode", "authcode",      "wpakey",     "encryptkey",   "networkkey",
    "pincode",   "sharedkey",   "encryptionkey", "sessionkey", "masterkey",    "signingkey",
    "passkey",   "authkey",     "wifikey",       "bearer",     "authorization"};

namespace masking {

inline bool beginsEscape(char c) { return c == '\\' || c == '%' || c == '&'; }

/// Where others may cut a value that they show.
inline bool endsPart(char c) { return c == '\n' || c == '\r' || c == '\0'; }

constexpr std::size_t kLongestEscape = 11;
constexpr int kMostEscaped = 3;  ///< How often the same text may have been escaped.

/// What an escape at the beginning stands for, such as \u0070, \x70, \160, %70, &#112; and &#x70;, and its length; 0 where
/// none is that stands for a character of ASCII.
inline std::size_t escape(const char* text, std::size_t size, char& meant) {
  struct Form {
    const char* begin;
    std::size_t length, digits, base;  // No digits: as many as there are.
  };
  static const Form kForms[] = {{"\\u", 2, 4, 16}, {"\\x", 2, 2, 16}, {"%u", 2, 4, 16}, {"%", 1, 2, 16},
                                {"\\", 1, 3, 8},   {"&#x", 3, 0, 16}, {"&#", 2, 0, 10}};
  for (const Form& form : kForms) {
    if (size < form.length || std::memcmp(text, form.begin, form.length) != 0) continue;
    const std::size_t most = form.length + (form.digits ? form.digits : 7);
    std::size_t code = 0, end = form.length;
    for (; end < size && end < most; ++end) {
      const char c = text[end];
      const std::size_t digit = c >= '0' && c <= '9'   ? static_cast<std::size_t>(c - '0')
                                : c >= 'a' && c <= 'f' ? static_cast<std::size_t>(c - 'a') + 10
                                : c >= 'A' && c <= 'F' ? static_cast<std::size_t>(c - 'A') + 10
                                                       : form.base;
      if (digit >= form.base) break;
      code = code * form.base + digit;
    }
    if (end == form.length || (form.digits && end != most) || code >= 0x80) continue;
    meant = static_cast<char>(code);
    return end + (!form.digits && end < size && text[end] == ';' ? 1 : 0);
  }
  return 0;
}

/// The text with what its escapes stand for.
inline std::string unescaped(const std::string& text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size();) {
    char meant = text[at];
    const std::size_t length = beginsEscape(meant) ? escape(text.data() + at, text.size() - at, meant) : 0;
    plain += meant;
    at += length ? length : 1;
  }
  return plain;
}

inline bool holdsSecretWord(const std::string& name) {
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

}  // namespace masking

/// Whether what bears this name must not be printed: a parameter, a key of a setting, a key in a store.
///
/// Case and what stands between words do not matter: accessToken, wifi_password and API-KEY are all secret, also escaped
/// as JSON, C and HTML do, and escaped again. A word inside another counts too: a harmless value that is masked is the
/// smaller harm.
inline bool isSecretName(const std::string& name) {
  std::string text = name;
  for (int again = 0; again < masking::kMostEscaped; ++again) {
    if (masking::holdsSecretWord(text)) return true;
    if (text.find_first_of("\\%&") == std::string::npos) return false;
    std::string plain = masking::unescaped(text);
    if (plain == text) return false;
    text.swap(plain);
  }
  return masking::holdsSecretWord(text);
}

/// Whether a text of any form may hold a secret: it names one, or something in it was masked already.
inline bool isSecretText(const std::string& text) {
  return isSecretName(text) || text.find(kMask) != std::string::npos;
}

}  // namespace vorn_testing
