// Loads a library whose neighbours are loaded already, for callgrind to count, and prints what it then holds of memory.
// Usage: bench_load LIBRARY NEIGHBOUR...

#include <dlfcn.h>
#include <malloc.h>
#include <valgrind/callgrind.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

/// Loads, or ends the program with the reason.
void load(const char* path) {
  if (dlopen(path, RTLD_NOW | RTLD_GLOBAL)) return;
  std::fprintf(stderr, "bench_load: %s\n", dlerror());
  std::exit(1);
}

/// Adds up an entry of /proc/self/smaps over the mappings of a file, in kilobytes.
long kilobytes(const std::string& path, const std::string& entry) {
  std::ifstream maps("/proc/self/smaps");
  long sum = 0;
  bool own = false;
  for (std::string line; std::getline(maps, line);) {
    const std::string first = line.substr(0, line.find(' '));
    if (first.back() != ':')
      own = line.size() >= path.size() && line.compare(line.size() - path.size(), path.size(), path) == 0;
    if (own && first == entry + ':') sum += std::stol(line.substr(first.size()));
  }
  return sum;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "Usage: bench_load LIBRARY NEIGHBOUR...\n");
    return 1;
  }
  for (int i = 2; i < argc; ++i) load(argv[i]);
  const auto before = mallinfo2().uordblks;
  CALLGRIND_ZERO_STATS;
  load(argv[1]);
  CALLGRIND_DUMP_STATS_AT("load");
  const auto heap = mallinfo2().uordblks - before;
  std::printf("resident %ld\nprivate %ld\nheap %zu\n", kilobytes(argv[1], "Rss"),
              kilobytes(argv[1], "Anonymous"), heap);
}
