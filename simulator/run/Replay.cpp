#include "Replay.h"

#include <algorithm>
#include <iomanip>
#include <map>
#include <ostream>
#include <utility>

#include "language/Operations.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

constexpr std::size_t kContext = 3;

/// Whether the assistant client made the call, and the host answers it.
bool isPlayable(const Crossing& call) {
  const bool host = call.target == kHostInterface && call.operation != "getEMPAdapter";
  return call.depth == 0 && (host || call.target == "VornEMPAdapterIF");
}

std::string statement(const Crossing& call) {
  std::string line = call.fullName();
  for (const std::string& argument : call.spelled) line += " " + oneLine(argument);
  return line;
}

std::string answer(const Crossing& call) {
  if (call.threw) return "threw " + call.exception;
  const std::string text = call.answer();
  return text.empty() ? "no result" : text;
}

/// The call as a statement would make it; throws Unreadable.
BoundCall bound(const Crossing& call) {
  Token name;
  name.text = call.fullName();
  const Operation* const operation = operationAt(call.target, call.slot);
  if (!operation || operation->fullName() != name.text)
    throw Unreadable(1, "expected an operation of the slot " + std::to_string(call.slot), name.text);
  std::vector<Token> arguments;
  for (const std::string& argument : call.spelled) arguments.push_back(split(argument).at(0));
  return bindCall(Caller::kAssistant, name, arguments, 1);
}

/// Whether a call is answered as recorded. What was masked then is compared with what is masked now.
bool isSame(const std::string& recorded, Crossing now) {
  if (recorded.find(kMask) != std::string::npos) {
    Masker masker;
    now.masked = now.masked || now.secret;
    masker.mask(now);
    return Recording::asRead(answer(now)) == recorded;
  }
  now.result = now.clear.answer;
  now.written.clear();
  now.exception = now.clear.exception;
  return Recording::asRead(answer(now)) == recorded;
}

std::string place(const Recorded& recording, std::size_t line) {
  return oneLine(recording.path) + ":" + std::to_string(line) + ": ";
}

}  // namespace

bool replay(const Recorded& recording, Speaker& speaker, std::ostream& out) {
  for (const std::string& told : recording.leftOut) out << told << '\n';
  std::vector<std::pair<const Recorded::Call*, BoundCall>> playable;
  for (const Recorded::Call& recorded : recording.calls) {
    if (!isPlayable(recorded.call)) continue;
    try {
      playable.emplace_back(&recorded, bound(recorded.call));
    } catch (const Unreadable& error) {
      throw std::runtime_error(place(recording, recorded.line) + error.masked().what());
    }
  }
  if (playable.empty())
    throw std::runtime_error(oneLine(recording.path) +
                             ": expected calls of the assistant client, found none to play");
  Masker masker;
  std::vector<std::string> before;
  for (const auto& [recorded, call] : playable) {
    Crossing then = recorded->call;
    const std::string expected = answer(then);
    if (!speaker.secrets()) masker.mask(then);
    speaker.call(Caller::kAssistant, then.fullName(), call, 1);
    const std::vector<Crossing> calls = speaker.recent();
    const auto now = std::find_if(calls.begin(), calls.end(), [&](const Crossing& arrived) {
      return arrived.target == then.target && arrived.slot == then.slot;
    });
    const std::string seen = now == calls.end() ? "no call" : oneLine(answer(*now));
    if (now == calls.end() || !isSame(expected, *now)) {
      out << place(recording, recorded->line) << "Call " << then.number << " is answered differently:\n";
      for (std::size_t i = before.size() - std::min(before.size(), kContext); i < before.size(); ++i) {
        out << "  before    " << before[i] << '\n';
      }
      out << "  called    " << statement(then) << "\n  recorded  " << oneLine(answer(then))
          << "\n  now       " << seen << '\n';
      return false;
    }
    before.push_back(statement(then) + " = " + seen);
  }
  out << before.size() << " calls, all answered as recorded.\n";
  return true;
}

void report(const Recorded& recording, std::ostream& out, bool secrets) {
  Masker masker;
  for (const std::string& told : recording.leftOut) out << told << '\n';
  out << "assistant          firmware\n";
  std::map<std::string, std::vector<std::int64_t>> durations;
  std::string last;
  for (const Recorded::Call& recorded : recording.calls) {
    Crossing call = recorded.call;
    if (!secrets) masker.mask(call);
    durations[(call.isDown() ? "down  " : "up    ") + call.fullName()].push_back(call.took.count());
    // One arrow for a stream of blocks.
    const std::string block =
        call.operation == "sendAudioData" || call.operation == "sendData" ? call.fullName() : "";
    if (!block.empty() && block == last) continue;
    last = block;
    const std::string line = excerpt(statement(call));
    out << (call.isDown() ? "    |----------------->|  " : "    |<-----------------|  ")
        << std::string(2 * static_cast<std::size_t>(std::min(call.depth, kDeepest)), ' ') << line;
    if (call.threw || !call.answer().empty()) out << " = " << oneLine(answer(call));
    out << '\n';
  }
  out << "\n"
      << std::left << std::setw(76) << "Microseconds" << std::right << std::setw(8) << "calls" << std::setw(8)
      << "least" << std::setw(8) << "median" << std::setw(8) << "most" << '\n';
  for (auto& [name, times] : durations) {
    std::sort(times.begin(), times.end());
    out << std::left << std::setw(76) << name << std::right << std::setw(8) << times.size() << std::setw(8)
        << times.front() << std::setw(8) << times[times.size() / 2] << std::setw(8) << times.back() << '\n';
  }
}

}  // namespace vorn_speaker
