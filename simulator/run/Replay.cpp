#include "Replay.h"

#include <vorn_testing/Text.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <map>
#include <ostream>
#include <thread>
#include <utility>

#include "Postmortem.h"
#include "language/Operations.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kContext = 3;

/// A call to play, or an adapter's life that begins or ends.
struct Played {
  const Recorded::Call* recorded;
  BoundCall call;  ///< Empty for a life.
};

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

/// Whether a call is answered as recorded. What was masked then is compared with what is masked now. Where a host answers
/// nothing, the adapter may answer by itself: a capture holds that.
bool isSame(const std::string& recorded, Crossing now, const std::string& byAdapter) {
  if (!now.threw && now.clear.answer.empty() && !byAdapter.empty() &&
      Recording::asRead(byAdapter) == recorded)
    return true;
  if (recorded.find(kMask) != std::string::npos) {
    Masker masker;
    now.masked = now.masked || now.secret;
    masker.mask(now);
    return Recording::asRead(now.outcome()) == recorded;
  }
  now.result = now.clear.answer;
  now.written.clear();
  now.exception = now.clear.exception;
  return Recording::asRead(now.outcome()) == recorded;
}

std::string place(const Recorded& recording, std::size_t line) {
  return oneLine(recording.path) + ":" + std::to_string(line) + ": ";
}

/// Chooses what is played: what the assistant client called, not what the host called meanwhile.
class Choice {
 public:
  explicit Choice(const Recorded& recording, const Selection& selection) {
    std::vector<const Recorded::Call*> all;
    for (const auto* const some : {&recording.calls, &recording.open}) {
      for (const Recorded::Call& recorded : *some) all.push_back(&recorded);
    }
    const auto number = [](const Recorded::Call* recorded) { return recorded->call.number; };
    std::inplace_merge(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(recording.calls.size()),
                       all.end(),
                       [&](const auto* left, const auto* right) { return number(left) < number(right); });
    auto open = recording.open.begin();
    for (const Recorded::Call* const recorded : all) {
      const bool returned = open == recording.open.end() || recorded != &*open;
      if (!returned) ++open;
      const bool asked = byAssistant(recorded->call);
      if (!returned || !selection.takes(recorded->call)) continue;
      if (isLife(recorded->call)) {
        played.push_back({recorded, nullptr});
      } else if (asked && isOfHost(recorded->call)) {
        add(recording, *recorded);
      }
    }
  }

  std::vector<Played> played;
  std::size_t calls = 0;      ///< Among them.
  std::size_t unreached = 0;  ///< Those that no host answered.
  std::size_t masked = 0;     ///< Those whose arguments the mask has made unreadable.

 private:
  void add(const Recorded& recording, const Recorded::Call& recorded) {
    if (recorded.call.reached == false) {
      ++unreached;
      return;
    }
    try {
      played.push_back({&recorded, bound(recorded.call)});
      ++calls;
    } catch (const Unreadable& error) {
      const std::vector<std::string>& arguments = recorded.call.spelled;
      if (std::find(arguments.begin(), arguments.end(), kMask) == arguments.end())
        throw std::runtime_error(place(recording, recorded.line) + error.masked().what());
      ++masked;  // A list of which one entry is a secret is masked as a whole.
    }
  }

  static bool isLife(const Crossing& call) {
    return call.direction == Direction::kLife && !call.threw &&
           (call.operation == "CreateInstance" || call.operation == "Shutdown");
  }

  static bool isOfHost(const Crossing& call) {
    return (call.target == kHostInterface && call.operation != "getEMPAdapter") ||
           call.target == "VornEMPAdapterIF";
  }

  /// Whether nothing is around the call, or the assistant side, which was called and calls back.
  bool byAssistant(const Crossing& call) {
    std::map<int, Direction>& outer = m_outer[call.threadNumber];
    outer.erase(outer.lower_bound(call.depth), outer.end());
    const auto around = outer.find(call.depth - 1);
    const bool asked = call.depth == 0 || (around != outer.end() && around->second == Direction::kUp);
    outer[call.depth] = call.direction;
    return asked;
  }

  /// The calls around, by thread and by how many they ran inside.
  std::map<int, std::map<int, Direction>> m_outer;
};

/// Waits up to the time, or to a request to end.
void waitUntil(Clock::time_point time) {
  constexpr std::chrono::milliseconds kPart(100);
  for (auto now = Clock::now(); now < time && endRequested() == 0; now = Clock::now())
    std::this_thread::sleep_until(std::min(time, now + kPart));
}

}  // namespace

bool replay(const Recorded& recording, const Replay& how, Speaker& speaker, std::ostream& out) {
  recording.tellLeftOut(out);
  const Choice choice(recording, how.selection);
  if (choice.calls == 0)
    throw std::runtime_error(oneLine(recording.path) +
                             ": expected calls of the assistant client, found none to play");
  Masker masker;
  std::deque<std::string> before;
  std::size_t played = 0, different = 0;
  const auto start = Clock::now() - choice.played.front().recorded->call.began;
  for (const auto& [recorded, call] : choice.played) {
    if (how.keepTimes) waitUntil(start + recorded->call.began);
    if (endRequested() != 0) break;
    if (!call) {
      speaker.adapter(recorded->call.adapter, recorded->call.operation == "CreateInstance");
      continue;
    }
    Crossing then = recorded->call;
    const std::string expected = then.outcome();
    if (!speaker.secrets()) masker.mask(then);
    speaker.call(Caller::kAssistant, then.fullName(), call, 1);
    ++played;
    const std::vector<Crossing> calls = speaker.recent();
    const auto now = std::find_if(calls.begin(), calls.end(), [&](const Crossing& arrived) {
      return arrived.target == then.target && arrived.slot == then.slot;
    });
    const std::string seen = now == calls.end() ? "no call" : oneLine(now->outcome());
    if (now == calls.end() || !isSame(expected, *now, speaker.shownResult())) {
      ++different;
      out << place(recording, recorded->line) << "Call " << then.number << " is answered differently:\n";
      for (const std::string& line : before) out << "  before    " << line << '\n';
      // What a host that fails leaves behind is told too.
      out << "  called    " << then.statement() << "\n  recorded  " << oneLine(then.outcome())
          << "\n  now       " << seen << std::endl;
      if (!how.keepGoing) return false;
    }
    before.push_back(then.statement() + " = " + seen);
    if (before.size() > kContext) before.pop_front();
  }
  if (choice.unreached > 0)
    out << "Calls that reached no host, and were not played: " << choice.unreached << '\n';
  if (choice.masked > 0)
    out << "Calls whose arguments are masked, and were not played: " << choice.masked << '\n';
  out << vorn_testing::counted(played, "call") << ", "
      << (different == 0 ? "all answered as recorded" : std::to_string(different) + " answered differently")
      << ".\n";
  return different == 0;
}

}  // namespace vorn_speaker
