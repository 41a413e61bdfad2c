#include "Spelling.h"

namespace vorn_speaker {

std::string spell(const Token& token) {
  if (token.kind == Token::kList) return spell(token.items);
  if (token.kind == Token::kMap) return spell(token.entries);
  return spell(token.text);
}

}  // namespace vorn_speaker
