#include "Recording.h"

#include <sys/stat.h>
#include <vorn_testing/Text.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <ctime>
#include <fstream>
#include <limits>
#include <map>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include "recordings/Json.h"
#include "text/Files.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

constexpr char kFormat[] = "vorn-speaker";
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::size_t kLongestHeader = 1 << 16;
constexpr std::size_t kMostPiped = std::size_t{1} << 30;
const std::string kFound = ", found ";  // In messages, before what may be a secret.

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

/// What stands in place of a value that is not known.
template <class Value, class Write>
Json orNull(const std::optional<Value>& value, Write write) {
  return value ? Json(write(*value)) : Json(nullptr);
}

std::chrono::microseconds duration(const Json& json) {
  return std::chrono::microseconds(whole(json, 0, kMost));
}

std::optional<std::chrono::microseconds> durationOrNull(const Json& json) {
  return json.is_null() ? std::nullopt : std::make_optional(duration(json));
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
    throw Unfit("expected values as a scenario holds them" + kFound + kMask);  // It may be any, and a secret.
  }
  return spelled;
}

/// The directions, as they are written.
const std::pair<Direction, const char*> kDirections[] = {
    {Direction::kDown, "down"}, {Direction::kUp, "up"}, {Direction::kLife, "life"}, {Direction::kOwn, "own"}};

Direction direction(const Json& json) {
  for (const auto& [direction, word] : kDirections) {
    if (json == word) return direction;
  }
  throw Unfit("expected down, up, life or own, found " + quoted(json));
}

/// When a field is known: when the call began, when it had returned; or not in every recording.
enum class Known { kAtBegin, kAtReturn, kMaybe };

/// One field: the table of what is written, read and told.
struct Field {
  RecordedField told;
  Known known;
  Json (*write)(const Crossing&);
  void (*read)(const Json&, Crossing&);
};

// Longer than any stack is deep.
constexpr int kMostInside = 1000000;
constexpr int kMostSlots = 1000;
constexpr int kMostThreads = 1000000000;

const std::vector<Field>& fields() {
  static const auto count = [](std::chrono::microseconds time) { return time.count(); };
  static const std::vector<Field> all = {
      {{"call", "its number, in the order in which calls began"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.number); },
       [](const Json& json, Crossing& call) {
         call.number = static_cast<unsigned long>(whole(json, 1, kMost));
       }},
      {{"time", "when it began, in microseconds since the start"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.began.count()); },
       [](const Json& json, Crossing& call) { call.began = duration(json); }},
      {{"duration", "how long it took, in microseconds"},
       Known::kAtReturn,
       [](const Crossing& call) { return Json(call.took.count()); },
       [](const Json& json, Crossing& call) { call.took = duration(json); }},
      {{"thread", "the name of the thread: `assistant`, `firmware`, `microphone`, or a thread of the host's"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.thread); },
       [](const Json& json, Crossing& call) { call.thread = text(json); }},
      {{"threadNumber", "its number, in the order in which threads were first seen, from 1"},
       Known::kMaybe,
       [](const Crossing& call) { return Json(call.threadNumber); },
       [](const Json& json, Crossing& call) {
         call.threadNumber = static_cast<int>(whole(json, 1, kMostThreads));
       }},
      {{"direction",
        "`down` to the firmware or `up` to the assistant side; `life` creates, fetches or shuts down an adapter, `own` "
        "stays inside the library"},
       Known::kAtBegin,
       [](const Crossing& call) {
         for (const auto& [direction, word] : kDirections) {
           if (call.direction == direction) return Json(word);
         }
         return Json();
       },
       [](const Json& json, Crossing& call) { call.direction = direction(json); }},
      {{"adapter", "as in scenarios"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.adapter); },
       [](const Json& json, Crossing& call) { call.adapter = name(json); }},
      {{"operation", "as in scenarios"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.operation); },
       [](const Json& json, Crossing& call) { call.operation = name(json); }},
      {{"interface", "where it arrived; empty for what arrives on none"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.target); },
       [](const Json& json, Crossing& call) { call.target = json == "" ? "" : name(json); }},
      {{"slot", "its place there, in the virtual table; 0 for none"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.slot); },
       [](const Json& json, Crossing& call) { call.slot = static_cast<int>(whole(json, 0, kMostSlots)); }},
      {{"inside", "how many calls of the same thread it ran inside"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.depth); },
       [](const Json& json, Crossing& call) { call.depth = static_cast<int>(whole(json, 0, kMostInside)); }},
      {{"arguments", "a list of texts, each as a scenario holds the value"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.spelled); },
       [](const Json& json, Crossing& call) { call.arguments = call.spelled = values(json); }},
      {{"result", "as it is printed; empty without one"},
       Known::kAtReturn,
       [](const Crossing& call) { return Json(call.result); },
       [](const Json& json, Crossing& call) { call.result = text(json); }},
      {{"written", "what was written through references, `[\"value=on\"]`"},
       Known::kAtReturn,
       [](const Crossing& call) { return Json(call.written); },
       [](const Json& json, Crossing& call) { call.written = list(json); }},
      {{"exception",
        "the text of the one that it ended by, `\"no std::exception\"` for any other kind; `null` when none did"},
       Known::kAtReturn,
       [](const Crossing& call) { return call.threw ? Json(call.exception) : Json(nullptr); },
       [](const Json& json, Crossing& call) {
         call.threw = !json.is_null();
         if (call.threw) call.exception = text(json);
       }},
      {{"waited",
        "how long it waited for the adapter's lock, in microseconds; `null` when that is not known"},
       Known::kMaybe,
       [](const Crossing& call) { return orNull(call.waited, count); },
       [](const Json& json, Crossing& call) { call.waited = durationOrNull(json); }},
      {{"host", "how long the other side took, in microseconds; `null` when that is not known"},
       Known::kMaybe,
       [](const Crossing& call) { return orNull(call.host, count); },
       [](const Json& json, Crossing& call) { call.host = durationOrNull(json); }},
      {{"reached",
        "whether it got to the other side; `false` when the adapter answered its default, `null` when that "
        "is not known"},
       Known::kMaybe,
       [](const Crossing& call) { return orNull(call.reached, [](bool reached) { return reached; }); },
       [](const Json& json, Crossing& call) {
         if (!json.is_boolean() && !json.is_null())
           throw Unfit("expected true, false or null, found " + quoted(json));
         if (json.is_boolean()) call.reached = json.get<bool>();
       }},
  };
  return all;
}

std::string nowInUtc() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(now);
  const std::time_t time = seconds.count();
  std::tm parts{};
  gmtime_r(&time, &parts);
  char day[32], text[64];
  std::strftime(day, sizeof day, "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(
      text, sizeof text, "%s.%06ldZ", day,
      static_cast<long>(std::chrono::duration_cast<std::chrono::microseconds>(now - seconds).count()));
  return text;
}

Json headerLine() {
  return {{"recording", kFormat},
          {"version", Recording::kVersion},
          {"started", nowInUtc()},
          {"writer", "vorn-speaker " VORN_SPEAKER_VERSION}};
}

/// The version that a first line names, or 0.
int versionOf(const Json& json) {
  const bool ours = json.is_object() && json.contains("recording") && json["recording"] == kFormat &&
                    json.contains("version") && json["version"].is_number_integer();
  return ours && json["version"] >= 1 && json["version"] <= Recording::kVersion ? json["version"].get<int>()
                                                                                : 0;
}

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
    const std::size_t mark = m_line == 1 && text.compare(0, 3, "\xef\xbb\xbf") == 0 ? 3 : 0;
    const Json json =
        Json::parse(text.begin() + static_cast<std::ptrdiff_t>(mark), text.end(), nullptr, false);
    if (m_line == 1) {
      m_recorded.version = versionOf(json);
      if (m_recorded.version == 0) failHead();
      for (const auto& [name, to] : {std::pair{"program", &m_recorded.program},
                                     {"started", &m_recorded.started},
                                     {"writer", &m_recorded.writer}}) {
        if (json.contains(name) && json[name].is_string()) *to = json[name].get<std::string>();
      }
      return;
    }
    if (json.is_discarded()) {
      if (!last) fail(m_line, "expected a line of a recording");
      m_recorded.leftOut.push_back(place(m_line) + "left out, the line is cut");
      return;
    }
    try {
      read(json);
    } catch (const Unfit& unfit) {
      std::string why = unfit.what();
      const std::size_t found = why.find(kFound);
      if (found != std::string::npos && mayHoldSecret(text))
        why.replace(found, std::string::npos, kFound + kMask);
      fail(m_line, "expected a line of a recording; " + why);
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
      m_recorded.lost.push_back({time(json), number(json, "leftOut")});
    } else if (json.contains("sound")) {
      m_recorded.sounds.push_back(sound(json));
    } else if (json.contains("note")) {
      m_recorded.notes.push_back({time(json), text(json["note"])});
    } else {
      unknown(m_kinds, json.empty() ? "nothing" : json.begin().key());
    }
  }

  /// What a line that is no call holds of numbers; 0 when it does not tell.
  static std::int64_t number(const Json& json, const char* name, std::int64_t most = kMost) {
    try {
      return json.contains(name) ? whole(json[name], 0, most) : 0;
    } catch (const Unfit& unfit) {
      throw Unfit(std::string("the field ") + name + ": " + unfit.what());
    }
  }

  static std::chrono::microseconds time(const Json& json, const char* name = "time") {
    return std::chrono::microseconds(number(json, name));
  }

  static Recorded::Sound sound(const Json& json) {
    constexpr int kLoudest = 32768;
    return {time(json),
            text(json["sound"]),
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

/// Whether it bears the name of an operation that takes secrets, and another's place: which of its arguments they are is
/// then not known.
bool isMisplaced(const Crossing& call) {
  const Operation* const named = operationNamed(call.fullName());
  if (!named) return false;
  const std::vector<std::string> names = parameterNames(*named);
  const Operation* const there = operationAt(call.target, call.slot);
  return std::any_of(names.begin(), names.end(), isSecretName) &&
         (!there || there->fullName() != named->fullName());
}

void hide(Crossing& call) {
  for (std::vector<std::string>* const texts : {&call.arguments, &call.spelled, &call.written})
    std::fill(texts->begin(), texts->end(), kMask);
  for (std::string* const text : {&call.result, &call.exception}) {
    if (!text->empty()) *text = kMask;
  }
}

/// The path, unless something stands there that is not ours to replace.
const std::string& replaceable(const std::string& path) {
  refuseToReplace(path, "is no recording", kLongestHeader, [](const std::string& first) {
    const std::vector<std::string> all = lines(first);
    return !all.empty() && versionOf(Json::parse(all[0], nullptr, false)) > 0;
  });
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

std::vector<std::string> recordedCells(const Crossing& call, bool returned) {
  std::vector<std::string> cells;
  for (const Field& field : fields()) {
    const Json value = returned || field.known == Known::kAtBegin ? field.write(call) : Json(nullptr);
    cells.push_back(value.is_string() ? value.get<std::string>() : value.is_null() ? "" : dumped(value));
  }
  return cells;
}

std::string jsonText(const std::string& text) {
  return Json(text).dump(-1, ' ', true, Json::error_handler_t::replace);
}

void Selection::setRange(const std::string& text) {
  const std::size_t dash = text.find('-');
  const auto number = [&](const std::string& digits, unsigned long otherwise) {
    unsigned long value = otherwise;
    const char* const end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, value);
    if (!digits.empty() && (read.ec != std::errc() || read.ptr != end || value == 0))
      throw std::invalid_argument("");
    return value;
  };
  try {
    if (text.empty() || text == "-") throw std::invalid_argument("");
    first = number(text.substr(0, dash), 1);
    last = dash == std::string::npos ? first : number(text.substr(dash + 1), last);
    if (first > last) throw std::invalid_argument("");
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument("expected numbers of calls such as 7, 7-9, 7- or -9, found " + excerpt(text));
  }
}

void Selection::addAdapter(const std::string& name) {
  std::vector<std::string> names;
  for (const Operation& operation : operations()) names.push_back(operation.adapter);
  if (std::find(names.begin(), names.end(), name) == names.end())
    throw std::invalid_argument("expected an adapter, found " + excerpt(name) +
                                vorn_testing::didYouMean(name, names));
  adapters.insert(name);
}

bool Selection::takes(const Crossing& call) const {
  return call.number >= first && call.number <= last &&
         (adapters.empty() || adapters.count(call.adapter) > 0);
}

void Recorded::tellLeftOut(std::ostream& out) const {
  for (const std::string& told : leftOut) out << told << '\n';
  std::int64_t together = 0;
  for (const Lost& some : lost) together += some.calls;
  if (together > 0)
    out << oneLine(path) << ": calls that could not be kept when they came: " << together << '\n';
  for (const Call& call : open)
    out << oneLine(path) << ":" << call.line << ": the call " << call.call.number
        << " had not returned: " << call.call.fullName() << '\n';
}

void Recorded::keep(const Selection& selection) {
  for (std::vector<Call>* const some : {&calls, &open}) {
    some->erase(std::remove_if(some->begin(), some->end(),
                               [&](const Call& recorded) { return !selection.takes(recorded.call); }),
                some->end());
  }
}

void Recorded::mask() {
  Masker masker;
  for (std::vector<Call>* const some : {&calls, &open}) {
    for (Call& recorded : *some)
      isMisplaced(recorded.call) ? hide(recorded.call) : masker.mask(recorded.call);
  }
  for (Note& note : notes) {
    if (masker.isSecret(note.text)) note.text = kMask;
  }
  for (Sound& sound : sounds) {
    if (masker.isSecret(sound.name)) sound.name = kMask;
  }
}

Recording::Recording(const std::string& path) : m_file(replaceable(path)) {
  m_file.stream() << header() << std::endl;
}

void Recording::ended(const Crossing& call) { m_file.stream() << line(call) << std::endl; }

std::string Recording::header() { return dumped(headerLine()); }

std::string Recording::line(const Crossing& call) {
  Json json;
  for (const Field& field : fields()) json[field.told.name] = field.write(call);
  return dumped(json);
}

std::string Recording::asRead(const std::string& text) {
  return Json::parse(dumped(text)).get<std::string>();
}

void Recording::finish() { m_file.finish(); }

Recorded Recording::read(const std::string& path) { return Reader(path).take(); }

}  // namespace vorn_speaker
