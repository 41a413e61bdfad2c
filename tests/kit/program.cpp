// vorn-conformance, run as a team would.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr bool kSanitized = true;  // It stands before the C library's functions itself.
#else
constexpr bool kSanitized = false;
#endif
#if defined(__x86_64__)
constexpr bool kSteps = !kSanitized;  // It sees every instruction of a host.
#else
constexpr bool kSteps = false;
#endif

struct Outcome {
  int status;
  std::string output;
};

Outcome run(const std::string& arguments, const std::string& streams = "2>&1", const std::string& host = "") {
  const std::string command = "VORN_KIT_HOST=" + host +
                              " LD_LIBRARY_PATH=" VORN_LIBRARY_PATH " " VORN_EMULATOR
                              " " VORN_CONFORMANCE_PROGRAM " " +
                              arguments + " " + streams;
  FILE* const pipe = popen(command.c_str(), "r");
  Outcome outcome{-1, ""};
  std::array<char, 4096> bytes;
  while (const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), pipe))
    outcome.output.append(bytes.data(), count);
  outcome.status = WEXITSTATUS(pclose(pipe));
  return outcome;
}

std::string contentOf(const std::string& path) {
  std::ostringstream content;
  content << std::ifstream(path, std::ios::binary).rdbuf();
  return content.str();
}

bool says(const Outcome& outcome, const std::string& words) {
  return outcome.output.find(words) != std::string::npos;
}

TEST(Conformance, EndsWithZeroWhenAllIsKept) {
  const Outcome outcome = run("--only DALImplIF/15/ " VORN_GOOD_HOST);
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_TRUE(says(outcome, " 0 broken")) << outcome.output;
}

TEST(Conformance, EndsWithOneAndNamesPlaceRuleAndRemedy) {
  const Outcome outcome = run("--only DALImplIF/15/ " VORN_FAULTY_HOST);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(
      says(outcome,
           "BROKEN    VornDALImplIF/15/getTimezone/utf8 (getTimezone, slot 15)\n  seen:   getTimezone() "
           "answered \"Z\\xfcrich\"\n  rule:   Texts in an answer are valid UTF-8.\n  remedy: "))
      << outcome.output;
}

TEST(Conformance, KeepsWhatTheHostPrintsApart) {
  const Outcome outcome = run("--only DALImplIF/15/ " VORN_FAULTY_HOST, "2>&1 >/dev/null");
  EXPECT_TRUE(says(outcome, "the faulty host says hello") && !says(outcome, "BROKEN")) << outcome.output;
}

TEST(Conformance, SaysWhatItDidNotAskWhyAndHowToHaveItAsked) {
  if (*VORN_EMULATOR) GTEST_SKIP() << "takes minutes in the emulator, where kit_contract asks every check";
  EXPECT_TRUE(says(run("--only /27/ " VORN_GOOD_HOST),
                   "NOT ASKED durability is not demanded (HostDemands::durable, --durable)\n"
                   "  VornDALImplIF/27/writeKeyValue/new-host\n"));
  EXPECT_EQ(run("--durable --only /27/ " VORN_GOOD_HOST).status, 1);
}

TEST(Conformance, TriesTheSettingsOfTheTeam) {
  const std::string apart = "--only setSystemSetting/apart --setting mode=day,night ";
  EXPECT_TRUE(says(run(apart + VORN_GOOD_HOST), "(--setting) names one setting"));
  EXPECT_TRUE(says(run(apart + "--setting sound=on,off " VORN_GOOD_HOST), "1 kept"));
}

TEST(Conformance, WritesJUnit) {
  run("--only DALImplIF/15/ --junit /tmp/hostkit.xml " VORN_FAULTY_HOST);
  std::stringstream xml;
  xml << std::ifstream("/tmp/hostkit.xml").rdbuf();
  EXPECT_NE(xml.str().find("tests=\"6\" failures=\"1\" errors=\"0\" skipped=\"0\""), std::string::npos)
      << xml.str();
  EXPECT_NE(xml.str().find("<failure message=\"getTimezone() answered &quot;Z\\xfcrich&quot;\">"),
            std::string::npos);
}

TEST(Conformance, EndsWithThreeWhenThereIsNoHost) {
  const Outcome outcome = run(VORN_MISSING_HOST);
  EXPECT_EQ(outcome.status, 3);
  EXPECT_TRUE(says(outcome, "vornCreateHost() answers null")) << outcome.output;
}

TEST(Conformance, EndsWithThreeAndARemedyWhenTheLibraryCannotBeLoaded) {
  const Outcome outcome = run("/nowhere/libMyHost.so");
  EXPECT_EQ(outcome.status, 3);
  EXPECT_TRUE(
      says(outcome,
           "vorn-conformance: /nowhere/libMyHost.so cannot be loaded: cannot open shared object file") &&
      says(outcome, "LD_LIBRARY_PATH"))
      << outcome.output;
}

TEST(Conformance, EndsWithThreeWhenTheLibraryIsNoHost) {
  const Outcome outcome = run(VORN_LIBRARY_PATH "/libVornDALImpl.so");
  EXPECT_EQ(outcome.status, 3);
  EXPECT_TRUE(says(outcome, "does not define vornCreateHost()")) << outcome.output;
}

TEST(Conformance, EndsWithTwoOnArgumentsThatItDoesNotKnow) {
  for (const char* arguments :
       {"", "--nonsense", "--junit", "--bound 0 x.so", "--bound soon x.so", "--setting mode=day x.so",
        "--only nothing-of-this x.so", "a b", "''", "--shard 3/2 x.so", "--without sorage x.so",
        "--resume x.so", "--require volume --without volume x.so",
        "--junit /nowhere/junit.xml " VORN_GOOD_HOST})
    EXPECT_EQ(run(arguments).status, 2) << arguments;
}

TEST(Conformance, NamesAnOptionThatWasMeantAndNothingRaw) {
  const std::pair<const char*, const char*> kWrong[] = {
      {"--juint x.xml x.so", "--juint is no option; did you mean --junit? (--help names them all)"},
      {"\"$(printf -- '--\\033[2J')\"", "--\\x1b[2J is no option"},
      {"\"$(printf '/no\\033[2J')\"", "/no\\x1b[2J cannot be loaded"},
      {"-j x.so", "-j is no option"},
      {"--list=all", "--list takes no value"},
      {"x.so --json", "--json needs a value"},
      {"--json '' x.so", "--json needs a value"},
      {"--only '' x.so", "--only needs a value"},
      {"--only getVolume --only nothing-like-it x.so", "--only nothing-like-it: no check is named so"},
      {"--without '' x.so", "--without needs a value"},
      {"--input '' x.so", "--input needs a value"},
      {"--locale '' x.so", "--locale needs a value"},
      {"--setting =a,b x.so", "--setting =a,b: give a name"},
      {"--setting name=a,a x.so", "--setting name=a,a: give a name and two values"},
      {"--shard -1/-1 x.so", "--shard -1/-1: give a part and how many there are"},
      {"--shard 1/18446744073709551616 x.so", "give a part and how many there are"}};
  for (const auto& [arguments, told] : kWrong) {
    const Outcome outcome = run(arguments);
    EXPECT_TRUE(says(outcome, told)) << arguments << ": " << outcome.output;
    EXPECT_EQ(outcome.output.find('\x1b'), std::string::npos) << arguments;
  }
}

TEST(Conformance, WaitsForNoPipeAndReadsNoDevice) {
  std::remove("/tmp/conformance-pipe");
  ASSERT_EQ(mkfifo("/tmp/conformance-pipe", 0600), 0);
  for (const char* host : {"/tmp/conformance-pipe", "/dev/zero", "/tmp"}) {
    const Outcome outcome = run(host);
    EXPECT_EQ(outcome.status, 2) << host;
    EXPECT_TRUE(says(outcome, std::string(host) + " is no file; name a shared library")) << outcome.output;
  }
  EXPECT_TRUE(says(run("--resume --json /tmp/conformance-pipe " VORN_GOOD_HOST), "is no file from which"));
  std::remove("/tmp/conformance-pipe");
}

class HostThatFailsOutside : public testing::TestWithParam<const char*> {};

/// Whatever it does while it is loaded, made or unloaded.
TEST_P(HostThatFailsOutside, EndsWithThreeAndInTheReport) {
  const Outcome outcome =
      run("--bound 2 --only /15/ --junit /tmp/hostkit-outside.xml " VORN_HOSTS, "2>&1", GetParam());
  EXPECT_EQ(outcome.status, 3) << outcome.output;
  std::stringstream xml;
  xml << std::ifstream("/tmp/hostkit-outside.xml").rdbuf();
  EXPECT_NE(xml.str().find("failures=\"1\""), std::string::npos) << xml.str();
}

INSTANTIATE_TEST_SUITE_P(Kinds, HostThatFailsOutside,
                         testing::Values("ExitsAtLoad", "LeavesAtLoad", "AbortsAtLoad", "ThrowsAtLoad",
                                         "HangsAtLoad", "LeavesAtUnload", "AbortsAtUnload", "HangsAtUnload",
                                         "FailsAtUnload", "ExitsWhenMade", "CrashesWhenMade"));

/// Though nothing was asked of its end: what is seen is told.
TEST(Conformance, TellsOfAHostThatCannotBeDestroyed) {
  for (const char* const host : {"CrashesAtEnd", "ExitsAtEnd", "HangsAtEnd"}) {
    const Outcome outcome = run("--bound 2 --only /15/getTimezone/answers " VORN_HOSTS, "2>&1", host);
    EXPECT_EQ(outcome.status, 1) << host;
    EXPECT_TRUE(says(outcome, "BROKEN    host/loads"));
    EXPECT_TRUE(says(outcome, "seen:   vornDestroyHost() "));
    EXPECT_TRUE(says(outcome, "2 checks, 1 kept, 1 broken"));
  }
  EXPECT_FALSE(says(run("--only /destructor/unused " VORN_HOSTS, "2>&1", "CrashesAtEnd"), "host/loads"));
}

TEST(Conformance, EndsWithTwoWhenNothingWasAsked) {
  EXPECT_EQ(run("--only writeKeyValue/killed " VORN_GOOD_HOST).status, 2);
}

TEST(Conformance, ProposesWhatMayBeMeant) {
  EXPECT_TRUE(says(run("--without sorage x.so"), "did you mean storage?"));
  EXPECT_TRUE(says(run("--only getVolum/answer x.so"), "did you mean getVolume/answers?"));
}

TEST(Conformance, LeavesOutAnAreaThatTheHostDoesNotOffer) {
  const Outcome outcome = run("--only /61/ --only /45/ --without volume " VORN_GOOD_HOST);
  EXPECT_TRUE(says(outcome, "NOT ASKED the host is said to be without volume")) << outcome.output;
  EXPECT_EQ(outcome.status, 0);
}

TEST(Conformance, GoesOnWhereARunWasCut) {
  const std::string json = "--only DALImplIF/15/ --json /tmp/hostkit.json ";
  run(json + VORN_FAULTY_HOST);
  {
    std::ofstream cut("/tmp/hostkit.json", std::ios::app);
    cut << "{\"check\":\"cut off";
  }
  const Outcome outcome = run(json + "--resume " VORN_FAULTY_HOST);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(says(outcome, "6 checks, 5 kept, 1 broken")) << outcome.output;
  std::ifstream file("/tmp/hostkit.json");
  int lines = 0;
  for (std::string line; std::getline(file, line); ++lines) EXPECT_EQ(line.back(), '}') << line;
  EXPECT_EQ(lines, 7);
}

TEST(Conformance, GoesOnOnlyAsItWasBegun) {
  run("--only DALImplIF/15/ --json /tmp/hostkit-other.json " VORN_FAULTY_HOST);
  const Outcome outcome =
      run("--only DALImplIF/16/ --json /tmp/hostkit-other.json --resume " VORN_FAULTY_HOST);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(says(outcome, "is of another run")) << outcome.output;
}

TEST(Conformance, GoesOnWhenAReportHasNoMoreRoom) {
  const std::string json = "/tmp/hostkit-full.json";
  std::remove(json.c_str());
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit room = {1000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &room);
  const Outcome outcome = run("--only DALImplIF/15/ --json " + json + " " VORN_GOOD_HOST);
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(outcome.status, 1);
  const std::string said = json + " cannot be written: File too large\n";
  const std::size_t at = outcome.output.find(said);
  EXPECT_TRUE(at != std::string::npos && outcome.output.find(said, at + 1) == std::string::npos)
      << outcome.output;
  EXPECT_TRUE(says(outcome, ": 6 checks, 6 kept, 0 broken")) << outcome.output;
  const std::string report = contentOf(json);
  EXPECT_GT(report.size(), 500U);
  EXPECT_EQ(report.substr(report.size() - 2), "}\n");
}

TEST(Conformance, AddsToNoReportThatAnotherRunWrites) {
  const std::string json = "/tmp/hostkit-held.json";
  run("--only getTimezone/utf8 --json " + json + " " VORN_FAULTY_HOST);
  const std::string report = contentOf(json);
  const int held = open(json.c_str(), O_WRONLY | O_CLOEXEC);
  struct flock whole {};
  whole.l_type = F_WRLCK;
  ASSERT_EQ(fcntl(held, F_SETLK, &whole), 0);
  for (const char* const option : {"--json ", "--resume --json "}) {
    const Outcome outcome = run("--only getTimezone/utf8 " + (option + json) + " " VORN_FAULTY_HOST);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(says(outcome, "is being written by another program; wait for its end or name another file"))
        << outcome.output;
  }
  EXPECT_EQ(contentOf(json), report);
  close(held);
  EXPECT_EQ(run("--only getTimezone/utf8 --json " + json + " " VORN_FAULTY_HOST).status, 1);
}

TEST(Conformance, TellsOnceInItsReportOfAHostThatCannotBeDestroyed) {
  const std::string asked = "--only /15/getTimezone/answers --json /tmp/hostkit-end.json " VORN_HOSTS;
  std::remove("/tmp/hostkit-end.json");
  run(asked, "2>&1", "CrashesAtEnd");
  const std::string report = contentOf("/tmp/hostkit-end.json");
  EXPECT_NE(report.find("{\"check\":\"host/loads\""), std::string::npos);
  EXPECT_TRUE(says(run("--resume " + asked, "2>&1", "CrashesAtEnd"), "2 checks, 1 kept, 1 broken"));
  EXPECT_EQ(contentOf("/tmp/hostkit-end.json"), report);
}

TEST(Conformance, GoesOnWithAReportByWhateverName) {
  run("--only getTimezone/utf8 --json /tmp/hostkit-named.json " VORN_FAULTY_HOST);
  EXPECT_TRUE(says(run("--resume --only getTimezone/utf8 --json /tmp/./hostkit-named.json " VORN_FAULTY_HOST),
                   "1 check, 0 kept, 1 broken"));
}

TEST(Conformance, CutsItsChecksIntoPartsThatKeepThoseOfAnOperationTogether) {
  std::size_t all = 0;
  std::map<std::string, std::string> parts;
  for (const char* part : {"1/3", "2/3", "3/3"}) {
    std::istringstream lines(run(std::string("--list --shard ") + part).output);
    for (std::string line; std::getline(lines, line);) {
      if (line.compare(0, 4, "Vorn") != 0) continue;
      ++all;
      if (line.find("/01/") == line.npos) {
        EXPECT_EQ(parts.emplace(line.substr(0, line.rfind('/')), part).first->second, part) << line;
      }
    }
  }
  std::istringstream lines(run("--list").output);
  for (std::string line; std::getline(lines, line);) all -= line.compare(0, 4, "Vorn") == 0;
  EXPECT_EQ(all, 0U);
}

TEST(Conformance, GoesOnWithTheSameHostOnly) {
  std::filesystem::copy_file(VORN_FAULTY_HOST, "/tmp/hostkit-copy.so",
                             std::filesystem::copy_options::overwrite_existing);
  const std::string asked = "--only DALImplIF/15/ --json /tmp/hostkit-copy.json /tmp/hostkit-copy.so";
  run(asked);
  EXPECT_TRUE(says(run(asked + " --resume"), "6 checks, 5 kept, 1 broken"));
  std::ofstream("/tmp/hostkit-copy.so", std::ios::app | std::ios::binary).put('x');
  EXPECT_TRUE(says(run(asked + " --resume"), "is of another run"));
}

TEST(Conformance, GoesOnKnowingWhatIsBroken) {
  const std::string asked =
      "--only changeAlexaLocale/answers --only changeAlexaLocale/again --json /tmp/hostkit-known.json " VORN_HOSTS;
  run(asked, "2>&1", "AbortsOnLocale");
  std::istringstream whole(contentOf("/tmp/hostkit-known.json"));
  std::string head, first;
  std::getline(whole, head), std::getline(whole, first);
  std::ofstream("/tmp/hostkit-known.json") << head << "\n" << first << "\n";
  const Outcome outcome = run(asked + " --resume", "2>&1", "AbortsOnLocale");
  EXPECT_TRUE(says(outcome, "2 checks, 0 kept, 1 broken, 1 not asked")) << outcome.output;
}

TEST(Conformance, FailsBeforeItAsksWhereAReportCannotBeWritten) {
  EXPECT_FALSE(says(run("--only getTimezone/utf8 --junit /nowhere/junit.xml " VORN_FAULTY_HOST), "BROKEN"));
}

TEST(Conformance, TellsAPipeThatNoHostIsThere) {
  EXPECT_TRUE(says(run("--junit /dev/stdout " VORN_MISSING_HOST),
                   "<failure message=\"vornCreateHost() answers null"));
}

TEST(Conformance, RemarksOnWhatIsNoFaultAndBreaksOnItWhenAsked) {
  if (*VORN_EMULATOR) GTEST_SKIP() << "takes minutes in the emulator, where kit_contract asks every check";
  const std::string asked = "--only host/surroundings --only host/descriptors --only getTimezone/answers ";
  const Outcome outcome = run(asked + VORN_UNTIDY_HOST);
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_TRUE(says(outcome, "seen:   the host changed the umask of its process\n")) << outcome.output;
  EXPECT_TRUE(says(outcome, "more descriptors after 20 calls of every operation")) << outcome.output;
  EXPECT_TRUE(says(outcome, "0 kept, 0 broken, 0 not asked, 3 with a remark\n")) << outcome.output;
  const std::size_t took = outcome.output.find("seen:   getTimezone() took 1");
  EXPECT_TRUE(took != std::string::npos && outcome.output.find(" ms\n", took) == took + 31) << outcome.output;
  EXPECT_EQ(run("--strict --only host/surroundings " VORN_UNTIDY_HOST).status, 1);
}

TEST(Conformance, NamesThePlaceOfACrash) {
  EXPECT_TRUE(says(run("--only /17/changeAlexaLocale/answers " VORN_HOSTS, "2>&1", "AbortsOnLocale"),
                   "\n          at abort"));
  EXPECT_TRUE(says(run("--only /17/ " VORN_HOSTS, "2>&1", "AbortsAtLoad"), "\n    abort\n"));
}

TEST(Conformance, SeesMutexesInTwoOrdersAndWhereTheyWait) {
  const Outcome outcome = run("--bound 3 --only /host/lock-order " VORN_HOSTS, "2>&1", "ThreeInACircle");
  if (kSanitized) {
    EXPECT_TRUE(says(outcome, "NOT ASKED this program does not see which mutexes are taken"))
        << outcome.output;
    return;
  }
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(says(outcome, "\n          at on")) << outcome.output;
  EXPECT_TRUE(says(outcome, " waits:\n")) << outcome.output;
}

TEST(Conformance, LeavesMutexesInPeaceThatAThirdOneKeepsApart) {
  EXPECT_EQ(run("--only /host/lock-order " VORN_HOSTS, "2>&1", "GoodGate").status, kSanitized ? 2 : 0);
}

TEST(Conformance, MakesCallsMeetAtMemoryThatNothingKeepsApart) {
  const Outcome outcome = run("--bound 30 --only /host/races " VORN_HOSTS, "2>&1", "BufferOfAll");
  if (!kSteps) {
    EXPECT_TRUE(says(outcome, "NOT ASKED this program does not see what memory is touched"))
        << outcome.output;
    return;
  }
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(says(outcome, "nothing kept onSkipChannel(")) << outcome.output;
}

TEST(Conformance, LeavesMemoryInPeaceThatALockOfAnyKindGuards) {
  const Outcome outcome = run("--bound 30 --only /host/races " VORN_HOSTS, "2>&1", "GoodGuards");
  EXPECT_EQ(outcome.status, kSteps ? 0 : 2) << outcome.output;
}

TEST(Conformance, SeesMemoryThatIsUsedAfterItWasFreed) {
  if (*VORN_EMULATOR) GTEST_SKIP() << "the emulator may not have room for so many addresses";
  const Outcome outcome = run("--only /15/getTimezone/answers " VORN_HOSTS, "2>&1", "ReturnsFreed");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_TRUE(says(outcome, kSanitized ? "ERROR: AddressSanitizer: heap-use-after-free"
                                       : "getTimezone() ended the process with signal 11"))
      << outcome.output;
}

TEST(Conformance, SeesMemoryThatIsWrittenBeyondItsEndOrFreedTwice) {
  if (kSanitized || *VORN_EMULATOR) GTEST_SKIP() << "seen by the sanitizer, and not by the emulator";
  for (const char* const host : {"WritesBeyond", "FreesTwice"}) {
    const Outcome outcome =
        run("--only onSendKeystroke/again --only onChangePlaybackNext/answers " VORN_HOSTS, "2>&1", host);
    EXPECT_TRUE(says(outcome, ") ended the process with signal 11")) << host << outcome.output;
    EXPECT_TRUE(says(outcome, "1 kept, 1 broken")) << outcome.output;
  }
}

TEST(Conformance, TellsWhoseArgumentWasTouchedAfterItsCall) {
  if (kSanitized || *VORN_EMULATOR)
    GTEST_SKIP() << "the sanitizer and the emulator tell of a fault in their own way";
  const Outcome outcome =
      run("--only onInputChange/lets-go --input TUNER --input HDMI " VORN_HOSTS, "2>&1", "AcceptedInputKept");
  EXPECT_TRUE(says(outcome, ": it touched an argument of onInputChange(), which had returned"))
      << outcome.output;
}

TEST(Conformance, EndsWhatTheHostLeftRunning) {
  if (*VORN_EMULATOR) GTEST_SKIP() << "the emulator does not end processes as the system does";
  char folder[] = "/tmp/vorn-left-XXXXXX";
  setenv("VORN_KIT_FOLDER", mkdtemp(folder), 1);
  run("--only isMicrophoneAvailable/answers " VORN_UNTIDY_HOST);
  unsetenv("VORN_KIT_FOLDER");
  const std::string left = contentOf(std::string(folder) + "/left");
  ASSERT_FALSE(left.empty());
  EXPECT_NE(kill(std::stoi(left), 0), 0) << "process " << left << " is still there";
}

TEST(Conformance, LeavesTheValuesOfTheHostAsTheyWere) {
  char folder[] = "/tmp/vorn-values-XXXXXX";
  setenv("VORN_KIT_FOLDER", mkdtemp(folder), 1);
  const std::string path = std::string(folder) + "/values", before = "7 1 fr-CA night Küche\n";
  std::ofstream(path) << before;
  run("--only 17/changeAlexaLocale/ --only onSetVolume/reported --only onMute/reported "
      "--only setSystemSetting/answers --only destructor/after-use --setting mode=day,dusk --setting name=Kitchen,Bath " VORN_HOSTS,
      "2>&1", "GoodKeeping");
  EXPECT_EQ(contentOf(path), before);
}

TEST(Conformance, PutsAReportInThePlaceOfNothingElse) {
  for (const char* option : {"--junit", "--json", "--resume --json"}) {
    std::ofstream("/tmp/hostkit-precious") << "precious vorn-conformance \n";
    const Outcome outcome =
        run(std::string("--only /15/ ") + option + " /tmp/hostkit-precious " VORN_GOOD_HOST);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(says(outcome, "is there already and is no report of vorn-conformance; choose another name"))
        << outcome.output;
    EXPECT_EQ(contentOf("/tmp/hostkit-precious"), "precious vorn-conformance \n");
  }
}

TEST(Conformance, PutsAReportInThePlaceOfAnEarlierOneBehindALinkThatStays) {
  if (*VORN_EMULATOR) GTEST_SKIP() << "takes minutes in the emulator, where kit_contract asks every check";
  std::filesystem::remove("/tmp/hostkit-link");
  std::filesystem::create_symlink("hostkit-report", "/tmp/hostkit-link");
  for (const char* option : {"--junit", "--json"}) {
    std::ofstream("/tmp/hostkit-report").close();
    const std::string arguments = std::string("--only /15/ ") + option + " /tmp/hostkit-link " VORN_GOOD_HOST;
    EXPECT_EQ(run(arguments).status, 0);
    EXPECT_EQ(run(arguments).status, 0);
    const std::string report = contentOf("/tmp/hostkit-report"), id = "VornDALImplIF/15/getTimezone/utf8";
    const std::string once = id.substr(option[3] == 'u' ? id.find('/') + 1 : 0) + '"';
    EXPECT_TRUE(report.find(once) != report.npos && report.find(once) == report.rfind(once)) << report;
    EXPECT_TRUE(std::filesystem::is_symlink("/tmp/hostkit-link"));
  }
}

TEST(Conformance, WritesAReportOnceWhereItIsReadAtOnce) {
  const std::string xml = run("--only /15/ --junit /dev/stdout " VORN_GOOD_HOST).output;
  const std::size_t first = xml.find("<testsuites>");
  EXPECT_TRUE(first != xml.npos && xml.find("<testsuites>", first + 1) == xml.npos) << xml;
  EXPECT_NE(xml.find("</testsuites>"), xml.npos);
  EXPECT_TRUE(says(run("--only /15/getTimezone/utf8 --json /dev/stdout " VORN_GOOD_HOST), "{\"check\":\""));
  EXPECT_TRUE(std::filesystem::is_symlink("/dev/stdout"));
}

TEST(Conformance, WritesNoTwoReportsIntoOneFile) {
  const Outcome outcome =
      run("--only /15/ --junit /tmp/hostkit-one --json /tmp/../tmp/hostkit-one " VORN_GOOD_HOST);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(says(outcome, "--junit and --json name one file")) << outcome.output;
}

TEST(Conformance, NamesItsChecksAndExplainsItself) {
  EXPECT_TRUE(says(run("--list --only /33/"),
                   "VornDALImplIF/33/getEMPAdapter/never-null\n  rule:   It never answers null."));
  EXPECT_TRUE(says(run("--help"), "Exit status: 0 all promises are kept"));
}

}  // namespace
