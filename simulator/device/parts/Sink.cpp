#include "Sink.h"

#include <alsa/asoundlib.h>
#include <sndfile.h>

#include <stdexcept>
#include <utility>

namespace vorn_speaker {

struct WavSink::File {
  SNDFILE* handle = nullptr;
  ~File() { sf_close(handle); }
};

WavSink::WavSink(const std::string& path) : m_path(path), m_file(new File) {
  SF_INFO info{};
  info.samplerate = kRate;
  info.channels = 1;
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  m_file->handle = sf_open(path.c_str(), SFM_WRITE, &info);
  if (!m_file->handle)
    throw std::runtime_error(path + ": cannot be written: " + sf_strerror(nullptr) +
                             "; name another file with --out");
}

WavSink::~WavSink() = default;

void WavSink::play(const Sound& sound) {
  const Sound ours = sound.mono(kRate);
  const auto count = static_cast<sf_count_t>(ours.samples.size());
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (sf_write_short(m_file->handle, ours.samples.data(), count) != count)
    throw std::runtime_error(m_path + ": " + sf_strerror(m_file->handle) + "; is the disk full?");
  sf_write_sync(m_file->handle);
}

AlsaSink::AlsaSink(std::string device) : m_device(std::move(device)) {}

void AlsaSink::play(const Sound& sound) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  snd_pcm_t* pcm = nullptr;
  const auto check = [&](int error) {
    if (error >= 0) return;
    if (pcm) snd_pcm_close(pcm);
    throw std::runtime_error("sound device '" + m_device + "': " + snd_strerror(error) +
                             "; aplay -L lists the devices, --out plays into a file");
  };
  check(snd_pcm_open(&pcm, m_device.c_str(), SND_PCM_STREAM_PLAYBACK, 0));
  check(snd_pcm_set_params(pcm, SND_PCM_FORMAT_S16, SND_PCM_ACCESS_RW_INTERLEAVED,
                           static_cast<unsigned>(sound.channels), static_cast<unsigned>(sound.rate), 1,
                           200000));
  const std::size_t frames = sound.samples.size() / static_cast<std::size_t>(sound.channels);
  for (std::size_t at = 0; at < frames;) {
    snd_pcm_sframes_t written = snd_pcm_writei(
        pcm, sound.samples.data() + at * static_cast<std::size_t>(sound.channels), frames - at);
    if (written < 0) written = snd_pcm_recover(pcm, static_cast<int>(written), 1);
    check(static_cast<int>(written));
    at += static_cast<std::size_t>(written);
  }
  snd_pcm_drain(pcm);
  snd_pcm_close(pcm);
}

}  // namespace vorn_speaker
