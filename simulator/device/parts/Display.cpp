#include "Display.h"

#include <vorn_testing/Text.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vorn_speaker {

using vorn_testing::Character;
using vorn_testing::characterAt;
using vorn_testing::harmless;

namespace {

// No card is nested as deep; writing one that is would take the whole stack.
constexpr int kDeepest = 32;
constexpr std::size_t kMostRings = 32;

struct Range {
  char32_t first;
  char32_t last;
};

template <std::size_t N>
bool within(const Range (&ranges)[N], char32_t code) {
  return std::any_of(ranges, ranges + N,
                     [&](Range range) { return code >= range.first && code <= range.last; });
}

/// How many columns a terminal gives a character: none to marks on another, two to the wide ones.
std::size_t columns(char32_t code) {
  constexpr Range kMarks[] = {{0x300, 0x36f}, {0x200b, 0x200d}, {0x20d0, 0x20ff}, {0xfe00, 0xfe0f}};
  constexpr Range kWide[] = {{0x1100, 0x115f},   {0x2e80, 0x303e},   {0x3041, 0xa4cf},   {0xac00, 0xd7a3},
                             {0xf900, 0xfaff},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},   {0xffe0, 0xffe6},
                             {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff}, {0x20000, 0x3fffd}};
  return within(kMarks, code) ? 0 : within(kWide, code) ? 2 : 1;
}

std::size_t columns(const std::string& text) {
  std::size_t sum = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Character next = characterAt(text, at);
    sum += columns(next.code);
    at += next.length;
  }
  return sum;
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
      const Character next = characterAt(text, at);
      if (columns(word) + columns(next.code) > width) break;
      word += text.substr(at, next.length);
      at += next.length;
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
  return harmless(found->is_string() ? found->get<std::string>() : found->dump());
}

}  // namespace

Display::Display(std::ostream& out, bool colour, std::size_t width)
    : m_out(out), m_colour(colour), m_width(std::max<std::size_t>(width, 20)) {}

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
  bool tooDeep = false;
  const auto measure = [&](int depth, nlohmann::json::parse_event_t, const nlohmann::json&) {
    tooDeep = tooDeep || depth > kDeepest;
    return !tooDeep;
  };
  nlohmann::json card = nlohmann::json::parse(document, measure, false);
  if (tooDeep) card = nullptr;
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
    if (&name == &animations[0] + kMostRings) {
      m_out << "and " << animations.size() - kMostRings << " more\n";
      break;
    }
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
