// What comes of a check, however the host's call ends, and what one check tells the next.

#include <gtest/gtest.h>
#include <vorn_testing/HostChecks.h>
#include <vorn_testing/MemoryHost.h>

#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <set>
#include <stdexcept>

namespace {

using namespace vorn_testing;

const HostCheck& named(const std::string& end) {
  for (const HostCheck& check : hostChecks()) {
    if (check.id.size() >= end.size() && check.id.compare(check.id.size() - end.size(), end.size(), end) == 0)
      return check;
  }
  throw std::out_of_range(end);
}

/// A device in memory that does one thing when it is asked for its volume.
struct Host : MemoryHost {
  void (*act)();
  explicit Host(void (*does)()) : act(does) {}
  int getVolume() override {
    act();
    return MemoryHost::getVolume();
  }
};

constexpr char kLate[] = "getVolume() did not answer within 0.4 s";

struct Ending {
  const char* name;
  void (*act)();
  HostVerdict::Kind kind;
  const char* detail;
  bool hung, placed;
};

void PrintTo(const Ending& ending, std::ostream* out) { *out << ending.name; }

class Endings : public testing::TestWithParam<Ending> {};

TEST_P(Endings, OfACallAreTold) {
  const Ending& row = GetParam();
  HostDemands demands;
  if (row.detail == std::string(kLate)) demands.bound = std::chrono::milliseconds(400);
  const HostVerdict verdict = runHostCheck(
      named("/getVolume/answers"), [&] { return std::make_shared<Host>(row.act); }, demands);
  EXPECT_EQ(verdict.detail, row.detail);
  EXPECT_EQ(verdict.kind, row.kind);
  EXPECT_EQ(verdict.hung, row.hung);
  EXPECT_EQ(!verdict.stack.empty(), row.placed);
  EXPECT_TRUE(verdict.made);
  EXPECT_FALSE(verdict.refused);
}

constexpr auto kKept = HostVerdict::kKept, kBroken = HostVerdict::kBroken;

const Ending kEndings[] = {
    {"Returns", [] {}, kKept, "", false, false},
    {"Throws", [] { throw std::runtime_error("a \"b\"\n"); }, kBroken,
     "getVolume() threw std::runtime_error: \"a \\\"b\\\"\\x0a\"", false, false},
    {"ThrowsANumber", [] { throw 7; }, kBroken, "getVolume() threw what is no std::exception", false, false},
    {"Exits", [] { std::exit(3); }, kBroken, "getVolume() ended the process with status 3", false, false},
    {"Leaves", [] { _exit(0); }, kBroken, "getVolume() ended the process with status 0", false, false},
    {"IsKilled", [] { raise(SIGKILL); }, kBroken, "getVolume() ended the process with signal 9 (Killed)",
     false, false},
    {"Aborts", [] { std::abort(); }, kBroken, "getVolume() ended the process with signal 6 (Aborted)", false,
     true},
    {"Stops", [] { raise(SIGSTOP); }, kBroken, "getVolume() stopped its own process", true, false},
    {"Hangs",
     [] {
       for (;;) pause();
     },
     kBroken, kLate, true, true},
    {"WaitsForItself",
     [] {
       static std::mutex mutex;
       mutex.lock();
       mutex.lock();
     },
     kBroken, "getVolume() waits for a mutex that its own thread holds", true, true},
};

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
INSTANTIATE_TEST_SUITE_P(Checks, Endings, testing::ValuesIn(kEndings),
                         [](const auto& row) { return std::string(row.param.name); });
#else
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Endings);  // a sanitizer ends processes in its own way
#endif

/// Processes that would run all the time on the processor of this thread, as long as it lives.
class Crowd {
 public:
  Crowd() {
    cpu_set_t one;
    CPU_ZERO(&one);
    sched_getaffinity(0, sizeof m_before, &m_before);
    CPU_SET(sched_getcpu(), &one);
    sched_setaffinity(0, sizeof one, &one);
    for (pid_t& each : m_all) {
      each = fork();
      if (each != 0) continue;
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      for (volatile bool on = true; on;) {
      }
    }
  }
  ~Crowd() {
    for (const pid_t each : m_all) kill(each, SIGKILL);
    for (const pid_t each : m_all) waitpid(each, nullptr, 0);
    sched_setaffinity(0, sizeof m_before, &m_before);
  }
  Crowd(const Crowd&) = delete;
  Crowd& operator=(const Crowd&) = delete;

 private:
  cpu_set_t m_before{};
  pid_t m_all[5] = {};
};

std::clock_t worked() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000 + time.tv_nsec / 1000000;
}

TEST(Verdicts, CountNoTimeInWhichOthersHadTheProcessor) {
  const Crowd crowd;
  HostDemands demands;
  demands.bound = std::chrono::milliseconds(600);
  const auto works = [] {
    static const std::clock_t end = worked() + 200;  // at the first call
    while (worked() < end) {
    }
  };
  const HostVerdict verdict = runHostCheck(
      named("/getVolume/answers"), [&] { return std::make_shared<Host>(works); }, demands);
  EXPECT_EQ(verdict.kind, kKept) << verdict.detail;
}

TEST(Verdicts, TellTheSlowestCall) {
  const HostVerdict verdict =
      runHostCheck(named("/getVolume/answers"), [] { return std::make_shared<MemoryHost>(); });
  const std::set<std::string> all = {"making the host", "getVolume()"};
  EXPECT_EQ(all.count(verdict.slowestCall), 1U) << verdict.slowestCall;
}

TEST(Verdicts, OfAHostThatIsNotMade) {
  const HostVerdict none = runHostCheck(named("/getVolume/answers"), [] { return nullptr; });
  EXPECT_EQ(none.detail, "no host was made");
  EXPECT_TRUE(none.kind == kBroken && !none.made);
  const HostVerdict thrown = runHostCheck(named("/getVolume/answers"),
                                          []() -> std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF> {
                                            throw std::runtime_error("nothing for it");
                                          });
  EXPECT_EQ(thrown.kind, kBroken);
  EXPECT_NE(thrown.detail.find("nothing for it"), std::string::npos) << thrown.detail;
}

TEST(Verdicts, AreNotAskedForInAnAreaThatIsLeftOut) {
  HostDemands demands;
  demands.without = {"volume"};
  HostCheckRun run([] { return std::make_shared<Host>([] { std::abort(); }); }, demands);
  const HostVerdict verdict = run.run(named("/getVolume/answers"));
  EXPECT_EQ(verdict.kind, HostVerdict::kNotAsked);
  EXPECT_EQ(verdict.detail, "the host is said to be without volume");
  EXPECT_TRUE(verdict.made && verdict.stack.empty() && verdict.slowestCall.empty());
  EXPECT_FALSE(verdict.refused || verdict.hung);
  EXPECT_EQ(run.run(named("/getTimezone/answers")).kind, kKept);
  EXPECT_EQ(run.run(named("/host/threads")).detail, "") << "a call of every operation, but of those";
  EXPECT_EQ(run.run(named("/onMute/volume")).detail, "the host is said to be without volume");
}

TEST(Verdicts, AreForKnownChecksAndAreasOnly) {
  const auto problem = [](const HostDemands& demands, const HostCheck& check) -> std::string {
    try {
      runHostCheck(
          check, [] { return std::make_shared<MemoryHost>(); }, demands);
      return "nothing is wrong";
    } catch (const std::invalid_argument& wrong) {
      return wrong.what();
    }
  };
  HostDemands without, required;
  without.without = {"volume", "volumes"};
  required.required = {"stores"};
  const HostCheck& known = named("/getVolume/answers");
  EXPECT_EQ(problem(without, known), "there is no area volumes, see hostAreas()");
  EXPECT_EQ(problem(required, known), "there is no area stores, see hostAreas()");
  HostCheck other = known;
  other.id = "VornDALImplIF/13/getVolume/answer";
  EXPECT_EQ(problem({}, other), "there is no check VornDALImplIF/13/getVolume/answer, see hostChecks()");
}

/// What the run makes of another check, once one came out so.
HostVerdict after(const char* check, const HostVerdict& verdict, const char* next) {
  HostCheckRun run([] { return std::make_shared<MemoryHost>(); }, HostDemands());
  run.remember(named(check), verdict);
  return run.run(named(next));
}

HostVerdict verdict(HostVerdict::Kind kind, const std::string& detail, bool hung = false) {
  return {kind, detail, true, "", {}, false, hung, "", {}};
}

TEST(Verdicts, AreRememberedWhereTheyAreBroken) {
  const char* const kNext = "/onSetVolume/reported";
  EXPECT_EQ(after("/getVolume/answers", verdict(kKept, ""), kNext).kind, kKept);
  EXPECT_EQ(after("/getVolume/answers", verdict(HostVerdict::kRemark, "getVolume() x"), kNext).kind, kKept);
  EXPECT_EQ(after("/getVolume/stays-out", verdict(kBroken, "getVolume() x"), kNext).kind, kKept);
  for (const HostVerdict& left :
       {after("/getVolume/answers", verdict(kBroken, "it is 7"), kNext),
        after("/getVolume/stays-out", verdict(kBroken, "getVolume() did not answer", true), kNext),
        after("/getTimezone/answers", verdict(kBroken, "getVolume() ended the process"), kNext)}) {
    EXPECT_EQ(left.kind, HostVerdict::kNotAsked);
    EXPECT_EQ(left.detail, "getVolume() fails, see its checks");
  }
  EXPECT_EQ(after("/getTimezone/answers", verdict(kBroken, "noneOfThese() x"), kNext).kind, kKept);
}

TEST(Verdicts, ComeInAnOrder) {
  // The store before it is killed, then all plain answers, the rest by operation, and last the host as a whole.
  const auto turnOf = [](const HostCheck& check) {
    const std::string name = check.id.substr(check.id.rfind('/'));
    if (name == "/killed" && check.operation == "open") return 0;
    return name == "/answers" ? 1 : check.slot == 1 ? 3 : 2;
  };
  int turn = 0;
  std::string place;
  std::set<int> turns;
  for (const HostCheck& check : hostChecks()) {
    const std::string its = check.id.substr(0, check.id.rfind('/'));
    if (turnOf(check) == turn) {
      EXPECT_GE(its, place) << check.id;
    }
    EXPECT_GE(turnOf(check), turn) << check.id;
    turn = turnOf(check);
    turns.insert(turn);
    place = its;
  }
  EXPECT_EQ(turns, (std::set<int>{0, 1, 2, 3}));
}

TEST(Verdicts, AreInOneOfTheAreas) {
  const std::set<std::string> areas(hostAreas().begin(), hostAreas().end());
  EXPECT_EQ(areas.size(), hostAreas().size());
  for (const char* const area : {"storage", "player", "volume", "settings"})
    EXPECT_TRUE(areas.count(area)) << area;
}

}  // namespace
