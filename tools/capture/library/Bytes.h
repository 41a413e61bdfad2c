#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

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
  void add(long long number) {
    char digits[24];
    add(std::string_view(digits,
                         static_cast<std::size_t>(std::snprintf(digits, sizeof digits, "%lld", number))));
  }
  void fill(char c, std::size_t count) {
    if (!hasRoom(count)) return;
    std::memset(m_data + m_size, c, count);
    m_size += count;
  }

 private:
  bool hasRoom(std::size_t more) {
    if (m_size + more <= m_capacity) return true;
    std::size_t wanted = m_capacity ? m_capacity : 65536;
    while (wanted < m_size + more) wanted *= 2;
    void* const memory =
        m_data ? mremap(m_data, m_capacity, wanted, MREMAP_MAYMOVE)
               : mmap(nullptr, wanted, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return false;
    m_data = static_cast<char*>(memory);
    m_capacity = wanted;
    return true;
  }

  char* m_data = nullptr;
  std::size_t m_size = 0;
  std::size_t m_capacity = 0;
};

/// Begins of calls that have not returned, one behind the other, each with its size behind it.
class Pending {
 public:
  void push(const char* begin, std::uint32_t size) {
    m_bytes.add(std::string_view(begin, size));
    m_bytes.add(std::string_view(reinterpret_cast<const char*>(&size), sizeof size));
    m_bytes.fill(0, 4);
  }

  /// The last, or null.
  const char* last() {
    if (m_bytes.size() == 0) return nullptr;
    std::uint32_t size;
    std::memcpy(&size, m_bytes.data() + m_bytes.size() - 8, sizeof size);
    return m_bytes.data() + m_bytes.size() - 8 - size;
  }

  void pop() { m_bytes.cut(static_cast<std::size_t>(last() - m_bytes.data())); }

  template <class Do>
  void each(Do each) {
    for (std::size_t end = m_bytes.size(); end > 0;) {
      std::uint32_t size;
      std::memcpy(&size, m_bytes.data() + end - 8, sizeof size);
      end -= 8 + size;
      each(m_bytes.data() + end);
    }
  }

 private:
  Bytes m_bytes;
};

}  // namespace vorn_capture
