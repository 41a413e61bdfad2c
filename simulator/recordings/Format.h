#pragma once

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "Json.h"
#include "Recording.h"

namespace vorn_speaker {

/// What a field holds was not expected.
struct Unfit : std::runtime_error {
  using std::runtime_error::runtime_error;
};

const std::string kFound = ", found ";  ///< In messages, before what may be a secret.
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMostTime = 1000000000000000;  ///< In microseconds: sums and nanoseconds have room.

/// Read from JSON, or Unfit is thrown; quoted() shows what was found.
std::string quoted(const Json& json);
std::int64_t asWhole(const Json& json, std::int64_t least, std::int64_t most);
std::chrono::microseconds asDuration(const Json& json);
std::string asText(const Json& json);

/// When a field is known: when the call began, when it had returned; or not in every recording.
enum class Known { kAtBegin, kAtReturn, kMaybe };

/// One field: the table of what is written, read and told.
struct Field {
  RecordedField told;
  Known known;
  Json (*write)(const Crossing&);
  void (*read)(const Json&, Crossing&);
};

const std::vector<Field>& fields();

/// A line as JSON; discarded when it is none. @throws Unfit
Json parsed(const std::string& line);

/// The first line of a recording, and the version that one names, or 0.
Json headerLine();
int versionOf(const Json& json);

constexpr int kMostSlots = 1000;
constexpr std::size_t kLongestHeader = 1 << 16;

}  // namespace vorn_speaker
