#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

/// Runs vorn-capture as a person would, and reads what it recorded.
class CaptureProgram : public testing::Test {
 protected:
  typedef nlohmann::json Json;
  static constexpr char kFolder[] = "/tmp/capture";

  void SetUp() override {
    std::filesystem::remove_all(kFolder);
    std::filesystem::create_directories(kFolder);
  }

#ifdef VORN_EMULATED
  static constexpr bool kEmulated = true;
#else
  static constexpr bool kEmulated = false;
#endif

  /// What a shell's command prints. In an emulator also this machine's loader speaks, which does not load the capture.
  std::string run(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(("{ " + command + "; } 2>&1").c_str(), "r");
    char part[4096];
    while (std::fgets(part, sizeof part, pipe)) {
      if (!kEmulated || std::strncmp(part, "ERROR: ld.so: object ", 21) != 0) output += part;
    }
    const int ended = pclose(pipe);
    m_status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -WTERMSIG(ended);
    return output;
  }

  static std::string file(const std::string& name, const std::string& content) {
    const std::string path = std::string(kFolder) + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  /// A script under vorn-capture.
  std::string captureScript(const std::string& commands) {
    const std::string script = file("script", "#!/bin/bash\n" + commands + "\n");
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    const std::string output =
        run(VORN_CAPTURE_PROGRAM " --library " VORN_LIBRARY " -o " + m_path + " " + script);
    std::filesystem::remove(script);
    return output;
  }

  /// The caller under vorn-capture.
  std::string capture(const std::string& way, const std::string& options = "") {
    return run(VORN_CAPTURE_PROGRAM " -o " + m_path + " " + options + " " VORN_CALLER " " + way);
  }

  static std::string content(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  /// The lines of a recording but the first. One that cannot be read is discarded, and the test fails.
  std::vector<Json> lines(const std::string& path) {
    std::vector<Json> all;
    std::istringstream in(content(path));
    for (std::string line; std::getline(in, line);) {
      all.push_back(Json::parse(line, nullptr, false));
      EXPECT_FALSE(all.back().is_discarded()) << line;
    }
    if (!all.empty()) all.erase(all.begin());
    return all;
  }

  /// Those that have a field.
  std::vector<Json> linesWith(const std::string& field) { return linesWith(m_path, field); }
  std::vector<Json> linesWith(const std::string& path, const std::string& field) {
    std::vector<Json> found;
    for (const Json& line : lines(path)) {
      if (line.contains(field)) found.push_back(line);
    }
    return found;
  }

  /// The calls of an operation.
  std::vector<Json> calls(const std::string& operation) { return calls(m_path, operation); }
  std::vector<Json> calls(const std::string& path, const std::string& operation) {
    std::vector<Json> found;
    for (const Json& line : linesWith(path, "operation")) {
      if (line["operation"] == operation) found.push_back(line);
    }
    return found;
  }

  static testing::AssertionResult has(const std::string& text, const std::string& part) {
    if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no \"" << part << "\" in\n" << text;
  }

  const std::string m_path = std::string(kFolder) + "/recording";
  int m_status = -1;
};
