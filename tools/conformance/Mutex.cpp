// Stands before the C library's pthread_mutex_lock() and its like for everything in this process, the host included.

#include <dlfcn.h>
#include <pthread.h>
#include <vorn_testing/Interposed.h>

#include <cerrno>

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)

namespace {

using Function = int(pthread_mutex_t*);

Function* real(const char* name) { return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name)); }

}  // namespace

extern "C" {

__attribute__((visibility("default"))) int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static Function* const next = real("pthread_mutex_lock");
  static Function* const attempt = real("pthread_mutex_trylock");
  vorn_testing::interposed::locks(mutex);
  int result = attempt(mutex);
  if (result == EBUSY) {
    vorn_testing::interposed::waits();
    result = next(mutex);
  }
  if (result == 0) {
    vorn_testing::interposed::locked(mutex);
    vorn_testing::interposed::place();
  }
  return result;
}

__attribute__((visibility("default"))) int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  static Function* const next = real("pthread_mutex_trylock");
  const int result = next(mutex);
  if (result == 0) vorn_testing::interposed::locked(mutex);
  return result;
}

__attribute__((visibility("default"))) int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  static Function* const next = real("pthread_mutex_unlock");
  vorn_testing::interposed::place();
  vorn_testing::interposed::unlocked(mutex);
  return next(mutex);
}
}

#endif
