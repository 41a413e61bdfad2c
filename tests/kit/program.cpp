// vorn-conformance, run as a team would.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace {

struct Outcome {
  int status;
  std::string output;
};

Outcome run(const std::string& arguments, const std::string& streams = "2>&1") {
  const std::string command = "LD_LIBRARY_PATH=" VORN_LIBRARY_PATH " " VORN_EMULATOR
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

bool says(const Outcome& outcome, const std::string& words) {
  return outcome.output.find(words) != std::string::npos;
}

TEST(Conformance, EndsWithZeroWhenAllIsKept) {
  const Outcome outcome = run(VORN_GOOD_HOST);
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
  EXPECT_NE(xml.str().find("tests=\"3\" failures=\"1\" errors=\"0\" skipped=\"0\""), std::string::npos)
      << xml.str();
  EXPECT_NE(xml.str().find("<failure message=\"getTimezone() answered &quot;Z\\xfcrich&quot;\">"),
            std::string::npos);
}

TEST(Conformance, EndsWithTwoWhenThereIsNoHost) {
  const Outcome outcome = run(VORN_MISSING_HOST);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(says(outcome, "vornCreateHost() answers null")) << outcome.output;
}

TEST(Conformance, EndsWithTwoAndARemedyWhenTheLibraryCannotBeLoaded) {
  const Outcome outcome = run("/nowhere/libMyHost.so");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(says(outcome, "cannot be loaded") && says(outcome, "LD_LIBRARY_PATH")) << outcome.output;
}

TEST(Conformance, EndsWithTwoWhenTheLibraryIsNoHost) {
  const Outcome outcome = run(VORN_LIBRARY_PATH "/libVornDALImpl.so");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_TRUE(says(outcome, "does not define vornCreateHost()")) << outcome.output;
}

TEST(Conformance, EndsWithTwoOnArgumentsThatItDoesNotKnow) {
  for (const char* arguments :
       {"", "--nonsense", "--junit", "--bound 0 x.so", "--bound soon x.so", "--setting mode=day x.so",
        "--only nothing-of-this x.so", "a b", "--junit /nowhere/junit.xml " VORN_GOOD_HOST})
    EXPECT_EQ(run(arguments).status, 2) << arguments;
}

TEST(Conformance, NamesItsChecksAndExplainsItself) {
  EXPECT_TRUE(says(run("--list --only /33/"),
                   "VornDALImplIF/33/getEMPAdapter/never-null\n  rule:   It never answers null."));
  EXPECT_TRUE(says(run("--help"), "Exit status: 0 all promises are kept"));
}

}  // namespace
