#pragma once

#include <string>

namespace vorn_testing {

/// Opens the null device in place of those of the standard files, descriptors 0 to 2, that the caller closed, so that no
/// file of the program's own gets their number and the text meant for them. Reading gives the end of the file, writing
/// fails as it would have. A write beyond the limit of a file's size fails from now on, and no longer ends the program.
/// The first statement of main().
void prepareStandardFiles();

/// Writes out what std::cout and stdout still hold. When that, or any earlier write, failed, as on a full disk or a
/// closed file, says so on standard error after the name of `program`.
/// @returns  Whether everything arrived.
bool standardOutputArrived(const char* program);

/// Whether standard output gets colours, as --color asks: "always", "never", or "auto" for terminals only, unless NO_COLOR
/// is set.
bool standardOutputIsColoured(const std::string& when);

}  // namespace vorn_testing
