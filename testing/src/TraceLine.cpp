#include "vorn_testing/TraceLine.h"

#include <cctype>

namespace vorn_testing {

namespace {

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// The identifier at a place, or nothing.
std::string word(const std::string& text, std::size_t at) {
  std::size_t end = at;
  while (end < text.size() && (std::isalnum(static_cast<unsigned char>(text[end])) || text[end] == '_'))
    ++end;
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
  if (text.compare(0, 18, "receiveAppMessage(") == 0) {
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
  std::string result = text;
  const char* const secrets[][2] = {{"): accessToken: ", ", userName: "},
                                    {"): playContextToken: ", ", offset: "}};
  for (const auto& secret : secrets) {
    const std::size_t begin = result.find(secret[0]);
    if (begin == std::string::npos) continue;
    const std::size_t from = begin + std::string(secret[0]).size();
    const std::size_t to = result.rfind(secret[1]);  // the last: a token may hold anything
    if (to != std::string::npos && to >= from) result.replace(from, to - from, "****");
  }
  return result;
}

std::string TraceLine::shape(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c)))
      result += c;
    else if (result.empty() || result.back() != '#')
      result += '#';
  }
  return result;
}

}  // namespace vorn_testing
