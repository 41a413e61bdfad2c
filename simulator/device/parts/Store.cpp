#include "Store.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>

#include "text/Lines.h"

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

constexpr char kMoveAway[] = "Move it away or choose another folder with --state.";

/// Why a file is not the store's, or nothing. Looked at before SQLite does, which takes an unfinished header for
/// an empty database and brings a journal that it finds into the file.
std::string whyNotOurs(const std::string& path) {
  struct stat status {};
  const bool there = lstat(path.c_str(), &status) == 0;
  if (there && !S_ISREG(status.st_mode))
    return S_ISLNK(status.st_mode)   ? "is a link, which is not followed"
           : S_ISDIR(status.st_mode) ? "is a folder"
                                     : "is a pipe or a device, not a file";
  // Of a file that was moved away: what it holds is not in that file yet. SQLite would remove it.
  const bool empty = !there || status.st_size == 0;
  for (const std::string& journal : {path + "-wal", path + "-journal"}) {
    struct stat beside {};
    if (lstat(journal.c_str(), &beside) != 0) continue;
    if (!S_ISREG(beside.st_mode)) return "has " + oneLine(journal) + " beside it, which is no file";
    if (beside.st_size > 0 && (!there || (empty && journal.back() == 'l')))
      return "is " + std::string(there ? "empty" : "not there") + ", but its journal is: " + oneLine(journal);
  }
  std::ifstream file(path, std::ios::binary);
  unsigned char head[100] = {};
  file.read(reinterpret_cast<char*>(head), sizeof head);
  if (file.gcount() == 0) return "";
  if (std::memcmp(head, "SQLite format 3", 16) != 0) return "is not a database";
  const int id = head[68] << 24 | head[69] << 16 | head[70] << 8 | head[71];
  const bool unfinished = std::ifstream(path + "-journal").good();
  return id == kApplicationId || (id == 0 && !unfinished) ? "" : "belongs to another program";
}

/// Makes an empty file for this user's eyes only, where none is. False when it cannot be written.
bool makeIfMissing(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600);
  if (file >= 0) ::close(file);
  return file >= 0;
}

}  // namespace

Store::Store(std::string path, std::chrono::milliseconds patience)
    : m_path(std::move(path)), m_patience(patience) {}

Store::~Store() { sqlite3_close(m_database); }

bool Store::open() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_database) return true;
  const bool kept = !m_path.empty();
  const std::string foreign = kept ? whyNotOurs(m_path) : "";
  if (!foreign.empty()) return refuse(foreign, kMoveAway);
  if (kept && !makeIfMissing(m_path))
    return refuse(std::string("cannot be written: ") + std::strerror(errno),
                  "Make it and its folder writable, or choose another folder with --state.");
  if (sqlite3_open_v2(kept ? m_path.c_str() : ":memory:", &m_database, SQLITE_OPEN_READWRITE, nullptr) !=
      SQLITE_OK)
    return refuse(reason(), kMoveAway) || close();
  sqlite3_busy_timeout(m_database, static_cast<int>(m_patience.count()));
  if (!prepare()) return close();
  m_problem.clear();
  return true;
}

bool Store::close() {
  sqlite3_close(m_database);
  m_database = nullptr;
  return false;
}

/// Makes the store of an opened file. Nothing is written before the file is known to be ours or empty, not even when it
/// is closed.
bool Store::prepare() {
  sqlite3_db_config(m_database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  const auto fail = [this] {
    const int error = sqlite3_errcode(m_database);
    const bool damaged = error == SQLITE_CORRUPT || error == SQLITE_NOTADB;
    return refuse(reason(), damaged                ? kMoveAway
                            : error == SQLITE_BUSY ? "Wait until that has ended."
                                                   : "Choose another folder with --state, or make room.");
  };
  const int id = number(m_database, "PRAGMA application_id");
  const int tables = number(m_database, "SELECT count(*) FROM sqlite_master");
  if (tables < 0) return fail();
  if (id != kApplicationId && (id != 0 || tables != 0))
    return refuse("belongs to another program", kMoveAway);
  sqlite3_stmt* check = nullptr;
  sqlite3_prepare_v2(m_database, "PRAGMA quick_check(1)", -1, &check, nullptr);
  const int checked = check ? sqlite3_step(check) : sqlite3_errcode(m_database);
  const bool sound = checked == SQLITE_ROW && blob(check, 0) == "ok";
  sqlite3_finalize(check);
  if (checked != SQLITE_ROW) return fail();
  if (!sound) return refuse("is damaged", kMoveAway);
  if (number(
          m_database,
          "SELECT count(*) = 0 OR (count(*) = 2 AND total(name = 'key' AND pk = 1) = 1 AND total(name = 'value') = 1) "
          "FROM pragma_table_info('entries')") != 1)
    return refuse("has a table 'entries' with other columns than key and value", kMoveAway);
  // It is ours, thus for this user's eyes only.
  for (const char* const end : {"", "-wal", "-shm"}) {
    if (!m_path.empty() && chmod((m_path + end).c_str(), 0600) != 0 && errno != ENOENT)
      return refuse(std::string("cannot be kept from others: ") + std::strerror(errno), kMoveAway);
  }
  // Full synchronisation: what is acknowledged is on the medium. The mark comes before the log, so that it
  // stands in the file itself.
  if ((id == 0 && !execute("PRAGMA application_id = " + std::to_string(kApplicationId))) ||
      !execute("PRAGMA journal_mode = WAL") || !execute("PRAGMA synchronous = FULL") ||
      !execute(
          "CREATE TABLE IF NOT EXISTS entries (key BLOB PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID"))
    return fail();
  sqlite3_db_config(m_database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
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
    m_problem = oneLine(m_path) + ": not open; call open() first";
  return m_database != nullptr;
}

bool Store::execute(const std::string& sql) {
  if (sqlite3_exec(m_database, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return true;
  complain();
  return false;
}

std::string Store::reason() const {
  const std::string told = oneLine(sqlite3_errmsg(m_database));  // A foreign schema has a say in it.
  switch (sqlite3_errcode(m_database)) {
    case SQLITE_BUSY:
      return "is in another program's hands";
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_CANTOPEN:
      return "cannot be written: " + told;
    case SQLITE_FULL:
    case SQLITE_IOERR:
      return "the disk is full or fails: " + told;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return "is damaged: " + told;
    default:
      return told;
  }
}

void Store::complain() { m_problem = oneLine(m_path) + ": " + reason() + "; nothing was changed."; }

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

bool Store::refuse(const std::string& reason, const std::string& remedy) {
  m_problem = oneLine(m_path) + ": " + reason + "; it was left as it is. " + remedy;
  return false;
}

}  // namespace vorn_speaker
