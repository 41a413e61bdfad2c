// What is stored outlives the process, also one that is killed.

#include <sys/mman.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <new>
#include <utility>

#include "Store.h"

namespace vorn_testing::checks {

namespace {

void demandDurable(Trial& trial) {
  if (!trial.demands.durable) trial.notAsked("durability is not demanded (HostDemands::durable, --durable)");
}

/// Fills a store in a process that ends after its host was destroyed. Returns the key that holds "before".
std::string filledBefore(Trial& trial) {
  demandDurable(trial);
  std::string known = key("known");  // the same in every process
  trial.inKilledProcess([&] {
    Store(trial).presume({{known, "before"}});
    trial.destroy();
  });
  return known;
}

/// What a store must bring back: every byte in key and value, nothing, much.
Entries difficult(const std::string& known) {
  Entries entries;
  for (int byte = 0; byte < 256; ++byte) {
    const std::string text(1, static_cast<char>(byte));
    entries[known + "/" + text + "/" + std::to_string(byte)] = text + "value" + text;
  }
  const std::string first(1000, 'f');
  entries[known + first + "1"] = "one";
  entries[known + first + "2"] = "two";
  entries[known + "=a=b"] = "=c=d=";
  entries[known + " b "] = "  blanks  ";
  entries[known + "\nline"] = "first\nsecond\r\n\nthird";
  for (const std::string& text : odd()) {
    entries[known + "/" + text] = text;
    entries[known + " of " + std::to_string(entries.size())] = text;  // a host may refuse odd keys
  }
  entries[known + " lines"] = "first\nsecond\r\n\nthird";
  entries[known + " empty"] = "";
  entries[known + " all"] = everyByte();
  entries[known + " long"] = std::string(300000, 'v');
  for (int i = 0; i < 500; ++i) entries[known + " many " + std::to_string(i)] = std::to_string(i);
  return entries;
}

/// Marks that a process leaves behind which is killed.
class Marks {
 public:
  explicit Marks(std::size_t count)
      : m_count(count),
        m_memory(mmap(nullptr, count, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
    if (m_memory == MAP_FAILED) throw std::bad_alloc();
  }
  ~Marks() { munmap(m_memory, m_count); }
  Marks(const Marks&) = delete;
  Marks& operator=(const Marks&) = delete;
  bool& operator[](std::size_t at) const { return static_cast<bool*>(m_memory)[at]; }

 private:
  std::size_t m_count;
  void* m_memory;
};

void keepsDifficult(Trial& trial) {
  const std::string known = filledBefore(trial);
  const Entries entries = difficult(known);
  const Marks accepted(entries.size());
  const auto expectAccepted = [&](const Store& store) {
    std::size_t at = 0;
    for (const auto& entry : entries) {
      if (accepted[at++]) store.expect(entry.first, entry.second);
    }
  };
  trial.inKilledProcess([&] {
    const Store store(trial);
    const Entries written = store.writeSome(entries);
    std::size_t at = 0;
    for (const auto& entry : entries) accepted[at++] = written.count(entry.first) != 0;
    expectAccepted(store);
  });
  const Store store(trial);
  store.expect(known, "before");
  expectAccepted(store);
}

/// Writing goes on after the store was made smaller.
void writesAfterOthers(Trial& trial) {
  const std::string known = filledBefore(trial);
  const auto later = [&](const Entries& kept, const std::string& gone) {
    trial.inKilledProcess([&] {
      const Store store(trial);
      for (const auto& entry : kept) store.expect(entry.first, entry.second);
      store.expectNone(gone);
    });
  };
  trial.inKilledProcess([&] {
    const Store store(trial);
    store.write({{known + " 1", "1"}, {known + " 2", "2"}});
    store.remove({known + " 1"});
    store.write({{known + " 3", "3"}});
  });
  trial.explain("after writing, removing and writing again");
  later({{known + " 2", "2"}, {known + " 3", "3"}}, known + " 1");
  trial.inKilledProcess([&] {
    const Store store(trial);
    store.clear();
    store.write({{known + " 4", "4"}});
  });
  trial.explain("after clearing and writing again");
  later({{known + " 4", "4"}}, known + " 3");
}

/// Killed at many moments while it writes: what was acknowledged is there, and what was there before.
void killedWhileWriting(Trial& trial) {
  const std::string known = filledBefore(trial);
  const auto keyOf = [&](int round, int i) {
    return known + "/" + std::to_string(round) + "/" + std::to_string(i);
  };
  const auto valueOf = [](int i) {
    return std::to_string(i) + std::string(static_cast<std::size_t>(i % 7) * 150, 'w');
  };
  bool opens = false;
  trial.inKilledProcess([&] {
    const Store store(trial);
    trial.acknowledged() = store.open();
    Entries base;
    for (int i = 0; i < 200; ++i) base[keyOf(-1, i)] = valueOf(i);
    store.write(base);
  });
  opens = trial.acknowledged() != 0;
  constexpr int kRounds = 16;
  int total = 0;
  std::vector<int> written;
  for (int round = 0; round < kRounds; ++round) {
    trial.acknowledged() = 0;
    trial.explain("");
    trial.inKilledProcess(
        [&] {
          const Store store(trial);
          for (int i = 0; i < 100000; ++i) {
            store.write({{keyOf(round, i % 60), valueOf(i % 60)}});
            ++trial.acknowledged();
          }
        },
        std::chrono::microseconds(3000 + round * 1700 + round * round * 90));
    written.push_back(std::min(60, trial.acknowledged().load()));
    total += trial.acknowledged();
    const std::string when = "after the process was killed while it wrote";
    trial.explain(when);
    trial.inKilledProcess([&] {
      const Store store(trial);
      if (opens && !store.open()) trial.broken("open() answered false " + when);
      store.expect(known, "before");
      for (int i = 0; i < 200; ++i) store.expect(keyOf(-1, i), valueOf(i));
      for (int old = 0; old <= round; ++old) {
        for (int i = 0; i < written[static_cast<std::size_t>(old)]; ++i)
          store.expect(keyOf(old, i), valueOf(i));
      }
    });
  }
  trial.saw(std::to_string(total) + " writes acknowledged in " + std::to_string(kRounds) +
            " processes that were killed");
}

void opensWhenKilled(Trial& trial) {
  const std::string known = filledBefore(trial);
  trial.inKilledProcess([&] { trial.acknowledged() = Store(trial).open(); });
  if (trial.acknowledged() == 0) trial.refused("open() answered false");
  if (!Store(trial).open()) trial.broken("open() answered false after the process before was killed");
}

void newHost(Trial& trial) {
  const std::string known = filledBefore(trial);
  Store(trial).expect(known, "before");
}

/// Changes a filled store in a process that is killed; then a host of this process looks.
using StoreUse = void (*)(const Store&, const std::string& known);

void killed(Trial& trial, StoreUse change, StoreUse look) {
  const std::string known = filledBefore(trial);
  trial.inKilledProcess([&] {
    const Store store(trial);
    trial.presume("VornDALImplIF/27/writeKeyValue/new-host", [&] { store.expect(known, "before"); });
    change(store, known);
  });
  look(Store(trial), known);
}

void writesThenKilled(Trial& trial) {
  killed(
      trial,
      [](const Store& store, const std::string& known) {
        for (const char* const value : {"between", "after"}) store.write({{known, value}});
      },
      [](const Store& store, const std::string& known) { store.expect(known, "after"); });
}

/// What several threads were answered true to at the same time; who comes last decides what is in place.
void threadsThenKilled(Trial& trial) {
  constexpr int kTimes = 40, kThreads = 4, kEach = 2;
  filledBefore(trial);
  const auto enough = std::chrono::steady_clock::now() + std::chrono::seconds(4);
  for (int time = 0; time < kTimes && std::chrono::steady_clock::now() < enough; ++time) {
    const auto keyOf = [time](int number) {
      return key("threads " + std::to_string(time) + " " + std::to_string(number));
    };
    const Marks accepted(std::size_t{kThreads} * kEach);
    trial.inKilledProcess([&] {
      const Store store(trial);
      trial.onThreads(
          kThreads,
          [&](int thread) {
            for (int i = thread * kEach; i < (thread + 1) * kEach; ++i)
              accepted[static_cast<std::size_t>(i)] = store.accepts({{keyOf(i), "1"}});
          },
          true);
    });
    const Store store(trial);
    for (int i = 0; i < kThreads * kEach; ++i) {
      if (accepted[static_cast<std::size_t>(i)]) store.expect(keyOf(i), "1");
    }
    trial.destroy();
  }
}

void expectGone(const Store& store, const std::string& known) { store.expectNone(known); }

void removesThenKilled(Trial& trial) {
  killed(
      trial, [](const Store& store, const std::string& known) { store.remove({known}); }, expectGone);
  trial.destroy();
  killed(
      trial,
      [](const Store& store, const std::string& known) {
        store.remove({key("never written"), known, known});
      },
      expectGone);
}

void clearsThenKilled(Trial& trial) {
  killed(
      trial, [](const Store& store, const std::string&) { store.clear(); }, expectGone);
}

}  // namespace

void addDurabilityChecks(Checks& checks) {
  const auto add = [&](int slot, const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), name, rule, remedy, run));
  };
  constexpr int kOpen = 25, kWrite = 27, kRemove = 28, kClear = 29;
  const char* const kDurable = "Hand the change to the medium, as by fsync(), before you answer true.";

  add(kOpen, "killed", "A store whose process was killed can be opened again.",
      "Leave no mark that only an orderly end takes away.", opensWhenKilled);
  add(kWrite, "new-host", "What was stored is there for the host of the next process.",
      "Keep the store in a file, and find it again when a host is made or opened.", newHost);
  add(kWrite, "difficult",
      "What was stored is there for the next process, whatever bytes, sizes and numbers.",
      "Store keys and values by length, not as lines or C strings.", keepsDifficult);
  add(kWrite, "after-others",
      "What was stored after a removal or clearing is there for the next process too.",
      "Go on in the file that is in place, not in one that was replaced.", writesAfterOthers);
  add(kWrite, "killed-writing",
      "However the process is killed while it writes: what was acknowledged is there, and nothing else is lost.",
      "Write a new file aside, hand it to the medium, and rename it over the old one.", killedWhileWriting);
  add(kWrite, "killed", "What was stored is there after the process was killed.", kDurable, writesThenKilled);
  add(kWrite, "at-once-killed", "What several threads stored at once is there after the process was killed.",
      "Change the store and hand it to the medium under one mutex, with a file aside that no other call writes.",
      threadsThenKilled);
  add(kRemove, "killed", "What was removed is gone after the process was killed.", kDurable,
      removesThenKilled);
  add(kClear, "killed", "What was cleared is gone after the process was killed.", kDurable, clearsThenKilled);
}

}  // namespace vorn_testing::checks
