#include "Scenario.h"

#include <vorn_testing/Text.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <utility>

#include "text/Lines.h"
#include "text/Secrets.h"
#include "text/Spelling.h"

namespace vorn_speaker {

namespace {

std::string oneOf(const std::vector<std::string>& choices) {
  std::string text;
  for (const std::string& choice : choices) text += (text.empty() ? "one of " : ", ") + choice;
  return text;
}

}  // namespace

/// The words of one statement, read from left to right.
class Words {
 public:
  explicit Words(const std::string& line) : m_tokens(split(line)), m_end(line.size() + 1) {}

  bool empty() const { return m_at == m_tokens.size(); }
  std::size_t end() const { return m_end; }

  Token next(const std::string& expected) {
    if (empty()) throw Unreadable(m_end, "expected " + expected);
    return m_tokens[m_at++];
  }

  /// Takes the next word when it is `word`.
  bool take(const std::string& word) {
    if (empty() || m_tokens[m_at].kind != Token::kWord || m_tokens[m_at].text != word) return false;
    ++m_at;
    return true;
  }

  std::vector<Token> rest() {
    const std::vector<Token> tokens(m_tokens.begin() + static_cast<std::ptrdiff_t>(m_at), m_tokens.end());
    m_at = m_tokens.size();
    return tokens;
  }

  Token nextOf(const std::vector<std::string>& choices) {
    const Token token = next(oneOf(choices));
    if (std::find(choices.begin(), choices.end(), token.text) == choices.end()) {
      const Unreadable error(token.column, "expected " + oneOf(choices), token.text);
      throw error.with(vorn_testing::didYouMean(token.text, choices));
    }
    return token;
  }

  void finish() {
    if (!empty())
      throw Unreadable(m_tokens[m_at].column, "expected the end of the line", shown(m_tokens[m_at]));
  }

  /// How many of these words come next.
  std::size_t common(const std::vector<std::string>& words) const {
    std::size_t count = 0;
    while (count < words.size() && m_at + count < m_tokens.size() &&
           m_tokens[m_at + count].kind == Token::kWord && m_tokens[m_at + count].text == words[count])
      ++count;
    return count;
  }

  void skip(std::size_t count) { m_at += count; }

  /// Takes "within 2s" from the end.
  std::chrono::milliseconds within() {
    const std::size_t size = m_tokens.size();
    if (size < m_at + 2 || m_tokens[size - 2].kind != Token::kWord || m_tokens[size - 2].text != kWithin)
      return std::chrono::milliseconds(0);
    const Token bound = m_tokens.back();
    m_tokens.resize(size - 2);
    return time(bound);
  }

  std::size_t lastColumn() const { return m_tokens.empty() ? m_end : m_tokens.back().column; }

  static std::chrono::milliseconds time(const Token& token) {
    constexpr std::chrono::milliseconds kLongest = std::chrono::hours(24);
    const auto value = read<std::chrono::milliseconds>(token);
    if (value < value.zero() || value > kLongest)
      throw Unreadable(token.column, "expected a duration of a day at most", shown(token));
    return value;
  }

 private:
  std::vector<Token> m_tokens;
  std::size_t m_end;
  std::size_t m_at = 0;
};

namespace {

constexpr char kAnOperation[] = "an operation such as VornDeviceInfo.getVolume";
constexpr int kMostThreads = 64;
constexpr int kMostMistakes = 100;

using Names = std::vector<std::string>;

Names allOf(bool assistant, bool firmware) {
  std::set<std::string> names;
  for (const Operation& operation : operations()) {
    if (operation.caller == Caller::kAssistant ? assistant : firmware) names.insert(operation.fullName());
  }
  return {names.begin(), names.end()};
}

Names first(std::size_t index, const Names& names) { return index == 0 ? names : Names(); }

const Names kAreas = {"all",     "DeviceInfo",   "DeviceCapabilities", "GUIOutput", "OOBE",
                      "AudioIn", "AppMessaging", "CommsManager",       "adapters",  "trace"};
const Names kQuestions = {"authStatus", "messageAccepted", "playbackActionAccepted"};

Play readCall(Caller caller, Words& words, int threads = 1) {
  const Token name = words.next(kAnOperation);
  const BoundCall bound = bindCall(caller, name, words.rest(), words.end());
  return [=](Stage& stage) { stage.call(caller, name.text, bound, threads); };
}

Play readTogether(Words& words) {
  const Token count = words.next("how many threads");
  const int threads = read<int>(count);
  if (threads < 2 || threads > kMostThreads)
    throw Unreadable(count.column, "expected 2 to " + std::to_string(kMostThreads) + " threads",
                     shown(count));
  return readCall(Caller::kAssistant, words, threads);
}

Token readName(Words& words) {
  const Token name = words.next(kAnOperation);
  checkArguments(name, {}, words.end());
  return name;
}

Play readExpectedCall(bool wanted, Words& words) {
  ExpectedCall expected;
  expected.wanted = wanted;
  const std::size_t column = words.lastColumn();
  expected.within = words.within();
  if (!wanted && expected.within.count() > 0)
    throw Unreadable(
        column,
        "expected no duration: it tells what the last call has led to by now; a text that is called "
        "within stands in quotes");
  if (wanted || !words.empty()) {
    const Token name = words.next(kAnOperation);
    expected.name = name.text;
    expected.arguments = words.rest();
    checkArguments(name, expected.arguments, words.end());
  }
  return [=](Stage& stage) { stage.expectCall(expected); };
}

Play readHeard(Words& words) {
  const auto within = words.within();
  std::optional<std::int64_t> samples;
  if (!words.take("some")) {
    const std::string expected = "a number of samples, or some";
    const Token amount = words.next(expected);
    const Unreadable unfit(amount.column, "expected " + expected, amount.text);
    try {
      samples = read<std::int64_t>(amount);
    } catch (const Unreadable&) {
      throw unfit;
    }
    if (*samples < 0) throw unfit;
  }
  words.finish();
  return [=](Stage& stage) { stage.expectHeard(samples, within); };
}

Play readResult(Words& words) {
  if (words.empty()) words.next("the result, or call, no call, heard, trace or every operation");
  std::string expected;
  for (const Token& token : words.rest()) expected += (expected.empty() ? "" : " ") + token.text;
  return [=](Stage& stage) { stage.expectResult(expected); };
}

Play readSide(bool present, Words& words) {
  const Token area = words.nextOf(kAreas);
  words.finish();
  if (area.text == "adapters") return [=](Stage& stage) { stage.adapters(present); };
  if (area.text == "trace") return [=](Stage& stage) { stage.traceFile(present); };
  return [=](Stage& stage) { stage.assistantSide(present, area.text); };
}

Play readAnswer(Words& words) {
  const Token question = words.nextOf(kQuestions);
  const Token value = words.next("the answer");
  words.finish();
  const std::string answer =
      question.text == "authStatus" ? read<std::string>(value) : spell(read<bool>(value));
  return [=](Stage& stage) { stage.answer(question.text, answer); };
}

Play readText(Words& words, const char* expected, void (Stage::*play)(const std::string&)) {
  const auto text = read<std::string>(words.next(expected));
  words.finish();
  return [=](Stage& stage) { (stage.*play)(text); };
}

Names anyCall(std::size_t index) { return first(index, allOf(true, true)); }

/// The statement that the words begin; throws Unreadable.
const Statement& choose(Words& words) {
  const Statement* best = nullptr;
  std::pair<std::size_t, bool> most{0, false};
  std::vector<std::string> expected;
  static const std::vector<Names> beginnings = [] {
    std::vector<Names> all;
    for (const Statement& statement : statements()) all.push_back(statement.words());
    return all;
  }();
  for (const Statement& statement : statements()) {
    const Names& beginning = beginnings[static_cast<std::size_t>(&statement - statements().data())];
    const std::size_t common = words.common(beginning);
    const std::pair<std::size_t, bool> fit{common, common == beginning.size()};
    if (fit > most) {
      best = fit.second ? &statement : nullptr;
      most = fit;
      expected.clear();
    }
    const bool other = common == most.first && common < beginning.size();
    if (other && std::find(expected.begin(), expected.end(), beginning[common]) == expected.end())
      expected.push_back(beginning[common]);
  }
  words.skip(most.first);
  if (best) return *best;
  const Token found = words.next(oneOf(expected));
  const Unreadable error(found.column, "expected " + oneOf(expected), shown(found));
  if (most.first > 0) throw error;
  // What begins like no statement may be the rest of a line that was torn, a secret too.
  const std::string meant = vorn_testing::didYouMean(found.text, expected);
  throw meant.empty() ? error.masked() : error.with(meant);
}

Play readWords(const std::string& line) {
  Words words(line);
  if (words.empty()) return nullptr;
  return choose(words).read(words);
}

}  // namespace

const std::vector<Statement>& statements() {
  static const std::vector<Statement> all = {
      {"assistant ADAPTER.OPERATION ARGUMENT...", "the assistant client calls an adapter (down)",
       [](Words& words) { return readCall(Caller::kAssistant, words); },
       [](std::size_t index) { return first(index, allOf(true, false)); }},
      {"firmware ADAPTER.OPERATION ARGUMENT...", "the firmware calls an adapter (up)",
       [](Words& words) { return readCall(Caller::kFirmware, words); },
       [](std::size_t index) { return first(index, allOf(false, true)); }},
      {"together COUNT ADAPTER.OPERATION ARGUMENT...",
       "so many threads of the assistant client make the call at once; their results, if they differ, are "
       "separated by semicolons",
       readTogether, [](std::size_t index) { return index == 1 ? allOf(true, false) : Names(); }},
      {"expect RESULT", "the last call gave this result, as it is printed", readResult, nullptr},
      {"expect call ADAPTER.OPERATION [ARGUMENT...] [within DURATION]",
       "the last call led to this one, with exactly these arguments if any are told; `within` waits for it",
       [](Words& words) { return readExpectedCall(true, words); }, anyCall},
      {"expect no call [ADAPTER.OPERATION [ARGUMENT...]]", "the last call led to none, or not to this one",
       [](Words& words) { return readExpectedCall(false, words); }, anyCall},
      {"expect heard SAMPLES|some [within DURATION]",
       "what the assistant side has heard so far; `within` waits for it", readHeard,
       [](std::size_t index) { return first(index, {"some"}); }},
      {"expect trace TEXT", "a line that the library traced since the start holds the text",
       [](Words& words) { return readText(words, "a part of a trace line", &Stage::expectTrace); }, nullptr},
      {"expect every operation", "every operation has been called by now",
       [](Words& words) {
         words.finish();
         return Play([](Stage& stage) { stage.expectEveryOperation(); });
       },
       nullptr},
      {"remove AREA",
       "takes an object of the assistant side away: `DeviceInfo`, `DeviceCapabilities`, `GUIOutput`, `OOBE`, "
       "`AudioIn`, `AppMessaging`, `CommsManager` or `all`; `adapters` shuts the library's own down, "
       "`trace` has the trace file not be written",
       [](Words& words) { return readSide(false, words); },
       [](std::size_t index) { return first(index, kAreas); }},
      {"create AREA", "brings it back", [](Words& words) { return readSide(true, words); },
       [](std::size_t index) { return first(index, kAreas); }},
      {"answer QUESTION VALUE",
       "what the assistant side answers: `authStatus` a text, `messageAccepted` and `playbackActionAccepted` "
       "a flag",
       readAnswer, [](std::size_t index) { return first(index, kQuestions); }},
      {"delay ADAPTER.OPERATION DURATION",
       "from now on calls of the operation wait so long where they arrive, before they are answered",
       [](Words& words) {
         const Token name = readName(words);
         const auto time = Words::time(words.next("a duration such as 500ms or 2s"));
         words.finish();
         return Play([=](Stage& stage) { stage.delay(name.text, time); });
       },
       anyCall},
      {"fail ADAPTER.OPERATION TEXT", "from now on calls of the operation throw this text where they arrive",
       [](Words& words) {
         const Token name = readName(words);
         const auto text = read<std::string>(words.next("the text of the exception"));
         words.finish();
         return Play([=](Stage& stage) { stage.fail(name.text, text); });
       },
       anyCall},
      {"restore ADAPTER.OPERATION", "ends both",
       [](Words& words) {
         const Token name = readName(words);
         words.finish();
         return Play([=](Stage& stage) { stage.restore(name.text); });
       },
       anyCall},
      {"wait microphone", "until the microphone has delivered its sound",
       [](Words& words) {
         words.finish();
         return Play([](Stage& stage) { stage.waitForMicrophone(); });
       },
       nullptr},
      {"section TITLE", "prints a heading",
       [](Words& words) { return readText(words, "a title", &Stage::section); }, nullptr},
  };
  return all;
}

std::vector<std::string> Statement::words() const {
  std::vector<std::string> all;
  std::istringstream stream(form);
  for (std::string word; stream >> word && word[0] >= 'a' && word[0] <= 'z';) all.push_back(word);
  return all;
}

Play readStatement(const std::string& line) {
  try {
    return readWords(line);
  } catch (const Unreadable& error) {
    throw mayHoldSecret(line) ? error.masked() : error;
  }
}

std::vector<Step> readScenario(const std::string& file, const std::string& text) {
  std::vector<Step> steps;
  std::string problems;
  std::size_t number = 0;
  int mistakes = 0;
  for (const std::string& line : lines(text)) {
    ++number;
    if (mistakes == kMostMistakes) {
      problems += "\n" + oneLine(file) + ": that is enough of mistakes, the rest was not read";
      break;
    }
    try {
      if (auto play = readStatement(line)) steps.push_back({number, std::move(play)});
    } catch (const Unreadable& error) {
      ++mistakes;
      problems += (problems.empty() ? "" : "\n") + oneLine(file) + ":" + std::to_string(number) + ":" +
                  std::to_string(error.column) + ": " + error.what();
    }
  }
  if (!problems.empty()) throw BadScenario(problems);
  return steps;
}

}  // namespace vorn_speaker
