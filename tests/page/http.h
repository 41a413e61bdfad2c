#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "support/eventually.h"

/// A connection to a port of this machine, closed with its last owner. What a browser would take care of is ours to do wrong.
class Connection {
 public:
  explicit Connection(int port, const char* host = "127.0.0.1") {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    inet_pton(AF_INET, host, &address.sin_addr);
    m_connected = connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  Connection(Connection&& other) noexcept
      : m_socket(std::exchange(other.m_socket, -1)), m_connected(other.m_connected) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  Connection& operator=(Connection&&) = delete;
  ~Connection() {
    if (m_socket >= 0) close(m_socket);
  }

  bool connected() const { return m_connected; }

  void send(const std::string& bytes) const {
    for (std::size_t at = 0; at < bytes.size();) {
      const ssize_t sent = ::send(m_socket, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
      if (sent <= 0) return;
      at += static_cast<std::size_t>(sent);
    }
  }

  /// What comes until `enough(all)` holds or the other side closes; what came when neither happens within the bound.
  std::string read(const std::function<bool(const std::string&)>& enough) const {
    const auto bound = std::chrono::steady_clock::now() + kBound;
    std::string all;
    while (!enough(all) && std::chrono::steady_clock::now() < bound) {
      pollfd waiting{m_socket, POLLIN, 0};
      if (poll(&waiting, 1, 1000) == 0) continue;
      char part[65536];
      const ssize_t size = recv(m_socket, part, sizeof part, 0);
      if (size <= 0) break;
      all.append(part, static_cast<std::size_t>(size));
    }
    return all;
  }

 private:
  int m_socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  bool m_connected = false;
};

/// "http://127.0.0.1:PORT/TOKEN/", taken apart.
struct Address {
  explicit Address(const std::string& text)
      : port(std::atoi(text.substr(text.rfind(':') + 1).c_str())), path(text.substr(text.find('/', 8))) {}

  std::string host() const { return "127.0.0.1:" + std::to_string(port); }

  int port;
  std::string path;
};

inline std::string request(const Address& to, const std::string& method, const std::string& path,
                           const std::string& body = "", const std::string& headers = "") {
  return method + " " + path + " HTTP/1.1\r\nHost: " + to.host() +
         "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" + headers +
         "\r\n" + body;
}

/// The whole answer, headers and all.
inline std::string ask(const Address& to, const std::string& text) {
  const Connection connection(to.port);
  connection.send(text);
  return connection.read([](const std::string&) { return false; });
}

inline std::string get(const Address& to, const std::string& name, const std::string& headers = "") {
  return ask(to, request(to, "GET", to.path + name, "", headers));
}

inline std::string post(const Address& to, const std::string& name, const std::string& body) {
  return ask(to, request(to, "POST", to.path + name, body));
}

/// What the events tell until `enough`.
inline std::string events(const Address& to, const std::function<bool(const std::string&)>& enough,
                          const std::string& headers = "") {
  const Connection connection(to.port);
  connection.send(request(to, "GET", to.path + "events", "", headers));
  return connection.read(enough);
}

inline bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}
