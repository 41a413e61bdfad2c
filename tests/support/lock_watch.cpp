// Definitions in a program come before those of the shared libraries that it loads: the library, and the
// standard library below it, call these.

#include "support/lock_watch.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <stdexcept>

namespace {

thread_local lock_watch::Counts t_counts;
thread_local std::size_t t_failing;
std::atomic<void*> g_watched;
std::atomic<int> g_waiting;

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace lock_watch {

Counts counts() { return t_counts; }

void failAllocation(std::size_t nth) { t_failing = nth; }

std::mutex& mutex(const char* symbol) {
  void* const found = dlsym(RTLD_DEFAULT, symbol);
  if (!found) throw std::runtime_error(dlerror());
  return *static_cast<std::mutex*>(found);
}

bool held(std::mutex& mutex) {
  if (!mutex.try_lock()) return true;
  mutex.unlock();
  return false;
}

void watch(std::mutex& mutex) {
  g_watched = mutex.native_handle();
  g_waiting = 0;
}

int waiting() { return g_waiting; }

}  // namespace lock_watch

void* operator new(std::size_t size) {
  ++t_counts.allocations;
  if (t_failing && --t_failing == 0) throw std::bad_alloc();
  if (void* const memory = std::malloc(size ? size : 1)) return memory;
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static const auto real = next<int(pthread_mutex_t*)>("pthread_mutex_lock");
  ++t_counts.locks;
  const bool watched = g_watched == mutex;
  if (watched) ++g_waiting;
  const int result = real(mutex);
  if (watched) --g_waiting;
  return result;
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static const auto real = next<int(clockid_t, timespec*)>("clock_gettime");
  ++t_counts.clockReads;
  return real(clock, time);
}

ssize_t write(int file, const void* bytes, size_t size) {
  static const auto real = next<ssize_t(int, const void*, size_t)>("write");
  ++t_counts.writes;
  return real(file, bytes, size);
}

ssize_t writev(int file, const iovec* pieces, int count) {
  static const auto real = next<ssize_t(int, const iovec*, int)>("writev");
  ++t_counts.writes;
  return real(file, pieces, count);
}

}  // extern "C"
