#pragma once

#include <gtest/gtest.h>

#include <string>

#include "HostChecks.h"

namespace vorn_testing {

/// One check of one host as a GoogleTest; see addHostContract().
class HostContractTest : public testing::Test {
 public:
  HostContractTest(const HostCheck& check, const HostMaker& maker, const HostDemands& demands)
      : m_check(check), m_maker(maker), m_demands(demands) {}

  void TestBody() override {
    const HostVerdict verdict = runHostCheck(m_check, m_maker, m_demands);
    if (verdict.kind == HostVerdict::kNotAsked) GTEST_SKIP() << "not asked: " << verdict.detail;
    if (verdict.kind == HostVerdict::kBroken)
      ADD_FAILURE() << m_check.operation << ", slot " << m_check.slot << "\n  seen:   " << verdict.detail
                    << "\n  rule:   " << m_check.rule << "\n  remedy: " << m_check.remedy;
  }

 private:
  const HostCheck& m_check;
  const HostMaker m_maker;
  const HostDemands m_demands;
};

/// Registers every check of a host as a test of the suite `name`, before main() begins:
///
///   const bool kAdded = vorn_testing::addHostContract("MyHost", [] { return std::make_shared<MyHost>(); });
///
/// `--gtest_filter='MyHost.*getVolume*'` selects by operation. Opt-in: this header is what brings GoogleTest along.
/// @returns  true
inline bool addHostContract(const std::string& name, const HostMaker& maker,
                            const HostDemands& demands = HostDemands()) {
  for (const HostCheck& check : hostChecks()) {
    testing::RegisterTest(
        name.c_str(), check.id.c_str(), nullptr, nullptr, __FILE__, __LINE__,
        [&check, maker, demands]() -> testing::Test* { return new HostContractTest(check, maker, demands); });
  }
  return true;
}

}  // namespace vorn_testing
