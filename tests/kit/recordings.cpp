// Recordings that a team's own build or test writes, and tests that compare their calls with one that is kept.

#include <DeviceAbstractionLayer/DeviceInfo.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/GoldenRecording.h>
#include <vorn_testing/MemoryHost.h>
#include <vorn_testing/RecordingFile.h>
#include <vorn_testing/RecordingHost.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace {

using namespace vorn_testing;

/// A host with one call inside another, one that throws, one that writes through a reference, and a secret.
class Host : public NullHost {
 public:
  explicit Host(RecordingHost*& outside) : m_outside(outside) {}

  int getVolume() override { return volume; }
  std::pair<bool, std::string> onSetVolume(int value) override {
    m_outside->getVolume();
    return {true, std::to_string(value)};
  }
  std::string getTimezone() override { throw std::runtime_error("no \"clock\"\n"); }
  bool getSystemSetting(std::string key, std::string& value) override {
    value = key == "wifiPassword" ? "hunter22" : "on";
    return true;
  }
  std::string getConfigData(std::string) override { return "it is hunter22"; }

  int volume = 30;

 private:
  RecordingHost*& m_outside;
};

class Recordings : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::remove_all(kFolder);
    std::filesystem::create_directories(kFolder);
    unsetenv("VORN_UPDATE_RECORDINGS");
  }

  static std::string content(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  /// What is written of the calls that `act` makes.
  template <class Act>
  std::vector<RecordedCall> recorded(Act act) {
    RecordingFile file(m_path, m_recordingHost.recorder, "a \"test\"");
    act(m_recordingHost);
    file.close();
    return readRecording(m_path);
  }

  template <class Act>
  testing::AssertionResult matches(Act act) {
    const RecordedCalls calls(m_recordingHost.recorder);
    act(m_recordingHost);
    return matchesRecording(calls, m_path);
  }

  template <class Act>
  void keep(Act act) {
    setenv("VORN_UPDATE_RECORDINGS", "1", 1);
    ASSERT_TRUE(matches(act));
    unsetenv("VORN_UPDATE_RECORDINGS");
  }

  static std::string problem(const std::string& path) {
    try {
      RecordingFile(path, std::make_shared<Recorder>());
      return "it was written";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  static constexpr char kFolder[] = "/tmp/kit-recordings";
  const std::string m_path = std::string(kFolder) + "/one";
  RecordingHost* m_outside = &m_recordingHost;
  Host m_host{m_outside};
  RecordingHost m_recordingHost{m_host};
};

TEST_F(Recordings, HoldCallsInTheOrderInWhichTheyBeganWithWhatIsInside) {
  const auto calls = recorded([](RecordingHost& host) { host.onSetVolume(20); });
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0].text(), "VornDeviceCapabilities.onSetVolume 20 = true 20");
  EXPECT_EQ(calls[1].text() + std::to_string(calls[1].inside), "VornDeviceInfo.getVolume = 301");
}

TEST_F(Recordings, HoldPlaceAndThread) {
  const auto calls = recorded([](RecordingHost& host) {
    host.getVolume();
    std::thread([&] { host.getVolume(); }).join();
  });
  EXPECT_EQ(calls[0].interfaceName + " " + std::to_string(calls[0].slot) + " " + calls[0].direction,
            "VornDALImplIF 13 down");
  EXPECT_EQ(calls[0].threadNumber, 1);
  EXPECT_EQ(calls[1].threadNumber, 2);
}

TEST_F(Recordings, HoldExceptionsAndWhatIsWritten) {
  const auto calls = recorded([](RecordingHost& host) {
    EXPECT_THROW(host.getTimezone(), std::runtime_error);
    std::string value;
    host.getSystemSetting("a b", value);
  });
  EXPECT_EQ(calls[0].text(), "VornDeviceInfo.getTimezone = threw no \"clock\"\n");
  EXPECT_EQ(calls[1].text(), "VornDeviceInfo.getSystemSetting \"a b\" \"\" = true value=on");
}

TEST_F(Recordings, HoldWhatGoesUpAndToThePlayer) {
  const auto calls = recorded([](RecordingHost& host) {
    MemoryHost memory;
    RecordingHost player(memory);
    player.recorder = host.recorder;
    player.getEMPAdapter()->pause("p");
    FakeAssistant assistant(host.recorder);
    DeviceAbstractionLayer::DeviceInfo::getInstance()->notifyVolumeChanged(3);
  });
  ASSERT_EQ(calls.size(), 3U);
  EXPECT_EQ(calls[1].text() + " " + calls[1].interfaceName,
            "VornEMPAdapterControl.pause p = true VornEMPAdapterIF");
  EXPECT_EQ(calls[2].direction + " " + calls[2].text(),
            "up VornDeviceInfo.notifyVolumeChanged 3 = no result");
}

TEST_F(Recordings, MaskSecretsAndFindThemAgain) {
  recorded([](RecordingHost& host) {
    std::string value;
    host.getSystemSetting("wifiPassword", value);
    host.getConfigData("plain");
    host.writeKeyValue({{"apiToken", "hidden-1"}, {"city", "Oslo"}});
    host.setSystemSetting("psk", "hidden-2");
    host.removeKeyValue({"hidden-2"});
  });
  const std::string text = content(m_path);
  EXPECT_EQ(text.find("hunter22"), std::string::npos) << text;
  EXPECT_EQ(text.find("hidden"), std::string::npos) << text;
  EXPECT_NE(text.find("{apiToken=********, city=Oslo}"), std::string::npos) << text;
}

TEST_F(Recordings, AreOnTheDiskWhenACallHasReturned) {
  RecordingFile file(m_path, m_recordingHost.recorder);
  m_recordingHost.getVolume();
  EXPECT_EQ(readRecording(m_path).size(), 1U);
}

TEST_F(Recordings, AreForTheirOwnerOnly) {
  recorded([](RecordingHost&) {});
  struct stat there {};
  stat(m_path.c_str(), &there);
  EXPECT_EQ(there.st_mode & 0777U, 0600U);
}

TEST_F(Recordings, TakeThePlaceOfARecordingOnly) {
  recorded([](RecordingHost& host) { host.getVolume(); });
  EXPECT_TRUE(recorded([](RecordingHost&) {}).empty());
  std::ofstream(m_path) << "mine";
  EXPECT_EQ(problem(m_path), m_path + ": is there already and is no recording; choose another name");
  EXPECT_EQ(content(m_path), "mine");
}

TEST_F(Recordings, FollowNoLink) {
  std::ofstream(m_path).close();
  std::filesystem::create_symlink(m_path, std::string(kFolder) + "/link");
  EXPECT_EQ(problem(std::string(kFolder) + "/link"),
            std::string(kFolder) + "/link: cannot be written: it is a link");
}

TEST_F(Recordings, SayThatADiskIsFull) {
  RecordingFile file("/dev/full", m_recordingHost.recorder);
  EXPECT_THROW(
      try { file.close(); } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "/dev/full: cannot be written: No space left on device");
        throw;
      },
      std::runtime_error);
}

TEST_F(Recordings, GoOnWhereNothingIsKeptInMemory) {
  m_recordingHost.recorder->keepCalls(false);
  EXPECT_EQ(recorded([](RecordingHost& host) { host.onSetVolume(3); }).size(), 2U);
  EXPECT_TRUE(m_recordingHost.recorder->calls().empty());
}

TEST_F(Recordings, HoldCallsThatAHookFails) {
  m_recordingHost.recorder->onCall([](const Call&) { throw std::runtime_error("worn out"); });
  const auto calls = recorded([](RecordingHost& host) { EXPECT_THROW(host.open(), std::runtime_error); });
  EXPECT_EQ(calls.at(0).text(), "VornStorage.open = threw worn out");
}

TEST_F(Recordings, EndWithTheirFile) {
  recorded([](RecordingHost&) {});
  m_recordingHost.getVolume();
  EXPECT_TRUE(readRecording(m_path).empty());
}

TEST_F(Recordings, ThatAreKeptMatchTheSameCalls) {
  keep([](RecordingHost& host) { host.onSetVolume(20); });
  EXPECT_TRUE(matches([](RecordingHost& host) { host.onSetVolume(20); }));
}

TEST_F(Recordings, ThatAreKeptHoldNoTimesAndNoNamesOfThreads) {
  keep([](RecordingHost& host) { host.getVolume(); });
  EXPECT_EQ(
      content(m_path),
      "{\"recording\":\"vorn-speaker\",\"version\":2,\"writer\":\"vorn_testing\"}\n"
      "{\"call\":1,\"time\":0,\"duration\":0,\"thread\":\"\",\"threadNumber\":1,\"direction\":\"down\","
      "\"adapter\":\"VornDeviceInfo\",\"operation\":\"getVolume\",\"interface\":\"VornDALImplIF\",\"slot\":13,"
      "\"inside\":0,\"arguments\":[],\"result\":\"30\",\"written\":[],\"exception\":null,\"waited\":null,"
      "\"host\":0,\"reached\":true}\n");
}

TEST_F(Recordings, TellTheCallThatDiffersWithWhatCameBefore) {
  keep([](RecordingHost& host) { host.onSetVolume(20); });
  m_host.volume = 31;
  const testing::AssertionResult result = matches([](RecordingHost& host) { host.onSetVolume(20); });
  EXPECT_FALSE(result);
  EXPECT_EQ(std::string(result.message()),
            "the calls are not those of /tmp/kit-recordings/one\n"
            "  before    VornDeviceCapabilities.onSetVolume 20 = true 20\n"
            "  expected    VornDeviceInfo.getVolume = 30  (line 3)\n"
            "  actual      VornDeviceInfo.getVolume = 31\n"
            "VORN_UPDATE_RECORDINGS=1 in the environment writes the calls of the test there.");
}

TEST_F(Recordings, TellCallsThatAreMissingOrTooMany) {
  keep([](RecordingHost& host) { host.getVolume(); });
  EXPECT_NE(std::string(matches([](RecordingHost&) {}).message()).find("actual    no more calls"),
            std::string::npos);
  EXPECT_NE(std::string(matches([](RecordingHost& host) {
                          host.getVolume();
                          host.clear();
                        }).message())
                .find("expected  no more calls\n  actual    VornStorage.clear = false"),
            std::string::npos);
}

TEST_F(Recordings, MatchWhateverThreadCameFirst) {
  const auto inThread = [](auto act) { std::thread(act).join(); };
  keep([&](RecordingHost& host) {
    inThread([&] { host.getVolume(); });
    inThread([&] { host.clear(); });
  });
  EXPECT_TRUE(matches([&](RecordingHost& host) {
    inThread([&] { host.clear(); });
    inThread([&] { host.getVolume(); });
  }));
  EXPECT_FALSE(matches([&](RecordingHost& host) {
    host.getVolume();
    host.clear();
  }));
}

TEST_F(Recordings, ThatAreNotThereFailUnlessTheyAreToBeWritten) {
  const auto act = [](RecordingHost& host) { host.getVolume(); };
  EXPECT_NE(std::string(matches(act).message()).find("one: cannot be read: No such file or directory"),
            std::string::npos);
  keep(act);
  EXPECT_TRUE(matches(act));
}

TEST_F(Recordings, ThatAreKeptAreForWhoeverTheUmaskLetsIn) {
  const mode_t before = umask(0);
  keep([](RecordingHost& host) { host.getVolume(); });
  umask(before);
  struct stat status = {};
  ASSERT_EQ(stat(m_path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0666U);
}

TEST_F(Recordings, ThatMatchAreNotWrittenAnew) {
  recorded([](RecordingHost& host) { host.getVolume(); });
  const std::string before = content(m_path);
  keep([](RecordingHost& host) { host.getVolume(); });
  EXPECT_EQ(content(m_path), before);
}

TEST_F(Recordings, AreReadOnlyWhenTheyAreWhole) {
  const auto problem = [&](const std::string& text) {
    std::ofstream(m_path) << text;
    try {
      readRecording(m_path);
      return std::string("it was read");
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
  };
  const std::string head = "{\"recording\":\"vorn-speaker\",\"version\":2}\n";
  EXPECT_EQ(problem("{"), m_path + ":1: no JSON");
  EXPECT_EQ(problem(head + "{\"call\":1}\n"), m_path + ":2: expected the field time");
  EXPECT_EQ(problem(head + "{\"call\":18446744073709551616}\n"),
            m_path + ":2: the field call: the number 18446744073709551616 is too large");
  EXPECT_EQ(problem(head + "{\"note\":\"\\u00e9\\ud83d\\ude00\",\"time\":[{\"a\":[]}]}\n"), "it was read");
}

}  // namespace
