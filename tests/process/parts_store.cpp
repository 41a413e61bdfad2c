// The speaker's key-value store: what it keeps, what it survives, what it refuses.

#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <thread>

#include "parts/Store.h"

namespace {

using vorn_speaker::Store;
using Entries = std::map<std::string, std::string>;

const char kFile[] = "/tmp/store.sqlite";

std::string content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class StoreTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* end : {"", "-wal", "-shm", "-journal"}) std::remove((std::string(kFile) + end).c_str());
  }
};

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
  EXPECT_NE(access(kFile, F_OK), 0);
}

TEST_F(StoreTest, LosesNoAcknowledgedWriteWhenItsProcessIsKilled) {
  int acknowledged[2];
  ASSERT_EQ(pipe(acknowledged), 0);
  const pid_t writer = fork();
  if (writer == 0) {
    Store store(kFile);
    store.open();
    for (char i = 0; store.write({{std::to_string(i), "value"}}); ++i)
      if (::write(acknowledged[1], &i, 1) != 1) _exit(1);
    _exit(1);
  }
  char last = -1;
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

class ForeignFiles : public StoreTest, public testing::WithParamInterface<Foreign> {};

TEST_P(ForeignFiles, AreRefusedAndLeftAsTheyAre) {
  GetParam().make();
  const std::string before = content(kFile);
  Store store(kFile);
  EXPECT_FALSE(store.open());
  EXPECT_NE(store.problem().find(std::string(kFile) + ": " + GetParam().says), std::string::npos)
      << store.problem();
  EXPECT_EQ(content(kFile), before);
}

INSTANTIATE_TEST_SUITE_P(Store, ForeignFiles,
                         testing::Values(Foreign{"Text", "is not a database", makeText},
                                         Foreign{"Tiny", "is not a database", makeTiny},
                                         Foreign{"Damaged", "is damaged", makeDamaged},
                                         Foreign{"Anothers", "belongs to another program", makeAnothers},
                                         Foreign{"Unmarked", "belongs to another program", makeUnmarked}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
