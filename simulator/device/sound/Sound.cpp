#include "Sound.h"

#include <samplerate.h>
#include <sndfile.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <stdexcept>

#include "text/Files.h"

namespace vorn_speaker {

namespace {

// Almost six minutes of music; compressed, a small file can hold hours.
constexpr sf_count_t kMostSamples = 1 << 25;

/// The bytes that libsndfile reads from.
struct Bytes {
  const std::string& all;
  sf_count_t at = 0;
};

SF_VIRTUAL_IO memory() {
  SF_VIRTUAL_IO io;
  io.get_filelen = [](void* data) { return static_cast<sf_count_t>(static_cast<Bytes*>(data)->all.size()); };
  io.seek = [](sf_count_t offset, int whence, void* data) {
    auto* bytes = static_cast<Bytes*>(data);
    const auto size = static_cast<sf_count_t>(bytes->all.size());
    const sf_count_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? bytes->at : size;
    bytes->at = std::clamp<sf_count_t>(base + offset, 0, size);
    return bytes->at;
  };
  io.read = [](void* into, sf_count_t count, void* data) {
    auto* bytes = static_cast<Bytes*>(data);
    const sf_count_t n = std::min(count, static_cast<sf_count_t>(bytes->all.size()) - bytes->at);
    std::memcpy(into, bytes->all.data() + bytes->at, static_cast<std::size_t>(n));
    bytes->at += n;
    return n;
  };
  io.write = [](const void*, sf_count_t, void*) { return sf_count_t{0}; };
  io.tell = [](void* data) { return static_cast<Bytes*>(data)->at; };
  return io;
}

/// A number from -1 to 1 as a sample; what lies outside is cut off.
short whole(float value) {
  return static_cast<short>(std::lrint(std::clamp(value * 32768.0F, -32768.0F, 32767.0F)));
}

/// What a WAV file lacks of the sound that it tells of; empty for none. libsndfile reads what is there, and only its log
/// tells. A length near the greatest stands for one that was not known: the file was a pipe's.
std::string lackOf(SNDFILE* file) {
  constexpr long long kUnknown = 0x7ff00000;
  char log[4096] = "";
  sf_command(file, SFC_GET_LOG_INFO, log, sizeof log);
  const char* const told = std::strstr(log, "\ndata : ");
  long long all = 0;
  long long left = 0;
  if (!told || std::sscanf(told, "\ndata : %lld (should be %lld)", &all, &left) < 2 || all >= kUnknown)
    return "";
  return "is damaged: only " + std::to_string(left) + " of " + std::to_string(all) +
         " bytes of its sound are left";
}

Sound decode(const std::string& name, SNDFILE* opened, const SF_INFO& info, bool wholly) {
  const auto refuse = [&](const std::string& reason) {
    throw std::runtime_error(name + ": " + reason +
                             "; accepted are WAV, FLAC and OGG, mono or stereo, 8 to 192 kHz");
  };
  const std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file(opened, sf_close);
  if (!file) {
    const std::string why = sf_strerror(nullptr);
    refuse(why.substr(0, why.find_last_not_of('.') + 1));
  }
  if (info.channels < 1 || info.channels > 2) refuse("has " + std::to_string(info.channels) + " channels");
  if (info.samplerate < 8000 || info.samplerate > 192000)
    refuse("has a rate of " + std::to_string(info.samplerate) + " Hz");
  const std::string most = std::to_string(kMostSamples) + " samples, " +
                           std::to_string(kMostSamples / info.channels / info.samplerate) + " s at its rate";
  if (info.seekable && info.frames > kMostSamples / info.channels) refuse("holds more than " + most);
  const std::string lack = wholly ? lackOf(file.get()) : "";
  if (!lack.empty()) refuse(lack);
  Sound sound;
  sound.rate = info.samplerate;
  sound.channels = info.channels;
  // As numbers from -1 to 1: read as whole numbers, those of some formats become silence or run over.
  float block[4096];
  sf_count_t n;
  while ((n = sf_read_float(file.get(), block, 4096)) > 0) {
    // Whatever the header says.
    if (static_cast<sf_count_t>(sound.samples.size()) + n > kMostSamples) refuse("holds more than " + most);
    std::transform(block, block + n, std::back_inserter(sound.samples), whole);
  }
  if (sf_error(file.get()) != SF_ERR_NO_ERROR) refuse(sf_strerror(file.get()));
  if (sound.samples.empty()) refuse("holds no samples");
  const auto frames = static_cast<sf_count_t>(sound.samples.size()) / info.channels;
  if (info.seekable && frames < info.frames)
    refuse("is damaged: only " + std::to_string(frames) + " of " + std::to_string(info.frames) +
           " frames are left");
  return sound;
}

}  // namespace

Sound Sound::fromFile(const std::string& path) {
  refuseUnlessFile(path);
  SF_INFO info{};
  SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
  if (!file && sf_error(nullptr) == SF_ERR_SYSTEM)
    throw std::runtime_error(path + ": cannot be read: " + std::strerror(errno));
  return decode(path, file, info, true);
}

Sound Sound::fromBytes(const std::string& name, const std::string& bytes) {
  SF_INFO info{};
  Bytes source{bytes};
  SF_VIRTUAL_IO io = memory();
  SNDFILE* const file = sf_open_virtual(&io, SFM_READ, &info, &source);
  return decode(name, file, info, false);  // of what was interrupted, what came is heard
}

Sound Sound::mono(int newRate) const {
  const std::size_t frames = samples.size() / static_cast<std::size_t>(channels);
  std::vector<float> in(frames);
  for (std::size_t i = 0; i < frames; ++i) {
    const std::size_t at = i * static_cast<std::size_t>(channels);
    in[i] = (channels == 2 ? 0.5F * (static_cast<float>(samples[at]) + static_cast<float>(samples[at + 1]))
                           : static_cast<float>(samples[at])) /
            32768.0F;
  }
  const double ratio = static_cast<double>(newRate) / rate;
  std::vector<float> out(static_cast<std::size_t>(std::ceil(static_cast<double>(frames) * ratio)) + 1);
  SRC_DATA data{};
  data.data_in = in.data();
  data.data_out = out.data();
  data.input_frames = static_cast<long>(frames);
  data.output_frames = static_cast<long>(out.size());
  data.src_ratio = ratio;
  if (newRate == rate) {
    out = in;
    data.output_frames_gen = static_cast<long>(frames);
  } else if (const int error = src_simple(&data, SRC_SINC_MEDIUM_QUALITY, 1)) {
    throw std::runtime_error(std::string("the sound cannot be converted: ") + src_strerror(error));
  }
  Sound result;
  result.rate = newRate;
  result.channels = 1;
  result.samples.resize(static_cast<std::size_t>(data.output_frames_gen));
  std::transform(out.begin(), out.begin() + data.output_frames_gen, result.samples.begin(), whole);
  return result;
}

}  // namespace vorn_speaker
