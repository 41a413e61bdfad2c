// Loads a library that has a host, the doctor and, through it, the adapters, as a program with plug-ins does.

#include <dlfcn.h>

#include <cstdio>

int main(int, char** arguments) {
  void* const library = dlopen(arguments[1], RTLD_LAZY | RTLD_LOCAL);
  if (!library) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 2;
  }
  const auto watchesHere = reinterpret_cast<int (*)()>(dlsym(library, "watchesHere"));
  return !watchesHere || watchesHere() != 0;
}
