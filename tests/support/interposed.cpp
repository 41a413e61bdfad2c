// Definitions in a program come before those of the shared libraries that it loads: the library, and the
// standard library below it, call these.

#include "interposed.h"

#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/uio.h>
#include <time.h>
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
  std::size_t byKind[interposed::kKinds];
  interposed::Kind failed[kMost];
  std::size_t failures;
  pthread_mutex_t* asked[kMost];
  std::size_t locks;
};

struct Block {
  const void* address;
  std::size_t size;
};

constexpr std::size_t kMostBlocks = 4096;

thread_local Watch t_watch;
thread_local int t_held;
thread_local interposed::Counts t_counts;
thread_local std::size_t t_failing;
thread_local Block t_blocks[kMostBlocks];
thread_local std::size_t t_used;
thread_local bool t_watching;
std::atomic<long> g_living;
std::atomic<void*> g_watched;
// A counter for each mutex that is watched in turn: who still stands in lock() of the one before leaves his own.
std::atomic<std::size_t> g_turn;
std::atomic<int> g_waiting[64];

std::atomic<int>& waitingNow() { return g_waiting[g_turn % 64]; }

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

namespace interposed {

Counts counts() { return t_counts; }
void failAllocation(std::size_t nth) { t_failing = nth; }

void watch(std::mutex& mutex) {
  ++g_turn;
  g_watched = mutex.native_handle();
}

int waiting() { return waitingNow(); }

Blocks::Blocks() {
  t_used = 0;
  t_watching = true;
}

Blocks::~Blocks() { t_watching = false; }

std::size_t Blocks::live(std::size_t size) const {
  std::size_t count = 0;
  for (std::size_t i = 0; i < t_used; ++i) count += t_blocks[i].size >= size;
  return count;
}

std::size_t Blocks::at(const void* address) const {
  for (std::size_t i = 0; i < t_used; ++i)
    if (t_blocks[i].address == address) return t_blocks[i].size;
  return 0;
}

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

}  // namespace interposed

using interposed::point;

void* operator new(std::size_t size) {
  ++t_counts.allocations;
  if (t_failing && --t_failing == 0) throw std::bad_alloc();
  if (point(interposed::kAllocation)) throw std::bad_alloc();
  void* const memory = std::malloc(size ? size : 1);
  if (!memory || (t_watching && t_used == kMostBlocks)) throw std::bad_alloc();
  if (t_watching) t_blocks[t_used++] = {memory, size};
  ++g_living;
  return memory;
}

void operator delete(void* memory) noexcept {
  if (memory) --g_living;
  for (std::size_t i = 0; t_watching && i < t_used; ++i)
    if (t_blocks[i].address == memory) t_blocks[i] = t_blocks[--t_used];
  std::free(memory);
}

void* operator new[](std::size_t size) { return operator new(size); }
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

extern "C" {

int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
  static const auto real = next<int(pthread_mutex_t*)>("pthread_mutex_lock");
  ++t_counts.locks;
  if (t_watch.armed && t_watch.locks < kMost) t_watch.asked[t_watch.locks++] = mutex;
  if (point(interposed::kLock)) return EAGAIN;
  std::atomic<int>* const waiting = g_watched == mutex ? &waitingNow() : nullptr;
  if (waiting) ++*waiting;
  const int result = real(mutex);
  if (waiting) --*waiting;
  if (result == 0) ++t_held;
  return result;
}

ssize_t write(int file, const void* bytes, size_t size) {
  static const auto real = next<ssize_t(int, const void*, size_t)>("write");
  ++t_counts.writes;
  if (point(interposed::kWrite)) return refused<ssize_t>(ENOSPC, -1);
  return real(file, bytes, size);
}

ssize_t writev(int file, const iovec* pieces, int count) {
  static const auto real = next<ssize_t(int, const iovec*, int)>("writev");
  ++t_counts.writes;
  if (point(interposed::kWrite)) return refused<ssize_t>(ENOSPC, -1);
  return real(file, pieces, count);
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static const auto real = next<int(clockid_t, timespec*)>("clock_gettime");
  ++t_counts.clockReads;
  return real(clock, time);
}

#ifndef __SANITIZE_THREAD__

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
  if (point(interposed::kOpen)) return refused<FILE*>(EMFILE, nullptr);
  return real(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  static const auto real = next<FILE*(const char*, const char*)>("fopen64");
  if (point(interposed::kOpen)) return refused<FILE*>(EMFILE, nullptr);
  return real(path, mode);
}

int fclose(FILE* file) {
  static const auto real = next<int(FILE*)>("fclose");
  const bool failing = point(interposed::kClose);
  const int result = real(file);  // A close that fails has closed.
  return failing ? refused(EIO, EOF) : result;
}

#endif

}  // extern "C"
