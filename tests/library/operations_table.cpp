// Each operation of the table, with both sides present and with either missing.

#include <gtest/gtest.h>

#include <thread>

#include "support/operations_param.h"

namespace {

using namespace operations;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;

class Operations : public OperationTest {};

TEST_P(Operations, ReachTheOtherSideOnceAndReturnItsAnswer) {
  const auto object = row.adapter->create(host.recording);
  const Outcome outcome = row.run(object.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, true, true));
  EXPECT_EQ(outcome.result, row.answer);
}

TEST_P(Operations, LeaveReferencesAsTheOtherSideWroteThem) {
  const Outcome outcome = row.run(row.adapter->create(host.recording).get(), Sample::kUsual);
  EXPECT_EQ(references(outcome, outcome.afterwards),
            row.written.empty() ? references(outcome, outcome.given) : row.written);
}

TEST_P(Operations, StayOnTheCallersThread) {
  row.call(row.adapter->create(host.recording).get());
  for (const Call& call : recorder->calls()) EXPECT_EQ(call.thread, std::this_thread::get_id());
}

TEST_P(Operations, ReturnAnAnswerThatLooksLikeADefaultToo) {
  vorn_testing::NullHost plain;
  const std::string answer = row.call(row.adapter->create(plain).get());
  if (row.direction == Direction::kDown) {
    EXPECT_EQ(answer, row.fallback);
  }
}

TEST_P(Operations, WithoutAnInstanceReachOnlyTheAssistantSide) {
  const auto object = row.adapter->construct(host.recording);
  const Outcome outcome = row.run(object.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, false, true));
  EXPECT_EQ(outcome.result, row.delivered(false, true) ? row.answer : row.fallback);
}

TEST_P(Operations, AfterShutdownReachOnlyTheAssistantSideThroughAKeptPointer) {
  const auto kept = row.adapter->create(host.recording);
  row.adapter->shutdown();
  const Outcome outcome = row.run(kept.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, false, true));
  EXPECT_EQ(outcome.result, row.delivered(false, true) ? row.answer : row.fallback);
}

TEST_P(Operations, OfAKeptObjectCallItsOwnHostOnceThereIsANewOne) {
  Host second;
  const auto kept = row.adapter->create(host.recording);
  row.adapter->shutdown();
  const auto fresh = row.adapter->create(second.recording);
  ASSERT_NE(kept, fresh);
  const Outcome outcome = row.run(kept.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, true, true));
  EXPECT_TRUE(second.recording.recorder->calls().empty());
}

TEST_P(Operations, OfTheNewObjectCallTheNewHost) {
  Host second;
  second.recording.recorder = recorder;
  const auto kept = row.adapter->create(host.recording);
  row.adapter->shutdown();
  const Outcome outcome = row.run(row.adapter->create(second.recording).get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, true, true));
  for (const Call& call : recorder->calls()) EXPECT_NE(call.object, &host.recording);
}

INSTANTIATE_TEST_SUITE_P(Table, Operations, testing::ValuesIn(rows()), nameOf);

class OperationsWithoutAssistant : public OperationTest {
 protected:
  OperationsWithoutAssistant() {
    for (int area = 0; area < FakeAssistant::kAreas; ++area)
      assistant.remove(static_cast<FakeAssistant::Area>(area));
  }
};

TEST_P(OperationsWithoutAssistant, ReachOnlyTheHost) {
  const auto object = row.adapter->create(host.recording);
  const Outcome outcome = row.run(object.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, true, false));
  EXPECT_EQ(outcome.result, row.delivered(true, false) ? row.answer : row.fallback);
}

TEST_P(OperationsWithoutAssistant, AndWithoutAnInstanceReachNobody) {
  const auto object = row.adapter->construct(host.recording);
  const Outcome outcome = row.run(object.get(), Sample::kUsual);
  EXPECT_EQ(calls(), std::vector<std::string>());
  EXPECT_EQ(outcome.result, row.fallback);
  EXPECT_EQ(references(outcome, outcome.afterwards), references(outcome, outcome.given));
}

INSTANTIATE_TEST_SUITE_P(Table, OperationsWithoutAssistant, testing::ValuesIn(withoutAudio()), nameOf);

}  // namespace
