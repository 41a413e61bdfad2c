// Reads a text of a wanted size and form, for tests/endurance/growth to count what that takes.
//
//   endurance_growth              the forms
//   endurance_growth FORM SIZE    reads one, and prints how many kB of memory the process had at most
//   endurance_growth SIZE...      reads each form in these sizes, a dump of callgrind for each

#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "readers.h"
#include "recordings/Export.h"
#include "recordings/Report.h"

namespace {

using namespace vorn_speaker;

/// A text of at least that size: the part again and again, with a number that goes up where it has a #.
std::string many(const std::string& part, std::size_t size, const std::string& before = "") {
  std::string text = before;
  const std::size_t hash = part.find('#');
  for (unsigned long number = 1; text.size() < size; ++number) {
    if (hash == std::string::npos) {
      text += part;
    } else {
      text.append(part, 0, hash).append(std::to_string(number)).append(part, hash + 1);
    }
  }
  return text;
}

std::string wave(std::size_t size) {
  const auto number = [](std::uint32_t value, int bytes) {
    std::string text;
    for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value & 0xff);
    return text;
  };
  const auto length = static_cast<std::uint32_t>(size);
  return "RIFF" + number(length + 36, 4) + "WAVEfmt " + number(16, 4) + number(1, 2) + number(1, 2) +
         number(16000, 4) + number(32000, 4) + number(2, 2) + number(16, 2) + "data" + number(length, 4) +
         std::string(size, '\x11');
}

constexpr char kRecording[] = "{\"recording\":\"vorn-speaker\",\"version\":1}\n";
constexpr char kCall[] =
    R"({"call":#,"time":1,"duration":1,"thread":"assistant","direction":"down","adapter":"VornDeviceInfo",)"
    R"("operation":"getVolume","interface":"VornDALImplIF","slot":13,"inside":0,"arguments":[],"result":"30",)"
    R"("written":[],"exception":null})"
    "\n";

/// Calls that say that they ran inside a million others.
std::string deepCalls(std::size_t size) {
  std::string call = kCall;
  call.replace(call.find("\"inside\":0"), 10, "\"inside\":1000000");
  return many(call, size, kRecording);
}

/// A call for every 16 bytes, none of which ends before the last begins: of as many threads, or inside each other.
void tellLongCalls(std::size_t size, bool inside) {
  Recorded recorded{"made", 2, "", "", "", {}, {}, {}, {}, {}, {}};
  for (std::size_t i = 0; i < size / 16; ++i) {
    Crossing call{};
    call.number = i + 1;
    call.adapter = "VornDeviceInfo";
    call.operation = "getVolume";
    call.threadNumber = inside ? 1 : static_cast<int>(i + 1);
    call.depth = inside ? static_cast<int>(i) : 0;
    call.began = std::chrono::microseconds(i);
    call.took = std::chrono::hours(1);
    recorded.calls.push_back({call, i + 1});
  }
  std::ostringstream told;
  report(recorded, told);
  for (const ExportFormat& format : exportFormats()) format.write(recorded, told);
}

#define TRACED "VornDeviceAbstractionLayer::"
constexpr char kLogin[] =
    " Time: bool " TRACED
    "VornEMPAdapterControl::login(const string&, const string&, bool, std::chrono::milliseconds, "
    "std::string): accessToken: abc, userName: ada, forceLogin: 1, refreshInterval: #ms, playerId: x\n";

struct Form {
  const char* name;
  const char* reader;
  std::string (*text)(std::size_t size);
  void (*tell)(std::size_t size) = nullptr;  ///< In place of reading a text.
};

using Size = std::size_t;
const Form kForms[] = {
    {"scenario-calls", "scenario",
     [](Size n) { return many("assistant VornDeviceInfo.setSystemSetting volume #\nexpect true\n", n); }},
    {"scenario-blank", "scenario", [](Size n) { return many("\n", n); }},
    {"scenario-long-word", "scenario", [](Size n) { return many("a", n, "section "); }},
    {"scenario-long-text", "scenario", [](Size n) { return many("\\x41", n, "section \"") + "\""; }},
    {"scenario-long-list", "scenario",
     [](Size n) { return many("ab, ", n, "assistant VornStorage.readKeyValue [") + "]"; }},
    {"scenario-long-set", "scenario",
     [](Size n) { return many("key#=b, ", n, "assistant VornStorage.writeKeyValue {") + "}"; }},
    {"scenario-unknown", "scenario", [](Size n) { return many("assistant VornDeviceInfo.getVolum\n", n); }},
    {"scenario-long-unknown", "scenario", [](Size n) { return many("Vorn", n, "assistant "); }},
    {"device-settings", "device", [](Size n) { return many("key# = \"on\"\n", n, "[settings]\n"); }},
    {"device-long-text", "device", [](Size n) { return many("a", n, "locale = \"") + "\"\n"; }},
    {"sound-wave", "sound", wave},
    {"recording-calls", "recording", [](Size n) { return many(kCall, n, kRecording); }},
    {"recording-inside", "recording", deepCalls},
    {"recording-blank", "recording", [](Size n) { return many("\n", n, kRecording); }},
    {"recording-deep", "recording", [](Size n) { return many("[", n, kRecording) + "\n{}\n"; }},
    {"recording-long-line", "recording",
     [](Size n) { return many("0, ", n, std::string(kRecording) + "["); }},
    {"recording-fields", "recording",
     [](Size n) { return many(",\"field#\":1", n, std::string(kRecording) + "{\"call\":1") + "}\n"; }},
    {"recording-at-once", "", nullptr, [](Size n) { tellLongCalls(n, false); }},
    {"recording-nested", "", nullptr, [](Size n) { tellLongCalls(n, true); }},
    {"trace-lines", "trace", [](Size n) { return many(kLogin, n); }},
    {"trace-foreign", "trace", [](Size n) { return many(" Time: line #\n", n); }},
    {"trace-long-line", "trace", [](Size n) { return many("accessToken: ", n, " Time: " TRACED); }},
    {"trace-names", "trace", [](Size n) { return many(TRACED "Vorn::", n, " Time: "); }},
    {"trace-blank", "trace", [](Size n) { return many("\n", n); }},
    {"options-long-word", "options", [](Size n) { return many("a", n, "--"); }},
    {"options-words", "options", [](Size n) { return many("--strickt\n", n); }},
    {"statement-lines", "statement",
     [](Size n) { return many("assistant VornDeviceInfo.setSystemSetting token #\n", n); }},
    {"statement-long-word", "statement", [](Size n) { return many("a", n); }},
    {"statement-words", "statement", [](Size n) { return many("assistant ", n); }},
};

void read(const Form& form, std::size_t size) {
  const std::string text = form.text ? form.text(size) : "";
  const std::string label = form.name + (" " + std::to_string(size));
  CALLGRIND_ZERO_STATS;
  if (form.tell) form.tell(size);
  for (const Reader& reader : readers()) {
    if (std::strcmp(reader.name, form.reader) == 0) reader.read(text);
  }
  CALLGRIND_DUMP_STATS_AT(label.c_str());
}

}  // namespace

int main(int count, char** arguments) {
  if (count == 1) {
    for (const Form& form : kForms) std::cout << form.name << '\n';
    return 0;
  }
  for (const Form& form : kForms) {
    if (std::isdigit(static_cast<unsigned char>(arguments[1][0]))) {
      for (int i = 1; i < count; ++i) read(form, std::strtoul(arguments[i], nullptr, 10));
    } else if (count == 3 && std::strcmp(form.name, arguments[1]) == 0) {
      read(form, std::strtoul(arguments[2], nullptr, 10));
    }
  }
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.compare(0, 6, "VmHWM:") == 0) std::cout << std::strtoul(line.c_str() + 6, nullptr, 10) << '\n';
  }
}
