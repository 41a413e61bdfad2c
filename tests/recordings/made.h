#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

/// Recordings made by hand.
namespace made {

constexpr char kHeader[] =
    "{\"recording\":\"vorn-speaker\",\"version\":2,\"program\":\"hand\",\"writer\":\"a hand\"}\n";

using Fields = std::map<std::string, std::string>;

/// A call of VornDeviceInfo.getVolume, which is answered 30, with fields changed; without those of no value.
inline std::string line(const Fields& changed = {}) {
  Fields values = {{"call", "1"},
                   {"time", "0"},
                   {"duration", "5"},
                   {"thread", "\"assistant\""},
                   {"threadNumber", "1"},
                   {"direction", "\"down\""},
                   {"adapter", "\"VornDeviceInfo\""},
                   {"operation", "\"getVolume\""},
                   {"interface", "\"VornDALImplIF\""},
                   {"slot", "13"},
                   {"inside", "0"},
                   {"arguments", "[]"},
                   {"result", "\"30\""},
                   {"written", "[]"},
                   {"exception", "null"},
                   {"waited", "null"},
                   {"host", "null"},
                   {"reached", "true"}};
  for (const auto& [name, value] : changed) values[name] = value;
  std::string json;
  for (const auto& [name, value] : values) {
    if (!value.empty()) json += (json.empty() ? "{\"" : ",\"") + name + "\":" + value;
  }
  return json + "}\n";
}

/// The same for the call of this number.
inline std::string call(int number, Fields changed = {}) {
  changed["call"] = std::to_string(number);
  changed.emplace("time", std::to_string(10 * number));
  return line(changed);
}

/// What goes up in place of it.
inline Fields volumeChanged(const Fields& changed = {}) {
  Fields fields = {{"direction", "\"up\""},         {"operation", "\"notifyVolumeChanged\""},
                   {"interface", "\"DeviceInfo\""}, {"slot", "41"},
                   {"arguments", "[\"3\"]"},        {"result", "\"\""},
                   {"thread", "\"firmware\""},      {"threadNumber", "2"}};
  for (const auto& [name, value] : changed) fields[name] = value;
  return fields;
}

/// Writes a file of the test's own /tmp and names it.
inline std::string file(const std::string& content, const std::string& name = "one") {
  std::filesystem::create_directories("/tmp/recordings");
  const std::string path = "/tmp/recordings/" + name;
  std::ofstream(path, std::ios::binary) << content;
  return path;
}

}  // namespace made
