#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstring>
#include <string_view>

#include "Calls.h"

namespace vorn_capture {

/// Bytes that grow, outside the program's heap: the writer must not wait for a lock that a crashed thread holds.
class Bytes {
 public:
  Bytes() = default;
  ~Bytes() {
    if (m_data) munmap(m_data, m_capacity);
  }

  Bytes(const Bytes&) = delete;
  Bytes& operator=(const Bytes&) = delete;

  char* data() { return m_data; }
  std::size_t size() const { return m_size; }
  std::string_view text() const { return {m_data, m_size}; }
  void cut(std::size_t size) { m_size = size; }

  void add(std::string_view text) {
    if (!hasRoom(text.size())) return;
    std::memcpy(m_data + m_size, text.data(), text.size());
    m_size += text.size();
  }
  void add(char c) { add(std::string_view(&c, 1)); }
  void add(long long number);
  void fill(char c, std::size_t count) {
    if (!hasRoom(count)) return;
    std::memset(m_data + m_size, c, count);
    m_size += count;
  }

 private:
  bool hasRoom(std::size_t more);

  char* m_data = nullptr;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
};

/// A call that has not returned, or a call: one line of a recording, without its end.
struct Line {
  const Function& function;
  const char* thread;
  std::uint32_t threadNumber;
  std::int64_t start;  ///< When the recording began.
};

void renderOpen(Bytes& line, const Line& about, const char* begin);
void renderCall(Bytes& line, const Line& about, const char* begin, const char* end);

/// A text in quotes.
void quote(Bytes& line, std::string_view text);

}  // namespace vorn_capture
