#pragma once

#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace vorn_speaker {

/// The speaker's face in a terminal: cards, the LED ring, the set-up screen, a call. Drawn to one stream; may be
/// used from any thread. Texts come from outside: control characters in them are shown, never obeyed.
class Display {
 public:
  /// `colour` for terminals only; `width` in columns, at least 20.
  Display(std::ostream& out, bool colour, std::size_t width = 60);

  /// Draws a card. JSON documents with "title", "subtitle", "text", "list" or "image" are laid out, others are
  /// shown as they are.
  void card(const std::string& document);

  /// Says that the display is empty again. Returns false when no card was shown.
  bool clear();

  /// Draws the ring of 12 LEDs for each animation, in order.
  void ring(const std::vector<std::string>& animations);

  /// The set-up screen: where to go and what to type; `seconds` 0 or less: no time is shown.
  void linking(const std::string& address, const std::string& code, long long seconds);

  /// The end of set-up, or any other word on it: "AUTHORIZED", "UNAUTHORIZED", "cancelled".
  void authorization(const std::string& status);

  /// The state of a call, "RINGING", "ACTIVE" or any other text.
  void call(const std::string& state);

 private:
  /// Draws a frame around lines, which are broken at the width.
  void frame(const std::string& title, const std::vector<std::string>& lines);
  std::string paint(int colour, const std::string& text) const;

  std::ostream& m_out;
  const bool m_colour;
  const std::size_t m_width;
  std::mutex m_mutex;
  bool m_shown = false;
};

}  // namespace vorn_speaker
