// Counts the atomic changes of memory in every kind of call: those of reference counts, and those of mutexes and of
// whatever else the C library does. The processor traps after every instruction; what is counted is each that it
// executes with the bus lock. A table goes to standard output: name, side, calls, outside the C library, inside.

#include <link.h>
#include <signal.h>
#include <ucontext.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "../Calls.h"
#include "../Company.h"

namespace {

constexpr int kCalls = 10;
constexpr greg_t kTrapFlag = 0x100;

std::uintptr_t libraryBegin, libraryEnd;  // The C library's code.
volatile long outside, inside;

int findLibrary(dl_phdr_info* object, std::size_t, void*) {
  if (!std::strstr(object->dlpi_name, "/libc.so")) return 0;
  libraryBegin = object->dlpi_addr;
  for (int i = 0; i < object->dlpi_phnum; ++i)
    if (object->dlpi_phdr[i].p_type == PT_LOAD)
      libraryEnd = object->dlpi_addr + object->dlpi_phdr[i].p_vaddr + object->dlpi_phdr[i].p_memsz;
  return 1;
}

/// Whether an instruction changes memory atomically: it has the lock prefix, or exchanges with memory.
bool isAtomic(const unsigned char* at) {
  for (; std::memchr("\x26\x2e\x36\x3e\x64\x65\x66\x67\xf0\xf2\xf3", *at, 11) || (*at & 0xf0) == 0x40; ++at)
    if (*at == 0xf0) return true;
  return (*at == 0x86 || *at == 0x87) && at[1] < 0xc0;
}

/// A breakpoint starts and ends the count; while it runs, every instruction traps before it is executed.
void onTrap(int, siginfo_t* signal, void* context) {
  greg_t* const registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
  if (signal->si_code == SI_KERNEL) {
    registers[REG_EFL] ^= kTrapFlag;
    return;
  }
  const auto at = static_cast<std::uintptr_t>(registers[REG_RIP]);
  if (!isAtomic(reinterpret_cast<const unsigned char*>(at))) return;
  const bool library = at >= libraryBegin && at < libraryEnd;
  if (library) {
    inside = inside + 1;
  } else {
    outside = outside + 1;
  }
}

template <class Operation>
void count(const char* name, const char* side, Operation operation) {
  for (int i = 0; i < 6; ++i) operation();  // The first calls search, trace and resolve.
  inside = outside = 0;
  asm volatile("int3" : : : "memory");
  for (int i = 0; i < kCalls; ++i) operation();
  asm volatile("int3" : : : "memory");
  std::printf("%s %s %d %ld %ld\n", name, side, kCalls, outside, inside);
}

}  // namespace

int main() {
  const Company company;
  struct sigaction action = {};
  action.sa_sigaction = onTrap;
  action.sa_flags = SA_SIGINFO;
  if (!dl_iterate_phdr(findLibrary, nullptr) || sigaction(SIGTRAP, &action, nullptr) != 0) {
    std::fprintf(stderr, "bench_atomics: needs a shared C library and its SIGTRAP\n");
    return 1;
  }
  Calls calls;
  calls.each([](const char* name, auto bare, auto library) {
    count(name, "bare", bare);
    count(name, "library", library);
  });
}
