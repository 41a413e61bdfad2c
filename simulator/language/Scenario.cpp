#include "Scenario.h"

#include <algorithm>
#include <optional>
#include <sstream>

namespace vorn_speaker {

namespace {

using Play = std::function<void(Stage&)>;

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
  bool take(const char* word) {
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
    std::string expected;
    for (const std::string& choice : choices) expected += (expected.empty() ? "" : ", ") + choice;
    const Token token = next("one of " + expected);
    if (std::find(choices.begin(), choices.end(), token.text) == choices.end()) {
      throw Unreadable(token.column, "expected one of " + expected + ", found " + token.text);
    }
    return token;
  }

  void finish() {
    if (!empty())
      throw Unreadable(m_tokens[m_at].column, "expected the end of the line, found " + m_tokens[m_at].text);
  }

 private:
  std::vector<Token> m_tokens;
  std::size_t m_end;
  std::size_t m_at = 0;
};

std::vector<std::string> texts(const std::vector<Token>& tokens) {
  std::vector<std::string> all;
  for (const Token& token : tokens) all.push_back(token.text);
  return all;
}

Play readCall(Caller caller, Words& words) {
  const Token name = words.next("an operation such as VornDeviceInfo.getVolume");
  const std::vector<Token> arguments = words.rest();
  const BoundCall bound = bindCall(caller, name, arguments, words.end());
  const std::string first = arguments.empty() ? "" : arguments.front().text;
  return [=](Stage& stage) { stage.call(caller, name.text, first, bound); };
}

Play readExpectedCall(bool wanted, Words& words) {
  if (!wanted && words.empty()) return [](Stage& stage) { stage.expectCall(false, "", {}); };
  const Token name = words.next("an operation such as VornDeviceInfo.getVolume");
  const auto known = [&](const Operation& operation) { return operation.fullName() == name.text; };
  if (std::none_of(operations().begin(), operations().end(), known)) {
    bindCall(Caller::kAssistant, name, {}, words.end());  // throws with a suggestion
  }
  const std::vector<std::string> arguments = texts(words.rest());
  return [=](Stage& stage) { stage.expectCall(wanted, name.text, arguments); };
}

Play readExpect(Words& words) {
  if (words.take("call")) return readExpectedCall(true, words);
  if (words.take("no")) {
    words.nextOf({"call"});
    return readExpectedCall(false, words);
  }
  if (words.take("heard")) {
    const Token amount = words.next("a number of samples, or some");
    words.finish();
    if (amount.text == "some") return [](Stage& stage) { stage.expectHeard(kSome); };
    const auto samples = read<std::int64_t>(amount);
    return [=](Stage& stage) { stage.expectHeard(samples); };
  }
  if (words.take("trace")) {
    const auto part = read<std::string>(words.next("a part of a trace line"));
    words.finish();
    return [=](Stage& stage) { stage.expectTrace(part); };
  }
  if (words.take("every")) {
    words.nextOf({"operation"});
    words.finish();
    return [](Stage& stage) { stage.expectEveryOperation(); };
  }
  if (words.empty()) words.next("the result, or call, no call, heard, trace or every operation");
  std::string expected;
  for (const std::string& text : texts(words.rest())) expected += (expected.empty() ? "" : " ") + text;
  return [=](Stage& stage) { stage.expectResult(expected); };
}

Play readSide(bool present, Words& words) {
  const Token area = words.nextOf({"all", "DeviceInfo", "DeviceCapabilities", "GUIOutput", "OOBE", "AudioIn",
                                   "AppMessaging", "CommsManager", "adapters"});
  words.finish();
  if (area.text == "adapters") return [=](Stage& stage) { stage.adapters(present); };
  return [=](Stage& stage) { stage.assistantSide(present, area.text); };
}

Play readAnswer(Words& words) {
  const Token question = words.nextOf({"authStatus", "messageAccepted", "playbackActionAccepted"});
  const Token value = words.next("the answer");
  if (question.text != "authStatus") read<bool>(value);
  words.finish();
  return [=](Stage& stage) { stage.answer(question.text, value.text); };
}

}  // namespace

const std::vector<Statement>& statements() {
  static const std::vector<Statement> all = {
      {"assistant ADAPTER.OPERATION ARGUMENT...", "the assistant client calls an adapter (down)"},
      {"firmware ADAPTER.OPERATION ARGUMENT...", "the firmware calls an adapter (up)"},
      {"expect RESULT", "the last call gave this result"},
      {"expect call ADAPTER.OPERATION [ARGUMENT...]", "the last step led to this call"},
      {"expect no call [ADAPTER.OPERATION]", "the last step led to no call, or not to this one"},
      {"expect heard SAMPLES|some", "the assistant side heard so many samples so far"},
      {"expect trace TEXT", "a line of the library's trace holds the text"},
      {"expect every operation", "every operation has been called by now"},
      {"remove AREA|all|adapters", "takes an assistant-side object away, or shuts the adapters down"},
      {"create AREA|all|adapters", "brings it back"},
      {"answer QUESTION VALUE",
       "what the assistant side answers: authStatus, messageAccepted, playbackActionAccepted"},
      {"wait microphone", "until the microphone has delivered its sound"},
      {"section TITLE", "prints a heading"},
  };
  return all;
}

std::function<void(Stage&)> readStatement(const std::string& line) {
  Words words(line);
  if (words.empty()) return nullptr;
  const Token verb =
      words.nextOf({"assistant", "firmware", "expect", "remove", "create", "answer", "wait", "section"});
  if (verb.text == "assistant") return readCall(Caller::kAssistant, words);
  if (verb.text == "firmware") return readCall(Caller::kFirmware, words);
  if (verb.text == "expect") return readExpect(words);
  if (verb.text == "remove" || verb.text == "create") return readSide(verb.text == "create", words);
  if (verb.text == "answer") return readAnswer(words);
  if (verb.text == "wait") {
    words.nextOf({"microphone"});
    words.finish();
    return [](Stage& stage) { stage.waitForMicrophone(); };
  }
  const auto title = read<std::string>(words.next("a title"));
  words.finish();
  return [=](Stage& stage) { stage.section(title); };
}

std::vector<Step> readScenario(const std::string& file, const std::string& text) {
  std::vector<Step> steps;
  std::string problems;
  std::istringstream lines(text);
  std::string line;
  for (std::size_t number = 1; std::getline(lines, line); ++number) {
    try {
      if (auto play = readStatement(line)) steps.push_back({number, std::move(play)});
    } catch (const Unreadable& error) {
      problems += (problems.empty() ? "" : "\n") + file + ":" + std::to_string(number) + ":" +
                  std::to_string(error.column) + ": " + error.what();
    }
  }
  if (!problems.empty()) throw BadScenario(problems);
  return steps;
}

}  // namespace vorn_speaker
