#include "Operations.h"

#include <vorn_testing/Text.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

#include "text/Secrets.h"
#include "text/Spelling.h"

namespace vorn_speaker {

using vorn_testing::nearest;

namespace {

/// The full name of the operation that was meant, or nothing.
std::string nearestOperation(const std::string& word) {
  std::vector<std::string> names, shortNames;
  for (const Operation& operation : operations()) {
    names.push_back(operation.fullName());
    shortNames.push_back(operation.name);
  }
  // A name without its adapter is the commonest slip.
  const std::string meant = nearest(word.substr(word.rfind('.') + 1), shortNames);
  if (meant.empty()) return nearest(word, names);
  return names[static_cast<std::size_t>(std::find(shortNames.begin(), shortNames.end(), meant) -
                                        shortNames.begin())];
}

/// What a name that is none could have meant; without a guess the name itself may be anything, a secret too.
Unreadable unknown(const Token& name, const std::string& expected) {
  const std::string meant = nearestOperation(name.text);
  const Unreadable error(
      name.column, expected, name.text,
      meant.empty() ? "; vorn-speaker --list names them all" : "; did you mean " + meant + "?");
  return meant.empty() ? error.masked() : error;
}

bool takesSecret(const Operation& operation) {
  return std::any_of(operation.parameters.begin(), operation.parameters.end(),
                     [](const Parameter& parameter) { return isSecretName(parameter.name); });
}

const char* word(Caller caller) { return caller == Caller::kAssistant ? "assistant" : "firmware"; }

std::optional<Unreadable> mismatch(const Operation& operation, const std::vector<Token>& arguments,
                                   std::size_t end) {
  const auto& parameters = operation.parameters;
  if (arguments.size() > parameters.size()) {
    const Token& first = arguments[parameters.size()];
    return Unreadable(first.column, "expected the end of the line after " + usage(operation), shown(first));
  }
  if (arguments.size() < parameters.size() && !parameters[arguments.size()].reference) {
    const Parameter& missing = parameters[arguments.size()];
    return Unreadable(end, "expected " + missing.name + ", " + missing.type + ", in " + usage(operation));
  }
  return std::nullopt;
}

}  // namespace

BoundCall bindCall(Caller caller, const Token& name, const std::vector<Token>& arguments, std::size_t end) {
  std::optional<Unreadable> problem;
  std::pair<bool, std::size_t> best;
  bool otherSide = false;
  for (const Operation& operation : operations()) {
    if (operation.fullName() != name.text) continue;
    if (operation.caller != caller) {
      otherSide = true;
      continue;
    }
    std::optional<Unreadable> unfit = mismatch(operation, arguments, end);
    const bool counted = !unfit;
    if (counted) {
      try {
        return operation.bind(arguments);
      } catch (const Unreadable& error) {
        unfit.emplace(error.with(", in " + usage(operation)));
      }
    }
    // Of several overloads, the one that takes as many arguments is the one that was meant, then the one that was read
    // furthest.
    const std::pair<bool, std::size_t> read(counted, unfit->column);
    if (!problem || read > best) problem.emplace(*unfit), best = read;
  }
  if (problem) throw *problem;
  if (otherSide) {
    const Caller other = caller == Caller::kAssistant ? Caller::kFirmware : Caller::kAssistant;
    throw Unreadable(name.column,
                     name.text + " is called by the " + word(other) + ", not by the " + word(caller));
  }
  throw unknown(name, std::string("expected an operation of the ") + word(caller));
}

std::vector<std::string> parameterNames(const Operation& operation) {
  std::vector<std::string> names;
  for (const Parameter& parameter : operation.parameters) names.push_back(parameter.name);
  return names;
}

const Operation* operationNamed(const std::string& name) {
  static const std::map<std::string, const Operation*> all = [] {
    std::map<std::string, const Operation*> named;
    for (const Operation& operation : operations()) named.emplace(operation.fullName(), &operation);
    return named;
  }();
  const auto found = all.find(name);
  return found == all.end() ? nullptr : found->second;
}

void checkArguments(const Token& name, const std::vector<Token>& arguments, std::size_t end) {
  const Operation* const operation = operationNamed(name.text);
  if (!operation) throw unknown(name, "expected an operation");
  if (!arguments.empty()) bindCall(operation->caller, name, arguments, end);
}

bool takes(const Operation& operation, const std::vector<Token>& expected,
           const std::vector<std::string>& spelled) {
  if (expected.empty()) return true;
  if (expected.size() > spelled.size()) return false;
  for (std::size_t i = 0; i < spelled.size(); ++i) {
    const bool typed = operation.spell && i < operation.parameters.size();
    if (i >= expected.size()) {
      if (!typed || !operation.parameters[i].reference) return false;
      continue;
    }
    try {
      if ((typed ? operation.parameters[i].canonical(expected[i]) : spell(expected[i].text)) != spelled[i])
        return false;
    } catch (const Unreadable&) {
      return false;  // Another overload takes them.
    }
  }
  return true;
}

std::string maskedStatement(const std::string& line) {
  std::vector<Token> words = split(line);
  const bool bounded = words.size() > 2 && words[words.size() - 2].text == kWithin;
  const std::string bound = bounded ? std::string(" ") + kWithin + " " + words.back().text : "";
  if (bounded) words.resize(words.size() - 2);
  const auto name = std::find_if(words.begin(), words.end(), [](const Token& word) {
    return word.kind == Token::kWord && operationNamed(word.text);
  });
  const auto first = name == words.end() ? words.begin() : name + 1;
  const std::vector<std::string> names =
      name == words.end() ? std::vector<std::string>() : parameterNames(*operationNamed(name->text));
  const Masked shown = masked(names, std::vector<Token>(first, words.end()));
  if (shown.secrets.empty()) return line;
  std::string text;
  for (auto word = words.begin(); word != first; ++word) text += (text.empty() ? "" : " ") + word->text;
  for (const Token& argument : shown.arguments) text += (text.empty() ? "" : " ") + spell(argument);
  return text + bound;
}

bool mayHoldSecret(const std::string& line) {
  if (isSecretText(line)) return true;
  static const std::set<std::string> telling = [] {
    std::set<std::string> names;
    for (const Operation& operation : operations()) {
      if (takesSecret(operation)) names.insert(operation.name);
    }
    return names;
  }();
  std::string word;
  for (const char c : line + " ") {
    const bool inside = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (inside) word += c;
    if (inside || c == '_' || c == '-') continue;
    for (const std::string& name : telling) {
      const std::size_t limit = name.size() / 3 + 2;
      if (!word.empty() && vorn_testing::distanceBelow(limit, word, name) < limit) return true;
    }
    word.clear();
  }
  return false;
}

const Operation* operationAt(const std::string& target, int slot) {
  for (const Operation& operation : operations()) {
    if (operation.target == target && operation.slot == slot) return &operation;
  }
  return nullptr;
}

std::string usage(const Operation& operation) {
  std::string line = operation.fullName();
  for (const Parameter& parameter : operation.parameters) {
    line += parameter.reference ? " [" + parameter.name + "]" : " " + parameter.name;
  }
  return line;
}

std::string parameterHelp(const Operation& operation) {
  std::string lines;
  for (const Parameter& parameter : operation.parameters) {
    lines += "      " + parameter.name + ": " + parameter.type + "\n";
  }
  return lines;
}

}  // namespace vorn_speaker
