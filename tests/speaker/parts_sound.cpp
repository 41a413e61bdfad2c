// The speaker's ears and mouth: microphone, decoding, players and the file they play into.

#include <alsa/asoundlib.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "device/sound/Microphone.h"
#include "device/sound/Player.h"

namespace {

using vorn_speaker::Microphone;
using vorn_speaker::Player;
using vorn_speaker::Sound;
using vorn_speaker::WavSink;

/// Writes a tone of 1000 Hz, half a second, to a file of that format.
void writeTone(const std::string& path, int rate, int channels,
               int format = SF_FORMAT_WAV | SF_FORMAT_PCM_16) {
  SF_INFO info{};
  info.samplerate = rate;
  info.channels = channels;
  info.format = format;
  SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
  std::vector<double> samples;
  for (int i = 0; i < rate / 2; ++i)
    for (int c = 0; c < channels; ++c)
      samples.push_back(12000 / 32768.0 * std::sin(2 * M_PI * 1000 * i / rate));
  sf_write_double(file, samples.data(), static_cast<sf_count_t>(samples.size()));
  sf_close(file);
}

/// How strong 1000 Hz is in the sound: the amplitude of that tone.
double strength(const std::vector<short>& samples, int rate) {
  double sine = 0;
  double cosine = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double phase = 2 * M_PI * 1000 * static_cast<double>(i) / rate;
    sine += samples[i] * std::sin(phase);
    cosine += samples[i] * std::cos(phase);
  }
  return 2 * std::hypot(sine, cosine) / static_cast<double>(samples.size());
}

std::string content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct Source {
  int rate;
  int channels;
};

class Microphones : public testing::TestWithParam<Source> {};

TEST_P(Microphones, DeliverSixteenKilohertzMonoInBuffersOfTenMilliseconds) {
  writeTone("/tmp/tone.wav", GetParam().rate, GetParam().channels);
  std::vector<short> heard;
  Microphone microphone(Microphone::Pace::kFast, [&](std::vector<short>& buffer) {
    EXPECT_EQ(buffer.size(), 160U);
    heard.insert(heard.end(), buffer.begin(), buffer.end());
  });
  microphone.hear("/tmp/tone.wav");
  ASSERT_TRUE(microphone.start());
  microphone.wait();
  EXPECT_NEAR(static_cast<double>(heard.size()), 8000, 160);
  EXPECT_NEAR(strength(heard, 16000), 12000, 600);
}

INSTANTIATE_TEST_SUITE_P(Sound, Microphones,
                         testing::Values(Source{8000, 1}, Source{11025, 2}, Source{16000, 1},
                                         Source{22050, 1}, Source{44100, 2}, Source{48000, 1},
                                         Source{96000, 2}));

TEST(MicrophoneTest, FillsItsLastBufferWithSilence) {
  SF_INFO info{};
  info.samplerate = 16000;
  info.channels = 1;
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  SNDFILE* const file = sf_open("/tmp/odd.wav", SFM_WRITE, &info);
  const std::vector<short> written(161, 1000);
  sf_write_short(file, written.data(), 161);
  sf_close(file);
  std::vector<short> heard;
  Microphone microphone(Microphone::Pace::kFast, [&](std::vector<short>& buffer) {
    heard.insert(heard.end(), buffer.begin(), buffer.end());
  });
  microphone.hear("/tmp/odd.wav");
  ASSERT_TRUE(microphone.start());
  microphone.wait();
  std::vector<short> expected(320, 0);
  std::copy(written.begin(), written.end(), expected.begin());
  EXPECT_EQ(heard, expected);
}

TEST(MicrophoneTest, StopsFromInsideItsOwnBufferAndStartsAgainFromTheBeginning) {
  writeTone("/tmp/tone.wav", 16000, 1);
  int buffers = 0;
  Microphone* self = nullptr;
  Microphone microphone(Microphone::Pace::kFast, [&](std::vector<short>&) {
    if (++buffers == 3) self->stop();
  });
  self = &microphone;
  microphone.hear("/tmp/tone.wav");
  ASSERT_TRUE(microphone.start());
  microphone.wait();
  EXPECT_EQ(buffers, 3);
  ASSERT_TRUE(microphone.start());
  microphone.wait();
  EXPECT_EQ(buffers, 53);
}

TEST(MicrophoneTest, DoesNotStartWhileItRuns) {
  writeTone("/tmp/tone.wav", 16000, 1);
  bool again = true;
  Microphone* self = nullptr;
  Microphone microphone(Microphone::Pace::kFast, [&](std::vector<short>&) {
    again = self->start();
    self->stop();
  });
  self = &microphone;
  microphone.hear("/tmp/tone.wav");
  ASSERT_TRUE(microphone.start());
  microphone.wait();
  EXPECT_FALSE(again);
}

TEST(MicrophoneTest, HasNothingToDeliverBeforeItHears) {
  Microphone microphone(Microphone::Pace::kFast, [](std::vector<short>&) { FAIL(); });
  EXPECT_FALSE(microphone.start());
}

TEST(SoundTest, NamesFileReasonAndAcceptedFormatsWhenItCannotDecode) {
  std::ofstream("/tmp/broken.wav") << "RIFF but nothing of the kind";
  writeTone("/tmp/six.wav", 16000, 6);
  const std::string accepted = "; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz";
  const std::pair<const char*, std::string> kWrong[] = {
      {"/tmp/broken.wav", "Format not recognised" + accepted},
      {"/tmp/six.wav", "has 6 channels" + accepted},
      {"/tmp/absent.wav", "cannot be read: No such file or directory"}};
  for (const auto& [path, why] : kWrong) {
    try {
      Sound::fromFile(path);
      FAIL() << path;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), path + (": " + why));
    }
  }
}

TEST(SoundTest, RefusesAFileThatEndsBeforeItsSound) {
  writeTone("/tmp/tone.wav", 16000, 1);
  const std::string good = content("/tmp/tone.wav");
  const std::size_t header = good.find("data") + 8;
  const std::size_t all = good.size() - header;
  for (const std::size_t left : {std::size_t{2}, all / 2, all - 2}) {
    std::ofstream("/tmp/cut.wav", std::ios::binary) << good.substr(0, header + left);
    try {
      Sound::fromFile("/tmp/cut.wav");
      FAIL() << left;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(error.what(), "/tmp/cut.wav: is damaged: only " + std::to_string(left) + " of " +
                                  std::to_string(all) + " bytes of its sound are left" +
                                  "; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz");
    }
  }
}

TEST(SoundTest, ReadsWhatWasWrittenBeforeItsLengthWasKnown) {
  writeTone("/tmp/tone.wav", 16000, 1);
  const std::vector<short> samples = Sound::fromFile("/tmp/tone.wav").samples;
  for (const char* length :
       {"\xff\xff\xff\xff", "\xff\xff\xff\x7f", "\xda\xff\xff\x7f", "\xff\xf7\xff\x7f"}) {
    std::string piped = content("/tmp/tone.wav");
    piped.replace(piped.find("data") + 4, 4, length, 4);
    std::ofstream("/tmp/piped.wav", std::ios::binary) << piped;
    EXPECT_EQ(Sound::fromFile("/tmp/piped.wav").samples, samples);
  }
}

class Formats : public testing::TestWithParam<int> {};

TEST_P(Formats, KeepTheStrengthOfTheTone) {
  writeTone("/tmp/tone", 16000, 1, GetParam());
  const Sound sound = Sound::fromFile("/tmp/tone");
  EXPECT_NEAR(strength(sound.samples, sound.rate), 12000, 900);
}

INSTANTIATE_TEST_SUITE_P(Sound, Formats,
                         testing::Values(SF_FORMAT_WAV | SF_FORMAT_PCM_U8, SF_FORMAT_WAV | SF_FORMAT_PCM_24,
                                         SF_FORMAT_WAV | SF_FORMAT_FLOAT, SF_FORMAT_WAV | SF_FORMAT_DOUBLE,
                                         SF_FORMAT_FLAC | SF_FORMAT_PCM_24,
                                         SF_FORMAT_OGG | SF_FORMAT_VORBIS));

TEST(SoundTest, IsReadToItsLastSampleHoweverLong) {
  for (const std::size_t frames : {1U, 2U, 4095U, 4096U, 4097U, 8193U}) {
    SF_INFO info{};
    info.samplerate = 16000;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const file = sf_open("/tmp/long.wav", SFM_WRITE, &info);
    const std::vector<short> written(frames, 7);
    sf_write_short(file, written.data(), static_cast<sf_count_t>(frames));
    sf_close(file);
    EXPECT_EQ(Sound::fromFile("/tmp/long.wav").samples, written) << frames;
  }
}

TEST(SoundTest, HasTheRateAndTheChannelThatItWasConvertedTo) {
  writeTone("/tmp/tone.wav", 44100, 2);
  const Sound sound = Sound::fromFile("/tmp/tone.wav").mono(16000);
  EXPECT_EQ(sound.rate, 16000);
  EXPECT_EQ(sound.channels, 1);
}

TEST(SoundTest, CutsOffWhatIsTooLoud) {
  SF_INFO info{};
  info.samplerate = 16000;
  info.channels = 1;
  info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
  SNDFILE* const file = sf_open("/tmp/loud.wav", SFM_WRITE, &info);
  const float loud[] = {2.0F, -2.0F, 0.5F, -1.0F};
  sf_write_float(file, loud, 4);
  sf_close(file);
  EXPECT_EQ(Sound::fromFile("/tmp/loud.wav").samples, (std::vector<short>{32767, -32768, 16384, -32768}));
}

TEST(SoundTest, DecodesADamagedStreamToItsEndOrRefusesIt) {
  writeTone("/tmp/tone.flac", 16000, 1, SF_FORMAT_FLAC | SF_FORMAT_PCM_16);
  const std::string good = content("/tmp/tone.flac");
  for (std::size_t at = 200; at + 40 < good.size(); at += 41) {
    std::string bent = good;
    for (std::size_t i = at; i < at + 40; ++i) bent[i] = static_cast<char>(~bent[i]);
    try {
      EXPECT_EQ(Sound::fromBytes("stream", bent).samples.size(), 8000U) << at;
    } catch (const std::runtime_error& error) {
      EXPECT_EQ(std::string(error.what()).find("stream: "), 0U) << error.what();
    }
  }
}

TEST(SoundTest, SurvivesEveryCutAndEveryBentByte) {
  // No OGG: libsndfile leaks when it refuses one, which the leak sanitizer reports.
  for (const int format : {SF_FORMAT_WAV | SF_FORMAT_PCM_16, SF_FORMAT_FLAC | SF_FORMAT_PCM_16}) {
    writeTone("/tmp/tone", 8000, 1, format);
    const std::string good = content("/tmp/tone");
    for (std::size_t at = 0; at < good.size(); at += 97) {
      std::string bent = good;
      bent[at] = static_cast<char>(~bent[at]);
      for (const std::string& bytes : {bent, good.substr(0, at)}) {
        try {
          EXPECT_FALSE(Sound::fromBytes("stream", bytes).samples.empty());
        } catch (const std::runtime_error& error) {
          EXPECT_EQ(std::string(error.what()).find("stream: "), 0U) << error.what();
        }
      }
    }
  }
}

struct Format {
  const char* path;
  int format;
};

void PrintTo(const Format& format, std::ostream* out) { *out << format.path; }

class Players : public testing::TestWithParam<Format> {};

TEST_P(Players, PlayWhatIsStreamedIntoThem) {
  writeTone(GetParam().path, 44100, 2, GetParam().format);
  const std::string bytes = content(GetParam().path);
  std::vector<std::string> told;
  {
    Player player("DefaultMediaPlayer", std::make_shared<WavSink>("/tmp/out.wav"));
    player.Configure({true, "Speech", false}, [&](std::string state) { told.push_back(state); });
    for (std::size_t at = 0; at < bytes.size(); at += 1000)
      player.receive(bytes.data() + at, std::min<std::size_t>(1000, bytes.size() - at));
    player.endOfStream();
    EXPECT_EQ(player.requestedName(), "Speech");
  }
  EXPECT_EQ(told, (std::vector<std::string>{"PLAYING", "FINISHED"}));
  const Sound out = Sound::fromFile("/tmp/out.wav");
  EXPECT_NEAR(static_cast<double>(out.samples.size()), 24000, 2400);
  EXPECT_NEAR(strength(out.samples, out.rate), 12000, 900);
}

INSTANTIATE_TEST_SUITE_P(Sound, Players,
                         testing::Values(Format{"/tmp/tone.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16},
                                         Format{"/tmp/tone.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16},
                                         Format{"/tmp/tone.ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS}));

TEST(PlayerTest, WritesTheSamplesOfAFortyEightKilohertzFileAsTheyAre) {
  writeTone("/tmp/tone.wav", WavSink::kRate, 1);
  WavSink("/tmp/out.wav").play(Sound::fromFile("/tmp/tone.wav"));
  EXPECT_EQ(Sound::fromFile("/tmp/out.wav").samples, Sound::fromFile("/tmp/tone.wav").samples);
}

TEST(PlayerTest, TellsWhyAStreamCannotBePlayed) {
  std::string told;
  Player player("Speech", std::make_shared<WavSink>("/tmp/out.wav"));
  player.Configure({false, "Speech", false}, [&](std::string state) { told = state; });
  player.receive("noise", 5);
  player.endOfStream();
  EXPECT_EQ(told.find("FAILED: the stream for player 'Speech'"), 0U) << told;
}

TEST(PlayerTest, ForgetsAStreamOnceItIsPlayedOrAnotherIsAskedFor) {
  writeTone("/tmp/tone.wav", 48000, 1);
  const std::string tone = content("/tmp/tone.wav");
  std::vector<std::string> told;
  const auto tell = [&](const std::string& state) { told.push_back(state.substr(0, 6)); };
  Player player("Speech", std::make_shared<WavSink>("/tmp/out.wav"));
  player.receive("noise", 5);
  player.Configure({true, "Speech", false}, tell);
  player.receive(tone.data(), tone.size());
  player.endOfStream();
  player.endOfStream();
  EXPECT_EQ(told, (std::vector<std::string>{"PLAYIN", "FINISH", "FAILED"}));
}

TEST(SinkTest, NamesAFileThatItCannotWriteAndTheRemedy) {
  try {
    WavSink("/nowhere/out.wav");
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("/nowhere/out.wav: cannot be written"), std::string::npos);
  }
}

/// A folder in which somebody has a file, played into by a process of its own.
class OthersFile : public testing::Test {
 protected:
  OthersFile() {
    chmod(m_folder, 0777);
    std::ofstream(m_path) << "dear to somebody";
  }
  ~OthersFile() override { std::filesystem::remove_all(m_folder); }

  /// What the folder holds when the sink has gone, or what the sink said.
  [[noreturn]] void play() const {
    try {
      WavSink(m_path).play(Sound::fromFile("/tmp/tone.wav"));
    } catch (const std::runtime_error& error) {
      std::cerr << error.what() << "\n";
    }
    for (const auto& entry : std::filesystem::directory_iterator(m_folder))
      std::cerr << entry.path().filename().string() << ": " << std::ifstream(entry.path()).rdbuf() << "\n";
    std::_Exit(0);
  }

  char m_folder[40] = "/tmp/vorn-sink-XXXXXX";
  const std::string m_path = std::string(mkdtemp(m_folder)) + "/out.wav";
};

TEST_F(OthersFile, StaysWhenItMayNotBeWritten) {
  chmod(m_path.c_str(), 0444);
  EXPECT_EXIT(
      {
        if (geteuid() == 0 && setuid(65534) != 0) std::_Exit(1);
        play();
      },
      testing::ExitedWithCode(0), "^/tmp/[^:]*: cannot be written: [^\n]*\nout.wav: dear to somebody\n$");
}

TEST_F(OthersFile, StaysWhenTheDiskIsFullAndNothingElseIsLeft) {
  writeTone("/tmp/tone.wav", WavSink::kRate, 1);
  rlimit small{};
  small.rlim_cur = small.rlim_max = 1000;
  EXPECT_EXIT(
      {
        std::signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &small);
        play();
      },
      testing::ExitedWithCode(0), "^/tmp/[^:]*: [^\n]*is the disk full[^\n]*\nout.wav: dear to somebody\n$");
}

/// A device that takes three frames at a time, and fails after the first three when it is bad.
struct Device {
  bool bad = false;
  std::vector<short> heard;
  int closed = 0;
} g_device;

}  // namespace

// In place of the library's, for a sink that plays to its device "null".
extern "C" snd_pcm_sframes_t snd_pcm_writei(snd_pcm_t*, const void* samples, snd_pcm_uframes_t frames) {
  if (g_device.bad && !g_device.heard.empty()) return -EIO;
  const auto taken = std::min<snd_pcm_uframes_t>(frames, 3);
  const auto* const first = static_cast<const short*>(samples);
  g_device.heard.insert(g_device.heard.end(), first, first + 2 * taken);
  return static_cast<snd_pcm_sframes_t>(taken);
}

extern "C" int snd_pcm_close(snd_pcm_t* device) {
  ++g_device.closed;
  return reinterpret_cast<int (*)(snd_pcm_t*)>(dlsym(RTLD_NEXT, "snd_pcm_close"))(device);
}

namespace {

TEST(SinkTest, PlaysToADeviceWhatThatTakesAndClosesItAlsoWhenItFails) {
  Sound stereo;
  stereo.rate = 16000;
  stereo.channels = 2;
  for (short i = 0; i < 14; ++i) stereo.samples.push_back(i);
  g_device = {};
  vorn_speaker::AlsaSink("null").play(stereo);
  EXPECT_EQ(g_device.heard, stereo.samples);
  EXPECT_EQ(g_device.closed, 1);
  g_device = {};
  g_device.bad = true;
  EXPECT_THROW(vorn_speaker::AlsaSink("null").play(stereo), std::runtime_error);
  EXPECT_EQ(g_device.closed, 1);
}

TEST(SinkTest, NamesADeviceThatIsNotThere) {
  vorn_speaker::AlsaSink sink("no-such-device");
  Sound sound;
  sound.rate = 16000;
  sound.channels = 1;
  sound.samples = {0, 0};
  try {
    sink.play(sound);
    FAIL();
  } catch (const std::runtime_error& error) {
    const std::string told = error.what();
    EXPECT_EQ(told.find("sound device 'no-such-device': "), 0U) << told;
    const std::string remedy = "; aplay -L lists the devices, --out plays into a file";
    EXPECT_EQ(told.find(remedy), told.size() - remedy.size()) << told;
  }
}

}  // namespace
