// The lines of recordings: each field read and refused, the head, files that are replaced.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vorn_testing/RecordingFile.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace {

using namespace vorn_testing;
using Calls = std::vector<RecordedCall>;

class Lines : public testing::Test {
 protected:
  Lines() {
    std::filesystem::remove_all(kFolder);
    std::filesystem::create_directories(kFolder);
  }

  Calls read(const std::string& lines) {
    std::ofstream(m_path, std::ios::binary) << lines;
    return readRecording(m_path);
  }

  std::string problem(const std::string& lines) {
    try {
      read(lines);
      return "it was read";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  static constexpr char kFolder[] = "/tmp/kit-recorded";
  const std::string m_path = std::string(kFolder) + "/one";
  const std::string m_head = "{\"recording\":\"vorn-speaker\",\"version\":2}\n";
};

const std::pair<const char*, const char*> kFields[] = {
    {"call", "2"},
    {"time", "3"},
    {"duration", "4"},
    {"thread", "\"t\""},
    {"direction", "\"up\""},
    {"adapter", "\"A\""},
    {"operation", "\"o\""},
    {"interface", "\"I\""},
    {"slot", "5"},
    {"inside", "1"},
    {"arguments", "[\"a\",\"b\"]"},
    {"result", "\"r\""},
    {"written", "[\"w=1\"]"},
    {"exception", "null"},
};

/// A line with all fields, one of them left out or with another value.
std::string lineOf(const std::string& without = "", const std::string& value = "") {
  std::string line;
  for (const auto& [name, usual] : kFields) {
    const bool changed = name == without;
    if (changed && value.empty()) continue;
    line += (line.empty() ? "{\"" : ",\"") + std::string(name) + "\":" + (changed ? value : usual);
  }
  return line + "}\n";
}

TEST_F(Lines, AreReadFieldByField) {
  const RecordedCall call = read(m_head + lineOf()).at(0);
  EXPECT_EQ(call.text() + " " + call.direction + " " + call.interfaceName + " " + call.thread,
            "A.o a b = r w=1 up I t");
  EXPECT_EQ((std::vector<long long>{static_cast<long long>(call.number), call.began, call.took, call.slot,
                                    call.inside, call.threadNumber, static_cast<long long>(call.line)}),
            (std::vector<long long>{2, 3, 4, 5, 1, 0, 2}));
  EXPECT_FALSE(call.threw);
  const RecordedCall threw = read(m_head + lineOf("exception", "\"\"")).at(0);
  EXPECT_TRUE(threw.threw && threw.exception.empty());
}

TEST_F(Lines, WithoutAFieldAreRefused) {
  for (const auto& [name, usual] : kFields) {
    if (name == std::string("call")) continue;  // it is another kind of line
    EXPECT_EQ(problem(m_head + lineOf(name)), m_path + ":2: expected the field " + name);
  }
  EXPECT_TRUE(read(m_head + lineOf("call")).empty());
}

TEST_F(Lines, WithAnotherKindOfValueAreRefused) {
  for (const auto& [name, usual] : kFields) {
    const char* const expected = *usual == '"' || *usual == 'n' ? "text"
                                 : *usual == '['                ? "list of texts"
                                                                : "whole number";
    for (const char* const other : {"{}", "true", "[1]", "-1", "1.5", "\"7\"", ""}) {
      const bool fits = (*usual == '"' || *usual == 'n') && *other == '"';
      const std::string said = problem(m_head + lineOf(name, *other ? other : "\"7"));
      if (fits) {
        EXPECT_EQ(said, "it was read") << name;
      } else if (*other) {
        const std::string kind = std::string(other) == "[1]" && *usual == '[' ? "text" : expected;
        EXPECT_EQ(said, m_path + ":2: the field " + name + ": expected a " + kind) << other;
      } else {
        EXPECT_EQ(said, m_path + ":2: no JSON");
      }
    }
  }
}

TEST_F(Lines, HoldNoNumberThatIsTooLarge) {
  for (const char* const name : {"slot", "inside", "time", "duration", "call"}) {
    EXPECT_EQ(problem(m_head + lineOf(name, "18446744073709551616")),
              m_path + ":2: the field " + name + ": the number 18446744073709551616 is too large");
  }
  EXPECT_EQ(read(m_head + lineOf("slot", "2147483647")).at(0).slot, 2147483647);
  EXPECT_NE(problem(m_head + lineOf("slot", "2147483648")), "it was read");
}

TEST_F(Lines, BeginWithAHeadOfAKnownVersion) {
  const std::string wrong = m_path + ":1: expected a recording of version 1 to 2";
  for (const std::string version : {"1", "2"})
    EXPECT_TRUE(read("{\"recording\":\"vorn-speaker\",\"version\":" + version + "}\n").empty());
  for (const std::string head :
       {"{\"recording\":\"vorn-speaker\",\"version\":3}", "{\"recording\":\"vorn-speaker\",\"version\":0}",
        "{\"recording\":\"other\",\"version\":2}", "{\"recording\":\"vorn-speaker\"}", "{\"version\":2}",
        "{}", "1"})
    EXPECT_EQ(problem(head + "\n"), wrong) << head;
  EXPECT_EQ(problem(""), m_path + ": expected a recording, found an empty file");
}

TEST_F(Lines, StandInTheOrderInWhichTheirCallsBegan) {
  const Calls calls = read(m_head + lineOf("call", "3") + lineOf("call", "1") + lineOf("call", "2"));
  ASSERT_EQ(calls.size(), 3U);
  EXPECT_TRUE(calls[0].line == 3 && calls[1].line == 4 && calls[2].line == 2);
  const Calls same = read(m_head + lineOf("call", "1") + lineOf("call", "1"));
  EXPECT_TRUE(same.at(0).line == 2 && same.at(1).line == 3);
}

TEST_F(Lines, ToKeepAreOrderedByThreads) {
  Calls calls(3);
  const char* const names[] = {"a", "b", "c"};
  for (std::size_t i = 0; i < 3; ++i) {
    calls[i].operation = names[i];
    calls[i].thread = i == 1 ? "x" : "main";
    calls[i].threadNumber = i == 1 ? 9 : 5;
    calls[i].began = calls[i].took = 77;
  }
  writeGoldenRecording(m_path, calls);
  std::string kept;
  for (const RecordedCall& call : readRecording(m_path))
    kept += call.operation + std::to_string(call.number) + std::to_string(call.threadNumber) + call.thread +
            std::to_string(call.began + call.took) + " ";
  EXPECT_EQ(kept, "a110 c210 b320 ");
}

TEST_F(Lines, ToKeepAreForEverybodyThatMayReadTheFolder) {
  const mode_t before = umask(022);
  writeGoldenRecording(m_path, {});
  umask(before);
  EXPECT_EQ(std::filesystem::status(m_path).permissions(), std::filesystem::perms(0644));
}

TEST_F(Lines, TakeNoOtherFilesPlace) {
  const auto refusal = [&](const std::string& content) {
    std::ofstream(m_path, std::ios::binary) << content;
    try {
      writeGoldenRecording(m_path, {});
      return std::string("written");
    } catch (const std::runtime_error& error) {
      return std::string(error.what());
    }
  };
  const std::string begins = "{\"recording\":\"vorn-speaker\",\"version\":";
  const std::string wrong = m_path + ": is there already and is no recording; choose another name";
  EXPECT_EQ(refusal(""), "written");
  EXPECT_EQ(refusal(begins), "written");
  EXPECT_EQ(refusal(begins + "9 and much more than what takes its place, which is gone then"), "written");
  EXPECT_EQ(std::filesystem::file_size(m_path), 65U);
  EXPECT_EQ(refusal(begins.substr(0, begins.size() - 1)), wrong);
  EXPECT_EQ(refusal("x" + begins), wrong);
  EXPECT_EQ(std::filesystem::file_size(m_path), begins.size() + 1);
  EXPECT_THROW(writeGoldenRecording(kFolder, {}), std::runtime_error);
  EXPECT_THROW(writeGoldenRecording("/dev/full", {}), std::runtime_error);
}

TEST_F(Lines, LeaveNoFileOpen) {
  const auto next = [] {
    const int descriptor = dup(STDIN_FILENO);
    close(descriptor);
    return descriptor;
  };
  const int before = next();
  {
    RecordingFile file(m_path, std::make_shared<Recorder>());
    EXPECT_NE(next(), before);
    file.close();
    EXPECT_EQ(next(), before);
  }
  int others = -1;
  {
    RecordingFile file(m_path, std::make_shared<Recorder>());
    file.close();
    others = dup(STDIN_FILENO);  // It has the number that the recording had.
    file.close();
  }
  EXPECT_EQ(close(others), 0);
  { const RecordingFile file(m_path, std::make_shared<Recorder>()); }
  writeGoldenRecording(m_path, {});
  readRecording(m_path);
  std::ofstream(m_path) << "mine";
  EXPECT_THROW(writeGoldenRecording(m_path, {}), std::runtime_error);
  EXPECT_EQ(next(), before);
}

TEST_F(Lines, TellWhoWroteThemAndWhen) {
  { RecordingFile file(m_path, std::make_shared<Recorder>(), "a \"b\""); }
  std::ifstream in(m_path);
  std::string head;
  std::getline(in, head);
  EXPECT_EQ(head.find("\"started\":\"19"), std::string::npos) << head;
  for (char& c : head) c = c >= '0' && c <= '9' ? '#' : c;
  EXPECT_EQ(
      head,
      R"({"recording":"vorn-speaker","version":#,"program":"a \"b\"","started":"####-##-##T##:##:##.######Z",)"
      R"("writer":"vorn_testing"})");
}

}  // namespace
