// The first buffer of the audio path, with each thing that can fail in it failing in turn.

#include <sys/wait.h>

#include <algorithm>
#include <iostream>

#include "torture.h"

namespace {

using namespace torture;

/// The audio path keeps its counter and its object for the life of the process: each try has one of its own.
/// This suite comes first, while this process has delivered nothing.
class TorturedAudio : public testing::Test {
 protected:
  enum Verdict { kAsPromised, kWrong, kNothingFailed };

  /// Delivers one buffer with a failure, then one without; in a child.
  static Verdict deliver(bool assistantReady, std::size_t failing, bool lasting) {
    Firmware firmware;
    vorn_testing::FakeAssistant assistant(firmware.recorder);
    if (!assistantReady) assistant.remove(vorn_testing::FakeAssistant::kAudioIn);
    FileLogger::CreateInstance(true);
    VornDeviceAbstractionLayer::VornAudioIn adapter(firmware.host);
    firmware.recorder->onCall([](const vorn_testing::Call&) {
      if (interposed::point(interposed::kCall)) throw Refused{kNumber};
    });
    std::vector<short> samples(480);
    auto send = [&] { adapter.sendAudioData(samples); };
    const End end = run(send, failing, lasting);
    if (interposed::failed().empty()) return kNothingFailed;
    bool right = end == expected() && interposed::held() == 0 && interposed::othersGetThem();

    // The number in the next line tells whether the first buffer was counted.
    const std::string number = end == End::kReturned ? "2" : "1";
    send();
    const std::string last = assistantReady ? "calling xApp API count=" + number : "dalInstance is NULL";
    const std::string search = "calling AudioInHelper getInstance " + number;
    const std::vector<std::string> lines = trace_file::lines();
    const auto endsWith = [](const std::string& line, const std::string& tail) {
      return line.size() > tail.size() && line.compare(line.size() - tail.size(), tail.size(), tail) == 0;
    };
    right = right && !lines.empty() && endsWith(lines.back(), last);
    // A search that could not be traced has not been made: the next call makes it.
    if (assistantReady && failing <= 3)
      right = right && std::any_of(lines.begin(), lines.end(),
                                   [&](const std::string& line) { return endsWith(line, search); });
    if (!assistantReady) right = right && lines.size() >= 2 && endsWith(lines[lines.size() - 2], search);
    return right ? kAsPromised : kWrong;
  }

  static Verdict inChild(bool assistantReady, std::size_t failing, bool lasting) {
    unlink(kPath);
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) _exit(deliver(assistantReady, failing, lasting));
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? static_cast<Verdict>(WEXITSTATUS(status)) : kWrong;
  }
};

TEST_F(TorturedAudio, CountsABufferExactlyWhenTheCallReturned) {
  for (const bool assistantReady : {true, false}) {
    for (const bool lasting : {false, true}) {
      for (std::size_t failing = 1;; ++failing) {
        const Verdict verdict = inChild(assistantReady, failing, lasting);
        if (verdict == kNothingFailed) {
          EXPECT_GT(failing, 10U);
          break;
        }
        EXPECT_EQ(verdict, kAsPromised)
            << "assistant " << assistantReady << ", point " << failing << ", from there on " << lasting;
        ++g_tried[interposed::kCall];
      }
    }
  }
  unlink(kPath);
}

}  // namespace
