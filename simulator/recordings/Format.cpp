#include "Format.h"

#include <algorithm>
#include <ctime>

#include "text/Lines.h"

namespace vorn_speaker {

namespace {

constexpr char kFormat[] = "vorn-speaker";

// Longer than any stack is deep.
constexpr int kMostInside = 1000000;
constexpr int kMostThreads = 1000000000;
constexpr std::size_t kMostNested = 16;
constexpr std::size_t kMostFields = 1000;

/// What stands in place of a value that is not known.
template <class Value, class Write>
Json orNull(const std::optional<Value>& value, Write write) {
  return value ? Json(write(*value)) : Json(nullptr);
}

std::optional<std::chrono::microseconds> durationOrNull(const Json& json) {
  return json.is_null() ? std::nullopt : std::make_optional(asDuration(json));
}

std::string name(const Json& json) {
  const std::string word = asText(json);
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
  for (const Json& item : json) texts.push_back(asText(item));
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

/// Before it is read: what is deeper than the stack cannot be copied, and each field is compared with all before it.
void refuseUnlessFlat(const std::string& line) {
  std::size_t open = 0, fields = 0;
  bool inText = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (inText && c == '\\') {
      ++i;
    } else if (c == '"') {
      inText = !inText;
    } else if (!inText && (c == '[' || c == '{')) {
      if (++open > kMostNested) throw Unfit("its lists are too deep");
    } else if (!inText && (c == ']' || c == '}') && open > 0) {
      --open;
    } else if (!inText && c == ':' && ++fields > kMostFields) {
      throw Unfit("it has too many fields");
    }
  }
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

}  // namespace

// Of lists and objects the kind only: they may be deeper than a stack.
std::string quoted(const Json& json) {
  return json.is_structured() ? std::string("an ") + json.type_name() : excerpt(dumped(json));
}

std::int64_t asWhole(const Json& json, std::int64_t least, std::int64_t most) {
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

std::chrono::microseconds asDuration(const Json& json) {
  return std::chrono::microseconds(asWhole(json, 0, kMostTime));
}

std::string asText(const Json& json) {
  if (!json.is_string()) throw Unfit("expected a text, found " + quoted(json));
  return json.get<std::string>();
}

const std::vector<Field>& fields() {
  static const auto count = [](std::chrono::microseconds time) { return time.count(); };
  static const std::vector<Field> all = {
      {{"call", "its number, in the order in which calls began"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.number); },
       [](const Json& json, Crossing& call) {
         call.number = static_cast<unsigned long>(asWhole(json, 1, kMost));
       }},
      {{"time", "when it began, in microseconds since the start"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.began.count()); },
       [](const Json& json, Crossing& call) { call.began = asDuration(json); }},
      {{"duration", "how long it took, in microseconds"},
       Known::kAtReturn,
       [](const Crossing& call) { return Json(call.took.count()); },
       [](const Json& json, Crossing& call) { call.took = asDuration(json); }},
      {{"thread", "the name of the thread: `assistant`, `firmware`, `microphone`, or a thread of the host's"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.thread); },
       [](const Json& json, Crossing& call) { call.thread = asText(json); }},
      {{"threadNumber", "its number, in the order in which threads were first seen, from 1"},
       Known::kMaybe,
       [](const Crossing& call) { return Json(call.threadNumber); },
       [](const Json& json, Crossing& call) {
         call.threadNumber = static_cast<int>(asWhole(json, 1, kMostThreads));
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
       [](const Json& json, Crossing& call) { call.slot = static_cast<int>(asWhole(json, 0, kMostSlots)); }},
      {{"inside", "how many calls of the same thread it ran inside"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.depth); },
       [](const Json& json, Crossing& call) {
         call.depth = static_cast<int>(asWhole(json, 0, kMostInside));
       }},
      {{"arguments", "a list of texts, each as a scenario holds the value"},
       Known::kAtBegin,
       [](const Crossing& call) { return Json(call.spelled); },
       [](const Json& json, Crossing& call) { call.arguments = call.spelled = values(json); }},
      {{"result", "as it is printed; empty without one"},
       Known::kAtReturn,
       [](const Crossing& call) { return Json(call.result); },
       [](const Json& json, Crossing& call) { call.result = asText(json); }},
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
         if (call.threw) call.exception = asText(json);
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

Json parsed(const std::string& line) {
  refuseUnlessFlat(line);
  try {
    return Json::parse(line);
  } catch (const Json::parse_error&) {
    return Json(Json::value_t::discarded);
  } catch (const Json::out_of_range&) {
    throw Unfit("a number is too large");
  }
}

Json headerLine() {
  return {{"recording", kFormat},
          {"version", Recording::kVersion},
          {"started", nowInUtc()},
          {"writer", "vorn-speaker " VORN_SPEAKER_VERSION}};
}

int versionOf(const Json& json) {
  const bool ours = json.is_object() && json.contains("recording") && json["recording"] == kFormat &&
                    json.contains("version") && json["version"].is_number_integer();
  return ours && json["version"] >= 1 && json["version"] <= Recording::kVersion ? json["version"].get<int>()
                                                                                : 0;
}

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

}  // namespace vorn_speaker
