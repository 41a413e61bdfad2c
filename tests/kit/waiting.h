#pragma once

#include <gtest/gtest.h>
#include <vorn_testing/DoctorHost.h>
#include <vorn_testing/RecordingHost.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <system_error>
#include <vector>

using vorn_testing::DoctorHost;
using vorn_testing::Finding;

/// Whether the stack names a function of the library, or this one.
inline bool names(const std::vector<std::string>& stack, const std::string& function = "Vorn") {
  return std::any_of(stack.begin(), stack.end(), [&](const std::string& line) {
    return line.find("VornDeviceAbstractionLayer::" + function) == 0;
  });
}

/// Two threads of a program that a doctor watches, which tells of the first finding.
class TwoThreads : public testing::Test {
 protected:
  using Event = std::promise<void>;
  static constexpr std::chrono::milliseconds kPatience{400};

  static void wait(Event& event) {
    if (event.get_future().wait_for(std::chrono::minutes(2)) != std::future_status::ready) std::abort();
  }
  static int refused(const std::function<void()>& call) {
    try {
      call();
      return 0;
    } catch (const std::system_error&) {
      return 1;
    }
  }

  std::mutex mutex;
  std::vector<Finding> findings;
  Event told;
  vorn_testing::RecordingHost behind;
  DoctorHost doctor{behind,
                    [this](const Finding& finding) {
                      const std::lock_guard<std::mutex> lock(mutex);
                      if (findings.empty()) told.set_value();
                      findings.push_back(finding);
                    },
                    kPatience};
};
