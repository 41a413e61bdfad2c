#include "Secrets.h"

#include <vorn_testing/Call.h>

#include <algorithm>

namespace vorn_speaker {

namespace {

/// Whether a parameter names a value and does not hold one.
bool isKey(const std::string& parameter) { return parameter == "key" || parameter == "keys"; }

Token hidden(const Token& token) {
  Token made;
  made.text = kMask;
  made.column = token.column;
  return made;
}

void maskEntries(Token& set, Masked& made) {
  for (auto& [key, value] : set.entries) {
    if (!isSecretName(key) && !isSecretText(value)) continue;
    made.secrets.push_back(value);
    value = kMask;
  }
  set.text = vorn_testing::text(set.entries);
}

}  // namespace

Masked masked(const std::vector<std::string>& parameters, const std::vector<Token>& arguments) {
  Masked made;
  const bool secretParameter = std::any_of(parameters.begin(), parameters.end(), isSecretName);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const Token& argument = arguments[i];
    // What is beyond the parameters may be a part of any of them.
    const bool beyond = i >= parameters.size();
    const std::string name = beyond ? "" : parameters[i];
    const bool secret = made.answer || isSecretName(name) || (beyond && secretParameter);
    if (argument.kind == Token::kMap && !secret) {
      made.arguments.push_back(argument);
      maskEntries(made.arguments.back(), made);
      continue;
    }
    const bool telling = !isSecretName(name) && isSecretText(argument.text);
    if (secret || (telling && !isKey(name))) {
      made.secrets.push_back(argument.text);
      made.secrets.insert(made.secrets.end(), argument.items.begin(), argument.items.end());
      made.arguments.push_back(hidden(argument));
    } else {
      made.arguments.push_back(argument);
    }
    made.answer = made.answer || (telling && name != "keys");
  }
  return made;
}

}  // namespace vorn_speaker
