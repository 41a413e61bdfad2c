#include "LockOrder.h"

#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>

#include "vorn_testing/Interposed.h"

namespace vorn_testing::checks {

namespace {

constexpr std::size_t kHeld = 16, kEdges = 2000, kCircles = 40, kLongest = 3;
constexpr int kMomentMs = 150;

/// Somebody asked for `to` while it held `from`.
struct Edge {
  const void *from, *to;
  int step;
};

/// Handlers of a mutex may neither ask for memory nor take a mutex: a place of fixed size, and a lock that turns.
struct Seen {
  std::atomic_flag busy = ATOMIC_FLAG_INIT;
  Edge edges[kEdges];
  std::size_t count;
};
Seen g_seen;

class Alone {
 public:
  Alone() {
    while (g_seen.busy.test_and_set(std::memory_order_acquire)) sched_yield();
  }
  ~Alone() { g_seen.busy.clear(std::memory_order_release); }
  Alone(const Alone&) = delete;
  Alone& operator=(const Alone&) = delete;
};

std::atomic<bool> g_looks{false};
std::atomic<int> g_step{-1};

thread_local const void* t_held[kHeld];
thread_local std::size_t t_count = 0;

/// The circle whose threads are to meet, and who is there.
struct Meeting {
  std::atomic<std::size_t> size{0};
  Edge edges[kLongest];
  std::atomic<bool> there[kLongest];
};
Meeting g_meeting;

std::vector<std::vector<Edge>>& found() {
  static auto* const all = new std::vector<std::vector<Edge>>;
  return *all;
}

void addEdge(const void* from, const void* to) {
  const Alone alone;
  const int step = g_step;
  std::size_t same = 0;
  for (std::size_t i = 0; i < g_seen.count; ++i) {
    const Edge& edge = g_seen.edges[i];
    if (edge.from == from && edge.to == to && (edge.step == step || ++same == 4)) return;
  }
  if (g_seen.count < kEdges) g_seen.edges[g_seen.count++] = {from, to, step};
}

void meet(const void* from, const void* to) {
  const std::size_t size = g_meeting.size;
  for (std::size_t i = 0; i < size; ++i) {
    if (g_meeting.edges[i].from != from || g_meeting.edges[i].to != to || g_meeting.there[i].exchange(true))
      continue;
    const int error = errno;
    const timespec turn{0, 1000000};
    for (int waited = 0; waited < kMomentMs; ++waited) {
      if (std::all_of(g_meeting.there, g_meeting.there + size,
                      [](const auto& there) { return there.load(); }))
        break;
      nanosleep(&turn, nullptr);
    }
    errno = error;
    return;
  }
}

}  // namespace

LockOrder::LockOrder() {
  g_seen.count = 0;
  g_step = -1;
  found().clear();
  g_looks = true;
}

LockOrder::~LockOrder() {
  g_meeting.size = 0;
  g_looks = false;
}

bool LockOrder::sees() {
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  const std::size_t before = t_count;
  pthread_mutex_lock(&mutex);
  const bool seen = t_count > before;
  pthread_mutex_unlock(&mutex);
  return seen;
}

void LockOrder::at(int step) { g_step = step; }

std::vector<std::vector<int>> LockOrder::circles() const {
  auto& all = found();
  all.clear();
  std::vector<Edge> edges;
  {
    const Alone alone;
    edges.assign(g_seen.edges, g_seen.edges + g_seen.count);
  }
  // The same circle is found once, from its least mutex.
  const auto add = [&](const std::vector<Edge>& circle) {
    if (all.size() < kCircles) all.push_back(circle);
  };
  for (const Edge& first : edges) {
    for (const Edge& second : edges) {
      if (second.from != first.to || first.from >= first.to) continue;
      if (second.to == first.from) add({first, second});
    }
  }
  for (const Edge& first : edges) {
    for (const Edge& second : edges) {
      if (second.from != first.to || first.from >= first.to || second.to <= first.from) continue;
      for (const Edge& third : edges) {
        if (third.from == second.to && third.to == first.from) add({first, second, third});
      }
    }
  }
  std::vector<std::vector<int>> steps;
  for (const auto& circle : all) {
    steps.emplace_back();
    for (const Edge& edge : circle) steps.back().push_back(edge.step);
  }
  return steps;
}

void LockOrder::meetAt(std::size_t circle) {
  g_meeting.size = 0;
  const auto& edges = found()[circle];
  for (std::size_t i = 0; i < edges.size(); ++i) {
    g_meeting.edges[i] = edges[i];
    g_meeting.there[i] = false;
  }
  g_meeting.size = edges.size();
}

bool LockOrder::came(std::size_t which) { return g_meeting.there[which]; }

}  // namespace vorn_testing::checks

namespace vorn_testing::interposed {

using namespace checks;

void locks(const void* mutex) {
  if (!g_looks.load(std::memory_order_relaxed)) return;
  for (std::size_t i = 0; i < t_count; ++i) {
    if (t_held[i] == mutex) return;  // it is one that may be taken again, or the thread waits for itself
  }
  if (t_count == 0) return;
  if (g_step >= 0) {
    for (std::size_t i = 0; i < t_count; ++i) addEdge(t_held[i], mutex);
  }
  if (g_meeting.size) {
    for (std::size_t i = 0; i < t_count; ++i) meet(t_held[i], mutex);
  }
}

void unlocked(const void* mutex) {
  for (std::size_t i = t_count; i-- > 0;) {
    if (t_held[i] != mutex) continue;
    std::copy(t_held + i + 1, t_held + t_count, t_held + i);
    --t_count;
    return;
  }
}

}  // namespace vorn_testing::interposed

namespace vorn_testing::checks {

void noteHeld(const void* mutex) {
  if (g_looks.load(std::memory_order_relaxed) && t_count < kHeld) t_held[t_count++] = mutex;
}

std::size_t heldMutexes(const void** mutexes, std::size_t most) {
  std::copy(t_held, t_held + std::min(t_count, most), mutexes);
  return t_count;
}

}  // namespace vorn_testing::checks
