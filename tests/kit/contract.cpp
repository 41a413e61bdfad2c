// The list of checks itself, and hosts that keep every promise.

#include <vorn_testing/HostContract.h>
#include <vorn_testing/MemoryHost.h>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <thread>

using vorn_testing::HostCheck;
using vorn_testing::hostChecks;

namespace {

const bool kMemory =
    vorn_testing::addHostContract("MemoryHost", [] { return std::make_shared<vorn_testing::MemoryHost>(); });

const char* const kAnswers = "VornDALImplIF/03/alexaStateChanged/answers";

TEST(HostChecks, AreMoreThanSixHundredAndNameTheirPlaceRuleAndRemedy) {
  EXPECT_TRUE(kMemory);
  EXPECT_GE(hostChecks().size(), 600U);
  for (const HostCheck& check : hostChecks())
    EXPECT_FALSE(check.operation.empty() || check.slot < 1 || check.rule.empty() || check.remedy.empty())
        << check.id;
}

TEST(HostChecks, HaveNamesOfTheirOwn) {
  std::set<std::string> names;
  for (const HostCheck& check : hostChecks()) names.insert(check.id);
  EXPECT_EQ(names.size(), hostChecks().size());
}

/// What each downward operation of docs/operations.tsv asks for: "VornDALImplIF/13/getVolume/stays-out".
std::set<std::string> documented() {
  std::set<std::string> ids;
  std::ifstream table(VORN_OPERATIONS);
  for (std::string line; std::getline(table, line);) {
    std::vector<std::string> cells;
    std::istringstream row(line);
    for (std::string cell; std::getline(row, cell, '\t');) cells.push_back(cell);
    if (cells.at(2) != "down") continue;
    // "VornDALImplIF 33, VornEMPAdapterIF 6": the last one is the operation's own.
    const std::size_t comma = cells.at(4).rfind(',');
    std::istringstream own(comma == std::string::npos ? cells[4] : cells[4].substr(comma + 1));
    std::string interface;
    int slot = 0;
    own >> interface >> slot;
    if (interface != "VornDALImplIF" && interface != "VornEMPAdapterIF") continue;
    const std::string name = cells[1].substr(0, cells[1].find('('));
    ids.insert(interface + (slot < 10 ? "/0" : "/") + std::to_string(slot) + "/" + name +
               (cells[3] == "unlocked" ? "/concurrent" : "/stays-out"));
  }
  return ids;
}

TEST(HostChecks, AskEveryOperationInTheTableToShareOrWhenLockedToStayOut) {
  std::set<std::string> expected = documented();
  EXPECT_EQ(expected.size(), 63U + 16U);
  expected.insert(
      "VornDALImplIF/33/getEMPAdapter/concurrent");  // called by every command, and no command itself
  std::set<std::string> asked;
  for (const HostCheck& check : hostChecks()) {
    const std::string name = check.id.substr(check.id.rfind('/'));
    if (name == "/concurrent" || name == "/stays-out") asked.insert(check.id);
  }
  EXPECT_EQ(asked, expected);
}

TEST(HostChecks, AskEveryOperationForAnAnswer) {
  std::map<std::string, int> answers;
  for (const HostCheck& check : hostChecks()) {
    const std::size_t slash = check.id.rfind('/');
    answers[check.id.substr(0, slash)] += check.id.substr(slash) == "/answers";
  }
  answers.erase("VornDALImplIF/01/destructor");
  answers.erase("VornDALImplIF/01/host");
  EXPECT_EQ(answers.size(), 64U + 16U + 1U) << "those of both interfaces, and createDalMediaPlayer()";
  for (const auto& operation : answers) EXPECT_EQ(operation.second, 1) << operation.first;
}

const HostCheck& named(const std::string& id) {
  for (const HostCheck& check : hostChecks()) {
    if (check.id == id) return check;
  }
  throw std::invalid_argument(id);
}

struct Hanging : vorn_testing::MemoryHost {
  void stopStreamingAudioData() override {
    for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
  }
};

TEST(HostChecks, WaitOnceForACallThatDoesNotAnswer) {
  vorn_testing::HostDemands demands;
  demands.bound = std::chrono::milliseconds(300);
  vorn_testing::HostCheckRun run([] { return std::make_shared<Hanging>(); }, demands);
  EXPECT_EQ(run.run(named("VornDALImplIF/09/stopStreamingAudioData/answers")).kind,
            vorn_testing::HostVerdict::kBroken);
  EXPECT_EQ(run.run(named("VornDALImplIF/09/stopStreamingAudioData/concurrent")).kind,
            vorn_testing::HostVerdict::kNotAsked);
  EXPECT_EQ(run.run(named("VornDALImplIF/01/destructor/after-use")).kind, vorn_testing::HostVerdict::kKept);
}

TEST(HostChecks, AreBrokenByWhatGoesWrongInAnotherOperation) {
  vorn_testing::HostDemands demands;
  demands.bound = std::chrono::milliseconds(300);
  const auto verdict = runHostCheck(
      named("VornDALImplIF/01/destructor/after-use"), [] { return std::make_shared<Hanging>(); }, demands);
  EXPECT_EQ(verdict.kind, vorn_testing::HostVerdict::kBroken);
  EXPECT_EQ(verdict.detail, "stopStreamingAudioData() did not answer within 0.3 s");
}

TEST(HostChecks, AreKeptWhenTheCallerIgnoresTheEndOfItsChildren) {
  const auto before = std::signal(SIGCHLD, SIG_IGN);
  const auto verdict =
      runHostCheck(named(kAnswers), [] { return std::make_shared<vorn_testing::NullHost>(); });
  std::signal(SIGCHLD, before);
  EXPECT_EQ(verdict.kind, vorn_testing::HostVerdict::kKept) << verdict.detail;
}

/// Starts a process of a session of its own, which nobody waits for.
struct Starting : vorn_testing::MemoryHost {
  void notifyMainAppInitialized() override {
    const pid_t between = fork();
    if (between == 0) {
      if (fork() == 0) {
        setsid();
        for (;;) pause();
      }
      _exit(0);
    }
    waitpid(between, nullptr, 0);
  }
};

TEST(HostChecks, EndWhatTheHostHasStarted) {
#ifdef VORN_EMULATED
  GTEST_SKIP() << "in qemu-user no process takes the place of a parent that has ended";
#endif
  int ends[2];  // open for writing as long as a process that was started lives
  ASSERT_EQ(pipe(ends), 0);
  runHostCheck(named("VornDALImplIF/05/notifyMainAppInitialized/answers"),
               [] { return std::make_shared<Starting>(); });
  close(ends[1]);
  char none = 0;
  EXPECT_EQ(read(ends[0], &none, 1), 0);
  close(ends[0]);
}

TEST(HostChecks, BreakARequiredAreaThatCouldNotBeAsked) {
  vorn_testing::HostDemands demands;
  demands.required = {"settings"};
  struct Refusing : vorn_testing::NullHost {};
  const auto verdict = runHostCheck(
      named("VornDALImplIF/23/setSystemSetting/reported"), [] { return std::make_shared<Refusing>(); },
      demands);
  EXPECT_EQ(verdict.kind, vorn_testing::HostVerdict::kBroken);
  EXPECT_EQ(verdict.detail.substr(0, 42), "settings is required and could not be aske");
}

TEST(HostChecks, AreBrokenByAHostThatIsNotMade) {
  const auto verdict = runHostCheck(named(kAnswers), [] { return nullptr; });
  EXPECT_EQ(verdict.kind, vorn_testing::HostVerdict::kBroken);
  EXPECT_EQ(verdict.detail, "no host was made");
}

}  // namespace
