#include "LockWatch.h"

#include <VornDeviceInfo.h>
#include <dlfcn.h>
#include <link.h>
#include <pthread.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>

namespace vorn_testing {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kPatience(500), kGlance(100);

std::atomic<OnWait> g_onWait;

struct Watched;

/// What a thread waits for, if it does.
struct Thread {
  const Watched* wants = nullptr;
  Stack asked;
  Clock::time_point since;
};
thread_local Thread t_self;
thread_local bool t_reporting;

struct Watched {
  std::string name;
  const Thread* holder = nullptr;
  Stack taken;
};

/// Guards every Thread and every Watched but its name.
std::mutex g_waitsMutex;

/// The library's mutexes by address. Filled once, before the first lock is watched.
std::map<const void*, Watched>& mutexes() {
  static std::map<const void*, Watched> found;
  return found;
}

using MutexFunction = int(pthread_mutex_t*);
MutexFunction* g_lock;
MutexFunction* g_unlock;

/// The thread for which `self` would wait without end, or null. Under g_waitsMutex.
const Thread* obstacle(const Thread& self) {
  const Thread* const holder = self.wants->holder;
  const Thread* next = holder;
  for (std::size_t steps = 0; next && steps < mutexes().size(); ++steps) {
    if (next == &self) return holder;
    next = next->wants ? next->wants->holder : nullptr;
  }
  const bool stuck =
      holder && holder->wants && Clock::now() - std::max(self.since, holder->since) >= kPatience;
  return stuck ? holder : nullptr;
}

/// Takes note that this thread stops waiting if its wait would not end, and tells why.
bool givesUp(Wait& wait) {
  const std::lock_guard<std::mutex> lock(g_waitsMutex);
  const Thread* const other = obstacle(t_self);
  if (!other) return false;
  const bool own = other == &t_self;
  wait = {t_self.wants->name, own ? "" : other->wants->name, t_self.asked,
          own ? t_self.wants->taken : other->asked};
  t_self.wants = nullptr;
  return true;
}

int lockForAWhile(pthread_mutex_t* mutex) {
  timespec until = {};
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_nsec += std::chrono::nanoseconds(kGlance).count();
  until.tv_sec += until.tv_nsec / 1000000000;
  until.tv_nsec %= 1000000000;
  return pthread_mutex_timedlock(mutex, &until);
}

int lockWatched(pthread_mutex_t* mutex) {
  const OnWait onWait = g_onWait;
  const auto known = onWait ? mutexes().find(mutex) : mutexes().end();
  if (known == mutexes().end() || t_reporting) return g_lock(mutex);
  Watched& watched = known->second;
  {
    const Stack here = Stack::here();
    const std::lock_guard<std::mutex> lock(g_waitsMutex);
    t_self = {&watched, here, Clock::now()};
  }
  int result = 0;
  do {
    if (Wait wait; givesUp(wait)) {
      t_reporting = true;
      onWait(wait);
      t_reporting = false;
      return EDEADLK;
    }
    result = lockForAWhile(mutex);
  } while (result == ETIMEDOUT);
  const std::lock_guard<std::mutex> lock(g_waitsMutex);
  t_self.wants = nullptr;
  if (result == 0) {
    watched.holder = &t_self;
    watched.taken = t_self.asked;
  }
  return result;
}

int unlockWatched(pthread_mutex_t* mutex) {
  if (const auto known = mutexes().find(mutex); known != mutexes().end()) {
    const std::lock_guard<std::mutex> lock(g_waitsMutex);
    known->second.holder = nullptr;
  }
  return g_unlock(mutex);
}

void findMutexes() {
  const auto part = [](const std::string& name) { return std::to_string(name.size()) + name; };
  for (const char* adapter :
       {"FileLogger", "VornAlexaState", "VornAppMessaging", "VornAttachmentReaderContainerFactory",
        "VornAudioFocus", "VornAudioIn", "VornCommsManager", "VornDeviceCapabilities", "VornDeviceInfo",
        "VornEMPAdapterControl", "VornGUIOutput", "VornLEDController", "VornLoggerObserver",
        "VornMediaPlayerFactory", "VornOOBE", "VornStorage"}) {
    for (const char* member : {"m_mutex", "m_dalMutex"}) {
      const std::string symbol =
          "_ZN" + part("VornDeviceAbstractionLayer") + part(adapter) + part(member) + "E";
      if (const void* const mutex = dlsym(RTLD_DEFAULT, symbol.c_str()))
        mutexes()[mutex].name = std::string(adapter) + "::" + member;
    }
  }
}

// The loader's tables hold addresses as numbers.
// NOLINTBEGIN(performance-no-int-to-ptr)

/// The library's place in memory and its dynamic section, which its loader entry tells.
struct Image {
  const char* base = nullptr;
  const ElfW(Dyn) * dynamic = nullptr;
};

int findImage(dl_phdr_info* info, size_t, void* found) {
  const auto address =
      reinterpret_cast<std::uintptr_t>(&VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown);
  bool inside = false;
  const ElfW(Dyn)* dynamic = nullptr;
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& header = info->dlpi_phdr[i];
    const std::uintptr_t begin = info->dlpi_addr + header.p_vaddr;
    if (header.p_type == PT_LOAD && address >= begin && address - begin < header.p_memsz) inside = true;
    if (header.p_type == PT_DYNAMIC) dynamic = reinterpret_cast<const ElfW(Dyn)*>(begin);
  }
  if (!inside) return 0;
  static_cast<Image*>(found)->base = reinterpret_cast<const char*>(info->dlpi_addr);
  static_cast<Image*>(found)->dynamic = dynamic;
  return 1;
}

/// Puts `function` into the slot through which the library calls another; the slots are read-only by then.
void redirect(void** slot, MutexFunction* function) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  void* const start = reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(slot) & ~(page - 1));
  mprotect(start, page, PROT_READ | PROT_WRITE);
  *slot = reinterpret_cast<void*>(function);
  mprotect(start, page, PROT_READ);
}

void redirectAll(const Image& image) {
  const auto at = [&](const ElfW(Dyn) & entry) {  // some loaders have added the base already, some have not
    const auto address = reinterpret_cast<const char*>(entry.d_un.d_ptr);
    return address >= image.base ? address : image.base + entry.d_un.d_ptr;
  };
  const ElfW(Sym)* symbols = nullptr;
  const char* names = nullptr;
  const char* tables[2] = {nullptr, nullptr};
  std::size_t sizes[2] = {0, 0};
  for (auto entry = image.dynamic; entry->d_tag != DT_NULL; ++entry) {
    switch (entry->d_tag) {
      case DT_SYMTAB:
        symbols = reinterpret_cast<const ElfW(Sym)*>(at(*entry));
        break;
      case DT_STRTAB:
        names = at(*entry);
        break;
      case DT_JMPREL:
        tables[0] = at(*entry);
        break;
      case DT_PLTRELSZ:
        sizes[0] = entry->d_un.d_val;
        break;
      case DT_RELA:
        tables[1] = at(*entry);
        break;
      case DT_RELASZ:
        sizes[1] = entry->d_un.d_val;
        break;
      default:
        break;
    }
  }
  if (!symbols || !names) return;
  for (int table = 0; table < 2; ++table) {
    const auto relocations = reinterpret_cast<const ElfW(Rela)*>(tables[table]);
    for (std::size_t i = 0; i < sizes[table] / sizeof(ElfW(Rela)); ++i) {
      const char* const name = names + symbols[ELF64_R_SYM(relocations[i].r_info)].st_name;
      void** const slot = reinterpret_cast<void**>(const_cast<char*>(image.base) + relocations[i].r_offset);
      if (!std::strcmp(name, "pthread_mutex_lock")) redirect(slot, lockWatched);
      if (!std::strcmp(name, "pthread_mutex_unlock")) redirect(slot, unlockWatched);
    }
  }
}

// NOLINTEND(performance-no-int-to-ptr)

bool install() {
  findMutexes();
  g_lock = reinterpret_cast<MutexFunction*>(dlsym(RTLD_DEFAULT, "pthread_mutex_lock"));
  g_unlock = reinterpret_cast<MutexFunction*>(dlsym(RTLD_DEFAULT, "pthread_mutex_unlock"));
  Image image;
  dl_iterate_phdr(findImage, &image);
  redirectAll(image);
  Stack::here();  // the first one loads what it needs, and must not do so under a mutex
  return true;
}

}  // namespace

void watchLocks(OnWait onWait) {
  static const bool installed = install();
  if (installed) g_onWait = onWait;
}

}  // namespace vorn_testing
