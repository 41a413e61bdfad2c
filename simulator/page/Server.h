#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Stream.h"

namespace vorn_speaker {

/// What a request is answered with.
struct Reply {
  unsigned status;
  std::string type;
  std::string body;
};

/// HTTP for this machine alone. Who does not know the token in the address, or comes from another page, is refused, and
/// nobody can take much: bodies, connections and what is kept for each are bounded, whoever is too slow is left behind.
class Server {
 public:
  /// Answers a request for a path behind the token; on the server's thread, so it must not wait.
  using Handler =
      std::function<Reply(const std::string& method, const std::string& path, const std::string& body)>;

  static constexpr std::size_t kMostBody = std::size_t{1} << 20;

  /// Listens on the port, or on a free one for 0. The path "events" streams the lines of `stream`, borrowed.
  /// @throws std::runtime_error  Names the port, the reason and the remedy.
  Server(int port, Stream& stream, Handler handler);
  ~Server();

  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// "http://127.0.0.1:8080/0f2c.../"
  std::string address() const;

 private:
  class Daemon;

  const std::unique_ptr<Daemon> m_daemon;
};

}  // namespace vorn_speaker
