// Sizes and signals as options and the environment of a capture say them.

#include <gtest/gtest.h>

#include "../../tools/capture/Settings.h"

namespace {

using vorn_capture::signalOf;
using vorn_capture::sizeOf;

struct Size {
  const char* text;
  std::uint64_t bytes;
};

class Sizes : public testing::TestWithParam<Size> {};

TEST_P(Sizes, AreReadWithTheirUnitOrRefused) { EXPECT_EQ(sizeOf(GetParam().text), GetParam().bytes); }

const Size kSizes[] = {
    {"65536", 65536},
    {"65535", 0},
    {"64K", 65536},
    {"63K", 0},
    {"500K", 512000},
    {"1M", 1 << 20},
    {"90M", 94371840},
    {"2G", std::uint64_t{2} << 30},
    {"4096G", std::uint64_t{1} << 42},
    {"4097G", 0},
    {"4194304M", std::uint64_t{1} << 42},
    {"4194305M", 0},
    {"4294967296K", std::uint64_t{1} << 42},
    {"4398046511104", std::uint64_t{1} << 42},
    {"4398046511105", 0},
    {"17179869185G", 0},     // a gigabyte, if the rest were lost
    {"17592186044417M", 0},  // a megabyte
    {"18446744073709617152", 0},
    {"99999999999999999999999999G", 0},
    {"00100K", 102400},
    {"", 0},
    {"0", 0},
    {"K", 0},
    {"-1", 0},
    {"100k", 0},
    {"100KB", 0},
    {"100 K", 0},
    {" 100K", 0},
    {"1.5M", 0},
    {"1T", 0},
    {"0x100000", 0},
};

INSTANTIATE_TEST_SUITE_P(Settings, Sizes, testing::ValuesIn(kSizes));

TEST(Signals, AreNamedOrNumbered) {
  const std::pair<const char*, int> kSignals[] = {{"USR1", SIGUSR1},   {"USR2", SIGUSR2}, {"HUP", SIGHUP},
                                                  {"WINCH", SIGWINCH}, {"URG", SIGURG},   {"CONT", SIGCONT},
                                                  {"ALRM", SIGALRM},   {"IO", SIGIO},     {"PWR", SIGPWR}};
  for (const auto& [name, signal] : kSignals) {
    EXPECT_EQ(signalOf(name), signal) << name;
    EXPECT_EQ(signalOf(std::string("SIG") + name), signal) << name;
    EXPECT_EQ(signalOf(std::to_string(signal)), signal) << name;
    EXPECT_EQ(signalOf("SIG" + std::to_string(signal)), signal) << name;
  }
  for (const char* const none : {"", "SIG", "KILL", "SEGV", "9", "usr1", "SIGSIGUSR1", "USR", "USR11", "0"})
    EXPECT_EQ(signalOf(none), 0) << none;
}

}  // namespace
