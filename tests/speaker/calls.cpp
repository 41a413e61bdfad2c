// What crosses the library: described, masked, printed, counted.

#include <gtest/gtest.h>
#include <vorn_testing/Recorder.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>

#include "calls/Crossings.h"
#include "calls/Printer.h"
#include "calls/Tally.h"

namespace {

using namespace vorn_speaker;
using vorn_testing::makeCall;
using Set = std::map<std::string, std::string>;

/// Keeps what ended.
struct Ended : Crossings::Listener {
  void began(const Crossing&) override {}
  void ended(const Crossing& crossing) override { all.push_back(crossing); }
  std::vector<Crossing> all;
};

class Calls : public testing::Test {
 protected:
  Calls() {
    crossings.tell(printer);
    crossings.tell(tally);
    crossings.tell(listener);
    clear.tell(clearListener);
    nameThread("assistant");
  }

  /// A call of the host, as a double records it.
  template <class Result, class... Arguments>
  const Crossing& called(const char* operation, int slot, const Result& result,
                         const Arguments&... arguments) {
    recorder->run(makeCall("VornDALImplIF", operation, slot, this, arguments...), [&] { return result; });
    return listener.all.back();
  }

  const std::shared_ptr<vorn_testing::Recorder> other = std::make_shared<vorn_testing::Recorder>();
  const std::shared_ptr<vorn_testing::Recorder> recorder = std::make_shared<vorn_testing::Recorder>();
  std::ostringstream out;
  Printer printer{out, false};
  Tally tally;
  Ended listener;
  Ended clearListener;
  Crossings crossings{recorder, false};
  Crossings clear{other, true};
};

TEST_F(Calls, AreDescribedInTheLanguageOfScenarios) {
  const Crossing& call = called("writeKeyValue", 27, true, Set{{"a, b", "c"}});
  EXPECT_EQ(call.fullName(), "VornStorage.writeKeyValue");
  EXPECT_EQ(call.spelled, std::vector<std::string>{"{\"a, b\"=c}"});
  EXPECT_EQ(call.answer(), "true");
  EXPECT_TRUE(call.isDown());
  EXPECT_EQ(call.thread, "assistant");
}

TEST_F(Calls, AreNumberedAndCountTheirDepth) {
  recorder->run(makeCall("VornDALImplIF", "onSetVolume", 61, this, 3), [&] { called("getVolume", 13, 30); });
  EXPECT_EQ(listener.all[0].number, 2U);
  EXPECT_EQ(listener.all[0].depth, 1);
  EXPECT_EQ(listener.all[1].number, 1U);
  EXPECT_EQ(listener.all[1].depth, 0);
}

TEST_F(Calls, OfThreadsThatFollowEachOtherHaveNumbersOfTheirOwn) {
  std::set<int> numbers;
  for (int i = 0; i < 3; ++i)  // Each has the system's id of the one before.
    std::thread([&] { numbers.insert(called("getVolume", 13, 30).threadNumber); }).join();
  EXPECT_EQ(numbers.size(), 3U);
}

TEST_F(Calls, WaitedFromWhenTheyWereAskedForUntilTheyArrived) {
  const Crossings::Asking asking(crossings, "VornDeviceInfo.setSystemSetting");
  const auto before = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() - before < std::chrono::milliseconds(2)) continue;
  called("setSystemSetting", 23, true, std::string("mode"), std::string("on"));
  const Crossing& call = listener.all.back();
  EXPECT_GE(call.waited.value(), std::chrono::milliseconds(2));
  EXPECT_LE(call.waited.value() + call.host.value(), call.took);
  EXPECT_LE(call.began + call.took, crossings.now());
}

TEST_F(Calls, WaitForNothingWithoutALock) {
  EXPECT_EQ(called("isMicrophoneAvailable", 10, true).waited, std::chrono::microseconds(0));
  const Crossings::Asking asking(crossings, "VornAudioIn.isMicrophoneAvailable");
  EXPECT_TRUE(crossings.waiting().empty());
}

TEST_F(Calls, WaitedForATimeThatNobodyKnowsUnlessTheyWereAskedFor) {
  const auto set = [&] {
    return called("setSystemSetting", 23, true, std::string("mode"), std::string("on")).waited;
  };
  EXPECT_EQ(set(), std::nullopt);
  const Crossings::Asking asking(crossings, "VornDeviceInfo.getSystemSetting");
  EXPECT_EQ(set(), std::nullopt);
  std::optional<std::chrono::microseconds> elsewhere = std::chrono::microseconds(0);
  std::thread([&] { elsewhere = set(); }).join();
  EXPECT_EQ(elsewhere, std::nullopt);
}

TEST_F(Calls, InsideAnotherWereNotAskedForWithIt) {
  const Crossings::Asking asking(crossings, "VornDeviceInfo.setSystemSetting");
  const auto set = [&] {
    return called("setSystemSetting", 23, true, std::string("mode"), std::string("on")).waited;
  };
  recorder->run(makeCall("VornDALImplIF", "onSetVolume", 61, this, 3), [&] { set(); });
  EXPECT_EQ(listener.all[0].waited, std::nullopt);
}

TEST_F(Calls, AreWaitedForUntilTheyArriveOrNobodyAsks) {
  {
    const Crossings::Asking asking(crossings, "VornDeviceInfo.setSystemSetting");
    const Asked asked = crossings.waiting().at(0);
    EXPECT_EQ(asked.operation, "VornDeviceInfo.setSystemSetting");
    EXPECT_EQ(asked.thread, "assistant");
    called("setSystemSetting", 23, true, std::string("mode"), std::string("on"));
    EXPECT_TRUE(crossings.waiting().empty());
  }
  { const Crossings::Asking dropped(crossings, "VornDeviceInfo.setSystemSetting"); }
  EXPECT_TRUE(crossings.waiting().empty());
}

TEST_F(Calls, TellTheirDirectionByWhoCalls) {
  recorder->run(makeCall("DeviceInfo", "notifyVolumeChanged", 41, this, 3), [] {});
  EXPECT_FALSE(listener.all.back().isDown());
  recorder->run(
      makeCall("VornAttachmentReaderContainerInterfaceImpl", "Subscribe", 3, this, std::string("x")), [] {});
  recorder->run(makeCall("VornMadeUp", "call", 1, this), [] {});
  EXPECT_FALSE(listener.all.back().isDown());
  EXPECT_TRUE(called("getEMPAdapter", 33, static_cast<const void*>(this)).isDown());
}

TEST_F(Calls, CountTheSamplesThatGoUp) {
  std::vector<short> samples(160);
  recorder->run(makeCall("AudioIn", "sendAudioData", 11, this, samples), [] {});
  EXPECT_EQ(listener.all.back().samples, 160U);
  EXPECT_EQ(listener.all.back().arguments, std::vector<std::string>{"[160 samples]"});
  EXPECT_EQ(called("getVolume", 13, 30).samples, 0U);
}

TEST_F(Calls, TellWhatWasWritten) {
  std::string value = "before";
  recorder->run(makeCall("VornDALImplIF", "getSystemSetting", 22, this, std::string("mode"), value), [&] {
    value = "after all";
    return true;
  });
  EXPECT_EQ(listener.all.back().answer(), "true value=\"after all\"");
  EXPECT_FALSE(listener.all.back().secret);
}

TEST_F(Calls, MaskWhatASecretKeyNamesAndKeepTheKey) {
  std::string value;
  recorder->run(makeCall("VornDALImplIF", "getSystemSetting", 22, this, std::string("psk"), value), [&] {
    value = "KEEP-THIS";
    return true;
  });
  EXPECT_EQ(listener.all.back().arguments[0], "psk");
  EXPECT_EQ(listener.all.back().answer(), "true value=********");
  EXPECT_EQ(listener.all.back().clear.answer, "true value=KEEP-THIS");
  EXPECT_EQ(called("getConfigData", 21, std::string("KEEP-THAT"), std::string("apiToken")).result,
            "********");
  EXPECT_TRUE(listener.all.back().secret);
}

TEST_F(Calls, MaskASecretWhereverItComesAgain) {
  called("setSystemSetting", 23, true, std::string("wifiPassword"), std::string("KEEP \"THIS\""));
  EXPECT_EQ(listener.all.back().signature(), "setSystemSetting(wifiPassword, ********)");
  EXPECT_EQ(called("getTimezone", 15, std::string("x KEEP \"THIS\" y")).result, "********");
  EXPECT_EQ(called("alexaStateChanged", 3, 0, std::string("KEEP \"THIS\"")).spelled[0], "********");
  EXPECT_TRUE(crossings.isKnown("KEEP \"THIS\""));
  EXPECT_FALSE(crossings.isSecret("harmless"));
}

TEST_F(Calls, MaskTheExceptionOfACallThatWasGivenASecret) {
  const std::string token = "abc", user = "ada", player = "x";
  EXPECT_THROW(recorder->run(makeCall("VornEMPAdapterIF", "login", 3, this, token, user, true,
                                      std::chrono::milliseconds(1), player),
                             []() -> bool { throw std::runtime_error("bad abc"); }),
               std::runtime_error);
  EXPECT_EQ(listener.all.back().exception, "********");
  EXPECT_EQ(listener.all.back().clear.exception, "bad abc");
  EXPECT_EQ(listener.all.back().signature(), "login(********, ada, true, 1ms, x)");
}

TEST_F(Calls, HaveNoSecretAnswerWhenTheyTellOnlyThatASecretWasTaken) {
  EXPECT_FALSE(called("setSystemSetting", 23, true, std::string("password"), std::string("hunter2")).secret);
}

TEST_F(Calls, AreNoStatementThatSteersTheTerminal) {
  Crossing call = called("getConfigData", 21, std::string(), std::string("a"));
  call.spelled = {"\"\x1b[2J\""};
  EXPECT_EQ(call.statement(), "VornDeviceInfo.getConfigData \"\\x1b[2J\"");
}

TEST_F(Calls, MaskNothingWhenToldTo) {
  other->run(makeCall("VornDALImplIF", "getConfigData", 21, this, std::string("apiToken")),
             [] { return std::string("KEEP-THIS"); });
  EXPECT_EQ(clearListener.all.back().result, "KEEP-THIS");
  EXPECT_FALSE(clear.isSecret("token"));
}

TEST_F(Calls, AreDisturbedAfterTheyBegan) {
  crossings.disturb([](const Crossing& call) {
    if (call.operation == "getVolume") throw std::runtime_error("disturbed");
  });
  EXPECT_THROW(called("getVolume", 13, 30), std::runtime_error);
  EXPECT_EQ(listener.all.back().exception, "disturbed");
  EXPECT_EQ(called("getTimezone", 15, std::string("here")).result, "here");
}

TEST_F(Calls, ArePrintedInOneLine) {
  called("getVolume", 13, 30);
  EXPECT_EQ(out.str(), "  down  assistant   VornDeviceInfo              getVolume() = 30\n");
}

TEST_F(Calls, ArePrintedAroundWhatHappensInside) {
  recorder->run(makeCall("VornDALImplIF", "onSetVolume", 61, this, 3), [&] {
    recorder->run(makeCall("DeviceInfo", "notifyVolumeChanged", 41, this, 3), [] {});
    printer.say("between");
    return std::make_pair(true, std::string());
  });
  EXPECT_EQ(out.str(),
            "  down  assistant   VornDeviceCapabilities      onSetVolume(3) ...\n"
            "  up    assistant   VornDeviceInfo                notifyVolumeChanged(3)\n"
            "between\n"
            "  down  assistant   VornDeviceCapabilities      ... onSetVolume = true\n");
}

TEST_F(Calls, ArePrintedBeforeWhatTheSpeakerSaysMeanwhile) {
  recorder->run(makeCall("VornDALImplIF", "clearGUICard", 64, this), [&] { printer.say("cleared"); });
  EXPECT_EQ(out.str(),
            "  down  assistant   VornGUIOutput               clearGUICard() ...\n"
            "cleared\n"
            "  down  assistant   VornGUIOutput               ... clearGUICard\n");
}

TEST_F(Calls, AreCountedWhenTheyAreBlocksOfOneStream) {
  std::vector<short> samples(160);
  for (int i = 0; i < 3; ++i) recorder->run(makeCall("AudioIn", "sendAudioData", 11, this, samples), [] {});
  called("getVolume", 13, 30);
  EXPECT_EQ(out.str(),
            "  up    assistant   VornAudioIn                 sendAudioData([160 samples])\n"
            "  up    assistant   VornAudioIn                 ... 2 more of sendAudioData\n"
            "  down  assistant   VornDeviceInfo              getVolume() = 30\n");
}

TEST_F(Calls, AreCountedBeforeWhatIsSaidAfterThem) {
  std::vector<short> samples(160);
  for (int i = 0; i < 3; ++i) recorder->run(makeCall("AudioIn", "sendAudioData", 11, this, samples), [] {});
  printer.say("heard");
  EXPECT_EQ(out.str(),
            "  up    assistant   VornAudioIn                 sendAudioData([160 samples])\n"
            "  up    assistant   VornAudioIn                 ... 2 more of sendAudioData\n"
            "heard\n");
}

/// A stream that knows how much of it has been handed on.
class HandedOn : public std::stringbuf {
 public:
  std::string seen;

 private:
  int sync() override {
    seen = str();
    return 0;
  }
};

TEST_F(Calls, AreHandedOnAtOnceToWhoeverReadsAlong) {
  HandedOn buffer;
  std::ostream stream(&buffer);
  Printer live(stream, false);
  live.say("now");
  EXPECT_EQ(buffer.seen, "now\n");
}

TEST_F(Calls, AreCountedForEachStreamByItself) {
  std::vector<short> samples(160);
  const auto send = [&](const char* target, const char* operation, int slot, const auto& argument) {
    recorder->run(makeCall(target, operation, slot, this, argument), [] {});
  };
  send("AudioIn", "sendAudioData", 11, samples);
  send("AudioIn", "sendAudioData", 11, samples);
  send("VornAttachmentReaderContainerInterfaceImpl", "sendData", 1, std::string("9 bytes"));
  EXPECT_EQ(out.str(),
            "  up    assistant   VornAudioIn                 sendAudioData([160 samples])\n"
            "  up    assistant   VornAudioIn                 ... 1 more of sendAudioData\n"
            "  up    assistant   VornAttachmentReaderContainerInterfaceImpl  sendData(9 bytes)\n");
}

TEST_F(Calls, ArePrintedWithoutSteeringTheTerminal) {
  called("alexaStateChanged", 3, 0, std::string("\x1b[2J\nup"));
  EXPECT_NE(out.str().find("alexaStateChanged(\\x1b[2J\\nup) = 0\n"), std::string::npos) << out.str();
}

TEST_F(Calls, ThatThrewArePrintedWithTheText) {
  EXPECT_ANY_THROW(recorder->run(makeCall("VornDALImplIF", "getVolume", 13, this),
                                 []() -> int { throw std::runtime_error("no\ndial"); }));
  EXPECT_NE(out.str().find("getVolume() threw no\\ndial\n"), std::string::npos) << out.str();
}

TEST_F(Calls, AreCountedByDirection) {
  called("getVolume", 13, 30);
  called("getVolume", 13, 30);
  recorder->run(makeCall("DeviceInfo", "notifyVolumeChanged", 41, this, 3), [] {});
  std::ostringstream table, whole;
  tally.print(table);
  tally.print(whole, true);
  EXPECT_EQ(table.str(), "Calls that arrived" + std::string(60, ' ') + "down      up\n" +
                             "VornDeviceInfo.getVolume" + std::string(57, ' ') + "2\n" +
                             "VornDeviceInfo.notifyVolumeChanged" + std::string(55, ' ') + "1\n" +
                             "Operations that no call reached (--all tells them)" + std::string(37, ' ') +
                             std::to_string(operations().size() - 1) + "\n" + "Together" +
                             std::string(73, ' ') + "2       1\n");
  EXPECT_NE(whole.str().find("\nVornStorage.open" + std::string(65, ' ') + "0\n"), std::string::npos);
  EXPECT_EQ(whole.str().find("no call reached"), std::string::npos);
}

TEST_F(Calls, ThatNeverCameAreNamed) {
  EXPECT_EQ(tally.missing().size(), operations().size());
  called("getVolume", 13, 30);
  const std::vector<std::string> missing = tally.missing();
  EXPECT_EQ(missing.size(), operations().size() - 1);
  EXPECT_EQ(std::count(missing.begin(), missing.end(), "VornDeviceInfo.getVolume"), 0);
}

}  // namespace
