#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>

/// Another process, which runs `serve` until it returns or this object goes.
class Peer {
 public:
  template <class Serve>
  explicit Peer(Serve serve) : m_process(fork()) {
    if (m_process != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
      serve();
    } catch (const std::exception& error) {
      std::fprintf(stderr, "the other process: %s\n", error.what());
    }
    _exit(1);
  }

  ~Peer() {
    if (m_process <= 0) return;
    kill(m_process, SIGKILL);
    waitpid(m_process, nullptr, 0);
  }

  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

 private:
  pid_t m_process;
};
