#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vorn_testing {

/// A program or library that the loader placed in this process.
struct Module {
  std::string file;                                              ///< Empty for the program.
  std::vector<std::pair<std::uintptr_t, std::uintptr_t>> parts;  ///< Its memory: from, up to.

  bool holds(const void* address) const;
  /// What the module itself defines under each of these names, or null: not what it imports, and not a way to it.
  std::vector<const void*> definitions(const std::vector<std::string>& symbols) const;
};

std::vector<Module> modules();

/// A function that stands in the place of an imported one, in every module that imports it.
///
/// Only the slots are changed through which modules call each other, and a page that was read-only is so again.
class Redirection {
 public:
  Redirection(const char* symbol, void* replacement) : m_symbol(symbol), m_replacement(replacement) {}

  /// Redirects what is loaded by now, also when it did so before. Returns what went wrong, empty if nothing did.
  std::string apply();

  /// Puts back what stood there.
  std::string undo();

  /// Whether the module that holds this address was redirected.
  bool reaches(const void* address) const;

 private:
  const char* const m_symbol;
  void* const m_replacement;
  std::map<void**, void*> m_originals;
  std::vector<Module> m_redirected;
};

}  // namespace vorn_testing
