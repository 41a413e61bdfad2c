// Arguments at the edges reach the other side as they are: by value as copies, by reference as themselves.

#include <VornDeviceCapabilities.h>
#include <VornDeviceInfo.h>

#include <map>

#include "support/operation_test.h"

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

  const std::shared_ptr<void> object = row.adapter->create(firmware.host);
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

/// Keeps the addresses of the objects that it returns.
class ReturningHost : public vorn_testing::NullHost {
 public:
  std::string getTimezone() override { return built<std::string>(); }
  std::map<std::string, std::string> getDeviceInformation() override {
    return built<std::map<std::string, std::string>>();
  }
  std::string getVSKCapabilities() override { return built<std::string>(); }
  std::pair<bool, std::string> onMute(bool) override { return built<std::pair<bool, std::string>>(); }

  const void* address = nullptr;

 private:
  template <class Result>
  Result built() {
    Result result;
    address = &result;
    return result;
  }
};

TEST(Results, AreBuiltInTheCallersStorage) {
  ReturningHost host;
  VornDeviceAbstractionLayer::VornDeviceInfo::CreateInstance(host);
  VornDeviceAbstractionLayer::VornDeviceCapabilities::CreateInstance(host);
  const auto info = VornDeviceAbstractionLayer::VornDeviceInfo::getInstance();
  const auto timezone = info->getTimezone();
  EXPECT_EQ(host.address, &timezone);
  const auto facts = info->getDeviceInformation();
  EXPECT_EQ(host.address, &facts);
  const auto capabilities = info->getVSKCapabilities();
  EXPECT_EQ(host.address, &capabilities);
  const auto muted = VornDeviceAbstractionLayer::VornDeviceCapabilities::getInstance()->onMute(true);
  EXPECT_EQ(host.address, &muted);
  VornDeviceAbstractionLayer::VornDeviceInfo::Shutdown();
  VornDeviceAbstractionLayer::VornDeviceCapabilities::Shutdown();
}

}  // namespace
