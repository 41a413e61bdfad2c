#include "Masker.h"

#include <sys/mman.h>
#include <vorn_testing/Escapes.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>

namespace vorn_capture {

namespace masking = vorn_testing::masking;

/// The words as a table: a state is how much of which word was read, and the next letter leads to the next state.
struct SecretWords {
  static constexpr std::size_t kMost = 200;

  enum : std::uint8_t {
    kNothing = 0,
    kRare = 1,
    kOther = 2,
    kFirst = 3
  };  // What stands between words, and such that may begin an escape or a mask; a digit; the letters.

  std::uint8_t kinds[256] = {};
  std::uint8_t next[kMost][kFirst + 26] = {};

  SecretWords() {
    for (int c = 0; c < 128; ++c)
      kinds[c] = c == '*' || masking::beginsEscape(static_cast<char>(c)) ? kRare : kNothing;
    for (int c = '0'; c <= '9'; ++c) kinds[c] = kOther;
    for (int c = 0; c < 26; ++c) kinds['a' + c] = kinds['A' + c] = static_cast<std::uint8_t>(kFirst + c);
    std::uint8_t fallback[kMost] = {};
    std::size_t used = 1;
    for (const char* word : vorn_testing::kSecretWords) {
      std::size_t state = 0;
      for (; *word && state != SecretSearch::kFound; ++word) {
        std::uint8_t& to = next[state][kinds[static_cast<unsigned char>(*word)]];
        if (!word[1])
          to = SecretSearch::kFound;
        else if (to == 0)
          to = static_cast<std::uint8_t>(used++);
        state = to;
      }
    }
    // A state numbered lower is never longer, but not the other way round: by length.
    std::uint8_t order[kMost] = {};
    std::size_t taken = 0, known = 1;
    for (; taken < known; ++taken) {
      const std::size_t state = order[taken];
      for (std::size_t letter = kOther; letter < kFirst + 26; ++letter) {
        std::uint8_t& to = next[state][letter];
        const std::uint8_t instead = state ? next[fallback[state]][letter] : std::uint8_t{0};
        if (to == 0 || instead == SecretSearch::kFound) {
          to = instead;
        } else if (to != SecretSearch::kFound) {
          fallback[to] = instead;
          order[known++] = to;
        }
      }
    }
    for (std::size_t state = 0; state < used; ++state)
      next[state][kNothing] = next[state][kRare] = static_cast<std::uint8_t>(state);
  }
};

namespace {

const SecretWords& words() {
  static const SecretWords made;
  return made;
}

constexpr std::uint64_t kBase = 0x9E3779B97F4A7C15;
constexpr std::size_t kValues = 4096;
constexpr std::size_t kLengths = 64;

// What is here is only added to: who reads an old state masks what was known then.
std::atomic<std::uint64_t> values[kValues];
std::atomic<std::size_t> lengths[kLengths];
std::atomic<std::size_t> valueCount{0};
std::atomic<bool> isFull{false};

std::uint64_t mixed(std::uint64_t hash, std::size_t size) {
  hash ^= size * 0xC2B2AE3D27D4EB4F;
  hash ^= hash >> 29;
  hash *= kBase;
  hash ^= hash >> 32;
  return hash | 1;  // 0 is an empty place.
}

bool isIn(std::uint64_t value) {
  for (std::size_t i = 0; i < kValues; ++i) {
    const std::uint64_t found = values[(value + i) % kValues].load(std::memory_order_relaxed);
    if (found == value) return true;
    if (found == 0) return false;
  }
  return false;
}

std::uint64_t hashOf(const char* text, std::size_t size) {
  std::uint64_t hash = 0;
  for (std::size_t i = 0; i < size; ++i) hash = hash * kBase + static_cast<unsigned char>(text[i]) + 1;
  return hash;
}

bool holdsOne(const char* text, std::size_t size, std::size_t length) {
  std::uint64_t highest = 1;
  for (std::size_t i = 1; i < length; ++i) highest *= kBase;
  std::uint64_t hash = hashOf(text, length);
  for (std::size_t at = 0;; ++at) {
    if (isIn(mixed(hash, length))) return true;
    if (at + length == size) return false;
    hash -= highest * (static_cast<unsigned char>(text[at]) + std::uint64_t{1});
    hash = hash * kBase + static_cast<unsigned char>(text[at + length]) + 1;
  }
}

bool holdsAny(const char* text, std::size_t size) {
  for (const auto& each : lengths) {
    const std::size_t length = each.load(std::memory_order_acquire);
    if (length == 0) return false;
    if (length <= size && holdsOne(text, size, length)) return true;
  }
  return false;
}

void addOne(const char* text, std::size_t size) {
  if (size < known::kShortest) return;
  const std::uint64_t value = mixed(hashOf(text, size), size);
  if (isIn(value)) return;
  bool kept = false;
  for (std::size_t i = 0; i < kLengths && !kept; ++i) {
    std::size_t length = lengths[i].load();
    kept =
        length == size || (length == 0 && lengths[i].compare_exchange_strong(length, size)) || length == size;
  }
  // Half empty, so that a look for what is not there is short.
  if (!kept || valueCount.fetch_add(1) >= kValues / 2) {
    isFull = true;
    return;
  }
  for (std::size_t i = 0; i < kValues; ++i) {
    std::uint64_t found = 0;
    if (values[(value + i) % kValues].compare_exchange_strong(found, value) || found == value) return;
  }
}

/// A copy of a text whose escapes are taken off, in memory that does not come from the program.
class Plain {
 public:
  Plain(const char* text, std::size_t size) : m_size(size), m_room(size) {
    if (size > sizeof m_short) {
      void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      m_text = memory == MAP_FAILED ? nullptr : static_cast<char*>(memory);
    }
    if (m_text) std::memcpy(m_text, text, size);
  }
  ~Plain() {
    if (m_text && m_text != m_short) munmap(m_text, m_room);
  }

  Plain(const Plain&) = delete;
  Plain& operator=(const Plain&) = delete;

  const char* text() const { return m_text; }  ///< Null when there is no memory.
  std::size_t size() const { return m_size; }

  /// @returns  Whether there was one.
  bool takeEscapesOff() {
    const std::size_t before = m_size;
    m_size = vorn_testing::unescape(m_text, before);
    return m_size != before;
  }

 private:
  char m_short[2048];
  char* m_text = m_short;
  std::size_t m_size;
  const std::size_t m_room;
};

}  // namespace

void SecretSearch::add(const char* text, std::size_t size) {
  static const SecretWords& table = words();
  Level& plain = m_levels[0];
  std::size_t at = 0;
  if (!plain.escaped && m_stars == 0) {
    std::uint8_t state = plain.state;
    for (; at < size && state != kFound; ++at) {
      const std::uint8_t kind = table.kinds[static_cast<unsigned char>(text[at])];
      if (kind == SecretWords::kRare) break;
      state = table.next[state][kind];
    }
    plain.state = state;
    if (state == kFound) return;
  }
  for (; at < size; ++at) {
    take(0, text[at]);
    m_stars = text[at] == '*' ? static_cast<std::uint8_t>(m_stars + 1) : std::uint8_t{0};
    m_masked = m_masked || m_stars == sizeof vorn_testing::kMask - 1;
  }
}

inline void SecretSearch::take(int level, char c) {
  static const SecretWords& table = words();
  Level& here = m_levels[level];
  if (here.state != kFound) here.state = table.next[here.state][table.kinds[static_cast<unsigned char>(c)]];
  const bool begins = masking::beginsEscape(c);
  if (level == masking::kMostEscaped || (!begins && !here.escaped)) return;
  if (!here.escaped) m_levels[level + 1].state = here.state;
  here.escaped = true;
  if (!begins && here.held == 0) return take(level + 1, c);
  here.begun[here.held++] = c;
  if (here.held == sizeof here.begun) decide(level);
}

/// Hands on what is held up to where the next escape may begin.
void SecretSearch::decide(int level) {
  Level& here = m_levels[level];
  do {
    char meant = here.begun[0];
    const std::size_t escape = masking::escape(here.begun, here.held, meant), length = escape ? escape : 1;
    here.held = static_cast<std::uint8_t>(here.held - length);
    std::memmove(here.begun, here.begun + length, here.held);
    take(level + 1, meant);
  } while (here.held > 0 && (here.held == sizeof here.begun || !masking::beginsEscape(here.begun[0])));
}

bool SecretSearch::found() const {
  if (!m_levels[0].escaped) return m_masked || m_levels[0].state == kFound;
  SecretSearch ended = *this;
  for (int level = 0; level < masking::kMostEscaped; ++level) {
    while (ended.m_levels[level].held > 0) ended.decide(level);
  }
  return m_masked || std::any_of(std::begin(ended.m_levels), std::end(ended.m_levels),
                                 [](const Level& level) { return level.state == kFound; });
}

namespace known {

void add(const char* text, std::size_t size) {
  addOne(text, size);
  for (const char *part = text, *const last = text + size; part != last;) {
    const char* const end = std::find_if(part, last, masking::endsPart);
    addOne(part, static_cast<std::size_t>(end - part));
    part = end == last ? last : end + 1;
  }
  if (std::none_of(text, text + size, masking::beginsEscape)) return;
  // It may come up as one that holds it has it after its own escapes are taken off.
  Plain plain(text, size);
  for (int again = 0; plain.text() && again < masking::kMostEscaped && plain.takeEscapesOff(); ++again)
    addOne(plain.text(), plain.size());
}

bool any() { return lengths[0].load(std::memory_order_relaxed) != 0; }

bool in(const char* text, std::size_t size) {
  if (size < kShortest) return false;
  if (isFull.load(std::memory_order_relaxed)) return true;  // What cannot be known is taken for one.
  if (holdsAny(text, size)) return true;
  if (!any() || std::none_of(text, text + size, masking::beginsEscape)) return false;
  Plain plain(text, size);
  if (!plain.text()) return true;
  for (int again = 0; again < masking::kMostEscaped && plain.takeEscapesOff(); ++again) {
    if (holdsAny(plain.text(), plain.size())) return true;
  }
  return false;
}

}  // namespace known

ParameterName parameterName(const std::string& name) {
  ParameterName told;
  told.secret = vorn_testing::isSecretName(name);
  told.key = name == "key" || name == "keys";
  told.keys = name == "keys";
  return told;
}

}  // namespace vorn_capture
