// The command line of vorn-conformance: what each option asks for, and what is refused with which words.

#include "conformance/Options.h"

#include <getopt.h>
#include <gtest/gtest.h>

namespace {

using namespace vorn_conformance;
using Texts = std::vector<std::string>;

Options parsed(Texts words) {
  words.insert(words.begin(), "vorn-conformance");
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  optind = 0;  // As at the start of a program.
  return parse(static_cast<int>(words.size()), arguments.data());
}

std::string problem(const Texts& words) {
  try {
    parsed(words);
    return "nothing is wrong";
  } catch (const Problem& wrong) {
    return wrong.what();
  }
}

TEST(CommandLine, AsksForNothingByItself) {
  const Options options = parsed({"x.so"});
  EXPECT_EQ(options.library, "x.so");
  EXPECT_EQ(options.junit + options.json, "");
  EXPECT_TRUE(options.only.empty() && options.shard == 0 && options.shards == 1);
  EXPECT_FALSE(options.list || options.help || options.version || options.resume || options.strict);
  const vorn_testing::HostDemands& demands = options.demands;
  EXPECT_FALSE(demands.durable);
  EXPECT_TRUE(demands.without.empty() && demands.required.empty() && demands.settings.empty() &&
              demands.modes.empty() && demands.channels.empty() && demands.inputs.empty() &&
              demands.locales.empty());
  EXPECT_EQ(demands.bound, std::chrono::seconds(30));
}

TEST(CommandLine, AsksForEverything) {
  const Options options = parsed({"--only",    "a",
                                  "--only=b",  "--junit",
                                  "j",         "--json",
                                  "l",         "--resume",
                                  "--shard",   "2/4",
                                  "--durable", "--strict",
                                  "--without", "volume,player",
                                  "--require", "storage",
                                  "--setting", "mode=day,night",
                                  "--setting", "mode=dusk,dawn",
                                  "--mode",    "light=on,off,dim",
                                  "--channel", "c",
                                  "--channel", "d",
                                  "--input",   "i",
                                  "--locale",  "de-DE",
                                  "--bound",   "1.5",
                                  "x.so"});
  EXPECT_EQ(options.only, (Texts{"a", "b"}));
  EXPECT_EQ((Texts{options.library, options.junit, options.json}), (Texts{"x.so", "j", "l"}));
  EXPECT_TRUE(options.resume && options.strict && options.shard == 1 && options.shards == 4);
  const vorn_testing::HostDemands& demands = options.demands;
  EXPECT_TRUE(demands.durable);
  EXPECT_EQ(demands.without, (std::set<std::string>{"player", "volume"}));
  EXPECT_EQ(demands.required, std::set<std::string>{"storage"});
  EXPECT_EQ(demands.settings, (std::map<std::string, Texts>{{"mode", {"day", "night", "dusk", "dawn"}}}));
  EXPECT_EQ(demands.modes, (std::map<std::string, Texts>{{"light", {"on", "off", "dim"}}}));
  EXPECT_EQ((std::vector<Texts>{demands.channels, demands.inputs, demands.locales}),
            (std::vector<Texts>{{"c", "d"}, {"i"}, {"de-DE"}}));
  EXPECT_EQ(demands.bound, std::chrono::milliseconds(1500));
}

/// The flags that are set, by their letters.
std::string flags(const Texts& words) {
  const Options options = parsed(words);
  return std::string(options.demands.durable ? "d" : "") + (options.strict ? "t" : "") +
         (options.resume ? "r" : "") + (options.list ? "l" : "") + (options.help ? "h" : "") +
         (options.version ? "v" : "");
}

TEST(CommandLine, SetsWhatItNamesAndNothingElse) {
  EXPECT_EQ(
      (Texts{flags({"--durable", "x"}), flags({"--strict", "x"}), flags({"--json", "j", "--resume", "x"}),
             flags({"--list"}), flags({"--help"}), flags({"--version"}), flags({"--only", "a", "x"})}),
      (Texts{"d", "t", "r", "l", "h", "v", ""}));
  const Options only = parsed({"--only", "a", "x"}), input = parsed({"--input", "a", "x"});
  EXPECT_EQ(only.junit + only.json, "");
  EXPECT_TRUE(only.demands.channels.empty() && only.demands.inputs.empty() && only.demands.locales.empty());
  EXPECT_TRUE(input.only.empty() && input.demands.channels.empty() && input.demands.locales.empty());
}

TEST(CommandLine, IsKeptButForItsFilesAndWhetherARunGoesOn) {
  EXPECT_EQ(parsed({"--only", "a b", "x.so", "--json", "l", "--resume"}).all, "--only a b");
  EXPECT_EQ(parsed({"--resume", "--json=l", "--str", "--junit", "j", "x.so", "--only=c"}).all,
            "--strict --only c");
}

TEST(CommandLine, MayAskForWordsAlone) {
  EXPECT_TRUE(parsed({"--help"}).help && parsed({"-h"}).help);
  EXPECT_TRUE(parsed({"--version"}).version && parsed({"--list"}).list);
  EXPECT_FALSE(parsed({"--list"}).help || parsed({"--list"}).version || parsed({"--help"}).list);
}

TEST(CommandLine, TakesBoundsFromAMillisecondToADay) {
  EXPECT_EQ(parsed({"--bound", "0.001", "x"}).demands.bound, std::chrono::milliseconds(1));
  EXPECT_EQ(parsed({"--bound", "86400", "x"}).demands.bound, std::chrono::hours(24));
  for (const std::string wrong : {"0.0009", "86400.1", "-1", "nan", "inf", "1 ", "1s", "", "x"})
    EXPECT_EQ(problem({"--bound", wrong, "x"}), "--bound " + wrong + ": give seconds, from 0.001 to 86400");
}

TEST(CommandLine, TakesPartsOfAWhole) {
  for (const auto& [text, part, of] :
       {std::tuple("1/1", 0U, 1U), std::tuple("1/3", 0U, 3U), std::tuple("3/3", 2U, 3U)}) {
    const Options options = parsed({"--shard", text, "x"});
    EXPECT_TRUE(options.shard == part && options.shards == of) << text;
  }
  for (const std::string wrong : {"", "1", "1/", "/2", "0/2", "3/2", "1/2x", "1x/2", "1/0", "-1/2", "1/-2",
                                  "1 /2", "1/99999999999999999999", "99999999999999999999/2"})
    EXPECT_EQ(problem({"--shard", wrong, "x"}),
              "--shard " + wrong + ": give a part and how many there are, as in --shard 2/4");
}

TEST(CommandLine, TakesNamesWithTwoValuesOrMore) {
  for (const std::string option : {"--setting", "--mode"}) {
    for (const std::string wrong : {"mode", "mode=", "mode=a", "mode=a,a", "=a,b", "", "=", "mode=,"})
      EXPECT_EQ(
          problem({option, wrong, "x"}),
          option + " " + wrong + ": give a name and two values or more, as in " + option + " mode=day,night");
  }
  EXPECT_EQ(parsed({"--mode", "a=b=c,d", "x"}).demands.modes,
            (std::map<std::string, Texts>{{"a", {"b=c", "d"}}}));
}

struct Wrong {
  Texts words;
  const char* said;
};

class WrongLines : public testing::TestWithParam<Wrong> {};

TEST_P(WrongLines, AreRefusedWithARemedy) { EXPECT_EQ(problem(GetParam().words), GetParam().said); }

const Wrong kWrong[] = {
    {{}, "name one library that makes a host; see --help"},
    {{"a", "b"}, "name one library that makes a host; see --help"},
    {{"--zzz", "x"}, "--zzz is no option (--help names them all)"},
    {{"--junt", "x"}, "--junt is no option; did you mean --junit? (--help names them all)"},
    {{"--junt=y", "x"}, "--junt is no option; did you mean --junit? (--help names them all)"},
    {{"-x", "x"}, "-x is no option (--help names them all)"},
    {{"--list=all"}, "--list takes no value; see --help"},
    {{"--strict=1", "x"}, "--strict takes no value; see --help"},
    {{"x", "--json"}, "--json needs a value; see --help"},
    {{"--json", "", "x"}, "--json needs a value; see --help"},
    {{"--junit", "", "x"}, "--junit needs a value; see --help"},
    {{"--only", "", "x"}, "--only needs a value; see --help"},
    {{"--channel", "", "x"}, "--channel needs a value; see --help"},
    {{"--input", "", "x"}, "--input needs a value; see --help"},
    {{"--locale", "", "x"}, "--locale needs a value; see --help"},
    {{"--without", "", "x"}, "--without needs a value; see --help"},
    {{"--require=", "x"}, "--require needs a value; see --help"},
    {{"--without", "volume,players", "x"},
     "--without players: there is no such area; did you mean player? (--list names them all)"},
    {{"--require", "nothing like it", "x"},
     "--require nothing like it: there is no such area (--list names them all)"},
    {{"--require", "volume", "--without", "player,volume", "x"},
     "volume cannot be both required and left out"},
    {{"--resume", "x"}, "--resume needs --json FILE, from which it goes on"},
    {{"--resume", "--list"}, "--resume needs --json FILE, from which it goes on"},
    {{"--list", "x"}, "--list only names the checks; leave out the library and the reports"},
    {{"--list", "--junit", "j"}, "--list only names the checks; leave out the library and the reports"},
    {{"--list", "--resume", "--json", "j"},
     "--list only names the checks; leave out the library and the reports"},
};

INSTANTIATE_TEST_SUITE_P(CommandLine, WrongLines, testing::ValuesIn(kWrong));

}  // namespace
