#include "vorn_testing/TraceLine.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <iterator>

#include "vorn_testing/Masking.h"

namespace vorn_testing {

namespace {

constexpr char kMessage[] = "receiveAppMessage(";
constexpr char kPlayer[] = "VornMediaPlayerFactory::createDalMediaPlayer ";
constexpr char kNamespace[] = "VornDeviceAbstractionLayer::";

/// What stands before the class in a whole line; "X" is the class itself.
constexpr const char* kBefore[] = {"",
                                   "bool ",
                                   "void ",
                                   "std::string ",
                                   "std::pair<bool, std::basic_string<char> > ",
                                   "static std::shared_ptr<VornDeviceAbstractionLayer::X> "};

/// What follows the signature in a whole line: # is a number, * the texts that callers chose.
constexpr const char* kAfter[] = {"",
                                  " calling xApp API",
                                  " calling xApp API count=#",
                                  " calling AudioInHelper getInstance #",
                                  " m_instance is Null",
                                  " dalinstance is Null",
                                  " dalInstance is NULL",
                                  ": playerId: *",
                                  ": offset: #ms, playerId: *",
                                  ": accessToken: *",
                                  ": playContextToken: *"};
constexpr const char* kAfterPlayer[] = {"WARNING: returning NULLPTR", "name=*"};

/// The arguments of the trace that are secret, and what follows each: a token may hold anything, even that.
constexpr struct {
  const char* name;
  const char* next;
} kSecrets[] = {{"): accessToken: ", ", userName: "}, {"): playContextToken: ", ", offset: "}};

/// Masks from the name to the last of what follows it, and to the end when that does not fit: the line was cut, or
/// another ran into it. What follows without the name is the rest of a token, and nobody knows where it begins.
void mask(std::string& text, const std::string& name, const std::string& next) {
  const std::size_t named = text.find(name);
  const std::size_t last = text.rfind(next);
  if (named != std::string::npos) {
    const std::size_t from = named + name.size();
    const bool whole = last != std::string::npos && last >= from &&
                       text.find(name, last) == std::string::npos &&
                       text.find(kNamespace, from) == std::string::npos;
    text.replace(from, whole ? last - from : std::string::npos, kMask);
  } else if (last != std::string::npos) {
    text = kMask;
  }
}

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Whatever locale a host has set.
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWord(char c) { return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

/// The identifier at a place, or nothing.
std::string word(const std::string& text, std::size_t at) {
  std::size_t end = at;
  while (end < text.size() && isWord(text[end])) ++end;
  return text.substr(at, end - at);
}

/// Finds the first qualified name of an adapter that is followed by a parenthesis: result types have none. Returns where
/// the name begins.
std::size_t findSignature(TraceLine& line) {
  const std::string& text = line.text;
  for (std::size_t at = text.find(kNamespace); at != std::string::npos; at = text.find(kNamespace, at + 1)) {
    const std::size_t owner = at + std::strlen(kNamespace);
    const std::string adapter = word(text, owner);
    const std::size_t member = owner + adapter.size() + 2;
    if (adapter.compare(0, 4, "Vorn") != 0 || text.compare(member - 2, 2, "::") != 0) continue;
    const std::string operation = word(text, member);
    if (operation.empty() || text.compare(member + operation.size(), 1, "(") != 0) continue;
    line.adapter = adapter;
    line.operation = operation;
    return at;
  }
  return std::string::npos;
}

/// Whether the rest of a text from a place on is of that form.
bool follows(const std::string& text, std::size_t at, const char* form) {
  for (; *form; ++form) {
    if (*form == '*') return true;
    if (*form == '#') {
      const std::size_t digits = at + (text.compare(at, 1, "-") == 0 ? 1 : 0);
      for (at = digits; at < text.size() && isDigit(text[at]);) ++at;
      if (at == digits) return false;
    } else if (at == text.size() || text[at++] != *form) {
      return false;
    }
  }
  return at == text.size();
}

template <std::size_t kCount>
bool followsOne(const std::string& text, std::size_t at, const char* const (&forms)[kCount]) {
  return std::any_of(std::begin(forms), std::end(forms),
                     [&](const char* form) { return follows(text, at, form); });
}

/// Whether one of these stands before the class.
bool isBefore(const TraceLine& line, std::size_t at) {
  return std::any_of(std::begin(kBefore), std::end(kBefore), [&](std::string form) {
    const std::size_t itself = form.find('X');
    if (itself != std::string::npos) form.replace(itself, 1, line.adapter);
    return line.text.compare(0, at, form) == 0;
  });
}

/// How much of the line certainly holds no text of a caller's, which may be the rest of a torn token: all of a whole one.
std::size_t certain(const std::string& text) {
  if (text.compare(0, std::strlen(kMessage), kMessage) == 0)
    return text.back() == ')' ? text.size() : std::strlen(kMessage);
  if (text.compare(0, std::strlen(kPlayer), kPlayer) == 0)
    return followsOne(text, std::strlen(kPlayer), kAfterPlayer) ? text.size() : std::strlen(kPlayer);
  TraceLine line{text, "?", "", ""};
  const std::size_t at = findSignature(line);
  if (at == std::string::npos || !isBefore(line, at)) return 0;
  const std::size_t types = text.find('(', at) + 1, end = text.find(')', types);
  const bool whole = end != std::string::npos && followsOne(text, end + 1, kAfter) &&
                     std::all_of(text.begin() + static_cast<std::ptrdiff_t>(types),
                                 text.begin() + static_cast<std::ptrdiff_t>(end),
                                 [](char c) { return isWord(c) || (c && std::strchr(":<>,&* ", c)); });
  return whole ? text.size() : types;
}

std::string meaningOf(const TraceLine& line) {
  const std::string& text = line.text;
  if (line.adapter == "?") return "not a line of the library";
  if (line.operation == line.adapter) return "an object of the class was made";
  if (line.operation == "CreateInstance") return "the firmware asked for the adapter to be created";
  if (line.operation == "getInstance") return "somebody fetched the adapter";
  if (endsWith(text, " m_instance is Null")) return "dropped: the adapter has no instance";
  if (endsWith(text, " dalinstance is Null")) return "dropped: the assistant client has no object for it";
  if (endsWith(text, " dalInstance is NULL"))
    return "buffer dropped: the assistant client takes no audio yet";
  if (has(text, " calling AudioInHelper getInstance "))
    return "looking for who takes the audio, at the buffer of this number";
  if (has(text, " calling xApp API count=")) return "the buffer of this number is handed to the assistant";
  if (line.operation == "notifyAlexaInvocationDetected" || line.operation == "setAlexaHandsFreeState")
    return "about to be told to the host, whatever the line says of an xApp";
  if (endsWith(text, " calling xApp API")) return "about to be told to the assistant";
  if (endsWith(text, "WARNING: returning NULLPTR")) return "no such media player, and no DefaultMediaPlayer";
  if (line.adapter == "VornMediaPlayerFactory") return "a media player was asked for by this name";
  if (line.adapter == "VornAppMessaging")
    return "a message goes up to the app; commas in its texts are not marked";
  if (line.adapter == "VornEMPAdapterControl")
    return "a command for the external player arrived; the host is called if there is an instance";
  if (line.adapter == "VornDeviceCapabilities")
    return "a directive arrived; the host is called if there is an instance";
  if (line.operation == "notifyCallAction") return "a call action is handed to the assistant";
  if (line.operation == "onCommsStateChanged") return "a new state of calls is handed to the host";
  return "the operation was called";
}

}  // namespace

TraceLine TraceLine::parse(const std::string& text) {
  TraceLine line{text, "?", "", ""};
  if (text.compare(0, std::strlen(kMessage), kMessage) == 0) {
    line.adapter = "VornAppMessaging";
    line.operation = "SendMessageToxApp";
  } else if (text.compare(0, std::strlen(kPlayer), kPlayer) == 0) {
    line.adapter = "VornMediaPlayerFactory";
    line.operation = "createDalMediaPlayer";
  } else {
    findSignature(line);
  }
  line.meaning = meaningOf(line);
  return line;
}

std::string TraceLine::masked(const std::string& text) {
  const TraceLine line = parse(text);
  if (line.adapter == "?") return kMask;
  if (line.operation == "SendMessageToxApp" && isSecretText(text)) return kMessage + std::string(kMask);
  const std::size_t whole = certain(text);
  if (whole < text.size()) return text.substr(0, whole) + kMask;
  std::string result = text;
  for (const auto& secret : kSecrets) mask(result, secret.name, secret.next);
  // What stands on a line of its own may have lost its beginning; only a message shows its end.
  const std::size_t feed = line.operation == "SendMessageToxApp" ? std::string::npos : result.find('\n');
  if (feed != std::string::npos) result.replace(feed + 1, std::string::npos, kMask);
  // What callers chose may tell of a secret too.
  std::string others = result;
  for (const auto& secret : kSecrets) {
    const std::size_t named = others.find(secret.name);
    if (named != std::string::npos) others.erase(named, std::strlen(secret.name));
  }
  if (!isSecretName(others)) return result;
  const std::string name = line.adapter + "::" + line.operation;
  const std::size_t at = text.find(name);
  return at == std::string::npos ? kMask : text.substr(0, at + name.size() + 1) + kMask;
}

std::string TraceLine::shape(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (!isDigit(c))
      result += c;
    else if (result.empty() || result.back() != '#')
      result += '#';
  }
  return result;
}

std::vector<std::string> traceRecords(std::istream& trace) {
  constexpr char kPrefix[] = " Time: ";
  const std::size_t length = std::strlen(kPrefix);
  std::vector<std::string> records;
  for (std::string line; std::getline(trace, line);) {
    if (line.compare(0, length, kPrefix) == 0) {
      records.push_back(line.substr(length));
    } else if (records.empty()) {
      records.push_back(line);
    } else {
      records.back() += "\n" + line;
    }
  }
  return records;
}

}  // namespace vorn_testing
