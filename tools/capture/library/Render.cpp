#include "Render.h"

#include <vorn_testing/Text.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace vorn_capture {

using vorn_testing::Direction;
using vorn_testing::Guard;

namespace {

bool isAscii(std::string_view text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  }
  return true;
}

/// Whether nothing beyond ASCII is broken or steers a terminal.
bool isClean(std::string_view text) {
  if (isAscii(text)) return true;
  const std::string value(text);
  for (std::size_t at = 0; at < value.size();) {
    const std::size_t length = vorn_testing::characterAt(value, at).length;
    if (length == 0) return false;
    const std::string character = value.substr(at, length);
    if (length > 1 && vorn_testing::harmless(character) != character) return false;
    at += length;
  }
  return true;
}

/// A text as a scenario holds it: in quotes, with escapes, where a word would not do.
void spell(Bytes& to, std::string_view text) {
  const std::size_t from = to.size();
  const bool clean = isClean(text);
  bool plain = !text.empty() && text.find_first_of(" \t\r\n\"\\#[]{},=") == std::string_view::npos;
  to.add('"');
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      to.add('\\');
      to.add(c);
    } else if (c == '\n') {
      to.add("\\n");
    } else if (byte < 0x20 || byte == 0x7f || (byte >= 0x80 && !clean)) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned>(byte));
      to.add(escape);
      plain = false;
    } else {
      to.add(c);
    }
  }
  to.add('"');
  if (!plain) return;
  to.cut(from);
  to.add(text);
}

/// In C's form, with a point whatever locale the program has set.
void addDigits(Bytes& to, const char* digits) {
  for (; *digits; ++digits)
    to.add((*digits >= '0' && *digits <= '9') || std::strchr("+-einfa", *digits) ? *digits : '.');
}

/// The shortest digits that are this number again; fixed rather than with an exponent when both are as short.
void spell(Bytes& to, double value) {
  char exponent[64] = {};
  int precision = 0;
  do {
    std::snprintf(exponent, sizeof exponent, "%.*e", precision, value);
  } while (std::strtod(exponent, nullptr) != value && ++precision < 17);
  char fixed[400] = {};
  const char* const at = std::strchr(exponent, 'e');
  const int power = at ? std::atoi(at + 1) : 0;
  if (at && std::abs(power) < 300)
    std::snprintf(fixed, sizeof fixed, "%.*f", power >= precision ? 0 : precision - power, value);
  addDigits(to, fixed[0] && std::strlen(fixed) <= std::strlen(exponent) ? fixed : exponent);
}

/// As the kit renders it.
void showReal(Bytes& to, double value) {
  char digits[64];
  std::snprintf(digits, sizeof digits, "%.17g", value);
  addDigits(to, digits);
}

template <class Value>
Value read(const char*& at) {
  Value value;
  std::memcpy(&value, at, sizeof value);
  at += sizeof value;
  return value;
}

std::string_view readItem(const char*& at) {
  const auto size = read<std::uint32_t>(at);
  const std::string_view text(at, size);
  at += size;
  return text;
}

/// One value of a ring, and moves behind it; as a scenario holds it, or as the kit renders it.
void value(Bytes& to, const char*& at, bool spelled) {
  const auto head = read<ValueHead>(at);
  const char* const end = at + head.size;
  const auto text = [&](std::string_view part) { spelled ? spell(to, part) : to.add(part); };
  switch (head.tag) {
    case Tag::kMasked:
      to.add(vorn_testing::kMask);
      break;
    case Tag::kText:
      text({at, head.size});
      break;
    case Tag::kWhole:
    case Tag::kMilliseconds: {
      const char* from = at;
      to.add(static_cast<long long>(read<std::int64_t>(from)));
      if (head.tag == Tag::kMilliseconds) to.add("ms");
      break;
    }
    case Tag::kReal: {
      const char* from = at;
      spelled ? spell(to, read<double>(from)) : showReal(to, read<double>(from));
      break;
    }
    case Tag::kFlag:
      to.add(word(*at != 0));
      break;
    case Tag::kObject:
      to.add(*at ? "object" : "null");
      break;
    case Tag::kTexts: {
      const char* from = at;
      to.add('[');
      while (from != end) {
        if (from != at) to.add(", ");
        text(readItem(from));
      }
      to.add(']');
      break;
    }
    case Tag::kEntries: {
      const char* from = at;
      to.add('{');
      while (from != end) {
        if (from != at) to.add(", ");
        text(readItem(from));
        to.add('=');
        text(readItem(from));
      }
      to.add('}');
      break;
    }
    case Tag::kAnswer: {
      const char* from = at;
      to.add(readItem(from));
      const std::string_view more = readItem(from);
      if (!more.empty()) to.add(' ');
      to.add(more);
      break;
    }
  }
  at = at + padded(head.size);
}

const char* directionOf(Direction direction) {
  switch (direction) {
    case Direction::kDown:
      return "down";
    case Direction::kUp:
      return "up";
    case Direction::kLife:
      return "life";
    default:
      return "own";
  }
}

void field(Bytes& line, const char* name) {
  line.add(",\"");
  line.add(name);
  line.add("\":");
}

void number(Bytes& line, const char* name, std::int64_t value) {
  field(line, name);
  line.add(static_cast<long long>(value));
}

void text(Bytes& line, const char* name, std::string_view value) {
  field(line, name);
  quote(line, value);
}

/// What is only quoted when it is whole; the writer alone uses it, until the process ends.
Bytes& emptied(Bytes& bytes) {
  bytes.cut(0);
  return bytes;
}
Bytes& scratch() {
  static Bytes& bytes = *new Bytes;
  return emptied(bytes);
}

void whenKnown(Bytes& line, const char* name, bool known, std::int64_t nanoseconds) {
  field(line, name);
  if (known)
    line.add(static_cast<long long>(nanoseconds / 1000));
  else
    line.add("null");
}

/// What is known when a call begins.
void begun(Bytes& line, const Line& about, const Begin& begin, std::uint64_t call, const std::int64_t* end) {
  const vorn_testing::Operation& operation = about.function.operation;
  line.add("{\"call\":");
  line.add(static_cast<long long>(call));
  number(line, "time", (begin.time - about.start) / 1000);
  if (end) number(line, "duration", (*end - begin.time) / 1000);
  text(line, "thread", about.thread);
  text(line, "direction", directionOf(operation.direction));
  text(line, "adapter", operation.adapter);
  text(line, "operation", operation.name);
  text(line, "interface", operation.target);
  number(line, "slot", operation.slot);
  number(line, "inside", begin.inside);
}

void arguments(Bytes& line, const char* at, std::uint32_t count) {
  field(line, "arguments");
  line.add('[');
  for (std::uint32_t i = 0; i < count; ++i) {
    if (i > 0) line.add(',');
    Bytes& made = scratch();
    value(made, at, true);
    quote(line, made.text());
  }
  line.add(']');
}

}  // namespace

void quote(Bytes& line, std::string_view text) {
  const bool clean = isAscii(text);
  const std::string copy = clean ? std::string() : std::string(text);
  line.add('"');
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    char escape[8];
    if (byte >= 0x80) {
      const std::size_t length = vorn_testing::characterAt(copy, at).length;
      if (length == 0) {
        line.add("\xEF\xBF\xBD");
      } else {
        line.add(text.substr(at, length));
        at += length - 1;
      }
    } else if (byte == '"' || byte == '\\') {
      line.add('\\');
      line.add(text[at]);
    } else if (byte < 0x20) {
      const char* const letter = std::strchr("b\bf\fn\nr\rt\t", byte);
      if (byte && letter)
        std::snprintf(escape, sizeof escape, "\\%c", letter[-1]);
      else
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(byte));
      line.add(escape);
    } else {
      line.add(text[at]);
    }
  }
  line.add('"');
}

void renderOpen(Bytes& line, const Line& about, const char* from) {
  const auto begin = read<Begin>(from);
  line.add("{\"open\":");
  begun(line, about, begin, begin.number, nullptr);
  arguments(line, from, begin.arguments);
  number(line, "threadNumber", about.threadNumber);
  line.add("}}");
}

void renderCall(Bytes& line, const Line& about, const char* from, const char* to) {
  const auto begin = read<Begin>(from);
  const auto end = read<End>(to);
  const vorn_testing::Operation& operation = about.function.operation;
  begun(line, about, begin, end.number, &end.time);
  arguments(line, from, begin.arguments);

  Bytes& result = scratch();
  if (end.answers) value(result, to, false);
  text(line, "result", result.text());
  static Bytes& kept = *new Bytes;
  Bytes& exception = emptied(kept);  // Its place is behind what was written.
  if (end.threw) value(exception, to, false);
  field(line, "written");
  line.add('[');
  const std::vector<std::string> names =
      end.written ? vorn_testing::parameterNames(operation) : std::vector<std::string>();
  for (std::uint32_t i = 0; i < end.written; ++i) {
    if (i > 0) line.add(',');
    Bytes& index = scratch();
    value(index, to, false);
    index.add('\0');
    const auto parameter = static_cast<std::size_t>(std::atoi(index.data()));
    Bytes& made = scratch();
    made.add(names.at(parameter));
    made.add('=');
    value(made, to, true);
    quote(line, made.text());
  }
  line.add(']');
  field(line, "exception");
  if (end.threw)
    quote(line, exception.text());
  else
    line.add("null");

  number(line, "threadNumber", about.threadNumber);
  const bool unlocked = operation.guard == Guard::kUnlocked || operation.guard == Guard::kOneThread;
  const std::int64_t had = operation.guard == Guard::kDalMutex ? end.locked : end.arrived;
  whenKnown(line, "waited", unlocked || had, unlocked ? 0 : had - begin.time);
  const bool upward = operation.direction == Direction::kUp;
  const std::int64_t left = upward && !end.left ? end.time : end.left;
  whenKnown(line, "host", end.arrived && left && end.reached != Reached::kNo, left - end.arrived);
  Reached reached = end.reached;
  if (operation.direction == Direction::kDown && reached == Reached::kUnknown && operation.target[0]) {
    if (end.arrived)
      reached = Reached::kYes;
    else if (*about.function.fronted)
      reached = Reached::kNo;
  }
  if (reached != Reached::kUnknown) {
    field(line, "reached");
    line.add(word(reached == Reached::kYes));
  }
  line.add('}');
}

}  // namespace vorn_capture
