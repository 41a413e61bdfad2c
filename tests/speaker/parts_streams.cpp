// Streams between the assistant client and the firmware's players, and the file that they play to.

#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "device/Attachments.h"
#include "device/DataFolder.h"
#include "text/Files.h"

namespace {

using namespace vorn_speaker;
using VornDeviceAbstractionLayer::VornMediaPlayerFactory;
namespace fs = std::filesystem;

/// Keeps what it is told to play.
class Ear : public Sink {
 public:
  std::vector<Sound> sounds;
  bool full = false;

 private:
  void take(const Sound& sound) override {
    if (full) throw std::runtime_error("the ear is full");
    sounds.push_back(sound);
  }
};

class Streams : public testing::Test {
 protected:
  Streams() {
    m_recorder->onReturn([this](const vorn_testing::Call& call) {
      m_calls += call.target + "." + call.operation;
      for (const std::string& argument : call.arguments) m_calls += " " + argument;
      m_calls += "\n";
      if (call.target == "VornAttachmentReaderContainerInterfaceImpl") m_containers.insert(call.object);
    });
    m_players["SpeechPlayer"] = std::make_shared<RecordedPlayer>("SpeechPlayer", m_ear, m_recorder);
    VornMediaPlayerFactory::CreateInstance(m_players);
  }
  ~Streams() override { VornMediaPlayerFactory::Shutdown(); }

  std::string calls() { return std::exchange(m_calls, std::string()); }

  std::string m_calls;
  std::set<const void*> m_containers;  ///< Those that were called.
  const std::shared_ptr<vorn_testing::Recorder> m_recorder = std::make_shared<vorn_testing::Recorder>();
  const std::shared_ptr<Ear> m_ear = std::make_shared<Ear>();
  PlayerTable m_players;
  Attachments m_attachments{m_recorder, m_players};
};

TEST_F(Streams, NeedAContainerFirst) {
  for (const std::string& answer :
       {m_attachments.subscribe("SpeechPlayer"), m_attachments.unsubscribe(),
        m_attachments.sendData("answer.wav"), m_attachments.endOfStream(), m_attachments.close("why")})
    EXPECT_EQ(answer, "no container");
  EXPECT_EQ(calls(), "");
}

TEST_F(Streams, NeedAFactoryAndAPlayerOfThatName) {
  EXPECT_EQ(m_attachments.createPlayer("none", true, false), "no player");
  m_attachments.createContainer();
  EXPECT_EQ(m_attachments.subscribe("none"), "no player none");
  VornMediaPlayerFactory::Shutdown();
  EXPECT_EQ(m_attachments.createPlayer("SpeechPlayer", true, false), kNoInstance);
}

TEST_F(Streams, AreConfiguredAsTheAssistantClientAsks) {
  std::set<std::string> asked;
  for (const bool first : {true, false}) {
    for (const bool second : {true, false}) {
      EXPECT_EQ(m_attachments.createPlayer("SpeechPlayer", first, second), "");
      asked.insert(calls());
    }
  }
  EXPECT_EQ(asked.size(), 4U);
  EXPECT_EQ(asked.begin()->find("VornDalMediaPlayerInterfaceImpl.Configure SpeechPlayer "), 0U);
}

TEST_F(Streams, ReachThePlayerInBlocksAndAreHeardAtTheirEnd) {
  m_attachments.createPlayer("SpeechPlayer", true, false);
  EXPECT_EQ(m_attachments.createContainer(), "");
  EXPECT_EQ(m_attachments.subscribe("SpeechPlayer"), "");
  calls();
  EXPECT_EQ(m_attachments.sendData(VORN_DATA "/answer.wav"), "");
  const std::string block = "VornAttachmentReaderContainerInterfaceImpl.sendData 4096 bytes\n";
  EXPECT_EQ(calls().compare(0, 2 * block.size(), block + block), 0);
  EXPECT_TRUE(m_ear->sounds.empty());
  EXPECT_EQ(m_attachments.endOfStream(), "");
  EXPECT_EQ(calls(),
            "MediaPlayerCallback.news PLAYING\nMediaPlayerCallback.news FINISHED\n"
            "VornAttachmentReaderContainerInterfaceImpl.notifyEndOfStream\n");
  ASSERT_EQ(m_ear->sounds.size(), 1U);
  EXPECT_EQ(m_ear->sounds[0].samples, Sound::fromFile(VORN_DATA "/answer.wav").samples);
}

TEST_F(Streams, TellOfOneContainerUntilAnotherIsMade) {
  for (int turn = 0; turn < 2; ++turn) {
    m_attachments.createContainer();
    m_attachments.subscribe("SpeechPlayer");
    m_attachments.sendData(VORN_DATA "/answer.wav");
    m_attachments.endOfStream();
    m_attachments.close("done");
    m_attachments.unsubscribe();
    EXPECT_EQ(m_containers.size(), 1U);
    EXPECT_EQ(m_containers.count(nullptr), 0U);
    m_containers.clear();
  }
}

TEST_F(Streams, ReachNobodyOnceThePlayerLeft) {
  m_attachments.createContainer();
  m_attachments.subscribe("SpeechPlayer");
  calls();
  EXPECT_EQ(m_attachments.unsubscribe(), "");
  EXPECT_EQ(calls(), "VornAttachmentReaderContainerInterfaceImpl.Unsubscribe\n");
  m_attachments.sendData(VORN_DATA "/answer.wav");
  m_attachments.endOfStream();
  EXPECT_EQ(calls(), "");
}

TEST_F(Streams, TellWhyTheyAreClosed) {
  m_attachments.createContainer();
  calls();
  EXPECT_EQ(m_attachments.close("done"), "");
  EXPECT_EQ(
      calls(),
      "VornAttachmentReaderContainerInterfaceImpl.GetOnCloseCallbackFunction\nAttachmentCallback.onClose done\n");
}

TEST_F(Streams, OfAFileThatIsNotThereNameIt) {
  m_attachments.createContainer();
  try {
    m_attachments.sendData("/tmp/none.wav");
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()), "/tmp/none.wav: cannot be read: No such file or directory");
  }
}

TEST_F(Streams, ThatTheSinkLosesAreTold) {
  m_ear->full = true;
  m_attachments.createPlayer("SpeechPlayer", true, false);
  m_attachments.createContainer();
  m_attachments.subscribe("SpeechPlayer");
  m_attachments.sendData(VORN_DATA "/answer.wav");
  calls();
  m_attachments.endOfStream();
  EXPECT_NE(calls().find("news FAILED: the ear is full\n"), std::string::npos);
  EXPECT_EQ(m_ear->problem(), "the ear is full");
}

// ---- The file

class WavFile : public testing::Test {
 protected:
  void SetUp() override {
    fs::remove_all(m_folder);
    fs::create_directory(m_folder);
  }

  static Sound tone(std::size_t frames) {
    Sound sound;
    sound.rate = WavSink::kRate;
    sound.channels = 1;
    for (std::size_t i = 0; i < frames; ++i) sound.samples.push_back(static_cast<short>(i));
    return sound;
  }

  static std::string content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  const std::string m_folder = "/tmp/wav";
  const std::string m_path = m_folder + "/a.wav";
};

TEST_F(WavFile, KeepsAnEarlierOneUntilTheFirstSound) {
  std::ofstream(m_path) << "earlier";
  WavSink sink(m_path);
  EXPECT_EQ(content(m_path), "earlier");
  sink.play(tone(100));
  EXPECT_EQ(Sound::fromFile(m_path).samples, tone(100).samples);
}

TEST_F(WavFile, IsWholeAfterEachSoundAndAppendsTheNext) {
  WavSink sink(m_path);
  sink.play(tone(100));
  sink.play(tone(50));
  EXPECT_EQ(Sound::fromFile(m_path).samples.size(), 150U);
  // As its header says too: not every reader looks further.
  const std::string bytes = content(m_path);
  const auto byte = [&](std::size_t at) { return std::size_t{static_cast<unsigned char>(bytes[at])}; };
  EXPECT_EQ(byte(4) + (byte(5) << 8U) + 8, bytes.size());
  EXPECT_TRUE(sink.problem().empty());
}

TEST_F(WavFile, TakesThePlaceOfAnEarlierOneAlsoWithoutASound) {
  std::ofstream(m_path) << "earlier";
  WavSink(m_path).finish();
  EXPECT_EQ(content(m_path).compare(0, 4, "RIFF"), 0);
  EXPECT_EQ(std::distance(fs::directory_iterator(m_folder), fs::directory_iterator()), 1);
}

TEST_F(WavFile, LeavesAnEarlierOneAndNothingBesideUntilThereIsSomethingToWrite) {
  std::ofstream(m_path) << "earlier";
  const WavSink unused(m_path);
  EXPECT_EQ(content(m_path), "earlier");
  EXPECT_EQ(std::distance(fs::directory_iterator(m_folder), fs::directory_iterator()), 1);
}

TEST_F(WavFile, KeepsItsModeAndTheLinkToIt) {
  std::ofstream(m_folder + "/target") << "earlier";
  ASSERT_EQ(chmod((m_folder + "/target").c_str(), 0750), 0);
  fs::create_symlink("target", m_path);
  WavSink(m_path).play(tone(10));
  struct stat status {};
  ASSERT_EQ(stat((m_folder + "/target").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0750U);
  EXPECT_TRUE(fs::is_symlink(m_path) && Sound::fromFile(m_folder + "/target").samples.size() == 10);
}

TEST_F(WavFile, IsKnownAsItsOwn) {
  WavSink(m_path).play(tone(10));
  EXPECT_TRUE(WavSink::made(m_path));
  EXPECT_FALSE(WavSink::made(VORN_DATA "/answer.wav") || WavSink::made(m_folder + "/none"));
  ASSERT_EQ(mkfifo((m_folder + "/pipe").c_str(), 0600), 0);
  EXPECT_FALSE(WavSink::made(m_folder + "/pipe"));
}

TEST_F(WavFile, IsRefusedWhereItCannotBe) {
  ASSERT_EQ(mkfifo((m_folder + "/pipe").c_str(), 0600), 0);
  const std::pair<std::string, std::string> cases[] = {
      {m_folder, "it is a folder"},
      {m_folder + "/pipe", "it is a pipe"},
      {m_folder + "/none/a.wav", "No such file or directory"}};
  for (const auto& [path, reason] : cases) {
    try {
      WavSink sink(path);
      FAIL() << path;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), path + ": cannot be written: " + reason + "; name another file with --out");
    }
  }
}

// ---- Reading

TEST_F(WavFile, OfHoursIsRefusedAtOnce) {
  SF_INFO info{};
  info.samplerate = 8000;
  info.channels = 1;
  info.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
  SNDFILE* const file = sf_open(m_path.c_str(), SFM_WRITE, &info);
  const std::vector<short> silence(1 << 20);
  for (int i = 0; i < 33; ++i) sf_write_short(file, silence.data(), 1 << 20);
  sf_close(file);
  try {
    Sound::fromFile(m_path);
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(),
              m_path +
                  ": holds more than 33554432 samples, 4194 s at its rate; accepted are WAV, FLAC and "
                  "OGG, mono or stereo, 8 to 192 kHz");
  }
}

TEST_F(WavFile, ThatIsNoFileIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(m_path.c_str(), 0600), 0);
  EXPECT_THROW(Sound::fromFile(m_path), std::runtime_error);
  EXPECT_THROW(Sound::fromFile(m_folder), std::runtime_error);
  EXPECT_THROW(readWhole(m_path, 10), std::runtime_error);
}

TEST_F(WavFile, IsReadWholeUpToABound) {
  std::ofstream(m_path) << "0123456789";
  EXPECT_EQ(readWhole(m_path, 10), "0123456789");
  EXPECT_THROW(readWhole(m_path, 9), std::runtime_error);
}

TEST_F(WavFile, IsTheSameUnderEveryName) {
  std::ofstream(m_path) << "a";
  fs::create_symlink("a.wav", m_folder + "/link");
  EXPECT_TRUE(sameFile(m_path, m_folder + "/link") && sameFile(m_path, m_folder + "/../wav/a.wav"));
  EXPECT_FALSE(sameFile(m_path, m_folder) || sameFile(m_path, m_folder + "/none") ||
               sameFile(m_folder + "/none", m_folder + "/none"));
}

TEST(SoundNamed, IsTheShippedOneUnlessAFolderIsNamed) {
  const std::string ours = shipped("answer.wav");
  EXPECT_NE(ours.find('/'), std::string::npos);
  EXPECT_EQ(soundNamed("./answer.wav"), "./answer.wav");
  EXPECT_EQ(soundNamed("mine.wav"), "mine.wav");
}

}  // namespace
