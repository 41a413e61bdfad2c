#include "LockWatch.h"

#include <dlfcn.h>
#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <optional>

#include "Imports.h"
#include "OtherThreads.h"

namespace vorn_testing {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kGlance(50);
constexpr int kStillGlances = 3;  ///< So often nobody could go on before a wait counts as one without end.

std::atomic<OnWait> g_onWait;
std::atomic<std::chrono::milliseconds> g_patience;

/// Set while this thread is inside the watch, whose own locks are not watched.
thread_local bool t_inside;
class Inside {
 public:
  Inside() : m_before(t_inside) { t_inside = true; }
  ~Inside() { t_inside = m_before; }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;

 private:
  const bool m_before;
};

/// A mutex of the library.
struct Adapter {
  std::string name;
  std::mutex
      mutex;  ///< Guards what follows. One each, so that threads meet here only where they meet anyway.
  Stack taken;
  Clock::time_point since;
};

/// By address. Filled once for every library that is found, and then only read.
using Adapters = std::map<const void*, std::shared_ptr<Adapter>>;
std::atomic<const Adapters*> g_adapters;

Adapter* adapterOf(const void* mutex) {
  const Adapters* const all = g_adapters;
  const auto found = all->find(mutex);
  return found == all->end() ? nullptr : found->second.get();
}

using MutexFunction = int(pthread_mutex_t*);
MutexFunction* g_lock;
int lockWatched(pthread_mutex_t* mutex);
Redirection g_redirection("pthread_mutex_lock", reinterpret_cast<void*>(lockWatched));

/// The C library's own note. It is exact as long as that thread waits for something.
pid_t holderOf(const pthread_mutex_t* mutex) {
  return __atomic_load_n(&mutex->__data.__owner, __ATOMIC_RELAXED);
}

struct Waiter;

/// Guards the waiters, by thread.
std::mutex g_waitersMutex;
std::map<pid_t, Waiter*>& waiters() {
  static auto* const all = new std::map<pid_t, Waiter*>;  // threads may wait until the very end
  return *all;
}

/// A thread that waits for a mutex.
struct Waiter {
  const pid_t thread = thisThread();
  pthread_mutex_t* const mutex;
  const Stack here = Stack::here();
  const Clock::time_point since = Clock::now();
  bool told = false;
  bool refused = false;  ///< It goes on without the mutex.
  int still = 0;         ///< Glances in a row at which nobody could go on.

  explicit Waiter(pthread_mutex_t* wanted) : mutex(wanted) {
    const std::lock_guard<std::mutex> lock(g_waitersMutex);
    waiters()[thread] = this;
  }
  ~Waiter() {
    const std::lock_guard<std::mutex> lock(g_waitersMutex);
    waiters().erase(thread);
  }
  Waiter(const Waiter&) = delete;
  Waiter& operator=(const Waiter&) = delete;
};

std::string nameOf(const pthread_mutex_t* mutex) {
  if (const Adapter* const adapter = adapterOf(mutex)) return adapter->name;
  Dl_info info = {};
  if (dladdr(mutex, &info) && info.dli_sname && info.dli_saddr == mutex) return demangled(info.dli_sname);
  char address[32];
  std::snprintf(address, sizeof address, "%p", static_cast<const void*>(mutex));
  return std::string("the mutex at ") + address;
}

/// Where a mutex was taken, as far as that is known.
Stack takenAt(const pthread_mutex_t* mutex) {
  Adapter* const adapter = adapterOf(mutex);
  if (!adapter) return Stack();
  const std::lock_guard<std::mutex> lock(adapter->mutex);
  return adapter->taken;
}

std::string sentence(const Waiter& self, const std::string& whose, const std::string& rest) {
  const std::string operation = self.here.operation(), taken = takenAt(self.mutex).operation();
  return (operation.empty() ? "A thread" : operation) + " asks for " + nameOf(self.mutex) + ", " + whose +
         (taken.empty() ? "" : " in " + taken) + rest + ".";
}

/// The threads that `self` waits for, one for the other: each waits for a mutex that the next one holds.
struct Chain {
  std::vector<const Waiter*> links;
  pid_t last = 0;  ///< Holds what the last link waits for; 0 if nobody does.
};

Chain chainOf(const Waiter& self) {
  Chain chain;
  for (const Waiter* link = &self; link && chain.links.size() <= waiters().size();) {
    chain.links.push_back(link);
    chain.last = holderOf(link->mutex);
    const auto next = waiters().find(chain.last);
    const bool ends = next == waiters().end() || next->second == &self || next->second->refused;
    link = ends ? nullptr : next->second;
  }
  return chain;
}

bool inLibrary(const Waiter& waiter) { return adapterOf(waiter.mutex) || !waiter.here.operation().empty(); }

Clock::duration waited(const Waiter& self) {
  Clock::time_point since = self.since;
  if (Adapter* const adapter = adapterOf(self.mutex)) {  // one slow holder counts, not a queue of quick ones
    const std::lock_guard<std::mutex> lock(adapter->mutex);
    since = std::max(since, adapter->since);
  }
  return Clock::now() - since;
}

/// Whether every other thread waits too, for a mutex or without bound for another thread.
bool nobodyGoesOn() {
  const auto all = threads();
  return !all.empty() && std::all_of(all.begin(), all.end(), [](pid_t thread) {
    const auto waiter = waiters().find(thread);
    return waiter == waiters().end() ? sleepsWithoutBound(thread) : !waiter->second->refused;
  });
}

std::optional<Wait> circle(const Waiter& self, const Chain& chain) {
  const bool libraryElsewhere = std::any_of(chain.links.begin() + 1, chain.links.end(),
                                            [](const Waiter* link) { return adapterOf(link->mutex); });
  if (libraryElsewhere && !adapterOf(self.mutex)) return std::nullopt;  // that thread tells, and is refused
  if (chain.links.size() == 1)
    return Wait{Wait::kItself, sentence(self, "which its own thread holds", ""), self.here,
                takenAt(self.mutex)};
  const Waiter& next = *chain.links[1];
  return Wait{Wait::kOthers, sentence(self, "whose holder", " waits for " + nameOf(next.mutex)), self.here,
              next.here};
}

/// Its thread goes on, and whom it kept waiting perhaps too: what the others saw so far does not count.
void refuse(Waiter& self) {
  self.refused = true;
  for (const auto& waiter : waiters()) waiter.second->still = 0;
}

/// What to tell of this wait now, if anything. The thread does not wait any longer if that is without end.
std::optional<Wait> obstacle(Waiter& self) {
  std::unique_lock<std::mutex> lock(g_waitersMutex);
  const Chain chain = chainOf(self);
  if (chain.last == self.thread) {
    auto wait = circle(self, chain);
    if (wait) refuse(self);
    return wait;
  }
  const auto patience = g_patience.load(),
             spent = std::chrono::duration_cast<std::chrono::milliseconds>(waited(self));
  if (self.told || spent < patience / 2 || !inLibrary(self)) return std::nullopt;
  self.still = nobodyGoesOn() ? self.still + 1 : 0;
  if (spent < patience || chain.last == 0) return std::nullopt;
  self.told = true;
  const bool endless = self.still >= kStillGlances;
  const bool alone = chain.links.size() == 1;
  const std::string rest = (alone ? "" : " waits for " + nameOf(chain.links[1]->mutex) + ", whose holder") +
                           (endless ? " waits for another thread, and none goes on"
                                    : " has not gone on for " + std::to_string(spent.count()) + " ms");
  Wait wait{endless ? Wait::kOthers : Wait::kPatience, sentence(self, "whose holder", rest), self.here,
            alone ? Stack() : chain.links[1]->here};
  if (endless) refuse(self);
  lock.unlock();
  if (alone) wait.before = stackOf(chain.last);
  return wait;
}

int lockForAWhile(pthread_mutex_t* mutex) {
  timespec until = {};
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_nsec += std::chrono::nanoseconds(kGlance).count();
  until.tv_sec += until.tv_nsec / 1000000000;
  until.tv_nsec %= 1000000000;
  return pthread_mutex_timedlock(mutex, &until);
}

int waitFor(pthread_mutex_t* mutex, OnWait onWait) {
  Waiter self(mutex);
  int result = 0;
  do {
    if (const auto wait = obstacle(self)) {
      onWait(*wait);
      if (wait->kind != Wait::kPatience) return EDEADLK;
    }
    result = lockForAWhile(mutex);
  } while (result == ETIMEDOUT);
  return result;
}

int lockWatched(pthread_mutex_t* mutex) {
  const OnWait onWait = g_onWait;
  if (!onWait || t_inside) return g_lock(mutex);
  const Inside inside;
  int result = pthread_mutex_trylock(mutex);
  if (result == EBUSY) result = waitFor(mutex, onWait);
  if (Adapter* const adapter = result == 0 ? adapterOf(mutex) : nullptr) {
    const Stack here = Stack::here();
    const std::lock_guard<std::mutex> lock(adapter->mutex);
    adapter->taken = here;
    adapter->since = Clock::now();
  }
  return result;
}

struct Names {
  std::vector<std::string> symbols;  ///< As the compiler writes them.
  std::vector<std::string> names;    ///< As findings tell them.
};

Names mutexNames() {
  const auto part = [](const std::string& name) { return std::to_string(name.size()) + name; };
  Names all;
  for (const std::string adapter :
       {"FileLogger", "VornAlexaState", "VornAppMessaging", "VornAttachmentReaderContainerFactory",
        "VornAudioFocus", "VornAudioIn", "VornCommsManager", "VornDeviceCapabilities", "VornDeviceInfo",
        "VornEMPAdapterControl", "VornGUIOutput", "VornLEDController", "VornLoggerObserver",
        "VornMediaPlayerFactory", "VornOOBE", "VornStorage"}) {
    for (const std::string member : {"m_mutex", "m_dalMutex"}) {
      all.symbols.push_back("_ZN" + part("VornDeviceAbstractionLayer") + part(adapter) + part(member) + "E");
      all.names.push_back(adapter + "::" + member);
    }
  }
  return all;
}

/// Adds the mutexes of one module and returns one of them; null if it is not the library.
const void* addAdapters(const Module& module, Adapters& all) {
  static const Names names = mutexNames();
  const void* one = nullptr;
  const auto found = module.definitions(names.symbols);
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (!found[i]) continue;
    one = found[i];
    auto& known = all[one];
    if (!known) known = std::make_shared<Adapter>();
    known->name = names.names[i];
  }
  return one;
}

/// Returns why the library is not watched.
std::string install() {
  if (!g_lock) g_lock = reinterpret_cast<MutexFunction*>(dlsym(RTLD_DEFAULT, "pthread_mutex_lock"));
  Stack::here();  // the first one loads what it needs, and must not do so under a mutex
  std::map<std::string, const void*> libraries;  // each with a mutex of its own
  auto adapters = std::make_unique<Adapters>(g_adapters ? *g_adapters : Adapters());
  const std::size_t known = adapters->size();
  for (const Module& module : modules())
    if (const void* const mutex = addAdapters(module, *adapters)) libraries[module.file] = mutex;
  if (!g_adapters || adapters->size() != known)
    g_adapters = adapters.release();  // others may read the old one
  if (libraries.empty()) return "no library of this process exports VornDeviceInfo::m_mutex";
  std::string trouble = g_redirection.apply();
  for (const auto& [file, mutex] : libraries)
    if (trouble.empty() && !g_redirection.reaches(mutex))
      trouble = (file.empty() ? "the program" : file) + " calls pthread_mutex_lock() past its import table";
  return trouble;
}

}  // namespace

std::string watchLocks(OnWait onWait, std::chrono::milliseconds patience) {
  const Inside inside;
  g_patience = patience;
  std::string trouble = install();
  g_onWait = trouble.empty() ? onWait : nullptr;
  return trouble;
}

void leaveLocks() {
  const Inside inside;
  g_onWait = nullptr;
  g_redirection.undo();
}

}  // namespace vorn_testing
