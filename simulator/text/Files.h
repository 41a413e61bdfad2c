#pragma once

#include <vorn_testing/WholeFile.h>

#include <cstddef>
#include <string>

namespace vorn_speaker {

using vorn_testing::NotWritten;
using vorn_testing::refuseToReplace;
using vorn_testing::WholeFile;

/// The whole of a file. A pipe may stand in for one, as a shell's <(...) does; none is waited for.
/// @throws std::runtime_error  Names the file and the reason: it cannot be read, is a folder, holds more than `most` bytes.
std::string readWhole(const std::string& path, std::size_t most);

/// Refuses what would block or is no file: folders, pipes, sockets. What is not there is left to whoever opens it.
/// @throws std::runtime_error  Names the file and what it is.
void refuseUnlessFile(const std::string& path);

/// Whether both names lead to one file that is there.
bool sameFile(const std::string& one, const std::string& other);

}  // namespace vorn_speaker
