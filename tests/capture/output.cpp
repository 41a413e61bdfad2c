// The file that vorn-capture writes: whole lines in whole pages, kept short, in no other file's place.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "../../tools/capture/library/files/Output.h"

namespace {

using namespace vorn_capture;
namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

constexpr char kHeader[] = "{\"recording\":\"vorn-speaker\",\"run\":\"7\"}";

class Outputs : public testing::Test {
 protected:
  Outputs() {
    fs::remove_all(kFolder);
    fs::create_directories(kFolder);
  }

  static std::string content(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static Texts lines(const std::string& path) {
    std::istringstream in(content(path));
    Texts all;
    for (std::string line; std::getline(in, line);) all.push_back(line);
    return all;
  }
  static std::string withNumber(const std::string& path, const std::string& more = "") {
    return path + "." + std::to_string(getpid()) + more;
  }
  std::string open(Output& output, const std::string& run = "", bool forked = false,
                   std::uint64_t keep = 0) const {
    return output.open(path, {kHeader, run, forked}, keep);
  }

  static constexpr char kFolder[] = "/tmp/capture-output";
  const std::string path = std::string(kFolder) + "/one";
};

TEST_F(Outputs, BeginWithTheirHeadAndAreTheirOwners) {
  Output output;
  EXPECT_EQ(open(output), "");
  EXPECT_EQ(output.path(), path);
  EXPECT_EQ(content(path), kHeader + std::string("\n"));
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
  output.add("one", 1);
  output.add("two", 1);
  EXPECT_TRUE(output.flush(0));
  output.add("three", 1);
  EXPECT_EQ(lines(path), (Texts{kHeader, "one", "two"}));
  EXPECT_TRUE(output.flush(0));
  EXPECT_TRUE(output.flush(0));
  EXPECT_EQ(content(path), std::string(kHeader) + "\none\ntwo\nthree\n");
  output.add("", 1);
  EXPECT_TRUE(output.flush(0));
  EXPECT_EQ(content(path), std::string(kHeader) + "\none\ntwo\nthree\n\n");
  EXPECT_EQ(output.takeLost(), 0U);
}

TEST_F(Outputs, CrossNoPageWithALine) {
  for (const std::size_t size : {100U, 1000U, 1365U, 2047U, 4094U, 4095U}) {
    Output output;
    ASSERT_EQ(open(output), "") << size;
    for (int i = 0; i < 40; ++i) {
      output.add(std::string(size, static_cast<char>('a' + i % 26)), 1);
      if (i % 7 == 0) {
        EXPECT_TRUE(output.flush(0));
      }
    }
    EXPECT_TRUE(output.flush(0));
    const std::string all = content(path);
    std::size_t begin = 0, found = 0;
    for (std::size_t end = all.find('\n'); end != all.npos; end = all.find('\n', begin)) {
      std::string line = all.substr(begin, end - begin);
      EXPECT_EQ(begin / 4096, end / 4096) << "a line of " << size << " at " << begin;
      line.erase(line.find_last_not_of(' ') + 1);
      if (found > 0) {
        EXPECT_EQ(line, std::string(size, static_cast<char>('a' + (found - 1) % 26)));
      }
      ++found;
      begin = end + 1;
    }
    EXPECT_EQ(found, 41U);
    EXPECT_EQ(begin, all.size());
    output.release();
  }
}

TEST_F(Outputs, FillOnlyWhereALineDoesNotFit) {
  Output output;
  ASSERT_EQ(open(output), "");
  const std::size_t head = sizeof kHeader;
  output.add(std::string(4096 - head - 1, 'a'), 1);  // It ends with the page.
  output.add(std::string(4096, 'b'), 1);             // It fits into none.
  output.add("c", 1);
  EXPECT_TRUE(output.flush(0));
  EXPECT_EQ(content(path),
            kHeader + ("\n" + std::string(4096 - head - 1, 'a')) + "\n" + std::string(4096, 'b') + "\nc\n");
}

TEST_F(Outputs, WriteByThemselvesWhatIsMuch) {
  Output output;
  ASSERT_EQ(open(output), "");
  for (int i = 0; i < 63; ++i) output.add(std::string(1000, 'a'), 1);
  EXPECT_EQ(lines(path).size(), 1U);
  for (int i = 0; i < 5; ++i) output.add(std::string(1000, 'a'), 1);
  EXPECT_GT(lines(path).size(), 60U);
}

TEST_F(Outputs, TakeThePlaceOfARecordingAndOfNothingElse) {
  const auto refusal = [&](const std::string& there) {
    std::ofstream(path, std::ios::binary) << there;
    Output output;
    const std::string wrong = open(output);
    output.release();
    return wrong;
  };
  EXPECT_EQ(refusal(""), "");
  EXPECT_EQ(refusal("{\"recording\":\"vorn-speaker\""), "");
  EXPECT_EQ(refusal("{\"recording\":\"vorn-speaker\",\"version\":1}\nmore\n" + std::string(10000, 'x')), "");
  EXPECT_EQ(content(path), kHeader + std::string("\n"));
  const std::string none = path + ": is there already and is no recording; choose another name";
  EXPECT_EQ(refusal("{\"recording\":\"vorn-speaker"), none);
  EXPECT_EQ(refusal(" {\"recording\":\"vorn-speaker\"}"), none);
  EXPECT_EQ(content(path), " {\"recording\":\"vorn-speaker\"}");
}

TEST_F(Outputs, AreNoLinksPipesOrFilesWithAnotherName) {
  const std::string plain = path + ": is no plain file of yours; choose another name";
  fs::create_symlink("two", path);
  Output output;
  EXPECT_EQ(open(output), path + ": Too many levels of symbolic links");
  fs::remove(path);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(open(output), plain);
  fs::remove(path);
  std::ofstream(std::string(kFolder) + "/two").close();
  fs::create_hard_link(std::string(kFolder) + "/two", path);
  EXPECT_EQ(open(output), plain);
  fs::remove(path);
  fs::create_directory(path);
  EXPECT_EQ(open(output), path + ": Is a directory");
}

TEST_F(Outputs, OfOneRunStandBesideEachOther) {
  std::ofstream(path) << "{\"recording\":\"vorn-speaker\",\"run\":\"7\"}\n\"run\":\"8\"\n";
  Output same, other;
  EXPECT_EQ(open(same, "\"run\":\"7\""), "");
  EXPECT_EQ(same.path(), withNumber(path));
  EXPECT_EQ(open(other, "\"run\":\"8\""), "");
  EXPECT_EQ(other.path(), path);
}

TEST_F(Outputs, ThatAreBeingWrittenAreLeftAlone) {
  Output first, second, third;
  for (Output* const output : {&first, &second, &third}) EXPECT_EQ(open(*output), "");
  EXPECT_EQ(first.path(), path);
  EXPECT_EQ(second.path(), withNumber(path));
  EXPECT_EQ(third.path(), withNumber(path, ".2"));
  first.release();
  Output fourth;
  EXPECT_EQ(open(fourth), "");
  EXPECT_EQ(fourth.path(), path);
}

TEST_F(Outputs, OfAForkedProcessHaveItsNumber) {
  Output output;
  EXPECT_EQ(open(output, "", true), "");
  EXPECT_EQ(output.path(), withNumber(path));
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(Outputs, GiveUpAfterAHundredNames) {
  std::vector<std::unique_ptr<Output>> all;
  std::string wrong;
  for (int i = 0; i < 102 && wrong.empty(); ++i) {
    all.push_back(std::make_unique<Output>());
    wrong = open(*all.back());
  }
  EXPECT_EQ(wrong, path + ": is being written by others");
  EXPECT_EQ(all.size(), 101U);
  EXPECT_EQ(all[99]->path(), withNumber(path, ".99"));
}

TEST_F(Outputs, AreKeptShort) {
  constexpr std::uint64_t kKeep = 200000;
  Output output;
  ASSERT_EQ(open(output, "", false, kKeep), "");
  std::uint64_t calls = 0;
  for (int i = 0; i < 3000; ++i) {
    output.add(std::to_string(++calls) + std::string(200, '.'), 1);
    if (i % 10 != 0) continue;
    ASSERT_TRUE(output.flush(77));
    ASSERT_LE(fs::file_size(path), kKeep) << i;
  }
  ASSERT_TRUE(output.flush(77));
  const Texts all = lines(path);
  EXPECT_EQ(all[0], kHeader);
  const std::uint64_t first = std::stoull(all[2]);
  EXPECT_EQ(all[1], "{\"leftOut\":" + std::to_string(first - 1) + ",\"time\":77}");
  for (std::size_t i = 2; i < all.size(); ++i) ASSERT_EQ(std::stoull(all[i]), first + i - 2);
  EXPECT_EQ(std::stoull(all.back()), calls);
  EXPECT_GT(fs::file_size(path), kKeep / 3);
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
  EXPECT_EQ(std::distance(fs::directory_iterator(kFolder), {}), 1);
}

TEST_F(Outputs, AreNotKeptShortWhereNobodyAsks) {
  Output output;
  ASSERT_EQ(open(output), "");
  for (int i = 0; i < 300; ++i) {
    output.add(std::string(1000, '.'), 1);
    output.flush(0);
  }
  EXPECT_EQ(lines(path).size(), 301U);
}

TEST_F(Outputs, CountWhatCannotBeWrittenAndStayWhole) {
  std::signal(SIGXFSZ, SIG_IGN);
  Output output;
  ASSERT_EQ(open(output), "");
  output.add("one", 1);
  ASSERT_TRUE(output.flush(0));
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit few = {fs::file_size(path) + 3, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &few), 0);
  output.add("two two", 2);
  output.add("three", 3);
  errno = 0;
  EXPECT_FALSE(output.flush(0));
  EXPECT_EQ(errno, EFBIG);
  EXPECT_EQ(output.takeLost(), 5U);
  EXPECT_EQ(output.takeLost(), 0U);
  EXPECT_EQ(lines(path), (Texts{kHeader, "one"}));
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  output.add("four", 1);
  EXPECT_TRUE(output.flush(0));
  EXPECT_EQ(content(path), std::string(kHeader) + "\none\nfour\n");
}

TEST_F(Outputs, GoOnInTheirOwnFileWhenTheProgramClosedIt) {
  Output output;
  ASSERT_EQ(open(output), "");
  for (int file = 3; file < 1024; ++file) close(file);
  const int others = ::open("/tmp/capture-others", O_RDWR | O_CREAT | O_TRUNC, 0600);
  output.add("one", 1);
  EXPECT_TRUE(output.flush(0));
  EXPECT_EQ(lines(path), (Texts{kHeader, "one"}));
  EXPECT_EQ(fs::file_size("/tmp/capture-others"), 0U);
  Output second;
  EXPECT_EQ(open(second), "");
  EXPECT_EQ(second.path(), withNumber(path)) << "it is locked again";
  for (int file = 3; file < 1024; ++file) {
    if (file != others) close(file);
  }
  fs::rename(path, path + ".moved");
  output.add("two", 1);
  EXPECT_FALSE(output.flush(0));
  EXPECT_EQ(output.takeLost(), 1U);
  std::ofstream(path) << "another's";
  output.add("three", 1);
  errno = 0;
  EXPECT_FALSE(output.flush(0));
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(content(path), "another's");
  close(others);
}

TEST_F(Outputs, LeaveTheLowNumbersToTheProgram) {
  const int input = dup(STDIN_FILENO), before = dup(STDIN_FILENO);
  close(before);
  close(STDIN_FILENO);
  {
    Output first;
    EXPECT_EQ(open(first), "");
  }
  EXPECT_EQ(dup2(input, STDIN_FILENO), STDIN_FILENO);
  {
    Output output;
    ASSERT_EQ(open(output), "");
    const int now = dup(STDIN_FILENO);
    EXPECT_EQ(now, before);
    close(now);
    OwnFile own;
    own.hold(::open(path.c_str(), O_RDONLY), path);
    EXPECT_GE(own.descriptor(), 30);
    EXPECT_EQ(fcntl(own.descriptor(), F_GETFD), FD_CLOEXEC);
    const int held = own.descriptor();
    own.release();
    EXPECT_LT(fcntl(held, F_GETFD), 0);
  }
}

}  // namespace
