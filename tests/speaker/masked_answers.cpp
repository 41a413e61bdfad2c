// What was answered where a secret was asked for is a secret wherever it comes again.

#include <gtest/gtest.h>
#include <vorn_testing/Recorder.h>

#include <stdexcept>

#include "calls/Crossings.h"

namespace {

using namespace vorn_speaker;
using vorn_testing::makeCall;

class Answers : public testing::Test {
 protected:
  /// What is shown of a host that is told the text.
  std::string shownAgain(const std::string& text) {
    m_recorder->run(makeCall("VornDALImplIF", "alexaStateChanged", 3, this, text), [] {});
    return m_last.all;
  }

  struct Last : Crossings::Listener {
    void began(const Crossing&) override {}
    void ended(const Crossing& crossing) override { all = crossing.signature(); }
    std::string all;
  };

  const std::shared_ptr<vorn_testing::Recorder> m_recorder = std::make_shared<vorn_testing::Recorder>();
  Last m_last;
  Crossings m_crossings{m_recorder, false};

  Answers() { m_crossings.tell(m_last); }
};

TEST_F(Answers, AreShownAsTheyAreWithoutASecret) {
  EXPECT_EQ(shownAgain("KEEP-THIS"), "alexaStateChanged(KEEP-THIS)");
}

TEST_F(Answers, AreKnownAgainAsResults) {
  m_recorder->run(makeCall("VornDALImplIF", "getConfigData", 21, this, std::string("apiToken")),
                  [] { return std::string("KEEP-THIS"); });
  EXPECT_EQ(shownAgain("a KEEP-THIS b"), "alexaStateChanged(********)");
}

TEST_F(Answers, AreKnownAgainAsWhatWasWritten) {
  std::string value;
  m_recorder->run(makeCall("VornDALImplIF", "getSystemSetting", 22, this, std::string("psk"), value), [&] {
    value = "KEEP THIS";
    return true;
  });
  EXPECT_EQ(shownAgain("KEEP THIS"), "alexaStateChanged(********)");
}

TEST_F(Answers, AreKnownAgainAsExceptions) {
  const auto fail = []() -> std::string { throw std::runtime_error("no KEEP-THIS"); };
  EXPECT_THROW(
      m_recorder->run(makeCall("VornDALImplIF", "getConfigData", 21, this, std::string("apiToken")), fail),
      std::runtime_error);
  EXPECT_EQ(shownAgain("no KEEP-THIS"), "alexaStateChanged(********)");
}

}  // namespace
