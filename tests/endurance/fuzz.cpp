// Each text that vorn-speaker reads, bent at random: it is read, or refused with the exception that is promised.
//
// In the normal tests a bounded number of bent copies of the corpus; scripts/fuzz builds the same targets for
// libFuzzer. What either finds goes into tests/endurance/corpus and is read first ever after.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

#include "device/parts/DeviceFile.h"
#include "device/sound/Sound.h"
#include "language/Scenario.h"

namespace {

[[noreturn]] void broken(const char* promise) {
  std::fprintf(stderr, "fuzz: %s\n", promise);
  std::abort();
}

[[maybe_unused]] void readScenario(const std::string& text) {
  try {
    vorn_speaker::readScenario("fuzz", text);
  } catch (const vorn_speaker::BadScenario& error) {
    if (std::string(error.what()).compare(0, 5, "fuzz:") != 0) broken("a refusal without its place");
  }
}

[[maybe_unused]] void readDevice(const std::string& text) {
  static const std::string path = "/tmp/fuzz" + std::to_string(getpid()) + ".toml";
  std::ofstream(path, std::ios::binary) << text;
  try {
    const vorn_speaker::DeviceFile device = vorn_speaker::DeviceFile::read(path);
    if (device.volume < 0 || device.volume > 100) broken("a volume outside its range");
  } catch (const std::runtime_error& error) {
    if (std::string(error.what()).find(path) == std::string::npos) broken("a refusal without its file");
  }
  unlink(path.c_str());
}

[[maybe_unused]] void readSound(const std::string& bytes) {
  try {
    const vorn_speaker::Sound sound = vorn_speaker::Sound::fromBytes("fuzz", bytes);
    if (sound.channels < 1 || sound.channels > 2 || sound.rate <= 0) broken("a sound of an impossible form");
    if (sound.samples.size() < 100000 && sound.rate <= 192000) sound.mono(16000);
  } catch (const std::runtime_error&) {
  }
}

}  // namespace

#if defined(VORN_FUZZ_TARGET)

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  VORN_FUZZ_TARGET({reinterpret_cast<const char*>(data), size});
  return 0;
}

#else

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <random>
#include <vector>

namespace {

std::vector<std::string> files(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    if (entry.is_regular_file()) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> contents;
  for (const auto& path : paths) {
    std::ifstream file(path, std::ios::binary);
    contents.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    contents.back().resize(std::min<std::size_t>(contents.back().size(), 20000));
  }
  return contents;
}

/// A few bytes changed, dropped, doubled or taken from elsewhere.
std::string bent(std::string text, std::mt19937& random) {
  const auto below = [&](std::size_t size) {
    return std::uniform_int_distribution<std::size_t>(0, size)(random);
  };
  for (std::size_t times = 1 + below(3); times > 0; --times) {
    const std::size_t at = below(text.size());
    const std::size_t length = std::min(below(12), text.size() - at);
    switch (below(4)) {
      case 0:
        text.insert(at, 1, static_cast<char>(below(255)));
        break;
      case 1:
        text.erase(at, length);
        break;
      case 2:
        text.insert(below(text.size()), text.substr(at, length));
        break;
      case 3:
        if (at < text.size()) text[at] = static_cast<char>(below(255));
        break;
      default:
        text.resize(at);
    }
  }
  return text;
}

void play(const char* name, void (*read)(const std::string&), const std::vector<std::string>& corpus,
          unsigned times) {
  ASSERT_FALSE(corpus.empty());
  const char* const wanted = std::getenv("VORN_FUZZ");
  if (wanted) times = static_cast<unsigned>(std::strtoul(wanted, nullptr, 10));
  std::mt19937 random(1);
  for (const std::string& text : corpus) read(text);
  for (unsigned i = 0; i < times; ++i) read(bent(corpus[i % corpus.size()], random));
  std::cout << "fuzz: " << name << ", " << corpus.size() << " files, " << times << " bent copies\n";
}

const std::string kRoot = VORN_SOURCE_DIR;

std::vector<std::string> corpus(const std::string& shipped, const char* kept, const char* suffix) {
  std::vector<std::string> all = files(kRoot + "/tests/endurance/corpus/" + kept);
  for (const auto& entry : std::filesystem::directory_iterator(kRoot + shipped)) {
    if (entry.path().extension() != suffix) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    all.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    all.back().resize(std::min<std::size_t>(all.back().size(), 20000));
  }
  return all;
}

TEST(Fuzz, AScenarioIsReadOrRefusedWithItsPlace) {
  play("scenario", readScenario, corpus("/simulator/scenarios", "scenario", ".scenario"), 400);
}

TEST(Fuzz, ADeviceFileIsReadOrRefusedWithItsName) {
  play("device", readDevice, corpus("/simulator/data", "device", ".toml"), 3000);
}

TEST(Fuzz, ASoundIsReadOrRefused) {
  play("sound", readSound, corpus("/simulator/data", "sound", ".wav"), 1000);
}

}  // namespace

#endif
