// The audio path: its lines, its counter and the assistant-side object that it keeps. Counter and object live
// as long as the process, so each test has a process of its own.

#include <VornAudioIn.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/NullHost.h>

#include <stdexcept>

#include "support/trace_file.h"

namespace {

using namespace VornDeviceAbstractionLayer;
using trace_file::lines;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;
using Lines = std::vector<std::string>;

const std::string kPath =
    "void VornDeviceAbstractionLayer::VornAudioIn::sendAudioData(std::vector<short int>&)";

std::string search(int count) {
  return kPath + " calling AudioInHelper getInstance " + std::to_string(count);
}
std::string missing() { return kPath + " dalInstance is NULL"; }
std::string buffer(int count) { return kPath + " calling xApp API count=" + std::to_string(count); }

class AudioStream : public trace_file::Traced {
 protected:
  void SetUp() override {
    Traced::SetUp();
    audio = std::make_shared<VornAudioIn>(host);
    forget();
  }

  void send(int buffers = 1) {
    for (int i = 0; i < buffers; ++i) audio->sendAudioData(samples);
  }

  vorn_testing::NullHost host;
  std::shared_ptr<VornAudioIn> audio;  // Made without CreateInstance(): the path needs no instance.
  std::vector<short> samples = std::vector<short>(160, 1);
  FakeAssistant assistant;
};

TEST_F(AudioStream, SearchesAndNumbersTheFirstBufferOne) {
  send();
  EXPECT_EQ(lines(), (Lines{search(1), buffer(1)}));
  EXPECT_EQ(assistant.recorder->signatures(), Lines{"sendAudioData([160 samples])"});
}

TEST_F(AudioStream, WritesTheFirstFiveNumbersAndFallsSilentAtSix) {
  send(6);
  EXPECT_EQ(lines(), (Lines{search(1), buffer(1), buffer(2), buffer(3), buffer(4), buffer(5)}));
  EXPECT_EQ(assistant.recorder->count("sendAudioData"), 6U);
}

TEST_F(AudioStream, WritesEveryTenThousandthNumber) {
  send(9999);
  forget();
  send();
  EXPECT_EQ(lines(), Lines{buffer(10000)});
  send(9999);
  EXPECT_EQ(lines(), Lines{buffer(10000)});
  send();
  EXPECT_EQ(lines(), (Lines{buffer(10000), buffer(20000)}));
}

TEST_F(AudioStream, DropsAndNumbersBuffersWhileTheAssistantIsNotReady) {
  assistant.remove(FakeAssistant::kAudioIn);
  send(3);
  EXPECT_EQ(lines(), (Lines{search(1), missing(), search(2), missing(), search(3), missing()}));
  assistant.create(FakeAssistant::kAudioIn);
  forget();
  send(3);
  EXPECT_EQ(lines(), (Lines{search(4), buffer(4), buffer(5)}));
  EXPECT_EQ(assistant.recorder->count("sendAudioData"), 3U);
}

TEST_F(AudioStream, SearchesOnPastTheNumbersThatItWrites) {
  assistant.remove(FakeAssistant::kAudioIn);
  send(6);
  assistant.create(FakeAssistant::kAudioIn);
  forget();
  send(2);
  EXPECT_EQ(lines(), Lines{search(7)});
}

TEST_F(AudioStream, KeepsItsObjectWhenTheAssistantMakesANewOne) {
  send();
  assistant.create(FakeAssistant::kAudioIn);
  send();
  const std::vector<Call> calls = assistant.recorder->calls();
  EXPECT_EQ(calls.at(1).object, calls.at(0).object);
  EXPECT_EQ(FakeAssistant::references(FakeAssistant::kAudioIn), 0);
}

TEST_F(AudioStream, KeepsItsObjectWhenTheAssistantGoesAway) {
  send();
  assistant.remove(FakeAssistant::kAudioIn);
  forget();
  send();
  EXPECT_EQ(lines(), Lines{buffer(2)});
  EXPECT_EQ(assistant.recorder->count("sendAudioData"), 2U);
}

TEST_F(AudioStream, KeepsItsObjectAndNumberAcrossShutdown) {
  VornAudioIn::CreateInstance(host)->sendAudioData(samples);
  const auto kept = VornAudioIn::getInstance();
  VornAudioIn::Shutdown();
  forget();
  kept->sendAudioData(samples);
  EXPECT_EQ(lines(), Lines{buffer(2)});
}

TEST_F(AudioStream, CountsTheBuffersOfAllObjectsTogether) {
  VornAudioIn other(host);
  send();
  forget();
  other.sendAudioData(samples);
  EXPECT_EQ(lines(), Lines{buffer(2)});
}

TEST_F(AudioStream, HoldsOneReferenceBetweenAndDuringCalls) {
  std::vector<long> during;
  assistant.recorder->onCall(
      [&](const Call&) { during.push_back(FakeAssistant::references(FakeAssistant::kAudioIn)); });
  EXPECT_EQ(FakeAssistant::references(FakeAssistant::kAudioIn), 0);
  send(3);
  EXPECT_EQ(during, (std::vector<long>{1, 1, 1}));
  EXPECT_EQ(FakeAssistant::references(FakeAssistant::kAudioIn), 1);
}

TEST_F(AudioStream, HandsOnTheCallersOwnVector) {
  send();
  const Call call = assistant.recorder->calls().at(0);
  EXPECT_EQ(call.addresses.at(0), &samples);
  EXPECT_EQ(samples, std::vector<short>(160, 1));
}

TEST_F(AudioStream, HandsOnAnEmptyVector) {
  samples.clear();
  send();
  EXPECT_EQ(assistant.recorder->signatures(), Lines{"sendAudioData([0 samples])"});
}

TEST_F(AudioStream, DoesNotNumberABufferThatTheAssistantRefusesByThrowing) {
  assistant.recorder->onCall([](const Call&) { throw std::runtime_error("refused"); });
  EXPECT_THROW(send(), std::runtime_error);
  EXPECT_THROW(send(), std::runtime_error);
  assistant.recorder->onCall(nullptr);
  send();
  EXPECT_EQ(lines(), (Lines{search(1), buffer(1), buffer(1), buffer(1)}));
}

TEST_F(AudioStream, WritesNothingWithTheTraceSwitchedOff) {
  FileLogger::Shutdown();
  send(5);
  EXPECT_FALSE(std::filesystem::exists(trace_file::kPath));
  EXPECT_EQ(assistant.recorder->count("sendAudioData"), 5U);
}

}  // namespace
