#pragma once

#include <iterator>
#include <string>
#include <vector>

#include "../Checks.h"

namespace vorn_testing::checks {

/// The host's store as one check uses it.
class Store {
 public:
  explicit Store(Trial& trial, Host& host) : m_trial(trial), m_host(host) {
    trial.ask("open()", [&] { host.open(); });  // whether the others need it is the host's choice
  }
  explicit Store(Trial& trial) : Store(trial, trial.host()) {}

  /// Writes; answers whether the host did.
  bool accepts(const Entries& entries) const {
    bool done = false;
    m_trial.ask("writeKeyValue(" + spelled(entries) + ")", [&] { done = m_host.writeKeyValue(entries); });
    return done;
  }

  /// Writes, or ends the check when the host refuses.
  void write(const Entries& entries) const {
    if (!accepts(entries)) m_trial.refused("writeKeyValue() answered false");
  }

  /// Writes what the host accepts of them, alone if not together; ends the check when it refuses all.
  Entries writeSome(const Entries& entries) const {
    Entries accepted;
    collectAccepted(entries, accepted);
    if (accepted.empty()) m_trial.refused("writeKeyValue() answered false");
    return accepted;
  }

  void remove(const Texts& keys) const {
    bool done = false;
    m_trial.ask("removeKeyValue(" + spelled(keys) + ")", [&] { done = m_host.removeKeyValue(keys); });
    if (!done) m_trial.refused("removeKeyValue() answered false");
  }

  void clear() const {
    bool done = false;
    m_trial.ask("clear()", [&] { done = m_host.clear(); });
    if (!done) m_trial.refused("clear() answered false");
  }

  bool open() const {
    bool done = false;
    m_trial.ask("open()", [&] { done = m_host.open(); });
    return done;
  }

  /// Breaks the check when `key` does not hold `value`.
  void expect(const std::string& key, const std::string& value) const {
    const Entries found = read(key);
    const auto entry = found.find(key);
    if (entry == found.end() || entry->second != value)
      m_trial.broken("readKeyValue(" + spelled(key) + ") answered " + spelled(found) + ", written was " +
                     spelled(value));
  }

  /// Breaks the check when `key` holds a value. An empty one is a way to say that there is none.
  void expectNone(const std::string& key) const {
    const Entries found = read(key);
    const auto entry = found.find(key);
    if (entry != found.end() && !entry->second.empty())
      m_trial.broken("readKeyValue(" + spelled(key) + ") answered " + spelled(found));
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
  void collectAccepted(const Entries& entries, Entries& accepted) const {
    if (accepts(entries)) return accepted.insert(entries.begin(), entries.end());
    if (entries.size() < 2) return;
    const auto half = std::next(entries.begin(), static_cast<std::ptrdiff_t>(entries.size() / 2));
    collectAccepted({entries.begin(), half}, accepted);
    collectAccepted({half, entries.end()}, accepted);
  }

  Trial& m_trial;
  Host& m_host;
};

/// A key that no other check and no other run uses.
std::string key(const std::string& name);

/// Texts that some format, file system or language reads as something else.
Texts odd();

std::string everyByte();

}  // namespace vorn_testing::checks
