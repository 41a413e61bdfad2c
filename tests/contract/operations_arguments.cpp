// Arguments at the edges reach the other side as they are: by value as copies, by reference as themselves.

#include <map>

#include "operations_param.h"

namespace {

using namespace operations;
using vorn_testing::Call;

const std::map<Sample, const char*> kSamples = {
    {Sample::kUsual, "usual"},
    {Sample::kEmpty, "empty"},
    {Sample::kLowest, "lowest"},
    {Sample::kNotANumber, "not a number"},
    {Sample::kBytes, "any bytes"},
    {Sample::kHuge, "one megabyte"},
    {Sample::kNegativeZero, "minus zero"},
};

class OperationArguments : public OperationTest {
 protected:
  /// The call that carries the row's own arguments.
  Call own() const {
    for (const Call& call : recorder->calls())
      if (call.target == row.target && call.slot == row.slot) return call;
    ADD_FAILURE() << "not reached";
    return {};
  }

  const std::shared_ptr<void> object = row.adapter->create(host.recording);
};

TEST_P(OperationArguments, ArriveAsTheyAre) {
  for (const auto& [sample, name] : kSamples) {
    recorder->clear();
    const Outcome outcome = row.run(object.get(), sample);
    EXPECT_TRUE(calls() == row.reaches(outcome.given, true, true)) << name;
    EXPECT_EQ(outcome.result, row.answer) << name;
  }
}

TEST_P(OperationArguments, ByReferenceAreTheCallersOwnAndByValueAreNot) {
  const auto invocation = row.with(Sample::kUsual);
  invocation->make(object.get());
  const Outcome& outcome = invocation->outcome;
  const std::vector<const void*> arrived = own().addresses;
  ASSERT_EQ(arrived.size(), outcome.addresses.size());
  for (std::size_t i = 0; i < arrived.size(); ++i)
    EXPECT_EQ(arrived[i] == outcome.addresses[i], outcome.reference[i]) << "argument " << i;
}

INSTANTIATE_TEST_SUITE_P(Table, OperationArguments, testing::ValuesIn(rows()), nameOf);

}  // namespace
