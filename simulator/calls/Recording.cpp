#include "Recording.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace vorn_speaker {

using Json = nlohmann::ordered_json;

namespace {

constexpr char kFormat[] = "vorn-speaker";

std::string line(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

Crossing fromJson(const Json& json) {
  Crossing call{};
  call.number = json.at("call");
  call.began = std::chrono::microseconds(json.at("time").get<std::int64_t>());
  call.took = std::chrono::microseconds(json.at("duration").get<std::int64_t>());
  call.thread = json.at("thread");
  call.down = json.at("direction") == "down";
  call.adapter = json.at("adapter");
  call.operation = json.at("operation");
  call.target = json.at("interface");
  call.slot = json.at("slot");
  call.depth = json.at("inside");
  call.spelled = json.at("arguments").get<std::vector<std::string>>();
  call.arguments = call.spelled;
  call.result = json.at("result");
  call.written = json.at("written").get<std::vector<std::string>>();
  const Json& exception = json.at("exception");
  call.threw = !exception.is_null();
  if (call.threw) call.exception = exception;
  return call;
}

}  // namespace

Recording::Recording(const std::string& path) : m_file(path, std::ios::trunc) {
  m_file << line({{"recording", kFormat}, {"version", kVersion}}) << '\n';
  if (!m_file.flush()) throw std::runtime_error(path + ": cannot be written");
}

void Recording::ended(const Crossing& call) {
  m_file << line({{"call", call.number},
                  {"time", call.began.count()},
                  {"duration", call.took.count()},
                  {"thread", call.thread},
                  {"direction", call.down ? "down" : "up"},
                  {"adapter", call.adapter},
                  {"operation", call.operation},
                  {"interface", call.target},
                  {"slot", call.slot},
                  {"inside", call.depth},
                  {"arguments", call.spelled},
                  {"result", call.result},
                  {"written", call.written},
                  {"exception", call.threw ? Json(call.exception) : Json(nullptr)}})
         << std::endl;
}

std::vector<Crossing> Recording::read(const std::string& path) {
  std::ifstream file(path);
  std::vector<Crossing> calls;
  std::size_t number = 0;
  for (std::string text; std::getline(file, text);) {
    ++number;
    const std::string place = path + ":" + std::to_string(number) + ": ";
    try {
      const Json json = Json::parse(text);
      if (number > 1) {
        calls.push_back(fromJson(json));
      } else if (json.at("recording") != kFormat || json.at("version") != kVersion) {
        throw std::runtime_error(place + "expected a recording of version " + std::to_string(kVersion));
      }
    } catch (const Json::exception& error) {
      throw std::runtime_error(place + "expected a line of a recording: " + error.what());
    }
  }
  if (number == 0) throw std::runtime_error(path + ": expected a recording, found nothing to read");
  std::sort(calls.begin(), calls.end(),
            [](const Crossing& left, const Crossing& right) { return left.number < right.number; });
  return calls;
}

}  // namespace vorn_speaker
