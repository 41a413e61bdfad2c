#include "Serve.h"

#include <signal.h>
#include <vorn_testing/Operations.h>
#include <vorn_testing/Text.h>

#include <atomic>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

#include "Below.h"
#include "Server.h"
#include "Stream.h"
#include "Watch.h"
#include "device/DataFolder.h"
#include "language/Scenario.h"
#include "recordings/Json.h"
#include "text/Files.h"
#include "text/Secrets.h"

namespace vorn_speaker {

namespace {

constexpr std::size_t kMostLines = std::size_t{64} << 20;
constexpr std::size_t kLargestFile = std::size_t{4} << 20;
constexpr std::size_t kLongestStatement = std::size_t{64} << 10;
constexpr int kEndings[] = {SIGINT, SIGTERM, SIGHUP};

std::string typeOf(const std::string& extension) {
  if (extension == ".html") return "text/html; charset=utf-8";
  if (extension == ".css") return "text/css; charset=utf-8";
  if (extension == ".svg") return "image/svg+xml";
  if (extension == ".js") return "text/javascript; charset=utf-8";
  return "text/plain; charset=utf-8";
}

/// The files of the page, as they are installed, by their path in the address.
std::map<std::string, Reply> pageFiles() {
  namespace fs = std::filesystem;
  const fs::path folder = shipped("page");
  std::map<std::string, Reply> files;
  std::error_code none;
  for (const auto& entry : fs::recursive_directory_iterator(folder, none)) {
    if (!entry.is_regular_file()) continue;
    const std::string name = entry.path().lexically_relative(folder).string();
    files[name] = {200, typeOf(entry.path().extension().string()),
                   readWhole(entry.path().string(), kLargestFile)};
  }
  const auto first = files.find("index.html");
  if (first == files.end())
    throw std::runtime_error(folder.string() + ": the page's files are not there; install the tools anew");
  files[""] = first->second;
  return files;
}

Json operationList() {
  Json list = Json::array();
  for (const Operation& operation : operations()) {
    Json parameters = Json::array();
    for (const Parameter& parameter : operation.parameters)
      parameters.push_back({{"name", parameter.name},
                            {"type", parameter.type},
                            {"optional", parameter.reference},
                            {"secret", isSecretName(parameter.name)}});
    list.push_back({{"caller", operation.caller == Caller::kAssistant ? "assistant" : "firmware"},
                    {"adapter", operation.adapter},
                    {"operation", operation.name},
                    {"locked", operation.guard == Guard::kMutex || operation.guard == Guard::kDalMutex},
                    {"parameters", parameters}});
  }
  return list;
}

Reply plain(unsigned status, const std::string& words) {
  return {status, "text/plain; charset=utf-8", words + "\n"};
}

Reply json(const Json& value) { return {200, "application/json", dumped(value)}; }

/// What runs below, told to the pages; its errors go to standard error too.
class Relay : public Below::Listener {
 public:
  explicit Relay(Stream& stream) : m_stream(stream) {}

  void started() override { m_stream.restart(); }
  void said(std::string line) override { m_stream.push(std::move(line)); }
  void reported(std::string line) override {
    std::cerr << vorn_testing::harmless(line) << std::endl;
    m_stream.push(dumped({{"report", line}}));
  }
  void ended(int status) override { m_stream.push(dumped({{"ended", status}})); }

 private:
  Stream& m_stream;
};

/// Signals that ask to end wait until they are looked for.
class Endings {
 public:
  Endings() {
    sigemptyset(&m_set);
    for (const int signal : kEndings) sigaddset(&m_set, signal);
    pthread_sigmask(SIG_BLOCK, &m_set, nullptr);
    signal(SIGPIPE, SIG_IGN);
  }
  void wait() const {
    int which = 0;
    sigwait(&m_set, &which);
  }

 private:
  sigset_t m_set;
};

/// Answers the requests of the pages.
class Pages {
 public:
  explicit Pages(const ServeRequest& request)
      : m_files(pageFiles()), m_operations(json(operationList())), m_morning(request.morning) {}

  /// The one that statements are for; null for none.
  std::atomic<Below*> below{nullptr};

  Reply answer(const std::string& method, const std::string& path, const std::string& body) {
    if (method == "GET") {
      if (path == "operations") return m_operations;
      if (path == "morning.scenario") return {200, "text/plain; charset=utf-8", m_morning};
      const auto file = m_files.find(path);
      return file == m_files.end() ? plain(404, "There is no such file.") : file->second;
    }
    if (path == "scenario") return steps(body);
    if (path == "statement") return play(body);
    if (path != "restart") return plain(404, "There is nothing of this name.");
    if (Below* const speaker = below) {
      speaker->restart();
      return json({{"done", true}});
    }
    return watching();
  }

 private:
  static Reply watching() { return plain(409, "A recording is shown: there is no speaker to play with."); }

  /// The lines of a scenario that are statements; all its mistakes otherwise.
  static Reply steps(const std::string& text) {
    try {
      Json lines = Json::array();
      for (const Step& step : readScenario("scenario", text)) lines.push_back(step.line);
      return json(lines);
    } catch (const BadScenario& error) {
      return plain(400, error.what());
    }
  }

  Reply play(const std::string& line) {
    if (line.size() > kLongestStatement) return plain(413, "A statement has 65536 characters at most.");
    if (line.find_first_of(std::string("\n\0", 2)) != std::string::npos)
      return plain(400, "expected one line");
    try {
      if (!readStatement(line)) return plain(400, "expected a statement");
    } catch (const Unreadable& error) {
      return plain(400, "column " + std::to_string(error.column) + ": " + error.what());
    }
    Below* const speaker = below;
    if (!speaker) return watching();
    const unsigned long id = ++m_statements;
    if (!speaker->send(std::to_string(id) + " " + line))
      return plain(503, "The speaker does not run, or takes no more for now.");
    return json({{"id", id}});
  }

  const std::map<std::string, Reply> m_files;
  const Reply m_operations;
  const std::string m_morning;
  std::atomic<unsigned long> m_statements{0};
};

}  // namespace

int serve(const ServeRequest& request, std::ostream& out) {
  const Endings endings;
  Stream stream(kMostLines);
  Pages pages(request);
  const Server server(request.port, stream,
                      [&](const std::string& method, const std::string& path, const std::string& body) {
                        return pages.answer(method, path, body);
                      });
  const auto open = [&] {
    if (out << server.address() << std::endl) endings.wait();
  };
  if (!request.watch.empty()) {
    const Watch watch(request.watch, request.secrets, stream);
    open();
    return 0;
  }
  Relay relay(stream);
  Below below(request.command, relay);
  if (!below.speaks()) return below.status();
  pages.below = &below;
  open();
  pages.below = nullptr;
  return 0;
}

}  // namespace vorn_speaker
