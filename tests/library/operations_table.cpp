// Each operation of the table, with both sides present and with either missing.

#include <gtest/gtest.h>

#include <thread>

#include "support/operation_test.h"

namespace {

using namespace operations;
using vorn_testing::Call;
using vorn_testing::FakeAssistant;

class Operations : public OperationTest {};

TEST_P(Operations, ReachTheOtherSideOnceAndReturnItsAnswer) {
  const auto object = row.adapter->create(firmware.host);
  const Outcome outcome = row.run(object.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, true, true));
  EXPECT_EQ(outcome.result, row.answer);
}

TEST_P(Operations, LeaveReferencesAsTheOtherSideWroteThem) {
  const Outcome outcome = row.run(row.adapter->create(firmware.host).get(), Sample::kUsual);
  EXPECT_EQ(outcome.references(outcome.afterwards),
            row.written.empty() ? outcome.references(outcome.given) : row.written);
}

TEST_P(Operations, StayOnTheCallersThread) {
  row.call(row.adapter->create(firmware.host).get());
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
  const auto object = row.adapter->construct(firmware.host);
  const Outcome outcome = row.run(object.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, false, true));
  EXPECT_EQ(outcome.result, row.delivered(false, true) ? row.answer : row.fallback);
}

TEST_P(Operations, AfterShutdownReachOnlyTheAssistantSideThroughAKeptPointer) {
  const auto kept = row.adapter->create(firmware.host);
  row.adapter->shutdown();
  const Outcome outcome = row.run(kept.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, false, true));
  EXPECT_EQ(outcome.result, row.delivered(false, true) ? row.answer : row.fallback);
}

TEST_P(Operations, OfAKeptObjectCallItsOwnHostOnceThereIsANewOne) {
  Firmware second;
  const auto kept = row.adapter->create(firmware.host);
  row.adapter->shutdown();
  const auto fresh = row.adapter->create(second.host);
  ASSERT_NE(kept, fresh);
  const Outcome outcome = row.run(kept.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, true, true));
  EXPECT_TRUE(second.recorder->calls().empty());
}

TEST_P(Operations, OfTheNewObjectCallTheNewHost) {
  Firmware second(recorder);
  const auto kept = row.adapter->create(firmware.host);
  row.adapter->shutdown();
  const Outcome outcome = row.run(row.adapter->create(second.host).get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, true, true));
  for (const Call& call : recorder->calls()) EXPECT_NE(call.object, &firmware.host);
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
  const auto object = row.adapter->create(firmware.host);
  const Outcome outcome = row.run(object.get(), Sample::kUsual);
  EXPECT_EQ(calls(), row.reaches(outcome.given, true, false));
  EXPECT_EQ(outcome.result, row.delivered(true, false) ? row.answer : row.fallback);
}

TEST_P(OperationsWithoutAssistant, AndWithoutAnInstanceReachNobody) {
  const auto object = row.adapter->construct(firmware.host);
  const Outcome outcome = row.run(object.get(), Sample::kUsual);
  EXPECT_EQ(calls(), std::vector<std::string>());
  EXPECT_EQ(outcome.result, row.fallback);
  EXPECT_EQ(outcome.references(outcome.afterwards), outcome.references(outcome.given));
}

INSTANTIATE_TEST_SUITE_P(Table, OperationsWithoutAssistant, testing::ValuesIn(withoutAudio()), nameOf);

}  // namespace
