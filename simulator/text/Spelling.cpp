#include "Spelling.h"

#include "Secrets.h"

namespace vorn_speaker {

std::string spell(const Token& token) {
  if (token.kind == Token::kList) return spell(token.items);
  if (token.kind == Token::kMap) return spell(token.entries, true);
  return spell(token.text);
}

std::string spell(const std::map<std::string, std::string>& entries, bool secrets) {
  std::map<std::string, std::string> shown = entries;
  for (auto& [key, value] : shown) {
    if (!secrets && isSecretName(key)) value = kMask;
  }
  return spell(shown);
}

}  // namespace vorn_speaker
