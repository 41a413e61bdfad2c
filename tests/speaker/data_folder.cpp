// The folders of vorn-speaker: what it ships, and what it keeps.

#include "device/DataFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

namespace {

using namespace vorn_speaker;
namespace fs = std::filesystem;

class DataFolder : public testing::Test {
 protected:
  static constexpr char kFolder[] = "/tmp/data-folder";

  DataFolder() {
    fs::remove_all(kFolder);
    fs::create_directories(kFolder);
  }

  static std::string path(const std::string& name) { return kFolder + ("/" + name); }

  /// What the folder is refused with.
  static std::string refusal(const std::string& folder) {
    try {
      const StateFolder state(folder);
      return "";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  static std::string refused(const std::string& folder, const std::string& reason) {
    return folder + ": " + reason + "; choose a folder of your own with --state";
  }

  static unsigned mode(const std::string& file) {
    return static_cast<unsigned>(fs::status(file).permissions());
  }
};

TEST_F(DataFolder, IsMadeWithThoseAboveForItsOwnerOnly) {
  EXPECT_EQ(refusal(path("a/b/c")), "");
  EXPECT_EQ(mode(path("a")), 0700U);
  EXPECT_EQ(mode(path("a/b/c")), 0700U);
}

TEST_F(DataFolder, IsTakenAsItIsWhenItIsThere) {
  fs::create_directory(path("a"));
  fs::permissions(path("a"), fs::perms(0755));
  EXPECT_EQ(refusal(path("a")), "");
  EXPECT_EQ(refusal(path("a/")), "");
  EXPECT_EQ(mode(path("a")), 0755U);
}

TEST_F(DataFolder, HoldsALockForItsOwnerOnly) {
  EXPECT_EQ(refusal(kFolder), "");
  EXPECT_EQ(mode(path("lock")), 0600U);
}

TEST_F(DataFolder, IsRefusedWithoutAName) {
  EXPECT_EQ(refusal(""), "this user has no home folder; name a folder with --state");
}

TEST_F(DataFolder, IsRefusedWhereItCannotBe) {
  std::ofstream(path("file")) << "x";
  EXPECT_EQ(refusal(path("file")), refused(path("file"), "is no folder"));
  EXPECT_EQ(refusal(path("file/a")), refused(path("file/a"), "cannot be made: Not a directory"));
}

TEST_F(DataFolder, IsRefusedWhenEverybodyMayWriteThere) {
  fs::permissions(kFolder, fs::perms(0777));
  EXPECT_EQ(refusal(kFolder), refused(kFolder, "may be written by everybody"));
  fs::permissions(kFolder, fs::perms(0775));
  EXPECT_EQ(refusal(kFolder), "");
}

TEST_F(DataFolder, IsRefusedWithALinkAtEveryNameOfOurs) {
  for (const char* name : {"answer.wav", "console-history", "lock", "store.sqlite", "store.sqlite-journal",
                           "store.sqlite-shm", "store.sqlite-wal"}) {
    fs::create_symlink("/tmp/elsewhere", path(name));
    EXPECT_EQ(refusal(kFolder), refused(path(name), "is a link, which is not followed"));
    fs::remove(path(name));
  }
  EXPECT_FALSE(fs::exists("/tmp/elsewhere"));
}

TEST_F(DataFolder, IsRefusedWhenAnotherUserOwnsItOrAFileInIt) {
  std::ofstream(path("console-history")) << "x";
  if (chown(path("console-history").c_str(), 1, 1) != 0)
    GTEST_SKIP() << "giving files away takes root and a second user";
  EXPECT_EQ(refusal(kFolder), refused(path("console-history"), "belongs to another user"));
  fs::remove(path("console-history"));
  ASSERT_EQ(chown(kFolder, 1, 1), 0);
  EXPECT_EQ(refusal(kFolder), refused(kFolder, "belongs to another user"));
}

TEST_F(DataFolder, IsRefusedWhileAnotherProcessHasIt) {
  std::optional<StateFolder> held(kFolder);
  const auto other = [] {
    const pid_t child = fork();
    if (child == 0)
      _exit(refusal(kFolder) == refused(kFolder, "another vorn-speaker uses it; wait until that has ended"));
    int ended = 0;
    waitpid(child, &ended, 0);
    return WIFEXITED(ended) ? WEXITSTATUS(ended) : -1;
  };
  EXPECT_EQ(other(), 1);
  held.reset();
  EXPECT_EQ(other(), 0);
}

TEST_F(DataFolder, IsNotLockedWhereTheLockIsAFolder) {
  fs::create_directory(path("lock"));
  EXPECT_EQ(refusal(kFolder), refused(path("lock"), "is no file"));
}

TEST_F(DataFolder, LeavesNoFileOpen) {
  const auto open = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
  const auto before = open();
  for (int i = 0; i < 3; ++i) refusal(kFolder);
  EXPECT_EQ(open(), before);
}

/// The environment, as the test needs it.
class UserFolder : public testing::Test {
 protected:
  static std::string with(const char* state, const char* home) {
    state ? setenv("XDG_STATE_HOME", state, 1) : unsetenv("XDG_STATE_HOME");
    home ? setenv("HOME", home, 1) : unsetenv("HOME");
    return userStateFolder();
  }
};

TEST_F(UserFolder, IsWhereTheUserKeepsState) {
  EXPECT_EQ(with("/state", "/home/ada"), "/state/vorn-speaker");
  EXPECT_EQ(with(nullptr, "/home/ada"), "/home/ada/.local/state/vorn-speaker");
}

TEST_F(UserFolder, IsNeverRelative) {
  EXPECT_EQ(with("state", "/home/ada"), "/home/ada/.local/state/vorn-speaker");
  EXPECT_EQ(with("", "/home/ada"), "/home/ada/.local/state/vorn-speaker");
  const std::string listed = with(nullptr, nullptr);  // As the list of users has it.
  EXPECT_EQ(with(nullptr, "ada"), listed);
  EXPECT_TRUE(listed.empty() || listed[0] == '/') << listed;
}

}  // namespace
