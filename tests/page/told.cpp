// What the events of vorn-speaker serve tell, line by line.

#include <algorithm>
#include <sstream>

#include "serving.h"

namespace {

class Telling : public Serving {
 protected:
  static std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != text.npos; at += part.size()) ++found;
    return found;
  }

  /// The line that holds the text; the first one.
  static std::string lineWith(const std::string& text, const std::string& part) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      if (has(line, part)) return line;
    }
    return "no line with " + part + " in\n" + text;
  }

  /// A number that stands behind a name.
  static long number(const std::string& text, const std::string& name) {
    const std::size_t at = text.find("\"" + name + "\":");
    return at == text.npos ? -1 : std::atol(text.c_str() + at + name.size() + 3);
  }

  static long entries(const std::string& folder) {
    return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
  }

  /// The speaker of a server.
  static std::string speakerOf(const Program& program) {
    const std::string tasks = "/proc/" + std::to_string(program.process()) + "/task";
    std::string child;
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
      std::ifstream(task.path() / "children") >> child;
      if (!child.empty()) break;
    }
    return "/proc/" + child;
  }
};

TEST_F(Telling, BeginsWithTheSpeakerAndItsDevice) {
  Program program({});
  const std::string all = told(Address(program.address()), "\"device\"");
  EXPECT_TRUE(has(all, "data: {\"recording\":\"vorn-speaker\",\"version\":2,")) << all;
  EXPECT_TRUE(has(all, R"(data: {"device":{"volume":30,"muted":false,"network":true,"locale":"en-US"}})"
                       "\n"))
      << all;
}

TEST_F(Telling, HoldsHowLoudSoundIsInThePlaceOfItsSamples) {
  Program program({});
  const Address address(program.address());
  post(address, "statement", "firmware VornAudioIn.sendAudioData [3, -4, 0]");
  const std::string line = lineWith(told(address, "\"played\""), "\"operation\":\"sendAudioData\"");
  EXPECT_TRUE(has(line, R"("arguments":["[]"],)") && has(line, R"("samples":3,"peak":4,"level":2,)")) << line;
}

TEST_F(Telling, HoldsTheResultForEitherSide) {
  Program program({});
  const Address address(program.address());
  post(address, "statement", "firmware VornOOBE.getAlexaAuthStatus");
  EXPECT_TRUE(has(told(address, "\"played\""), R"("problem":null,"result":"AUTHORIZED")"));
}

TEST_F(Telling, GivesTraceLinesToTheOperationThatLeftThem) {
  Program program({"--watchdog", "0"});
  const Address address(program.address());
  post(address, "statement", "delay VornAudioIn.sendAudioData 1000s");
  post(address, "statement", "assistant VornAudioIn.startStreamingAudioData");
  told(address, "{\"open\":{");
  post(address, "statement", "assistant VornAudioIn.isMicrophoneAvailable");
  const std::string all = told(address, "\"id\":3");
  EXPECT_FALSE(has(lineWith(all, "\"operation\":\"isMicrophoneAvailable\""), "\"trace\"")) << all;
}

TEST_F(Telling, FindsTheTraceOfACallThoughTheFileWasEmptied) {
  Program program({});
  const Address address(program.address());
  const auto send = [&](const std::string& id) {
    post(address, "statement", "assistant VornAppMessaging.sendAppMessage phone ping 1");
    return count(told(address, "\"id\":" + id), "\"trace\":[");
  };
  send("1");
  const std::size_t before = send("2");
  std::filesystem::resize_file("/tmp/xAppLog.txt", 0);
  EXPECT_GT(send("3"), before);
}

TEST_F(Telling, MasksOfATraceLineWhatIsSecretAndTheWholeWhereASecretComesBack) {
  Program program({});
  const Address address(program.address());
  post(address, "statement", "assistant VornEMPAdapterControl.login hunter2hunter2 ada true 1s music");
  post(address, "statement", "assistant VornAppMessaging.sendAppMessage phone hunter2hunter2 1");
  const std::string all = told(address, "\"id\":2");
  EXPECT_FALSE(has(all, "hunter2hunter2")) << all;
  EXPECT_TRUE(has(lineWith(all, "\"operation\":\"login\""), "accessToken: ********, userName: ada")) << all;
  EXPECT_TRUE(has(lineWith(all, "\"operation\":\"SendMessageToxApp\""), "\"trace\":[\"********\"]")) << all;
}

TEST_F(Telling, HoldsOnceASecondWhatTheProcessTakes) {
  Program program({});
  const std::string line = lineWith(told(Address(program.address()), "\"process\""), "\"process\"");
  const std::string speaker = speakerOf(program);
  long pages = 0, resident = 0;
  std::ifstream(speaker + "/statm") >> pages >> resident;
  const long memory = resident * sysconf(_SC_PAGESIZE);
  EXPECT_TRUE(number(line, "memory") > memory / 2 && number(line, "memory") < memory * 2) << line;
  EXPECT_EQ(number(line, "threads"), entries(speaker + "/task")) << line;
  // It opens a folder to count them.
  EXPECT_EQ(number(line, "descriptors"), entries(speaker + "/fd") + 1) << line;
}

TEST_F(Telling, SaysOnceThatACallTakesLongAndWhoWaits) {
  Program program({"--watchdog", "0"});
  const Address address(program.address());
  post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
  post(address, "statement", "together 2 VornDeviceInfo.getVolume");
  told(address, "\"waiting\"");
  // Looked at four times between two of these.
  const std::string all = events(address, [](const std::string& text) {
    const std::size_t waiting = text.find("\"waiting\"");
    return waiting != text.npos && count(text.substr(waiting), "\"process\"") == 2;
  });
  EXPECT_EQ(count(all, "\"waiting\""), 1U) << all;
  EXPECT_EQ(count(all, "{\"open\":{"), 1U) << all;
  post(address, "statement", "restore VornDeviceInfo.getVolume");
  told(address, "{\"waiting\":[]}");
}

TEST_F(Telling, RefusesAStatementBehindAThousandThatWait) {
  Program program({"--watchdog", "0"});
  const Address address(program.address());
  post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  told(address, "\"open\"");
  for (int i = 0; i < 1001; ++i) post(address, "statement", "expect 30");
  const std::string all = told(address, "\"id\":1003");
  EXPECT_TRUE(has(lineWith(all, "\"id\":1003"),
                  R"("problem":"too many statements wait for a call that is under way","result":"")"))
      << all;
  EXPECT_FALSE(has(all, "\"id\":1002"));
  post(address, "statement", "restore VornDeviceInfo.getVolume");
  EXPECT_TRUE(has(told(address, "\"id\":1002"), "\"id\":1002"));
}

TEST_F(Telling, PlaysADisturbanceWhileACallIsUnderWay) {
  Program program({"--watchdog", "0"});
  const Address address(program.address());
  post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  told(address, "\"open\"");
  post(address, "statement", "fail VornDeviceInfo.getMuteStatus broken");
  const std::string all = told(address, "\"id\":3");
  EXPECT_TRUE(has(all, "\"id\":3") && !has(all, "\"id\":2")) << all;
}

}  // namespace
