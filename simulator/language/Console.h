#pragma once

#include <istream>
#include <set>
#include <string>
#include <vector>

#include "Scenario.h"

namespace vorn_speaker {

/// What may be kept of lines that were played: secrets are masked, and what is expected of a call that gave one is left out.
class Discretion {
 public:
  /// With `secrets` nothing is masked.
  explicit Discretion(bool secrets) : m_secrets(secrets) {}

  /// The line to keep; before it is played, in the order of playing. `stage` knows the secrets.
  std::string kept(const std::string& line, const Stage& stage);

 private:
  const bool m_secrets;
  bool m_masked = false;  ///< Whether the last call was kept with secrets masked.
};

/// The console: statements of a scenario, typed one after the other and played at once.
class Console {
 public:
  /// `historyFile` keeps the lines that were understood and hold no secret from one session to the next. With
  /// `secrets` nothing is masked in what is saved.
  Console(Stage& stage, std::string historyFile, bool secrets);

  /// Until the end of the input or quit. With `terminal`, lines are edited, completed and remembered. Without,
  /// returns whether every line could be read and every expectation was met.
  bool run(bool terminal, std::istream& in);

 private:
  /// Plays one line, or tells what is wrong with it; false for quit.
  bool play(const std::string& line);
  void complain(const std::string& line, const Unreadable& error);
  void remember(const std::string& line);
  void readHistory();
  void help(const std::string& topic) const;
  void save(const std::string& path);

  Stage& m_stage;
  const std::string m_historyFile;
  Discretion m_discretion;
  bool m_terminal = false;
  bool m_good = true;
  bool m_forgetful = false;           ///< Whether it was said that a line could not be remembered.
  std::vector<std::string> m_played;  ///< What save makes a scenario of.
  std::set<std::string> m_saved;      ///< The files that this session made.
};

/// What may stand where the last word of `line` stands, in order.
std::vector<std::string> completions(const std::string& line);

}  // namespace vorn_speaker
