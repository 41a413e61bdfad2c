// The steady path of VornAudioIn::sendAudioData beside the bare virtual call that it cannot do without.

#include <DeviceAbstractionLayer/AudioIn.h>
#include <VornAudioIn.h>
#include <VornDALImplIF.h>
#include <benchmark/benchmark.h>

#include "Company.h"

namespace {

using VornDeviceAbstractionLayer::VornAudioIn;

/// Takes the buffers and does next to nothing with them.
class Ear : public DeviceAbstractionLayer::AudioIn {
 public:
  void notifyAlexaButtonPress(std::string, std::chrono::milliseconds) override {}
  void notifyAlexaButtonReleased() override {}
  void sendAudioData(std::vector<short>& samples) override { benchmark::DoNotOptimize(samples.data()); }
};

void bareCall(benchmark::State& state) {
  const std::shared_ptr<DeviceAbstractionLayer::AudioIn> ear = std::make_shared<Ear>();
  DeviceAbstractionLayer::AudioIn* called = ear.get();
  std::vector<short> samples(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    benchmark::DoNotOptimize(called);
    called->sendAudioData(samples);
  }
}

void steadyPath(benchmark::State& state) {
  std::vector<short> samples(static_cast<std::size_t>(state.range(0)));
  // Needs no instance and no host: the audio path uses neither.
  static char nobody[sizeof(VornAudioIn)];
  VornAudioIn& adapter = reinterpret_cast<VornAudioIn&>(nobody);
  for (int i = 0; i < 6; ++i) adapter.sendAudioData(samples);
  for (auto _ : state) adapter.sendAudioData(samples);
}

BENCHMARK(bareCall)->Arg(1)->Arg(160)->Arg(1000000);
BENCHMARK(steadyPath)->Arg(1)->Arg(160)->Arg(1000000);

}  // namespace

// This program is its own assistant side: the library's call is resolved to it before the stand-in's.
std::shared_ptr<DeviceAbstractionLayer::AudioIn> DeviceAbstractionLayer::AudioIn::getInstance() {
  static const std::shared_ptr<AudioIn> ear = std::make_shared<Ear>();
  return ear;
}

int main(int argc, char** argv) {
  const Company company;
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
}
