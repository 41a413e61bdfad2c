#include "Replay.h"

#include <algorithm>
#include <iomanip>
#include <map>
#include <ostream>

#include "language/Operations.h"

namespace vorn_speaker {

namespace {

constexpr std::size_t kContext = 3;

/// Whether the assistant client made the call, and the host answers it.
bool isPlayable(const Crossing& call) {
  const bool host = call.target == "VornDALImplIF" && call.operation != "getEMPAdapter";
  return call.depth == 0 && (host || call.target == "VornEMPAdapterIF");
}

std::string statement(const Crossing& call) {
  std::string line = call.fullName();
  for (const std::string& argument : call.spelled) line += " " + argument;
  return line;
}

std::string answer(const Crossing& call) {
  if (call.threw) return "threw " + call.exception;
  const std::string text = call.answer();
  return text.empty() ? "no result" : text;
}

void play(const Crossing& call, Speaker& speaker) {
  const std::string line = statement(call);
  std::vector<Token> tokens = split(line);
  const Token name = tokens.front();
  tokens.erase(tokens.begin());
  speaker.call(Caller::kAssistant, name.text, "",
               bindCall(Caller::kAssistant, name, tokens, line.size() + 1));
}

}  // namespace

bool replay(const std::vector<Crossing>& recording, Speaker& speaker, std::ostream& out) {
  std::vector<std::string> before;
  for (const Crossing& recorded : recording) {
    if (!isPlayable(recorded)) continue;
    play(recorded, speaker);
    const std::vector<Crossing> calls = speaker.recent();
    const auto arrived = std::find_if(calls.begin(), calls.end(), [&](const Crossing& call) {
      return call.target == recorded.target && call.slot == recorded.slot;
    });
    const std::string seen = arrived == calls.end() ? "no call" : answer(*arrived);
    if (seen != answer(recorded)) {
      out << "Call " << recorded.number << " is answered differently:\n";
      for (std::size_t i = before.size() - std::min(before.size(), kContext); i < before.size(); ++i) {
        out << "  before    " << before[i] << '\n';
      }
      out << "  called    " << statement(recorded) << "\n  recorded  " << answer(recorded) << "\n  now       "
          << seen << '\n';
      return false;
    }
    before.push_back(statement(recorded) + " = " + seen);
  }
  out << before.size() << " calls, all answered as recorded.\n";
  return true;
}

void report(const std::vector<Crossing>& recording, std::ostream& out) {
  out << "assistant          firmware\n";
  std::map<std::string, std::vector<std::int64_t>> durations;
  std::string last;
  for (const Crossing& call : recording) {
    durations[(call.down ? "down  " : "up    ") + call.fullName()].push_back(call.took.count());
    // One arrow for a stream of blocks.
    const std::string block =
        call.operation == "sendAudioData" || call.operation == "sendData" ? call.fullName() : "";
    if (!block.empty() && block == last) continue;
    last = block;
    std::string line = statement(call);
    if (line.size() > 90) line = line.substr(0, 87) + "...";
    out << (call.down ? "    |----------------->|  " : "    |<-----------------|  ")
        << std::string(2 * static_cast<std::size_t>(call.depth), ' ') << line;
    if (call.threw || !call.answer().empty()) out << " = " << answer(call);
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
