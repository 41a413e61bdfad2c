#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace vorn_log {

/// Cuts the bytes of the trace into records: a line that begins with " Time: " begins one, others go on with it.
/// Takes time in proportion to the bytes, and never more memory than two records of the greatest length.
class Records {
 public:
  /// How much of a record is kept; no line of the library comes near it.
  static constexpr std::size_t kLongest = 1 << 20;

  struct Record {
    std::string text;     ///< Without the " Time: " in front.
    std::size_t dropped;  ///< Bytes beyond the greatest length.
    bool unfinished;      ///< Whether its last line has no end: it was cut, or is still being written.
  };

  /// `take` gets each record and answers whether it wants more.
  explicit Records(std::function<bool(const Record&)> take) : m_take(std::move(take)) {}

  /// Adds what was read. Returns false when no more is wanted.
  bool add(const char* bytes, std::size_t size);

  /// Hands on the record at the end, when nothing more follows for now; a line without its end waits for it.
  bool flush();

  /// Hands on everything, also a line without its end: there is no more.
  bool finish();

 private:
  bool endLine();

  const std::function<bool(const Record&)> m_take;
  std::string m_line;
  std::size_t m_lineDropped = 0;
  std::string m_record;
  std::size_t m_dropped = 0;
  bool m_first = true;  ///< Whether no line has been read yet.
  bool m_open = false;  ///< Whether m_record holds one.
};

}  // namespace vorn_log
