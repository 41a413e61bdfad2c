#pragma once

#include <sys/mman.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace vorn_capture {

/// What a record in a ring holds.
enum class Kind : std::uint32_t {
  kSkip,   ///< Nothing: the rest of the ring, up to its end.
  kBegin,  ///< A call began: Begin, then its arguments.
  kEnd,    ///< A call returned: End, then its result, what it wrote, its exception.
  kSound,  ///< Audio was handed up: Sound, then the samples when they are asked for.
};

struct Head {
  Kind kind;
  std::uint32_t size;  ///< With the head, a multiple of eight.
};

struct Begin {
  Head head;
  std::uint64_t number;
  std::int64_t time;  ///< Nanoseconds, as all times.
  std::uint32_t function;
  std::uint32_t inside;
  std::uint32_t arguments;
  std::uint32_t unused;
};

/// Whether the other side was reached.
enum class Reached : std::uint8_t { kUnknown, kNo, kYes };

struct End {
  Head head;
  std::uint64_t begun;   ///< The number in its Begin.
  std::uint64_t number;  ///< The number that it has in the recording.
  std::int64_t time;
  std::int64_t arrived;  ///< When the other side was reached; 0 when that is not known.
  std::int64_t left;     ///< When the other side was done; 0 as well.
  std::int64_t
      locked;  ///< When the lock was had, on a way on which that is not when the other side was reached; or 0.
  std::uint32_t written;
  Reached reached;
  bool threw;
  bool answers;  ///< Whether a result follows.
  bool lost;     ///< Whether there was no room for more than this: the call is left out.
};

struct Sound {
  Head head;
  std::int64_t time;
  std::uint64_t squares;
  std::uint32_t samples;
  std::uint32_t peak;
  std::uint32_t kept;  ///< Whether the samples follow.
  std::uint32_t unused;
};

/// Records of one thread on their way to the writer: one side puts, the other takes, neither waits.
class Ring {
 public:
  /// `bytes` is borrowed; `size` is a power of two.
  Ring(char* bytes, std::size_t size) : m_bytes(bytes), m_size(size) {}

  /// Room for a record of at most `most` bytes, in one piece, with `beside` left free, or null. Nothing is handed over
  /// before commit().
  char* reserve(std::size_t most, std::size_t beside) {
    const std::size_t head = m_head.load(std::memory_order_relaxed);
    const std::size_t free = m_size - (head - m_tail.load(std::memory_order_acquire));
    const std::size_t toEnd = m_size - (head & (m_size - 1));
    m_skipped = most > toEnd ? toEnd : 0;
    if (most + m_skipped + beside > free) return nullptr;
    return m_bytes + ((head + m_skipped) & (m_size - 1));
  }

  /// Hands over the record that was made there, which says its size.
  void commit(std::size_t size) {
    const std::size_t head = m_head.load(std::memory_order_relaxed);
    if (m_skipped) {
      const Head skip = {Kind::kSkip, static_cast<std::uint32_t>(m_skipped)};
      std::memcpy(m_bytes + (head & (m_size - 1)), &skip, sizeof skip);
    }
    m_head.store(head + m_skipped + size, std::memory_order_release);
  }

  /// Whether the writer should not wait any longer.
  bool isHalfFull() const {
    return m_head.load(std::memory_order_relaxed) - m_tail.load(std::memory_order_relaxed) > m_size / 2;
  }

  /// How far it is written.
  std::size_t head() const { return m_head.load(std::memory_order_acquire); }

  /// The next record before `head`, or null; it stays until pass().
  const char* front(std::size_t head) const {
    const std::size_t tail = m_tail.load(std::memory_order_relaxed);
    return tail == head ? nullptr : m_bytes + (tail & (m_size - 1));
  }

  void pass(std::size_t size) {
    m_tail.store(m_tail.load(std::memory_order_relaxed) + size, std::memory_order_release);
  }

 private:
  char* const m_bytes;
  const std::size_t m_size;
  std::size_t m_skipped = 0;
  alignas(64) std::atomic<std::size_t> m_head{0};
  alignas(64) std::atomic<std::size_t> m_tail{0};
};

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
