#pragma once

#include <dlfcn.h>

#include <mutex>
#include <stdexcept>
#include <string>

namespace operations {

/// A mutex of an adapter, "m_mutex" or "m_dalMutex".
inline std::mutex& mutexOf(const std::string& adapter, const std::string& member = "m_mutex") {
  const auto part = [](const std::string& name) { return std::to_string(name.size()) + name; };
  const std::string symbol = "_ZN" + part("VornDeviceAbstractionLayer") + part(adapter) + part(member) + "E";
  void* const found = dlsym(RTLD_DEFAULT, symbol.c_str());
  if (!found) throw std::runtime_error(dlerror());
  return *static_cast<std::mutex*>(found);
}

/// Whether some thread holds it.
inline bool isHeld(std::mutex& mutex) {
  if (!mutex.try_lock()) return true;
  mutex.unlock();
  return false;
}

}  // namespace operations
