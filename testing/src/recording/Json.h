#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorn_testing::recording {

/// A text as JSON; bytes that are no UTF-8 are lost.
std::string jsonText(const std::string& text);
std::string jsonText(const std::vector<std::string>& texts);

/// A value that was read.
struct Json {
  enum Kind { kNull, kWord, kText, kList, kObject };

  Kind kind = kNull;
  std::string text;  ///< Of a text; a number, true and false as they stand there.
  std::vector<Json> items;
  std::vector<std::pair<std::string, Json>> members;

  /// Null when there is none.
  const Json* member(const char* name) const;
};

struct NoJson : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// Reads one value, which is not nested deeper than a recording needs. @throws NoJson
Json parseJson(const std::string& text);

}  // namespace vorn_testing::recording
