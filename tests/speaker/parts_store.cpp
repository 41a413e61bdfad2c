// The speaker's key-value store: what it keeps, what it survives, what it refuses.

#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "device/parts/Store.h"

namespace {

using vorn_speaker::Store;
using Entries = std::map<std::string, std::string>;

const char kFile[] = "/tmp/store.sqlite";

std::string content(const std::string& path) {
  if (!std::filesystem::is_regular_file(path)) return "";
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class StoreTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* end : {"", "-wal", "-shm", "-journal"})
      std::filesystem::remove_all(kFile + std::string(end));
  }
};

TEST_F(StoreTest, KeepsNothingWithoutAFile) {
  Store store("");
  EXPECT_TRUE(store.open() && store.write({{"a", "1"}}) && store.read("a") == (Entries{{"a", "1"}}));
  Store other("");
  EXPECT_TRUE(other.open() && other.read("a").empty());
}

TEST_F(StoreTest, IsForTheUsersEyesOnlyAlsoWhenItWasNot) {
  umask(0);
  for (int time = 0; time < 2; ++time) {
    Store store(kFile);
    ASSERT_TRUE(store.open() && store.write({{"a", "1"}}));
    for (const char* end : {"", "-wal", "-shm"}) {
      struct stat status {};
      ASSERT_EQ(stat((kFile + std::string(end)).c_str(), &status), 0);
      EXPECT_EQ(status.st_mode & 0777, 0600U) << end;
      if (time == 0) chmod((kFile + std::string(end)).c_str(), 0644);
    }
  }
}

TEST_F(StoreTest, SaysThatAnotherProgramHasItInHand) {
  {
    Store store(kFile);
    ASSERT_TRUE(store.open());
  }
  sqlite3* database = nullptr;
  sqlite3_open(kFile, &database);
  sqlite3_exec(database, "PRAGMA locking_mode = EXCLUSIVE; BEGIN EXCLUSIVE; CREATE TABLE t (c)", nullptr,
               nullptr, nullptr);
  Store store(kFile, std::chrono::milliseconds(1));
  EXPECT_FALSE(store.open());
  EXPECT_EQ(store.problem(),
            std::string(kFile) +
                ": is in another program's hands; it was left as it is. Wait until that has ended.");
  sqlite3_close(database);
  EXPECT_TRUE(store.open());
}

TEST_F(StoreTest, SaysThatAnotherProgramHeldItTooLong) {
  Store store(kFile, std::chrono::milliseconds(1));
  ASSERT_TRUE(store.open());
  sqlite3* database = nullptr;
  sqlite3_open(kFile, &database);
  sqlite3_exec(database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
  EXPECT_FALSE(store.write({{"a", "1"}}));
  EXPECT_EQ(store.problem(), std::string(kFile) + ": is in another program's hands; nothing was changed.");
  sqlite3_close(database);
}

TEST_F(StoreTest, SaysThatItsPlaceCannotBeWritten) {
  Store store("/tmp/none/store.sqlite");
  EXPECT_FALSE(store.open());
  EXPECT_EQ(
      store.problem(),
      "/tmp/none/store.sqlite: cannot be written: No such file or directory; it was left as it is. Make it and "
      "its folder writable, or choose another folder with --state.");
}

TEST_F(StoreTest, SaysThatItsMountIsReadOnly) {
  {
    Store store(kFile);
    ASSERT_TRUE(store.open());
  }
  if (mount("/tmp", "/tmp", nullptr, MS_BIND, nullptr) != 0 ||
      mount(nullptr, "/tmp", nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr) != 0)
    GTEST_SKIP() << "needs a mount namespace of its own";
  Store store(kFile);
  const bool opened = store.open();
  umount("/tmp");
  EXPECT_FALSE(opened);
  EXPECT_NE(store.problem().find(": cannot be written: Read-only file system; it was left as it is. Make it"),
            std::string::npos)
      << store.problem();
}

TEST_F(StoreTest, WritesAllEntriesOrNone) {
  Store store(kFile);
  ASSERT_TRUE(store.open() && store.write({{"a", "1"}}));
  sqlite3* database = nullptr;
  sqlite3_open(kFile, &database);
  // Keys are kept as bytes.
  ASSERT_EQ(sqlite3_exec(database,
                         "CREATE TRIGGER t BEFORE INSERT ON entries WHEN new.key = x'62' "
                         "BEGIN SELECT RAISE(FAIL, 'no b'); END",
                         nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(database);
  EXPECT_FALSE(store.write({{"a", "2"}, {"b", "2"}}));
  EXPECT_EQ(store.read("a"), (Entries{{"a", "1"}}));
  EXPECT_TRUE(store.write({{"a", "3"}}) && store.read("a") == (Entries{{"a", "3"}}));
}

TEST_F(StoreTest, OpensTwiceAndForgetsAnEarlierProblem) {
  Store store(kFile);
  EXPECT_FALSE(store.clear());
  EXPECT_TRUE(store.open() && store.open());
  EXPECT_EQ(store.problem(), "");
}

TEST_F(StoreTest, ReadsWhatItWroteAlsoAfterReopening) {
  {
    Store store(kFile);
    ASSERT_TRUE(store.open());
    ASSERT_TRUE(store.write({{"a", "1"}, {"", "empty"}, {std::string("n\0l", 3), std::string("\0x", 2)}}));
  }
  Store store(kFile);
  ASSERT_TRUE(store.open());
  EXPECT_EQ(store.read("a"), (Entries{{"a", "1"}}));
  EXPECT_EQ(store.read(std::string("n\0l", 3)), (Entries{{std::string("n\0l", 3), std::string("\0x", 2)}}));
  EXPECT_EQ(store.read("absent"), Entries{});
}

TEST_F(StoreTest, LeavesItsFileAloneBehindAlsoWhenItHasRead) {
  {
    Store store(kFile);
    ASSERT_TRUE(store.open() && store.write({{"a", "1"}}) && !store.read("a").empty());
  }
  for (const char* end : {"-wal", "-shm"})
    EXPECT_FALSE(std::filesystem::exists(kFile + std::string(end))) << end;
}

TEST_F(StoreTest, RemovesKeysAndClears) {
  Store store(kFile);
  ASSERT_TRUE(store.open() && store.write({{"a", "1"}, {"b", "2"}, {"c", "3"}}));
  EXPECT_TRUE(store.remove({"a", "absent"}) && store.remove({}));
  EXPECT_TRUE(store.read("a").empty() && !store.read("b").empty());
  EXPECT_TRUE(store.clear() && store.read("b").empty());
}

TEST_F(StoreTest, SaysThatItIsNotOpen) {
  Store store(kFile);
  EXPECT_FALSE(store.write({{"a", "1"}}));
  EXPECT_NE(store.problem().find("not open"), std::string::npos);
  EXPECT_TRUE(store.read("a").empty());
  EXPECT_NE(store.problem().find("not open"), std::string::npos);
  EXPECT_NE(access(kFile, F_OK), 0);
}

TEST_F(StoreTest, LosesNoAcknowledgedWriteWhenItsProcessIsKilled) {
  int acknowledged[2];
  ASSERT_EQ(pipe(acknowledged), 0);
  const pid_t writer = fork();
  if (writer == 0) {
    Store store(kFile);
    store.open();
    for (signed char i = 0; store.write({{std::to_string(i), "value"}}); ++i)
      if (::write(acknowledged[1], &i, 1) != 1) _exit(1);
    _exit(1);
  }
  signed char last = -1;
  while (last < 20 && ::read(acknowledged[0], &last, 1) == 1) continue;
  kill(writer, SIGKILL);
  waitpid(writer, nullptr, 0);
  Store store(kFile);
  ASSERT_TRUE(store.open());
  for (int i = 0; i <= last; ++i) EXPECT_FALSE(store.read(std::to_string(i)).empty()) << i;
}

TEST_F(StoreTest, ServesManyThreads) {
  Store store(kFile);
  ASSERT_TRUE(store.open());
  std::thread threads[4];
  for (int t = 0; t < 4; ++t)
    threads[t] = std::thread([&store, t] {
      for (int i = 0; i < 5; ++i) EXPECT_TRUE(store.write({{std::to_string(t * 5 + i), "x"}}));
    });
  for (std::thread& thread : threads) thread.join();
  for (int i = 0; i < 20; ++i) EXPECT_FALSE(store.read(std::to_string(i)).empty()) << i;
}

TEST_F(StoreTest, NamesFileReasonAndRemedyWhenItsTableIsGone) {
  Store store(kFile);
  ASSERT_TRUE(store.open());
  sqlite3* database = nullptr;
  sqlite3_open(kFile, &database);
  sqlite3_exec(database, "DROP TABLE entries", nullptr, nullptr, nullptr);
  sqlite3_close(database);
  const std::string problem = std::string(kFile) + ": no such table: entries; nothing was changed.";
  EXPECT_TRUE(store.read("a").empty());
  EXPECT_EQ(store.problem().find(problem), 0U) << store.problem();
  EXPECT_FALSE(store.write({{"a", "1"}}));
  EXPECT_EQ(store.problem().find(problem), 0U) << store.problem();
}

TEST_F(StoreTest, SaysThatItsFileIsOneToReadOnly) {
  {
    Store store(kFile);
    ASSERT_TRUE(store.open() && store.write({{"a", "1"}}));
  }
  // As a later SQLite marks what earlier ones may read and not write.
  std::fstream(kFile, std::ios::in | std::ios::out | std::ios::binary).seekp(18).put(3);
  Store store(kFile);
  ASSERT_TRUE(store.open()) << store.problem();
  EXPECT_FALSE(store.write({{"a", "2"}}));
  EXPECT_EQ(
      store.problem(),
      std::string(kFile) + ": cannot be written: attempt to write a readonly database; nothing was changed.");
  EXPECT_EQ(store.read("a"), (Entries{{"a", "1"}}));
}

TEST_F(StoreTest, TellsNothingRawThatAForeignSchemaSays) {
  Store store(kFile);
  ASSERT_TRUE(store.open());
  sqlite3* database = nullptr;
  sqlite3_open(kFile, &database);
  sqlite3_exec(database,
               "CREATE TRIGGER t BEFORE INSERT ON entries BEGIN SELECT raise(ABORT, 'no\x1b[2J'); END",
               nullptr, nullptr, nullptr);
  sqlite3_close(database);
  EXPECT_FALSE(store.write({{"a", "1"}}));
  EXPECT_EQ(store.problem(), std::string(kFile) + ": no\\x1b[2J; nothing was changed.");
}

TEST_F(StoreTest, WritesAgainOnceAFullDiskHasRoom) {
  Store store(kFile);
  ASSERT_TRUE(store.open() && store.write({{"a", "1"}}));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  signal(SIGXFSZ, SIG_IGN);
  rlimit small = before;
  small.rlim_cur = 64 * 1024;
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_FALSE(store.write({{"a", "2"}, {"b", std::string(1000000, 'v')}}));
  EXPECT_EQ(store.problem().find(kFile), 0U) << store.problem();
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(store.read("a"), (Entries{{"a", "1"}}));
  EXPECT_TRUE(store.write({{"a", "3"}}));
}

/// A file that is not the store's, and what the refusal must say.
struct Foreign {
  const char* name;
  const char* says;
  void (*make)();
};

void makeText() { std::ofstream(kFile) << "my diary, not a database at all, but long enough"; }
void makeTiny() { std::ofstream(kFile) << "x"; }
void makeDamaged() {
  {
    Store store(kFile);
    store.open();
    store.write({{"a", std::string(20000, 'v')}});
  }
  std::fstream file(kFile, std::ios::in | std::ios::out | std::ios::binary);
  file.seekp(100);
  file << std::string(3000, '\x5a');
}
void makeAnothers() {
  sqlite3* database = nullptr;
  sqlite3_open(kFile, &database);
  sqlite3_exec(database, "PRAGMA application_id = 7; CREATE TABLE t (c)", nullptr, nullptr, nullptr);
  sqlite3_close(database);
}
void makeUnmarked() {
  sqlite3* database = nullptr;
  sqlite3_open(kFile, &database);
  sqlite3_exec(database, "CREATE TABLE t (c)", nullptr, nullptr, nullptr);
  sqlite3_close(database);
}

/// Makes the file as a database whose writer stopped without closing it, with what it had in its journal.
void makeAbandoned(const char* sql) {
  const std::string source = "/tmp/source.sqlite";
  for (const char* end : {"", "-wal", "-shm", "-journal"}) std::remove((source + end).c_str());
  sqlite3* database = nullptr;
  sqlite3_open(source.c_str(), &database);
  EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
  for (const char* end : {"", "-wal", "-journal"})
    if (access((source + end).c_str(), F_OK) == 0)
      std::ofstream(kFile + std::string(end), std::ios::binary) << content(source + end);
  sqlite3_close(database);
}
void makeAnothersLog() {
  makeAbandoned("PRAGMA journal_mode = WAL; PRAGMA application_id = 7; CREATE TABLE t (c)");
}
void makeUnmarkedLog() { makeAbandoned("PRAGMA journal_mode = WAL; CREATE TABLE t (c)"); }
void makeUnfinished(const std::string& begin) {
  makeAbandoned((begin + "CREATE TABLE t (c); PRAGMA cache_size = 1; BEGIN; INSERT INTO t "
                         "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 50) "
                         "SELECT zeroblob(3000) FROM n")
                    .c_str());
  ASSERT_FALSE(content(kFile + std::string("-journal")).empty());
}
void makeAnothersUnfinished() { makeUnfinished("PRAGMA application_id = 7; "); }
void makeUnmarkedUnfinished() { makeUnfinished(""); }

const std::string kLog = std::string(kFile) + "-wal";

void makeLogAlone() { std::ofstream(kLog) << "what was written last"; }
void makeLogOfNothing() {
  makeLogAlone();
  std::ofstream{kFile};
}
void makeJournalAlone() { std::ofstream(std::string(kFile) + "-journal") << "half of a change"; }
void makeLogPipe() { mkfifo(kLog.c_str(), 0600); }
void makeLogFolder() { mkdir(kLog.c_str(), 0700); }
void makeFolder() { mkdir(kFile, 0700); }
void makePipe() { mkfifo(kFile, 0600); }
void makeLink() { ASSERT_EQ(symlink("/tmp/precious", kFile), 0); }
void makeOtherColumns() {
  {
    Store store(kFile);
    store.open();
  }
  sqlite3* database = nullptr;
  sqlite3_open(kFile, &database);
  sqlite3_exec(database,
               "DROP TABLE entries; CREATE TABLE entries (key, worth); PRAGMA journal_mode = DELETE", nullptr,
               nullptr, nullptr);
  sqlite3_close(database);
}

class ForeignFiles : public StoreTest, public testing::WithParamInterface<Foreign> {};

TEST_P(ForeignFiles, AreRefusedAndLeftAsTheyAre) {
  GetParam().make();
  // Others may read a file of others.
  if (std::filesystem::is_regular_file(std::filesystem::symlink_status(kFile))) chmod(kFile, 0644);
  const auto all = [] {
    const std::string file = kFile;
    struct stat status {};
    lstat(kFile, &status);
    return std::vector<std::string>{std::to_string(status.st_mode), content(file), content(file + "-wal"),
                                    content(file + "-journal")};
  };
  const std::vector<std::string> before = all();
  Store store(kFile);
  EXPECT_FALSE(store.open());
  EXPECT_FALSE(store.write({{"a", "1"}}));
  EXPECT_NE(store.problem().find(std::string(kFile) + ": " + GetParam().says), std::string::npos)
      << store.problem();
  EXPECT_TRUE(all() == before);
}

INSTANTIATE_TEST_SUITE_P(
    Store, ForeignFiles,
    testing::Values(
        Foreign{"Text", "is not a database", makeText}, Foreign{"Tiny", "is not a database", makeTiny},
        Foreign{"Damaged", "is damaged", makeDamaged}, Foreign{"Folder", "is a folder", makeFolder},
        Foreign{"Pipe", "is a pipe or a device", makePipe},
        Foreign{"Link", "is a link, which is not followed", makeLink},
        Foreign{"LogAlone", "is not there, but its journal is: /tmp/store.sqlite-wal", makeLogAlone},
        Foreign{"LogOfNothing", "is empty, but its journal is: ", makeLogOfNothing},
        Foreign{"JournalAlone", "is not there, but its journal is: ", makeJournalAlone},
        Foreign{"LogPipe", "has /tmp/store.sqlite-wal beside it, which is no file", makeLogPipe},
        Foreign{"LogFolder", "has /tmp/store.sqlite-wal beside it, which is no file", makeLogFolder},
        Foreign{"OtherColumns", "has a table 'entries' with other columns", makeOtherColumns},
        Foreign{"Anothers", "belongs to another program", makeAnothers},
        Foreign{"Unmarked", "belongs to another program", makeUnmarked},
        Foreign{"AnothersLog", "belongs to another program", makeAnothersLog},
        Foreign{"UnmarkedLog", "belongs to another program", makeUnmarkedLog},
        Foreign{"AnothersUnfinished", "belongs to another program", makeAnothersUnfinished},
        Foreign{"UnmarkedUnfinished", "belongs to another program", makeUnmarkedUnfinished}),
    [](const auto& test) { return test.param.name; });

}  // namespace
