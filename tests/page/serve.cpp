// vorn-speaker serve, asked as a browser asks it.

#include <linux/capability.h>
#include <sys/prctl.h>

#include <memory>
#include <thread>
#include <tuple>

#include "serving.h"

namespace {

constexpr char kHeader[] = "{\"recording\":\"vorn-speaker\",\"version\":1}\n";

std::string call(int number, const std::string& arguments) {
  return "{\"call\":" + std::to_string(number) +
         R"(,"time":5,"duration":1,"thread":"assistant","direction":"down","adapter":"VornDeviceInfo",)" +
         R"("operation":"setSystemSetting","interface":"VornDALImplIF","slot":23,"inside":0,"arguments":)" +
         arguments + R"(,"result":"true","written":[],"exception":null})" + "\n";
}

TEST_F(Serving, PrintsOneLineAndEndsWhenItIsInterrupted) {
  Program program({});
  EXPECT_EQ(program.address().rfind("http://127.0.0.1:", 0), 0U);
  EXPECT_EQ(program.end(), 0);
  EXPECT_EQ(Program::errors(), "");
}

TEST_F(Serving, GivesThePageAndItsParts) {
  Program program({});
  const Address address(program.address());
  EXPECT_TRUE(has(get(address, ""), "<title>vorn-speaker</title>"));
  for (const char* part :
       {"main.js", "page.css", "operations", "morning.scenario", "headers/VornDeviceInfo.h"})
    EXPECT_TRUE(has(get(address, part), "HTTP/1.1 200")) << part;
  const std::pair<const char*, const char*> types[] = {
      {"", "text/html; charset=utf-8"},
      {"main.js", "text/javascript; charset=utf-8"},
      {"page.css", "text/css; charset=utf-8"},
      {"icon.svg", "image/svg+xml"},
      {"headers/VornDeviceInfo.h", "text/plain; charset=utf-8"}};
  for (const auto& [part, type] : types)
    EXPECT_TRUE(has(get(address, part), std::string("\r\nContent-Type: ") + type + "\r\n")) << part;
  for (const char* part : {"../device.toml", "nothing", "headers/../../device.toml", "headers"})
    EXPECT_FALSE(has(get(address, part), "HTTP/1.1 200")) << part;
}

TEST_F(Serving, PlaysAStatementAndTellsEveryPage) {
  Program program({});
  const Address address(program.address());
  post(address, "statement", "assistant VornDeviceCapabilities.onSetVolume 41");
  for (int page = 0; page < 2; ++page) {
    const std::string all = told(address, "\"played\"");
    EXPECT_TRUE(has(all, R"("operation":"notifyVolumeChanged")")) << all;
    EXPECT_TRUE(has(all, R"("arguments":["41"],"result":"true volume 41")")) << all;
  }
}

TEST_F(Serving, TellsWhatIsWrongWithAStatement) {
  Program program({});
  const Address address(program.address());
  EXPECT_TRUE(has(post(address, "statement", "assistant VornDeviceInfo.getVolum"), "did you mean"));
  EXPECT_TRUE(
      has(post(address, "statement", "assistant VornDeviceInfo.getVolume\nremove all"), "expected one line"));
  EXPECT_TRUE(has(post(address, "scenario", "expect 1\nbogus\nexpect"), "scenario:2:1:"));
  const std::string volume = "assistant VornDeviceInfo.getVolume";
  const std::tuple<std::string, const char*, const char*> refused[] = {
      {volume + " more", "HTTP/1.1 400 ", "\r\n\r\ncolumn 36: expected the end of the line"},
      {std::string(volume.c_str(), volume.size() + 1), "HTTP/1.1 400 ", "\r\n\r\nexpected one line\n"},
      {"# a remark", "HTTP/1.1 400 ", "\r\n\r\nexpected a statement\n"},
      {volume + std::string((1 << 16) + 1 - volume.size(), ' '), "HTTP/1.1 413 ",
       "\r\n\r\nA statement has 65536 characters at most.\n"}};
  for (const auto& [statement, status, problem] : refused) {
    const std::string answer = post(address, "statement", statement);
    EXPECT_TRUE(has(answer, status) && has(answer, problem)) << answer;
  }
  EXPECT_TRUE(
      has(post(address, "statement", volume + std::string((1 << 16) - volume.size(), ' ')), "{\"id\":1}"));
}

TEST_F(Serving, KnowsNothingOfOtherNames) {
  Program program({});
  const Address address(program.address());
  told(address, "\"device\"");
  EXPECT_TRUE(has(post(address, "nothing", ""), "HTTP/1.1 404"));
  EXPECT_TRUE(has(post(address, "statement", "assistant VornDeviceInfo.getVolume"), "\"id\":1"));
  EXPECT_TRUE(has(told(address, "\"played\""), "\"result\":\"30\"")) << "it was not started anew";
}

TEST_F(Serving, ListsTheOperationsForThePage) {
  Program program({});
  const std::string list = get(Address(program.address()), "operations");
  for (
      const char* const part :
      {R"({"caller":"firmware","adapter":"VornAppMessaging","operation":"SendMessageToxApp","locked":true,)",
       R"({"caller":"assistant","adapter":"VornGUIOutput","operation":"clearGUICard","locked":true,"parameters":[]})",
       R"({"caller":"assistant","adapter":"VornAlexaState","operation":"notifyMainAppInitialized","locked":false,)",
       R"({"name":"accessToken","type":"a text","optional":false,"secret":true})",
       R"({"name":"card","type":"a text","optional":false,"secret":false})", R"("optional":true)"})
    EXPECT_TRUE(has(list, part)) << part;
}

TEST_F(Serving, TellsAnExpectationThatIsNotMet) {
  Program program({});
  const Address address(program.address());
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  post(address, "statement", "expect 99");
  EXPECT_TRUE(has(told(address, "\"id\":2"), "expected the result 99, saw 30"));
}

TEST_F(Serving, KnowsWhichLinesOfAScenarioAreStatements) {
  Program program({});
  EXPECT_TRUE(has(post(Address(program.address()), "scenario", "# first\n\nexpect 1\nsection x"), "[3,4]"));
}

TEST_F(Serving, TellsTheTraceLineOfACall) {
  Program program({});
  const Address address(program.address());
  post(address, "statement", "assistant VornAppMessaging.sendAppMessage phone ping 1");
  EXPECT_TRUE(has(told(address, "\"played\""), "\"trace\":["));
}

TEST_F(Serving, EndsWhenItsTerminalIsGone) {
  Program program({});
  EXPECT_EQ(program.end(SIGHUP), 0);
}

TEST_F(Serving, LeavesNoSpeakerBehindWhenItIsKilled) {
  const std::string state = "/tmp/speaker/state";
  {
    Program program({"--watchdog", "0"}, state);
    const Address address(program.address());
    post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
    post(address, "statement", "assistant VornDeviceInfo.getVolume");
    told(address, "\"open\"");
    EXPECT_EQ(program.end(SIGKILL), -SIGKILL);
  }
  // Two speakers may not use one folder.
  EXPECT_TRUE(eventually([&] { return !Program({}, state).address().empty(); }));
}

TEST_F(Serving, TellsACallThatTakesLongWhileItRunsAndEndsItWhenAsked) {
  Program program({"--watchdog", "0"});
  const Address address(program.address());
  post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  EXPECT_TRUE(has(told(address, "\"open\""), "{\"open\":{\"call\":1,"));
  post(address, "statement", "restore VornDeviceInfo.getVolume");
  EXPECT_TRUE(has(told(address, "\"id\":2"), "\"result\":\"30\""));
}

TEST_F(Serving, TellsWhoWaitsForALockUntilItIsHad) {
  Program program({"--watchdog", "0"});
  const Address address(program.address());
  post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
  post(address, "statement", "together 2 VornDeviceInfo.getVolume");
  const std::string waiting = told(address, "\"waiting\"");
  EXPECT_TRUE(has(waiting, "\"operation\":\"VornDeviceInfo.getVolume\"") &&
              has(waiting, "\"thread\":\"assistant "))
      << waiting;
  post(address, "statement", "restore VornDeviceInfo.getVolume");
  told(address, "{\"waiting\":[]}");
}

TEST_F(Serving, EndsWhileACallIsUnderWay) {
  Program program({"--watchdog", "0"});
  const Address address(program.address());
  post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  told(address, "\"open\"");
  EXPECT_EQ(program.end(SIGTERM), 0);
}

TEST_F(Serving, TellsOfAHostThatBlocksAndStartsAgain) {
  Program program({"--watchdog", "1"});
  const Address address(program.address());
  post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  const std::string all = told(address, "\"ended\"");
  EXPECT_TRUE(has(all, "No answer on the thread assistant within 1 s.")) << all;
  EXPECT_TRUE(has(all, "{\"ended\":3}") && has(all, "{\"report\":\"")) << all;
  EXPECT_TRUE(has(post(address, "statement", "assistant VornDeviceInfo.getVolume"), "HTTP/1.1 503"));
  post(address, "restart", "");
  told(address, "\"device\"");
  const auto plays = [&] {
    return has(post(address, "statement", "assistant VornDeviceInfo.getVolume"), "\"id\"");
  };
  EXPECT_TRUE(eventually(plays));
  const std::string anew = told(address, "\"played\"");
  EXPECT_TRUE(has(anew, "\"result\":\"30\""));
  EXPECT_FALSE(has(anew, "\"ended\"")) << "of the life before nothing is told any more";
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // with which locks are not watched
TEST_F(Serving, TellsWhatTheDoctorFindsWhenThreadsWaitForALock) {
  Program program({"--watchdog", "0"});
  const Address address(program.address());
  post(address, "statement", "delay VornDeviceInfo.getVolume 1000s");
  post(address, "statement", "together 2 VornDeviceInfo.getVolume");
  EXPECT_TRUE(has(told(address, "\"finding\""), "VornDeviceInfo"));
}

TEST_F(Serving, TellsHowAHostOfOnesOwnCrashed) {
  setenv("VORN_BAD", "call abort", 1);
  Program program({"--host", VORN_BAD_HOST});
  unsetenv("VORN_BAD");
  const Address address(program.address());
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  const std::string all = told(address, "\"ended\"");
  EXPECT_TRUE(has(all, "The host crashed: Aborted")) << all;
  EXPECT_TRUE(has(all, "inside VornDeviceInfo.getVolume")) << all;
}
#endif

TEST_F(Serving, PlaysAHostOfOnesOwn) {
  Program program({"--host", VORN_BAD_HOST});
  const Address address(program.address());
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  const std::string all = told(address, "\"played\"");
  EXPECT_TRUE(has(all, "\"result\":\"7\""));
  EXPECT_TRUE(has(all, "{\"device\":{\"host\":\"" VORN_BAD_HOST "\"}}")) << all;  // no more is known of it
}

TEST_F(Serving, MasksSecrets) {
  Program program({});
  const Address address(program.address());
  post(address, "statement", "assistant VornEMPAdapterControl.login hunter2hunter2 ada true 1s music");
  const std::string all = told(address, "\"played\"");
  EXPECT_TRUE(has(all, "login ******** ada")) << all;
  EXPECT_FALSE(has(all, "hunter2hunter2")) << all;
}

TEST_F(Serving, SaysNothingThatATerminalObeys) {
  setenv("VORN_BAD", "call complain-raw", 1);
  Program program({"--host", VORN_BAD_HOST});
  unsetenv("VORN_BAD");
  const Address address(program.address());
  post(address, "statement", "assistant VornDeviceInfo.getVolume");
  told(address, "{\"report\":\"the host");
  EXPECT_EQ(Program::errors(), "the host\\x1b[2J complains\n");
}

TEST_F(Serving, TellsSecretsOfARecordingWhenAsked) {
  const std::string recording = file("own.jsonl", kHeader + call(1, R"(["wifiPassword","hunter2hunter2"])"));
  Program program({"--secrets", "--watch", recording});
  EXPECT_TRUE(has(told(Address(program.address()), "\"call\":1,"), R"(["wifiPassword","hunter2hunter2"])"));
}

TEST_F(Serving, ShowsARecordingThatGrows) {
  const std::string recording = file("growing.jsonl", kHeader + call(1, R"(["a","b"])"));
  Program program({"--watch", recording});
  const Address address(program.address());
  EXPECT_TRUE(has(told(address, "\"call\":1,"), "{\"watching\":\"/tmp/speaker/growing.jsonl\"}"));
  std::ofstream(recording, std::ios::app) << call(2, R"(["a","c"])");
  EXPECT_TRUE(has(told(address, "\"call\":2,"), "\"call\":2,"));
  EXPECT_TRUE(has(post(address, "statement", "assistant VornDeviceInfo.getVolume"), "HTTP/1.1 409"));
}

TEST_F(Serving, MasksWhatARecordingHoldsAndLeavesOutWhatIsNoLine) {
  const std::string deep(100000, '[');
  Program program(
      {"--watch", file("foreign.jsonl", kHeader + call(1, R"(["wifiPassword","hunter2hunter2"])") + deep +
                                            "\n" + call(2, R"(["wifi\"","\""])") + call(3, "7"))});
  const std::string all = told(Address(program.address()), "\"call\":3,");
  EXPECT_TRUE(has(all, R"(["wifiPassword","********"])")) << all;
  EXPECT_FALSE(has(all, "hunter2hunter2"));
  EXPECT_TRUE(has(all, "{\"leftOut\":1}"));
}

TEST_F(Serving, BeginsAnewWithAnotherRecordingOfTheName) {
  const std::string recording = file("a.jsonl", kHeader + call(1, R"(["a","b"])"));
  Program program({"--watch", recording});
  const Address address(program.address());
  told(address, "\"call\":1,");
  std::filesystem::rename(file("b.jsonl", kHeader + call(7, R"(["a","b"])")), recording);
  told(address, "\"call\":7,");
  EXPECT_FALSE(has(told(address, "\"call\":7,"), "\"call\":1,"));
}

struct Refusal {
  std::vector<std::string> arguments;
  std::string words;
  std::string state = "/tmp/speaker/state";
};

TEST_F(Serving, RefusesWithAReasonWhatCannotBe) {
  const std::string taken = "/tmp/speaker/taken";
  Program other({}, taken);
  const std::string port = std::to_string(Address(other.address()).port);
  const Refusal all[] = {
      {{"--port", port}, "Address already in use"},
      {{"--port", "70000"}, "--port"},
      {{"--watch", "/tmp/speaker/nothing"}, "cannot be read: No such file"},
      {{"--watch", file("scenario", "expect 1\n")}, "is no recording"},
      {{"--watch", "/tmp/speaker"}, "/tmp/speaker"},
      {{"--device", "/tmp/speaker/nothing"}, "nothing"},
      {{"--host", "/tmp/speaker/nothing"}, "nothing"},
      {{}, "another vorn-speaker uses it", taken},
      {{}, "is no folder", file("file", "")},
  };
  for (const Refusal& refusal : all) {
    Program program(refusal.arguments, refusal.state);
    EXPECT_EQ(program.address(), "");
    EXPECT_EQ(program.wait(), 2);
    EXPECT_TRUE(has(Program::errors(), refusal.words)) << refusal.words << " in " << Program::errors();
  }
}

TEST_F(Serving, RefusesAPortThatItMayNotTake) {
  int first = 1024;
  std::ifstream("/proc/sys/net/ipv4/ip_unprivileged_port_start") >> first;
  if (first <= 80) GTEST_SKIP() << "here everybody may take port 80";
  // Who may, gives that up: this thread alone, and what it starts.
  std::thread([] {
    prctl(PR_CAPBSET_DROP, CAP_NET_BIND_SERVICE);
    Program program({"--port", "80"});
    EXPECT_EQ(program.address(), "");
    EXPECT_EQ(program.wait(), 2);
  }).join();
  EXPECT_EQ(Program::errors(),
            "vorn-speaker: port 80 of 127.0.0.1: Permission denied; name another with --port, or none for a "
            "free one\n");
}

}  // namespace
