#pragma once

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <string>

#include "HostChecks.h"

namespace vorn_testing {

/// One check of one host as a GoogleTest; see addHostContract().
class HostContractTest : public testing::Test {
 public:
  HostContractTest(const HostCheck& check, const std::shared_ptr<HostCheckRun>& checks)
      : m_check(check), m_run(checks) {}

  void TestBody() override {
    const HostVerdict verdict = m_run->run(m_check);
    if (verdict.kind == HostVerdict::kNotAsked) GTEST_SKIP() << "not asked: " << verdict.detail;
    if (verdict.kind == HostVerdict::kRemark) std::cout << "remark: " << verdict.detail << "\n";
    if (verdict.kind == HostVerdict::kBroken) {
      std::string stack;
      for (const std::string& frame : verdict.stack) stack += "\n    " + frame;
      ADD_FAILURE() << m_check.operation << ", slot " << m_check.slot << "\n  seen:   " << verdict.detail
                    << stack << "\n  rule:   " << m_check.rule << "\n  remedy: " << m_check.remedy;
    }
  }

 private:
  const HostCheck& m_check;
  const std::shared_ptr<HostCheckRun> m_run;
};

/// Registers every check of a host as a test of the suite `name`, before main() begins:
///
///   const bool kAdded = vorn_testing::addHostContract("MyHost", [] { return std::make_shared<MyHost>(); });
///
/// `--gtest_filter='MyHost.*getVolume*'` selects by operation. Opt-in: this header is what brings GoogleTest along.
/// @returns  true
inline bool addHostContract(const std::string& name, const HostMaker& maker,
                            const HostDemands& demands = HostDemands()) {
  const auto run = std::make_shared<HostCheckRun>(maker, demands);
  for (const HostCheck& check : hostChecks()) {
    testing::RegisterTest(name.c_str(), check.id.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [&check, run]() -> testing::Test* { return new HostContractTest(check, run); });
  }
  return true;
}

}  // namespace vorn_testing
