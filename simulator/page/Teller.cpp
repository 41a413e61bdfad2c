#include "Teller.h"

#include <vorn_testing/TraceLine.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <utility>

#include "recordings/Loudness.h"
#include "recordings/Recording.h"
#include "run/Postmortem.h"
#include "run/TraceFile.h"
#include "text/Secrets.h"

namespace vorn_speaker {

using vorn_testing::TraceLine;

namespace {

constexpr std::size_t kMostOrders = 1000;
constexpr std::size_t kMostRecords = 256;
constexpr std::chrono::milliseconds kMoment(250);  ///< A call that takes longer is told while it runs.
constexpr int kMomentsAFigure = 4;

/// What stands in place of the samples of a block: how many, how loud.
std::string sound(const Crossing& crossing) {
  const Loudness sound = loudness(crossing.clear.spelled.at(0));
  return ",\"samples\":" + std::to_string(sound.samples) + ",\"peak\":" + std::to_string(sound.peak) +
         ",\"level\":" + std::to_string(sound.level);
}

/// A recording's line of the call, with more fields at its end.
std::string lineOf(const Crossing& crossing, const std::string& more) {
  Crossing shown = crossing;
  if (crossing.samples > 0) shown.spelled.assign(1, "[]");
  std::string line = Recording::line(shown);
  line.insert(line.size() - 1, (crossing.samples > 0 ? sound(crossing) : "") + more);
  return line;
}

/// What is known of the device before anything happens; of a host of one's own, nothing.
Json deviceOf(const Settings& settings) {
  if (!settings.host.empty()) return {{"host", settings.host}};
  const DeviceFile& device = settings.device;
  return {{"volume", device.volume},
          {"muted", device.muted},
          {"network", device.networkConnected},
          {"locale", device.locale}};
}

bool isDisturbance(const std::string& verb) { return verb == "delay" || verb == "fail" || verb == "restore"; }

}  // namespace

TraceTail::TraceTail() : m_at(std::max<std::streamoff>(traceSize(), 0)) {}

void TraceTail::read() {
  const std::streamoff size = traceSize();
  if (size < 0 || size == m_at) return;
  if (size < m_at) m_at = 0;  // It has been emptied since.
  std::ifstream file(kTraceFile, std::ios::binary);
  file.seekg(m_at);
  std::string added(static_cast<std::size_t>(std::min<std::streamoff>(size - m_at, 1 << 20)), '\0');
  m_at = size;
  file.read(&added[0], static_cast<std::streamsize>(added.size()));
  added.resize(static_cast<std::size_t>(file.gcount()));
  std::istringstream records(added);
  for (const std::string& text : vorn_testing::traceRecords(records)) {
    const TraceLine line = TraceLine::parse(text);
    m_records.push_back({line.adapter, line.operation, text});
    if (m_records.size() > kMostRecords) m_records.pop_front();
  }
}

std::vector<std::string> TraceTail::take(const std::string& adapter, const std::string& operation) {
  read();
  std::vector<std::string> taken;
  for (auto record = m_records.begin(); record != m_records.end();) {
    if (record->adapter == adapter && record->operation == operation) {
      taken.push_back(std::move(record->text));
      record = m_records.erase(record);
    } else {
      ++record;
    }
  }
  return taken;
}

Teller::Teller(std::ostream& out, bool secrets) : m_out(out), m_secrets(secrets), m_discretion(secrets) {}

void Teller::say(const std::string& line) {
  const std::lock_guard<std::mutex> lock(m_outMutex);
  m_out << line << '\n' << std::flush;
}

void Teller::began(const Crossing& crossing) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_open[crossing.number] = crossing;
}

void Teller::ended(const Crossing& crossing) {
  const Speaker* speaker = nullptr;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open.erase(crossing.number);
    speaker = m_speaker;
  }
  Json lines = Json::array();
  for (const std::string& text : m_trace.take(crossing.adapter, crossing.operation)) {
    const std::string shown = m_secrets ? text : TraceLine::masked(text);
    lines.push_back(!m_secrets && (!speaker || speaker->isSecret(shown)) ? kMask : shown);
  }
  say(lineOf(crossing, lines.empty() ? "" : ",\"trace\":" + dumped(lines)));
}

void Teller::found(const std::string& text) { say(dumped({{"finding", text}})); }

void Teller::tellFigures() {
  long pages = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  std::error_code none;
  const auto count = [&](const char* folder) {
    const std::filesystem::directory_iterator entries(folder, none);
    return std::distance(begin(entries), end(entries));
  };
  say(dumped({{"process",
               {{"memory", resident * sysconf(_SC_PAGESIZE)},
                {"descriptors", count("/proc/self/fd")},
                {"threads", count("/proc/self/task")}}}}));
}

/// Of threads that wait for an adapter's lock, when they are not the same as before.
void Teller::tellWaits(const Speaker& speaker) {
  Json waits = Json::array();
  for (const Asked& asked : speaker.waiting())
    waits.push_back(
        {{"operation", asked.operation}, {"thread", asked.thread}, {"since", asked.began.count()}});
  if (waits == m_waits) return;
  m_waits = waits;
  say(dumped({{"waiting", waits}}));
}

/// Tells of calls that take long, and once a second what the process takes.
void Teller::watch(const Speaker& speaker) {
  int moments = 0;
  std::unique_lock<std::mutex> lock(m_mutex);
  std::set<unsigned long> before;
  while (!m_changed.wait_for(lock, kMoment, [this] { return m_ending; })) {
    std::vector<std::string> lines;
    std::set<unsigned long> now;
    for (auto open = m_open.begin(); open != m_open.end();) {
      now.insert(open->first);
      const bool isLong = before.count(open->first) > 0;
      if (isLong) lines.push_back("{\"open\":" + lineOf(open->second, "") + "}");
      open = isLong ? m_open.erase(open) : std::next(open);
    }
    before = std::move(now);
    lock.unlock();
    for (const std::string& line : lines) say(line);
    tellWaits(speaker);
    if (++moments % kMomentsAFigure == 0) tellFigures();
    lock.lock();
  }
}

void Teller::play(Speaker& speaker, const Order& order) {
  Json played = {{"id", order.number}, {"statement", ""}, {"problem", nullptr}, {"result", ""}};
  try {
    const auto play = readStatement(order.line);
    const std::string verb = split(order.line).at(0).text;
    {
      // What is kept, and with what is right before it, must be told in one order.
      const std::lock_guard<std::mutex> lock(m_mutex);
      played["statement"] = m_discretion.kept(order.line, speaker);
    }
    play(speaker);
    if (verb == "assistant" || verb == "firmware" || verb == "together")
      played["result"] = speaker.shownResult();
  } catch (const Unreadable& error) {
    played["problem"] =
        mayHoldSecret(order.line) || speaker.isSecret(order.line) ? error.masked().what() : error.what();
  } catch (const std::exception& error) {
    played["problem"] = speaker.isSecret(error.what()) ? kMask : error.what();
  }
  say(dumped({{"played", played}}));
}

void Teller::playInOrder(Speaker& speaker) {
  std::unique_lock<std::mutex> lock(m_mutex);
  for (;;) {
    m_changed.wait(lock, [this] { return m_ending || !m_orders.empty(); });
    if (m_ending) return;
    const Order order = std::move(m_orders.front());
    m_orders.pop_front();
    lock.unlock();
    play(speaker, order);
    lock.lock();
  }
}

void Teller::run(Speaker& speaker, const Settings& settings, std::istream& in) {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_speaker = &speaker;
  }
  say(Recording::header());
  say(dumped({{"device", deviceOf(settings)}}));
  std::thread player([&] { playInOrder(speaker); });
  std::thread watcher([&] { watch(speaker); });
  for (std::string line; endRequested() == 0 && std::getline(in, line);) {
    const std::size_t space = line.find(' ');
    Order order{std::strtoul(line.c_str(), nullptr, 10),
                space == std::string::npos ? "" : line.substr(space + 1)};
    std::istringstream words(order.line);
    std::string verb;
    std::string operation;
    words >> verb >> operation;
    // These do not wait for a call that is under way: they may be what ends it.
    if (isDisturbance(verb)) {
      verb == "restore" ? m_disturbed.erase(operation) : m_disturbed.insert(operation).second;
      play(speaker, order);
      continue;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    if (m_orders.size() == kMostOrders) {
      lock.unlock();
      say(dumped({{"played",
                   {{"id", order.number},
                    {"statement", ""},
                    {"problem", "too many statements wait for a call that is under way"},
                    {"result", ""}}}}));
      continue;
    }
    m_orders.push_back(std::move(order));
    m_changed.notify_all();
  }
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_ending = true;
    m_changed.notify_all();
  }
  for (const std::string& operation : m_disturbed) speaker.restore(operation);
  player.join();
  watcher.join();
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_speaker = nullptr;
}

}  // namespace vorn_speaker
