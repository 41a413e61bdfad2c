#include "Report.h"

#include <algorithm>
#include <functional>
#include <iomanip>
#include <map>
#include <ostream>
#include <queue>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "text/Lines.h"

namespace vorn_speaker {

namespace {

using Times = std::vector<std::int64_t>;

constexpr int kTitleWidth = 76;
constexpr int kTimeWidth = 8;

bool isAudio(const Crossing& call) { return call.operation == "sendAudioData"; }

bool isBlock(const Crossing& call) { return isAudio(call) || call.operation == "sendData"; }

const char* arrow(Direction direction) {
  if (direction == Direction::kDown) return "    |----------------->|  ";
  if (direction == Direction::kUp) return "    |<-----------------|  ";
  return "    |                  |  ";
}

std::string title(const Crossing& call) {
  const char* const way = call.direction == Direction::kDown ? "down  "
                          : call.direction == Direction::kUp ? "up    "
                                                             : "      ";
  return way + call.fullName();
}

/// Of sorted times, the least that so many of a hundred do not exceed.
std::int64_t percentile(const Times& sorted, std::size_t hundredths) {
  return sorted[(sorted.size() * hundredths + 99) / 100 - 1];
}

std::ostream& column(std::ostream& out, const std::string& name) {
  return out << std::left << std::setw(kTitleWidth) << name << std::right;
}

void table(std::ostream& out, const std::string& head, std::map<std::string, Times>& rows) {
  if (rows.empty()) return;
  column(out << '\n', head) << std::setw(kTimeWidth) << "calls";
  for (const char* const name : {"least", "median", "90 %", "99 %", "most"})
    out << std::setw(kTimeWidth) << name;
  out << '\n';
  for (auto& [name, times] : rows) {
    std::sort(times.begin(), times.end());
    column(out, name) << std::setw(kTimeWidth) << times.size() << std::setw(kTimeWidth) << times.front();
    for (const std::size_t part : {50U, 90U, 99U}) out << std::setw(kTimeWidth) << percentile(times, part);
    out << std::setw(kTimeWidth) << times.back() << '\n';
  }
}

/// Of what stands in a row, each with a thread: the greatest in a part of it, of other threads than one.
class Greatest {
 public:
  explicit Greatest(std::size_t size) : m_size(size), m_best(2 * size) {}

  void set(std::size_t at, std::size_t value, int thread) {
    m_best[at += m_size] = {value, thread, 0};
    while ((at /= 2) > 0) m_best[at] = better(m_best[2 * at], m_best[2 * at + 1]);
  }

  std::size_t of(std::size_t from, std::size_t to, int exceptThread) const {
    Best best;
    for (from += m_size, to += m_size; from < to; from /= 2, to /= 2) {
      if (from % 2 == 1) best = better(best, m_best[from++]);
      if (to % 2 == 1) best = better(best, m_best[--to]);
    }
    return best.thread == exceptThread ? best.second : best.value;
  }

 private:
  struct Best {
    std::size_t value = 0;
    int thread = 0;
    std::size_t second = 0;  ///< The greatest of any other thread.
  };

  static Best better(const Best& left, const Best& right) {
    const auto& [best, other] = left.value < right.value ? std::tie(right, left) : std::tie(left, right);
    return {best.value, best.thread,
            std::max(best.second, best.thread == other.thread ? other.second : other.value)};
  }

  const std::size_t m_size;
  std::vector<Best> m_best;
};

/// How often calls ran while another thread's was under way, and how many at once.
void overlaps(const Recorded& recording, std::ostream& out) {
  struct Row {
    std::size_t calls = 0, most = 0;
  };
  std::vector<const Crossing*> begun;
  for (const Recorded::Call& recorded : recording.calls) begun.push_back(&recorded.call);
  std::stable_sort(begun.begin(), begun.end(),
                   [](const Crossing* left, const Crossing* right) { return left->began < right->began; });
  // How many there are when each begins, itself included; 0 when it is alone.
  std::vector<std::size_t> together;
  Greatest greatest(begun.size());
  using Running = std::pair<std::chrono::microseconds, int>;  // when it ends, and its thread
  std::priority_queue<Running, std::vector<Running>, std::greater<>> running;
  std::map<int, std::size_t> ofThread;
  for (const Crossing* const call : begun) {
    for (; !running.empty() && running.top().first <= call->began; running.pop())
      --ofThread[running.top().second];
    const std::size_t others = running.size() - ofThread[call->threadNumber];
    if (others > 0) greatest.set(together.size(), others + 1, call->threadNumber);
    together.push_back(others > 0 ? others + 1 : 0);
    running.emplace(call->began + call->took, call->threadNumber);
    ++ofThread[call->threadNumber];
  }
  std::map<std::string, Row> rows;
  for (std::size_t i = 0; i < begun.size(); ++i) {
    const auto ended = std::lower_bound(
        begun.begin() + static_cast<std::ptrdiff_t>(i) + 1, begun.end(), begun[i]->began + begun[i]->took,
        [](const Crossing* call, std::chrono::microseconds end) { return call->began < end; });
    const std::size_t most =
        std::max(together[i],
                 greatest.of(i + 1, static_cast<std::size_t>(ended - begun.begin()), begun[i]->threadNumber));
    if (most == 0) continue;
    Row& row = rows[title(*begun[i])];
    ++row.calls;
    row.most = std::max(row.most, most);
  }
  if (rows.empty()) return;
  column(out << '\n', "Calls during which another thread called")
      << std::setw(kTimeWidth) << "calls" << std::setw(kTimeWidth) << "at once" << '\n';
  for (const auto& [name, row] : rows)
    column(out, name) << std::setw(kTimeWidth) << row.calls << std::setw(kTimeWidth) << row.most << '\n';
}

/// What of a recording is compared, by thread.
class Side {
 public:
  struct Item {
    const Recorded::Call* recorded;
    std::size_t statement;  ///< A number for each different one.
  };
  using Lanes = std::map<std::pair<std::string, int>, std::vector<Item>>;

  Side(const Recorded& recording, bool sound, std::unordered_map<std::string, std::size_t>& statements)
      : path(oneLine(recording.path)) {
    std::map<std::string, std::map<int, int>> threads;
    for (const Recorded::Call& recorded : recording.calls) {
      const Crossing& call = recorded.call;
      const bool crosses = call.isDown() || call.direction == Direction::kUp;
      if (!crosses || call.target.empty() || call.reached == false || call.operation == "getEMPAdapter")
        continue;
      if (!sound && isAudio(call)) continue;
      // Several threads of one name are told apart by the order in which they came.
      std::map<int, int>& named = threads[call.thread];
      const int nth = named.emplace(call.threadNumber, static_cast<int>(named.size())).first->second;
      const std::string statement = call.target + " " + std::to_string(call.slot) + " " + call.statement();
      lanes[{call.thread, nth}].push_back(
          {&recorded, statements.emplace(statement, statements.size()).first->second});
      times[title(call)].push_back(call.took.count());
    }
  }

  const std::string path;
  Lanes lanes;
  std::map<std::string, Times> times;
};

class Comparison {
 public:
  Comparison(const Recorded& left, const Recorded& right, std::ostream& out)
      : m_left(left, left.sounds.empty() && right.sounds.empty(), m_statements),
        m_right(right, left.sounds.empty() && right.sounds.empty(), m_statements),
        m_out(out) {}

  bool run() {
    static const std::vector<Side::Item> none;
    Side::Lanes lanes = m_left.lanes;
    lanes.insert(m_right.lanes.begin(), m_right.lanes.end());
    for (const auto& [name, items] : lanes) {
      const auto left = m_left.lanes.find(name), right = m_right.lanes.find(name);
      lane(left == m_left.lanes.end() ? none : left->second,
           right == m_right.lanes.end() ? none : right->second);
    }
    times();
    m_out << '\n' << m_same << " calls are the same, " << m_different << " differ.\n";
    return m_different == 0;
  }

 private:
  using Items = std::vector<Side::Item>;

  void lane(const Items& left, const Items& right) {
    std::size_t l = 0, r = 0;
    while (l < left.size() || r < right.size()) {
      const auto [lefts, rights] = distance(left, l, right, r);
      for (std::size_t i = 0; i < lefts; ++i) only(m_left, left[l++]);
      for (std::size_t i = 0; i < rights; ++i) only(m_right, right[r++]);
      if (l < left.size() && r < right.size() && left[l].statement == right[r].statement)
        answers(left[l++].recorded->call, right[r++].recorded->call);
    }
  }

  /// How many calls lie before the next that both have, on either side; all up to the horizon when there is none.
  static std::pair<std::size_t, std::size_t> distance(const Items& left, std::size_t l, const Items& right,
                                                      std::size_t r) {
    constexpr std::size_t kHorizon = 256;  // so that the work grows with the file, not with its square
    if (l < left.size() && r < right.size() && left[l].statement == right[r].statement) return {0, 0};
    const std::size_t lefts = std::min(kHorizon, left.size() - l),
                      rights = std::min(kHorizon, right.size() - r);
    std::unordered_map<std::size_t, std::size_t> first;
    for (std::size_t i = 0; i < lefts; ++i) first.emplace(left[l + i].statement, i);
    std::pair<std::size_t, std::size_t> best{lefts, rights};
    for (std::size_t i = 0; i < rights; ++i) {
      const auto found = first.find(right[r + i].statement);
      if (found != first.end() && found->second + i < best.first + best.second) best = {found->second, i};
    }
    return best;
  }

  static std::string shown(const Crossing& call) {
    return call.thread + ": " + call.statement() + " = " + call.outcome();
  }

  void only(const Side& side, const Side::Item& item) {
    ++m_different;
    m_out << side.path << ":" << item.recorded->line << ": only here, call " << item.recorded->call.number
          << ", thread " << oneLine(shown(item.recorded->call)) << '\n';
  }

  void answers(const Crossing& left, const Crossing& right) {
    const std::string here = left.outcome(), there = right.outcome();
    if (here == there) {
      ++m_same;
      return;
    }
    ++m_different;
    m_out << m_left.path << ": call " << left.number << ", and " << m_right.path << ": call " << right.number
          << ", are answered differently:\n  called  " << left.statement() << "\n  first   " << oneLine(here)
          << "\n  second  " << oneLine(there) << '\n';
  }

  /// Of every operation, first and second.
  void times() {
    std::map<std::string, std::pair<Times, Times>> rows;
    for (auto& [name, all] : m_left.times) rows[name].first = std::move(all);
    for (auto& [name, all] : m_right.times) rows[name].second = std::move(all);
    column(m_out << '\n', "Microseconds, first and second")
        << std::setw(2 * kTimeWidth) << "calls" << std::setw(2 * kTimeWidth) << "median"
        << std::setw(2 * kTimeWidth) << "99 %" << '\n';
    for (auto& row : rows) {
      std::pair<Times, Times>& both = row.second;
      column(m_out, row.first);
      for (Times* const times : {&both.first, &both.second}) std::sort(times->begin(), times->end());
      const auto pair = [&](const auto& of) {
        m_out << std::setw(kTimeWidth) << of(both.first) << std::setw(kTimeWidth) << of(both.second);
      };
      pair([](const Times& times) { return std::to_string(times.size()); });
      for (const std::size_t part : {50U, 99U})
        pair([part](const Times& times) {
          return times.empty() ? "-" : std::to_string(percentile(times, part));
        });
      m_out << '\n';
    }
  }

  std::unordered_map<std::string, std::size_t> m_statements;
  Side m_left, m_right;
  std::ostream& m_out;
  std::size_t m_same = 0, m_different = 0;
};

}  // namespace

void report(const Recorded& recording, std::ostream& out) {
  recording.tellLeftOut(out);
  out << "assistant          firmware\n";
  std::map<std::string, Times> durations, waits, hosts;
  const bool locks =
      std::any_of(recording.calls.begin(), recording.calls.end(),
                  [](const Recorded::Call& recorded) { return recorded.call.waited.has_value(); });
  std::string last;
  for (const Recorded::Call& recorded : recording.calls) {
    const Crossing& call = recorded.call;
    durations[title(call)].push_back(call.took.count());
    if (call.waited) waits[title(call)].push_back(call.waited->count());
    // Where locks are not told, the host is where the call was recorded.
    if (call.host && locks) hosts[title(call)].push_back(call.host->count());
    // One arrow for a stream of blocks.
    const std::string block = isBlock(call) ? call.fullName() : "";
    if (!block.empty() && block == last) continue;
    last = block;
    out << arrow(call.direction)
        << std::string(2 * static_cast<std::size_t>(std::min(call.depth, kDeepest)), ' ')
        << excerpt(call.statement());
    if (call.threw || !call.answer().empty()) out << " = " << oneLine(call.outcome());
    if (call.reached == false) out << "  (reached nobody)";
    out << '\n';
  }
  table(out, "Microseconds", durations);
  table(out, "Microseconds on the other side", hosts);
  table(out, "Microseconds of waiting for the adapter's lock", waits);
  overlaps(recording, out);
  if (!recording.sounds.empty()) {
    column(out << '\n', "Sound, a line a second")
        << std::setw(kTimeWidth) << "blocks" << std::setw(kTimeWidth) << "samples" << std::setw(kTimeWidth)
        << "peak" << std::setw(kTimeWidth) << "level" << std::setw(kTimeWidth) << "gap" << '\n';
    for (const Recorded::Sound& sound : recording.sounds)
      column(out, oneLine(sound.name))
          << std::setw(kTimeWidth) << sound.blocks << std::setw(kTimeWidth) << sound.samples
          << std::setw(kTimeWidth) << sound.peak << std::setw(kTimeWidth) << sound.level
          << std::setw(kTimeWidth) << sound.gap.count() << '\n';
  }
  for (const Recorded::Note& note : recording.notes)
    out << "\nAfter " << note.time.count() << " microseconds: " << oneLine(note.text) << '\n';
}

bool compare(const Recorded& left, const Recorded& right, std::ostream& out) {
  left.tellLeftOut(out);
  right.tellLeftOut(out);
  return Comparison(left, right, out).run();
}

}  // namespace vorn_speaker
