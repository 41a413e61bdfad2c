// What a host leaves behind, and what it changes of its process.

#include <dirent.h>
#include <malloc.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <clocale>
#include <csignal>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "../Checks.h"
#include "../load/Load.h"

namespace vorn_testing::checks {

namespace {

std::size_t entriesOf(const char* folder) {
  DIR* const opened = opendir(folder);
  std::size_t count = 0;
  while (opened && readdir(opened)) ++count;
  if (opened) closedir(opened);
  return count;
}

/// The calls are made ready once: what is measured is the host's.
void makeAll(Trial& trial, const std::vector<Round>& all, int times) {
  for (int i = 0; i < times; ++i) {
    for (const Round& round : all) make(trial, round);
  }
}

void leaves(Trial& trial, const char* what, const std::function<std::size_t()>& count,
            std::size_t allowance) {
  constexpr int kTimes = 20, kTurns = 3;
  guardMemory(false);
  auto all = rounds(everything());
  for (const Operation& operation : operations()) {  // ways out that are taken early
    if (operation.samples(Given::kEmpty) > 0)
      all.push_back({&operation, operation.prepare(Given::kEmpty, 0)});
  }
  makeAll(trial, all, 5);
  std::size_t before = 0, after = 0;
  for (int turn = 0; turn < kTurns; ++turn) {  // what is kept up to a limit ends to grow
    before = count();
    makeAll(trial, all, kTimes);
    after = count();
    // What waits for a worker is not left behind.
    for (int i = 0; after > before + allowance && i < 100; ++i, after = count())
      std::this_thread::sleep_for(std::chrono::milliseconds(20));  // the host alone knows when it is done
    trial.saw(std::to_string(before) + ", then " + std::to_string(after));
    if (after <= before + allowance) return;
  }
  trial.remark(std::to_string(after - before) + " more " + what + " after " + std::to_string(kTimes) +
               " calls of every operation (" + std::to_string(before) + ", then " + std::to_string(after) +
               ")");
}

std::size_t memory() {
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 33)
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
#else
  return 0;
#endif
}

/// Processes that this one has made and not waited for.
std::size_t children() {
  std::size_t count = 0;
  const std::string folder = "/proc/self/task/";
  DIR* const threads = opendir(folder.c_str());
  while (const dirent* const thread = threads ? readdir(threads) : nullptr) {
    std::ifstream all(folder + thread->d_name + "/children");
    for (std::string process; all >> process;) ++count;
  }
  if (threads) closedir(threads);
  return count;
}

/// What belongs to the process and not to the host, put into words.
std::map<std::string, std::string> surroundings() {
  std::map<std::string, std::string> found;
  char folder[4096] = "";
  found["the working directory"] = getcwd(folder, sizeof folder) ? folder : "gone";
  const mode_t mask = umask(0);
  umask(mask);
  found["the umask"] = std::to_string(mask);
  found["the locale"] = std::setlocale(LC_ALL, nullptr);
  for (char** entry = environ; entry && *entry; ++entry)
    found["the environment"] += std::string(*entry) + "\n";
  sigset_t blocked;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  for (int signal = 1; signal < 32; ++signal) {
    found["the signal mask"] += sigismember(&blocked, signal) == 1 ? '1' : '0';
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    found["the handling of signals"] +=
        std::to_string(reinterpret_cast<std::uintptr_t>(reinterpret_cast<void*>(action.sa_handler))) + " ";
  }
  for (const int stream : {0, 1, 2}) {
    struct stat file = {};
    const bool open = fstat(stream, &file) == 0;
    found["a standard stream"] +=
        open ? std::to_string(file.st_dev) + ":" + std::to_string(file.st_ino) + " " : "- ";
  }
  return found;
}

/// Whether a signal is on its way that nobody handles.
bool alarmEnds() {
  itimerval left = {};
  getitimer(ITIMER_REAL, &left);
  struct sigaction action = {};
  sigaction(SIGALRM, nullptr, &action);
  return (left.it_value.tv_sec != 0 || left.it_value.tv_usec != 0) && action.sa_handler == SIG_DFL;
}

void leavesSurroundings(Trial& trial) {
  const auto before = surroundings();
  trial.host();
  for (const Round& round : rounds(everything())) {
    make(trial, round);
    if (alarmEnds()) trial.broken(round.prepared.shown + " left an alarm behind, which ends the process");
  }
  const auto after = surroundings();
  std::string changed;
  for (const auto& entry : before) {
    if (after.at(entry.first) != entry.second) changed += (changed.empty() ? "" : ", ") + entry.first;
  }
  if (!changed.empty()) trial.remark("the host changed " + changed + " of its process");
}

}  // namespace

void addLeftChecks(Checks& checks) {
  const char* const kLeak = "Give back what a call took before it returns.";
  checks.push_back(checkOfHost("memory", "Calls leave no memory behind.", kLeak,
                               [](Trial& trial) { leaves(trial, "bytes of memory", memory, 20480); }));
  checks.push_back(checkOfHost("descriptors", "Calls leave no descriptor open.", kLeak, [](Trial& trial) {
    leaves(
        trial, "descriptors", [] { return entriesOf("/proc/self/fd"); }, 3);
  }));
  checks.push_back(checkOfHost("threads", "Calls leave no thread behind.", kLeak, [](Trial& trial) {
    leaves(
        trial, "threads", [] { return entriesOf("/proc/self/task"); }, 3);
  }));
  checks.push_back(checkOfHost("processes", "Calls leave no process behind.", kLeak,
                               [](Trial& trial) { leaves(trial, "processes", children, 3); }));
  checks.push_back(checkOfHost("surroundings", "What belongs to the process stays as it was.",
                               "Leave it to the program: a host is one part of it.", leavesSurroundings));
}

}  // namespace vorn_testing::checks
