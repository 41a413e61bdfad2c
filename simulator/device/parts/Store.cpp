#include "Store.h"

#include <sqlite3.h>

#include <cstring>
#include <fstream>
#include <utility>

namespace vorn_speaker {

namespace {

// Written into every file of ours, to tell it from another program's.
constexpr int kApplicationId = 0x566f726e;

int number(sqlite3* database, const char* pragma) {
  sqlite3_stmt* statement = nullptr;
  int value = -1;
  if (sqlite3_prepare_v2(database, pragma, -1, &statement, nullptr) == SQLITE_OK &&
      sqlite3_step(statement) == SQLITE_ROW)
    value = sqlite3_column_int(statement, 0);
  sqlite3_finalize(statement);
  return value;
}

void bind(sqlite3_stmt* statement, const std::vector<std::string>& row) {
  // As blobs: any bytes, also NUL, go in and come out.
  for (std::size_t i = 0; i < row.size(); ++i)
    sqlite3_bind_blob64(statement, static_cast<int>(i) + 1, row[i].data(), row[i].size(), SQLITE_TRANSIENT);
}

std::string blob(sqlite3_stmt* statement, int column) {
  const void* const bytes = sqlite3_column_blob(statement, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return bytes ? std::string(static_cast<const char*>(bytes), size) : std::string();
}

/// Why a file is not the store's, or nothing. Looked at before SQLite does, which takes an unfinished header for
/// an empty database and brings a journal that it finds into the file.
std::string whyNotOurs(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  unsigned char head[100] = {};
  file.read(reinterpret_cast<char*>(head), sizeof head);
  if (file.gcount() == 0) return "";
  if (std::memcmp(head, "SQLite format 3", 16) != 0) return "is not a database";
  const int id = head[68] << 24 | head[69] << 16 | head[70] << 8 | head[71];
  const bool unfinished = std::ifstream(path + "-journal").good();
  return id == kApplicationId || (id == 0 && !unfinished) ? "" : "belongs to another program";
}

}  // namespace

Store::Store(std::string path) : m_path(std::move(path)) {}

Store::~Store() { sqlite3_close(m_database); }

bool Store::open() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_database) return true;
  const std::string reason = whyNotOurs(m_path);
  if (!reason.empty()) return refuse(reason);
  if (sqlite3_open_v2(m_path.c_str(), &m_database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) !=
      SQLITE_OK)
    return refuse(sqlite3_errmsg(m_database));
  sqlite3_busy_timeout(m_database, 5000);
  // Nothing is written before the file is known to be ours or empty, not even when it is closed.
  sqlite3_db_config(m_database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  const int id = number(m_database, "PRAGMA application_id");
  const int tables = number(m_database, "SELECT count(*) FROM sqlite_master");
  if (tables < 0) return refuse(std::string("is damaged: ") + sqlite3_errmsg(m_database));
  if (id != kApplicationId && (id != 0 || tables != 0)) return refuse("belongs to another program");
  sqlite3_stmt* check = nullptr;
  sqlite3_prepare_v2(m_database, "PRAGMA quick_check(1)", -1, &check, nullptr);
  const bool sound = check && sqlite3_step(check) == SQLITE_ROW && blob(check, 0) == "ok";
  sqlite3_finalize(check);
  if (!sound) return refuse("is damaged");
  // Full synchronisation: what is acknowledged is on the medium. The mark comes before the log, so that it
  // stands in the file itself.
  if ((id == 0 && !execute("PRAGMA application_id = " + std::to_string(kApplicationId))) ||
      !execute("PRAGMA journal_mode = WAL") || !execute("PRAGMA synchronous = FULL") ||
      !execute(
          "CREATE TABLE IF NOT EXISTS entries (key BLOB PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID"))
    return refuse(sqlite3_errmsg(m_database));
  sqlite3_db_config(m_database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
  m_problem.clear();
  return true;
}

std::map<std::string, std::string> Store::read(const std::string& key) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::map<std::string, std::string> found;
  if (!usable()) return found;
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(m_database, "SELECT value FROM entries WHERE key = ?", -1, &statement, nullptr);
  bind(statement, {key});
  const int step = sqlite3_step(statement);
  if (step == SQLITE_ROW) found[key] = blob(statement, 0);
  if (step != SQLITE_ROW && step != SQLITE_DONE) complain();
  sqlite3_finalize(statement);
  return found;
}

bool Store::write(const std::map<std::string, std::string>& entries) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<std::vector<std::string>> rows;
  for (const auto& [key, value] : entries) rows.push_back({key, value});
  return inTransaction("INSERT OR REPLACE INTO entries VALUES (?, ?)", rows);
}

bool Store::remove(const std::vector<std::string>& keys) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<std::vector<std::string>> rows;
  for (const std::string& key : keys) rows.push_back({key});
  return inTransaction("DELETE FROM entries WHERE key = ?", rows);
}

bool Store::clear() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return usable() && execute("DELETE FROM entries");
}

std::string Store::problem() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_problem;
}

bool Store::usable() {
  if (m_database)
    m_problem.clear();
  else if (m_problem.empty())
    m_problem = m_path + ": not open; call open() first";
  return m_database != nullptr;
}

bool Store::execute(const std::string& sql) {
  if (sqlite3_exec(m_database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return true;
  complain();
  return false;
}

void Store::complain() {
  m_problem = m_path + ": " + sqlite3_errmsg(m_database) +
              "; nothing was changed. Is the disk full, or the file in another program's hands?";
}

bool Store::inTransaction(const std::string& sql, const std::vector<std::vector<std::string>>& rows) {
  if (!usable() || !execute("BEGIN IMMEDIATE")) return false;
  sqlite3_stmt* statement = nullptr;
  bool good = sqlite3_prepare_v2(m_database, sql.c_str(), -1, &statement, nullptr) == SQLITE_OK;
  for (std::size_t i = 0; good && i < rows.size(); ++i) {
    bind(statement, rows[i]);
    good = sqlite3_step(statement) == SQLITE_DONE;
    sqlite3_reset(statement);
  }
  if (!good) complain();
  sqlite3_finalize(statement);
  if (good && execute("COMMIT")) return true;
  sqlite3_exec(m_database, "ROLLBACK", nullptr, nullptr, nullptr);
  return false;
}

bool Store::refuse(const std::string& reason) {
  m_problem =
      m_path + ": " + reason + "; it was left as it is. Move it away or choose another folder with --state.";
  sqlite3_close(m_database);
  m_database = nullptr;
  return false;
}

}  // namespace vorn_speaker
