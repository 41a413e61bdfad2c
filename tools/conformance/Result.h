#pragma once

#include <vorn_testing/HostChecks.h>

#include <ostream>

namespace vorn_conformance {

/// One check that was run.
struct Result {
  vorn_testing::HostCheck check;
  vorn_testing::HostVerdict verdict;
  std::chrono::duration<double> took;
};

/// How many came out so.
std::size_t count(const std::vector<Result>& results, vorn_testing::HostVerdict::Kind kind);

/// What was seen, the rule and the remedy.
void printBroken(std::ostream& out, const Result& result);

/// What was not asked and why, the slowest answers, and the count.
void printSummary(std::ostream& out, const std::string& library, const std::vector<Result>& results);

void writeJUnit(std::ostream& out, const std::string& library, const std::vector<Result>& results);

}  // namespace vorn_conformance
