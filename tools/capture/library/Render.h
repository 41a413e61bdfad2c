#pragma once

#include <string_view>

#include "Calls.h"

namespace vorn_capture {

/// A call that has not returned, or a call: one line of a recording, without its end.
struct Line {
  const Function& function;
  const char* thread;
  std::uint32_t threadNumber;
  std::int64_t start;  ///< When the recording began.
};

void renderOpen(Bytes& line, const Line& about, const char* begin);
void renderCall(Bytes& line, const Line& about, const char* begin, const char* end);

/// A text in quotes.
void quote(Bytes& line, std::string_view text);

}  // namespace vorn_capture
