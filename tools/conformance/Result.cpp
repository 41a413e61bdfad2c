#include "Result.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn_testing/Text.h>
#include <vorn_testing/WholeFile.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <set>
#include <stdexcept>

namespace vorn_conformance {

using vorn_testing::harmless;
using vorn_testing::HostVerdict;

namespace {

constexpr std::size_t kSlowest = 5;
constexpr std::size_t kLongestHead = 1 << 16;
constexpr std::size_t kFrames = 36;

constexpr char kXml[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
const char* const kKinds[] = {"kept", "broken", "not asked", "remark"};

std::string decimal(double value, const char* unit) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f%s", value, unit);
  return text;
}

/// Without the two characters that XML holds in no form.
std::string withoutNoncharacters(std::string text) {
  for (std::size_t at = 0; (at = text.find("\xef\xbf", at)) != std::string::npos; at += 3) {
    const std::string bytes = text.substr(at, 3);
    if (bytes == "\xef\xbf\xbe" || bytes == "\xef\xbf\xbf")
      text.replace(at, 3, bytes.back() == '\xbe' ? "\\xef\\xbf\\xbe" : "\\xef\\xbf\\xbf");
  }
  return text;
}

/// A text as XML may hold it, in an attribute too.
std::string escaped(const std::string& text) {
  std::string xml;
  for (const char c : withoutNoncharacters(harmless(text))) {
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
      case '\n':
        xml += "&#10;";
        break;
      default:
        xml += c;
    }
  }
  return xml;
}

std::string quoted(const std::string& text) {
  std::string json = "\"";
  for (const char c : harmless(text)) {
    if (c == '"' || c == '\\') json += '\\';
    if (c == '\n')
      json += "\\n";
    else
      json += c;
  }
  return json + '"';
}

/// The text that stands in quotes after `name` in a line of JSON.
std::string valueOf(const std::string& line, const std::string& name) {
  const std::string key = quoted(name) + ":\"";
  std::string value;
  std::size_t at = line.find(key);
  if (at == std::string::npos) return "";
  for (at += key.size(); at < line.size() && line[at] != '"'; ++at) {
    if (line[at] == '\\' && at + 1 < line.size()) {
      ++at;
      value += line[at] == 'n' ? '\n' : line[at];
    } else {
      value += line[at];
    }
  }
  return value;
}

/// A reason without what differs from run to run: long numbers, addresses, moments.
std::string reasonOf(const std::string& detail) {
  std::string reason;
  for (std::size_t at = 0; at < detail.size();) {
    std::size_t end = at;
    while (end < detail.size() && std::isxdigit(static_cast<unsigned char>(detail[end]))) ++end;
    const bool address = at + 1 < detail.size() && detail[at] == '0' && detail[at + 1] == 'x';
    const bool numeral = std::any_of(detail.begin() + static_cast<std::ptrdiff_t>(at),
                                     detail.begin() + static_cast<std::ptrdiff_t>(end),
                                     [](char c) { return c >= '0' && c <= '9'; });
    if (address) {
      for (end = at + 2; end < detail.size() && std::isxdigit(static_cast<unsigned char>(detail[end]));)
        ++end;
    }
    if (address || (numeral && end - at > 4)) {
      reason += '#';
      at = end;
    } else {
      reason.append(detail, at, std::max<std::size_t>(end - at, 1));
      at = std::max(end, at + 1);
    }
  }
  return reason;
}

/// By reason: what was not asked, in the order of the checks.
void printNotAsked(std::ostream& out, const std::vector<Result>& results) {
  std::set<std::string> said;
  for (const Result& result : results) {
    if (result.verdict.kind != HostVerdict::kNotAsked) continue;
    const std::string reason = reasonOf(result.verdict.detail);
    if (!said.insert(reason).second) continue;
    out << "NOT ASKED " << harmless(result.verdict.detail) << "\n";
    for (const Result& other : results) {
      if (other.verdict.kind == HostVerdict::kNotAsked && reasonOf(other.verdict.detail) == reason)
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
    if (said.insert(reasonOf(result.verdict.slowestCall)).second)
      out << "SLOWEST   " << decimal(static_cast<double>(result.verdict.slowest.count()) / 1000, " ms")
          << "  " << harmless(result.verdict.slowestCall) << "\n";
  }
}

std::string stackOf(const Result& result, const char* before) {
  std::string lines;
  for (std::size_t i = 0; i < std::min(kFrames, result.verdict.stack.size()); ++i)
    lines += before + harmless(result.verdict.stack[i]);
  return lines;
}

}  // namespace

std::size_t count(const std::vector<Result>& results, HostVerdict::Kind kind) {
  return static_cast<std::size_t>(std::count_if(
      results.begin(), results.end(), [kind](const Result& result) { return result.verdict.kind == kind; }));
}

void Printer::add(const Result& result) {
  const HostVerdict& verdict = result.verdict;
  if (verdict.kind != HostVerdict::kBroken && verdict.kind != HostVerdict::kRemark) return;
  const auto said = m_said.emplace(kKinds[verdict.kind] + reasonOf(verdict.detail), result.check.id);
  m_out << (verdict.kind == HostVerdict::kBroken ? "BROKEN    " : "REMARK    ") << result.check.id << " ("
        << result.check.operation << ", slot " << result.check.slot
        << ")\n  seen:   " << harmless(verdict.detail);
  if (!said.second) {
    m_out << "\n  as in   " << said.first->second << std::endl;
    return;
  }
  m_out << stackOf(result, "\n          at ") << "\n  rule:   " << result.check.rule
        << "\n  remedy: " << result.check.remedy << std::endl;
}

void printSummary(std::ostream& out, const std::string& library, const std::vector<Result>& results) {
  printNotAsked(out, results);
  printSlowest(out, results);
  out << harmless(library) << ": " << vorn_testing::counted(results.size(), "check") << ", "
      << count(results, HostVerdict::kKept) << " kept, " << count(results, HostVerdict::kBroken)
      << " broken, " << count(results, HostVerdict::kNotAsked) << " not asked";
  if (const std::size_t remarks = count(results, HostVerdict::kRemark))
    out << ", " << remarks << " with a remark";
  out << "\n";
}

void writeJUnit(std::ostream& out, const Facts& facts, const std::vector<Result>& results) {
  double took = 0;
  for (const Result& result : results) took += result.took.count();
  out << kXml << "<testsuites>\n  <testsuite name=\"";
  for (const auto& fact : facts) {
    if (fact.first == "host") out << escaped(fact.second);
  }
  out << "\" tests=\"" << results.size() << "\" failures=\"" << count(results, HostVerdict::kBroken)
      << "\" errors=\"0\" skipped=\"" << count(results, HostVerdict::kNotAsked) << "\" time=\""
      << decimal(took, "") << "\">\n    <properties>\n";
  for (const auto& fact : facts)
    out << "      <property name=\"" << escaped(fact.first) << "\" value=\"" << escaped(fact.second)
        << "\"/>\n";
  out << "    </properties>\n";
  for (const Result& result : results) {
    const std::string& id = result.check.id;
    const std::size_t slash = id.find('/');
    const std::string detail = escaped(result.verdict.detail);
    out << "    <testcase classname=\"" << id.substr(0, slash) << "\" name=\"" << id.substr(slash + 1)
        << "\" time=\"" << decimal(result.took.count(), "") << "\">";
    if (result.verdict.kind == HostVerdict::kNotAsked) out << "<skipped message=\"" << detail << "\"/>";
    if (result.verdict.kind == HostVerdict::kBroken)
      out << "<failure message=\"" << detail << "\">rule: " << escaped(result.check.rule)
          << "\nremedy: " << escaped(result.check.remedy) << escaped(stackOf(result, "\nat "))
          << "</failure>";
    if (result.verdict.kind == HostVerdict::kRemark)
      out << "<system-out>remark: " << detail << "</system-out>";
    if (!result.verdict.seen.empty())
      out << "<system-out>" << escaped(result.verdict.seen) << "</system-out>";
    out << "</testcase>\n";
  }
  out << "  </testsuite>\n</testsuites>\n";
}

std::string jsonOf(const Facts& facts) {
  std::string line;
  for (const auto& fact : facts)
    line += (line.empty() ? "{" : ",") + quoted(fact.first) + ":" + quoted(fact.second);
  return line + "}";
}

std::string jsonOf(const Result& result) {
  std::string stack;
  for (const std::string& frame : result.verdict.stack) stack += (stack.empty() ? "" : ",") + quoted(frame);
  return "{\"check\":" + quoted(result.check.id) + ",\"verdict\":" + quoted(kKinds[result.verdict.kind]) +
         ",\"detail\":" + quoted(result.verdict.detail) + ",\"seen\":" + quoted(result.verdict.seen) +
         ",\"seconds\":" + decimal(result.took.count(), "") +
         ",\"slowestCall\":" + quoted(result.verdict.slowestCall) +
         ",\"slowestMs\":" + decimal(static_cast<double>(result.verdict.slowest.count()) / 1000, "") +
         ",\"stack\":[" + stack + "],\"hung\":" + (result.verdict.hung ? "true" : "false") + "}";
}

std::pair<std::string, HostVerdict> resultOf(const std::string& line) {
  HostVerdict verdict{HostVerdict::kNotAsked, valueOf(line, "detail"), true, "", {}, false, false, "", {}};
  const std::string kind = valueOf(line, "verdict");
  const auto found = std::find(std::begin(kKinds), std::end(kKinds), kind);
  if (found == std::end(kKinds) || line.empty() || line.back() != '}') return {"", verdict};
  verdict.kind = static_cast<HostVerdict::Kind>(found - std::begin(kKinds));
  verdict.seen = valueOf(line, "seen");
  verdict.hung = line.find("\"hung\":true") != std::string::npos;
  return {valueOf(line, "check"), verdict};
}

void writeReport(const std::string& path, const std::string& content) {
  vorn_testing::WholeFile file(path, 0666);
  file.stream() << content;
  file.finish();
}

void refuseUnlessReport(const std::string& path) {
  vorn_testing::refuseToReplace(
      path, "is no report of vorn-conformance", kLongestHead, [](const std::string& first) {
        const std::size_t tool = first.find("vorn-conformance ");
        const bool isXml = first.compare(0, sizeof kXml - 1, kXml) == 0, isJson = first[0] == '{';
        return tool < first.find(isJson ? "\n" : "</properties>") && (isXml || isJson);
      });
}

Lines::Lines(const std::string& path)
    : m_path(path), m_file(open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC)) {
  if (m_file < 0) throw std::runtime_error(path + " cannot be written: " + std::strerror(errno));
  struct flock whole {};
  whole.l_type = F_WRLCK;
  // A check's process has no part in this lock, whatever it leaves running.
  if (fcntl(m_file, F_SETLK, &whole) == 0 || (errno != EACCES && errno != EAGAIN)) return;
  close(m_file);
  throw std::runtime_error(path +
                           " is being written by another program; wait for its end or name another file");
}

Lines::~Lines() { close(m_file); }

void Lines::add(const std::string& line) {
  struct stat before {};
  fstat(m_file, &before);
  const std::string bytes = line + "\n";
  for (std::size_t at = 0; at < bytes.size();) {
    const ssize_t written = write(m_file, bytes.data() + at, bytes.size() - at);
    if (written >= 0) {
      at += static_cast<std::size_t>(written);
    } else if (errno != EINTR) {
      std::string problem = m_path + " cannot be written: " + std::strerror(errno);
      if (S_ISREG(before.st_mode) && ftruncate(m_file, before.st_size) != 0)
        problem += "; its last line is cut off";
      throw std::runtime_error(problem);
    }
  }
}

}  // namespace vorn_conformance
