// Runs each kind of call, and the bare call that it cannot do without, for callgrind to count. check-budgets starts
// it and takes the difference; a table of allocations and locks goes to standard output.

#include <valgrind/callgrind.h>

#include <cstdio>
#include <string>

#include "../Calls.h"
#include "../Company.h"
#include "counters.h"

namespace {

// Enough that a call that allocates only now and then shows up, and few enough for the audio path's rare trace line.
constexpr int kCalls = 1000;

template <class Operation>
[[gnu::noinline]] void repeat(int times, Operation& operation) {
  for (int i = 0; i < times; ++i) operation();
}

/// Once and then twice as often: what starting and ending a count costs falls out of the difference.
template <class Operation>
void count(const char* name, const char* side, Operation operation) {
  for (int i = 0; i < 6; ++i) operation();  // The first calls search, trace and resolve.
  for (const int times : {kCalls, 2 * kCalls}) {
    const std::string label = std::string(name) + ' ' + side + ' ' + std::to_string(times);
    const long allocationsBefore = allocations;
    const long locksBefore = locks;
    CALLGRIND_ZERO_STATS;
    repeat(times, operation);
    CALLGRIND_DUMP_STATS_AT(label.c_str());
    std::printf("%s %ld %ld\n", label.c_str(), allocations - allocationsBefore, locks - locksBefore);
  }
}

}  // namespace

int main() {
  const Company company;
  Calls calls;
  calls.each([](const char* name, auto bare, auto library) {
    count(name, "bare", bare);
    count(name, "library", library);
  });
}
