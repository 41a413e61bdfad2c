// Definitions in a program come before those of the shared libraries that it loads: the library, and the
// standard library below it, call these.

#include "support/faults.h"

#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <thread>

namespace {

constexpr std::size_t kMost = 256;

struct Watch {
  bool armed;
  bool lasting;
  std::size_t failing;
  std::size_t count;
  std::size_t byKind[faults::kKinds];
  faults::Kind failed[kMost];
  std::size_t failures;
  pthread_mutex_t* asked[kMost];
  std::size_t locks;
};

thread_local Watch t_watch;
thread_local int t_held;
std::atomic<long> g_living;

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Another thread, which lives on: making one for each question takes an emulated processor a minute.
class Other {
 public:
  Other() {
    sem_init(&m_asked, 0, 0);
    sem_init(&m_answered, 0, 0);
    std::thread([this] { serve(); }).detach();
  }

  bool getsAll(const std::vector<pthread_mutex_t*>& mutexes) {
    m_mutexes = &mutexes;
    sem_post(&m_asked);
    wait(m_answered);
    return m_all;
  }

 private:
  [[noreturn]] void serve() {
    for (;;) {
      wait(m_asked);
      m_all = true;
      for (pthread_mutex_t* const mutex : *m_mutexes) {
        if (pthread_mutex_trylock(mutex) == 0)
          pthread_mutex_unlock(mutex);
        else
          m_all = false;
      }
      sem_post(&m_answered);
    }
  }

  static void wait(sem_t& semaphore) {
    while (sem_wait(&semaphore) != 0) {
    }
  }

  sem_t m_asked;
  sem_t m_answered;
  const std::vector<pthread_mutex_t*>* m_mutexes = nullptr;
  bool m_all = false;
};

/// This process's; a child has none of its parent's threads.
Other& other() {
  static Other* made;
  static pid_t maker;
  if (maker != getpid()) {
    made = new Other;
    maker = getpid();
  }
  return *made;
}

/// As a full device or a full table would.
template <class Result>
Result refused(int error, Result result) {
  errno = error;
  return result;
}

}  // namespace

namespace faults {

void arm(std::size_t failing, bool lasting) {
  t_watch = Watch{};
  t_watch.failing = failing;
  t_watch.lasting = lasting;
  t_watch.armed = true;
}

void disarm() { t_watch.armed = false; }

bool point(Kind kind) {
  Watch& watch = t_watch;
  if (!watch.armed) return false;
  ++watch.byKind[kind];
  ++watch.count;
  if (!watch.failing || watch.count < watch.failing || (watch.count > watch.failing && !watch.lasting))
    return false;
  if (watch.failures < kMost) watch.failed[watch.failures++] = kind;
  return true;
}

std::size_t points(Kind kind) { return t_watch.byKind[kind]; }
std::size_t points() { return t_watch.count; }
std::vector<Kind> failed() { return {t_watch.failed, t_watch.failed + t_watch.failures}; }
int held() { return t_held; }
long living() { return g_living; }

std::size_t asked(void* mutex) {
  return static_cast<std::size_t>(std::count(t_watch.asked, t_watch.asked + t_watch.locks, mutex));
}

void* firstAsked() { return t_watch.locks ? t_watch.asked[0] : nullptr; }

bool othersGetThem() {
  std::vector<pthread_mutex_t*> asked(t_watch.asked, t_watch.asked + t_watch.locks);
  std::sort(asked.begin(), asked.end());
  asked.erase(std::unique(asked.begin(), asked.end()), asked.end());
  return other().getsAll(asked);
}

}  // namespace faults

using faults::point;

void* operator new(std::size_t size) {
  if (point(faults::kAllocation)) throw std::bad_alloc();
  if (void* const memory = std::malloc(size ? size : 1)) {
    ++g_living;
    return memory;
  }
  throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
  if (memory) --g_living;
  std::free(memory);
}

void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static const auto real = next<int(pthread_mutex_t*)>("pthread_mutex_lock");
  if (t_watch.armed && t_watch.locks < kMost) t_watch.asked[t_watch.locks++] = mutex;
  if (point(faults::kLock)) return EAGAIN;
  const int result = real(mutex);
  if (result == 0) ++t_held;
  return result;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept {
  static const auto real = next<int(pthread_mutex_t*)>("pthread_mutex_unlock");
  --t_held;
  return real(mutex);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
  static const auto real = next<int(pthread_mutex_t*)>("pthread_mutex_trylock");
  const int result = real(mutex);
  if (result == 0) ++t_held;
  return result;
}

FILE* fopen(const char* path, const char* mode) {
  static const auto real = next<FILE*(const char*, const char*)>("fopen");
  if (point(faults::kOpen)) return refused<FILE*>(EMFILE, nullptr);
  return real(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  static const auto real = next<FILE*(const char*, const char*)>("fopen64");
  if (point(faults::kOpen)) return refused<FILE*>(EMFILE, nullptr);
  return real(path, mode);
}

ssize_t write(int file, const void* bytes, size_t size) {
  static const auto real = next<ssize_t(int, const void*, size_t)>("write");
  if (point(faults::kWrite)) return refused<ssize_t>(ENOSPC, -1);
  return real(file, bytes, size);
}

ssize_t writev(int file, const iovec* pieces, int count) {
  static const auto real = next<ssize_t(int, const iovec*, int)>("writev");
  if (point(faults::kWrite)) return refused<ssize_t>(ENOSPC, -1);
  return real(file, pieces, count);
}

int fclose(FILE* file) {
  static const auto real = next<int(FILE*)>("fclose");
  const bool failing = point(faults::kClose);
  const int result = real(file);  // A close that fails has closed.
  return failing ? refused(EIO, EOF) : result;
}

}  // extern "C"
