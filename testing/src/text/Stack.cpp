#include <vorn_testing/Stack.h>

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>

namespace vorn_testing {

namespace {

constexpr std::size_t kLongest = 4096;  ///< Of a name: those of templates are long.

}  // namespace

Stack Stack::here() {
  Stack stack;
  stack.depth = backtrace(stack.frames, kFrames);
  return stack;
}

std::vector<std::string> Stack::lines() const {
  std::vector<char> text(std::size_t{kFrames} * kLongest);
  spell(text.data(), text.size());
  return demangledLines(text.data());
}

std::size_t Stack::spell(char* text, std::size_t room, int from, int to) const {
  std::size_t length = 0;
  for (int i = from; i < depth && i < to; ++i) {
    Dl_info where = {};
    if (dladdr(frames[i], &where) == 0) continue;
    std::size_t end = length;
    const auto add = [&](const char* more) {
      for (; *more && end + 1 < room; ++more) text[end++] = *more;
    };
    add(where.dli_sname ? where.dli_sname : where.dli_fname);
    if (!where.dli_sname) {
      const auto offset =
          reinterpret_cast<std::uintptr_t>(frames[i]) - reinterpret_cast<std::uintptr_t>(where.dli_fbase);
      add("+0x");
      char digits[2] = {};
      for (int shift = 28; shift >= 0; shift -= 4) {
        digits[0] = "0123456789abcdef"[(offset >> shift) & 0xf];
        add(digits);
      }
    }
    if (end + 2 > room) break;
    text[end++] = '\n';
    length = end;
  }
  text[length] = '\0';
  return length;
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

std::vector<std::string> demangledLines(const std::string& text) {
  std::vector<std::string> all;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) all.push_back(demangled(line.c_str()));
  return all;
}

}  // namespace vorn_testing
