#pragma once

#include <cstddef>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "Records.h"

namespace vorn_testing {
struct TraceLine;
}

namespace vorn_log {

/// What of the trace is wanted, and how.
struct Options {
  std::string file = "/tmp/xAppLog.txt";
  std::vector<std::string> adapters;  ///< Empty for all.
  std::string text;
  std::string until;
  bool follow = false;
  bool count = false;
  bool explain = false;
  bool all = false;
  bool secrets = false;
  bool colour = false;
};

/// The classes whose lines can be asked for: the adapters, and "?" for lines that are not the library's.
const std::vector<std::string>& adapters();

/// The end of a message about a name that is none of `adapters()`: the one that it is like, with or without "Vorn"; or nothing.
std::string didYouMeanAdapter(const std::string& name);

/// Prints or counts the records that the options let through.
class Report {
 public:
  Report(const Options& options, std::ostream& out) : m_options(options), m_out(out) {}

  /// Takes one record. Returns false when it was the last one wanted.
  bool take(const Records::Record& record);

  /// Prints what is still owed: the rest of a run of like lines, the counts.
  void finish();

 private:
  bool wanted(const vorn_testing::TraceLine& line) const;
  /// `alone`: not as one of a run, since something is said of it.
  void print(const vorn_testing::TraceLine& line, bool alone);
  void flushRepeats();

  const Options& m_options;
  std::ostream& m_out;
  std::map<std::string, std::map<std::string, std::size_t>> m_counts;
  std::string m_lastShape;
  std::size_t m_repeats = 0;
  bool m_unfinished = false;
};

}  // namespace vorn_log
