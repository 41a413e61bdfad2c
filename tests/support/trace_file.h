#pragma once

#include <FileLogger.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// The library's trace as tests see it.
namespace trace_file {

constexpr char kPath[] = "/tmp/xAppLog.txt";

inline std::string bytes() {
  std::ifstream file(kPath, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The texts of the records, without what stands before each; the last is marked when it has no end. Not for messages
/// that hold line feeds.
inline std::vector<std::string> lines() {
  std::vector<std::string> texts;
  std::ifstream file(kPath, std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    EXPECT_EQ(line.substr(0, 7), " Time: ") << line.substr(0, 60);
    texts.push_back(line.substr(7) + (file.eof() ? " (torn)" : ""));
  }
  return texts;
}

/// Starts every test without a trace file and with the trace switched on.
class Traced : public ::testing::Test {
 protected:
  void SetUp() override {
    forget();
    VornDeviceAbstractionLayer::FileLogger::Shutdown();
    VornDeviceAbstractionLayer::FileLogger::CreateInstance(true);
  }

  void TearDown() override {
    VornDeviceAbstractionLayer::FileLogger::Shutdown();
    forget();
  }

  static void forget() { std::filesystem::remove_all(kPath); }
};

}  // namespace trace_file
