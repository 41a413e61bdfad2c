// The sound that vorn-capture keeps: as much as a WAV file can hold, and its head says how much.

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "../../tools/capture/library/files/WaveFile.h"

namespace {

bool g_halves = false;  // What is written next is written to its half.

}  // namespace

/// Sound becomes holes: gigabytes of it need no room.
extern "C" ssize_t pwrite(int file, const void* data, std::size_t size, off_t at) {
  if (at == 0) return syscall(SYS_pwrite64, file, data, size, at);
  if (g_halves) size /= 2;
  return ftruncate(file, at + static_cast<off_t>(size)) == 0 ? static_cast<ssize_t>(size) : -1;
}

namespace {

namespace fs = std::filesystem;

class KeptSound : public testing::Test {
 protected:
  KeptSound() {
    g_halves = false;
    fs::remove(kPath);
    EXPECT_TRUE(m_wave.create(kPath));
  }
  ~KeptSound() override { fs::remove(kPath); }

  /// A number of the head.
  static std::uint32_t number(off_t at) {
    std::uint32_t value = 0;
    FILE* const file = std::fopen(kPath, "rb");
    EXPECT_TRUE(std::fseek(file, at, SEEK_SET) == 0 && std::fread(&value, sizeof value, 1, file) == 1);
    std::fclose(file);
    return value;
  }

  static constexpr char kPath[] = "/tmp/capture-sound.wav";
  static constexpr std::uint32_t kBlock = 1U << 20;
  static constexpr off_t kRiff = 4, kData = 40;
  const std::vector<char> block = std::vector<char>(kBlock);
  vorn_capture::WaveFile m_wave;
};

TEST_F(KeptSound, IsToldByTheHead) {
  EXPECT_EQ(number(kData), 0U);
  m_wave.add(block.data(), kBlock);
  m_wave.add(block.data(), 320);
  EXPECT_TRUE(m_wave.finish());
  EXPECT_EQ(number(kData), kBlock + 320);
  EXPECT_EQ(number(kRiff), kBlock + 320 + 36);
  EXPECT_EQ(fs::file_size(kPath), kBlock + 320 + 44);
}

TEST_F(KeptSound, EndsWhereItsLengthCannotBeToldAndLosesNothingBefore) {
  for (int i = 0; i < 4095; ++i) m_wave.add(block.data(), kBlock);
  EXPECT_TRUE(m_wave.finish());
  const std::uint32_t rest = kBlock - 1 - 36;
  m_wave.add(block.data(), rest - 1);
  EXPECT_TRUE(m_wave.finish());
  m_wave.add(block.data(), 2);
  errno = 0;
  EXPECT_FALSE(m_wave.finish());
  EXPECT_EQ(errno, EFBIG);
  m_wave.add(block.data(), 1);
  EXPECT_FALSE(m_wave.finish());
  EXPECT_EQ(number(kData), 4095 * kBlock + rest - 1);
  EXPECT_EQ(number(kRiff), 0xFFFFFFFF - 1);
  EXPECT_EQ(fs::file_size(kPath), std::uintmax_t{4095} * kBlock + rest - 1 + 44);
}

TEST_F(KeptSound, TellsOfADiskThatTookAPartOfIt) {
  m_wave.add(block.data(), kBlock);
  g_halves = true;
  errno = 0;
  m_wave.add(block.data(), kBlock);
  EXPECT_FALSE(m_wave.finish());
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(number(kData), kBlock);
}

}  // namespace
