// The line at the foot of a terminal while vorn-conformance runs.

#include "conformance/Progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace std::chrono_literals;

class ProgressTest : public testing::Test {
 protected:
  /// What is printed when `done` of 10 checks are done after so long.
  std::string after(std::chrono::seconds passed, std::size_t done) {
    m_out.str("");
    m_now = Progress::Clock::time_point(passed);
    m_progress.at(done, 10);
    return m_out.str();
  }

  std::ostringstream m_out;
  Progress::Clock::time_point m_now;
  Progress m_progress{m_out, true, [this] { return m_now; }};
};

TEST_F(ProgressTest, SaysNothingOfAShortRun) {
  EXPECT_EQ(after(1s, 1), "");
  EXPECT_EQ(after(2s, 0), "");
}

TEST_F(ProgressTest, TellsHowLongTheRestMayTake) {
  EXPECT_EQ(after(2s, 1), "1 of 10 checks, about 18 s left");
  m_progress.clear();
  EXPECT_EQ(after(20s, 10), "10 of 10 checks, about 0 s left");
}

TEST_F(ProgressTest, TellsALongTimeInMinutes) {
  EXPECT_EQ(after(100s, 5), "5 of 10 checks, about 100 s left");
  m_progress.clear();
  EXPECT_EQ(after(120s, 5), "5 of 10 checks, about 2 min left");
  m_progress.clear();
  EXPECT_EQ(after(149s, 5), "5 of 10 checks, about 2 min left");
  m_progress.clear();
  EXPECT_EQ(after(150s, 5), "5 of 10 checks, about 3 min left");
}

TEST_F(ProgressTest, TakesThePlaceOfWhatItSaidBefore) {
  const std::string first = after(2s, 1);
  EXPECT_EQ(after(3s, 2), "\r" + std::string(first.size(), ' ') + "\r2 of 10 checks, about 12 s left");
}

TEST_F(ProgressTest, MakesRoomOnce) {
  const std::string said = after(2s, 1);
  m_out.str("");
  m_progress.clear();
  m_progress.clear();
  EXPECT_EQ(m_out.str(), "\r" + std::string(said.size(), ' ') + "\r");
}

TEST(Progress, LeavesNothingBehindAndIsForTerminalsOnly) {
  std::ostringstream out;
  auto now = Progress::Clock::time_point();
  for (const bool shown : {false, true}) {
    now = {};
    Progress progress(out, shown, [&] { return now; });
    now += 5s;
    progress.at(5, 10);
    EXPECT_EQ(out.str(), shown ? "5 of 10 checks, about 5 s left" : "");
  }
  EXPECT_EQ(out.str().back(), '\r');
}

}  // namespace
