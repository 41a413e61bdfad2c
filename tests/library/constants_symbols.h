#pragma once

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

/// The full symbol table of the library that this program runs with, local symbols included.
class LibrarySymbols {
 public:
  struct Symbol {
    std::string name;
    bool local;
    std::uintptr_t address;  ///< In this process.
  };

  /// Every symbol whose mangled name is `name`.
  static std::vector<Symbol> named(const std::string& name) {
    std::vector<Symbol> found;
    for (const Symbol& symbol : all())
      if (symbol.name == name) found.push_back(symbol);
    return found;
  }

  static const std::vector<Symbol>& all() {
    static const std::vector<Symbol> symbols = read();
    return symbols;
  }

 private:
  template <class Type>
  static Type at(const std::string& bytes, std::size_t offset) {
    Type value;
    if (offset + sizeof value > bytes.size()) throw std::runtime_error("the library's file is cut short");
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
  }

  static std::vector<Symbol> read() {
    void* const handle = dlopen("libVornDALImpl.so", RTLD_LAZY | RTLD_NOLOAD);
    if (!handle) throw std::runtime_error(dlerror());
    const auto* const loaded = static_cast<const link_map*>(handle);
    std::ifstream file(loaded->l_name, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};

    std::vector<Symbol> symbols;
    const auto header = at<ElfW(Ehdr)>(bytes, 0);
    for (std::size_t i = 0; i < header.e_shnum; ++i) {
      const auto section = at<ElfW(Shdr)>(bytes, header.e_shoff + i * header.e_shentsize);
      if (section.sh_type != SHT_SYMTAB) continue;
      const auto names = at<ElfW(Shdr)>(bytes, header.e_shoff + section.sh_link * header.e_shentsize);
      for (std::size_t offset = 0; offset < section.sh_size; offset += sizeof(ElfW(Sym))) {
        const auto symbol = at<ElfW(Sym)>(bytes, section.sh_offset + offset);
        symbols.push_back({bytes.data() + names.sh_offset + symbol.st_name,
                           ELF64_ST_BIND(symbol.st_info) == STB_LOCAL, loaded->l_addr + symbol.st_value});
      }
    }
    dlclose(handle);
    if (symbols.empty()) throw std::runtime_error("the library is stripped");
    return symbols;
  }
};
