// vorn-conformance: tells whether a host keeps its promises to the library.

#include <getopt.h>
#include <vorn_testing/HostChecks.h>
#include <vorn_testing/HostLibrary.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "Result.h"

namespace {

using namespace vorn_conformance;
using vorn_testing::HostCheck;
using vorn_testing::HostDemands;
using vorn_testing::HostMaker;
using vorn_testing::HostVerdict;

constexpr int kKept = 0, kBroken = 1, kCouldNotRun = 2;

constexpr char kHelp[] = R"(Usage: vorn-conformance [OPTION...] ./libMyHost.so

Checks whether a host keeps what VornDALImplIF.h and VornEMPAdapterIF.h promise to the library. The shared library
defines vornCreateHost() and vornDestroyHost(), see vorn_testing/HostEntry.h. Every check makes a host of its own in
a process of its own. The checks write, remove and clear: give the host a store that may be lost.

  --only TEXT           run the checks whose name contains TEXT; may be given several times
  --list                name the checks, their rules and remedies, and run none
  --junit FILE          write the results as JUnit XML too
  --durable             ask that the store survives its process, also one that is killed
  --setting NAME=A,B    a setting that may be changed to A and to B; may be given several times
  --bound SECONDS       how long one call may take before it counts as not answering (30)
  --help                this text

Exit status: 0 all promises are kept, 1 one is broken, 2 the checks could not run.
)";

/// Why the checks cannot run: what is wrong, and what to do.
struct Problem : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Options {
  std::string library, junit;
  std::vector<std::string> only;
  bool list = false, help = false;
  HostDemands demands;
};

std::chrono::milliseconds bound(const std::string& text) {
  char* end = nullptr;
  const double seconds = std::strtod(text.c_str(), &end);
  if (text.empty() || *end || !(seconds >= 0.001 && seconds <= 86400))
    throw Problem("--bound " + text + ": give seconds, from 0.001 to 86400");
  return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

void addSetting(HostDemands& demands, const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos || text.find(',', equals) == std::string::npos)
    throw Problem("--setting " + text +
                  ": give a name and two values or more, as in --setting mode=day,night");
  std::istringstream values(text.substr(equals + 1));
  for (std::string value; std::getline(values, value, ',');)
    demands.settings[text.substr(0, equals)].push_back(value);
}

Options parse(int count, char** arguments) {
  static const option kOptions[] = {
      {"only", required_argument, nullptr, 'o'},    {"list", no_argument, nullptr, 'l'},
      {"junit", required_argument, nullptr, 'j'},   {"durable", no_argument, nullptr, 'd'},
      {"setting", required_argument, nullptr, 's'}, {"bound", required_argument, nullptr, 'b'},
      {"help", no_argument, nullptr, 'h'},          {nullptr, 0, nullptr, 0}};
  Options options;
  for (int letter; (letter = getopt_long(count, arguments, "h", kOptions, nullptr)) != -1;) {
    if (letter == 'o') options.only.push_back(optarg);
    if (letter == 'l') options.list = true;
    if (letter == 'j') options.junit = optarg;
    if (letter == 'd') options.demands.durable = true;
    if (letter == 's') addSetting(options.demands, optarg);
    if (letter == 'b') options.demands.bound = bound(optarg);
    if (letter == 'h') options.help = true;
    if (letter == '?') throw Problem("see --help");  // getopt_long has said what it does not know
  }
  if (options.help || options.list) return options;
  if (count - optind != 1) throw Problem("name one library that makes a host; see --help");
  options.library = arguments[optind];
  return options;
}

std::vector<HostCheck> chosen(const std::vector<std::string>& only) {
  std::vector<HostCheck> checks;
  const auto matches = [&](const HostCheck& check) {
    return only.empty() || std::any_of(only.begin(), only.end(), [&](const std::string& text) {
             return check.id.find(text) != std::string::npos;
           });
  };
  std::copy_if(vorn_testing::hostChecks().begin(), vorn_testing::hostChecks().end(),
               std::back_inserter(checks), matches);
  if (checks.empty()) throw Problem("no check is named so; --list names them all");
  return checks;
}

int run(const Options& options) {
  const std::vector<HostCheck> checks = chosen(options.only);
  if (options.list) {
    for (const HostCheck& check : checks)
      std::cout << check.id << "\n  rule:   " << check.rule << "\n  remedy: " << check.remedy << "\n";
    return kKept;
  }
  const HostMaker maker = [library = vorn_testing::HostLibrary(options.library)] {
    return library.makeHost();
  };
  std::ofstream junit;
  if (!options.junit.empty()) {
    junit.open(options.junit);
    if (!junit) throw Problem("--junit " + options.junit + " cannot be written; is there such a folder?");
  }
  std::vector<Result> results;
  for (const HostCheck& check : checks) {
    const auto start = std::chrono::steady_clock::now();
    const HostVerdict verdict = runHostCheck(check, maker, options.demands);
    if (verdict.kind == HostVerdict::kBroken && !verdict.made)
      throw Problem(
          options.library + ": " +
          (verdict.detail == "no host was made" ? "vornCreateHost() answers null" : verdict.detail));
    results.push_back({check, verdict, std::chrono::steady_clock::now() - start});
    if (verdict.kind == HostVerdict::kBroken) printBroken(std::cout, results.back());
  }
  printSummary(std::cout, options.library, results);
  if (junit.is_open()) {
    writeJUnit(junit, options.library, results);
    if (!junit.flush()) throw Problem("--junit " + options.junit + " cannot be written; is the disk full?");
  }
  return count(results, HostVerdict::kBroken) ? kBroken : kKept;
}

}  // namespace

int main(int count, char** arguments) {
  try {
    const Options options = parse(count, arguments);
    if (!options.help) return run(options);
    std::cout << kHelp;
    return kKept;
  } catch (const std::exception& problem) {
    std::cerr << "vorn-conformance: " << problem.what() << "\n";
    return kCouldNotRun;
  }
}
