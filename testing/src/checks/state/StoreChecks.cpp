#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <iterator>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "Store.h"

namespace vorn_testing::checks {

namespace {

/// A value is written and read, and takes no other one's place.
std::function<void(Trial&)> keeps(const std::function<std::string()>& value) {
  return [value](Trial& trial) {
    const Store store(trial);
    store.presume({{key("plain"), "plain"}});
    store.write({{key("value"), value()}});
    store.expect(key("value"), value());
    store.expect(key("plain"), "plain");
  };
}

/// Each of them comes back as it was, also where a longer or a shorter one stood.
void asWritten(Trial& trial) {
  const Store store(trial);
  store.presume({{key("plain"), "plain"}});
  for (const std::string& value : odd()) {
    if (store.accepts({{key("odd"), value}})) store.expect(key("odd"), value);
  }
}

std::string longValue() { return std::string(1 << 20, 'v'); }

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
  store.read(key("a"));  // who looks before it is there finds it afterwards too
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
  // Also such as lists of lines, sums of letters and names of files would take for one.
  const std::string first(250, 'f');
  const Texts keys = {key("k"),
                      key("K"),
                      key("k "),
                      key("k/"),
                      key("k%"),
                      key("k="),
                      key("k=v"),
                      key("ab"),
                      key("ba"),
                      key("k") + '\0',
                      key("k") + '\0' + "n",
                      key("k\n"),
                      key("k\xff"),
                      key("k\xc3\xbc"),
                      key(first + "1"),
                      key(first + "2"),
                      key(first + first + first + first + "1"),
                      key(first + first + first + first + "2"),
                      "V" + key("k").substr(1)};
  Texts accepted;
  for (const std::string& each : keys) {
    if (store.accepts({{each, each}})) accepted.push_back(each);
  }
  std::string asked;  // the caller's one object, with another text each time
  for (const std::string& each : accepted) {
    asked = each;
    store.expect(asked, each);
  }
}

void readsOnAnyThread(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  for (int i = 0; i < 2; ++i) trial.onThreads(1, [&](int) { store.expect(key("a"), "1"); });
}

/// Each thread reads a key of its own.
void readsAtOnce(Trial& trial) {
  constexpr int kThreads = 4;
  const auto keyOf = [](int thread) { return key("of thread " + std::to_string(thread)); };
  const Store store(trial);
  Entries entries;
  for (int thread = 0; thread < kThreads; ++thread) entries[keyOf(thread)] = std::to_string(thread);
  store.presume(entries);
  trial.explain("while other threads read other keys");
  const auto enough = std::chrono::steady_clock::now() + std::chrono::milliseconds(400);
  trial.onThreads(
      kThreads,
      [&](int thread) {
        for (int i = 0; i < 5000 && std::chrono::steady_clock::now() < enough; ++i)
          store.expect(keyOf(thread), std::to_string(thread));
      },
      true);
}

/// Read by three threads while one writes and removes: never anything but a value that was written.
void readsWhileWritten(Trial& trial) {
  const Store store(trial);
  const Texts values = {std::string(40, 'x'), std::string(400, 'y'), "z"};
  store.presume({{key("busy"), values[0]}});
  std::atomic<bool> over{false};
  const auto enough = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
  trial.onThreads(
      4,
      [&](int thread) {
        const AtEnd end([&] { over = true; });
        for (std::size_t i = 0; i < 5000 && !over && std::chrono::steady_clock::now() < enough; ++i) {
          if (thread == 0) {
            store.write(
                {{key("busy"), values[i % values.size()]}, {key("busy " + std::to_string(i % 40)), "1"}});
            if (i % 3 == 0) store.remove({key("busy"), key("busy " + std::to_string(i % 40))});
            continue;
          }
          const Entries found = store.read(key("busy"));
          const auto entry = found.find(key("busy"));
          if (entry != found.end() && !entry->second.empty() &&
              std::find(values.begin(), values.end(), entry->second) == values.end())
            trial.broken("readKeyValue() answered " + spelled(entry->second) +
                         ", which nobody wrote, while writeKeyValue() was on its way");
        }
      },
      true);
}

// ---- writeKeyValue ----

void replaces(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  for (const char* const value : {"2", "a longer one", "short", "", "3"}) {
    store.write({{key("a"), value}});
    store.expect(key("a"), value);
  }
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
  // What comes when there is much already.
  for (const auto& later : {std::make_pair(key("one more"), "2"), std::make_pair(key("5"), "another")}) {
    if (!store.accepts({later})) continue;
    store.expect(later.first, later.second);
    entries[later.first] = later.second;
  }
  entries[key("a")] = "1";
  for (const auto& entry : entries) store.expect(entry.first, entry.second);
}

void writesFromThreads(Trial& trial) {
  presumeOthers(trial);
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  const auto keyOf = [](int thread, int i) { return key(std::to_string(100 * thread + i)); };
  // As many as come to overlap, so that two stand between reading and writing at once.
  const auto start = std::chrono::steady_clock::now();
  const auto enough = start + std::chrono::milliseconds(150);
  // A mutex lets those wait who came late, and a write to flash takes its time.
  const auto atLast = start + std::chrono::seconds(2);
  std::atomic<int> written[4] = {};
  trial.onThreads(
      4,
      [&](int thread) {
        for (int i = 0; i == 0 || (i < 100 && std::chrono::steady_clock::now() < (i < 25 ? atLast : enough));
             ++i) {
          store.write({{keyOf(thread, i), "1"}});
          written[thread] = i + 1;
        }
      },
      true);
  for (int thread = 0; thread < 4; ++thread) {
    for (int i = 0; i < written[thread]; ++i) store.expect(keyOf(thread, i), "1");
  }
}

// ---- open ----

void openKeeps(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.open();
  store.expect(key("a"), "1");
}

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

/// Whatever the key, and whatever somebody takes for a pattern: it goes, and nothing else.
void removesOdd(Trial& trial) {
  presumeRemoval(trial);
  const Store store(trial);
  store.presume({{key("other"), "1"}, {key("a"), "2"}});
  for (const std::string& name : odd()) {
    if (!store.accepts({{key(name), "3"}})) continue;
    store.expect(key(name), "3");
    store.remove({key(name)});
    store.expectNone(key(name));
    store.expect(key("other"), "1");
    store.expect(key("a"), "2");
  }
}

void removesTwice(Trial& trial) {
  presumeRemoval(trial);
  const Store store(trial);
  store.presume({{key("a"), "1"}, {key("b"), "2"}});
  store.remove({key("a"), key("a"), key("b"), key("a")});
  for (const char* name : {"a", "b"}) store.expectNone(key(name));
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
  store.write({{key("A"), "3"}, {key("a") + '\0', "4"}, {key("a="), "5"}, {key("ba"), "6"}});
  // The second time it is not there any more, and stands between others.
  for (const Texts& keys : {Texts{key("a")}, Texts{key("a"), key("0"), key("aa")}}) {
    trial.ask("removeKeyValue(" + spelled(keys) + ")", [&] { trial.host().removeKeyValue(keys); });
    store.expect(key("ab"), "2");
    store.expect(key("A"), "3");
    store.expect(key("a") + '\0', "4");
    store.expect(key("a="), "5");
    store.expect(key("ba"), "6");
  }
}

void removesMany(Trial& trial) {
  presumeRemoval(trial);
  const Store store(trial);
  Entries entries;
  Texts keys;
  for (int i = 0; i < 600; ++i) {
    entries[key("many " + std::to_string(i))] = "1";
    keys.push_back(key("many " + std::to_string(i)));
  }
  store.write(entries);
  store.write({{key("other"), "1"}});
  store.remove(keys);
  for (const std::string& each : keys) store.expectNone(each);
  store.expect(key("other"), "1");
}

void emptyList(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.remove({});
  store.expect(key("a"), "1");
}

/// Whatever is done in whatever order and on whatever thread, the store holds what a map would.
void inAnyOrder(Trial& trial) {
  presumeOthers(trial);
  presumeRemoval(trial);
  const Store store(trial);
  Texts keys, last;
  for (const char* const name : {"a", "b", "c", "d"}) keys.push_back(key(name));
  Entries expected;
  std::minstd_rand roll;
  const auto atLast = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  for (int step = 0; step < 200 && std::chrono::steady_clock::now() < atLast; ++step) {
    Texts some;
    std::copy_if(keys.begin(), keys.end(), std::back_inserter(some),
                 [&](const std::string&) { return roll() % 3 == 0; });
    const auto act = roll() % 16;
    const auto make = [&](int) {
      if (act < 8) {
        Entries entries;
        for (const std::string& each : some) entries[each] = std::to_string(step);
        store.write(entries);
        for (const auto& entry : entries) expected[entry.first] = entry.second;
        last.push_back("writeKeyValue(" + spelled(entries) + ")");
      } else if (act < 13) {
        store.remove(some);
        for (const std::string& each : some) expected.erase(each);
        last.push_back("removeKeyValue(" + spelled(some) + ")");
      } else if (act == 13) {
        store.clear();
        expected.clear();
        last.push_back("clear()");
      } else {
        store.open();
        last.push_back("open()");
      }
    };
    roll() % 4 == 0 ? trial.onThreads(1, make) : make(0);
    if (last.size() > 4) last.erase(last.begin());
    std::reverse(keys.begin(), keys.end());  // so that the one that was read last is read first too
    for (const std::string& each : keys) {
      const Entries found = store.read(each);
      const auto entry = found.find(each);
      const std::string value = entry == found.end() ? "" : entry->second;
      if (value == expected[each]) continue;
      std::string order;
      for (const std::string& one : last) order += (order.empty() ? "" : ", ") + one;
      trial.broken("after " + order + " readKeyValue(" + spelled(each) + ") answered " + spelled(found));
    }
  }
}

// ---- clear ----

void clears(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}, {key("b"), "2"}});
  store.clear();
  store.expectNone(key("a"));
  store.expectNone(key("b"));
}

/// Whatever a key begins with.
void clearsOdd(Trial& trial) {
  trial.presume("VornDALImplIF/29/clear/clears", [&] { clears(trial); });
  const Store store(trial);
  Texts keys;
  for (const std::string& name : odd()) keys.push_back(name + key("cleared"));
  keys.erase(std::remove_if(keys.begin(), keys.end(),
                            [&](const std::string& each) {
                              return !store.accepts({{each, "1"}});
                            }),
             keys.end());
  for (const std::string& each : keys) store.expect(each, "1");
  store.clear();
  for (const std::string& each : keys) store.expectNone(each);
}

void usableWhenCleared(Trial& trial) {
  const Store store(trial);
  store.presume({{key("a"), "1"}});
  store.clear();
  store.write({{key("a"), "2"}});
  store.expect(key("a"), "2");
}

}  // namespace

std::string key(const std::string& name) {
  static const std::string kRun =
      std::to_string(std::chrono::system_clock::now().time_since_epoch().count()) + "/";
  return "vorn-conformance/" + kRun + name;
}

/// Texts that some format, file system or language reads as something else.
Texts odd() {
  const std::string first(300, 'f');
  return {"a\r\nb\rc\n",
          "a\\nb\\\\c\\",
          "%41%20%%",
          "&amp;<a/>",
          "\"quoted\" 'too'",
          "{\"a\":[1,null]}",
          "\xef\xbb\xbf\x61",
          "a\xcc\x81 \xc3\xa1",
          " \t blanks \t ",
          "../..//./",
          ".hidden",
          "_own",
          "*",
          "a%",
          "a_",
          "?",
          "#a",
          "[a]",
          "0x10",
          "007",
          "1e3",
          "true",
          "null",
          "-",
          "$HOME ${HOME}",
          "a,b;c|d",
          "a=b",
          std::string("a\0b", 3),
          first + "1",
          first + "2"};
}

std::string everyByte() {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  return bytes;
}

void addStoreChecks(Checks& checks) {
  const auto add = [&](int slot, const char* name, const char* rule, const char* remedy,
                       const std::function<void(Trial&)>& run) {
    checks.push_back(checkOf(hostOperation(slot), name, rule, remedy, run));
  };
  constexpr int kOpen = 25, kRead = 26, kWrite = 27, kRemove = 28, kClear = 29;

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

  add(kRead, "at-once", "Who reads has the entry of his key, whatever others read meanwhile.",
      "Keep what belongs to one call in that call.", readsAtOnce);
  add(kRead, "in-any-order", "What was written is read until it is replaced, removed or cleared.",
      "Change every place that keeps an entry, journals and caches too.", inAnyOrder);
  add(kRead, "while-written", "What is read while others write and remove is what somebody wrote.",
      "Guard the store with one mutex, readKeyValue() included.", readsWhileWritten);

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
  add(kWrite, "as-written", "A value is read as it was written, whatever some format takes it for.",
      "Store bytes: no lines, escapes, entities, numbers or names of files.", asWritten);

  add(kRemove, "removes", "A key that was removed is not read any more.",
      "Answer false when you do not remove.", removes);
  add(kRemove, "removes-all", "Every key of the list is removed.", "Go through the whole list.", removesAll);
  add(kRemove, "odd-keys", "A key is removed whatever stands in it, and no other with it.",
      "Remove what equals the key: no pattern, no cut, no folding.", removesOdd);
  add(kRemove, "twice", "A key may stand in the list more than once.", "Go through the whole list.",
      removesTwice);
  add(kRemove, "many", "Every one of six hundred keys is removed.", "Go through the whole list.",
      removesMany);
  add(kRemove, "past-absent", "A key that is not there does not keep the next ones from being removed.",
      "Go on to the end of the list.", pastAbsent);
  add(kRemove, "leaves-others", "Removing leaves other keys alone, also those that begin the same.",
      "Remove what equals the key, no more.", removeLeavesOthers);
  add(kRemove, "empty-list", "Removing an empty list changes nothing.", "Do not take an empty list for all.",
      emptyList);

  add(kClear, "clears", "After clearing nothing is left.", "Answer false when you do not clear.", clears);
  add(kClear, "odd-keys", "Nothing is left, whatever a key begins with.", "Keep nothing back from clear().",
      clearsOdd);
  add(kClear, "usable", "A store that was cleared can be used at once.", "Leave the store open.",
      usableWhenCleared);
}

}  // namespace vorn_testing::checks
