#include "Export.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <utility>

#include "Loudness.h"
#include "text/Lines.h"

namespace vorn_speaker {

namespace {

using std::chrono::microseconds;

/// Without the samples of sound, which nobody reads.
std::vector<std::string> arguments(const Crossing& call) {
  if (!isSound(call)) return call.spelled;
  return {"[" + std::to_string(loudness(call.spelled[0]).samples) + " samples]"};
}

const char* word(Direction direction) {
  switch (direction) {
    case Direction::kDown:
      return "down";
    case Direction::kUp:
      return "up";
    case Direction::kLife:
      return "life";
    case Direction::kOwn:
      break;
  }
  return "own";
}

/// Writes the trace-event form: threads are tracks, calls are slices that lie inside each other, sound is a counter.
class TraceEvents {
 public:
  TraceEvents(const Recorded& recording, std::ostream& out) : m_recording(recording), m_out(out) {}

  static std::string beginning() { return R"({"otherData":{"exporter":"vorn-speaker")"; }

  void write() {
    m_out << beginning() << R"(,"program":)" << jsonText(m_recording.program) << R"(,"started":)"
          << jsonText(m_recording.started) << R"(,"writer":)" << jsonText(m_recording.writer)
          << R"(},"displayTimeUnit":"ms","traceEvents":[)";
    threads();
    for (const Recorded::Call& recorded : m_recording.calls) slice(recorded.call);
    for (const Recorded::Call& recorded : m_recording.open) {
      begin("B", recorded.call.fullName(), word(recorded.call.direction), recorded.call.threadNumber,
            recorded.call.began);
      m_out << R"(,"args":{)" << asked(recorded.call) << "}}";
    }
    for (const Recorded::Sound& sound : m_recording.sounds)
      loud(sound.name, 0, sound.time, sound.peak, sound.level);
    for (const Recorded::Lost& lost : m_recording.lost)
      instant(lost.time, "calls that could not be kept: " + std::to_string(lost.calls));
    for (const Recorded::Note& note : m_recording.notes) instant(note.time, note.text);
    m_out << "\n]}\n";
  }

 private:
  void begin(const char* phase, const std::string& name, const char* category, int thread,
             microseconds time) {
    m_out << (m_first ? "\n" : ",\n") << R"({"ph":")" << phase << R"(","name":)" << jsonText(name)
          << R"(,"cat":")" << category << R"(","pid":1,"tid":)" << thread << R"(,"ts":)" << time.count();
    m_first = false;
  }

  void threads() {
    std::map<int, std::string> names;
    for (const auto* const some : {&m_recording.calls, &m_recording.open}) {
      for (const Recorded::Call& recorded : *some)
        names.emplace(recorded.call.threadNumber, recorded.call.thread);
    }
    named("process_name", 0, m_recording.program.empty() ? "vorn-speaker" : m_recording.program);
    for (const auto& [number, name] : names)
      named("thread_name", number, name.empty() ? "thread " + std::to_string(number) : name);
  }

  void named(const char* what, int thread, const std::string& name) {
    begin("M", what, "__metadata", thread, microseconds(0));
    m_out << R"(,"args":{"name":)" << jsonText(name) << "}}";
  }

  static std::string asked(const Crossing& call) {
    std::string line = R"("call":)" + std::to_string(call.number) + R"(,"arguments":[)";
    for (const std::string& argument : arguments(call))
      line += (line.back() == '[' ? "" : ",") + jsonText(argument);
    return line + "]";
  }

  static std::string answered(const Crossing& call) {
    std::string line;
    if (!call.result.empty()) line += R"(,"result":)" + jsonText(call.result);
    std::string written;
    for (const std::string& value : call.written) written += (written.empty() ? "" : ",") + jsonText(value);
    if (!written.empty()) line += R"(,"written":[)" + written + "]";
    if (call.threw) line += R"(,"exception":)" + jsonText(call.exception);
    if (call.waited) line += R"(,"waited":)" + std::to_string(call.waited->count());
    if (call.host) line += R"(,"host":)" + std::to_string(call.host->count());
    if (call.reached) line += std::string(R"(,"reached":)") + (*call.reached ? "true" : "false");
    return line;
  }

  void slice(const Crossing& call) {
    // Viewers tell by the times alone what lies inside what: an inner call must not stand out by a microsecond.
    std::map<int, std::pair<microseconds, microseconds>>& outer = m_outer[call.threadNumber];
    outer.erase(outer.lower_bound(call.depth), outer.end());
    microseconds from = call.began, to = call.began + call.took;
    if (!outer.empty()) {
      const auto& [begun, ended] = outer.rbegin()->second;
      from = std::min(std::max(from, begun), ended);
      to = std::max(from, std::min(to, ended));
    }
    outer[call.depth] = {from, to};
    begin("X", call.fullName(), word(call.direction), call.threadNumber, from);
    m_out << R"(,"dur":)" << (to - from).count() << R"(,"args":{)" << asked(call) << answered(call) << "}}";
    if (call.waited && call.waited->count() > 0) {
      begin("X", "waits for the lock", "lock", call.threadNumber, from);
      m_out << R"(,"dur":)" << std::min(*call.waited, to - from).count() << R"(,"args":{}})";
    }
    if (!isSound(call)) return;
    const Loudness sound = loudness(call.spelled[0]);
    loud(call.thread, call.threadNumber, from, sound.peak, sound.level);
  }

  void loud(const std::string& name, int thread, microseconds time, int peak, int level) {
    begin("C", "sound " + name, "sound", thread, time);
    m_out << R"(,"args":{"peak":)" << peak << R"(,"level":)" << level << "}}";
  }

  void instant(microseconds time, const std::string& name) {
    begin("i", name, "note", 0, time);
    m_out << R"(,"s":"g","args":{}})";
  }

  const Recorded& m_recording;
  std::ostream& m_out;
  bool m_first = true;
  std::map<int, std::map<int, std::pair<microseconds, microseconds>>>
      m_outer;  ///< The calls around, by thread and by how many they ran inside.
};

/// Writes a sequence diagram: who called whom, in order. A call that another one led to comes from that one's callee.
class Mermaid {
 public:
  Mermaid(const Recorded& recording, std::ostream& out) : m_recording(recording), m_out(out) {}

  static std::string beginning() { return "%% Made by vorn-speaker\n"; }

  void write() {
    m_out << beginning() << "sequenceDiagram\n";
    participants();
    auto note = m_recording.notes.begin();
    auto lost = m_recording.lost.begin();
    for (std::size_t i = 0; i < m_recording.calls.size(); ++i) {
      const Crossing& call = m_recording.calls[i].call;
      returns(call);
      for (; note != m_recording.notes.end() && note->time <= call.began; ++note) say(note->text);
      for (; lost != m_recording.lost.end() && lost->time <= call.began; ++lost) say(*lost);
      i += begins(call, i);
    }
    returns();
    for (const Recorded::Call& recorded : m_recording.open) {
      begins(recorded.call, m_recording.calls.size());
      m_out << "  note right of " << callee(recorded.call) << ": had not returned\n";
    }
    for (; note != m_recording.notes.end(); ++note) say(note->text);
    for (; lost != m_recording.lost.end(); ++lost) say(*lost);
  }

 private:
  struct Open {
    const Crossing* call;
    std::string from;

    microseconds end() const { return call->began + call->took; }
  };

  /// In the text of a message; what means something to the reader of diagrams is written by its number.
  static std::string escaped(const std::string& text) {
    std::string line;
    for (const char c : excerpt(text)) {
      if (std::string("#;%<>{}:&\"").find(c) == std::string::npos) {
        line += c;
      } else {
        line += "#" + std::to_string(static_cast<int>(c)) + ";";
      }
    }
    return line;
  }

  static std::string callee(const Crossing& call) {
    switch (call.direction) {
      case Direction::kDown:
        return "host";
      case Direction::kUp:
        return "assistantSide";
      default:
        return "library";
    }
  }

  void participants() {
    std::map<int, std::string> threads;
    std::map<std::string, const char*> callees;
    for (const auto* const some : {&m_recording.calls, &m_recording.open}) {
      for (const Recorded::Call& recorded : *some) {
        const Crossing& call = recorded.call;
        threads.emplace(call.threadNumber, call.thread);
        callees[callee(call)] = call.direction == Direction::kDown ? "host"
                                : call.direction == Direction::kUp ? "assistant side"
                                                                   : "library";
      }
    }
    for (const auto& [number, name] : threads)
      m_out << "  participant t" << number << " as thread "
            << escaped(name.empty() ? std::to_string(number) : name) << '\n';
    for (const auto& [name, title] : callees) m_out << "  participant " << name << " as " << title << '\n';
    if (threads.empty()) m_out << "  participant t1 as nobody called\n";
    m_anyone = threads.empty() ? "t1" : "t" + std::to_string(threads.begin()->first);
  }

  void say(const std::string& text) { m_out << "  note over " << m_anyone << ": " << escaped(text) << '\n'; }
  void say(const Recorded::Lost& lost) { say("calls that could not be kept: " + std::to_string(lost.calls)); }

  /// Blocks of sound that follow each other are one arrow; returns how many calls after the first it stands for.
  std::size_t begins(const Crossing& call, std::size_t at) {
    std::string from = "t" + std::to_string(call.threadNumber);
    std::vector<Open>& around = m_open[call.threadNumber];
    if (!around.empty() && around.back().call->depth == call.depth - 1) from = callee(*around.back().call);
    std::size_t more = 0;
    while (isSound(call) && at + more + 1 < m_recording.calls.size() &&
           isSound(m_recording.calls[at + more + 1].call))
      ++more;
    std::string line = call.fullName();
    for (const std::string& argument : arguments(call)) line += " " + argument;
    if (more > 0) line += " and " + std::to_string(more) + " more";
    m_out << "  " << from << "->>" << callee(call) << ": " << escaped(line) << '\n';
    if (at == m_recording.calls.size()) return more;
    if (!around.empty()) m_ends.erase({around.back().end(), call.threadNumber});
    around.push_back({&call, from});
    m_ends.emplace(around.back().end(), call.threadNumber);
    return more;
  }

  /// The calls that had ended before this one began: of its thread all that it does not run inside.
  void returns(const Crossing& next) {
    const std::vector<Open>& around = m_open[next.threadNumber];
    while (!around.empty() && around.back().call->depth >= next.depth) {
      returnOthers(std::min(around.back().end(), next.began), next.threadNumber);
      returnInnermost(next.threadNumber);
    }
    returnOthers(next.began, next.threadNumber);
  }

  /// All.
  void returns() {
    while (!m_ends.empty()) returnInnermost(m_ends.begin()->second);
  }

  /// The calls of other threads that had ended by then, those before that ran inside them.
  void returnOthers(microseconds time, int thread) {
    const auto own = m_open[thread].empty() ? End(time, thread) : End(m_open[thread].back().end(), thread);
    const bool open = m_ends.erase(own) > 0;
    while (!m_ends.empty() && m_ends.begin()->first <= time) returnInnermost(m_ends.begin()->second);
    if (open) m_ends.insert(own);
  }

  void returnInnermost(int thread) {
    std::vector<Open>& around = m_open[thread];
    const Open open = around.back();
    around.pop_back();
    m_ends.erase({open.end(), thread});
    if (!around.empty()) m_ends.emplace(around.back().end(), thread);
    const Crossing& call = *open.call;
    const std::string answer = call.threw ? "threw " + call.exception : call.answer();
    if (answer.empty()) return;
    m_out << "  " << callee(call) << (call.threw ? "--x" : "-->>") << open.from << ": " << escaped(answer)
          << '\n';
  }

  const Recorded& m_recording;
  std::ostream& m_out;
  using End = std::pair<microseconds, int>;
  std::map<int, std::vector<Open>> m_open;  ///< By thread, the innermost last.
  std::set<End> m_ends;                     ///< Of the innermost call of each thread.
  std::string m_anyone;
};

/// Rows of comma-separated values as RFC 4180 tells them.
std::string row(const std::vector<std::string>& cells) {
  std::string line;
  for (const std::string& cell : cells) {
    if (&cell != &cells.front()) line += ',';
    if (cell.find_first_of("\",\r\n") == std::string::npos) {
      line += cell;
      continue;
    }
    line += '"';
    for (const char c : cell) line += c == '"' ? "\"\"" : std::string(1, c);
    line += '"';
  }
  return line + "\r\n";
}

std::string csvBeginning() {
  std::vector<std::string> names;
  for (const RecordedField& field : recordedFields()) names.push_back(field.name);
  return row(names);
}

void writeCsv(const Recorded& recording, std::ostream& out) {
  out << csvBeginning();
  for (const Recorded::Call& recorded : recording.calls) out << row(recordedCells(recorded.call, true));
  for (const Recorded::Call& recorded : recording.open) out << row(recordedCells(recorded.call, false));
}

}  // namespace

const std::vector<ExportFormat>& exportFormats() {
  static const std::vector<ExportFormat> all = {
      {"trace-event", "JSON that common trace viewers open: threads, calls inside each other, sound",
       [](const Recorded& recording, std::ostream& out) { TraceEvents(recording, out).write(); },
       TraceEvents::beginning},
      {"mermaid", "the text of a sequence diagram",
       [](const Recorded& recording, std::ostream& out) { Mermaid(recording, out).write(); },
       Mermaid::beginning},
      {"csv", "a table with the fields of each call (RFC 4180)", writeCsv, csvBeginning},
  };
  return all;
}

void exportTo(const std::string& path, const ExportFormat& format, const Recorded& recording) {
  const std::string beginning = format.beginning();
  refuseToReplace(path, std::string("was not made by export --format ") + format.name, beginning.size(),
                  [&](const std::string& there) { return there == beginning; });
  WholeFile file(path);
  format.write(recording, file.stream());
  file.finish();
}

}  // namespace vorn_speaker
