// A firmware that sets a global locale of its own does not find it in the trace.

#include <VornAudioIn.h>
#include <VornEMPAdapterControl.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/NullHost.h>

#include <locale>

#include "support/trace_file.h"

namespace {

using namespace VornDeviceAbstractionLayer;

/// 1,000,000 instead of 1000000.
struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return ','; }
  std::string do_grouping() const override { return "\3"; }
  std::string do_truename() const override { return "yes"; }
};

/// Turns every byte into a question mark on its way into a file.
struct Masking : std::codecvt<char, char, std::mbstate_t> {
  bool do_always_noconv() const noexcept override { return false; }
  int do_encoding() const noexcept override { return 1; }
  result do_out(state_type&, const char* from, const char* fromEnd, const char*& fromNext, char* to,
                char* toEnd, char*& toNext) const override {
    for (fromNext = from, toNext = to; fromNext != fromEnd && toNext != toEnd; ++fromNext) *toNext++ = '?';
    return fromNext == fromEnd ? ok : partial;
  }
};

class GlobalLocale : public trace_file::Traced {
 protected:
  ~GlobalLocale() override { std::locale::global(m_former); }

  vorn_testing::NullHost host;

 private:
  const std::locale m_former =
      std::locale::global(std::locale(std::locale(std::locale::classic(), new Grouping), new Masking));
};

TEST_F(GlobalLocale, ReachesAFileThatATestWrites) {
  std::ofstream("/tmp/masked") << 1000;
  std::ifstream file("/tmp/masked");
  file.imbue(std::locale::classic());
  std::string text;
  file >> text;
  EXPECT_EQ(text, "?????");  // "1,000": both facets are at work.
}

TEST_F(GlobalLocale, DoesNotReachTheBytesOfARecord) {
  FileLogger::getInstance()->logMessage("as it is");
  EXPECT_EQ(trace_file::bytes(), " Time: as it is\n");
}

TEST_F(GlobalLocale, DoesNotReachTheFieldsOfACommand) {
  VornEMPAdapterControl control(host);
  forget();
  control.login("token", "user", true, std::chrono::hours(1), "kitchen");
  EXPECT_EQ(
      trace_file::lines().back(),
      "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, "
      "std::chrono::milliseconds, std::string): accessToken: token, userName: user, forceLogin: 1, "
      "refreshInterval: 3600000ms, playerId: kitchen");
}

TEST_F(GlobalLocale, DoesNotReachANegativeOffset) {
  VornEMPAdapterControl control(host);
  forget();
  control.skipForward(std::chrono::milliseconds(-90000), "");
  EXPECT_EQ(trace_file::lines().back(),
            "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::skipForward(std::chrono::milliseconds, "
            "std::string): offset: -90000ms, playerId: ");
}

TEST_F(GlobalLocale, DoesNotReachTheNumberOfABuffer) {
  vorn_testing::FakeAssistant assistant;
  VornAudioIn audio(host);
  std::vector<short> samples(160);
  for (int call = 1; call <= 10000; ++call) audio.sendAudioData(samples);
  const std::string line = trace_file::lines().back();
  EXPECT_EQ(line.substr(line.rfind(' ')), " count=10000");
}

}  // namespace
