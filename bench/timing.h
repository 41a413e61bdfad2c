#pragma once

#include <benchmark/benchmark.h>

#include <string>

/// Registers `operation`, called over and over, under `name`.
template <class Operation>
benchmark::internal::Benchmark* timed(const std::string& name, Operation operation) {
  return benchmark::RegisterBenchmark(name.c_str(), [operation](benchmark::State& state) {
    for (auto _ : state) operation();
  });
}

/// Registers in the place of `name` why it cannot be measured here.
inline void impossible(const std::string& name, const std::string& reason) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [reason](benchmark::State& state) { state.SkipWithError(reason.c_str()); });
}

/// Runs what is registered. Returns the program's exit code.
inline int runTimed(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::ClearRegisteredBenchmarks();  // With them goes what they hold, before the other processes.
  return 0;
}
