// Arguments that are lent to a host: for how long a touch is told, what it costs, and which doctor hears of it.

#include <gtest/gtest.h>
#include <vorn_testing/DoctorHost.h>

#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using vorn_testing::Doctor;
using vorn_testing::DoctorHost;
using vorn_testing::Finding;

/// Keeps the last card, and may change it.
struct Keeping : vorn_testing::NullHost {
  const std::string* card = nullptr;
  bool changes = false;
  std::function<void()> inside = [] {};

  bool renderGUICard(const std::string& given) override {
    card = &given;
    if (changes) const_cast<std::string&>(given)[0] = '!';
    inside();
    return true;
  }
};

/// Looks at what was kept.
void touch(const std::string* kept) { static_cast<void>(testing::PrintToString(*kept)); }

class LentArguments : public testing::Test {
 protected:
  std::vector<Finding::Rule> rules() const {
    std::vector<Finding::Rule> all;
    for (const Finding& finding : findings) all.push_back(finding.rule);
    return all;
  }
  void callOften(int times) {
    for (int i = 0; i < times; ++i) doctor.renderGUICard("another");
  }

  Keeping host;
  std::vector<Finding> findings;
  DoctorHost doctor{host, [this](const Finding& finding) { findings.push_back(finding); }};
};

using Rules = std::vector<Finding::Rule>;

TEST_F(LentArguments, AreToldOfForTheNextTwoHundredAndFiftyCalls) {
  doctor.renderGUICard("first");
  const std::string* const first = host.card;
  callOften(250);
  touch(first);
  EXPECT_EQ(rules(), Rules{Finding::kReferenceKept});
}

TEST_F(LentArguments, StayForWhoeverWasToldOfHoweverManyCome) {
  doctor.renderGUICard("first");
  const std::string* const first = host.card;
  touch(first);
  callOften(600);
  touch(first);
  EXPECT_EQ(rules(), Rules{Finding::kReferenceKept});
}

TEST_F(LentArguments, TakeNoMoreMemoryForMoreCalls) {
  const auto pages = [] {
    long all = 0;
    std::ifstream("/proc/self/statm") >> all;
    return all;
  };
  callOften(600);
  const long before = pages();
  callOften(2000);
  EXPECT_LT(pages(), before + 1000) << "each has a page";
}

TEST_F(LentArguments, AreToldOfAgainWhenTheyWereChangedAndThenKept) {
  host.changes = true;
  doctor.renderGUICard("card");
  touch(host.card);
  EXPECT_EQ(rules(), (Rules{Finding::kArgumentChanged, Finding::kReferenceKept}));
}

TEST_F(LentArguments, AreToldOfInsideTheCallThatChangesThem) {
  host.changes = true;
  std::size_t told = 0;
  host.inside = [&] { told = findings.size(); };
  doctor.renderGUICard("card");
  EXPECT_EQ(told, 1U);
}

TEST(LentArgument, MayBeTouchedByWhoeverHearsOfAnother) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP() << "the thread sanitizer lets no handler of a fault meet a second one";
#endif
  Keeping host;
  const std::string* other = nullptr;
  int findings = 0;
  DoctorHost doctor(host, [&](const Finding&) {
    if (++findings == 1) touch(other);
  });
  doctor.renderGUICard("one");
  other = host.card;
  doctor.renderGUICard("two");
  touch(host.card);
  EXPECT_EQ(findings, 2);
}

TEST(Doctors, ReportToTheOneThatWasMadeLast) {
  std::string told;
  const auto named = [&](char name) {
    return std::make_unique<Doctor>([&told, name](const Finding&) { told += name; });
  };
  const auto report = [] { Doctor::report({Finding::kLongWait, "It takes long.", {}, {}}); };
  auto first = named('1'), second = named('2'), third = named('3');
  report();
  second.reset();
  report();
  third.reset();
  report();
  EXPECT_EQ(told, "331");
}

TEST(ADoctorsPlayer, IsOneForAsLongAsTheHostHasOne) {
  struct WithPlayer : vorn_testing::NullHost, vorn_testing::NullPlayer {
    VornDeviceAbstractionLayer::VornEMPAdapterIF* getEMPAdapter() override { return this; }
    bool pause(std::string) override { return true; }
  } host;
  DoctorHost doctor(host);
  auto* const player = doctor.getEMPAdapter();
  EXPECT_EQ(doctor.getEMPAdapter(), player);
  EXPECT_TRUE(player->pause("kitchen"));
}

}  // namespace
