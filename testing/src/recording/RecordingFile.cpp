#include "vorn_testing/RecordingFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <utility>

#include "CallWatch.h"
#include "Json.h"
#include "vorn_testing/Text.h"

namespace vorn_testing {

using recording::CallWatch;
using recording::Json;
using recording::jsonText;

namespace {

constexpr char kBeginning[] = "{\"recording\":\"vorn-speaker\",\"version\":";

std::string textOf(const Json& json) {
  if (json.kind != Json::kText) throw recording::NoJson("expected a text");
  return json.text;
}

std::vector<std::string> textsOf(const Json& json) {
  if (json.kind != Json::kList) throw recording::NoJson("expected a list of texts");
  std::vector<std::string> texts;
  for (const Json& item : json.items) texts.push_back(textOf(item));
  return texts;
}

template <class Number>
void readNumber(const Json& json, Number& number) {
  const char* const end = json.text.data() + json.text.size();
  const bool whole = json.kind == Json::kWord && !json.text.empty() && json.text[0] != '-';
  const auto read = std::from_chars(json.text.data(), end, number);
  if (!whole || read.ptr != end) throw recording::NoJson("expected a whole number");
  if (read.ec != std::errc()) throw recording::NoJson("the number " + json.text + " is too large");
}

/// A field of a line, as docs/speaker.md tells them.
struct Field {
  const char* name;
  std::string (*write)(const RecordedCall&);
  void (*read)(const Json&, RecordedCall&);
  bool known;  ///< Whether a line without it cannot be read.
};

template <auto member>
Field number(const char* name, bool known = true) {
  return {name, [](const RecordedCall& call) { return std::to_string(call.*member); },
          [](const Json& json, RecordedCall& call) { readNumber(json, call.*member); }, known};
}

template <auto member>
Field text(const char* name) {
  return {name, [](const RecordedCall& call) { return jsonText(call.*member); },
          [](const Json& json, RecordedCall& call) { call.*member = textOf(json); }, true};
}

template <auto member>
Field texts(const char* name) {
  return {name, [](const RecordedCall& call) { return jsonText(call.*member); },
          [](const Json& json, RecordedCall& call) { call.*member = textsOf(json); }, true};
}

const std::vector<Field>& fields() {
  static const std::vector<Field> all = {
      number<&RecordedCall::number>("call"),
      number<&RecordedCall::began>("time"),
      number<&RecordedCall::took>("duration"),
      text<&RecordedCall::thread>("thread"),
      number<&RecordedCall::threadNumber>("threadNumber", false),
      text<&RecordedCall::direction>("direction"),
      text<&RecordedCall::adapter>("adapter"),
      text<&RecordedCall::operation>("operation"),
      text<&RecordedCall::interfaceName>("interface"),
      number<&RecordedCall::slot>("slot"),
      number<&RecordedCall::inside>("inside"),
      texts<&RecordedCall::arguments>("arguments"),
      text<&RecordedCall::result>("result"),
      texts<&RecordedCall::written>("written"),
      {"exception", [](const RecordedCall& call) { return call.threw ? jsonText(call.exception) : "null"; },
       [](const Json& json, RecordedCall& call) {
         call.threw = json.kind != Json::kNull;
         if (call.threw) call.exception = textOf(json);
       },
       true},
      // The doubles stand where the other side begins.
      {"waited", [](const RecordedCall&) { return std::string("null"); }, nullptr, false},
      {"host", [](const RecordedCall& call) { return std::to_string(call.took); }, nullptr, false},
      {"reached", [](const RecordedCall&) { return std::string("true"); }, nullptr, false},
  };
  return all;
}

std::string line(const RecordedCall& call) {
  std::string json;
  for (const Field& field : fields())
    json += (json.empty() ? "{\"" : ",\"") + std::string(field.name) + "\":" + field.write(call);
  return json + "}\n";
}

RecordedCall fromJson(const Json& json) {
  RecordedCall call{};
  for (const Field& field : fields()) {
    const Json* const value = json.member(field.name);
    if (!value && field.known) throw recording::NoJson(std::string("expected the field ") + field.name);
    if (!value || !field.read) continue;
    try {
      field.read(*value, call);
    } catch (const recording::NoJson& error) {
      throw recording::NoJson(std::string("the field ") + field.name + ": " + error.what());
    }
  }
  return call;
}

[[noreturn]] void fail(const std::string& path, const std::string& why) {
  throw std::runtime_error(harmless(path) + ": " + why);
}

/// Opens a file that is new, empty or a recording; no link.
int openRecording(const std::string& path, unsigned mode) {
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, mode);
  if (file < 0)
    fail(path, std::string("cannot be written: ") + (errno == ELOOP ? "it is a link" : std::strerror(errno)));
  char first[sizeof kBeginning - 1];
  const ssize_t size = ::pread(file, first, sizeof first, 0);
  const bool ours = size == 0 || (size == static_cast<ssize_t>(sizeof first) &&
                                  std::memcmp(first, kBeginning, sizeof first) == 0);
  struct stat there {};
  const bool regular = ::fstat(file, &there) == 0 && S_ISREG(there.st_mode);
  if ((regular && !ours) || (regular && ::ftruncate(file, 0) != 0)) {
    ::close(file);
    fail(path, "is there already and is no recording; choose another name");
  }
  return file;
}

/// Writes all of it. Returns 0, or the reason why it could not.
int writeAll(int file, const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t written = ::write(file, text.data() + at, text.size() - at);
    if (written < 0 && errno != EINTR) return errno;
    at += written > 0 ? static_cast<std::size_t>(written) : 0;
  }
  return 0;
}

std::string nowInUtc() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  std::tm parts{};
  gmtime_r(&now.tv_sec, &parts);
  char day[32], text[64];
  std::strftime(day, sizeof day, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text, sizeof text, "%s.%06ldZ", day, now.tv_nsec / 1000);
  return text;
}

}  // namespace

std::string RecordedCall::text() const {
  std::string shown = adapter + "." + operation;
  for (const std::string& argument : arguments) shown += " " + argument;
  shown += " =";
  if (threw) return shown + " threw " + exception;
  if (!result.empty()) shown += " " + result;
  for (const std::string& value : written) shown += " " + value;
  return result.empty() && written.empty() ? shown + " no result" : shown;
}

class RecordingFile::Lines : public CallWatch {
 public:
  Lines(const std::string& path, std::shared_ptr<Recorder> recorder, const std::string& program)
      : CallWatch(std::move(recorder)), m_path(path), m_file(openRecording(path, S_IRUSR | S_IWUSR)) {
    ::fchmod(m_file, S_IRUSR | S_IWUSR);
    write(kBeginning + std::string("2,\"program\":") + jsonText(program) + ",\"started\":\"" + nowInUtc() +
          "\",\"writer\":\"vorn_testing\"}\n");
    begin();
  }

  ~Lines() override {
    end();
    if (m_file >= 0) ::close(m_file);
  }

  void close() {
    end();
    if (m_file >= 0 && ::close(m_file) != 0 && m_error == 0) m_error = errno;
    m_file = -1;
    if (m_error != 0) fail(m_path, std::string("cannot be written: ") + std::strerror(m_error));
  }

 private:
  void take(RecordedCall call) override { write(line(call)); }

  void write(const std::string& text) {
    if (m_error == 0) m_error = writeAll(m_file, text);
  }

  const std::string m_path;
  int m_file;
  int m_error = 0;  ///< Of the first line that could not be written.
};

RecordingFile::RecordingFile(const std::string& path, std::shared_ptr<Recorder> recorder,
                             const std::string& program)
    : m_lines(new Lines(path, std::move(recorder), program)) {}

RecordingFile::~RecordingFile() = default;

void RecordingFile::close() { m_lines->close(); }

class RecordedCalls::Kept : public CallWatch {
 public:
  explicit Kept(std::shared_ptr<Recorder> recorder) : CallWatch(std::move(recorder)) { begin(); }
  ~Kept() override { end(); }

  std::vector<RecordedCall> calls() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
  }

 private:
  void take(RecordedCall call) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls.push_back(std::move(call));
  }

  std::mutex m_mutex;
  std::vector<RecordedCall> m_calls;
};

namespace {

void order(std::vector<RecordedCall>& calls) {
  std::stable_sort(calls.begin(), calls.end(), [](const RecordedCall& left, const RecordedCall& right) {
    return left.number < right.number;
  });
}

/// The calls of each thread.
std::vector<std::vector<RecordedCall>> byThread(const std::vector<RecordedCall>& calls) {
  std::map<std::pair<int, std::string>, std::size_t> places;
  std::vector<std::vector<RecordedCall>> threads;
  for (const RecordedCall& call : calls) {
    // Where threads have no numbers, their names tell them apart.
    const std::size_t place =
        places.emplace(std::pair(call.threadNumber, call.threadNumber > 0 ? "" : call.thread), places.size())
            .first->second;
    if (place == threads.size()) threads.emplace_back();
    threads[place].push_back(call);
  }
  return threads;
}

bool isSame(const RecordedCall& left, const RecordedCall& right) {
  const auto compared = [](const RecordedCall& call) {
    return std::tie(call.direction, call.adapter, call.operation, call.interfaceName, call.slot, call.inside,
                    call.arguments, call.result, call.written, call.threw, call.exception);
  };
  return compared(left) == compared(right);
}

using Thread = std::vector<RecordedCall>;

bool isSameThread(const Thread& left, const Thread& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(), isSame);
}

std::string shown(const Thread& calls, std::size_t at) {
  if (at >= calls.size()) return "no more calls";
  const RecordedCall& call = calls[at];
  return std::string(2 * static_cast<std::size_t>(call.inside), ' ') + harmless(call.text()) +
         (call.line > 0 ? "  (line " + std::to_string(call.line) + ")" : "");
}

std::string difference(const Thread& expected, const Thread& actual) {
  constexpr std::size_t kContext = 3;
  std::size_t at = 0;
  while (at < expected.size() && at < actual.size() && isSame(expected[at], actual[at])) ++at;
  std::string told;
  for (std::size_t i = at - std::min(at, kContext); i < at; ++i)
    told += "  before    " + shown(actual, i) + "\n";
  return told + "  expected  " + shown(expected, at) + "\n  actual    " + shown(actual, at) + "\n";
}

}  // namespace

RecordedCalls::RecordedCalls(std::shared_ptr<Recorder> recorder) : m_kept(new Kept(std::move(recorder))) {}

RecordedCalls::~RecordedCalls() = default;

std::vector<RecordedCall> RecordedCalls::calls() const {
  std::vector<RecordedCall> all = m_kept->calls();
  order(all);
  return all;
}

std::vector<RecordedCall> readRecording(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) fail(path, std::string("cannot be read: ") + std::strerror(errno));
  std::vector<RecordedCall> calls;
  std::size_t number = 0;
  for (std::string text; std::getline(file, text);) {
    ++number;
    try {
      const Json json = recording::parseJson(text);
      if (number == 1) {
        const Json *const kind = json.member("recording"), *const version = json.member("version");
        if (!kind || kind->text != "vorn-speaker" || !version ||
            (version->text != "1" && version->text != "2"))
          throw recording::NoJson("expected a recording of version 1 to 2");
        continue;
      }
      if (!json.member("call")) continue;
      calls.push_back(fromJson(json));
      calls.back().line = number;
    } catch (const recording::NoJson& error) {
      fail(path + ":" + std::to_string(number), error.what());
    }
  }
  if (number == 0) fail(path, "expected a recording, found an empty file");
  order(calls);
  return calls;
}

void writeGoldenRecording(const std::string& path, const std::vector<RecordedCall>& calls) {
  std::string text = kBeginning + std::string("2,\"writer\":\"vorn_testing\"}\n");
  unsigned long count = 0;
  int thread = 0;
  for (const Thread& of : byThread(calls)) {
    ++thread;
    for (RecordedCall call : of) {
      call.number = ++count;
      call.threadNumber = thread;
      call.began = call.took = 0;
      call.thread.clear();
      text += line(call);
    }
  }
  const int file = openRecording(path, 0666);
  int error = writeAll(file, text);
  if (::close(file) != 0 && error == 0) error = errno;
  if (error != 0) fail(path, std::string("cannot be written: ") + std::strerror(error));
}

std::string differenceOfCalls(const std::vector<RecordedCall>& expected,
                              const std::vector<RecordedCall>& actual) {
  std::vector<Thread> left = byThread(expected), right = byThread(actual);
  for (auto one = left.begin(); one != left.end();) {
    const auto same = std::find_if(right.begin(), right.end(),
                                   [&](const Thread& other) { return isSameThread(*one, other); });
    if (same == right.end()) {
      ++one;
      continue;
    }
    right.erase(same);
    one = left.erase(one);
  }
  if (left.empty() && right.empty()) return "";
  return difference(left.empty() ? Thread() : left.front(), right.empty() ? Thread() : right.front());
}

}  // namespace vorn_testing
