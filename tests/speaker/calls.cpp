// What crosses the library: described, masked, printed, counted, recorded and read again.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vorn_testing/Recorder.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <thread>

#include "calls/Crossings.h"
#include "calls/Printer.h"
#include "calls/Tally.h"
#include "recordings/Recording.h"
#include "recordings/Report.h"

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

class Recordings : public Calls {
 protected:
  void SetUp() override {
    std::filesystem::remove_all("/tmp/recordings");
    std::filesystem::create_directories("/tmp/recordings");
  }

  std::string file(const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  std::string content() {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  std::string problem(const std::string& text) {
    try {
      Recording::read(file(text));
      return "it was read";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  /// A call in a recording, with one of its fields changed; without the field for no value.
  static std::string line(const std::string& field = "", const std::string& value = "") {
    std::map<std::string, std::string> values = {{"call", "1"},
                                                 {"time", "0"},
                                                 {"duration", "5"},
                                                 {"thread", "\"assistant\""},
                                                 {"direction", "\"down\""},
                                                 {"adapter", "\"VornDeviceInfo\""},
                                                 {"operation", "\"getVolume\""},
                                                 {"interface", "\"VornDALImplIF\""},
                                                 {"slot", "13"},
                                                 {"inside", "0"},
                                                 {"arguments", "[]"},
                                                 {"result", "\"30\""},
                                                 {"written", "[]"},
                                                 {"exception", "null"}};
    if (!field.empty()) values[field] = value;
    std::string json;
    for (const auto& [name, content] : values) {
      if (!content.empty()) json += (json.empty() ? "{\"" : ",\"") + name + "\":" + content;
    }
    return json + "}\n";
  }

  static constexpr char kHeader[] = "{\"recording\":\"vorn-speaker\",\"version\":1}\n";
  const std::string path = "/tmp/recordings/one";
};

TEST_F(Recordings, GiveBackWhatTheyWereTold) {
  Crossing call = called("setSystemSetting", 23, true, std::string("a b"), std::string("\xff\n"));
  call.written = {"value=on"};
  call.threw = true;
  call.exception = "why";
  Recording recording(path);
  recording.ended(call);
  recording.finish();
  const Crossing read = Recording::read(path).calls.at(0).call;
  EXPECT_EQ(read.spelled, call.spelled);
  EXPECT_EQ(
      std::tie(read.number, read.direction, read.adapter, read.operation, read.target, read.slot, read.depth),
      std::tie(call.number, call.direction, call.adapter, call.operation, call.target, call.slot,
               call.depth));
  EXPECT_EQ(
      std::tie(read.result, read.written, read.threw, read.exception, read.thread, read.began, read.took),
      std::tie(call.result, call.written, call.threw, call.exception, call.thread, call.began, call.took));
}

TEST_F(Recordings, AreForTheirOwnerOnly) {
  Recording(path).finish();
  struct stat there {};
  stat(path.c_str(), &there);
  EXPECT_EQ(there.st_mode & 0777U, 0600U);
}

TEST_F(Recordings, TakeThePlaceOfAnEarlierOneOnlyWhenWhole) {
  file(kHeader + line());
  {
    Recording recording(path);
    recording.ended(called("getTimezone", 15, std::string("here")));
    EXPECT_EQ(content(), kHeader + line());
    recording.finish();
  }
  EXPECT_EQ(Recording::read(path).calls.at(0).call.operation, "getTimezone");
  const auto folder = std::filesystem::directory_iterator("/tmp/recordings");
  EXPECT_EQ(std::distance(begin(folder), end(folder)), 1);
}

TEST_F(Recordings, LeaveNothingBehindWhenTheyAreGivenUp) {
  file(kHeader + line());
  { Recording recording(path); }
  const auto folder = std::filesystem::directory_iterator("/tmp/recordings");
  EXPECT_EQ(std::distance(begin(folder), end(folder)), 1);
  EXPECT_EQ(content(), kHeader + line());
}

TEST_F(Recordings, AreNotLeftWhereNothingWasAndNothingWasRecorded) {
  { Recording recording(path); }
  EXPECT_FALSE(std::filesystem::exists(path));
  Recording(path).finish();
  EXPECT_EQ(Recording::read(path).version, 2);
}

TEST_F(Recordings, ReplaceNoOtherFile) {
  for (const std::string text : {"section mine\n", "x", "{\"recording\":\"vorn-speaker\",\"version\":3}\n"}) {
    file(text);
    EXPECT_THROW(Recording{path}, std::runtime_error) << text;
    EXPECT_EQ(content(), text);
  }
  EXPECT_THROW(Recording{"/tmp/recordings"}, std::runtime_error);
  EXPECT_NO_THROW(Recording{file("")});
}

TEST_F(Recordings, FollowALinkToWhatTheyReplace) {
  file(kHeader + line());
  std::filesystem::create_symlink(path, "/tmp/recordings/link");
  Recording("/tmp/recordings/link").finish();
  EXPECT_TRUE(std::filesystem::is_symlink("/tmp/recordings/link"));
  EXPECT_TRUE(Recording::read(path).calls.empty());
}

TEST_F(Recordings, SayThatADiskIsFull) {
  Recording recording("/dev/full");
  try {
    recording.finish();
    FAIL() << "nothing was said";
  } catch (const NotWritten& error) {
    EXPECT_STREQ(error.what(), "/dev/full cannot be written: No space left on device");
  }
}

TEST_F(Recordings, SayWhyTheyCannotBeRead) {
  EXPECT_EQ(problem(""), path + ": expected a recording, found an empty file");
  EXPECT_EQ(problem("section a\n"), path + ":1: expected a recording of version 1 to 2");
  EXPECT_EQ(problem("{\"recording\":\"vorn-speaker\",\"version\":1.0}\n"),
            path + ":1: expected a recording of version 1 to 2");
  EXPECT_EQ(problem(kHeader + std::string("{\"call\":\n") + line()),
            path + ":2: expected a line of a recording");
  EXPECT_EQ(problem(kHeader + std::string("7\n")),
            path + ":2: expected a line of a recording; expected a call, found 7");
  EXPECT_EQ(problem(kHeader + line() + line()), path + ":3: the call 1 stands twice");
  std::filesystem::remove(path);
  EXPECT_THROW(
      try { Recording::read(path); } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), path + ": cannot be read: No such file or directory");
        throw;
      },
      std::runtime_error);
  EXPECT_THROW(
      try { Recording::read("/tmp/recordings"); } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "/tmp/recordings: cannot be read: Is a directory");
        throw;
      },
      std::runtime_error);
}

TEST_F(Recordings, AreReadUpToALineThatIsCut) {
  for (const char* cut : {"{\"call\":2,\"ti", "{", "{\"call\":2,\"ti\n"}) {
    const Recorded read = Recording::read(file(kHeader + line() + cut));
    EXPECT_EQ(read.calls.size(), 1U);
    EXPECT_EQ(read.leftOut, std::vector<std::string>{path + ":3: left out, the line is cut"});
  }
  EXPECT_TRUE(Recording::read(file(kHeader + line())).leftOut.empty());
}

TEST_F(Recordings, AreReadInTheOrderInWhichCallsBegan) {
  const Recorded read = Recording::read(file(kHeader + line("call", "9") + line("call", "4")));
  EXPECT_EQ(read.calls[0].call.number, 4U);
  EXPECT_EQ(read.calls[0].line, 3U);
}

struct Field {
  const char* name;
  const char* value;
  const char* says;
};

class BadFields : public Recordings, public testing::WithParamInterface<Field> {};

TEST_P(BadFields, AreNamedWithTheirPlace) {
  EXPECT_EQ(problem(kHeader + line(GetParam().name, GetParam().value)),
            path + ":2: expected a line of a recording; " + GetParam().says);
}

const Field kFields[] = {
    {"call", "", "expected the field call"},
    {"call", "0", "the field call: expected a whole number from 1, found 0"},
    {"call", "1.0", "the field call: expected a whole number from 1, found 1.0"},
    {"call", "18446744073709551615",
     "the field call: expected a whole number from 1, found 18446744073709551615"},
    {"time", "-1", "the field time: expected a whole number from 0, found -1"},
    {"duration", "\"5\"", "the field duration: expected a whole number from 0, found \"5\""},
    {"thread", "7", "the field thread: expected a text, found 7"},
    {"direction", "null", "the field direction: expected down, up, life or own, found null"},
    {"direction", "\"left\"", "the field direction: expected down, up, life or own, found \"left\""},
    {"adapter", "\"#\"", "the field adapter: expected a name, found \"#\""},
    {"adapter", "\"\"", "the field adapter: expected a name, found \"\""},
    {"operation", "\"a b\"", "the field operation: expected a name, found \"a b\""},
    {"interface", "[]", "the field interface: expected a text, found an array"},
    {"slot", "1e300", "the field slot: expected a whole number from 0 to 1000, found 1e+300"},
    {"slot", "-1", "the field slot: expected a whole number from 0 to 1000, found -1"},
    {"slot", "1001", "the field slot: expected a whole number from 0 to 1000, found 1001"},
    {"threadNumber", "0", "the field threadNumber: expected a whole number from 1 to 1000000000, found 0"},
    {"waited", "-1", "the field waited: expected a whole number from 0, found -1"},
    {"host", "\"5\"", "the field host: expected a whole number from 0, found \"5\""},
    {"reached", "1", "the field reached: expected true, false or null, found 1"},
    {"inside", "-5", "the field inside: expected a whole number from 0 to 1000000, found -5"},
    {"inside", "2147483647", "the field inside: expected a whole number from 0 to 1000000, found 2147483647"},
    {"arguments", "{}", "the field arguments: expected a list of texts, found an object"},
    {"arguments", "[3]", "the field arguments: expected a text, found 3"},
    {"arguments", "[\"a b\"]",
     "the field arguments: expected values as a scenario holds them, found ********"},
    {"arguments", "[\"#\"]", "the field arguments: expected values as a scenario holds them, found ********"},
    {"arguments", "[\"[a\"]",
     "the field arguments: expected values as a scenario holds them, found ********"},
    {"result", "30", "the field result: expected a text, found 30"},
    {"written", "null", "the field written: expected a list of texts, found null"},
    {"exception", "5", "the field exception: expected a text, found 5"},
    {"exception", "", "expected the field exception"},
};

INSTANTIATE_TEST_SUITE_P(Recordings, BadFields, testing::ValuesIn(kFields));

TEST_F(Recordings, AreRefusedHoweverDeepTheyAre) {
  const std::string deep = std::string(200000, '[') + std::string(200000, ']');
  EXPECT_EQ(problem(kHeader + line("result", deep)),
            path + ":2: expected a line of a recording; the field result: expected a text, found an array");
}

TEST_F(Recordings, AreReportedWithTheLeastTheMedianAndTheMost) {
  std::string text = kHeader;
  for (const char* time : {"9", "1", "4", "2", "3"}) {
    std::string call = line("duration", time);
    text += call.replace(call.find("\"call\":1"), 8, std::string("\"call\":") + time);
  }
  std::ostringstream shown;
  report(Recording::read(file(text)), shown);
  EXPECT_NE(shown.str().find("       5       1       3       9       9       9\n"), std::string::npos)
      << shown.str();
}

TEST_F(Recordings, AreReportedForPeopleWithoutSecrets) {
  file(
      kHeader + line("call", "2") +
      R"({"call":3,"time":0,"duration":7,"thread":"assistant","direction":"down","adapter":"VornEMPAdapterControl","operation":"login","interface":"VornEMPAdapterIF","slot":3,"inside":0,"arguments":["KEEP-THIS","ada","true","1ms","x"],"result":"true","written":[],"exception":null})"
      "\n" +
      R"({"call":4,"time":0,"duration":9,"thread":"assistant","direction":"up","adapter":"VornDeviceInfo","operation":"notifyVolumeChanged","interface":"DeviceInfo","slot":41,"inside":2,"arguments":["3"],"result":"","written":[],"exception":"\u001b[2J KEEP-THIS"})"
      "\n" +
      "{");
  std::ostringstream shown, plain;
  Recorded recorded = Recording::read(path);
  report(recorded, plain);
  recorded.mask();
  report(recorded, shown);
  EXPECT_EQ(
      shown.str(),
      path +
          ":5: left out, the line is cut\n"
          "assistant          firmware\n"
          "    |----------------->|  VornDeviceInfo.getVolume = 30\n"
          "    |----------------->|  VornEMPAdapterControl.login ******** ada true 1ms x = true\n"
          "    |<-----------------|      VornDeviceInfo.notifyVolumeChanged 3 = threw ********\n"
          "\n"
          "Microseconds                                                                   calls   least  median    90 %    99 %    most\n"
          "down  VornDeviceInfo.getVolume                                                     1       5       5       5       5       5\n"
          "down  VornEMPAdapterControl.login                                                  1       7       7       7       7       7\n"
          "up    VornDeviceInfo.notifyVolumeChanged                                           1       9       9       9       9       9\n");
  EXPECT_NE(plain.str().find("threw \\x1b[2J KEEP-THIS\n"), std::string::npos) << plain.str();
}

}  // namespace
