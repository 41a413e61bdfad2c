#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace vorn_capture {

/// What stands in the way of a capture, in words for its user.
struct Unfit : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The form of std::string that a library was built with.
enum class StringAbi { kUnknown, kOld, kNew };

/// What can be told of a program before it runs.
struct Program {
  std::string path;
  std::string library;  ///< The libVornDALImpl.so that it loads at its start; empty when it loads none then.
  StringAbi abi = StringAbi::kUnknown;
  std::vector<std::string> remarks;  ///< What a recording will not hold, and why.
};

/// Looks at the program that `name` finds, as a shell would. `library` is one that the program loads later by itself, or
/// empty. @throws Unfit  It cannot be captured.
Program lookAt(const std::string& name, const std::string& library);

}  // namespace vorn_capture
