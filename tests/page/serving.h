#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "http.h"

extern "C" char** environ;

/// The program while it serves.
class Program {
 public:
  explicit Program(std::vector<std::string> arguments, const std::string& state = "/tmp/speaker/state") {
    arguments.insert(arguments.begin(), {VORN_SPEAKER_PROGRAM, "--state", state, "serve"});
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, kErrors, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn(&m_process, words[0], &actions, nullptr, words.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    for (char letter = 0; read(ends[0], &letter, 1) == 1 && letter != '\n';) m_address += letter;
    close(ends[0]);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() {
    if (m_process > 0) end();
  }

  const std::string& address() const { return m_address; }

  pid_t process() const { return m_process; }

  /// Asks it to end; its status.
  int end(int signal = SIGINT) {
    kill(m_process, signal);
    return wait();
  }

  int wait() {
    int ended = 0;
    waitpid(m_process, &ended, 0);
    m_process = 0;
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : -WTERMSIG(ended);
  }

  static std::string errors() {
    std::ifstream file(kErrors);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  static constexpr char kErrors[] = "/tmp/speaker/errors";
  pid_t m_process = 0;
  std::string m_address;
};

class Serving : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::remove_all("/tmp/speaker");
    std::filesystem::create_directories("/tmp/speaker");
  }

  static std::string file(const std::string& name, const std::string& content) {
    const std::string path = "/tmp/speaker/" + name;
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  /// What is told until it holds the text.
  static std::string told(const Address& address, const std::string& text) {
    return events(address, [&](const std::string& all) { return has(all, text); });
  }
};
