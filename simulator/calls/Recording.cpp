#include "Recording.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "text/Lines.h"

namespace vorn_speaker {

using Json = nlohmann::ordered_json;

namespace {

constexpr char kFormat[] = "vorn-speaker";
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

std::string dumped(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

/// What a field holds was not expected.
struct Unfit : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Of lists and objects the kind only: they may be deeper than a stack.
std::string quoted(const Json& json) {
  return json.is_structured() ? std::string("an ") + json.type_name() : excerpt(dumped(json));
}

std::int64_t whole(const Json& json, std::int64_t least, std::int64_t most) {
  const bool fits =
      json.is_number_integer() &&
      (!json.is_number_unsigned() || json.get<std::uint64_t>() <= static_cast<std::uint64_t>(kMost));
  if (!fits || json.get<std::int64_t>() < least || json.get<std::int64_t>() > most) {
    const std::string range = most == kMost
                                  ? " from " + std::to_string(least)
                                  : " from " + std::to_string(least) + " to " + std::to_string(most);
    throw Unfit("expected a whole number" + range + ", found " + quoted(json));
  }
  return json.get<std::int64_t>();
}

std::string text(const Json& json) {
  if (!json.is_string()) throw Unfit("expected a text, found " + quoted(json));
  return json.get<std::string>();
}

std::string name(const Json& json) {
  const std::string word = text(json);
  const auto isLetter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  };
  if (word.empty() || !std::all_of(word.begin(), word.end(), isLetter))
    throw Unfit("expected a name, found " + quoted(json));
  return word;
}

std::vector<std::string> list(const Json& json) {
  if (!json.is_array()) throw Unfit("expected a list of texts, found " + quoted(json));
  std::vector<std::string> texts;
  for (const Json& item : json) texts.push_back(text(item));
  return texts;
}

/// Each one value, as a scenario holds it.
std::vector<std::string> values(const Json& json) {
  std::vector<std::string> spelled = list(json);
  for (const std::string& value : spelled) {
    try {
      if (split(value).size() == 1) continue;
    } catch (const Unreadable&) {
    }
    throw Unfit("expected values as a scenario holds them, found " + excerpt(value));
  }
  return spelled;
}

/// One field: the table of what is written, read and told.
struct Field {
  RecordedField told;
  Json (*write)(const Crossing&);
  void (*read)(const Json&, Crossing&);
};

// Longer than any stack is deep.
constexpr int kMostInside = 1000000;
constexpr int kMostSlots = 1000;

const std::vector<Field>& fields() {
  static const std::vector<Field> all = {
      {{"call", "its number, in the order in which calls began"},
       [](const Crossing& call) { return Json(call.number); },
       [](const Json& json, Crossing& call) {
         call.number = static_cast<unsigned long>(whole(json, 1, kMost));
       }},
      {{"time", "when it began, in microseconds since the start"},
       [](const Crossing& call) { return Json(call.began.count()); },
       [](const Json& json, Crossing& call) {
         call.began = std::chrono::microseconds(whole(json, 0, kMost));
       }},
      {{"duration", "how long it took, in microseconds"},
       [](const Crossing& call) { return Json(call.took.count()); },
       [](const Json& json, Crossing& call) {
         call.took = std::chrono::microseconds(whole(json, 0, kMost));
       }},
      {{"thread", "`assistant`, `firmware`, `microphone`, or a thread of the host's"},
       [](const Crossing& call) { return Json(call.thread); },
       [](const Json& json, Crossing& call) { call.thread = text(json); }},
      {{"direction", "`down` to the firmware or `up` to the assistant side"},
       [](const Crossing& call) { return Json(call.down ? "down" : "up"); },
       [](const Json& json, Crossing& call) {
         if (json != "down" && json != "up") throw Unfit("expected down or up, found " + quoted(json));
         call.down = json == "down";
       }},
      {{"adapter", "as in scenarios"},
       [](const Crossing& call) { return Json(call.adapter); },
       [](const Json& json, Crossing& call) { call.adapter = name(json); }},
      {{"operation", "as in scenarios"},
       [](const Crossing& call) { return Json(call.operation); },
       [](const Json& json, Crossing& call) { call.operation = name(json); }},
      {{"interface", "where it arrived"},
       [](const Crossing& call) { return Json(call.target); },
       [](const Json& json, Crossing& call) { call.target = name(json); }},
      {{"slot", "its place there, in the virtual table"},
       [](const Crossing& call) { return Json(call.slot); },
       [](const Json& json, Crossing& call) { call.slot = static_cast<int>(whole(json, 1, kMostSlots)); }},
      {{"inside", "how many calls of the same thread it ran inside"},
       [](const Crossing& call) { return Json(call.depth); },
       [](const Json& json, Crossing& call) { call.depth = static_cast<int>(whole(json, 0, kMostInside)); }},
      {{"arguments", "a list of texts, each as a scenario holds the value"},
       [](const Crossing& call) { return Json(call.spelled); },
       [](const Json& json, Crossing& call) { call.arguments = call.spelled = values(json); }},
      {{"result", "as it is printed; empty without one"},
       [](const Crossing& call) { return Json(call.result); },
       [](const Json& json, Crossing& call) { call.result = text(json); }},
      {{"written", "what was written through references, `[\"value=on\"]`"},
       [](const Crossing& call) { return Json(call.written); },
       [](const Json& json, Crossing& call) { call.written = list(json); }},
      {{"exception",
        "the text of the one that it ended by, `\"no std::exception\"` for any other kind; `null` when none did"},
       [](const Crossing& call) { return call.threw ? Json(call.exception) : Json(nullptr); },
       [](const Json& json, Crossing& call) {
         call.threw = !json.is_null();
         if (call.threw) call.exception = text(json);
       }},
  };
  return all;
}

Json header() { return {{"recording", kFormat}, {"version", Recording::kVersion}}; }

bool isHeader(const Json& json) {
  return json.is_object() && json.contains("recording") && json["recording"] == kFormat &&
         json.contains("version") && json["version"].is_number_integer() &&
         json["version"] == Recording::kVersion;
}

Crossing fromJson(const Json& json) {
  Crossing call{};
  if (!json.is_object()) throw Unfit("expected a call, found " + quoted(json));
  for (const Field& field : fields()) {
    const auto found = json.find(field.told.name);
    if (found == json.end()) throw Unfit("expected the field " + field.told.name);
    try {
      field.read(*found, call);
    } catch (const Unfit& unfit) {
      throw Unfit("the field " + field.told.name + ": " + unfit.what());
    }
  }
  return call;
}

[[noreturn]] void refuse(const std::string& path, int error) {
  throw std::runtime_error(oneLine(path) + ": cannot be read: " + std::strerror(error));
}

std::string content(const std::string& path) {
  struct stat there {};
  if (::stat(path.c_str(), &there) != 0) refuse(path, errno);
  if (S_ISDIR(there.st_mode)) refuse(path, EISDIR);
  std::ifstream file(path, std::ios::binary);
  if (!file) refuse(path, errno);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The path, unless something stands there that is not ours to replace.
const std::string& replaceable(const std::string& path) {
  struct stat there {};
  if (::stat(path.c_str(), &there) != 0 || (!S_ISREG(there.st_mode) && !S_ISDIR(there.st_mode))) return path;
  if (S_ISREG(there.st_mode) && there.st_size == 0) return path;
  std::ifstream file(path, std::ios::binary);
  std::string first(dumped(header()).size() + 16, '\0');
  file.read(&first[0], static_cast<std::streamsize>(first.size()));
  first.resize(static_cast<std::size_t>(file.gcount()));
  const std::vector<std::string> all = lines(first);
  if (S_ISDIR(there.st_mode) || all.empty() || !isHeader(Json::parse(all[0], nullptr, false)))
    throw std::runtime_error(oneLine(path) + " is there already and is no recording; choose another name");
  return path;
}

}  // namespace

const std::vector<RecordedField>& recordedFields() {
  static const std::vector<RecordedField> all = [] {
    std::vector<RecordedField> told;
    for (const Field& field : fields()) told.push_back(field.told);
    return told;
  }();
  return all;
}

Recording::Recording(const std::string& path) : m_file(replaceable(path)) {
  m_file.stream() << dumped(header()) << std::endl;
}

void Recording::ended(const Crossing& call) {
  Json json;
  for (const Field& field : fields()) json[field.told.name] = field.write(call);
  m_file.stream() << dumped(json) << std::endl;
}

std::string Recording::asRead(const std::string& text) {
  return Json::parse(dumped(text)).get<std::string>();
}

void Recording::finish() { m_file.finish(); }

Recorded Recording::read(const std::string& path) {
  Recorded recorded{path, {}, ""};
  const std::vector<std::string> all = lines(content(path));
  if (all.empty()) throw std::runtime_error(oneLine(path) + ": expected a recording, found an empty file");
  for (std::size_t number = 1; number <= all.size(); ++number) {
    const std::string place = oneLine(path) + ":" + std::to_string(number) + ": ";
    const Json json = Json::parse(all[number - 1], nullptr, false);
    if (number == 1) {
      if (!isHeader(json))
        throw std::runtime_error(place + "expected a recording of version " + std::to_string(kVersion));
      continue;
    }
    if (json.is_discarded()) {
      if (number < all.size()) throw std::runtime_error(place + "expected a line of a recording");
      recorded.leftOut = place + "left out, the line is cut";
      continue;
    }
    try {
      recorded.calls.push_back({fromJson(json), number});
    } catch (const Unfit& unfit) {
      throw std::runtime_error(place + "expected a line of a recording; " + unfit.what());
    }
  }
  std::stable_sort(recorded.calls.begin(), recorded.calls.end(),
                   [](const Recorded::Call& left, const Recorded::Call& right) {
                     return left.call.number < right.call.number;
                   });
  for (std::size_t i = 1; i < recorded.calls.size(); ++i) {
    if (recorded.calls[i].call.number == recorded.calls[i - 1].call.number)
      throw std::runtime_error(oneLine(path) + ":" + std::to_string(recorded.calls[i].line) + ": the call " +
                               std::to_string(recorded.calls[i].call.number) + " stands twice");
  }
  return recorded;
}

}  // namespace vorn_speaker
