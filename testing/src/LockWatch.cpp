#include "LockWatch.h"

#include <VornDeviceInfo.h>
#include <dlfcn.h>
#include <link.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <map>

namespace vorn_testing {

namespace {

std::atomic<OnReentry> g_onReentry;

/// The library's mutexes by address. Filled once, before the first lock is watched.
std::map<const void*, std::string>& mutexes() {
  static std::map<const void*, std::string> found;
  return found;
}

struct Held {
  pthread_mutex_t* mutex;
  Stack stack;
};
thread_local std::vector<Held> t_held;
thread_local bool t_reporting;

using MutexFunction = int(pthread_mutex_t*);
MutexFunction* g_lock;
MutexFunction* g_unlock;

int lockWatched(pthread_mutex_t* mutex) {
  const OnReentry onReentry = g_onReentry;
  const auto known = onReentry ? mutexes().find(mutex) : mutexes().end();
  if (known == mutexes().end() || t_reporting) return g_lock(mutex);
  for (const Held& held : t_held) {
    if (held.mutex != mutex) continue;
    t_reporting = true;
    onReentry(known->second, held.stack);
    t_reporting = false;
    return EDEADLK;
  }
  const int result = g_lock(mutex);
  if (result == 0) t_held.push_back({mutex, Stack::here()});
  return result;
}

int unlockWatched(pthread_mutex_t* mutex) {
  for (auto held = t_held.begin(); held != t_held.end(); ++held) {
    if (held->mutex != mutex) continue;
    t_held.erase(held);
    break;
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
        mutexes()[mutex] = std::string(adapter) + "::" + member;
    }
  }
}

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

void watchLocks(OnReentry onReentry) {
  static const bool installed = install();
  if (installed) g_onReentry = onReentry;
}

}  // namespace vorn_testing
