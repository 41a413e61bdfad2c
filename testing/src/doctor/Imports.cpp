#include "Imports.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>

namespace vorn_testing {

// The loader's tables hold addresses as numbers.
// NOLINTBEGIN(performance-no-int-to-ptr)

namespace {

std::uintptr_t number(const void* address) { return reinterpret_cast<std::uintptr_t>(address); }

Module described(const dl_phdr_info& info) {
  Module module{info.dlpi_name, {}};
  for (int i = 0; i < info.dlpi_phnum; ++i) {
    const auto& header = info.dlpi_phdr[i];
    const std::uintptr_t begin = info.dlpi_addr + header.p_vaddr;
    if (header.p_type == PT_LOAD) module.parts.emplace_back(begin, begin + header.p_memsz);
  }
  return module;
}

using Visit = std::function<void(const dl_phdr_info&)>;

/// While the loader holds its lock, so nothing is unloaded meanwhile.
void eachModule(Visit visit) {
  const auto call = [](dl_phdr_info* info, std::size_t, void* function) {
    (*static_cast<Visit*>(function))(*info);
    return 0;
  };
  dl_iterate_phdr(call, &visit);
}

/// Slots hold the address of a function, and nothing but the loader writes them.
bool isSlot([[maybe_unused]] std::uint64_t type) {
#if defined(__x86_64__)
  return type == R_X86_64_JUMP_SLOT || type == R_X86_64_GLOB_DAT;
#elif defined(__aarch64__)
  return type == R_AARCH64_JUMP_SLOT || type == R_AARCH64_GLOB_DAT;
#else
  return false;
#endif
}

/// The slots through which a module calls `symbol`, which it does not define itself.
std::vector<void**> slots(const dl_phdr_info& info, const char* symbol) {
  const ElfW(Dyn)* dynamic = nullptr;
  for (int i = 0; i < info.dlpi_phnum; ++i)
    if (info.dlpi_phdr[i].p_type == PT_DYNAMIC)
      dynamic = reinterpret_cast<const ElfW(Dyn)*>(info.dlpi_addr + info.dlpi_phdr[i].p_vaddr);
  const ElfW(Sym)* symbols = nullptr;
  const char* names = nullptr;
  const ElfW(Rela) * tables[2] = {nullptr, nullptr};
  std::size_t sizes[2] = {0, 0};
  for (auto entry = dynamic; entry && entry->d_tag != DT_NULL; ++entry) {
    // The loader has added the base already, except where it may not write.
    const std::uintptr_t told = entry->d_un.d_ptr;
    const auto at = reinterpret_cast<const char*>(told >= info.dlpi_addr ? told : info.dlpi_addr + told);
    switch (entry->d_tag) {
      case DT_SYMTAB:
        symbols = reinterpret_cast<const ElfW(Sym)*>(at);
        break;
      case DT_STRTAB:
        names = at;
        break;
      case DT_JMPREL:
        tables[0] = reinterpret_cast<const ElfW(Rela)*>(at);
        break;
      case DT_PLTRELSZ:
        sizes[0] = entry->d_un.d_val;
        break;
      case DT_RELA:
        tables[1] = reinterpret_cast<const ElfW(Rela)*>(at);
        break;
      case DT_RELASZ:
        sizes[1] = entry->d_un.d_val;
        break;
      default:
        break;
    }
  }
  std::vector<void**> found;
  for (int table = 0; symbols && names && table < 2; ++table) {
    for (std::size_t i = 0; i < sizes[table] / sizeof(ElfW(Rela)); ++i) {
      const ElfW(Rela)& relocation = tables[table][i];
      const ElfW(Sym)& wanted = symbols[ELF64_R_SYM(relocation.r_info)];
      if (isSlot(ELF64_R_TYPE(relocation.r_info)) && wanted.st_shndx == SHN_UNDEF &&
          !std::strcmp(names + wanted.st_name, symbol))
        found.push_back(reinterpret_cast<void**>(info.dlpi_addr + relocation.r_offset));
    }
  }
  return found;
}

/// How the memory at an address may be used, or -1.
int protection(const void* address) {
  const std::unique_ptr<std::FILE, decltype(&std::fclose)> maps(std::fopen("/proc/self/maps", "re"),
                                                                &std::fclose);
  char line[512];
  while (maps && std::fgets(line, sizeof line, maps.get())) {
    std::uintptr_t begin = 0, end = 0;
    char rights[5] = "";
    if (std::sscanf(line, "%" SCNxPTR "-%" SCNxPTR " %4s", &begin, &end, rights) != 3) continue;
    if (number(address) >= begin && number(address) < end)
      return (rights[0] == 'r' ? PROT_READ : 0) | (rights[1] == 'w' ? PROT_WRITE : 0) |
             (rights[2] == 'x' ? PROT_EXEC : 0);
  }
  return -1;
}

/// Returns why it could not be written; empty if it was.
std::string write(void** slot, void* function) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  void* const start = reinterpret_cast<void*>(number(slot) & ~(page - 1));
  const int before = protection(slot);
  if (before < 0) return "/proc/self/maps does not tell how its memory is protected";
  const bool closed = !(before & PROT_WRITE);
  if (closed && mprotect(start, page, before | PROT_WRITE) != 0)
    return std::string("its memory cannot be made writable: ") + std::strerror(errno);
  __atomic_store_n(slot, function, __ATOMIC_RELEASE);
  if (closed && mprotect(start, page, before) != 0)
    return std::string("its memory cannot be made read-only again: ") + std::strerror(errno);
  return {};
}

}  // namespace

bool Module::holds(const void* address) const {
  return std::any_of(parts.begin(), parts.end(), [&](const auto& part) {
    return number(address) >= part.first && number(address) < part.second;
  });
}

std::vector<const void*> Module::definitions(const std::vector<std::string>& symbols) const {
  std::vector<const void*> all(symbols.size(), nullptr);
  void* const handle = dlopen(file.empty() ? nullptr : file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (!handle) return all;
  std::transform(symbols.begin(), symbols.end(), all.begin(), [&](const std::string& symbol) {
    const void* const found = dlsym(handle, symbol.c_str());
    return holds(found) ? found : nullptr;
  });
  dlclose(handle);
  return all;
}

std::vector<Module> modules() {
  std::vector<Module> all;
  eachModule([&](const dl_phdr_info& info) { all.push_back(described(info)); });
  return all;
}

std::string Redirection::apply() {
  std::string trouble;
  m_redirected.clear();
  eachModule([&](const dl_phdr_info& info) {
    const auto found = slots(info, m_symbol);
    for (void** const slot : found) {
      if (*slot == m_replacement) continue;
      m_originals[slot] = *slot;
      if (const std::string why = write(slot, m_replacement); !why.empty())
        trouble = std::string(*info.dlpi_name ? info.dlpi_name : "the program") + ": " + why;
    }
    if (!found.empty()) m_redirected.push_back(described(info));
  });
  return trouble;
}

std::string Redirection::undo() {
  std::string trouble;
  eachModule([&](const dl_phdr_info& info) {
    for (void** const slot : slots(info, m_symbol)) {
      const auto original = m_originals.find(slot);
      if (*slot != m_replacement || original == m_originals.end()) continue;
      if (const std::string why = write(slot, original->second); !why.empty()) trouble = why;
    }
  });
  m_originals.clear();
  m_redirected.clear();
  return trouble;
}

bool Redirection::reaches(const void* address) const {
  return std::any_of(m_redirected.begin(), m_redirected.end(),
                     [&](const Module& module) { return module.holds(address); });
}

// NOLINTEND(performance-no-int-to-ptr)

}  // namespace vorn_testing
