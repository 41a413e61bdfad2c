#include "Options.h"

#include <getopt.h>
#include <vorn_testing/Text.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <sstream>

namespace vorn_conformance {

using vorn_testing::didYouMean;
using vorn_testing::HostDemands;

const char kHelp[] = R"(Usage: vorn-conformance [OPTION...] ./libMyHost.so

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

Exit status: 0 all promises are kept, 1 one is broken or the results could not be written, 2 nothing was checked, 3 the
host failed outside a check: it could not be loaded or made.
)";

namespace {

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

}  // namespace

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
  opterr = 0;  // It would print what it does not know as it is.
  int index = 0;
  for (int letter; (letter = getopt_long(count, arguments, ":h", kOptions, &index)) != -1;) {
    if (std::strchr("jJrh?:", letter) == nullptr) {
      options.all += (options.all.empty() ? "--" : " --") + std::string(kOptions[index].name);
      if (optarg) options.all += ' ' + std::string(optarg);
    }
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
  if (options.help || options.version) return options;
  if (options.list && (optind != count || !options.junit.empty() || !options.json.empty()))
    throw Problem("--list only names the checks; leave out the library and the reports");
  if (options.list) return options;
  if (count - optind != 1 || !*arguments[optind])
    throw Problem("name one library that makes a host; see --help");
  options.library = arguments[optind];
  return options;
}

}  // namespace vorn_conformance
