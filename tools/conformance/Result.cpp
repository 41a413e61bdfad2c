#include "Result.h"

#include <algorithm>
#include <cstdio>
#include <set>

namespace vorn_conformance {

using vorn_testing::HostVerdict;

namespace {

constexpr std::size_t kSlowest = 5;

std::string decimal(double value, const char* unit) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f%s", value, unit);
  return text;
}

/// A text as XML may hold it, in an attribute too.
std::string escaped(const std::string& text) {
  std::string xml;
  for (const char c : text) {
    switch (c) {
      case '&':
        xml += "&amp;";
        break;
      case '<':
        xml += "&lt;";
        break;
      case '>':
        xml += "&gt;";
        break;
      case '"':
        xml += "&quot;";
        break;
      default:
        xml += c;
    }
  }
  return xml;
}

/// By reason: what was not asked, in the order of the checks.
void printNotAsked(std::ostream& out, const std::vector<Result>& results) {
  std::set<std::string> said;
  for (const Result& result : results) {
    const std::string& reason = result.verdict.detail;
    if (result.verdict.kind != HostVerdict::kNotAsked || !said.insert(reason).second) continue;
    out << "NOT ASKED " << reason << "\n";
    for (const Result& other : results) {
      if (other.verdict.kind == HostVerdict::kNotAsked && other.verdict.detail == reason)
        out << "  " << other.check.id << "\n";
    }
  }
}

void printSlowest(std::ostream& out, std::vector<Result> results) {
  std::stable_sort(results.begin(), results.end(), [](const Result& left, const Result& right) {
    return left.verdict.slowest > right.verdict.slowest;
  });
  std::set<std::string> said;
  for (const Result& result : results) {
    if (said.size() == kSlowest || result.verdict.slowestCall.empty()) break;
    if (said.insert(result.verdict.slowestCall).second)
      out << "SLOWEST   " << decimal(static_cast<double>(result.verdict.slowest.count()) / 1000, " ms")
          << "  " << result.verdict.slowestCall << "\n";
  }
}

}  // namespace

std::size_t count(const std::vector<Result>& results, HostVerdict::Kind kind) {
  return static_cast<std::size_t>(std::count_if(
      results.begin(), results.end(), [kind](const Result& result) { return result.verdict.kind == kind; }));
}

void printBroken(std::ostream& out, const Result& result) {
  out << "BROKEN    " << result.check.id << " (" << result.check.operation << ", slot " << result.check.slot
      << ")\n  seen:   " << result.verdict.detail << "\n  rule:   " << result.check.rule
      << "\n  remedy: " << result.check.remedy << std::endl;
}

void printSummary(std::ostream& out, const std::string& library, const std::vector<Result>& results) {
  printNotAsked(out, results);
  printSlowest(out, results);
  out << library << ": " << results.size() << " checks, " << count(results, HostVerdict::kKept) << " kept, "
      << count(results, HostVerdict::kBroken) << " broken, " << count(results, HostVerdict::kNotAsked)
      << " not asked\n";
}

void writeJUnit(std::ostream& out, const std::string& library, const std::vector<Result>& results) {
  double took = 0;
  for (const Result& result : results) took += result.took.count();
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite name=\"" << escaped(library)
      << "\" tests=\"" << results.size() << "\" failures=\"" << count(results, HostVerdict::kBroken)
      << "\" errors=\"0\" skipped=\"" << count(results, HostVerdict::kNotAsked) << "\" time=\""
      << decimal(took, "") << "\">\n";
  for (const Result& result : results) {
    const std::string& id = result.check.id;
    const std::size_t slash = id.find('/');
    const std::string detail = escaped(result.verdict.detail);
    out << "    <testcase classname=\"" << id.substr(0, slash) << "\" name=\"" << id.substr(slash + 1)
        << "\" time=\"" << decimal(result.took.count(), "") << "\"";
    if (result.verdict.kind == HostVerdict::kKept) out << "/>\n";
    if (result.verdict.kind == HostVerdict::kNotAsked)
      out << "><skipped message=\"" << detail << "\"/></testcase>\n";
    if (result.verdict.kind == HostVerdict::kBroken)
      out << "><failure message=\"" << detail << "\">rule: " << escaped(result.check.rule)
          << "\nremedy: " << escaped(result.check.remedy) << "</failure></testcase>\n";
  }
  out << "  </testsuite>\n</testsuites>\n";
}

}  // namespace vorn_conformance
