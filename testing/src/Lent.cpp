#include "Lent.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <mutex>

namespace vorn_testing {

namespace {

struct Page {
  void* memory = nullptr;
  const char* operation = nullptr;
  Stack call;
};

// The last ones are enough: what is kept is used soon, or never reported.
std::array<Page, 256> g_pages;
std::size_t g_next;
std::mutex g_mutex;
OnKept g_onKept;
struct sigaction g_before;

std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

void onFault(int, siginfo_t* info, void*) {
  Page touched;
  OnKept onKept = nullptr;
  {
    const std::lock_guard<std::mutex> lock(g_mutex);
    onKept = g_onKept;
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    for (Page& page : g_pages) {
      const auto begin = reinterpret_cast<std::uintptr_t>(page.memory);
      if (!page.memory || address < begin || address - begin >= pageSize()) continue;
      touched = page;
      mprotect(page.memory, pageSize(), PROT_READ | PROT_WRITE);
      page = Page();
      break;
    }
  }
  if (touched.memory)
    onKept(touched.operation, touched.call);
  else
    sigaction(SIGSEGV, &g_before, nullptr);  // not ours: the instruction runs again and is theirs
}

}  // namespace

void watchLent(OnKept onKept) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_onKept = onKept;
  struct sigaction action = {};
  action.sa_sigaction = onFault;
  action.sa_flags = SA_SIGINFO | SA_NODEFER;
  struct sigaction current = {};
  sigaction(SIGSEGV, nullptr, &current);
  if (current.sa_sigaction == onFault) return;
  g_before = current;
  sigaction(SIGSEGV, &action, nullptr);
}

void* lend() {
  void* const memory = mmap(nullptr, pageSize(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return memory;
}

void takeBack(void* memory, const char* operation) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  mprotect(memory, pageSize(), PROT_NONE);
  Page& page = g_pages[g_next++ % g_pages.size()];
  if (page.memory) munmap(page.memory, pageSize());
  page.memory = memory;
  page.operation = operation;
  page.call = Stack::here();
}

}  // namespace vorn_testing
