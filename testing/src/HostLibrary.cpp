#include "vorn_testing/HostLibrary.h"

#include <dlfcn.h>

#include <stdexcept>

#include "vorn_testing/HostEntry.h"

namespace vorn_testing {

namespace {

template <class Function>
void find(Function*& function, void* library, const std::string& path, const char* name) {
  void* const symbol = dlsym(library, name);
  if (!symbol)
    throw std::runtime_error(path + " does not define " + name + "(); see vorn_testing/HostEntry.h");
  function = reinterpret_cast<Function*>(symbol);
}

}  // namespace

HostLibrary::HostLibrary(const std::string& path) {
  void* const library =
      dlopen((path.find('/') == std::string::npos ? "./" + path : path).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!library)
    throw std::runtime_error(path + " cannot be loaded: " + dlerror() +
                             "\nWhat it needs is looked for in its own runtime path and in LD_LIBRARY_PATH.");
  find(m_create, library, path, "vornCreateHost");
  find(m_destroy, library, path, "vornDestroyHost");
}

std::shared_ptr<VornDeviceAbstractionLayer::VornDALImplIF> HostLibrary::makeHost() const {
  VornDeviceAbstractionLayer::VornDALImplIF* const host = m_create();
  if (!host) return nullptr;
  return {host, m_destroy};
}

}  // namespace vorn_testing
