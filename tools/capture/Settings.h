#pragma once

#include <csignal>
#include <cstdint>
#include <string>
#include <utility>

/// What options and the environment say, read by vorn-capture and by the library that it preloads alike.
namespace vorn_capture {

constexpr char kSizeExpected[] = ": expected a size from 64K, such as 500K, 64M or 2G";
constexpr char kSignalExpected[] =
    ": expected a signal that ends nothing by itself when it is handled: USR1, USR2, HUP, WINCH, URG, CONT, ALRM, IO or PWR";

/// In bytes; 0 for what is no size.
inline std::uint64_t sizeOf(const std::string& text) {
  std::uint64_t size = 0;
  std::size_t at = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9' && size < std::uint64_t{1} << 40; ++at)
    size = size * 10 + static_cast<std::uint64_t>(text[at] - '0');
  const std::string unit = text.substr(at);
  const int shift = unit.empty() ? 0 : unit == "K" ? 10 : unit == "M" ? 20 : unit == "G" ? 30 : -1;
  if (shift < 0 || size > std::uint64_t{1} << (42 - shift) || (size << shift) < std::uint64_t{64} << 10)
    return 0;
  return size << shift;
}

/// Its number; 0 for what is none that may stop a recording.
inline int signalOf(const std::string& text) {
  const std::string name = text.compare(0, 3, "SIG") == 0 ? text.substr(3) : text;
  static const std::pair<const char*, int> kSignals[] = {
      {"USR1", SIGUSR1}, {"USR2", SIGUSR2}, {"HUP", SIGHUP}, {"WINCH", SIGWINCH}, {"URG", SIGURG},
      {"CONT", SIGCONT}, {"ALRM", SIGALRM}, {"IO", SIGIO},   {"PWR", SIGPWR}};
  for (const auto& [known, signal] : kSignals) {
    if (name == known || name == std::to_string(signal)) return signal;
  }
  return 0;
}

}  // namespace vorn_capture
