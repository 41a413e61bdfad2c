#include "HostLibrary.h"

#include <dlfcn.h>
#include <vorn_testing/HostEntry.h>

#include <stdexcept>

namespace vorn_speaker {

namespace {

/// Never closed: what the host started may outlive it.
void* load(const std::string& path) {
  // A name without a folder is meant as a file here, not as a system library.
  void* const library =
      dlopen((path.find('/') == std::string::npos ? "./" + path : path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library) throw std::runtime_error(path + ": cannot be loaded: " + dlerror());
  return library;
}

template <class Function>
Function* find(void* library, const std::string& path, const char* name) {
  void* const symbol = dlsym(library, name);
  if (!symbol) throw std::runtime_error(path + ": lacks " + name + "(), see vorn_testing/HostEntry.h");
  return reinterpret_cast<Function*>(symbol);
}

}  // namespace

HostLibrary::HostLibrary(const std::string& path) : m_host(nullptr, nullptr) {
  void* const library = load(path);
  const auto create = find<decltype(vornCreateHost)>(library, path, "vornCreateHost");
  const auto destroy = find<decltype(vornDestroyHost)>(library, path, "vornDestroyHost");
  m_host = {create(), destroy};
  if (!m_host) throw std::runtime_error(path + ": vornCreateHost() made no host");
}

}  // namespace vorn_speaker
