#pragma once

#include <cstddef>

namespace vorn_testing {

/// Puts in the place of every escape in a text what it stands for, as JSON, C, URLs and HTML have them; that is never longer.
/// @returns  The size of what is left.
std::size_t unescape(char* text, std::size_t size);

}  // namespace vorn_testing
