#include "Server.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <set>
#include <stdexcept>
#include <thread>
#include <utility>

namespace vorn_speaker {

namespace {

constexpr unsigned kMostConnections = 2048;
constexpr unsigned kQuietSeconds = 30;  ///< A connection on which nothing moves for so long is closed.
constexpr std::chrono::seconds kSignOfLife(10);
constexpr std::size_t kConnectionBytes = 16384;
constexpr std::size_t kBlock = 65536;
constexpr int kBacklog = 1024;

constexpr char kPolicy[] =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

std::string randomToken() {
  unsigned char bytes[16];
  if (getrandom(bytes, sizeof bytes, 0) != static_cast<ssize_t>(sizeof bytes))
    throw std::runtime_error(std::string("no random token: ") + std::strerror(errno));
  std::string token;
  for (const unsigned char byte : bytes) {
    token += "0123456789abcdef"[byte >> 4U];
    token += "0123456789abcdef"[byte & 15U];
  }
  return token;
}

/// As long for every wrong one.
bool same(const std::string& given, const std::string& token) {
  unsigned difference = given.size() == token.size() ? 0 : 1;
  for (std::size_t i = 0; i < token.size(); ++i)
    difference |= static_cast<unsigned>(token[i] ^ (i < given.size() ? given[i] : '\0'));
  return difference == 0;
}

int listening(int port) {
  const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  const auto refuse = [&](const std::string& remedy) -> int {
    const int error = errno;
    if (made >= 0) close(made);
    throw std::runtime_error("port " + std::to_string(port) + " of 127.0.0.1: " + std::strerror(error) +
                             remedy);
  };
  if (made < 0) return refuse("");
  const int yes = 1;
  setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<in_port_t>(port));
  if (bind(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(made, kBacklog) != 0)
    return refuse("; name another with --port, or none for a free one");
  return made;
}

int portOf(int socket) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

/// Files for as many connections as are let in, or as many connections as there may be files.
unsigned connections() {
  rlimit files{};
  getrlimit(RLIMIT_NOFILE, &files);
  files.rlim_cur =
      std::min<rlim_t>(files.rlim_max, std::max<rlim_t>(files.rlim_cur, rlim_t{2} * kMostConnections));
  setrlimit(RLIMIT_NOFILE, &files);
  return static_cast<unsigned>(std::min<rlim_t>(kMostConnections, files.rlim_cur / 2));
}

std::string header(MHD_Connection* connection, const char* name) {
  const char* const value = MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
  return value ? value : "";
}

MHD_Result send(MHD_Connection* connection, unsigned status, MHD_Response* response,
                const std::string& type) {
  const std::pair<const char*, const char*> headers[] = {{"Content-Type", type.c_str()},
                                                         {"Content-Security-Policy", kPolicy},
                                                         {"X-Content-Type-Options", "nosniff"},
                                                         {"Cross-Origin-Resource-Policy", "same-origin"},
                                                         {"Cross-Origin-Opener-Policy", "same-origin"},
                                                         {"Referrer-Policy", "no-referrer"},
                                                         {"Cache-Control", "no-store"}};
  for (const auto& [name, value] : headers) MHD_add_response_header(response, name, value);
  const MHD_Result queued = MHD_queue_response(connection, status, response);
  MHD_destroy_response(response);
  return queued;
}

MHD_Result send(MHD_Connection* connection, const Reply& reply) {
  auto* const bytes = const_cast<char*>(reply.body.data());  // copied, never written
  return send(connection, reply.status,
              MHD_create_response_from_buffer(reply.body.size(), bytes, MHD_RESPMEM_MUST_COPY), reply.type);
}

Reply refusal(unsigned status, const std::string& words) {
  return {status, "text/plain; charset=utf-8", words + "\n"};
}

}  // namespace

class Server::Daemon {
 public:
  Daemon(int port, Stream& stream, Handler handler)
      : m_token(randomToken()),
        m_stream(stream),
        m_handler(std::move(handler)),
        m_socket(listening(port)),
        m_port(portOf(m_socket)) {
    m_daemon = MHD_start_daemon(MHD_USE_EPOLL_INTERNAL_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0, nullptr, nullptr,
                                &Daemon::handle, this, MHD_OPTION_LISTEN_SOCKET, m_socket,
                                MHD_OPTION_CONNECTION_LIMIT, connections(), MHD_OPTION_CONNECTION_TIMEOUT,
                                kQuietSeconds, MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionBytes,
                                MHD_OPTION_NOTIFY_COMPLETED, &Daemon::completed, this, MHD_OPTION_END);
    if (!m_daemon) {
      close(m_socket);
      throw std::runtime_error("the page's server could not be started: " +
                               std::string(std::strerror(errno)));
    }
    m_stream.onLine([this] { wake(false); });
    m_lifeSigns = std::thread([this] {
      std::unique_lock<std::mutex> lock(m_mutex);
      while (!m_ended.wait_for(lock, kSignOfLife, [this] { return m_ending; })) resume(true);
    });
  }

  ~Daemon() {
    m_stream.onLine(nullptr);
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_ending = true;
      m_ended.notify_all();
      resume(false);
    }
    m_lifeSigns.join();
    MHD_stop_daemon(m_daemon);
  }

  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  std::string address() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/" + m_token + "/"; }

 private:
  struct Upload {
    std::string body;
  };

  /// A page that listens.
  struct Listener {
    Daemon* daemon;
    MHD_Connection* connection;
    std::uint64_t place;
    std::string out = ": here\n\n";  ///< What it is given next.
    std::size_t given = 0;
    bool signOfLife = false;  ///< Whether it is due; only in this way a page that went is noticed.
  };

  static MHD_Result handle(void* self, MHD_Connection* connection, const char* url, const char* method,
                           const char*, const char* data, std::size_t* size, void** upload) {
    return static_cast<Daemon*>(self)->answer(connection, url, method, data, size, upload);
  }

  static void completed(void*, MHD_Connection*, void** upload, MHD_RequestTerminationCode) {
    delete static_cast<Upload*>(*upload);
    *upload = nullptr;
  }

  MHD_Result answer(MHD_Connection* connection, const std::string& url, const std::string& method,
                    const char* data, std::size_t* size, void** upload) {
    auto* const sent = static_cast<Upload*>(*upload);
    if (!sent) {
      const Reply refused = refuses(connection, url, method);
      if (refused.status != MHD_HTTP_OK) return send(connection, refused);
      *upload = new Upload;
      return MHD_YES;
    }
    if (*size > 0) {
      if (sent->body.size() + *size > kMostBody)
        return MHD_NO;  // was to be sent in parts; the connection is closed
      sent->body.append(data, *size);
      *size = 0;
      return MHD_YES;
    }
    const std::string path = url.substr(m_token.size() + 2);
    if (path == "events" && method == "GET") return stream(connection);
    return send(connection, m_handler(method, path, sent->body));
  }

  /// Why a request is not even read; status 200 for one that is.
  Reply refuses(MHD_Connection* connection, const std::string& url, const std::string& method) const {
    const std::string port = ":" + std::to_string(m_port);
    const auto ours = [&](const std::string& value, const std::string& before) {
      return value == before + "127.0.0.1" + port || value == before + "localhost" + port;
    };
    if (!ours(header(connection, "Host"), ""))
      return refusal(MHD_HTTP_FORBIDDEN, "This name is not the page's: use the address that was printed.");
    const std::string origin = header(connection, "Origin");
    if (!origin.empty() && !ours(origin, "http://"))
      return refusal(MHD_HTTP_FORBIDDEN, "Another page may not ask this one.");
    const std::size_t end = url.find('/', 1);
    if (end == std::string::npos || !same(url.substr(1, end - 1), m_token))
      return refusal(MHD_HTTP_FORBIDDEN,
                     "Use the whole address that was printed: the token in it is missing or wrong.");
    if (method != "GET" && method != "POST")
      return refusal(MHD_HTTP_METHOD_NOT_ALLOWED, "Only GET and POST are understood.");
    const std::string length = header(connection, "Content-Length");
    if (length.size() > 7 || (!length.empty() && std::strtoul(length.c_str(), nullptr, 10) > kMostBody))
      return refusal(MHD_HTTP_CONTENT_TOO_LARGE, "This is more than the page ever sends: at most 1 MiB.");
    return {MHD_HTTP_OK, "", ""};
  }

  MHD_Result stream(MHD_Connection* connection) {
    const std::string seen = header(connection, "Last-Event-ID");
    auto* const listener = new Listener{this, connection, std::strtoull(seen.c_str(), nullptr, 10)};
    MHD_Response* const response =
        MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, kBlock, &Daemon::next, listener, &Daemon::left);
    return send(connection, MHD_HTTP_OK, response, "text/event-stream");
  }

  /// What a page is given next. Only called when there is room, so whoever reads slowly is not waited for.
  static ssize_t next(void* self, std::uint64_t, char* room, std::size_t most) {
    auto& listener = *static_cast<Listener*>(self);
    Daemon& daemon = *listener.daemon;
    if (listener.given == listener.out.size()) {
      listener.out.clear();
      listener.given = 0;
      const std::lock_guard<std::mutex> lock(daemon.m_mutex);
      if (daemon.m_ending) return MHD_CONTENT_READER_END_OF_STREAM;
      if (daemon.m_stream.read(listener.place, kBlock, "data: ", listener.out)) {
        listener.out += "id: " + std::to_string(listener.place) + "\n\n";
      } else if (std::exchange(listener.signOfLife, false)) {
        listener.out = ": here\n\n";
      } else {
        daemon.m_waiting.insert(&listener);
        MHD_suspend_connection(listener.connection);
        return 0;
      }
    }
    const std::size_t part = std::min(most, listener.out.size() - listener.given);
    std::copy_n(listener.out.data() + listener.given, part, room);
    listener.given += part;
    return static_cast<ssize_t>(part);
  }

  static void left(void* self) {
    auto* const listener = static_cast<Listener*>(self);
    {
      const std::lock_guard<std::mutex> lock(listener->daemon->m_mutex);
      listener->daemon->m_waiting.erase(listener);
    }
    delete listener;
  }

  void wake(bool signOfLife) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    resume(signOfLife);
  }

  void resume(bool signOfLife) {
    for (Listener* const listener : m_waiting) {
      listener->signOfLife = signOfLife;
      MHD_resume_connection(listener->connection);
    }
    m_waiting.clear();
  }

  const std::string m_token;
  Stream& m_stream;
  const Handler m_handler;
  const int m_socket;
  const int m_port;
  MHD_Daemon* m_daemon = nullptr;
  std::mutex m_mutex;
  std::condition_variable m_ended;
  bool m_ending = false;
  std::set<Listener*> m_waiting;  ///< Those that have all there is.
  std::thread m_lifeSigns;
};

Server::Server(int port, Stream& stream, Handler handler)
    : m_daemon(std::make_unique<Daemon>(port, stream, std::move(handler))) {}

Server::~Server() = default;

std::string Server::address() const { return m_daemon->address(); }

}  // namespace vorn_speaker
