#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

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

  /// The next record, or null; it stays until pass().
  const char* front() const {
    const std::size_t tail = m_tail.load(std::memory_order_relaxed);
    return tail == m_head.load(std::memory_order_acquire) ? nullptr : m_bytes + (tail & (m_size - 1));
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

}  // namespace vorn_capture
