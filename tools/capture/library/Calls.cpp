#include "Calls.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <new>

#include "../Settings.h"

namespace vorn_capture {

State state;

namespace {

constexpr std::size_t kPage = 4096;

#if defined(__GNUC__)
[[gnu::tls_model("initial-exec")]]
#endif
thread_local Thread* t_thread = nullptr;

/// The bytes of a ring: a power of two.
std::size_t ringSize() {
  static const std::size_t size = [] {
    const char* const text = std::getenv("VORN_CAPTURE_RING");
    const std::uint64_t wanted = text ? sizeOf(text) : 0;
    std::size_t made = std::size_t{256} << 10;
    while (made < wanted && made < std::size_t{1} << 30) made *= 2;
    return made;
  }();
  return size;
}

pthread_key_t key() {
  static const pthread_key_t made = [] {
    pthread_key_t created = 0;
    pthread_key_create(&created, [](void* thread) {
      t_thread = nullptr;
      static_cast<Thread*>(thread)->gone.store(true, std::memory_order_release);
    });
    return created;
  }();
  return made;
}

Thread* addThread() {
  const std::size_t room = (sizeof(Thread) + kPage - 1) / kPage * kPage;
  void* const memory =
      mmap(nullptr, room + ringSize(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  Thread* const made = new (memory) Thread(static_cast<char*>(memory) + room, ringSize());
  made->number = state.threadCount.fetch_add(1) + 1;
  made->id = static_cast<int>(syscall(SYS_gettid));
  prctl(PR_GET_NAME, made->name);
  t_thread = made;
  pthread_setspecific(key(), made);
  made->next = state.threads.load();
  while (!state.threads.compare_exchange_weak(made->next, made)) {
  }
  startWriter();
  return made;
}

}  // namespace

Thread* thisThread() { return t_thread ? t_thread : addThread(); }

void forgetThreads() {
  // Calls that this thread is inside end where they began, in a ring that nobody reads any more.
  for (Thread* thread = state.threads.exchange(nullptr); thread;) {
    Thread* const next = thread->next;
    if (thread != t_thread) dropThread(thread);
    thread = next;
  }
  t_thread = nullptr;
  pthread_setspecific(key(), nullptr);
  state.threadCount = 0;
  state.calls = 0;
}

void dropThread(Thread* thread) {
  const std::size_t room = (sizeof(Thread) + kPage - 1) / kPage * kPage;
  thread->~Thread();
  munmap(thread, room + ringSize());
}

void wakeWriter() {
  if (state.wake.exchange(1, std::memory_order_release) == 0)
    syscall(SYS_futex, &state.wake, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void tellSound(const std::vector<short>& samples) {
  Thread* const thread = thisThread();
  if (!thread) return;
  Sound sound = {{Kind::kSound, 0}, now(), 0, static_cast<std::uint32_t>(samples.size()), 0, 0, 0};
  for (const short sample : samples) {
    const int level = sample < 0 ? -int{sample} : int{sample};
    sound.peak = std::max(sound.peak, static_cast<std::uint32_t>(level));
    sound.squares += static_cast<std::uint64_t>(level) * static_cast<std::uint64_t>(level);
  }
  const std::size_t bytes =
      state.keepsSamples.load(std::memory_order_relaxed) ? samples.size() * sizeof(short) : 0;
  const std::size_t size = sizeof sound + padded(bytes);
  char* const to = thread->writing ? nullptr : thread->ring.reserve(size, thread->owed);
  if (!to) {
    thread->leftOut.store(thread->leftOut.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    return;
  }
  sound.head.size = static_cast<std::uint32_t>(size);
  sound.kept = bytes > 0;
  std::memcpy(to, &sound, sizeof sound);
  if (bytes > 0) std::memcpy(to + sizeof sound, samples.data(), bytes);
  thread->ring.commit(size);
  if (thread->ring.isHalfFull()) wakeWriter();
}

}  // namespace vorn_capture
