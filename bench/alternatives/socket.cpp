#include <sys/socket.h>

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "../Company.h"
#include "../timing.h"
#include "alternatives.h"

using nlohmann::json;
using VornDeviceAbstractionLayer::VornDALImplIF;

namespace {

void say(int socket, const json& message) {
  const std::string text = message.dump();
  if (send(socket, text.data(), text.size(), MSG_NOSIGNAL) < 0)
    throw std::runtime_error("the socket is gone");
}

json hear(int socket) {
  char text[1024];
  const ssize_t size = recv(socket, text, sizeof text, 0);
  if (size <= 0) throw std::runtime_error("the socket is gone");
  return json::parse(text, text + size);
}

int* makePair(int* ends) {
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
    throw std::runtime_error("no Unix socket");
  return ends;
}

}  // namespace

Socket::Socket(VornDALImplIF& host)
    : m_host([this, &host, ends = makePair(m_ends)] {
        close(ends[0]);
        const Company company;
        while (true) {
          const json question = hear(ends[1]);
          if (question.at("call") != kOperation) throw std::runtime_error("unknown call");
          say(ends[1], {{"answer", host.isMicrophoneAvailable()}});
        }
      }) {
  close(m_ends[1]);
}

Socket::~Socket() { close(m_ends[0]); }

void Socket::time() const {
  timed("alternative/Unix socket with JSON", [socket = m_ends[0]] {
    say(socket, {{"call", kOperation}});
    benchmark::DoNotOptimize(hear(socket).at("answer").get<bool>());
  })->UseRealTime();
}
