#include "Console.h"

#include <editline/readline.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>

namespace vorn_speaker {

namespace {

constexpr char kPrompt[] = "speaker> ";

const std::vector<std::string>& areas() {
  static const std::vector<std::string> all = {"all",        "adapters",     "AppMessaging",
                                               "AudioIn",    "CommsManager", "DeviceCapabilities",
                                               "DeviceInfo", "GUIOutput",    "OOBE"};
  return all;
}

/// The words that may follow the finished ones.
std::set<std::string> candidates(const std::vector<std::string>& before) {
  std::set<std::string> words;
  const auto addOperations = [&](bool assistant, bool firmware) {
    for (const Operation& operation : operations()) {
      if (operation.caller == Caller::kAssistant ? assistant : firmware) words.insert(operation.fullName());
    }
  };
  if (before.empty()) {
    for (const Statement& statement : statements())
      words.insert(std::string(statement.form, std::strcspn(statement.form, " ")));
    words.insert({"help", "save", "quit"});
  } else if (before[0] == "expect" && before.size() == 1) {
    words = {"call", "no", "heard", "trace", "every"};
  } else if (before[0] == "expect" && before.back() == "call") {
    addOperations(true, true);
  } else if (before.size() > 1) {
    return words;
  } else if (before[0] == "remove" || before[0] == "create") {
    words.insert(areas().begin(), areas().end());
  } else if (before[0] == "answer") {
    words = {"authStatus", "messageAccepted", "playbackActionAccepted"};
  } else if (before[0] == "wait") {
    words = {"microphone"};
  } else {
    addOperations(before[0] != "firmware", before[0] != "assistant");
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

bool isPrivate(const std::string& line) {
  return line.find("VornEMPAdapterControl.login") != std::string::npos;
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

Console::Console(Stage& stage, std::string historyFile)
    : m_stage(stage), m_historyFile(std::move(historyFile)) {}

void Console::run(bool terminal, std::istream& in) {
  if (!terminal) {
    for (std::string line; std::getline(in, line) && play(line);) {
    }
    return;
  }
  std::cout << "Statements of a scenario, Tab completes; help, save FILE, quit.\n";
  rl_readline_name = "vorn-speaker";
  rl_initialize();
  using_history();
  read_history(m_historyFile.c_str());
  rl_attempted_completion_function = complete;
  for (bool more = true; more;) {
    const std::unique_ptr<char, decltype(&std::free)> line(readline(kPrompt), std::free);
    if (!line) break;
    if (*line && !isPrivate(line.get())) add_history(line.get());
    more = play(line.get());
  }
  write_history(m_historyFile.c_str());
}

bool Console::play(const std::string& line) {
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
      m_played.push_back(line);
      statement(m_stage);
    }
  } catch (const Unreadable& error) {
    std::cout << "  " << line << "\n  " << std::string(error.column - 1, ' ') << "^ " << error.what()
              << std::endl;
  } catch (const std::exception& error) {
    std::cout << "  " << error.what() << std::endl;
  }
  return true;
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
  std::cout.flush();
}

void Console::save(const std::string& path) const {
  std::ofstream file(path);
  for (const std::string& line : m_played) file << line << '\n';
  if (!file.flush()) throw std::runtime_error(path + " cannot be written");
  std::cout << "  " << m_played.size() << " lines in " << path << std::endl;
}

}  // namespace vorn_speaker
