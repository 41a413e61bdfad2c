// vorn-conformance: tells whether a host keeps its promises to the library.

#include <VornDeviceInfo.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <getopt.h>
#include <unistd.h>
#include <vorn_testing/HostChecks.h>
#include <vorn_testing/HostLibrary.h>
#include <vorn_testing/Text.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "Progress.h"
#include "Result.h"

namespace {

using namespace vorn_conformance;
using vorn_testing::didYouMean;
using vorn_testing::harmless;
using vorn_testing::HostCheck;
using vorn_testing::HostDemands;
using vorn_testing::HostMaker;
using vorn_testing::HostVerdict;
using vorn_testing::oneLine;
namespace fs = std::filesystem;

constexpr int kKept = 0, kBroken = 1, kNothingChecked = 2, kHostFailed = 3;

constexpr char kHelp[] = R"(Usage: vorn-conformance [OPTION...] ./libMyHost.so

Checks whether a host keeps what VornDALImplIF.h and VornEMPAdapterIF.h promise to the library. The shared library
defines vornCreateHost() and vornDestroyHost(), see vorn_testing/HostEntry.h. Every check loads it and makes a host of
its own in a process of its own. The checks write, remove and clear: give the host a store that may be lost.

What to check
  --only TEXT           the checks whose name contains TEXT; may be given several times
  --shard I/N           the I-th of N parts, for several machines
  --without A,B         areas that the host does not offer; they are not asked
  --require A,B         areas that it claims: one that could not be asked is broken
  --durable             ask that the store survives its process, also one that is killed
  --strict              a remark counts as broken
  --list                name the checks, their rules and remedies, and the areas, and run none

What the host accepts, used wherever an argument is needed; each may be given several times
  --setting NAME=A,B    a setting that may be changed to A and to B
  --mode NAME=A,B       a mode and its values
  --channel NAME        a channel
  --input NAME          an input
  --locale NAME         a locale

How
  --bound SECONDS       how long one call may take before it counts as not answering (30)
  --junit FILE          write the results as JUnit XML too
  --json FILE           write the results as lines of JSON too
  --resume              take over what stands in the file of --json and run the rest
  --version             name this program's version
  --help                this text

Reports are written check by check and are whole at any moment.

Exit status: 0 all promises are kept, 1 one is broken, 2 nothing was checked, 3 the host failed outside a check: it
could not be loaded or made.
)";

/// Why nothing can be checked: what is wrong, and what to do.
struct Problem : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Options {
  std::string library, junit, json, all;
  std::vector<std::string> only;
  std::size_t shard = 0, shards = 1;
  bool list = false, help = false, version = false, resume = false, strict = false;
  HostDemands demands;
};

std::chrono::milliseconds bound(const std::string& text) {
  char* end = nullptr;
  const double seconds = std::strtod(text.c_str(), &end);
  if (text.empty() || *end || !(seconds >= 0.001 && seconds <= 86400))
    throw Problem("--bound " + text + ": give seconds, from 0.001 to 86400");
  return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

std::vector<std::string> parts(const std::string& text) {
  std::vector<std::string> found;
  std::istringstream list(text);
  for (std::string part; std::getline(list, part, ',');) found.push_back(part);
  return found;
}

void addValues(std::map<std::string, std::vector<std::string>>& values, const char* option,
               const std::string& text) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const auto named = parts(text.substr(std::min(equals + 1, text.size())));
  if (equals == 0 || std::set<std::string>(named.begin(), named.end()).size() < 2)
    throw Problem(std::string(option) + " " + text + ": give a name and two values or more, as in " + option +
                  " mode=day,night");
  auto& all = values[text.substr(0, equals)];
  all.insert(all.end(), named.begin(), named.end());
}

/// What an option names, which is something.
const char* text(const char* option) {
  if (!*optarg) throw Problem(std::string(option) + " needs a value; see --help");
  return optarg;
}

void addAreas(std::set<std::string>& areas, const char* option, const std::string& text) {
  const auto& known = vorn_testing::hostAreas();
  for (const std::string& area : parts(text)) {
    if (std::find(known.begin(), known.end(), area) == known.end())
      throw Problem(std::string(option) + " " + area + ": there is no such area" + didYouMean(area, known) +
                    " (--list names them all)");
    areas.insert(area);
  }
}

void setShard(Options& options, const std::string& text) {
  const char* const end = text.data() + text.size();
  std::size_t part = 0, of = 0;
  const auto read = std::from_chars(text.data(), end, part);
  const bool more = read.ec == std::errc() && read.ptr != end && *read.ptr == '/';
  if (!more || std::from_chars(read.ptr + 1, end, of).ptr != end || part < 1 || part > of)
    throw Problem("--shard " + text + ": give a part and how many there are, as in --shard 2/4");
  options.shard = part - 1;
  options.shards = of;
}

/// What is wrong with the option that getopt_long() has just refused.
std::string wrong(const option* known, int letter, const std::string& argument) {
  if (letter == ':') return argument + " needs a value; see --help";
  const std::string name = argument.substr(0, argument.find('='));
  std::vector<std::string> names;
  for (; known->name; ++known) names.push_back(std::string("--") + known->name);
  if (std::find(names.begin(), names.end(), name) != names.end()) return name + " takes no value; see --help";
  return name + " is no option" + didYouMean(name, names) + " (--help names them all)";
}

Options parse(int count, char** arguments) {
  static const option kOptions[] = {{"only", required_argument, nullptr, 'o'},
                                    {"list", no_argument, nullptr, 'l'},
                                    {"junit", required_argument, nullptr, 'j'},
                                    {"durable", no_argument, nullptr, 'd'},
                                    {"setting", required_argument, nullptr, 's'},
                                    {"bound", required_argument, nullptr, 'b'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {"version", no_argument, nullptr, 'v'},
                                    {"json", required_argument, nullptr, 'J'},
                                    {"resume", no_argument, nullptr, 'r'},
                                    {"shard", required_argument, nullptr, 'S'},
                                    {"without", required_argument, nullptr, 'w'},
                                    {"require", required_argument, nullptr, 'q'},
                                    {"strict", no_argument, nullptr, 't'},
                                    {"mode", required_argument, nullptr, 'm'},
                                    {"channel", required_argument, nullptr, 'c'},
                                    {"input", required_argument, nullptr, 'i'},
                                    {"locale", required_argument, nullptr, 'L'},
                                    {nullptr, 0, nullptr, 0}};
  Options options;
  HostDemands& demands = options.demands;
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    if (argument != "--resume") options.all += (options.all.empty() ? "" : " ") + argument;
  }
  opterr = 0;  // It would print what it does not know as it is.
  for (int letter; (letter = getopt_long(count, arguments, ":h", kOptions, nullptr)) != -1;) {
    if (letter == 'o') options.only.push_back(text("--only"));
    if (letter == 'l') options.list = true;
    if (letter == 'j') options.junit = text("--junit");
    if (letter == 'J') options.json = text("--json");
    if (letter == 'r') options.resume = true;
    if (letter == 'S') setShard(options, optarg);
    if (letter == 'd') demands.durable = true;
    if (letter == 't') options.strict = true;
    if (letter == 'w') addAreas(demands.without, "--without", text("--without"));
    if (letter == 'q') addAreas(demands.required, "--require", text("--require"));
    if (letter == 's') addValues(demands.settings, "--setting", optarg);
    if (letter == 'm') addValues(demands.modes, "--mode", optarg);
    if (letter == 'c') demands.channels.push_back(text("--channel"));
    if (letter == 'i') demands.inputs.push_back(text("--input"));
    if (letter == 'L') demands.locales.push_back(text("--locale"));
    if (letter == 'b') demands.bound = bound(optarg);
    if (letter == 'h') options.help = true;
    if (letter == 'v') options.version = true;
    if (letter == '?' || letter == ':') throw Problem(wrong(kOptions, letter, arguments[optind - 1]));
  }
  for (const std::string& area : demands.required) {
    if (demands.without.count(area)) throw Problem(area + " cannot be both required and left out");
  }
  if (options.resume && options.json.empty())
    throw Problem("--resume needs --json FILE, from which it goes on");
  if (options.help || options.list || options.version) return options;
  if (count - optind != 1) throw Problem("name one library that makes a host; see --help");
  options.library = arguments[optind];
  return options;
}

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
  const auto writeReports = [&] {
    writeJUnitFile(false);
    if (!options.json.empty()) appendLine(options.json, jsonOf(results.back()));
  };
  const auto known = options.resume ? earlier(options, facts) : std::map<std::string, HostVerdict>();
  if (!options.json.empty() && known.empty()) writeReport(options.json, jsonOf(facts) + "\n");
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
      writeJUnitFile(true);
      std::cerr << "vorn-conformance: " << harmless(options.library + ": " + trial.failure) << "\n";
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
  writeJUnitFile(true);
  progress.clear();
  printSummary(std::cout, options.library, results);
  if (count(results, HostVerdict::kBroken)) return kBroken;
  return count(results, HostVerdict::kKept) + count(results, HostVerdict::kRemark) ? kKept : kNothingChecked;
}

/// A standard stream that the caller closed would be the next file that is opened.
bool occupyStreams() {
  const bool open = fcntl(STDOUT_FILENO, F_GETFD) >= 0;
  for (int stream = 0; stream <= 2; ++stream) {
    if (fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) < 0) std::exit(kNothingChecked);
  }
  return open;
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
  const bool shown = occupyStreams();
  if (shown) startStrict(arguments);
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
  if (!std::cout.flush() || !shown) {
    std::cerr << "vorn-conformance: the results cannot be written to the standard output\n";
    return kNothingChecked;
  }
  return status;
}
