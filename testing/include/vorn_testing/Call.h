#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vorn_testing {

/// One call as a double saw it.
struct Call {
  std::string target;     ///< The interface called: "VornDALImplIF", "VornEMPAdapterIF", "DeviceInfo", ...
  std::string operation;  ///< The operation's name; overloads share it.
  int slot;  ///< Its place in the interface's virtual table, counted from 1; tells overloads apart.
  std::vector<std::string> arguments;  ///< Rendered by text().
  std::vector<const void*> addresses;  ///< Where the callee found each argument (meaningful for references).
  const void* object;                  ///< The double that was called.
  std::thread::id thread;              ///< The thread that called.
  std::string result;                  ///< Rendered by text(); empty before the return and for void.
  bool threw;                          ///< Whether the call ended by an exception.
  std::string exception;  ///< Its text; "no std::exception" for any other kind, empty when none was thrown.

  /// "setSystemSetting(mode, on)": the operation and its arguments.
  std::string signature() const {
    std::string line = operation + "(";
    for (std::size_t i = 0; i < arguments.size(); ++i) line += (i ? ", " : "") + arguments[i];
    return line + ")";
  }
};

/// Values as the doubles render them: texts as they are, bools as words, durations with their unit.
inline std::string text(const std::string& value) { return value; }
inline std::string text(const char* value) { return value; }
inline std::string text(bool value) { return value ? "true" : "false"; }
inline std::string text(int value) { return std::to_string(value); }
inline std::string text(std::int64_t value) { return std::to_string(static_cast<long long>(value)); }
inline std::string text(double value) {
  char digits[64];
  std::snprintf(digits, sizeof digits, "%.17g", value);
  std::string line;
  for (const char* c = digits; *c; ++c) {
    // A point, whatever a host's locale has in its place, in one byte or more.
    const bool common = (*c >= '0' && *c <= '9') || (*c >= 'a' && *c <= 'z') || *c == '-' || *c == '+';
    if (common)
      line += *c;
    else if (line.empty() || line[line.size() - 1] != '.')
      line += '.';
  }
  return line;
}
inline std::string text(std::chrono::milliseconds value) { return text(value.count()) + "ms"; }
inline std::string text(const void* value) { return value ? "object" : "null"; }
inline std::string text(const std::vector<std::string>& values) {
  std::string line = "[";
  for (std::size_t i = 0; i < values.size(); ++i) line += (i ? ", " : "") + values[i];
  return line + "]";
}
inline std::string text(const std::vector<short>& samples) {
  return "[" + std::to_string(samples.size()) + " samples]";
}
inline std::string text(const std::map<std::string, std::string>& entries) {
  std::string line = "{";
  for (std::map<std::string, std::string>::const_iterator i = entries.begin(); i != entries.end(); ++i)
    line += (i != entries.begin() ? ", " : "") + i->first + "=" + i->second;
  return line + "}";
}
inline std::string text(const std::pair<bool, std::string>& answer) {
  return text(answer.first) + (answer.second.empty() ? "" : " " + answer.second);
}

/// Builds the record of a call that has just come in on this thread. For doubles of your own.
template <class... Arguments>
Call makeCall(const char* target, const char* operation, int slot, const void* object,
              const Arguments&... arguments) {
  Call made;
  made.target = target;
  made.operation = operation;
  made.slot = slot;
  made.arguments = std::vector<std::string>{text(arguments)...};
  made.addresses = std::vector<const void*>{static_cast<const void*>(&arguments)...};
  made.object = object;
  made.thread = std::this_thread::get_id();
  made.threw = false;
  return made;
}

}  // namespace vorn_testing
