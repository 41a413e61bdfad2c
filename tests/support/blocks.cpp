// Definitions in a program come before those of the shared libraries that it loads.

#include "support/blocks.h"

#include <cstdlib>
#include <new>

namespace {

struct Block {
  const void* address;
  std::size_t size;
};

constexpr std::size_t kMost = 4096;
thread_local Block t_blocks[kMost];
thread_local std::size_t t_used;
thread_local bool t_watching;
thread_local std::size_t t_failing;

void freed(void* memory) {
  for (std::size_t i = 0; t_watching && i < t_used; ++i)
    if (t_blocks[i].address == memory) t_blocks[i] = t_blocks[--t_used];
  std::free(memory);
}

}  // namespace

namespace blocks {

Watch::Watch() {
  t_used = 0;
  t_watching = true;
}

Watch::~Watch() { t_watching = false; }

std::size_t Watch::live(std::size_t size) const {
  std::size_t count = 0;
  for (std::size_t i = 0; i < t_used; ++i) count += t_blocks[i].size >= size;
  return count;
}

std::size_t Watch::at(const void* address) const {
  for (std::size_t i = 0; i < t_used; ++i)
    if (t_blocks[i].address == address) return t_blocks[i].size;
  return 0;
}

void fail(std::size_t nth) { t_failing = nth; }

}  // namespace blocks

void* operator new(std::size_t size) {
  if (t_failing && --t_failing == 0) throw std::bad_alloc();
  void* const memory = std::malloc(size ? size : 1);
  if (!memory || (t_watching && t_used == kMost)) throw std::bad_alloc();
  if (t_watching) t_blocks[t_used++] = {memory, size};
  return memory;
}

void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { freed(memory); }
void operator delete(void* memory, std::size_t) noexcept { freed(memory); }
void operator delete[](void* memory) noexcept { freed(memory); }
void operator delete[](void* memory, std::size_t) noexcept { freed(memory); }
