// Recordings as files: what is replaced, what is left behind, what is read again.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "recordings/Recording.h"
#include "recordings/made.h"

namespace {

using namespace vorn_speaker;
using made::file;
using made::kHeader;
using made::line;

const std::string path = "/tmp/recordings/one";

class Recordings : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::remove_all("/tmp/recordings");
    std::filesystem::create_directories("/tmp/recordings");
  }

  std::string content() {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  std::string problem(const std::string& text) {
    try {
      Recording::read(file(text));
      return "it was read";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  /// A call that was made.
  Crossing setting() {
    const auto recorder = std::make_shared<vorn_testing::Recorder>();
    Crossings crossings(recorder, false);
    crossings.tell(m_ended);
    nameThread("assistant");
    recorder->run(vorn_testing::makeCall("VornDALImplIF", "setSystemSetting", 23, this, std::string("a b"),
                                         std::string("\xff\n")),
                  [] { return true; });
    return m_ended.last;
  }

 private:
  struct Ended : Crossings::Listener {
    void began(const Crossing&) override {}
    void ended(const Crossing& crossing) override { last = crossing; }
    Crossing last{};
  } m_ended;
};

TEST_F(Recordings, GiveBackWhatTheyWereTold) {
  Crossing call = setting();
  call.written = {"value=on"};
  call.threw = true;
  call.exception = "why";
  Recording recording(path);
  recording.ended(call);
  recording.finish();
  const Crossing read = Recording::read(path).calls.at(0).call;
  EXPECT_EQ(read.spelled, call.spelled);
  EXPECT_EQ(
      std::tie(read.number, read.direction, read.adapter, read.operation, read.target, read.slot, read.depth),
      std::tie(call.number, call.direction, call.adapter, call.operation, call.target, call.slot,
               call.depth));
  EXPECT_EQ(
      std::tie(read.result, read.written, read.threw, read.exception, read.thread, read.began, read.took),
      std::tie(call.result, call.written, call.threw, call.exception, call.thread, call.began, call.took));
}

TEST_F(Recordings, AreForTheirOwnerOnly) {
  Recording(path).finish();
  struct stat there {};
  stat(path.c_str(), &there);
  EXPECT_EQ(there.st_mode & 0777U, 0600U);
}

TEST_F(Recordings, TakeThePlaceOfAnEarlierOneOnlyWhenWhole) {
  file(kHeader + line());
  {
    Recording recording(path);
    recording.ended(setting());
    EXPECT_EQ(content(), kHeader + line());
    recording.finish();
  }
  EXPECT_EQ(Recording::read(path).calls.at(0).call.operation, "setSystemSetting");
  const auto folder = std::filesystem::directory_iterator("/tmp/recordings");
  EXPECT_EQ(std::distance(begin(folder), end(folder)), 1);
}

TEST_F(Recordings, LeaveNothingBehindWhenTheyAreGivenUp) {
  file(kHeader + line());
  { Recording recording(path); }
  const auto folder = std::filesystem::directory_iterator("/tmp/recordings");
  EXPECT_EQ(std::distance(begin(folder), end(folder)), 1);
  EXPECT_EQ(content(), kHeader + line());
}

TEST_F(Recordings, AreNotLeftWhereNothingWasAndNothingWasRecorded) {
  { Recording recording(path); }
  EXPECT_FALSE(std::filesystem::exists(path));
  Recording(path).finish();
  EXPECT_EQ(Recording::read(path).version, 2);
}

TEST_F(Recordings, ReplaceNoOtherFile) {
  std::string deep = "{\"a\":" + std::string(30000, '[') + std::string(30000, ']');
  for (char key = 'b'; key <= 'z'; ++key) deep += std::string(",\"") + key + "\":1";
  for (const std::string& text : {std::string("section mine\n"), std::string("x"), deep + "}\n",
                                  std::string("{\"recording\":\"vorn-speaker\",\"version\":3}\n")}) {
    file(text);
    EXPECT_THROW(Recording{path}, std::runtime_error) << text;
    EXPECT_EQ(content(), text);
  }
  EXPECT_THROW(Recording{"/tmp/recordings"}, std::runtime_error);
  EXPECT_NO_THROW(Recording{file("")});
}

TEST_F(Recordings, FollowALinkToWhatTheyReplace) {
  file(kHeader + line());
  std::filesystem::create_symlink(path, "/tmp/recordings/link");
  Recording("/tmp/recordings/link").finish();
  EXPECT_TRUE(std::filesystem::is_symlink("/tmp/recordings/link"));
  EXPECT_TRUE(Recording::read(path).calls.empty());
}

TEST_F(Recordings, SayThatADiskIsFull) {
  Recording recording("/dev/full");
  try {
    recording.finish();
    FAIL() << "nothing was said";
  } catch (const NotWritten& error) {
    EXPECT_STREQ(error.what(), "/dev/full cannot be written: No space left on device");
  }
}

TEST_F(Recordings, SayWhyTheyCannotBeRead) {
  EXPECT_EQ(problem(""), path + ": expected a recording, found an empty file");
  EXPECT_EQ(problem("section a\n"), path + ":1: expected a recording of version 1 to 2");
  EXPECT_EQ(problem("{\"recording\":\"vorn-speaker\",\"version\":1.0}\n"),
            path + ":1: expected a recording of version 1 to 2");
  EXPECT_EQ(problem(kHeader + std::string("{\"call\":\n") + line()),
            path + ":2: expected a line of a recording");
  EXPECT_EQ(problem(kHeader + std::string("7\n")),
            path + ":2: expected a line of a recording; expected a call, found 7");
  EXPECT_EQ(problem(kHeader + line() + line()), path + ":3: the call 1 stands twice");
  std::filesystem::remove(path);
  EXPECT_THROW(
      try { Recording::read(path); } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), path + ": cannot be read: No such file or directory");
        throw;
      },
      std::runtime_error);
  EXPECT_THROW(
      try { Recording::read("/tmp/recordings"); } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "/tmp/recordings: cannot be read: Is a directory");
        throw;
      },
      std::runtime_error);
}

TEST_F(Recordings, AreReadUpToALineThatIsCut) {
  for (const char* cut : {"{\"call\":2,\"ti", "{", "{\"call\":2,\"ti\n"}) {
    const Recorded read = Recording::read(file(kHeader + line() + cut));
    EXPECT_EQ(read.calls.size(), 1U);
    EXPECT_EQ(read.leftOut, std::vector<std::string>{path + ":3: left out, the line is cut"});
  }
  EXPECT_TRUE(Recording::read(file(kHeader + line())).leftOut.empty());
}

TEST_F(Recordings, AreReadInTheOrderInWhichCallsBegan) {
  const Recorded read = Recording::read(file(kHeader + line({{"call", "9"}}) + line({{"call", "4"}})));
  EXPECT_EQ(read.calls[0].call.number, 4U);
  EXPECT_EQ(read.calls[0].line, 3U);
}

TEST_F(Recordings, AreRefusedHoweverDeepAndWideTheyAre) {
  const std::string deep = std::string(200000, '[') + std::string(200000, ']');
  for (const std::string& text : {made::line({{"result", deep}}), deep + "\n", "{\"note\":" + deep + "\n"})
    EXPECT_EQ(problem(kHeader + text), path + ":2: expected a line of a recording; its lists are too deep");
  std::string wide = "{\"call\":1";
  for (int i = 0; i < 1000; ++i) wide += ",\"field" + std::to_string(i) + "\":1";
  EXPECT_EQ(problem(kHeader + wide + "}\n"),
            path + ":2: expected a line of a recording; it has too many fields");
  EXPECT_EQ(problem(kHeader + line({{"result", R"("\"[[[[[[[[[[[[[[[[[[")"}})), "it was read");
  std::string beside;
  for (int i = 0; i < 20; ++i) beside += "[],{},";
  EXPECT_EQ(problem(kHeader + line({{"more", "[" + beside + "1]"}})), "it was read");
}

}  // namespace
