// The list of checks itself, and hosts that keep every promise.

#include <vorn_testing/HostContract.h>
#include <vorn_testing/MemoryHost.h>

#include <algorithm>
#include <memory>
#include <set>

using vorn_testing::HostCheck;
using vorn_testing::hostChecks;

namespace {

const bool kNull =
    vorn_testing::addHostContract("NullHost", [] { return std::make_shared<vorn_testing::NullHost>(); });
const bool kMemory =
    vorn_testing::addHostContract("MemoryHost", [] { return std::make_shared<vorn_testing::MemoryHost>(); });

TEST(HostChecks, AreMoreThanThreeHundredAndNameTheirPlaceRuleAndRemedy) {
  EXPECT_TRUE(kNull && kMemory);
  EXPECT_GE(hostChecks().size(), 300U);
  for (const HostCheck& check : hostChecks())
    EXPECT_FALSE(check.operation.empty() || check.slot < 1 || check.rule.empty() || check.remedy.empty())
        << check.id;
}

TEST(HostChecks, HaveNamesOfTheirOwn) {
  std::set<std::string> names;
  for (const HostCheck& check : hostChecks()) names.insert(check.id);
  EXPECT_EQ(names.size(), hostChecks().size());
}

TEST(HostChecks, AskEverySlotForAnAnswer) {
  std::set<std::string> places;
  for (const HostCheck& check : hostChecks()) {
    if (check.id.substr(check.id.rfind('/')) == "/answers")
      places.insert(check.id.substr(0, check.id.find('/') + 3));
  }
  for (int slot = 3; slot <= 66; ++slot) {
    const std::string number = (slot < 10 ? "0" : "") + std::to_string(slot);
    EXPECT_EQ(places.count("VornDALImplIF/" + number), 1U) << slot;
    EXPECT_EQ(places.count("VornEMPAdapterIF/" + number), slot <= 18 ? 1U : 0U) << slot;
  }
}

TEST(HostChecks, OfALockedOperationAskItToStayOutAndOfAnUnlockedOneToShare) {
  const auto count = [](const std::string& name) {
    return std::count_if(hostChecks().begin(), hostChecks().end(), [&](const HostCheck& check) {
      return check.id.substr(check.id.rfind('/') + 1) == name;
    });
  };
  EXPECT_EQ(count("stays-out"), 15);
  EXPECT_EQ(count("concurrent"), 64 + 16 - 15);
}

TEST(HostChecks, AreBrokenByAHostThatIsNotMade) {
  const auto verdict = runHostCheck(hostChecks().front(), [] { return nullptr; });
  EXPECT_EQ(verdict.kind, vorn_testing::HostVerdict::kBroken);
  EXPECT_EQ(verdict.detail, "no host was made");
}

}  // namespace
