#include "Tokens.h"

#include <DeviceAbstractionLayer/CommsControllerInterface.h>
#include <DeviceAbstractionLayer/CommsManagerInterface.h>
#include <vorn_testing/Call.h>
#include <vorn_testing/Masking.h>

#include <charconv>

#include "Lines.h"

namespace vorn_speaker {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

class Splitter {
 public:
  explicit Splitter(const std::string& line) : m_line(line) {}

  std::vector<Token> tokens() {
    std::vector<Token> found;
    for (skipBlanks(); !atEnd() && peek() != '#'; skipBlanks()) {
      found.push_back(token());
      if (!atEnd() && !isBlank(peek())) throw Unreadable(column(), "expected a blank after the value");
    }
    return found;
  }

 private:
  bool atEnd() const { return m_at == m_line.size(); }
  char peek() const { return m_line[m_at]; }
  std::size_t column() const { return m_at + 1; }

  void skipBlanks() {
    while (!atEnd() && isBlank(peek())) ++m_at;
  }

  Token token() {
    Token made;
    made.column = column();
    switch (peek()) {
      case '"':
        made.kind = Token::kQuoted;
        made.text = quoted();
        break;
      case '[':
        made.kind = Token::kList;
        group(']', [&] { made.items.push_back(item(",]")); });
        made.text = vorn_testing::text(made.items);
        break;
      case '{':
        made.kind = Token::kMap;
        group('}', [&] {
          const std::string key = item("=,}");
          if (atEnd() || peek() != '=') throw Unreadable(column(), "expected = between a key and its value");
          ++m_at;
          if (!made.entries.emplace(key, item(",}")).second) {
            throw Unreadable(made.column, "expected every key once");
          }
        });
        made.text = vorn_testing::text(made.entries);
        break;
      default:
        while (!atEnd() && !isBlank(peek())) made.text += m_line[m_at++];
    }
    return made;
  }

  /// The elements between brackets, each read by `element`.
  template <class Element>
  void group(char close, Element element) {
    const std::size_t opened = column();
    ++m_at;
    skipBlanks();
    while (!atEnd() && peek() != close) {
      element();
      skipBlanks();
      if (atEnd() || peek() == close) break;
      if (peek() != ',') throw Unreadable(column(), std::string("expected a comma or a closing ") + close);
      ++m_at;
      skipBlanks();
    }
    if (atEnd()) throw Unreadable(opened, std::string("expected a closing ") + close);
    ++m_at;
  }

  std::string item(const char* ends) {
    skipBlanks();
    if (!atEnd() && peek() == '"') return quoted();
    std::string text;
    while (!atEnd() && std::string(ends).find(peek()) == std::string::npos) text += m_line[m_at++];
    while (!text.empty() && isBlank(text.back())) text.pop_back();
    return text;
  }

  std::string quoted() {
    const std::size_t opened = column();
    std::string text;
    for (++m_at; !atEnd(); ++m_at) {
      if (peek() == '"') {
        ++m_at;
        return text;
      }
      text += peek() == '\\' ? escaped() : peek();
    }
    throw Unreadable(opened, "expected a closing \"");
  }

  /// Stays on the last character of the escape.
  char escaped() {
    const std::size_t began = column();
    switch (++m_at < m_line.size() ? peek() : ' ') {
      case 'n':
        return '\n';
      case 't':
        return '\t';
      case '"':
      case '\\':
        return peek();
      case 'x': {
        unsigned value = 0;
        const char* digits = m_line.data() + m_at + 1;
        if (m_at + 2 < m_line.size() && std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2) {
          m_at += 2;
          return static_cast<char>(value);
        }
      }
    }
    throw Unreadable(began, "expected one of the escapes \\n \\t \\\" \\\\ \\x41");
  }

  const std::string& m_line;
  std::size_t m_at = 0;
};

template <class Value>
[[noreturn]] void refuse(const Token& token) {
  throw Unreadable(token.column, std::string("expected ") + describe<Value>(), shown(token));
}

template <class Number>
Number number(const Token& token, const std::string& text) {
  Number value{};
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, value);
  if (token.kind != Token::kWord || stopped != end || error != std::errc()) refuse<Number>(token);
  return value;
}

}  // namespace

std::string shown(const Token& token) {
  return token.kind == Token::kQuoted ? '"' + token.text + '"' : token.text;
}

Unreadable::Unreadable(std::size_t where, const std::string& expected,
                       const std::optional<std::string>& found, const std::string& hint)
    : std::runtime_error(expected + (found ? ", found " + excerpt(*found) : "") + hint),
      column(where),
      m_expected(expected),
      m_found(found),
      m_hint(hint) {}

Unreadable Unreadable::masked() const {
  return Unreadable(column, m_expected, m_found ? std::optional<std::string>(vorn_testing::kMask) : m_found,
                    m_hint);
}

std::vector<Token> split(const std::string& line) { return Splitter(line).tokens(); }

template <>
const char* describe<std::string>() {
  return "a text";
}
template <>
const char* describe<bool>() {
  return "true or false";
}
template <>
const char* describe<int>() {
  return "a whole number";
}
template <>
const char* describe<std::int64_t>() {
  return "a whole number";
}
template <>
const char* describe<double>() {
  return "a number";
}
template <>
const char* describe<std::chrono::milliseconds>() {
  return "a duration such as 500ms or 2s";
}
template <>
const char* describe<std::vector<std::string>>() {
  return "a list such as [en-US, de-DE]";
}
template <>
const char* describe<std::vector<short>>() {
  return "samples such as [0, 120, -120]";
}
template <>
const char* describe<std::map<std::string, std::string>>() {
  return "a set such as {alarm=07:00, city=Oslo}";
}
template <>
const char* describe<DeviceAbstractionLayer::CommsControllerInterface::CallAction>() {
  return "a call action's number";
}
template <>
const char* describe<DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo>() {
  return "a communications state";
}

template <>
std::string read<std::string>(const Token& token) {
  if (token.kind == Token::kList || token.kind == Token::kMap) {
    throw Unreadable(token.column, "expected a text (in quotes if it begins with a bracket)");
  }
  return token.text;
}

template <>
bool read<bool>(const Token& token) {
  if (token.kind == Token::kWord && (token.text == "true" || token.text == "on")) return true;
  if (token.kind == Token::kWord && (token.text == "false" || token.text == "off")) return false;
  refuse<bool>(token);
}

template <>
int read<int>(const Token& token) {
  return number<int>(token, token.text);
}

template <>
std::int64_t read<std::int64_t>(const Token& token) {
  return number<std::int64_t>(token, token.text);
}

template <>
double read<double>(const Token& token) {
  return number<double>(token, token.text);
}

template <>
std::chrono::milliseconds read<std::chrono::milliseconds>(const Token& token) {
  static constexpr std::pair<const char*, int> kUnits[] = {{"ms", 1}, {"s", 1000}, {"", 1}};
  for (const auto& [unit, factor] : kUnits) {
    const std::string ending = unit;
    if (token.text.size() < ending.size() || token.text.substr(token.text.size() - ending.size()) != ending)
      continue;
    std::int64_t count = 0;
    const char* end = token.text.data() + token.text.size() - ending.size();
    const auto [stopped, error] = std::from_chars(token.text.data(), end, count);
    std::int64_t scaled = 0;
    if (token.kind != Token::kWord || stopped != end || error != std::errc() ||
        __builtin_mul_overflow(count, factor, &scaled)) {
      break;
    }
    return std::chrono::milliseconds(scaled);
  }
  refuse<std::chrono::milliseconds>(token);
}

template <>
std::vector<std::string> read<std::vector<std::string>>(const Token& token) {
  if (token.kind != Token::kList) refuse<std::vector<std::string>>(token);
  return token.items;
}

template <>
std::vector<short> read<std::vector<short>>(const Token& token) {
  if (token.kind != Token::kList) refuse<std::vector<short>>(token);
  std::vector<short> samples;
  for (const std::string& item : token.items) {
    short sample = 0;
    const char* end = item.data() + item.size();
    const auto [stopped, error] = std::from_chars(item.data(), end, sample);
    if (stopped != end || error != std::errc()) refuse<std::vector<short>>(token);
    samples.push_back(sample);
  }
  return samples;
}

template <>
std::map<std::string, std::string> read<std::map<std::string, std::string>>(const Token& token) {
  if (token.kind != Token::kMap) refuse<std::map<std::string, std::string>>(token);
  return token.entries;
}

template <>
DeviceAbstractionLayer::CommsControllerInterface::CallAction
read<DeviceAbstractionLayer::CommsControllerInterface::CallAction>(const Token& token) {
  return DeviceAbstractionLayer::CommsControllerInterface::CallAction{number<int>(token, token.text)};
}

template <>
DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo
read<DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo>(const Token& token) {
  return {read<std::string>(token)};
}

}  // namespace vorn_speaker
