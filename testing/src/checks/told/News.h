#pragma once

#include <VornDeviceInfo.h>

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Kept.h"
#include "vorn_testing/FakeAssistant.h"

namespace vorn_testing::checks {

/// Something that the host told of what a getter of it answers.
struct News {
  std::string shown;  ///< "notifyVolumeChanged(30)".
  std::string of;     ///< "volume", "mute", "locale", "locales", "setup", or "setting " and its name.
  std::string value;
};

/// An assistant side that hears what the host tells, as long as it lives.
class Listener {
 public:
  explicit Listener(Trial& trial);
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  /// Forgets what was told.
  void begin();
  std::vector<News> heard() const;
  std::vector<News> heardOf(const std::string& of) const;

  /// What the getter answers, as news name it; nothing when it knows no such setting.
  std::optional<std::string> read(const std::string& of) const;

  /// Waits until no more is told and what was told last is what the getters answer. Answers what is not so at last.
  std::string settle(std::chrono::milliseconds atLast) const;

  /// Waits until nothing has been told for a while, longer than most hosts take.
  void waitForSilence() const;

  /// Acts where the host tells, on the thread that tells.
  std::function<void(const News&)> inside;
  void mustBeKept() { m_kept.mustBeNone(); }

 private:
  std::string wrong(const std::vector<News>& heard) const;

  Trial& m_trial;
  FakeAssistant m_assistant;
  Kept m_kept;
  mutable std::mutex m_mutex;
  std::vector<News> m_heard;
};

}  // namespace vorn_testing::checks
