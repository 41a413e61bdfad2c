#pragma once

#include <DeviceAbstractionLayer/CommsManagerInterface.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

namespace vorn_testing::checks {

using Texts = std::vector<std::string>;
using Entries = std::map<std::string, std::string>;
using CommsStateInfo = DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo;

/// Values as a C++ programmer writes them, on one line; what is long is cut.
std::string spelled(const std::string& text);
std::string spelled(const Texts& texts);
std::string spelled(const Entries& entries);
std::string spelled(const CommsStateInfo& info);
std::string spelled(std::chrono::milliseconds duration);
std::string spelled(bool value);
std::string spelled(double value);
std::string spelled(std::int64_t value);
inline std::string spelled(int value) { return spelled(std::int64_t{value}); }

}  // namespace vorn_testing::checks
