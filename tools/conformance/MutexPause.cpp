// Stands before the C library's pthread_mutex_lock() for everything in this process, the host included.

#include <dlfcn.h>
#include <pthread.h>
#include <vorn_testing/HostChecks.h>

#if !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)

extern "C" {

__attribute__((visibility("default"))) int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static const auto real =
      reinterpret_cast<int (*)(pthread_mutex_t*)>(dlsym(RTLD_NEXT, "pthread_mutex_lock"));
  const int result = real(mutex);
  vorn_testing::holdUp();
  return result;
}
}

#endif
