// A program that has the adapters in itself and does not tell the loader of them: there the doctor must not be silent.

#include <VornDeviceInfo.h>
#include <gtest/gtest.h>
#include <vorn_testing/DoctorHost.h>

#include <csignal>

namespace {

using vorn_testing::Doctor;
using vorn_testing::Finding;

TEST(LocksThatCannotBeWatched, AreAFindingThatTellsWhy) {
  std::vector<Finding> findings;
  const Doctor doctor([&](const Finding& finding) { findings.push_back(finding); });
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].rule, Finding::kNotWatching);
  EXPECT_EQ(findings[0].message, "Locks are not watched: " + Doctor::notWatching() + ".");
}

TEST(LocksThatCannotBeWatched, AreToldAboutForAsLongAsADoctorLives) {
  std::make_unique<Doctor>([](const Finding&) {}).reset();
  EXPECT_EQ(Doctor::notWatching(), "");
  const Doctor doctor([](const Finding&) {});
  EXPECT_EQ(Doctor::notWatching(), "no library of this process exports VornDeviceInfo::m_mutex");
}

TEST(LocksThatCannotBeWatched, EndTheProcessWhenNobodyListens) {
#ifdef VORN_EMULATED
  GTEST_SKIP() << "qemu-user does not end a process that aborts";
#endif
  EXPECT_EXIT(Doctor(), testing::KilledBySignal(SIGABRT), "vorn doctor: Locks are not watched: no library");
}

TEST(LocksThatCannotBeWatched, LeaveTheRestOfTheDoctorAtWork) {
  vorn_testing::NullHost host;
  std::vector<Finding> findings;
  {
    vorn_testing::DoctorHost doctor(host, [&](const Finding& finding) { findings.push_back(finding); });
    VornDeviceAbstractionLayer::VornDeviceInfo::CreateInstance(doctor)->getVolume();
  }
  VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown();
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[1].rule, Finding::kHostDestroyed);
}

}  // namespace
