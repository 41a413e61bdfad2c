#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct sqlite3;

namespace vorn_speaker {

/// The device's persistent key-value store: one SQLite file with a write-ahead log.
///
/// What a writing operation has acknowledged survives a killed process. Operations may be called from any
/// thread and run one at a time. They return false when the file cannot be used; problem() says why.
class Store {
 public:
  /// The store will live in `path`, or with an empty one in memory; nothing is touched before open(). Another
  /// program that has the file in hand is waited for that long.
  explicit Store(std::string path, std::chrono::milliseconds patience = std::chrono::seconds(5));
  ~Store();

  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  /// Opens the file, making it for this user's eyes only when it is not there; opening twice is fine. A file that is
  /// damaged, in use, not writable, or another program's is refused and left as it is.
  bool open();

  /// The entry under `key`, or nothing.
  std::map<std::string, std::string> read(const std::string& key);

  /// Stores all entries or, on failure, none.
  bool write(const std::map<std::string, std::string>& entries);

  /// Removes all keys or, on failure, none. Keys that are not stored count as removed.
  bool remove(const std::vector<std::string>& keys);

  /// Removes everything.
  bool clear();

  /// Why the last operation failed: file, reason and remedy. Empty when it did not.
  std::string problem() const;

 private:
  bool usable();
  bool execute(const std::string& sql);
  void complain();
  std::string reason() const;
  bool prepare();
  bool close();
  bool inTransaction(const std::string& sql, const std::vector<std::vector<std::string>>& rows);
  bool refuse(const std::string& reason, const std::string& remedy);

  const std::string m_path;
  const std::chrono::milliseconds m_patience;
  mutable std::mutex m_mutex;
  sqlite3* m_database = nullptr;
  std::string m_problem;
};

}  // namespace vorn_speaker
