#include "Watch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "recordings/Format.h"
#include "text/Files.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

constexpr std::size_t kLongestWatched = std::size_t{4} << 20;
constexpr std::chrono::milliseconds kPause(100);

bool isHeader(const std::string& line) try {
  const Json json = parsed(line);
  return json.is_object() && json.value("recording", Json()) == "vorn-speaker";
} catch (const Unfit&) {
  return false;
}

std::vector<std::string> texts(const Json& json, const char* field) {
  std::vector<std::string> all;
  const auto found = json.find(field);
  if (found == json.end() || !found->is_array()) return all;
  for (const Json& item : *found) all.push_back(item.is_string() ? item.get<std::string>() : item.dump());
  return all;
}

std::string text(const Json& json, const char* field) {
  const auto found = json.find(field);
  return found != json.end() && found->is_string() ? found->get<std::string>() : "";
}

/// A call of a recording with its secrets masked; what is no value in an argument is masked whole.
void mask(Json& json, Masker& masker) {
  Crossing call{};
  call.adapter = text(json, "adapter");
  call.operation = text(json, "operation");
  call.target = text(json, "interface");
  call.slot = static_cast<int>(asWhole(json.value("slot", Json(0)), 0, kMostSlots));
  for (const std::string& argument : texts(json, "arguments")) {
    try {
      call.spelled.push_back(split(argument).size() == 1 ? argument : std::string(kMask));
    } catch (const Unreadable&) {
      call.spelled.push_back(kMask);
    }
  }
  call.arguments = call.spelled;
  call.written = texts(json, "written");
  for (std::string& entry : call.written)
    if (entry.find('=') == std::string::npos) entry = std::string("?=") + kMask;
  call.result = text(json, "result");
  call.exception = text(json, "exception");
  masker.maskArguments(call);
  try {
    masker.maskAnswer(call);
  } catch (const std::exception&) {
    call.written.assign(1, kMask);  // A value that is none.
  }
  if (json.contains("arguments")) json["arguments"] = call.spelled;
  if (json.contains("written")) json["written"] = call.written;
  if (json.contains("result")) json["result"] = call.result;
  if (json.contains("exception") && json["exception"].is_string()) json["exception"] = call.exception;
}

}  // namespace

Watch::Watch(const std::string& path, bool secrets, Stream& stream)
    : m_path(path), m_secrets(secrets), m_stream(stream) {
  refuseUnlessFile(path);
  begin();
  std::string first(4096, '\0');
  const ssize_t size = pread(m_file, &first[0], first.size(), 0);
  first.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  const std::size_t end = first.find('\n');
  // An empty file may become one.
  if (!first.empty() && !isHeader(first.substr(0, end))) {
    close(m_file);
    throw std::runtime_error(oneLine(path) + ": is no recording; `vorn-speaker record FILE` makes one");
  }
  m_thread = std::thread([this] { run(); });
}

Watch::~Watch() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_ending = true;
    m_ended.notify_all();
  }
  m_thread.join();
  close(m_file);
}

void Watch::begin() {
  const int file = open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (file < 0 && m_file < 0)
    throw std::runtime_error(oneLine(m_path) + ": cannot be read: " + std::strerror(errno));
  if (file < 0) return;
  if (m_file >= 0) close(m_file);
  m_file = file;
  m_at = 0;
  m_begun.clear();
  struct stat status {};
  if (fstat(file, &status) == 0) m_inode = status.st_ino;
  m_stream.restart();
  m_stream.push(dumped({{"watching", oneLine(m_path)}}));
}

void Watch::run() {
  std::unique_lock<std::mutex> lock(m_mutex);
  do {
    lock.unlock();
    read();
    lock.lock();
  } while (!m_ended.wait_for(lock, kPause, [this] { return m_ending; }));
}

void Watch::read() {
  struct stat named {};
  struct stat held {};
  const bool other = stat(m_path.c_str(), &named) == 0 && named.st_ino != m_inode;
  const bool shorter = fstat(m_file, &held) == 0 && held.st_size < m_at;
  if (other || shorter) begin();
  char part[65536];
  for (ssize_t size = 0; (size = pread(m_file, part, sizeof part, m_at)) > 0;) {
    m_at += size;
    for (ssize_t i = 0; i < size; ++i) {
      if (part[i] == '\n') {
        tell(std::exchange(m_begun, ""));
      } else if (m_begun.size() <= kLongestWatched) {
        m_begun += part[i];
      }
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_ending) return;
  }
}

void Watch::tell(const std::string& line) {
  try {
    if (line.size() > kLongestWatched) throw Unfit("it is too long");
    Json json = parsed(line);
    if (!json.is_object()) throw Unfit("it is no object");
    Json& call = json.contains("open") && json["open"].is_object() ? json["open"] : json;
    if (!m_secrets) mask(call, m_masker);
    const std::string note = text(json, "note");
    if (!m_secrets && m_masker.isSecret(note)) json["note"] = kMask;
    m_stream.push(dumped(json));
  } catch (const std::exception&) {
    m_stream.push("{\"leftOut\":1}");
  }
}

}  // namespace vorn_speaker
