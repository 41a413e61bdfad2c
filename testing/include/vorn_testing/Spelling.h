#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vorn_testing {

/// Values as scenarios and recordings hold them: on one line, a blank or a bracket within them in quotes, what is no text
/// escaped. Whoever reads the spelling gets the value again.
std::string spell(const std::string& value);
std::string spell(bool value);
std::string spell(int value);
std::string spell(std::int64_t value);
std::string spell(double value);
std::string spell(std::chrono::milliseconds value);
std::string spell(const std::vector<std::string>& values);
std::string spell(const std::vector<short>& samples);
std::string spell(const std::map<std::string, std::string>& entries);

}  // namespace vorn_testing
