#include "Argument.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <mutex>

namespace vorn_testing {

namespace {

struct Page {
  void* memory;
  Misuse misuse;  ///< What a fault on it means; without an operation when that was reported.
  bool running;   ///< Its call still runs.
};

// Of calls that ended, the last ones are enough: what is kept is used soon, or never reported.
constexpr std::size_t kPages = 256;
std::mutex g_mutex;
OnMisuse g_onMisuse;
struct sigaction g_before;

std::list<Page>& pages() {
  static auto* const all = new std::list<Page>;  // hosts may touch what they kept until the very end
  return *all;
}

std::size_t pageSize() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

std::list<Page>::iterator pageOf(const void* address) {
  return std::find_if(pages().begin(), pages().end(), [&](const Page& page) {
    const auto at = reinterpret_cast<std::uintptr_t>(address),
               begin = reinterpret_cast<std::uintptr_t>(page.memory);
    return at >= begin && at - begin < pageSize();
  });
}

void onFault(int, siginfo_t* info, void*) {
  std::unique_lock<std::mutex> lock(g_mutex);
  const auto page = pageOf(info->si_addr);
  if (page == pages().end()) {
    sigaction(SIGSEGV, &g_before, nullptr);  // not ours: the instruction runs again and is theirs
    return;
  }
  const Misuse misuse = page->misuse;
  const OnMisuse onMisuse = g_onMisuse;
  mprotect(page->memory, pageSize(), PROT_READ | PROT_WRITE);
  page->misuse.operation = nullptr;
  lock.unlock();
  if (misuse.operation) onMisuse(misuse);  // if another thread has not reported it just now
}

}  // namespace

void watchArguments(OnMisuse onMisuse) {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_onMisuse = onMisuse;
  struct sigaction current = {};
  sigaction(SIGSEGV, nullptr, &current);
  if (current.sa_sigaction == onFault) return;
  g_before = current;
  struct sigaction action = {};
  action.sa_sigaction = onFault;
  // On the stack that whoever was there before wants: a fault for want of stack gets to them on no other.
  action.sa_flags = SA_SIGINFO | SA_NODEFER | (current.sa_flags & SA_ONSTACK);
  sigaction(SIGSEGV, &action, nullptr);
}

ArgumentPage::ArgumentPage(const char* operation)
    : m_operation(operation),
      m_memory(mmap(nullptr, pageSize(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
  if (m_memory == MAP_FAILED) throw std::bad_alloc();
  const std::lock_guard<std::mutex> lock(g_mutex);
  pages().push_back({m_memory, {Misuse::kChanged, operation, Stack::here()}, true});
}

ArgumentPage::~ArgumentPage() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  mprotect(m_memory, pageSize(), PROT_NONE);
  const auto page = pageOf(m_memory);
  page->running = false;
  page->misuse.kind = Misuse::kKept;
  page->misuse.operation = m_operation;
  if (pages().size() <= kPages) return;
  const auto oldest =
      std::find_if(pages().begin(), pages().end(), [](const Page& each) { return !each.running; });
  if (oldest->misuse.operation) munmap(oldest->memory, pageSize());  // who misused it may go on
  pages().erase(oldest);
}

void ArgumentPage::close() { mprotect(m_memory, pageSize(), PROT_READ); }

bool ArgumentPage::open() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  mprotect(m_memory, pageSize(), PROT_READ | PROT_WRITE);
  return pageOf(m_memory)->misuse.operation;
}

void ArgumentPage::reportChange() {
  OnMisuse onMisuse = nullptr;
  Misuse misuse = {};
  {
    const std::lock_guard<std::mutex> lock(g_mutex);
    onMisuse = g_onMisuse;
    misuse = pageOf(m_memory)->misuse;
  }
  onMisuse(misuse);
}

}  // namespace vorn_testing
