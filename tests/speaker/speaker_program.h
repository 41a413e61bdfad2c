#pragma once

#include <gtest/gtest.h>
#include <regex.h>
#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// Runs vorn-speaker as a person would, with a state folder of its own.
class SpeakerProgram : public testing::Test {
 protected:
  static constexpr char kFolder[] = "/tmp/speaker";

  void SetUp() override {
    std::filesystem::remove_all(kFolder);
    std::filesystem::create_directories(kFolder);
    std::filesystem::remove("/tmp/xAppLog.txt");
  }

  /// Both output streams in one, as a terminal shows them.
  std::string run(const std::string& arguments, const std::string& input = "/dev/null") {
    return output(std::string(VORN_SPEAKER_PROGRAM) + " --state " + kFolder + "/state " + arguments +
                  " 2>&1 <" + input);
  }

  /// What a shell's command prints.
  std::string output(const std::string& command) {
    std::string output;
    FILE* const pipe = popen(command.c_str(), "r");
    char part[4096];
    while (std::fgets(part, sizeof part, pipe)) output += part;
    const int ended = pclose(pipe);
    m_status = WIFEXITED(ended) ? WEXITSTATUS(ended) : -WTERMSIG(ended);
    return output;
  }

  /// Plays a scenario of these lines.
  std::string play(const std::string& lines, const std::string& options = "") {
    return run(file("test.scenario", lines) + " " + options);
  }

  static std::string file(const std::string& name, const std::string& content) {
    const std::string path = std::string(kFolder) + "/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  static std::string content(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  static testing::AssertionResult has(const std::string& text, const std::string& part) {
    if (text.find(part) != std::string::npos) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no \"" << part << "\" in\n" << text;
  }

  /// `pattern` is an extended regular expression; a dot stands for a line feed too.
  static testing::AssertionResult matches(const std::string& text, const std::string& pattern) {
    regex_t compiled;
    if (regcomp(&compiled, pattern.c_str(), REG_EXTENDED | REG_NOSUB) != 0) {
      return testing::AssertionFailure() << "no pattern: " << pattern;
    }
    const bool found = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&compiled);
    if (found) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "no /" << pattern << "/ in\n" << text;
  }

  int m_status = -1;
};
