#include "vorn_testing/TraceLine.h"

#include <cstring>
#include <istream>

#include "vorn_testing/Masking.h"

namespace vorn_testing {

namespace {

constexpr char kMessage[] = "receiveAppMessage(";

/// The arguments of the trace that are secret: whose, and what follows each. A token may hold anything, even that.
constexpr struct Secret {
  const char* operation;
  const char* name;
  const char* next;
} kSecrets[] = {{"VornEMPAdapterControl::login(", "): accessToken: ", ", userName: "},
                {"VornEMPAdapterControl::launchAndPlay(", "): playContextToken: ", ", offset: "}};

/// Masks from the name to the last of what follows it, and to the end when that does not fit: the line was cut, or
/// another ran into it. What follows without the name is the rest of a token, and nobody knows where it begins; what stands
/// behind its operation without it may be one.
void mask(std::string& text, const Secret& secret) {
  const std::size_t named = text.find(secret.name);
  const std::size_t last = text.rfind(secret.next);
  const std::size_t owner = text.find(secret.operation);
  if (named != std::string::npos) {
    const std::size_t from = named + std::strlen(secret.name);
    const bool whole = last != std::string::npos && last >= from &&
                       text.find(secret.name, last) == std::string::npos &&
                       text.find(secret.operation, from) == std::string::npos;
    text.replace(from, whole ? last - from : std::string::npos, kMask);
  } else if (last != std::string::npos) {
    text = kMask;
  } else if (owner != std::string::npos) {
    text.replace(owner + std::strlen(secret.operation), std::string::npos, kMask);
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

/// Finds the first qualified name of an adapter that is followed by a parenthesis: result types have none.
void findSignature(TraceLine& line) {
  static const std::string kNamespace = "VornDeviceAbstractionLayer::";
  const std::string& text = line.text;
  for (std::size_t at = text.find(kNamespace); at != std::string::npos; at = text.find(kNamespace, at + 1)) {
    const std::size_t owner = at + kNamespace.size();
    const std::string adapter = word(text, owner);
    const std::size_t member = owner + adapter.size() + 2;
    if (adapter.compare(0, 4, "Vorn") != 0 || text.compare(member - 2, 2, "::") != 0) continue;
    const std::string operation = word(text, member);
    if (operation.empty() || text.compare(member + operation.size(), 1, "(") != 0) continue;
    line.adapter = adapter;
    line.operation = operation;
    return;
  }
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
  } else if (text.compare(0, 45, "VornMediaPlayerFactory::createDalMediaPlayer ") == 0) {
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
  std::string result = text;
  for (const Secret& secret : kSecrets) mask(result, secret);
  // What callers chose may tell of a secret too.
  std::string others = result;
  for (const Secret& secret : kSecrets) {
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
