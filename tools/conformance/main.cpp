// vorn-conformance: tells whether a host keeps its promises to the library.

#include <VornDeviceInfo.h>
#include <dlfcn.h>
#include <unistd.h>
#include <vorn_testing/HostChecks.h>
#include <vorn_testing/HostLibrary.h>
#include <vorn_testing/StandardFiles.h>
#include <vorn_testing/Text.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>

#include "Options.h"
#include "Progress.h"
#include "Result.h"

namespace {

using namespace vorn_conformance;
using vorn_testing::didYouMean;
using vorn_testing::harmless;
using vorn_testing::HostCheck;
using vorn_testing::HostMaker;
using vorn_testing::HostVerdict;
using vorn_testing::oneLine;
namespace fs = std::filesystem;

constexpr int kKept = 0, kBroken = 1, kResultsLost = 1, kNothingChecked = 2, kHostFailed = 3;

void mustNameSome(const std::string& part) {
  std::vector<std::string> words;
  for (const HostCheck& check : vorn_testing::hostChecks()) {
    if (check.id.find(part) != std::string::npos) return;
    const std::string name = check.id.substr(check.id.find('/', check.id.find('/') + 1) + 1);
    words.push_back(name);
    words.push_back(name.substr(0, name.find('/')));
  }
  throw Problem("--only " + part + ": no check is named so" + didYouMean(part, words) +
                " (--list names them all)");
}

std::vector<HostCheck> chosen(const Options& options) {
  for (const std::string& part : options.only) mustNameSome(part);
  std::vector<HostCheck> checks;
  std::vector<std::string> operations;  // those of one operation stay together
  std::size_t index = 0;
  for (const HostCheck& check : vorn_testing::hostChecks()) {
    if (!options.only.empty() &&
        std::none_of(options.only.begin(), options.only.end(),
                     [&](const auto& text) { return check.id.find(text) != std::string::npos; }))
      continue;
    const std::string place = check.id.substr(0, check.id.rfind('/'));
    auto found = std::find(operations.begin(), operations.end(), place);
    if (found == operations.end()) found = operations.insert(operations.end(), place);
    const auto number = check.slot == 1 ? index++ : static_cast<std::size_t>(found - operations.begin());
    if (number % options.shards == options.shard || options.shards == 1) checks.push_back(check);
  }
  return checks;
}

/// A file by its size and a sum of its bytes.
std::string identityOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::uint64_t sum = 0xcbf29ce484222325, size = 0;
  for (char c; file.get(c); ++size) sum = (sum ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  char text[64];
  std::snprintf(text, sizeof text, " (%llu bytes, %016llx)", static_cast<unsigned long long>(size),
                static_cast<unsigned long long>(sum));
  return path + text;
}

Facts factsOf(const Options& options) {
  Dl_info library = {};
  dladdr(reinterpret_cast<const void*>(&VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown), &library);
  return {{"tool", "vorn-conformance " VORN_VERSION},
          {"library", library.dli_fname ? identityOf(library.dli_fname) : "unknown"},
          {"host", options.library},
          {"host file", identityOf(options.library)},
          {"options", options.all}};
}

/// What an earlier run wrote of the same host, asked the same; a line that was cut off is dropped.
std::map<std::string, HostVerdict> earlier(const Options& options, const Facts& facts) {
  std::map<std::string, HostVerdict> known;
  std::ifstream file(options.json);
  std::string whole;
  for (std::string line; std::getline(file, line) && !file.eof();) {
    if (whole.empty() && line != jsonOf(facts))
      throw Problem(options.json +
                    " is of another run: of another host, library or tool, or with other options; give " +
                    "those, or begin anew without --resume");
    whole += line + "\n";
    const auto result = resultOf(line);
    if (!result.first.empty()) known.insert(result);
  }
  file.close();
  writeReport(options.json, whole);
  return known;
}

/// The library is loaded in the process of each check and never in this one.
HostMaker makerOf(const std::string& path) {
  return [path, library = std::make_shared<std::unique_ptr<vorn_testing::HostLibrary>>()] {
    if (!*library) *library = std::make_unique<vorn_testing::HostLibrary>(path);
    return (*library)->makeHost();
  };
}

/// One name for every way to a file.
fs::path nameOf(const std::string& path) {
  std::error_code none;
  const fs::path name = fs::weakly_canonical(path, none);
  return none ? fs::path(path) : name;
}

int run(const Options& options) {
  const std::vector<HostCheck> checks = chosen(options);
  if (options.list) {
    for (const HostCheck& check : checks)
      std::cout << check.id << "\n  rule:   " << check.rule << "\n  remedy: " << check.remedy << "\n";
    std::cout << "Areas:";
    for (const std::string& area : vorn_testing::hostAreas()) std::cout << " " << area;
    std::cout << "\n";
    return kKept;
  }
  // A pipe or a device would be read without an end.
  std::error_code none;
  const fs::file_type kind = fs::status(options.library, none).type();
  if (kind != fs::file_type::regular && kind != fs::file_type::not_found && kind != fs::file_type::none)
    throw Problem(options.library + " is no file; name a shared library");
  if (options.resume && fs::exists(options.json, none) && !fs::is_regular_file(options.json, none))
    throw Problem(options.json + " is no file from which --resume could go on");
  for (const std::string& file : {options.junit, options.json})
    if (!file.empty()) refuseUnlessReport(file);
  if (!options.junit.empty() && nameOf(options.junit) == nameOf(options.json))
    throw Problem("--junit and --json name one file: " + oneLine(options.json) + "; name two");
  const Facts facts = factsOf(options);
  std::vector<Result> results;
  const auto writeJUnitFile = [&](bool last) {
    // A pipe takes it once.
    if (options.junit.empty() || (!last && fs::exists(options.junit) && !fs::is_regular_file(options.junit)))
      return;
    std::ostringstream xml;
    writeJUnit(xml, facts, results);
    writeReport(options.junit, xml.str());
  };
  std::unique_ptr<Lines> json;
  std::set<std::string> lost;  // why reports could not be written
  const auto writeUnlessLost = [&](const std::function<void()>& write) {
    try {
      write();
    } catch (const std::runtime_error& problem) {
      if (lost.insert(problem.what()).second)
        std::cerr << "vorn-conformance: " << harmless(problem.what()) << "\n";
    }
  };
  // Held until this run's own file is in its place.
  if (fs::is_regular_file(options.json, none)) json = std::make_unique<Lines>(options.json);
  const auto known = options.resume ? earlier(options, facts) : std::map<std::string, HostVerdict>();
  if (!options.json.empty() && known.empty()) writeReport(options.json, jsonOf(facts) + "\n");
  if (!options.json.empty()) json = std::make_unique<Lines>(options.json);
  const auto writeReports = [&] {
    writeUnlessLost([&] { writeJUnitFile(false); });
    if (json && !known.count(results.back().check.id))
      writeUnlessLost([&] { json->add(jsonOf(results.back())); });
  };
  writeJUnitFile(false);

  Printer printer(std::cout);
  const vorn_testing::LibraryTrial trial =
      vorn_testing::tryHostLibrary(options.library, options.demands.bound);
  const bool destructionIsAsked = std::any_of(checks.begin(), checks.end(), [](const HostCheck& check) {
    return check.id.find("/destructor/") != std::string::npos;
  });
  if (!trial.failure.empty() && !(trial.makesHosts && destructionIsAsked)) {
    results.push_back({{"host/loads", "the library", 0,
                        "The library can be loaded, makes a host, destroys it and can be unloaded.",
                        "Do nothing then that can fail, wait or end the process."},
                       {HostVerdict::kBroken, trial.failure, false, "", {}, false, false, "", {}},
                       {}});
    writeReports();
    if (!trial.makesHosts) {
      writeUnlessLost([&] { writeJUnitFile(true); });
      const bool named = trial.failure.compare(0, options.library.size() + 1, options.library + " ") == 0;
      std::cerr << "vorn-conformance: " << harmless((named ? "" : options.library + ": ") + trial.failure)
                << "\n";
      return kHostFailed;
    }
    printer.add(results.back());
  }

  vorn_testing::HostCheckRun checkRun(makerOf(options.library), options.demands);
  checkRun.noteValues();
  Progress progress(std::cerr, isatty(STDERR_FILENO) == 1);
  for (const HostCheck& check : checks) {
    const auto start = std::chrono::steady_clock::now();
    const auto before = known.find(check.id);
    if (before != known.end()) {
      checkRun.remember(check, before->second);
      results.push_back({check, before->second, {}});
      progress.clear();
      printer.add(results.back());
      continue;
    }
    HostVerdict verdict = checkRun.run(check);
    if (verdict.kind == HostVerdict::kKept && verdict.slowest >= std::chrono::seconds(1)) {
      verdict.kind = HostVerdict::kRemark;
      verdict.detail =
          verdict.slowestCall + " took " + std::to_string(verdict.slowest.count() / 1000) + " ms";
    }
    if (verdict.kind == HostVerdict::kRemark && options.strict) verdict.kind = HostVerdict::kBroken;
    results.push_back({check, verdict, std::chrono::steady_clock::now() - start});
    progress.clear();
    printer.add(results.back());
    writeReports();
    progress.at(results.size(), checks.size());
  }
  checkRun.putValuesBack();
  writeUnlessLost([&] { writeJUnitFile(true); });
  progress.clear();
  printSummary(std::cout, options.library, results);
  if (!lost.empty()) return kResultsLost;
  if (count(results, HostVerdict::kBroken)) return kBroken;
  return count(results, HostVerdict::kKept) + count(results, HostVerdict::kRemark) ? kKept : kNothingChecked;
}

/// Starts this program anew without the memory allocator's store of freed blocks: what a host uses after it freed it
/// would look as before there.
void startStrict(char** arguments) {
  constexpr char kTunables[] = "GLIBC_TUNABLES";
  if (std::getenv(kTunables) || std::getenv("VORN_CONFORMANCE_STARTED")) return;
  setenv(kTunables, "glibc.malloc.tcache_count=0", 1);
  setenv("VORN_CONFORMANCE_STARTED", "1", 1);
  execv("/proc/self/exe", arguments);
  unsetenv(kTunables);  // it goes on as it is
}

}  // namespace

// Asked by the thread sanitizer, where there is one: a race that is only printed would leave its check kept, and a check
// has a process of its own, which starts threads.
extern "C" __attribute__((visibility("default"))) const char*
__tsan_default_options() {  // NOLINT(bugprone-reserved-identifier): the sanitizer's name
  return "halt_on_error=1:die_after_fork=0";
}

int main(int count, char** arguments) {
  vorn_testing::prepareStandardFiles();
  startStrict(arguments);
  int status = kNothingChecked;
  try {
    const Options options = parse(count, arguments);
    if (options.help)
      std::cout << kHelp, status = kKept;
    else if (options.version)
      std::cout << "vorn-conformance " VORN_VERSION "\n", status = kKept;
    else
      status = run(options);
  } catch (const std::exception& problem) {
    std::cerr << "vorn-conformance: " << harmless(problem.what()) << "\n";
  }
  return vorn_testing::standardOutputArrived("vorn-conformance") || status != kKept ? status : kResultsLost;
}
