#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace vorn_speaker {

/// The lines that pages are told, the newest of them: how much is kept is bounded, so every reader has a place of its own
/// in it and a slow one is told how many it missed. May be used from any thread.
class Stream {
 public:
  /// Keeps so many bytes at most, and the newest line in any case.
  explicit Stream(std::size_t most) : m_most(most) {}

  /// Runs after each line, without a lock; before the first.
  void onLine(std::function<void()> hook) { m_onLine = std::move(hook); }

  void push(std::string line);

  /// Forgets what there was: something new begins.
  void restart();

  /// Appends lines from the place on, up to about `most` bytes, and moves the place; false when there is none yet. Each line
  /// stands as `prefix` and a line feed around it make it. Whoever begins late or was too slow first gets the last call of
  /// every operation that is gone, as {"earlier":CALL}, and how many lines it missed, as {"missed":N}.
  bool read(std::uint64_t& place, std::size_t most, const std::string& prefix, std::string& out) const;

 private:
  void forgetFirst();

  const std::size_t m_most;
  std::function<void()> m_onLine;
  mutable std::mutex m_mutex;
  std::deque<std::string> m_lines;
  std::uint64_t m_first = 1;  ///< The number of the first line that is kept.
  std::uint64_t m_began = 1;  ///< The number of the first line since the restart.
  std::size_t m_bytes = 0;
  std::map<std::string, std::string> m_gone;  ///< By operation, its last call among the lines that are gone.
};

}  // namespace vorn_speaker
