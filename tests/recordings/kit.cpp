// What the kit writes is what the speaker reads and writes, field by field, secret by secret.

#include <gtest/gtest.h>
#include <vorn_testing/MemoryHost.h>
#include <vorn_testing/RecordingFile.h>
#include <vorn_testing/RecordingHost.h>

#include <filesystem>
#include <fstream>

#include "calls/Crossings.h"
#include "recordings/Recording.h"
#include "recordings/made.h"

namespace {

using namespace vorn_speaker;

class OfTheKit : public testing::Test {
 protected:
  /// Records calls with both, of a host that answers with what it was given.
  void record() {
    made::file("", "kit");
    vorn_testing::MemoryHost memory;
    vorn_testing::RecordingHost host(memory);
    vorn_testing::RecordingFile kit("/tmp/recordings/kit", host.recorder);
    Crossings crossings(host.recorder, false);
    Recording speaker(made::file("", "speaker"));
    crossings.tell(speaker);
    std::string value;
    host.open();
    for (const char* const text : {"plain", "a b", "", "\xff\n", "[x]", "my token is", "********", "Grüße"}) {
      host.setSystemSetting("mode", text);
      host.getSystemSetting("mode", value);
      host.setSystemSetting(text, "behind it");
      host.writeKeyValue({{"a", text}, {text, "b"}, {"wifi_password", "hidden-one"}});
      host.readKeyValue("a");
      host.removeKeyValue({text, "hidden-one"});
      host.setAnimation({text});
      host.sendAppMessage(text, "psk", "after");
      host.onSetPowerState(true, text);
      host.getEMPAdapter()->login(text, "ada", true, std::chrono::milliseconds(3), "p");
    }
    host.onSetRangeValue(2.5);
    host.onAdjustVolume(-3);
    DeviceAbstractionLayer::CommsManagerInterface::CommsStateInfo info{};
    info.state = "{ringing}";
    host.onCommsStateChanged(info);
    std::int64_t number = 3;
    std::string first = "https://link.example", second = "A B";
    host.sendCBLInfo(first, second, number);
    host.renderGUICard("{\"text\": 1}");
    kit.close();
    speaker.finish();
  }
};

TEST_F(OfTheKit, EqualsWhatTheSpeakerRecordsCallByCall) {
  record();
  const Recorded kit = Recording::read("/tmp/recordings/kit"),
                 speaker = Recording::read("/tmp/recordings/speaker");
  ASSERT_EQ(kit.calls.size(), speaker.calls.size());
  for (std::size_t i = 0; i < kit.calls.size(); ++i) {
    const Crossing &one = kit.calls[i].call, &other = speaker.calls[i].call;
    EXPECT_EQ(one.statement() + " = " + one.outcome(), other.statement() + " = " + other.outcome());
    EXPECT_EQ(
        std::tie(one.direction, one.target, one.slot, one.depth, one.threadNumber, one.reached),
        std::tie(other.direction, other.target, other.slot, other.depth, other.threadNumber, other.reached));
  }
}

TEST_F(OfTheKit, HasTheFieldsOfTheFormatInTheirOrder) {
  record();
  std::ifstream file("/tmp/recordings/kit");
  std::string line;
  std::getline(file, line);
  std::getline(file, line);
  std::size_t at = 0;
  for (const RecordedField& field : recordedFields()) {
    const std::size_t found = line.find("\"" + field.name + "\":", at);
    ASSERT_NE(found, std::string::npos) << field.name << " in " << line;
    at = found;
  }
}

TEST_F(OfTheKit, LeavesNothingToPassOver) {
  record();
  EXPECT_TRUE(Recording::read("/tmp/recordings/kit").leftOut.empty());
  EXPECT_EQ(vorn_testing::readRecording("/tmp/recordings/speaker").size(),
            Recording::read("/tmp/recordings/speaker").calls.size());
}

}  // namespace
