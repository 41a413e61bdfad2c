// How long every kind of call takes beside the bare call that it cannot do without, and how long the same call takes
// through what a team would otherwise reach for. Names: KIND/bare, KIND/library, alternative/NAME.

#include "Calls.h"

#include "Company.h"
#include "TraceLine.h"
#include "alternatives/alternatives.h"
#include "timing.h"

int main(int argc, char** argv) {
  vorn_testing::NullHost host;
  const Socket socket(host);  // Other processes branch off before there is a second thread.
  const Bus bus(host);
  const Company company;

  timed("nothing", [] { benchmark::ClobberMemory(); });

  Calls calls;
  calls.each([](const std::string& kind, auto bare, auto library) {
    timed(kind + "/bare", bare);
    timed(kind + "/library", library);
  });

  for (const bool bare : {true, false}) {
    benchmark::RegisterBenchmark(bare ? "trace-line/bare" : "trace-line/library",
                                 [bare](benchmark::State& state) {
                                   const TraceLine line(100);
                                   TraceLine::history(0);
                                   for (auto _ : state) bare ? line.bare() : line.library();
                                 });
  }

  timeFunction(host);
  timeSignals(host);
  timeWorker(host);
  socket.time();
  bus.time();
  return runTimed(argc, argv);
}
