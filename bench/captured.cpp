// What a call takes, for scripts/bench to run by itself, under vorn-capture and under ltrace: bench_captured CALLS

#include <VornAudioIn.h>
#include <vorn_testing/NullHost.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
  const long calls = count > 1 ? std::atol(arguments[1]) : 0;
  vorn_testing::NullHost host;
  const auto audio = VornDeviceAbstractionLayer::VornAudioIn::CreateInstance(host);
  const auto begin = std::chrono::steady_clock::now();
  for (long i = 0; i < calls; ++i) audio->isMicrophoneAvailable();
  const std::chrono::duration<double, std::nano> took = std::chrono::steady_clock::now() - begin;
  std::printf("%.1f\n", took.count() / static_cast<double>(calls));
}
