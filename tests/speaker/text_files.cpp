// Files as the speaker's texts use them: read whole, written whole, refused, told apart.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <locale>
#include <optional>

#include "support/eventually.h"
#include "text/Files.h"

namespace {

using namespace vorn_speaker;
namespace fs = std::filesystem;

class TextFiles : public testing::Test {
 protected:
  static constexpr char kFolder[] = "/tmp/text-files";

  TextFiles() {
    fs::remove_all(kFolder);
    fs::create_directories(kFolder);
  }

  static std::string path(const std::string& name) { return kFolder + ("/" + name); }

  static std::string file(const std::string& name, const std::string& content) {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }

  static std::string pipe(const std::string& name) {
    EXPECT_EQ(mkfifo(path(name).c_str(), 0600), 0);
    return path(name);
  }

  static std::string content(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  static std::size_t count() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(kFolder), {}));
  }

  static fs::perms mode(const std::string& path) { return fs::status(path).permissions(); }
};

/// What the action is refused with.
template <class Action>
std::string refusal(Action action) {
  try {
    action();
    return "nothing was refused";
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

const fs::perms kOwnersOnly = fs::perms::owner_read | fs::perms::owner_write;

TEST_F(TextFiles, AreReadWholeUpToTheMostThatIsTaken) {
  const std::string large(200001, 'a');
  EXPECT_EQ(readWhole(file("large", large), large.size()), large);
  EXPECT_EQ(refusal([&] { readWhole(path("large"), large.size() - 1); }),
            path("large") + ": cannot be read: it holds more than 200000 bytes");
  EXPECT_EQ(readWhole(file("empty", ""), 0), "");
}

TEST_F(TextFiles, ThatCannotBeReadAreNamedWithTheReason) {
  EXPECT_EQ(refusal([] { readWhole(path("none"), 10); }),
            path("none") + ": cannot be read: No such file or directory");
  EXPECT_EQ(refusal([] { readWhole(kFolder, 10); }),
            kFolder + std::string(": cannot be read: Is a directory"));
}

TEST_F(TextFiles, ArePipesThatAreReadToTheirEnd) {
  const std::string name = pipe("pipe");
  const int kept =
      open(name.c_str(), O_RDWR | O_CLOEXEC);  // So that the reader finds a writer from the beginning.
  ASSERT_EQ(write(kept, "one\n", 4), 4);
  const auto drained = [kept] {
    int waiting = 0;
    return ioctl(kept, FIONREAD, &waiting) == 0 && waiting == 0;
  };
  const auto writer = std::async(std::launch::async, [&] {
    eventually(drained);
    std::ofstream(name, std::ios::binary) << "two\n";
    close(kept);
  });
  EXPECT_EQ(readWhole(name, 100), "one\ntwo\n");
}

TEST_F(TextFiles, ArePipesThatAreRefusedWhenNobodyWrites) {
  EXPECT_EQ(refusal([name = pipe("pipe")] { readWhole(name, 100); }),
            path("pipe") + ": cannot be read: it is a pipe that nobody writes to");
}

TEST_F(TextFiles, AreLeftOpenByNobody) {
  const std::string name = file("a", "x");
  const auto open = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); };
  const auto before = open();
  for (int i = 0; i < 3; ++i) readWhole(name, 10), refusal([&] { readWhole(name, 0); });
  EXPECT_EQ(open(), before);
}

TEST_F(TextFiles, AreNoFoldersPipesOrDevices) {
  EXPECT_EQ(refusal([] { refuseUnlessFile(kFolder); }), kFolder + std::string(": is a folder; name a file"));
  EXPECT_EQ(refusal([name = pipe("pipe")] { refuseUnlessFile(name); }),
            path("pipe") + ": is a pipe; name a file");
  EXPECT_EQ(refusal([] { refuseUnlessFile("/dev/null"); }),
            "/dev/null: is a device or a socket; name a file");
}

TEST_F(TextFiles, ThatAreFilesOrNotThereAreNotRefused) {
  EXPECT_NO_THROW(refuseUnlessFile(file("a", "x")));
  EXPECT_NO_THROW(refuseUnlessFile(path("none")));
}

TEST_F(TextFiles, AreTheSameBehindEveryName) {
  file("a", "x");
  file("b", "x");
  fs::create_symlink("a", path("link"));
  EXPECT_TRUE(sameFile(path("a"), path("link")));
  EXPECT_FALSE(sameFile(path("a"), path("b")));
  EXPECT_FALSE(sameFile(path("none"), path("none")));
}

TEST_F(TextFiles, ThatAreNewAreTheirOwnersAndStay) {
  WholeFile written(path("new"));
  written.stream() << "first\n";
  written.finish();
  EXPECT_EQ(content(path("new")), "first\n");
  EXPECT_EQ(mode(path("new")), kOwnersOnly);
  EXPECT_EQ(count(), 1U);
}

TEST_F(TextFiles, ThatReplaceAnotherAppearWhole) {
  const std::string name = file("a", "old");
  {
    WholeFile written(name);
    written.stream() << std::string(100000, 'n') << std::flush;
    EXPECT_EQ(content(name), "old");
    written.finish();
  }
  EXPECT_EQ(content(name), std::string(100000, 'n'));
  EXPECT_EQ(mode(name), kOwnersOnly);
  EXPECT_EQ(count(), 1U);
}

TEST_F(TextFiles, ThatAreNeverFinishedLeaveNothingBehind) {
  const std::string name = file("a", "old");
  std::optional<WholeFile> aside(name), made(path("new"));
  EXPECT_EQ(count(), 3U);
  aside.reset();
  made.reset();
  EXPECT_EQ(count(), 1U);
  EXPECT_EQ(content(name), "old");
}

TEST_F(TextFiles, AreReplacedBehindALinkThatStays) {
  file("a", "old");
  fs::create_symlink("a", path("link"));
  WholeFile written(path("link"));
  written.stream() << "new";
  written.finish();
  EXPECT_EQ(content(path("a")), "new");
  EXPECT_TRUE(fs::is_symlink(path("link")));
}

TEST_F(TextFiles, AreReplacedWhateverTheLengthOfTheirName) {
  for (const std::size_t size : {248U, 249U, 255U}) {
    const std::string name = file(std::string(size, 'n'), "old");
    WholeFile written(name);
    written.stream() << "new";
    EXPECT_EQ(content(name), "old");
    written.finish();
    EXPECT_EQ(content(name), "new");
    fs::remove(name);
    EXPECT_EQ(count(), 0U);
  }
}

TEST_F(TextFiles, AreNotMadeWhereALinkLeadsNowhere) {
  fs::create_symlink("none", path("link"));
  EXPECT_EQ(
      refusal([] { WholeFile written(path("link")); }),
      path("link") +
          " cannot be written: it is a link to a file that is not there; make that file, or remove the link");
  EXPECT_FALSE(fs::exists(path("none")));
}

TEST_F(TextFiles, ThatCannotBeMadeAreNamedWithTheReason) {
  EXPECT_EQ(refusal([] { WholeFile written(path("none/a")); }),
            path("none/a") + " cannot be written: No such file or directory");
  EXPECT_EQ(refusal([] { WholeFile written(kFolder); }),
            kFolder + std::string(" cannot be written: Is a directory"));
}

TEST_F(TextFiles, ThatAreLostAreToldAtTheEnd) {
  WholeFile full("/dev/full");
  full.stream() << "a";
  EXPECT_EQ(refusal([&] { full.finish(); }), "/dev/full cannot be written: No space left on device");
  EXPECT_TRUE(fs::exists("/dev/full"));
}

TEST_F(TextFiles, ThatAreLostMidwayAreToldWithTheFirstReason) {
  WholeFile full("/dev/full");
  full.stream() << std::string(100000, 'a');
  EXPECT_FALSE(full.stream().good());
  EXPECT_EQ(refusal([&] { full.finish(); }), "/dev/full cannot be written: No space left on device");
}

TEST_F(TextFiles, KeepEveryByteAcrossTheirBuffers) {
  std::string bytes;
  for (int i = 0; bytes.size() < 50000; ++i) bytes += std::to_string(i) + static_cast<char>(i);
  WholeFile written(path("new"));
  for (const char c : bytes) written.stream().put(c);
  written.finish();
  EXPECT_EQ(content(path("new")), bytes);
}

TEST_F(TextFiles, HoldNumbersAsTheyAreWhateverTheLocale) {
  struct Grouped : std::numpunct<char> {
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale(), new Grouped));
  WholeFile written(path("new"));
  written.stream() << 1234567;
  written.finish();
  std::locale::global(before);
  EXPECT_EQ(content(path("new")), "1234567");
}

}  // namespace
