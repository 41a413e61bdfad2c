#include "Console.h"

#include <editline/readline.h>
#include <vorn_testing/Text.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <utility>

#include "text/Files.h"
#include "text/Lines.h"
#include "text/Secrets.h"

namespace vorn_speaker {

namespace {

constexpr char kPrompt[] = "speaker> ";

constexpr std::size_t kMostLines = 1000;

const char* const kOwnWords[] = {"help", "save", "quit", "exit"};

/// The words that may follow the finished ones.
std::set<std::string> candidates(const std::vector<std::string>& before) {
  std::set<std::string> words;
  if (before.empty()) words.insert(std::begin(kOwnWords), std::end(kOwnWords));
  if (before == std::vector<std::string>{"help"}) {
    for (const Operation& operation : operations()) words.insert(operation.fullName());
  }
  for (const Statement& statement : statements()) {
    const std::vector<std::string> beginning = statement.words();
    const std::size_t common = std::min(before.size(), beginning.size());
    if (!std::equal(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(common), beginning.begin()))
      continue;
    if (before.size() < beginning.size()) {
      words.insert(beginning[before.size()]);
    } else if (statement.next) {
      for (const std::string& word : statement.next(before.size() - beginning.size())) words.insert(word);
    }
  }
  return words;
}

/// The library's way of asking for completions: all matches, the first entry what they have in common.
char** complete(const char*, int, int end) {
  rl_attempted_completion_over = 1;
  const std::vector<std::string> words =
      completions(std::string(rl_line_buffer, static_cast<std::size_t>(end)));
  if (words.empty()) return nullptr;
  std::string common = words.front();
  for (const std::string& word : words) {
    const auto differ = std::mismatch(common.begin(), common.end(), word.begin(), word.end()).first;
    common.erase(differ, common.end());
  }
  const auto matches = static_cast<char**>(std::calloc(words.size() + 2, sizeof(char*)));
  if (!matches) return nullptr;
  matches[0] = strdup(common.c_str());
  for (std::size_t i = 0; i < words.size(); ++i) matches[i + 1] = strdup(words[i].c_str());
  return matches;
}

/// The words of a line that were understood, at their places: nothing else of a bad line is repeated.
std::string understood(const std::string& line) {
  std::istringstream stream(line);
  std::string verb, name;
  stream >> verb >> name;
  std::string text(line.size(), ' ');
  const auto show = [&](const std::string& word, std::size_t from) {
    const std::size_t at = line.find(word, from);
    text.replace(at, word.size(), word);
    return at + word.size();
  };
  const std::set<std::string> verbs = candidates({});
  if (verbs.count(verb) == 0) return "";
  const std::size_t end = show(verb, 0);
  if (operationNamed(name)) show(name, end);
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

}  // namespace

std::vector<std::string> completions(const std::string& line) {
  std::vector<std::string> before;
  std::string last;
  for (const char c : line) {
    if (c != ' ') {
      last += c;
    } else if (!last.empty()) {
      before.push_back(last);
      last.clear();
    }
  }
  std::vector<std::string> fitting;
  for (const std::string& word : candidates(before)) {
    if (word.compare(0, last.size(), last) == 0) fitting.push_back(word);
  }
  return fitting;
}

Console::Console(Stage& stage, std::string historyFile, bool secrets)
    : m_stage(stage), m_historyFile(std::move(historyFile)), m_discretion(secrets) {}

bool Console::run(bool terminal, std::istream& in) {
  if (!terminal) {
    // Each as soon as it is there: another program may wait for the answer before it goes on.
    for (std::string typed; std::getline(in, typed);) {
      for (const std::string& line : lines(typed)) {
        if (!play(line)) return m_good;
      }
    }
    return m_good;
  }
  std::cout << "Statements of a scenario, Tab completes; help, save FILE, quit.\n";
  m_terminal = true;
  rl_readline_name = "vorn-speaker";
  rl_initialize();
  using_history();
  readHistory();
  rl_attempted_completion_function = complete;
  for (bool more = true; more;) {
    const std::unique_ptr<char, decltype(&std::free)> line(readline(kPrompt), std::free);
    if (!line) break;
    if (*line) add_history(line.get());
    more = play(line.get());
  }
  return true;  // A person has seen what was wrong.
}

bool Console::play(const std::string& line) {
  bool read = false;
  try {
    const std::vector<Token> words = split(line);
    const std::string first = words.empty() ? "" : words[0].text;
    if (first == "quit" || first == "exit") return false;
    if (first == "help") {
      help(words.size() > 1 ? words[1].text : "");
    } else if (first == "save") {
      if (words.size() != 2) throw Unreadable(line.size() + 1, "expected a file: save FILE");
      save(words[1].text);
    } else if (const auto statement = readStatement(line)) {
      m_played.push_back(m_discretion.kept(line, m_stage));
      read = true;
      statement(m_stage);
    }
  } catch (const Unreadable& error) {
    complain(line, mayHoldSecret(line) || m_stage.isSecret(line) ? error.masked() : error);
  } catch (const std::exception& error) {
    m_good = false;
    std::cout << "  " << (m_stage.isSecret(error.what()) ? kMask : oneLine(error.what())) << std::endl;
  }
  if (read && m_terminal) remember(line);  // Now it is known whether the line led to a secret.
  return true;
}

void Console::complain(const std::string& line, const Unreadable& error) {
  m_good = false;
  std::cout << "  " << understood(line) << "\n  " << std::string(error.column - 1, ' ') << "^ "
            << error.what() << std::endl;
}

std::string Discretion::kept(const std::string& line, const Stage& stage) {
  const std::string shown = m_secrets ? line : maskedStatement(line);
  const bool expectation = split(line).at(0).text == "expect";
  // It may differ from the line by its spelling alone.
  const bool hides = !m_secrets && shown.find(kMask) != std::string::npos;
  const bool telling = hides || (!m_secrets && stage.isSecret(line));
  if (!expectation) m_masked = telling || (!m_secrets && mayHoldSecret(line));
  if (!expectation && (hides ? stage.isSecret(shown) : telling)) return std::string("# ") + kMask;
  return expectation && (telling || m_masked) ? std::string("# expect ") + kMask : shown;
}

/// Keeps a line for the next session, unless it holds a secret; one that could not be read may hold any.
void Console::remember(const std::string& line) {
  if (m_played.back() != line || maskedStatement(line) != line || m_stage.isSecret(line)) return;
  if (std::ofstream(m_historyFile, std::ios::app) << line << std::endl || std::exchange(m_forgetful, true))
    return;
  std::cout << "  " << oneLine(m_historyFile) << ": cannot be written; what is typed is not remembered"
            << std::endl;
}

/// Takes over what can be read and holds no secret, and writes no more than that back.
void Console::readHistory() {
  std::ifstream file(m_historyFile, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::string> good;
  for (const std::string& line : lines(text)) {
    try {
      if (readStatement(line) && maskedStatement(line) == line) good.push_back(line);
    } catch (const Unreadable&) {
      // Of an older version, or of somebody else.
    }
  }
  if (good.size() > kMostLines) good.erase(good.begin(), good.end() - kMostLines);
  for (const std::string& line : good) add_history(line.c_str());
  WholeFile kept(m_historyFile);
  for (const std::string& line : good) kept.stream() << line << '\n';
  kept.finish();
}

void Console::help(const std::string& topic) const {
  if (topic.empty()) {
    for (const Statement& statement : statements())
      std::cout << "  " << statement.form << "\n      " << statement.help << '\n';
    std::cout
        << "  help OPERATION\n      its arguments\n  save FILE\n      the lines so far, as a scenario\n  quit\n";
  }
  for (const Operation& operation : operations()) {
    if (topic.empty() || operation.fullName().find(topic) == std::string::npos) continue;
    std::cout << "  " << (operation.caller == Caller::kAssistant ? "assistant " : "firmware ")
              << usage(operation) << '\n'
              << parameterHelp(operation);
  }
}

void Console::save(const std::string& path) {
  if (m_saved.count(path) == 0 && std::filesystem::exists(path))
    throw std::runtime_error(path + " is there already; choose another name");
  WholeFile file(path);
  m_saved.insert(path);  // It is ours, should it be written in part too.
  for (const std::string& line : m_played) file.stream() << line << '\n';
  file.finish();
  std::cout << "  " << vorn_testing::counted(m_played.size(), "line") << " in " << oneLine(path) << std::endl;
}

}  // namespace vorn_speaker
