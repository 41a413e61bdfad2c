#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "RecordingFile.h"

namespace vorn_testing {

/// Whether a test made the calls that a recording in your repository holds, with the same answers; differenceOfCalls() tells
/// what is compared:
///
///     const vorn_testing::RecordedCalls calls(host.recorder);
///     ... the test ...
///     EXPECT_TRUE(vorn_testing::matchesRecording(calls, "recordings/boot.jsonl"));
///
/// With VORN_UPDATE_RECORDINGS=1 in the environment, what differs is written there instead and the test passes: look at
/// the difference in your version control. Opt-in: this header is what brings GoogleTest along.
inline testing::AssertionResult matchesRecording(const RecordedCalls& calls, const std::string& path) {
  const char* const update = std::getenv("VORN_UPDATE_RECORDINGS");
  const bool updates = update && std::string(update) == "1";
  std::string difference;
  try {
    difference = differenceOfCalls(readRecording(path), calls.calls());
  } catch (const std::runtime_error& error) {
    difference = error.what();
  }
  if (difference.empty()) return testing::AssertionSuccess();
  if (updates) {
    try {
      writeGoldenRecording(path, calls.calls());
      return testing::AssertionSuccess() << path << " was written";
    } catch (const std::runtime_error& error) {
      return testing::AssertionFailure() << error.what();
    }
  }
  return testing::AssertionFailure()
         << "the calls are not those of " << path << "\n"
         << difference << "VORN_UPDATE_RECORDINGS=1 in the environment writes the calls of the test there.";
}

}  // namespace vorn_testing
