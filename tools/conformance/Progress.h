#pragma once

#include <chrono>
#include <functional>
#include <ostream>
#include <string>
#include <utility>

/// A line at the foot of a terminal that tells how far a run is and how long the rest may take, once it takes longer than
/// two seconds. It makes room for what is printed meanwhile, and leaves nothing behind.
class Progress {
 public:
  using Clock = std::chrono::steady_clock;

  /// Says nothing unless `shown`: in a file it would be rubbish.
  Progress(std::ostream& out, bool shown, std::function<Clock::time_point()> now = Clock::now)
      : m_out(out), m_shown(shown), m_now(std::move(now)), m_began(m_now()) {}

  ~Progress() { clear(); }

  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// So many of all checks are done.
  void at(std::size_t done, std::size_t all) {
    const auto passed = m_now() - m_began;
    if (!m_shown || done == 0 || passed < std::chrono::seconds(2)) return;
    const auto rest = std::chrono::duration_cast<std::chrono::seconds>(
        passed / static_cast<Clock::rep>(done) * static_cast<Clock::rep>(all - done));
    std::string line =
        std::to_string(done) + " of " + std::to_string(all) + " checks, about " + said(rest) + " left";
    clear();
    m_length = line.size();
    m_out << line << std::flush;
  }

  /// Before anything else is printed.
  void clear() {
    if (m_length > 0) m_out << '\r' << std::string(m_length, ' ') << '\r' << std::flush;
    m_length = 0;
  }

 private:
  static std::string said(std::chrono::seconds time) {
    if (time < std::chrono::minutes(2)) return std::to_string(time.count()) + " s";
    return std::to_string((time.count() + 30) / 60) + " min";
  }

  std::ostream& m_out;
  const bool m_shown;
  const std::function<Clock::time_point()> m_now;
  const Clock::time_point m_began;
  std::size_t m_length = 0;
};
