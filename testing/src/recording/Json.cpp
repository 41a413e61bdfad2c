#include "Json.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "vorn_testing/Text.h"

namespace vorn_testing::recording {

namespace {

constexpr int kDeepest = 16;

void appendUtf8(std::string& text, std::uint32_t code) {
  if (code < 0x80) {
    text += static_cast<char>(code);
    return;
  }
  const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  const std::uint32_t leads[] = {0, 0xc0, 0xe0, 0xf0};
  text += static_cast<char>(leads[more] | (code >> (6 * more)));
  for (int i = more - 1; i >= 0; --i) text += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3f));
}

class Parser {
 public:
  explicit Parser(const std::string& text) : m_text(text) {}

  Json whole() {
    Json value = read(0);
    skip();
    if (m_at != m_text.size()) fail();
    return value;
  }

 private:
  [[noreturn]] static void fail() { throw NoJson("no JSON"); }

  void skip() {
    while (m_at < m_text.size() && m_text[m_at] != '\0' && std::strchr(" \t\r\n", m_text[m_at])) ++m_at;
  }

  char peek() {
    skip();
    return m_at < m_text.size() ? m_text[m_at] : '\0';
  }

  bool take(char c) {
    if (peek() != c) return false;
    ++m_at;
    return true;
  }

  void expect(char c) {
    if (!take(c)) fail();
  }

  Json read(int depth) {
    if (depth > kDeepest) fail();
    Json value;
    const char first = peek();
    if (first == '"') {
      value.kind = Json::kText;
      value.text = text();
    } else if (first == '[') {
      value.kind = Json::kList;
      group(']', [&] { value.items.push_back(read(depth + 1)); });
    } else if (first == '{') {
      value.kind = Json::kObject;
      group('}', [&] {
        std::string name = text();
        expect(':');
        value.members.emplace_back(std::move(name), read(depth + 1));
      });
    } else {
      while (m_at < m_text.size() && !std::strchr(" \t\r\n,]}:\"[{", m_text[m_at]))
        value.text += m_text[m_at++];
      if (value.text.empty()) fail();
      value.kind = value.text == "null" ? Json::kNull : Json::kWord;
    }
    return value;
  }

  template <class Element>
  void group(char close, Element element) {
    ++m_at;
    if (take(close)) return;
    do {
      element();
    } while (take(','));
    expect(close);
  }

  std::uint32_t hex() {
    std::uint32_t code = 0;
    const char* const from = m_text.data() + m_at;
    if (m_text.size() - m_at < 4 || std::from_chars(from, from + 4, code, 16).ptr != from + 4) fail();
    m_at += 4;
    return code;
  }

  std::string text() {
    expect('"');
    std::string made;
    while (m_at < m_text.size() && m_text[m_at] != '"') {
      char c = m_text[m_at++];
      if (c != '\\') {
        made += c;
        continue;
      }
      if (m_at == m_text.size()) fail();
      c = m_text[m_at++];
      static const char kEscapes[] = "\"\"\\\\//b\bf\fn\nr\rt\t";
      if (c == 'u') {
        std::uint32_t code = hex();
        if (code >= 0xd800 && code < 0xdc00 && m_text.compare(m_at, 2, "\\u") == 0) {
          m_at += 2;
          code = 0x10000 + ((code - 0xd800) << 10) + ((hex() - 0xdc00) & 0x3ff);
        }
        appendUtf8(made, code);
        continue;
      }
      const char* at = kEscapes;
      while (*at && *at != c) at += 2;
      if (!*at) fail();
      made += at[1];
    }
    if (m_at == m_text.size()) fail();
    ++m_at;
    return made;
  }

  const std::string& m_text;
  std::size_t m_at = 0;
};

}  // namespace

std::string jsonText(const std::string& text) {
  std::string line = "\"";
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = characterAt(text, at).length;
    const auto byte = static_cast<unsigned char>(text[at]);
    if (length == 0) {
      line += "\xef\xbf\xbd";  // stands for what is no character
      ++at;
      continue;
    }
    if (byte == '"' || byte == '\\') {
      line += std::string("\\") + text[at];
    } else if (byte < 0x20 || byte == 0x7f) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(byte));
      line += escape;
    } else {
      line.append(text, at, length);
    }
    at += length;
  }
  return line + "\"";
}

std::string jsonText(const std::vector<std::string>& texts) {
  std::string line = "[";
  for (const std::string& text : texts) line += (line.size() > 1 ? "," : "") + jsonText(text);
  return line + "]";
}

const Json* Json::member(const char* name) const {
  for (const auto& [key, value] : members) {
    if (key == name) return &value;
  }
  return nullptr;
}

Json parseJson(const std::string& text) { return Parser(text).whole(); }

}  // namespace vorn_testing::recording
