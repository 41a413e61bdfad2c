#include "Secrets.h"

#include <algorithm>
#include <cctype>

namespace vorn_speaker {

const char kMask[] = "********";

bool isSecretName(const std::string& name) {
  std::string lower = name;
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  for (const char* telling : {"secret", "token", "password"}) {
    if (lower.find(telling) != std::string::npos) return true;
  }
  return false;
}

std::string hideSecrets(const std::string& text) {
  if (text.size() < 2 || text.front() != '{' || text.back() != '}') return text;
  std::string shown = "{";
  const std::size_t last = text.size() - 1;
  for (std::size_t at = 1; at < last;) {
    std::size_t end = std::min(text.find(", ", at), last);
    const std::string entry = text.substr(at, end - at);
    const std::string key = entry.substr(0, entry.find('='));
    shown += key.size() < entry.size() && isSecretName(key) ? key + "=" + kMask : entry;
    if (end < last) shown += ", ";
    at = end + 2;
  }
  return shown + "}";
}

}  // namespace vorn_speaker
