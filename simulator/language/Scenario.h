#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Operations.h"

namespace vorn_speaker {

/// Any number of samples above none.
constexpr std::int64_t kSome = -1;

/// What a scenario's statements do; the speaker carries them out.
class Stage {
 public:
  virtual ~Stage() = default;

  virtual void section(const std::string& title) = 0;
  virtual void call(Caller caller, const std::string& name, const std::string& firstArgument,
                    const BoundCall& call) = 0;
  virtual void expectResult(const std::string& expected) = 0;
  virtual void expectCall(bool wanted, const std::string& name,
                          const std::vector<std::string>& arguments) = 0;
  virtual void expectHeard(std::int64_t samples) = 0;
  virtual void expectTrace(const std::string& part) = 0;
  virtual void expectEveryOperation() = 0;
  virtual void assistantSide(bool present, const std::string& area) = 0;
  virtual void answer(const std::string& question, const std::string& value) = 0;
  virtual void waitForMicrophone() = 0;
  virtual void adapters(bool create) = 0;
};

/// One statement, ready to be played.
struct Step {
  std::size_t line;
  std::function<void(Stage&)> play;
};

/// A scenario that cannot be read; what() holds one line "FILE:LINE:COLUMN: expected ..." for each problem.
class BadScenario : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads one statement; throws Unreadable. Empty for blank lines and comments.
std::function<void(Stage&)> readStatement(const std::string& line);

/// Reads a whole scenario before any of it is played; throws BadScenario.
std::vector<Step> readScenario(const std::string& file, const std::string& text);

/// The statements, with a line of help each.
struct Statement {
  const char* form;
  const char* help;
};
const std::vector<Statement>& statements();

}  // namespace vorn_speaker
