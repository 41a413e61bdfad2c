#include "OtherThreads.h"

#include <dirent.h>
#include <linux/futex.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>

namespace vorn_testing {

namespace {

std::mutex g_askMutex;  ///< One question at a time.
std::atomic<pid_t> g_asked;
Stack g_answer;
sem_t g_answered;

void answer(int) {
  const int kept = errno;
  pid_t self = thisThread();
  if (g_asked.compare_exchange_strong(self, 0)) {
    g_answer = Stack::here();
    sem_post(&g_answered);
  }
  errno = kept;
}

bool answersWithin(time_t seconds) {
  timespec until = {};
  clock_gettime(CLOCK_REALTIME, &until);
  until.tv_sec += seconds;
  int result = 0;
  do {
    result = sem_timedwait(&g_answered, &until);
  } while (result != 0 && errno == EINTR);
  return result == 0;
}

}  // namespace

pid_t thisThread() { return static_cast<pid_t>(syscall(SYS_gettid)); }

std::vector<pid_t> threads() {
  std::vector<pid_t> all;
  DIR* const tasks = opendir("/proc/self/task");
  if (!tasks) return all;
  while (const dirent* const entry = readdir(tasks))
    if (const int thread = std::atoi(entry->d_name)) all.push_back(thread);
  closedir(tasks);
  return all;
}

bool sleepsWithoutBound(pid_t thread) {
  const std::string path = "/proc/self/task/" + std::to_string(thread) + "/syscall";
  const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "re"), &std::fclose);
  long call = 0;
  unsigned long operation = 0, bound = 0;  // futex(address, operation, value, time-out, ...)
  if (!file || std::fscanf(file.get(), "%ld %*x %lx %*x %lx", &call, &operation, &bound) != 3) return false;
  operation &= static_cast<unsigned long>(FUTEX_CMD_MASK);
  return call == SYS_futex && bound == 0 &&
         (operation == FUTEX_WAIT || operation == FUTEX_WAIT_BITSET || operation == FUTEX_LOCK_PI);
}

Stack stackOf(pid_t thread) {
  const std::lock_guard<std::mutex> lock(g_askMutex);
  struct sigaction ask = {}, before = {};
  ask.sa_handler = answer;
  ask.sa_flags = SA_RESTART;
  sem_init(&g_answered, 0, 0);
  g_asked = thread;
  sigaction(SIGURG, &ask, &before);
  const bool sent = syscall(SYS_tgkill, getpid(), thread, SIGURG) == 0;
  // When it takes the question at the last moment, the answer is on its way.
  const bool answered = (sent && answersWithin(1)) || (g_asked.exchange(0) == 0 && answersWithin(1));
  sigaction(SIGURG, &before, nullptr);
  return answered ? g_answer : Stack();
}

}  // namespace vorn_testing
