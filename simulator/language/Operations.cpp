#include "Operations.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace vorn_speaker {

namespace {

/// How many letters must be typed anew to make one word of the other, whatever their case.
std::size_t distance(const std::string& left, const std::string& right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < right.size(); ++j) {
      const bool same = std::tolower(static_cast<unsigned char>(left[i])) ==
                        std::tolower(static_cast<unsigned char>(right[j]));
      const std::size_t replaced = diagonal + (same ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

std::string suggestion(const std::string& name) {
  const std::string* best = nullptr;
  std::size_t least = name.size() / 3 + 1;
  static const std::vector<std::string> names = [] {
    std::vector<std::string> all;
    for (const Operation& operation : operations()) all.push_back(operation.fullName());
    return all;
  }();
  for (const std::string& candidate : names) {
    // A name without its adapter is the commonest slip.
    const std::size_t far =
        std::min(distance(name, candidate), distance(name, candidate.substr(candidate.find('.') + 1)));
    if (far < least) {
      least = far;
      best = &candidate;
    }
  }
  return best ? "; did you mean " + *best + "?" : "; vorn-speaker --list names them all";
}

const char* word(Caller caller) { return caller == Caller::kAssistant ? "assistant" : "firmware"; }

std::optional<Unreadable> mismatch(const Operation& operation, const std::vector<Token>& arguments,
                                   std::size_t end) {
  const auto& parameters = operation.parameters;
  if (arguments.size() > parameters.size()) {
    return Unreadable(arguments[parameters.size()].column, "expected the end of the line after " +
                                                               usage(operation) + ", found " +
                                                               arguments[parameters.size()].text);
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
  bool otherSide = false;
  for (const Operation& operation : operations()) {
    if (operation.fullName() != name.text) continue;
    if (operation.caller != caller) {
      otherSide = true;
      continue;
    }
    std::optional<Unreadable> unfit = mismatch(operation, arguments, end);
    if (!unfit) {
      try {
        return operation.bind(arguments);
      } catch (const Unreadable& error) {
        unfit.emplace(error.column, std::string(error.what()) + ", in " + usage(operation));
      }
    }
    // Of several overloads, the one that was read furthest is the one that was meant.
    if (!problem || unfit->column > problem->column) problem.emplace(*unfit);
  }
  if (problem) throw *problem;
  if (otherSide) {
    const Caller other = caller == Caller::kAssistant ? Caller::kFirmware : Caller::kAssistant;
    throw Unreadable(name.column,
                     name.text + " is called by the " + word(other) + ", not by the " + word(caller));
  }
  throw Unreadable(name.column, std::string("expected an operation of the ") + word(caller) + ", found " +
                                    name.text + suggestion(name.text));
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
