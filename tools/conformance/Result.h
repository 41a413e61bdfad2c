#pragma once

#include <vorn_testing/HostChecks.h>

#include <chrono>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace vorn_conformance {

/// One check that was run.
struct Result {
  vorn_testing::HostCheck check;
  vorn_testing::HostVerdict verdict;
  std::chrono::duration<double> took;
};

/// What a report says of the run as a whole: "tool" and "1.0.0", in this order.
using Facts = std::vector<std::pair<std::string, std::string>>;

/// How many came out so.
std::size_t count(const std::vector<Result>& results, vorn_testing::HostVerdict::Kind kind);

/// Shows results as they come: what was seen, the rule and the remedy. A reason that was shown before, but for numbers
/// and addresses, is shown by the name of the check that had it.
class Printer {
 public:
  explicit Printer(std::ostream& out) : m_out(out) {}
  void add(const Result& result);

 private:
  std::ostream& m_out;
  std::map<std::string, std::string> m_said;
};

/// What was not asked and why, the slowest answers, and the count.
void printSummary(std::ostream& out, const std::string& library, const std::vector<Result>& results);

void writeJUnit(std::ostream& out, const Facts& facts, const std::vector<Result>& results);

/// One line of JSON each.
std::string jsonOf(const Facts& facts);
std::string jsonOf(const Result& result);

/// The check and the verdict of a line that jsonOf() made; an empty name for any other line.
std::pair<std::string, vorn_testing::HostVerdict> resultOf(const std::string& line);

/// Refuses to put a report in the place of what is none.
/// @throws std::runtime_error
void refuseUnlessReport(const std::string& path);

/// Puts a report in the place of an earlier one in one go, so that it is whole at any moment.
/// @throws std::runtime_error  It cannot be written.
void writeReport(const std::string& path, const std::string& content);

/// The end of a file, to which one program at a time adds lines.
class Lines {
 public:
  /// @throws std::runtime_error  It cannot be opened, or another program adds to it.
  explicit Lines(const std::string& path);
  ~Lines();

  Lines(const Lines&) = delete;
  Lines& operator=(const Lines&) = delete;

  /// The whole line, or nothing of it.
  /// @throws std::runtime_error  It cannot be written.
  void add(const std::string& line);

 private:
  const std::string m_path;
  const int m_file;
};

}  // namespace vorn_conformance
