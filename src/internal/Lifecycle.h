#pragma once

#include <atomic>
#include <memory>
#include <mutex>

/// The life that the adapters share, as functions on each class's own m_mutex, m_instance and m_live.
namespace VornDeviceAbstractionLayer::internal {

using Lock = std::lock_guard<std::mutex>;

/// Returns the live instance, first filling it from `make()` when empty. If `make` throws, it stays empty.
/// A class with unlocked operations hands in its flag as well.
template <class Adapter, class Make>
std::shared_ptr<Adapter> obtain(std::mutex& mutex, std::shared_ptr<Adapter>& instance, Make make,
                                std::atomic<bool>* liveFlag = nullptr) {
  const Lock lock(mutex);
  if (!instance) {
    instance = make();
    if (liveFlag) liveFlag->store(true, std::memory_order_release);
  }
  return instance;
}

/// Returns the live instance, or an empty pointer.
template <class Adapter>
std::shared_ptr<Adapter> current(std::mutex& mutex, const std::shared_ptr<Adapter>& instance) {
  const Lock lock(mutex);
  return instance;
}

/// Drops the library's reference; copies handed out keep the object.
template <class Adapter>
void drop(std::mutex& mutex, std::shared_ptr<Adapter>& instance, std::atomic<bool>* liveFlag = nullptr) {
  const Lock lock(mutex);
  if (liveFlag) liveFlag->store(false, std::memory_order_release);
  instance.reset();
}

/// The guard of unlocked operations: whether the class has an instance, without its mutex. m_instance
/// itself cannot be read while another thread fills or empties it; the flag beside it can.
inline bool live(const std::atomic<bool>& flag) { return flag.load(std::memory_order_acquire); }

}  // namespace VornDeviceAbstractionLayer::internal
