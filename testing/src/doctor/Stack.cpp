#include "Stack.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <cstdlib>
#include <memory>

namespace vorn_testing {

Stack Stack::here() {
  Stack stack;
  stack.depth = backtrace(stack.frames, kFrames);
  return stack;
}

std::vector<std::string> Stack::lines() const {
  std::vector<std::string> lines;
  const std::unique_ptr<char*, decltype(&std::free)> symbols(backtrace_symbols(frames, depth), &std::free);
  for (int i = 0; symbols && i < depth; ++i) {
    const std::string line = symbols.get()[i];  // file(name+offset) [address]
    const auto open = line.find('('), plus = line.find('+', open), close = line.find(')', open);
    const bool named = close != std::string::npos && plus != std::string::npos && plus > open + 1;
    lines.push_back(named ? demangled(line.substr(open + 1, plus - open - 1).c_str()) +
                                line.substr(plus, close - plus)
                          : line);
  }
  return lines;
}

std::string Stack::operation() const {
  const std::string library = "VornDeviceAbstractionLayer::";
  for (int i = 0; i < depth; ++i) {
    Dl_info info = {};
    if (!dladdr(frames[i], &info) || !info.dli_sname) continue;
    const std::string name = demangled(info.dli_sname);
    if (name.compare(0, library.size(), library) == 0)
      return name.substr(library.size(), name.find_first_of("([") - library.size()) + "()";
  }
  return {};
}

std::string demangled(const char* name) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                         &std::free);
  return status == 0 ? text.get() : name;
}

}  // namespace vorn_testing
