#pragma once

#include <gtest/gtest.h>
#include <vorn_testing/FakeAssistant.h>
#include <vorn_testing/Recorder.h>

#include "Operations.h"

namespace operations {

inline void PrintTo(const Row& row, std::ostream* out) { *out << row.name(); }

inline void PrintTo(const Adapter& adapter, std::ostream* out) { *out << adapter.name; }

/// "VornDeviceCapabilities_onSetPowerState_53".
inline std::string nameOf(const testing::TestParamInfo<Row>& info) {
  return info.param.adapter->name + "_" + info.param.operation + "_" + std::to_string(info.param.slot);
}

inline std::string adapterName(const testing::TestParamInfo<Adapter>& info) { return info.param.name; }

/// All rows but the audio path's, which keeps its assistant-side object for the life of the process.
inline std::vector<Row> withoutAudio() {
  std::vector<Row> all;
  for (const Row& row : rows())
    if (!row.keepsAssistant()) all.push_back(row);
  return all;
}

/// Both sides present, recording in one order; no adapter has an instance.
class OperationTest : public testing::TestWithParam<Row> {
 protected:
  ~OperationTest() override {
    row.adapter->shutdown();
    recorder->onCall(nullptr);
    recorder->clear();
  }

  /// One for the whole program: an object that the audio path keeps goes on recording to it.
  static std::shared_ptr<vorn_testing::Recorder> shared() {
    static const auto recorder = std::make_shared<vorn_testing::Recorder>();
    return recorder;
  }

  std::vector<std::string> calls() const { return seen(recorder->calls()); }

  const Row& row = GetParam();
  const std::shared_ptr<vorn_testing::Recorder> recorder = shared();
  Firmware firmware{recorder};
  vorn_testing::FakeAssistant assistant{recorder};
};

}  // namespace operations
