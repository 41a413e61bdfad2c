#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace vorn_speaker {

/// Members stay in the order in which they were put.
using Json = nlohmann::ordered_json;

/// On one line; bytes that are no UTF-8 are replaced.
inline std::string dumped(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace vorn_speaker
