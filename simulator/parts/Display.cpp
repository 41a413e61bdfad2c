#include "Display.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vorn_speaker {

namespace {

/// How many bytes the UTF-8 character at `at` has; 0 when the bytes are none.
std::size_t characterLength(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(i < text.size() ? text[i] : 0); };
  const unsigned char first = byte(at);
  const std::size_t length = first < 0x80                    ? 1
                             : first >= 0xc2 && first < 0xe0 ? 2
                             : first >= 0xe0 && first < 0xf0 ? 3
                             : first >= 0xf0 && first < 0xf5 ? 4
                                                             : 0;
  for (std::size_t i = 1; i < length; ++i)
    if ((byte(at + i) & 0xc0) != 0x80) return 0;
  return length;
}

std::size_t columns(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; }));
}

/// Breaks at blanks where it can, and anywhere where it must.
std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
  std::vector<std::string> lines;
  std::string line;
  std::size_t at = 0;
  const auto end = [&] { lines.push_back(std::exchange(line, std::string())); };
  while (at < text.size()) {
    if (text[at] == '\n') {
      end();
      ++at;
      continue;
    }
    std::string word;
    while (at < text.size() && text[at] != '\n' && (word.empty() || word.back() != ' ')) {
      const std::size_t n = characterLength(text, at);
      word += text.substr(at, n);
      at += n;
      if (columns(word) == width) break;
    }
    const std::size_t used = columns(word) - (word.back() == ' ' ? 1 : 0);
    if (columns(line) + used > width) end();
    line += word;
  }
  end();
  for (std::string& done : lines)
    while (!done.empty() && done.back() == ' ') done.pop_back();
  return lines;
}

std::string field(const nlohmann::json& card, const char* name) {
  const auto found = card.find(name);
  if (found == card.end()) return "";
  return Display::harmless(found->is_string() ? found->get<std::string>() : found->dump());
}

}  // namespace

Display::Display(std::ostream& out, bool colour, std::size_t width)
    : m_out(out), m_colour(colour), m_width(std::max<std::size_t>(width, 20)) {}

std::string Display::harmless(const std::string& text) {
  static const char kHex[] = "0123456789abcdef";
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const std::size_t length = characterLength(text, at);
    const bool control = (byte < 0x20 && byte != '\n') || byte == 0x7f ||
                         (byte == 0xc2 && length == 2 && static_cast<unsigned char>(text[at + 1]) < 0xa0);
    if (length == 0 || control) {
      for (std::size_t i = 0; i < std::max<std::size_t>(length, 1); ++i, ++at) {
        const auto code = static_cast<unsigned char>(text[at]);
        result += std::string("\\x") + kHex[code >> 4] + kHex[code & 15];
      }
    } else {
      result += text.substr(at, length);
      at += length;
    }
  }
  return result;
}

std::string Display::paint(int colour, const std::string& text) const {
  return m_colour ? "\x1b[38;5;" + std::to_string(colour) + "m" + text + "\x1b[0m" : text;
}

void Display::frame(const std::string& title, const std::vector<std::string>& lines) {
  const std::size_t inner = m_width - 4;
  std::string top = title.empty() ? "" : " " + wrapped(title, inner - 2).front() + " ";
  const std::size_t shown = columns(top);
  for (std::size_t i = shown; i < inner + 2; ++i) top += "─";
  std::string bottom;
  for (std::size_t i = 0; i < inner + 2; ++i) bottom += "─";
  m_out << "┌" << top << "┐\n";
  for (const std::string& text : lines)
    for (const std::string& line : wrapped(text, inner))
      m_out << "│ " << line << std::string(inner - columns(line), ' ') << " │\n";
  m_out << "└" << bottom << "┘\n" << std::flush;
}

void Display::card(const std::string& document) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_shown = true;
  const nlohmann::json card = nlohmann::json::parse(document, nullptr, false);
  std::vector<std::string> lines;
  std::string title = "card";
  if (card.is_object()) {
    if (card.contains("title")) title = field(card, "title");
    for (const char* name : {"subtitle", "text"})
      if (card.contains(name)) lines.push_back(field(card, name));
    if (card.contains("list") && card["list"].is_array()) {
      int number = 0;
      for (const auto& item : card["list"])
        lines.push_back(std::to_string(++number) + ". " +
                        harmless(item.is_string() ? item.get<std::string>() : item.dump()));
    }
    if (card.contains("image")) lines.push_back("[image: " + field(card, "image") + "]");
  }
  if (lines.empty()) lines.push_back(harmless(document));
  frame(title, lines);
}

bool Display::clear() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (!std::exchange(m_shown, false)) return false;
  m_out << "(the card is gone)\n" << std::flush;
  return true;
}

void Display::ring(const std::vector<std::string>& animations) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const std::string& name : animations) {
    // A colour and a pattern for each name, the same in every run.
    unsigned sum = 2166136261U;
    for (const char c : name) sum = (sum ^ static_cast<unsigned char>(c)) * 16777619U;
    const int colour = 20 + static_cast<int>(sum % 200);
    std::string ring;
    for (unsigned led = 0; led < 12; ++led)
      ring += paint(colour, (sum >> led & 1U) != 0 || led % 6 == 0 ? "●" : "○");
    m_out << "( " << ring << " )  " << harmless(name) << "\n";
  }
  if (animations.empty()) m_out << "( ············ )  lights off\n";
  m_out << std::flush;
}

void Display::linking(const std::string& address, const std::string& code, long long seconds) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<std::string> lines = {"Go to     " + harmless(address), "and enter " + harmless(code)};
  if (seconds > 0) lines.push_back("The code is good for " + std::to_string(seconds) + " s.");
  lines.push_back("Waiting ...");
  frame("Set up your speaker", lines);
}

void Display::authorization(const std::string& status) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  frame("Set up your speaker", {status == "AUTHORIZED"     ? "Linked."
                                : status == "UNAUTHORIZED" ? "Not linked."
                                : status == "cancelled"    ? "Cancelled."
                                                           : "Status: " + harmless(status)});
}

void Display::call(const std::string& state) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  frame("Call", {state == "RINGING" ? "Ringing ..." : harmless(state)});
}

}  // namespace vorn_speaker
