#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "Checks.h"

namespace vorn_testing::checks {

namespace {

/// The host's store as one check uses it, with keys that no other check and no other run uses.
class Store {
 public:
  explicit Store(Trial& trial, Host& host) : m_trial(trial), m_host(host) {
    trial.ask("open()", [&] { host.open(); });  // whether the others need it is the host's choice
  }
  explicit Store(Trial& trial) : Store(trial, trial.host()) {}

  /// Writes, or ends the check when the host refuses.
  void write(const Entries& entries) const {
    bool done = false;
    m_trial.ask("writeKeyValue(" + spelled(entries) + ")", [&] { done = m_host.writeKeyValue(entries); });
    if (!done) m_trial.notAsked("writeKeyValue() answered false");
  }

  void remove(const Texts& keys) const {
    bool done = false;
    m_trial.ask("removeKeyValue(" + spelled(keys) + ")", [&] { done = m_host.removeKeyValue(keys); });
    if (!done) m_trial.notAsked("removeKeyValue() answered false");
  }

  void clear() const {
    bool done = false;
    m_trial.ask("clear()", [&] { done = m_host.clear(); });
    if (!done) m_trial.notAsked("clear() answered false");
  }

  void open() const {
    m_trial.ask("open()", [&] { m_host.open(); });
  }

  /// Breaks the check when `key` does not hold `value`.
  void expect(const std::string& key, const std::string& value) const {
    const Entries found = read(key);
    const auto entry = found.find(key);
    if (entry == found.end() || entry->second != value)
      m_trial.broken("readKeyValue(" + spelled(key) + ") answered " + spelled(found) + ", written was " +
                     spelled(value));
  }

  void expectNone(const std::string& key) const {
    const Entries found = read(key);
    if (found.count(key)) m_trial.broken("readKeyValue(" + spelled(key) + ") answered " + spelled(found));
  }

  /// Writes and reads back, as the ground of a check that is about something else.
  void presume(const Entries& entries) const {
    const std::string reading = "VornDALImplIF/26/readKeyValue/";
    m_trial.presume(reading + "reads-written", [&] {
      write(entries);
      for (const auto& entry : entries) expect(entry.first, entry.second);
    });
    m_trial.presume(reading + "reads-again",
                    [&] { expect(entries.begin()->first, entries.begin()->second); });
    m_trial.presume(reading + "invents-nothing",
                    [&] { expectNone(entries.begin()->first + " is not there"); });
  }

  Entries read(const std::string& key) const {
    Entries found;
    m_trial.ask("readKeyValue(" + spelled(key) + ")", [&] { found = m_host.readKeyValue(key); });
    return found;
  }

 private:
  Trial& m_trial;
  Host& m_host;
};

std::string key(const std::string& name) {
  static const std::string kRun =
      std::to_string(std::chrono::system_clock::now().time_since_epoch().count()) + "/";
  return "vorn-conformance/" + kRun + name;
}

/// A value is written and read.
std::function<void(Trial&)> keeps(const std::function<std::string()>& value) {
  return [value](Trial& trial) {
    const Store store(trial);
    store.presume({{key("plain"), "plain"}});
    store.write({{key("value"), value()}});
    store.expect(key("value"), value());
  };
}

std::string everyByte() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

std::string longValue() { return std::string(1 << 20, 'v'); }

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

void newHost(Trial& trial) {
  const std::string known = filledBefore(trial);
  Store(trial).expect(known, "before");
}

/// Changes a filled store in a process that is killed; then a host of this process looks.
using Use = void (*)(const Store&, const std::string& known);

void killed(Trial& trial, Use change, Use look) {
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
        store.write({{known, "after"}});
      },
      [](const Store& store, const std::string& known) { store.expect(known, "after"); });
}

void expectGone(const Store& store, const std::string& known) { store.expectNone(known); }

void removesThenKilled(Trial& trial) {
  killed(
      trial, [](const Store& store, const std::string& known) { store.remove({known}); }, expectGone);
}

void clearsThenKilled(Trial& trial) {
  killed(
      trial, [](const Store& store, const std::string&) { store.clear(); }, expectGone);
}

// ---- readKeyValue ----

void writeLeavesOthers(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.write({{key("b"), "2"}});
  store.expect(key("a"), "1");
}

void presumeOthers(Trial& trial) {
  trial.presume("VornDALImplIF/27/writeKeyValue/leaves-others", [&] { writeLeavesOthers(trial); });
}

void readsWritten(Trial& trial) {
  const Store store(trial);
  store.write({{key("a"), "1"}});
  store.expect(key("a"), "1");
}

void readsAgain(Trial& trial) {
  const Store store(trial);
  trial.presume("VornDALImplIF/26/readKeyValue/reads-written", [&] {
    store.write({{key("a"), "1"}});
    store.expect(key("a"), "1");
  });
  for (int i = 0; i < 3; ++i) store.expect(key("a"), "1");
}

void inventsNothing(Trial& trial) {
  const Store store(trial);
  store.expectNone(key("never written"));
}

void keysApart(Trial& trial) {
  presumeOthers(trial);
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  const Texts keys = {key("k"), key("K"), key("k "), key("k/"), key("k%"), "V" + key("k").substr(1)};
  for (const std::string& each : keys) store.write({{each, each}});
  for (const std::string& each : keys) store.expect(each, each);
}

void readsOnAnyThread(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  for (int i = 0; i < 2; ++i) trial.onThreads(1, [&](int) { store.expect(key("a"), "1"); });
}

// ---- writeKeyValue ----

void replaces(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.write({{key("a"), "2"}});
  store.expect(key("a"), "2");
}

void emptyMap(Trial& trial) {
  presumeOthers(trial);
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.write({});
  store.expect(key("a"), "1");
}

void many(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  Entries entries;
  for (int i = 0; i < 1000; ++i) entries[key(std::to_string(i))] = std::to_string(i);
  store.write(entries);
  for (const auto& entry : entries) store.expect(entry.first, entry.second);
}

void writesFromThreads(Trial& trial) {
  presumeOthers(trial);
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  const auto keyOf = [](int thread, int i) { return key(std::to_string(100 * thread + i)); };
  trial.onThreads(4, [&](int thread) {
    for (int i = 0; i < 25; ++i) store.write({{keyOf(thread, i), "1"}});
  });
  for (int thread = 0; thread < 4; ++thread) {
    for (int i = 0; i < 25; ++i) store.expect(keyOf(thread, i), "1");
  }
}

// ---- open ----

void openKeeps(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.open();
  store.expect(key("a"), "1");
}

/// Acts when its block is left, also by an outcome.
struct AtEnd {
  std::function<void()> act;
  explicit AtEnd(std::function<void()> what) : act(std::move(what)) {}
  ~AtEnd() { act(); }
};

void openInUse(Trial& trial) {
  trial.presume("VornDALImplIF/27/writeKeyValue/threads", [&] { writesFromThreads(trial); });
  trial.presume("VornDALImplIF/25/open/keeps", [&] { openKeeps(trial); });
  const Store store(trial);
  std::atomic<int> writing{3};
  std::atomic<int> opened{0};
  std::atomic<bool> over{false};
  trial.onThreads(4, [&](int thread) {
    if (thread == 0) {
      const AtEnd end([&] { over = true; });
      for (; writing > 0; ++opened) store.open();
      return;
    }
    const AtEnd end([&] { --writing; });
    for (int i = 0; i < 10; ++i) {
      store.write({{key(std::to_string(10 * thread + i)), "1"}});
      // Halfway an opening begins and ends, whatever the scheduler does.
      for (const int before = opened; i == 5 && opened < before + 2 && !over;) std::this_thread::yield();
    }
  });
  for (int i = 10; i < 40; ++i) store.expect(key(std::to_string(i)), "1");
}

// ---- removeKeyValue ----

void removes(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.remove({key("a")});
  store.expectNone(key("a"));
}

void presumeRemoval(Trial& trial) {
  trial.presume("VornDALImplIF/28/removeKeyValue/removes", [&] { removes(trial); });
}

void removesAll(Trial& trial) {
  presumeRemoval(trial);
  const Store store(trial);
  store.presume({{key("b"), "1"}, {key("c"), "2"}, {key("d"), "3"}});
  store.remove({key("b"), key("c"), key("d")});
  for (const char* name : {"b", "c", "d"}) store.expectNone(key(name));
}

void pastAbsent(Trial& trial) {
  presumeRemoval(trial);
  const Store store(trial);
  store.presume({{key("b"), "1"}});
  store.remove({key("never written"), key("b")});
  store.expectNone(key("b"));
}

void removeLeavesOthers(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}, {key("ab"), "2"}});
  store.remove({key("a")});
  store.expect(key("ab"), "2");
}

void emptyList(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.remove({});
  store.expect(key("a"), "1");
}

// ---- clear ----

void clears(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}, {key("b"), "2"}});
  store.clear();
  store.expectNone(key("a"));
  store.expectNone(key("b"));
}

void usableWhenCleared(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.clear();
  store.write({{key("a"), "2"}});
  store.expect(key("a"), "2");
}

}  // namespace

void addStoreChecks(Checks& checks) {
  const auto add = [&](int slot, const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), name, rule, remedy, run));
  };
  constexpr int kOpen = 25, kRead = 26, kWrite = 27, kRemove = 28, kClear = 29;
  const char* const kDurable = "Hand the change to the medium, as by fsync(), before you answer true.";

  add(kOpen, "keeps", "Opening a store that is open changes nothing in it.",
      "Answer true at once when the store is open.", openKeeps);
  add(kOpen, "in-use", "Opening comes without a lock, also while others write, and loses nothing of theirs.",
      "Guard the store with one mutex, open() included.", openInUse);

  add(kRead, "reads-written", "What writeKeyValue() answered true to can be read under its key.",
      "Answer an entry with the key asked for; answer false in writeKeyValue() when you do not store.",
      readsWritten);
  add(kRead, "reads-again", "Reading takes nothing away.", "Leave the entry in the store.", readsAgain);
  add(kRead, "invents-nothing", "A key that was never written is not among the answer.",
      "Answer an empty map for what you do not have.", inventsNothing);
  add(kRead, "keys-apart", "Keys that differ in a single byte are different keys.",
      "Compare keys byte by byte: no folding of case, no trimming, no patterns.", keysApart);
  add(kRead, "any-thread", "What one thread wrote every other reads.",
      "Keep the store by host, not by thread.", readsOnAnyThread);

  add(kWrite, "replaces", "Writing a key that exists replaces its value.", "Assign instead of inserting.",
      replaces);
  add(kWrite, "leaves-others", "Writing leaves other keys alone.", "Add to the store, do not start it anew.",
      writeLeavesOthers);
  add(kWrite, "empty-map", "Writing an empty map changes nothing.",
      "Store what comes, even when it is nothing.", emptyMap);
  add(kWrite, "empty-value", "An empty value is a value.", "Keep the entry; removing is removeKeyValue().",
      keeps([] { return std::string(); }));
  add(kWrite, "every-byte", "A value may hold every byte, NUL included, and is read as it was written.",
      "Store by length, not as a C string or as lines; answer false to what you cannot store.",
      keeps(everyByte));
  add(kWrite, "utf8-value", "A value in any script is read as it was written.",
      "Store bytes, do not convert.",
      keeps([] { return std::string("Z\xc3\xbcrich \xe9\x9f\xb3\xe6\xa5\xbd \xf0\x9f\x8e\xb5"); }));
  add(kWrite, "long-value", "A value of a mebibyte is read as it was written.",
      "Store all of it, or answer false.", keeps(longValue));
  add(kWrite, "many", "Every one of a thousand entries is stored.", "Store all of them, or answer false.",
      many);
  add(kWrite, "threads", "What several threads write at once is all stored.",
      "Hold one mutex from reading the store to writing it back.", writesFromThreads);
  add(kWrite, "new-host", "What was stored is there for the host of the next process.",
      "Keep the store in a file, and find it again when a host is made or opened.", newHost);
  add(kWrite, "killed", "What was stored is there after the process was killed.", kDurable, writesThenKilled);

  add(kRemove, "removes", "A key that was removed is not read any more.",
      "Answer false when you do not remove.", removes);
  add(kRemove, "removes-all", "Every key of the list is removed.", "Go through the whole list.", removesAll);
  add(kRemove, "past-absent", "A key that is not there does not keep the next ones from being removed.",
      "Go on to the end of the list.", pastAbsent);
  add(kRemove, "leaves-others", "Removing leaves other keys alone, also those that begin the same.",
      "Remove what equals the key, no more.", removeLeavesOthers);
  add(kRemove, "empty-list", "Removing an empty list changes nothing.", "Do not take an empty list for all.",
      emptyList);
  add(kRemove, "killed", "What was removed is gone after the process was killed.", kDurable,
      removesThenKilled);

  add(kClear, "clears", "After clearing nothing is left.", "Answer false when you do not clear.", clears);
  add(kClear, "usable", "A store that was cleared can be used at once.", "Leave the store open.",
      usableWhenCleared);
  add(kClear, "killed", "What was cleared is gone after the process was killed.", kDurable, clearsThenKilled);
}

}  // namespace vorn_testing::checks
