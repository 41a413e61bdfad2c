#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Operations.h"

namespace vorn_speaker {

/// A call that is expected, or expected not to have come.
struct ExpectedCall {
  bool wanted = true;
  std::string name;              ///< Empty for any operation.
  std::vector<Token> arguments;  ///< Empty for any.
  std::chrono::milliseconds within{0};
};

/// What a scenario's statements do; the speaker carries them out.
class Stage {
 public:
  virtual ~Stage() = default;

  virtual void section(const std::string& title) = 0;

  /// Calls from one thread of the caller's, or from `threads` of them at once.
  virtual void call(Caller caller, const std::string& name, const BoundCall& call, int threads = 1) = 0;

  virtual void expectResult(const std::string& expected) = 0;
  virtual void expectCall(const ExpectedCall& expected) = 0;

  /// So many samples, or any number above none.
  virtual void expectHeard(std::optional<std::int64_t> samples, std::chrono::milliseconds within) = 0;

  virtual void expectTrace(const std::string& part) = 0;
  virtual void expectEveryOperation() = 0;
  virtual void assistantSide(bool present, const std::string& area) = 0;
  virtual void answer(const std::string& question, const std::string& value) = 0;
  virtual void waitForMicrophone() = 0;
  virtual void adapters(bool create) = 0;

  /// Whether the library can write its trace file.
  virtual void traceFile(bool writable) = 0;

  /// From now on the operation answers so much later, throws this text instead, or does neither.
  virtual void delay(const std::string& name, std::chrono::milliseconds time) = 0;
  virtual void fail(const std::string& name, const std::string& text) = 0;
  virtual void restore(const std::string& name) = 0;

  /// Whether a text holds what was a secret before.
  virtual bool isSecret(const std::string& text) const = 0;
};

/// One statement, ready to be played.
using Play = std::function<void(Stage&)>;

struct Step {
  std::size_t line;
  Play play;
};

/// A scenario that cannot be read; what() holds one line "FILE:LINE:COLUMN: expected ..." for each problem.
class BadScenario : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads one statement; throws Unreadable. Empty for blank lines and comments.
Play readStatement(const std::string& line);

/// Reads a whole scenario before any of it is played; throws BadScenario.
std::vector<Step> readScenario(const std::string& file, const std::string& text);

class Words;

/// A statement: the parser, the help, the completion and the page docs/speaker.md stand on this table.
struct Statement {
  std::string form;  ///< "expect no call [ADAPTER.OPERATION]": the words in small letters are its beginning.
  std::string help;
  Play (*read)(Words&);                                 ///< Reads what comes after its beginning.
  std::vector<std::string> (*next)(std::size_t index);  ///< What value `index` may be; null for anything.

  /// Its beginning.
  std::vector<std::string> words() const;
};
const std::vector<Statement>& statements();

}  // namespace vorn_speaker
