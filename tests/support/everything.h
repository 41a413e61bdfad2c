#pragma once

#include <FileLogger.h>
#include <VornAudioIn.h>
#include <gtest/gtest.h>
#include <vorn_testing/FakeAssistant.h>

#include <map>
#include <string>
#include <vector>

#include "Operations.h"
#include "mutexes.h"
#include "trace_file.h"
#include "watchdog.h"

namespace operations {

/// Brings the audio path behind its first five lines, onto the assistant's object of now. Once per process.
inline void settleAudio() {
  Firmware firmware;
  VornDeviceAbstractionLayer::VornAudioIn adapter(firmware.host);
  std::vector<short> samples(4);
  for (int i = 0; i < 6; ++i) adapter.sendAudioData(samples);
}

/// Everything at once: each class alive on one firmware, the assistant side, the trace switched on.
class Everything : public testing::Test {
 protected:
  Everything() {
    watchdog::feed();
    settleAudio();
    VornDeviceAbstractionLayer::FileLogger::Shutdown();
    VornDeviceAbstractionLayer::FileLogger::CreateInstance(true);
    for (const Adapter* const each : classes())
      m_objects[each] = each->name == "FileLogger" ? nullptr : each->create(m_firmware);
    forget();
  }

  ~Everything() override {
    for (const Adapter* const each : classes()) each->shutdown();
    forget();
  }

  /// Forgets every call and line so far.
  void forget() {
    m_firmware.recorder->clear();
    std::filesystem::remove_all(trace_file::kPath);
  }

  /// Calls it on its live object; from any thread.
  Outcome call(const Row& row) { return row.run(m_objects.at(row.adapter).get()); }

  Firmware m_firmware;
  vorn_testing::FakeAssistant m_assistant{m_firmware.recorder};
  const std::vector<Row> m_rows = everyRow(m_firmware);
  std::map<const Adapter*, std::shared_ptr<void>> m_objects;  ///< Null for the logger, which needs none.
};

}  // namespace operations
