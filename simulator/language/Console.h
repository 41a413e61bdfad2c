#pragma once

#include <istream>
#include <string>
#include <vector>

#include "Scenario.h"

namespace vorn_speaker {

/// The console: statements of a scenario, typed one after the other and played at once.
class Console {
 public:
  /// `historyFile` keeps the lines from one session to the next, except logins, which hold a token.
  Console(Stage& stage, std::string historyFile);

  /// Until the end of the input or quit. With `terminal`, lines are edited, completed and remembered.
  void run(bool terminal, std::istream& in);

 private:
  /// Plays one line, or tells what is wrong with it; false for quit.
  bool play(const std::string& line);
  void help(const std::string& topic) const;
  void save(const std::string& path) const;

  Stage& m_stage;
  const std::string m_historyFile;
  std::vector<std::string> m_played;  ///< What save makes a scenario of.
};

/// What may stand where the last word of `line` stands, in order.
std::vector<std::string> completions(const std::string& line);

}  // namespace vorn_speaker
