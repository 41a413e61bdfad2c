// What a recording of vorn-capture holds.

#include <algorithm>
#include <ctime>
#include <iostream>
#include <numeric>
#include <regex>

#include "capture/capture_program.h"

namespace {

class Recorded : public CaptureProgram {
 protected:
  /// How many calls are counted as left out.
  long leftOut() {
    long all = 0;
    for (const Json& line : linesWith("leftOut")) all += line["leftOut"].get<long>();
    return all;
  }
};

TEST_F(Recorded, BeginWithTheirVersionProgramAndWriter) {
  const std::time_t before = std::time(nullptr);
  const std::string process =
      run("echo $$; exec " VORN_CAPTURE_PROGRAM " -o " + m_path + " " VORN_CALLER " plain");
  const std::time_t after = std::time(nullptr);
  const Json header = Json::parse(content(m_path).substr(0, content(m_path).find('\n')));
  EXPECT_EQ(header["recording"], "vorn-speaker");
  EXPECT_EQ(header["version"], 2);
  EXPECT_EQ(header["writer"], "vorn-capture " VORN_VERSION);
  EXPECT_TRUE(has(header["program"], "capture_caller"));
  EXPECT_EQ(header["process"].get<int>(), std::stoi(process));
  std::tm started = {};
  const std::string text = header["started"];
  const char* const rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &started);
  ASSERT_TRUE(rest && std::regex_match(rest, std::regex("[.][0-9]{6}Z"))) << text;
  EXPECT_TRUE(before <= timegm(&started) && timegm(&started) <= after) << text;
}

TEST_F(Recorded, TellACallInFull) {
  capture("plain");
  const std::vector<Json> found = calls("getSystemSetting");
  ASSERT_EQ(found.size(), 1U);
  Json call = found[0];
  for (const char* changing : {"call", "time", "duration", "host", "thread"}) call.erase(changing);
  EXPECT_EQ(call,
            Json::parse(R"({"direction":"down","adapter":"VornDeviceInfo","operation":"getSystemSetting",
      "interface":"VornDALImplIF","slot":22,"inside":0,"arguments":["mode","\"\""],"result":"true",
      "written":["value=\"mode is set\""],"exception":null,"threadNumber":1,"waited":0,"reached":true})"));
}

TEST_F(Recorded, HoldTheLifeOfAdapters) {
  capture("plain");
  const std::vector<Json> created = calls("CreateInstance");
  ASSERT_EQ(created.size(), 5U);
  EXPECT_EQ(created[0]["direction"], "life");
  EXPECT_EQ(created[0]["arguments"], Json::parse(R"(["object"])"));
}

TEST_F(Recorded, TellWhichExceptionEndedACall) {
  capture("throws");
  EXPECT_EQ(m_status, 0);
  const std::vector<Json> found = calls("getSystemSetting");
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0]["exception"], "the host cannot");
  EXPECT_EQ(found[1]["exception"], "no std::exception");
}

TEST_F(Recorded, TellWhatTheHostNeverSaw) {
  capture("late");
  const std::vector<Json> found = calls("getVolume");
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0]["reached"], true);
  EXPECT_EQ(found[1]["reached"], false);
  EXPECT_TRUE(found[1]["host"].is_null());
}

TEST_F(Recorded, TellThatNoAssistantSideWasThere) {
  capture("secrets");
  const Json call = calls("notifySystemSettingChanged").at(0);
  EXPECT_TRUE(call["reached"] == false && call["host"].is_null()) << call;
}

TEST_F(Recorded, TellHowLongALockWasWaitedFor) {
  capture("waits");
  const Json first = calls("renderGUICard").at(0), second = calls("clearGUICard").at(0);
  const auto sum = [](const Json& call, const std::vector<const char*>& fields) {
    return std::accumulate(fields.begin(), fields.end(), 0L,
                           [&](long all, const char* field) { return all + call[field].get<long>(); });
  };
  EXPECT_GT(second["waited"], 0);
  EXPECT_GE(second["duration"].get<long>(), second["waited"].get<long>());
  // The second is let in when the first has left; each figure is cut to whole microseconds.
  EXPECT_GE(sum(second, {"time", "waited"}) + 2, sum(first, {"time", "waited", "host"}));
}

TEST_F(Recorded, HoldWhatIsCalledThroughATable) {
  capture("container");
  EXPECT_EQ(m_status, 0);
  const std::vector<Json> sent = calls("sendData");
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0]["arguments"], Json::parse(R"(["object","3"])"));
}

TEST_F(Recorded, TellSoundInOneLineASecond) {
  const long took = std::stol(capture("audio"));
  const std::vector<Json> sound = linesWith("sound");
  ASSERT_EQ(sound.size(), 1U);
  EXPECT_TRUE(sound[0]["gap"] >= 1000 && sound[0]["gap"] <= took) << sound[0] << " in " << took;
  const long created = calls("CreateInstance").back()["time"], began = sound[0]["time"];
  EXPECT_TRUE(began >= created && began < created + 60000000) << began << " after " << created;
  EXPECT_EQ(sound[0]["blocks"], 50);
  EXPECT_EQ(sound[0]["samples"], 50 * 160);
  EXPECT_EQ(sound[0]["peak"], 1000);
  EXPECT_EQ(sound[0]["level"], 1000);
  EXPECT_TRUE(calls("sendAudioData").empty());
}

TEST_F(Recorded, KeepTheSoundWhenAsked) {
  const std::string wave = std::string(kFolder) + "/sound.wav";
  capture("audio", "--audio " + wave);
  const std::string bytes = content(wave);
  ASSERT_EQ(bytes.size(), 44U + 2 * 50 * 160);
  // The sizes, the form of whole numbers, one channel, 16,000 samples of two bytes a second.
  EXPECT_EQ(
      bytes.substr(0, 44),
      std::string(
          "RIFF\xa4\x3e\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x80\x3e\0\0\0\x7d\0\0\2\0\x10\0data\x80\x3e\0\0", 44));
  EXPECT_EQ(bytes.substr(44, 4), std::string("\x18\xfc\xe8\x03", 4));
  EXPECT_EQ(std::filesystem::status(wave).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(Recorded, KeepNoSoundWhereAFileStandsOrNoneCanStand) {
  const std::string there = file("sound.wav", "song");
  for (const std::string& path : {there, std::string(kFolder) + "/none/sound.wav"}) {
    const std::string said =
        run("VORN_CAPTURE_AUDIO=" + path + " LD_PRELOAD=" VORN_CAPTURE_LIBRARY " VORN_CAPTURE=" + m_path +
            " " VORN_CALLER " audio");
    EXPECT_TRUE(has(said, "libvorn-capture.so: " + path + ": ") && has(said, "; the sound is not kept\n"));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 2) << said;
    EXPECT_EQ(linesWith("sound").size(), 1U);
  }
  EXPECT_EQ(content(there), "song");
}

TEST_F(Recorded, CountSoundThatIsTooLongForARing) {
  capture("audio 200000", "--audio " + std::string(kFolder) + "/sound.wav");
  EXPECT_EQ(leftOut(), 50);
}

TEST_F(Recorded, CountAnAnswerThatIsTooLongForARing) {
  capture("big");
  EXPECT_EQ(leftOut(), 1);
  const std::vector<Json> found = calls("getSystemSetting");
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0]["arguments"][0], "small");
}

TEST_F(Recorded, CarryEveryCallThatTheWriterKeepsUpWith) {
  capture("steps " + m_path);
  EXPECT_EQ(m_status, 0);
  EXPECT_EQ(leftOut(), 0);
  EXPECT_EQ(calls("readKeyValue").size(), 15U * 200);
}

TEST_F(Recorded, TakeNoMemoryForThreadsThatAreGone) {
#ifdef VORN_EMULATED
  GTEST_SKIP() << "what a process has of memory is told for the emulator";
#endif
  capture("passing", "--keep 64K");
  EXPECT_EQ(m_status, 0);
}

TEST_F(Recorded, MaskSecretsAndKnowThemAgain) {
  capture("secrets");
  EXPECT_EQ(m_status, 0);
  const std::string all = content(m_path);
  for (const char* secret :
       {"hunter-2-hunter", "hunter-3-hunter", "key-of-the-api", "token-of-access", "13572468"})
    EXPECT_EQ(all.find(secret), std::string::npos) << secret;
  EXPECT_EQ(calls("setSystemSetting").at(0)["arguments"], Json::parse(R"(["wifi_password","********"])"));
  EXPECT_EQ(calls("setSystemSetting").at(1)["exception"], "********");
  EXPECT_EQ(calls("writeKeyValue").at(0)["arguments"], Json::parse(R"(["{apiKey=********, city=Oslo}"])"));
  EXPECT_EQ(calls("removeKeyValue").at(0)["arguments"], Json::parse(R"(["********"])"));
}

TEST_F(Recorded, GoOnWhenTheProgramClosesEveryDescriptor) {
#ifdef __SANITIZE_THREAD__
  GTEST_SKIP()
      << "the program closes on purpose what another thread uses, and the thread sanitizer tells that";
#endif
  const std::string precious = std::string(kFolder) + "/precious";
  EXPECT_EQ(capture("closes " + m_path + " " + precious), "");
  EXPECT_EQ(content(precious), "precious");
  EXPECT_EQ(calls("getSystemSetting").size(), 2U);
}

TEST_F(Recorded, CountWhatADiskHasNoRoomForAndStayWhole) {
  capture("full " + m_path);
  EXPECT_EQ(m_status, 0);
  EXPECT_EQ(calls("getSystemSetting").back()["arguments"][0], "last");
  EXPECT_EQ(leftOut() + static_cast<long>(linesWith("operation").size()), 5 + 2 * 52);
}

TEST_F(Recorded, CountWhatIsTooLongForARing) {
  capture("big 400000");
  EXPECT_EQ(calls("getSystemSetting").size(), 1U);
  ASSERT_EQ(linesWith("leftOut").size(), 1U);
  EXPECT_EQ(linesWith("leftOut")[0]["leftOut"], 1);
  capture("big 400000", "--ring 4M");
  EXPECT_EQ(calls("getSystemSetting").size(), 2U);
}

TEST_F(Recorded, CarryEveryCallOfManyThreadsOrCountIt) {
  // Ten million calls, by hand: VORN_CALLS=1250000.
  const char* const asked = std::getenv("VORN_CALLS");
  const long threads = 8, each = asked ? std::atol(asked) : 20000;
  capture("many " + std::to_string(threads) + " " + std::to_string(each));
  ASSERT_EQ(m_status, 0);
  std::ifstream in(m_path, std::ios::binary);
  std::string line;
  std::getline(in, line);
  std::vector<std::vector<bool>> seen(static_cast<std::size_t>(threads),
                                      std::vector<bool>(static_cast<std::size_t>(each)));
  long kept = 0, leftOut = 0, others = 0;
  while (std::getline(in, line)) {
    const Json json = Json::parse(line, nullptr, false);
    ASSERT_FALSE(json.is_discarded()) << line;
    if (json.contains("leftOut")) leftOut += json["leftOut"].get<long>();
    if (!json.contains("operation") || json["operation"] != "readKeyValue") {
      others += json.contains("operation");
      continue;
    }
    const std::string key = json["arguments"][0];
    ASSERT_EQ(json["result"], "{" + key + "=kept}");
    auto place = seen.at(std::stoul(key)).begin() + std::stol(key.substr(key.find('.') + 1));
    ASSERT_FALSE(*place) << key << " stands twice";
    *place = true;
    ++kept;
  }
  std::cout << kept << " calls in the recording, " << leftOut << " counted as left out\n";
  EXPECT_EQ(kept + leftOut, threads * each + (6 - others));  // What creates adapters may be left out too.
}

TEST_F(Recorded, KeepTheNewestWhenTheirSizeIsLimited) {
  capture("many 1 20000", "--keep 256K --ring 64M");
  EXPECT_LE(std::filesystem::file_size(m_path), 256U << 10U);
  const std::vector<Json> found = calls("readKeyValue");
  ASSERT_GT(found.size(), 100U);
  EXPECT_EQ(found.back()["arguments"][0], "0.19999");
  EXPECT_EQ(leftOut() + static_cast<long>(linesWith("operation").size()), 20006);
}

}  // namespace
