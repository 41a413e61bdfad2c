// What one part of the tools prints, another reads back: recordings and lines of the trace.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <vorn_testing/Masking.h>
#include <vorn_testing/Text.h>
#include <vorn_testing/TraceLine.h>

#include <sstream>

#include "language/Operations.h"
#include "recordings/Recording.h"
#include "text/Spelling.h"

namespace {

using namespace vorn_speaker;
using vorn_testing::TraceLine;
using Texts = std::vector<std::string>;

constexpr char kFile[] = "/tmp/round-trip";

Recorded readBack(const std::vector<Crossing>& calls) {
  Recording recording(kFile);
  for (const Crossing& call : calls) recording.ended(call);
  recording.finish();
  return Recording::read(kFile);
}

RC_GTEST_PROP(Recorded, CallReadsBack,
              (const std::string& thread, const std::string& result, const Texts& arguments,
               const std::string& exception, bool down, bool threw, unsigned short took)) {
  Crossing call{};
  call.number = 1;
  call.began = std::chrono::microseconds(7);
  call.took = std::chrono::microseconds(took);
  call.thread = thread;
  call.threadNumber = 3;
  call.direction = down ? Direction::kDown : Direction::kUp;
  call.adapter = "VornDeviceInfo";
  call.operation = "getVolume";
  call.target = "VornDALImplIF";
  call.slot = 13;
  call.depth = 2;
  for (const std::string& argument : arguments) call.spelled.push_back(spell(argument));
  call.result = result;
  call.written = {"value=" + result};
  call.threw = threw;
  call.exception = threw ? exception : "";
  const Crossing read = readBack({call}).calls.at(0).call;
  RC_ASSERT(read.number == 1U);
  RC_ASSERT(read.began == call.began);
  RC_ASSERT(read.took == call.took);
  RC_ASSERT(read.thread == Recording::asRead(thread));
  RC_ASSERT(read.isDown() == down);
  RC_ASSERT(read.adapter == call.adapter);
  RC_ASSERT(read.operation == call.operation);
  RC_ASSERT(read.target == call.target);
  RC_ASSERT(read.threadNumber == 3);
  RC_ASSERT(read.slot == 13);
  RC_ASSERT(read.depth == 2);
  RC_ASSERT(read.spelled == call.spelled);
  RC_ASSERT(read.result == Recording::asRead(result));
  RC_ASSERT(read.written == Texts{Recording::asRead(call.written[0])});
  RC_ASSERT(read.threw == threw);
  RC_ASSERT(read.exception == Recording::asRead(call.exception));
}

RC_GTEST_PROP(Traced, TokenIsMaskedWhateverItHoldsAndTheRestIsKept,
              (const std::string& token, const std::string& user)) {
  RC_PRE(user.find(", userName: ") == std::string::npos && user.find('\n') == std::string::npos);
  const std::string begin =
      "bool VornDeviceAbstractionLayer::VornEMPAdapterControl::login(const string&, const string&, bool, "
      "std::chrono::milliseconds, std::string): accessToken: ";
  const std::string end = ", userName: " + user + ", forceLogin: 1, refreshInterval: 1ms, playerId: x";
  RC_PRE(user.find("): accessToken: ") == std::string::npos);
  RC_ASSERT(TraceLine::masked(begin + token + end) == begin + vorn_testing::kMask + end);
}

RC_GTEST_PROP(Traced, RecordsAreReadBackAsTheyWereWritten, (const Texts& texts)) {
  std::ostringstream written;
  Texts expected;
  for (const std::string& text : texts) {
    // A line that looks like a record's first is one; a line feed at the end cannot be told from the record's own.
    if (text.find('\n') != std::string::npos) continue;
    expected.push_back(text);
    written << " Time: " << text << '\n';
  }
  std::istringstream trace(written.str());
  RC_ASSERT(vorn_testing::traceRecords(trace) == expected);
}

RC_GTEST_PROP(Shaped, LinesAreAlikeWhateverTheirNumbers, (unsigned first, unsigned second)) {
  const auto line = [](unsigned number) { return "count=" + std::to_string(number) + " of 5"; };
  RC_ASSERT(TraceLine::shape(line(first)) == TraceLine::shape(line(second)));
  RC_ASSERT(TraceLine::shape(line(first)) == "count=# of #");
}

RC_GTEST_PROP(Harmless, TextStaysAsItIs, (const std::string& text)) {
  const std::string once = vorn_testing::harmless(text);
  RC_ASSERT(vorn_testing::harmless(once) == once);
  RC_ASSERT(vorn_testing::isUtf8(once));
}

RC_GTEST_PROP(Shown, StatementIsNotMaskedTwice, (const std::string& value)) {
  const std::string line = "assistant VornDeviceInfo.setSystemSetting token " + spell(value);
  const std::string masked = maskedStatement(line);
  RC_ASSERT(masked == std::string("assistant VornDeviceInfo.setSystemSetting token ") + vorn_testing::kMask);
  RC_ASSERT(maskedStatement(masked) == masked);
}

}  // namespace
