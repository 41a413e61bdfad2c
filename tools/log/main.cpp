// vorn-log: reads the library's trace, also while it grows.

#include <poll.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>
#include <vector>

#include <vorn_testing/TraceLine.h>

namespace {

using vorn_testing::TraceLine;

struct Options {
  std::string file = "/tmp/xAppLog.txt";
  std::vector<std::string> adapters;
  std::string text;
  std::string until;
  bool follow = false;
  bool count = false;
  bool explain = false;
  bool all = false;
  bool secrets = false;
};

/// Prints or counts the records that the options let through.
class Reader {
 public:
  explicit Reader(const Options& options) : m_options(options) {}

  /// Takes one complete record. Returns false when it was the last one wanted.
  bool take(const std::string& record) {
    const TraceLine line = TraceLine::parse(record);
    const bool last = !m_options.until.empty() && record.find(m_options.until) != std::string::npos;
    if (wanted(line)) {
      ++m_counts[line.adapter][line.operation];
      if (!m_options.count) print(line);
    }
    return !last;
  }

  void finish() {
    flushRepeats();
    if (!m_options.count) return;
    for (const auto& [adapter, operations] : m_counts) {
      std::size_t total = 0;
      for (const auto& operation : operations) total += operation.second;
      std::cout << adapter << "  " << total << "\n";
      for (const auto& [operation, count] : operations)
        std::cout << "  " << (operation.empty() ? "(other lines)" : operation) << "  " << count << "\n";
    }
  }

 private:
  bool wanted(const TraceLine& line) const {
    const auto& adapters = m_options.adapters;
    if (!adapters.empty() && std::find(adapters.begin(), adapters.end(), line.adapter) == adapters.end())
      return false;
    return m_options.text.empty() || line.text.find(m_options.text) != std::string::npos;
  }

  void print(const TraceLine& line) {
    const std::string shape = TraceLine::shape(line.text);
    if (!m_options.all && shape == m_lastShape) {
      ++m_repeats;
      return;
    }
    flushRepeats();
    m_lastShape = shape;
    std::cout << line.adapter << (line.operation.empty() ? "" : ".") << line.operation << "  "
              << (m_options.secrets ? line.text : TraceLine::masked(line.text)) << "\n";
    if (m_options.explain) std::cout << "    " << line.meaning << "\n";
    std::cout.flush();
  }

  void flushRepeats() {
    if (m_repeats > 0) std::cout << "    and " << m_repeats << " more like it\n";
    m_repeats = 0;
  }

  const Options& m_options;
  std::map<std::string, std::map<std::string, std::size_t>> m_counts;
  std::string m_lastShape;
  std::size_t m_repeats = 0;
};

/// Cuts the bytes of the trace into records: a line that begins with " Time: " begins one, others go on with it.
class Records {
 public:
  /// Adds what was read; hands on every record that is known to be complete.
  bool add(const std::string& bytes, Reader& reader) {
    m_rest += bytes;
    std::size_t feed;
    while ((feed = m_rest.find('\n')) != std::string::npos) {
      const std::string line = m_rest.substr(0, feed);
      m_rest.erase(0, feed + 1);
      if (line.compare(0, kPrefix.size(), kPrefix) == 0) {
        if (!flush(reader)) return false;
        m_record = line.substr(kPrefix.size());
        m_open = true;
      } else {
        m_record += (m_open ? "\n" : "") + line;
        m_open = true;
      }
    }
    return true;
  }

  /// Hands on the record at the end, when nothing more follows for now.
  bool flush(Reader& reader) {
    if (!m_open) return true;
    m_open = false;
    return reader.take(std::exchange(m_record, std::string()));
  }

 private:
  const std::string kPrefix = " Time: ";
  std::string m_rest;
  std::string m_record;
  bool m_open = false;
};

int read(const Options& options) {
  std::ifstream file(options.file, std::ios::binary);
  if (!file) {
    std::cerr << "vorn-log: " << options.file
              << " cannot be read; is the trace on (FileLogger::CreateInstance(true)), "
              << "or is it another file?\n";
    return 2;
  }
  Reader reader(options);
  Records records;
  std::vector<char> buffer(1 << 16);
  for (bool more = true; more;) {
    file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    more = records.add(std::string(buffer.data(), static_cast<std::size_t>(file.gcount())), reader);
    if (!more || file) continue;
    more = records.flush(reader) && options.follow;
    file.clear();  // the end for now
    if (more) poll(nullptr, 0, 100);
  }
  reader.finish();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app{"Reads the trace of libVornDALImpl.so: groups, filters, explains. Tokens are masked."};
  app.add_option("file", options.file, "The trace file")->capture_default_str();
  app.add_option("-a,--adapter", options.adapters, "Only lines of this class; may be given several times");
  app.add_option("-g,--grep", options.text, "Only lines that contain this text");
  app.add_option("-u,--until", options.until, "Stop after a line that contains this text");
  app.add_flag("-f,--follow", options.follow, "Go on reading while the file grows");
  app.add_flag("-c,--count", options.count, "Count lines by class and operation instead of printing them");
  app.add_flag("-e,--explain", options.explain, "Say in words what each line means");
  app.add_flag("--all", options.all, "Print every line, also runs of lines that differ in numbers only");
  app.add_flag("--secrets", options.secrets, "Do not mask tokens");
  CLI11_PARSE(app, argc, argv);
  return read(options);
}
