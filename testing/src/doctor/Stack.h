#pragma once

#include <string>
#include <vector>

namespace vorn_testing {

/// Where a thread was, cheap to take and put into words only when asked.
struct Stack {
  static constexpr int kFrames = 64;  // of a build that is not optimised, where the doctor belongs
  void* frames[kFrames];
  int depth = 0;

  static Stack here();
  std::vector<std::string> lines() const;

  /// The innermost operation of the library, such as "VornDeviceInfo::getVolume()"; empty when there is none.
  std::string operation() const;
};

/// "VornDeviceAbstractionLayer::VornStorage" from the name that the compiler gave it; as it is if that fails.
std::string demangled(const char* name);

}  // namespace vorn_testing
