#include "Sink.h"

#include <alsa/asoundlib.h>
#include <fcntl.h>
#include <sndfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace vorn_speaker {

namespace {

constexpr char kMaker[] = "vorn-speaker";

void sayNothing(const char*, int, const char*, int, const char*, ...) {
}  // NOLINT(cert-dcl50-cpp): the library's form

}  // namespace

void Sink::play(const Sound& sound) {
  keepProblem([&] { take(sound); });
}

void Sink::finish() {
  if (!problem().empty()) return;
  try {
    keepProblem([this] { conclude(); });
  } catch (const std::runtime_error&) {
    // problem() tells it.
  }
}

void Sink::keepProblem(const std::function<void()>& work) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  try {
    work();
  } catch (const std::runtime_error& error) {
    if (m_problem.empty()) m_problem = error.what();
    giveUp();
    throw;
  }
}

std::string Sink::problem() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_problem;
}

struct WavSink::File {
  SNDFILE* handle = nullptr;
  ~File() {
    if (handle) sf_close(handle);
  }
};

WavSink::WavSink(const std::string& path) : m_path(path), m_target(path), m_file(new File) {
  struct stat status {};
  const bool there = stat(path.c_str(), &status) == 0;
  if (there && S_ISDIR(status.st_mode)) refuse("it is a folder");
  if (there && S_ISFIFO(status.st_mode)) refuse("it is a pipe");
  if (there && !S_ISREG(status.st_mode)) {
    write(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    return;
  }
  if (there && access(path.c_str(), W_OK) != 0) refuse(std::strerror(errno));
  if (!there && lstat(path.c_str(), &status) == 0) refuse("it is a link to nothing");
  if (char* const real = realpath(path.c_str(), nullptr)) {
    m_target = real;
    std::free(real);
  }
  // As any file of the user's.
  const mode_t mask = umask(0);
  umask(mask);
  m_mode = there ? status.st_mode & 0777 : 0666 & ~mask;
  // Whether it can be written is told now. It is made when there is something to write: what ends this process may leave
  // no time to remove it.
  close(openAside());
  WavSink::giveUp();
}

void WavSink::refuse(const std::string& reason) const {
  throw std::runtime_error(m_path + ": cannot be written: " + reason + "; name another file with --out");
}

int WavSink::openAside() {
  m_aside = m_target + ".XXXXXX";
  const int file = mkostemp(&m_aside[0], O_CLOEXEC);
  if (file < 0) {
    m_aside.clear();
    refuse(std::strerror(errno));
  }
  fchmod(file, m_mode);
  return file;
}

void WavSink::write(int file) {
  if (file < 0) refuse(std::strerror(errno));
  SF_INFO info{};
  info.samplerate = kRate;
  info.channels = 1;
  info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
  m_file->handle = sf_open_fd(file, SFM_WRITE, &info, 1);
  if (!m_file->handle) refuse(sf_strerror(nullptr));
  sf_set_string(m_file->handle, SF_STR_SOFTWARE, kMaker);
}

bool WavSink::made(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode))
    return false;  // A pipe would be waited for.
  SF_INFO info{};
  File file;
  file.handle = sf_open(path.c_str(), SFM_READ, &info);
  const char* const software = file.handle ? sf_get_string(file.handle, SF_STR_SOFTWARE) : nullptr;
  return software && std::strncmp(software, kMaker, std::strlen(kMaker)) == 0;
}

WavSink::~WavSink() { giveUp(); }

void WavSink::giveUp() {
  if (!m_aside.empty()) std::remove(m_aside.c_str());
  m_aside.clear();
}

void WavSink::putInPlace() {
  if (m_aside.empty()) return;
  if (std::rename(m_aside.c_str(), m_target.c_str()) != 0) refuse(std::strerror(errno));
  m_aside.clear();
}

void WavSink::take(const Sound& sound) {
  if (!m_file->handle) write(openAside());
  const Sound ours = sound.mono(kRate);
  const auto count = static_cast<sf_count_t>(ours.samples.size());
  if (sf_write_short(m_file->handle, ours.samples.data(), count) != count)
    throw std::runtime_error(m_path + ": " + sf_strerror(m_file->handle) + "; is the disk full?");
  sf_command(m_file->handle, SFC_UPDATE_HEADER_NOW, nullptr, 0);
  sf_write_sync(m_file->handle);
  putInPlace();
}

void WavSink::conclude() {
  if (!m_file->handle) write(openAside());
  sf_command(m_file->handle, SFC_UPDATE_HEADER_NOW, nullptr, 0);
  sf_write_sync(m_file->handle);
  if (sf_error(m_file->handle) != SF_ERR_NO_ERROR) refuse(sf_strerror(m_file->handle));
  putInPlace();
}

AlsaSink::AlsaSink(std::string device) : m_device(std::move(device)) {
  // What is wrong is told once, by us: the library would print it too, with the name as it is.
  snd_lib_error_set_handler(sayNothing);
}

void AlsaSink::take(const Sound& sound) {
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
