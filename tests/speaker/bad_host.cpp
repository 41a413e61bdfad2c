// A host that does what VORN_BAD says, "when what": the speaker must tell of it whenever it is and whatever it does.

#include <VornDeviceInfo.h>
#include <VornMediaPlayerFactory.h>
#include <signal.h>
#include <unistd.h>
#include <vorn_testing/HostEntry.h>
#include <vorn_testing/NullHost.h>

#include <cstdio>
#include <cstdlib>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>

namespace {

int recurse(volatile int depth) {
  volatile char frame[1000];
  frame[0] = static_cast<char>(depth);
  if (depth < 0) return 0;  // never
  return recurse(depth + 1) + frame[0];
}

int askAgain() { return VornDeviceAbstractionLayer::VornDeviceInfo::getInstance()->getVolume(); }

/// Waits for a mutex of its own, whose holder waits for the adapter's.
void askForOwnMutex() {
  std::mutex own;
  std::promise<void> held;
  std::thread other([&] {
    const std::lock_guard<std::mutex> lock(own);
    held.set_value();
    try {
      askAgain();
    } catch (const std::system_error&) {
    }
  });
  held.get_future().wait();
  try {
    const std::lock_guard<std::mutex> lock(own);
  } catch (const std::system_error&) {
  }
  other.join();
}

/// Asks for a mutex that its own thread holds.
void lockTwice() {
  std::mutex own;
  const std::lock_guard<std::mutex> lock(own);
  try {
    const std::lock_guard<std::mutex> again(own);
  } catch (const std::system_error&) {
  }
}

void hang() {
  for (;;) pause();
}

/// Kills the process above, and says so should it still be there long after.
void endAbove() {
  signal(SIGALRM, [](int) {
    const char kLeft[] = "the host was left behind\n";
    _exit(write(STDERR_FILENO, kLeft, sizeof kLeft - 1) < 0 ? 1 : 0);
  });
  alarm(20);
  kill(getppid(), SIGKILL);
  hang();
}

bool hearsOfChildren() {
  sigset_t blocked;
  pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  return sigismember(&blocked, SIGCHLD) == 0;
}

void misbehave(const std::string& when) {
  const char* const set = std::getenv("VORN_BAD");
  const std::string wanted = set ? set : "";
  if (wanted.compare(0, when.size() + 1, when + " ") != 0) return;
  const std::string what = wanted.substr(when.size() + 1);
  if (what == "abort") std::abort();
  if (what == "trap") raise(SIGTRAP);
  if (what == "system-call") raise(SIGSYS);
  if (what == "broken-pipe") raise(SIGPIPE);
  if (what == "terminate") raise(SIGTERM);
  if (what == "orphan") endAbove();
  if (what == "children" && hearsOfChildren()) std::puts("the host hears of its children");
  if (what == "recursion") recurse(0);
  if (what == "thread-hang") std::thread(hang).join();
  if (what == "thread-recursion") std::thread([] { recurse(0); }).join();
  if (what == "close")
    for (int file = 0; file < 1024; ++file) close(file);
  if (what == "stop") raise(SIGSTOP);
  if (what == "kill") kill(getpid(), SIGKILL);
  if (what == "kill-group") kill(0, SIGKILL);
  if (what == "exit") std::exit(0);
  if (what == "quick-exit") _exit(0);
  if (what == "hang") hang();
  if (what == "throw") throw std::runtime_error("nothing for it");
  if (what == "throw-secret") throw std::runtime_error("the PSK is KEEP-THIS");
  if (what == "throw-raw") throw std::runtime_error("nothing\x1b[2J for it");
  if (what == "print") std::puts("the host prints");
  if (what == "complain-raw") std::fputs("the host\x1b[2J complains\n", stderr);
  if (what == "ask-again") askAgain();
  if (what == "own-mutex") askForOwnMutex();
  if (what == "lock-twice") lockTwice();
  if (what == "factory") {
    static vorn_testing::MediaPlayers none;
    VornDeviceAbstractionLayer::VornMediaPlayerFactory::CreateInstance(none);
  }
  if (what == "leave" && fork() == 0) hang();
}

struct Library {
  Library() { misbehave("load"); }
  ~Library() { misbehave("unload"); }
} g_library;

__attribute__((destructor)) void finish() { misbehave("finish"); }

class BadHost : public vorn_testing::NullHost {
 public:
  ~BadHost() override { misbehave("destroy"); }
  int getVolume() override {
    misbehave("call");
    return 7;
  }
  bool getMuteStatus() override {
    misbehave("mute");
    return false;
  }
};

}  // namespace

VornDeviceAbstractionLayer::VornDALImplIF* vornCreateHost() {
  misbehave("make");
  const char* const set = std::getenv("VORN_BAD");
  return set && std::string(set) == "make none" ? nullptr : new BadHost;
}

void vornDestroyHost(VornDeviceAbstractionLayer::VornDALImplIF* host) { delete host; }

vorn_testing::MediaPlayers* vornMediaPlayers(VornDeviceAbstractionLayer::VornDALImplIF*) {
  misbehave("ask");
  return nullptr;
}
