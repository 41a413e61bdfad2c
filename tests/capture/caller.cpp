// A program that knows nothing of the capture and calls the library in one way or another: caller WAY [ARGUMENT]...

#include <VornAttachmentReaderContainerFactory.h>
#include <VornAudioIn.h>
#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>
#include <VornEMPAdapterControl.h>
#include <VornGUIOutput.h>
#include <VornStorage.h>
#include <vorn_testing/NullHost.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>
#include <iterator>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace VornDeviceAbstractionLayer;

namespace {

/// Answers with what is asked for, throws for "throw", and waits inside a call for as long as it is told.
class Host : public vorn_testing::NullHost {
 public:
  bool getSystemSetting(std::string key, std::string& value) override {
    if (key == "throw") throw std::runtime_error("the host cannot");
    if (key == "throw other") throw 7;
    value = key == "much" ? std::string(400000, 'a') : key + " is set";
    return true;
  }
  bool setSystemSetting(std::string key, std::string value) override {
    if (key == "password to throw") throw std::runtime_error("it is no " + value);
    return false;
  }
  std::map<std::string, std::string> readKeyValue(const std::string& key) override { return {{key, "kept"}}; }
  bool renderGUICard(const std::string&) override {
    entered.set_value();
    leave.get_future().wait();
    return true;
  }

  std::promise<void> entered, leave;
};

/// What no sanitizer shall notice first.
__attribute__((no_sanitize("address", "undefined"))) void fault() {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 1;
}

/// More stack than there is.
__attribute__((noinline)) int deep(const volatile int* above) {
  const volatile int here[1000] = {*above};
  return *above > 0 ? deep(here) + here[999] : 0;
}

struct Caller {
  Host host;
  std::vector<std::string> arguments;

  std::string argument(std::size_t i) const { return i < arguments.size() ? arguments[i] : ""; }
  long number(std::size_t i) const { return std::atol(argument(i).c_str()); }

  void ask(const std::string& key) {
    std::string value;
    VornDeviceInfo::getInstance()->getSystemSetting(key, value);
  }

  /// Until ARGUMENT 0 holds the text so often. @returns  How long it is then.
  std::size_t awaitInFile(const std::string& text, int times = 1) {
    for (;;) {
      std::ifstream in(argument(0));
      const std::string all(std::istreambuf_iterator<char>(in), {});
      int found = 0;
      for (std::size_t at = 0; (at = all.find(text, at)) != std::string::npos; at += text.size()) ++found;
      if (found >= times) return all.size();
    }
  }

  int plain() {
    ask("mode");
    return static_cast<int>(number(0));
  }

  int quick() {
    ask("mode");
    std::quick_exit(static_cast<int>(number(0)));
  }

  /// Every thread tells its number and the call's, so that no line is like another.
  int many() {
    const auto storage = VornStorage::getInstance();
    std::vector<std::thread> threads;
    for (long thread = 0; thread < number(0); ++thread) {
      threads.emplace_back([this, storage, thread] {
        for (long call = 0; call < number(1); ++call)
          storage->readKeyValue(std::to_string(thread) + "." + std::to_string(call));
      });
    }
    for (std::thread& thread : threads) thread.join();
    return 0;
  }

  /// Many calls, but never more than a ring holds before they are in the file in ARGUMENT 0. @returns  1 when they get there no more.
  int steps() {
    for (int round = 0; round < 15; ++round) {
      const std::string last = "round " + std::to_string(round) + ";";
      for (int call = 0; call < 200; ++call)
        VornStorage::getInstance()->readKeyValue(call < 199 ? "a" : last);
      const auto bound = std::chrono::steady_clock::now() + std::chrono::seconds(30);
      for (std::string all; all.find(last) == std::string::npos;) {
        std::ifstream in(argument(0));
        all.assign(std::istreambuf_iterator<char>(in), {});
        if (std::chrono::steady_clock::now() > bound) return 1;
      }
    }
    return 0;
  }

  /// Calls until it is killed, and says how far it is.
  int endless() {
    const auto storage = VornStorage::getInstance();
    std::thread other([storage] {
      for (;;) storage->readKeyValue("of another thread");
    });
    for (long call = 1;; ++call) {
      storage->readKeyValue(std::to_string(call));
      if (call % 100 == 0 && write(STDOUT_FILENO, ".", 1) != 1) return 1;
    }
  }

  /// Makes some calls and then none.
  int still() {
    for (int call = 0; call < 100; ++call) VornStorage::getInstance()->readKeyValue(std::to_string(call));
    for (;;) pause();
  }

  /// Ends by a signal, with a call open on another thread.
  int crash() {
    std::thread other([] {
      pthread_setname_np(pthread_self(), "painter");
      VornGUIOutput::getInstance()->renderGUICard("weather");
    });
    other.detach();
    host.entered.get_future().wait();
    ask("last");
    if (argument(0) == "fault") fault();
    if (argument(0) == "abort") std::abort();
    if (argument(0) == "exit") std::exit(0);
    if (argument(0) == "deep") {
      static char own[1 << 16];
      stack_t stack = {};
      stack.ss_sp = own;
      stack.ss_size = sizeof own;
      sigaltstack(&stack, nullptr);
      const int more = 1;
      return deep(&more);
    }
    raise(static_cast<int>(number(0)));
    return 0;
  }

  /// Handles a fault by itself, and goes on to report it as a status.
  int handled() {
    struct sigaction action = {};
    action.sa_handler = [](int) { _exit(41); };
    sigaction(SIGSEGV, &action, nullptr);
    ask("last");
    fault();
    return 0;
  }

  int throws() {
    int caught = 0;
    try {
      ask("throw");
    } catch (const std::runtime_error& error) {
      caught += std::string(error.what()) == "the host cannot";
    }
    try {
      ask("throw other");
    } catch (int number) {
      caught += number == 7;
    }
    return caught == 2 ? 0 : 1;
  }

  int secrets() {
    const auto info = VornDeviceInfo::getInstance();
    info->setSystemSetting("wifi_password", "hunter-2-hunter");
    try {
      info->setSystemSetting("password to throw", "hunter-3-hunter");
    } catch (const std::runtime_error&) {
    }
    VornStorage::getInstance()->writeKeyValue({{"apiKey", "key-of-the-api"}, {"city", "Oslo"}});
    VornEMPAdapterControl::getInstance()->login("token-of-access", "ada", true, std::chrono::hours(1),
                                                "music");
    // Known again wherever they come up.
    ask("hunter-2-hunter");
    VornGUIOutput::getInstance()->clearGUICard();
    VornStorage::getInstance()->removeKeyValue({"a key-of-the-api b", "city"});
    info->notifySystemSettingChanged("pin code", "13572468");
    return 0;
  }

  int forks() {
    ask("before");
    const pid_t child = fork();
    ask(child == 0 ? "child" : "parent");
    if (child == 0) return 0;
    int status = 1;
    waitpid(child, &status, 0);
    std::printf("%d\n", child);
    return status;
  }

  /// Ends when ARGUMENT 0 is written, and leaves a child that makes no calls.
  int leaves() {
    ask("before");
    awaitInFile("before");
    const pid_t child = fork();
    if (child == 0) {
      close(STDOUT_FILENO);
      close(STDERR_FILENO);
      for (;;) pause();
    }
    std::printf("%d\n", child);
    return 0;
  }

  /// Sends itself the signal between calls.
  int toggled() {
    for (const char* key : {"first", "second", "third", "fourth"}) {
      ask(key);
      raise(static_cast<int>(number(0)));
    }
    return 0;
  }

  /// Stops and goes on, each when the file in ARGUMENT 0 tells of the one before.
  int pauses() {
    ask("first");
    awaitInFile("first");
    for (int i = 0; i < 3; ++i) {
      raise(SIGUSR2);
      awaitInFile("\"note\"", i + 1);
    }
    return 0;
  }

  /// Blocks of so many samples, 160 without a number, a millisecond between the first two. Says how many microseconds it took.
  int audio() {
    using Clock = std::chrono::steady_clock;
    std::vector<short> samples(number(0) ? static_cast<std::size_t>(number(0)) : 160);
    for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<short>(i % 2 ? 1000 : -1000);
    const auto began = Clock::now();
    for (int block = 0; block < 50; ++block) {
      VornAudioIn::getInstance()->sendAudioData(samples);
      const auto sent = Clock::now();
      while (block == 0 && Clock::now() - sent < std::chrono::milliseconds(1)) continue;
    }
    const auto took = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - began);
    std::printf("%lld\n", static_cast<long long>(took.count()));
    return 0;
  }

  /// A thousand threads that come, call and go, until of 256 KiB that each had most are given back.
  int passing() {
    const auto pages = [] {
      long all = 0;
      std::ifstream("/proc/self/statm") >> all;
      return all;
    };
    const auto pass = [this] { std::thread([this] { ask("of a thread"); }).join(); };
    for (int i = 0; i < 50; ++i) pass();  // what the C library keeps for the next ones is there
    const long most = pages() + (128L << 20) / sysconf(_SC_PAGESIZE);
    for (int i = 0; i < 1000; ++i) pass();
    const auto bound = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    // Each thread that is written takes a little before it gives back more: what was once below counts.
    while (pages() > most) {
      if (std::chrono::steady_clock::now() >= bound) return 1;
      std::this_thread::yield();
    }
    return 0;
  }

  /// Closes every descriptor that it did not open, as daemons do, and has files of its own there: ARGUMENT 1, when
  /// ARGUMENT 0 is written.
  int closes() {
    ask("first");
    awaitInFile("first");
    for (int i = 3; i < 1000; ++i) close(i);
    const int own = open(argument(1).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (write(own, "precious", 8) != 8) return 1;
    for (int i = 3; i < 1000; ++i) dup2(own, i);
    ask("second");
    return 0;
  }

  /// Has no room for its files for a while, until that is complained of.
  int full() {
    const std::string page(1500, 'a');
    ask(page + "first");
    rlimit room{};
    getrlimit(RLIMIT_FSIZE, &room);
    const rlim_t most = room.rlim_cur;
    room.rlim_cur = awaitInFile("first") + 1000;
    int ends[2];
    if (pipe(ends) != 0 || dup2(ends[1], STDERR_FILENO) < 0) return 1;
    setrlimit(RLIMIT_FSIZE, &room);
    for (int i = 0; i < 50; ++i) ask(page + std::to_string(i));
    char said;
    if (read(ends[0], &said, 1) != 1) return 1;
    room.rlim_cur = most;
    setrlimit(RLIMIT_FSIZE, &room);
    ask("last");
    return 0;
  }

  /// More in one call than a thread's ring holds; in its answer without a number.
  int big() {
    ask(number(0) ? std::string(static_cast<std::size_t>(number(0)), 'a') : "much");
    ask("small");
    return 0;
  }

  /// What comes after Shutdown(), of which the host sees nothing.
  int late() {
    const auto info = VornDeviceInfo::getInstance();
    info->getVolume();
    VornDeviceInfo::Shutdown();
    info->getVolume();
    return 0;
  }

  int container() {
    const auto made =
        VornAttachmentReaderContainerFactory::getInstance()->createAttachmentReaderContainer(nullptr);
    std::size_t got = 0;
    made->Subscribe([&got](void*, std::size_t size) { got += size; }, nullptr);
    char data[3] = {};
    // As the assistant side calls it: through the table.
    DeviceAbstractionLayer::AttachmentReaderContainerInterface& side = *made;
    side.sendData(data, sizeof data);
    return got == 3 && dynamic_cast<VornAttachmentReaderContainerInterfaceImpl*>(&side) == made.get() ? 0 : 1;
  }

  /// Two at one lock: the second waits for the first.
  int waits() {
    const auto output = VornGUIOutput::getInstance();  // before: it takes the same lock
    std::thread first([&] { output->renderGUICard("first"); });
    host.entered.get_future().wait();
    std::promise<pid_t> begins;
    std::thread second([&] {
      begins.set_value(gettid());
      output->clearGUICard();
    });
    const std::string state = "/proc/self/task/" + std::to_string(begins.get_future().get()) + "/stat";
    for (std::string number, name, word; word != "S";) std::ifstream(state) >> number >> name >> word;
    host.leave.set_value();
    first.join();
    second.join();
    return 0;
  }
};

}  // namespace

int main(int count, char** arguments) {
  Caller caller;
  for (int i = 2; i < count; ++i) caller.arguments.emplace_back(arguments[i]);
  VornDeviceInfo::CreateInstance(caller.host);
  VornStorage::CreateInstance(caller.host);
  VornGUIOutput::CreateInstance(caller.host);
  VornEMPAdapterControl::CreateInstance(caller.host);
  VornAudioIn::CreateInstance(caller.host);
  const std::string way = count > 1 ? arguments[1] : "";
  const std::pair<const char*, int (Caller::*)()> ways[] = {
      {"plain", &Caller::plain},     {"quick", &Caller::quick},
      {"many", &Caller::many},       {"endless", &Caller::endless},
      {"still", &Caller::still},     {"steps", &Caller::steps},
      {"crash", &Caller::crash},     {"handled", &Caller::handled},
      {"throws", &Caller::throws},   {"secrets", &Caller::secrets},
      {"forks", &Caller::forks},     {"leaves", &Caller::leaves},
      {"toggled", &Caller::toggled}, {"audio", &Caller::audio},
      {"passing", &Caller::passing}, {"pauses", &Caller::pauses},
      {"big", &Caller::big},         {"closes", &Caller::closes},
      {"full", &Caller::full},       {"container", &Caller::container},
      {"waits", &Caller::waits},     {"late", &Caller::late}};
  for (const auto& [name, run] : ways) {
    if (way == name) return (caller.*run)();
  }
  std::fprintf(stderr, "caller: no way is called so: %s\n", way.c_str());
  return 2;
}
