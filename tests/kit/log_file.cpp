// The file that vorn-log reads: once, or followed by its name.

#include "log/TraceFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>

namespace {

using namespace vorn_log;
using Texts = std::vector<std::string>;

class Files : public testing::Test {
 protected:
  Files() {
    for (const std::string& file : {path, other}) std::filesystem::remove_all(file);
  }

  TraceFile& follow() {
    return m_file.emplace(path, true, [this](const std::string& news) { m_news.push_back(news); });
  }
  TraceFile& once() {
    return m_file.emplace(path, false, [this](const std::string& news) { m_news.push_back(news); });
  }
  static void append(const std::string& bytes) { std::ofstream(path, std::ios::app) << bytes; }

  /// What comes next: the bytes, or "-" at the end for now, "." at the end.
  std::string next() {
    std::string bytes = "old";
    switch (m_file->read(bytes)) {
      case TraceFile::Event::kBytes:
        return bytes;
      case TraceFile::Event::kEndForNow:
        return "-";
      case TraceFile::Event::kEnd:
        return ".";
    }
    return "";
  }
  std::string next(int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += next();
    return all;
  }
  std::string problem() {
    try {
      return next();
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }
  Texts news() { return std::exchange(m_news, {}); }

  static inline const std::string path = "/tmp/kit-log", other = "/tmp/kit-log.other";
  std::optional<TraceFile> m_file;
  Texts m_news;
};

TEST_F(Files, AreReadOnceToTheirEnd) {
  append("one");
  once();
  EXPECT_EQ(next(3), "one..");
  EXPECT_EQ(news(), Texts{});
}

TEST_F(Files, AreReadInPartsWhenTheyAreLong) {
  append(std::string((1 << 16) + 1, 'a'));
  once();
  EXPECT_EQ(next().size(), std::size_t{1} << 16);
  EXPECT_EQ(next(2), "a.");
}

TEST_F(Files, AreWaitedForOnce) {
  follow();
  EXPECT_EQ(next(2), "--");
  EXPECT_EQ(news(), Texts{path + " is not there; waiting for it"});
  append("one");
  EXPECT_EQ(next(2), "one-");
  EXPECT_EQ(news(), Texts{path + " is there now"});
  append("two");
  EXPECT_EQ(next(2), "two-");
  EXPECT_EQ(news(), Texts{});
}

TEST_F(Files, ThatAreReplacedAreReadToTheirEndFirst) {
  append("one");
  follow();
  EXPECT_EQ(next(), "one");
  append("two");
  std::filesystem::rename(path, other);
  append("three");
  EXPECT_EQ(next(4), "two.three-");
  EXPECT_EQ(news(), Texts{path + " was replaced; reading the new file"});
}

TEST_F(Files, ThatAreRemovedAreWaitedForAndToldOfOnce) {
  append("one");
  follow();
  EXPECT_EQ(next(2), "one-");
  std::filesystem::rename(path, other);
  EXPECT_EQ(next(2), "--");
  EXPECT_EQ(news(), Texts{path + " was removed or renamed; waiting for a new one"});
  std::ofstream(other, std::ios::app) << "late";
  EXPECT_EQ(next(2), "late-");
  append("two");
  EXPECT_EQ(next(3), ".two-");
  EXPECT_EQ(news(), Texts{path + " is there now"});
}

TEST_F(Files, ThatAreCutAreReadFromTheirBeginning) {
  append("one two");
  follow();
  EXPECT_EQ(next(2), "one two-");
  std::ofstream(path, std::ios::trunc) << "new";
  EXPECT_EQ(next(3), ".new-");
  EXPECT_EQ(news(), Texts{path + " was cut short; reading it from the beginning"});
}

TEST_F(Files, ThatCannotBeReadAreToldOfWithTheRemedy) {
  once();
  EXPECT_EQ(problem(),
            path +
                " cannot be read: No such file or directory; is the trace on "
                "(FileLogger::CreateInstance(true)), or is it another file? --follow waits for one");
  std::filesystem::create_directory(path);
  once();
  EXPECT_EQ(problem(), path + " cannot be read: it is a folder; name a file");
  follow();
  EXPECT_EQ(problem(), path + " cannot be read: it is a folder; name a file");
}

TEST_F(Files, MayBePipes) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  once();
  EXPECT_EQ(problem(), path + " cannot be read: it is a pipe that nobody writes to; --follow waits for one");
  follow();
  EXPECT_EQ(next(), "-");
  const int writer = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
  EXPECT_EQ(next(), "-");
  ASSERT_EQ(write(writer, "one", 3), 3);
  EXPECT_EQ(next(2), "one-");
  close(writer);
  EXPECT_EQ(next(), "-");
  EXPECT_EQ(news(), Texts{});
}

TEST_F(Files, ThatArePipesEndWithTheirWriter) {
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const int kept = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  ASSERT_EQ(write(kept, "one", 3), 3);
  once();
  EXPECT_EQ(next(2), "one-");
  close(kept);
  EXPECT_EQ(next(), ".");
}

TEST_F(Files, AreClosedAtTheEnd) {
  const int before = dup(STDIN_FILENO);
  close(before);
  append("one");
  follow();
  EXPECT_EQ(next(), "one");
  m_file.reset();
  const int after = dup(STDIN_FILENO);
  close(after);
  EXPECT_EQ(after, before);
}

}  // namespace
