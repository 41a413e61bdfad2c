#include "TraceLine.h"

#include <cctype>
#include <regex>

namespace vorn_log {

namespace {

bool has(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::string meaning(const TraceLine& line) {
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

TraceLine parse(const std::string& text) {
  TraceLine line{text, "?", "", ""};
  // The first qualified name that is followed by a parenthesis: result types have none.
  static const std::regex signature("VornDeviceAbstractionLayer::(Vorn\\w+)::(\\w+)\\(");
  static const std::regex factory("^VornMediaPlayerFactory::(createDalMediaPlayer) ");
  std::smatch found;
  const std::string head = text.substr(0, 600);
  if (text.compare(0, 18, "receiveAppMessage(") == 0) {
    line.adapter = "VornAppMessaging";
    line.operation = "SendMessageToxApp";
  } else if (std::regex_search(head, found, factory)) {
    line.adapter = "VornMediaPlayerFactory";
    line.operation = found[1];
  } else if (std::regex_search(head, found, signature)) {
    line.adapter = found[1];
    line.operation = found[2];
  }
  line.meaning = meaning(line);
  return line;
}

std::string masked(const std::string& text) {
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

std::string shape(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c)))
      result += c;
    else if (result.empty() || result.back() != '#')
      result += '#';
  }
  return result;
}

}  // namespace vorn_log
