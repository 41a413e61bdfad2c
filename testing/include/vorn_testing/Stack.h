#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace vorn_testing {

/// Where a thread was, cheap to take and put into words only when asked.
struct Stack {
  static constexpr int kFrames = 64;  // of a build that is not optimised, where the doctor belongs
  void* frames[kFrames];
  int depth = 0;

  /// The calling thread's. The first one of a process loads what it needs: not in a signal handler.
  static Stack here();

  /// A line for each frame, the innermost first: the function, or the file and the place in it, as addr2line takes it.
  std::vector<std::string> lines() const;

  /// The same lines for a signal handler, with names as the compiler wrote them: whole ones, from one frame to before another,
  /// into a text with so much room for it and for the NUL at its end. Returns its length.
  std::size_t spell(char* text, std::size_t room, int from = 0, int to = kFrames) const;

  /// The innermost operation of the library, such as "VornDeviceInfo::getVolume()"; empty when there is none.
  std::string operation() const;
};

/// "VornDeviceAbstractionLayer::VornStorage" from the name that the compiler gave it; as it is if that fails.
std::string demangled(const char* name);

/// The lines of a text, each demangled.
std::vector<std::string> demangledLines(const std::string& text);

}  // namespace vorn_testing
