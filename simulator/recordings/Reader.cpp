#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "Format.h"
#include "text/Files.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

constexpr std::int64_t kMostLost = 1000000000000;  // So that sums have room.
constexpr std::size_t kMostPiped = std::size_t{1} << 30;

[[noreturn]] void refuse(const std::string& path, int error) {
  throw std::runtime_error(oneLine(path) + ": cannot be read: " + std::strerror(error));
}

/// Reads a recording line by line.
class Reader {
 public:
  explicit Reader(const std::string& path) : m_recorded{path, 0, "", "", "", {}, {}, {}, {}, {}, {}} {
    struct stat there {};
    if (::stat(path.c_str(), &there) != 0) refuse(path, errno);
    if (S_ISDIR(there.st_mode)) refuse(path, EISDIR);
    const bool pipe = S_ISFIFO(there.st_mode);
    std::istringstream piped(pipe ? readWhole(path, kMostPiped) : "");
    std::ifstream file;
    if (!pipe) file.open(path, std::ios::binary);
    std::istream& in = pipe ? static_cast<std::istream&>(piped) : file;
    if (!in) refuse(path, errno);
    refuseUnlessLines(in);
    std::string next, text;
    if (!std::getline(in, text)) fail(0, "expected a recording, found an empty file");
    for (bool more = true; more; text.swap(next)) {
      more = static_cast<bool>(std::getline(in, next));
      ++m_line;
      read(text, !more);
    }
    if (in.bad()) refuse(path, EIO);
    order();
    tellUnknown();
  }

  Recorded take() { return std::move(m_recorded); }

 private:
  using Call = Recorded::Call;

  std::string place(std::size_t line) const {
    return oneLine(m_recorded.path) + ":" + (line > 0 ? std::to_string(line) + ":" : "") + " ";
  }

  [[noreturn]] void fail(std::size_t line, const std::string& why) const {
    throw std::runtime_error(place(line) + why);
  }

  [[noreturn]] void failHead() const {
    fail(1, "expected a recording of version 1 to " + std::to_string(Recording::kVersion));
  }

  /// What has no end of a line, such as a device, would be read without an end.
  void refuseUnlessLines(std::istream& in) const {
    std::string first(kLongestHeader, '\0');
    in.read(&first[0], static_cast<std::streamsize>(first.size()));
    if (in && first.find('\n') == std::string::npos) failHead();
    in.clear();
    in.seekg(0);
  }

  void read(const std::string& text, bool last) {
    try {
      const std::size_t mark = m_line == 1 && text.compare(0, 3, "\xef\xbb\xbf") == 0 ? 3 : 0;
      const Json json = parsed(text.substr(mark));
      if (m_line == 1) return readHead(json);
      if (!json.is_discarded()) return read(json);
    } catch (const Unfit& unfit) {
      if (m_line == 1) failHead();
      std::string why = unfit.what();
      const std::size_t found = why.find(kFound);
      if (found != std::string::npos && mayHoldSecret(text))
        why.replace(found, std::string::npos, kFound + kMask);
      fail(m_line, "expected a line of a recording; " + why);
    }
    if (!last) fail(m_line, "expected a line of a recording");
    m_recorded.leftOut.push_back(place(m_line) + "left out, the line is cut");
  }

  void readHead(const Json& json) {
    m_recorded.version = versionOf(json);
    if (m_recorded.version == 0) failHead();
    for (const auto& [name, to] : {std::pair{"program", &m_recorded.program},
                                   {"started", &m_recorded.started},
                                   {"writer", &m_recorded.writer}}) {
      if (json.contains(name) && json[name].is_string()) *to = json[name].get<std::string>();
    }
  }

  void read(const Json& json) {
    if (!json.is_object()) throw Unfit("expected a call, found " + quoted(json));
    if (m_recorded.version == 1 || json.contains("call")) {
      m_recorded.calls.push_back({call(json, Known::kAtReturn), m_line});
    } else if (json.contains("open")) {
      if (!json["open"].is_object()) throw Unfit("expected a call, found " + quoted(json["open"]));
      m_recorded.open.push_back({call(json["open"], Known::kAtBegin), m_line});
    } else if (json.contains("leftOut")) {
      m_recorded.lost.push_back({time(json), number(json, "leftOut", kMostLost)});
    } else if (json.contains("sound")) {
      m_recorded.sounds.push_back(sound(json));
    } else if (json.contains("note")) {
      m_recorded.notes.push_back({time(json), asText(json["note"])});
    } else {
      unknown(m_kinds, json.empty() ? "nothing" : json.begin().key());
    }
  }

  /// What a line that is no call holds of numbers; 0 when it does not tell.
  static std::int64_t number(const Json& json, const char* name, std::int64_t most = kMost) {
    try {
      return json.contains(name) ? asWhole(json[name], 0, most) : 0;
    } catch (const Unfit& unfit) {
      throw Unfit(std::string("the field ") + name + ": " + unfit.what());
    }
  }

  static std::chrono::microseconds time(const Json& json, const char* name = "time") {
    return std::chrono::microseconds(number(json, name, kMostTime));
  }

  static Recorded::Sound sound(const Json& json) {
    constexpr int kLoudest = 32768;
    return {time(json),
            asText(json["sound"]),
            number(json, "blocks"),
            number(json, "samples"),
            static_cast<int>(number(json, "peak", kLoudest)),
            static_cast<int>(number(json, "level", kLoudest)),
            time(json, "gap")};
  }

  /// What is known of a call at its begin, or when it has returned.
  Crossing call(const Json& json, Known known) {
    Crossing call{};
    std::size_t taken = 0;
    for (const Field& field : fields()) {
      const auto found = json.find(field.told.name);
      if (found == json.end()) {
        if (field.known == Known::kAtBegin || field.known == known)
          throw Unfit("expected the field " + field.told.name);
        continue;
      }
      ++taken;
      try {
        field.read(*found, call);
      } catch (const Unfit& unfit) {
        throw Unfit("the field " + field.told.name + ": " + unfit.what());
      }
    }
    if (taken == json.size()) return call;
    for (const auto& [name, value] : json.items()) {
      const auto named = [&, key = name](const Field& field) { return field.told.name == key; };
      if (std::none_of(fields().begin(), fields().end(), named)) unknown(m_fields, name);
    }
    return call;
  }

  void order() {
    std::vector<Call>& calls = m_recorded.calls;
    std::stable_sort(calls.begin(), calls.end(), [](const Call& left, const Call& right) {
      return left.call.number < right.call.number;
    });
    for (std::size_t i = 1; i < calls.size(); ++i) {
      if (calls[i].call.number == calls[i - 1].call.number)
        fail(calls[i].line, "the call " + std::to_string(calls[i].call.number) + " stands twice");
    }
    std::sort(m_recorded.open.begin(), m_recorded.open.end(),
              [](const Call& left, const Call& right) { return left.call.number < right.call.number; });
    // Where threads have no numbers, their names tell them apart.
    std::map<std::string, int> threads;
    for (std::vector<Call>* const some : {&calls, &m_recorded.open}) {
      for (Call& recorded : *some) {
        if (recorded.call.threadNumber > 0) continue;
        recorded.call.threadNumber =
            threads.emplace(recorded.call.thread, static_cast<int>(threads.size()) + 1).first->second;
      }
    }
  }

  /// What this version does not know, by name: the first line, and how many.
  using Unknown = std::map<std::string, std::pair<std::size_t, std::size_t>>;

  void unknown(Unknown& names, const std::string& name) {
    ++names.emplace(isSecretText(name) ? kMask : name, std::pair{m_line, 0}).first->second.second;
  }

  void tellUnknown() {
    const auto tell = [this](const Unknown& names, const std::string& what) {
      for (const auto& [name, seen] : names)
        m_recorded.leftOut.push_back(place(seen.first) + "passed over, " + what + excerpt(name) +
                                     " is not known; lines that have it: " + std::to_string(seen.second));
    };
    tell(m_fields, "the field ");
    tell(m_kinds, "a line that begins with ");
  }

  Recorded m_recorded;
  std::size_t m_line = 0;
  Unknown m_fields, m_kinds;
};

}  // namespace

Recorded Recording::read(const std::string& path) { return Reader(path).take(); }

}  // namespace vorn_speaker
