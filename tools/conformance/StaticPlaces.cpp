// Stands before functions of the C library that keep something in static memory.

#include <dlfcn.h>
#include <vorn_testing/Interposed.h>

#include <ctime>

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)

namespace {

template <class Function>
Function* told(const char* name) {
  vorn_testing::interposed::staticPlace(name);
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) char* strtok(char* text, const char* separators) noexcept {
  return told<char*(char*, const char*)>("strtok")(text, separators);
}

__attribute__((visibility("default"))) std::tm* gmtime(const std::time_t* time) noexcept {
  return told<std::tm*(const std::time_t*)>("gmtime")(time);
}

__attribute__((visibility("default"))) std::tm* localtime(const std::time_t* time) noexcept {
  return told<std::tm*(const std::time_t*)>("localtime")(time);
}

__attribute__((visibility("default"))) char* asctime(const std::tm* time) noexcept {
  return told<char*(const std::tm*)>("asctime")(time);
}

__attribute__((visibility("default"))) char* ctime(const std::time_t* time) noexcept {
  return told<char*(const std::time_t*)>("ctime")(time);
}
}

#endif
